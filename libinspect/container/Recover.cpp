#include <libinspect/container/Recover.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <fmt/format.h>
#include <zlib.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/PFileWriter.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/container/Doctor.h>

namespace Inspect {
namespace {

/// CRC-32 of any range of the input at a bounded cost: the CRCs of all bytes before each checkpoint, and the rule that
/// removes the CRC of a beginning from the CRC of the whole (zlib's crc32_combine). Without it a file of many headers
/// that each claim the whole rest would take time quadratic in its size.
class CrcIndex {
 public:
  explicit CrcIndex(const ByteSource& source) : _source(source) {
    _prefixes.push_back(0);
    for (uint64_t at = 0; at < source.size(); at += STEP) {
      const uint64_t end = std::min(at + STEP, source.size());
      _prefixes.push_back(extend(_prefixes.back(), at, end));
    }
  }

  /// CRC-32 of [begin, end), both within the input.
  uint32_t crcOf(uint64_t begin, uint64_t end) const {
    if (end - begin <= STEP) return extend(0, begin, end);
    static_assert(sizeof(z_off_t) >= sizeof(uint64_t), "a section may have 4 GiB");
    const auto length = static_cast<z_off_t>(end - begin);
    return prefix(end) ^ static_cast<uint32_t>(crc32_combine(prefix(begin), 0, length));
  }

 private:
  static constexpr uint64_t STEP = 1024;

  /// Begin and end of a section may be far apart: the window must not move back and forth between them.
  uint32_t prefix(uint64_t end) const {
    uint8_t bytes[STEP];
    const std::size_t got = _source.readAside(end / STEP * STEP, bytes, static_cast<std::size_t>(end % STEP));
    return PFile::crc32Of(bytes, static_cast<uint32_t>(got), _prefixes[static_cast<std::size_t>(end / STEP)]);
  }

  uint32_t extend(uint32_t crc, uint64_t begin, uint64_t end) const {
    uint32_t extended = crc;
    while (begin < end) {
      const uint8_t* at = nullptr;
      const auto got = static_cast<uint32_t>(std::min<uint64_t>(_source.view(begin, at), end - begin));
      if (got == 0) break;
      extended = PFile::crc32Of(at, got, extended);
      begin += got;
    }
    return extended;
  }

  const ByteSource& _source;
  std::vector<uint32_t> _prefixes;
};

class Search {
 public:
  explicit Search(const ByteSource& source) : _source(source), _crcs(source) {}

  Recovery run() {
    uint64_t at = 0;
    _recovery.isContainer = isFileHeader();
    while (at < _source.size() && !_source.hasFailed()) {
      SectionInfo section;
      at = section.offset = afterZeros(at);
      if (!hasHeader(section)) {
        ++at;
      } else if (!isIntact(section)) {
        // An unclosed file header is one of these: it is written anew anyway.
        if (section.header.type == PFile::FILE_HEADER_TYPE) {
          _next = section.offset + PFile::FILE_HEADER_BYTES;
        } else {
          loseSection(section);
        }
        at += PFile::Header::BYTES;
      } else {
        keep(section);
        at = _covered;
      }
    }
    lose(_source.size());
    // Anything may follow the recorded end.
    if (_covered > 0 || _recovery.isContainer) loseHeader(std::min(_recordedEnd, _source.size()));
    _recovery.isSummaryLost = _isSummaryLost || (_hasResultData && !_hasSummary && !_recovery.lost.empty());
    return std::move(_recovery);
  }

 private:
  /// Where the next header may begin: none is zeros alone, since their CRC-32 is not zero.
  uint64_t afterZeros(uint64_t at) const {
    const uint8_t* bytes = nullptr;
    const std::size_t got = _source.view(at, bytes);
    const uint8_t* const found = std::find_if(bytes, bytes + got, [](uint8_t byte) { return byte != 0; });
    const auto zeros = static_cast<std::size_t>(found - bytes);
    return zeros < PFile::Header::BYTES ? at : at + zeros - (PFile::Header::BYTES - 1);
  }

