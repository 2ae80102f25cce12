// Every fromJson(): any document is tried on every record. A record that refuses is as it was; what one shows after it
// took a document, it takes again.
#include <libcrossplatform/common/jsonutil.h>

#include "RecordProperties.h"

using namespace Veltra;

namespace {

/// The one call by the arguments it has.
template <class Record>
bool take(Record& record, const Json::Value& json) {
  if constexpr (std::is_base_of_v<Settings, Record>) {
    return record.fromJson(&json);
  } else if constexpr (std::is_same_v<Record, EquipmentInformation>) {
    return record.fromJson(json, "EquipmentInformation");
  } else if constexpr (std::is_same_v<Record, FibDbus::OtdrSpan>) {
    return record.fromJson(json, "span");
  } else if constexpr (std::is_same_v<Record, Celsius>) {
    return record.fromJson(json, nullptr);
  } else {
    return record.fromJson(json);
  }
}

template <class Record>
Json::Value shown(const Record& record) {
  return record.toJson(Dump::DumpFlags());
}

/// The form of a time has four digits for the year: no other can be read.
bool hasPrintableTimes(const EquipmentInformation& equipment) {
  constexpr int64_t YEAR_1000 = -30610224000, YEAR_10000 = 253402300800;
  for (const long time :
       {equipment.getModuleCalibrationTime(), equipment.getModuleFirstUseDate(), equipment.getLiaCalibrationTime()}) {
    if (time < YEAR_1000 || time >= YEAR_10000) return false;
  }
  return true;
}

template <class Record>
void checkTaken(const Record& record) {
  Json::Value last = shown(record);
  if constexpr (std::is_same_v<Record, EquipmentInformation>) {
    if (!hasPrintableTimes(record)) return;
  }
  // "60 Minutes" is shown and not read back; an unknown choice is shown as the one it falls back to.
  if constexpr (std::is_same_v<Record, InstrumentSettings>) {
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
void checkTaken(const Celsius& taken) {
  Celsius shownOnce, shownTwice;
  FUZZ_CHECK(take(shownOnce, shown(taken)) && take(shownTwice, shown(shownOnce)));
  FUZZ_CHECK(std::abs(shownOnce.getScaled() - taken.getScaled()) <= 1 && shownTwice == shownOnce);
}

/// Values of one end may change with every reading: single precision is not enough for nine digits.
void checkTaken(FibDbus::OtdrSpan span) {
  FUZZ_CHECK(span.fromJson(shown(span), nullptr));
}

template <class Record>
void check(const Json::Value& json, Fuzz::Type<Record>) {
  Record record;
  const Fuzz::Bytes before = Fuzz::bytesOf(record);
  if (take(record, json)) {
    checkTaken(record);
  } else {
    FUZZ_CHECK(Fuzz::bytesOf(record) == before);
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

}  // namespace

void Fuzz::runTarget(const Input& input) {
  Json::Value json;
  if (!parseJson(input.text(), json, false)) {
    FUZZ_CHECK(json.isNull());
    return;
  }
  forEach(JsonRecords(), [&](auto record) { check(json, record); });
  guarded([&] { checkWifi(json); });
}
