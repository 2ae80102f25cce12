#pragma once

#include <libcrossplatform/common/PFileHeader.h>

#include "FuzzInput.h"

/// A container taken apart as far as its headers go, whatever they say, to be changed and put together again.
namespace Fuzz {

struct ImageSection {
  PFile::Header header;
  Bytes payload;
};

struct Image {
  std::vector<ImageSection> sections;
  Bytes rest;  ///< what is too short for a header
};

/// A section that claims more than there is gets what there is.
Image parseImage(const uint8_t* data, std::size_t size);

/// The bytes of an image as it stands: headers are not looked at.
Bytes joinImage(const Image& image);

/// Makes sizes, both CRC-32 of every section and the total length in the file header right.
void repairImage(Image& image);

/// Makes the header's own CRC-32 right, and leaves what the header claims.
void repairHeader(PFile::Header& header);

/// How much of compressed payloads one input may ask for. The library bounds each one; many of them would only make
/// the fuzzer slow.
class DeclaredSizes {
 public:
  /// @param payload  as stored: what it claims to hold counts when its section is compressed
  /// @return false once there is more than the budget
  bool allow(const PFile::Header& header, const uint8_t* payload, std::size_t size);

 private:
  static constexpr uint64_t BUDGET = 8 * 1024 * 1024;
  uint64_t _declared = 0;
};

}  // namespace Fuzz
