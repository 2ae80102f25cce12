#include <libcrossplatform/common/DatabaseVersion.h>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

TEST(DatabaseVersion, Wire) {
  expectWire(DatabaseVersion(1, 0x0203, 0xFFFF, 407), "database_version_v1");
  expectWire(CustomerDatabaseVersion(3, 12, "beta"), "customer_database_version");
}

TEST(CustomerDatabaseVersion, IsReadFromTextFullOfJunk) {
  struct Row {
    const char* text;
    bool complete;
    CustomerDatabaseVersion expected;
  };
  const CustomerDatabaseVersion before(8, 9, "old");
  const Row rows[] = {{"V2.5", true, {2, 5, "old"}},
                      {"V2.5 rc1", true, {2, 5, "rc1"}},
                      {"V2.5 ", true, {2, 5, ""}},
                      {"V2.5  rc 1", true, {2, 5, " rc 1"}},
                      {"limits, V2.5.7 rc1", true, {2, 5, "rc1"}},
                      {"V65536.65541", true, {0, 5, "old"}},
                      {"V99999999999999999999999.1", true, {65535, 1, "old"}},
                      {"V-1.+5", true, {0, 0, "old"}},
                      {"V1x.x1", true, {1, 0, "old"}},
                      {"V.5 x", false, {8, 5, "x"}},
                      {"V3.", false, {3, 9, "old"}},
                      {"V3. x", false, {3, 9, "x"}},
                      {"V3", false, before},
                      {"V3 beta", false, before},
                      {"3.12", false, {8, 12, "old"}},
                      {"a.V3.5", false, {8, 0, "old"}},
                      {"", false, before}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    CustomerDatabaseVersion v = before;
    EXPECT_EQ(v.setVersionFromString(row.text), row.complete);
    EXPECT_EQ(v, row.expected) << v.getVersionString();
  }
}

TEST(CustomerDatabaseVersion, JsonOfAnyShape) {
  CapturedLog log;
  const auto read = [](CustomerDatabaseVersion& v, const Json::Value& json) { return v.fromJson(json); };
  const CustomerDatabaseVersion before(8, 9, "old");
  Json::Value document = CustomerDatabaseVersion(3, 12, "beta").toJson(level(0));
  expectJsonShapes(before, document, JSON_NONE,
                   {{"CustomDatabaseVersion", JSON_NONE}, {"CustomDatabaseVersion/Version", JSON_NONE}}, read);
  document["CustomDatabaseVersion"]["Version"] = "V3.";
  expectJsonRead(before, document, false, read);

  CustomerDatabaseVersion v = before;
  log.lines().clear();
  EXPECT_FALSE(v.fromJson(nullptr));
  EXPECT_EQ(v, CustomerDatabaseVersion());
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].find("13|1|fromJson failed in libcrossplatform/common/DatabaseVersion line "), 0u);
}
