#include <libcrossplatform/common/ResultVocabulary.h>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(ResultVocabulary, AStatusIsValidOrNotSet) {
  for (int value = -1100; value < 1100; ++value) {
    const auto status = static_cast<Status>(value);
    Status read = STATUS_FAIL;
    EXPECT_EQ(validateStatus(status), fromStatusString(toString(status), read)) << value;
    EXPECT_EQ(read, validateStatus(status) ? value : STATUS_NOT_SET);
  }
}

TEST(ResultVocabulary, MergesBySeverityNotByNumber) {
  const int order[] = {0, 1, 2, 4, 16, 8, 32, 64, 128};  // "Pass acceptable" before "Pass star", the unknown last
  for (const int& a : order) {
    for (const int& b : order) {
      auto merged = static_cast<Status>(a);
      mergeStatus(merged, static_cast<Status>(b));
      EXPECT_EQ(merged, &b > &a ? b : a) << a << " and " << b;
    }
  }
  auto unknown = static_cast<Status>(128);
  mergeStatus(unknown, static_cast<Status>(-1));
  EXPECT_EQ(unknown, 128) << "equal ranks keep what was merged";
}
