#include <libcrossplatform/common/ResultVocabulary.h>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(ResultVocabulary, EveryTextIsReadBackAndNoOther) {
  for (int value = -1100; value < 1100; ++value) {
    SCOPED_TRACE(value);
    const std::string status = toString(static_cast<Status>(value));
    const std::string test = toString(static_cast<TestType>(value));
    const std::string flag = toString(static_cast<TestMergeFlags>(value));
    const std::string end = toString(static_cast<CableEnd>(value));
    const std::string side = toStringMainRemote(static_cast<CableEnd>(value));
    EXPECT_EQ(validateStatus(static_cast<Status>(value)), !status.empty());

    // What has no text gives the empty one, which parses as nothing.
    Status readStatus = STATUS_FAIL;
    EXPECT_EQ(fromStatusString(status, readStatus), !status.empty());
    EXPECT_EQ(readStatus, status.empty() ? 0 : value);
    EXPECT_EQ(fromStatusString(status), readStatus);
    TestType readTest = TEST_TYPE_COAX;
    const bool parsed = !test.empty() && value != 25;  // the wizard is only shown
    EXPECT_EQ(fromTestTypeString(test, readTest), parsed);
    EXPECT_EQ(readTest, parsed ? value : TEST_TYPE_COAX) << "untouched";
    EXPECT_EQ(fromTestMergeFlagsString(flag), flag.empty() || value == 0 ? -1 : value);
    EXPECT_EQ(fromCableEndString(end), end.empty() ? 0 : value);
    EXPECT_EQ(fromCableEndMainRemoteString(side), side.empty() ? 0 : value);
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
