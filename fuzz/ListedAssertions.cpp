#include "ListedAssertions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <libcrossplatform/logging/Assert.h>

namespace Fuzz {
namespace {

std::size_t met[std::size(LISTED_ASSERTIONS)];

void judge(const char* expression, const char* unit, int line) {
  const ListedAssertion* const listed = findListed(expression, unit);
  if (listed == nullptr) {
    std::fprintf(stderr, "An assertion that no input may reach: %s, %s:%d\n", expression, unit, line);
    std::abort();
  }
  ++met[listed - LISTED_ASSERTIONS];
  if (listed->fatal) throw listed;
}

}  // namespace

const ListedAssertion* findListed(const char* expression, const char* unit) {
  for (const ListedAssertion& listed : LISTED_ASSERTIONS) {
    if (std::strcmp(listed.expression, expression) == 0 && std::strcmp(listed.unit, unit) == 0) return &listed;
  }
  return nullptr;
}

std::size_t timesMet(std::size_t i) {
  return met[i];
}

void watchAssertions() {
  Veltra::setAssertHandler(judge);
}

}  // namespace Fuzz
