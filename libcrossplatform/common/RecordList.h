#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/MarshalTypes.h>

namespace Veltra {

/// The elements of a list record, owned by it, in the order they were added. Copies are deep, and of the record itself:
/// what a subclass adds is not copied.
template <class T>
class RecordList {
 public:
  static constexpr bool IS_READ_OVER_ELEMENTS = true;  ///< reading starts with the elements that are there

  std::size_t size() const { return _elements.size(); }  ///< how many elements there are
  bool empty() const { return _elements.empty(); }       ///< whether there are none
  /// @param i  below size()
  T& operator[](std::size_t i) { return *_elements[i]; }
  /// @param i  below size()
  const T& operator[](std::size_t i) const { return *_elements[i]; }
  auto begin() const { return _elements.begin(); }  ///< iterates over std::unique_ptr<T>
  auto end() const { return _elements.end(); }      ///< adding and reading end every iterator
  void clear() { _elements.clear(); }

  /// The same number of elements, each equal to the other list's.
  bool operator==(const RecordList& other) const {
    return std::equal(begin(), end(), other.begin(), other.end(),
                      [](const auto& a, const auto& b) { return *a == *b; });
  }
  bool operator!=(const RecordList& other) const { return !(*this == other); }

 protected:
  RecordList() = default;
  ~RecordList() = default;
  RecordList(const RecordList& other) {
    _elements.reserve(other.size());
    for (const std::unique_ptr<T>& element : other) _elements.push_back(std::make_unique<T>(*element));
  }
  RecordList& operator=(const RecordList& other) {
    *this = RecordList(other);
    return *this;
  }
  RecordList(RecordList&&) noexcept = default;
  RecordList& operator=(RecordList&&) noexcept = default;

  /// A 16-bit count and the elements, for the field list of a list whose elements end it with -1 when they fail; those
  /// read before stay. The count of a longer list is cut to 16 bits, its elements all follow.
  template <class Fields>
  void fields16(Fields& f) {
    if constexpr (Fields::READING) {
      uint16_t count = 0;
      f.u16("count", count);
      readElements(f, count, Marshal::STREAM_WRONG_ELEMENT);
    } else {
      f.u16("count", _elements.size());
      writeElements(f);
    }
  }

  /// The elements alone, in place of those that were there.
  /// @param failure  code of a list whose element failed, in place of the element's own
  template <class Fields>
  void readElements(Fields& f, std::size_t count, Marshal::StreamOpStatus failure = Marshal::STREAM_OK) {
    f.elements(Marshal::ELEMENT_NAME, _elements, count, failure);
  }
  /// The elements alone, as they come.
  template <class Fields>
  void writeElements(Fields& f) {
    f.elements(Marshal::ELEMENT_NAME, _elements);
  }

  /// Appends; null is reported as an assertion at the list's own place, and nothing is added.
  void addChecked(std::unique_ptr<T> p, const char* file, int line) {
    if (p == nullptr) {
      assertFail("p != nullptr", file, line);
      return;
    }
    _elements.push_back(std::move(p));
  }

 private:
  std::vector<std::unique_ptr<T>> _elements;
};

}  // namespace Veltra
