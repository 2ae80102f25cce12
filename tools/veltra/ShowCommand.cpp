#include <memory>
#include <string_view>

#include <fmt/format.h>

#include <libinspect/container/JsonFaults.h>
#include <libinspect/records/KnownPayload.h>

#include "Commands.h"

namespace Command {
namespace {

struct ShowArguments {
  std::string file;
  int section = 1;
  bool bareRecord = false;
  bool reveal = false;
};

/// Prints what is known of a payload, or its bytes.
/// @param type    of the section, 0 outside one
/// @param reveal  show secrets as they are
/// @param json    what the JSON says of the section
/// @param where   what the payload is in, for the complaint
int showPayload(uint16_t type, std::vector<uint8_t> bytes, bool reveal, Json::Value json, const std::string& where,
                const Options& options) {
  Inspect::KnownPayload payload = Inspect::knownPayload(type, bytes);
  const Inspect::DecodedRecord& record = payload.record;
  Json::Value shown = takeValues(payload, reveal);
  if (payload.kind == Inspect::PayloadKind::JSON && options.format == FORMAT_TABLE) {
    Inspect::useDigits(shown, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  }
  Document document;
  document.print = [&] {
    if (payload.image) return fmt::print("{}\n", toString(*payload.image));
    if (shown.isNull()) return printHexDump(bytes);
    fmt::print("{}", indentedText(shown));
  };
  if (!payload.image && shown.isNull()) {
    if (!reveal) Inspect::maskSecrets(bytes, record);
    document.hex = {"hex", &bytes};
  } else {
    std::vector<uint8_t>().swap(bytes);
  }
  document.json = [&] {
    addPayload(payload, std::move(shown), json);
    return std::move(json);
  };
  printDocument(document, options);
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
  std::vector<uint8_t> bytes(text.begin(), text.end());
  std::string().swap(text);
  return showPayload(0, std::move(bytes), reveal, std::move(json), file, options);
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
  return showPayload(section->header.type, std::move(bytes), args.reveal, std::move(json),
                     fmt::format("{}: section {}", source.name(), section->number), options);
}

}  // namespace

Subcommand showCommand(const Options& options) {
  const auto args = std::make_shared<ShowArguments>();
  Subcommand command("show", "What a section holds: a record, JSON or an image, or else its bytes");
  command.place("FILE", "FILE", &args->file, "the file; - reads standard input").required();
  command.option("-s,--section", "N", &args->section, "number of the section as list shows it").showingPreset();
  command.flag("--record", args->bareRecord, "the file is a bare record, not a container");
  command.flag("--reveal", args->reveal, REVEAL_HELP);
  command.run = [args, &options] {
    return args->bareRecord ? showBareRecord(args->file, args->reveal, options) : showSection(*args, options);
  };
  return command;
}

}  // namespace Command
