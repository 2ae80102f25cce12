#include <libcrossplatform/common/CableIDSeq.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace {

/// In the position map: the ID is taken. At the end of both lists: nothing follows. No index and no ordinal of a full
/// set has this value.
constexpr uint16_t TAKEN = MAX_CABLE_IDS;

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
  _firstID.swap(other._firstID);
  _lastID.swap(other._lastID);
  std::swap(_pattern, other._pattern);
  _next.swap(other._next);
  std::swap(_total, other._total);
  std::swap(_used, other._used);
  _freeList.swap(other._freeList);
  _positionMap.swap(other._positionMap);
}

void CableIDSeq::clear() {
  *this = CableIDSeq();
}

bool CableIDSeq::verifyIDSet(const std::string& first, const std::string& last) {
  CableIDSeq fresh;  // built aside: the arguments may be this sequence's own IDs
  if (!fresh._pattern.compile(first) || !fresh._pattern.setEnding(last, fresh._next)) {
    clear();
    return false;
  }
  fresh._firstID = first;
  fresh._lastID = last;
  fresh._total = fresh._next.getTotal();
  fresh._freeList.resize(size_t{fresh._total} + 1);
  std::iota(fresh._freeList.begin(), fresh._freeList.end(), uint16_t{0});
  fresh._freeList.back() = TAKEN;
  fresh._positionMap = fresh._freeList;
  swap(fresh);
  return true;
}

int CableIDSeq::getNextOrd() const {
  const uint32_t ordinal = _next.Ordinal();
  if (ordinal >= _positionMap.size() || _positionMap[ordinal] == TAKEN) return 0;
  return _positionMap[ordinal];
}

std::string CableIDSeq::operator[](int i) const {
  if (i < 0 || static_cast<uint32_t>(i) >= _total - _used) return std::string();
  return idAt(_freeList[static_cast<size_t>(i)]);
}

std::string CableIDSeq::calcID(const std::string& id) const {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal)) return std::string();
  const uint16_t position = _positionMap[ordinal];
  if (position == TAKEN) return std::string();  // the element after it would be outside the list
  // After the last free ID comes the sentinel or what take() left there; it is returned as it is.
  const uint16_t successor = _freeList[size_t{position} + 1];
  return successor != TAKEN ? idAt(successor) : std::string();
}

bool CableIDSeq::updateNextID(const std::string& id) {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal) || _positionMap[ordinal] == TAKEN) return false;
  return _next.setOrdinal(ordinal);
}

bool CableIDSeq::pruneID(const std::string& id) {
  uint32_t ordinal = 0;
  if (!ordinalOf(id, ordinal) || _positionMap[ordinal] == TAKEN) return false;
  take(ordinal);
  return true;
}

std::string CableIDSeq::takeNextID() {
  if (_used == _total) return std::string();
  std::string id = _pattern.toString(_next);
  take(_next.Ordinal());  // the next ID is always free while any is
  return id;
}

bool CableIDSeq::operator==(const CableIDSeq& other) const {
  // The position map determines the valid entries of the free list and its length. The entries after them depend on the
  // order of taking and do not count.
  return _firstID == other._firstID && _lastID == other._lastID && _used == other._used && _total == other._total &&
         _positionMap == other._positionMap;
}

/// The ordinal of an ID of the set. False for any other ID, and for every ID when none is left.
bool CableIDSeq::ordinalOf(const std::string& id, uint32_t& ordinal) const {
  if (_used == _total) return false;
  CIDNumber number(_next);
  if (!_pattern.setOrdinal(id, number)) return false;
  ordinal = number.Ordinal();
  return true;
}

/// The ID of an ordinal below _total.
std::string CableIDSeq::idAt(uint32_t ordinal) const {
  CIDNumber number(_next);
  (void)number.setOrdinal(ordinal);  // it is in the set
  return _pattern.toString(number);
}

/// Takes a free ordinal and makes its successor the next one.
void CableIDSeq::take(uint32_t ordinal) {
  const size_t position = _positionMap[ordinal];
  _positionMap[ordinal] = TAKEN;
  moveDown(_positionMap.data() + ordinal + 1, _positionMap.data() + _total);
  // The last free entry keeps its value after the new end, where calcID finds it.
  std::copy(_freeList.begin() + static_cast<std::ptrdiff_t>(position) + 1,
            _freeList.begin() + static_cast<std::ptrdiff_t>(_total - _used),
            _freeList.begin() + static_cast<std::ptrdiff_t>(position));
  ++_used;
  if (_used == _total) return;  // the next ID stays the one just taken
  (void)_next.setOrdinal(position < _total - _used ? _freeList[position] : _freeList[0]);
}
