// Small files that claim or become much, and the most expensive bytes there are: how much work reading them is, counted
// where it is done. bench/HostileBench.cpp measures how long that takes.
#include <sys/resource.h>

#include <functional>

#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/common/Settings.h>

#include "AllocationFaults.h"
#include "HostileFiles.h"
#include "PFileTesting.h"
#include "WorkDone.h"
#include "Workloads.h"

#ifdef VELTRA_HAS_INSPECT
#include <libinspect/container/Recover.h>
#include <libinspect/records/RecordCheck.h>
#endif

using namespace PFile;
using namespace PFileTesting;

namespace {

constexpr std::size_t MIB = std::size_t{1} << 20;

/// Every section there is, by either reader.
void walk(const std::string& path, const Bytes& bytes) {
  FileReader file;
  MemReader memory;
  int code = file.open(path.c_str());
  while (code == PFILE_OK) {
    Section section;
    code = file.read(section, false);
  }
  code = memory.quickOpen(bytes.data(), static_cast<unsigned>(bytes.size()));
  while (code == PFILE_OK) code = memory.skipNextSection();
}

#ifdef VELTRA_HAS_INSPECT
void doctor(const std::string& path, const Bytes&) {
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  examineDeep(source);
}

void recover(const std::string& path, const Bytes&) {
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  const std::string output = path + ".recovered";
  EXPECT_TRUE(writeRecovered(source, findSections(source), output, error)) << error;
  doctor(output, {});
}
#endif

/// Runs it in a process that may have 256 MiB of addresses. qemu-user, which needs more for itself, ignores the limit.
void inSmallProcess(const std::function<void()>& body) {
  Workloads::inChild([&body] {
    const rlimit addresses = {256 * MIB, 256 * MIB};
    EXPECT_EQ(setrlimit(RLIMIT_AS, &addresses), 0);
    WorkDone::start();
    body();
    EXPECT_LT(WorkDone::sinceStart().peak, 16 * MIB);
    return true;
  });
}

struct Limits : ::testing::Test {
  void SetUp() override {
    if (Allocations::isSanitized()) GTEST_SKIP() << "the allocator that counts is in place of the sanitizer's";
  }
  const TempDir dir;
  const std::string path = dir.file("a.pf");
};

}  // namespace

TEST_F(Limits, AFileOfOneKibibyteThatClaimsFourGibibytes) {
  Bytes bytes = EMPTY_FILE + headerClaiming(SECTION_RESULT_SUMMARY, 0xFFFFFFFF);
  bytes.resize(1024);
  RecordTesting::writeFile(path, bytes);
  inSmallProcess([&] {
    Veltra::ResultSummary summary;
    EXPECT_EQ(readResultSummary(summary, path.c_str(), true), Veltra::RESULT_READER_CORRUPT);
    EXPECT_EQ(readResultSummary(summary, bytes.data(), 1024), Veltra::RESULT_READER_CORRUPT);
    Veltra::DatabasePackageManifest manifest;
    EXPECT_EQ(readManifestFile(manifest, path.c_str()), READER_WRONG_FILE_TYPE);
#ifdef VELTRA_HAS_INSPECT
    doctor(path, bytes);
    recover(path, bytes);
#endif
  });
}

TEST_F(Limits, EightKibibytesThatInflateToEightMebibytesAndOneMore) {
  for (const bool isTooBig : {false, true}) {
    const uint32_t size = Section::MAX_UNCOMPRESSED + (isTooBig ? 1 : 0);
    const Bytes bytes = HostileFiles::closedFile(HostileFiles::bomb(SECTION_RESULT_SUMMARY, size));
    EXPECT_LT(bytes.size(), 9000u);
    RecordTesting::writeFile(path, bytes);
    inSmallProcess([&] {
      {
        Section section;
        FileReader file;
        EXPECT_EQ(file.open(path.c_str()), 0);
        EXPECT_EQ(file.read(section, true), isTooBig ? -1 : 0);
        if (!isTooBig) {
          EXPECT_EQ(section.payload.size(), size);
        }
      }
      {
        Section section;
        MemReader memory;
        EXPECT_EQ(memory.open(bytes.data(), static_cast<unsigned>(bytes.size())), 0);
        EXPECT_EQ(memory.read(section, true), isTooBig ? -1 : 0);
      }
      Veltra::ResultSummary summary;
      EXPECT_EQ(readResultSummary(summary, path.c_str(), true), Veltra::RESULT_READER_CORRUPT);
#ifdef VELTRA_HAS_INSPECT
      doctor(path, bytes);
      recover(path, bytes);
#endif
    });
  }
}

