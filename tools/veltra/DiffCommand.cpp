#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include <libinspect/container/FileDiff.h>
#include <libinspect/job/DeliveryDiff.h>
#include <libinspect/records/FileJudge.h>
#include <libinspect/records/KnownPayload.h>

#include "Commands.h"

namespace Command {
namespace {

struct DiffArguments {
  std::string a;
  std::string b;
  bool reveal = false;
};

std::string cellOf(const Json::Value& value) {
  return value.isNull() ? "-" : value.isString() ? value.asString() : jsonText(value, "");
}

/// Values of different kinds that look alike are told apart: "1" and 1, or "-" and what is not there.
Table::Row cellsOf(const Inspect::Difference& difference) {
  const std::string a = cellOf(difference.a), b = cellOf(difference.b);
  if (a != b || difference.a == difference.b) return {difference.field, a, b};
  const auto quoted = [](const Json::Value& value) { return value.isString() ? jsonText(value, "") : cellOf(value); };
  return {difference.field, quoted(difference.a), quoted(difference.b)};
}

Json::Value jsonOf(const Inspect::Difference& difference) {
  Json::Value row(Json::objectValue);
  row["field"] = difference.field;
  row["a"] = difference.a;
  row["b"] = difference.b;
  return row;
}

/// The exit code for a file in which nothing can be compared, with a complaint; EXIT_DONE for any other.
int codeOfNothing(const Inspect::ByteSource& source, const Inspect::ContainerReport& report) {
  if (!report.isNoContainer()) return EXIT_DONE;
  const Inspect::JudgedFile file = Inspect::judge(source, Inspect::Examination::QUICK);
  const bool isOther = file.state == Inspect::FileState::OTHER;
  complain(isOther ? noContainerText(file) : describe(report.name, *report.findings.begin()));
  return isOther || report.size == 0 ? EXIT_COULD_NOT : EXIT_NO;
}

int diff(const DiffArguments& args, const Options& options) {
  Inspect::ByteSource a, b;
  if (!openInput(a, args.a, options) || !openInput(b, args.b, options)) return EXIT_COULD_NOT;
  const auto compare = [&](const Inspect::OnDifference& onDifference) {
    return differencesOf(a, b, Inspect::comparedFields, args.reveal, onDifference);
  };
  FirstFew<Inspect::Difference> differences;
  LongTable table({{"Field"}, {"A"}, {"B"}}, "difference");
  const Inspect::Comparison comparison = compare([&](const Inspect::Difference& difference) {
    differences.add(difference);
    if (options.format == FORMAT_TABLE) table.add(cellsOf(difference));
  });
  const int codeA = codeOfNothing(a, comparison.a), nothing = worse(codeA, codeOfNothing(b, comparison.b));
  if (nothing != EXIT_DONE) return answerAfter(a, answerAfter(b, nothing));
  // Few differences are held; many are found once more to be printed.
  const auto forEach = [&](const Inspect::OnDifference& onDifference) {
    for (const Inspect::Difference& difference : differences.held()) onDifference(difference);
    if (!differences.areAll()) compare(onDifference);
  };
  Document document;
  document.columns = {"field", "a", "b"};
  document.rows.name = "differences";
  document.rows.all = [&](const LongList::OnElement& onElement) {
    forEach([&](const Inspect::Difference& difference) { onElement(jsonOf(difference)); });
  };
  document.print = [&] {
    table.print([&](const LongTable::OnRow& onRow) {
      forEach([&](const Inspect::Difference& difference) { onRow(cellsOf(difference)); });
    });
  };
  const bool isSame = differences.count() == 0;
  if (!isSame || options.format == FORMAT_JSON) printDocument(document, options);
  return answerAfter(a, answerAfter(b, isSame ? EXIT_DONE : EXIT_NO));
}

/// A difference of an ID, as it is printed.
struct DeliveryRow {
  const Inspect::LinkPair* link = nullptr;
  Inspect::DeliveryChange change = Inspect::DeliveryChange::SAME;
  Inspect::ResultPair files;
  Inspect::Difference difference;
};
using OnDeliveryRow = std::function<void(const DeliveryRow&)>;

/// The file of a difference, or how many there are if it is of the ID.
std::string fileText(const DeliveryRow& row, std::string Inspect::ResultPair::*file) {
  const std::vector<Inspect::ResultPair>& results = row.link->results;
  const auto files = std::count_if(results.begin(), results.end(),
                                   [file](const Inspect::ResultPair& pair) { return !(pair.*file).empty(); });
  if (row.difference.field == Inspect::LINK_VERDICT && files > 1) return fmt::format("{} files", files);
  return (row.files.*file).empty() ? "-" : row.files.*file;
}

Table::Row cellsOf(const DeliveryRow& row, bool hasFiles) {
  Table::Row cells = cellsOf(row.difference);
  cells.insert(cells.begin(), {row.link->id, toString(row.change)});
  if (!hasFiles) return cells;
  cells.emplace_back(fileText(row, &Inspect::ResultPair::oldFile));
  cells.emplace_back(fileText(row, &Inspect::ResultPair::newFile));
  return cells;
}

Json::Value jsonOf(const DeliveryRow& row) {
  const auto known = [](const std::string& file) { return file.empty() ? Json::Value() : Json::Value(file); };
  Json::Value json(Json::objectValue);
  json["id"] = row.link->id;
  json["change"] = toString(row.change);
  json["field"] = row.difference.field;
  json["old"] = row.difference.a;
  json["new"] = row.difference.b;
  json["oldFile"] = known(row.files.oldFile);
  json["newFile"] = known(row.files.newFile);
  return json;
}

/// Two deliveries and what is known of their difference: few rows of it.
struct DeliveryComparison {
  Inspect::Job before, after;
  std::vector<Inspect::LinkPair> links;
  std::array<std::size_t, Inspect::DELIVERY_CHANGES> changes = {};
  struct WithoutId {
    Inspect::ResultPair files;
    Inspect::DeliveryChange change;
  };
  std::vector<WithoutId> withoutId;  ///< damaged files

