#include <libcrossplatform/common/DatabasePackageManifest.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

DatabasePackageManifestSummary sampleSummary() {
  return DatabasePackageManifestSummary({3, 12, "beta"}, 2, 407, 65535, "V5.1");
}

}  // namespace

TEST(DatabasePackageManifest, Wire) {
  expectWire(sampleSummary(), "database_package_manifest_summary_v1");
  DatabaseDescriptorList list;
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(1, 2, 3, 4), static_cast<DATABASE_TYPE>(1),
                                                "db/limits.sql", "V5.0"));
  DatabasePackageManifest m(sampleSummary(), std::move(list));
  expectWire(m, "database_package_manifest_v1");
}

TEST(DatabasePackageManifestSummary, VersionTexts) {
  DatabasePackageManifestSummary s = sampleSummary();
  EXPECT_EQ(s.getVersionString(), "V3.12 beta");
  EXPECT_EQ(s.getFullVersionString(), "V3.12.407 beta");
  s.customerVersion.suffix.clear();
  EXPECT_EQ(s.getFullVersionString(), "V3.12.407");
}
