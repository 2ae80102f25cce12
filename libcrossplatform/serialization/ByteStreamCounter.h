#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/ByteStreamEncoder.h>

namespace Marshal {

/// A stream that only counts bytes: the size of a record, before a buffer is allocated for it.
class ByteStreamCounter final : public ByteStreamEncoder<ByteStreamCounter> {
 public:
  /// Bytes counted so far.
  uint32_t size() const { return _size; }

  uint32_t position() const override { return _size; }
  bool rewriteUInt32(uint32_t, uint32_t) override { return true; }
  bool countsOnly() const override { return true; }
  void skip(uint32_t bytes) override { _size += bytes; }

 private:
  friend ByteStreamEncoder<ByteStreamCounter>;
  unsigned append(const void*, uint32_t size) {
    _size += size;
    return size;
  }

  uint32_t _size = 0;
};

}  // namespace Marshal
