#pragma once

// Threads: types and constants alone; nothing is shared.

/// @cond makes a text of a macro's value
#define VELTRA_TEXT_OF_TOKEN(token) #token
#define VELTRA_TEXT_OF(number) VELTRA_TEXT_OF_TOKEN(number)
/// @endcond

///@{
/// The version of the library, read from here by the build too. Semantic versioning: a new major number is a new ABI.
#define VELTRA_VERSION_MAJOR 1
#define VELTRA_VERSION_MINOR 0
#define VELTRA_VERSION_PATCH 0
///@}
/// The same as text: "1.2.3".
#define VELTRA_VERSION_TEXT \
  VELTRA_TEXT_OF(VELTRA_VERSION_MAJOR) "." VELTRA_TEXT_OF(VELTRA_VERSION_MINOR) "." VELTRA_TEXT_OF(VELTRA_VERSION_PATCH)

/// For comparisons: 1.2.3 is 0x010203.
#define VELTRA_VERSION ((VELTRA_VERSION_MAJOR << 16) | (VELTRA_VERSION_MINOR << 8) | VELTRA_VERSION_PATCH)
