#pragma once

// The version of the library, read from here by the build too. Semantic versioning: a new major number is a new ABI.
#define VELTRA_VERSION_MAJOR 1
#define VELTRA_VERSION_MINOR 0
#define VELTRA_VERSION_PATCH 0
#define VELTRA_VERSION_TEXT "1.0.0"

/// For comparisons: 1.2.3 is 0x010203.
#define VELTRA_VERSION ((VELTRA_VERSION_MAJOR << 16) | (VELTRA_VERSION_MINOR << 8) | VELTRA_VERSION_PATCH)
