#include <libcrossplatform/common/DatabaseVersionEx.h>

#include <gmock/gmock.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

// What a caller in C sees is tested in tests/cinterface; here is what needs the classes, and what ends the program.

TEST(DatabaseVersionExDeathTest, MissingArgumentsAreFatal) {
  const std::string package = dataPath("good/limit_package.bin");
  const char* const path = package.c_str();
  DatabasePackageManifest manifest;
  DatabaseDescriptorList list;
  DatabasePackageManifestSummary summary;
  char text[8];
  uint16_t build = 0;
  const auto failed = [](const std::string& expression) {
    return testing::HasSubstr("Assertion failed: " + expression + ", libcrossplatform/common/DatabaseVersionEx:");
  };
  EXPECT_DEATH(databaseVersionExDatabaseDescriptorListAdd(&list, nullptr), failed("pdd != nullptr"));
  EXPECT_DEATH((void)getManifestFromPFile(nullptr, path), failed("pM != nullptr"));
  EXPECT_DEATH((void)getManifestFromPFile(&manifest, nullptr), failed("filename != nullptr"));
  EXPECT_DEATH((void)getDbVersionFromManifest(nullptr, text, 8, &build), failed("filename != nullptr"));
  EXPECT_DEATH((void)getDbVersionFromManifest(path, text, 8, nullptr), failed("build != nullptr"));
  EXPECT_DEATH((void)getDbVersionFromManifest(path, text, 0, &build), failed("len > 0"));
  EXPECT_DEATH((void)getDbMinReqFirmwareVersionFromManifest(path, nullptr, 8), failed("dst != nullptr"));
  EXPECT_DEATH(databaseVersionExDatabaseDescriptor(nullptr, 1, "", ""), failed("version != nullptr"));
  EXPECT_DEATH(databaseVersionExDatabasePackageManifest(nullptr, &list), failed("summary != nullptr"));
  EXPECT_DEATH(databaseVersionExDatabasePackageManifest(&summary, nullptr), failed("list != nullptr"));
  EXPECT_DEATH(databaseVersionExDatabasePackageManifestWriteLimit(nullptr, path), failed("manifest != nullptr"));
  EXPECT_EQ(getDbVersionFromManifest("no such file", text, 8, nullptr), PFile::READER_ERROR_OPENING_FILE)
      << "the build is needed only where it is stored";
}

TEST(CInterfacePage, HoldsTheWholeExample) {
  const auto text = [](const std::string& file) {
    const Bytes bytes = fileBytes(VELTRA_SOURCE_DIR "/" + file);
    return std::string(bytes.begin(), bytes.end());
  };
  EXPECT_THAT(text("docs/c-interface.md"), testing::HasSubstr("```c\n" + text("examples/package_builder.c") + "```\n"));
}
