#include <libcrossplatform/common/EnumText.h>

#include <functional>

#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>
#include <libcrossplatform/common/Length.h>
#include <libcrossplatform/common/ModelIds.h>
#include <libcrossplatform/common/ModuleIds.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/common/ResultVocabulary.h>
#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/common/WifiProfile.h>

#include "RecordTesting.h"

using namespace Veltra;

namespace {

std::string shown;

/// Writes down every value that has a text of its own, what the others are shown as, which report that makes, and as
/// what a text is read that is not read as its value.
template <class E>
void show(const std::string& name, const char* (*textOf)(E), const std::function<int(const std::string&)>& parse = {}) {
  constexpr int FIRST = -1100, LAST = 21000, OUTSIDE = LAST + 1;
  const RecordTesting::CapturedAsserts captured;
  const std::string otherwise = textOf(static_cast<E>(OUTSIDE));
  const std::vector<std::string> reports = captured.reports();
  for (int value = FIRST; value <= LAST; ++value) {
    captured.reports().clear();
    const std::string text = textOf(static_cast<E>(value));
    if (reports.empty() ? text == otherwise : !captured.reports().empty()) {
      EXPECT_EQ(captured.reports(), reports) << name << " " << value;
      continue;
    }
    shown += name + " " + std::to_string(value) + " " + text;
    if (parse && parse(text) != value) shown += ", read as " + std::to_string(parse(text));
    shown += "\n";
    EXPECT_TRUE(!parse || (parse(text + " ") == parse("") && parse(text + '\0') == parse(""))) << text;
    EXPECT_TRUE(captured.reports().empty()) << "parsers report nothing";
  }
  if (!otherwise.empty()) shown += name + " otherwise " + otherwise + "\n";
  for (const std::string& report : reports) shown += name + " otherwise reports " + report + "\n";
  if (parse) shown += name + " of another text " + std::to_string(parse("")) + "\n";
}

/// The same of a list that is looked up by position.
template <std::size_t N>
void show(const char* name, const char* const (&texts)[N]) {
  for (std::size_t value = 0; value < N; ++value) {
    shown += std::string(name) + " " + std::to_string(value) + " " + texts[value] + "\n";
  }
}

}  // namespace

TEST(EnumText, TextsOfAllEnumerationsBothWays) {
  shown.clear();
  show<Status>("Status", toString, [](const std::string& text) { return fromStatusString(text); });
  show<ResultType>("ResultType", toString);
  show<CableEnd>("CableEnd", toString, fromCableEndString);
  show<CableEnd>("MainRemote", toStringMainRemote, fromCableEndMainRemoteString);
  show<TestType>("TestType", toString, [](const std::string& text) {
    TestType read = TEST_TYPE_COAX;  // what an unknown text leaves
    return fromTestTypeString(text, read) == (read != TEST_TYPE_COAX || text == "Coax") ? read : -99;
  });
  show<TestMergeFlags>("TestMergeFlags", toString, fromTestMergeFlagsString);
  show<ResultReaderStatus>("ResultReaderStatus", toString);
  show<ResultWriterStatus>("ResultWriterStatus", toString);
  show<PFile::PFileReaderStatus>("PFileReaderStatus", PFile::toString);
  show<ScaledInt::ScaledTo>("ScaledTo", toString);
  show<LengthRoundedTo>("LengthRoundedTo", toString);
  show<ModelId>("ModelId", toString);
  show<ModuleId>("ModuleId", toString);
  show<ModuleCategory>("ModuleCategory", toString);
  show<Language>("Language", toString, fromLanguageString);
  show<LocaleType>("LocaleType", toString, fromLocaleTypeString);
  show<DateFormat>("DateFormat", toString, fromDateFormatString);
  show<TimeFormat>("TimeFormat", toString, fromTimeFormatString);
  show<PowerDownTimeout>("PowerDownTimeout", toString, fromPowerDownTimeoutString);
  show<BacklightTimeout>("BacklightTimeout", toString, fromBacklightTimeoutString);
  show<LengthUnits>("LengthUnits", toString, fromLengthUnitsString);
  show<PowerLineFrequency>("PowerLineFrequency", toString, fromPowerLineFrequencyString);
  show<ResultStorageLocation>("ResultStorageLocation", toString, fromResultStorageLocationString);
  show<NumericFormat>("NumericFormat", toString, fromNumericFormatString);
  show<IPAddressSource>("IPAddressSource", toString, fromIPAddressSourceString);
  show("Encryption", Encryption::desc);
  show("UsbWifiSecurity", UsbWifiSecurity::desc);
  show("Eap", Eap::desc);
  RecordTesting::expectGoldenText(shown, "enumeration_texts");
}
