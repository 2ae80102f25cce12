#pragma once

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// What both readers do with a section once its stored bytes are its payload: check it, and uncompress it if requested.
/// @param onWrongCrc  called when the payload is not what the header records
/// @return 0; -1 wrong CRC-32 or bad zlib data
template <class OnWrongCrc>
[[nodiscard]] int settleSection(Section& section, bool uncompress, OnWrongCrc onWrongCrc) {
  if (!section.verifyDataCrc()) {
    onWrongCrc();
    return PFILE_FAILED;
  }
  section.compressed = section.compressable();
  // The size and CRC-32 of the original bytes are for the file header that a reader keeps. No caller sees that header,
  // so the second CRC-32 over all the data is not taken. The section's own header goes on describing the compressed
  // bytes.
  return section.compressed && uncompress ? section.uncompressData() : PFILE_OK;
}

}  // namespace PFile
