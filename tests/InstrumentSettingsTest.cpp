#include <libcrossplatform/common/InstrumentSettings.h>

#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/serialization/Header.h>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

/// Every member differs from the factory settings.
InstrumentSettings sampleSettings() {
  InstrumentSettings s;
  s.locale = LOCALE_PT_BR;
  s.powerDownTimeout = POWER_DOWN_30_MIN;
  s.remoteModeEnabled = true;
  s.audibleToneEnabled = false;
  s.dateFormat = DATE_FORMAT_YMD_DASH;
  s.timeFormat = TIME_FORMAT_24_HR;
  s.language = LANGUAGE_PORTUGUESE;
  s.lengthUnits = LENGTH_UNITS_FT;
  s.numericFormat = NUMERIC_FORMAT_COMMA;
  s.backlightTimeout = BACKLIGHT_15_MIN;
  s.powerLineFrequency = POWER_LINE_50_HZ;
  s.plotGridEnabled = false;
  s.displayBrightness = -2;
  s.ipAddressSource = IP_ADDRESS_STATIC;
  s.ipAddress = "192.168.7.20";
  s.ipSubnet = "255.255.255.0";
  s.ipGateway = "192.168.7.1";
  s.ipDNS1 = "10.0.0.1";
  s.ipDNS2 = "10.0.0.2";
  s.ipDNS3 = "10.0.0.3";
  s.ipDNS4 = "10.0.0.4";
  s.timeZone = "America/Sao_Paulo";
  s.hostName = "tester-7";
  return s;
}

/// The record as a writer of an older class version left it: without its last `without` bytes.
Bytes olderVersion(Bytes bytes, uint8_t classVersion, std::size_t without) {
  bytes.resize(bytes.size() - without);
  bytes[3] = classVersion;
  Marshal::storeBig(&bytes[8], static_cast<uint32_t>(bytes.size() - Marshal::Header::BYTES));
  return bytes;
}

std::unique_ptr<Settings> createFrom(Bytes bytes, Marshal::StreamOpStatus& status) {
  return Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
}

Json::Value document(const std::string& key, const Json::Value& value) {
  Json::Value root;
  root["Instrument"][key] = value;
  return root;
}

}  // namespace

TEST(InstrumentSettings, Wire) {
  InstrumentSettings s = sampleSettings();
  expectRoundTrip(s);
  expectEveryPrefixRefused(s);
  expectGolden(s, "instrument_settings_v3");
  InstrumentSettings again;
  ASSERT_EQ(readFrom(again, bytesOf(s)), 0);
  EXPECT_EQ(again, s);
}

TEST(InstrumentSettings, OlderClassVersionsFillTheirOwnMembersOnly) {
  InstrumentSettings s = sampleSettings();
  const std::size_t hostName = 4 + s.hostName.size();
  const std::size_t timeZone = 4 + s.timeZone.size();
  const Bytes v2 = olderVersion(bytesOf(s), 2, hostName);
  const Bytes v1 = olderVersion(bytesOf(s), 1, hostName + timeZone);
  expectGoldenBytes(v2, "instrument_settings_v2");
  expectGoldenBytes(v1, "instrument_settings_v1");

  InstrumentSettings read = sampleSettings();
  s.hostName.clear();
  ASSERT_EQ(readFrom(read, v2), 0);
  EXPECT_EQ(read, s);
  s.timeZone.clear();
  ASSERT_EQ(readFrom(read, v1), 0);
  EXPECT_EQ(read, s);

  EXPECT_EQ(readFrom(read, olderVersion(bytesOf(s), 1, 0)), -4) << "a version-1 record with the later members";
  EXPECT_EQ(readFrom(read, olderVersion(bytesOf(s), 4, 0)), -5);
}

TEST(InstrumentSettings, ChoicesAreReadBackAsUnsignedBytes) {
  InstrumentSettings s;
  s.locale = static_cast<LocaleType>(-1);
  s.ipAddressSource = static_cast<IPAddressSource>(-2);
  InstrumentSettings read;
  ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
  EXPECT_EQ(read.locale, 255);
  EXPECT_EQ(read.ipAddressSource, 254);
}

