#include <libcrossplatform/serialization/Utf8Text.h>

#include <algorithm>
#include <cstdint>

namespace Dump {
namespace {

struct Sequence {
  std::size_t size;  ///< bytes, 1 at least
  bool wellFormed;   ///< false: the readable part of an invalid character
};

bool isAscii(char c) {
  return static_cast<uint8_t>(c) < 0x80;
}

/// The sequence a text begins with; its first byte is not ASCII.
Sequence firstSequence(std::string_view text) {
  const auto byteAt = [text](std::size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0}; };
  const uint8_t lead = byteAt(0);
  if (lead < 0xC2 || lead > 0xF4) return {1, false};
  const std::size_t size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte shows overlong forms, surrogates and values above U+10FFFF.
  const uint8_t least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const uint8_t most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byteAt(1) < least || byteAt(1) > most) return {1, false};
  for (std::size_t i = 2; i < size; ++i) {
    if (byteAt(i) < 0x80 || byteAt(i) > 0xBF) return {i, false};
  }
  return {size, true};
}

}  // namespace

bool isUtf8(std::string_view text) {
  for (;;) {
    const auto other = std::find_if_not(text.begin(), text.end(), isAscii);
    if (other == text.end()) return true;
    text.remove_prefix(static_cast<std::size_t>(other - text.begin()));
    const Sequence sequence = firstSequence(text);
    if (!sequence.wellFormed) return false;
    text.remove_prefix(sequence.size);
  }
}

std::string withoutIllFormedUtf8(std::string_view text) {
  std::string repaired;
  while (!text.empty()) {
    const Sequence sequence = isAscii(text[0]) ? Sequence{1, true} : firstSequence(text);
    repaired += sequence.wellFormed ? text.substr(0, sequence.size) : REPLACEMENT_CHARACTER;
    text.remove_prefix(sequence.size);
  }
  return repaired;
}

}  // namespace Dump
