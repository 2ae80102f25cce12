#include <memory>
#include <sstream>

#include <fmt/format.h>

#include <libinspect/container/ByteSource.h>
#include <libinspect/job/CableIds.h>

#include "Commands.h"

namespace Command {
namespace {

constexpr uint64_t MAX_USED_LIST = uint64_t{16} * 1024 * 1024;

struct Arguments {
  std::string first;
  std::string last;
  bool list = false;
  uint32_t from = 0;
  uint32_t count = UINT32_MAX;
  std::string ordinalOf;
  uint32_t id = 0;
  std::vector<std::string> check;
  uint32_t take = 0;
  std::string used;
};

/// Prints IDs one a line, as {"ids": [...]} or as one object a line.
void printIds(const std::vector<std::string>& ids, const Options& options) {
  Document document;
  document.columns = {"id"};
  document.json["ids"] = Json::Value(Json::arrayValue);
  for (const std::string& id : ids) {
    document.text += printable(id) + "\n";
    document.json["ids"].append(id);
    document.rows.emplace_back(Json::objectValue);
    document.rows.back()["id"] = id;
  }
  printDocument(document, options);
}

/// Prints one answer: its text, or its JSON.
int answer(const std::string& text, const Json::Value& json, const Options& options) {
  printDocument({printable(text) + "\n", json, {}, {}}, options);
  return EXIT_DONE;
}

Json::Value idAndOrdinal(const std::string& id, std::optional<uint32_t> ordinal) {
  Json::Value json(Json::objectValue);
  json["id"] = id;
  json["ordinal"] = ordinal ? Json::Value(*ordinal) : Json::Value();
  return json;
}

int ordinalOf(const Inspect::CableIdSet& set, const std::string& id, const Options& options) {
  const std::optional<uint32_t> ordinal = set.ordinalOf(id);
  if (ordinal) return answer(std::to_string(*ordinal), idAndOrdinal(id, ordinal), options);
  complain(fmt::format("{}: not in the set", id));
  return EXIT_NO;
}

int idAt(const Inspect::CableIdSet& set, uint32_t ordinal, const Options& options) {
  const std::vector<std::string> ids = set.ids(ordinal, 1);
  if (!ids.empty()) return answer(ids.front(), idAndOrdinal(ids.front(), ordinal), options);
  complain(fmt::format("{}: no such ordinal, the set has {} IDs", ordinal, set.count()));
  return EXIT_NO;
}

int check(const Inspect::CableIdSet& set, const std::vector<std::string>& ids, const Options& options) {
  Table table({{"ID"}, {"In set"}, {"Ordinal", true}});
  Document document;
  document.columns = {"id", "ordinal"};
  int code = EXIT_DONE;
  for (const std::string& id : ids) {
    const std::optional<uint32_t> ordinal = set.ordinalOf(id);
    if (!ordinal) code = EXIT_NO;
    table.add({id, ordinal ? "yes" : "no", ordinal ? std::to_string(*ordinal) : "-"});
    document.rows.push_back(idAndOrdinal(id, ordinal));
    document.json["ids"].append(document.rows.back());
  }
  document.text = table.text();
  printDocument(document, options);
  return code;
}

int take(const Arguments& args, const Options& options) {
  std::vector<std::string> used, foreign;
  if (!args.used.empty()) {
    std::string text, error;
    if (!Inspect::readText(args.used, MAX_USED_LIST, text, error)) {
      complain(error);
      return EXIT_COULD_NOT;
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();  // a list written on Windows
      if (!line.empty()) used.push_back(line);
    }
  }
  const std::vector<std::string> ids = Inspect::nextFreeIds(args.first, args.last, used, args.take, foreign);
  for (const std::string& id : foreign) {
    if (!options.quiet) complain(fmt::format("{}: used twice, or not in the set", id));
  }
  printIds(ids, options);
  if (ids.size() == args.take) return foreign.empty() ? EXIT_DONE : EXIT_WITH_LOSS;
  complain(fmt::format("only {} IDs are free", ids.size()));
  return EXIT_NO;
}

int ids(const Arguments& args, const CLI::App& command, const Options& options) {
  Inspect::CableIdSet set;
  std::string refusal;
  if (!set.build(args.first, args.last, refusal)) {
    complain(fmt::format("{} and {} make no set: {}", args.first, args.last, refusal));
    return EXIT_NO;
  }
  if (command.count("--ordinal") > 0) return ordinalOf(set, args.ordinalOf, options);
  if (command.count("--id") > 0) return idAt(set, args.id, options);
  if (command.count("--check") > 0) return check(set, args.check, options);
  if (command.count("--take") > 0) return take(args, options);
  if (args.list) {
    printIds(set.ids(args.from, args.count), options);
    return EXIT_DONE;
  }
  Json::Value json(Json::objectValue);
  json["first"] = args.first;
  json["last"] = args.last;
  json["count"] = set.count();
  return answer(std::to_string(set.count()), json, options);
}

}  // namespace

void addIds(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("ids", "Count, list and hand out the cable IDs between two IDs");
  const auto args = std::make_shared<Arguments>();
  command->add_option("FIRST", args->first, "the first ID")->required()->type_name("FIRST");
  command->add_option("LAST", args->last, "the last ID")->required()->type_name("LAST");
  CLI::Option_group* const what =
      command->add_option_group("what", "At most one of; without any, how many IDs there are");
  CLI::Option* const list = what->add_flag("--list", args->list, "the IDs, one a line");
  what->add_option("--ordinal", args->ordinalOf, "the place of an ID, counted from 0")->type_name("ID");
  what->add_option("--id", args->id, "the ID at a place, counted from 0")->type_name("N");
  what->add_option("--check", args->check, "whether IDs are in the set")->type_name("ID...")->expected(1, -1);
  CLI::Option* const taken = what->add_option("--take", args->take, "hand out the next free IDs")->type_name("N");
  what->require_option(0, 1);
  command->add_option("--from", args->from, "first place to list")->type_name("N")->needs(list);
  command->add_option("--count", args->count, "how many to list")->type_name("M")->needs(list);
  command->add_option("--used", args->used, "IDs used so far, one a line, in the order of use; - reads standard input")
      ->type_name("FILE")
      ->needs(taken);
  command->callback(
      [args, command, &options, &run] { run = [args, command, &options] { return ids(*args, *command, options); }; });
}

}  // namespace Command
