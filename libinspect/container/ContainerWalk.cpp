#include <libinspect/container/ContainerWalk.h>

#include <algorithm>
#include <new>
#include <utility>

#include <fmt/format.h>
#include <zlib.h>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Inspect {
namespace {

std::string hex(uint32_t value) {
  return fmt::format("0x{:08x}", value);
}

/// More bytes than zlib makes of the most that is uncompressed.
constexpr uint32_t MOST_COMPRESSED = PFile::Section::MAX_UNCOMPRESSED + PFile::Section::MAX_UNCOMPRESSED / 64;

uint32_t crcOfLittle32(uint32_t value) {
  uint8_t bytes[4];
  Marshal::storeLittle32(bytes, value);
  return PFile::crc32Of(bytes, sizeof bytes);
}

/// What PFile::Section::uncompressData() does, straight into `bytes`, so that the payload is held once.
bool inflate(const std::vector<uint8_t>& compressed, std::vector<uint8_t>& bytes) {
  constexpr uLong SIZE_WORD = 4;
  if (compressed.size() < SIZE_WORD) return false;
  uLongf size = Marshal::loadLittle32(compressed.data());
  if (size > PFile::Section::MAX_UNCOMPRESSED) return false;
  uint8_t nothing = 0;
  bytes.resize(size);
  const int code = uncompress(bytes.empty() ? &nothing : bytes.data(), &size, compressed.data() + SIZE_WORD,
                              static_cast<uLong>(compressed.size()) - SIZE_WORD);
  if (code == Z_MEM_ERROR) throw std::bad_alloc();
  bytes.resize(size);
  return code == Z_OK;
}

class Walker {
 public:
  Walker(const ByteSource& source, WalkDepth depth, const OnSection& onSection)
      : _source(source), _depth(depth), _onSection(onSection) {
    _report.name = source.name();
    _report.path = source.path();
    _report.size = source.size();
  }

  ContainerReport run() {
    SectionInfo section;
    while (next(section)) {
    }
    return std::move(_report);
  }

  bool next(SectionInfo& info) {
    if (_isOver) return false;
    if (_report.size == 0)
      add(E02_NO_FILE_HEADER, 0, 0, counted(PFile::Header::BYTES, "byte") + " of file header", "an empty file");
    info = SectionInfo();
    info.number = static_cast<int>(_report.sections);
    info.offset = _end;
    const bool isThere = _end < _report.size && readHeader(info);
    _isOver = !isThere || !readData(info);
    if (isThere) _end = std::min(info.payloadOffset() + info.header.dataSize, _report.size);
    if (_isOver) compareLength();
    return isThere;
  }
  uint64_t end() const { return _end; }
  const ContainerReport& report() const { return _report; }

 private:
  void add(FindingCode code, uint64_t offset, std::optional<int> section, std::string wanted, std::string found) {
    _report.findings.add({code, offset, section, std::move(wanted), std::move(found)});
  }

  bool isAtRecordedEnd(uint64_t offset) const { return _report.recordedLength == offset; }

