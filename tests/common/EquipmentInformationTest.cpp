#include <libcrossplatform/common/EquipmentInformation.h>

#include <set>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr long CALIBRATED = 1706692500;  // 2024-01-31 09:15:00
constexpr long FIRST_USED = 1583020800;  // 2020-03-01 00:00:00

EquipmentInformation sample() {
  EquipmentInformation e;
  e.setSoftwareVersion("6.4.1");
  e.setModelIdStr("Orbel2");
  e.setModelHardwareRevision(-3);
  e.setModelSerialNumber("M-1001");
  e.setModuleId(400);
  e.setModuleHardwareRevision(7);
  e.setModuleSerialNumber("S-2002");
  e.setModuleCalibrationTime(CALIBRATED);
  e.setLiaId(401);
  e.setLiaSerialNumber("A-3003");
  e.setLiaCalibrationTime(CALIBRATED + 60);
  e.setModuleFirstUseDate(FIRST_USED);
  return e;
}

bool readRoot(EquipmentInformation& e, const Json::Value& v) {
  return e.fromJson(v, nullptr);
}

const char* const TEXT_KEYS[] = {"softwareVersion",    "modelIdStr", "modelSerialNumber",
                                 "moduleSerialNumber", "liaId",      "liaSerialNumber"};
const char* const INT_KEYS[] = {"modelHardwareRevision", "moduleId", "moduleHardwareRevision"};
const char* const TIME_KEYS[] = {"moduleCalibrationTime", "moduleFirstUseDate", "liaCalibrationTime"};

}  // namespace

TEST(EquipmentInformation, Wire) {
  expectWire(sample(), "equipment_information_v3");
}

TEST(EquipmentInformation, OlderVersionsLeaveWhatTheyLackCleared) {
  constexpr std::size_t FIRST_USE_BYTES = 8;
  constexpr std::size_t ADAPTER_BYTES = 4 + (4 + 6) + 8;
  EquipmentInformation expected = sample(), read = sample();
  const Bytes whole = bytesOf(expected);
  const Bytes version2 = ofClassVersion(whole, 2, FIRST_USE_BYTES);
  const Bytes version1 = ofClassVersion(whole, 1, FIRST_USE_BYTES + ADAPTER_BYTES);
  expectGoldenBytes(version2, "equipment_information_v2");
  expectGoldenBytes(version1, "equipment_information_v1");

  expected.setModuleFirstUseDate(0);
  EXPECT_EQ(readFrom(read, version2), 0);
  EXPECT_TRUE(read == expected);

  expected.setLiaId(0);
  expected.setLiaSerialNumber("");
  expected.setLiaCalibrationTime(0);
  read = sample();
  EXPECT_EQ(readFrom(read, version1), 0);
  EXPECT_TRUE(read == expected);
  EXPECT_EQ(readFrom(read, ofClassVersion(whole, 2, 0)), -4) << "version 2 does not go on to the first-use date";
}

TEST(EquipmentInformation, TextOf101CharactersIsReportedAndStays) {
  const std::string longest(EQUIPMENT_INFO_MAX_STR_LEN, 'x');
  EquipmentInformation e;
  const CapturedAsserts asserts;
  const auto setAll = [&e](const char* text) {
    e.setSoftwareVersion(text);
    e.setModelIdStr(text);
    e.setModelSerialNumber(text);
    e.setModuleSerialNumber(text);
  };
  setAll(longest.c_str());
  setAll(nullptr);
  EXPECT_TRUE(asserts.reports().empty());
  setAll((longest + "y").c_str());
  const std::string tooLong = ".length() <= EQUIPMENT_INFO_MAX_STR_LEN|libcrossplatform/common/EquipmentInformation|";
  EXPECT_EQ(asserts.reports(),
            (std::vector<std::string>{"_softwareVersion" + tooLong + "63", "_modelIdStr" + tooLong + "78",
                                      "_modelSerialNumber" + tooLong + "84", "_moduleSerialNumber" + tooLong + "99"}));
  // Such a text from outside is no programming error.
  asserts.reports().clear();
  EquipmentInformation fromBytes, fromText;
  EXPECT_EQ(readFrom(fromBytes, bytesOf(e)), 0);
  EXPECT_TRUE(readRoot(fromText, e.toJson(level(2))));
  EXPECT_TRUE(fromBytes == e && fromText == e && asserts.reports().empty());
}

TEST(EquipmentInformation, EveryMemberCountsInItsComparison) {
  const std::set<std::string> ofMain = {"softwareVersion", "modelIdStr", "modelHardwareRevision", "modelSerialNumber"};
  const EquipmentInformation before = sample();
  Json::Value other;
  for (const char* key : TEXT_KEYS) other[key] = "other";
  for (const char* key : INT_KEYS) other[key] = 9;
  for (const char* key : TIME_KEYS) other[key] = "20010101-0000";
  for (const std::string& key : other.getMemberNames()) {
    SCOPED_TRACE(key);
    Json::Value json = before.toJson(level(2));
    json[key] = other[key];
    EquipmentInformation after;
    EXPECT_TRUE(readRoot(after, json));
    EXPECT_EQ(before.isMainSameAs(after), ofMain.count(key) == 0);
    EXPECT_EQ(before.isModuleSameAs(after), ofMain.count(key) != 0);
    EXPECT_EQ(before.isSoftwareVersionSameAs(after), key != "softwareVersion");
    EXPECT_FALSE(before == after);
  }
}

