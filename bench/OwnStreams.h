#pragma once

#include <cstring>

#include <libcrossplatform/serialization/IObjectWriter.h>
#include <libcrossplatform/serialization/WireBytes.h>
#include <tests/PlainStreams.h>

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

/// The counterpart for reading, as the tests have it.
using OwnReader = RecordTesting::PlainReader;

}  // namespace Bench
