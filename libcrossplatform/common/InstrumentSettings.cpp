#include <libcrossplatform/common/InstrumentSettings.h>

#include <tuple>
#include <type_traits>

#include <libcrossplatform/common/internal/JsonMembers.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/InstrumentSettings";

/// The members of the JSON object, each named once for both directions.
template <class Members, class Record>
void walkJson(Members& m, Record& s) {
  m.choice(InstrumentSettings::JSON_LOCALE_NAME, s.locale, fromLocaleTypeString);
  m.choice("powerDownTimeout", s.powerDownTimeout, fromPowerDownTimeoutString);
  m.boolean("remoteModeEnabled", s.remoteModeEnabled);
  m.boolean("audibleToneEnabled", s.audibleToneEnabled);
  m.choice("dateFormat", s.dateFormat, fromDateFormatString);
  m.choice("timeFormat", s.timeFormat, fromTimeFormatString);
  m.choice("language", s.language, fromLanguageString);
  m.choice("lengthUnits", s.lengthUnits, fromLengthUnitsString);
  m.choice("numericFormat", s.numericFormat, fromNumericFormatString);
  if constexpr (!std::is_const_v<Record>) {
    // Read and ignored: documents have it, but the record has no such member and never writes it.
    ResultStorageLocation dropped = RESULT_STORAGE_MMC;
    m.choice("resultStorageLocation", dropped, fromResultStorageLocationString);
  }
  m.choice("backlightTimeout", s.backlightTimeout, fromBacklightTimeoutString);
  m.choice("powerLineFrequency", s.powerLineFrequency, fromPowerLineFrequencyString);
  m.boolean("plotGridEnabled", s.plotGridEnabled);
  m.integer("displayBrightness", s.displayBrightness);
  m.choice("ipAddressSource", s.ipAddressSource, fromIPAddressSourceString);
  m.text("ipAddress", s.ipAddress);
  m.text("ipSubnet", s.ipSubnet);
  m.text("ipGateway", s.ipGateway);
  m.text("ipDNS1", s.ipDNS1);
  m.text("ipDNS2", s.ipDNS2);
  m.text("ipDNS3", s.ipDNS3);
  m.text("ipDNS4", s.ipDNS4);
  m.text("timeZone", s.timeZone);
  m.text("hostName", s.hostName);
}

auto membersOf(const InstrumentSettings& s) {
  return std::tie(s.locale, s.powerDownTimeout, s.remoteModeEnabled, s.audibleToneEnabled, s.dateFormat, s.timeFormat,
                  s.language, s.lengthUnits, s.numericFormat, s.backlightTimeout, s.powerLineFrequency,
                  s.plotGridEnabled, s.displayBrightness, s.ipAddressSource, s.ipAddress, s.ipSubnet, s.ipGateway,
                  s.ipDNS1, s.ipDNS2, s.ipDNS3, s.ipDNS4, s.timeZone, s.hostName);
}

}  // namespace

void InstrumentSettings::clear() {
  const LocaleType kept = locale;
  *this = InstrumentSettings();
  locale = kept;
}

bool InstrumentSettings::operator==(const InstrumentSettings& other) const {
  return membersOf(*this) == membersOf(other);
}

template <class Fields>
void InstrumentSettings::fields(Fields& f) {
  // Every choice is written as a signed byte and read back as an unsigned one: -1 comes back as 255.
  f.i8ReadAsU8("locale", locale);
  f.i8ReadAsU8("powerDownTimeout", powerDownTimeout);
  f.boolean("remoteModeEnabled", remoteModeEnabled);
  f.boolean("audibleToneEnabled", audibleToneEnabled);
  f.i8ReadAsU8("dateFormat", dateFormat);
  f.i8ReadAsU8("timeFormat", timeFormat);
  f.i8ReadAsU8("language", language);
  f.i8ReadAsU8("lengthUnits", lengthUnits);
  f.i8ReadAsU8("numericFormat", numericFormat);
  f.i8ReadAsU8("backlightTimeout", backlightTimeout);
  f.i8ReadAsU8("powerLineFrequency", powerLineFrequency);
  f.boolean("plotGridEnabled", plotGridEnabled);
  f.i16("displayBrightness", displayBrightness);
  f.i8ReadAsU8("ipAddressSource", ipAddressSource);
  f.countedText("ipAddress", ipAddress);
  f.countedText("ipSubnet", ipSubnet);
  f.countedText("ipGateway", ipGateway);
  f.countedText("ipDNS1", ipDNS1);
  f.countedText("ipDNS2", ipDNS2);
  f.countedText("ipDNS3", ipDNS3);
  f.countedText("ipDNS4", ipDNS4);
  if (f.version() > 1) f.countedText("timeZone", timeZone);
  if (f.version() > 2) f.countedText("hostName", hostName);
}

unsigned InstrumentSettings::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus InstrumentSettings::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

Json::Value InstrumentSettings::toJson(const Dump::DumpFlags&) const {
  Json::Value object(Json::objectValue);
  MemberWriter members(object);
  walkJson(members, *this);
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

bool InstrumentSettings::fromJson(const Json::Value* root) {
  if (root == nullptr) return false;
  const Json::Value nothing(Json::objectValue);
  const Json::Value* object = root->isObject() ? jsonMember(*root, JSON_ROOT_NAME) : root;
  if (object == nullptr || object->isNull()) object = &nothing;
  if (!object->isObject()) {
    logJsonFailure(SOURCE, __LINE__, JSON_ROOT_NAME);
    return false;
  }
  InstrumentSettings read;
  MemberReader members(*object, MemberRule::CONVERTED, SOURCE, __LINE__);
  walkJson(members, read);
  if (members.ok()) *this = std::move(read);
  return members.ok();
}

void InstrumentSettings::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

}  // namespace Veltra
