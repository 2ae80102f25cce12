#include <libcrossplatform/common/DatabaseManifestFile.h>

#include <gmock/gmock.h>

#include "PFileTesting.h"

using namespace PFileTesting;
using namespace RecordTesting;
using namespace Veltra;

namespace {

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
