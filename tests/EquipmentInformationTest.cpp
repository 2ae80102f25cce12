#include <libcrossplatform/common/EquipmentInformation.h>

#include <cstring>
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

/// The bytes an older writer left: `dropped` bytes less at the end.
Bytes olderBytes(uint8_t classVersion, std::size_t dropped) {
  EquipmentInformation e = sample();
  Bytes bytes = bytesOf(e);
  bytes.resize(bytes.size() - dropped);
  bytes[3] = classVersion;
  Marshal::storeBig(&bytes[8], static_cast<uint32_t>(bytes.size() - Marshal::Header::BYTES));
  return bytes;
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
  EquipmentInformation e = sample();
  expectRoundTrip(e);
  expectEveryPrefixRefused(e);
  expectGolden(e, "equipment_information_v3");
}

TEST(EquipmentInformation, OlderVersionsLeaveWhatTheyLackCleared) {
  constexpr std::size_t FIRST_USE_BYTES = 8;
  constexpr std::size_t ADAPTER_BYTES = 4 + (4 + 6) + 8;
  const Bytes version2 = olderBytes(2, FIRST_USE_BYTES);
  const Bytes version1 = olderBytes(1, FIRST_USE_BYTES + ADAPTER_BYTES);
  expectGoldenBytes(version2, "equipment_information_v2");
  expectGoldenBytes(version1, "equipment_information_v1");

  EquipmentInformation expected = sample();
  expected.setModuleFirstUseDate(0);
  EquipmentInformation read = sample();
  EXPECT_EQ(readFrom(read, version2), 0);
  EXPECT_TRUE(read == expected);

  expected.setLiaId(0);
  expected.setLiaSerialNumber("");
  expected.setLiaCalibrationTime(0);
  read = sample();
  EXPECT_EQ(readFrom(read, version1), 0);
  EXPECT_TRUE(read == expected);

  Bytes newer = version1;
  newer[3] = 4;
  EXPECT_EQ(readFrom(read, newer), -5);
  EXPECT_EQ(readFrom(read, olderBytes(2, 0)), -4) << "version 2 does not go on to the first-use date";
}

TEST(EquipmentInformation, NumbersFromAStreamAreNotBelieved) {
  Bytes bytes = olderBytes(3, 0);
  EquipmentInformation e;
  Marshal::storeBig(&bytes[bytes.size() - 8], int64_t{0x100000005});
  EXPECT_EQ(readFrom(e, bytes), 0);
  EXPECT_EQ(e.getModuleFirstUseDate(), static_cast<long>(int64_t{0x100000005})) << "narrowed where long has 32 bits";
  Marshal::storeBig(&bytes[12], uint32_t{0xFFFFFFFF});
  EXPECT_EQ(readFrom(e, bytes), -3);
  EXPECT_TRUE(e == EquipmentInformation());
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
  std::vector<std::string> expected;
  for (const char* report :
       {"_softwareVersion 63", "_modelIdStr 78", "_modelSerialNumber 84", "_moduleSerialNumber 99"}) {
    const std::string name(report, std::strchr(report, ' '));
    expected.push_back(name + ".length() <= EQUIPMENT_INFO_MAX_STR_LEN|libcrossplatform/common/EquipmentInformation|" +
                       (report + name.size() + 1));
  }
  EXPECT_EQ(asserts.reports(), expected);
  // Such a text from outside is no programming error.
  asserts.reports().clear();
  EquipmentInformation read;
  EXPECT_EQ(readFrom(read, bytesOf(e)), 0);
  EXPECT_TRUE(read == e);
  EXPECT_TRUE(readRoot(read, e.toJson(level(2))));
  EXPECT_TRUE(read == e);
  EXPECT_TRUE(asserts.reports().empty());
}

