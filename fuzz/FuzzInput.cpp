#include "FuzzInput.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>

#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/logging/Logger.h>

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

/// The assertions that bytes from outside can reach because the rules demand them, as "expression in Unit", and whether
/// each is fatal: the rows of two tables of the page, which begin with "expression", "expression": `Unit`.
std::map<std::string, bool> assertionsOnPage() {
  std::ifstream file(VELTRA_SOURCE_DIR "/docs/reader-behaviour.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  const std::size_t fatal = page.find("\n## What file bytes can stop a program with");
  const std::size_t others = page.find("\n## What file bytes make a program complain of");
  const std::regex row("\n\\| ((?:\"[^\"]+\"(?:, )?)+): `(\\w+)"), expression("\"([^\"]+)\"");
  std::map<std::string, bool> listed;
  for (std::sregex_iterator i(page.begin() + static_cast<std::ptrdiff_t>(fatal), page.end(), row), end; i != end; ++i) {
    const std::string expressions = (*i)[1];
    for (std::sregex_iterator k(expressions.begin(), expressions.end(), expression); k != end; ++k) {
      listed[(*k)[1].str() + " in " + (*i)[2].str()] = fatal + static_cast<std::size_t>(i->position()) < others;
    }
  }
  return listed;
}

void judge(const char* expression, const char* path, int line) {
  static const std::map<std::string, bool> LISTED = assertionsOnPage();
  const std::string unit = path;
  const auto found = LISTED.find(expression + (" in " + unit.substr(unit.rfind('/') + 1)));
  if (found == LISTED.end()) {
    std::fprintf(stderr, "An assertion that no input may reach: %s, %s:%d\n", expression, path, line);
    std::abort();
  }
  if (found->second) throw ListedAssertion();
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
  } catch (const ListedAssertion&) {
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
