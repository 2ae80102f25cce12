#include <libcrossplatform/common/internal/JsonMembers.h>

#include <utility>

#include <libcrossplatform/common/TimeUtil.h>
#include <libcrossplatform/common/jsonutil.h>

namespace Veltra {

void MemberWriter::time(const char* key, long v) {
  _object[key] = sysTimeToStr(static_cast<time_t>(v));
}

void MemberReader::text(const char* key, std::string& v) {
  take(key, v, stringFromJson);
}

void MemberReader::boolean(const char* key, bool& v) {
  take(key, v, boolFromJson);
}

void MemberReader::integer(const char* key, int& v) {
  take(key, v, intFromJson);
}

void MemberReader::integer(const char* key, unsigned& v) {
  take(key, v, uintFromJson);
}

void MemberReader::integer(const char* key, int16_t& v) {
  int wide = v;
  integer(key, wide);
  v = static_cast<int16_t>(wide);
}

void MemberReader::integer(const char* key, uint16_t& v) {
  unsigned wide = v;
  integer(key, wide);
  if (_ok && wide > UINT16_MAX) fail(key);
  if (_ok) v = static_cast<uint16_t>(wide);
}

void MemberReader::time(const char* key, long& v) {
  if (!_ok) return;
  const boost::optional<time_t> read = timeFromJson(_object, key);
  if (!read) return fail(key);
  v = static_cast<long>(*read);
}

template <class T>
void MemberReader::take(const char* key, T& v, boost::optional<T> (*exact)(const Json::Value&, const char*)) {
  if (!_ok) return;
  if (_rule == MemberRule::EXACT) {
    boost::optional<T> read = exact(_object, key);
    if (!read) return fail(key);
    v = std::move(*read);
    return;
  }
  const Json::Value* const member = jsonMember(_object, key);
  if (member == nullptr || (member->isNull() && _rule == MemberRule::CONVERTED_OR_NULL)) return;
  if (!convertJson(*member, v)) fail(key);
}

void MemberReader::fail(const char* key) {
  _ok = false;
  logJsonFailure(_source, _line, key);
}

}  // namespace Veltra
