#include <libcrossplatform/serialization/NumberText.h>

#include <charconv>
#include <cmath>

namespace Dump {
namespace {

// The longest text is a double's: 309 digits, point, sign and the decimals.
constexpr int NUMBER_TEXT_BYTES = 384;

std::string formatted(double value, std::chars_format format, int precision) {
  if (std::isnan(value)) return "nan";
  char text[NUMBER_TEXT_BYTES];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, value, format, precision);
  return end.ec == std::errc() ? std::string(text, end.ptr) : std::string();
}

}  // namespace

std::string int64ToStr(long long value) {
  return std::to_string(value);
}

std::string floatToStr(float value) {
  constexpr int STREAM_DEFAULT_PRECISION = 6;
  return formatted(value, std::chars_format::general, STREAM_DEFAULT_PRECISION);
}

std::string fixedToStr(double value, int decimals) {
  return formatted(value, std::chars_format::fixed, decimals);
}

}  // namespace Dump
