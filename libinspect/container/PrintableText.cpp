#include <libinspect/container/PrintableText.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

#include <libcrossplatform/serialization/Utf8Text.h>

namespace Inspect {
namespace {

/// Characters that are not shown as they are: those that control, that begin a line, and that change the direction of
/// writing, by which a name could look like another.
struct CharacterRange {
  char32_t first, last;
};
constexpr CharacterRange NOT_SHOWN[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
                                        {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

/// Length of the UTF-8 sequence at `at`, 0 when there is none that can be shown.
std::size_t sequenceLength(const std::string& text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const std::string_view sequence = std::string_view(text).substr(at, length);
  if (!Dump::isUtf8(sequence)) return 0;
  char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (const char c : sequence.substr(1)) character = character << 6 | (static_cast<unsigned char>(c) & 0x3Fu);
  const bool isShown = std::none_of(std::begin(NOT_SHOWN), std::end(NOT_SHOWN), [character](CharacterRange range) {
    return character >= range.first && character <= range.last;
  });
  return isShown ? length : 0;
}

}  // namespace

std::size_t cutAt(const std::string& text, std::size_t at) {
  if (at >= text.size()) return text.size();
  while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) --at;
  return at;
}

std::string counted(uint64_t count, const std::string& noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string shortened(const std::string& text) {
  constexpr std::size_t MOST = 1000;
  if (text.size() <= MOST) return text;
  return text.substr(0, cutAt(text, MOST / 2)) + "..." + text.substr(cutAt(text, text.size() - MOST / 2));
}

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
