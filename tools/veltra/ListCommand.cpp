#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>

#include "Commands.h"

namespace Command {
namespace {

Table::Row cellsOf(const Inspect::SectionInfo& section) {
  const PFile::Header& header = section.header;
  const std::string name = Inspect::typeName(header.type);
  const bool isBad = section.verdict == Inspect::DataVerdict::WRONG || section.verdict == Inspect::DataVerdict::CUT;
  return {std::to_string(section.number),
          std::to_string(section.offset),
          std::to_string(header.type),
          name == std::to_string(header.type) ? "-" : name,
          std::to_string(header.version),
          std::to_string(header.dataSize),
          std::to_string(section.originalSize.value_or(header.dataSize)),
          {toString(section.verdict), isBad ? Tone::BAD : Tone::PLAIN}};
}

/// The sections of a file: few are held, many are found once more to be printed.
struct Listing {
  std::string path;
  Inspect::ByteSource::Taken taken;
  FirstFew<Inspect::SectionInfo> sections;
  LongTable table{{{"No", true},
                   {"Offset", true},
                   {"Type", true},
                   {"Name"},
                   {"Version", true},
                   {"Stored", true},
                   {"Original", true},
                   {"CRC"}},
                  "section"};

  /// @param code  made worse, with a complaint, when the file cannot be read again
  void forEach(const std::function<void(const Inspect::SectionInfo&)>& onSection, int& code) const {
    for (const Inspect::SectionInfo& section : sections.held()) onSection(section);
    if (sections.areAll()) return;
    std::string error;
    Inspect::ByteSource source;
    if (source.openAgain(path, taken, error)) {
      const auto onEach = [&](const Inspect::SectionInfo& section, Inspect::Findings&) { onSection(section); };
      walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS, onEach);
      code = worse(code, answerAfter(source, EXIT_DONE));
    } else {
      complain(error);
      code = worse(code, EXIT_COULD_NOT);
    }
  }
};

int list(const std::vector<std::string>& files, const Options& options) {
  std::vector<std::string> columns = Inspect::sectionColumns();
  columns.insert(columns.begin(), "file");
  const bool several = files.size() > 1 || options.recursive;
  int again = EXIT_DONE;
  const int code = answerForFiles(files, options, columns, true, [&](const Inspect::ByteSource& source) {
    FileAnswer answer;
    const auto listing = std::make_shared<Listing>();
    listing->path = source.path();
    listing->taken = source.taken();
    const auto add = [&](const Inspect::SectionInfo& section, Inspect::Findings&) {
      listing->sections.add(section);
      if (options.format == FORMAT_TABLE) listing->table.add(cellsOf(section));
    };
    answer.findings = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS, add).findings;
    answer.json["file"] = source.name();
    answer.list = LongList();
    answer.list->name = "sections";
    answer.list->all = [listing, &again](const LongList::OnElement& onElement) {
      listing->forEach([&](const Inspect::SectionInfo& section) { onElement(toJson(section)); }, again);
    };
    answer.text = several ? printable(source.name()) + ":\n" : "";
    answer.print = [listing, &again] {
      listing->table.print([&](const LongTable::OnRow& onRow) {
        listing->forEach([&](const Inspect::SectionInfo& section) { onRow(cellsOf(section)); }, again);
      });
    };
    return answer;
  });
  return worse(code, again);
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
