#pragma once

#include <string>
#include <vector>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/IObjectWriter.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace RecordTesting {

using Bytes = std::vector<uint8_t>;

/// A caller's own stream: the pure operations alone, no window, no position. What it writes must be what the library's
/// builder writes.
class PlainWriter : public Marshal::IObjectWriter {
 public:
  Bytes bytes;

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
    bytes.insert(bytes.end(), data, data + size);
    return size;
  }
  unsigned writeString(const std::string& v) override {
    put(static_cast<uint32_t>(v.size()));
    return writeBytes(reinterpret_cast<const uint8_t*>(v.data()), static_cast<uint32_t>(v.size()));
  }

 private:
  template <class T>
  unsigned put(T value) {
    const std::size_t at = bytes.size();
    bytes.resize(at + sizeof(T));
    Marshal::storeBig(&bytes[at], value);
    return sizeof(T);
  }
};

/// The counterpart for reading; forwards to a ByteStreamReader but offers neither window nor position.
class PlainReader : public Marshal::IObjectReader {
 public:
  explicit PlainReader(const Bytes& bytes) : PlainReader(bytes.data(), static_cast<uint32_t>(bytes.size())) {}
  /// @param positioned  tell the position all the same
  PlainReader(const uint8_t* data, uint32_t size, bool positioned = false) : _in(data, size), _positioned(positioned) {}
  uint32_t consumed() const { return _in.position(); }

  uint32_t position() const override { return _positioned ? _in.position() : NO_POSITION; }
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
  bool _positioned = false;
};

}  // namespace RecordTesting
