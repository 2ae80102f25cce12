#include <libinspect/records/Measurements.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Inspect {
namespace {

using Veltra::ScaledInt;

const char* relationOf(Veltra::DisplayType type) {
  switch (type) {
    case Veltra::DISPLAY_TYPE_VALUE:
      return "=";
    case Veltra::DISPLAY_TYPE_GREATER_THAN:
      return ">";
    case Veltra::DISPLAY_TYPE_LESS_THAN:
      return "<";
    case Veltra::DISPLAY_TYPE_NOT_APPLICABLE:
      return "none";
    default:
      return "n/a";
  }
}

/// "0", "-12.50": no leading zeros, and digits on both sides of a point.
bool isDecimal(const std::string& text) {
  constexpr char DIGITS[] = "0123456789";
  const std::size_t begin = text.rfind('-', 0) == 0 ? 1 : 0;
  const std::size_t point = std::min(text.find_first_not_of(DIGITS, begin), text.size());
  if (point == begin || (text[begin] == '0' && point > begin + 1)) return false;
  return point == text.size() || (text[point] == '.' && point + 1 < text.size() &&
                                  text.find_first_not_of(DIGITS, point + 1) == std::string::npos);
}

}  // namespace

std::optional<double> measuredNumber(const Veltra::DisplayMeas& measurement) {
  const ScaledInt& value = measurement.value;
  const bool isShown =
      measurement.type >= Veltra::DISPLAY_TYPE_VALUE && measurement.type <= Veltra::DISPLAY_TYPE_LESS_THAN;
  if (!isShown || !value.isFinite() || !value.hasPrintableScale()) return std::nullopt;
  const double raw = value.getRaw();
  const int scale = value.getScaledTo();
  return scale < 0 ? raw * std::pow(10.0, -scale) : raw / std::pow(10.0, scale);
}

std::string measurementText(const Veltra::DisplayMeas& measurement) {
  return measuredNumber(measurement) ? measurement.toString() : "-";
}

Json::Value measurementJson(const Veltra::DisplayMeas& measurement) {
  Json::Value json(Json::objectValue);
  const std::optional<double> number = measuredNumber(measurement);
  json["relation"] = relationOf(measurement.type);
  json["value"] = number ? Json::Value(*number) : Json::Value();
  json["text"] = measurement.value.hasPrintableScale() ? Json::Value(measurement.toString()) : Json::Value();
  return json;
}

bool isMeasurement(const Json::Value& value) {
  return value.isObject() && value.getOffsetLimit() == 0 && value.size() == 3 && value["relation"].isString() &&
         value.isMember("value") && value.isMember("text");
}

std::string digitsOf(const Json::Value& measurement) {
  const Json::Value &value = measurement["value"], &text = measurement["text"];
  if (!value.isNumeric() || !text.isString()) return {};
  const std::string words = text.asString();  // "12.50", or "> 12.50"
  const std::string digits = words.substr(std::min(words.find_first_of("-0123456789"), words.size()));
  // A document from outside may look like a measurement: its text is used only if it is a number as JSON has it.
  return isDecimal(digits) && std::strtod(digits.c_str(), nullptr) == value.asDouble() ? digits : std::string();
}

}  // namespace Inspect