TEST(InstrumentSettings, TextsAreCountedWithoutTerminator) {
  InstrumentSettings s;
  s.ipAddress = std::string("a\0b", 3);
  Bytes bytes = bytesOf(s);
  const std::size_t at = Marshal::Header::BYTES + 15;  // 14 fields in front, one of them of two bytes
  EXPECT_EQ(Bytes(bytes.begin() + at, bytes.begin() + at + 11), (Bytes{0, 0, 0, 3, 'a', 0, 'b', 0, 0, 0, 0}));
  InstrumentSettings read;
  ASSERT_EQ(readFrom(read, bytes), 0);
  EXPECT_EQ(read, s);
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = 0xFF;
  EXPECT_EQ(readFrom(read, bytes), -3);
}

TEST(InstrumentSettings, ClearingDoesNotResetTheLocale) {
  InstrumentSettings s = sampleSettings();
  s.clear();
  InstrumentSettings expected;
  EXPECT_NE(s, expected);
  expected.locale = LOCALE_PT_BR;
  EXPECT_EQ(s, expected);
}

TEST(InstrumentSettings, JsonHoldsAndEqualityComparesEveryMember) {
  const InstrumentSettings sample = sampleSettings();
  const Json::Value whole = sample.toJson(level(0));
  const Json::Value factory = InstrumentSettings().toJson(level(2));
  InstrumentSettings read;
  ASSERT_TRUE(read.fromJson(&whole));
  EXPECT_EQ(read, sample);
  EXPECT_EQ(dumpOf(sample), Dump::toJsonString(sample));

  const std::vector<std::string> keys = whole["Instrument"].getMemberNames();
  EXPECT_EQ(keys.size(), 23u);
  for (const std::string& key : keys) {
    SCOPED_TRACE(key);
    Json::Value changed = whole;
    changed["Instrument"][key] = factory["Instrument"][key];
    ASSERT_TRUE(read.fromJson(&changed));
    EXPECT_NE(read, sample);
    EXPECT_EQ(read.toJson(level(2)), changed);
  }
}

TEST(InstrumentSettings, MissingChoicesAreUnknownAndOtherMissingMembersAreTheFactorySettings) {
  InstrumentSettings expected;
  expected.locale = static_cast<LocaleType>(-1);
  expected.powerDownTimeout = static_cast<PowerDownTimeout>(-1);
  expected.dateFormat = static_cast<DateFormat>(-1);
  expected.timeFormat = static_cast<TimeFormat>(-1);
  expected.language = static_cast<Language>(-1);
  expected.lengthUnits = static_cast<LengthUnits>(-1);
  expected.numericFormat = static_cast<NumericFormat>(-1);
  expected.backlightTimeout = static_cast<BacklightTimeout>(-1);
  expected.powerLineFrequency = static_cast<PowerLineFrequency>(-1);
  expected.ipAddressSource = static_cast<IPAddressSource>(-1);
  Json::Value nullMember;
  nullMember["Instrument"] = Json::Value();
  for (const Json::Value& root : {Json::Value(), Json::Value(Json::objectValue), nullMember, document("other", 1)}) {
    InstrumentSettings s = sampleSettings();
    EXPECT_TRUE(s.fromJson(&root));
    EXPECT_EQ(s, expected) << root.toStyledString();
  }
}

TEST(InstrumentSettings, JsonOfAnyShape) {
  const CapturedLog log;
  const InstrumentSettings before = sampleSettings();
  Json::Value changed = InstrumentSettings().toJson(level(2));
  changed["Instrument"]["resultStorageLocation"] = "MMC";
  // JsonCpp's conversions: a number is also text and a truth value, but no text is a number; null is 0, false or empty.
  constexpr unsigned TEXT = JSON_STRING_READER | JSON_MISSING | JSON_NULL;
  constexpr unsigned TRUTH = JSON_BOOL | JSON_NUMBERS | JSON_MISSING | JSON_NULL;
  constexpr unsigned NUMBER = JSON_BOOL | JSON_INT | JSON_NEGATIVE | JSON_REAL | JSON_MISSING | JSON_NULL;
  std::vector<JsonPlace> places = {{"Instrument", JSON_OBJECT | JSON_MISSING | JSON_NULL}};
  std::vector<std::string> paths;
  for (const std::string& key : changed["Instrument"].getMemberNames()) paths.push_back("Instrument/" + key);
  for (const std::string& path : paths) {
    const Json::Value& value = changed["Instrument"][path.substr(path.find('/') + 1)];
    places.push_back({path.c_str(), value.isBool() ? TRUTH : value.isInt() ? NUMBER : TEXT});
  }
  expectJsonShapes(before, changed, JSON_OBJECT | JSON_NULL, places,
                   [](InstrumentSettings& s, const Json::Value& v) { return s.fromJson(&v); });
}

