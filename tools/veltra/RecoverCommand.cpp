#include <memory>

#include <fmt/format.h>

#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>

#include "Commands.h"

namespace Command {
namespace {

struct RecoverArguments {
  std::string file;
  std::string output;
  bool force = false;
};

void printRecovery(const RecoverArguments& args, const Inspect::Recovery& recovery, const Options& options) {
  Json::Value json(Json::objectValue);
  json["file"] = args.file;
  json["output"] = args.output;
  json["wasClosed"] = recovery.wasClosed;
  json["missing"] = static_cast<Json::UInt64>(recovery.missing);
  json["summaryLost"] = recovery.isSummaryLost;
  if (options.format == FORMAT_CSV) {  // numbers only: a cell cannot hold a list
    json["kept"] = static_cast<Json::UInt64>(recovery.kept.size());
    json["lost"] = static_cast<Json::UInt64>(recovery.lost.size());
    json["lostSections"] = static_cast<Json::UInt64>(recovery.lostSections.size() + recovery.lostSectionsLeftOut);
    printDocument({{}, [&] { return json; }, {}, {}}, options);
    return;
  }
  if (options.format == FORMAT_JSON) json["schema"] = SCHEMA;
  const LongList kept = {"kept", recovery.kept.size(), [&](std::size_t i) { return toJson(recovery.kept[i]); }};
  const LongList lost = {"lost", recovery.lost.size(), [&](std::size_t i) {
                           Json::Value range(Json::objectValue);
                           range["offset"] = static_cast<Json::UInt64>(recovery.lost[i].offset);
                           range["bytes"] = static_cast<Json::UInt64>(recovery.lost[i].bytes);
                           return range;
                         }};
  json["lostSectionsLeftOut"] = static_cast<Json::UInt64>(recovery.lostSectionsLeftOut);
  const LongList lostSections = {"lostSections", recovery.lostSections.size(),
                                 [&](std::size_t i) { return toJson(recovery.lostSections[i]); }};
  printWithLists(json, {kept, lost, lostSections}, options.format == FORMAT_JSON);
  fmt::print("\n");
}

std::string textOf(const RecoverArguments& args, const Inspect::Recovery& recovery) {
  const std::string file = printable(args.file);
  std::string text = fmt::format("{}: {} kept in {}{}\n", file, counted(recovery.kept.size(), "section"),
                                 printable(args.output), recovery.wasClosed ? "" : " (it had not been closed)");
  for (const Inspect::LostRange& lost : recovery.lost) {
    text += fmt::format("{}: offset {}: {} lost\n", file, lost.offset, counted(lost.bytes, "byte"));
  }
  for (const Inspect::LostSection& lost : recovery.lostSections) {
    const std::string type = lost.hasHeader ? Inspect::typeName(lost.section.header.type) : "type unknown";
    text += fmt::format("{}: section {} lost ({}): offset {}: {}: {}\n", file, lost.section.number, type,
                        lost.section.offset, nameOf(lost.why), printable(detailsOf(lost.why)));
  }
  if (recovery.lostSectionsLeftOut > 0) {
    text += fmt::format("{}: {} lost\n", file, counted(recovery.lostSectionsLeftOut, "further section"));
  }
  if (recovery.isSummaryLost) text += fmt::format("{}: the result's summary is lost\n", file);
  if (recovery.missing > 0)
    text += fmt::format("{}: {} shorter than recorded\n", file, counted(recovery.missing, "byte"));
  return text;
}

int recover(const RecoverArguments& args, const Options& options) {
  std::string error;
  Inspect::ByteSource source;
  if (!openInput(source, args.file, options)) return EXIT_COULD_NOT;
  if (refusesToReplace(args.output, args.force, {args.file})) return EXIT_COULD_NOT;
  constexpr uint64_t PASSES = 3;  // the sums of all bytes, the search, the copy
  Progress progress(options.progress);
  progress.expect(PASSES * source.size());
  source.onRead([&progress](std::size_t bytes) { progress.advance(bytes); });
  const Inspect::Recovery recovery = findSections(source);
  const bool isNothing =
      recovery.kept.empty() && !recovery.isContainer && Inspect::judge(source).state != Inspect::FileState::INTACT;
  if (source.hasFailed() || isNothing) progress.hold();
  if (source.hasFailed()) return answerAfter(source, EXIT_COULD_NOT);
  if (isNothing) {
    const Inspect::JudgedFile file = Inspect::judge(source);
    const bool isOther = file.state == Inspect::FileState::OTHER;
    complain(isOther ? noContainerText(file) : fmt::format("{}: no intact section found", source.name()));
    return isOther ? EXIT_COULD_NOT : EXIT_NO;
  }
  const bool isWritten = writeRecovered(source, recovery, args.output, error);
  progress.hold();
  if (!isWritten) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  if (options.format == FORMAT_TABLE) {
    if (!options.quiet) fmt::print("{}", textOf(args, recovery));
  } else {
    printRecovery(args, recovery, options);
  }
  return recovery.lost.empty() && recovery.missing == 0 ? EXIT_DONE : EXIT_WITH_LOSS;
}

}  // namespace

Subcommand recoverCommand(const Options& options) {
  const auto args = std::make_shared<RecoverArguments>();
  Subcommand command("recover", "Save every intact section of a damaged file into a new one");
  command.place("FILE", "FILE", &args->file, "the damaged file; - reads standard input").required();
  command.option("-o,--output", "NEW", &args->output, "the file to write").required();
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] { return recover(*args, options); };
  return command;
}

}  // namespace Command
