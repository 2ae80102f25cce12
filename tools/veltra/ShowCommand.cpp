#include <memory>

#include <fmt/format.h>

#include <tools/inspect/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::string file;
  int section = 1;
};

std::string hexText(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += fmt::format("{:02x}", byte);
  return text;
}

int show(const Arguments& args, const Options& options) {
  std::string error;
  Inspect::ByteSource source;
  if (!source.open(args.file, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  const Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS);
  if (args.section < 0 || static_cast<std::size_t>(args.section) >= report.sections.size()) {
    for (const Inspect::Finding& finding : report.findings) complain(describe(source.name(), finding));
    complain(fmt::format("{}: no section {}; it has {}", source.name(), args.section,
                         report.sections.empty() ? "none" : fmt::format("0 to {}", report.sections.size() - 1)));
    return report.damaged() ? EXIT_NO : EXIT_COULD_NOT;
  }
  const Inspect::SectionInfo& section = report.sections[static_cast<std::size_t>(args.section)];
  std::vector<uint8_t> bytes;
  if (!loadPayload(source, section, bytes, error)) {
    complain(fmt::format("{}: {}", source.name(), error));
    return EXIT_NO;
  }
  const Inspect::DecodedRecord record = Inspect::decodeRecord(bytes);
  const bool decoded = record.outcome == Inspect::DecodedRecord::DECODED;
  Document document;
  if (options.format == FORMAT_TABLE) {
    document.text = decoded ? indentedText(record.json) : hexDump(bytes);
  } else {
    document.json = toJson(section);
    document.json["file"] = source.name();
    document.json["record"] = decoded ? record.json : Json::Value();
    if (!decoded) document.json["hex"] = hexText(bytes);
  }
  printDocument(document, options);
  if (record.outcome != Inspect::DecodedRecord::DAMAGED) return EXIT_DONE;
  complain(fmt::format("{}: section {}: the {} in it does not decode (code {})", source.name(), section.number,
                       record.name, record.status));
  return EXIT_NO;
}

}  // namespace

void addShow(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("show", "The record a section holds, or its bytes");
  const auto args = std::make_shared<Arguments>();
  command->add_option("file", args->file, "the file; - reads standard input")->required()->type_name("FILE");
  command->add_option("-s,--section", args->section, "number of the section as list shows it")->capture_default_str();
  command->callback([args, &options, &run] { run = [args, &options] { return show(*args, options); }; });
}

}  // namespace Command
