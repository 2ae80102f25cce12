#pragma once

// Threads: any number may call these functions at once.

#include <cstdarg>
#include <cstdlib>
#include <memory>
#include <string>

#include <libcrossplatform/logging/Export.h>

/// Frees memory that the C library allocated.
struct FreeDeleter {
  void operator()(char* text) const { std::free(text); }  ///< null is ignored
};

/// Formats into a newly allocated zero-terminated text.
/// @return the text, owned by the handle; null when the C library could not format it (reported as an assertion)
VELTRA_EXPORT std::unique_ptr<char, FreeDeleter> upsprintf(const char* format, ...)
    __attribute__((format(printf, 1, 2)));

/// Appends formatted text.
/// @param args  belongs to the caller; unspecified afterwards
/// @return `s` with the text appended, or `s` unchanged when it could not be formatted (reported as an assertion)
VELTRA_EXPORT std::string vprintfAppend(std::string s, const char* format, va_list args)
    __attribute__((format(printf, 2, 0)));
