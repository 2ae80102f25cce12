#include <memory>

#include <libinspect/container/FileDiff.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::string a;
  std::string b;
};

std::string cellOf(const Json::Value& value) {
  return value.isNull() ? "-" : value.isString() ? value.asString() : jsonText(value, "");
}

int diff(const Arguments& args, const Options& options) {
  Inspect::ByteSource a, b;
  if (!openInput(a, args.a, options) || !openInput(b, args.b, options)) return EXIT_COULD_NOT;
  const std::vector<Inspect::Difference> differences = differencesOf(a, b);
  Table table({{"Field"}, {"A"}, {"B"}});
  Document document;
  document.columns = {"field", "a", "b"};
  document.json["differences"] = Json::Value(Json::arrayValue);
  for (const Inspect::Difference& difference : differences) {
    table.add({difference.field, cellOf(difference.a), cellOf(difference.b)});
    Json::Value row(Json::objectValue);
    row["field"] = difference.field;
    row["a"] = difference.a;
    row["b"] = difference.b;
    document.rows.push_back(row);
    document.json["differences"].append(row);
  }
  document.text = table.text();
  if (!differences.empty() || options.format == FORMAT_JSON) printDocument(document, options);
  return answerAfter(a, answerAfter(b, differences.empty() ? EXIT_DONE : EXIT_NO));
}

}  // namespace

void addDiff(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("diff", "The fields in which two files differ");
  const auto args = std::make_shared<Arguments>();
  command->add_option("A", args->a, "one file")->required()->type_name("A");
  command->add_option("B", args->b, "the other")->required()->type_name("B");
  command->callback([args, &options, &run] { run = [args, &options] { return diff(*args, options); }; });
}

}  // namespace Command
