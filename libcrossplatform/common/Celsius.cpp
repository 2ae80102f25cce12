#include <libcrossplatform/common/Celsius.h>

#include <cmath>
#include <limits>

#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/Celsius";

std::string textOf(float degrees) {
  return ScaledInt(degrees, ScaledInt::SCALED_TO_HUNDREDTHS).toString();
}

}  // namespace

void Celsius::clear() {
  degrees = std::numeric_limits<float>::quiet_NaN();
}

int16_t Celsius::getScaled() const {
  constexpr double LIMIT = 32767.0;
  if (std::isnan(degrees)) return SCALED_NOT_SET;
  const auto hundredths = static_cast<double>(degrees * 100.0f);
  // The lower limit leaves -32768 free for "not set".
  if (degrees >= 0.0f) return static_cast<int16_t>(hundredths + 0.5 >= LIMIT ? LIMIT : hundredths + 0.5);
  return static_cast<int16_t>(hundredths - 0.5 > -LIMIT ? hundredths - 0.5 : -LIMIT);
}

void Celsius::setFromScaled(int16_t scaled) {
  // Times the float 0.01, not divided by 100: the last bit differs, and instruments compare these floats.
  degrees = scaled == SCALED_NOT_SET ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(scaled) * 0.01f;
}

unsigned Celsius::serialize(Marshal::IObjectWriter& out) {
  return out.writeInt16(getScaled());
}

Marshal::StreamOpStatus Celsius::deserialize(Marshal::IObjectReader& in) {
  int16_t scaled = SCALED_NOT_SET;
  Marshal::FieldReader f(in, Marshal::NO_CLASS_VERSION);
  const bool read = f.get("celsius", scaled);
  setFromScaled(scaled);
  return read ? Marshal::STREAM_OK : Marshal::STREAM_SHORT;
}

void Celsius::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.field("celsius ", textOf(degrees).c_str());  // the space is part of the name
}

Json::Value Celsius::toJson(const Dump::DumpFlags&) const {
  return textOf(degrees);
}

bool Celsius::fromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = key == nullptr || v.isObject() ? jsonMember(v, key) : nullptr;
  ScaledInt scaled;
  // Only a string: a number would have its own precision.
  if (member == nullptr || !member->isString() || !scaled.fromString(member->asString())) {
    logJsonFailure(SOURCE, __LINE__, key);
    return false;
  }
  degrees = scaled.toFloat();
  return true;
}

bool Celsius::fromJson(const Json::Value* v, const char* key) {
  if (v != nullptr) return fromJson(*v, key);
  logJsonFailure(SOURCE, __LINE__, key);
  clear();
  return false;
}

bool Celsius::fromJsonString(const std::string& text) {
  Json::Value root;
  return parseJson(text, root, false) && fromJson(root, nullptr);
}

}  // namespace Veltra
