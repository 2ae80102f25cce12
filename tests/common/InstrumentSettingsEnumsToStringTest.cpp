#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

/// Values from 0 to count - 1 have a text that parses back, but for `shownOnly`; every other value is reported.
template <class E>
void expectVocabulary(const std::string& name, int count, E (*parse)(const std::string&), int line,
                      int shownOnly = -1) {
  const std::vector<std::string> nothing,
      report = {"Invalid " + name + " enum|libcrossplatform/common/InstrumentSettingsEnumsToString|" +
                std::to_string(line)};
  const CapturedAsserts captured;
  EXPECT_EQ(parse(""), -1);
  for (int value = -128; value <= 255; ++value) {
    SCOPED_TRACE(name + " " + std::to_string(value));
    const bool known = value >= 0 && value < count;
    captured.reports().clear();
    const std::string text = toString(static_cast<E>(value));
    EXPECT_EQ(captured.reports(), known ? nothing : report);
    if (!known) continue;
    EXPECT_EQ(parse(text), value == shownOnly ? -1 : value) << text;
    EXPECT_EQ(parse(text + " "), -1);
    EXPECT_EQ(parse(text + '\0'), -1);
    EXPECT_EQ(captured.reports(), nothing) << "parsers report nothing";
  }
}

}  // namespace

TEST(InstrumentSettingsVocabulary, EveryTableHoldsBothWaysAndFallsBack) {
  expectVocabulary("Language", 16, fromLanguageString, 33);
  expectVocabulary("LengthUnits", 2, fromLengthUnitsString, 63);
  expectVocabulary("DateFormat", 6, fromDateFormatString, 83);
  expectVocabulary("TimeFormat", 2, fromTimeFormatString, 103);
  expectVocabulary("PowerLineFrequency", 2, fromPowerLineFrequencyString, 140);
  expectVocabulary("ResultStorageLocation", 2, fromResultStorageLocationString, 176);
  expectVocabulary("NumericFormat", 2, fromNumericFormatString, 192);
  expectVocabulary("IPAddressSource", 2, fromIPAddressSourceString, 208);
  expectVocabulary("LocaleType", 21, fromLocaleTypeString, 244);
  // Sixty minutes are shown, but not parsed.
  expectVocabulary("BacklightTimeout", 4, fromBacklightTimeoutString, 158);
  expectVocabulary("PowerDownTimeout", 5, fromPowerDownTimeoutString, 122, POWER_DOWN_60_MIN);
}
