#pragma once

#include <cmath>
#include <limits>
#include <string_view>

namespace Veltra {

// How the texts and the JSON of the system write values that are not finite. Documents are compared as text.
constexpr char NAN_TEXT[] = "NaN";
constexpr char PLUS_INFINITY_TEXT[] = "+inf";
constexpr char MINUS_INFINITY_TEXT[] = "-inf";

/// @return the text of a value that is not finite; null for a finite one
template <class Float>
const char* nonFiniteText(Float value) {
  using Limits = std::numeric_limits<Float>;
  if (std::isnan(value)) return NAN_TEXT;
  return value > Limits::max() ? PLUS_INFINITY_TEXT : value < Limits::lowest() ? MINUS_INFINITY_TEXT : nullptr;
}

/// @return true, `out` set, when the text is exactly one of the three
template <class Float>
[[nodiscard]] bool nonFiniteFromText(std::string_view text, Float& out) {
  using Limits = std::numeric_limits<Float>;
  if (text != NAN_TEXT && text != PLUS_INFINITY_TEXT && text != MINUS_INFINITY_TEXT) return false;
  out = text == NAN_TEXT ? Limits::quiet_NaN() : text == PLUS_INFINITY_TEXT ? Limits::infinity() : -Limits::infinity();
  return true;
}

}  // namespace Veltra
