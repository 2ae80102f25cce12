#include <libcrossplatform/common/EnumText.h>

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

/// Writes down every value that has a text of its own, and what the others are shown as.
template <class E>
void show(const char* name, const char* (*textOf)(E)) {
  constexpr int FIRST = -1100, LAST = 21000, OUTSIDE = LAST + 1;
  const RecordTesting::CapturedAsserts captured;
  const std::string otherwise = textOf(static_cast<E>(OUTSIDE));
  const bool isReported = !captured.reports().empty();
  for (int value = FIRST; value <= LAST; ++value) {
    captured.reports().clear();
    const std::string text = textOf(static_cast<E>(value));
    if (isReported ? !captured.reports().empty() : text == otherwise) continue;
    shown += std::string(name) + " " + std::to_string(value) + " " + text + "\n";
  }
  if (!otherwise.empty()) shown += std::string(name) + " otherwise " + otherwise + "\n";
}

/// The same of a list that is looked up by position.
template <std::size_t N>
void show(const char* name, const char* const (&texts)[N]) {
  for (std::size_t value = 0; value < N; ++value) {
    shown += std::string(name) + " " + std::to_string(value) + " " + texts[value] + "\n";
  }
}

}  // namespace

TEST(EnumText, EveryTextOfEveryEnumeration) {
  shown.clear();
  show<Status>("Status", toString);
  show<ResultType>("ResultType", toString);
  show<CableEnd>("CableEnd", toString);
  show<CableEnd>("MainRemote", toStringMainRemote);
  show<TestType>("TestType", toString);
  show<TestMergeFlags>("TestMergeFlags", toString);
  show<ResultReaderStatus>("ResultReaderStatus", toString);
  show<ResultWriterStatus>("ResultWriterStatus", toString);
  show<PFile::PFileReaderStatus>("PFileReaderStatus", PFile::toString);
  show<ScaledInt::ScaledTo>("ScaledTo", toString);
  show<LengthRoundedTo>("LengthRoundedTo", toString);
  show<ModelId>("ModelId", toString);
  show<ModuleId>("ModuleId", toString);
  show<ModuleCategory>("ModuleCategory", toString);
  show<Language>("Language", toString);
  show<LocaleType>("LocaleType", toString);
  show<DateFormat>("DateFormat", toString);
  show<TimeFormat>("TimeFormat", toString);
  show<PowerDownTimeout>("PowerDownTimeout", toString);
  show<BacklightTimeout>("BacklightTimeout", toString);
  show<LengthUnits>("LengthUnits", toString);
  show<PowerLineFrequency>("PowerLineFrequency", toString);
  show<ResultStorageLocation>("ResultStorageLocation", toString);
  show<NumericFormat>("NumericFormat", toString);
  show<IPAddressSource>("IPAddressSource", toString);
  show("Encryption", Encryption::desc);
  show("UsbWifiSecurity", UsbWifiSecurity::desc);
  show("Eap", Eap::desc);
  RecordTesting::expectGoldenText(shown, "enumeration_texts");
}
