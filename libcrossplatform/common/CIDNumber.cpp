#include <libcrossplatform/common/CIDNumber.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

void CIDNumber::swap(CIDNumber& other) noexcept {
  _radices.swap(other._radices);
  _values.swap(other._values);
  std::swap(_count, other._count);
  std::swap(_total, other._total);
}

void CIDNumber::clear() {
  _radices.clear();
  _values.clear();
  _count = 0;
  _total = 0;
}

bool CIDNumber::initialize(const uint32_t radices[], int n) {
  clear();
  if (n < 1) return true;
  const size_t positions = static_cast<size_t>(n);
  _radices.resize(positions + 1);  // one spare element after the positions
  _values.resize(positions + 1);
  uint32_t product = 1;
  for (size_t i = 0; i < positions; ++i) {
    const uint32_t radix = radices[i];
    if (radix == 0 || radix > MAX_CABLE_IDS) return false;
    if (radix * product > MAX_CABLE_IDS) return false;  // cannot wrap: both are at most 32767
    product *= radix;
    _radices[i] = radix;
    _values[i] = 0;
  }
  _count = n;
  _total = product;
  return true;
}

uint32_t CIDNumber::Ordinal() const {
  uint32_t ordinal = 0;
  for (size_t i = 0; i < static_cast<size_t>(_count); ++i) ordinal = ordinal * _radices[i] + _values[i];
  return ordinal;
}

bool CIDNumber::setOrdinal(uint32_t ord) {
  if (ord >= _total) return false;
  uint32_t weight = _total;
  for (size_t i = 0; i < static_cast<size_t>(_count); ++i) {
    weight /= _radices[i];  // exact, and never 0: the total is the product of the radices
    _values[i] = ord / weight;
    ord %= weight;
  }
  return true;
}

bool CIDNumber::setOrdinal(const uint32_t values[], int n) {
  if (!checkOrdinal(values, n)) return false;
  std::copy_n(values, n, _values.begin());
  return true;
}

bool CIDNumber::checkOrdinal(const uint32_t values[], int n) const {
  return n == _count && std::equal(values, values + n, _radices.begin(), std::less<uint32_t>());
}

uint32_t CIDNumber::getValue(int position) const {
  return position >= 0 && position < _count ? _values[static_cast<size_t>(position)] : 0;
}
