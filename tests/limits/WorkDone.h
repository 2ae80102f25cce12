#pragma once

#include <cstddef>
#include <cstdint>

/// What the process was made to do, counted where it is done: the functions of zlib and libc that the library calls are
/// replaced by ones that count and pass on.
struct WorkDone {
  uint64_t inflated;  ///< bytes that came out of uncompress()
  uint64_t checked;   ///< bytes that went into crc32()
  uint64_t read;      ///< bytes that fread() and pread() gave
  long allocations;   ///< calls of malloc(), calloc() and realloc()
  std::size_t peak;   ///< most bytes of the heap at once, above those at start()

  static void start();
  static WorkDone sinceStart();
};
