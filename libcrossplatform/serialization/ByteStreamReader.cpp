#include <libcrossplatform/serialization/ByteStreamReader.h>

#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Marshal {
namespace {
constexpr char SOURCE[] = "libcrossplatform/serialization/ByteStreamReader";
}

void ByteStreamReader::refuse(const uint8_t* p) {
  if (p == nullptr) Veltra::assertFatal("p != nullptr", SOURCE, 116);
  Veltra::assertFatal("size > 0", SOURCE, 117);
}

bool ByteStreamReader::seek(int offset, StreamPosition whence) {
  const uint32_t bases[] = {0, _position, _size};
  if (whence < STREAM_FROM_BEGIN || whence > STREAM_FROM_END) return false;
  const int64_t position = static_cast<int64_t>(bases[whence]) + offset;
  return position >= 0 && position <= _size && seekTo(static_cast<uint32_t>(position));
}

bool ByteStreamReader::seekTo(uint32_t position) {
  if (_status != STREAM_OK || position > _size) return false;
  _position = position;
  return true;
}

bool ByteStreamReader::has(uint32_t size) {
  if (_status == STREAM_OK && size > _size - _position) _status = STREAM_SHORT;
  return _status == STREAM_OK;
}

template <class T>
bool ByteStreamReader::get(T& value) {
  if (!has(sizeof(T))) return false;
  value = loadBig<T>(_data + _position);
  _position += static_cast<uint32_t>(sizeof(T));
  return true;
}

bool ByteStreamReader::readBool(bool& value) {
  return get(value);
}
bool ByteStreamReader::readUInt8(uint8_t& value) {
  return get(value);
}
bool ByteStreamReader::readInt8(int8_t& value) {
  return get(value);
}
bool ByteStreamReader::readUInt16(uint16_t& value) {
  return get(value);
}
bool ByteStreamReader::readInt16(int16_t& value) {
  return get(value);
}
bool ByteStreamReader::readUInt32(uint32_t& value) {
  return get(value);
}
bool ByteStreamReader::readInt32(int32_t& value) {
  return get(value);
}
bool ByteStreamReader::readUInt64(uint64_t& value) {
  return get(value);
}
bool ByteStreamReader::readInt64(int64_t& value) {
  return get(value);
}
bool ByteStreamReader::readFloat(float& value) {
  return get(value);
}
bool ByteStreamReader::readDouble(double& value) {
  return get(value);
}

bool ByteStreamReader::readBytes(uint8_t* data, uint32_t size) {
  if (!has(size)) return false;
  if (size != 0) std::memcpy(data, _data + _position, size);
  _position += size;
  return true;
}

bool ByteStreamReader::readString(std::string& value) {
  uint32_t size = 0;
  const uint32_t start = _position;
  if (!get(size)) return false;
  if (!has(size)) {
    _position = start;
    return false;
  }
  value.assign(reinterpret_cast<const char*>(_data + _position), size);
  _position += size;
  return true;
}

}  // namespace Marshal
