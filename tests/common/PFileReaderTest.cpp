#include <libcrossplatform/common/PFileReader.h>

#include <cerrno>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::withByte;

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
