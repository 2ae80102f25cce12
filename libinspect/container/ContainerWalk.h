#pragma once

#include <cstdint>
#include <functional>
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
[[nodiscard]] bool loadPayload(const ByteSource& source, const SectionInfo& info, std::vector<uint8_t>& bytes,
                               std::string& error);

/// The finding for an intact section whose payload cannot be loaded.
Finding inflateFinding(const SectionInfo& info);

/// A section type's name, or its number as text where it has none.
std::string typeName(uint16_t type);

}  // namespace Inspect
