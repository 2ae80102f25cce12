#include <libcrossplatform/serialization/SimpleFormatter.h>

#include <ostream>

#include <libcrossplatform/serialization/NumberText.h>

namespace Dump {

SimpleFormatter::SimpleFormatter(std::ostream& out) : _out(out) {}

void SimpleFormatter::text(const char* text, int) {
  _out << text;
}

void SimpleFormatter::field(const char* name, bool value) {
  field(name, value ? "true" : "false");
}

// Numbers are made into text here: the caller's stream may carry another locale.
void SimpleFormatter::field(const char* name, uint16_t value) {
  field(name, int64ToStr(value).c_str());
}

void SimpleFormatter::field(const char* name, uint32_t value) {
  field(name, int64ToStr(value).c_str());
}

void SimpleFormatter::field(const char* name, float value) {
  field(name, floatToStr(value).c_str());
}

void SimpleFormatter::field(const char* name, const char* text) {
  indent() << name << ": " << text << '\n';
}

void SimpleFormatter::beginObject(const char* name) {
  indent() << name << " {\n";
  ++_depth;
}

void SimpleFormatter::endObject() {
  if (_depth > 0) --_depth;
  indent() << "}\n";
}

std::ostream& SimpleFormatter::indent() {
  for (int i = 0; i < _depth; ++i) _out << "  ";
  return _out;
}

}  // namespace Dump
