#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>
#include <libcrossplatform/common/PFileSectionTypes.h>
#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/ResultVocabulary.h>

#include "Commands.h"

namespace Command {
namespace {

struct TypeRow {
  std::string kind;
  std::optional<uint32_t> id;  ///< findings are known by name alone
  std::string name;
  std::string more;
};

void addSections(std::vector<TypeRow>& rows) {
  for (const PFile::SectionType& type : PFile::sectionTypes()) {
    const bool isVersioned = type.newestVersion != PFile::SectionType::UNVERSIONED;
    rows.push_back({"section", type.id, type.name != nullptr ? type.name : "-",
                    isVersioned ? fmt::format("version {}", type.newestVersion) : "-"});
  }
}

void addRecords(std::vector<TypeRow>& rows) {
  for (const Veltra::RecordType& type : Veltra::recordTypes()) {
    rows.push_back(
        {"record", type.id, type.name, *type.logName == '\0' ? "-" : fmt::format("in logs {}", type.logName)});
  }
}

void addFindings(std::vector<TypeRow>& rows) {
  for (const Inspect::FindingCode code : Inspect::findingCodes()) {
    rows.push_back({"finding", std::nullopt, toString(code), meaningOf(code)});
  }
}

template <class E>
void addTexts(const char* kind, std::vector<TypeRow>& rows) {
  for (const Veltra::EnumText<E>& row : Veltra::enumTexts<E>()) {
    if (*row.text != '\0') rows.push_back({kind, static_cast<uint32_t>(row.value), row.text, "-"});
  }
}

std::vector<TypeRow> allRows() {
  std::vector<TypeRow> rows;
  addSections(rows);
  addRecords(rows);
  addFindings(rows);
  addTexts<Veltra::Status>("Status", rows);
  addTexts<Veltra::ResultType>("ResultType", rows);
  addTexts<Veltra::CableEnd>("CableEnd", rows);
  addTexts<Veltra::TestType>("TestType", rows);
  addTexts<Veltra::TestMergeFlags>("TestMergeFlags", rows);
  addTexts<Veltra::Language>("Language", rows);
  addTexts<Veltra::LocaleType>("LocaleType", rows);
  addTexts<Veltra::DateFormat>("DateFormat", rows);
  addTexts<Veltra::TimeFormat>("TimeFormat", rows);
  addTexts<Veltra::PowerDownTimeout>("PowerDownTimeout", rows);
  addTexts<Veltra::BacklightTimeout>("BacklightTimeout", rows);
  addTexts<Veltra::LengthUnits>("LengthUnits", rows);
  addTexts<Veltra::PowerLineFrequency>("PowerLineFrequency", rows);
  addTexts<Veltra::ResultStorageLocation>("ResultStorageLocation", rows);
  addTexts<Veltra::NumericFormat>("NumericFormat", rows);
  addTexts<Veltra::IPAddressSource>("IPAddressSource", rows);
  return rows;
}

Json::Value toJson(const TypeRow& row) {
  Json::Value json(Json::objectValue);
  json["kind"] = row.kind;
  json["id"] = row.id ? Json::Value(*row.id) : Json::Value();
  json["name"] = row.name == "-" ? Json::Value() : Json::Value(row.name);
  json["more"] = row.more == "-" ? Json::Value() : Json::Value(row.more);
  return json;
}

std::string tableOf(const std::vector<TypeRow>& rows) {
  Table table({{"Kind"}, {"Id", true}, {"Name"}, {"More"}}, "type");
  for (const TypeRow& row : rows) {
    const std::string id = !row.id ? "-" : fmt::format(row.kind == "record" ? "0x{:06x}" : "{}", *row.id);
    table.add({row.kind, id, row.name, row.more});
  }
  return table.text();
}

/// The rows with this name in any case; if there are none, those that have it in their names.
std::vector<TypeRow> rowsNamed(const std::string& name) {
  std::vector<TypeRow> same, containing;
  for (TypeRow& row : allRows()) {
    if (strcasecmp(row.name.c_str(), name.c_str()) == 0) same.push_back(row);
    if (strcasestr(row.name.c_str(), name.c_str()) != nullptr) containing.push_back(std::move(row));
  }
  return same.empty() ? containing : same;
}

/// The rows with this id.
std::vector<TypeRow> rowsOf(unsigned long id) {
  std::vector<TypeRow> rows = allRows();
  rows.erase(std::remove_if(rows.begin(), rows.end(), [id](const TypeRow& row) { return row.id != id; }), rows.end());
  return rows;
}

int types(const std::string& idOrName, const Options& options) {
  char* end = nullptr;
  const unsigned long id = std::strtoul(idOrName.c_str(), &end, 0);
  const bool byId = !idOrName.empty() && *end == '\0';
  const std::vector<TypeRow> rows = idOrName.empty() ? allRows() : byId ? rowsOf(id) : rowsNamed(idOrName);
  if (rows.empty()) {
    complain(idOrName + ": no such id or name");
    return EXIT_NO;
  }
  Document document;
  document.columns = {"kind", "id", "name", "more"};
  document.rows = {"types", rows.size(), [&rows](std::size_t i) { return toJson(rows[i]); }};
  document.text = [&rows] { return tableOf(rows); };
  printDocument(document, options);
  return EXIT_DONE;
}

}  // namespace

Subcommand typesCommand(const Options& options) {
  const auto idOrName = std::make_shared<std::string>();
  Subcommand command("types", "Section types, records, findings and the texts of results and settings");
  command.place("ID", "ID", idOrName.get(),
                "one number, decimal or 0x hexadecimal, or one name or a part of it, in any case");
  command.run = [idOrName, &options] { return types(*idOrName, options); };
  return command;
}

}  // namespace Command
