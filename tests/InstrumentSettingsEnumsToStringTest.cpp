#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

template <class E>
struct Vocabulary {
  int count;  ///< values 0 to count - 1 have a text
  E (*parse)(const std::string&);
  const char* fallback;
  const char* report;  ///< of a value outside the table, but for the path
};

/// Every value has a text that parses back, but for `shownOnly`; every other value is reported and reads as the
/// fallback.
template <class E>
void expectVocabulary(const Vocabulary<E>& v, int shownOnly = -1) {
  SCOPED_TRACE(v.report);
  CapturedAsserts captured;
  for (int i = 0; i < v.count; ++i) {
    const std::string text = toString(static_cast<E>(i));
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(v.parse(text), i == shownOnly ? -1 : i) << text;
    EXPECT_EQ(v.parse(text + " "), -1);
    EXPECT_EQ(v.parse(text + '\0'), -1);
  }
  EXPECT_EQ(v.parse(""), -1);
  EXPECT_TRUE(captured.reports().empty()) << "parsers report nothing";
  for (const int outside : {-128, -1, v.count, 255}) {
    captured.reports().clear();
    EXPECT_STREQ(toString(static_cast<E>(outside)), v.fallback) << outside;
    const std::string at = std::string(v.report);
    const std::size_t bar = at.find('|');
    EXPECT_EQ(captured.reports(),
              (std::vector<std::string>{at.substr(0, bar) + "|libcrossplatform/common/InstrumentSettingsEnumsToString" +
                                        at.substr(bar)}));
  }
}

}  // namespace

TEST(InstrumentSettingsVocabulary, EveryTableHoldsBothWaysAndFallsBack) {
  expectVocabulary<Language>({16, fromLanguageString, "English", "Invalid Language enum|33"});
  expectVocabulary<LengthUnits>({2, fromLengthUnitsString, "m", "Invalid LengthUnits enum|63"});
  expectVocabulary<DateFormat>({6, fromDateFormatString, "MM/dd/yyyy", "Invalid DateFormat enum|83"});
  expectVocabulary<TimeFormat>({2, fromTimeFormatString, "12 hr", "Invalid TimeFormat enum|103"});
  expectVocabulary<PowerLineFrequency>(
      {2, fromPowerLineFrequencyString, "50 Hz", "Invalid PowerLineFrequency enum|140"});
  expectVocabulary<ResultStorageLocation>(
      {2, fromResultStorageLocationString, "MMC", "Invalid ResultStorageLocation enum|176"});
  expectVocabulary<NumericFormat>({2, fromNumericFormatString, "0.0", "Invalid NumericFormat enum|192"});
  expectVocabulary<IPAddressSource>({2, fromIPAddressSourceString, "DHCP", "Invalid IPAddressSource enum|208"});
  expectVocabulary<LocaleType>({21, fromLocaleTypeString, "NOT_SET", "Invalid LocaleType enum|244"});
}

TEST(InstrumentSettingsVocabulary, InvalidTimeoutsNeverReadAsSwitchedOff) {
  expectVocabulary<BacklightTimeout>({4, fromBacklightTimeoutString, "5 Minutes", "Invalid BacklightTimeout enum|158"});
}

TEST(InstrumentSettingsVocabulary, SixtyMinutesAreShownButNotParsed) {
  EXPECT_STREQ(toString(POWER_DOWN_60_MIN), "60 Minutes");
  expectVocabulary<PowerDownTimeout>({5, fromPowerDownTimeoutString, "10 Minutes", "Invalid PowerDownTimeout enum|122"},
                                     POWER_DOWN_60_MIN);
}