  bool readHeader(SectionInfo& info) {
    uint8_t bytes[PFile::Header::BYTES];
    const std::size_t got = _source.readAt(info.offset, bytes, sizeof bytes);
    // Anything may follow the recorded end; compareLength() reports it.
    if (got < sizeof bytes) {
      if (isAtRecordedEnd(info.offset)) return false;
      add(info.number == 0 ? E02_NO_FILE_HEADER : E05_TRUNCATED, info.offset, info.number,
          counted(sizeof bytes, "byte") + " of header", counted(got, "byte"));
      return false;
    }
    Marshal::ByteStreamReader in(bytes, sizeof bytes);
    (void)info.header.deserialize(in);  // its bytes are there
    const uint32_t crc = PFile::crc32Of(bytes, PFile::Header::HDR_CRC_BYTES);
    if (crc != info.header.hdrCrc) {
      if (isAtRecordedEnd(info.offset)) return false;
      const bool isContainer = info.number > 0 || info.header.magic == PFile::Header::MAGIC;
      add(isContainer ? E03_HEADER_CRC : E02_NO_FILE_HEADER, info.offset, info.number,
          isContainer ? hex(info.header.hdrCrc) : "the letters PF and a valid header CRC",
          isContainer ? hex(crc) : fmt::format("0x{:04x}", info.header.magic));
      return false;
    }
    if (info.header.magic != PFile::Header::MAGIC) {
      add(W05_WRONG_MAGIC, info.offset, info.number, fmt::format("0x{:04x}", PFile::Header::MAGIC),
          fmt::format("0x{:04x}", info.header.magic));
    }
    if (info.number == 0 && info.header.type != PFile::FILE_HEADER_TYPE) {
      add(E02_NO_FILE_HEADER, info.offset, info.number,
          fmt::format("a first section of type {}", PFile::FILE_HEADER_TYPE), fmt::format("type {}", info.header.type));
    }
    return true;
  }

  /// @return false when the walk ends here
  bool readData(SectionInfo& info) {
    const PFile::Header& header = info.header;
    const uint64_t left = _report.size - info.payloadOffset();
    if (header.dataSize > left) {
      info.verdict = DataVerdict::CUT;
      add(E05_TRUNCATED, info.payloadOffset(), info.number, counted(header.dataSize, "byte") + " of data",
          counted(left, "byte"));
      note(info);
      return false;
    }
    uint8_t word[4] = {};
    const bool hasWord = header.dataSize >= 4 && _source.readAt(info.payloadOffset(), word, 4) == 4;
    if (hasWord && (header.flags & PFile::SECTION_FLAG_COMPRESS) != 0) {
      info.originalSize = Marshal::loadLittle32(word);
    }
    const bool isFileHeader = info.number == 0 && header.type == PFile::FILE_HEADER_TYPE;
    if (isFileHeader && header.dataSize == 4 && !info.originalSize) {
      checkFileHeader(info, Marshal::loadLittle32(word));
    } else if (isFileHeader || _depth == WalkDepth::HEADERS_AND_CRCS) {
      checkData(info);
      if (isFileHeader && info.verdict == DataVerdict::OK) checkOddFileHeader(info);
    }
    note(info);
    return true;
  }

  void note(const SectionInfo& info) {
    ++_report.sections;
    _report.storedBytes += info.header.dataSize;
    _report.originalBytes += info.originalSize.value_or(info.header.dataSize);
    if (info.number == 1) _report.first = info;
    if (_onSection) _onSection(info, _report.findings);
  }

  void checkData(SectionInfo& info) {
    const PFile::Header& header = info.header;
    const uint32_t crc = crcOf(_source, info.payloadOffset(), header.dataSize);
    info.verdict = DataVerdict::WRONG;
    if (header.dataSize == 0) {  // the readers refuse a section without bytes, whatever its CRC
      add(E04_DATA_CRC, info.payloadOffset(), info.number, "data of at least one byte", "none");
    } else if (crc != header.dataCrc) {
      add(E04_DATA_CRC, info.payloadOffset(), info.number, hex(header.dataCrc), hex(crc));
    } else {
      info.verdict = DataVerdict::OK;
    }
  }

  /// Until it closes, a writer leaves the CRC of the total before its own header: this identifies an unclosed file.
  void checkFileHeader(SectionInfo& info, uint32_t total) {
    if (info.header.dataCrc != crcOfLittle32(total - PFile::Header::BYTES)) {
      checkData(info);
      if (info.verdict == DataVerdict::OK) _report.recordedLength = total;
      return;
    }
    info.verdict = DataVerdict::WRONG;
    add(E01_NEVER_CLOSED, info.offset, info.number, "the total length of a closed file",
        fmt::format("{}, the value of a file that was never closed", total));
  }

