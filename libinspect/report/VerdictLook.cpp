#include <libinspect/report/VerdictLook.h>

namespace Inspect {
namespace {

constexpr char CROSS[] = "M-.8-.8 .8 .8M-.8 .8 .8-.8";
constexpr char RING[] = "M-.75 0A.75 .75 0 1 0 .75 0 .75 .75 0 1 0-.75 0Z";
constexpr char DISC[] = "M-.85 0A.85 .85 0 1 0 .85 0 .85 .85 0 1 0-.85 0Z";
constexpr char UP[] = "M0-.95 1 .75H-1Z";
constexpr char DASH[] = "M-1 0H1";
constexpr char BROKEN[] = "M-.9-.9H.5L-.3 .9H-.9ZM.9 .9H.1L.9-.9Z";

constexpr VerdictLook LOOKS[VERDICTS] = {
    {static_cast<Veltra::Status>(-1), "Unknown", "unknown", "unknown", "M-1 0H1M0-1V1", true},
    {Veltra::STATUS_FAIL, "Fail", "fail", "fail", CROSS, true},
    {Veltra::STATUS_FAIL_STAR, "Fail star", "fail-star", "fail-star", "M0 .95-1-.75H1Z", false},
    {Veltra::STATUS_PASS_STAR, "Pass star", "pass-star", "pass-star", UP, false},
    {Veltra::STATUS_PASS_ACCEPTABLE, "Pass acceptable", "pass-acceptable", "pass-acceptable", "M0-1 1 0 0 1-1 0Z",
     false},
    {Veltra::STATUS_PASS, "Pass", "pass", "pass", DISC, false},
    {Veltra::STATUS_SHOW, "Show", "show", "none", "M-.75-.75H.75V.75H-.75Z", true},
    {Veltra::STATUS_DONT_SHOW, "Don't show", "dont-show", "none", "M-.75-.75H.75V.75H-.75ZM-.75 .75 .75-.75", true},
    {Veltra::STATUS_NOT_SET, "Not set", "not-set", "none", DASH, true},
};

constexpr StateLook STATES[LINK_STATES] = {
    {LinkState::PASSED, "Passed", "passed", "pass", "pass", DISC, false},
    {LinkState::PASSED_WITH_STAR, "Passed with a star", "star", "pass-star", "pass-star", UP, false},
    {LinkState::FAILED, "Failed", "failed", "fail", "fail", CROSS, true},
    {LinkState::NO_VERDICT, "No verdict", "no verdict", "not-set", "none", DASH, true},
    {LinkState::DAMAGED, "Could not be read", "unreadable", "damaged", "alert-line", BROKEN, false},
    {LinkState::MISSING, "Not tested", "not tested", "missing", "alert-line", RING, true},
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

const StateLook& stateLook(std::size_t state) {
  return STATES[state < LINK_STATES ? state : 0];
}

}  // namespace Inspect
