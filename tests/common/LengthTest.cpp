#include <libcrossplatform/common/Length.h>

#include <cmath>

#include "RecordTesting.h"

using namespace Veltra;

// Halves are rounded away from zero, at every precision, in metres and in feet; each length with its digits.
TEST(Length, IsShownAsTheTableSays) {
  std::ostringstream table;
  for (const float meters : {12.345f, -12.35f, 1234.0f, 2.5f, -2.5f, 15.0f, 99.96f, 49.0f, 0.125f, INFINITY}) {
    for (const int decimals : {-2, -1, 0, 1, 2}) {
      const auto r = static_cast<LengthRoundedTo>(decimals);
      table << meters << " to " << decimals << ": " << displayLengthMeters(meters, r) << " of "
            << getMetersNumSigDigits(meters, r) << ", " << displayLengthFeet(meters, r) << " of "
            << getFeetNumSigDigits(meters, r) << '\n';
    }
  }
  RecordTesting::expectGoldenText(table.str(), "lengths");
  EXPECT_EQ(getMetersNumSigDigits(NAN, LENGTH_ROUNDED_TO_ONES), 1);
}

TEST(Length, ProductAndHalfAreOneRoundingStep) {
  const float length = 4.99999952f;  // a tenth of it plus a half is just below 1, but rounds to 1 in two steps
  ASSERT_EQ(std::floor(length * 0.1f + 0.5f), 1.0f) << "not the example it was chosen to be";
  EXPECT_EQ(displayLengthMeters(length, LENGTH_ROUNDED_TO_TENS), 0.0f);
  EXPECT_EQ(displayLengthMeters(-length, LENGTH_ROUNDED_TO_TENS), 0.0f);
}
