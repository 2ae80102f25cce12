#include <libcrossplatform/common/EquipmentInformation.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr long CALIBRATED = 1706692500;  // 2024-01-31 09:15:00
constexpr long FIRST_USED = 1583020800;  // 2020-03-01 00:00:00

EquipmentInformation sampleEquipment() {
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

}  // namespace

TEST(EquipmentInformation, Wire) {
  expectWire(sampleEquipment(), "equipment_information_v3");
}

TEST(EquipmentInformation, TextOf101CharactersIsReportedAndStays) {
  EquipmentInformation e;
  CapturedAsserts asserts;
  for (const std::size_t size : {100u, 101u}) {
    EXPECT_TRUE(asserts.reports().empty());
    const std::string text(size, 'x');
    for (const auto set : {&EquipmentInformation::setSoftwareVersion, &EquipmentInformation::setModelIdStr,
                           &EquipmentInformation::setModelSerialNumber, &EquipmentInformation::setModuleSerialNumber}) {
      if (size == 100) (e.*set)(nullptr);
      (e.*set)(text.c_str());
    }
  }
  const std::string tooLong = ".length() <= EQUIPMENT_INFO_MAX_STR_LEN|libcrossplatform/common/EquipmentInformation|";
  EXPECT_EQ(asserts.reports(),
            (std::vector<std::string>{"_softwareVersion" + tooLong + "63", "_modelIdStr" + tooLong + "78",
                                      "_modelSerialNumber" + tooLong + "84", "_moduleSerialNumber" + tooLong + "99"}));
  asserts.reports().clear();
  EquipmentInformation fromBytes, fromText;
  EXPECT_EQ(readFrom(fromBytes, bytesOf(e)), 0);
  EXPECT_TRUE(fromText.fromJson(e.toJson(level(2)), nullptr));
  EXPECT_TRUE(fromBytes == e && fromText == e && asserts.reports().empty()) << "from outside no programming error";
}

TEST(EquipmentInformation, EveryMemberCountsInItsComparison) {
  const std::string ofMain = "softwareVersion modelIdStr modelHardwareRevision modelSerialNumber";
  const EquipmentInformation before = sampleEquipment();
  const Json::Value document = before.toJson(level(2));
  for (const std::string& key : document.getMemberNames()) {
    SCOPED_TRACE(key);
    if (key[0] == '_') continue;
    Json::Value json = document;
    const bool isTime = document[key].asString().find("-0") == 8;
    json[key] = document[key].isInt() ? Json::Value(9) : Json::Value(isTime ? "20010101-0000" : "other");
    EquipmentInformation after;
    EXPECT_TRUE(after.fromJson(json, nullptr));
    EXPECT_EQ(before.isMainSameAs(after), ofMain.find(key) == std::string::npos);
    EXPECT_EQ(before.isModuleSameAs(after), ofMain.find(key) != std::string::npos);
    EXPECT_EQ(before.isSoftwareVersionSameAs(after), key != "softwareVersion");
    EXPECT_FALSE(before == after);
  }
  EquipmentInformation e;
  EXPECT_FALSE(e.fromJson("EquipmentInformation", nullptr)) << "it is not taken for its own \"_className\"";
  EXPECT_TRUE(e.fromJson(document, "equipment") && e == before) << "without the member it names, the value is read";
}

TEST(EquipmentInformation, ProbeKeepsItsFirmwareVersionAsAdapterSerialNumber) {
  EquipmentInformation e = sampleEquipment();
  e.setProbeViewFirmwareVersion("2.0");
  for (const int id : {0, 400, 500, 10400, 10500}) {
    e.setModuleId(id);
    EXPECT_EQ(e.getModuleFirmwareVersion(), id % 10000 >= 500 ? "2.0" : "6.4.1") << id;
    EXPECT_EQ(e.getModuleIdStr(), toString(static_cast<ModuleId>(id)));
  }
}

TEST(EquipmentInformation, JsonOfWhatCannotBeTold) {
  EquipmentInformation e = sampleEquipment(), read;
  Json::Value json = e.toJson(level(2));
  json["liaCalibrationTime"] = "20400101-0000";
  EXPECT_EQ(read.fromJson(json, nullptr), sizeof(time_t) > 4) << "a time past 2038 where time_t has 32 bits";
  for (const int id : {201, 1, 999, 0, -1}) {
    e.setLiaId(id);
    json = e.toJson(level(2));
    EXPECT_EQ(json["liaId"], "") << id << " has no part number";
    EXPECT_TRUE(read.fromJson(json, nullptr));
    EXPECT_EQ(read.getLiaId(), 0);
  }
}
