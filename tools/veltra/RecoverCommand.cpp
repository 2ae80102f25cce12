#include <array>
#include <filesystem>
#include <memory>
#include <utility>

#include <fmt/format.h>

#include <libinspect/container/Recover.h>
#include <libinspect/job/CleanCopy.h>
#include <libinspect/records/FileJudge.h>

#include "Commands.h"
#include "Sha256.h"

namespace Command {
namespace {

struct RecoverArguments {
  std::string file;
  std::string output;
  bool force = false;
};

void printRecovery(const RecoverArguments& args, const Inspect::Recovery& recovery, const Options& options) {
  Json::Value json = toJson(recovery);
  json["file"] = args.file;
  json["output"] = args.output;
  if (options.format == FORMAT_CSV) {  // numbers only: a cell cannot hold a list
    json["kept"] = static_cast<Json::UInt64>(recovery.kept.size());
    json["lost"] = static_cast<Json::UInt64>(recovery.lost.size());
    json["lostSections"] = static_cast<Json::UInt64>(recovery.lostSections.size() + recovery.lostSectionsLeftOut);
    json.removeMember("lostSectionsLeftOut");
    printDocument({{}, [&] { return json; }, {}, {}}, options);
    return;
  }
  if (options.format == FORMAT_JSON) json["schema"] = SCHEMA;
  const LongList kept = {"kept", recovery.kept.size(), [&](std::size_t i) { return toJson(recovery.kept[i]); }};
  const LongList lost = {"lost", recovery.lost.size(), [&](std::size_t i) { return toJson(recovery.lost[i]); }};
  const LongList lostSections = {"lostSections", recovery.lostSections.size(),
                                 [&](std::size_t i) { return toJson(recovery.lostSections[i]); }};
  printWithLists(json, {kept, lost, lostSections}, options.format == FORMAT_JSON);
  fmt::print("\n");
}

/// What is lost of a file, but for the bytes.
/// @param lost  a recovery, or a copy
template <class Lost>
std::string lostText(const std::string& file, const Lost& lost) {
  std::string text;
  for (const Inspect::LostSection& section : lost.lostSections) {
    const std::string type = section.hasHeader ? Inspect::typeName(section.section.header.type) : "type unknown";
    text += fmt::format("{}: section {} lost ({}): offset {}: {}: {}\n", file, section.section.number, type,
                        section.section.offset, nameOf(section.why), printable(detailsOf(section.why)));
  }
  if (lost.lostSectionsLeftOut > 0) {
    text += fmt::format("{}: {} lost\n", file, counted(lost.lostSectionsLeftOut, "further section"));
  }
  if (lost.isSummaryLost) text += fmt::format("{}: the result's summary is lost\n", file);
  if (lost.missing > 0) text += fmt::format("{}: {} shorter than recorded\n", file, counted(lost.missing, "byte"));
  return text;
}

std::string textOf(const RecoverArguments& args, const Inspect::Recovery& recovery) {
  const std::string file = printable(args.file);
  std::string text = fmt::format("{}: {} kept in {}{}\n", file, counted(recovery.kept.size(), "section"),
                                 printable(args.output), recovery.wasClosed ? "" : " (it had not been closed)");
  for (const Inspect::LostRange& lost : recovery.lost) {
    text += fmt::format("{}: offset {}: {} lost\n", file, lost.offset, counted(lost.bytes, "byte"));
  }
  return text + lostText(file, recovery);
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
  const bool isNothing = hasNothingToRecover(source, recovery);
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

using Inspect::CopyAction;

uint64_t lostSectionsOf(const Inspect::FileCopy& copy) {
  return copy.lostSections.size() + copy.lostSectionsLeftOut;
}

/// Nothing for a file that is copied: a job may have thousands.
std::string textOf(const std::string& name, const Inspect::FileCopy& copy) {
  const std::string file = printable(name);
  if (copy.action == CopyAction::OTHER) return fmt::format("{}: other, not copied: no container\n", file);
  if (copy.action == CopyAction::LOST) {
    return fmt::format("{}: {}: no intact section in {}\n", file, painted("lost", Tone::BAD),
                       counted(copy.size, "byte")) +
           lostText(file, copy);
  }
  if (copy.action != CopyAction::RECOVERED) return "";
  std::string text =
      fmt::format("{}: {}: {} kept, {} lost\n", file, painted("recovered", copy.hasLoss() ? Tone::BAD : Tone::GOOD),
                  counted(copy.kept, "section"), counted(copy.lostBytes, "byte"));
  text += lostText(file, copy);
  if (copy.damage) {
    text += fmt::format("{}: still damaged: {}: {}: {}\n", file, placeOf(*copy.damage), nameOf(*copy.damage),
                        printable(detailsOf(*copy.damage)));
  }
  return text;
}

Json::Value jsonOf(const std::string& file, const Inspect::FileCopy& copy) {
  const auto known = [](const std::string& text) { return text.empty() ? Json::Value() : Json::Value(text); };
  Json::Value json(Json::objectValue);
  json["file"] = file;
  json["action"] = toString(copy.action);
  json["output"] = copy.isInCopy() ? Json::Value(copy.output) : Json::Value();
  json["sha256"] = known(copy.sum);
  if (copy.action != CopyAction::RECOVERED && copy.action != CopyAction::LOST) return json;
  json["sectionsKept"] = static_cast<Json::UInt64>(copy.kept);
  json["sectionsLost"] = static_cast<Json::UInt64>(lostSectionsOf(copy));
  json["bytesLost"] = static_cast<Json::UInt64>(copy.lostBytes);
  json["missing"] = static_cast<Json::UInt64>(copy.missing);
  json["summaryLost"] = copy.isSummaryLost;
  json["damage"] = copy.damage ? Json::Value(describe(*copy.damage)) : Json::Value();
  return json;
}

/// How many files there are of each kind.
struct CopyTotals {
  std::array<std::size_t, 5> actions = {};
  std::size_t untried = 0;  ///< of those that failed
  std::size_t unread = 0;
  std::size_t linked = 0;      ///< links to folders
  std::size_t passedOver = 0;  ///< what is neither file nor folder
  std::size_t foreign = 0;     ///< files that are in the copy and not of it

  std::size_t& of(CopyAction action) { return actions[static_cast<std::size_t>(action)]; }
};

std::string totalOf(const std::string& copy, const CopyTotals& totals, bool isListed) {
  std::string text;
  for (std::size_t i = 0; i < totals.actions.size(); ++i) {
    if (totals.actions[i] == 0 && !text.empty()) continue;
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", totals.actions[i], toString(static_cast<CopyAction>(i)));
  }
  if (totals.unread > 0) text += fmt::format(", {} not read", totals.unread);
  if (totals.linked > 0) text += fmt::format(", {} linked", totals.linked);
  if (totals.passedOver > 0) text += fmt::format(", {} neither file nor folder", totals.passedOver);
  if (totals.foreign > 0) text += fmt::format(", {} not of this copy", totals.foreign);
  return fmt::format("{}: {}{}\n", printable(copy), text,
                     isListed ? fmt::format("; sums in {}", Inspect::CopyOrder::LIST_NAME) : "");
}

Json::Value jsonOf(const CopyTotals& totals, const std::string& list) {
  Json::Value json(Json::objectValue);
  for (std::size_t i = 0; i < totals.actions.size(); ++i) {
    json[toString(static_cast<CopyAction>(i))] = static_cast<Json::UInt64>(totals.actions[i]);
  }
  json["unread"] = static_cast<Json::UInt64>(totals.unread);
  json["linked"] = static_cast<Json::UInt64>(totals.linked);
  json["passedOver"] = static_cast<Json::UInt64>(totals.passedOver);
  json["foreign"] = static_cast<Json::UInt64>(totals.foreign);
  json["list"] = list.empty() ? Json::Value() : Json::Value(list);
  return json;
}

/// Counts a file, complains if it failed. @return its exit code
int account(const Inspect::FileCopy& copy, CopyTotals& totals) {
  ++totals.of(copy.action);
  if (copy.action != CopyAction::FAILED) return copy.hasLoss() ? EXIT_WITH_LOSS : EXIT_DONE;
  if (copy.error.empty()) {
    ++totals.untried;
  } else {
    complain(copy.error);
  }
  return EXIT_COULD_NOT;
}

/// Tells of what was not copied, nor was to be.
std::size_t tellOfOthers(const std::vector<std::string>& files, const char* action, const std::string& what,
                         const Options& options, AnswerStream& answers) {
  for (const std::string& file : files) {
    Json::Value row(Json::objectValue);
    row["file"] = file;
    row["action"] = action;
    row["output"] = row["sha256"] = Json::Value();
    Json::Value element = row;
    element["lostSections"] = Json::Value(Json::arrayValue);
    answers.print(options.quiet ? "" : fmt::format("{}: {}\n", printable(file), what), element, {row});
  }
  return files.size();
}

/// Complains of what the copy lacks. @return the exit code
int codeOfEnd(const Inspect::CopyEnd& end, const RecoverArguments& args, bool hasContainers, int code) {
  for (const std::string& fault : end.faults) complain(fault);
  for (const std::string& logo : end.lostLogos) complain(logo);
  if (!end.lostLogos.empty()) code = worse(code, EXIT_WITH_LOSS);
  if (!end.isComplete) {
    complain(args.output + ": not complete, no list of sums was written");
    return code;
  }
  if (end.error.empty() && hasContainers) return code;
  complain(hasContainers ? end.error : args.file + ": no containers");
  return EXIT_COULD_NOT;
}

int recoverJob(const RecoverArguments& args, const Options& options) {
  Inspect::CopyOrder order = {args.file, args.output, args.force, false, sha256Of};
  std::string error;
  if (!canCopy(order, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  int code = EXIT_DONE;
  CopyTotals totals;
  std::vector<std::string> faults;
  Inspect::PassedOver passedOver;
  std::vector<std::string> files = Inspect::filesOf({args.file}, true, faults, passedOver);
  for (const std::string& fault : faults) complain(fault);
  order.isPartial = !faults.empty();
  if (order.isPartial) code = EXIT_COULD_NOT;
  const Inspect::FileRun run(std::move(files), {}, options.maxSize, passedOver.others.size());
  if (complainsOfNoFiles({args.file}, run.files())) return EXIT_COULD_NOT;
  Progress progress(options.progress);
  AnswerStream answers(options, "files",
                       {"file", "action", "sectionsKept", "sectionsLost", "bytesLost", "missing", "summaryLost",
                        "damage", "output", "sha256"});
  const auto tell = [&](const std::string& file, const Inspect::ReadOutcome& outcome, const Inspect::FileCopy* copy) {
    code = worse(code, codeOfFile(outcome, {}, options));
    if (outcome.state != Inspect::ReadOutcome::WAS_READ) return void(++totals.unread);
    code = worse(code, account(*copy, totals));
    const Json::Value row = jsonOf(file, *copy);
    Json::Value element = row;
    Json::Value& lost = element["lostSections"] = Json::Value(Json::arrayValue);
    for (const Inspect::LostSection& section : copy->lostSections) lost.append(toJson(section));
    answers.print(options.quiet ? "" : textOf(file, *copy), element, {row});
    (void)std::fflush(stdout);  // write errors are checked at the end
  };
  const Inspect::CopyEnd end = copyJob(order, run, readingOf(options, progress), tell);
  progress.hold();
  totals.linked = tellOfOthers(passedOver.linkedFolders, "linked",
                               painted("linked", Tone::BAD) + ": a link to a folder, not copied", options, answers);
  if (totals.linked > 0) code = worse(code, EXIT_WITH_LOSS);
  totals.passedOver =
      tellOfOthers(passedOver.others, "passedOver", "neither file nor folder, not copied", options, answers);
  totals.foreign = tellOfOthers(end.foreign, "foreign", "was there before, and is not of this copy", options, answers);
  answers.finish(jsonOf(totals, end.list));
  if (options.format == FORMAT_TABLE && !options.quiet) {
    fmt::print("{}", totalOf(args.output, totals, !end.list.empty()));
  }
  (void)std::fflush(stdout);
  if (totals.untried > 0) {
    complain(fmt::format("{}: {} not tried after that", args.output, counted(totals.untried, "file")));
  }
  return codeOfEnd(end, args, totals.of(CopyAction::OTHER) < run.files().size(), code);
}

bool isFolder(const std::string& path) {
  std::error_code unknown;
  return path != "-" && std::filesystem::is_directory(path, unknown);
}

}  // namespace

Subcommand recoverCommand(const Options& options) {
  const auto args = std::make_shared<RecoverArguments>();
  Subcommand command("recover", "Save every intact section of a damaged file, or all that is intact of a job");
  command
      .place("FILE", "FILE", &args->file, "the damaged file; - reads standard input; with -r also the folder of a job")
      .required();
  command.option("-o,--output", "NEW", &args->output, "the file to write; of a folder, its clean copy").required();
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] {
    return options.recursive && isFolder(args->file) ? recoverJob(*args, options) : recover(*args, options);
  };
  return command;
}

}  // namespace Command