TEST(EquipmentInformation, EveryMemberCountsInItsComparison) {
  const std::set<std::string> ofMain = {"softwareVersion", "modelIdStr", "modelHardwareRevision", "modelSerialNumber"};
  const EquipmentInformation before = sample();
  const auto check = [&](const char* key, const Json::Value& value) {
    SCOPED_TRACE(key);
    Json::Value json = before.toJson(level(2));
    json[key] = value;
    EquipmentInformation after;
    EXPECT_TRUE(readRoot(after, json));
    EXPECT_EQ(before.isMainSameAs(after), ofMain.count(key) == 0);
    EXPECT_EQ(before.isModuleSameAs(after), ofMain.count(key) != 0);
    EXPECT_EQ(before.isSoftwareVersionSameAs(after), std::string(key) != "softwareVersion");
    EXPECT_FALSE(before == after);
  };
  for (const char* key : TEXT_KEYS) check(key, "other");
  for (const char* key : INT_KEYS) check(key, 9);
  for (const char* key : TIME_KEYS) check(key, "20010101-0000");
}

TEST(EquipmentInformation, ProbeKeepsItsFirmwareVersionAsAdapterSerialNumber) {
  EquipmentInformation e = sample();
  e.setProbeViewFirmwareVersion("2.0");
  EXPECT_EQ(e.getLiaSerialNumber(), "2.0");
  for (const int id : {0, 100, 400, 500, 501, 999, 10100, 10400, 10500}) {
    e.setModuleId(id);
    EXPECT_EQ(e.getModuleFirmwareVersion(), id % 10000 >= 500 ? "2.0" : "6.4.1") << id;
    EXPECT_EQ(e.getModuleIdStr(), toString(static_cast<ModuleId>(id)));
  }
}

TEST(EquipmentInformation, JsonBothWays) {
  const EquipmentInformation e = sample();
  const std::string text = Dump::toJsonString(e, level(0), false);
  EXPECT_EQ(text, R"({"_className":"EquipmentInformation","_classVersion":3,"liaCalibrationTime":"20240131-0916",)"
                  R"("liaId":"VLA-401","liaSerialNumber":"A-3003","modelHardwareRevision":-3,"modelIdStr":"Orbel2",)"
                  R"("modelSerialNumber":"M-1001","moduleCalibrationTime":"20240131-0915",)"
                  R"("moduleFirstUseDate":"20200301-0000","moduleHardwareRevision":7,"moduleId":400,)"
                  R"("moduleSerialNumber":"S-2002","softwareVersion":"6.4.1"})");
  for (const int n : {0, 1, 2}) EXPECT_EQ(dumpOf(e, n), Dump::toJsonString(e));
  EquipmentInformation read;
  Json::Value json = e.toJson(level(2));
  EXPECT_TRUE(readRoot(read, json));
  EXPECT_TRUE(read == e);
  json["liaCalibrationTime"] = "20400101-0000";
  EXPECT_EQ(readRoot(read, json), sizeof(time_t) > 4) << "a time past 2038 where time_t has 32 bits";
}

TEST(EquipmentInformation, AdapterWithoutPartNumberReadsBackAsNone) {
  for (const int id : {201, 1, 999, 0, -1}) {
    EquipmentInformation e = sample();
    e.setLiaId(id);
    const Json::Value json = e.toJson(level(2));
    EXPECT_EQ(json["liaId"], "") << id;
    EXPECT_TRUE(readRoot(e, json));
    EXPECT_EQ(e.getLiaId(), 0);
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

TEST(EquipmentInformation, FirstKeyThatFailsIsLogged) {
  const Json::Value document = sample().toJson(level(2));
  const CapturedLog log;
  for (const std::string& key : document.getMemberNames()) {
    if (key == "_classVersion") continue;
    log.lines().clear();
    Json::Value changed = document;
    changed.removeMember(key);
    EquipmentInformation e;
    EXPECT_FALSE(readRoot(e, changed));
    ASSERT_EQ(log.lines().size(), 1u) << key;
    EXPECT_EQ(log.lines()[0].find("13|1|fromJson failed for " + key +
                                  " in libcrossplatform/common/EquipmentInformation line "),
              0u)
        << log.lines()[0];
  }
  log.lines().clear();
  Json::Value another = document;
  another["_className"] = "equipmentInformation";
  EquipmentInformation e = sample();
  EXPECT_FALSE(readRoot(e, another));
  EXPECT_TRUE(log.lines().empty()) << "another class is no fault";
  EXPECT_FALSE(e.fromJson(static_cast<const Json::Value*>(nullptr), "equipment"));
  EXPECT_TRUE(e == EquipmentInformation()) << "a null pointer clears, unlike other failures";
  EXPECT_EQ(log.lines().size(), 1u);
}
