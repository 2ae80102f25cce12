#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>

#include <cstddef>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/logging/Assert.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/InstrumentSettingsEnumsToString";

constexpr EnumText<Language> LANGUAGE_TEXTS[] = {
    {LANGUAGE_ENGLISH, "English"},
    {LANGUAGE_SPANISH, "Spanish"},
    {LANGUAGE_GERMAN, "German"},
    {LANGUAGE_ITALIAN, "Italian"},
    {LANGUAGE_FRENCH, "French"},
    {LANGUAGE_PORTUGUESE, "Portuguese"},
    {LANGUAGE_JAPANESE, "Japanese"},
    {LANGUAGE_CHINESE, "Chinese"},
    {LANGUAGE_TRADITIONAL_CHINESE, "Traditional Chinese"},
    {LANGUAGE_KOREAN, "Korean"},
    {LANGUAGE_RUSSIAN, "Russian"},
    {LANGUAGE_CZECH, "Czech"},
    {LANGUAGE_POLISH, "Polish"},
    {LANGUAGE_SWEDISH, "Swedish"},
    {LANGUAGE_HUNGARIAN, "Hungarian"},
    {LANGUAGE_TURKISH, "Turkish"},
};
static_assert(isOneToOne(LANGUAGE_TEXTS));

constexpr EnumText<LocaleType> LOCALE_TEXTS[] = {
    {LOCALE_NOT_SET, "NOT_SET"}, {LOCALE_EN_US, "en-US"}, {LOCALE_EN_GB, "en-GB"}, {LOCALE_EN_EU, "en-EU"},
    {LOCALE_IT_IT, "it-IT"},     {LOCALE_FR_FR, "fr-FR"}, {LOCALE_FR_CA, "fr-CA"}, {LOCALE_ES_ES, "es-ES"},
    {LOCALE_PT_PT, "pt-PT"},     {LOCALE_PT_BR, "pt-BR"}, {LOCALE_DE_DE, "de-DE"}, {LOCALE_JA_JP, "ja-JP"},
    {LOCALE_ZH_CN, "zh-CN"},     {LOCALE_ZH_TW, "zh-TW"}, {LOCALE_KO_KR, "ko-KR"}, {LOCALE_RU_RU, "ru-RU"},
    {LOCALE_CS_CZ, "cs-CZ"},     {LOCALE_PL_PL, "pl-PL"}, {LOCALE_SV_SE, "sv-SE"}, {LOCALE_HU_HU, "hu-HU"},
    {LOCALE_TR_TR, "tr-TR"},
};
static_assert(isOneToOne(LOCALE_TEXTS));

constexpr EnumText<DateFormat> DATE_FORMAT_TEXTS[] = {
    {DATE_FORMAT_MDY_SLASH, "MM/dd/yyyy"}, {DATE_FORMAT_DMY_SLASH, "dd/MM/yyyy"}, {DATE_FORMAT_DMY_DOT, "dd.MM.yyyy"},
    {DATE_FORMAT_DMY_DASH, "dd-MM-yyyy"},  {DATE_FORMAT_YMD_SLASH, "yyyy/MM/dd"}, {DATE_FORMAT_YMD_DASH, "yyyy-MM-dd"},
};
static_assert(isOneToOne(DATE_FORMAT_TEXTS));

constexpr EnumText<TimeFormat> TIME_FORMAT_TEXTS[] = {{TIME_FORMAT_12_HR, "12 hr"}, {TIME_FORMAT_24_HR, "24 hr"}};
static_assert(isOneToOne(TIME_FORMAT_TEXTS));

constexpr EnumText<PowerDownTimeout> POWER_DOWN_TEXTS[] = {
    {POWER_DOWN_DISABLED, "Disabled"},
    {POWER_DOWN_10_MIN, "10 Minutes"},
    {POWER_DOWN_20_MIN, "20 Minutes"},
    {POWER_DOWN_30_MIN, "30 Minutes"},
    {POWER_DOWN_60_MIN, "60 Minutes", TEXT_SHOWN_ONLY},  // never parsed: stored settings depend on it
};
static_assert(isOneToOne(POWER_DOWN_TEXTS));

