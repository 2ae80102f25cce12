#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>
#include <libcrossplatform/common/Settings.h>

namespace Veltra {

/// What the user has set up on an instrument: locale, formats, power and display, wired network.
/// A plain value, constructed with the factory settings. On the wire: headed record,
/// docs/format.md#instrumentsettings.
class VELTRA_EXPORT InstrumentSettings : public Settings {
 public:
  static constexpr uint8_t CLASS_VERSION = 3;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510004;
  static constexpr const char* JSON_ROOT_NAME = "Instrument";
  static constexpr const char* JSON_LOCALE_NAME = "locale";    ///< the JSON member of `locale`
  static constexpr const char* JSON_VERSION_NAME = "version";  ///< reserved: no document of this record has it

  /// Restores the factory settings except the locale: clearing instrument settings does not reset it.
  void clear();
  unsigned int getSettingsType() const override { return 0; }

  bool operator==(const InstrumentSettings& other) const;
  bool operator!=(const InstrumentSettings& other) const { return !(*this == other); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// Members a record of an older class version does not have are left at their factory settings.
  /// @return 0; -3 the stream ran out; header and length codes unchanged. On failure: partly filled, clear() it.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// {"Instrument": {...}}, all members at every level. A choice outside its list is reported and written as its
  /// fallback.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;
  /// Reads {"Instrument": {...}} with JsonCpp's own conversions: a number is also text, null is false, 0 or empty.
  /// A missing choice is -1, a missing text empty; a missing boolean or brightness is the factory setting. A missing
  /// root member counts as an empty object.
  /// @param root  null: nothing is changed
  /// @return true; false, with the record unchanged, for null, and when a value cannot be converted (logged)
  [[nodiscard]] bool fromJson(const Json::Value* root) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  ///@{
  /// The choices, with their factory settings. One read from a stream or document may be outside its list, -1 or 255.
  LocaleType locale = LOCALE_EN_US;
  PowerDownTimeout powerDownTimeout = POWER_DOWN_10_MIN;
  bool remoteModeEnabled = false;
  bool audibleToneEnabled = true;
  DateFormat dateFormat = DATE_FORMAT_MDY_SLASH;
  TimeFormat timeFormat = TIME_FORMAT_12_HR;
  Language language = LANGUAGE_ENGLISH;
  LengthUnits lengthUnits = LENGTH_UNITS_M;
  NumericFormat numericFormat = NUMERIC_FORMAT_POINT;
  BacklightTimeout backlightTimeout = BACKLIGHT_5_MIN;
  PowerLineFrequency powerLineFrequency = POWER_LINE_60_HZ;
  bool plotGridEnabled = true;
  ///@}
  int16_t displayBrightness = 250;  ///< in steps of the instrument's display; a JSON number keeps its low 16 bits
  ///@{
  /// The wired network: dotted IPv4 texts, unchecked, used when the source is IP_ADDRESS_STATIC; empty is not set.
  IPAddressSource ipAddressSource = IP_ADDRESS_DHCP;
  std::string ipAddress;
  std::string ipSubnet;
  std::string ipGateway;
  std::string ipDNS1;
  std::string ipDNS2;
  std::string ipDNS3;
  std::string ipDNS4;
  ///@}
  std::string timeZone;  ///< name as in "Europe/Berlin"; empty is UTC. Since class version 2.
  std::string hostName;  ///< name in the network; empty is the factory name. Since class version 3.

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
