#pragma once

/// The assertions that bytes from outside can reach because the rules demand them. Any other that an input reaches is a
/// finding. docs/reader-behaviour.md has the same list, with what a careful caller does; a test compares the two.
namespace Fuzz {

struct ListedAssertion {
  const char* expression;
  const char* unit;  ///< as handed to the assertion handler
  bool fatal;        ///< the program ends; otherwise the assertion reports and the caller goes on
};

constexpr ListedAssertion LISTED_ASSERTIONS[] = {
    {"size > 0", "libcrossplatform/serialization/ByteStreamReader", true},
    {"p != nullptr", "libcrossplatform/serialization/ByteStreamReader", true},
    {"temp[temp.length() - 1] == '\\0'", "libcrossplatform/common/DatabaseDescriptor", true},
    {"Invalid section type", "libcrossplatform/common/ResultFile", true},
    {"Invalid ScaledInt::scaledTo", "libcrossplatform/common/ScaledInt", true},
    {"Unexpected ScaledInt exponent", "libcrossplatform/common/ScaledInt", false},
    {"Invalid LocaleType enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid PowerDownTimeout enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid DateFormat enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid TimeFormat enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid Language enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid LengthUnits enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid NumericFormat enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid BacklightTimeout enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid PowerLineFrequency enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
    {"Invalid IPAddressSource enum", "libcrossplatform/common/InstrumentSettingsEnumsToString", false},
};

}  // namespace Fuzz
