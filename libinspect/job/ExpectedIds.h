#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Inspect {

/// The IDs that a job is to have results of: ranges and single IDs in the order in which they were given. An ID that is
/// given twice is one ID.
class ExpectedIds {
 public:
  static constexpr std::size_t MOST_IDS = 100000;  ///< of all ranges, counted range by range

  /// One range, or one single ID, as it was given.
  struct Range {
    std::string text;
    std::vector<uint32_t> ids;  ///< places in ids(); an ID of two ranges is in both
  };

  /// Adds "FIRST..LAST", or a single ID.
  /// @return false, with `error` naming the text and what is wrong with it; the IDs are not to be used then
  [[nodiscard]] bool add(const std::string& text, std::string& error);

  bool empty() const { return _ranges.empty(); }
  const std::vector<Range>& ranges() const { return _ranges; }
  const std::vector<std::string>& ids() const { return _ids; }
  /// The place of an ID in ids().
  std::optional<std::size_t> placeOf(const std::string& id) const;

 private:
  std::vector<Range> _ranges;
  std::vector<std::string> _ids;
  std::unordered_map<std::string, uint32_t> _places;
  std::size_t _listed = 0;  // IDs of all ranges, those of two ranges twice
};

/// The ranges that go from a first to a last number between the same texts, one for each number of digits, since the
/// IDs of a range have one length: P1..P9 and P10..P12.
/// @param digits  of the first number, leading zeros included
std::vector<std::string> rangesBetween(const std::string& before, uint64_t first, uint64_t last, std::size_t digits,
                                       const std::string& after);

/// Ranges and single IDs that contain all these IDs, in the order in which people count. IDs that differ in their last
/// number alone are a range, which goes on over a gap that is not longer than 24 IDs, or than there were in it so far.
/// @param ids      in any order, also more than once
/// @param likely   what may be IDs: counted where they fit into a range of the others
/// @param unusual  receives the IDs that cannot be written as an expected ID: with "..", empty, or no UTF-8
std::vector<std::string> guessedRanges(const std::vector<std::string>& ids, const std::vector<std::string>& likely,
                                       std::vector<std::string>& unusual);

}  // namespace Inspect
