// Packages of databases, from their parts to the file and its flat interface.
#include <gmock/gmock.h>

#include <libcrossplatform/common/DatabaseDescriptor.h>
#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/DatabaseVersion.h>
#include <libcrossplatform/common/DatabaseVersionEx.h>

#include "PFileTesting.h"

using namespace PFileTesting;
using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr auto LIMITS = static_cast<DATABASE_TYPE>(7);
constexpr auto CABLES = static_cast<DATABASE_TYPE>(-7);

DatabaseDescriptor sampleDescriptor() {
  return DatabaseDescriptor(DatabaseVersion(1, 2, 3, 4), CABLES, "db/limits.sql", "V2.0");
}

DatabaseDescriptorList listOf(std::size_t count) {
  DatabaseDescriptorList list;
  for (std::size_t i = 0; i < count; ++i) list.add(std::make_unique<DatabaseDescriptor>(sampleDescriptor()));
  return list;
}

DatabasePackageManifestSummary sampleManifest() {
  return DatabasePackageManifestSummary({3, 12, "beta"}, 2, 407, 65535, "V5.1");
}

class DatabaseManifestFile : public testing::Test {
 protected:
  PFile::PFileReaderStatus readBytes(const Bytes& bytes) {
    writeFile(path, bytes);
    DatabasePackageManifest manifest;
    return readManifestFile(manifest, path.c_str());
  }
  const TempDir dir;
  const std::string path = dir.file("a.pkg");
};

using DatabaseManifestFileDeathTest = DatabaseManifestFile;

}  // namespace

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

TEST(DatabaseDescriptor, Wire) {
  expectWire(sampleDescriptor(), "database_descriptor");
}

TEST(DatabaseDescriptor, PathIsReadUpToItsLimitAndWholeButForTheLastZero) {
  for (const std::size_t size : {0u, 1022u, 1023u, 1024u, 5000u}) {
    DatabaseDescriptor d = sampleDescriptor(), read;
    d.filePath.assign(size, '\0');
    EXPECT_EQ(readFrom(read, bytesOf(d)), size > 1023 ? -1 : 0) << size;
    EXPECT_EQ(read == d, size <= 1023) << size;
  }
}

TEST(DatabaseDescriptorList, Wire) {
  DatabaseDescriptorList list = listOf(1);
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(), LIMITS, "", ""));
  expectWire(list, "database_descriptor_list_v1");
}

TEST(DatabaseDescriptorList, EmptyAndOverlongListsAreWrittenButNotRead) {
  for (const std::size_t count : {0u, 1u, 50u, 51u}) {
    DatabaseDescriptorList list = listOf(count), read = listOf(3);
    const bool readable = count >= 1 && count <= 50;
    EXPECT_EQ(readFrom(read, bytesOf(list)), readable ? 0 : -1) << count;
    EXPECT_EQ(read.size(), readable ? count : 0);
  }
}

TEST(DatabaseDescriptorList, FindsTheFirstOfATypeAndTakesNoNull) {
  DatabaseDescriptorList list = listOf(2);
  list[1].filePath = "second";
  ASSERT_NE(list.getDatabaseDescriptor(CABLES), nullptr);
  EXPECT_EQ(list.getDatabaseDescriptor(CABLES)->filePath, "db/limits.sql");
  EXPECT_EQ(std::as_const(list).getDatabaseDescriptor(LIMITS), nullptr);
  const CapturedAsserts captured;
  list.add(nullptr);
  EXPECT_TRUE(list.size() == 2 && captured.reports().size() == 1);
}

TEST(DatabasePackageManifest, Wire) {
  expectWire(sampleManifest(), "database_package_manifest_summary_v1");
  DatabaseDescriptorList list;
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(1, 2, 3, 4), static_cast<DATABASE_TYPE>(1),
                                                "db/limits.sql", "V5.0"));
  DatabasePackageManifest m(sampleManifest(), std::move(list));
  expectWire(m, "database_package_manifest_v1");
}

TEST_F(DatabaseManifestFile, SaysWhatIsWrong) {
  DatabasePackageManifest manifest;
  const Bytes record = fileBytes(dataPath("good/database_package_manifest_v1.bin"));
  const auto package = [](uint16_t type, const Bytes& data, uint16_t flags = 0) {
    return imageOf({{type, MANIFEST_SECTION_VERSION, flags, data}});
  };
  const Bytes good = package(102, record);
  const std::pair<Bytes, PFile::PFileReaderStatus> rows[] = {
      {good, PFile::READER_OK},
      {package(101, record, PFile::SECTION_FLAG_COMPRESS), PFile::READER_OK},
      {package(100, record), PFile::READER_WRONG_FILE_TYPE},
      {package(103, record), PFile::READER_WRONG_FILE_TYPE},
      {package(102, withByte(record, 3, 2)), PFile::READER_VERSION_TOO_NEW},
      {package(102, withByte(record, 7, 7)), PFile::READER_CORRUPT},
      {withByte(good, good.size() - 1, 0xff), PFile::READER_WRONG_FILE_TYPE},
      {withByte(good, 23, 0xff), PFile::READER_ERROR_OPENING_FILE},
      {EMPTY_FILE, PFile::READER_WRONG_FILE_TYPE},
      {{}, PFile::READER_ERROR_OPENING_FILE}};
  for (const auto& row : rows) EXPECT_EQ(readBytes(row.first), row.second) << &row - rows;
  for (const char* unusable : {"no such file", ".", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(readManifestFile(manifest, unusable), PFile::READER_ERROR_OPENING_FILE);
  }
  EXPECT_EQ(writeManifestFile(manifest, 101, "no such directory/package"), -1);
}

TEST_F(DatabaseManifestFileDeathTest, SectionCompressedFromNothingIsFatal) {
  EXPECT_DEATH(readBytes(closedFile(sectionOfNothing(101))), testing::HasSubstr("Assertion failed: size > 0, "));
}

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
  const std::string page = fileText(VELTRA_SOURCE_DIR "/docs/c-interface.md");
  EXPECT_THAT(page, testing::HasSubstr("```c\n" + fileText(VELTRA_SOURCE_DIR "/examples/package_builder.c") + "```\n"));
}
