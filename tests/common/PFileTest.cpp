// The container: header, section, readers and writers.
#include <libcrossplatform/common/PFile.h>

#include <sys/mman.h>
#include <zlib.h>

#include <array>
#include <cerrno>

#include <libcrossplatform/common/internal/Inflate.h>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::fileBytes, RecordTesting::withByte;

TEST(PFileHeader, IsTwentyBytesInFieldOrder) {
  Header header;
  const Bytes counting = {0x10, 0x11, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
  EXPECT_EQ(RecordTesting::readFrom(header, counting), 0) << "with any magic";
  RecordTesting::expectWire(header, "pfile_header");
}

TEST(PFileHeader, CrcsAreZlibsWhereverTheBytesBeginAndHoweverManyThereAre) {
  Bytes bytes;
  for (unsigned i = 0; i < 4096; ++i) bytes.push_back(static_cast<uint8_t>(i * i >> 3));
  for (unsigned at = 0; at < 9; ++at) {
    for (unsigned size = 0; size < 4000; size += 1 + size / 8) {
      const uint32_t all = crc32Of(&bytes[at], size);
      EXPECT_EQ(all, crc32(0, &bytes[at], size)) << at << ", " << size;
      EXPECT_EQ(crc32Of(&bytes[at + size / 3], size - size / 3, crc32Of(&bytes[at], size / 3)), all);
    }
  }
  EXPECT_EQ(crc32Of(nullptr, 0, 7), 7U);
}

TEST(PFileSection, IsEqualByHeaderAndPayloadAndNullDataOnlyToNullData) {
  static unsigned char const ab[] = {1, 2}, ac[] = {1, 3}, copy[] = {1, 2};
  const auto equal = [](unsigned sizeA, unsigned char const* a, unsigned sizeB, unsigned char const* b) {
    Payload left, right;
    left.set(sizeA, a, false);
    right.set(sizeB, b, false);
    return left == right;
  };
  EXPECT_TRUE(equal(2, ab, 2, copy) && equal(1, ab, 1, ac) && equal(0, ab, 0, ac) && equal(2, nullptr, 2, nullptr));
  EXPECT_FALSE(equal(2, ab, 2, ac) || equal(2, ab, 1, ab) || equal(0, nullptr, 0, ab) || equal(2, ab, 2, nullptr) ||
               equal(2, nullptr, 2, ab) || equal(0, nullptr, 1, nullptr));
  Section one, other;
  one.payload.set(2, ab, false);
  EXPECT_FALSE(one == other);
  other.payload.set(2, copy, false);
  EXPECT_TRUE(one == other);
  other.header.type = 5;
  EXPECT_FALSE(one == other);
}

TEST(PFileSection, Transcript) {
  Transcript transcript;
  Bytes text(300, 'a');
  unsigned char one = 7;
  Section section(onDebug, onWarning, onError);
  STEP(section.verifyDataCrc());
  STEP(section.compressData());
  STEP(section.uncompressData());
  STEP(section.set(300, 12, SECTION_FLAG_COMPRESS | 0x0ab0, text.data(), 300, false, 6));
  STEP(section.header.flags == 0x6ab1 && section.header.dataSize == section.payload.size());
  STEP(section.verifyDataCrc());
  STEP(Bytes(section.payload.data(), section.payload.data() + 5));  // size, little-endian, and a zlib stream
  const Bytes compressed = dataOf(section.payload);
  const Header described = section.header;
  STEP(section.compressData());
  STEP(section.uncompressData());
  STEP(dataOf(section.payload) == text);
  STEP(section.header == described);  // goes on describing the compressed bytes
  STEP(section.uncompressData());
  // 6 and 9 combine, to no level: the payload stays as given and the section can be set once more.
  STEP(section.set(301, 3, SECTION_FLAG_COMPRESS, text.data(), 300, false, 9));
  STEP(section.payload.data() == text.data() && section.header.type == 300);
  STEP(section.set(301, 3, 0, text.data(), 300, false, 9));
  STEP(section.header.flags);  // a level is not looked at unless compressing
  STEP(section.set(300, 12, SECTION_FLAG_COMPRESS, &one, 1, false, 6));
  STEP(section.header.dataSize == 4 + 9);
  const auto uncompress = [&section](const Bytes& stored) {
    section.payload.set(static_cast<unsigned>(stored.size()), stored.data(), false);
    section.compressed = true;
    const int code = section.uncompressData();
    EXPECT_TRUE(section.compressed && section.payload.size() == stored.size());
    return code;
  };
  STEP(uncompress({0x01, 0x00, 0x80, 0x00, 0x78}));  // 8 MiB and one byte
  STEP(uncompress({0x00, 0x00, 0x80, 0x00, 0x78}));
  STEP(uncompress(withByte(compressed, 0, 0x2b)));  // one byte less than there is
  STEP(uncompress({1, 0, 0, 0}));
  STEP(uncompress({1, 0, 0}));
  transcript.expectGolden("pfile_section");
}

TEST(PFileSection, InflatesAsZlibDoesWhateverTheDamageAndTheRoom) {
  const std::string original = "twelve bytes, twelve bytes, twelve bytes and some more of others: 0123456789";
  std::vector<unsigned char> stored(compressBound(original.size()));
  uLongf size = stored.size();
  ASSERT_EQ(compress2(stored.data(), &size, reinterpret_cast<const Bytef*>(original.data()), original.size(), 9), Z_OK);
  stored.resize(size + 1);
  const auto compare = [](const std::vector<unsigned char>& bytes, uLong length, uLong room) {
    std::array<Bytef, 80> expected{}, found{};
    uLongf expectedSize = room, foundSize = room;
    const int code = uncompress(expected.data(), &expectedSize, bytes.data(), length);
    EXPECT_EQ(inflateWhole(room == 0 ? nullptr : found.data(), foundSize, bytes.data(), length), code);
    EXPECT_EQ(foundSize, expectedSize) << "code " << code;
    EXPECT_EQ(found, expected) << "code " << code;
  };
  const uLong whole = original.size();
  for (const uLong room : {uLong{0}, uLong{1}, whole - 1, whole, whole + 1}) {
    for (uLong length = 0; length <= stored.size(); ++length) compare(stored, length, room);
    for (std::size_t bit = 0; bit < 8 * size; ++bit) {
      std::vector<unsigned char> damaged = stored;
      damaged[bit / 8] = static_cast<unsigned char>(damaged[bit / 8] ^ (1U << bit % 8));
      compare(damaged, size, room);
    }
    std::vector<unsigned char> wantsDictionary = stored;
    wantsDictionary[1] = 0x20;
    compare(wantsDictionary, size, room);
  }
}

TEST(PFileSection, DumpsItsPayloadAtLevelTwoOnly) {
  Section section;
  setSection(section, {5, 1, 0, {0x00, 0xff}});
  std::string table = RecordTesting::textsOf(section);
  section.payload.set(9, nullptr, false);  // what a reader leaves that was given no bytes
  RecordTesting::expectGoldenText(table + RecordTesting::textsOf(section), "pfile_section_dump");
}

namespace {

/// The two places an image is read from.
struct Files {
  TempDir dir;
  FileReader reader{onDebug, onWarning, onError};
  int open(const Bytes& image) {
    RecordTesting::writeFile(dir.file("a.pf"), image);
    return reader.open(dir.file("a.pf").c_str());
  }
};
struct Memory {
  std::vector<std::unique_ptr<uint8_t[]>> copies;
  MemReader reader{onDebug, onWarning, onError};
  int open(const Bytes& image) {
    copies.emplace_back(new uint8_t[image.size()]);  // so that the sanitizer sees a read past the end
    std::copy(image.begin(), image.end(), copies.back().get());
    return reader.open(copies.back().get(), static_cast<unsigned>(image.size()));
  }
};

Bytes cut(const Bytes& image, std::size_t size) {
  return Bytes(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(size));
}

/// What both readers answer to the same images.
template <class Source>
void transcribe(Source& source, Transcript& transcript) {
  auto& reader = source.reader;
  const Bytes text(300, 'a');
  const Bytes image = imageOf({{300, 12, SECTION_FLAG_COMPRESS, text}, {301, 3, 0x0800, {1, 2}}, {5, 1, 0, {9}}});
  const Bytes plain = imageOf({{300, 12, 0, {1, 2, 3, 4}}});
  Section section(onDebug, onWarning, onError);
  Header header;
  STEP(reader.read(section, true));
  STEP(reader.peek(header));
  STEP(reader.skipNextSection());
  STEP(reader.getHeader(header));
  STEP(source.open(image));
  STEP(source.open(image));
  STEP(reader.peek(header));
  STEP(reader.read(section, true));
  STEP(dataOf(section.payload) == text && !section.compressed);
  STEP(section.header == header);  // goes on describing the compressed bytes
  STEP(reader.read(section, true));
  STEP(dataOf(section.payload));
  STEP(reader.skipNextSection());
  STEP(reader.read(section, true));
  STEP(reader.getHeader(header));
  STEP(reader.peek(header));
  STEP(reader.skipNextSection());
  reader.close();
  STEP(source.open(image));  // a closed reader opens again
  STEP(reader.read(section, false));
  STEP(section.compressed && section.verifyDataCrc() && section.uncompressData() == 0);
  const auto readOne = [&source, &section](const Bytes& from) {
    source.reader.close();
    const int opened = source.open(from);
    return opened != 0 ? opened : source.reader.read(section, true);
  };
  STEP(readOne(withByte(plain, 24, 0)));
  STEP(readOne(withByte(plain, 47, 0)));
  STEP(readOne(cut(plain, 47)));
  STEP(readOne(cut(plain, 43)));
  STEP(readOne(closedFile(headerClaiming(300, 0))));
  STEP(readOne(closedFile(storedSection(300, SECTION_FLAG_COMPRESS, {5, 0, 0, 0, 9, 9}))));
  STEP(readOne(Bytes(plain.begin() + 24, plain.end())));
  STEP(reader.read(section, true));  // it stayed open
  STEP(readOne(headerClaiming(1, 5) + Bytes(4)));
  STEP(readOne(cut(plain, 19)));
  STEP(readOne({}));
  reader.close();
  STEP(source.open(closedFile(headerClaiming(300, 0xFFFFFFEC) + text)));
  STEP(reader.skipNextSection());  // never backwards
  STEP(reader.getHeader(header) == -2);
}

}  // namespace

TEST(FileReader, Transcript) {
  Files source;
  Transcript transcript;
  FileReader reader(onDebug, onWarning, onError);
  STEP(reader.open(nullptr));
  STEP(reader.open(source.dir.path.c_str()));
  STEP(reader.open(source.dir.file("none").c_str()));
  STEP(reader.open("/proc/self/mem"));  // address 0 cannot be read
  STEP(reader.close());
  transcribe(source, transcript);

  // A pipe can be read but not moved in.
  const Bytes image = imageOf({{300, 12, 0, {1}}, {301, 3, 0, {2}}, {301, 3, 0, {3}}});
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], image.data(), image.size()), static_cast<ssize_t>(image.size()));
  close(ends[1]);
  Section section;
  Header header;
  STEP(reader.open(("/dev/fd/" + std::to_string(ends[0])).c_str()));
  STEP(reader.read(section, true));
  STEP(reader.peek(header));
  STEP(reader.skipNextSection());
  close(ends[0]);

  source.reader.close();
  STEP(source.open(closedFile(headerClaiming(300, 100000) + Bytes(200000))));
  std::filesystem::resize_file(source.dir.file("a.pf"), 10);
  STEP(source.reader.read(section, true));  // cut while it is read
  transcript.expectGolden("pfile_file_reader");
}

