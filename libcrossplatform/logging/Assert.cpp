#include <libcrossplatform/logging/Assert.h>

#include <cstdio>
#include <cstdlib>

namespace Veltra {
namespace {

void printToStandardError(const char* expression, const char* file, int line) {
  std::fprintf(stderr, "Assertion failed: %s, %s:%d\n", expression, file, line);
}

AssertHandler currentHandler = printToStandardError;

}  // namespace

void assertFail(const char* expression, const char* file, int line) {
  currentHandler(expression, file, line);
}

void assertFatal(const char* expression, const char* file, int line) {
  currentHandler(expression, file, line);
  std::abort();
}

AssertHandler setAssertHandler(AssertHandler handler) {
  const AssertHandler previous = currentHandler;
  currentHandler = handler != nullptr ? handler : printToStandardError;
  return previous;
}

}  // namespace Veltra
