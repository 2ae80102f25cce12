#pragma once

#include <algorithm>

#include <libcrossplatform/common/PFileSection.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>

#include "FuzzInput.h"

namespace Fuzz {

/// A container taken apart as far as its headers go, whatever they say, to be changed and put together again.
struct Image {
  struct Section {
    PFile::Header header;
    Bytes payload;
  };
  std::vector<Section> sections;
  Bytes rest;  ///< what is too short for a header

  /// A section that claims more than there is gets what there is.
  Image(const uint8_t* data, std::size_t size) {
    const uint8_t* const end = data + size;
    while (static_cast<std::size_t>(end - data) >= PFile::Header::BYTES) {
      Section& section = sections.emplace_back();
      Marshal::ByteStreamReader in(data, PFile::Header::BYTES);
      (void)section.header.deserialize(in);
      data += PFile::Header::BYTES;
      const std::size_t left = static_cast<std::size_t>(end - data);
      section.payload.assign(data, data + std::min<std::size_t>(section.header.dataSize, left));
      data += section.payload.size();
    }
    rest.assign(data, end);
  }

  /// As it stands: headers are not looked at.
  Bytes bytes() const {
    Bytes all;
    for (const Section& section : sections) {
      const auto header = section.header.bytes();
      all.insert(all.end(), header.begin(), header.end());
      all.insert(all.end(), section.payload.begin(), section.payload.end());
    }
    all.insert(all.end(), rest.begin(), rest.end());
    return all;
  }

  /// Makes sizes, both CRC-32 of every section and the total length in the file header right.
  void repair() {
    if (!sections.empty() && sections[0].header.type == PFile::FILE_HEADER_TYPE) {
      Bytes& total = sections[0].payload;
      if (total.size() < sizeof(uint32_t)) total.resize(sizeof(uint32_t));
      Marshal::storeLittle32(total.data(), static_cast<uint32_t>(bytes().size()));
    }
    for (Section& section : sections) {
      section.header.updateData(static_cast<uint32_t>(section.payload.size()), section.payload.data());
    }
  }
};

/// How much of compressed payloads one input may ask for. The library bounds each one; many of them would only make
/// the fuzzer slow.
class DeclaredSizes {
 public:
  /// @param payload  as stored, `size` bytes: what it claims to hold counts when its section is compressed
  /// @return false once there is more than the budget
  bool allow(const PFile::Header& header, const uint8_t* payload, std::size_t size) {
    if ((header.flags & PFile::SECTION_FLAG_COMPRESS) == 0 || size < sizeof(uint32_t)) return true;
    const uint32_t declared = Marshal::loadLittle32(payload);
    if (declared > PFile::Section::MAX_UNCOMPRESSED) return true;  // refused before anything is allocated
    if (declared > _left) return false;
    _left -= declared;
    return true;
  }

 private:
  uint32_t _left = 8 * 1024 * 1024;
};

}  // namespace Fuzz
