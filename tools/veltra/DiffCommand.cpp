#include <memory>

#include <libinspect/container/FileDiff.h>
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
