#include <libcrossplatform/common/CableIDSeq.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace {

/// In the position map: the ID is taken. At the end of both lists: nothing follows. No index and no ordinal of a full
/// set comes to this value, because it is MAX_CABLE_IDS.
constexpr uint16_t TAKEN = 32767;

/// The entry of the position map when one free ID before it is gone. Without a branch, so that loops over it vectorise.
uint16_t moveDown(uint16_t entry) {
  return static_cast<uint16_t>(entry - (entry != TAKEN));
}

/// Moves a stretch of the position map down: what taking an ID costs. In blocks, because one vector at a time is a loop
/// so short that its speed depends on where the linker puts it.
void moveDown(uint16_t* at, const uint16_t* end) {
  constexpr int BLOCK = 32;
  for (; end - at >= BLOCK; at += BLOCK) {
    for (int i = 0; i < BLOCK; ++i) at[i] = moveDown(at[i]);
  }
  for (; at != end; ++at) *at = moveDown(*at);
}

}  // namespace

void CableIDSeq::swap(CableIDSeq& other) noexcept {
  firstID_.swap(other.firstID_);
  lastID_.swap(other.lastID_);
  std::swap(pattern_, other.pattern_);
  next_.swap(other.next_);
  std::swap(total_, other.total_);
  std::swap(used_, other.used_);
  freeList_.swap(other.freeList_);
  positionMap_.swap(other.positionMap_);
}

void CableIDSeq::clear() {
  *this = CableIDSeq();
}

bool CableIDSeq::verifyIDSet(const std::string& first, const std::string& last) {
  CableIDSeq fresh;  // built aside: the arguments may be this sequence's own IDs
  if (!fresh.pattern_.compile(first) || !fresh.pattern_.setEnding(last, fresh.next_)) {
    clear();
    return false;
  }
  fresh.firstID_ = first;
  fresh.lastID_ = last;
  fresh.total_ = fresh.next_.getTotal();
  fresh.freeList_.resize(size_t{fresh.total_} + 1);
  std::iota(fresh.freeList_.begin(), fresh.freeList_.end(), uint16_t{0});
  fresh.freeList_.back() = TAKEN;
  fresh.positionMap_ = fresh.freeList_;
  swap(fresh);
  return true;
}

int CableIDSeq::getNextOrd() const {
  const uint32_t ordinal = next_.Ordinal();
  if (ordinal >= positionMap_.size() || positionMap_[ordinal] == TAKEN) return 0;
  return positionMap_[ordinal];
}

std::string CableIDSeq::operator[](int i) const {
  if (i < 0 || static_cast<uint32_t>(i) >= total_ - used_) return std::string();
  return idAt(freeList_[static_cast<size_t>(i)]);
}

std::string CableIDSeq::calcID(const std::string& id) const {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal)) return std::string();
  const uint16_t position = positionMap_[ordinal];
  if (position == TAKEN) return std::string();  // the element behind it would lie outside the list
  // Behind the last free ID stands the sentinel or what take() left there; it is answered as it is.
  const uint16_t successor = freeList_[size_t{position} + 1];
  return successor != TAKEN ? idAt(successor) : std::string();
}

bool CableIDSeq::updateNextID(const std::string& id) {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal) || positionMap_[ordinal] == TAKEN) return false;
  return next_.setOrdinal(ordinal);
}

bool CableIDSeq::pruneID(const std::string& id) {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal) || positionMap_[ordinal] == TAKEN) return false;
  take(ordinal);
  return true;
}

std::string CableIDSeq::takeNextID() {
  if (used_ == total_) return std::string();
  std::string id = pattern_.toString(next_);
  take(next_.Ordinal());  // the next ID is always free while any is
  return id;
}

bool CableIDSeq::operator==(const CableIDSeq& other) const {
  // The position map settles the valid entries of the free list and the length of it. Those behind them depend on the
  // order of taking and do not count.
  return firstID_ == other.firstID_ && lastID_ == other.lastID_ && used_ == other.used_ && total_ == other.total_ &&
         positionMap_ == other.positionMap_;
}

/// The ordinal of an ID of the set. False for any other ID, and for every ID when none is left.
bool CableIDSeq::ordinalOf(const std::string& id, uint32_t& ordinal) const {
  if (used_ == total_) return false;
  CIDNumber number(next_);
  if (!pattern_.setOrdinal(id, number)) return false;
  ordinal = number.Ordinal();
  return true;
}

/// The ID of an ordinal below total_.
std::string CableIDSeq::idAt(uint32_t ordinal) const {
  CIDNumber number(next_);
  number.setOrdinal(ordinal);
  return pattern_.toString(number);
}

/// Takes a free ordinal and makes its successor the next one.
void CableIDSeq::take(uint32_t ordinal) {
  const size_t position = positionMap_[ordinal];
  positionMap_[ordinal] = TAKEN;
  moveDown(positionMap_.data() + ordinal + 1, positionMap_.data() + total_);
  // The last free entry keeps its value behind the new end, where calcID finds it.
  std::copy(freeList_.begin() + static_cast<std::ptrdiff_t>(position) + 1,
            freeList_.begin() + static_cast<std::ptrdiff_t>(total_ - used_),
            freeList_.begin() + static_cast<std::ptrdiff_t>(position));
  ++used_;
  if (used_ == total_) return;  // the next ID stays the one just taken
  next_.setOrdinal(position < total_ - used_ ? freeList_[position] : freeList_[0]);
}