constexpr EnumText<BacklightTimeout> BACKLIGHT_TEXTS[] = {
    {BACKLIGHT_DISABLED, "Disabled"},
    {BACKLIGHT_5_MIN, "5 Minutes"},
    {BACKLIGHT_10_MIN, "10 Minutes"},
    {BACKLIGHT_15_MIN, "15 Minutes"},
};
static_assert(isOneToOne(BACKLIGHT_TEXTS));

constexpr EnumText<LengthUnits> LENGTH_UNITS_TEXTS[] = {{LENGTH_UNITS_M, "m"}, {LENGTH_UNITS_FT, "ft"}};
static_assert(isOneToOne(LENGTH_UNITS_TEXTS));

constexpr EnumText<PowerLineFrequency> POWER_LINE_TEXTS[] = {{POWER_LINE_50_HZ, "50 Hz"}, {POWER_LINE_60_HZ, "60 Hz"}};
static_assert(isOneToOne(POWER_LINE_TEXTS));

constexpr EnumText<ResultStorageLocation> RESULT_STORAGE_TEXTS[] = {
    {RESULT_STORAGE_MMC, "MMC"},
    {RESULT_STORAGE_INTERNAL, "Internal"},
};
static_assert(isOneToOne(RESULT_STORAGE_TEXTS));

constexpr EnumText<NumericFormat> NUMERIC_FORMAT_TEXTS[] = {
    {NUMERIC_FORMAT_POINT, "0.0"},
    {NUMERIC_FORMAT_COMMA, "0,0"},
};
static_assert(isOneToOne(NUMERIC_FORMAT_TEXTS));

constexpr EnumText<IPAddressSource> IP_ADDRESS_TEXTS[] = {{IP_ADDRESS_DHCP, "DHCP"}, {IP_ADDRESS_STATIC, "Static"}};
static_assert(isOneToOne(IP_ADDRESS_TEXTS));

/// Text of a value; outside the table an assertion is reported, and the text is that of `fallback`.
template <class E, std::size_t N>
const char* textOrFallback(const EnumText<E> (&table)[N], E value, E fallback, const char* complaint, int line) {
  const char* const text = textOf(table, value, nullptr);
  if (text != nullptr) return text;
  assertFail(complaint, SOURCE, line);
  return textOf(table, fallback);
}

template <class E, std::size_t N>
E valueOrUnknown(const EnumText<E> (&table)[N], const std::string& text) {
  auto value = static_cast<E>(-1);
  valueOf(table, text, value);
  return value;
}

}  // namespace

const char* toString(Language value) {
  return textOrFallback(LANGUAGE_TEXTS, value, LANGUAGE_ENGLISH, "Invalid Language enum", 33);
}

const char* toString(LengthUnits value) {
  return textOrFallback(LENGTH_UNITS_TEXTS, value, LENGTH_UNITS_M, "Invalid LengthUnits enum", 63);
}

const char* toString(DateFormat value) {
  return textOrFallback(DATE_FORMAT_TEXTS, value, DATE_FORMAT_MDY_SLASH, "Invalid DateFormat enum", 83);
}

const char* toString(TimeFormat value) {
  return textOrFallback(TIME_FORMAT_TEXTS, value, TIME_FORMAT_12_HR, "Invalid TimeFormat enum", 103);
}

const char* toString(PowerDownTimeout value) {
  // Not "Disabled": an invalid timeout never reads as switched off. Likewise for the backlight.
  return textOrFallback(POWER_DOWN_TEXTS, value, POWER_DOWN_10_MIN, "Invalid PowerDownTimeout enum", 122);
}

const char* toString(PowerLineFrequency value) {
  return textOrFallback(POWER_LINE_TEXTS, value, POWER_LINE_50_HZ, "Invalid PowerLineFrequency enum", 140);
}

const char* toString(BacklightTimeout value) {
  return textOrFallback(BACKLIGHT_TEXTS, value, BACKLIGHT_5_MIN, "Invalid BacklightTimeout enum", 158);
}