  std::size_t& of(Inspect::DeliveryChange change) { return changes[static_cast<std::size_t>(change)]; }
};

/// Calls with each row. The kind of a change is known only after its differences; where values differ, how they are
/// stored is not told.
/// @param onLink  called after each ID, with why it could not be compared, if so
void compareDeliveries(const DeliveryComparison& deliveries, bool reveal, Progress& progress,
                       const OnDeliveryRow& onRow,
                       const std::function<void(Inspect::DeliveryChange, const std::string& error)>& onLink) {
  for (const Inspect::LinkPair& link : deliveries.links) {
    FirstFew<DeliveryRow> rows;
    std::string error;
    const auto compare = [&](const OnDeliveryRow& onEach) {
      return compareLinks(
          link, Inspect::comparedFields, reveal,
          [&](const Inspect::ResultPair& files, const Inspect::Difference& difference) {
            onEach({&link, Inspect::DeliveryChange::SAME, files, difference});
          },
          error);
    };
    const Inspect::DeliveryChange change = compare([&rows](const DeliveryRow& row) { rows.add(row); });
    const auto tell = [&](DeliveryRow row) {
      if (!row.difference.isValue && change != Inspect::DeliveryChange::BYTES) return;
      row.change = change;
      onRow(row);
    };
    for (const DeliveryRow& row : rows.held()) tell(row);
    if (!rows.areAll()) compare(tell);
    onLink(change, error);
    for (const Inspect::ResultPair& pair : link.results) {
      progress.advance(Inspect::bytesOf({pair.oldFile, pair.newFile}));
      progress.finishFile();
    }
  }
}

void expectAll(const DeliveryComparison& deliveries, Progress& progress) {
  std::size_t pairs = 0;
  uint64_t bytes = 0;
  if (!progress.active()) return;
  for (const Inspect::LinkPair& link : deliveries.links) {
    pairs += link.results.size();
    for (const Inspect::ResultPair& pair : link.results) bytes += Inspect::bytesOf({pair.oldFile, pair.newFile});
  }
  progress.expect(bytes, pairs);
}

std::string textOf(const DeliveryComparison::WithoutId& lost) {
  using Inspect::DeliveryChange;
  const auto& [files, change] = lost;
  std::string what = toString(change);
  if (change == DeliveryChange::SAME) what = "the same as " + printable(files.newFile);
  if (change == DeliveryChange::BYTES) what = "other bytes than " + printable(files.newFile);
  return fmt::format("{}: damaged and of no ID, {}\n", printable(files.oldFile.empty() ? files.newFile : files.oldFile),
                     what);
}

/// "4 IDs: 1 verdict changed, 3 same"
std::string totalOf(const DeliveryComparison& deliveries) {
  std::string text;
  for (std::size_t i = 0; i < deliveries.changes.size(); ++i) {
    if (deliveries.changes[i] == 0) continue;
    text += fmt::format("{}{} {}", text.empty() ? ": " : ", ", deliveries.changes[i],
                        toString(static_cast<Inspect::DeliveryChange>(i)));
  }
  text = counted(deliveries.links.size(), "ID") + text + "\n";
  for (const DeliveryComparison::WithoutId& lost : deliveries.withoutId) text += textOf(lost);
  return text;
}

Json::Value jsonOf(const DeliveryComparison& deliveries) {
  Json::Value json(Json::objectValue);
  json["ids"] = static_cast<Json::UInt64>(deliveries.links.size());
  for (std::size_t i = 0; i < deliveries.changes.size(); ++i) {
    json[memberName(static_cast<Inspect::DeliveryChange>(i))] = static_cast<Json::UInt64>(deliveries.changes[i]);
  }
  Json::Value& withoutId = json["withoutId"] = Json::Value(Json::arrayValue);
  Json::UInt64 changed = 0;
  for (const auto& [files, change] : deliveries.withoutId) {
    if (change != Inspect::DeliveryChange::SAME) ++changed;
    for (const std::string* const file : {&files.oldFile, &files.newFile}) {
      if (!file->empty()) withoutId.append(*file);
    }
  }
  json["withoutIdChanged"] = changed;
  return json;
}

/// @return false, with a complaint, if there is nothing to compare
bool readDelivery(const std::string& path, const Options& options, Inspect::Job& job, int& code) {
  JobArguments wanted;
  wanted.paths = {path};
  if (!describeJob(wanted, job, code)) return false;
  readWholeJob(wanted, options, job, code);
  if (!job.files.unread.empty()) code = worse(code, EXIT_WITH_LOSS);  // also larger than --max-size
  return !complainsOfNoResults(wanted.paths, job.files);
}

void compareWithoutId(const DiffArguments& args, DeliveryComparison& deliveries, int& code) {
  for (Inspect::ResultPair& files : filesWithoutId(deliveries.before, args.a, deliveries.after, args.b)) {
    std::string error;
    const Inspect::DeliveryChange change = compareBytes(files, error);
    code = worse(code, change == Inspect::DeliveryChange::SAME ? EXIT_WITH_LOSS : EXIT_NO);
    if (!error.empty()) {
      complain(error);
      code = worse(code, EXIT_COULD_NOT);
    }
    deliveries.withoutId.push_back({std::move(files), change});
  }
}

int diffDeliveries(const DiffArguments& args, const Options& options) {
  if (args.a == "-" || args.b == "-") {
    complain("-: expected a folder or a file with -r, since files are read twice");
    return EXIT_USAGE;
  }
  DeliveryComparison deliveries;
  int code = EXIT_DONE;
  const bool hasOld = readDelivery(args.a, options, deliveries.before, code);
  if (!readDelivery(args.b, options, deliveries.after, code) || !hasOld) return EXIT_COULD_NOT;
  settleDeliveries(deliveries.before, deliveries.after);
  deliveries.links = pairLinks(deliveries.before.links, deliveries.after.links);
  compareWithoutId(args, deliveries, code);
  const bool hasFiles = std::any_of(deliveries.links.begin(), deliveries.links.end(),
                                    [](const Inspect::LinkPair& link) { return link.results.size() > 1; });
  FirstFew<DeliveryRow> rows;
  std::vector<Table::Column> columns = {{"ID"}, {"Change"}, {"Field"}, {"Old"}, {"New"}};
  if (hasFiles) columns.insert(columns.end(), {{"Old file"}, {"New file"}});
  LongTable table(std::move(columns), "difference");
  {
    Progress progress(options.progress);
    expectAll(deliveries, progress);
    compareDeliveries(
        deliveries, args.reveal, progress,
        [&](const DeliveryRow& row) {
          rows.add(row);
          if (options.format == FORMAT_TABLE) table.add(cellsOf(row, hasFiles));
        },
        [&](Inspect::DeliveryChange change, const std::string& error) {
          ++deliveries.of(change);
          if (change != Inspect::DeliveryChange::SAME) code = worse(code, EXIT_NO);
          if (error.empty()) return;
          complain(error);
          code = worse(code, EXIT_COULD_NOT);
        });
  }
  // Few rows are held; many are found once more to be printed.
  const auto forEach = [&](const OnDeliveryRow& onRow) {
    for (const DeliveryRow& row : rows.held()) onRow(row);
    if (rows.areAll()) return;
    Progress progress(options.progress);
    const Room room(stdout);
    expectAll(deliveries, progress);
    compareDeliveries(deliveries, args.reveal, progress, onRow, [](Inspect::DeliveryChange, const std::string&) {});
  };
  Document document;
  document.columns = {"id", "change", "field", "old", "new", "oldFile", "newFile"};
  document.json = [&] { return jsonOf(deliveries); };
  document.rows.name = "differences";
  document.rows.all = [&](const LongList::OnElement& onElement) {
    forEach([&](const DeliveryRow& row) { onElement(jsonOf(row)); });
  };
  document.print = [&] {
    table.print([&](const LongTable::OnRow& onRow) {
      forEach([&](const DeliveryRow& row) { onRow(cellsOf(row, hasFiles)); });
    });
    fmt::print("{}", totalOf(deliveries));
  };
  printDocument(document, options);
  const bool isWhole = options.format == FORMAT_TABLE || options.format == FORMAT_JSON;
  if (isWhole || options.quiet) return code;
  (void)std::fflush(stdout);
  std::istringstream lines(totalOf(deliveries));
  for (std::string line; std::getline(lines, line);) complain(line, Tone::PLAIN);
  return code;
}

}  // namespace

Subcommand diffCommand(const Options& options) {
  const auto args = std::make_shared<DiffArguments>();
  Subcommand command("diff", "The fields in which two files differ, or two deliveries of a job");
  command.place("A", "A", &args->a, "one file; with -r the old delivery, a folder or a file").required();
  command.place("B", "B", &args->b, "the other; with -r the new delivery").required();
  command.flag("--reveal", args->reveal, REVEAL_HELP);
  command.run = [args, &options] { return options.recursive ? diffDeliveries(*args, options) : diff(*args, options); };
  return command;
}

}  // namespace Command
