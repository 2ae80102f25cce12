#include <libinspect/describe/ObjectReader.h>

#include <algorithm>

#include <fmt/format.h>
#include <json/writer.h>

#include <libinspect/container/JsonFaults.h>
#include <libinspect/container/PrintableText.h>

namespace Inspect {
namespace {

/// On one line, numbers as they stand in the text that the value was parsed from.
std::string asTyped(const Json::Value& value, const std::string& text) {
  if (value.isArray() || value.isObject()) {
    std::string list;
    for (auto it = value.begin(); it != value.end(); ++it) {
      list += list.empty() ? "" : ",";
      list += value.isObject() ? asTyped(it.key(), text) + ":" : "";
      list += asTyped(*it, text);
    }
    return (value.isArray() ? "[" : "{") + list + (value.isArray() ? "]" : "}");
  }
  if (value.isNumeric()) {
    std::string number = numberIn(text, value);
    if (!number.empty()) return number;
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["commentStyle"] = "None";
  builder["emitUTF8"] = false;
  return Json::writeString(builder, value);
}

}  // namespace

ObjectReader::ObjectReader(const Json::Value& json, const std::string& source, std::string path, std::string& error)
    : _json(json), _source(source), _path(std::move(path)), _error(error) {
  if (!json.isObject()) fail("", json, "an object");
}

const Json::Value* ObjectReader::take(const char* key) {
  _taken.emplace_back(key);
  return ok() && _json.isMember(key) ? &_json[key] : nullptr;
}

void ObjectReader::text(const char* key, std::string& out) {
  const Json::Value* const v = take(key);
  if (v == nullptr) return;
  if (!v->isString()) return fail(key, *v, "a text");
  out = v->asString();
}

void ObjectReader::boolean(const char* key, bool& out) {
  const Json::Value* const v = take(key);
  if (v == nullptr) return;
  if (!v->isBool()) return fail(key, *v, "true or false");
  out = v->asBool();
}

void ObjectReader::wholeNumber(const char* key, int64_t& out, int64_t least, int64_t most) {
  const Json::Value* const v = take(key);
  if (v == nullptr) return;
  const bool isNumber = v->isInt64() && v->asInt64() >= least && v->asInt64() <= most;
  if (!isNumber) return fail(key, *v, fmt::format("a whole number from {} to {}", least, most));
  out = v->asInt64();
}

void ObjectReader::finish() {
  if (!ok()) return;
  for (const std::string& key : _json.getMemberNames()) {
    if (std::find(_taken.begin(), _taken.end(), key) != _taken.end()) continue;
    _error = fmt::format("{}: unknown key \"{}\"; known are {}", _path, key, fmt::join(_taken, ", "));
    return;
  }
}

void ObjectReader::fail(const std::string& key, const Json::Value& found, const std::string& wanted) {
  if (!ok()) return;
  _error = fmt::format("{}{}{}: expected {}, found {}", _path, key.empty() ? "" : ".", key, wanted,
                       shortened(asTyped(found, _source)));
}

}  // namespace Inspect
