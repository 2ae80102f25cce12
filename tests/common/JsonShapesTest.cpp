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

std::string table;

/// Writes down for each place of a document the kinds of value with which it is still read. What fails changes nothing,
/// and every member that can be shown counts.
/// @param text  differs in every member from what a new record shows
/// @param take  bool(Record&, const Json::Value&)
template <class Record, class Take>
void tabulate(const std::string& name, const std::string& text, Take take) {
  const Json::Value document = parsed(text);
  std::vector<std::string> places = {""};
  addPlaces(document, "", places);
  Record full;
  ASSERT_TRUE(take(full, document)) << name;
  const bool isShown = full.toJson(level(2)) == document;
  table += name + (isShown ? " is shown as it was read\n" : "\n");
  for (const std::string& place : places) {
    table += name + " " + place + ":";
    const auto attempt = [&](const std::string& kind, const Json::Value& changed) {
      SCOPED_TRACE(name + " " + place + " " + kind);
      int read = 0;
      for (const Record& before : {Record(), full}) {
        Record target = before, untouched = before;
        bool isRead = false;
        EXPECT_NO_THROW(isRead = take(target, changed));
        EXPECT_TRUE(isRead || bytesOf(target) == bytesOf(untouched)) << "changed by a read that failed";
        read += isRead;
      }
      EXPECT_NE(read, 1) << "depends on what was there";
      if (read == 2) table += " " + kind;
    };
    if (!place.empty()) attempt("missing", without(document, place));
    for (const Json::Value& value :
         parsed(R"([null, true, 7, -7, 18446744073709551615, 2.5, "text", "", [1, "a"], [], {"a": 1}, {}])")) {
      attempt(Dump::compactJson(value), with(document, place, value));
    }
    table += "\n";
    const Json::Value shownByNew = Json::Path(place).resolve(Record().toJson(level(2)));
    if (!isShown || place.empty() || place[0] == '_' || shownByNew.isObject()) continue;
    Record changed;
    EXPECT_TRUE(take(changed, with(document, place, shownByNew))) << place;
    EXPECT_NE(changed, full) << place;
    EXPECT_EQ(changed.toJson(level(2)), with(document, place, shownByNew));
  }
}

constexpr char SPAN[] = R"({"_className": "OtdrSpan", "_classVersion": 1, "spanStart": "-12.5", "spanEnd": "+inf"})";
constexpr char EQUIPMENT[] = R"({"_className": "EquipmentInformation", "_classVersion": 3, "modelIdStr": "Orbel2",
    "softwareVersion": "6.4.1", "modelSerialNumber": "M", "modelHardwareRevision": -3, "moduleId": 400,
    "moduleSerialNumber": "S", "moduleHardwareRevision": 7, "moduleCalibrationTime": "20240131-0915",
    "moduleFirstUseDate": "20200301-0000", "liaId": "VLA-401", "liaSerialNumber": "A",
    "liaCalibrationTime": "20240131-0916"})";
constexpr char INSTRUMENT[] = R"({"Instrument": {"locale": "pt-BR", "powerDownTimeout": "30 Minutes",
    "remoteModeEnabled": true, "audibleToneEnabled": false, "dateFormat": "yyyy-MM-dd", "timeFormat": "24 hr",
    "language": "Portuguese", "lengthUnits": "ft", "numericFormat": "0,0", "backlightTimeout": "15 Minutes",
    "powerLineFrequency": "50 Hz", "plotGridEnabled": false, "displayBrightness": -2, "ipAddressSource": "Static",
    "ipAddress": "192.168.7.20", "ipSubnet": "255.255.255.0", "ipGateway": "192.168.7.1", "ipDNS1": "10.0.0.1",
    "ipDNS2": "10.0.0.2", "ipDNS3": "10.0.0.3", "ipDNS4": "10.0.0.4", "timeZone": "America/Sao_Paulo",
    "hostName": "tester-7"}})";
constexpr char ORBEL[] = R"({"OrbelSettings": {"project_id": "4711", "project_name": "Tower", "auto_save": true,
    "auto_increment": true, "sync_username": "user", "sync_userpass": "pass", "net_profile": {"a": 1},
    "trackit_enable": true, "key_position": 4000000000}})";
constexpr char MANIFEST[] = R"({"DatabasePackageManifestSummary": {"CustomDatabaseVersion": {"Version": "V3.12 beta"},
    "releaseType": 2, "build": 407, "type": 65535, "minReqFirmwareVersion": "V5.1"}})";

}  // namespace

TEST(Json, OfAnyShapeIsReadAsTheTableSays) {
  const CapturedLog log;
  const CapturedAsserts asserts;  // choices the documents do not name are shown as their fallbacks
  table.clear();
  const auto direct = [](auto& record, const Json::Value& v) { return record.fromJson(v, nullptr); };
  const auto keyed = [](auto& record, const Json::Value& v) { return record.fromJson(v, "key"); };
  const auto rooted = [](auto& record, const Json::Value& v) { return record.fromJson(&v); };
  const auto root = [](auto& record, const Json::Value& v) { return record.fromJson(&v, nullptr); };
  const auto under = [](const std::string& text) { return "{\"key\": " + text + "}"; };
  tabulate<Celsius>("Celsius", "\"21.50\"", direct);
  tabulate<Celsius>("Celsius by key", under("\"21.50\""), keyed);
  tabulate<FibDbus::OtdrSpan>("OtdrSpan", SPAN, root);
  tabulate<FibDbus::OtdrSpan>("OtdrSpan by key", under(SPAN), keyed);
  tabulate<EquipmentInformation>("EquipmentInformation", EQUIPMENT, direct);
  tabulate<EquipmentInformation>("EquipmentInformation by key", under(EQUIPMENT), keyed);
  tabulate<InstrumentSettings>("InstrumentSettings", INSTRUMENT, rooted);
  tabulate<OrbelSettings>("OrbelSettings", ORBEL, rooted);
  tabulate<CustomerDatabaseVersion>("CustomerDatabaseVersion", R"({"CustomDatabaseVersion": {"Version": "V3.12 b"}})",
                                    rooted);
  tabulate<DatabasePackageManifestSummary>("DatabasePackageManifestSummary", MANIFEST, rooted);
  expectGoldenText(table, "json_shapes");
}
