#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/IObjectReader.h>

namespace Marshal {

/// Reads records from a caller's buffer, which it borrows. After the first failed read the status stays -3.
class VELTRA_EXPORT ByteStreamReader final : public IObjectReader {
 public:
  /// A null buffer and a size of 0 are fatal assertions: check for them where the bytes come from outside.
  ByteStreamReader(const uint8_t* p, uint32_t size) : _data(p), _size(size) {
    if (p == nullptr || size == 0) refuse(p);
  }

  /// Goes `offset` bytes from `whence`.
  /// @return false, with the position unchanged, outside 0..size, for an unknown `whence`, and after a failed read
  bool seek(int offset, StreamPosition whence);

  uint32_t position() const override { return _position; }
  bool readBool(bool& value) override;
  bool readUInt8(uint8_t& value) override;
  bool readInt8(int8_t& value) override;
  bool readUInt16(uint16_t& value) override;
  bool readInt16(int16_t& value) override;
  bool readUInt32(uint32_t& value) override;
  bool readInt32(int32_t& value) override;
  bool readUInt64(uint64_t& value) override;
  bool readInt64(int64_t& value) override;
  bool readFloat(float& value) override;
  bool readDouble(double& value) override;
  bool readBytes(uint8_t* data, uint32_t size) override;
  bool readString(std::string& value) override;
  StreamOpStatus status() const override { return _status; }
  ReadWindow window() override {
    if (_status != STREAM_OK) return {};
    return {_data + _position, _data + _size};
  }
  void advanceTo(const uint8_t* cursor) override { _position = static_cast<uint32_t>(cursor - _data); }
  bool seekTo(uint32_t position) override;

 private:
  [[noreturn]] static void refuse(const uint8_t* p);
  template <class T>
  VELTRA_HIDDEN bool get(T& value);
  bool has(uint32_t size);

  const uint8_t* _data;
  uint32_t _position = 0;
  uint32_t _size;
  StreamOpStatus _status = STREAM_OK;
};

}  // namespace Marshal
