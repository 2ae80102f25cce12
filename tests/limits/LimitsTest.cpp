// The most expensive bytes there are: how much work reading them is, counted where it is done. bench/HostileBench.cpp
// measures how long that takes.
#include <dlfcn.h>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>

#include "AllocationFaults.h"
#include "HostileFiles.h"
#include "RecordTesting.h"

#ifdef VELTRA_HAS_INSPECT
#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>
#include <libinspect/records/KnownPayload.h>
#endif

using namespace PFile;
using HostileFiles::Bytes;
using RecordTesting::TempDir;

namespace {

constexpr std::size_t MIB = std::size_t{1} << 20;

/// Bytes produced by zlib, checked by libdeflate_crc32(), and read by fread() and pread(). The functions below
/// replace those of the libraries: they count, and call the originals, or zlib for what is linked statically.
uint64_t inflated = 0, checked = 0, readIn = 0;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void startCounting() {
  inflated = checked = readIn = 0;
  Allocations::startMeasuring();
}

}  // namespace

extern "C" {

// It calls zlib's own inflate(), or the one below.
int uncompress(Bytef* to, uLongf* size, const Bytef* from, uLong length) {
  static const auto original = next<decltype(uncompress)>("uncompress");
  const uint64_t before = inflated;
  const int code = original(to, size, from, length);
  inflated = before + *size;
  return code;
}

int inflate(z_streamp stream, int flush) {
  static const auto original = next<decltype(inflate)>("inflate");
  const uLong before = stream->total_out;
  const int code = original(stream, flush);
  inflated += stream->total_out - before;
  return code;
}

uint32_t libdeflate_crc32(uint32_t crc, const void* bytes, std::size_t size) {
  checked += size;
  return static_cast<uint32_t>(crc32(crc, static_cast<const Bytef*>(bytes), static_cast<uInt>(size)));
}

std::size_t fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  static const auto original = next<std::size_t(void*, std::size_t, std::size_t, std::FILE*)>("fread");
  const std::size_t got = original(to, size, count, stream);
  readIn += got * size;
  return got;
}

ssize_t pread(int descriptor, void* to, std::size_t size, off_t offset) {
  static const auto original = next<ssize_t(int, void*, std::size_t, off_t)>(sizeof(off_t) == 8 ? "pread64" : "pread");
  const ssize_t got = original(descriptor, to, size, offset);
  if (got > 0) readIn += static_cast<uint64_t>(got);
  return got;
}

}  // extern "C"

namespace {

/// Every section there is, by either reader.
void walk(const std::string& path, const Bytes& bytes) {
  FileReader file;
  MemReader memory;
  int code = file.open(path.c_str());
  while (code == PFILE_OK) {
    Section section;
    code = file.read(section, true);
  }
  code = memory.quickOpen(bytes.data(), static_cast<unsigned>(bytes.size()));
  while (code == PFILE_OK) code = memory.skipNextSection();
}

#ifdef VELTRA_HAS_INSPECT
void doctor(const std::string& path, const Bytes&) {
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  judge(source, Inspect::Examination::DEEP);
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

struct Limits : ::testing::Test {
  const TempDir dir;
  const std::string path = dir.file("a.pf");
};

}  // namespace

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
      {"readers", walk, ZLIB_MAKES, 2, 1, 1},
#ifdef VELTRA_HAS_INSPECT
      {"doctor --deep", doctor, ZLIB_MAKES, 3, 6, 10},  // where nothing is intact it searches as recover does
      {"recover", recover, ZLIB_MAKES, 100, 100, 10},
#endif
  };
  uint64_t inflatedInAll = 0;
  for (const HostileFiles::Kind& kind : HostileFiles::KINDS) {
    const Bytes bytes = kind.make(ROOM);
    EXPECT_GT(bytes.size(), ROOM - 10000);
    RecordTesting::writeFile(path, bytes);
    for (const Way& way : ways) {
      SCOPED_TRACE(std::string(way.name) + " of " + kind.name);
      startCounting();
      way.go(path, bytes);
      const auto allocations = static_cast<uint64_t>(Allocations::countSinceStart());
      const std::size_t size = bytes.size(), peak = Allocations::peak();
      const auto perByte = [size](uint64_t n) { return static_cast<double>(n) / static_cast<double>(size); };
      std::printf("%-13s %-28s for a byte: %4.0f inflated, %5.1f checked, %4.1f read, %4.1f allocations; %5zu KiB\n",
                  way.name, kind.name, perByte(inflated), perByte(checked), perByte(readIn), perByte(allocations),
                  peak / 1024);
      EXPECT_LE(inflated, way.inflated * size) << "everything is uncompressed once";
      EXPECT_LE(checked, way.checked * size);
      EXPECT_LE(readIn, way.read * size);
      EXPECT_LE(allocations, way.allocations * size);
      EXPECT_LT(peak, 64 * MIB);
      EXPECT_GT(readIn + checked, 0U) << "nothing was counted";
      inflatedInAll += inflated;
    }
  }
  EXPECT_GT(inflatedInAll, 0U) << "nothing was counted";
}

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
    startCounting();
    const auto settings = Veltra::Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
    EXPECT_EQ(status, document.isTaken ? 0 : -1);
    const Bytes written = settings != nullptr ? RecordTesting::bytesOf(*settings) : Bytes();
    const long allocations = Allocations::countSinceStart();
    std::printf("%-30s %7ld allocations, %6zu KiB, written as %zu\n", document.name, allocations,
                Allocations::peak() / 1024, written.size());
    EXPECT_LE(allocations, document.allocations);
    EXPECT_LT(Allocations::peak(), 32 * MIB);
    // For each comment that is kept JsonCpp looks at all text before it.
    EXPECT_EQ(std::count(written.begin(), written.end(), '*') + std::count(written.begin(), written.end(), '/'), 0);
#ifdef VELTRA_HAS_INSPECT
    startCounting();
    Inspect::comparedFields(920, Bytes(document.profile.begin(), document.profile.end()));
    EXPECT_LE(Allocations::countSinceStart(), document.allocations + 100);
    EXPECT_LT(Allocations::peak(), 32 * MIB);
#endif
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
  EXPECT_NE(error.find("at most 4294967295 bytes, found 4294967358"), std::string::npos) << error;
  EXPECT_TRUE(std::filesystem::is_empty(dir.path));
}
#endif
