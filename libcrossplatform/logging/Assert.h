#pragma once

// Threads: setAssertHandler before the first one calls the library; the rest any number at once.

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// Called for every failed assertion. `file` is the path of the unit without its extension, for example
/// "libcrossplatform/common/ScaledInt".
using AssertHandler = void (*)(const char* expression, const char* file, int line);

/// Reports a programming error and returns; the caller continues with its documented fallback.
VELTRA_EXPORT void assertFail(const char* expression, const char* file, int line);

/// Reports a programming error to the same handler, then aborts. A handler that must keep the program alive throws.
[[noreturn]] VELTRA_EXPORT void assertFatal(const char* expression, const char* file, int line);

/// Replaces the handler. Null restores the default, which prints one line on standard error.
/// @return the previous handler
VELTRA_EXPORT AssertHandler setAssertHandler(AssertHandler handler);

}  // namespace Veltra
