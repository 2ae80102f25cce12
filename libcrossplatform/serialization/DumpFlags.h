#pragma once

// Threads: types and constants alone; nothing is shared.

#include <cstdint>

namespace Dump {

/// How much of a record a dump or JSON text shows. Records pass it on to the records they hold.
struct DumpFlags {
  static constexpr int FULL_LEVEL = 2;  ///< several records show their detail at this level only

  int level = FULL_LEVEL;  ///< any number; only FULL_LEVEL has a meaning of its own
  uint32_t options = 0;    ///< for formatters; records ignore it
};

}  // namespace Dump