TEST(FileReader, WhatIsPeekedAtOrSkippedLeavesTheRestWhereItIs) {
  Files source;
  FileReader& reader = source.reader;
  Bytes sections;
  for (const int type : {300, 301, 302, 303})
    sections = sections + storedSection(static_cast<uint16_t>(type), 0, Bytes(type == 301 ? 5000 : 9, 'a'));
  const Bytes whole = closedFile(sections);
  ASSERT_EQ(source.open(cut(whole, whole.size() - 5)), 0);
  Header header;
  Section section;
  const auto peeked = [&] { return reader.peek(header) == 0 ? header.type : 0; };
  EXPECT_EQ(peeked(), 300);
  EXPECT_EQ(peeked(), 300);
  EXPECT_EQ(reader.read(section, true), 0);
  EXPECT_EQ(section.header.type * 100000 + section.payload.size(), 30000009U);
  EXPECT_EQ(peeked(), 301);
  EXPECT_EQ(reader.skipNextSection(), 0);  // by moving
  EXPECT_EQ(peeked(), 302);
  EXPECT_EQ(reader.getHeader(header), 0);
  EXPECT_EQ(header.type, 302);
  reader.close();

  // Past the end of a file that goes on growing.
  ASSERT_EQ(reader.open(source.dir.file("a.pf").c_str()), 0);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(reader.skipNextSection(), 0);
  RecordTesting::writeFile(source.dir.file("a.pf"), whole + storedSection(304, 0, {7}));
  EXPECT_EQ(peeked(), 304);
}

