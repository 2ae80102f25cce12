// A container in memory: both ways to open it, reading, peeking, skipping, seeking, and the result summary in it.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>

#include "ContainerImage.h"
#include "RecordProperties.h"

using namespace PFile;

namespace {

using Opener = int (MemReader::*)(unsigned char const*, unsigned int);

/// Reads the same section three ways from the same place: as stored, skipped, uncompressed. They must agree.
/// @return the code of reading it as stored
int checkSection(MemReader& reader, Section& stored, Fuzz::DeclaredSizes& declared) {
  const int at = reader.seek(0, Marshal::STREAM_FROM_CURRENT);
  Header peeked;
  const int peek = reader.peek(peeked);
  if (at < 0) {  // the recorded length is less than the file header: there is no position, and nothing to read
    FUZZ_CHECK(peek == PFILE_FAILED && reader.read(stored, false) == PFILE_END_OF_DATA);
    return PFILE_END_OF_DATA;
  }
  FUZZ_CHECK(reader.seek(0, Marshal::STREAM_FROM_CURRENT) == at);
  const int code = reader.read(stored, false);
  const int end = reader.seek(0, Marshal::STREAM_FROM_CURRENT);
  FUZZ_CHECK(peek == PFILE_OK || code == peek);
  if (peek != PFILE_OK) {
    FUZZ_CHECK(end == at);
    return code;
  }
  FUZZ_CHECK(peeked == stored.header && stored.header.verifyHdrCrc());
  const bool cut = code == PFILE_OK && stored.payload.empty();
  if (code == PFILE_OK && !cut) FUZZ_CHECK(stored.payload.size() == peeked.dataSize && stored.verifyDataCrc());

  FUZZ_CHECK(reader.seek(at, Marshal::STREAM_FROM_BEGIN) == at);
  const int skipped = reader.skipNextSection();
  FUZZ_CHECK((skipped == PFILE_OK) == (!cut && end - at == static_cast<int>(Header::BYTES + peeked.dataSize)));
  FUZZ_CHECK(reader.seek(at, Marshal::STREAM_FROM_BEGIN) == at);
  if (declared.allow(stored.header, stored.payload.data(), stored.payload.size())) {
    Section plain(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop);
    const int uncompressed = reader.read(plain, true);
    FUZZ_CHECK(code == PFILE_OK || uncompressed == code);
    FUZZ_CHECK(plain.header == stored.header);
    if (uncompressed == PFILE_OK && !stored.compressable()) FUZZ_CHECK(plain == stored);
    if (uncompressed == PFILE_OK)
      FUZZ_CHECK(plain.payload.size() <= std::max(Section::MAX_UNCOMPRESSED, peeked.dataSize));
  }
  FUZZ_CHECK(reader.seek(end, Marshal::STREAM_FROM_BEGIN) == end);
  return cut ? PFILE_END_OF_DATA : code;
}

/// Opens an image and reads it as far as it goes.
/// @param sections  receives those that are whole
/// @return the code of the opener
int walk(const Fuzz::Input& input, Opener open, std::vector<std::unique_ptr<Section>>& sections) {
  MemReader reader(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop);
  const int opened = (reader.*open)(input.data, input.size32());
  Fuzz::DeclaredSizes declared;
  // A file that was never closed is read from the beginning.
  if (opened != PFILE_OK) reader.seek(0, Marshal::STREAM_FROM_BEGIN);
  for (int at = -2, next = -1; next > at; next = reader.seek(0, Marshal::STREAM_FROM_CURRENT)) {
    at = next;
    auto section = std::make_unique<Section>();
    const int code = checkSection(reader, *section, declared);
    if (code == PFILE_END_OF_DATA) break;
    if (code == PFILE_OK) sections.push_back(std::move(section));
  }
  return opened;
}

/// Sections that were read make a container that reads as these sections.
void checkRewritten(const std::vector<std::unique_ptr<Section>>& sections) {
  std::size_t size = Header::BYTES + sizeof(uint32_t);
  for (const auto& section : sections) size += Header::BYTES + section->payload.size();
  Fuzz::Bytes image(size);
  MemWriter writer(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop);
  FUZZ_CHECK(writer.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (const auto& section : sections) FUZZ_CHECK(writer.write(*section) == PFILE_OK);
  FUZZ_CHECK(writer.close() == PFILE_OK);
  MemReader reader;
  FUZZ_CHECK(reader.open(image.data(), static_cast<unsigned>(image.size())) == PFILE_OK);
  for (const auto& section : sections) {
    Section again;
    FUZZ_CHECK(reader.read(again, false) == PFILE_OK);
    FUZZ_CHECK(again == *section && again.compressed == section->compressed);
  }
  Section beyond;
  FUZZ_CHECK(reader.read(beyond, false) == PFILE_END_OF_DATA);
}

void checkSummary(const Fuzz::Input& input) {
  Veltra::ResultSummary summary;
  const Veltra::ResultReaderStatus status = Veltra::readResultSummary(summary, input.data, input.size32());
  Veltra::ResultType type = Veltra::RESULT_TYPE_NOT_SET;
  FUZZ_CHECK(Veltra::readResultType(type, input.data, input.size32()) == status);
  if (status == Veltra::RESULT_READER_OK) FUZZ_CHECK(type == summary.resultType);
  if (status == Veltra::RESULT_READER_OK) Fuzz::checkRoundTrip(summary);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    std::vector<std::unique_ptr<Section>> quick, whole;
    const int quickOpened = walk(input, &MemReader::quickOpen, quick);
    const int opened = walk(input, &MemReader::open, whole);
    // The recorded length hides what follows it, and nothing else.
    FUZZ_CHECK(opened != PFILE_OK || quickOpened == PFILE_OK);
    if (opened == PFILE_OK) {
      FUZZ_CHECK(whole.size() <= quick.size());
      for (std::size_t i = 0; i < whole.size(); ++i) FUZZ_CHECK(*whole[i] == *quick[i]);
    }
    checkRewritten(quick);
    checkSummary(input);
  });
}
