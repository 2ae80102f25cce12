#pragma once

#include <algorithm>
#include <cstring>

#include "ContainerBytes.h"
#include "RecordTesting.h"

/// What the tests of the container share: transcripts, images, a place for files.
namespace PFileTesting {

using namespace ContainerBytes;
using ContainerBytes::operator+;
using RecordTesting::TempDir;

/// Writes down calls, what they gave, and the container messages they logged, to be compared with a golden text:
///
///     reader.open(nullptr) = -1
///       E PFileReader::open File Path is NULL.
///
/// D, W and E are the callbacks; debug messages and pointers are written down without their values. Every message is
/// checked for the common shape, unit path and line included.
class Transcript {
 public:
  Transcript() { text.clear(); }

  static inline std::string text;

  void begin(const char* call) {
    text += call;
    _end = text.size();
    text += '\n';
  }
  void end(int result) { text.insert(_end, " = " + std::to_string(result)); }
  void end(const Bytes& result) {
    std::string hex = " =";
    for (const uint8_t byte : result) hex += {' ', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    text.insert(_end, hex);
  }
  void expectGolden(const std::string& name) const { RecordTesting::expectGoldenText(text, name); }

  template <char KIND>
  static void collect(char const* format, ...) {
    constexpr char HEAD[] = "%s::%s() - ", TAIL[] = " | %s:%d", PLACE[] = " | libcrossplatform/common/PFile";
    const std::string shape = format;
    ASSERT_GE(shape.size(), std::strlen(HEAD) + std::strlen(TAIL)) << shape;
    EXPECT_EQ(shape.find(HEAD), 0u) << shape;
    EXPECT_EQ(shape.rfind(TAIL), shape.size() - std::strlen(TAIL)) << shape;
    char buffer[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    const std::string message = buffer;
    const std::size_t place = message.rfind(PLACE), head = message.find("() - ");
    ASSERT_TRUE(place != std::string::npos && head != std::string::npos) << message;
    const bool plain = KIND == 'D' || shape.find("%p") != std::string::npos;
    const std::string said = plain
                                 ? shape.substr(std::strlen(HEAD), shape.size() - std::strlen(HEAD) - std::strlen(TAIL))
                                 : message.substr(head + 5, place - head - 5);
    text += std::string("  ") + KIND + " " + message.substr(0, head) + (said.empty() ? "" : " ") + said + "\n";
  }

 private:
  std::size_t _end = 0;
};

#define STEP(call) (transcript.begin(#call), transcript.end(call))

constexpr PFile::LogCallback onDebug = Transcript::collect<'D'>;
constexpr PFile::LogCallback onWarning = Transcript::collect<'W'>;
constexpr PFile::LogCallback onError = Transcript::collect<'E'>;

/// The smallest container: a file header and nothing after it.
inline const Bytes EMPTY_FILE = {0x50, 0x46, 0,    1,    0,    1,    0,    0,    0,    0, 0, 4,
                                 0xb4, 0xe9, 0xa0, 0x6c, 0xfb, 0x5b, 0x2f, 0x43, 0x18, 0, 0, 0};

struct SectionSpec {
  uint16_t type, version, flags;
  Bytes data;
};

inline int setSection(PFile::Section& section, const SectionSpec& spec) {
  auto* const copy = new unsigned char[spec.data.size()];
  std::copy(spec.data.begin(), spec.data.end(), copy);
  return section.set(spec.type, spec.version, spec.flags, copy, static_cast<unsigned>(spec.data.size()), true, 6);
}

/// A container of these sections, as the memory writer makes it.
inline Bytes imageOf(const std::vector<SectionSpec>& specs) {
  Bytes image(64 * 1024);
  PFile::MemWriter writer;
  EXPECT_EQ(writer.open(image.data(), static_cast<unsigned>(image.size())), 0);
  for (const SectionSpec& spec : specs) {
    PFile::Section section;
    EXPECT_EQ(setSection(section, spec), 0);
    EXPECT_EQ(writer.write(section), 0);
  }
  EXPECT_EQ(writer.close(), 0);
  image.resize(image[20] + 256u * image[21]);
  return image;
}

/// Compressed, and nothing when uncompressed.
inline Bytes sectionOfNothing(uint16_t type) {
  return storedSection(type, PFile::SECTION_FLAG_COMPRESS, {0, 0, 0, 0, 0x78, 0x9c, 3, 0, 0, 0, 0, 1});
}

inline Bytes dataOf(const PFile::Payload& payload) {
  return Bytes(payload.data(), payload.data() + payload.size());
}

}  // namespace PFileTesting
