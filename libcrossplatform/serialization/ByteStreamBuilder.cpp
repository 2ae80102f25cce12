#include <libcrossplatform/serialization/ByteStreamBuilder.h>

#include <algorithm>
#include <limits>

namespace Marshal {
namespace {
constexpr uint32_t FIRST_CAPACITY = 128;
}

ByteStreamBuilder::ByteStreamBuilder(uint32_t capacity) {
  if (capacity == 0) return;
  _begin = _cursor = new uint8_t[capacity];
  _end = _begin + capacity;
}

ByteStreamBuilder::~ByteStreamBuilder() {
  delete[] _begin;
}

void ByteStreamBuilder::reset() {
  _cursor = _begin;
  _failed = false;
}

uint8_t* ByteStreamBuilder::release() {
  uint8_t* const buffer = _begin;
  _begin = _cursor = _end = nullptr;
  _failed = false;
  return buffer;
}

bool ByteStreamBuilder::rewriteUInt32(uint32_t at, uint32_t value) {
  if (size() < sizeof value || at > size() - sizeof value) return false;
  storeBig(_begin + at, value);
  return true;
}

unsigned ByteStreamBuilder::append(const void* data, uint32_t size) {
  if (!hasRoom(size) && !grow(size)) return 0;
  if (size != 0) std::memcpy(_cursor, data, size);
  _cursor += size;
  return size;
}

bool ByteStreamBuilder::grow(uint32_t need) {
  constexpr uint32_t MOST = std::numeric_limits<uint32_t>::max();
  const auto capacity = static_cast<uint32_t>(_end - _begin);
  if (_failed || need > MOST - size()) {
    _failed = true;
    return false;
  }
  const uint32_t doubled = capacity > MOST / 2 ? MOST : 2 * capacity;
  const uint32_t wanted = std::max({size() + need, doubled, FIRST_CAPACITY});
  uint8_t* const buffer = new uint8_t[wanted];
  const uint32_t used = size();
  // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): bytes in use are never null
  if (used != 0) std::memcpy(buffer, _begin, used);
  delete[] _begin;
  _begin = buffer;
  _cursor = buffer + used;
  _end = buffer + wanted;
  return true;
}

}  // namespace Marshal
