#include <memory>

#include <fmt/format.h>

#include <tools/inspect/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

std::string tableOf(const Inspect::ContainerReport& report) {
  Table table({{"No", true},
               {"Offset", true},
               {"Type", true},
               {"Name"},
               {"Version", true},
               {"Stored", true},
               {"Original", true},
               {"CRC"}});
  for (const Inspect::SectionInfo& section : report.sections) {
    const PFile::Header& header = section.header;
    const std::string name = Inspect::typeName(header.type);
    table.add({std::to_string(section.number), std::to_string(section.offset), std::to_string(header.type),
               name == std::to_string(header.type) ? "-" : name, std::to_string(header.version),
               std::to_string(header.dataSize), std::to_string(section.originalSize.value_or(header.dataSize)),
               toString(section.verdict)});
  }
  return table.text();
}

int list(const std::vector<std::string>& files, const Options& options) {
  const std::vector<std::string> columns = {"file",    "number",     "offset",       "type",       "name",
                                            "version", "storedSize", "originalSize", "compressed", "crc"};
  const bool several = files.size() > 1 || options.recursive;
  return answerForFiles(files, options, columns, true, [&](const Inspect::ByteSource& source) {
    Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS);
    FileAnswer answer;
    if (several) answer.text = printable(report.name) + ":\n";
    if (options.format == FORMAT_TABLE) answer.text += tableOf(report);
    answer.findings = report.findings;
    answer.json["file"] = report.name;
    const std::size_t size = report.sections.size();
    answer.list = LongList{"sections", size,
                           [sections = std::move(report.sections)](std::size_t i) { return toJson(sections[i]); }};
    return answer;
  });
}

}  // namespace

void addList(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("list", "One row for each section of a file");
  const auto files = std::make_shared<std::vector<std::string>>();
  command->add_option("files", *files, "files to list; - reads standard input")->required()->type_name("FILE...");
  command->callback([files, &options, &run] { run = [files, &options] { return list(*files, options); }; });
}

}  // namespace Command
