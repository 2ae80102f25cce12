#include <memory>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>

#include "Commands.h"

namespace Command {
namespace {

struct SummaryArguments {
  std::vector<std::string> paths;
  std::string expected;
};

std::string tableOf(const std::vector<Inspect::ResultRow>& rows) {
  Table table({{"ID"},
               {"Type"},
               {"Verdict"},
               {"Length", true},
               {"Headroom", true},
               {"Time"},
               {"Passed", true},
               {"Star", true},
               {"Failed", true},
               {"File"}});
  for (const Inspect::ResultRow& row : rows) {
    const Veltra::ResultSummary& s = row.summary;
    table.add({s.resultName,
               toString(s.resultType),
               {toString(s.status), toneOf(s.status)},
               Inspect::measurementText(s.length),
               Inspect::measurementText(s.headroom),
               Inspect::isoUtc(static_cast<time_t>(s.timeStamp)),
               std::to_string(s.numPassTests),
               std::to_string(s.numPassStarTests),
               std::to_string(s.numFailTests),
               row.file});
  }
  return table.text();
}

std::string listText(const char* what, const std::vector<std::string>& ids) {
  std::string text;
  for (const std::string& id : ids) text += " " + printable(id);
  return ids.empty() ? "" : fmt::format("{} ({}):{}\n", what, ids.size(), text);
}

Json::Value listJson(const std::vector<std::string>& ids) {
  Json::Value json(Json::arrayValue);
  for (const std::string& id : ids) json.append(id);
  return json;
}

int summary(const SummaryArguments& args, const Options& options) {
  Inspect::CableIdSet expected;
  std::string error;
  const bool hasExpected = !args.expected.empty();
  if (hasExpected && !parseExpected(args.expected, expected, error)) {
    complain(error);
    return EXIT_USAGE;
  }
  int code = EXIT_DONE;
  const Inspect::FileRun run(filesOf(args.paths, options, code), args.paths, options.maxSize);
  if (!hasExpected && complainsOfNoFiles(args.paths, run.files())) return EXIT_COULD_NOT;
  const Inspect::JobFiles job = readJob(run, options, code);
  if (!hasExpected && complainsOfNoResults(args.paths, job)) return EXIT_COULD_NOT;
  const std::vector<Inspect::ResultRow>& rows = job.rows;
  Document document;
  document.columns = Inspect::rowColumns();
  document.rows = {"results", rows.size(), [&rows](std::size_t i) { return toJson(rows[i]); }};
  document.text = [&rows] { return tableOf(rows); };
  Inspect::Coverage coverage;
  document.json = [&] {
    Json::Value json(Json::objectValue);
    json["otherFiles"] = static_cast<Json::UInt64>(job.others);
    if (!hasExpected) return json;
    json["missing"] = listJson(coverage.missing);
    json["damaged"] = listJson(coverage.damaged);
    json["twice"] = listJson(coverage.twice);
    json["foreign"] = listJson(coverage.foreign);
    return json;
  };
  if (hasExpected) {
    coverage = job.coverageOf(expected);
    const std::string lists = listText("Missing", coverage.missing) + listText("Damaged", coverage.damaged) +
                              listText("Tested twice", coverage.twice) + listText("Foreign", coverage.foreign);
    document.text = [&rows, lists] {
      return tableOf(rows) + (lists.empty() ? "All expected IDs were tested once.\n" : lists);
    };
    const bool isWhole = options.format == FORMAT_TABLE || options.format == FORMAT_JSON;
    if (!isWhole && !options.quiet && !lists.empty()) complain(lists.substr(0, lists.size() - 1));
    code = worse(code, codeOf(coverage));
  }
  if (!rows.empty() || options.format != FORMAT_JSONL) printDocument(document, options);
  return code;
}

}  // namespace

Subcommand summaryCommand(const Options& options) {
  const auto args = std::make_shared<SummaryArguments>();
  Subcommand command("summary", "One row for each result, in the order of their IDs");
  command.place("PATH", "PATH...", &args->paths, "result files, or directories with -r").required();
  command.option("--expect", "FIRST..LAST", &args->expected,
                 "the IDs of the job; tells which are missing, damaged, tested twice or not expected");
  command.run = [args, &options] { return summary(*args, options); };
  return command;
}

}  // namespace Command
