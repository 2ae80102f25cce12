#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/serialization/IJsonable.h>

namespace FibDbus {

/// The part of an OTDR trace that is selected for analysis: where along the fibre it starts and ends. Travels between
/// the OTDR services. A plain value; default both ends not a number.
/// On the wire: headed record, docs/format.md#otdrspan.
class VELTRA_EXPORT OtdrSpan : public Marshal::ISerializable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x410015;

  /// Both ends equal, as ScaledInt compares them: a span with an end that is not a number equals nothing.
  bool operator==(const OtdrSpan& other) const { return spanStart == other.spanStart && spanEnd == other.spanEnd; }
  bool operator!=(const OtdrSpan& other) const { return !(*this == other); }
  void clear() { *this = OtdrSpan(); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// The span changes only on success.
  /// @return 0; -3 the stream ran out; -5 a version byte of either end above 1; header and length codes unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// A flat object: "_className", "_classVersion", "spanStart" and "spanEnd", the ends as text. Fatal where
  /// Veltra::ScaledInt::toString() is: an end read from a stream or document may have any scale.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  /// Reads the object toJson() writes: member `key` of the object `value`, or `value` itself when key is null or
  /// `value` is not an object. "_classVersion" is ignored.
  /// @return false, with the span unchanged: not an object, or another "_className" (neither logged); no "_className";
  ///         an end that is missing or does not begin with a number
  [[nodiscard]] bool fromJson(const Json::Value& value, const char* key);
  /// The same; a null `value` is logged and clears the span.
  [[nodiscard]] bool fromJson(const Json::Value* value, const char* key);
  /// Reads the same from a document. @return false, unchanged, when it cannot be parsed or read
  [[nodiscard]] bool fromJsonString(const std::string& text);

  /// The record names no unit: both ends have that of the service that sends them.
  Veltra::ScaledInt spanStart;
  Veltra::ScaledInt spanEnd;  ///< in the unit of spanStart

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace FibDbus
