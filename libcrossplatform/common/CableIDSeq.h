#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/common/CIDNumber.h>
#include <libcrossplatform/common/CIDPattern.h>
#include <libcrossplatform/logging/Export.h>

/// Hands out the cable IDs of one set, first ID .. last ID, in order, and remembers which are taken.
///
/// An ID the user picks by hand, with pruneID or updateNextID, moves the sequence: it continues after that ID and
/// starts again at the lowest free one when it has passed the last. What an ID is and which IDs a set has: CIDPattern.
///
/// To store a sequence keep its first ID, its last ID and the taken IDs in the order they were taken; verifyIDSet and
/// one pruneID for each rebuild it. A next ID picked with updateNextID and not taken yet must be picked again.
///
/// A value: default-constructed cleared, moved from cleared. A set of n IDs costs two lists of n + 1 16-bit elements,
/// 128 KiB at most, and taking an ID costs time proportional to n. Nothing but a failed allocation throws.
class VELTRA_EXPORT CableIDSeq {
 public:
  CableIDSeq() = default;
  CableIDSeq(const CableIDSeq& other) = default;
  CableIDSeq(CableIDSeq&& other) noexcept { swap(other); }
  CableIDSeq& operator=(CableIDSeq other) noexcept {
    swap(other);
    return *this;
  }
  void swap(CableIDSeq& other) noexcept;

  /// Leaves empty IDs and an empty set.
  void clear();

  /// Starts a set, with every ID free and the first one next. A pair without letters and digits is an empty set.
  /// @return false, with the sequence cleared, when the pair does not make a set: `first` has more than
  ///         CIDPattern::MAX_CHARACTERS characters, or CIDPattern::setEnding refuses `last`
  [[nodiscard]] bool verifyIDSet(const std::string& first, const std::string& last);

  /// Position of the next ID among the free ones; 0 when none is left.
  int getNextOrd() const;

  /// The i-th free ID, counted from 0 at the lowest; empty when there are not that many.
  std::string operator[](int i) const;

  /// The free ID that follows `id`, which must be free and not the last free one. The last free ID has no successor:
  /// for it the result is empty while nothing has been taken, later the ID that was the last free one before the
  /// latest ID was taken.
  /// @return empty also when no ID is left, or `id` is taken or not in the set
  std::string calcID(const std::string& id) const;

  /// Makes a free ID the next one.
  /// @return false, with nothing changed, when `id` is taken or not in the set
  [[nodiscard]] bool updateNextID(const std::string& id);

  /// Takes an ID. The free ID after it becomes the next one, or the lowest free one if it was the last.
  /// @return false, with nothing changed, when `id` is taken or not in the set
  [[nodiscard]] bool pruneID(const std::string& id);

  /// Takes the next ID as pruneID does.
  /// @return the ID taken; empty when none is left
  std::string takeNextID();

  ///@{
  /// As given to verifyIDSet(); empty when cleared.
  const std::string& getFirstID() const { return _firstID; }
  const std::string& getLastID() const { return _lastID; }
  ///@}
  uint32_t getTotal() const { return _total; }  ///< how many IDs the set has
  uint32_t getUsed() const { return _used; }    ///< how many of them are taken

  /// Whether first ID, last ID and taken IDs are the same. The next IDs and the order of taking may differ.
  bool operator==(const CableIDSeq& other) const;
  bool operator!=(const CableIDSeq& other) const { return !(*this == other); }

 private:
  [[nodiscard]] bool ordinalOf(const std::string& id, uint32_t& ordinal) const;
  std::string idAt(uint32_t ordinal) const;
  void take(uint32_t ordinal);

  std::string _firstID;
  std::string _lastID;
  CIDPattern _pattern;
  CIDNumber _next;
  uint32_t _total = 0;
  uint32_t _used = 0;
  // Each has _total + 1 elements, the last of them 32767. For every free ordinal o: _freeList[_positionMap[o]] == o.
  std::vector<uint16_t> _freeList;     // the free ordinals, ascending; only the first _total - _used are valid
  std::vector<uint16_t> _positionMap;  // by ordinal: its index in _freeList, or 32767 when taken
};
