#pragma once

// Threads: any number may call these functions at once.

#include <string>
#include <string_view>

#include <libcrossplatform/logging/Export.h>

namespace Dump {

/// U+FFFD, which stands for what could not be read as a character.
constexpr std::string_view REPLACEMENT_CHARACTER = "\xEF\xBF\xBD";

/// Whether a text is well-formed UTF-8: no stray or missing byte, no overlong form, no surrogate, nothing above
/// U+10FFFF. Zeros are characters like any other.
VELTRA_EXPORT bool isUtf8(std::string_view text);

/// The text with one U+FFFD in place of each ill-formed sequence; one that is cut short counts as one.
VELTRA_EXPORT std::string withoutIllFormedUtf8(std::string_view text);

}  // namespace Dump
