#pragma once

#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/PFilePayload.h>
#include <libcrossplatform/common/PFileTypes.h>

namespace PFile {

/// One section of a container: its header and its payload, as stored or uncompressed.
/// Every failure is told to the error callback, where one is set, and leaves the section usable; nothing throws,
/// allocation failure aside.
class VELTRA_EXPORT Section : public Dump::IDumpable {
 public:
  /// The most a compressed payload may claim to hold: the one allocation a file's content can ask for.
  static constexpr uint32_t MAX_UNCOMPRESSED = 8 * 1024 * 1024;

  Section() = default;
  Section(LogCallback debug, LogCallback warning, LogCallback error);

  /// Takes a payload, compresses it when asked to, and describes it in the header.
  /// @param flags      bit 0 compresses; the other bits are kept
  /// @param data,size  moved, never copied
  /// @param owned      true: `data` came from new[] and now belongs to the section, on failure too
  /// @param compLevel  zlib level 0 to 9; not looked at unless compressing. Levels of an earlier use combine with it
  ///                   for the compression itself.
  /// @return 0; -1 compression failed: the payload holds the bytes uncompressed, the header is not settled
  int set(unsigned short type, unsigned short version, SECTION_FLAGS flags, unsigned char* data, unsigned int size,
          bool owned, int compLevel);

  /// Replaces the payload by its compressed form, kept even where it is larger. The header is not touched: call
  /// header.updateData() afterwards.
  /// @return 0; -1 compressed already, no data, or zlib failed: the payload is then as it was
  int compressData();
  /// Replaces the payload by its original bytes. The header goes on describing the compressed ones.
  /// @return 0; -1 not compressed, no data, more than MAX_UNCOMPRESSED claimed, or zlib failed: the payload is then as
  ///         it was
  int uncompressData();

  /// True when the payload has the CRC-32 the header records; false too for a payload without bytes.
  bool verifyDataCrc() const;
  /// Whether the section is stored compressed.
  bool compressable() const { return (header.flags & SECTION_FLAG_COMPRESS) != 0; }

  /// Headers and payloads equal.
  bool operator==(const Section& other) const;
  bool operator!=(const Section& other) const { return !(*this == other); }
  /// The payload only at the full level.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  Header header;
  Payload payload;
  bool compressed = false;  ///< the payload holds the compressed form
  LogCallback debug = nullptr;
  LogCallback warning = nullptr;
  LogCallback error = nullptr;
};

}  // namespace PFile
