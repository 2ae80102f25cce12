#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// A stretch of the input that no intact section covers.
struct LostRange {
  uint64_t offset = 0;
  uint64_t bytes = 0;
};
Json::Value toJson(const LostRange& lost);

/// A section that could not be kept.
struct LostSection {
  SectionInfo section;    ///< numbered as in the input; of a header that does not verify only number and offset count
  bool hasHeader = true;  ///< its header verifies: its type is known
  Finding why;
};
Json::Value toJson(const LostSection& lost);

struct Recovery {
  static constexpr std::size_t MOST_LOST_SECTIONS = 1000;  ///< a hostile file may have one every few bytes

  std::vector<SectionInfo> kept;  ///< numbered as in the output, 1 and on
  std::vector<LostRange> lost;
  std::vector<LostSection> lostSections;  ///< the first MOST_LOST_SECTIONS
  uint64_t lostSectionsLeftOut = 0;
  bool isSummaryLost = false;  ///< a result summary is among those lost, or must be: test data was kept without one
  bool isContainer = false;    ///< the input begins with a file header, closed or not
  bool wasClosed = false;      ///< the input had a file header that verified
  uint64_t missing = 0;        ///< bytes that its recorded length exceeds the input by
};

/// What is known of a recovery as JSON, without its lists.
Json::Value toJson(const Recovery& recovery);

/// Finds every section whose header and data verify. After damage it searches for the next header that verifies, from
/// just after the damaged section's own header, since its length may be wrong. Linear in the size of the input,
/// whatever it claims. Ends early when the source fails: check hasFailed().
Recovery findSections(const ByteSource& source);

/// Writes the sections found, byte for byte, into a new container next to `path`, reads it back, and renames it into
/// place if every section is as it was kept.
/// @return false, with `error` filled; the file at `path` is then unchanged
[[nodiscard]] bool writeRecovered(const ByteSource& source, const Recovery& recovery, const std::string& path,
                                  std::string& error);

enum class WriteOutcome {
  WRITTEN,
  NOT_READ,     ///< the input is at fault: it failed, was changed, or has more than a container can hold
  NOT_WRITTEN,  ///< the output is, and probably the next one
};
/// The same into a file that is open, which is left to the caller to commit.
/// @param path  what the error calls it
[[nodiscard]] WriteOutcome writeRecovered(const ByteSource& source, const Recovery& recovery,
                                          Veltra::FileReplacement& file, const std::string& path, std::string& error);

/// The container of the sections found: a file header, and parts of the input.
struct RecoveredLayout {
  struct Part {
    uint64_t offset = 0;  ///< in the input
    uint64_t bytes = 0;
  };

  std::array<uint8_t, PFile::FILE_HEADER_BYTES> header;
  std::vector<Part> parts;  ///< in order, as few as can be
};
/// What writeRecovered() writes, for those who put it together themselves.
/// @return false, with `error` naming the input, if it is more than a container can hold
[[nodiscard]] bool layOut(const ByteSource& source, const Recovery& recovery, RecoveredLayout& layout,
                          std::string& error);

/// Whether a file has the bytes that writeRecovered() writes.
bool isRecovered(const ByteSource& source, const Recovery& recovery, const ByteSource& file);

}  // namespace Inspect
