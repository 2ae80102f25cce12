#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <gsl/span>
#include <string_view>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// What a link interface adapter is for, as bits.
enum LinkAdapterFlags : uint32_t {
  LINK_ADAPTER_PERMANENT_LINK = 1,
  LINK_ADAPTER_CHANNEL = 2,
  LINK_ADAPTER_PATCH_CORD = 4,
  LINK_ADAPTER_MPTL = 8,  ///< modular plug terminated link
  LINK_ADAPTER_COAX = 16,
  LINK_ADAPTER_REFERENCE = 32,  ///< for reference, calibration or verification: not for customers' links
  LINK_ADAPTER_WITHDRAWN = 64,
};

/// One link interface adapter: what is plugged between a copper module and the link under test.
struct LinkAdapter {
  int id;                   ///< what the adapter reports, and what records hold
  const char* key;          ///< short name; ids 406 and 407 share one
  const char* partNumber;   ///< catalogue designation; null for an adapter without one
  const char* displayName;  ///< shown to the user; may be empty
  int ratingMHz;            ///< highest frequency it is specified for
  uint32_t flags;           ///< LinkAdapterFlags
};

/// All adapters, in the order they are searched. Lives as long as the program.
VELTRA_EXPORT gsl::span<const LinkAdapter> linkAdapters();

/// The first adapter with this id; null when there is none.
VELTRA_EXPORT const LinkAdapter* findLinkAdapter(int id);
/// The first adapter with exactly this part number; null when there is none. The empty text names no adapter.
VELTRA_EXPORT const LinkAdapter* findLinkAdapterByPartNumber(std::string_view partNumber);

}  // namespace Veltra
