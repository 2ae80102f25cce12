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

// The end of the number that begins at `at`, as JsonCpp divides the text, right or wrong.
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

// The end of what begins at `at` and holds no number: a string, or a comment. `at` itself when neither begins there.
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
  return text.compare(at, 2, "//") == 0 ? std::min(text.find_first_of("\r\n", at), text.size()) : at;
}

}  // namespace

bool canAffordComments(const std::string& text) {
  constexpr std::size_t MOST_STEPS = std::size_t{16} * 1024 * 1024;
  std::size_t comments = 0;  // those a string seems to hold are counted too
  for (std::size_t at = text.find('/'); at != std::string::npos; at = text.find('/', at)) {
    const std::size_t end = std::min(text.find_first_not_of('/', at), text.size());
    if (end - at > 1 || (end < text.size() && text[end] == '*')) ++comments;
    at = end;
  }
  return comments == 0 || text.size() <= MOST_STEPS / comments;
}

bool hasTooManyValues(const std::string& text) {
  constexpr std::size_t MOST_VALUES = std::size_t{128} * 1024;
  std::size_t values = 1;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    at = endOfText(text, begin);
    if (at != begin) continue;
    ++at;
    if (text[begin] == '{' || text[begin] == '[' || text[begin] == ',') ++values;
  }
  return values > MOST_VALUES;
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
    // A sign, a digit and blanks: what JsonCpp refuses beside the number does not become a part of it.
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
