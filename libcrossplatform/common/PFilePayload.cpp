#include <libcrossplatform/common/PFilePayload.h>

#include <cstring>

namespace PFile {

void Payload::reset() {
  if (_owned) delete[] _data;
  _data = nullptr;
  _size = 0;
  _owned = false;
}

void Payload::set(unsigned int size, unsigned char const* data, bool owned) {
  reset();
  _size = size;
  _data = data;
  _owned = owned;
}

bool Payload::operator==(const Payload& other) const {
  if (_size != other._size) return false;
  if (_data == nullptr || other._data == nullptr) return _data == other._data;
  return _size == 0 || std::memcmp(_data, other._data, _size) == 0;
}

void Payload::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.beginObject("Payload");
  formatter.field("size", _size);
  formatter.field("Payload Data", _data, _data != nullptr ? _size : 0);
  formatter.endObject();
}

}  // namespace PFile
