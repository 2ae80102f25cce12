// A container, as a file and in memory: peek, skip and read, which must agree with each other and with what the bytes
// say, by either reader; and what reads whole files, results and packages.
#include <list>

#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>

#include "ContainerImage.h"
#include "RecordProperties.h"
#include "Scratch.h"

using namespace PFile;

namespace {

/// A file reader has no position to ask for.
void checkPosition(FileReader&, std::size_t) {}
void checkPosition(MemReader& reader, std::size_t at) {
  FUZZ_CHECK(reader.seek(0, Marshal::STREAM_FROM_CURRENT) == static_cast<int>(at));
}

/// Goes through a container with three readers of one kind side by side, which stand at the first of its sections: one
/// reads as stored, one uncompressed, one peeks and skips. docs/reader-behaviour.md says where the two kinds part.
/// @param at  where that section begins in the input. @param size  where the container ends
/// @return the sections that are whole
template <class Reader>
std::list<Section> walk(Reader (&readers)[3], const Fuzz::Input& input, std::size_t at, std::size_t size) {
  constexpr bool IS_FILE = std::is_same_v<Reader, FileReader>;
  auto& [reader, inflating, skipper] = readers;
  Fuzz::DeclaredSizes declared;
  std::list<Section> sections;
  while (true) {
    for (Reader& each : readers) checkPosition(each, at);
    const std::size_t left = size - at;
    Header peeked;
    const int peek = skipper.peek(peeked);
    Section& stored = sections.emplace_back();
    const int code = reader.read(stored, false);
    const Header& header = stored.header;
    if (left < Header::BYTES || !header.verifyHdrCrc()) {
      const bool isEnd = left == 0 || (IS_FILE && left < Header::BYTES);
      FUZZ_CHECK(code == (isEnd ? PFILE_END_OF_DATA : PFILE_FAILED) && peek == code);
      break;
    }
    const uint8_t* const payload = input.data + at + Header::BYTES;
    FUZZ_CHECK(std::equal(input.data + at, payload, header.bytes().begin()));
    FUZZ_CHECK(peek == PFILE_OK && peeked == header);
    const bool isCut = header.dataSize > left - Header::BYTES;
    FUZZ_CHECK((skipper.skipNextSection() == PFILE_OK) == (IS_FILE || !isCut));
    if (isCut) {
      FUZZ_CHECK(code == (IS_FILE ? PFILE_FAILED : PFILE_OK) && (IS_FILE || stored.payload.empty()));
      break;
    }
    // A section of nothing is refused.
    const bool isWhole = header.dataSize > 0 && crc32Of(payload, header.dataSize) == header.dataCrc;
    FUZZ_CHECK((code == PFILE_OK) == isWhole);
    FUZZ_CHECK(!isWhole || (stored.payload.size() == header.dataSize &&
                            std::equal(payload, payload + header.dataSize, stored.payload.data())));
    if (declared.allow(header, payload, header.dataSize)) {
      Section plain(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop), expected;
      expected.header = header;
      expected.payload.set(header.dataSize, payload, false);
      expected.compressed = expected.compressable();
      const bool isGood = isWhole && (!expected.compressed || expected.uncompressData() == PFILE_OK);
      FUZZ_CHECK((inflating.read(plain, true) == PFILE_OK) == isGood);
      FUZZ_CHECK(!isGood || (plain == expected && plain.compressed == expected.compressed));
      FUZZ_CHECK(plain.payload.size() <= std::max(Section::MAX_UNCOMPRESSED, header.dataSize));
    } else {
      FUZZ_CHECK(inflating.skipNextSection() == PFILE_OK);
    }
    at += Header::BYTES + header.dataSize;
    if (!isWhole) sections.pop_back();
  }
  sections.pop_back();
  return sections;
}

/// @param opened  receives the code of the opener
std::list<Section> walkMemory(const Fuzz::Input& input, int (MemReader::*open)(unsigned char const*, unsigned),
                              int& opened) {
  MemReader readers[] = {{Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop}, {}, {}};
  for (MemReader& reader : readers) {
    opened = (reader.*open)(input.data, input.size32());
    // A file that was never closed is read from the beginning.
    if (opened != PFILE_OK) reader.seek(0, Marshal::STREAM_FROM_BEGIN);
  }
  MemReader& first = readers[0];
  const int at = first.seek(0, Marshal::STREAM_FROM_CURRENT);
  const int size = first.seek(0, Marshal::STREAM_FROM_END);
  if (at < 0) {  // the recorded length is less than the file header: there is no position, and nothing to read
    Header peeked;
    Section section;
    FUZZ_CHECK(readers[1].peek(peeked) == PFILE_FAILED && readers[1].read(section, false) == PFILE_END_OF_DATA);
  }
  if (at < 0 || size <= 0) return {};  // no data, or the reader let go of it
  first.seek(at, Marshal::STREAM_FROM_BEGIN);
  return walk(readers, input, static_cast<std::size_t>(at), static_cast<std::size_t>(size));
}

void walkFile(const Fuzz::Input& input, const char* path, int memoryOpened) {
  FileReader readers[] = {{Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop}, {}, {}};
  const int opened = readers[0].open(path, 64);
  FUZZ_CHECK(readers[1].open(path) == opened && readers[2].open(path) == opened);
  FUZZ_CHECK(memoryOpened == PFILE_OK || opened != PFILE_OK);
  if (opened != PFILE_OK) return;
  const Header first = Fuzz::Image(input.data, input.size).sections[0].header;
  walk(readers, input, Header::BYTES + first.dataSize, input.size);
  for (FileReader& reader : readers) FUZZ_CHECK(reader.close() == PFILE_OK);
}

/// Sections that were read make a container that reads as these sections.
void checkRewritten(std::list<Section>& sections) {
  std::size_t size = Header::BYTES + sizeof(uint32_t);
  for (const Section& section : sections) size += Header::BYTES + section.payload.size();
  Fuzz::Bytes image(size);
  MemWriter writer(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop);
  FUZZ_CHECK(writer.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (Section& section : sections) FUZZ_CHECK(writer.write(section) == PFILE_OK);
  FUZZ_CHECK(writer.close() == PFILE_OK);
  MemReader reader;
  FUZZ_CHECK(reader.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (const Section& section : sections) {
    Section again;
    FUZZ_CHECK(reader.read(again, false) == PFILE_OK);
    FUZZ_CHECK(again == section && again.compressed == section.compressed);
  }
  Section beyond;
  FUZZ_CHECK(reader.read(beyond, false) == PFILE_END_OF_DATA);
}

/// Files and memory agree on a summary, but for the codes that reader-behaviour.md gives otherwise.
void checkSummary(const Fuzz::Input& input, const char* path) {
  using namespace Veltra;
  ResultSummary summary, fromMemory, all;
  ResultType type = RESULT_TYPE_NOT_SET;
  const ResultReaderStatus memory = readResultSummary(fromMemory, input.data, input.size32());
  FUZZ_CHECK(readResultType(type, input.data, input.size32()) == memory);
  FUZZ_CHECK(memory != RESULT_READER_OK || type == fromMemory.resultType);
  if (memory == RESULT_READER_OK) Fuzz::checkRoundTrip(fromMemory);

  const bool isRead = readResultSummary(summary, path, false) == RESULT_READER_OK;
  const auto isSame = [&](ResultSummary& other) { return isRead && Fuzz::bytesOf(other) == Fuzz::bytesOf(summary); };
  FUZZ_CHECK(!isRead || (memory == RESULT_READER_OK && isSame(fromMemory)));
  Fuzz::guarded([&] {
    // More is looked at: a summary that is read so is read without, too.
    FUZZ_CHECK(readResultSummary(all, path, true) != RESULT_READER_OK || isSame(all));
  });
  // The check takes types that the reader stops at, and nothing that it refuses. It never stops.
  const ResultFileCheck check = checkResultFile(all, path);
  FUZZ_CHECK(check.status != RESULT_READER_OK || (check.offset <= input.size && isSame(all)));
}

/// What was read of a package is written as a package that reads the same.
void checkPackage(const char* path) {
  static const Fuzz::ScratchFile FILE;
  const std::string written = FILE.path();
  Veltra::DatabasePackageManifest manifest, again;
  if (Veltra::readManifestFile(manifest, path) != READER_OK) return;
  FUZZ_CHECK(Veltra::writeManifestFile(manifest, SECTION_LIMIT_MANIFEST, written.c_str()) == PFILE_OK);
  FUZZ_CHECK(Veltra::readManifestFile(again, written.c_str()) == READER_OK);
  FUZZ_CHECK(again == manifest);
}

}  // namespace

void Fuzz::runTarget(const Input& input) {
  const char* const path = asFile(input).c_str();
  int quickOpened = PFILE_OK, opened = PFILE_OK;
  std::list<Section> quick = walkMemory(input, &MemReader::quickOpen, quickOpened);
  const std::size_t whole = walkMemory(input, &MemReader::open, opened).size();
  // The recorded length hides what follows it, and nothing else.
  FUZZ_CHECK(opened != PFILE_OK || (quickOpened == PFILE_OK && whole <= quick.size()));
  walkFile(input, path, quickOpened);
  checkRewritten(quick);
  guarded([&] { checkSummary(input, path); });
  guarded([&] { checkPackage(path); });
}
