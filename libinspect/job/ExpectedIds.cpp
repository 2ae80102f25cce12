#include <libinspect/job/ExpectedIds.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include <libcrossplatform/common/CIDNumber.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/container/PrintableText.h>
#include <libinspect/job/CableIds.h>
#include <libinspect/job/ResultRows.h>

namespace Inspect {
namespace {

constexpr char DIGITS[] = "0123456789";
constexpr char DOTS[] = "..";

/// A text around its last number.
struct NumberedText {
  std::string before, after;
  uint64_t number = 0;
  std::size_t digits = 0;

  bool isPadded() const { return digits > 1 && number < powerOfTen(digits - 1); }
  static uint64_t powerOfTen(std::size_t exponent) {
    uint64_t power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
  }
};

/// @return false for a text without a number, or with one of more digits than can be counted with
bool split(const std::string& text, NumberedText& parts) {
  constexpr std::size_t MOST_DIGITS = 18;
  const std::size_t last = text.find_last_of(DIGITS);
  if (last == std::string::npos) return false;
  const std::size_t begin = text.find_last_not_of(DIGITS, last) + 1;  // 0 when it is at the beginning
  parts.digits = last + 1 - begin;
  if (parts.digits > MOST_DIGITS) return false;
  parts.before = text.substr(0, begin);
  parts.after = text.substr(last + 1);
  parts.number = std::stoull(text.substr(begin, parts.digits));
  return true;
}

/// "; expected P1..P9 and P10..P12" where that is what somebody wanted to say; or else nothing.
std::string proposalFor(const std::string& first, const std::string& last) {
  constexpr std::size_t MOST_RANGES = 6;
  NumberedText from, to;
  if (first == last && !first.empty()) return "; expected " + first;
  const bool isCounted = split(first, from) && split(last, to) && from.before == to.before && from.after == to.after;
  if (!isCounted || from.digits >= to.digits || from.number >= to.number || to.isPadded()) return {};
  if (to.number - from.number >= MOST_RANGES * MAX_CABLE_IDS) return {};
  const std::vector<std::string> ranges = rangesBetween(from.before, from.number, to.number, from.digits, from.after);
  if (ranges.size() > MOST_RANGES) return {};
  return fmt::format("; expected {} and {}", fmt::join(ranges.begin(), ranges.end() - 1, ", "), ranges.back());
}

/// The numbers of IDs that differ in nothing else, in order, each once.
using Numbers = std::vector<uint64_t>;

/// Calls with the first and the last number of each range. A gap ends a range if it is longer than a patch panel, and
/// than there were IDs in the range so far.
template <class OnRange>
void forEachRange(const Numbers& numbers, const OnRange& onRange) {
  constexpr uint64_t PANEL = 24;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= numbers.size(); ++i) {
    if (i < numbers.size()) {
      const uint64_t gap = numbers[i] - numbers[i - 1] - 1;
      if (gap <= std::max<uint64_t>(PANEL, i - begin)) continue;
    }
    onRange(numbers[begin], numbers[i - 1]);
    begin = i;
  }
}

}  // namespace

bool ExpectedIds::add(const std::string& text, std::string& error) {
  const std::size_t dots = text.find(DOTS);
  std::vector<std::string> ids;
  if (text.empty()) {
    error = "expected FIRST..LAST or an ID, found nothing";
    return false;
  }
  if (dots == std::string::npos) {
    ids.push_back(text);
  } else {
    const std::string first = text.substr(0, dots), last = text.substr(dots + 2);
    CableIdSet set;
    std::string refusal = "a range needs a first and a last ID";
    if (first.empty() || last.empty() || !set.build(first, last, refusal)) {
      error = fmt::format("{}: {}{}", shortened(text), refusal, proposalFor(first, last));
      return false;
    }
    ids = set.ids(0, set.count());
    if (ids.empty()) {
      error = shortened(text) + ": has no letter or digit to count by";
      return false;
    }
  }
  Range range{text, {}};
  for (const std::string& id : ids) {
    const auto [place, isNew] = _places.emplace(id, static_cast<uint32_t>(_ids.size()));
    if (isNew) _ids.push_back(id);
    range.ids.push_back(place->second);
  }
  _listed += ids.size();
  if (_listed > MOST_IDS) {
    error = fmt::format("{}: more than {} IDs with it", shortened(text), MOST_IDS);
    return false;
  }
  _ranges.push_back(std::move(range));
  return true;
}

std::optional<std::size_t> ExpectedIds::placeOf(const std::string& id) const {
  const auto place = _places.find(id);
  if (place == _places.end()) return std::nullopt;
  return place->second;
}

std::vector<std::string> rangesBetween(const std::string& before, uint64_t first, uint64_t last, std::size_t digits,
                                       const std::string& after) {
  std::vector<std::string> ranges;
  const auto idOf = [&](uint64_t number) { return fmt::format("{}{:0{}}{}", before, number, digits, after); };
  for (uint64_t from = first, to = 0; from <= last; from = to + 1) {
    while (from >= NumberedText::powerOfTen(digits)) ++digits;
    to = std::min({last, NumberedText::powerOfTen(digits) - 1, from + MAX_CABLE_IDS - 1});
    ranges.push_back(from == to ? idOf(from) : idOf(from) + DOTS + idOf(to));
  }
  return ranges;
}

std::vector<std::string> guessedRanges(const std::vector<std::string>& ids, const std::vector<std::string>& likely,
                                       std::vector<std::string>& unusual) {
  // Numbers with leading zeros have one length; the others count on from 9 to 10: length 0.
  using Group = std::tuple<std::string, std::string, std::size_t>;
  std::map<Group, Numbers> groups;
  std::vector<std::string> ranges;
  std::vector<NumberedText> unpadded;
  for (const std::string& id : std::set<std::string>(ids.begin(), ids.end())) {
    NumberedText parts;
    CIDPattern pattern;
    if (id.empty() || id.find(DOTS) != std::string::npos || !Dump::isUtf8(id)) {
      unusual.push_back(id);
    } else if (!pattern.compile(id) || !split(id, parts)) {
      ranges.push_back(id);
    } else if (parts.isPadded()) {
      groups[{parts.before, parts.after, parts.digits}].push_back(parts.number);
    } else {
      unpadded.push_back(parts);
    }
  }
  for (const NumberedText& parts : unpadded) {
    const auto padded = groups.find({parts.before, parts.after, parts.digits});
    Numbers& numbers = padded != groups.end() ? padded->second : groups[{parts.before, parts.after, 0}];
    numbers.push_back(parts.number);
  }
  for (const std::string& id : likely) {
    NumberedText parts;
    if (!split(id, parts)) continue;
    auto group = groups.find({parts.before, parts.after, parts.digits});
    if (group == groups.end() && !parts.isPadded()) group = groups.find({parts.before, parts.after, 0});
    if (group != groups.end()) group->second.push_back(parts.number);
  }
  for (auto& [group, numbers] : groups) {
    const auto& [before, after, digits] = group;
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    forEachRange(numbers, [&, &before = before, &after = after, &digits = digits](uint64_t first, uint64_t last) {
      const std::vector<std::string> found =
          rangesBetween(before, first, last, std::max<std::size_t>(digits, 1), after);
      ranges.insert(ranges.end(), found.begin(), found.end());
    });
  }
  std::sort(ranges.begin(), ranges.end(), [](const std::string& a, const std::string& b) {
    return comesBefore(a, b) || (!comesBefore(b, a) && a < b);
  });
  return ranges;
}

}  // namespace Inspect
