#include "ExitCodes.h"

namespace Command {
namespace {

struct ExitRow {
  int code;
  int severity;  ///< the higher one counts
};
constexpr ExitRow EXIT_CODES[] = {
    {EXIT_DONE, 0}, {EXIT_WITH_LOSS, 1}, {EXIT_NO, 2}, {EXIT_COULD_NOT, 3}, {EXIT_USAGE, 4},
};

constexpr bool areApart() {
  for (const ExitRow& row : EXIT_CODES) {
    for (const ExitRow* other = EXIT_CODES; other != &row; ++other) {
      if (other->code == row.code || other->severity == row.severity) return false;
    }
  }
  return true;
}
static_assert(areApart());

int severityOf(int code) {
  for (const ExitRow& row : EXIT_CODES) {
    if (row.code == code) return row.severity;
  }
  return 0;
}

}  // namespace

int worse(int a, int b) {
  return severityOf(b) > severityOf(a) ? b : a;
}

int codeOf(const Inspect::Findings& findings) {
  if (findings.hasDamage()) return EXIT_NO;
  return findings.empty() ? EXIT_DONE : EXIT_WITH_LOSS;
}

int codeOf(const Inspect::Coverage& coverage) {
  const bool isWhole = coverage.missing.empty() && coverage.damaged.empty() && coverage.foreign.empty();
  return isWhole ? EXIT_DONE : EXIT_NO;
}

}  // namespace Command
