#include <set>

#include <libcrossplatform/common/Celsius.h>
#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/JsonText.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

Json::Value parsed(const std::string& text) {
  Json::Value value;
  EXPECT_TRUE(parseJson(text, value, false)) << text;
  return value;
}

/// The document with one value exchanged. A path is keys with dots between them, empty for the whole document.
Json::Value with(Json::Value document, const std::string& path, const Json::Value& value) {
  (path.empty() ? document : Json::Path(path).make(document)) = value;
  return document;
}

Json::Value without(Json::Value document, const std::string& path) {
  const std::size_t dot = path.rfind('.');
  Json::Value& parent = dot == std::string::npos ? document : Json::Path(path.substr(0, dot)).make(document);
  parent.removeMember(path.substr(dot + 1));
  return document;
}

void addPlaces(const Json::Value& at, const std::string& path, std::vector<std::string>& places) {
  for (const std::string& key : at.isObject() ? at.getMemberNames() : std::vector<std::string>()) {
    places.push_back(path + key);
    addPlaces(at[key], path + key + ".", places);
  }
}

std::string shapes;

/// Writes down for each place of a document the kinds of value with which it is still read, what is logged of the
/// others, and what a null pointer does. What else fails changes nothing, and every member that can be shown counts.
/// @param golden  a record that differs in every member from a new one
/// @param key     of the member that is read; null is the whole document
/// @param take    bool(Record&, const Json::Value*)
template <class Record, class Take>
void tabulate(const std::string& golden, const char* key, Take take) {
  Record full;
  ASSERT_EQ(readFrom(full, fileBytes(dataPath("good/" + golden + ".bin"))), 0);
  const std::string name = golden + (key != nullptr ? " by key" : "");
  const Json::Value document = with({}, key != nullptr ? key : "", full.toJson(level(2)));
  const CapturedLog log;
  Record nulled = full, fresh;
  EXPECT_FALSE(take(nulled, nullptr));
  const bool isKept = bytesOf(nulled) == bytesOf(full), isCleared = bytesOf(nulled) == bytesOf(fresh);
  shapes += name + (isKept ? " kept" : isCleared ? " cleared" : " changed") + " by a null pointer\n";
  std::vector<std::string> places = {""};
  addPlaces(document, "", places);
  for (const std::string& place : places) {
    shapes += name + " " + place + ":";
    log.lines().clear();
    const auto attempt = [&](const std::string& kind, const Json::Value& changed) {
      SCOPED_TRACE(name + " " + place + " " + kind);
      int read = 0;
      for (const Record& before : {Record(), full}) {
        Record target = before, untouched = before;
        bool isRead = false;
        EXPECT_NO_THROW(isRead = take(target, &changed));
        EXPECT_TRUE(isRead || bytesOf(target) == bytesOf(untouched)) << "changed by a read that failed";
        read += isRead;
      }
      EXPECT_NE(read, 1) << "depends on what was there";
      if (read == 2) shapes += " " + kind;
    };
    if (!place.empty()) attempt("missing", without(document, place));
    for (const Json::Value& value :
         parsed(R"([null, true, 7, -7, 18446744073709551615, 2.5, "text", "", [1, "a"], [], {"a": 1}, {}])")) {
      attempt(Dump::compactJson(value), with(document, place, value));
    }
    shapes += "\n";
    for (const std::string& line : std::set<std::string>(log.lines().begin(), log.lines().end())) {
      const bool isLineStated = line.find("/OtdrSpan ") != std::string::npos;
      shapes += "  " + (isLineStated ? line : line.substr(0, line.rfind(" line "))) + "\n";
    }
    if (key != nullptr || place.empty() || place[0] == '_') continue;
    const Json::Value ofNew = with(document, place, Json::Path(place).resolve(Record().toJson(level(2))));
    Record changed;
    EXPECT_TRUE(take(changed, &ofNew)) << place;
    EXPECT_NE(changed, full) << place;
    EXPECT_EQ(changed.toJson(level(2)), ofNew);
  }
}

}  // namespace

TEST(Json, OfAnyShapeIsReadAsTheTableSays) {
  const CapturedAsserts asserts;  // choices the documents do not name are shown as their fallbacks
  shapes.clear();
  const auto keyed = [](const char* key) {
    return [key](auto& record, const Json::Value* v) { return record.fromJson(v, key); };
  };
  const auto rooted = [](auto& record, const Json::Value* v) { return record.fromJson(v); };
  for (const char* const key : {static_cast<const char*>(nullptr), "key"}) {
    tabulate<Celsius>("celsius", key, keyed(key));
    tabulate<FibDbus::OtdrSpan>("otdr_span_v1", key, keyed(key));
    tabulate<EquipmentInformation>("equipment_information_v3", key, keyed(key));
  }
  tabulate<InstrumentSettings>("instrument_settings_v3", nullptr, rooted);
  tabulate<OrbelSettings>("orbel_settings_v0", nullptr, rooted);
  tabulate<CustomerDatabaseVersion>("customer_database_version", nullptr, rooted);
  tabulate<DatabasePackageManifestSummary>("database_package_manifest_summary_v1", nullptr, rooted);
  expectGoldenText(shapes, "json_shapes");
}
