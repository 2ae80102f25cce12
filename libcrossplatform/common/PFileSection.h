#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/PFilePayload.h>
#include <libcrossplatform/common/PFileTypes.h>

namespace PFile {

/// One section of a container: its header and its payload, as stored or uncompressed.
/// Every failure is reported to the error callback, if one is set, and leaves the section usable; nothing throws
/// except a failed allocation.
class VELTRA_EXPORT Section : public Dump::IDumpable {
 public:
  /// The most bytes a compressed payload may claim: the only allocation whose size the content of a file sets.
  static constexpr uint32_t MAX_UNCOMPRESSED = 8 * 1024 * 1024;

  Section() = default;
  /// Callbacks for messages; null drops them.
  Section(LogCallback debug, LogCallback warning, LogCallback error);

  /// Takes a payload, compresses it if requested, and describes it in the header.
  /// @param flags      bit 0 compresses; the other bits are kept
  /// @param data,size  moved, never copied
  /// @param owned      true: `data` came from new[] and belongs to the section, even after a failure
  /// @param compLevel  zlib level 0 to 9; ignored unless compressing. Levels of an earlier use combine with it
  ///                   for the compression itself.
  /// @return 0; -1 compression failed: the payload holds the bytes uncompressed, the header is not settled
  [[nodiscard]] int set(unsigned short type, unsigned short version, SECTION_FLAGS flags, unsigned char* data,
                        unsigned int size, bool owned, int compLevel);

  /// Replaces the payload by its compressed form, even if that is larger. The header is unchanged: call
  /// header.updateData() afterwards.
  /// @return 0; -1 compressed already, no data, or zlib failed: the payload is then unchanged
  [[nodiscard]] int compressData();
  /// Replaces the payload by its original bytes. The header still describes the compressed ones.
  /// @return 0; -1 not compressed, no data, more than MAX_UNCOMPRESSED claimed, or zlib failed: payload unchanged
  [[nodiscard]] int uncompressData();

  /// True when the payload has the CRC-32 the header records; also false for a payload without bytes.
  bool verifyDataCrc() const;
  /// Whether the section is stored compressed.
  bool compressable() const { return (header.flags & SECTION_FLAG_COMPRESS) != 0; }

  /// Headers and payloads equal.
  bool operator==(const Section& other) const;
  bool operator!=(const Section& other) const { return !(*this == other); }
  /// The payload only at the full level.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  Header header;                  ///< of the stored form, also where the payload is uncompressed
  Payload payload;                ///< owned or borrowed as it says itself
  bool compressed = false;        ///< the payload holds the compressed form
  LogCallback debug = nullptr;    ///< receives what is done; null drops it
  LogCallback warning = nullptr;  ///< receives what is odd but done
  LogCallback error = nullptr;    ///< receives why a call failed
};

}  // namespace PFile
