#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <vector>

#include <libcrossplatform/logging/Export.h>

/// The largest number of cable IDs that one set may hold. The library exports it as a symbol too.
[[gnu::used]] VELTRA_EXPORT inline constexpr uint16_t MAX_CABLE_IDS = 32767;

/// The place of one cable ID in its set: a mixed-radix number with one digit for every variable position of the ID.
/// A digit is the offset of its position from the set's first ID; the leftmost position is the most significant, so
/// counting up changes the rightmost fastest. A value: default-constructed cleared, moved from cleared. Nothing but a
/// failed allocation throws.
class VELTRA_EXPORT CIDNumber {
 public:
  CIDNumber() = default;
  CIDNumber(const CIDNumber& other) = default;
  CIDNumber(CIDNumber&& other) noexcept { swap(other); }
  CIDNumber& operator=(CIDNumber other) noexcept {
    swap(other);
    return *this;
  }
  void swap(CIDNumber& other) noexcept;

  /// Removes all positions; the total is then 0.
  void clear();

  /// Sets up the positions, every one at offset 0.
  /// @param radices  for each position, from the left, how many values it takes
  /// @param n        the number of positions; below 1 leaves the number cleared, which is a success
  /// @return false, with no positions and a total of 0, when a radix is 0 or the product of all is over MAX_CABLE_IDS
  [[nodiscard]] bool initialize(const uint32_t radices[], int n);

  /// The number's place in the order of its set, 0 to getTotal() - 1; 0 without positions.
  uint32_t Ordinal() const;

  /// Sets the number to the one with this place in the order.
  /// @return false, with nothing changed, when `ord` is not below getTotal()
  [[nodiscard]] bool setOrdinal(uint32_t ord);

  /// Sets the number to these offsets, leftmost first.
  /// @return false, with nothing changed, when checkOrdinal(values, n) is false
  [[nodiscard]] bool setOrdinal(const uint32_t values[], int n);

  /// Whether `values` are offsets of this number: exactly getCount() of them, each below its radix.
  bool checkOrdinal(const uint32_t values[], int n) const;

  /// How many positions the number has.
  int32_t getCount() const { return _count; }

  /// How many IDs the set has, the product of all radices; 0 without positions.
  uint32_t getTotal() const { return _total; }

  /// The offset at a position, counted from 0 at the left; 0 where the number has no such position.
  uint32_t getValue(int position) const;

 private:
  std::vector<uint32_t> _radices;  // sized _count + 1, as _values
  std::vector<uint32_t> _values;
  int32_t _count = 0;
  uint32_t _total = 0;
};
