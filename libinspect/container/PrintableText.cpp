#include <libinspect/container/PrintableText.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include <fmt/format.h>

namespace Inspect {
namespace {

/// Length of the UTF-8 sequence at `at`, 0 when there is none that can be shown.
std::size_t sequenceLength(const std::string& text, std::size_t at) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7F ? 1 : 0;
  const std::size_t length = lead >= 0xF0 && lead < 0xF5 ? 4 : lead >= 0xE0 && lead < 0xF0 ? 3 : lead >= 0xC2 ? 2 : 0;
  if (length == 0 || lead >= 0xF5 || length > text.size() - at) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
  }
  const bool isControl = lead == 0xC2 && byte(at + 1) < 0xA0;
  const bool isOverlong = (lead == 0xE0 && byte(at + 1) < 0xA0) || (lead == 0xF0 && byte(at + 1) < 0x90);
  const bool isAboveLast = lead == 0xF4 && byte(at + 1) >= 0x90;  // U+10FFFF
  const bool isSurrogate = lead == 0xED && byte(at + 1) >= 0xA0;
  // U+202A to U+202E and U+2066 to U+2069 reverse what follows them: a name could look like another.
  const unsigned char last = byte(at + length - 1);
  const bool isDirection = lead == 0xE2 && ((byte(at + 1) == 0x80 && last >= 0xAA && last <= 0xAE) ||
                                            (byte(at + 1) == 0x81 && last >= 0xA6 && last <= 0xA9));
  return isControl || isOverlong || isAboveLast || isSurrogate || isDirection ? 0 : length;
}

}  // namespace

std::string printable(const std::string& text, Charset charset) {
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = sequenceLength(text, at);
    if (length == 0 || (length > 1 && charset == Charset::ASCII)) {
      shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[at++]));
    } else {
      shown.append(text, at, length);
      at += length;
    }
  }
  return shown;
}

std::string shellWord(const std::string& text, Charset charset) {
  if (text.rfind('-', 0) == 0 && text != "-") return shellWord("./" + text, charset);
  std::string quoted;
  if (printable(text, charset) != text) {  // bash, zsh and ksh read these escapes
    for (const char c : text) quoted += c == '\\' || c == '\'' ? std::string("\\") + c : std::string(1, c);
    return "$'" + printable(quoted, charset) + "'";
  }
  const auto isPlain = [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 || std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           (c != '\0' && std::strchr("_-./:@%+,", c) != nullptr);
  };
  if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) return text;
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return "'" + quoted + "'";
}

std::string htmlText(const std::string& text) {
  std::string escaped;
  for (const char c : printable(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace Inspect
