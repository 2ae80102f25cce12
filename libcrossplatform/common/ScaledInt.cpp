#include <libcrossplatform/common/ScaledInt.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/common/internal/NonFiniteText.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/NumberText.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/ScaledInt";

constexpr EnumText<ScaledInt::ScaledTo> SCALE_TEXTS[] = {
    {ScaledInt::SCALED_TO_TENS, "tens"},
    {ScaledInt::SCALED_TO_ONES, "ones"},
    {ScaledInt::SCALED_TO_TENTHS, "tenths"},
    {ScaledInt::SCALED_TO_HUNDREDTHS, "hundredths"},
    {ScaledInt::SCALED_TO_THOUSANDTHS, "thousandths"},
    {ScaledInt::SCALED_TO_TENTHOUSANDTHS, "tenthousandths"},
};
static_assert(isOneToOne(SCALE_TEXTS));

constexpr EnumText<int32_t> RESERVED_TEXTS[] = {
    {ScaledInt::RAW_NOT_A_NUMBER, NAN_TEXT},
    {ScaledInt::RAW_PLUS_INFINITY, PLUS_INFINITY_TEXT},
    {ScaledInt::RAW_MINUS_INFINITY, MINUS_INFINITY_TEXT},
};

/// Two raw values brought to the finer scale. Unsigned, since the arithmetic on them wraps.
struct Aligned {
  uint32_t a;
  uint32_t b;
  ScaledInt::ScaledTo scale;

  int32_t signedA() const { return static_cast<int32_t>(a); }
  int32_t signedB() const { return static_cast<int32_t>(b); }
};

uint32_t powerOfTen(int64_t exponent) {
  constexpr uint32_t POWERS[] = {1, 10, 100, 1000, 10000, 100000};
  if (exponent >= 0 && exponent <= 5) return POWERS[exponent];
  assertFail("Unexpected ScaledInt exponent", SOURCE, __LINE__);
  return 1;
}

Aligned align(const ScaledInt& a, const ScaledInt& b) {
  Aligned aligned{static_cast<uint32_t>(a.getRaw()), static_cast<uint32_t>(b.getRaw()),
                  std::max(a.getScaledTo(), b.getScaledTo())};
  const int64_t difference = static_cast<int64_t>(a.getScaledTo()) - b.getScaledTo();
  if (difference < 0) {
    aligned.a *= powerOfTen(-difference);
  } else {
    aligned.b *= powerOfTen(difference);
  }
  return aligned;
}

bool isPlusInfinity(const ScaledInt& v) {
  return v.getRaw() == ScaledInt::RAW_PLUS_INFINITY;
}
bool isMinusInfinity(const ScaledInt& v) {
  return v.getRaw() == ScaledInt::RAW_MINUS_INFINITY;
}

/// True when both are ordered and a comes before b: minus infinity, numbers, plus infinity. Equal infinities do not.
bool isInfinitelyLess(const ScaledInt& a, const ScaledInt& b) {
  if (a.isNotANumber() || b.isNotANumber()) return false;
  return (isMinusInfinity(a) && !isMinusInfinity(b)) || (isPlusInfinity(b) && !isPlusInfinity(a));
}

bool isSameInfinity(const ScaledInt& a, const ScaledInt& b) {
  return !a.isFinite() && !a.isNotANumber() && a.getRaw() == b.getRaw();
}

/// Sum and average when an operand is not a finite number.
ScaledInt addInfinite(const ScaledInt& a, const ScaledInt& b) {
  // Not-a-number on the right gives the left operand as it is: x + N is x, though N + x is N. Stored results
  // were added up this way.
  if (a.isNotANumber() || b.isNotANumber()) return a;
  const bool plus = isPlusInfinity(a) || isPlusInfinity(b);
  const bool minus = isMinusInfinity(a) || isMinusInfinity(b);
  if (plus && minus) return ScaledInt();
  return ScaledInt::fromRaw(plus ? ScaledInt::RAW_PLUS_INFINITY : ScaledInt::RAW_MINUS_INFINITY,
                            ScaledInt::SCALED_TO_ONES);
}

}  // namespace

