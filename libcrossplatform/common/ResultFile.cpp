#include <libcrossplatform/common/ResultFile.h>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/ResultFile";

constexpr EnumText<ResultReaderStatus> READER_TEXTS[] = {
    {RESULT_READER_OK, "ok"},
    {RESULT_READER_WRONG_RESULT_TYPE, "wrong result type"},
    {RESULT_READER_VERSION_TOO_NEW, "version too new"},
    {RESULT_READER_CORRUPT, "corrupt"},
    {RESULT_READER_ERROR, "error"},
};
static_assert(isOneToOne(READER_TEXTS));

constexpr EnumText<ResultWriterStatus> WRITER_TEXTS[] = {{RESULT_WRITER_OK, "ok"}, {RESULT_WRITER_ERROR, "error"}};
static_assert(isOneToOne(WRITER_TEXTS));

uint16_t supportedSectionVersion(uint16_t sectionType) {
  const boost::optional<uint16_t> version = newestKnownVersion(sectionType);
  if (!version) assertFatal("Invalid section type", SOURCE, __LINE__);
  return *version;
}

bool isTooNew(const PFile::Header& header) {
  return header.version > supportedSectionVersion(header.type);
}

ResultReaderStatus deserializeSummary(ResultSummary& out, const PFile::Payload& payload) {
  // Without bytes no stream reader can be built: a compressed section may claim to hold nothing, and a cut image has
  // only the header.
  if (payload.empty()) return RESULT_READER_CORRUPT;
  Marshal::ByteStreamReader in(payload.data(), payload.size());
  return streamOpToReaderStatus(out.deserialize(in));
}

template <class... Source>
ResultReaderStatus readTypeFrom(ResultType& out, Source... source) {
  ResultSummary summary;
  const ResultReaderStatus status = readResultSummary(summary, source...);
  if (status == RESULT_READER_OK) out = summary.resultType;
  return status;
}

}  // namespace

char const* toString(ResultReaderStatus status) {
  return textOf(READER_TEXTS, status);
}

char const* toString(ResultWriterStatus status) {
  return textOf(WRITER_TEXTS, status);
}

ResultReaderStatus streamOpToReaderStatus(Marshal::StreamOpStatus status) {
  switch (status) {
    case Marshal::STREAM_OK:
      return RESULT_READER_OK;
    case Marshal::STREAM_TOO_NEW:
      return RESULT_READER_VERSION_TOO_NEW;
    case Marshal::STREAM_INLINE_TOO_NEW:
    case Marshal::STREAM_WRONG_LENGTH:
    case Marshal::STREAM_SHORT:
    case Marshal::STREAM_NOT_A_HEADER:
    case Marshal::STREAM_WRONG_ELEMENT:
      return RESULT_READER_CORRUPT;
    default:
      return RESULT_READER_ERROR;
  }
}

boost::optional<uint16_t> newestKnownVersion(uint16_t sectionType) {
  const PFile::SectionType* const type = PFile::findSectionType(sectionType);
  if (type == nullptr || type->newestVersion == PFile::SectionType::UNVERSIONED) return boost::none;
  return static_cast<uint16_t>(type->newestVersion);
}

