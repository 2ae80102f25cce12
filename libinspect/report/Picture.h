#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <libinspect/records/KnownPayload.h>

namespace Inspect {

/// A picture that is a part of the page.
struct Picture {
  std::string uri;  ///< "data:image/png;base64,..."
  uint32_t width = 0, height = 0;

  static constexpr std::size_t MOST_BYTES = std::size_t{256} * 1024;        ///< of a PNG or JPEG of a result
  static constexpr std::size_t MOST_LOGO_BYTES = std::size_t{1024} * 1024;  ///< of the logo
  static constexpr uint64_t MOST_PIXELS = uint64_t{8} * 1024 * 1024;        ///< that a reader's machine has to hold
};

inline uint64_t pixelsOf(const ImageInfo& info) {
  return uint64_t{info.width} * info.height;
}

/// Makes a picture of the bytes of one: PNG and JPEG as they are, if they have at most `most` bytes; PGM becomes PNG.
/// Every pixel of a PNG is decoded; of a JPEG the structure is checked.
/// @param purpose  for `error`: " as the logo", or ""
/// @return false, with `error` saying what was expected and found
[[nodiscard]] bool makePicture(const std::vector<uint8_t>& bytes, std::size_t most, const char* purpose,
                               Picture& picture, std::string& error);

/// Reads the logo of a job, PNG or JPEG.
/// @return false, with `error` naming the file, what was expected and what was found
[[nodiscard]] bool readLogo(const std::string& path, Picture& picture, std::string& error);

}  // namespace Inspect