TEST_F(Limits, WhatIsDoneFollowsTheSizeOfAHostileFile) {
  constexpr std::size_t ROOM = 300000;   // no multiple of what is read at once
  constexpr uint64_t ZLIB_MAKES = 1032;  // bytes out of one, at most
  struct Way {
    const char* name;
    void (*go)(const std::string& path, const Bytes& bytes);
    // At most, for each byte of the file.
    uint64_t inflated, checked, read, allocations;
  };
  const Way ways[] = {
      {"readers", walk, 0, 2, 1, 1},
#ifdef VELTRA_HAS_INSPECT
      {"doctor --deep", doctor, ZLIB_MAKES, 3, 3, 10},
      {"recover", recover, ZLIB_MAKES, 100, 100, 10},
#endif
  };
  for (const HostileFiles::Kind& kind : HostileFiles::KINDS) {
    const Bytes bytes = kind.make(ROOM);
    EXPECT_GT(bytes.size(), ROOM - 10000);
    RecordTesting::writeFile(path, bytes);
    for (const Way& way : ways) {
      SCOPED_TRACE(std::string(way.name) + " of " + kind.name);
      WorkDone::start();
      way.go(path, bytes);
      const WorkDone done = WorkDone::sinceStart();
      const std::size_t size = bytes.size();
      const auto perByte = [size](uint64_t n) { return static_cast<double>(n) / static_cast<double>(size); };
      std::printf("%-13s %-28s for a byte: %4.0f inflated, %5.1f checked, %4.1f read, %4.1f allocations; %5zu KiB\n",
                  way.name, kind.name, perByte(done.inflated), perByte(done.checked), perByte(done.read),
                  perByte(static_cast<uint64_t>(done.allocations)), done.peak / 1024);
      EXPECT_LE(done.inflated, way.inflated * size) << "everything is uncompressed once";
      EXPECT_LE(done.checked, way.checked * size);
      EXPECT_LE(done.read, way.read * size);
      EXPECT_LE(static_cast<uint64_t>(done.allocations), way.allocations * size);
      EXPECT_LT(done.peak, 64 * MIB);
      EXPECT_GT(done.read + done.checked, 0U) << "nothing was counted";
    }
  }
}

#ifdef VELTRA_HAS_INSPECT
TEST_F(Limits, DoctorSaysOnceThatFurtherRecordsAreNotDecoded) {
  const Bytes sections = HostileFiles::repeated(HostileFiles::record(), 20000);
  ASSERT_GT(sections.size(), 10 * HostileFiles::record().size());
  RecordTesting::writeFile(path, HostileFiles::closedFile(sections));
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  EXPECT_TRUE(examine(source, Inspect::Examination::ORDINARY).findings.empty());
  const Inspect::ContainerReport report = examineDeep(source);
  ASSERT_EQ(std::distance(report.findings.begin(), report.findings.end()), 1);
  EXPECT_EQ(report.findings.begin()->code, Inspect::W06_RECORDS_NOT_DECODED);
  EXPECT_EQ(report.findings.begin()->section, 6) << "five records of 260 kB are more than 1 MiB";
  EXPECT_FALSE(report.damaged());
}
#endif

TEST_F(Limits, OneMebibyteOfJsonIsReadOrRefusedAtABoundedCost) {
  const auto filled = [](const std::string& before, const std::string& unit, const std::string& after) {
    std::string text = before;
    while (text.size() < MIB) text += unit;
    return text + after;
  };
  constexpr std::size_t DEEP = 990;
  struct Document {
    const char* name;
    std::string profile;
    bool isTaken;
    long allocations;  ///< at most
  };
  const Document documents[] = {
      {"comments after a value", filled("1 ", "/**/", ""), true, 200},
      {"comments before it", filled("", "//\n", "1"), true, 200},
      {"numbers", filled("[", "1,", "1]"), false, 20},
      {"as many numbers as are taken", filled("[", "1,       ", "1]"), true, 400000},
      {"numbers, deep", filled(std::string(DEEP, '['), "1,          ", "1" + std::string(DEEP, ']')), false, 200000},
      {"brackets", std::string(MIB, '['), false, 20},
      {"pieces", filled("", "{,]:", ""), false, 20},
  };
  for (const Document& document : documents) {
    SCOPED_TRACE(document.name);
    Bytes bytes = HostileFiles::settingsRecord(document.profile);
    Marshal::StreamOpStatus status = 0;
    WorkDone::start();
    const auto settings = Veltra::Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
    EXPECT_EQ(status, document.isTaken ? 0 : -1);
    const Bytes written = settings != nullptr ? RecordTesting::bytesOf(*settings) : Bytes();
    const WorkDone done = WorkDone::sinceStart();
    std::printf("%-30s %7ld allocations, %6zu KiB, written as %zu\n", document.name, done.allocations, done.peak / 1024,
                written.size());
    EXPECT_LE(done.allocations, document.allocations);
    EXPECT_LT(done.peak, 32 * MIB);
    // Those that are kept have cost JsonCpp a look at all that stands before them, each.
    EXPECT_EQ(std::count(written.begin(), written.end(), '*') + std::count(written.begin(), written.end(), '/'), 0);
  }
}

#ifdef VELTRA_HAS_INSPECT
TEST(Recover, MoreThanAContainerHoldsIsNotRecovered) {
  const TempDir dir;
  std::string error;
  Inspect::ByteSource source;
  Inspect::Recovery recovery;
  recovery.kept.resize(2);
  for (Inspect::SectionInfo& section : recovery.kept) section.header.dataSize = 0x7FFFFFFF;
  EXPECT_FALSE(writeRecovered(source, recovery, dir.file("new"), error));
  EXPECT_NE(error.find("4294967358 bytes together, a container holds at most 4294967295"), std::string::npos) << error;
  EXPECT_TRUE(std::filesystem::is_empty(dir.path));
}
#endif
