#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <libcrossplatform/common/CIDPattern.h>

namespace Inspect {

/// The set of cable IDs from a first to a last one.
class CableIdSet {
 public:
  /// @return false, with `refusal` naming the rule the pair breaks
  [[nodiscard]] bool build(const std::string& first, const std::string& last, std::string& refusal);

  uint32_t count() const { return _number.getTotal(); }
  /// Up to `most` IDs from an ordinal on; fewer at the end of the set.
  std::vector<std::string> ids(uint32_t from, uint32_t most) const;
  std::optional<uint32_t> ordinalOf(const std::string& id) const;

 private:
  CIDPattern _pattern;
  CIDNumber _number;
};

/// Appends the lines of an input, "-" for standard input, that are not empty; their ends may be those of Windows.
/// @return false, with `error` filled: it could not be read, or has more than MOST_TEXT bytes
[[nodiscard]] bool readUsedIds(const std::string& path, std::vector<std::string>& used, std::string& error);

/// Up to `most` free IDs after those used, in the order they are to be used.
/// @param used     IDs taken so far, in the order they were taken
/// @param foreign  receives the used IDs that are not in the set, or were listed before
std::vector<std::string> nextFreeIds(const std::string& first, const std::string& last,
                                     const std::vector<std::string>& used, uint32_t most,
                                     std::vector<std::string>& foreign);

}  // namespace Inspect
