#include <libinspect/report/VerdictLook.h>

namespace Inspect {
namespace {

constexpr VerdictLook LOOKS[VERDICTS] = {
    {static_cast<Veltra::Status>(-1), "Unknown", "unknown", "M-1 0H1M0-1V1", true, false},
    {Veltra::STATUS_FAIL, "Fail", "fail", "M-.8-.8 .8 .8M-.8 .8 .8-.8", true, true},
    {Veltra::STATUS_FAIL_STAR, "Fail star", "fail-star", "M0 .95-1-.75H1Z", false, true},
    {Veltra::STATUS_PASS_STAR, "Pass star", "pass-star", "M0-.95 1 .75H-1Z", false, true},
    {Veltra::STATUS_PASS_ACCEPTABLE, "Pass acceptable", "pass-acceptable", "M0-1 1 0 0 1-1 0Z", false, false},
    {Veltra::STATUS_PASS, "Pass", "pass", "M-.85 0A.85 .85 0 1 0 .85 0 .85 .85 0 1 0-.85 0Z", false, true},
    {Veltra::STATUS_SHOW, "Show", "show", "M-.75-.75H.75V.75H-.75Z", true, false},
    {Veltra::STATUS_DONT_SHOW, "Don't show", "dont-show", "M-.75-.75H.75V.75H-.75ZM-.75 .75 .75-.75", true, false},
    {Veltra::STATUS_NOT_SET, "Not set", "not-set", "M-1 0H1", true, false},
};

}  // namespace

const VerdictLook& verdictLook(std::size_t severity) {
  return LOOKS[severity < VERDICTS ? severity : 0];
}

std::size_t severityOf(Veltra::Status status) {
  for (std::size_t i = 1; i < VERDICTS; ++i) {
    if (LOOKS[i].status == status) return i;
  }
  return 0;
}

}  // namespace Inspect
