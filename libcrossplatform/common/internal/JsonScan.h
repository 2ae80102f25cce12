#pragma once

#include <string>

#include <json/value.h>

namespace Veltra {

// Looks at JSON text before JsonCpp reads it.

/// Whether keeping the comments costs no more than some milliseconds. JsonCpp looks back from each comment to the value
/// before it, over all that stands between them: their number times the length of the text.
bool canAffordComments(const std::string& text);

/// Whether a stored document could have more than 131072 values, each of two bytes in the text, of hundreds in memory.
bool hasTooManyValues(const std::string& text);

/// JsonCpp reads fractions by the global locale of the program: where that writes a decimal comma, 1.5 is refused and
/// 1.234 may be read as 1234. These two let it read a document that has none.

/// Whether the global locale has another decimal point than JSON.
bool hasForeignDecimalPoint();

/// The document with zero and blanks in the place of each fraction. Every value stays where it begins.
std::string withoutFractions(std::string text);

/// Gives the values of a document read without its fractions what they stand for.
/// @param text  the document as it was; the values' offsets are places in it
/// @return false when a number cannot be read: `value` is then partly done
bool restoreFractions(Json::Value& value, const std::string& text);

}  // namespace Veltra
