#include <libcrossplatform/common/jsonutil.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include <json/reader.h>

#include <libcrossplatform/common/TextUtil.h>
#include <libcrossplatform/common/TimeUtil.h>
#include <libcrossplatform/common/internal/JsonScan.h>
#include <libcrossplatform/common/internal/NonFiniteText.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/logging/Logger.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/NumberText.h>
#include <libcrossplatform/serialization/Utf8Text.h>

// Documents in the field were written for this reader, which accepts comments and any root value by default; the newer
// builder refuses some of them. So it stays, in this unit only.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#ifndef __clang__
// g++ 12 believes that the storage of an empty boost::optional is read.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace Veltra {
namespace {

template <class Float>
Json::Value floatToJson(Float value) {
  if (const char* const text = nonFiniteText(value)) return text;
  return static_cast<double>(value);
}

template <class Float>
boost::optional<Float> floatKindFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr) return boost::none;
  if (member->isDouble()) return static_cast<Float>(member->asDouble());
  Float value = 0;
  if (!member->isString() || !nonFiniteFromText(member->asString(), value)) return boost::none;
  return value;
}

/// Whole decimal text of a 64-bit kind. The C conversions skip spaces, saturate, and negate unsigned values; a stored
/// number may have none of that.
template <class Int>
boost::optional<Int> decimalText(const Json::Value& value, bool (*convert)(Int&, const char*, int)) {
  const std::string text = value.asString();
  const std::size_t sign = std::numeric_limits<Int>::is_signed && text[0] == '-' ? 1 : 0;
  Int number = 0;
  if (text.find_first_not_of("0123456789", sign) != std::string::npos) return boost::none;
  errno = 0;
  if (!convert(number, text.c_str(), 10) || errno == ERANGE) return boost::none;
  return number;
}

}  // namespace

Json::Value toJson(float value) {
  return floatToJson(value);
}

Json::Value toJson(double value) {
  return floatToJson(value);
}

Json::Value toJson(long long value) {
  return Dump::int64ToStr(value);
}

Json::Value toJson(unsigned long long value) {
  return Dump::int64ToStr(static_cast<long long>(value));
}

bool parseJson(const std::string& text, Json::Value& out, bool collectComments) {
  collectComments = collectComments && canAffordComments(text);
  try {
    Json::Value root;
    if (!hasForeignDecimalPoint()) {
      if (!Json::Reader().parse(text, root, collectComments)) return false;
    } else if (!Json::Reader().parse(withoutFractions(text), root, collectComments) || !restoreFractions(root, text)) {
      return false;
    }
    out = std::move(root);
    return true;
  } catch (const Json::RuntimeError& e) {  // thrown beyond 1000 levels of nesting, and when memory runs out
    if (std::strstr(e.what(), "allocate") != nullptr) throw std::bad_alloc();
    return false;
  }
}

bool parseBoundedJson(const std::string& text, Json::Value& out) {
  constexpr std::string_view FILLER(" \t\r\n\0", 5);
  if (text.size() > JsonBounds::STYLED_BYTES || !isWithinBounds(extentOf(text)) || !Dump::isUtf8(text)) return false;
  Json::Value root;
  if (!parseJson(text, root, false) || !(root.isObject() || root.isArray())) return false;
  const auto end = static_cast<std::size_t>(root.getOffsetLimit());
  if (std::string_view(text).find_first_not_of(FILLER, end) != std::string_view::npos) return false;
  if (!Dump::isStyledJsonWithin(root, "   ", JsonBounds::STYLED_BYTES)) return false;
  out = std::move(root);
  return true;
}

const Json::Value* jsonMember(const Json::Value& v, const char* key) {
  if (key == nullptr || !v.isObject()) return &v;
  return v.find(key, key + std::strlen(key));
}

boost::optional<bool> boolFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr || !member->isBool()) return boost::none;
  return member->asBool();
}

boost::optional<int> intFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr || !member->isInt()) return boost::none;
  return member->asInt();
}

boost::optional<unsigned> uintFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr || !member->isUInt()) return boost::none;
  return member->asUInt();
}

boost::optional<int64_t> int64FromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr) return boost::none;
  if (member->isInt64()) return static_cast<int64_t>(member->asInt64());
  if (member->isString()) return decimalText<int64_t>(*member, strToInt64);
  return boost::none;
}

boost::optional<uint64_t> uint64FromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr) return boost::none;
  if (member->isUInt64()) return static_cast<uint64_t>(member->asUInt64());
  if (!member->isString()) return boost::none;
  if (const auto number = decimalText<uint64_t>(*member, strToUInt64)) return number;
  // What the signed conversion of toJson() made of the upper half.
  const auto negative = decimalText<int64_t>(*member, strToInt64);
  if (!negative || *negative >= 0) return boost::none;
  return static_cast<uint64_t>(*negative);
}

boost::optional<float> floatFromJson(const Json::Value& v, const char* key) {
  return floatKindFromJson<float>(v, key);
}

boost::optional<double> doubleFromJson(const Json::Value& v, const char* key) {
  return floatKindFromJson<double>(v, key);
}

boost::optional<time_t> timeFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr || !member->isString()) return boost::none;
  bool ok = true;
  const time_t time = strToSysTime(ok, member->asString().c_str(), 0);
  if (!ok) return boost::none;
  return time;
}

boost::optional<std::string> stringFromJson(const Json::Value& v, const char* key) {
  const Json::Value* const member = jsonMember(v, key);
  if (member == nullptr) return boost::none;
  if (!member->isString() && !member->isDouble() && !member->isBool()) return boost::none;
  return member->asString();
}

bool convertJson(const Json::Value& v, bool& out) {
  if (!v.isConvertibleTo(Json::booleanValue)) return false;
  out = v.asBool();
  return true;
}

bool convertJson(const Json::Value& v, int& out) {
  if (!v.isConvertibleTo(Json::intValue)) return false;
  out = v.asInt();
  return true;
}

bool convertJson(const Json::Value& v, unsigned& out) {
  if (!v.isConvertibleTo(Json::uintValue)) return false;
  out = v.asUInt();
  return true;
}

bool convertJson(const Json::Value& v, std::string& out) {
  if (!v.isConvertibleTo(Json::stringValue)) return false;
  out = v.asString();
  return true;
}

Json::Value rootedJson(const char* name, Json::Value value) {
  Json::Value root(Json::objectValue);
  root[name] = std::move(value);
  return root;
}

void logJsonFailure(const char* file, int line, const char* name) {
  if (file == nullptr) {
    assertFail("file != nullptr", "libcrossplatform/common/jsonutil", 416);
    return;
  }
  if (name == nullptr) {
    Logger::log(Logger::FACILITY_COMMON, Logger::SEVERITY_ERROR, "fromJson failed in %s line %d", file, line);
  } else {
    Logger::log(Logger::FACILITY_COMMON, Logger::SEVERITY_ERROR, "fromJson failed for %s in %s line %d", name, file,
                line);
  }
}

}  // namespace Veltra
