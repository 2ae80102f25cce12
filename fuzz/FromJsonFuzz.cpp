// Every fromJson(): any document is tried on every record. A record that refuses is as it was; what one shows after it
// took a document, it takes again.
#include <libcrossplatform/common/Celsius.h>
#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/WifiProfile.h>
#include <libcrossplatform/common/jsonutil.h>

#include "RecordProperties.h"

using namespace Veltra;

namespace {

// The one call by the names it has.
bool take(Celsius& record, const Json::Value& json) {
  return record.fromJson(json, nullptr);
}
bool take(FibDbus::OtdrSpan& record, const Json::Value& json) {
  return record.fromJson(json, "span");
}
bool take(EquipmentInformation& record, const Json::Value& json) {
  return record.fromJson(json, "EquipmentInformation");
}
bool take(InstrumentSettings& record, const Json::Value& json) {
  return record.fromJson(&json);
}
bool take(OrbelSettings& record, const Json::Value& json) {
  return record.fromJson(&json);
}
template <class Record>
bool take(Record& record, const Json::Value& json) {
  return record.fromJson(json);
}

template <class Record>
Json::Value shown(const Record& record) {
  return record.toJson(Dump::DumpFlags());
}

/// Whether what a record shows can be read: the form of a time has four digits for the year.
template <class Record>
bool showsAll(const Record&) {
  return true;
}
bool showsAll(const EquipmentInformation& equipment) {
  constexpr int64_t YEAR_1000 = -30610224000, YEAR_10000 = 253402300800;
  for (const long time :
       {equipment.getModuleCalibrationTime(), equipment.getModuleFirstUseDate(), equipment.getLiaCalibrationTime()}) {
    if (time < YEAR_1000 || time >= YEAR_10000) return false;
  }
  return true;
}

/// @param generations  after how many of them what is shown no longer changes: 1 where reading loses nothing
template <class Record>
void check(const Json::Value& json, int generations) {
  Record record;
  const Fuzz::Bytes before = Fuzz::bytesOf(record);
  if (!take(record, json)) {
    FUZZ_CHECK(Fuzz::bytesOf(record) == before);
    return;
  }
  Json::Value last = shown(record);
  if (!showsAll(record)) return;
  for (int i = 0; i < generations; ++i) {
    Record next;
    FUZZ_CHECK(take(next, last));
    last = shown(next);
  }
  Record again;
  FUZZ_CHECK(take(again, last));
  FUZZ_CHECK(Dump::compactJson(shown(again)) == Dump::compactJson(last));
}

/// A temperature beyond what the record holds may change with every reading, but what it stores does not, once the text
/// has its two decimals.
void checkCelsius(const Json::Value& json) {
  Celsius taken, shownOnce, shownTwice;
  if (!take(taken, json)) {
    FUZZ_CHECK(taken == Celsius());
    return;
  }
  FUZZ_CHECK(take(shownOnce, shown(taken)) && take(shownTwice, shown(shownOnce)));
  FUZZ_CHECK(std::abs(shownOnce.getScaled() - taken.getScaled()) <= 1 && shownTwice == shownOnce);
}

/// Values of one end may change with every reading: single precision is not enough for nine digits.
void checkSpan(const Json::Value& json) {
  FibDbus::OtdrSpan span;
  const Fuzz::Bytes before = Fuzz::bytesOf(span);
  if (take(span, json)) {
    Fuzz::guarded([&] { FUZZ_CHECK(span.fromJson(shown(span), nullptr)); });
  } else {
    FUZZ_CHECK(Fuzz::bytesOf(span) == before);
  }
}

void checkWifi(const Json::Value& json) {
  WifiProfile profile;
  profile.ssid = "before";
  if (!profile.fromJson(json)) {
    FUZZ_CHECK(profile.ssid == "before");
    return;
  }
  const Json::Value stored = profile.toJson();
  FUZZ_CHECK(stored.isNull() != Fuzz::isStorable(profile));
  if (stored.isNull()) return;
  WifiProfile again;
  FUZZ_CHECK(again.fromJson(stored));
  FUZZ_CHECK(again == profile);
  FUZZ_CHECK(again.useDhcp == profile.useDhcp && again.dns == profile.dns);
  if (profile.securityType == UsbWifiSecurity::PERSONAL) FUZZ_CHECK(again.wirelessPassword == profile.wirelessPassword);
  if (profile.securityType == UsbWifiSecurity::ENTERPRISE) {
    FUZZ_CHECK(again.user == profile.user && again.password == profile.password);
    FUZZ_CHECK(again.securityId == profile.securityId && again.eap == profile.eap);
  }
}

/// The typed readers and the conversions, on every member of the document. What a reader takes fits its type.
void checkReaders(const Json::Value& json) {
  static const char* const KEYS[] = {nullptr, "a", "version"};
  for (const char* const key : KEYS) {
    const boost::optional<int> i = intFromJson(json, key);
    const boost::optional<int64_t> i64 = int64FromJson(json, key);
    if (i) FUZZ_CHECK(i64 && *i64 == *i);
    const boost::optional<unsigned> u = uintFromJson(json, key);
    const boost::optional<uint64_t> u64 = uint64FromJson(json, key);
    if (u) FUZZ_CHECK(u64 && *u64 == *u);
    FUZZ_CHECK(!(boolFromJson(json, key) && (i || u)));
    FUZZ_CHECK(floatFromJson(json, key).has_value() == doubleFromJson(json, key).has_value());
    timeFromJson(json, key);
    stringFromJson(json, key);
  }
  bool flag = false;
  int number = 0;
  unsigned positive = 0;
  std::string text;
  convertJson(json, flag);
  convertJson(json, number);
  convertJson(json, positive);
  convertJson(json, text);
}

void checkDocument(const Fuzz::Input& input) {
  Json::Value json;
  if (!parseJson(input.text(), json, false)) {
    FUZZ_CHECK(json.isNull());
    return;
  }
  Fuzz::guarded([&] { checkCelsius(json); });
  Fuzz::guarded([&] { check<EquipmentInformation>(json, 0); });
  Fuzz::guarded([&] { check<CustomerDatabaseVersion>(json, 0); });
  Fuzz::guarded([&] { check<DatabasePackageManifestSummary>(json, 0); });
  // "60 Minutes" is shown and not read back; an unknown choice is shown as the one it falls back to.
  Fuzz::guarded([&] { check<InstrumentSettings>(json, 1); });
  Fuzz::guarded([&] { check<OrbelSettings>(json, 0); });
  Fuzz::guarded([&] { checkSpan(json); });
  Fuzz::guarded([&] { checkWifi(json); });
  checkReaders(json);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, checkDocument);
}
