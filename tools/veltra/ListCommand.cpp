#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>

#include "Commands.h"

namespace Command {
namespace {

void addRow(const Inspect::SectionInfo& section, Table& table) {
  const PFile::Header& header = section.header;
  const std::string name = Inspect::typeName(header.type);
  const bool isBad = section.verdict == Inspect::DataVerdict::WRONG || section.verdict == Inspect::DataVerdict::CUT;
  table.add({std::to_string(section.number),
             std::to_string(section.offset),
             std::to_string(header.type),
             name == std::to_string(header.type) ? "-" : name,
             std::to_string(header.version),
             std::to_string(header.dataSize),
             std::to_string(section.originalSize.value_or(header.dataSize)),
             {toString(section.verdict), isBad ? Tone::BAD : Tone::PLAIN}});
}

int list(const std::vector<std::string>& files, const Options& options) {
  const std::vector<std::string> columns = {"file",    "number",     "offset",       "type",       "name",
                                            "version", "storedSize", "originalSize", "compressed", "crc"};
  const bool several = files.size() > 1 || options.recursive;
  return answerForFiles(files, options, columns, true, [&](const Inspect::ByteSource& source) {
    FileAnswer answer;
    Table table({{"No", true},
                 {"Offset", true},
                 {"Type", true},
                 {"Name"},
                 {"Version", true},
                 {"Stored", true},
                 {"Original", true},
                 {"CRC"}},
                "section");
    answer.json["file"] = source.name();
    std::vector<Inspect::SectionInfo> sections;
    const auto addSection = [&](const Inspect::SectionInfo& section, Inspect::Findings&) {
      if (options.format == FORMAT_TABLE) return addRow(section, table);
      sections.push_back(section);
    };
    answer.findings = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS, addSection).findings;
    const std::size_t size = sections.size();
    answer.list =
        LongList{"sections", size, [sections = std::move(sections)](std::size_t i) { return toJson(sections[i]); }};
    answer.text = (several ? printable(source.name()) + ":\n" : "") + table.text();
    return answer;
  });
}

}  // namespace

Subcommand listCommand(const Options& options) {
  const auto files = std::make_shared<std::vector<std::string>>();
  Subcommand command("list", "One row for each section of a file");
  command.place("FILE", "FILE...", files.get(), "files to list; - reads standard input").required();
  command.run = [files, &options] { return list(*files, options); };
  return command;
}

}  // namespace Command
