#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/logging/Export.h>

/// The choices of the instrument settings and the texts they are shown and stored by. toString() of a value outside its
/// table reports an assertion and gives the fallback named here. Parsers compare exactly and give -1 for an
/// unknown text; settings hold such values, so every enumeration has room for them.
namespace Veltra {

/// Language of the user interface. Fallback "English".
enum Language : int32_t {
  LANGUAGE_ENGLISH = 0,
  LANGUAGE_SPANISH = 1,
  LANGUAGE_GERMAN = 2,
  LANGUAGE_ITALIAN = 3,
  LANGUAGE_FRENCH = 4,
  LANGUAGE_PORTUGUESE = 5,
  LANGUAGE_JAPANESE = 6,
  LANGUAGE_CHINESE = 7,
  LANGUAGE_TRADITIONAL_CHINESE = 8,
  LANGUAGE_KOREAN = 9,
  LANGUAGE_RUSSIAN = 10,
  LANGUAGE_CZECH = 11,
  LANGUAGE_POLISH = 12,
  LANGUAGE_SWEDISH = 13,
  LANGUAGE_HUNGARIAN = 14,
  LANGUAGE_TURKISH = 15,
};
VELTRA_EXPORT const char* toString(Language value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<Language>> enumTexts<Language>();
VELTRA_EXPORT Language fromLanguageString(const std::string& text);

/// Language and region, as in "en-US". Fallback "NOT_SET".
enum LocaleType : int32_t {
  LOCALE_NOT_SET = 0,
  LOCALE_EN_US = 1,
  LOCALE_EN_GB = 2,
  LOCALE_EN_EU = 3,
  LOCALE_IT_IT = 4,
  LOCALE_FR_FR = 5,
  LOCALE_FR_CA = 6,
  LOCALE_ES_ES = 7,
  LOCALE_PT_PT = 8,
  LOCALE_PT_BR = 9,
  LOCALE_DE_DE = 10,
  LOCALE_JA_JP = 11,
  LOCALE_ZH_CN = 12,
  LOCALE_ZH_TW = 13,
  LOCALE_KO_KR = 14,
  LOCALE_RU_RU = 15,
  LOCALE_CS_CZ = 16,
  LOCALE_PL_PL = 17,
  LOCALE_SV_SE = 18,
  LOCALE_HU_HU = 19,
  LOCALE_TR_TR = 20,
};
VELTRA_EXPORT const char* toString(LocaleType value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<LocaleType>> enumTexts<LocaleType>();
VELTRA_EXPORT LocaleType fromLocaleTypeString(const std::string& text);

/// Order and separator of a date. Fallback "MM/dd/yyyy".
enum DateFormat : int32_t {
  DATE_FORMAT_MDY_SLASH = 0,
  DATE_FORMAT_DMY_SLASH = 1,
  DATE_FORMAT_DMY_DOT = 2,
  DATE_FORMAT_DMY_DASH = 3,
  DATE_FORMAT_YMD_SLASH = 4,
  DATE_FORMAT_YMD_DASH = 5,
};
VELTRA_EXPORT const char* toString(DateFormat value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<DateFormat>> enumTexts<DateFormat>();
VELTRA_EXPORT DateFormat fromDateFormatString(const std::string& text);

/// Clock of 12 or 24 hours. Fallback "12 hr".
enum TimeFormat : int32_t {
  TIME_FORMAT_12_HR = 0,
  TIME_FORMAT_24_HR = 1,
};
VELTRA_EXPORT const char* toString(TimeFormat value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<TimeFormat>> enumTexts<TimeFormat>();
VELTRA_EXPORT TimeFormat fromTimeFormatString(const std::string& text);

/// Idle time until the instrument switches off. Fallback "10 Minutes": an invalid timeout never reads as switched off.
enum PowerDownTimeout : int32_t {
  POWER_DOWN_DISABLED = 0,
  POWER_DOWN_10_MIN = 1,
  POWER_DOWN_20_MIN = 2,
  POWER_DOWN_30_MIN = 3,
  POWER_DOWN_60_MIN = 4,
};
VELTRA_EXPORT const char* toString(PowerDownTimeout value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<PowerDownTimeout>> enumTexts<PowerDownTimeout>();
/// "60 Minutes" gives -1: it is shown, but not parsed.
VELTRA_EXPORT PowerDownTimeout fromPowerDownTimeoutString(const std::string& text);

/// Idle time until the display goes dark. Fallback "5 Minutes", for the same reason.
enum BacklightTimeout : int32_t {
  BACKLIGHT_DISABLED = 0,
  BACKLIGHT_5_MIN = 1,
  BACKLIGHT_10_MIN = 2,
  BACKLIGHT_15_MIN = 3,
};
VELTRA_EXPORT const char* toString(BacklightTimeout value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<BacklightTimeout>> enumTexts<BacklightTimeout>();
VELTRA_EXPORT BacklightTimeout fromBacklightTimeoutString(const std::string& text);

/// Unit lengths are shown in. Fallback "m".
enum LengthUnits : int32_t {
  LENGTH_UNITS_M = 0,
  LENGTH_UNITS_FT = 1,
};
VELTRA_EXPORT const char* toString(LengthUnits value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<LengthUnits>> enumTexts<LengthUnits>();
VELTRA_EXPORT LengthUnits fromLengthUnitsString(const std::string& text);

/// Mains frequency whose noise measurements suppress. Fallback "50 Hz".
enum PowerLineFrequency : int32_t {
  POWER_LINE_50_HZ = 0,
  POWER_LINE_60_HZ = 1,
};
VELTRA_EXPORT const char* toString(PowerLineFrequency value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<PowerLineFrequency>> enumTexts<PowerLineFrequency>();
VELTRA_EXPORT PowerLineFrequency fromPowerLineFrequencyString(const std::string& text);

/// Memory that results are stored in. Fallback "MMC".
enum ResultStorageLocation : int32_t {
  RESULT_STORAGE_MMC = 0,
  RESULT_STORAGE_INTERNAL = 1,
};
VELTRA_EXPORT const char* toString(ResultStorageLocation value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<ResultStorageLocation>> enumTexts<ResultStorageLocation>();
VELTRA_EXPORT ResultStorageLocation fromResultStorageLocationString(const std::string& text);

/// Decimal point or comma. Fallback "0.0".
enum NumericFormat : int32_t {
  NUMERIC_FORMAT_POINT = 0,
  NUMERIC_FORMAT_COMMA = 1,
};
VELTRA_EXPORT const char* toString(NumericFormat value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<NumericFormat>> enumTexts<NumericFormat>();
VELTRA_EXPORT NumericFormat fromNumericFormatString(const std::string& text);

/// Where the wired address comes from. Fallback "DHCP".
enum IPAddressSource : int32_t {
  IP_ADDRESS_DHCP = 0,
  IP_ADDRESS_STATIC = 1,
};
VELTRA_EXPORT const char* toString(IPAddressSource value);
template <>
VELTRA_EXPORT gsl::span<const EnumText<IPAddressSource>> enumTexts<IPAddressSource>();
VELTRA_EXPORT IPAddressSource fromIPAddressSourceString(const std::string& text);

}  // namespace Veltra
