#include <libcrossplatform/common/PFileSection.h>

#include <zlib.h>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::withByte;

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

TEST(PFileSection, DumpsItsPayloadAtLevelTwoOnly) {
  Section section;
  setSection(section, {5, 1, 0, {0x00, 0xff}});
  std::string table = RecordTesting::textsOf(section);
  section.payload.set(9, nullptr, false);  // what a reader leaves that was given no bytes
  RecordTesting::expectGoldenText(table + RecordTesting::textsOf(section), "pfile_section_dump");
}
