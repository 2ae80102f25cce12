#include "ContainerImage.h"

#include <algorithm>

#include <libcrossplatform/common/PFileSection.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Fuzz {
namespace {

uint32_t sizeOf(const Image& image) {
  std::size_t size = image.rest.size();
  for (const ImageSection& section : image.sections) size += PFile::Header::BYTES + section.payload.size();
  return static_cast<uint32_t>(size);
}

}  // namespace

Image parseImage(const uint8_t* data, std::size_t size) {
  Image image;
  std::size_t at = 0;
  while (size - at >= PFile::Header::BYTES) {
    ImageSection section;
    Marshal::ByteStreamReader in(data + at, PFile::Header::BYTES);
    section.header.deserialize(in);
    at += PFile::Header::BYTES;
    const std::size_t there = std::min<std::size_t>(section.header.dataSize, size - at);
    section.payload.assign(data + at, data + at + there);
    at += there;
    image.sections.push_back(std::move(section));
  }
  image.rest.assign(data + at, data + size);
  return image;
}

Bytes joinImage(const Image& image) {
  Bytes bytes;
  for (const ImageSection& section : image.sections) {
    const auto header = section.header.bytes();
    bytes.insert(bytes.end(), header.begin(), header.end());
    bytes.insert(bytes.end(), section.payload.begin(), section.payload.end());
  }
  bytes.insert(bytes.end(), image.rest.begin(), image.rest.end());
  return bytes;
}

void repairImage(Image& image) {
  if (!image.sections.empty() && image.sections[0].header.type == PFile::FILE_HEADER_TYPE) {
    Bytes& total = image.sections[0].payload;
    if (total.size() < sizeof(uint32_t)) total.resize(sizeof(uint32_t));
    Marshal::storeLittle32(total.data(), sizeOf(image));
  }
  for (ImageSection& section : image.sections) {
    section.header.updateData(static_cast<uint32_t>(section.payload.size()), section.payload.data());
  }
}

void repairHeader(PFile::Header& header) {
  header.hdrCrc = PFile::crc32Of(header.bytes().data(), PFile::Header::HDR_CRC_BYTES);
}

bool DeclaredSizes::allow(const PFile::Header& header, const uint8_t* payload, std::size_t size) {
  if ((header.flags & PFile::SECTION_FLAG_COMPRESS) == 0 || size < sizeof(uint32_t)) return true;
  const uint32_t declared = Marshal::loadLittle32(payload);
  if (declared > PFile::Section::MAX_UNCOMPRESSED) return true;  // refused before anything is allocated
  if (declared > BUDGET - _declared) return false;
  _declared += declared;
  return true;
}

}  // namespace Fuzz
