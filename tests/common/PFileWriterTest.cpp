#include <libcrossplatform/common/PFileWriter.h>

#include <sys/mman.h>

#include <array>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::fileBytes;

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
