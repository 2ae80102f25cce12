#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <string>

#include <json/value.h>

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/DumpFlags.h>

namespace Dump {

class IFormatter;

/// A record that can render itself as a JSON value.
class VELTRA_EXPORT IJsonable {
 public:
  /// The record as a JSON value, a copy of its own.
  /// @param flags  how much of it; most records show all of it at every level
  virtual Json::Value toJson(const DumpFlags& flags) const = 0;
  virtual ~IJsonable() = default;
};

/// A record's JSON as text: styled, ending in a newline, or one line without one.
VELTRA_EXPORT std::string toJsonString(const IJsonable& record, const DumpFlags& flags, bool styled);
/// The same at the full level, styled.
VELTRA_EXPORT std::string toJsonString(const IJsonable& record);

/// For the dump() of a record that shows itself as its JSON: the styled text of toJson(flags), handed over whole.
VELTRA_EXPORT void dumpAsJson(const IJsonable& record, IFormatter& formatter, const DumpFlags& flags);

}  // namespace Dump
