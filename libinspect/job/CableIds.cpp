#include <libinspect/job/CableIds.h>

#include <sstream>

#include <fmt/format.h>

#include <libcrossplatform/common/CableIDSeq.h>
#include <libinspect/container/ByteSource.h>

namespace Inspect {
namespace {

enum class CharacterKind { LITERAL, LOWER, UPPER, DIGIT };

CharacterKind kindOf(char c) {
  if (c >= '0' && c <= '9') return CharacterKind::DIGIT;
  if (c >= 'A' && c <= 'Z') return CharacterKind::UPPER;
  if (c >= 'a' && c <= 'z') return CharacterKind::LOWER;
  return CharacterKind::LITERAL;
}

bool isLetter(CharacterKind kind) {
  return kind == CharacterKind::LOWER || kind == CharacterKind::UPPER;
}

/// The rule that the first unsuitable position breaks; empty when all fit.
std::string positionRefusal(const std::string& first, const std::string& last) {
  for (std::size_t i = 0; i < first.size(); ++i) {
    const CharacterKind kind = kindOf(first[i]);
    const CharacterKind lastKind = kindOf(last[i]);
    const std::string where = fmt::format("position {}: '{}' and '{}'", i + 1, first[i], last[i]);
    if (kind != lastKind) {
      return where + (isLetter(kind) && isLetter(lastKind)
                          ? " differ in letter case"
                          : " must be both letters, both digits or the same character");
    }
    if (kind == CharacterKind::LITERAL && first[i] != last[i])
      return where + " must be the same, since only letters and digits may vary";
    if (isLetter(kind) && last[i] < first[i]) {
      return fmt::format("position {}: '{}' comes after '{}'", i + 1, first[i], last[i]);
    }
    if (kind == CharacterKind::DIGIT && (i + 1 == first.size() || kindOf(first[i + 1]) != CharacterKind::DIGIT)) {
      const std::size_t begin = first.find_last_not_of("0123456789", i) + 1;  // 0 when the field is at the beginning
      const std::string from = first.substr(begin, i + 1 - begin), to = last.substr(begin, i + 1 - begin);
      if (to < from) return fmt::format("position {}: {} comes after {}", begin + 1, from, to);
    }
  }
  return {};
}

std::string refusalOf(const std::string& first, const std::string& last) {
  CIDPattern pattern;
  if (!pattern.compile(first)) return fmt::format("longer than {} characters", CIDPattern::MAX_CHARACTERS);
  if (first.size() != last.size()) {
    return fmt::format("the lengths differ: {} and {} bytes", first.size(), last.size());
  }
  if (std::string refusal = positionRefusal(first, last); !refusal.empty()) return refusal;
  return first == last ? "a set needs at least two IDs" : fmt::format("more than {} IDs", MAX_CABLE_IDS);
}

}  // namespace

bool CableIdSet::build(const std::string& first, const std::string& last, std::string& refusal) {
  if (_pattern.compile(first) && _pattern.setEnding(last, _number)) return true;
  refusal = refusalOf(first, last);
  return false;
}

std::vector<std::string> CableIdSet::ids(uint32_t from, uint32_t most) const {
  std::vector<std::string> ids;
  CIDNumber number(_number);
  for (uint32_t ordinal = from; ids.size() < most && number.setOrdinal(ordinal); ++ordinal) {
    ids.push_back(_pattern.toString(number));
  }
  return ids;
}

std::optional<uint32_t> CableIdSet::ordinalOf(const std::string& id) const {
  CIDNumber number(_number);
  if (!_pattern.setOrdinal(id, number)) return std::nullopt;
  return number.Ordinal();
}

bool readUsedIds(const std::string& path, std::vector<std::string>& used, std::string& error) {
  std::string text;
  if (!readText(path, MOST_TEXT, text, error)) return false;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) used.push_back(line);
  }
  return true;
}

std::vector<std::string> nextFreeIds(const std::string& first, const std::string& last,
                                     const std::vector<std::string>& used, uint32_t most,
                                     std::vector<std::string>& foreign) {
  CableIDSeq sequence;
  std::vector<std::string> ids;
  if (!sequence.verifyIDSet(first, last)) return ids;
  for (const std::string& id : used) {
    if (!sequence.pruneID(id)) foreign.push_back(id);
  }
  while (ids.size() < most && sequence.getUsed() < sequence.getTotal()) ids.push_back(sequence.takeNextID());
  return ids;
}

}  // namespace Inspect
