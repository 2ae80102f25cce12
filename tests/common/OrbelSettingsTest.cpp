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
  OrbelSettings s = sampleSettings(), read;
  expectWire(s, "orbel_settings_v0");
  ASSERT_EQ(readFrom(read, bytesOf(s)), 0);
  EXPECT_EQ(read, s);
  EXPECT_EQ(dumpOf(s, 0), Dump::toJsonString(s));
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
      {"another record's id", withByte(recordOf(good), 7, 4), -1},
      {"no text at all", recordOf(""), -1},
      {"no root member", recordOf("{\"Instrument\": {}}"), -1},
      {"header claims more", withByte(recordOf(good), 11, 99), -4},
      {"length of 4 GiB", withByte(recordOf(good), 12, 0xFF), -3},
      {"cut in the length", {0xAB, 0xCD, 1, 0, 0, 0x51, 0, 0x0B, 0, 0, 0, 40, 0, 0}, -3},
  };
  for (const CodedBytes& row : rows) {
    SCOPED_TRACE(row.name);
    OrbelSettings read;
    EXPECT_EQ(readFrom(read, row.bytes), row.code);
    EXPECT_EQ(read.autoSave, row.code == 0 || row.code == -4);
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
  expectEveryJsonMemberCounts(defaults, sampleSettings());
}

TEST(OrbelSettings, JsonOfAnyShape) {
  const CapturedLog log;
  const OrbelSettings before;
  const auto read = [](OrbelSettings& s, const Json::Value& v) { return s.fromJson(&v); };
  expectJsonShapes(before, sampleSettings().toJson(level(2)), JSON_NONE,
                   {{"OrbelSettings", JSON_OBJECT},
                    {"OrbelSettings/project_id", JSON_TO_TEXT},
                    {"OrbelSettings/project_name", JSON_TO_TEXT},
                    {"OrbelSettings/auto_save", JSON_TO_BOOL},
                    {"OrbelSettings/auto_increment", JSON_TO_BOOL},
                    {"OrbelSettings/sync_username", JSON_TO_TEXT},
                    {"OrbelSettings/sync_userpass", JSON_TO_TEXT},
                    {"OrbelSettings/net_profile", JSON_EVERY_KIND},
                    {"OrbelSettings/trackit_enable", JSON_TO_BOOL},
                    {"OrbelSettings/key_position", JSON_BOOL | JSON_INT | JSON_REAL | JSON_ABSENT}},
                   read);

  OrbelSettings s = sampleSettings();
  EXPECT_FALSE(s.fromJson(nullptr));
  EXPECT_EQ(s, sampleSettings());
  ASSERT_TRUE(s.fromString("{\"OrbelSettings\": {\"net_profile\":\n// lab\n{\"a\": 1}}}"));
  EXPECT_NE(Dump::toJsonString(s).find("// lab"), std::string::npos) << "a network profile keeps its comments";
}
