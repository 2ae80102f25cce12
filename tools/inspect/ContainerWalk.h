#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <libcrossplatform/common/PFile.h>
#include <tools/inspect/ByteSource.h>

namespace Inspect {

/// What can be wrong with a container. Codes are stable: people search for them.
enum FindingCode {
  E01_NEVER_CLOSED,
  E02_NO_FILE_HEADER,
  E03_HEADER_CRC,
  E04_DATA_CRC,
  E05_TRUNCATED,
  E06_LENGTH_DIFFERS,
  E07_INFLATE_FAILED,
  E08_TOO_BIG,
  E09_RECORD,
  E10_SCALE_WITHOUT_TEXT,
  W01_NEWER_VERSION,
  W02_UNKNOWN_TYPE,
  W03_BYTES_BEHIND_END,
  W04_NEGATIVE_COUNT,
  W05_WRONG_MAGIC,
};

/// "E01" and so on.
const char* toString(FindingCode code);
/// What the code means in a few words, for example "data CRC differs".
const char* meaningOf(FindingCode code);
inline bool isDamage(FindingCode code) {
  return code < W01_NEWER_VERSION;
}

struct Finding {
  FindingCode code;
  uint64_t offset;             ///< in the file
  std::optional<int> section;  ///< its number, where it is about one
  std::string wanted;
  std::string found;
};

enum class DataVerdict { OK, WRONG, CUT, NOT_CHECKED };

struct SectionInfo {
  int number = 0;  ///< 0 is the file header
  uint64_t offset = 0;
  PFile::Header header;
  DataVerdict verdict = DataVerdict::NOT_CHECKED;
  std::optional<uint32_t> originalSize;  ///< claimed by a compressed payload
  uint64_t payloadOffset() const { return offset + PFile::Header::BYTES; }
};

/// What a container holds, as far as it can be walked: up to the first header that does not verify.
struct ContainerReport {
  std::string name;
  uint64_t size = 0;
  std::optional<uint32_t> recordedLength;  ///< of an intact or never closed file header
  std::vector<SectionInfo> sections;
  std::vector<Finding> findings;

  bool damaged() const;
  /// The first section behind the file header; null when there is none.
  const SectionInfo* first() const;
};

enum class WalkDepth { HEADERS, HEADERS_AND_CRCS };

/// Walks a container's headers with bounded reads; memory follows the number of sections.
ContainerReport walk(const ByteSource& source, WalkDepth depth);

/// A section's payload, uncompressed where it is stored compressed.
/// @return false, with `error` saying why: cut, CRC, more than 8 MiB claimed, bad zlib data
bool loadPayload(const ByteSource& source, const SectionInfo& info, std::vector<uint8_t>& bytes, std::string& error);

/// The finding for an intact section whose payload cannot be loaded.
Finding inflateFinding(const SectionInfo& info);

/// A section type's name, or its number as text where it has none.
std::string typeName(uint16_t type);

}  // namespace Inspect
