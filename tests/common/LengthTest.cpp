#include <libcrossplatform/common/Length.h>

#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(Length, RoundsHalfAwayFromZeroAtEveryPrecision) {
  // Metres, decimals; the length in metres and feet, each with its digits.
  using Row = std::tuple<float, int, float, int, float, int>;
  for (const auto& [meters, decimals, inMeters, digits, inFeet, feetDigits] :
       {Row{12.345f, 1, 12.3f, 3, 40.5f, 3}, Row{-12.35f, 1, -12.4f, 3, -40.5f, 3},
        Row{1234.0f, -2, 1200.0f, 2, 4000.0f, 2}, Row{2.5f, 0, 3.0f, 1, 8.0f, 1}, Row{-2.5f, 0, -3.0f, 1, -8.0f, 1},
        Row{15.0f, -1, 20.0f, 1, 50.0f, 1}, Row{99.96f, 1, 100.0f, 4, 328.0f, 4}, Row{49.0f, -2, 0.0f, 1, 200.0f, 1},
        Row{0.125f, 2, 0.13f, 2, 0.41f, 2}, Row{INFINITY, 0, INFINITY, 10, INFINITY, 10}}) {
    SCOPED_TRACE(testing::Message() << meters << " to " << decimals);
    const auto r = static_cast<LengthRoundedTo>(decimals);
    EXPECT_FLOAT_EQ(displayLengthMeters(meters, r), inMeters);
    EXPECT_FLOAT_EQ(displayLengthFeet(meters, r), inFeet);
    EXPECT_EQ(getMetersNumSigDigits(meters, r), digits);
    EXPECT_EQ(getFeetNumSigDigits(meters, r), feetDigits);
  }
  EXPECT_EQ(getMetersNumSigDigits(NAN, LENGTH_ROUNDED_TO_ONES), 1);
}

TEST(Length, ProductAndHalfAreOneRoundingStep) {
  const float length = 4.99999952f;  // a tenth of it plus a half is just below 1, but rounds to 1 in two steps
  ASSERT_EQ(std::floor(length * 0.1f + 0.5f), 1.0f) << "not the example it was chosen to be";
  EXPECT_EQ(displayLengthMeters(length, LENGTH_ROUNDED_TO_TENS), 0.0f);
  EXPECT_EQ(displayLengthMeters(-length, LENGTH_ROUNDED_TO_TENS), 0.0f);
}
