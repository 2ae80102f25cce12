#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// A stretch of the input that no intact section covers.
struct LostRange {
  uint64_t offset = 0;
  uint64_t bytes = 0;
};

struct Recovery {
  std::vector<SectionInfo> kept;  ///< numbered as in the output, 1 and on
  std::vector<LostRange> lost;
  bool isContainer = false;  ///< the input begins with a file header, closed or not
  bool wasClosed = false;    ///< the input had a file header that verified
  uint64_t missing = 0;      ///< bytes that its recorded length exceeds the input by
};

/// Finds every section whose header and data verify. After damage it searches for the next header that verifies, from
/// just after the damaged section's own header, since its length may be wrong. Linear in the size of the input,
/// whatever it claims. Ends early when the source fails: check hasFailed().
Recovery findSections(const ByteSource& source);

/// Writes the sections found, byte for byte, into a new container next to `path` and renames it into place.
/// @return false, with `error` filled; the file at `path` is then unchanged
[[nodiscard]] bool writeRecovered(const ByteSource& source, const Recovery& recovery, const std::string& path,
                                  std::string& error);

}  // namespace Inspect
