#pragma once

#include <cstring>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/IObjectWriter.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Bench {

/// What a caller's own stream is: the named operations alone, no window, no position. Every field is a virtual call,
/// and the length of a record is counted before it.
class OwnWriter final : public Marshal::IObjectWriter {
 public:
  explicit OwnWriter(uint8_t* to) : _to(to) {}

  unsigned writeBool(bool v) override { return put(v); }
  unsigned writeUInt8(uint8_t v) override { return put(v); }
  unsigned writeInt8(int8_t v) override { return put(v); }
  unsigned writeUInt16(uint16_t v) override { return put(v); }
  unsigned writeInt16(int16_t v) override { return put(v); }
  unsigned writeUInt32(uint32_t v) override { return put(v); }
  unsigned writeInt32(int32_t v) override { return put(v); }
  unsigned writeInt64(int64_t v) override { return put(v); }
  unsigned writeFloat(float v) override { return put(v); }
  unsigned writeBytes(const uint8_t* data, uint32_t size) override {
    std::memcpy(_to, data, size);
    _to += size;
    return size;
  }
  unsigned writeString(const std::string& v) override {
    const auto size = static_cast<uint32_t>(v.size());
    return put(size) + writeBytes(reinterpret_cast<const uint8_t*>(v.data()), size);
  }

 private:
  template <class T>
  unsigned put(T value) {
    Marshal::storeBig(_to, value);
    _to += sizeof(T);
    return sizeof(T);
  }

  uint8_t* _to;
};

/// The counterpart for reading.
class OwnReader final : public Marshal::IObjectReader {
 public:
  OwnReader(const uint8_t* from, uint32_t size) : _in(from, size) {}

  bool readBool(bool& v) override { return _in.readBool(v); }
  bool readUInt8(uint8_t& v) override { return _in.readUInt8(v); }
  bool readInt8(int8_t& v) override { return _in.readInt8(v); }
  bool readUInt16(uint16_t& v) override { return _in.readUInt16(v); }
  bool readInt16(int16_t& v) override { return _in.readInt16(v); }
  bool readUInt32(uint32_t& v) override { return _in.readUInt32(v); }
  bool readInt32(int32_t& v) override { return _in.readInt32(v); }
  bool readInt64(int64_t& v) override { return _in.readInt64(v); }
  bool readFloat(float& v) override { return _in.readFloat(v); }
  bool readBytes(uint8_t* data, uint32_t size) override { return _in.readBytes(data, size); }
  bool readString(std::string& v) override { return _in.readString(v); }
  Marshal::StreamOpStatus status() const override { return _in.status(); }

 private:
  Marshal::ByteStreamReader _in;
};

}  // namespace Bench