ResultFileCheck checkResultFile(ResultSummary& out, char const* path) {
  constexpr uint32_t SUMMARY = 1;
  constexpr uint64_t SUMMARY_AT = PFile::Header::BYTES + sizeof(uint32_t);
  const auto stopped = [](ResultReaderStatus status, uint32_t section, uint64_t offset) {
    return ResultFileCheck{status, section, offset};
  };
  PFile::FileReader reader;
  if (reader.open(path) != PFile::PFILE_OK) return stopped(RESULT_READER_ERROR, 0, 0);
  PFile::Section summary;
  boost::optional<ResultFileCheck> tooNew;
  uint32_t number = SUMMARY;
  uint64_t offset = SUMMARY_AT;
  for (;; ++number) {
    PFile::Section other;
    PFile::Section& section = number == SUMMARY ? summary : other;
    const int code = reader.read(section, number == SUMMARY);
    if (code == PFile::PFILE_FAILED) return stopped(RESULT_READER_CORRUPT, number, offset);
    if (number == SUMMARY && section.header.type != PFile::SECTION_RESULT_SUMMARY) {
      return stopped(RESULT_READER_ERROR, number, offset);
    }
    if (code == PFile::PFILE_END_OF_DATA) break;
    const boost::optional<uint16_t> newest = newestKnownVersion(section.header.type);
    if (!tooNew && newest && section.header.version > *newest) {
      tooNew = stopped(RESULT_READER_VERSION_TOO_NEW, number, offset);
    }
    offset += PFile::Header::BYTES + section.header.dataSize;
  }
  if (reader.recordedLength() != offset) return stopped(RESULT_READER_CORRUPT, number, offset);
  if (!tooNew || tooNew->section != SUMMARY) {  // a newer summary is not decoded
    const ResultReaderStatus status = deserializeSummary(out, summary.payload);
    if (status != RESULT_READER_OK) return stopped(status, SUMMARY, SUMMARY_AT);
  }
  return tooNew ? *tooNew : stopped(RESULT_READER_OK, number, offset);
}

ResultReaderStatus readResultSummary(ResultSummary& out, char const* path, bool checkAllSections) {
  // File header and summary, mostly in one call: filling a large buffer would take half of the time.
  constexpr std::size_t FIRST_BYTES = 512;
  PFile::FileReader reader;
  const int opened = checkAllSections ? reader.open(path) : reader.open(path, FIRST_BYTES);
  if (opened != PFile::PFILE_OK) return RESULT_READER_ERROR;
  PFile::Section summary;
  // At the end of the file the section stays empty and is refused for its type.
  if (reader.read(summary, true) == PFile::PFILE_FAILED) return RESULT_READER_CORRUPT;
  if (summary.header.type != PFile::SECTION_RESULT_SUMMARY) return RESULT_READER_ERROR;
  bool tooNew = isTooNew(summary.header);
  if (tooNew && !checkAllSections) return RESULT_READER_VERSION_TOO_NEW;
  while (checkAllSections) {
    PFile::Section section;
    const int code = reader.read(section, false);
    if (code == PFile::PFILE_FAILED) return RESULT_READER_CORRUPT;
    if (code == PFile::PFILE_END_OF_DATA) break;
    if (isTooNew(section.header)) tooNew = true;
  }
  if (tooNew) return RESULT_READER_VERSION_TOO_NEW;
  return deserializeSummary(out, summary.payload);
}

ResultReaderStatus readResultSummary(ResultSummary& out, unsigned char const* buffer, unsigned int size) {
  PFile::MemReader reader;
  if (reader.quickOpen(buffer, size) != PFile::PFILE_OK) return RESULT_READER_ERROR;
  PFile::Section summary;
  if (reader.read(summary, true) != PFile::PFILE_OK) return RESULT_READER_ERROR;
  if (summary.header.type != PFile::SECTION_RESULT_SUMMARY) return RESULT_READER_ERROR;
  return deserializeSummary(out, summary.payload);
}

ResultReaderStatus readResultType(ResultType& out, char const* path) {
  return readTypeFrom(out, path, false);
}

ResultReaderStatus readResultType(ResultType& out, unsigned char const* buffer, unsigned int size) {
  return readTypeFrom(out, buffer, size);
}

int MemFileWriter::write(PFile::Section& section) {
  return std::visit([&section](auto* target) { return target->write(section); }, _target);
}

int MemFileWriter::writeSection(Marshal::ISerializable& record, unsigned short version, unsigned short type,
                                PFile::SECTION_FLAGS flags, int compLevel) {
  Marshal::ByteStreamCounter counter;
  record.serialize(counter);
  Marshal::ByteStreamBuilder bytes(counter.size());
  record.serialize(bytes);
  PFile::Section section;
  if (bytes.failed() || section.set(type, version, flags, bytes.data(), bytes.size(), false, compLevel) != 0) {
    return RESULT_WRITER_ERROR;
  }
  return write(section) == 0 ? RESULT_WRITER_OK : RESULT_WRITER_ERROR;
}

}  // namespace Veltra
