#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Command {

/// The first elements of a list, as long as there are no more.
template <class Element>
class FirstFew {
 public:
  static constexpr std::size_t MOST_HELD = 256;

  void add(const Element& element) {
    if (++_count <= MOST_HELD) return _held.push_back(element);
    std::vector<Element>().swap(_held);
  }
  uint64_t count() const { return _count; }
  bool areAll() const { return _held.size() == _count; }
  const std::vector<Element>& held() const { return _held; }  ///< all or none

 private:
  std::vector<Element> _held;
  uint64_t _count = 0;
};

}  // namespace Command
