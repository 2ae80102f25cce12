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

/// A result file as a person writes it down: docs/veltra-pack.md.
struct ResultDescription {
  Veltra::ResultSummary summary;
  std::vector<DescribedSection> sections;
};

/// Reads a description from JSON text.
/// @param payloads  directory that payload paths count from
/// @return false, with `error` naming the key, what was found and what is wanted
[[nodiscard]] bool parseDescription(const std::string& text, const std::string& payloads,
                                    ResultDescription& description, std::string& error);

/// What packing a description gave.
struct PackedFile {
  uint64_t bytes = 0;
  int sections = 0;  ///< file header and summary included
};

/// Writes a result file beside `path` and renames it into place.
/// @param level  zlib level 0 to 9 for the sections that are to be compressed
/// @return false, with `error` filled; the file at `path` is then as it was
[[nodiscard]] bool packResult(ResultDescription& description, const std::string& path, int level, PackedFile& packed,
                              std::string& error);

}  // namespace Inspect
