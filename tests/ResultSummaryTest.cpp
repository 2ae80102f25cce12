#include <libcrossplatform/common/ResultSummary.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

DisplayMeas measurement(const char* text) {
  DisplayMeas m;
  EXPECT_TRUE(m.fromString(text));
  return m;
}

ResultSummary sampleSummary() {
  return ResultSummary("A-017", RESULT_TYPE_COPPER, 1706692500, STATUS_PASS_STAR, measurement("45.2"),
                       measurement("<1.3"), 0x80000001u, 12, 1, 0);
}

}  // namespace

TEST(ResultSummary, Wire) {
  ResultSummary r = sampleSummary();
  expectRoundTrip(r);
  expectEveryPrefixRefused(r);
  expectGolden(r, "result_summary_v1");
}