TEST(InstrumentSettings, JsonOddities) {
  const CapturedAsserts asserts;  // choices the documents do not name are shown as their fallbacks
  const CapturedLog log;
  InstrumentSettings s = sampleSettings();
  EXPECT_FALSE(s.fromJson(nullptr));
  EXPECT_EQ(s, sampleSettings()) << "a null pointer does nothing";

  Json::Value root = document("displayBrightness", 70000);
  EXPECT_TRUE(s.fromJson(&root));
  EXPECT_EQ(s.displayBrightness, 70000 - 65536);
  root = document("powerDownTimeout", "60 Minutes");
  EXPECT_TRUE(s.fromJson(&root));
  EXPECT_EQ(s.powerDownTimeout, -1);
  root = document("remoteModeEnabled", Json::Value());
  root["Instrument"]["audibleToneEnabled"] = Json::Value();
  EXPECT_TRUE(s.fromJson(&root));
  EXPECT_FALSE(s.audibleToneEnabled) << "a null is false, only a missing member is the factory setting";
  root = document("resultStorageLocation", "Internal");
  EXPECT_TRUE(s.fromJson(&root));
  EXPECT_FALSE(s.toJson(level(2))["Instrument"].isMember("resultStorageLocation"));

  root = document("resultStorageLocation", Json::Value(Json::arrayValue));
  EXPECT_FALSE(s.fromJson(&root)) << "dropped, but converted like every text";
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].find("13|1|fromJson failed for resultStorageLocation in libcrossplatform/common/"), 0u);
}

TEST(SettingsFactory, BuildsTheRecordTheIdNames) {
  EXPECT_EQ(Settings::create(0x510004)->getSettingsType(), 0u);
  EXPECT_EQ(Settings::create(0x51000b)->getSettingsType(), 2u);
  for (const unsigned id : {0u, 0x510003u, 0x51000au, 0x500004u, 0xFFFFFFFFu}) EXPECT_EQ(Settings::create(id), nullptr);
}

TEST(SettingsFactory, RebuildsFromBytes) {
  InstrumentSettings instrument = sampleSettings();
  OrbelSettings orbel({"7", "Tower"}, true, true, "u", "p", Json::Value(), false, 3);
  Marshal::StreamOpStatus status = -99;
  auto made = createFrom(bytesOf(instrument), status);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(dynamic_cast<InstrumentSettings&>(*made), instrument);
  Bytes longer = bytesOf(orbel);
  longer.resize(longer.size() + 9);
  made = createFrom(longer, status);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(dynamic_cast<OrbelSettings&>(*made), orbel);
}

TEST(SettingsFactory, SaysWhyNothingCameOut) {
  InstrumentSettings instrument = sampleSettings();
  const Bytes good = bytesOf(instrument);
  Marshal::StreamOpStatus status = -99;
  EXPECT_EQ(Settings::create(nullptr, 10, status), nullptr);
  EXPECT_EQ(status, -1);
  unsigned char byte = 0;
  EXPECT_EQ(Settings::create(&byte, 0, status), nullptr);
  EXPECT_EQ(status, -1);
  struct Row {
    const char* name;
    Bytes bytes;
    int status;
  };
  Bytes otherClass = good;
  otherClass[7] = 3;
  Bytes otherSystem = good;
  otherSystem[5] = 0x41;
  Bytes noMarker = good;
  noMarker[0] = 0;
  const Row rows[] = {
      {"another class is no error", otherClass, 0},
      {"another system is no error", otherSystem, 0},
      {"no header", noMarker, -2},
      {"cut in the header", Bytes(good.begin(), good.begin() + 11), -3},
      {"cut in the body", Bytes(good.begin(), good.end() - 1), -3},
      {"newer class version", olderVersion(good, 4, 0), -5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(createFrom(row.bytes, status), nullptr);
    EXPECT_EQ(status, row.status);
  }
}
