#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>
#include <string>

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/MarshalTypes.h>

namespace Marshal {

/// Bytes of a reader's own buffer that are still to be read.
struct ReadWindow {
  const uint8_t* cursor = nullptr;  ///< the next byte
  const uint8_t* end = nullptr;     ///< after the last one
};

/// A stream that records read themselves from; the counterpart of IObjectWriter, with its own order of operations.
/// A custom stream only needs the pure ones.
/// A read returns true when the value was read. After one failure every later read fails, consumes nothing and leaves
/// its target unchanged.
class VELTRA_EXPORT IObjectReader {
 public:
  /// What position() gives for a stream without positions.
  static constexpr uint32_t NO_POSITION = 0xFFFFFFFF;

  virtual ~IObjectReader() = default;
  /// Bytes read so far; NO_POSITION for a stream without positions: lengths are then not compared, and a type id
  /// cannot be peeked at.
  virtual uint32_t position() const;
  ///@{
  /// Reads a number of that width, big-endian. @return false, with `value` unchanged, when it was not there
  virtual bool readUInt8(uint8_t& value) = 0;
  virtual bool readInt8(int8_t& value) = 0;
  virtual bool readUInt16(uint16_t& value) = 0;
  virtual bool readInt16(int16_t& value) = 0;
  virtual bool readUInt32(uint32_t& value) = 0;
  virtual bool readInt32(int32_t& value) = 0;
  virtual bool readUInt64(uint64_t& value);
  virtual bool readInt64(int64_t& value) = 0;
  ///@}
  /// Reads exactly `size` bytes into the caller's buffer. @return false when there were fewer: none is consumed
  virtual bool readBytes(uint8_t* data, uint32_t size) = 0;

  /// What is left, to be read in place; an empty window with a null cursor when the stream offers none or has failed.
  /// Valid until the next call of any operation.
  virtual ReadWindow window();
  /// Counts the window up to `cursor` as read.
  virtual void advanceTo(const uint8_t* cursor);
  /// Goes to a position that position() gave. False when it cannot.
  virtual bool seekTo(uint32_t position);
  /// Receives the name of the field about to be read. Called only for a stream without a window, for tracing.
  virtual void beginField(const char* name);
  ///@{
  /// The same for the beginning of a nested record or of a record's header, and for its end.
  virtual void beginRecord(const char* name);
  virtual void endRecord();
  ///@}
  ///@{
  /// Fill the order of the operations; they do nothing and are never called.
  virtual void reservedReader17();
  virtual void reservedReader18();
  virtual void reservedReader19();
  ///@}
  /// Reads one byte, true unless it is 0. @return as readUInt8()
  virtual bool readBool(bool& value) = 0;
  ///@{
  /// Reads the IEEE 754 bits, not-a-number among them. @return as readUInt8()
  virtual bool readFloat(float& value) = 0;
  virtual bool readDouble(double& value);
  ///@}
  ///@{
  /// See reservedReader17().
  virtual void reservedReader23();
  virtual void reservedReader24();
  ///@}
  /// Reads a `u32` byte count and that many bytes; zeros inside are kept.
  /// @return false, with `value` unchanged and nothing consumed, when there were fewer
  virtual bool readString(std::string& value) = 0;
  ///@{
  /// See reservedReader17().
  virtual void reservedReader26();
  virtual void reservedReader27();
  ///@}
  /// STREAM_OK as long as every read succeeded, STREAM_SHORT from the first that did not.
  virtual StreamOpStatus status() const = 0;
};

}  // namespace Marshal
