#include <memory>

#include <libinspect/container/FileDiff.h>
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

Table::Row cellsOf(const Inspect::Difference& difference) {
  return {difference.field, cellOf(difference.a), cellOf(difference.b)};
}

Json::Value jsonOf(const Inspect::Difference& difference) {
  Json::Value row(Json::objectValue);
  row["field"] = difference.field;
  row["a"] = difference.a;
  row["b"] = difference.b;
  return row;
}

/// Whether a file is no container at all, with a complaint.
bool complainsOfNoContainer(const Inspect::ContainerReport& report) {
  if (!report.isNoContainer()) return false;
  complain(describe(report.name, *report.findings.begin()));
  return true;
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
  const bool isNoneA = complainsOfNoContainer(comparison.a), isNoneB = complainsOfNoContainer(comparison.b);
  if (isNoneA || isNoneB) return answerAfter(a, answerAfter(b, EXIT_COULD_NOT));
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

}  // namespace

Subcommand diffCommand(const Options& options) {
  const auto args = std::make_shared<DiffArguments>();
  Subcommand command("diff", "The fields in which two files differ");
  command.place("A", "A", &args->a, "one file").required();
  command.place("B", "B", &args->b, "the other").required();
  command.flag("--reveal", args->reveal, REVEAL_HELP);
  command.run = [args, &options] { return diff(*args, options); };
  return command;
}

}  // namespace Command
