#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/DisplayMeas.h>
#include <libcrossplatform/serialization/IJsonable.h>

namespace Veltra {

/// A measurement with a bound on either side. A NaN tolerance means that there is no bound on that side.
/// On the wire: versioned inline record, docs/format.md#tolerancemeas.
class VELTRA_EXPORT ToleranceMeas : public Marshal::IDumpSerializable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr Marshal::StreamOpStatus TOO_NEW_STATUS = Marshal::STREAM_TOO_NEW;

  /// Not a number, not available, both tolerances NaN.
  ToleranceMeas();
  ToleranceMeas(ScaledInt value, DisplayType type, float posTolerance, float negTolerance);
  void clear();

  /// Raw value, scale and type equal, and each tolerance equal or NaN in both.
  bool isSameAs(const ToleranceMeas& other) const;
  /// isSameAs(): unlike other measurements, one that is not a number equals itself.
  bool operator==(const ToleranceMeas& other) const { return isSameAs(other); }
  bool operator!=(const ToleranceMeas& other) const { return !isSameAs(other); }
  /// Derives the type: a number bounded on both sides or on none is a value, without a negative bound less than,
  /// without a positive one greater than. Not a number is not available, or not applicable if the negative tolerance
  /// is 0, which marks it.
  void calculateDisplayType();
  DisplayMeas valueToDisplayMeas() const;  ///< value and type, without the tolerances
  std::string valueToString() const;       ///< the same as text, for example "> 5.0"; fatal as DisplayMeas::toString()
  /// For example "5.0, +tol = 0.3, -tol = nan".
  std::string toString() const;
  /// The raw value negated when negative, a plain integer even where it is reserved: not-a-number becomes plus
  /// infinity.
  ToleranceMeas abs() const;

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; -5 a version byte above 1, the value's included
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"value", "posTolerance", "negTolerance"}, all three as text.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  ScaledInt value;  ///< in the unit of whatever holds the measurement, as both tolerances; dB for a loss
  DisplayType type = DISPLAY_TYPE_NOT_AVAILABLE;  ///< how `value` is meant; see calculateDisplayType()
  float posTolerance;                             ///< what may be added to the value, 0 or more; NaN without a bound
  float negTolerance;                             ///< what may be taken from it, 0 or more; NaN without a bound

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  void fields(Fields& f) {
    f.record("value", value);
    f.i8("type", type);
    f.f32("posTolerance", posTolerance);
    f.f32("negTolerance", negTolerance);
  }
};

/// Value `a` less a reference `b`, uncertainties combined in quadrature. A reference that is a bound turns the result
/// into the opposite bound with its tolerances exchanged; whether `a` is one is ignored. Where a value is missing
/// the result is that operand: not available before not applicable, `a` before `b`.
VELTRA_EXPORT ToleranceMeas subtractWithQuadratureTolerance(const ToleranceMeas& a, const ToleranceMeas& b);
/// The loss of two parts in a row: values added, the larger tolerance of each side, the type derived again. A value
/// that is not a number gives the other operand.
VELTRA_EXPORT ToleranceMeas addLossToleranceMeas(const ToleranceMeas& a, const ToleranceMeas& b);
/// The operand with the larger value, ties give b; not-a-number on one side gives the other side.
VELTRA_EXPORT ToleranceMeas max(const ToleranceMeas& a, const ToleranceMeas& b);
/// The operand with the smaller value, where a greater-than bound never replaces a definite value and a definite value
/// always replaces such a bound.
VELTRA_EXPORT ToleranceMeas minTolerance(const ToleranceMeas& a, const ToleranceMeas& b);

}  // namespace Veltra
