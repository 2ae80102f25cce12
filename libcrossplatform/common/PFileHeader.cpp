#include <libcrossplatform/common/PFileHeader.h>

#include <libdeflate.h>

#include <libcrossplatform/serialization/FieldCodec.h>

namespace PFile {

// The one place where a CRC-32 is taken. zlib's has the same values and takes several times as long on processors with
// instructions for it.
uint32_t crc32Of(unsigned char const* data, unsigned int size, uint32_t crc) {
  return size == 0 ? crc : libdeflate_crc32(crc, data, size);  // for null data it would return its start value
}

unsigned Header::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writePlain(*this, out);
}

Marshal::StreamOpStatus Header::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readPlain(*this, in);
}

void Header::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.beginObject("Header");
  formatter.field("type", type);
  formatter.field("version", version);
  formatter.field("flags", flags);
  formatter.field("dataSize", dataSize);
  formatter.field("dataCrc", dataCrc);
  formatter.field("hdrCrc", hdrCrc);
  formatter.endObject();
}

void Header::set(unsigned short newType, unsigned short newVersion, unsigned short newFlags, int compLevel,
                 unsigned int size, unsigned char const* data) {
  type = newType;
  version = newVersion;
  flags = newFlags;
  storeCompLevel(compLevel);
  updateData(size, data);
}

void Header::storeCompLevel(int level) {
  // The old bits are not cleared: a section used again combines the levels. Files in the field carry such flags.
  flags = static_cast<uint16_t>(flags | (static_cast<unsigned>(level) << 12));
}

void Header::updateData(unsigned int size, unsigned char const* data) {
  dataSize = size;
  dataCrc = crc32Of(data, size);
  hdrCrc = computeHdrCrc();
}

bool Header::verifyHdrCrc() const {
  return computeHdrCrc() == hdrCrc;
}

std::array<uint8_t, Header::BYTES> Header::bytes() const {
  std::array<uint8_t, BYTES> image{};
  Marshal::FieldEncoder<Marshal::FixedOut> out(Marshal::NO_CLASS_VERSION, image.data());
  Header copy(*this);  // a field list is walked through references to members that may change
  copy.fields(out);
  return image;
}

bool Header::operator==(const Header& other) const {
  return bytes() == other.bytes();
}

uint32_t Header::computeHdrCrc() const {
  return crc32Of(bytes().data(), HDR_CRC_BYTES);
}

}  // namespace PFile
