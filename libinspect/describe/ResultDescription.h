#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/PFile.h>
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

/// Reads a summary from its description, an object; members that are missing stay as they are.
/// @param text  that it was parsed from
/// @return false, with `error` naming the member after "summary."
[[nodiscard]] bool parseSummary(const Json::Value& json, const std::string& text, Veltra::ResultSummary& summary,
                                std::string& error);

/// Writes a result file next to its path, and renames it into place: without commit() the file at the path stays as it
/// is. Functions return false with `error` filled; `errno` is then the reason if the error ends with its text.
class ResultWriter {
 public:
  [[nodiscard]] bool open(const std::string& path, std::string& error);
  /// Call it once, before anything else.
  [[nodiscard]] bool writeSummary(Veltra::ResultSummary& summary, std::string& error);
  /// Whether a payload can be written.
  /// @param name  what the error calls it
  static bool isPayload(const std::string& name, uint64_t size, bool compresses, std::string& error);
  /// Appends a section.
  /// @param described  what to write; its payload is not read
  /// @param level      zlib level 0 to 9
  /// @param bytes      borrowed, of a size that isPayload()
  /// @throw std::bad_alloc
  [[nodiscard]] bool write(const DescribedSection& described, int level, const uint8_t* bytes, uint32_t size,
                           std::string& error);
  uint32_t bytes() { return _file.writer().size(); }  ///< written so far
  [[nodiscard]] bool commit(std::string& error);

 private:
  PFile::SafeFileWriter _file;
  std::string _path;
};

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
