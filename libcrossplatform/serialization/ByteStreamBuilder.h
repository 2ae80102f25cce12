#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/ByteStreamEncoder.h>

namespace Marshal {

/// Writes records into a buffer of its own, which grows geometrically past its first capacity.
class VELTRA_EXPORT ByteStreamBuilder final : public ByteStreamEncoder<ByteStreamBuilder> {
 public:
  /// @param capacity  bytes to allocate at once; 0 allocates with the first write
  explicit ByteStreamBuilder(uint32_t capacity = 0);
  ~ByteStreamBuilder() override;
  ByteStreamBuilder(const ByteStreamBuilder&) = delete;
  ByteStreamBuilder& operator=(const ByteStreamBuilder&) = delete;

  ///@{
  /// Null before the first allocation; moves when the buffer grows.
  uint8_t* data() { return _begin; }
  const uint8_t* data() const { return _begin; }
  ///@}
  uint32_t size() const { return static_cast<uint32_t>(_cursor - _begin); }  ///< bytes written

  /// Starts over in the same buffer: nothing is allocated for a record that fits.
  void reset();
  /// Gives the buffer to the caller, who releases it with delete[]; the stream is then empty and has none.
  uint8_t* release();

  uint32_t position() const override { return size(); }
  bool rewriteUInt32(uint32_t at, uint32_t value) override;
  WriteWindow window(uint32_t need) override {
    // A window with a null cursor would send even an empty record through the single operations.
    if ((!hasRoom(need) || _begin == nullptr) && !grow(need)) return {};
    return {_cursor, _end};
  }
  void advanceTo(uint8_t* cursor) override { _cursor = cursor; }
  /// True when the bytes would not fit 32-bit sizes: some were lost.
  bool failed() const override { return _failed; }

 private:
  friend ByteStreamEncoder<ByteStreamBuilder>;
  unsigned append(const void* data, uint32_t size);
  bool grow(uint32_t need);
  bool hasRoom(uint32_t need) const { return static_cast<std::size_t>(_end - _cursor) >= need; }

  uint8_t* _begin = nullptr;
  uint8_t* _cursor = nullptr;
  uint8_t* _end = nullptr;
  bool _failed = false;
};

}  // namespace Marshal
