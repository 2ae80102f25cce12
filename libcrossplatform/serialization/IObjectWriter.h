#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>
#include <string>

#include <libcrossplatform/logging/Export.h>

namespace Marshal {

/// Free room in a writer's own buffer.
struct WriteWindow {
  uint8_t* cursor = nullptr;  ///< where the next byte goes
  uint8_t* end = nullptr;     ///< after the last byte of room
};

/// A stream that records write themselves to: big-endian, two's complement, one operation for each wire kind.
/// The order of the virtual operations is fixed: writers and records are built separately. A custom stream only needs
/// the pure ones; the others make writing fast or fill the order. Every write returns the number of bytes written, 0
/// when it failed; records ignore it.
class VELTRA_EXPORT IObjectWriter {
 public:
  /// What position() gives for a stream that cannot rewrite.
  static constexpr uint32_t NO_POSITION = 0xFFFFFFFF;

  virtual ~IObjectWriter() = default;
  /// Writes one byte, 0 or 1. @return 1, or 0 when it failed
  virtual unsigned writeBool(bool value) = 0;
  /// Bytes written so far by a stream that can rewrite a word; NO_POSITION by one that cannot.
  virtual uint32_t position() const;
  ///@{
  /// Writes a number of that width, big-endian, two's complement. @return its width in bytes, or 0 when it failed
  virtual unsigned writeUInt8(uint8_t value) = 0;
  virtual unsigned writeInt8(int8_t value) = 0;
  virtual unsigned writeUInt16(uint16_t value) = 0;
  virtual unsigned writeInt16(int16_t value) = 0;
  virtual unsigned writeUInt32(uint32_t value) = 0;
  virtual unsigned writeInt32(int32_t value) = 0;
  virtual unsigned writeUInt64(uint64_t value);
  virtual unsigned writeInt64(int64_t value) = 0;
  ///@}
  ///@{
  /// Writes the IEEE 754 bits as they are. @return 4 or 8, or 0 when it failed
  virtual unsigned writeFloat(float value) = 0;
  virtual unsigned writeDouble(double value);
  ///@}
  /// Replaces the four bytes at position `at`, which must have been written. False when it cannot.
  virtual bool rewriteUInt32(uint32_t at, uint32_t value);
  /// Writes the bytes as they are; the stream copies them. @return `size`, or 0 when it failed
  virtual unsigned writeBytes(const uint8_t* data, uint32_t size) = 0;

  /// Offers at least `need` bytes of room to be filled in place; an empty window when the stream has none to offer.
  /// Valid until the next call of any operation.
  virtual WriteWindow window(uint32_t need);
  /// Counts what was stored into the window, up to `cursor`, as written.
  virtual void advanceTo(uint8_t* cursor);
  ///@{
  /// True for a stream that only counts: skip() then stands for any writes of as many bytes.
  virtual bool countsOnly() const;
  virtual void skip(uint32_t bytes);
  ///@}
  /// True when a write was lost: the bytes so far are not the whole record.
  virtual bool failed() const;
  ///@{
  /// Fill the order of the operations; they do nothing and are never called.
  virtual void reservedWriter20();
  virtual void reservedWriter21();
  virtual void reservedWriter22();
  virtual void reservedWriter23();
  virtual void reservedWriter24();
  ///@}
  /// Writes a `u32` byte count and the bytes. @return 4 plus their number, or 0 when it failed
  virtual unsigned writeString(const std::string& value) = 0;
};

}  // namespace Marshal
