#include <memory>

#include <fmt/format.h>

#include <libinspect/records/RecordView.h>

#include "Commands.h"

namespace Command {
namespace {

struct ShowArguments {
  std::string file;
  int section = 1;
  bool bareRecord = false;
  bool reveal = false;
};

std::string hexText(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += fmt::format("{:02x}", byte);
  return text;
}

/// Prints a decoded record, or the bytes if there is none.
/// @param reveal  show secrets as they are
/// @param where  what the record is in, for the complaint and the JSON
int showRecord(const std::vector<uint8_t>& stored, bool reveal, Json::Value json, const std::string& where,
               const Options& options) {
  const Inspect::DecodedRecord record = Inspect::decodeRecord(stored);
  const Json::Value shown = record.toJson(reveal);
  const std::vector<uint8_t> bytes = reveal ? stored : Inspect::withoutSecrets(stored);
  const auto text = [&] { return shown.isNull() ? hexDump(bytes) : indentedText(shown); };
  const auto object = [&] {
    json["record"] = shown;
    if (shown.isNull()) json["hex"] = hexText(bytes);
    return json;
  };
  printDocument({text, object, {}, {}}, options);
  if (record.outcome != Inspect::DecodedRecord::DAMAGED) return EXIT_DONE;
  complain(fmt::format("{}: the {} does not decode (code {})", where, record.name, record.status));
  return EXIT_NO;
}

int showBareRecord(const std::string& file, bool reveal, const Options& options) {
  constexpr uint64_t MAX_RECORD = uint64_t{64} * 1024 * 1024;
  std::string text, error;
  if (!Inspect::readText(file, MAX_RECORD, text, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  Json::Value json(Json::objectValue);
  json["file"] = file;
  return showRecord(std::vector<uint8_t>(text.begin(), text.end()), reveal, json, file, options);
}

int showSection(const ShowArguments& args, const Options& options) {
  std::string error;
  Inspect::ByteSource source;
  if (!openInput(source, args.file, options)) return EXIT_COULD_NOT;
  int code = EXIT_DONE;
  const std::optional<Inspect::SectionInfo> section = sectionOf(source, args.section, code);
  if (!section) return code;
  std::vector<uint8_t> bytes;
  if (!loadPayload(source, *section, bytes, error)) {
    complain(fmt::format("{}: {}", source.name(), error));
    return answerAfter(source, EXIT_NO);
  }
  Json::Value json = toJson(*section);
  json["file"] = source.name();
  return showRecord(bytes, args.reveal, json, fmt::format("{}: section {}", source.name(), section->number), options);
}

}  // namespace

Subcommand showCommand(const Options& options) {
  const auto args = std::make_shared<ShowArguments>();
  Subcommand command("show", "The record a section holds, or its bytes");
  command.place("FILE", "FILE", &args->file, "the file; - reads standard input").required();
  command.option("-s,--section", "INT", &args->section, "number of the section as list shows it").showingPreset();
  command.flag("--record", args->bareRecord, "the file is a bare record, not a container");
  command.flag("--reveal", args->reveal, REVEAL_HELP);
  command.run = [args, &options] {
    return args->bareRecord ? showBareRecord(args->file, args->reveal, options) : showSection(*args, options);
  };
  return command;
}

}  // namespace Command
