#include "AllocationFaults.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#ifndef __has_feature
#define __has_feature(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
#define VELTRA_OWN_MALLOC 0
#else
#define VELTRA_OWN_MALLOC 1
#endif

namespace {

std::atomic<long> allowed{-1};  ///< allocations until the next refused one; negative: none is refused
bool refusesForGood = false;
std::atomic<long> refused{0};
std::atomic<long> count{0};
std::atomic<std::size_t> liveBytes{0}, peakBytes{0};
std::size_t bytesAtStart = 0;

}  // namespace

namespace Allocations {

void refuseAfter(long before, bool forGood) {
  refused = 0;
  refusesForGood = forGood;
  allowed = before;
}

long stopRefusing() {
  allowed = -1;
  return refused;
}

bool isReplaced() {
  return VELTRA_OWN_MALLOC != 0;
}

std::size_t live() {
  return liveBytes;
}

void startMeasuring() {
  bytesAtStart = liveBytes;
  peakBytes = bytesAtStart;
  count = 0;
}

long countSinceStart() {
  return count;
}

std::size_t peak() {
  return peakBytes - bytesAtStart;
}

}  // namespace Allocations

#if VELTRA_OWN_MALLOC

namespace {

bool isRefused() {
  ++count;
  if (allowed < 0) return false;
  const long before = refusesForGood && allowed == 0 ? 0 : allowed--;
  const bool refuses = before == 0;
  refused += refuses;
  return refuses;
}

/// What `allocate` gives, unless it is refused.
template <class Allocate>
void* counted(Allocate allocate) {
  void* const memory = isRefused() ? nullptr : allocate();
  if (memory == nullptr) errno = ENOMEM;
  if (memory != nullptr) liveBytes += malloc_usable_size(memory);
  peakBytes = std::max<std::size_t>(peakBytes, liveBytes);
  return memory;
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
  return counted([=] { return __libc_malloc(size); });
}

void* calloc(std::size_t members, std::size_t size) {
  return counted([=] { return __libc_calloc(members, size); });
}

void* realloc(void* memory, std::size_t size) {
  return counted([=] {
    const std::size_t before = memory != nullptr ? malloc_usable_size(memory) : 0;
    void* const moved = __libc_realloc(memory, size);
    if (moved != nullptr || size == 0) liveBytes -= before;
    return moved;
  });
}

void free(void* memory) {
  if (memory == nullptr) return;
  const std::size_t size = malloc_usable_size(memory);
  liveBytes -= size;
  std::memset(memory, 0xDD, size);
  __libc_free(memory);
}

}  // extern "C"

#endif
