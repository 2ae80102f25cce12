#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/ResultSummary.h>

namespace Inspect {

/// One data section of a described result file.
struct DescribedSection {
  uint16_t type = 0;
  uint16_t version = 0;
  bool compress = false;
  std::string payload;  ///< path of the file with its bytes
};

/// A result file as described in JSON by a person: docs/veltra-pack.md.
struct ResultDescription {
  Veltra::ResultSummary summary;
  std::vector<DescribedSection> sections;
};

/// Reads a description from JSON text.
/// @param payloads  directory that payload paths are relative to
/// @return false, with `error` naming the key, what was expected and what was found
[[nodiscard]] bool parseDescription(const std::string& text, const std::string& payloads,
                                    ResultDescription& description, std::string& error);

/// The result of packing a description.
struct PackedFile {
  uint64_t bytes = 0;
  int sections = 0;  ///< file header and summary included
};

/// Writes a result file next to `path` and renames it into place.
/// @param level  zlib level 0 to 9 for the sections that are to be compressed
/// @return false, with `error` filled; the file at `path` is then unchanged
[[nodiscard]] bool packResult(ResultDescription& description, const std::string& path, int level, PackedFile& packed,
                              std::string& error);

}  // namespace Inspect
