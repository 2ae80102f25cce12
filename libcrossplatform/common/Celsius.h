#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// A temperature: held as a float, stored, shown and compared in hundredths of a degree Celsius. NaN is not set.
/// A plain value; default not set. On the wire: plain inline record, docs/format.md#celsius.
class VELTRA_EXPORT Celsius : public Marshal::IDumpSerializable, public Dump::IJsonable {
 public:
  static constexpr int16_t SCALED_NOT_SET = -32768;  ///< getScaled() of a temperature that is not set

  Celsius() { clear(); }
  /// @param value  degrees Celsius, NaN for not set
  explicit Celsius(float value) : degrees(value) {}
  /// Makes it not set.
  void clear();

  /// Hundredths of a degree, rounded half away from zero, within -32767 and 32767; SCALED_NOT_SET when not set.
  int16_t getScaled() const;
  /// The reverse of getScaled().
  void setFromScaled(int16_t scaled);
  /// True when both are the same hundredth of a degree, or both not set.
  bool operator==(const Celsius& other) const { return getScaled() == other.getScaled(); }
  bool operator!=(const Celsius& other) const { return !(*this == other); }

  /// @return what the stream's writeInt16() returned
  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the read failed, the temperature is then not set
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// A text with two decimals, for example "21.50"; "NaN" when not set.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  /// Reads a text, as toJson() and ScaledInt write it: member `key` of the object `v`, or `v` itself when key is null.
  /// @return false, logged and unchanged, when there is no such text or it does not begin with a number
  [[nodiscard]] bool fromJson(const Json::Value& v, const char* key);
  /// The same; a null `v` is logged and clears the temperature.
  [[nodiscard]] bool fromJson(const Json::Value* v, const char* key);
  /// Reads a document that is one JSON text. @return false, unchanged, when it is not
  [[nodiscard]] bool fromJsonString(const std::string& text);

  float degrees;  ///< degrees Celsius; NaN is not set
};

}  // namespace Veltra
