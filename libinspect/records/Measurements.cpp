#include <libinspect/records/Measurements.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

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

bool isShown(const Veltra::DisplayMeas& measurement) {
  return measurement.type >= Veltra::DISPLAY_TYPE_VALUE && measurement.type <= Veltra::DISPLAY_TYPE_LESS_THAN;
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
  if (!isShown(measurement) || !value.isFinite() || !value.hasPrintableScale()) return std::nullopt;
  const double raw = value.getRaw();
  const int scale = value.getScaledTo();
  return scale < 0 ? raw * std::pow(10.0, -scale) : raw / std::pow(10.0, scale);
}

Presence presenceOf(const Veltra::DisplayMeas& measurement) {
  if (isShown(measurement)) {
    const bool isNumber = measurement.value.hasPrintableScale() && !measurement.value.isNotANumber();
    return isNumber ? Presence::NUMBER : Presence::NOT_SET;
  }
  return measurement.type == Veltra::DISPLAY_TYPE_NOT_APPLICABLE ? Presence::NOT_APPLICABLE : Presence::NOT_AVAILABLE;
}

int compareNumbers(const Veltra::DisplayMeas& a, const Veltra::DisplayMeas& b) {
  if (presenceOf(a) != Presence::NUMBER || presenceOf(b) != Presence::NUMBER) return 0;
  const auto numberOf = [](const Veltra::DisplayMeas& m) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    return measuredNumber(m).value_or(m.value.getRaw() < 0 ? -INFINITE : INFINITE);
  };
  const auto boundOf = [](const Veltra::DisplayMeas& m) {
    return m.type == Veltra::DISPLAY_TYPE_LESS_THAN ? -1 : m.type == Veltra::DISPLAY_TYPE_GREATER_THAN ? 1 : 0;
  };
  const double x = numberOf(a), y = numberOf(b);
  return x < y ? -1 : x > y ? 1 : boundOf(a) - boundOf(b);
}

std::string measurementText(const Veltra::DisplayMeas& measurement) {
  return presenceOf(measurement) == Presence::NUMBER ? measurement.toString() : "-";
}

std::string presenceText(const Veltra::DisplayMeas& measurement) {
  switch (presenceOf(measurement)) {
    case Presence::NUMBER:
      return measurement.toString();
    case Presence::NOT_SET:
      return "not set";
    case Presence::NOT_APPLICABLE:
      return "none";
    default:
      return "n/a";
  }
}

Json::Value measurementJson(const Veltra::DisplayMeas& measurement) {
  Json::Value json(Json::objectValue);
  const std::optional<double> number = measuredNumber(measurement);
  json["relation"] = relationOf(measurement.type);
  json["value"] = number ? Json::Value(*number) : Json::Value();
  json["text"] = measurement.value.hasPrintableScale() ? Json::Value(measurement.toString()) : Json::Value();
  return json;
}

Json::Value relationBeside(const Json::Value& measurement) {
  const Json::Value &relation = measurement["relation"], &text = measurement["text"];
  const bool wantsNumber = relation == "=" || relation == ">" || relation == "<";
  return wantsNumber && measurement["value"].isNull() && text.isString() ? text : relation;
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

std::map<std::string, FlatMember> flatMembers(const Json::Value& row) {
  std::map<std::string, FlatMember> members;
  for (const std::string& name : row.getMemberNames()) {
    const Json::Value& value = row[name];
    if (isMeasurement(value)) {
      members[name] = {value["value"], digitsOf(value)};
      members[name + "Relation"] = {relationBeside(value), {}};
    } else {
      members[name] = {value, {}};
    }
  }
  return members;
}

}  // namespace Inspect
