#include <libcrossplatform/common/internal/JsonScan.h>

#include <algorithm>
#include <locale>
#include <sstream>
#include <string_view>

namespace Veltra {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t endOfDigits(const std::string& text, std::size_t at) {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

// The end of the number that begins at `at`, as JsonCpp splits the text, valid or not.
std::size_t endOfNumber(const std::string& text, std::size_t at) {
  at = endOfDigits(text, at + 1);
  if (at < text.size() && text[at] == '.') at = endOfDigits(text, at + 1);
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    at = endOfDigits(text, at);
  }
  return at;
}

bool beginsNumber(char c) {
  return c == '-' || isDigit(c);
}

// The end of the string or comment that begins at `at`; neither holds values. `at` itself when neither begins there.
// Ends where JsonCpp ends it, also in text that is not JSON: the character after a lone slash is always skipped.
std::size_t endOfText(const std::string& text, std::size_t at) {
  if (text[at] == '"') {
    std::size_t end = at + 1;
    while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
    return std::min(end + 1, text.size());
  }
  if (text.compare(at, 2, "/*") == 0) {
    const std::size_t end = text.find("*/", at + 2);
    return end == std::string::npos ? text.size() : end + 2;
  }
  if (text.compare(at, 2, "//") == 0) return std::min(text.find_first_of("\r\n", at), text.size());
  return text[at] == '/' ? std::min(at + 2, text.size()) : at;
}

}  // namespace

JsonExtent extentOf(const std::string& text) {
  JsonExtent extent;
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    at = std::max(endOfText(text, begin), begin + 1);
    switch (text[begin]) {
      case ' ':
      case '\t':
      case '\r':
      case '\n':
      case '/':
      case ':':
        break;
      case ',':
        ++extent.values;
        break;
      case '}':
      case ']':
        if (depth <= 1) return extent;  // JsonCpp reads no further, either
        --depth;
        break;
      case '{':
      case '[':
        ++extent.values;
        extent.levels = std::max(extent.levels, ++depth);
        break;
      default:
        extent.levels = std::max(extent.levels, depth + 1);
    }
  }
  return extent;
}

bool isWithinBounds(const JsonExtent& extent) {
  return extent.values <= JsonBounds::VALUES && extent.levels <= JsonBounds::LEVELS;
}

bool canAffordComments(const std::string& text) {
  constexpr std::size_t MOST_STEPS = std::size_t{16} * 1024 * 1024;
  if (text.find("//") == std::string::npos && text.find("/*") == std::string::npos) return true;
  std::size_t comments = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    at = std::max(endOfText(text, begin), begin + 1);
    if (text[begin] == '/') ++comments;
  }
  return comments == 0 || text.size() <= MOST_STEPS / comments;
}

bool hasForeignDecimalPoint() {
  return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() != '.';
}

std::string withoutFractions(std::string text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    at = endOfText(text, begin);
    if (at != begin) continue;
    if (!beginsNumber(text[begin])) {
      ++at;
      continue;
    }
    at = endOfNumber(text, begin);
    if (std::string_view(text).substr(begin, at - begin).find('.') == std::string_view::npos) continue;
    // A sign, a digit and spaces: what JsonCpp refuses next to the number must not become part of it.
    const std::size_t digit = text[begin] == '-' ? begin + 1 : begin;
    text.replace(digit, at - digit, at - digit, ' ');
    text[digit] = '0';
  }
  return text;
}

bool restoreFractions(Json::Value& value, const std::string& text) {
  if (value.isArray() || value.isObject()) {
    for (Json::Value& member : value) {
      if (!restoreFractions(member, text)) return false;
    }
    return true;
  }
  if (!value.isNumeric()) return true;
  const auto begin = static_cast<std::size_t>(value.getOffsetStart());
  const std::string token = text.substr(begin, endOfNumber(text, begin) - begin);
  if (token.find('.') == std::string::npos) return true;
  std::istringstream in(token);
  in.imbue(std::locale::classic());
  double fraction = 0;
  if (!(in >> fraction)) return false;
  Json::Value restored(fraction);
  value.swapPayload(restored);  // comments and place stay
  return true;
}

}  // namespace Veltra