// A section of 9 bytes and one of 70000, which is let go of before another as large is read.
TEST(FileReader, WhatTheFileDoesNotHoldLeavesThePayloadAsItWas) {
  for (const uint32_t size : {9u, 70000u}) {
    Files source;
    ASSERT_EQ(source.open(closedFile(storedSection(300, 0, Bytes(size, 'a')) + headerClaiming(301, size)) + Bytes(8)),
              0);
    Section section;
    EXPECT_EQ(source.reader.read(section, true), 0);
    EXPECT_EQ(source.reader.read(section, true), -1);
    EXPECT_EQ(dataOf(section.payload), Bytes(size, 'a'));
  }
}

TEST(MemReader, Transcript) {
  Memory source;
  Transcript transcript;
  MemReader& reader = source.reader;
  errno = 0;
  STEP(reader.open(nullptr, 24));
  Header none;
  STEP(reader.getHeader(none));  // it has a size, and still nothing to read
  STEP(reader.seek(12, Marshal::STREAM_FROM_BEGIN));
  STEP(reader.open(EMPTY_FILE.data(), 24));  // is read from its beginning all the same
  reader.close();
  transcribe(source, transcript);
  reader.close();

  const Bytes image = imageOf({{300, 12, 0, {7}}});
  Section section;
  STEP(source.open(image + image));
  STEP(reader.seek(0, Marshal::STREAM_FROM_END));  // the recorded length
  STEP(reader.seek(24, Marshal::STREAM_FROM_BEGIN));
  STEP(reader.read(section, true));
  unsigned char const* const inPlace = &source.copies.back()[44];
  STEP(section.payload.data() == inPlace && !section.payload.owned());
  reader.close();
  STEP(source.open(cut(image, 44)));
  STEP(reader.seek(1, Marshal::STREAM_FROM_BEGIN));
  STEP(reader.quickOpen(image.data(), 44));  // the buffer was let go of
  STEP(reader.read(section, true));          // deliberately a success that leaves the payload as it was
  STEP(section.payload.data() == inPlace);
  STEP(reader.read(section, true));
  constexpr int MOST = 0x7FFFFFFF;
  constexpr std::pair<int, int> SEEKS[] = {{45, 0}, {-1, 0},   {-4, 1},        {5, 1}, {-44, 2}, {1, 2}, {-45, 2},
                                           {10, 0}, {MOST, 1}, {-MOST - 1, 2}, {0, 1}, {0, 3},   {0, -1}};
  for (const auto& [offset, whence] : SEEKS) STEP(reader.seek(offset, static_cast<StreamPosition>(whence)));

  // A recorded length within the file header leaves nothing to read.
  Header header;
  reader.close();
  STEP(source.open(fileHeader(23) + headerClaiming(300, 1)));
  STEP(reader.read(section, true));
  STEP(reader.peek(header));
  STEP(reader.seek(0, Marshal::STREAM_FROM_CURRENT));
  transcript.expectGolden("pfile_mem_reader");
}

