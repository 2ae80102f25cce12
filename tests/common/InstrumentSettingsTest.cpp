#include <libcrossplatform/common/InstrumentSettings.h>

#include <libcrossplatform/common/jsonutil.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

/// Every member differs from the factory settings.
InstrumentSettings sampleInstrument() {
  Json::Value root;
  EXPECT_TRUE(parseJson(R"({"Instrument": {"locale": "pt-BR", "powerDownTimeout": "30 Minutes",
      "remoteModeEnabled": true, "audibleToneEnabled": false, "dateFormat": "yyyy-MM-dd", "timeFormat": "24 hr",
      "language": "Portuguese", "lengthUnits": "ft", "numericFormat": "0,0", "backlightTimeout": "15 Minutes",
      "powerLineFrequency": "50 Hz", "plotGridEnabled": false, "displayBrightness": -2, "ipAddressSource": "Static",
      "ipAddress": "192.168.7.20", "ipSubnet": "255.255.255.0", "ipGateway": "192.168.7.1", "ipDNS1": "10.0.0.1",
      "ipDNS2": "10.0.0.2", "ipDNS3": "10.0.0.3", "ipDNS4": "10.0.0.4", "timeZone": "America/Sao_Paulo",
      "hostName": "tester-7"}})",
                        root, false));
  InstrumentSettings s;
  EXPECT_TRUE(s.fromJson(&root));
  return s;
}

Json::Value document(const std::string& key, const Json::Value& value) {
  Json::Value root;
  root["Instrument"][key] = value;
  return root;
}

}  // namespace

TEST(InstrumentSettings, Wire) {
  InstrumentSettings s, cleared;
  cleared.locale = LOCALE_PT_BR;  // clearing does not reset it
  expectWire(sampleInstrument(), "instrument_settings_v3", cleared);
  s.locale = static_cast<LocaleType>(-1);
  s.ipAddressSource = static_cast<IPAddressSource>(-2);
  InstrumentSettings read;
  ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
  EXPECT_TRUE(read.locale == 255 && read.ipAddressSource == 254) << "choices are read back as unsigned bytes";
}

TEST(InstrumentSettings, MissingChoicesAreUnknownAndOtherMissingMembersAreTheFactorySettings) {
  InstrumentSettings factory;
  Bytes expected = bytesOf(factory);
  for (const unsigned choice : {0u, 1u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 14u}) {
    expected[Marshal::Header::BYTES + choice] = 0xFF;
  }
  for (const Json::Value& root : {Json::Value(), document("other", 1)}) {
    InstrumentSettings s = sampleInstrument();
    EXPECT_TRUE(s.fromJson(&root));
    EXPECT_EQ(bytesOf(s), expected) << root.toStyledString();
  }
}

TEST(InstrumentSettings, JsonOddities) {
  const CapturedAsserts asserts;  // choices the documents do not name are shown as their fallbacks
  const CapturedLog log;
  InstrumentSettings s = sampleInstrument();

  Json::Value root = document("displayBrightness", 70000);
  root["Instrument"]["powerDownTimeout"] = "60 Minutes";
  root["Instrument"]["audibleToneEnabled"] = Json::Value();
  root["Instrument"]["resultStorageLocation"] = "Internal";
  EXPECT_TRUE(s.fromJson(&root));
  EXPECT_EQ(s.displayBrightness, 70000 - 65536);
  EXPECT_EQ(s.powerDownTimeout, -1);
  EXPECT_FALSE(s.audibleToneEnabled) << "a null is false, only a missing member is the factory setting";
  EXPECT_FALSE(s.toJson(level(2))["Instrument"].isMember("resultStorageLocation"));

  root = document("resultStorageLocation", Json::Value(Json::arrayValue));
  EXPECT_FALSE(s.fromJson(&root)) << "dropped, but converted like every text";
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].find("13|1|fromJson failed for resultStorageLocation in libcrossplatform/common/"), 0u);
}

TEST(SettingsFactory, BuildsTheRecordTheIdNamesOrSaysWhyNothingCameOut) {
  EXPECT_EQ(Settings::create(0x510004)->getSettingsType(), 0u);
  EXPECT_EQ(Settings::create(0x51000b)->getSettingsType(), 2u);
  for (const unsigned id : {0u, 0x510003u, 0x51000au, 0x500004u, 0xFFFFFFFFu}) EXPECT_EQ(Settings::create(id), nullptr);
  InstrumentSettings instrument = sampleInstrument();
  const Bytes good = bytesOf(instrument);
  Bytes longer = good;
  longer.resize(good.size() + 9);
  const CodedBytes rows[] = {
      {"bytes after the record are left alone", longer, 0},
      {"another class is no error", withByte(good, 7, 3), 0},
      {"another system is no error", withByte(good, 5, 0x41), 0},
      {"no header", withByte(good, 0, 0), -2},
      {"cut in the body", Bytes(good.begin(), good.end() - 1), -3},
      {"newer class version", withByte(good, 3, 4), -5},
  };
  Marshal::StreamOpStatus status = -99;
  for (CodedBytes row : rows) {
    SCOPED_TRACE(row.name);
    const auto made = Settings::create(row.bytes.data(), static_cast<unsigned>(row.bytes.size()), status);
    EXPECT_EQ(status, row.code);
    ASSERT_EQ(made != nullptr, row.bytes == longer);
    EXPECT_TRUE(made == nullptr || dynamic_cast<InstrumentSettings&>(*made) == instrument);
  }
  unsigned char byte = 0;
  for (unsigned char* const bytes : {static_cast<unsigned char*>(nullptr), &byte}) {
    EXPECT_EQ(Settings::create(bytes, bytes == nullptr ? 10 : 0, status), nullptr);
    EXPECT_EQ(status, -1);
  }
}
