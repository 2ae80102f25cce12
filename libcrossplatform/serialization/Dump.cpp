#include <libcrossplatform/serialization/IDumpable.h>
#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/JsonText.h>

namespace Dump {

IFormatter::~IFormatter() = default;

void IFormatter::text(const char*, int) {}

void IFormatter::field(const char* name, const uint8_t* bytes, uint32_t size) {
  constexpr char DIGITS[] = "0123456789abcdef";
  std::string hex;
  for (uint32_t i = 0; i < size; ++i) {
    hex += DIGITS[bytes[i] >> 4];
    hex += DIGITS[bytes[i] & 0xF];
  }
  field(name, hex.c_str());
}

std::string toJsonString(const IJsonable& record, const DumpFlags& flags, bool styled) {
  return orBadAlloc([&] {
    const Json::Value json = record.toJson(flags);
    return styled ? styledJson(json) : compactJson(json);
  });
}

std::string toJsonString(const IJsonable& record) {
  return toJsonString(record, DumpFlags(), true);
}

void dumpAsJson(const IJsonable& record, IFormatter& formatter, const DumpFlags& flags) {
  formatter.text(toJsonString(record, flags, true).c_str(), flags.level);
}

}  // namespace Dump
