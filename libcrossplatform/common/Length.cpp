#include <libcrossplatform/common/Length.h>

#include <cmath>
#include <string>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/logging/Assert.h>

namespace Veltra {
namespace {

constexpr EnumText<LengthRoundedTo> ROUNDED_TO_TEXTS[] = {
    {LENGTH_ROUNDED_TO_HUNDREDS, "LENGTH_ROUNDED_TO_HUNDREDS"},
    {LENGTH_ROUNDED_TO_TENS, "LENGTH_ROUNDED_TO_TENS"},
    {LENGTH_ROUNDED_TO_ONES, "LENGTH_ROUNDED_TO_ONES"},
    {LENGTH_ROUNDED_TO_TENTHS, "LENGTH_ROUNDED_TO_TENTHS"},
    {LENGTH_ROUNDED_TO_HUNDREDTHS, "LENGTH_ROUNDED_TO_HUNDREDTHS"},
};
static_assert(isOneToOne(ROUNDED_TO_TEXTS));

float scaleOf(LengthRoundedTo roundedTo) {
  return std::pow(10.0f, static_cast<float>(roundedTo));
}

float rounded(float length, LengthRoundedTo roundedTo) {
  const float scale = scaleOf(roundedTo);
  // Product and half are one rounding step, as in ScaledInt: a figure shown and the one stored agree.
  if (length >= 0.0f) return std::floor(std::fmaf(length, scale, 0.5f)) / scale;
  return std::ceil(std::fmaf(length, scale, -0.5f)) / scale;
}

float toFeet(float meters) {
  constexpr float FEET_PER_METER = 3.28084f;
  return meters * FEET_PER_METER;
}

int numDigits(float roundedLength, LengthRoundedTo roundedTo) {
  const int32_t figure = saturateToInt32(std::fabs(roundedLength * scaleOf(roundedTo)));
  return static_cast<int>(std::to_string(figure).size());
}

}  // namespace

const char* toString(LengthRoundedTo roundedTo) {
  const char* const name = textOf(ROUNDED_TO_TEXTS, roundedTo, nullptr);
  if (name != nullptr) return name;
  assertFail("Invalid length rounded to", "libcrossplatform/common/Length", 30);
  return textOf(ROUNDED_TO_TEXTS, LENGTH_ROUNDED_TO_HUNDREDS);
}

float displayLengthMeters(float meters, LengthRoundedTo roundedTo) {
  return rounded(meters, roundedTo);
}

float displayLengthFeet(float meters, LengthRoundedTo roundedTo) {
  return rounded(toFeet(meters), roundedTo);
}

int getMetersNumSigDigits(float meters, LengthRoundedTo roundedTo) {
  return numDigits(displayLengthMeters(meters, roundedTo), roundedTo);
}

int getFeetNumSigDigits(float meters, LengthRoundedTo roundedTo) {
  return numDigits(displayLengthFeet(meters, roundedTo), roundedTo);
}

}  // namespace Veltra
