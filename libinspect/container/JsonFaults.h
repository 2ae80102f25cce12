#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

namespace Inspect {

/// Something that the parser passes over in a text it accepts.
struct JsonOversight {
  enum Kind {
    NAME_TWICE,  ///< a member's name that its object had before; the last one counts
    EXTRA,       ///< more after the end of the document; nothing is looked at after that
    NUL,         ///< a zero byte within a text
    HALF,        ///< one half of a character that two escapes make, without the other
  };
  Kind kind;
  std::string place;  ///< "line 2, column 8", both from 1, columns in bytes
  std::string name;   ///< of NAME_TWICE; "********" within a secret and for a name that is a document with secrets
};

struct JsonOversights {
  static constexpr std::size_t MOST_KEPT = 20;

  std::vector<JsonOversight> kept;  ///< the first ones
  std::size_t leftOut = 0;
  bool hasComments = false;
};

/// Looks through a text that parseJson() accepts.
JsonOversights oversightsIn(const std::string& text);
/// "line 2, column 8: the name "DHCP" was given before"
std::string toString(const JsonOversight& oversight);

/// "expected JSON, found something else at line 3, column 5": why parseJson() refuses a text. Without the place where
/// no fault is found in it.
std::string jsonFaultIn(const std::string& text);

/// A number as it stands in the text that it was parsed from; empty for a value that was not parsed.
std::string numberIn(std::string_view text, const Json::Value& number);
/// Puts the text of each fraction of a document, and of each number too large for an integer, in its place.
/// @param text  that it was parsed from
void useDigits(Json::Value& document, std::string_view text);

/// Parses a document that a person wrote: nothing of it is passed over but comments.
/// @return false, with `error` saying what was found where; `document` is then unchanged
[[nodiscard]] bool parseWholeJson(const std::string& text, Json::Value& document, std::string& error);

}  // namespace Inspect