  bool hasHeader(SectionInfo& section) const {
    const uint8_t* at = nullptr;
    if (_source.view(section.offset, at) < PFile::Header::BYTES) return false;
    Marshal::ByteStreamReader in(at, PFile::Header::BYTES);
    return section.header.deserialize(in) == Marshal::STREAM_OK &&
           PFile::crc32Of(at, PFile::Header::HDR_CRC_BYTES) == section.header.hdrCrc;
  }

  bool isIntact(const SectionInfo& section) const {
    const uint64_t begin = section.payloadOffset();
    const uint32_t size = section.header.dataSize;
    return size != 0 && size <= _source.size() - begin && _crcs.crcOf(begin, begin + size) == section.header.dataCrc;
  }

  void keep(SectionInfo section) {
    const bool isFirst = _covered == 0;
    lose(section.offset);
    // What stands before the file header is no section of this file.
    if (!isFirst || section.header.type != PFile::FILE_HEADER_TYPE) loseHeader(section.offset);
    _covered = section.payloadOffset() + section.header.dataSize;
    // The output gets a file header of its own; one in the middle is left over from another file.
    if (section.header.type == PFile::FILE_HEADER_TYPE) {
      if (section.offset == 0) noteFileHeader(section);
      _next = _covered;
      return;
    }
    _hasSummary = _hasSummary || section.header.type == PFile::SECTION_RESULT_SUMMARY;
    _hasResultData = _hasResultData || isResultData(section.header.type);
    section.number = static_cast<int>(_recovery.kept.size()) + 1;
    _recovery.kept.push_back(section);
    ++_number;
    _next = _covered;
  }

  /// A section whose header verifies and whose data does not.
  void loseSection(SectionInfo section) {
    loseHeader(section.offset);
    const uint64_t begin = section.payloadOffset(), left = _source.size() - begin;
    const uint32_t size = section.header.dataSize;
    _isSummaryLost = _isSummaryLost || isSummary(section.header);
    _next = std::max(_next, begin + std::min<uint64_t>(size, left));
    section.number = _number++;
    if (isNoted()) _recovery.lostSections.push_back({section, true, whyLost(section)});
  }

  static bool isSummary(const PFile::Header& header) {
    return header.magic == PFile::Header::MAGIC && header.type == PFile::SECTION_RESULT_SUMMARY;
  }

  Finding whyLost(const SectionInfo& section) const {
    const uint64_t begin = section.payloadOffset(), left = _source.size() - begin;
    const uint32_t size = section.header.dataSize;
    if (size == 0) return {E04_DATA_CRC, begin, section.number, "data of at least one byte", "none"};
    if (size > left) {
      return {E05_TRUNCATED, begin, section.number, counted(size, "byte") + " of data", counted(left, "byte")};
    }
    return {E04_DATA_CRC, begin, section.number, fmt::format("0x{:08x}", section.header.dataCrc),
            fmt::format("0x{:08x}", _crcs.crcOf(begin, begin + size))};
  }

  /// Where a section ended, another must begin before `end`: if none was found there, its header is damaged.
  void loseHeader(uint64_t end) {
    if (_next >= end) return;
    SectionInfo section;
    section.offset = _next;
    section.number = _number++;
    _next = end;
    uint8_t bytes[PFile::Header::BYTES] = {};
    const std::size_t got = _source.readAside(section.offset, bytes, sizeof bytes);
    Marshal::ByteStreamReader in(bytes, sizeof bytes);
    (void)section.header.deserialize(in);                          // its bytes are there
    _isSummaryLost = _isSummaryLost || isSummary(section.header);  // damaged as it is, it may still tell
    if (!isNoted()) return;
    Finding why = {E05_TRUNCATED, section.offset, section.number, counted(sizeof bytes, "byte") + " of header",
                   counted(got, "byte")};
    if (got == sizeof bytes) {
      why = {E03_HEADER_CRC, section.offset, section.number, fmt::format("0x{:08x}", section.header.hdrCrc),
             fmt::format("0x{:08x}", PFile::crc32Of(bytes, PFile::Header::HDR_CRC_BYTES))};
    }
    _recovery.lostSections.push_back({section, false, std::move(why)});
  }

