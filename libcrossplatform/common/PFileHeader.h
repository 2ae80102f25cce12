#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <array>
#include <cstdint>

#include <libcrossplatform/common/PFileTypes.h>
#include <libcrossplatform/serialization/ISerializable.h>

namespace PFile {

/// The 20 bytes before every section. On the wire: plain inline record, docs/format.md#section-header.
class VELTRA_EXPORT Header : public Marshal::ISerializable, public Dump::IDumpable {
 public:
  static constexpr uint16_t MAGIC = 0x5046;                     ///< the letters "PF"
  static constexpr uint32_t BYTES = 2 + 2 + 2 + 2 + 4 + 4 + 4;  ///< magic type version flags dataSize dataCrc hdrCrc
  static constexpr uint32_t HDR_CRC_BYTES = BYTES - sizeof(uint32_t);  ///< what hdrCrc covers

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// Reads all seven fields; neither the magic nor a CRC is checked.
  /// @return 0, or -3 when the stream ran out
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  /// Describes a payload: replaces type, version and flags, adds the level, then updateData().
  void set(unsigned short type, unsigned short version, unsigned short flags, int compLevel, unsigned int size,
           unsigned char const* data);
  /// Adds a zlib level (0 to 9) to bits 12 to 15 of the flags. Bits already there stay: two levels combine.
  void storeCompLevel(int level);
  int getCompLevel() const { return flags >> 12; }  ///< 0 to 9; up to 15 where two levels combined
  /// Takes size and CRC-32 of `data`, then the CRC-32 of this header. `data` may be null when `size` is 0.
  void updateData(unsigned int size, unsigned char const* data);
  /// Whether hdrCrc is that of the other members.
  bool verifyHdrCrc() const;
  /// The header as stored in a file.
  std::array<uint8_t, BYTES> bytes() const;

  bool operator==(const Header& other) const;
  bool operator!=(const Header& other) const { return !(*this == other); }
  void clear() { *this = Header(); }

  uint16_t magic = MAGIC;  ///< kept as read; no setter changes it
  uint16_t type = 0;       ///< section type id
  uint16_t version = 0;    ///< version of the section's content
  uint16_t flags = 0;      ///< bit 0: stored compressed; bits 12 to 15: zlib level; the rest is the caller's
  uint32_t dataSize = 0;   ///< payload bytes after the header, the compressed size for a compressed section
  uint32_t dataCrc = 0;    ///< CRC-32 of those bytes
  uint32_t hdrCrc = 0;     ///< CRC-32 of the 16 bytes before it

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  void fields(Fields& f) {
    f.u16("magic", magic);
    f.u16("type", type);
    f.u16("version", version);
    f.u16("flags", flags);
    f.u32("dataSize", dataSize);
    f.u32("dataCrc", dataCrc);
    f.u32("hdrCrc", hdrCrc);
  }
  uint32_t computeHdrCrc() const;
};

/// The first section of every container: a header and the total length.
constexpr uint32_t FILE_HEADER_BYTES = Header::BYTES + sizeof(uint32_t);

/// The CRC-32 of zlib and PNG, continued from `crc`: 0 before the first bytes, then what the bytes so far gave. `crc`
/// for no bytes; `data` may then be null.
VELTRA_EXPORT uint32_t crc32Of(unsigned char const* data, unsigned int size, uint32_t crc = 0);

}  // namespace PFile
