#pragma once

#include <cstddef>
#include <string>

#include <json/value.h>

#include <libcrossplatform/common/jsonutil.h>

namespace Veltra {

// Looks at JSON text before JsonCpp reads it.

/// The size of a document, counted on its text. For text that is not JSON, neither number is less than what JsonCpp
/// makes of it.
struct JsonExtent {
  std::size_t values = 1;  ///< one too many for each object or array that is empty
  std::size_t levels = 0;  ///< of nesting; a document that is a single number has 1
};
JsonExtent extentOf(const std::string& text);

/// Whether a document has no more values and levels than are read.
bool isWithinBounds(const JsonExtent& extent);

/// Whether keeping the comments costs no more than some milliseconds. JsonCpp looks back from each comment to the value
/// before it, over everything between them: their number times the length of the text.
bool canAffordComments(const std::string& text);

/// JsonCpp reads fractions by the global locale of the program: where that writes a decimal comma, 1.5 is refused and
/// 1.234 may be read as 1234. These two let it read a document that has none.

/// Whether the global locale has another decimal point than JSON.
bool hasForeignDecimalPoint();

/// The document with zero and spaces in the place of each fraction. Every value stays where it begins.
std::string withoutFractions(std::string text);

/// Restores the fractions of a document that was read without them.
/// @param text  the document as it was; the values' offsets are places in it
/// @return false when a number cannot be read: `value` is then partly done
[[nodiscard]] bool restoreFractions(Json::Value& value, const std::string& text);

}  // namespace Veltra