TEST(EquipmentInformation, ProbeKeepsItsFirmwareVersionAsAdapterSerialNumber) {
  EquipmentInformation e = sample();
  e.setProbeViewFirmwareVersion("2.0");
  for (const int id : {0, 400, 500, 10400, 10500}) {
    e.setModuleId(id);
    EXPECT_EQ(e.getModuleFirmwareVersion(), id % 10000 >= 500 ? "2.0" : "6.4.1") << id;
    EXPECT_EQ(e.getModuleIdStr(), toString(static_cast<ModuleId>(id)));
  }
}

TEST(EquipmentInformation, JsonBothWays) {
  EquipmentInformation e = sample(), read;
  EXPECT_EQ(Dump::toJsonString(e, level(0), false),
            R"({"_className":"EquipmentInformation","_classVersion":3,"liaCalibrationTime":"20240131-0916",)"
            R"("liaId":"VLA-401","liaSerialNumber":"A-3003","modelHardwareRevision":-3,"modelIdStr":"Orbel2",)"
            R"("modelSerialNumber":"M-1001","moduleCalibrationTime":"20240131-0915",)"
            R"("moduleFirstUseDate":"20200301-0000","moduleHardwareRevision":7,"moduleId":400,)"
            R"("moduleSerialNumber":"S-2002","softwareVersion":"6.4.1"})");
  for (const int n : {0, 1, 2}) EXPECT_EQ(dumpOf(e, n), Dump::toJsonString(e));
  Json::Value json = e.toJson(level(2));
  EXPECT_TRUE(readRoot(read, json));
  EXPECT_TRUE(read == e);
  json["liaCalibrationTime"] = "20400101-0000";
  EXPECT_EQ(readRoot(read, json), sizeof(time_t) > 4) << "a time past 2038 where time_t has 32 bits";
  for (const int id : {201, 1, 999, 0, -1}) {
    e.setLiaId(id);
    json = e.toJson(level(2));
    EXPECT_EQ(json["liaId"], "") << id << " has no part number";
    EXPECT_TRUE(readRoot(read, json));
    EXPECT_EQ(read.getLiaId(), 0);
  }
}

TEST(EquipmentInformation, JsonOfAnyShape) {
  const CapturedLog log;
  EquipmentInformation before = sample();
  before.setSoftwareVersion("another");
  const Json::Value document = sample().toJson(level(2));
  std::vector<JsonPlace> places = {{"_className", JSON_NONE}, {"_classVersion", JSON_MISSING | JSON_INT_READER}};
  for (const char* key : TEXT_KEYS) places.push_back({key, JSON_STRING_READER});
  for (const char* key : INT_KEYS) places.push_back({key, JSON_INT_READER});
  for (const char* key : TIME_KEYS) places.push_back({key, JSON_NONE});
  expectJsonShapes(before, document, JSON_NONE, places, readRoot);
  expectJsonRead(before, "EquipmentInformation", false, readRoot);  // is not taken for its own "_className"

  // Without the member it names, the value itself is read: here one that is no record.
  Json::Value wrapped;
  wrapped["equipment"] = document;
  const auto readMember = [](EquipmentInformation& e, const Json::Value& v) { return e.fromJson(v, "equipment"); };
  expectJsonShapes(before, wrapped, JSON_NONE, {{"equipment", JSON_NONE}}, readMember);
  expectJsonRead(before, document, true, readMember);
}

TEST(EquipmentInformation, FirstKeyThatFailsIsLoggedButNoOtherClass) {
  const Json::Value document = sample().toJson(level(2));
  const CapturedLog log;
  EquipmentInformation e = sample();
  for (const std::string& key : document.getMemberNames()) {
    if (key == "_classVersion") continue;
    log.lines().clear();
    Json::Value changed = document;
    changed.removeMember(key);
    EXPECT_FALSE(readRoot(e, changed));
    ASSERT_EQ(log.lines().size(), 1u) << key;
    const std::string place = " in libcrossplatform/common/EquipmentInformation line ";
    EXPECT_EQ(log.lines()[0].find("13|1|fromJson failed for " + key + place), 0u) << log.lines()[0];
  }
  log.lines().clear();
  Json::Value another = document;
  another["_className"] = "equipmentInformation";
  EXPECT_FALSE(readRoot(e, another));
  EXPECT_TRUE(log.lines().empty());
  EXPECT_FALSE(e.fromJson(static_cast<const Json::Value*>(nullptr), "equipment"));
  EXPECT_TRUE(e == EquipmentInformation()) << "a null pointer clears, unlike other failures";
  EXPECT_EQ(log.lines().size(), 1u);
}
