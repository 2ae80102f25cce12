#include <libcrossplatform/serialization/IObjectReader.h>

#include <cstring>

namespace Marshal {

uint32_t IObjectReader::position() const {
  return NO_POSITION;
}

bool IObjectReader::readUInt64(uint64_t& value) {
  int64_t bits = 0;
  if (!readInt64(bits)) return false;
  value = static_cast<uint64_t>(bits);
  return true;
}

bool IObjectReader::readDouble(double& value) {
  uint64_t bits = 0;
  if (!readUInt64(bits)) return false;
  std::memcpy(&value, &bits, sizeof value);
  return true;
}

ReadWindow IObjectReader::window() {
  return {};
}

void IObjectReader::advanceTo(const uint8_t*) {}

bool IObjectReader::seekTo(uint32_t) {
  return false;
}

void IObjectReader::beginField(const char*) {}

void IObjectReader::beginRecord(const char*) {}

void IObjectReader::endRecord() {}

void IObjectReader::reservedReader17() {}
void IObjectReader::reservedReader18() {}
void IObjectReader::reservedReader19() {}
void IObjectReader::reservedReader23() {}
void IObjectReader::reservedReader24() {}
void IObjectReader::reservedReader26() {}
void IObjectReader::reservedReader27() {}

}  // namespace Marshal
