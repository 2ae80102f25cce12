#include <memory>

#include <fmt/format.h>

#include <tools/inspect/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

void printTable(const Inspect::ContainerReport& report) {
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
  table.print();
}

int list(const std::vector<std::string>& files, const Options& options) {
  return answerForFiles(files, options, [&](const Inspect::ByteSource& source) {
    const Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS);
    if (options.format == FORMAT_TABLE) {
      if (files.size() > 1) fmt::print("{}:\n", printable(report.name));
      printTable(report);
    }
    FileAnswer answer;
    answer.findings = report.findings;
    answer.json["file"] = report.name;
    answer.json["sections"] = Json::Value(Json::arrayValue);
    for (const Inspect::SectionInfo& section : report.sections) {
      answer.lines.push_back(toJson(section));
      answer.json["sections"].append(answer.lines.back());
      answer.lines.back()["file"] = report.name;
    }
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
