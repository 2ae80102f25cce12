#include <libcrossplatform/common/DatabaseVersion.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

TEST(DatabaseVersion, Wire) {
  expectWire(DatabaseVersion(1, 0x0203, 0xFFFF, 407), "database_version_v1");
  expectWire(CustomerDatabaseVersion(3, 12, "beta"), "customer_database_version");
}

// What each text makes of "V8.9 old", and whether it holds both numbers.
TEST(CustomerDatabaseVersion, IsReadFromTextFullOfJunk) {
  std::string table;
  for (const std::string& text :
       split("V2.5|V2.5 rc1|V2.5 |V2.5  rc 1|limits, V2.5.7 rc1|V65536.65541|V99999999999999999999999.1|V-1.+5|V1x.x1|"
             "V.5 x|V3.|V3. x|V3|V3 beta|3.12|a.V3.5|")) {
    CustomerDatabaseVersion v(8, 9, "old");
    const bool isWhole = v.setVersionFromString(text);
    table += text + ": " + v.getVersionString() + (isWhole ? ", whole\n" : "\n");
  }
  expectGoldenText(table, "customer_versions");
}
