#pragma once

// Threads: any number may call these functions at once.

#include <string>

#include <libcrossplatform/logging/Export.h>

namespace Dump {

/// Decimal text of a 64-bit value, as dumps and JSON write it.
VELTRA_EXPORT std::string int64ToStr(long long value);

/// The text a stream with its default settings gives: six significant digits, "nan" (never "-nan"), "inf", "-inf".
/// Independent of the locale, like every number text of the system.
VELTRA_EXPORT std::string floatToStr(float value);

/// Fixed notation with `decimals` digits after the point (0 or more), independent of the locale.
VELTRA_EXPORT std::string fixedToStr(double value, int decimals);

}  // namespace Dump
