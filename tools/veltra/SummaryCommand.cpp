#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>
#include <libinspect/records/Verdict.h>

#include "TableFile.h"

namespace Command {
namespace {

using Rows = std::vector<const Inspect::ResultRow*>;
using Fields = std::vector<const Inspect::RowField*>;

struct SummaryArguments {
  std::vector<std::string> paths;
  std::vector<std::string> expected;
  std::vector<std::string> sort;
  std::vector<std::string> columns;
  std::optional<uint32_t> limit;
  bool failed = false;
  bool unsorted = false;
  TableOutput output;
};

/// What of the results is shown, and how.
struct Selection {
  Fields fields;  ///< none: all
  std::vector<Inspect::SortKey> keys;
  bool onlyFailed = false;
  std::size_t most = std::numeric_limits<std::size_t>::max();

  bool includes(const Inspect::ResultRow& row) const { return !onlyFailed || Inspect::isFail(row.summary.status); }
};

/// The fields of a table: the file, which may be long, is the last one.
Fields fieldsOfTable(const Selection& selection) {
  if (!selection.fields.empty()) return selection.fields;
  Fields fields;
  for (const Inspect::RowField& field : Inspect::rowFields()) fields.push_back(&field);
  std::rotate(fields.begin(), fields.begin() + 1, fields.end());
  return fields;
}

std::vector<std::string> columnsOf(const Selection& selection) {
  return selection.fields.empty() ? Inspect::rowColumns() : Inspect::rowColumns(selection.fields);
}

Json::Value jsonOf(const Inspect::ResultRow& row, const Selection& selection) {
  if (selection.fields.empty()) return toJson(row);
  Json::Value chosen(Json::objectValue);
  for (const Inspect::RowField* const field : selection.fields) chosen[field->name] = field->json(row);
  return chosen;
}

/// Calls with each name of a list that was given several times, or with commas. @return false, with a complaint
bool forEachField(const char* option, const std::vector<std::string>& given, bool takesDirection,
                  const std::function<void(const Inspect::RowField&, bool isDescending)>& onField) {
  for (const std::string& list : given) {
    std::istringstream names(list + ",");
    for (std::string name; std::getline(names, name, ',');) {
      const bool isDescending = takesDirection && name.rfind('-', 0) == 0;
      const Inspect::RowField* const field = Inspect::rowField(name.substr(isDescending ? 1 : 0));
      if (field == nullptr) {
        std::string known;
        for (const Inspect::RowField& each : Inspect::rowFields())
          known += (known.empty() ? "" : ", ") + std::string(each.name);
        complain(fmt::format("{}: expected one of {}; found \"{}\"", option, known, name));
        return false;
      }
      onField(*field, isDescending);
    }
  }
  return true;
}

bool select(const SummaryArguments& args, Selection& selection) {
  selection.onlyFailed = args.failed;
  if (args.limit) selection.most = *args.limit;
  return forEachField("--sort", args.sort, true,
                      [&](const Inspect::RowField& field, bool isDescending) {
                        selection.keys.push_back({&field, isDescending});
                      }) &&
         forEachField("--columns", args.columns, false, [&](const Inspect::RowField& field, bool) {
           if (std::find(selection.fields.begin(), selection.fields.end(), &field) == selection.fields.end()) {
             selection.fields.push_back(&field);
           }
         });
}

/// "17 results: 1 Fail, 16 Pass", and how many of them are shown.
std::string totalOf(const std::vector<Inspect::ResultRow>& rows, std::size_t shown) {
  std::map<std::string, std::size_t> verdicts;
  for (const Inspect::ResultRow& row : rows) ++verdicts[toString(row.summary.status)];
  std::string text = (shown < rows.size() ? fmt::format("{} of ", shown) : "") + counted(rows.size(), "result");
  const char* separator = ": ";
  for (const auto& [verdict, count] : verdicts) {
    text +=
        fmt::format("{}{} {}", std::exchange(separator, ", "), count, verdict.empty() ? "without a verdict" : verdict);
  }
  return totalLine(text);
}

std::string tableOf(const Rows& rows, const Selection& selection) {
  const Fields fields = fieldsOfTable(selection);
  std::vector<Table::Column> columns;
  for (const Inspect::RowField* const field : fields) columns.push_back({field->name, field->isNumber});
  Table table(std::move(columns));
  return tableText(table, rows.size(), [&](std::size_t i) {
    static const Inspect::RowField* const STATUS = Inspect::rowField("status");
    Table::Row cells;
    for (const Inspect::RowField* const field : fields) {
      cells.emplace_back(field->text(*rows[i]), field == STATUS ? toneOf(rows[i]->summary.status) : Tone::PLAIN);
    }
    return cells;
  });
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
int summaryInPassing(const SummaryArguments& args, const Selection& selection, const Inspect::FileRun& run,
                     const Options& options, int code) {
  std::optional<AnswerStream> answers;
  std::size_t shown = 0;
  const auto begin = [&] {
    if (!answers) answers.emplace(options, "results", columnsOf(selection));
  };
  const Inspect::JobFiles job = readJob(run, options, code, EXIT_COULD_NOT, [&](const Inspect::ResultRow& row) {
    if (!selection.includes(row) || shown >= selection.most) return;
    ++shown;
    const Json::Value json = jsonOf(row, selection);
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

/// What arguments must not be together. @return false, with a complaint
bool agree(const SummaryArguments& args) {
  const bool isChosen = args.failed || args.limit || !args.sort.empty() || !args.columns.empty();
  if (args.output.path.empty() || !(args.unsorted || isChosen)) return true;
  complain(args.unsorted ? "--unsorted: expected without -o, found a file whose rows are in the order of IDs"
                         : "-o: expected no --failed, --sort, --columns and --limit, since the file has all rows");
  return false;
}

/// All results, in the order of their IDs or, unsorted, of the files.
Inspect::JobFiles readAll(const SummaryArguments& args, const Inspect::FileRun& run, const Options& options,
                          int& code) {
  if (!args.unsorted) return readJob(run, options, code);
  std::vector<Inspect::ResultRow> rows;
  Inspect::JobFiles job =
      readJob(run, options, code, EXIT_COULD_NOT, [&rows](const Inspect::ResultRow& row) { rows.push_back(row); });
  job.rows.swap(rows);
  return job;
}

Rows rowsOf(const Inspect::JobFiles& job, const Selection& selection) {
  Rows rows;
  for (const Inspect::ResultRow& row : job.rows) {
    if (selection.includes(row)) rows.push_back(&row);
  }
  sortBy(selection.keys, rows);
  rows.resize(std::min(rows.size(), selection.most));
  return rows;
}

/// Adds the IDs that are not as expected: to the answer, or to standard error beside one that has rows alone.
void addCoverage(const Inspect::Coverage& coverage, const Options& options, Document& document) {
  const std::string lists = listText("Missing", coverage.missing) + listText("Damaged", coverage.damaged) +
                            listText("Tested twice", coverage.twice) + listText("Foreign", coverage.foreign);
  document.text = [text = document.text, lists] {
    return text() + (lists.empty() ? "All expected IDs were tested once.\n" : lists);
  };
  document.json = [whole = document.json, &coverage] {
    Json::Value json = whole();
    json["missing"] = listJson(coverage.missing);
    json["damaged"] = listJson(coverage.damaged);
    json["twice"] = listJson(coverage.twice);
    json["foreign"] = listJson(coverage.foreign);
    return json;
  };
  const bool isWhole = options.format == FORMAT_TABLE || options.format == FORMAT_JSON;
  if (isWhole || options.quiet) return;
  std::istringstream lines(lists);
  for (std::string line; std::getline(lines, line);) complain(line);
}

int summary(const SummaryArguments& args, const Options& options) {
  Inspect::Job job;
  const bool hasExpected = !args.expected.empty();
  Selection selection;
  if (!takeExpected(args.expected, job.expected) || !select(args, selection)) return EXIT_USAGE;
  int code = EXIT_DONE;
  if (!takeTableOutput(args.output, args.paths, options, code)) return code;
  if (!agree(args)) return EXIT_USAGE;
  std::size_t passedOver = 0;
  std::vector<std::string> files = filesOf(args.paths, options, code, passedOver);
  if (!leaveOutTableOutput(args.output, files, Inspect::descriptionsIn(args.paths))) return EXIT_COULD_NOT;
  const Inspect::FileRun run(std::move(files), args.paths, options.maxSize, passedOver);
  if (!hasExpected && complainsOfNoFiles(args.paths, run.files())) return EXIT_COULD_NOT;
  if (args.unsorted && options.format != FORMAT_TABLE) return summaryInPassing(args, selection, run, options, code);
  job.files = readAll(args, run, options, code);
  if (!hasExpected && complainsOfNoResults(args.paths, job.files)) return EXIT_COULD_NOT;
  const bool makesTables = !args.output.path.empty();
  if (hasExpected || makesTables) job.settle(Inspect::CountPolicy::LATEST);
  const Rows rows = rowsOf(job.files, selection);
  Document document;
  document.columns = columnsOf(selection);
  document.rows = {"results", rows.size(), [&](std::size_t i) { return jsonOf(*rows[i], selection); }};
  document.text = [&] { return tableOf(rows, selection) + totalOf(job.files.rows, rows.size()); };
  document.json = [&job] {
    Json::Value json(Json::objectValue);
    json["otherFiles"] = static_cast<Json::UInt64>(job.files.others);
    return json;
  };
  const Inspect::Coverage coverage = coverageOf(job.links);
  if (hasExpected) {
    addCoverage(coverage, options, document);
    code = worse(code, codeOf(coverage));
  }
  if (makesTables) return worse(code, saveTables(job, args.output, options));
  if (!rows.empty() || options.format != FORMAT_JSONL) printDocument(document, options);
  return code;
}

}  // namespace

Subcommand summaryCommand(const Options& options) {
  const auto args = std::make_shared<SummaryArguments>();
  Subcommand command("summary", "One row for each result, in the order of their IDs");
  command.place("PATH", "PATH...", &args->paths, "result files, or directories with -r").required();
  addExpect(command, args->expected);
  command.flag("--failed", args->failed, "only results that failed");
  command.option("--columns", "FIELD,...", &args->columns, "only these columns, in this order").repeated();
  command.option("--limit", "N", &args->limit, "only the first N rows");
  command.flag("--unsorted", args->unsorted, "in the order of the files, each row as soon as it is known")
      .excluding("--expect");
  command.option("--sort", "FIELD", &args->sort, "by this column, with - before it the highest first; several in turn")
      .repeated()
      .excluding("--unsorted");
  addTableOutput(command, args->output);
  command.makesTables = true;
  command.run = [args, &options] { return summary(*args, options); };
  return command;
}

}  // namespace Command
