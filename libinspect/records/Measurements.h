#pragma once

#include <optional>
#include <string>

#include <json/value.h>

#include <libcrossplatform/common/DisplayMeas.h>

namespace Inspect {

/// The number of a measurement that has one, of a bound too: the nearest to what its decimal text says. The library's
/// own conversions go through single precision.
std::optional<double> measuredNumber(const Veltra::DisplayMeas& measurement);
/// The measurement for people: its relation and number, "-" where there is no number.
std::string measurementText(const Veltra::DisplayMeas& measurement);

/// {"relation": "=", "text": "12.50", "value": 12.5}; relation one of "=", ">", "<", "n/a", "none"; value null where
/// there is no number. A scale without a text gives null for both value and text, where the library would stop.
Json::Value measurementJson(const Veltra::DisplayMeas& measurement);
/// Whether a value is such an object.
bool isMeasurement(const Json::Value& value);
/// The number of such an object with all digits that were measured, 12.50; empty where it has none.
std::string digitsOf(const Json::Value& measurement);

}  // namespace Inspect
