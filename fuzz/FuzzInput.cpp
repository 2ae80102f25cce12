#include "FuzzInput.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <libcrossplatform/logging/Logger.h>

#include "ListedAssertions.h"

namespace Fuzz {
namespace {

void dropText(const char* format, va_list args) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, args);
}

void dropLine(Veltra::Logger::Facility, Veltra::Logger::Severity, const char* format, va_list args) {
  dropText(format, args);
}

void dropMessage(char const* format, ...) {
  va_list args;
  va_start(args, format);
  dropText(format, args);
  va_end(args);
}

}  // namespace

const PFile::LogCallback formatAndDrop = dropMessage;

int runInput(const uint8_t* data, std::size_t size, void (*target)(const Input& input)) {
  static const bool READY = [] {
    watchAssertions();
    Veltra::Logger::setSink(dropLine);
    return true;
  }();
  if (READY) guarded([&] { target({data, size}); });
  return 0;
}

bool guarded(const std::function<void()>& work) {
  try {
    work();
    return true;
  } catch (const ListedAssertion*) {
    return false;
  }
}

void reportFinding(const char* property, const char* function, int line) {
  std::fprintf(stderr, "A property that does not hold: %s, %s():%d\n", property, function, line);
  std::abort();
}

}  // namespace Fuzz
