#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/IObjectWriter.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Marshal {

/// The writer operations over one `append`, shared by the stream that builds and the one that counts, so that
/// both give the same size. `Stream` has `unsigned append(const void* bytes, uint32_t size)`.
template <class Stream>
class ByteStreamEncoder : public IObjectWriter {
 public:
  unsigned writeBool(bool v) final { return put(v); }
  unsigned writeUInt8(uint8_t v) final { return put(v); }
  unsigned writeInt8(int8_t v) final { return put(v); }
  unsigned writeUInt16(uint16_t v) final { return put(v); }
  unsigned writeInt16(int16_t v) final { return put(v); }
  unsigned writeUInt32(uint32_t v) final { return put(v); }
  unsigned writeInt32(int32_t v) final { return put(v); }
  unsigned writeUInt64(uint64_t v) final { return put(v); }
  unsigned writeInt64(int64_t v) final { return put(v); }
  unsigned writeFloat(float v) final { return put(v); }
  unsigned writeDouble(double v) final { return put(v); }
  unsigned writeBytes(const uint8_t* data, uint32_t size) final { return append(data, size); }
  /// A `u32` byte count and the bytes.
  unsigned writeString(const std::string& v) final {
    const auto size = static_cast<uint32_t>(v.size());
    const unsigned word = put(size);
    return word + append(v.data(), size);
  }

 private:
  template <class T>
  unsigned put(T value) {
    uint8_t bytes[sizeof(T)];
    storeBig(bytes, value);
    return append(bytes, sizeof(T));
  }
  unsigned append(const void* data, uint32_t size) { return static_cast<Stream*>(this)->append(data, size); }
};

}  // namespace Marshal