  /// No writer makes a file header that is compressed, or of another size. The readers accept it if it gives
  /// a total length.
  void checkOddFileHeader(const SectionInfo& info) {
    std::vector<uint8_t> total(sizeof(uint32_t));
    std::string error;
    if (!info.originalSize) {
      total.resize(_source.readAt(info.payloadOffset(), total.data(), std::min(info.header.dataSize, 4U)));
    } else if (!loadPayload(_source, info, total, error)) {
      _report.findings.add(inflateFinding(info));
      return;
    }
    if (total.size() < sizeof(uint32_t)) {
      add(E02_NO_FILE_HEADER, info.payloadOffset(), info.number, "4 bytes of total length",
          counted(total.size(), "byte"));
    } else {
      _report.recordedLength = Marshal::loadLittle32(total.data());
    }
  }

  void compareLength() {
    if (!_report.recordedLength || *_report.recordedLength == _report.size) return;
    const bool isLonger = *_report.recordedLength > _report.size;
    add(isLonger ? E06_LENGTH_DIFFERS : W03_BYTES_AFTER_END, isLonger ? _report.size : *_report.recordedLength,
        std::nullopt, counted(*_report.recordedLength, "byte") + ", as recorded", counted(_report.size, "byte"));
  }

  const ByteSource& _source;
  WalkDepth _depth;
  const OnSection& _onSection;
  ContainerReport _report;
  uint64_t _end = 0;  ///< of the last section
  bool _isOver = false;
};

const OnSection NOBODY;

}  // namespace

struct SectionWalk::Walker : Inspect::Walker {
  using Inspect::Walker::Walker;
};

SectionWalk::SectionWalk(const ByteSource& source, WalkDepth depth)
    : _walker(std::make_unique<Walker>(source, depth, NOBODY)) {}

SectionWalk::~SectionWalk() = default;

bool SectionWalk::next(SectionInfo& section) {
  return _walker->next(section);
}

uint64_t SectionWalk::end() const {
  return _walker->end();
}

const ContainerReport& SectionWalk::report() const {
  return _walker->report();
}

const char* toString(DataVerdict verdict) {
  switch (verdict) {
    case DataVerdict::OK:
      return "ok";
    case DataVerdict::WRONG:
      return "wrong";
    case DataVerdict::CUT:
      return "cut";
    case DataVerdict::NOT_CHECKED:
      return "not checked";
  }
  return "";
}

Json::Value toJson(const SectionInfo& section) {
  Json::Value json(Json::objectValue);
  const PFile::Header& header = section.header;
  const char* const name = PFile::sectionIdToString(header.type);
  json["number"] = section.number;
  json["offset"] = static_cast<Json::UInt64>(section.offset);
  json["type"] = header.type;
  json["name"] = name != nullptr ? Json::Value(name) : Json::Value();
  json["version"] = header.version;
  json["flags"] = header.flags;
  json["storedSize"] = header.dataSize;
  json["originalSize"] = section.originalSize ? *section.originalSize : header.dataSize;
  json["compressed"] = (header.flags & PFile::SECTION_FLAG_COMPRESS) != 0;
  json["crc"] = toString(section.verdict);
  return json;
}

const std::vector<std::string>& sectionColumns() {
  static const std::vector<std::string> COLUMNS = {"number",     "offset",       "type",       "name", "version",
                                                   "storedSize", "originalSize", "compressed", "crc"};
  return COLUMNS;
}

ContainerReport walk(const ByteSource& source, WalkDepth depth, const OnSection& onSection) {
  return Walker(source, depth, onSection).run();
}

std::string flagWords(uint16_t flags) {
  constexpr int FIRST_LEVEL_BIT = 12;
  const int level = flags >> FIRST_LEVEL_BIT;
  std::string words;
  const auto add = [&words](const std::string& word) { words += (words.empty() ? "" : ", ") + word; };
  if ((flags & PFile::SECTION_FLAG_COMPRESS) != 0) add("compressed");
  if (level != 0) add(fmt::format("level {}", level));
  for (int bit = 1; bit < FIRST_LEVEL_BIT; ++bit) {
    if ((flags >> bit & 1) != 0) add(fmt::format("bit {}", bit));
  }
  return words.empty() ? "none" : words;
}

