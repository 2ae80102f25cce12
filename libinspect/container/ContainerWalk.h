#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/PFile.h>
#include <libinspect/container/ByteSource.h>
#include <libinspect/container/Findings.h>

namespace Inspect {

enum class DataVerdict { OK, WRONG, CUT, NOT_CHECKED };
/// "ok", "wrong", "cut" or "not checked".
const char* toString(DataVerdict verdict);

struct SectionInfo {
  int number = 0;  ///< 0 is the file header
  uint64_t offset = 0;
  PFile::Header header;
  DataVerdict verdict = DataVerdict::NOT_CHECKED;
  std::optional<uint32_t> originalSize;  ///< claimed by a compressed payload
  uint64_t payloadOffset() const { return offset + PFile::Header::BYTES; }
};
Json::Value toJson(const SectionInfo& section);
/// The columns of that object in order, without its flags.
const std::vector<std::string>& sectionColumns();
/// A section's flags for people: "compressed, level 6", or "none".
std::string flagWords(uint16_t flags);

/// What a container holds, up to the first header that does not verify.
struct ContainerReport {
  std::string name;  ///< name of the input for people
  std::string path;  ///< the same for commands
  uint64_t size = 0;
  std::optional<uint32_t> recordedLength;  ///< from an intact or never closed file header
  uint64_t sections = 0;                   ///< number of sections, the file header included
  uint64_t storedBytes = 0;                ///< bytes of data, according to the headers
  uint64_t originalBytes = 0;              ///< the same uncompressed, according to the data
  std::optional<SectionInfo> first;        ///< the first section after the file header
  Findings findings;

  bool damaged() const { return findings.hasDamage(); }
  /// There is no file header, and nothing that could be a section: the input may be anything.
  bool isNoContainer() const {
    return sections == 0 && !findings.empty() && findings.begin()->code == E02_NO_FILE_HEADER;
  }
};

enum class WalkDepth { HEADERS, HEADERS_AND_CRCS };

/// Called with each section in turn, after what the walk itself found in it; may add findings.
using OnSection = std::function<void(const SectionInfo&, Findings&)>;

/// Walks a container's headers with bounded reads. Memory use does not depend on the size of the file.
ContainerReport walk(const ByteSource& source, WalkDepth depth, const OnSection& onSection = {});

/// The same walk, one section at a time.
class SectionWalk {
 public:
  /// @param source  borrowed
  SectionWalk(const ByteSource& source, WalkDepth depth);
  ~SectionWalk();
  SectionWalk(const SectionWalk&) = delete;
  SectionWalk& operator=(const SectionWalk&) = delete;

  /// @return false after the last section
  bool next(SectionInfo& section);
  uint64_t end() const;                   ///< of the last section, never after the end of the input
  const ContainerReport& report() const;  ///< complete after the last section

 private:
  struct Walker;
  std::unique_ptr<Walker> _walker;
};

/// All sections a walk finds, CRCs checked.
std::vector<SectionInfo> sectionsOf(const ByteSource& source);

/// Finds one section by its number; its data is not checked.
/// @param report  receives what the walk found
std::optional<SectionInfo> findSection(const ByteSource& source, int number, ContainerReport& report);

/// The CRC-32 of a part of the input, as far as it reaches.
uint32_t crcOf(const ByteSource& source, uint64_t offset, uint64_t size);

/// A section's payload, uncompressed where it is stored compressed.
/// @return false, with `error` saying why: cut, CRC, more than 8 MiB claimed, bad zlib data or far too much of it
[[nodiscard]] bool loadPayload(const ByteSource& source, const SectionInfo& info, std::vector<uint8_t>& bytes,
                               std::string& error);

/// The finding for an intact section whose payload cannot be loaded.
Finding inflateFinding(const SectionInfo& info);

/// A section type's name, or its number as text where it has none.
std::string typeName(uint16_t type);

}  // namespace Inspect
