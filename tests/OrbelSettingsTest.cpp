#include <libcrossplatform/common/OrbelSettings.h>

#include <libcrossplatform/serialization/Header.h>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

OrbelSettings sampleSettings() {
  Json::Value profile;
  profile["Wired"]["DHCP"] = false;
  profile["List"].append(1);
  profile["List"].append(2.5);
  profile["List"].append(Json::Value());
  return OrbelSettings({"4711", "Tower \"B\""}, true, true, "user", "p\xC3\xA4ss", profile, true, 4000000000u);
}

/// A record whose text is exactly this.
Bytes recordOf(const std::string& text, uint8_t classVersion = 0) {
  Marshal::ByteStreamBuilder out;
  Marshal::Header header(OrbelSettings::SERIAL_TYPE_ID, classVersion);
  header.serialize(out);
  out.writeUInt32(static_cast<uint32_t>(text.size()));
  out.writeBytes(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
  header.serializeLength(out);
  return Bytes(out.data(), out.data() + out.size());
}

}  // namespace

TEST(OrbelSettings, Wire) {
  OrbelSettings s = sampleSettings();
  expectRoundTrip(s);
  expectEveryPrefixRefused(s);
  expectGolden(s, "orbel_settings_v0");
  OrbelSettings read;
  ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
  EXPECT_EQ(read, s);
}

TEST(OrbelSettings, LengthCountsTheTerminatingZeroOfTheStyledText) {
  OrbelSettings s = sampleSettings();
  std::string text = Dump::toJsonString(s);
  EXPECT_EQ(text.back(), '\n');
  EXPECT_EQ(dumpOf(s, 0), text);
  text += '\0';
  EXPECT_EQ(bytesOf(s), recordOf(text));
}

TEST(OrbelSettings, Codes) {
  const CapturedLog log;
  const std::string good = "{\"OrbelSettings\": {\"auto_save\": true}}";
  Bytes otherClass = recordOf(good);
  otherClass[7] = 4;
  Bytes tooLong = recordOf(good);
  ++tooLong[11];
  Bytes endless = recordOf(good);
  for (std::size_t i = 12; i < 16; ++i) endless[i] = 0xFF;
  struct Row {
    const char* name;
    Bytes bytes;
    int status;
  };
  const Row rows[] = {
      {"no terminator is needed", recordOf(good), 0},
      {"the class version is not checked", recordOf(good, 200), 0},
      {"text ends at its first zero", recordOf(good + std::string(1, '\0') + "]"), 0},
      {"even within a quoted text", recordOf(std::string("{\"OrbelSettings\": {\"sync_username\": \"a\0b\"}}", 43)),
       -1},
      {"another record's id", otherClass, -1},
      {"no text at all", recordOf(""), -1},
      {"no JSON", recordOf("{\"OrbelSettings\": "), -1},
      {"no root member", recordOf("{\"Instrument\": {}}"), -1},
      {"a member that cannot be converted", recordOf("{\"OrbelSettings\": {\"auto_save\": []}}"), -1},
      {"header claims more", tooLong, -4},
      {"length of 4 GiB", endless, -3},
      {"cut in the length", Bytes(endless.begin(), endless.begin() + 14), -3},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    OrbelSettings read;
    EXPECT_EQ(readFrom(read, row.bytes), row.status);
    EXPECT_EQ(read.autoSave, row.status == 0 || row.status == -4);
  }
}

TEST(OrbelSettings, OnlyMembersTheTextNamesAreSet) {
  OrbelSettings expected = sampleSettings();
  expected.autoSave = false;
  OrbelSettings read = sampleSettings();
  ASSERT_EQ(readFrom(read, recordOf("{\"OrbelSettings\": {\"auto_save\": false, \"key_position\": null}}")), 0);
  EXPECT_EQ(read, expected) << "not cleared first";

  const OrbelSettings defaults;
  EXPECT_EQ(defaults.project, Project::ProjectId("", "DEFAULT"));
  const Json::Value whole = sampleSettings().toJson(level(0));
  for (const std::string& key : whole["OrbelSettings"].getMemberNames()) {
    SCOPED_TRACE(key);
    Json::Value one;
    one["OrbelSettings"][key] = whole["OrbelSettings"][key];
    read = defaults;
    ASSERT_TRUE(read.fromJson(&one));
    EXPECT_NE(read, defaults);
    Json::Value all = defaults.toJson(level(2));
    all["OrbelSettings"][key] = whole["OrbelSettings"][key];
    EXPECT_EQ(read.toJson(level(2)), all);
  }
}

TEST(OrbelSettings, NetworkProfileIsAnyJsonValueAndKeepsItsComments) {
  for (const JsonShape& shape : jsonShapes()) {
    SCOPED_TRACE(shape.name);
    OrbelSettings s;
    s.netProfile = shape.value;
    OrbelSettings read;
    ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
    EXPECT_EQ(read.netProfile, shape.value);
  }
  OrbelSettings s;
  ASSERT_TRUE(s.fromString("{\"OrbelSettings\": {\"net_profile\":\n// lab\n{\"a\": 1}}}"));
  EXPECT_NE(Dump::toJsonString(s).find("// lab"), std::string::npos);
}

TEST(OrbelSettings, JsonOfAnyShape) {
  const CapturedLog log;
  const OrbelSettings before;
  const auto read = [](OrbelSettings& s, const Json::Value& v) { return s.fromJson(&v); };
  constexpr unsigned ABSENT = JSON_MISSING | JSON_NULL;
  constexpr unsigned TRUTH = JSON_BOOL | JSON_NUMBERS | ABSENT;
  constexpr unsigned TEXT = JSON_STRING_READER | ABSENT;
  expectJsonShapes(before, sampleSettings().toJson(level(2)), JSON_NONE,
                   {{"OrbelSettings", JSON_OBJECT},
                    {"OrbelSettings/project_id", TEXT},
                    {"OrbelSettings/project_name", TEXT},
                    {"OrbelSettings/auto_save", TRUTH},
                    {"OrbelSettings/auto_increment", TRUTH},
                    {"OrbelSettings/sync_username", TEXT},
                    {"OrbelSettings/sync_userpass", TEXT},
                    {"OrbelSettings/net_profile", JSON_EVERY_KIND},
                    {"OrbelSettings/trackit_enable", TRUTH},
                    {"OrbelSettings/key_position", JSON_BOOL | JSON_INT | JSON_REAL | ABSENT}},
                   read);
  expectBrokenJsonTextRefused(before, [](OrbelSettings& s, const std::string& text) { return s.fromString(text); });
  OrbelSettings s = sampleSettings();
  EXPECT_FALSE(s.fromJson(nullptr));
  EXPECT_EQ(s, sampleSettings());
}
