#include <libcrossplatform/common/DatabasePackageManifest.h>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

DatabasePackageManifestSummary sampleSummary() {
  return DatabasePackageManifestSummary({3, 12, "beta"}, 2, 407, 65535, "V5.1");
}

DatabasePackageManifest sampleManifest() {
  DatabaseDescriptorList list;
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(1, 2, 3, 4), static_cast<DATABASE_TYPE>(1),
                                                "db/limits.sql", "V5.0"));
  return DatabasePackageManifest(sampleSummary(), std::move(list));
}

}  // namespace

TEST(DatabasePackageManifest, Wire) {
  expectWire(sampleSummary(), "database_package_manifest_summary_v1");
  DatabasePackageManifest m = sampleManifest(), read;
  expectWire(m, "database_package_manifest_v1");
  EXPECT_NE(read, m);
  ASSERT_EQ(readFrom(read, bytesOf(m)), 0);
  EXPECT_EQ(read, m);
  DatabasePackageManifest none;
  EXPECT_EQ(readFrom(read, bytesOf(none)), -1) << "one without databases is written but not read";
}

TEST(DatabasePackageManifestSummary, VersionTexts) {
  DatabasePackageManifestSummary s = sampleSummary();
  EXPECT_EQ(s.getVersionString(), "V3.12 beta");
  EXPECT_EQ(s.getFullVersionString(), "V3.12.407 beta");
  s.customerVersion.suffix.clear();
  EXPECT_EQ(s.getFullVersionString(), "V3.12.407");
}

TEST(DatabasePackageManifestSummary, JsonOfAnyShape) {
  CapturedLog log;
  const auto read = [](DatabasePackageManifestSummary& s, const Json::Value& v) { return s.fromJson(&v); };
  const DatabasePackageManifestSummary before;
  expectEveryJsonMemberCounts(sampleSummary(), before);
  Json::Value document = sampleSummary().toJson(level(2));
  expectJsonShapes(before, document, JSON_NONE,
                   {{"DatabasePackageManifestSummary", JSON_NONE},
                    {"DatabasePackageManifestSummary/CustomDatabaseVersion", JSON_NONE},
                    {"DatabasePackageManifestSummary/CustomDatabaseVersion/Version", JSON_NONE},
                    {"DatabasePackageManifestSummary/releaseType", JSON_INT},
                    {"DatabasePackageManifestSummary/build", JSON_INT},
                    {"DatabasePackageManifestSummary/type", JSON_INT},
                    {"DatabasePackageManifestSummary/minReqFirmwareVersion", JSON_STRING_READER}},
                   read);
  document["DatabasePackageManifestSummary"]["build"] = 65536;
  log.lines().clear();
  expectJsonRead(before, document, false, read);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_NE(log.lines()[0].find("fromJson failed for build in "), std::string::npos);

  DatabasePackageManifestSummary s = sampleSummary();
  EXPECT_FALSE(s.fromJson(nullptr));
  EXPECT_EQ(s, before) << "a null pointer clears";
}
