#include <memory>

#include <libinspect/container/FileDiff.h>
#include <libinspect/records/RecordView.h>

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

int diff(const DiffArguments& args, const Options& options) {
  Inspect::ByteSource a, b;
  if (!openInput(a, args.a, options) || !openInput(b, args.b, options)) return EXIT_COULD_NOT;
  const std::vector<Inspect::Difference> differences = differencesOf(a, b, Inspect::recordFields, args.reveal);
  Document document;
  document.columns = {"field", "a", "b"};
  document.rows = {"differences", differences.size(), [&](std::size_t i) {
                     Json::Value row(Json::objectValue);
                     row["field"] = differences[i].field;
                     row["a"] = differences[i].a;
                     row["b"] = differences[i].b;
                     return row;
                   }};
  document.text = [&] {
    Table table({{"Field"}, {"A"}, {"B"}}, "difference");
    for (const Inspect::Difference& d : differences) table.add({d.field, cellOf(d.a), cellOf(d.b)});
    return table.text();
  };
  if (!differences.empty() || options.format == FORMAT_JSON) printDocument(document, options);
  return answerAfter(a, answerAfter(b, differences.empty() ? EXIT_DONE : EXIT_NO));
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
