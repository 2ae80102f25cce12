// Small files that claim or become much, and 1 MiB of the most expensive bytes there are: what reading them costs.
#include <sys/resource.h>

#include <ctime>
#include <functional>

#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/serialization/Header.h>
#include <libcrossplatform/serialization/WireBytes.h>

#include "AllocationFaults.h"
#include "PFileTesting.h"
#include "Workloads.h"

#ifdef VELTRA_HAS_INSPECT
#include <libinspect/container/Doctor.h>
#include <libinspect/container/Recover.h>
#endif

using namespace PFile;
using namespace PFileTesting;

namespace {

constexpr std::size_t MIB = std::size_t{1} << 20;

Bytes compressed(const Bytes& data) {
  Section section;
  EXPECT_EQ(setSection(section, {0, 0, SECTION_FLAG_COMPRESS, data}), 0);
  return bytesOf(section.payload);
}

/// A section of a few KiB that claims, and has, this many zeros.
Bytes bomb(uint16_t type, uint32_t size) {
  return storedSection(type, SECTION_FLAG_COMPRESS, compressed(Bytes(size)));
}

Bytes repeated(const Bytes& unit, std::size_t room) {
  Bytes bytes;
  bytes.reserve(room);
  while (bytes.size() + unit.size() <= room) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

/// Headers alone, each of which claims everything behind it.
Bytes lyingHeaders(std::size_t room) {
  Bytes bytes;
  while (bytes.size() + Header::BYTES <= room) {
    const auto rest = static_cast<uint32_t>(room - bytes.size() - Header::BYTES);
    bytes = std::move(bytes) + headerClaiming(300, rest, 1);
  }
  return bytes;
}

Bytes nested(std::size_t room) {
  Bytes data(64, 'x');
  for (int i = 0; i < 20; ++i) data = compressed(data);
  return repeated(storedSection(301, SECTION_FLAG_COMPRESS, data), room);
}

/// A settings record that says of the network what `profile` is.
Bytes settingsRecord(const std::string& profile) {
  constexpr auto HEADER = Marshal::Header::BYTES;
  const std::string text = R"({"OrbelSettings": {"net_profile": )" + profile + "}}";
  Veltra::OrbelSettings settings;
  Bytes bytes = RecordTesting::bytesOf(settings);
  bytes.resize(HEADER + 4);
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0);
  Marshal::storeBig(&bytes[8], static_cast<uint32_t>(bytes.size() - HEADER));
  Marshal::storeBig(&bytes[HEADER], static_cast<uint32_t>(text.size() + 1));
  return bytes;
}

/// A compressed settings record: 400 bytes, 260 kB, 130,000 values.
Bytes records() {
  std::string profile = "[1";
  for (int i = 0; i < 130000; ++i) profile += ",1";
  return storedSection(303, SECTION_FLAG_COMPRESS, compressed(settingsRecord(profile + "]")));
}

/// 1 MiB each, and what they cost on the way.
struct Input {
  const char* name;
  Bytes (*make)();
};
constexpr std::size_t ROOM = MIB - 24;
const Input HOSTILE[] = {
    {"sections of one byte", [] { return closedFile(repeated(storedSection(300, 0, {'x'}), ROOM)); }},
    {"unknown types", [] { return closedFile(repeated(storedSection(60000, 0, {'x'}), ROOM)); }},
    {"never closed", [] { return repeated(storedSection(60000, 0, {'x'}), MIB); }},
    {"headers without data", [] { return closedFile(repeated(headerClaiming(300, 0), ROOM)); }},
    {"headers that claim the rest", [] { return closedFile(lyingHeaders(ROOM)); }},
    {"zeros", [] { return Bytes(MIB); }},
    {"magic",
     [] {
       return repeated(Bytes{'P', 'F'}, MIB);
     }},
    {"bombs", [] { return closedFile(repeated(bomb(301, Section::MAX_UNCOMPRESSED), ROOM)); }},
    {"zlib in zlib", [] { return closedFile(nested(ROOM)); }},
    {"records", [] { return closedFile(repeated(records(), ROOM)); }},
};

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
  examine(source, Inspect::Examination::DEEP);
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
    Allocations::startMeasuring();
    body();
    EXPECT_LT(Allocations::peak(), 16 * MIB);
    std::printf("peak of the heap %zu KiB\n", Allocations::peak() / 1024);
    return true;
  });
}