// Nothing after the existing bytes is touched, however large the image claims to be. No callbacks are set here.
TEST(MemReader, PositionsBeyondTwoGigabytesAreRefused) {
  constexpr int MOST = 0x7FFFFFFF;
  const Bytes image = EMPTY_FILE + headerClaiming(300, 0x80000000);
  MemReader reader;
  ASSERT_EQ(reader.quickOpen(image.data(), 0xFFFFFFF0), 0);
  EXPECT_EQ(reader.skipNextSection(), -1);
  EXPECT_EQ(reader.seek(24, Marshal::STREAM_FROM_BEGIN), 24);
  Section section;
  EXPECT_EQ(reader.read(section, true), -1);
  EXPECT_EQ(reader.seek(MOST, Marshal::STREAM_FROM_BEGIN), MOST);
  EXPECT_EQ(reader.seek(1, Marshal::STREAM_FROM_CURRENT), -1);
  EXPECT_EQ(reader.seek(0, Marshal::STREAM_FROM_END), -1);
  EXPECT_EQ(reader.seek(0, Marshal::STREAM_FROM_CURRENT), MOST) << "a refused position is not taken";
}

TEST(FileWriter, Transcript) {
  TempDir dir;
  Transcript transcript;
  const std::string path = dir.file("a.pf");
  const Bytes data(1000, 'y');
  FileWriter writer(onDebug, onError);
  Section section(onDebug, onWarning, onError);
  STEP(writer.open(nullptr));
  STEP(writer.open(dir.path.c_str()));
  STEP(writer.open(dir.file("none/a.pf").c_str()));
  STEP(writer.write(section));
  STEP(writer.close(true));
  STEP(writer.open(path.c_str()));
  STEP(writer.open(path.c_str()));
  STEP(writer.write(section));
  section.payload.set(1000, data.data(), false);
  section.header.flags = 0xf001;
  STEP(writer.write(section));  // there is no level 15
  section.header.flags = 0x6001;
  STEP(writer.write(section));
  STEP(section.verifyDataCrc());
  STEP(writer.write(section));  // compressed already
  STEP(writer.close(true));
  STEP(fileBytes(path).size() == 24 + 2 * (20 + section.payload.size()));
  // A full disk shows at the latest on closing, inside rewind() when not before.
  STEP(writer.open("/dev/full"));
  STEP(writer.close(false));
  STEP(writer.open("/dev/full"));
  STEP(writer.close(true));
  STEP(writer.open("/dev/full"));
  setSection(section, {300, 12, 0, Bytes(200000, 'x')});
  STEP(writer.write(section));
  STEP(writer.close(false));
  STEP(writer.open("/dev/full"));
  setSection(section, {300, 12, 0, Bytes(64 * 1024 - 24 - 20 - 10)});
  STEP(writer.write(section));  // it is in the buffer, where the next header finds no room
  STEP(writer.write(section));
  STEP(writer.close(false));
  STEP(writer.open("/dev/null"));
  STEP(writer.close(true));  // cannot be synced
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  STEP(writer.open(("/dev/fd/" + std::to_string(ends[1])).c_str()));
  STEP(writer.close(false));  // nobody can go back in a pipe
  ASSERT_TRUE(close(ends[0]) == 0 && close(ends[1]) == 0);
  transcript.expectGolden("pfile_file_writer");
}

