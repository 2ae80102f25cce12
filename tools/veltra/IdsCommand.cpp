#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include <libinspect/job/CableIds.h>

#include "Commands.h"

namespace Command {
namespace {

struct IdsArguments {
  std::string first;
  std::string last;
  bool list = false;
  uint32_t from = 0;
  uint32_t count = UINT32_MAX;
  std::optional<std::string> ordinalOf;
  std::optional<uint32_t> id;
  std::vector<std::string> check;
  std::optional<uint32_t> take;
  std::string used;
};

/// Prints IDs one per line, as {"ids": [...]} or as one object per line.
void printIds(const std::vector<std::string>& ids, const Options& options) {
  Document document;
  document.columns = {"id"};
  document.text = [&ids] {
    std::string text;
    for (const std::string& id : ids) text += printable(id) + "\n";
    return text;
  };
  document.json = [&ids] {
    Json::Value json(Json::objectValue);
    json["ids"] = Json::Value(Json::arrayValue);
    for (const std::string& id : ids) json["ids"].append(id);
    return json;
  };
  document.rows = {"", ids.size(), [&ids](std::size_t i) {
                     Json::Value row(Json::objectValue);
                     row["id"] = ids[i];
                     return row;
                   }};
  printDocument(document, options);
}

/// Prints one answer: its text, or its JSON.
int answer(const std::string& text, const Json::Value& json, const Options& options) {
  printDocument({[&] { return printable(text) + "\n"; }, [&] { return json; }, {}, {}}, options);
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
  complain(fmt::format("{}: no such place: the set has {} IDs", ordinal, set.count()));
  return EXIT_NO;
}

int check(const Inspect::CableIdSet& set, const std::vector<std::string>& ids, const Options& options) {
  Document document;
  document.columns = {"id", "ordinal"};
  document.rows = {"ids", ids.size(), [&](std::size_t i) { return idAndOrdinal(ids[i], set.ordinalOf(ids[i])); }};
  document.text = [&] {
    Table table({{"ID"}, {"In set"}, {"Ordinal", true}}, "ID");
    for (const std::string& id : ids) {
      const std::optional<uint32_t> ordinal = set.ordinalOf(id);
      table.add({id, ordinal ? "yes" : "no", ordinal ? std::to_string(*ordinal) : "-"});
    }
    return table.text();
  };
  printDocument(document, options);
  const auto isIn = [&set](const std::string& id) { return set.ordinalOf(id).has_value(); };
  return std::all_of(ids.begin(), ids.end(), isIn) ? EXIT_DONE : EXIT_NO;
}

int take(const Inspect::CableIdSet& set, const IdsArguments& args, uint32_t count, const Options& options) {
  std::vector<std::string> used, foreign;
  if (!args.used.empty()) {
    std::string error;
    if (!Inspect::readUsedIds(args.used, used, error)) {
      complain(error);
      return EXIT_COULD_NOT;
    }
  }
  const std::vector<std::string> ids = Inspect::nextFreeIds(args.first, args.last, used, count, foreign);
  for (const std::string& id : foreign) {
    if (!options.quiet) complain(fmt::format("{}: {}", id, set.ordinalOf(id) ? "used twice" : "not in the set"));
  }
  printIds(ids, options);
  if (ids.size() == count) return foreign.empty() ? EXIT_DONE : EXIT_WITH_LOSS;
  complain(fmt::format("only {} IDs are free", ids.size()));
  return EXIT_NO;
}

int ids(const IdsArguments& args, const Options& options) {
  Inspect::CableIdSet set;
  std::string refusal;
  if (!set.build(args.first, args.last, refusal)) {
    complain(fmt::format("{} and {} do not make a set: {}", args.first, args.last, refusal));
    return EXIT_NO;
  }
  if (args.ordinalOf) return ordinalOf(set, *args.ordinalOf, options);
  if (args.id) return idAt(set, *args.id, options);
  if (!args.check.empty()) return check(set, args.check, options);
  if (args.take) return take(set, args, *args.take, options);
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

Subcommand idsCommand(const Options& options) {
  constexpr char PURPOSE[] = "At most one of these; without one, the number of IDs";
  const auto args = std::make_shared<IdsArguments>();
  Subcommand command("ids", "Count, list and hand out the cable IDs between two IDs");
  command.place("FIRST", "FIRST", &args->first, "the first ID").required();
  command.place("LAST", "LAST", &args->last, "the last ID").required();
  command.flag("--list", args->list, "the IDs, one per line").inGroup(PURPOSE);
  command.option("--ordinal", "ID", &args->ordinalOf, "the place of an ID, counted from 0").inGroup(PURPOSE);
  command.option("--id", "N", &args->id, "the ID at a place, counted from 0").inGroup(PURPOSE);
  command.option("--check", "ID...", &args->check, "whether IDs are in the set").inGroup(PURPOSE);
  command.option("--take", "N", &args->take, "hand out the next free IDs").inGroup(PURPOSE);
  command.option("--from", "N", &args->from, "first place to list").needing("--list");
  command.option("--count", "M", &args->count, "how many to list").needing("--list");
  command
      .option("--used", "FILE", &args->used,
              "IDs used so far, one per line, in the order of use; - reads standard input")
      .needing("--take");
  command.run = [args, &options] { return ids(*args, options); };
  return command;
}

}  // namespace Command
