#pragma once

// Threads: types and constants alone; nothing is shared.

/// Marks what the shared library exports; everything else is hidden.
#if defined(VELTRA_BUILDING)
#define VELTRA_EXPORT __attribute__((visibility("default")))
#else
#define VELTRA_EXPORT
#endif

/// Hides a template member of an exported class that only the library itself calls.
#define VELTRA_HIDDEN __attribute__((visibility("hidden")))

/// [[nodiscard]] in headers that C reads too.
#if defined(__cplusplus)
#define VELTRA_NODISCARD [[nodiscard]]
#else
#define VELTRA_NODISCARD __attribute__((warn_unused_result))
#endif
