#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/ScaledInt.h>

namespace Veltra {

/// How a measured value is meant. Held in 32 bits, one signed byte on the wire.
enum DisplayType : int32_t {
  DISPLAY_TYPE_NOT_AVAILABLE = 0,   ///< "N/A"
  DISPLAY_TYPE_VALUE = 1,           ///< the value
  DISPLAY_TYPE_GREATER_THAN = 2,    ///< "> " and the value
  DISPLAY_TYPE_LESS_THAN = 3,       ///< "< " and the value
  DISPLAY_TYPE_NOT_APPLICABLE = 4,  ///< "---"
};

/// A measurement as it is shown: a value, a bound, or no value at all. A plain value; default not available.
/// On the wire: versioned inline record, docs/format.md#displaymeas.
class VELTRA_EXPORT DisplayMeas : public Marshal::IDumpSerializable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr Marshal::StreamOpStatus TOO_NEW_STATUS = Marshal::STREAM_TOO_NEW;

  DisplayMeas() = default;
  DisplayMeas(const ScaledInt& v, DisplayType t) : value(v), type(t) {}

  void clear() { *this = DisplayMeas(); }
  /// Values as ScaledInt compares them, so that not-a-number equals nothing, and the same type.
  bool operator==(const DisplayMeas& other) const { return value == other.value && type == other.type; }
  bool operator!=(const DisplayMeas& other) const { return !(*this == other); }
  /// The text of the type; empty for a type outside the list. Fatal where ScaledInt::toString() is.
  std::string toString() const;
  /// Reads "", "N/A", "---", a value, or ">" or "<" and a value.
  /// @return false when no value could be read; the measurement is then not available and not a number
  [[nodiscard]] bool fromString(std::string text);

  /// Folds another measurement of the same kind into this one, keeping the lowest. One that is not available changes
  /// nothing; one that is not applicable makes this one not applicable and leaves its value.
  void mergeLowest(const DisplayMeas& other);
  /// The same, keeping the highest.
  void mergeHighest(const DisplayMeas& other);

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; -5 a version byte above 1, the value's included
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  /// The number, in the unit of whatever holds the measurement: metres for a length, dB for a headroom.
  ScaledInt value;
  DisplayType type = DISPLAY_TYPE_NOT_AVAILABLE;  ///< how `value` is meant, and whether there is one

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  void fields(Fields& f) {
    f.record("value", value);
    f.i8("type", type);
  }
};

}  // namespace Veltra
