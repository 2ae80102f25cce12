#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// The precision a length is shown with: the number of decimals, negative for tens and hundreds.
enum LengthRoundedTo : int32_t {
  LENGTH_ROUNDED_TO_HUNDREDS = -2,
  LENGTH_ROUNDED_TO_TENS = -1,
  LENGTH_ROUNDED_TO_ONES = 0,
  LENGTH_ROUNDED_TO_TENTHS = 1,
  LENGTH_ROUNDED_TO_HUNDREDTHS = 2,
};

/// The enumerator's name. Any other value is the assertion "Invalid length rounded to" and then gives
/// "LENGTH_ROUNDED_TO_HUNDREDS".
VELTRA_EXPORT const char* toString(LengthRoundedTo roundedTo);

// Below, a precision outside the list is taken as that number of decimals, and a length that is not a number or not
// finite stays so; it has the digits that saturateToInt32() of ScaledInt.h gives it.

/// The length in metres, rounded half away from zero.
VELTRA_EXPORT float displayLengthMeters(float meters, LengthRoundedTo roundedTo);
/// The length in feet, rounded half away from zero.
/// @param meters  the length in metres, as everywhere
VELTRA_EXPORT float displayLengthFeet(float meters, LengthRoundedTo roundedTo);

/// Digits of the rounded figure in units of its precision: 1234 m to hundreds is 12, two digits. A figure of 0 has one.
VELTRA_EXPORT int getMetersNumSigDigits(float meters, LengthRoundedTo roundedTo);
/// The same of the figure in feet.
VELTRA_EXPORT int getFeetNumSigDigits(float meters, LengthRoundedTo roundedTo);

}  // namespace Veltra
