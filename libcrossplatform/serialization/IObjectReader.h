#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>
#include <string>

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/MarshalTypes.h>

namespace Marshal {

/// Bytes of a reader's own buffer that are still to be read.
struct ReadWindow {
  const uint8_t* cursor = nullptr;
  const uint8_t* end = nullptr;
};

/// A stream that records read themselves from; the counterpart of IObjectWriter, with its own order of operations.
/// A custom stream only needs the pure ones.
/// A read returns true when the value was read. After one failure every later read fails, consumes nothing and leaves
/// its target unchanged.
class VELTRA_EXPORT IObjectReader {
 public:
  static constexpr uint32_t NO_POSITION = 0xFFFFFFFF;

  virtual ~IObjectReader() = default;
  /// Bytes read so far; NO_POSITION for a stream without positions: lengths are then not compared, and a type id
  /// cannot be peeked at.
  virtual uint32_t position() const;
  virtual bool readUInt8(uint8_t& value) = 0;
  virtual bool readInt8(int8_t& value) = 0;
  virtual bool readUInt16(uint16_t& value) = 0;
  virtual bool readInt16(int16_t& value) = 0;
  virtual bool readUInt32(uint32_t& value) = 0;
  virtual bool readInt32(int32_t& value) = 0;
  virtual bool readUInt64(uint64_t& value);
  virtual bool readInt64(int64_t& value) = 0;
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
  /// The same for the beginning of a nested record or of a record's header, and for its end.
  virtual void beginRecord(const char* name);
  virtual void endRecord();
  // The rest of the order up to readBool().
  virtual void reservedReader17();
  virtual void reservedReader18();
  virtual void reservedReader19();
  virtual bool readBool(bool& value) = 0;
  virtual bool readFloat(float& value) = 0;
  virtual bool readDouble(double& value);
  virtual void reservedReader23();
  virtual void reservedReader24();
  virtual bool readString(std::string& value) = 0;
  virtual void reservedReader26();
  virtual void reservedReader27();
  /// 0 as long as every read succeeded.
  virtual StreamOpStatus status() const = 0;
};

}  // namespace Marshal
