#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {

/// Overwrites memory in a way the compiler may not remove.
void wipe(void* memory, std::size_t size);

/// Overwrites a text, its unused capacity included, and empties it.
void wipe(std::string& text);

/// Allocates as usual and overwrites the memory before it is freed, also when a container grows.
template <class T>
class WipingAllocator {
 public:
  using value_type = T;

  WipingAllocator() = default;
  template <class U>
  WipingAllocator(const WipingAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
  void deallocate(T* memory, std::size_t count) noexcept {
    wipe(memory, count * sizeof(T));
    std::allocator<T>().deallocate(memory, count);
  }
};

template <class T, class U>
bool operator==(const WipingAllocator<T>&, const WipingAllocator<U>&) noexcept {
  return true;
}
template <class T, class U>
bool operator!=(const WipingAllocator<T>&, const WipingAllocator<U>&) noexcept {
  return false;
}

/// Bytes that leave nothing behind in freed memory.
using SecretBytes = std::vector<uint8_t, WipingAllocator<uint8_t>>;

}  // namespace Veltra
