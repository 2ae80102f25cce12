#pragma once

#include <map>
#include <optional>
#include <string>

#include <json/value.h>

#include <libcrossplatform/common/DisplayMeas.h>

namespace Inspect {

/// The number of a measurement that has one, also of a bound: the nearest to its decimal text. The library's own
/// conversions use single precision.
std::optional<double> measuredNumber(const Veltra::DisplayMeas& measurement);
/// Whether a measurement has a number, and where it stands among those that have none.
enum class Presence {
  NUMBER,          ///< also an infinite one
  NOT_SET,         ///< a value that is no number
  NOT_AVAILABLE,   ///< "n/a"
  NOT_APPLICABLE,  ///< "none"
};
Presence presenceOf(const Veltra::DisplayMeas& measurement);
/// Below 0 if `a` is the lower one, above 0 if `b` is; 0 if they are equal, or one has no number. "< 5" is below 5.
int compareNumbers(const Veltra::DisplayMeas& a, const Veltra::DisplayMeas& b);

/// The measurement as text for people: its relation and number, also an infinite one; "-" where there is none.
std::string measurementText(const Veltra::DisplayMeas& measurement);
/// The same for lists that are sorted by it: "not set", "n/a" and "none" where there is no number.
std::string presenceText(const Veltra::DisplayMeas& measurement);

/// {"relation": "=", "text": "12.50", "value": 12.5}; relation one of "=", ">", "<", "n/a", "none"; value null where
/// there is no number. A scale without a text gives null for value and text, where the library would abort.
Json::Value measurementJson(const Veltra::DisplayMeas& measurement);
/// What stands beside the number of such an object in a row: its relation, or, of a value or bound that is infinite or
/// not set, which has no number, its text: "-inf".
Json::Value relationBeside(const Json::Value& measurement);
/// Whether a value is such an object; one that was parsed from a text is a document from outside and is shown as it is.
bool isMeasurement(const Json::Value& value);
/// The number of such an object with all measured digits, such as 12.50; empty where it has none.
std::string digitsOf(const Json::Value& measurement);

/// A member of a row.
struct FlatMember {
  Json::Value value;
  std::string digits;  ///< of a measured number
};
/// The members of a row, an object, as it is shown: a measurement is two of them, its number, and under its name with
/// "Relation" after it what stands beside the number.
std::map<std::string, FlatMember> flatMembers(const Json::Value& row);

}  // namespace Inspect
