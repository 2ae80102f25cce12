#include <libcrossplatform/common/Tweak.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/NumberText.h>

namespace Veltra {
namespace {

// What differs between the types, one overload each.

const char* typeName(int) {
  return "int";
}
const char* typeName(unsigned int) {
  return "unsigned int";
}
const char* typeName(float) {
  return "float";
}
const char* typeName(const std::string&) {
  return "string";
}

template <class Fields>
void valueField(Fields& f, int& v) {
  f.i32("value", v);
}
template <class Fields>
void valueField(Fields& f, unsigned int& v) {
  f.u32("value", v);
}
template <class Fields>
void valueField(Fields& f, float& v) {
  f.f32("value", v);
}
template <class Fields>
void valueField(Fields& f, std::string& v) {
  f.text("value", v);
}

constexpr char NAN_TEXT[] = "NaN";
constexpr char PLUS_INFINITY_TEXT[] = "+inf";
constexpr char MINUS_INFINITY_TEXT[] = "-inf";

std::string toText(int v) {
  return Dump::int64ToStr(v);
}
std::string toText(unsigned int v) {
  return Dump::int64ToStr(v);
}
std::string toText(float v) {
  if (std::isnan(v)) return NAN_TEXT;
  if (std::isinf(v)) return v > 0.0f ? PLUS_INFINITY_TEXT : MINUS_INFINITY_TEXT;
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, v).ptr);
}
std::string toText(const std::string& v) {
  return v;
}

template <class Number>
TweakStatus numberFromText(std::string_view text, Number& out) {
  const char* const end = text.data() + text.size();
  Number number{};
  const std::from_chars_result read = std::from_chars(text.data(), end, number);
  if (read.ec == std::errc::invalid_argument || read.ptr != end) return TWEAK_NOT_A_VALUE;
  if (read.ec != std::errc()) return TWEAK_OUT_OF_RANGE;
  out = number;
  return TWEAK_OK;
}

TweakStatus fromText(std::string_view text, int& out) {
  return numberFromText(text, out);
}
TweakStatus fromText(std::string_view text, unsigned int& out) {
  return numberFromText(text, out);
}
TweakStatus fromText(std::string_view text, float& out) {
  using Limits = std::numeric_limits<float>;
  float number = 0.0f;
  if (text == NAN_TEXT) {
    number = Limits::quiet_NaN();
  } else if (text == PLUS_INFINITY_TEXT) {
    number = Limits::infinity();
  } else if (text == MINUS_INFINITY_TEXT) {
    number = -Limits::infinity();
  } else if (const TweakStatus status = numberFromText(text, number); status != TWEAK_OK) {
    return status;
  } else if (!std::isfinite(number)) {
    return TWEAK_NOT_A_VALUE;  // "inf", "nan(1)" and so on: only the texts above stand for these
  }
  out = number;
  return TWEAK_OK;
}
TweakStatus fromText(std::string_view text, std::string& out) {
  out = text;
  return TWEAK_OK;
}

}  // namespace

TweakBase::~TweakBase() = default;

void TweakBase::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.field(_name.c_str(), getValueText().c_str());
}

template <class T>
const char* Tweak<T>::getTypeName() const {
  return typeName(_value);
}

template <class T>
std::string Tweak<T>::getValueText() const {
  return toText(_value);
}

template <class T>
std::string Tweak<T>::getDefaultText() const {
  return toText(_default);
}

template <class T>
TweakStatus Tweak<T>::setFromText(std::string_view text) {
  return fromText(text, _value);
}

template <class T>
void Tweak<T>::reset() {
  _value = _default;
}

template <class T>
template <class Fields>
void Tweak<T>::fields(Fields& f) {
  valueField(f, _value);
}

template <class T>
unsigned Tweak<T>::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writePlain(*this, out);
}

template <class T>
Marshal::StreamOpStatus Tweak<T>::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readPlain(*this, in);
}

template class Tweak<int>;
template class Tweak<unsigned int>;
template class Tweak<float>;
template class Tweak<std::string>;

bool TweakList::add(TweakBase& tweak) {
  if (_tweaks.emplace(tweak.getName(), &tweak).second) return true;
  assertFail("tweak name is new", "libcrossplatform/common/Tweak", __LINE__);
  return false;
}

TweakBase* TweakList::find(std::string_view name) {
  const auto at = _tweaks.find(name);
  return at != _tweaks.end() ? at->second : nullptr;
}

TweakStatus TweakList::set(std::string_view name, std::string_view text, std::string& message) {
  const auto quoted = [](std::string_view s) { return '"' + std::string(s) + '"'; };
  TweakBase* const tweak = find(name);
  const TweakStatus status = tweak != nullptr ? tweak->setFromText(text) : TWEAK_UNKNOWN_NAME;
  if (status == TWEAK_OK) {
    message.clear();
  } else if (tweak == nullptr) {
    message = "no tweak is named " + quoted(name);
  } else {
    message = tweak->getName() + ": " + quoted(text) +
              (status == TWEAK_OUT_OF_RANGE ? " is out of range for type " : " is not a value of type ") +
              tweak->getTypeName();
  }
  return status;
}

void TweakList::reset() {
  for (const auto& [name, tweak] : _tweaks) tweak->reset();
}

std::vector<TweakInfo> TweakList::list() const {
  std::vector<TweakInfo> infos;
  infos.reserve(_tweaks.size());
  for (const auto& [name, tweak] : _tweaks) {
    infos.push_back(
        {tweak->getName(), tweak->getTypeName(), tweak->getValueText(), tweak->getDefaultText(), tweak->getHelp()});
  }
  return infos;
}

}  // namespace Veltra
