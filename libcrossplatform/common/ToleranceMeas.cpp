#include <libcrossplatform/common/ToleranceMeas.h>

#include <cmath>
#include <limits>
#include <utility>

#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/NumberText.h>

namespace Veltra {
namespace {

constexpr float NO_BOUND = std::numeric_limits<float>::quiet_NaN();

bool isSameTolerance(float a, float b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Root of the sum of squares; fused, so that every machine gets the same last bit.
float quadrature(float a, float b) {
  return std::sqrt(std::fmaf(a, a, b * b));
}

}  // namespace

ToleranceMeas::ToleranceMeas() : posTolerance(NO_BOUND), negTolerance(NO_BOUND) {}

ToleranceMeas::ToleranceMeas(ScaledInt v, DisplayType t, float pos, float neg)
    : value(std::move(v)), type(t), posTolerance(pos), negTolerance(neg) {}

void ToleranceMeas::clear() {
  *this = ToleranceMeas();
}

bool ToleranceMeas::isSameAs(const ToleranceMeas& other) const {
  return value.getRaw() == other.value.getRaw() && value.getScaledTo() == other.value.getScaledTo() &&
         type == other.type && isSameTolerance(posTolerance, other.posTolerance) &&
         isSameTolerance(negTolerance, other.negTolerance);
}

void ToleranceMeas::calculateDisplayType() {
  type = DISPLAY_TYPE_NOT_AVAILABLE;
  if (value.isNotANumber()) {
    // A negative tolerance of exactly 0 marks a measurement without a value as not applicable.
    if (negTolerance == 0.0f) type = DISPLAY_TYPE_NOT_APPLICABLE;
  } else if (std::isnan(posTolerance) == std::isnan(negTolerance)) {
    type = DISPLAY_TYPE_VALUE;
  } else {
    type = std::isnan(negTolerance) ? DISPLAY_TYPE_LESS_THAN : DISPLAY_TYPE_GREATER_THAN;
  }
}

DisplayMeas ToleranceMeas::valueToDisplayMeas() const {
  return DisplayMeas(value, type);
}

std::string ToleranceMeas::valueToString() const {
  return valueToDisplayMeas().toString();
}

std::string ToleranceMeas::toString() const {
  return valueToString() + ", +tol = " + Dump::floatToStr(posTolerance) + ", -tol = " + Dump::floatToStr(negTolerance);
}

ToleranceMeas ToleranceMeas::abs() const {
  ToleranceMeas result = *this;
  // Reserved raw values are negated like any other, so the absolute value of not-a-number is plus infinity.
  if (value.getRaw() < 0) {
    result.value =
        ScaledInt::fromRaw(static_cast<int32_t>(0u - static_cast<uint32_t>(value.getRaw())), value.getScaledTo());
  }
  return result;
}

unsigned ToleranceMeas::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeInline(*this, out);
}

Marshal::StreamOpStatus ToleranceMeas::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readInline(*this, in);
}

void ToleranceMeas::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.beginObject("ToleranceMeas");
  formatter.field("class", "ToleranceMeas");
  formatter.field("value", valueToString().c_str());
  formatter.field("posTolerance", posTolerance);
  formatter.field("negTolerance", negTolerance);
  formatter.endObject();
}

Json::Value ToleranceMeas::toJson(const Dump::DumpFlags&) const {
  Json::Value json(Json::objectValue);
  json["value"] = valueToString();
  json["posTolerance"] = Dump::floatToStr(posTolerance);
  json["negTolerance"] = Dump::floatToStr(negTolerance);
  return json;
}

ToleranceMeas subtractWithQuadratureTolerance(const ToleranceMeas& a, const ToleranceMeas& b) {
  if (a.type == DISPLAY_TYPE_NOT_AVAILABLE) return a;
  if (b.type == DISPLAY_TYPE_NOT_AVAILABLE) return b;
  if (a.type == DISPLAY_TYPE_NOT_APPLICABLE) return a;
  if (b.type == DISPLAY_TYPE_NOT_APPLICABLE) return b;
  const ScaledInt value = a.value - b.value;
  // The type of `a` does not matter here: a bound less a definite reference reads as a value.
  switch (b.type) {
    case DISPLAY_TYPE_LESS_THAN:
      return {value, DISPLAY_TYPE_GREATER_THAN, b.negTolerance, b.posTolerance};
    case DISPLAY_TYPE_GREATER_THAN:
      return {value, DISPLAY_TYPE_LESS_THAN, b.negTolerance, b.posTolerance};
    default:
      return {value, DISPLAY_TYPE_VALUE, quadrature(a.posTolerance, b.posTolerance),
              quadrature(a.negTolerance, b.negTolerance)};
  }
}

ToleranceMeas addLossToleranceMeas(const ToleranceMeas& a, const ToleranceMeas& b) {
  if (a.value.isNotANumber()) return b;
  if (b.value.isNotANumber()) return a;
  ToleranceMeas sum(a.value + b.value, DISPLAY_TYPE_NOT_AVAILABLE, std::fmax(a.posTolerance, b.posTolerance),
                    std::fmax(a.negTolerance, b.negTolerance));
  sum.calculateDisplayType();
  return sum;
}

ToleranceMeas max(const ToleranceMeas& a, const ToleranceMeas& b) {
  if (a.value.isNotANumber()) return b;
  if (b.value.isNotANumber()) return a;
  return a.value > b.value ? a : b;
}

ToleranceMeas minTolerance(const ToleranceMeas& a, const ToleranceMeas& b) {
  if (a.value.isNotANumber() && !b.value.isNotANumber()) return b;
  if (b.value.isNotANumber() && !a.value.isNotANumber()) return a;
  const bool less = b.value < a.value;
  const bool aIsBound = a.type == DISPLAY_TYPE_GREATER_THAN;
  const bool bIsBound = b.type == DISPLAY_TYPE_GREATER_THAN;
  const bool replaces = bIsBound ? less && aIsBound : less || aIsBound;
  return replaces ? b : a;
}

}  // namespace Veltra
