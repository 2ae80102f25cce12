#include <libcrossplatform/common/TextUtil.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Veltra {
namespace {

template <class Int, class Parsed>
bool wholeNumber(Int& out, const char* s, int base, Parsed (*parse)(const char*, char**, int)) {
  out = 0;
  if (s == nullptr) return false;
  char* end = nullptr;
  out = static_cast<Int>(parse(s, &end, base));
  return *s != '\0' && end != nullptr && *end == '\0';
}

bool isHexDigit(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool isEscaped(char c, bool escapeLower) {
  return std::strchr(" \"%*./:;<>?\\|", c) != nullptr || (escapeLower && c >= 'a' && c <= 'z');
}

}  // namespace

bool stringCaseInsMatch(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) return false;
  }
  return true;
}

bool strToInt64(int64_t& out, const char* s, int base) {
  return wholeNumber(out, s, base, std::strtoll);
}

bool strToUInt64(uint64_t& out, const char* s, int base) {
  return wholeNumber(out, s, base, std::strtoull);
}

std::string rmSpChar(const char* text, bool escapeLower) {
  std::string escaped;
  for (const char* p = text; p != nullptr && *p != '\0'; ++p) {
    if (isEscaped(*p, escapeLower)) {
      char code[4];
      std::snprintf(code, sizeof code, "%%%02x", static_cast<unsigned>(static_cast<unsigned char>(*p)));
      escaped += code;
    } else {
      escaped += *p;
    }
  }
  return escaped;
}

std::string spChar(const char* text) {
  std::string plain;
  for (const char* p = text; p != nullptr && *p != '\0'; ++p) {
    if (*p == '%' && isHexDigit(p[1]) && isHexDigit(p[2])) {
      const char code[] = {p[1], p[2], '\0'};
      plain += static_cast<char>(std::strtoul(code, nullptr, 16));
      p += 2;
    } else {
      plain += *p;
    }
  }
  return plain;
}

bool isValidSpChar(const char* text) {
  return text != nullptr && rmSpChar(spChar(text).c_str(), true) == text;
}

}  // namespace Veltra