struct Limits : ::testing::Test {
  void SetUp() override {
    if (Allocations::isSanitized()) GTEST_SKIP() << "the sanitizer's own memory and time would be measured";
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
    const Bytes bytes = closedFile(bomb(SECTION_RESULT_SUMMARY, size));
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

TEST_F(Limits, OneMebibyteIsGoneThroughInTwoSeconds) {
  struct Way {
    const char* name;
    void (*go)(const std::string& path, const Bytes& bytes);
  };
  const Way ways[] = {
      {"readers", walk},
#ifdef VELTRA_HAS_INSPECT
      {"doctor --deep", doctor},
      {"recover", recover},
#endif
  };
  for (const Input& input : HOSTILE) {
    const Bytes bytes = input.make();
    EXPECT_GT(bytes.size(), MIB - 10000);
    RecordTesting::writeFile(path, bytes);
    for (const Way& way : ways) {
      SCOPED_TRACE(std::string(way.name) + " of " + input.name);
      Allocations::startMeasuring();
      const std::clock_t begun = std::clock();  // of the processor: other tests run meanwhile
      way.go(path, bytes);
      const double seconds = static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC;
      EXPECT_LT(seconds, 2.0);
      EXPECT_LT(Allocations::peak(), 64 * MIB);
      std::printf("%-13s %-28s %5.2f s %6zu KiB\n", way.name, input.name, seconds, Allocations::peak() / 1024);
    }
  }
}

#ifdef VELTRA_HAS_INSPECT
TEST_F(Limits, DoctorSaysOnceThatFurtherRecordsAreNotDecoded) {
  const Bytes sections = repeated(records(), 20000);
  ASSERT_GT(sections.size(), 10 * records().size());
  RecordTesting::writeFile(path, closedFile(sections));
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  EXPECT_TRUE(examine(source, Inspect::Examination::ORDINARY).findings.empty());
  const Inspect::ContainerReport report = examine(source, Inspect::Examination::DEEP);
  ASSERT_EQ(std::distance(report.findings.begin(), report.findings.end()), 1);
  EXPECT_EQ(report.findings.begin()->code, Inspect::W06_RECORDS_NOT_DECODED);
  EXPECT_EQ(report.findings.begin()->section, 6) << "five records of 260 kB are more than 1 MiB";
  EXPECT_FALSE(report.damaged());
}
#endif

TEST_F(Limits, OneMebibyteOfJsonIsReadOrRefusedInTwoSeconds) {
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
  };
  const Document documents[] = {
      {"comments behind a value", filled("1 ", "/**/", ""), true},
      {"comments in front of it", filled("", "//\n", "1"), true},
      {"numbers", filled("[", "1,", "1]"), false},
      {"as many numbers as are taken", filled("[", "1,       ", "1]"), true},
      {"numbers, deep", filled(std::string(DEEP, '['), "1,          ", "1" + std::string(DEEP, ']')), false},
      {"brackets", std::string(MIB, '['), false},
      {"pieces", filled("", "{,]:", ""), false},
  };
  for (const Document& document : documents) {
    SCOPED_TRACE(document.name);
    Bytes bytes = settingsRecord(document.profile);
    Marshal::StreamOpStatus status = 0;
    Allocations::startMeasuring();
    const std::clock_t begun = std::clock();
    const auto settings = Veltra::Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
    EXPECT_EQ(status, document.isTaken ? 0 : -1);
    const std::size_t written = settings != nullptr ? RecordTesting::bytesOf(*settings).size() : 0;
    const double seconds = static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, 2.0);
    EXPECT_LT(Allocations::peak(), 32 * MIB);
    std::printf("%-30s %5.2f s %6zu KiB, written as %zu\n", document.name, seconds, Allocations::peak() / 1024,
                written);
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
