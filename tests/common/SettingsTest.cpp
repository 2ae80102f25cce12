#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/JsonText.h>

#include "RecordTesting.h"
#include "limits/HostileFiles.h"

using namespace RecordTesting;
using namespace Veltra;
using HostileFiles::recordOf;

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

OrbelSettings sampleOrbel() {
  Json::Value profile;
  profile["Wired"]["DHCP"] = false;
  profile["List"].append(1);
  profile["List"].append(2.5);
  profile["List"].append(Json::Value());
  return OrbelSettings({"4711", "Tower \"B\""}, true, true, "user", "p\xC3\xA4ss", profile, true, 4000000000u);
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

TEST(OrbelSettings, Wire) {
  const CapturedLog log;
  OrbelSettings s = sampleOrbel();
  expectWire(s, "orbel_settings_v0");
  EXPECT_EQ(bytesOf(s), recordOf(dumpOf(s) + '\0')) << "the length counts the terminating zero";
}

TEST(OrbelSettings, Codes) {
  const CapturedLog log;
  const std::string good = "{\"OrbelSettings\": {\"auto_save\": true}}";
  const CodedBytes rows[] = {
      {"no terminator is needed", recordOf(good), 0},
      {"text ends at its first zero", recordOf(good + std::string(1, '\0') + "]"), 0},
      {"even within a quoted text", recordOf(std::string("{\"OrbelSettings\": {\"sync_username\": \"a\0b\"}}", 43)),
       -1},
  };
  for (const CodedBytes& row : rows) {
    SCOPED_TRACE(row.name);
    OrbelSettings read;
    EXPECT_EQ(readFrom(read, row.bytes), row.code);
    EXPECT_EQ(read.autoSave, row.code == 0);
  }
}

TEST(OrbelSettings, WholeNumbersOfTheProfileCompareByValue) {
  const auto with = [](const Json::Value& value) {
    OrbelSettings s = sampleOrbel();
    s.netProfile["List"].append(value);
    return s;
  };
  for (const Json::Value& value :
       {Json::Value(80u), Json::Value(Json::UInt64(1) << 40), Json::Value(Json::Value::maxUInt64),
        Json::Value(Json::Value::minInt64), Json::Value(0.5)}) {
    OrbelSettings s = with(value), read;
    ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
    EXPECT_EQ(read, s) << value.asString();
  }
  EXPECT_EQ(with(80), with(80u));
  EXPECT_NE(with(-1), with(Json::Value::maxUInt64));
  EXPECT_NE(with(80), with(81u));
  EXPECT_NE(with(80), with(80.0));
  OrbelSettings renamed = sampleOrbel();
  renamed.netProfile["Wired"].removeMember("DHCP");
  renamed.netProfile["Wired"]["dhcp"] = false;
  EXPECT_NE(renamed, sampleOrbel());
}

TEST(OrbelSettings, WarnsOfWhatItWritesButWouldNotRead) {
  constexpr std::size_t MIB4 = std::size_t{4} * 1024 * 1024;
  const auto json = [](const std::string& text) {
    Json::Value value;
    EXPECT_TRUE(parseJson(text, value, false));
    return value;
  };
  struct Row {
    Json::Value most, more;
    const char* warning;
  };
  // A text stands in quotes and has a line end after it; the record has 10 values beside its profile, and 2 levels.
  for (const Row& row :
       {Row{std::string(MIB4 - 3, 'x'), std::string(MIB4 - 2, 'x'), "4194304 bytes of network profile"},
        Row{json(nestedJson(1, 131061)), json(nestedJson(1, 131062)), "131072 JSON values"},
        Row{json(nestedJson(998, 0)), json(nestedJson(999, 0)), "1000 levels of JSON"}}) {
    SCOPED_TRACE(row.warning);
    const CapturedLog log;
    OrbelSettings s = sampleOrbel(), read;
    s.netProfile = row.most;
    EXPECT_EQ(readFrom(read, bytesOf(s)), 0);
    EXPECT_EQ(read, s);
    EXPECT_TRUE(log.lines().empty());
    s.netProfile = row.more;
    EXPECT_EQ(readFrom(read, bytesOf(s)), -1);
    EXPECT_EQ(log.lines(), std::vector<std::string>{std::string("13|2|OrbelSettings is written with more than ") +
                                                    row.warning + ": it cannot be read back"});
    // Only what a text names is measured.
    EXPECT_TRUE(s.fromString("{\"OrbelSettings\": {\"auto_save\": false, \"net_profile\": null}}"));
    EXPECT_FALSE(s.autoSave);
    EXPECT_EQ(s.netProfile, row.more);
  }
  // A short text that becomes a long one.
  EXPECT_FALSE(OrbelSettings().fromString("{\"OrbelSettings\": {\"net_profile\": " + nestedJson(900, 7500) + "}}"));
}

TEST(OrbelSettings, BytesThatAreNoUtf8AreReplacedAndWarnedOf) {
  OrbelSettings s = sampleOrbel(), read;
  s.syncUserPass = "caf\xE9 au";
  s.netProfile["Wired"]["n\xFF\n"] = "caf\xE9";
  s.netProfile["Wired"]["n\xEF\xBF\xBD\n"] = "kept";
  const CapturedLog log;
  Marshal::ByteStreamCounter counter;  // counting warns of nothing
  s.serialize(counter);
  const Bytes bytes = bytesOf(s);
  EXPECT_EQ(counter.size(), bytes.size());
  EXPECT_EQ(log.lines(), std::vector<std::string>{"13|2|JSON: texts that are not UTF-8 are written with U+FFFD: 3, the "
                                                  "first at \"OrbelSettings.net_profile.Wired.n??\""});
  ASSERT_EQ(readFrom(read, bytes), 0);
  EXPECT_EQ(read.syncUserPass, "caf\xEF\xBF\xBD au");
  EXPECT_EQ(read.netProfile["Wired"]["n\xEF\xBF\xBD\n"], "kept");
  EXPECT_EQ(read.netProfile["Wired"]["n\xEF\xBF\xBD\n\xEF\xBF\xBD"
                                     "1"],
            "caf\xEF\xBF\xBD");
  EXPECT_EQ(read.netProfile["List"], s.netProfile["List"]);

  Json::Value alike;  // names that all become the same one stay short, and none is lost
  for (int i = 0; i < 4000; ++i) alike[{static_cast<char>(0x80 + i / 64), static_cast<char>(0x80 + i % 64)}] = i;
  EXPECT_LT(Dump::compactJson(alike).size(), 40u * 4000);
  EXPECT_TRUE(Dump::replaceIllFormedTexts(alike));
  EXPECT_EQ(alike.size(), 4000u);
}

TEST(OrbelSettings, ANetworkProfileKeepsItsComments) {
  std::string addresses;
  for (int i = 0; i < 3000; ++i) addresses += "\"http://x\", ";  // slashes in texts are no comments
  for (const std::string& profile : {std::string("\n// lab\n{\"a\": 1}"), "[" + addresses + "\n// lab\n1]"}) {
    OrbelSettings s;
    ASSERT_TRUE(s.fromString("{\"OrbelSettings\": {\"net_profile\":" + profile + "}}"));
    EXPECT_NE(Dump::toJsonString(s).find("// lab"), std::string::npos);
  }
}
