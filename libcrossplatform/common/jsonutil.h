#pragma once

// Threads: any number may call these functions at once.

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include <json/value.h>
#include <boost/optional.hpp>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// The limits of a stored document: docs/reader-behaviour.md, "The bounds of JSON". Values take a hundred times
/// their size in memory, and a deeply nested document a thousand times its bytes when it is written again.
namespace JsonBounds {
constexpr std::size_t VALUES = std::size_t{128} * 1024;             ///< in one text
constexpr std::size_t LEVELS = 1000;                                ///< what JsonCpp reads; parseJson() refuses more
constexpr std::size_t STYLED_BYTES = std::size_t{4} * 1024 * 1024;  ///< of a stored document, or of a record's profile
}  // namespace JsonBounds

///@{
/// JSON form of a float: a number, or the texts "NaN", "+inf" and "-inf" that ScaledInt uses too.
VELTRA_EXPORT Json::Value toJson(float value);
VELTRA_EXPORT Json::Value toJson(double value);
///@}

/// JSON form of a 64-bit integer: its decimal text, since JSON numbers lose digits beyond 2^53.
VELTRA_EXPORT Json::Value toJson(long long value);
/// The same through the signed conversion: values of 2^63 and above come out as negative text.
VELTRA_EXPORT Json::Value toJson(unsigned long long value);

/// JSON form of a set of flags: a list of the bits that are set, as signed integers, so that bit 31 is -2147483648.
inline Json::Value bitsToJson(uint32_t bits) {
  Json::Value list(Json::arrayValue);
  for (uint32_t bit = 1; bit != 0; bit <<= 1) {
    if ((bits & bit) != 0) list.append(static_cast<int>(bit));
  }
  return list;
}

/// Parses a document, whatever the locale. Comments are allowed, and kept when asked for, unless there are so many that
/// their number times the length of the text comes to more than 2^24: JsonCpp would take seconds to place them.
/// @return false on any fault, nesting beyond 1000 levels included; `out` is then unchanged
[[nodiscard]] VELTRA_EXPORT bool parseJson(const std::string& text, Json::Value& out, bool collectComments);
/// Parses a document of unknown origin: an object or array in UTF-8 within the bounds of a stored network profile
/// (docs/reader-behaviour.md), followed by nothing but white space or zeros. Comments are not kept.
/// @return false on any fault and beyond the bounds; `out` is then unchanged
[[nodiscard]] VELTRA_EXPORT bool parseBoundedJson(const std::string& text, Json::Value& out);

/// The value the readers below read: member `key` of the object `v`, or `v` when key is null or `v` is not an object.
/// @return null when the object has no such member; otherwise a pointer into `v`
VELTRA_EXPORT const Json::Value* jsonMember(const Json::Value& v, const char* key);

// Typed readers of the value jsonMember finds. Empty when it is missing or of another kind; none throws.

VELTRA_EXPORT boost::optional<bool> boolFromJson(const Json::Value& v, const char* key);  ///< a JSON boolean only
///@{
/// An integral number within the range of the type; a boolean is not a number.
VELTRA_EXPORT boost::optional<int> intFromJson(const Json::Value& v, const char* key);
VELTRA_EXPORT boost::optional<unsigned> uintFromJson(const Json::Value& v, const char* key);
///@}
/// An integral number within the range of the type, or its whole decimal text.
VELTRA_EXPORT boost::optional<int64_t> int64FromJson(const Json::Value& v, const char* key);
/// The same, and the negative text that toJson() makes of values of 2^63 and above.
VELTRA_EXPORT boost::optional<uint64_t> uint64FromJson(const Json::Value& v, const char* key);
///@{
/// A number, or exactly "NaN", "+inf" or "-inf".
VELTRA_EXPORT boost::optional<float> floatFromJson(const Json::Value& v, const char* key);
VELTRA_EXPORT boost::optional<double> doubleFromJson(const Json::Value& v, const char* key);
///@}
/// A string in the form of sysTimeToStr.
VELTRA_EXPORT boost::optional<time_t> timeFromJson(const Json::Value& v, const char* key);
/// A string, a number or a boolean, as text.
VELTRA_EXPORT boost::optional<std::string> stringFromJson(const Json::Value& v, const char* key);

// A pointer would be converted to the JSON value true.
const Json::Value* jsonMember(const Json::Value*, const char*) = delete;
boost::optional<bool> boolFromJson(const Json::Value*, const char*) = delete;
boost::optional<int> intFromJson(const Json::Value*, const char*) = delete;
boost::optional<unsigned> uintFromJson(const Json::Value*, const char*) = delete;
boost::optional<int64_t> int64FromJson(const Json::Value*, const char*) = delete;
boost::optional<uint64_t> uint64FromJson(const Json::Value*, const char*) = delete;
boost::optional<float> floatFromJson(const Json::Value*, const char*) = delete;
boost::optional<double> doubleFromJson(const Json::Value*, const char*) = delete;
boost::optional<time_t> timeFromJson(const Json::Value*, const char*) = delete;
boost::optional<std::string> stringFromJson(const Json::Value*, const char*) = delete;
template <class T>
bool convertJson(const Json::Value*, T&) = delete;

///@{
/// JsonCpp's own conversions, for the records whose documents were written for them: a null is false, 0 or empty, a
/// number or a boolean is also text, but text is not a number.
/// @return false, with `out` unchanged, where JsonCpp would throw
[[nodiscard]] VELTRA_EXPORT bool convertJson(const Json::Value& v, bool& out);
[[nodiscard]] VELTRA_EXPORT bool convertJson(const Json::Value& v, int& out);       ///< a fraction is cut off
[[nodiscard]] VELTRA_EXPORT bool convertJson(const Json::Value& v, unsigned& out);  ///< likewise
[[nodiscard]] VELTRA_EXPORT bool convertJson(const Json::Value& v, std::string& out);
///@}

/// An object of one member: a record's JSON under its root name.
VELTRA_EXPORT Json::Value rootedJson(const char* name, Json::Value value);
Json::Value rootedJson(const char*, const Json::Value*) = delete;

/// Logs "fromJson failed ..." with the position of the reader that gave up.
/// @param file  path of the unit without its extension; null is reported as an assertion and nothing is logged
/// @param name  the key that failed, or null for the value itself
VELTRA_EXPORT void logJsonFailure(const char* file, int line, const char* name);

}  // namespace Veltra
