#include <libcrossplatform/serialization/IObjectWriter.h>

#include <cstring>

namespace Marshal {

uint32_t IObjectWriter::position() const {
  return NO_POSITION;
}

unsigned IObjectWriter::writeUInt64(uint64_t value) {
  return writeInt64(static_cast<int64_t>(value));
}

unsigned IObjectWriter::writeDouble(double value) {
  uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return writeUInt64(bits);
}

bool IObjectWriter::rewriteUInt32(uint32_t, uint32_t) {
  return false;
}

WriteWindow IObjectWriter::window(uint32_t) {
  return {};
}

void IObjectWriter::advanceTo(uint8_t*) {}

bool IObjectWriter::countsOnly() const {
  return false;
}

void IObjectWriter::skip(uint32_t) {}

bool IObjectWriter::failed() const {
  return false;
}

void IObjectWriter::reservedWriter20() {}
void IObjectWriter::reservedWriter21() {}
void IObjectWriter::reservedWriter22() {}
void IObjectWriter::reservedWriter23() {}
void IObjectWriter::reservedWriter24() {}

}  // namespace Marshal
