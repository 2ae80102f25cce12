#include <libcrossplatform/common/internal/JsonFractions.h>

#include <algorithm>
#include <locale>
#include <sstream>

namespace Veltra {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t endOfDigits(const std::string& text, std::size_t at) {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

// The end of what begins at `at` and holds no number: a string, or a comment. `at` itself when neither begins there.
std::size_t endOfText(const std::string& text, std::size_t at) {
  if (text[at] == '"') {
    std::size_t end = at + 1;
    while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
    return std::min(end + 1, text.size());
  }
  const std::size_t end = text.compare(at, 2, "/*") == 0   ? text.find("*/", at + 2)
                          : text.compare(at, 2, "//") == 0 ? text.find_first_of("\r\n", at)
                                                           : at;
  return end == std::string::npos ? text.size() : end;
}

}  // namespace

bool hasForeignDecimalPoint() {
  return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() != '.';
}

std::string withoutFractions(std::string text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    at = endOfText(text, begin);
    if (at != begin) continue;
    ++at;
    if (text[begin] != '-' && !isDigit(text[begin])) continue;
    // As JsonCpp divides the text, right or wrong.
    at = endOfDigits(text, at);
    const bool hasFraction = at < text.size() && text[at] == '.';
    if (hasFraction) at = endOfDigits(text, at + 1);
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
      ++at;
      if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
      at = endOfDigits(text, at);
    }
    const std::size_t digits = text[begin] == '-' ? begin + 1 : begin;
    if (hasFraction) text.replace(digits, at - digits, at - digits, '0');
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
  const auto begin = static_cast<std::size_t>(value.getOffsetStart());
  const auto end = static_cast<std::size_t>(value.getOffsetLimit());
  const std::string token = text.substr(begin, end - begin);
  if (!value.isNumeric() || token.find('.') == std::string::npos) return true;
  std::istringstream in(token);
  in.imbue(std::locale::classic());
  double fraction = 0;
  if (!(in >> fraction)) return false;
  Json::Value restored(fraction);
  value.swapPayload(restored);  // comments and place stay
  return true;
}

}  // namespace Veltra
