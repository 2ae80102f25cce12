#include <libcrossplatform/common/EquipmentInformation.h>

#include <type_traits>

#include <libcrossplatform/common/LinkAdapters.h>
#include <libcrossplatform/common/internal/JsonMembers.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/EquipmentInformation";
constexpr char CLASS_NAME[] = "EquipmentInformation";

/// Assigns a text and only then reports one that is too long: it stays, because callers rely on what they set.
void assignText(std::string& member, const char* text, const char* expression, int line) {
  member = text != nullptr ? text : "";
  if (member.length() > EQUIPMENT_INFO_MAX_STR_LEN) assertFail(expression, SOURCE, line);
}

/// The JSON text of an adapter: its part number, empty for an id without one.
std::string partNumberOf(int id) {
  const LinkAdapter* const found = findLinkAdapter(id);
  return found != nullptr && found->partNumber != nullptr ? found->partNumber : "";
}

int adapterOf(const std::string& partNumber) {
  const LinkAdapter* const found = findLinkAdapterByPartNumber(partNumber);
  return found != nullptr ? found->id : 0;
}

}  // namespace

void EquipmentInformation::clear() {
  *this = EquipmentInformation();
}

void EquipmentInformation::setSoftwareVersion(const char* version) {
  assignText(_softwareVersion, version, "_softwareVersion.length() <= EQUIPMENT_INFO_MAX_STR_LEN", 63);
}

void EquipmentInformation::setModelIdStr(const char* name) {
  assignText(_modelIdStr, name, "_modelIdStr.length() <= EQUIPMENT_INFO_MAX_STR_LEN", 78);
}

void EquipmentInformation::setModelSerialNumber(const char* serialNumber) {
  assignText(_modelSerialNumber, serialNumber, "_modelSerialNumber.length() <= EQUIPMENT_INFO_MAX_STR_LEN", 84);
}

void EquipmentInformation::setModuleSerialNumber(const char* serialNumber) {
  assignText(_moduleSerialNumber, serialNumber, "_moduleSerialNumber.length() <= EQUIPMENT_INFO_MAX_STR_LEN", 99);
}

const std::string& EquipmentInformation::getModuleFirmwareVersion() const {
  const ModuleCategory category = getModuleCategory(static_cast<ModuleId>(_moduleId), DFU_MODULE_IS_VALID);
  return category == MODULE_CATEGORY_PROBE_VIEW ? _liaSerialNumber : _softwareVersion;
}

bool EquipmentInformation::isSoftwareVersionSameAs(const EquipmentInformation& other) const {
  return _softwareVersion == other._softwareVersion;
}

bool EquipmentInformation::isMainSameAs(const EquipmentInformation& other) const {
  return isSoftwareVersionSameAs(other) && _modelIdStr == other._modelIdStr &&
         _modelHardwareRevision == other._modelHardwareRevision && _modelSerialNumber == other._modelSerialNumber;
}

bool EquipmentInformation::isModuleSameAs(const EquipmentInformation& other) const {
  return _moduleId == other._moduleId && _moduleHardwareRevision == other._moduleHardwareRevision &&
         _moduleSerialNumber == other._moduleSerialNumber && _moduleCalibrationTime == other._moduleCalibrationTime &&
         _moduleFirstUseDate == other._moduleFirstUseDate && _liaId == other._liaId &&
         _liaSerialNumber == other._liaSerialNumber && _liaCalibrationTime == other._liaCalibrationTime;
}

template <class Fields>
void EquipmentInformation::fields(Fields& f) {
  f.text("softwareVersion", _softwareVersion);
  f.text("modelIdStr", _modelIdStr);
  f.i32("modelHardwareRevision", _modelHardwareRevision);
  f.text("modelSerialNumber", _modelSerialNumber);
  f.i32("moduleId", _moduleId);
  f.i32("moduleHardwareRevision", _moduleHardwareRevision);
  f.text("moduleSerialNumber", _moduleSerialNumber);
  f.i64("moduleCalibrationTime", _moduleCalibrationTime);
  if (f.version() > 1) {
    f.i32("liaId", _liaId);
    f.text("liaSerialNumber", _liaSerialNumber);
    f.i64("liaCalibrationTime", _liaCalibrationTime);
  }
  if (f.version() > 2) f.i64("moduleFirstUseDate", _moduleFirstUseDate);
}

unsigned EquipmentInformation::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus EquipmentInformation::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void EquipmentInformation::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

template <class Self, class Members>
void EquipmentInformation::jsonMembers(Self& self, Members& m) {
  m.text("softwareVersion", self._softwareVersion);
  m.text("modelIdStr", self._modelIdStr);
  m.integer("modelHardwareRevision", self._modelHardwareRevision);
  m.text("modelSerialNumber", self._modelSerialNumber);
  m.integer("moduleId", self._moduleId);
  m.integer("moduleHardwareRevision", self._moduleHardwareRevision);
  m.text("moduleSerialNumber", self._moduleSerialNumber);
  m.time("moduleCalibrationTime", self._moduleCalibrationTime);
  m.time("moduleFirstUseDate", self._moduleFirstUseDate);
  std::string adapter = partNumberOf(self._liaId);
  m.text("liaId", adapter);
  if constexpr (!std::is_const_v<Self>) self._liaId = adapterOf(adapter);
  m.text("liaSerialNumber", self._liaSerialNumber);
  m.time("liaCalibrationTime", self._liaCalibrationTime);
}

Json::Value EquipmentInformation::toJson(const Dump::DumpFlags&) const {
  Json::Value object(Json::objectValue);
  object[KEY_CLASS_NAME] = CLASS_NAME;
  object[KEY_CLASS_VERSION] = CLASS_VERSION;
  MemberWriter writer(object);
  jsonMembers(*this, writer);
  return object;
}

bool EquipmentInformation::fromJson(const Json::Value& value, const char* source) {
  const Json::Value* const member = jsonMember(value, source);
  const Json::Value& given = member != nullptr ? *member : value;
  // The typed readers would take a value that is not an object for the member itself.
  const Json::Value none(Json::objectValue);
  const Json::Value& object = given.isObject() ? given : none;

  MemberReader reader(object, MemberRule::EXACT, SOURCE, __LINE__);
  std::string className;
  reader.text(KEY_CLASS_NAME, className);
  if (!reader.ok() || className != CLASS_NAME) return false;
  // A missing version counts as 1. All versions have the same keys, so only its kind is checked.
  int classVersion = 1;
  if (object.isMember(KEY_CLASS_VERSION)) reader.integer(KEY_CLASS_VERSION, classVersion);
  EquipmentInformation read;
  jsonMembers(read, reader);
  if (reader.ok()) *this = std::move(read);
  return reader.ok();
}

bool EquipmentInformation::fromJson(const Json::Value* value, const char* source) {
  if (value != nullptr) return fromJson(*value, source);
  logJsonFailure(SOURCE, __LINE__, source);
  clear();
  return false;
}

}  // namespace Veltra
