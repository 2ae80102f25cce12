#include <libcrossplatform/logging/Assert.h>

#include <gtest/gtest.h>

TEST(AssertDeathTest, FatalReportsToTheHandlerAndThenAborts) {
  EXPECT_DEATH(Veltra::assertFatal("a == b", "libcrossplatform/common/Some", 7),
               "Assertion failed: a == b, libcrossplatform/common/Some:7");
}
