#pragma once

#include <string>

#include <json/value.h>

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/DumpFlags.h>

namespace Dump {

/// A record that can render itself as a JSON value.
class VELTRA_EXPORT IJsonable {
 public:
  virtual Json::Value toJson(const DumpFlags& flags) const = 0;
  virtual ~IJsonable() = default;
};

/// A record's JSON as text: styled, ending in a newline, or one line without one.
VELTRA_EXPORT std::string toJsonString(const IJsonable& record, const DumpFlags& flags, bool styled);
/// The same at the full level, styled.
VELTRA_EXPORT std::string toJsonString(const IJsonable& record);

}  // namespace Dump
