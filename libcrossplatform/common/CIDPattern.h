#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/common/CIDNumber.h>
#include <libcrossplatform/logging/Export.h>

/// The compiled form of the first ID of a set: what every ID of the set must look like.
///
/// Every ASCII letter is a position of its own. Every longest run of digits is one position, a decimal field that keeps
/// its width: 007 counts on to 008. Every other byte, those of multi-byte characters included, is a literal. The set
/// from a first to a last ID is the product of the ranges of its positions, not a lexicographic range: A5 .. C7 has B5,
/// B6 and B7 but not B9.
///
/// IDs may be any bytes, zero bytes included. A value; nothing but a failed allocation throws.
class VELTRA_EXPORT CIDPattern {
 public:
  /// The longest ID, in UTF-8 characters: bytes whose two top bits are not 1 and 0 are counted.
  static constexpr size_t MAX_CHARACTERS = 60;

  /// Takes `first` as the first ID. The empty ID has no positions.
  /// @return false, with the pattern unchanged, when it has more than MAX_CHARACTERS characters
  [[nodiscard]] bool compile(const std::string& first);

  /// Compares an ID with the pattern, position by position.
  /// @param offsets  receives for every position, from the left, how far it lies above the first ID; room for
  ///                 id.length() entries
  /// @param n        receives the number of offsets written, on failure those before the fault; unchanged when the ID
  ///                 has another length or more than MAX_CHARACTERS characters
  /// @return false when the length in bytes, a literal or the kind of a letter or digit differs, when a position lies
  ///         below the first ID, or when a field lies more than 2684354559 above it
  [[nodiscard]] bool computeDelta(const std::string& id, uint32_t offsets[], int& n) const;

  /// Sets `num` up for the set that ends with `last`, at the first ID.
  /// @return false when `last` does not fit the pattern (see computeDelta), when there are more than MAX_CABLE_IDS IDs,
  ///         or exactly one; `num` is then unchanged, cleared, or the number of that one ID. A pattern without
  ///         positions gives a valid empty set.
  [[nodiscard]] bool setEnding(const std::string& last, CIDNumber& num) const;

  /// Sets `num`, set up by setEnding, to an ID.
  /// @return false, with `num` unchanged, when the ID is not in the set
  [[nodiscard]] bool setOrdinal(const std::string& id, CIDNumber& num) const;

  /// Whether an ID is in the set that `num` was set up for.
  bool checkOrdinal(const std::string& id, const CIDNumber& num) const;

  /// The ID of `num`. A position that `num` lacks is as in the first ID.
  std::string toString(const CIDNumber& num) const;

 private:
  size_t fieldEnd(size_t begin) const;
  [[nodiscard]] bool fieldDelta(const std::string& id, size_t begin, size_t end, uint32_t& delta) const;
  void writeField(size_t begin, size_t end, uint32_t value, std::string& id) const;

  std::vector<uint16_t> _codes;  // one for every byte of the first ID: its kind and the letter or digit to start from
};
