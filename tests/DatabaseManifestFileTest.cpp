#include <libcrossplatform/common/DatabaseManifestFile.h>

#include <gmock/gmock.h>
#include <zlib.h>

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/serialization/Header.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

DatabasePackageManifest manifestOf(std::size_t databases, std::size_t pathLength = 9) {
  DatabaseDescriptorList list;
  for (std::size_t i = 0; i < databases; ++i) {
    list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(1, 2, 3, static_cast<uint16_t>(i)),
                                                  static_cast<DATABASE_TYPE>(i), std::string(pathLength, 'p'), "V5.0"));
  }
  return DatabasePackageManifest(DatabasePackageManifestSummary({3, 12, "beta"}, 1, 407, 0, "V5.1"), std::move(list));
}

class DatabaseManifestFile : public testing::Test {
 protected:
  PFile::PFileReaderStatus readBytes(const Bytes& bytes) {
    writeFile(path, bytes);
    DatabasePackageManifest manifest;
    return readManifestFile(manifest, path.c_str());
  }
  /// A package whose manifest section has this payload, with a right CRC-32.
  Bytes packageOf(Bytes payload, uint16_t type, uint16_t flags = 0) {
    PFile::Section section;
    section.set(type, MANIFEST_SECTION_VERSION, 0, payload.data(), static_cast<unsigned>(payload.size()), false, 0);
    section.header.flags = flags;
    section.header.updateData(section.payload.size(), section.payload.data());
    section.compressed = flags != 0;  // as it stands: nothing is compressed here
    PFile::FileWriter file;
    EXPECT_EQ(file.open(path.c_str()), 0);
    EXPECT_EQ(file.write(section), 0);
    EXPECT_EQ(file.close(false), 0);
    return fileBytes(path);
  }

  const TempDir dir;
  const std::string path = dir.file("a.pkg");
};

using DatabaseManifestFileDeathTest = DatabaseManifestFile;

}  // namespace

TEST_F(DatabaseManifestFile, PackageOfTheExamplesIsReadAndWrittenByteForByte) {
  const std::string golden = dataPath("good/limit_package.bin");
  DatabasePackageManifest manifest;
  ASSERT_EQ(readManifestFile(manifest, golden.c_str()), PFile::READER_OK);
  EXPECT_EQ(manifest.descriptors.size(), 3u);
  EXPECT_EQ(manifest.summary.getFullVersionString(), "V3.12.407 beta");
  EXPECT_EQ(writeManifestFile(manifest, PFile::SECTION_LIMIT_MANIFEST, path.c_str()), 0);
  EXPECT_EQ(fileBytes(path), fileBytes(golden));
}

TEST_F(DatabaseManifestFile, BothKindsComeBackEqualWithinTheLimits) {
  struct Row {
    std::size_t databases;
    std::size_t pathLength;
    PFile::PFileReaderStatus status;
  };
  const Row rows[] = {{0, 9, PFile::READER_CORRUPT},    {1, 9, PFile::READER_OK},
                      {50, 1023, PFile::READER_OK},     {51, 9, PFile::READER_CORRUPT},
                      {1, 1024, PFile::READER_CORRUPT}, {1, 1025, PFile::READER_CORRUPT}};
  for (const uint16_t type : {PFile::SECTION_LIMIT_MANIFEST, PFile::SECTION_CABLE_MANIFEST}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(std::to_string(row.databases) + " databases, paths of " + std::to_string(row.pathLength));
      DatabasePackageManifest manifest = manifestOf(row.databases, row.pathLength);
      ASSERT_EQ(writeManifestFile(manifest, type, path.c_str()), 0);
      DatabasePackageManifest read;
      EXPECT_EQ(readManifestFile(read, path.c_str()), row.status);
      if (row.status == PFile::READER_OK) {
        EXPECT_EQ(read, manifest);
      }
    }
  }
}