const char* toString(ResultStorageLocation value) {
  return textOrFallback(RESULT_STORAGE_TEXTS, value, RESULT_STORAGE_MMC, "Invalid ResultStorageLocation enum", 176);
}

const char* toString(NumericFormat value) {
  return textOrFallback(NUMERIC_FORMAT_TEXTS, value, NUMERIC_FORMAT_POINT, "Invalid NumericFormat enum", 192);
}

const char* toString(IPAddressSource value) {
  return textOrFallback(IP_ADDRESS_TEXTS, value, IP_ADDRESS_DHCP, "Invalid IPAddressSource enum", 208);
}

const char* toString(LocaleType value) {
  return textOrFallback(LOCALE_TEXTS, value, LOCALE_NOT_SET, "Invalid LocaleType enum", 244);
}

Language fromLanguageString(const std::string& text) {
  return valueOrUnknown(LANGUAGE_TEXTS, text);
}

LengthUnits fromLengthUnitsString(const std::string& text) {
  return valueOrUnknown(LENGTH_UNITS_TEXTS, text);
}

DateFormat fromDateFormatString(const std::string& text) {
  return valueOrUnknown(DATE_FORMAT_TEXTS, text);
}

TimeFormat fromTimeFormatString(const std::string& text) {
  return valueOrUnknown(TIME_FORMAT_TEXTS, text);
}

PowerDownTimeout fromPowerDownTimeoutString(const std::string& text) {
  return valueOrUnknown(POWER_DOWN_TEXTS, text);
}

PowerLineFrequency fromPowerLineFrequencyString(const std::string& text) {
  return valueOrUnknown(POWER_LINE_TEXTS, text);
}

BacklightTimeout fromBacklightTimeoutString(const std::string& text) {
  return valueOrUnknown(BACKLIGHT_TEXTS, text);
}

ResultStorageLocation fromResultStorageLocationString(const std::string& text) {
  return valueOrUnknown(RESULT_STORAGE_TEXTS, text);
}

NumericFormat fromNumericFormatString(const std::string& text) {
  return valueOrUnknown(NUMERIC_FORMAT_TEXTS, text);
}

IPAddressSource fromIPAddressSourceString(const std::string& text) {
  return valueOrUnknown(IP_ADDRESS_TEXTS, text);
}

LocaleType fromLocaleTypeString(const std::string& text) {
  return valueOrUnknown(LOCALE_TEXTS, text);
}

template <>
gsl::span<const EnumText<Language>> enumTexts<Language>() {
  return LANGUAGE_TEXTS;
}

template <>
gsl::span<const EnumText<LocaleType>> enumTexts<LocaleType>() {
  return LOCALE_TEXTS;
}

template <>
gsl::span<const EnumText<DateFormat>> enumTexts<DateFormat>() {
  return DATE_FORMAT_TEXTS;
}

template <>
gsl::span<const EnumText<TimeFormat>> enumTexts<TimeFormat>() {
  return TIME_FORMAT_TEXTS;
}

template <>
gsl::span<const EnumText<PowerDownTimeout>> enumTexts<PowerDownTimeout>() {
  return POWER_DOWN_TEXTS;
}

template <>
gsl::span<const EnumText<BacklightTimeout>> enumTexts<BacklightTimeout>() {
  return BACKLIGHT_TEXTS;
}

template <>
gsl::span<const EnumText<LengthUnits>> enumTexts<LengthUnits>() {
  return LENGTH_UNITS_TEXTS;
}

template <>
gsl::span<const EnumText<PowerLineFrequency>> enumTexts<PowerLineFrequency>() {
  return POWER_LINE_TEXTS;
}

template <>
gsl::span<const EnumText<ResultStorageLocation>> enumTexts<ResultStorageLocation>() {
  return RESULT_STORAGE_TEXTS;
}

template <>
gsl::span<const EnumText<NumericFormat>> enumTexts<NumericFormat>() {
  return NUMERIC_FORMAT_TEXTS;
}

template <>
gsl::span<const EnumText<IPAddressSource>> enumTexts<IPAddressSource>() {
  return IP_ADDRESS_TEXTS;
}

}  // namespace Veltra