  bool isNoted() {
    if (_recovery.lostSections.size() < Recovery::MOST_LOST_SECTIONS) return true;
    ++_recovery.lostSectionsLeftOut;
    return false;
  }

  void noteFileHeader(const SectionInfo& section) {
    uint8_t word[4] = {};
    _recovery.wasClosed = true;
    _source.readAt(section.payloadOffset(), word, sizeof word);
    const uint32_t recorded = Marshal::loadLittle32(word);
    if (section.header.dataSize != sizeof word) return;
    _recordedEnd = recorded;
    if (recorded > _source.size()) _recovery.missing = recorded - _source.size();
  }

  /// The bytes between the last section kept and `end` are lost, except a file header at the beginning.
  void lose(uint64_t end) {
    uint64_t begin = _covered;
    if (begin == 0 && isFileHeader()) begin = std::min<uint64_t>(PFile::FILE_HEADER_BYTES, end);
    if (end > begin) _recovery.lost.push_back({begin, end - begin});
  }

  bool isFileHeader() const {
    SectionInfo first;
    return hasHeader(first) && first.header.type == PFile::FILE_HEADER_TYPE && first.header.dataSize == 4;
  }

  const ByteSource& _source;
  CrcIndex _crcs;
  Recovery _recovery;
  uint64_t _covered = 0;
  uint64_t _next = PFile::FILE_HEADER_BYTES;  ///< where a section must begin
  int _number = 1;                            ///< of that section
  uint64_t _recordedEnd = UINT64_MAX;
  bool _hasSummary = false;  ///< among those kept
  bool _hasResultData = false;
  bool _isSummaryLost = false;
};

/// Whether every section of what was written is as it was kept. What was wrong with a record still is.
bool isWhole(const std::string& written, const std::string& path, std::string& error) {
  ByteSource source;
  if (!source.openFile(written, error)) return false;
  const Findings findings = walk(source, WalkDepth::HEADERS_AND_CRCS).findings;
  const auto damage =
      std::find_if(findings.begin(), findings.end(), [](const Finding& finding) { return isDamage(finding.code); });
  if (damage == findings.end()) return true;
  error = describe(path, *damage);
  return false;
}

}  // namespace

Json::Value toJson(const LostRange& lost) {
  Json::Value json(Json::objectValue);
  json["offset"] = static_cast<Json::UInt64>(lost.offset);
  json["bytes"] = static_cast<Json::UInt64>(lost.bytes);
  return json;
}

Json::Value toJson(const Recovery& recovery) {
  Json::Value json(Json::objectValue);
  json["wasClosed"] = recovery.wasClosed;
  json["missing"] = static_cast<Json::UInt64>(recovery.missing);
  json["summaryLost"] = recovery.isSummaryLost;
  json["lostSectionsLeftOut"] = static_cast<Json::UInt64>(recovery.lostSectionsLeftOut);
  return json;
}

Json::Value toJson(const LostSection& lost) {
  Json::Value json = toJson(lost.why);
  json.removeMember("section");
  json["number"] = lost.section.number;
  json["offset"] = static_cast<Json::UInt64>(lost.section.offset);
  json["type"] = lost.hasHeader ? Json::Value(lost.section.header.type) : Json::Value();
  json["name"] = lost.hasHeader ? Json::Value(typeName(lost.section.header.type)) : Json::Value();
  return json;
}

Recovery findSections(const ByteSource& source) {
  return Search(source).run();
}

namespace {

/// Of the container that the sections found make.
uint64_t sizeOf(const Recovery& recovery) {
  uint64_t total = PFile::FILE_HEADER_BYTES;
  for (const SectionInfo& info : recovery.kept) total += PFile::Header::BYTES + uint64_t{info.header.dataSize};
  return total;
}

bool isTooLarge(const ByteSource& source, const Recovery& recovery, std::string& error) {
  const uint64_t total = sizeOf(recovery);
  if (total <= PFile::FileWriter::MAX_BYTES) return false;
  error = fmt::format("{}: expected sections that make a container of at most {} bytes, found {}", source.name(),
                      PFile::FileWriter::MAX_BYTES, total);
  return true;
}

std::string writeError(const std::string& path) {
  return fmt::format("{}: {}", path, std::strerror(errno));
}

}  // namespace

WriteOutcome writeRecovered(const ByteSource& source, const Recovery& recovery, Veltra::FileReplacement& file,
                            const std::string& path, std::string& error) {
  PFile::FileWriter writer;
  const auto failed = [&] {
    error = writeError(path);
    return WriteOutcome::NOT_WRITTEN;
  };
  if (isTooLarge(source, recovery, error)) return WriteOutcome::NOT_READ;
  if (writer.open(file.temporaryPath().c_str()) != 0) return failed();
  for (const SectionInfo& info : recovery.kept) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[info.header.dataSize]);
    if (source.readAt(info.payloadOffset(), bytes.get(), info.header.dataSize) != info.header.dataSize) {
      error = fmt::format("{}: read error", source.name());
      return WriteOutcome::NOT_READ;
    }
    PFile::Section section;
    section.header = info.header;
    section.payload.set(info.header.dataSize, bytes.release(), true);
    section.compressed = section.compressable();  // as stored: it is written unchanged
    if (writer.write(section) != 0) return failed();
  }
  if (writer.close(false) != 0) return failed();
  return isWhole(file.temporaryPath(), path, error) ? WriteOutcome::WRITTEN : WriteOutcome::NOT_READ;
}

