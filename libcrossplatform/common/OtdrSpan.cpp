#include <libcrossplatform/common/OtdrSpan.h>

#include <libcrossplatform/common/internal/JsonMembers.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace FibDbus {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/OtdrSpan";
constexpr char CLASS_NAME[] = "OtdrSpan";
constexpr char KEY_SPAN_START[] = "spanStart";
constexpr char KEY_SPAN_END[] = "spanEnd";

bool endFromJson(const Json::Value& object, const char* key, int line, Veltra::ScaledInt& end) {
  const auto text = Veltra::stringFromJson(object, key);
  if (text && end.fromString(*text)) return true;
  Veltra::logJsonFailure(SOURCE, line, key);
  return false;
}

}  // namespace

template <class Fields>
void OtdrSpan::fields(Fields& f) {
  f.record(KEY_SPAN_START, spanStart);
  f.record(KEY_SPAN_END, spanEnd);
}

unsigned OtdrSpan::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus OtdrSpan::deserialize(Marshal::IObjectReader& in) {
  // Unlike other records a span that cannot be read stays as it was: services keep using the one they have.
  OtdrSpan read;
  const Marshal::StreamOpStatus status = Marshal::readHeaded(read, in);
  if (status == Marshal::STREAM_OK) *this = read;
  return status;
}

Json::Value OtdrSpan::toJson(const Dump::DumpFlags&) const {
  Json::Value object(Json::objectValue);
  object[Veltra::KEY_CLASS_NAME] = CLASS_NAME;
  object[Veltra::KEY_CLASS_VERSION] = CLASS_VERSION;
  object[KEY_SPAN_START] = spanStart.toString();
  object[KEY_SPAN_END] = spanEnd.toString();
  return object;
}

bool OtdrSpan::fromJson(const Json::Value& value, const char* key) {
  const Json::Value* const object = Veltra::jsonMember(value, key);
  if (object == nullptr || !object->isObject()) return false;
  const auto className = Veltra::stringFromJson(*object, Veltra::KEY_CLASS_NAME);
  if (!className) {
    Veltra::logJsonFailure(SOURCE, 92, Veltra::KEY_CLASS_NAME);
    return false;
  }
  // Another class is not logged: services pass one document to several readers.
  if (*className != CLASS_NAME) return false;
  OtdrSpan read;
  if (!endFromJson(*object, KEY_SPAN_START, 98, read.spanStart)) return false;
  if (!endFromJson(*object, KEY_SPAN_END, 99, read.spanEnd)) return false;
  *this = read;
  return true;
}

bool OtdrSpan::fromJson(const Json::Value* value, const char* key) {
  if (value != nullptr) return fromJson(*value, key);
  Veltra::logJsonFailure(SOURCE, __LINE__, key);
  clear();
  return false;
}

bool OtdrSpan::fromJsonString(const std::string& text) {
  Json::Value parsed;
  return Veltra::parseJson(text, parsed, false) && fromJson(parsed, nullptr);
}

}  // namespace FibDbus
