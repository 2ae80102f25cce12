#include "FuzzInput.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <libcrossplatform/logging/Assert.h>
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

void judge(const char* expression, const char* unit, int line) {
  for (const ListedAssertion& listed : LISTED_ASSERTIONS) {
    if (std::strcmp(listed.expression, expression) != 0 || std::strcmp(listed.unit, unit) != 0) continue;
    if (listed.fatal) throw &listed;
    return;
  }
  std::fprintf(stderr, "An assertion that no input may reach: %s, %s:%d\n", expression, unit, line);
  std::abort();
}

}  // namespace

const PFile::LogCallback formatAndDrop = dropMessage;

void watchAssertions() {
  Veltra::setAssertHandler(judge);
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

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Fuzz::watchAssertions();
  Veltra::Logger::setSink(Fuzz::dropLine);
  Fuzz::guarded([&] { Fuzz::runTarget({data, size}); });
  return 0;
}