int32_t saturateToInt32(float value) {
  constexpr float LIMIT = 2147483648.0f;  // 2^31, which a float holds exactly and an int32_t does not
  if (std::isnan(value)) return 0;
  if (value >= LIMIT) return std::numeric_limits<int32_t>::max();
  if (value <= -LIMIT) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

ScaledInt::ScaledInt(float value, ScaledTo scaledTo) : _scaledTo(scaledTo) {
  if (std::isnan(value)) return;
  if (value > std::numeric_limits<float>::max()) {
    _raw = RAW_PLUS_INFINITY;
  } else if (value < -std::numeric_limits<float>::max()) {
    _raw = RAW_MINUS_INFINITY;
  } else {
    // One rounding step, unlike fromString(): texts and floats may differ in the last digit, and stored ones do.
    _raw = saturateToInt32(std::fmaf(value, scalingValue(), value >= 0.0f ? 0.5f : -0.5f));
  }
}

ScaledInt ScaledInt::fromRaw(int32_t raw, ScaledTo scaledTo) {
  ScaledInt value;
  value._raw = raw;
  value._scaledTo = scaledTo;
  return value;
}

float ScaledInt::scalingValue() const {
  return std::pow(10.0f, static_cast<float>(_scaledTo));
}

float ScaledInt::toFloat() const {
  if (isNotANumber()) return std::numeric_limits<float>::quiet_NaN();
  if (isPlusInfinity(*this)) return std::numeric_limits<float>::infinity();
  if (isMinusInfinity(*this)) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(_raw) / scalingValue();
}

double ScaledInt::toDouble() const {
  if (!isFinite()) return static_cast<double>(toFloat());
  return static_cast<double>(_raw) / static_cast<double>(scalingValue());
}

bool ScaledInt::hasPrintableScale() const {
  return !isFinite() || (_scaledTo >= SCALED_TO_TENS && _scaledTo <= SCALED_TO_TENTHOUSANDTHS);
}

bool ScaledInt::operator==(const ScaledInt& other) const {
  if (isNotANumber() || other.isNotANumber()) return false;
  if (isSameInfinity(*this, other)) return true;
  // An infinity and anything else are compared as if finite, by their raw values.
  const Aligned aligned = align(*this, other);
  return aligned.a == aligned.b;
}

bool ScaledInt::operator<(const ScaledInt& other) const {
  if (!isFinite() || !other.isFinite()) return isInfinitelyLess(*this, other);
  const Aligned aligned = align(*this, other);
  return aligned.signedA() < aligned.signedB();
}

bool ScaledInt::operator<=(const ScaledInt& other) const {
  if (!isFinite() || !other.isFinite()) return isInfinitelyLess(*this, other) || isSameInfinity(*this, other);
  const Aligned aligned = align(*this, other);
  return aligned.signedA() <= aligned.signedB();
}

bool ScaledInt::operator>(const ScaledInt& other) const {
  return other < *this;
}

bool ScaledInt::operator>=(const ScaledInt& other) const {
  return other <= *this;
}

ScaledInt ScaledInt::operator+(const ScaledInt& other) const {
  if (!isFinite() || !other.isFinite()) return addInfinite(*this, other);
  const Aligned aligned = align(*this, other);
  return fromRaw(static_cast<int32_t>(aligned.a + aligned.b), aligned.scale);
}

ScaledInt ScaledInt::avg(const ScaledInt& other) const {
  if (!isFinite() || !other.isFinite()) return addInfinite(*this, other);
  const Aligned aligned = align(*this, other);
  const auto sum = static_cast<int32_t>(aligned.a + aligned.b);
  // Halves go away from zero on both sides: the shift already rounds a negative sum down.
  const int32_t half = sum > 0 ? (sum >> 1) + (sum & 1) : sum >> 1;
  return fromRaw(half, aligned.scale);
}

ScaledInt ScaledInt::operator-(const ScaledInt& other) const {
  if (isFinite() && other.isFinite()) {
    const Aligned aligned = align(*this, other);
    return fromRaw(static_cast<int32_t>(aligned.a - aligned.b), aligned.scale);
  }
  if (isNotANumber()) return *this;
  if (other.isNotANumber()) return other;
  if (isSameInfinity(*this, other)) return ScaledInt();
  // A finite value less an infinity is that infinity with its own sign: 5 - P is P. Intended, and relied on.
  return isFinite() ? other : *this;
}

std::string ScaledInt::toString() const {
  if (!isFinite()) return textOf(RESERVED_TEXTS, _raw);
  if (!hasPrintableScale()) assertFatal("Invalid ScaledInt::scaledTo", SOURCE, 177);
  return Dump::fixedToStr(static_cast<double>(toFloat()), std::max<int>(_scaledTo, 0));
}

bool ScaledInt::fromString(const std::string& text) {
  if (valueOf(RESERVED_TEXTS, text, _raw)) return true;
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  float value = 0.0f;
  if (!(stream >> value)) return false;
  const std::size_t point = text.find('.');
  _scaledTo = static_cast<ScaledTo>(point == std::string::npos ? 0 : text.size() - point - 1);
  const float product = value * scalingValue();
  _raw = saturateToInt32(product + (value >= 0.0f ? 0.5f : -0.5f));
  return true;
}

unsigned ScaledInt::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeInline(*this, out);
}

Marshal::StreamOpStatus ScaledInt::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readInline(*this, in);
}

void ScaledInt::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.field("ScaledInt", toString().c_str());
}

const char* toString(ScaledInt::ScaledTo scaledTo) {
  return textOf(SCALE_TEXTS, scaledTo);
}

ScaledInt min(const ScaledInt& a, const ScaledInt& b) {
  if (a.isNotANumber()) return b;
  if (b.isNotANumber()) return a;
  return a < b ? a : b;
}

ScaledInt max(const ScaledInt& a, const ScaledInt& b) {
  if (a.isNotANumber()) return b;
  if (b.isNotANumber()) return a;
  return a < b ? b : a;
}

}  // namespace Veltra
