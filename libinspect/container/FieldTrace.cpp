#include <libinspect/container/FieldTrace.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>

namespace Inspect {
namespace {

template <class T>
Json::Value jsonOf(const T& v) {
  return v;
}
Json::Value jsonOf(int64_t v) {
  return static_cast<Json::Int64>(v);
}
Json::Value jsonOf(float v) {
  // The shortest decimal that reads as this float: 0.1, not 0.10000000149.
  return std::isfinite(v) ? Json::Value(std::strtod(fmt::format("{}", v).c_str(), nullptr)) : Json::Value();
}

}  // namespace

// Names go on to the stream below, which may record the fields itself.

void TracingReader::beginField(const char* name) {
  _in.beginField(name);
  _name = name;
}

void TracingReader::beginRecord(const char* name) {
  _in.beginRecord(name);
  if (!_onField) return;
  const std::string& outer = _paths.back();
  std::string path = outer.empty() ? name : outer + "." + name;
  if (std::strcmp(name, Marshal::ELEMENT_NAME) == 0) path += "[" + std::to_string(_elements[outer]++) + "]";
  _paths.push_back(std::move(path));
}

void TracingReader::endRecord() {
  _in.endRecord();
  if (_paths.size() > 1) _paths.pop_back();
}

template <class T>
bool TracingReader::noted(bool (Marshal::IObjectReader::*read)(T&), T& v, const char* kind) {
  const uint32_t start = position();
  if (_failed || !(_in.*read)(v)) return false;
  note(kind, start, jsonOf(v));
  return true;
}

void TracingReader::note(const char* kind, uint32_t start, Json::Value value) {
  if (!_onField) return;
  const std::string& outer = _paths.back();
  _field.path.assign(outer).append(outer.empty() ? "" : ".").append(_name);
  _field.kind = kind;
  _field.offset = start;
  _field.size = _in.position() - start;
  _field.value.swap(value);
  _onField(_field);
}

bool TracingReader::readBool(bool& v) {
  return noted(&IObjectReader::readBool, v, "bool");
}
bool TracingReader::readUInt8(uint8_t& v) {
  return noted(&IObjectReader::readUInt8, v, "u8");
}
bool TracingReader::readInt8(int8_t& v) {
  return noted(&IObjectReader::readInt8, v, "i8");
}
bool TracingReader::readUInt16(uint16_t& v) {
  return noted(&IObjectReader::readUInt16, v, "u16");
}
bool TracingReader::readInt16(int16_t& v) {
  return noted(&IObjectReader::readInt16, v, "i16");
}
bool TracingReader::readUInt32(uint32_t& v) {
  return noted(&IObjectReader::readUInt32, v, "u32");
}
bool TracingReader::readInt32(int32_t& v) {
  return noted(&IObjectReader::readInt32, v, "i32");
}
bool TracingReader::readInt64(int64_t& v) {
  return noted(&IObjectReader::readInt64, v, "i64");
}
bool TracingReader::readFloat(float& v) {
  return noted(&IObjectReader::readFloat, v, "float");
}
bool TracingReader::readString(std::string& v) {
  return noted(&IObjectReader::readString, v, "string");
}

bool TracingReader::readBytes(uint8_t* data, uint32_t size) {
  const uint32_t start = position();
  if (_failed || !_in.readBytes(data, size)) return false;
  if (_refusesOpenRuns && (size == 0 || data[size - 1] != 0)) {
    _failed = true;
    return false;
  }
  note("bytes", start, std::string(reinterpret_cast<const char*>(data), size));
  return true;
}

}  // namespace Inspect
