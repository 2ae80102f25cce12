#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>

#include "Commands.h"

namespace Command {
namespace {

struct SummaryArguments {
  std::vector<std::string> paths;
  std::vector<std::string> expected;
  bool unsorted = false;
};

Table::Row cellsOf(const Inspect::ResultRow& row) {
  const Veltra::ResultSummary& s = row.summary;
  return {s.resultName,
          toString(s.resultType),
          {toString(s.status), toneOf(s.status)},
          Inspect::measurementText(s.length),
          Inspect::measurementText(s.headroom),
          Inspect::isoUtc(static_cast<time_t>(s.timeStamp)),
          std::to_string(s.numPassTests),
          std::to_string(s.numPassStarTests),
          std::to_string(s.numFailTests),
          row.file};
}

/// "17 results: 1 Fail, 16 Pass"
std::string totalOf(const std::vector<Inspect::ResultRow>& rows) {
  std::map<std::string, std::size_t> verdicts;
  for (const Inspect::ResultRow& row : rows) ++verdicts[toString(row.summary.status)];
  std::string text = counted(rows.size(), "result");
  const char* separator = ": ";
  for (const auto& [verdict, count] : verdicts) {
    text +=
        fmt::format("{}{} {}", std::exchange(separator, ", "), count, verdict.empty() ? "without a verdict" : verdict);
  }
  return totalLine(text);
}

std::string tableOf(const std::vector<Inspect::ResultRow>& rows) {
  Table table({{"id"},
               {"type"},
               {"status"},
               {"length", true},
               {"headroom", true},
               {"time"},
               {"numPassTests", true},
               {"numPassStarTests", true},
               {"numFailTests", true},
               {"file"}});
  return tableText(table, rows.size(), [&rows](std::size_t i) { return cellsOf(rows[i]); }) + totalOf(rows);
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

/// Prints each row when its file was read, in the order of the files, and holds none.
int summaryInPassing(const SummaryArguments& args, const Inspect::FileRun& run, const Options& options, int code) {
  std::optional<AnswerStream> answers;
  const auto begin = [&] {
    if (!answers) answers.emplace(options, "results", Inspect::rowColumns());
  };
  const Inspect::JobFiles job = readJob(run, options, code, EXIT_COULD_NOT, [&](const Inspect::ResultRow& row) {
    const Json::Value json = toJson(row);
    begin();
    answers->print("", json, {json});
  });
  if (complainsOfNoResults(args.paths, job)) return EXIT_COULD_NOT;
  begin();
  Json::Value totals;
  totals["otherFiles"] = static_cast<Json::UInt64>(job.others);
  answers->finish(totals);
  return code;
}

int summary(const SummaryArguments& args, const Options& options) {
  Inspect::ExpectedIds expected;
  const bool hasExpected = !args.expected.empty();
  if (!takeExpected(args.expected, expected)) return EXIT_USAGE;
  int code = EXIT_DONE;
  std::size_t passedOver = 0;
  std::vector<std::string> files = filesOf(args.paths, options, code, passedOver);
  const Inspect::FileRun run(std::move(files), args.paths, options.maxSize, passedOver);
  if (!hasExpected && complainsOfNoFiles(args.paths, run.files())) return EXIT_COULD_NOT;
  if (args.unsorted && options.format != FORMAT_TABLE) return summaryInPassing(args, run, options, code);
  Inspect::JobFiles job;
  if (args.unsorted) {
    std::vector<Inspect::ResultRow> rows;
    job = readJob(run, options, code, EXIT_COULD_NOT, [&rows](const Inspect::ResultRow& row) { rows.push_back(row); });
    job.rows.swap(rows);
  } else {
    job = readJob(run, options, code);
  }
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
    if (!isWhole && !options.quiet) {
      std::istringstream lines(lists);
      for (std::string line; std::getline(lines, line);) complain(line);
    }
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
  addExpect(command, args->expected);
  command.flag("--unsorted", args->unsorted, "in the order of the files, each row as soon as it is known")
      .excluding("--expect");
  command.run = [args, &options] { return summary(*args, options); };
  return command;
}

}  // namespace Command
