#include <libcrossplatform/common/DatabaseVersion.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

TEST(DatabaseVersion, Wire) {
  expectWire(DatabaseVersion(1, 0x0203, 0xFFFF, 407), "database_version_v1");
  expectWire(CustomerDatabaseVersion(3, 12, "beta"), "customer_database_version");
}

TEST(CustomerDatabaseVersion, IsReadFromTextFullOfJunk) {
  // A text and what it makes of "V8.9 old", first where it holds both numbers, then where it does not.
  const std::vector<const char*> complete = {"V2.5|V2.5 old",
                                             "V2.5 rc1|V2.5 rc1",
                                             "V2.5 |V2.5",
                                             "V2.5  rc 1|V2.5  rc 1",
                                             "limits, V2.5.7 rc1|V2.5 rc1",
                                             "V65536.65541|V0.5 old",
                                             "V99999999999999999999999.1|V65535.1 old",
                                             "V-1.+5|V0.0 old",
                                             "V1x.x1|V1.0 old"};
  const std::vector<const char*> incomplete = {"V.5 x|V8.5 x",     "V3.|V3.9 old",   "V3. x|V3.9 x",    "V3|V8.9 old",
                                               "V3 beta|V8.9 old", "3.12|V8.12 old", "a.V3.5|V8.0 old", "|V8.9 old"};
  for (const auto& rows : {complete, incomplete}) {
    for (const char* row : rows) {
      CustomerDatabaseVersion v(8, 9, "old");
      EXPECT_EQ(v.setVersionFromString(split(row)[0]), rows == complete) << row;
      EXPECT_EQ(v.getVersionString(), split(row)[1]) << row;
    }
  }
}