bool writeRecovered(const ByteSource& source, const Recovery& recovery, const std::string& path, std::string& error) {
  Veltra::FileReplacement file;
  if (isTooLarge(source, recovery, error)) return false;
  const bool isOpen = file.open(path);
  if (isOpen && writeRecovered(source, recovery, file, path, error) != WriteOutcome::WRITTEN) return false;
  if (isOpen && file.commit()) return true;
  error = writeError(path);
  return false;
}

bool layOut(const ByteSource& source, const Recovery& recovery, RecoveredLayout& layout, std::string& error) {
  if (isTooLarge(source, recovery, error)) return false;
  layout.parts.clear();
  uint8_t length[4];
  Marshal::storeLittle32(length, static_cast<uint32_t>(sizeOf(recovery)));
  PFile::Header header;
  header.set(PFile::FILE_HEADER_TYPE, PFile::FILE_HEADER_VERSION, 0, 0, sizeof length, length);
  const auto bytes = header.bytes();
  static_assert(PFile::Header::BYTES + sizeof length == PFile::FILE_HEADER_BYTES);
  std::copy(std::begin(length), std::end(length), std::copy(bytes.begin(), bytes.end(), layout.header.begin()));
  for (const SectionInfo& info : recovery.kept) {
    const uint64_t size = PFile::Header::BYTES + uint64_t{info.header.dataSize};
    const bool isNext = !layout.parts.empty() && layout.parts.back().offset + layout.parts.back().bytes == info.offset;
    if (isNext) {
      layout.parts.back().bytes += size;
    } else {
      layout.parts.push_back({info.offset, size});
    }
  }
  return true;
}

bool isRecovered(const ByteSource& source, const Recovery& recovery, const ByteSource& file) {
  RecoveredLayout layout;
  std::string error;
  if (file.size() != sizeOf(recovery) || !layOut(source, recovery, layout, error)) return false;
  std::array<uint8_t, PFile::FILE_HEADER_BYTES> found;
  if (file.readAt(0, found.data(), found.size()) != found.size() || found != layout.header) return false;
  uint64_t at = found.size();
  return std::all_of(layout.parts.begin(), layout.parts.end(), [&](const RecoveredLayout::Part& part) {
    const uint64_t begin = at;
    at += part.bytes;
    return haveSameBytes(source, part.offset, file, begin, part.bytes);
  });
}

}  // namespace Inspect
