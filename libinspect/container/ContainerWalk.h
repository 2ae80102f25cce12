#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <libcrossplatform/common/PFile.h>
#include <libinspect/container/ByteSource.h>

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
  W06_RECORDS_NOT_DECODED,
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

/// What was found wrong, in the order it was found. A hostile file has a finding every few bytes: the first MOST_KEPT
/// are kept, of the others it is known how many there were and whether one was damage.
class Findings {
 public:
  static constexpr std::size_t MOST_KEPT = 1000;

  void add(Finding finding);
  std::vector<Finding>::const_iterator begin() const { return _kept.begin(); }
  std::vector<Finding>::const_iterator end() const { return _kept.end(); }
  bool empty() const { return _kept.empty(); }
  uint64_t leftOut() const { return _leftOut; }
  bool hasDamage() const { return _hasDamage; }

 private:
  std::vector<Finding> _kept;
  uint64_t _leftOut = 0;
  bool _hasDamage = false;
};

/// What a container holds, as far as it can be walked: up to the first header that does not verify.
struct ContainerReport {
  std::string name;  ///< of the input, for people
  std::string path;  ///< and for commands
  uint64_t size = 0;
  std::optional<uint32_t> recordedLength;  ///< of an intact or never closed file header
  uint64_t sections = 0;                   ///< how many, the file header included
  uint64_t storedBytes = 0;                ///< their data, as the headers tell it
  uint64_t originalBytes = 0;              ///< and uncompressed, as their data claims
  std::optional<SectionInfo> first;        ///< the first section behind the file header
  Findings findings;

  bool damaged() const { return findings.hasDamage(); }
};

enum class WalkDepth { HEADERS, HEADERS_AND_CRCS };

/// Called with each section in turn, after what the walk itself found in it; may add findings.
using OnSection = std::function<void(const SectionInfo&, Findings&)>;

/// Walks a container's headers with bounded reads. Memory does not follow the size of the file.
ContainerReport walk(const ByteSource& source, WalkDepth depth, const OnSection& onSection = {});

/// All sections a walk finds, CRCs checked.
std::vector<SectionInfo> sectionsOf(const ByteSource& source);

/// Looks for one section by its number; its data is not checked.
/// @param report  receives what the walk found
std::optional<SectionInfo> findSection(const ByteSource& source, int number, ContainerReport& report);

/// A section's payload, uncompressed where it is stored compressed.
/// @return false, with `error` saying why: cut, CRC, more than 8 MiB claimed, bad zlib data
bool loadPayload(const ByteSource& source, const SectionInfo& info, std::vector<uint8_t>& bytes, std::string& error);

/// The finding for an intact section whose payload cannot be loaded.
Finding inflateFinding(const SectionInfo& info);

/// A section type's name, or its number as text where it has none.
std::string typeName(uint16_t type);

}  // namespace Inspect
