#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <string>
#include <string_view>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// True when both texts have the same length and every pair of characters is equal after tolower().
VELTRA_EXPORT bool stringCaseInsMatch(std::string_view a, std::string_view b);

/// Reads a whole text as a number with strtoll(): leading spaces and a sign are accepted, values out of range saturate.
/// @param base  as for strtoll(); 10 for decimal text
/// @return false for a null or empty text and for anything after the number; `out` then holds what was read, or 0
[[nodiscard]] VELTRA_EXPORT bool strToInt64(int64_t& out, const char* s, int base);
/// The same with strtoull(), which takes "-1" as the largest value.
[[nodiscard]] VELTRA_EXPORT bool strToUInt64(uint64_t& out, const char* s, int base);

/// Escapes a name so that it can be a file or folder name: each of space " % * . / : ; < > ? \ | becomes "%" and two
/// lower-case hexadecimal digits. Bytes of 128 and above stay as they are; a null text counts as empty.
/// @param escapeLower  escape "a" to "z" too, for stores that ignore case
VELTRA_EXPORT std::string rmSpChar(const char* text, bool escapeLower);

/// The reverse of rmSpChar. A "%" without two hexadecimal digits after it is copied unchanged.
VELTRA_EXPORT std::string spChar(const char* text);

/// True when the text is in the canonical escaped form, lower-case letters escaped.
VELTRA_EXPORT bool isValidSpChar(const char* text);

}  // namespace Veltra
