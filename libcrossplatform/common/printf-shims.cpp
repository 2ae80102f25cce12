#include <libcrossplatform/common/printf-shims.h>

#include <cstdio>

#include <libcrossplatform/logging/Assert.h>

namespace {
constexpr char SOURCE[] = "libcrossplatform/common/printf-shims";
}

std::unique_ptr<char, FreeDeleter> upsprintf(const char* format, ...) {
  char* text = nullptr;
  va_list args;
  va_start(args, format);
  const int ret = vasprintf(&text, format, args);
  va_end(args);
  if (ret < 0) {
    Veltra::assertFail("ret >= 0", SOURCE, 43);
    text = nullptr;  // the C library leaves it undefined
  }
  return std::unique_ptr<char, FreeDeleter>(text);
}

std::string vprintfAppend(std::string s, const char* format, va_list args) {
  va_list measured;
  va_copy(measured, args);
  const int neededLength = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (neededLength < 0) {
    Veltra::assertFail("neededLength >= 0", SOURCE, 20);
    return s;
  }
  const std::size_t oldLength = s.size();
  s.resize(oldLength + static_cast<std::size_t>(neededLength));
  const int sprintfRet = std::vsprintf(&s[oldLength], format, args);
  if (sprintfRet != neededLength) Veltra::assertFail("sprintfRet == neededLength", SOURCE, 30);
  return s;
}
