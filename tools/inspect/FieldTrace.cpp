#include <tools/inspect/FieldTrace.h>

#include <cmath>
#include <cstring>

namespace Inspect {
namespace {

constexpr char ELEMENT[] = "element";  // what list records call each of theirs

Json::Value floatValue(float v) {
  return std::isfinite(v) ? Json::Value(static_cast<double>(v)) : Json::Value();
}

}  // namespace

void TracingReader::beginRecord(const char* name) {
  std::string segment = name;
  if (segment == ELEMENT) segment += "[" + std::to_string(_elements[_path]++) + "]";
  _path.push_back(segment);
}

void TracingReader::endRecord() {
  if (!_path.empty()) _path.pop_back();
}

bool TracingReader::note(bool ok, const char* kind, uint32_t start, Json::Value value) {
  if (!ok) return false;
  std::vector<std::string> path = _path;
  path.push_back(_name);
  _fields.push_back({std::move(path), kind, start, _in.position() - start, std::move(value)});
  return true;
}

bool TracingReader::readBool(bool& v) {
  const uint32_t start = position();
  return note(_in.readBool(v), "bool", start, v);
}

bool TracingReader::readUInt8(uint8_t& v) {
  const uint32_t start = position();
  return note(_in.readUInt8(v), "u8", start, v);
}

bool TracingReader::readInt8(int8_t& v) {
  const uint32_t start = position();
  return note(_in.readInt8(v), "i8", start, v);
}

bool TracingReader::readUInt16(uint16_t& v) {
  const uint32_t start = position();
  return note(_in.readUInt16(v), "u16", start, v);
}

bool TracingReader::readInt16(int16_t& v) {
  const uint32_t start = position();
  return note(_in.readInt16(v), "i16", start, v);
}

bool TracingReader::readUInt32(uint32_t& v) {
  const uint32_t start = position();
  return note(_in.readUInt32(v), "u32", start, v);
}

bool TracingReader::readInt32(int32_t& v) {
  const uint32_t start = position();
  return note(_in.readInt32(v), "i32", start, v);
}

bool TracingReader::readInt64(int64_t& v) {
  const uint32_t start = position();
  return note(_in.readInt64(v), "i64", start, static_cast<Json::Int64>(v));
}

bool TracingReader::readFloat(float& v) {
  const uint32_t start = position();
  return note(_in.readFloat(v), "float", start, floatValue(v));
}

bool TracingReader::readBytes(uint8_t* data, uint32_t size) {
  const uint32_t start = position();
  if (!_in.readBytes(data, size)) return false;
  return note(true, "bytes", start, std::string(reinterpret_cast<const char*>(data), size));
}

bool TracingReader::readString(std::string& v) {
  const uint32_t start = position();
  return note(_in.readString(v), "string", start, v);
}

Json::Value treeOf(const std::vector<TracedField>& fields) {
  Json::Value tree(Json::objectValue);
  for (const TracedField& field : fields) {
    if (field.path.front() == "header" || field.path.back() == "count") continue;
    Json::Value* node = &tree;
    for (const std::string& segment : field.path) node = &(*node)[segment];
    // A counted text is read as its length and then its bytes, in pieces: the bytes take the length's place.
    const bool isBytes = std::strcmp(field.kind, "bytes") == 0;
    const std::string text = isBytes ? field.value.asString().c_str() : "";
    if (!isBytes) {
      *node = field.value;
    } else {
      *node = node->isString() ? node->asString() + text : text;
    }
  }
  return tree;
}

}  // namespace Inspect
