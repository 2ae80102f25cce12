#include <libcrossplatform/common/EquipmentInformation.h>

#include <functional>

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

TEST(EquipmentInformation, LengthFromOutsideIsNotBelieved) {
  Bytes bytes = olderBytes(3, 0);
  for (int i = 12; i < 16; ++i) bytes[static_cast<std::size_t>(i)] = 0xFF;
  EquipmentInformation e = sample();
  EXPECT_EQ(readFrom(e, bytes), -3);
  EXPECT_TRUE(e == EquipmentInformation());
}

TEST(EquipmentInformation, TimeFromAStreamIsNarrowedToLong) {
  Bytes bytes = olderBytes(3, 0);
  Marshal::storeBig(&bytes[bytes.size() - 8], int64_t{0x100000005});
  EquipmentInformation e;
  EXPECT_EQ(readFrom(e, bytes), 0);
  EXPECT_EQ(e.getModuleFirstUseDate(), static_cast<long>(int64_t{0x100000005}));
}

TEST(EquipmentInformation, TooLongTextIsReportedAndStays) {
  struct Row {
    void (EquipmentInformation::*set)(const char*);
    const std::string& (EquipmentInformation::*get)() const;
    const char* report;
  };
  using E = EquipmentInformation;
  const Row rows[] = {{&E::setSoftwareVersion, &E::getSoftwareVersion, "_softwareVersion|63"},
                      {&E::setModelIdStr, &E::getModelIdStr, "_modelIdStr|78"},
                      {&E::setModelSerialNumber, &E::getModelSerialNumber, "_modelSerialNumber|84"},
                      {&E::setModuleSerialNumber, &E::getModuleSerialNumber, "_moduleSerialNumber|99"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.report);
    const std::string report = row.report;
    const std::size_t bar = report.find('|');
    const CapturedAsserts asserts;
    E e;
    (e.*row.set)(std::string(EQUIPMENT_INFO_MAX_STR_LEN, 'x').c_str());
    (e.*row.set)(nullptr);
    EXPECT_EQ((e.*row.get)(), "");
    EXPECT_TRUE(asserts.reports().empty());
    (e.*row.set)(std::string(101, 'x').c_str());
    EXPECT_EQ((e.*row.get)(), std::string(101, 'x'));
    EXPECT_EQ(asserts.reports(),
              std::vector<std::string>{report.substr(0, bar) + ".length() <= EQUIPMENT_INFO_MAX_STR_LEN" +
                                       "|libcrossplatform/common/EquipmentInformation" + report.substr(bar)});
    // From outside such a text is no programming error.
    asserts.reports().clear();
    E read;
    EXPECT_EQ(readFrom(read, bytesOf(e)), 0);
    EXPECT_TRUE(readRoot(read, e.toJson(level(2))));
    EXPECT_EQ((read.*row.get)().size(), 101u);
    EXPECT_TRUE(asserts.reports().empty());
  }
}

TEST(EquipmentInformation, EveryMemberCountsInItsComparison) {
  using Change = std::function<void(EquipmentInformation&)>;
  const Change ofMain[] = {[](auto& e) { e.setSoftwareVersion("x"); }, [](auto& e) { e.setModelIdStr("x"); },
                           [](auto& e) { e.setModelHardwareRevision(9); },
                           [](auto& e) { e.setModelSerialNumber("x"); }};
  const Change ofModule[] = {[](auto& e) { e.setModuleId(9); },
                             [](auto& e) { e.setModuleHardwareRevision(9); },
                             [](auto& e) { e.setModuleSerialNumber("x"); },
                             [](auto& e) { e.setModuleCalibrationTime(9); },
                             [](auto& e) { e.setModuleFirstUseDate(9); },
                             [](auto& e) { e.setLiaId(9); },
                             [](auto& e) { e.setProbeViewFirmwareVersion("x"); },
                             [](auto& e) { e.setLiaCalibrationTime(9); }};
  const auto check = [](const Change& change, bool changesMain) {
    const EquipmentInformation before = sample();
    EquipmentInformation after = before;
    EXPECT_TRUE(after == before);
    change(after);
    EXPECT_EQ(before.isMainSameAs(after), !changesMain);
    EXPECT_EQ(before.isModuleSameAs(after), changesMain);
    EXPECT_FALSE(before == after);
  };
  for (const Change& change : ofMain) check(change, true);
  for (const Change& change : ofModule) check(change, false);
  EquipmentInformation other;
  other.setSoftwareVersion("6.4.1");
  EXPECT_TRUE(sample().isSoftwareVersionSameAs(other));
}

TEST(EquipmentInformation, ProbeKeepsItsFirmwareVersionAsAdapterSerialNumber) {
  EquipmentInformation e = sample();
  e.setProbeViewFirmwareVersion("2.0");
  EXPECT_EQ(e.getLiaSerialNumber(), "2.0");
  for (const int id : {500, 501, 999, 10500}) {
    e.setModuleId(id);
    EXPECT_EQ(e.getModuleFirmwareVersion(), "2.0") << id;
  }
  for (const int id : {0, 100, 400, 10100, 10400}) {
    e.setModuleId(id);
    EXPECT_EQ(e.getModuleFirmwareVersion(), "6.4.1") << id;
  }
  EXPECT_EQ(e.getModuleIdStr(), "Boot: Copper Cat 8");
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
  EXPECT_TRUE(readRoot(read, e.toJson(level(2))));
  EXPECT_TRUE(read == e);
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

TEST(EquipmentInformation, TimePast2038DependsOnTheTarget) {
  Json::Value json = sample().toJson(level(2));
  json["liaCalibrationTime"] = "20400101-0000";
  EquipmentInformation e;
  const CapturedLog log;
  EXPECT_EQ(readRoot(e, json), sizeof(time_t) > 4);
  EXPECT_EQ(log.lines().size(), sizeof(time_t) > 4 ? 0u : 1u);
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