TEST_F(DatabaseManifestFile, SaysWhatIsWrong) {
  DatabasePackageManifest manifest = manifestOf(1);
  const Bytes record = bytesOf(manifest);
  Bytes newer = record;
  newer[3] = 2;
  Bytes other = record;
  other[7] = 7;
  const Bytes cut(record.begin(), record.end() - 1);
  EXPECT_EQ(readBytes(packageOf(record, 100)), PFile::READER_WRONG_FILE_TYPE);
  EXPECT_EQ(readBytes(packageOf(record, 103)), PFile::READER_WRONG_FILE_TYPE);
  EXPECT_EQ(readBytes(packageOf(newer, 102)), PFile::READER_VERSION_TOO_NEW);
  EXPECT_EQ(readBytes(packageOf(other, 102)), PFile::READER_CORRUPT);
  EXPECT_EQ(readBytes(packageOf(cut, 102)), PFile::READER_CORRUPT);
  EXPECT_EQ(readBytes({}), PFile::READER_ERROR_OPENING_FILE);
  for (const char* unusable : {"no such file", ".", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(readManifestFile(manifest, unusable), PFile::READER_ERROR_OPENING_FILE);
  }
  EXPECT_EQ(writeManifestFile(manifest, 101, "no such directory/package"), -1);
}

TEST_F(DatabaseManifestFile, CompressedManifestIsRead) {
  DatabasePackageManifest manifest = manifestOf(50);
  Bytes record = bytesOf(manifest);
  PFile::Section section;
  section.set(101, 1, PFile::SECTION_FLAG_COMPRESS, record.data(), static_cast<unsigned>(record.size()), false, 9);
  PFile::FileWriter file;
  file.open(path.c_str());
  file.write(section);
  file.close(false);
  DatabasePackageManifest read;
  EXPECT_EQ(readManifestFile(read, path.c_str()), PFile::READER_OK);
  EXPECT_EQ(read, manifest);
}

TEST_F(DatabaseManifestFile, EveryCutAndEveryFlippedBitIsNoticed) {
  constexpr std::size_t FILE_HEADER_BYTES = 24;
  const Bytes good = fileBytes(dataPath("good/limit_package.bin"));
  for (std::size_t n = 0; n < good.size(); ++n) {
    SCOPED_TRACE("cut after byte " + std::to_string(n));
    EXPECT_EQ(readBytes(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n))),
              n < FILE_HEADER_BYTES ? PFile::READER_ERROR_OPENING_FILE : PFile::READER_WRONG_FILE_TYPE);
  }
  for (std::size_t bit = 0; bit < 8 * good.size(); ++bit) {
    SCOPED_TRACE("bit " + std::to_string(bit));
    Bytes flipped = good;
    flipped[bit / 8] = static_cast<uint8_t>(flipped[bit / 8] ^ (1u << bit % 8));
    EXPECT_EQ(readBytes(flipped),
              bit / 8 < FILE_HEADER_BYTES ? PFile::READER_ERROR_OPENING_FILE : PFile::READER_WRONG_FILE_TYPE);
  }
}

TEST_F(DatabaseManifestFileDeathTest, SectionCompressedFromNothingIsFatal) {
  Bytes nothing(4 + compressBound(0));
  uLongf size = nothing.size() - 4;
  ASSERT_EQ(compress2(nothing.data() + 4, &size, nothing.data(), 0, 6), Z_OK);
  nothing.resize(4 + size);
  const Bytes package = packageOf(nothing, 101, PFile::SECTION_FLAG_COMPRESS);
  EXPECT_DEATH(readBytes(package), testing::HasSubstr("Assertion failed: size > 0, "));
}

TEST(DatabasePackageManifest, EveryFlippedBitBehindARightCrcIsAnsweredOrTheStatedAssertion) {
  DatabasePackageManifest manifest = manifestOf(2);
  const Bytes good = bytesOf(manifest);
  const auto leave = [](const char* expression, const char*, int) { throw std::string(expression); };
  const Veltra::AssertHandler previous = setAssertHandler(leave);
  int fatal = 0;
  for (std::size_t bit = 0; bit < 8 * good.size(); ++bit) {
    SCOPED_TRACE("bit " + std::to_string(bit));
    Bytes flipped = good;
    flipped[bit / 8] = static_cast<uint8_t>(flipped[bit / 8] ^ (1u << bit % 8));
    DatabasePackageManifest read;
    try {
      const Marshal::StreamOpStatus status = readFrom(read, flipped);
      EXPECT_LE(status, 0);
      EXPECT_GE(status, -5);
    } catch (const std::string& expression) {
      EXPECT_EQ(expression, "temp[temp.length() - 1] == '\\0'");
      ++fatal;
    }
  }
  setAssertHandler(previous);
  EXPECT_GE(fatal, 2 * 8) << "the eight bits of each terminating zero";
}
