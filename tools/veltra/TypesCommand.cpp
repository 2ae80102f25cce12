#include <cstdlib>
#include <memory>

#include <fmt/format.h>

#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/serialization/MarshalTypes.h>
#include <libinspect/records/RecordView.h>

#include "Commands.h"

namespace Command {
namespace {

struct TypeRow {
  std::string kind;
  uint32_t id;
  std::string name;
  std::string more;
};

void addSections(std::vector<TypeRow>& rows) {
  for (uint32_t id = 0; id <= UINT16_MAX; ++id) {
    const auto type = static_cast<uint16_t>(id);
    const char* const name = PFile::sectionIdToString(type);
    const boost::optional<uint16_t> newest = Veltra::newestKnownVersion(type);
    if (name == nullptr && !newest) continue;
    rows.push_back({"section", id, name != nullptr ? name : "-", newest ? fmt::format("version {}", *newest) : "-"});
  }
}

void addRecords(std::vector<TypeRow>& rows) {
  for (const auto& [id, name] : Inspect::knownRecords()) {
    const std::string logName = Marshal::veltraCommonIdToString(id);
    rows.push_back({"record", id, name, logName.empty() ? "-" : "in logs " + logName});
  }
}

template <class E>
void addTexts(const char* kind, uint32_t last, std::vector<TypeRow>& rows) {
  for (uint32_t value = 0; value <= last; ++value) {
    const std::string text = toString(static_cast<E>(value));
    if (!text.empty()) rows.push_back({kind, value, text, "-"});
  }
}

std::vector<TypeRow> allRows() {
  std::vector<TypeRow> rows;
  addSections(rows);
  addRecords(rows);
  addTexts<Veltra::Status>("Status", 255, rows);
  addTexts<Veltra::ResultType>("ResultType", 255, rows);
  addTexts<Veltra::CableEnd>("CableEnd", 255, rows);
  addTexts<Veltra::TestType>("TestType", 255, rows);
  addTexts<Veltra::TestMergeFlags>("TestMergeFlags", 1023, rows);
  addTexts<Veltra::Language>("Language", Veltra::LANGUAGE_TURKISH, rows);
  addTexts<Veltra::LocaleType>("LocaleType", Veltra::LOCALE_TR_TR, rows);
  addTexts<Veltra::DateFormat>("DateFormat", Veltra::DATE_FORMAT_YMD_DASH, rows);
  addTexts<Veltra::TimeFormat>("TimeFormat", Veltra::TIME_FORMAT_24_HR, rows);
  addTexts<Veltra::PowerDownTimeout>("PowerDownTimeout", Veltra::POWER_DOWN_60_MIN, rows);
  addTexts<Veltra::BacklightTimeout>("BacklightTimeout", Veltra::BACKLIGHT_15_MIN, rows);
  addTexts<Veltra::LengthUnits>("LengthUnits", Veltra::LENGTH_UNITS_FT, rows);
  addTexts<Veltra::PowerLineFrequency>("PowerLineFrequency", Veltra::POWER_LINE_60_HZ, rows);
  addTexts<Veltra::ResultStorageLocation>("ResultStorageLocation", Veltra::RESULT_STORAGE_INTERNAL, rows);
  addTexts<Veltra::NumericFormat>("NumericFormat", Veltra::NUMERIC_FORMAT_COMMA, rows);
  addTexts<Veltra::IPAddressSource>("IPAddressSource", Veltra::IP_ADDRESS_STATIC, rows);
  return rows;
}

int types(const std::string& wanted, const Options& options) {
  char* end = nullptr;
  const unsigned long id = std::strtoul(wanted.c_str(), &end, 0);
  const bool byId = !wanted.empty() && *end == '\0';
  Table table({{"Kind"}, {"Id", true}, {"Name"}, {"More"}});
  Document document;
  document.columns = {"kind", "id", "name", "more"};
  document.rowsMember = "types";
  for (const TypeRow& row : allRows()) {
    if (!wanted.empty() && !(byId ? row.id == id : row.name == wanted)) continue;
    table.add({row.kind, row.kind == "record" ? fmt::format("0x{:06x}", row.id) : std::to_string(row.id), row.name,
               row.more});
    Json::Value json(Json::objectValue);
    json["kind"] = row.kind;
    json["id"] = row.id;
    json["name"] = row.name == "-" ? Json::Value() : Json::Value(row.name);
    json["more"] = row.more == "-" ? Json::Value() : Json::Value(row.more);
    document.rows.push_back(json);
  }
  if (document.rows.empty()) {
    complain(wanted + ": no such id or name");
    return EXIT_NO;
  }
  document.text = table.text();
  printDocument(document, options);
  return EXIT_DONE;
}

}  // namespace

Subcommand typesCommand(const Options& options) {
  const auto wanted = std::make_shared<std::string>();
  Subcommand command("types", "Section types, records and the texts of results and settings");
  command.place("ID", "ID", wanted.get(), "one number, decimal or 0x hexadecimal, or one name");
  command.run = [wanted, &options] { return types(*wanted, options); };
  return command;
}

}  // namespace Command
