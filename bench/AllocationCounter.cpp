#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
std::size_t count = 0;  // the benchmarks have one thread
}

std::size_t Bench::allocations() {
  return count;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  ++count;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
