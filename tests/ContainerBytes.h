#pragma once

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/serialization/WireBytes.h>

#include "PlainStreams.h"

/// Containers put together byte by byte, for tests and benchmarks.
namespace ContainerBytes {

using RecordTesting::Bytes;

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Bytes bytesOf(const PFile::Header& header) {
  const auto bytes = header.bytes();
  return Bytes(bytes.begin(), bytes.end());
}

/// A section header that claims so many payload bytes, its own CRC right.
inline Bytes headerClaiming(uint16_t type, uint32_t dataSize) {
  PFile::Header header;
  header.type = type;
  header.dataSize = dataSize;
  header.hdrCrc = PFile::crc32Of(header.bytes().data(), PFile::Header::HDR_CRC_BYTES);
  return bytesOf(header);
}

/// A section as it stands in a file, its CRCs right, whatever its flags say of the data.
inline Bytes storedSection(uint16_t type, uint16_t flags, const Bytes& data) {
  PFile::Header header;
  header.set(type, 1, flags, 0, static_cast<unsigned>(data.size()), data.data());
  return bytesOf(header) + data;
}

/// A file header that records this length.
inline Bytes fileHeader(std::size_t length) {
  Bytes word(4);
  Marshal::storeLittle32(word.data(), static_cast<uint32_t>(length));
  return storedSection(PFile::FILE_HEADER_TYPE, 0, word);
}

/// These sections after the file header of a closed file.
inline Bytes closedFile(const Bytes& sections) {
  return fileHeader(24 + sections.size()) + sections;
}

}  // namespace ContainerBytes
