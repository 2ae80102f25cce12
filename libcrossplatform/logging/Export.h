#pragma once

/// Marks what the shared library exports; everything else is hidden.
#if defined(VELTRA_BUILDING)
#define VELTRA_EXPORT __attribute__((visibility("default")))
#else
#define VELTRA_EXPORT
#endif
