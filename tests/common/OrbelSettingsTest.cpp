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

OrbelSettings sampleOrbel() {
  Json::Value profile;
  profile["Wired"]["DHCP"] = false;
  profile["List"].append(1);
  profile["List"].append(2.5);
  profile["List"].append(Json::Value());
  return OrbelSettings({"4711", "Tower \"B\""}, true, true, "user", "p\xC3\xA4ss", profile, true, 4000000000u);
}

}  // namespace

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
      {"the class version is not checked", recordOf(good, 200), 0},
      {"text ends at its first zero", recordOf(good + std::string(1, '\0') + "]"), 0},
      {"even within a quoted text", recordOf(std::string("{\"OrbelSettings\": {\"sync_username\": \"a\0b\"}}", 43)),
       -1},
      {"no text at all", recordOf(""), -1},
      {"no root member", recordOf("{\"Instrument\": {}}"), -1},
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
