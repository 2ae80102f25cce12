#include <libinspect/container/Doctor.h>

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>

namespace Inspect {
namespace {

/// What a section's header says about its content, before its data is examined.
void examineHeader(const SectionInfo& section, Findings& findings) {
  const PFile::Header& header = section.header;
  if (section.number == 0) return;
  const boost::optional<uint16_t> newest = Veltra::newestKnownVersion(header.type);
  if (newest && header.version > *newest) {
    findings.add({W01_NEWER_VERSION, section.offset, section.number, fmt::format("version {} at most", *newest),
                  fmt::format("version {}", header.version)});
  }
  if (!newest && PFile::sectionIdToString(header.type) == nullptr) {
    findings.add({W02_UNKNOWN_TYPE, section.offset, section.number, "a known section type",
                  fmt::format("type {}", header.type)});
  }
}

constexpr std::size_t HEADER_BYTES = PFile::Header::BYTES;

/// Whether these bytes, at least those of a header, are one that verifies.
bool isHeader(const uint8_t* bytes) {
  PFile::Header header;
  Marshal::ByteStreamReader in(bytes, HEADER_BYTES);
  (void)header.deserialize(in);  // its bytes are there
  return header.magic == PFile::Header::MAGIC && PFile::crc32Of(bytes, PFile::Header::HDR_CRC_BYTES) == header.hdrCrc;
}

bool hasHeader(const uint8_t* bytes, std::size_t size) {
  const uint8_t* const end = bytes + size;
  while (static_cast<std::size_t>(end - bytes) >= HEADER_BYTES) {
    const auto room = static_cast<std::size_t>(end - bytes) - HEADER_BYTES + 1;
    const void* const found = std::memchr(bytes, 'P', room);
    if (found == nullptr) return false;
    bytes = static_cast<const uint8_t*>(found);
    if (bytes[1] == 'F' && isHeader(bytes)) return true;
    ++bytes;
  }
  return false;
}

}  // namespace

ContainerReport examine(const ByteSource& source, WalkDepth depth, const OnSection& onSection) {
  return walk(source, depth, [&onSection](const SectionInfo& section, Findings& findings) {
    examineHeader(section, findings);
    if (onSection) onSection(section, findings);
  });
}

bool isResultData(uint16_t type) {
  return type > PFile::SECTION_RESULT_SUMMARY && PFile::findSectionType(static_cast<unsigned>(type)) != nullptr;
}

bool looksLost(const ByteSource& source) {
  bool isZero = true;
  for (uint64_t at = 0; at < source.size();) {
    const uint8_t* bytes = nullptr;
    const std::size_t got = source.view(at, bytes);
    if (got == 0) return false;  // it cannot be read, which the source tells
    if (at == 0 && got >= 2 && bytes[0] == 'P' && bytes[1] == 'F') return true;
    isZero = isZero && std::all_of(bytes, bytes + got, [](uint8_t byte) { return byte == 0; });
    if (!isZero && hasHeader(bytes, got)) return true;
    if (at + got == source.size()) break;
    at += got < HEADER_BYTES ? got : got - (HEADER_BYTES - 1);  // a header may lie across the end of the window
  }
  return isZero;
}

}  // namespace Inspect