uint32_t crcOf(const ByteSource& source, uint64_t offset, uint64_t size) {
  uint32_t crc = 0;
  while (size > 0) {
    const uint8_t* at = nullptr;
    const auto got = static_cast<uint32_t>(std::min<uint64_t>(source.view(offset, at), size));
    if (got == 0) break;
    crc = PFile::crc32Of(at, got, crc);
    offset += got;
    size -= got;
  }
  return crc;
}

std::vector<SectionInfo> sectionsOf(const ByteSource& source) {
  std::vector<SectionInfo> sections;
  walk(source, WalkDepth::HEADERS_AND_CRCS,
       [&sections](const SectionInfo& section, Findings&) { sections.push_back(section); });
  return sections;
}

std::optional<SectionInfo> findSection(const ByteSource& source, int number, ContainerReport& report) {
  std::optional<SectionInfo> found;
  report = walk(source, WalkDepth::HEADERS, [&](const SectionInfo& section, Findings&) {
    if (section.number == number) found = section;
  });
  return found;
}

bool loadPayload(const ByteSource& source, const SectionInfo& info, std::vector<uint8_t>& bytes, std::string& error) {
  const PFile::Header& header = info.header;
  if (header.dataSize > source.size() - info.payloadOffset()) {
    error = fmt::format("section {}: expected {} of data, the file ends before them", info.number,
                        counted(header.dataSize, "byte"));
    return false;
  }
  const bool isCompressed = (header.flags & PFile::SECTION_FLAG_COMPRESS) != 0;
  if (isCompressed && header.dataSize > MOST_COMPRESSED) {
    error = fmt::format("section {}: {}", info.number, meaningOf(E07_INFLATE_FAILED));
    return false;
  }
  // What is damaged need not be held.
  constexpr uint32_t LARGE = 1024 * 1024;
  if (header.dataSize > LARGE && crcOf(source, info.payloadOffset(), header.dataSize) != header.dataCrc) {
    error = fmt::format("section {}: {}", info.number, meaningOf(E04_DATA_CRC));
    return false;
  }
  std::vector<uint8_t> compressed;
  std::vector<uint8_t>& stored = isCompressed ? compressed : bytes;
  stored.resize(header.dataSize);
  const std::size_t got = source.readAt(info.payloadOffset(), stored.data(), stored.size());
  if (got == 0 || got != stored.size() || PFile::crc32Of(stored.data(), header.dataSize) != header.dataCrc) {
    error = fmt::format("section {}: {}", info.number, meaningOf(E04_DATA_CRC));
    return false;
  }
  if (isCompressed && !inflate(compressed, bytes)) {
    const bool tooBig = info.originalSize > PFile::Section::MAX_UNCOMPRESSED;
    error = fmt::format("section {}: {}", info.number, meaningOf(tooBig ? E08_TOO_BIG : E07_INFLATE_FAILED));
    return false;
  }
  return true;
}

Finding inflateFinding(const SectionInfo& info) {
  const bool tooBig = info.originalSize > PFile::Section::MAX_UNCOMPRESSED;
  return {
      tooBig ? E08_TOO_BIG : E07_INFLATE_FAILED, info.payloadOffset(), info.number,
      tooBig ? fmt::format("{} bytes at most", PFile::Section::MAX_UNCOMPRESSED) : "a zlib stream of the original size",
      counted(info.originalSize.value_or(0), "byte") + " claimed"};
}

std::string typeName(uint16_t type) {
  if (type == PFile::FILE_HEADER_TYPE) return "FILE_HEADER";
  const char* const name = PFile::sectionIdToString(type);
  return name != nullptr ? name : std::to_string(type);
}

}  // namespace Inspect