TEST(FileWriter, TheFileHeaderCarriesTwentyOverAnOldCrcUntilClose) {
  const TempDir dir;
  FileWriter writer;
  ASSERT_EQ(writer.open(dir.file("a.pf").c_str()), 0);
  Section section;
  setSection(section, {300, 12, 0, Bytes(100000, 'x')});  // more than the stream buffers
  ASSERT_EQ(writer.write(section), 0);
  const Bytes image = fileBytes(dir.file("a.pf"));
  EXPECT_EQ(Bytes(image.begin() + 12, image.begin() + 24),
            (Bytes{0x21, 0x44, 0xdf, 0x1c, 0x58, 0xc7, 0xe4, 0xe3, 20, 0, 0, 0}))
      << "the CRC-32 of four zeros";
  ASSERT_EQ(writer.close(false), 0);
  EXPECT_EQ(fileBytes(dir.file("a.pf")).size(), 0x186ccu);
  EXPECT_EQ(fileBytes(dir.file("a.pf"))[21], 0x86);
  ASSERT_TRUE(writer.open(dir.file("b.pf").c_str()) == 0 && writer.close(false) == 0);
  EXPECT_EQ(fileBytes(dir.file("b.pf"))[20], 0xcc + 24) << "counts on from the first file";
}

TEST(FileWriterDeathTest, ATotalBeyondFourGigabytesIsFatal) {
  // Four sections of a little less than 1 GiB bring the total to 0xFFFFFFF0; with 16 bytes more it wraps in the last.
  constexpr uint32_t PIECE = (0xFFFFFFF0u - 24 - 4 * 20) / 4;
  void* const memory = mmap(nullptr, PIECE + 16, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  const auto writeAll = [memory](uint32_t last) {
    FileWriter writer;
    EXPECT_EQ(writer.open("/dev/null"), 0);
    Section section;
    for (const uint32_t size : {PIECE, PIECE, PIECE, last, PIECE}) {
      section.payload.set(size, static_cast<unsigned char const*>(memory), false);
      EXPECT_EQ(writer.write(section), 0);
    }
  };
  EXPECT_DEATH(writeAll(PIECE), "fileSizeWithHeader >= headerBytes");
  EXPECT_DEATH(writeAll(PIECE + 16), "fileSizeWithSection >= sectionBytes");
  munmap(memory, PIECE + 16);
}

TEST(MemWriter, Transcript) {
  Transcript transcript;
  const Bytes data(1000, 'y');
  MemWriter writer(onDebug, onWarning, onError);
  Section section(onDebug, onWarning, onError);
  std::array<std::unique_ptr<uint8_t[]>, 200> buffers;  // each to the byte, so that the sanitizer sees one too many
  const auto open = [&](unsigned capacity) {
    buffers[capacity].reset(new uint8_t[capacity]());
    return writer.open(buffers[capacity].get(), capacity);
  };
  const auto fileIn = [&buffers](unsigned size) { return Bytes(&buffers[size][0], &buffers[size][size]); };
  STEP(writer.write(nullptr, 1));
  STEP(writer.write(data.data(), 1));
  STEP(writer.open(nullptr, 24));
  STEP(writer.close());
  STEP(open(19));
  STEP(writer.open(buffers[19].get(), 19));
  STEP(writer.close());
  STEP(open(23));
  STEP(writer.close());
  STEP(open(24));
  STEP(fileIn(24));  // carries 20 over an old CRC
  setSection(section, {300, 12, 0, {1, 2, 3, 4}});
  STEP(writer.write(section));  // full
  STEP(writer.close());
  STEP(fileIn(24) == EMPTY_FILE);
  STEP(open(47));               // counts from the beginning, unlike the file writer
  STEP(writer.write(section));  // torn: nothing of the piece without room
  STEP(writer.write(data.data(), 0xFFFFFFFF));
  STEP(fileIn(47));
  STEP(writer.write(data.data(), 3));
  STEP(writer.close());
  STEP(fileIn(47));
  STEP(open(199));
  section.payload.reset();
  STEP(writer.write(section));  // a success, unlike the file writer's
  section.payload.set(1000, data.data(), false);
  section.header.flags = 0x6001;
  STEP(writer.write(section));
  STEP(section.verifyDataCrc());
  STEP(writer.close());
  STEP(buffers[199][20] == 44 + section.payload.size());
  transcript.expectGolden("pfile_mem_writer");
}
