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

/// What was read of one section, by any reader.
struct Read {
  Section stored, plain{Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop};
  int code = PFILE_FAILED;       ///< of reading it as stored
  int plainCode = PFILE_FAILED;  ///< of reading it uncompressed
};

/// A reader of a file does not tell where it is.
void checkPosition(FileReader&, std::size_t) {}
void checkPosition(MemReader& reader, std::size_t at) {
  FUZZ_CHECK(reader.seek(0, Marshal::STREAM_FROM_CURRENT) == static_cast<int>(at));
}

/// Goes through a container with three readers of one kind side by side, which stand at the first of its sections: one
/// reads as stored, one uncompressed, one peeks and skips. docs/reader-behaviour.md says where the two kinds part.
/// @param at  where that section begins in the input. @param size  where the container ends
/// @return the sections that are there in full, damaged or not
template <class Reader>
std::list<Read> walk(Reader (&readers)[3], const Fuzz::Input& input, std::size_t at, std::size_t size) {
  constexpr bool IS_FILE = std::is_same_v<Reader, FileReader>;
  auto& [stored, plain, skipper] = readers;
  Fuzz::DeclaredSizes declared;
  std::list<Read> sections;
  while (true) {
    for (Reader& reader : readers) checkPosition(reader, at);
    const std::size_t left = size - at;
    Header peeked;
    const int peek = skipper.peek(peeked);
    Read& read = sections.emplace_back();
    read.code = stored.read(read.stored, false);
    const Header& header = read.stored.header;
    if (left < Header::BYTES || !header.verifyHdrCrc()) {
      const bool isEnd = left == 0 || (IS_FILE && left < Header::BYTES);
      FUZZ_CHECK(read.code == (isEnd ? PFILE_END_OF_DATA : PFILE_FAILED) && peek == read.code);
      break;
    }
    FUZZ_CHECK(peek == PFILE_OK && peeked == header);
    const bool isCut = header.dataSize > left - Header::BYTES;
    FUZZ_CHECK((skipper.skipNextSection() == PFILE_OK) == (IS_FILE || !isCut));
    const std::size_t payload = at + Header::BYTES;
    if (isCut) {
      FUZZ_CHECK(read.code == (IS_FILE ? PFILE_FAILED : PFILE_OK) && (IS_FILE || read.stored.payload.empty()));
      break;
    }
    // A section of nothing is refused.
    const bool isWhole = header.dataSize > 0 && crc32Of(input.data + payload, header.dataSize) == header.dataCrc;
    FUZZ_CHECK((read.code == PFILE_OK) == isWhole);
    FUZZ_CHECK(read.code != PFILE_OK || read.stored.payload.size() == header.dataSize);
    if (declared.allow(header, input.data + payload, header.dataSize)) {
      read.plainCode = plain.read(read.plain, true);
      FUZZ_CHECK(read.code == PFILE_OK || read.plainCode == read.code);
      FUZZ_CHECK(read.plain.header == header);
      const bool isRead = read.plainCode == PFILE_OK;
      FUZZ_CHECK(!isRead || read.stored.compressable() || read.plain == read.stored);
      FUZZ_CHECK(!isRead || read.plain.payload.size() <= std::max(Section::MAX_UNCOMPRESSED, header.dataSize));
    } else {
      FUZZ_CHECK(plain.skipNextSection() == PFILE_OK);
    }
    at = payload + header.dataSize;
  }
  sections.pop_back();
  return sections;
}

/// @param opened  receives the code of the opener
std::list<Read> walkMemory(const Fuzz::Input& input, int (MemReader::*open)(unsigned char const*, unsigned),
                           int& opened) {
  const auto log = Fuzz::formatAndDrop;
  MemReader readers[] = {{log, log, log}, {}, {}};
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

void checkFile(const Fuzz::Input& input, const char* path, int memoryOpened, const std::list<Read>& memory) {
  FileReader readers[3] = {{Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop}, {}, {}};
  const int opened = readers[0].open(path, 64);
  for (FileReader* reader : {&readers[1], &readers[2]}) FUZZ_CHECK(reader->open(path) == opened);
  FUZZ_CHECK(memoryOpened == PFILE_OK || opened != PFILE_OK);
  if (opened != PFILE_OK || memoryOpened != PFILE_OK) return;
  Header first;
  Marshal::ByteStreamReader in(input.data, input.size32());
  first.deserialize(in);
  const std::list<Read> file = walk(readers, input, Header::BYTES + first.dataSize, input.size);
  const auto isSame = [](const Read& a, const Read& b) {
    const bool isRead = a.code == PFILE_OK, isPlain = a.plainCode == PFILE_OK;
    return a.code == b.code && a.plainCode == b.plainCode && (!isRead || a.stored == b.stored) &&
           (!isPlain || (a.plain == b.plain && a.plain.compressed == b.plain.compressed));
  };
  FUZZ_CHECK(std::equal(file.begin(), file.end(), memory.begin(), memory.end(), isSame));
  for (FileReader& reader : readers) FUZZ_CHECK(reader.close() == PFILE_OK);
}

/// Sections that were read make a container that reads as these sections.
void checkRewritten(std::list<Read> sections) {
  sections.remove_if([](const Read& read) { return read.code != PFILE_OK; });
  std::size_t size = Header::BYTES + sizeof(uint32_t);
  for (const Read& read : sections) size += Header::BYTES + read.stored.payload.size();
  Fuzz::Bytes image(size);
  MemWriter writer(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop);
  FUZZ_CHECK(writer.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (Read& read : sections) FUZZ_CHECK(writer.write(read.stored) == PFILE_OK);
  FUZZ_CHECK(writer.close() == PFILE_OK);
  MemReader reader;
  FUZZ_CHECK(reader.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (const Read& read : sections) {
    Section again;
    FUZZ_CHECK(reader.read(again, false) == PFILE_OK);
    FUZZ_CHECK(again == read.stored && again.compressed == read.stored.compressed);
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
  std::list<Read> quick = walkMemory(input, &MemReader::quickOpen, quickOpened);
  const std::list<Read> whole = walkMemory(input, &MemReader::open, opened);
  // The recorded length hides what follows it, and nothing else.
  FUZZ_CHECK(opened != PFILE_OK || quickOpened == PFILE_OK);
  const auto isSame = [](const Read& a, const Read& b) { return a.code == b.code && a.stored == b.stored; };
  FUZZ_CHECK(opened != PFILE_OK ||
             (whole.size() <= quick.size() && std::equal(whole.begin(), whole.end(), quick.begin(), isSame)));
  checkFile(input, path, quickOpened, quick);
  checkRewritten(std::move(quick));
  guarded([&] { checkSummary(input, path); });
  guarded([&] { checkPackage(path); });
}
