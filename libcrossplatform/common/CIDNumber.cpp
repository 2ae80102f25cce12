#include <libcrossplatform/common/CIDNumber.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

const uint16_t MAX_CABLE_IDS = 32767;

void CIDNumber::swap(CIDNumber& other) noexcept {
  radices_.swap(other.radices_);
  values_.swap(other.values_);
  std::swap(count_, other.count_);
  std::swap(total_, other.total_);
}

void CIDNumber::clear() {
  radices_.clear();
  values_.clear();
  count_ = 0;
  total_ = 0;
}

bool CIDNumber::initialize(const uint32_t radices[], int n) {
  clear();
  if (n < 1) return true;
  const size_t positions = static_cast<size_t>(n);
  radices_.resize(positions + 1);  // one spare element behind the positions
  values_.resize(positions + 1);
  uint32_t product = 1;
  for (size_t i = 0; i < positions; ++i) {
    const uint32_t radix = radices[i];
    if (radix == 0 || radix > MAX_CABLE_IDS) return false;
    if (radix * product > MAX_CABLE_IDS) return false;  // cannot wrap: both are at most 32767
    product *= radix;
    radices_[i] = radix;
    values_[i] = 0;
  }
  count_ = n;
  total_ = product;
  return true;
}

uint32_t CIDNumber::Ordinal() const {
  uint32_t ordinal = 0;
  for (size_t i = 0; i < static_cast<size_t>(count_); ++i) ordinal = ordinal * radices_[i] + values_[i];
  return ordinal;
}

bool CIDNumber::setOrdinal(uint32_t ord) {
  if (ord >= total_) return false;
  uint32_t weight = total_;
  for (size_t i = 0; i < static_cast<size_t>(count_); ++i) {
    weight /= radices_[i];  // exact, and never 0: the total is the product of the radices
    values_[i] = ord / weight;
    ord %= weight;
  }
  return true;
}

bool CIDNumber::setOrdinal(const uint32_t values[], int n) {
  if (!checkOrdinal(values, n)) return false;
  std::copy_n(values, n, values_.begin());
  return true;
}

bool CIDNumber::checkOrdinal(const uint32_t values[], int n) const {
  return n == count_ && std::equal(values, values + n, radices_.begin(), std::less<uint32_t>());
}

uint32_t CIDNumber::getValue(int position) const {
  return position >= 0 && position < count_ ? values_[static_cast<size_t>(position)] : 0;
}
