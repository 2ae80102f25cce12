#include <libinspect/report/PageText.h>

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>

namespace Inspect {
namespace {

enum class Kind { SEEN, SPACE, LINE_END, WITHOUT_WIDTH };

struct Unseen {
  std::string_view bytes;
  Kind kind;
};
constexpr Unseen UNSEEN[] = {
    {" ", Kind::SPACE},
    {"\t", Kind::SPACE},
    {"\n", Kind::LINE_END},
    {"\r", Kind::LINE_END},
    {"\v", Kind::LINE_END},
    {"\f", Kind::LINE_END},
    {"\xC2\x85", Kind::LINE_END},           // next line
    {"\xC2\xA0", Kind::SPACE},              // no-break space
    {"\xC2\xAD", Kind::WITHOUT_WIDTH},      // soft hyphen
    {"\xE1\x9A\x80", Kind::SPACE},          // Ogham space
    {"\xE2\x80\xA8", Kind::LINE_END},       // line separator
    {"\xE2\x80\xA9", Kind::LINE_END},       // paragraph separator
    {"\xE2\x80\xAF", Kind::SPACE},          // narrow no-break space
    {"\xE2\x81\x9F", Kind::SPACE},          // mathematical space
    {"\xE2\x81\xA0", Kind::WITHOUT_WIDTH},  // word joiner
    {"\xE3\x80\x80", Kind::SPACE},          // ideographic space
    {"\xEF\xBB\xBF", Kind::WITHOUT_WIDTH},  // byte-order mark
};

/// What is at the beginning of a text, and its bytes; of what can be seen one byte.
Unseen firstOf(std::string_view text) {
  for (const Unseen& unseen : UNSEEN) {
    if (text.substr(0, unseen.bytes.size()) == unseen.bytes) return unseen;
  }
  if (text.size() < 3 || text.substr(0, 2) != "\xE2\x80") return {text.substr(0, 1), Kind::SEEN};
  const auto last = static_cast<unsigned char>(text[2]);  // U+2000 to U+200A have a width, U+200B to U+200D none
  if (last > 0x8D) return {text.substr(0, 1), Kind::SEEN};
  return {text.substr(0, 3), last <= 0x8A ? Kind::SPACE : Kind::WITHOUT_WIDTH};
}

constexpr char OPEN_BOX[] = "\xE2\x90\xA3";

/// @param bytes  of one character of two or three bytes
unsigned codePointOf(std::string_view bytes) {
  unsigned code = static_cast<unsigned char>(bytes[0]) & (bytes.size() == 2 ? 0x1Fu : 0x0Fu);
  for (const char c : bytes.substr(1)) code = code << 6 | (static_cast<unsigned char>(c) & 0x3Fu);
  return code;
}

}  // namespace

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  const auto finish = [&] {
    if (!line.empty() && line.back() == ' ') line.pop_back();
    if (!line.empty() && unseenCharacters(line) == 0) lines.push_back(line);
    line.clear();
  };
  for (std::string_view rest = text; !rest.empty();) {
    const Unseen first = firstOf(rest);
    rest.remove_prefix(first.bytes.size());
    if (first.kind == Kind::LINE_END) {
      finish();
    } else if (first.kind != Kind::SPACE) {
      line += first.bytes;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  finish();
  return lines;
}

std::string oneLine(const std::string& text) {
  return fmt::format("{}", fmt::join(linesOf(text), " "));
}

std::size_t unseenCharacters(const std::string& text) {
  std::size_t characters = 0;
  for (std::string_view rest = text; !rest.empty(); ++characters) {
    const Unseen first = firstOf(rest);
    const std::string bytes(first.bytes);
    if (first.kind == Kind::SEEN || printable(bytes) != bytes) return 0;  // an escape is seen
    rest.remove_prefix(bytes.size());
  }
  return characters;
}

std::string shortenedTo(std::size_t most, const std::string& text) {
  if (text.size() <= most) return text;
  return text.substr(0, cutAt(text, most)) + fmt::format("... ({} bytes in all)", text.size());
}

std::vector<std::string> shownLines(const std::string& text) {
  constexpr std::size_t MOST = 2000, MOST_LINES = 40;
  std::vector<std::string> lines = linesOf(text.substr(0, cutAt(text, MOST)));
  if (text.size() <= MOST && lines.size() <= MOST_LINES) return lines;
  lines.resize(std::min(lines.size(), MOST_LINES));
  lines.push_back(fmt::format("... ({} bytes in all)", text.size()));
  return lines;
}

std::string shownId(const std::string& id) {
  constexpr std::size_t MOST = 200;
  if (id.empty()) return "(no ID)";
  const std::size_t unseen = unseenCharacters(id);
  std::string shown;
  for (std::string_view rest = id; !rest.empty() && shown.size() <= MOST;) {
    const Unseen first = firstOf(rest);
    const std::size_t at = id.size() - rest.size();
    rest.remove_prefix(first.bytes.size());
    if (first.bytes == " ") {
      const bool isBetween = at > 0 && id[at - 1] != ' ' && !rest.empty() && rest.front() != ' ';
      shown += isBetween ? " " : OPEN_BOX;
    } else if (first.kind == Kind::SEEN || printable(std::string(first.bytes)) != first.bytes) {
      shown += first.bytes;  // an escape is seen
    } else {
      shown += fmt::format("[U+{:04X}]", codePointOf(first.bytes));
    }
  }
  if (shown.size() > MOST)
    shown = shown.substr(0, cutAt(shown, MOST)) + fmt::format("... ({} bytes in all)", id.size());
  return unseen > 0 ? fmt::format("{} ({})", shown, counted(unseen, "unseen character")) : shown;
}

}  // namespace Inspect
