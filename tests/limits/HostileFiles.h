#pragma once

#include <functional>
#include <string>

#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/Header.h>

#include "../ContainerBytes.h"

/// Files that claim much, become much, or keep a reader busy. The limits are counted on small ones, the time is
/// measured on large ones.
namespace HostileFiles {

using ContainerBytes::Bytes, ContainerBytes::closedFile, ContainerBytes::headerClaiming, ContainerBytes::storedSection;

inline Bytes compressed(Bytes data) {
  PFile::Section stored;
  (void)stored.set(0, 0, PFile::SECTION_FLAG_COMPRESS, data.data(), static_cast<unsigned>(data.size()), false, 6);
  return Bytes(stored.payload.data(), stored.payload.data() + stored.payload.size());
}

inline Bytes repeated(const Bytes& unit, std::size_t room) {
  Bytes bytes;
  bytes.reserve(room);
  while (bytes.size() + unit.size() <= room) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

/// A section of a few KiB that claims, and has, this many zeros.
inline Bytes bomb(uint16_t type, uint32_t size) {
  return storedSection(type, PFile::SECTION_FLAG_COMPRESS, compressed(Bytes(size)));
}

/// Headers alone, each of which claims everything after it.
inline Bytes lyingHeaders(std::size_t room) {
  room -= room % PFile::Header::BYTES;
  Bytes bytes;
  while (bytes.size() < room) {
    const Bytes header = headerClaiming(300, static_cast<uint32_t>(room - bytes.size() - PFile::Header::BYTES));
    bytes.insert(bytes.end(), header.begin(), header.end());
  }
  return bytes;
}

/// A settings record whose text is exactly this.
inline Bytes recordOf(const std::string& text, uint8_t classVersion = 0) {
  Marshal::ByteStreamBuilder out;
  Marshal::Header header(Veltra::OrbelSettings::SERIAL_TYPE_ID, classVersion);
  header.serialize(out);
  out.writeString(text);
  header.serializeLength(out);
  return Bytes(out.data(), out.data() + out.size());
}

/// A settings record that says of the network what `profile` is.
inline Bytes settingsRecord(const std::string& profile) {
  return recordOf(R"({"OrbelSettings": {"net_profile": )" + profile + "}}" + '\0');
}

/// A compressed settings record: 400 bytes, 260 kB, 130,000 values.
inline Bytes record() {
  std::string profile = "[1";
  for (int i = 0; i < 130000; ++i) profile += ",1";
  return storedSection(104, PFile::SECTION_FLAG_COMPRESS, compressed(settingsRecord(profile + "]")));
}

constexpr std::size_t FILE_HEADER_BYTES = PFile::Header::BYTES + 4;

struct Kind {
  const char* name;
  bool isClosed;    ///< begins with the file header of a closed file
  Bytes (*unit)();  ///< what is repeated; null: lyingHeaders()

  /// A file of about so many bytes, never more.
  Bytes make(std::size_t room) const {
    if (isClosed) room -= FILE_HEADER_BYTES;
    const Bytes bytes = unit != nullptr ? repeated(unit(), room) : lyingHeaders(room);
    return isClosed ? closedFile(bytes) : bytes;
  }
};
inline const Kind KINDS[] = {
    {"sections of one byte", true, [] { return storedSection(300, 0, {'x'}); }},
    {"unknown types", true, [] { return storedSection(60000, 0, {'x'}); }},
    {"never closed", false, [] { return storedSection(60000, 0, {'x'}); }},
    {"headers without data", true, [] { return headerClaiming(300, 0); }},
    {"headers that claim the rest", true, nullptr},
    {"zeros", false, [] { return Bytes(1); }},
    {"magic", false,
     [] {
       return Bytes{'P', 'F'};
     }},
    {"bombs", true, [] { return bomb(301, PFile::Section::MAX_UNCOMPRESSED); }},
    {"zlib in zlib", true,
     [] {
       Bytes data(64, 'x');
       for (int i = 0; i < 20; ++i) data = compressed(data);
       return storedSection(301, PFile::SECTION_FLAG_COMPRESS, data);
     }},
    {"records", true, record},
};

}  // namespace HostileFiles
