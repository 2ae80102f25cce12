#include <libcrossplatform/common/CIDPattern.h>

#include <algorithm>
#include <array>

namespace {

// The lowest code of each kind. Below the first of them a code is a literal, the byte itself.
constexpr uint16_t LOWER_CASE = 256;  // + letter - 'a'
constexpr uint16_t UPPER_CASE = 512;  // + letter - 'A'
constexpr uint16_t DIGIT = 768;       // + digit - '0'

constexpr uint32_t FIELD_LIMIT = 0xFFFFFFF;  // the largest value that can still be multiplied by ten

// Every position takes at least one character, so no ID has more of them.
using Offsets = std::array<uint32_t, CIDPattern::MAX_CHARACTERS>;

uint16_t codeOf(char character) {
  const auto byte = static_cast<uint8_t>(character);
  if (byte >= '0' && byte <= '9') return static_cast<uint16_t>(DIGIT + (byte - '0'));
  if (byte >= 'A' && byte <= 'Z') return static_cast<uint16_t>(UPPER_CASE + (byte - 'A'));
  if (byte >= 'a' && byte <= 'z') return static_cast<uint16_t>(LOWER_CASE + (byte - 'a'));
  return byte;
}

bool sameKind(uint16_t a, uint16_t b) {
  return a / 256 == b / 256;
}

bool tooLong(const std::string& id) {
  const auto startsCharacter = [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; };
  return static_cast<size_t>(std::count_if(id.begin(), id.end(), startsCharacter)) > CIDPattern::MAX_CHARACTERS;
}

char letterAbove(uint16_t code, uint32_t value) {
  const uint32_t letter = code < UPPER_CASE ? code - LOWER_CASE + 'a' : code - UPPER_CASE + 'A';
  return static_cast<char>(letter + value);  // does not pass 'z' within the set
}

}  // namespace

bool CIDPattern::compile(const std::string& first) {
  if (tooLong(first)) return false;
  _codes.resize(first.size());
  std::transform(first.begin(), first.end(), _codes.begin(), codeOf);
  return true;
}

bool CIDPattern::computeDelta(const std::string& id, uint32_t offsets[], int& n) const {
  if (id.size() != _codes.size() || tooLong(id)) return false;
  n = 0;
  for (size_t i = 0; i < _codes.size();) {
    const uint16_t code = _codes[i];
    if (code >= DIGIT) {
      const size_t end = fieldEnd(i);
      uint32_t delta = 0;
      if (!fieldDelta(id, i, end, delta)) return false;
      offsets[n++] = delta;
      i = end;
      continue;
    }
    const uint16_t idCode = codeOf(id[i++]);
    if (code < LOWER_CASE) {
      if (idCode != code) return false;
      continue;
    }
    if (!sameKind(idCode, code) || idCode < code) return false;
    offsets[n++] = static_cast<uint32_t>(idCode - code);
  }
  return true;
}

bool CIDPattern::setEnding(const std::string& last, CIDNumber& num) const {
  Offsets radices;
  int n = 0;
  if (!computeDelta(last, radices.data(), n)) return false;
  std::for_each(radices.begin(), radices.begin() + n, [](uint32_t& offset) { ++offset; });
  return num.initialize(radices.data(), n) && num.getTotal() != 1;  // a set of one ID is refused, an empty set is not
}

bool CIDPattern::setOrdinal(const std::string& id, CIDNumber& num) const {
  Offsets offsets;
  int n = 0;
  return computeDelta(id, offsets.data(), n) && num.setOrdinal(offsets.data(), n);
}

bool CIDPattern::checkOrdinal(const std::string& id, const CIDNumber& num) const {
  Offsets offsets;
  int n = 0;
  return computeDelta(id, offsets.data(), n) && num.checkOrdinal(offsets.data(), n);
}

std::string CIDPattern::toString(const CIDNumber& num) const {
  std::string id(_codes.size(), '\0');
  int position = 0;
  for (size_t i = 0; i < _codes.size();) {
    const uint16_t code = _codes[i];
    if (code >= DIGIT) {
      const size_t end = fieldEnd(i);
      writeField(i, end, num.getValue(position++), id);
      i = end;
    } else {
      id[i++] = code < LOWER_CASE ? static_cast<char>(code) : letterAbove(code, num.getValue(position++));
    }
  }
  return id;
}

/// Where the run of digits that starts at `begin` ends.
size_t CIDPattern::fieldEnd(size_t begin) const {
  const auto isNoDigit = [](uint16_t code) { return code < DIGIT; };
  const auto from = _codes.begin() + static_cast<std::ptrdiff_t>(begin);
  return static_cast<size_t>(std::find_if(from, _codes.end(), isNoDigit) - _codes.begin());
}

/// Subtracts the pattern's field from the ID's. False when a byte of the ID is not a digit, when its field is the
/// smaller one, or when the difference is too large; `delta` is then not set.
bool CIDPattern::fieldDelta(const std::string& id, size_t begin, size_t end, uint32_t& delta) const {
  std::array<uint8_t, MAX_CHARACTERS> difference{};  // its digits; no field is wider than the longest ID
  int borrow = 0;
  for (size_t i = end; i-- > begin;) {
    const uint16_t idCode = codeOf(id[i]);
    if (idCode < DIGIT) return false;
    const int digit = idCode - _codes[i] - borrow;
    borrow = digit < 0 ? 1 : 0;
    difference[i - begin] = static_cast<uint8_t>(digit + 10 * borrow);
  }
  if (borrow != 0) return false;
  uint32_t value = 0;
  for (size_t i = 0; i < end - begin; ++i) {
    if (value > FIELD_LIMIT) return false;
    value = 10 * value + difference[i];
  }
  delta = value;
  return true;
}

/// Adds `value` to the pattern's field and writes the sum; a carry out of the leftmost digit is dropped.
void CIDPattern::writeField(size_t begin, size_t end, uint32_t value, std::string& id) const {
  uint32_t carry = 0;
  for (size_t i = end; i-- > begin; value /= 10) {
    const uint32_t sum = _codes[i] - DIGIT + value % 10 + carry;
    carry = sum > 9 ? 1 : 0;
    id[i] = static_cast<char>('0' + sum - 10 * carry);
  }
}
