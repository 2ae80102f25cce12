#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// A fixed-point number: a 32-bit raw value and the number of decimals it has. Every measured value of a result is one.
/// On the wire: versioned inline record, docs/format.md#scaledint.
class VELTRA_EXPORT ScaledInt : public Marshal::IDumpSerializable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr Marshal::StreamOpStatus TOO_NEW_STATUS = Marshal::STREAM_TOO_NEW;

  /// Number of decimals. Records from files may carry a value outside the list: test hasPrintableScale().
  enum ScaledTo : int32_t {
    SCALED_TO_TENS = -1,
    SCALED_TO_ONES = 0,
    SCALED_TO_TENTHS = 1,
    SCALED_TO_HUNDREDTHS = 2,
    SCALED_TO_THOUSANDTHS = 3,
    SCALED_TO_TENTHOUSANDTHS = 4,
  };

  // Reserved raw values, next to the limits, which no measured value reaches.
  static constexpr int32_t RAW_NOT_A_NUMBER = -2147483647;    ///< 0x80000001: not set, the default
  static constexpr int32_t RAW_PLUS_INFINITY = 2147483647;    ///< 0x7FFFFFFF
  static constexpr int32_t RAW_MINUS_INFINITY = -2147483646;  ///< 0x80000002

  /// Not a number, scale 0.
  ScaledInt() = default;
  /// Rounds half away from zero in one step: a fused multiply-add, so it can differ from fromString() in the last
  /// digit. NaN and infinities become the reserved values; a value too large saturates.
  ScaledInt(float value, ScaledTo scaledTo);
  /// A value of exactly this raw value, reserved or not, and this scale.
  static ScaledInt fromRaw(int32_t raw, ScaledTo scaledTo);

  int32_t getRaw() const { return _raw; }             ///< the value times scalingValue(), or a reserved one
  ScaledTo getScaledTo() const { return _scaledTo; }  ///< the scale, as read: see hasPrintableScale()
  /// 10 to the power of the scale.
  float scalingValue() const;
  ///@{
  /// NaN and the infinities for the reserved raw values.
  float toFloat() const;
  double toDouble() const;
  ///@}
  ///@{
  /// By the raw value alone: not set; neither that nor an infinity.
  bool isNotANumber() const { return _raw == RAW_NOT_A_NUMBER; }
  bool isFinite() const { return !isNotANumber() && _raw != RAW_PLUS_INFINITY && _raw != RAW_MINUS_INFINITY; }
  ///@}
  /// False where toString() would stop the program: a finite value whose scale is not in the list.
  bool hasPrintableScale() const;

  ///@{
  /// Values of different scale are aligned by multiplying the raw value of the coarser one: 32-bit arithmetic that
  /// wraps. Scales more than 5 apart raise the assertion "Unexpected ScaledInt exponent" and are compared unaligned.
  /// Anything compared with not-a-number is false.
  bool operator==(const ScaledInt& other) const;
  bool operator!=(const ScaledInt& other) const { return !(*this == other); }
  bool operator<(const ScaledInt& other) const;
  bool operator<=(const ScaledInt& other) const;
  bool operator>(const ScaledInt& other) const;
  bool operator>=(const ScaledInt& other) const;
  ///@}

  /// The finer of both scales. Not-a-number on the left gives the left operand; on the right only, too.
  ScaledInt operator+(const ScaledInt& other) const;
  /// Not-a-number on either side gives that operand. A finite value less an infinity gives that infinity with its sign.
  ScaledInt operator-(const ScaledInt& other) const;
  /// Half the sum, halves rounded away from zero; operands that are not numbers as for operator+.
  ScaledInt avg(const ScaledInt& other) const;

  /// "NaN", "+inf", "-inf", or the value in fixed notation with as many decimals as the scale. A scale outside the
  /// list is the fatal assertion "Invalid ScaledInt::scaledTo".
  std::string toString() const;
  /// Reads what toString() writes; the scale becomes the number of characters after the first point. "NaN", "+inf"
  /// and "-inf" keep the scale. @return false, with the value unchanged, when the text does not begin with a number
  [[nodiscard]] bool fromString(const std::string& text);

  void clear() { *this = ScaledInt(); }
  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; -5 version byte above 1: nothing more is read
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  void fields(Fields& f) {
    f.i32("raw", _raw);
    f.i8("scaledTo", _scaledTo);
  }

  int32_t _raw = RAW_NOT_A_NUMBER;
  ScaledTo _scaledTo = SCALED_TO_ONES;
};

/// "tens", "ones", "tenths" and so on; empty outside the list.
VELTRA_EXPORT const char* toString(ScaledInt::ScaledTo scaledTo);

/// The smaller operand, ties give b; not-a-number on one side gives the other side.
VELTRA_EXPORT ScaledInt min(const ScaledInt& a, const ScaledInt& b);
/// The larger operand, ties give a; not-a-number on one side gives the other side.
VELTRA_EXPORT ScaledInt max(const ScaledInt& a, const ScaledInt& b);

/// Truncates toward zero, saturating at the limits; NaN gives 0.
VELTRA_EXPORT int32_t saturateToInt32(float value);

}  // namespace Veltra
