#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <libcrossplatform/common/ModuleIds.h>
#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// The most characters that a text setter of EquipmentInformation accepts without an assertion.
constexpr std::size_t EQUIPMENT_INFO_MAX_STR_LEN = 100;

/// The equipment that produced a result: main unit, test module and link interface adapter. Stored with results.
/// A plain value; default all 0 and empty. Times are s since 1970-01-01 UTC, 0 unknown.
/// On the wire: headed record, docs/format.md#equipmentinformation.
class VELTRA_EXPORT EquipmentInformation : public Marshal::IDumpSerializable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 3;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510003;

  void clear();

  /// @name Main unit
  /// Text setters take null as empty. A text over EQUIPMENT_INFO_MAX_STR_LEN is reported as an assertion, but set;
  /// texts that are read from streams and documents may have any length.
  ///@{
  const std::string& getSoftwareVersion() const { return _softwareVersion; }
  void setSoftwareVersion(const char* version);
  const std::string& getModelIdStr() const { return _modelIdStr; }  ///< a name of modelNameList, or any other text
  void setModelIdStr(const char* name);
  int getModelHardwareRevision() const { return _modelHardwareRevision; }
  void setModelHardwareRevision(int revision) { _modelHardwareRevision = revision; }
  const std::string& getModelSerialNumber() const { return _modelSerialNumber; }
  void setModelSerialNumber(const char* serialNumber);
  ///@}

  /// @name Test module
  /// Texts as of the main unit. Times are s since 1970-01-01 UTC, 0 unknown.
  ///@{
  int getModuleId() const { return _moduleId; }  ///< a ModuleId
  void setModuleId(int id) { _moduleId = id; }
  std::string getModuleIdStr() const { return toString(static_cast<ModuleId>(_moduleId)); }
  int getModuleHardwareRevision() const { return _moduleHardwareRevision; }
  void setModuleHardwareRevision(int revision) { _moduleHardwareRevision = revision; }
  const std::string& getModuleSerialNumber() const { return _moduleSerialNumber; }
  void setModuleSerialNumber(const char* serialNumber);
  long getModuleCalibrationTime() const { return _moduleCalibrationTime; }
  void setModuleCalibrationTime(long time) { _moduleCalibrationTime = time; }
  long getModuleFirstUseDate() const { return _moduleFirstUseDate; }
  void setModuleFirstUseDate(long date) { _moduleFirstUseDate = date; }
  /// A fibre-inspection probe has its own firmware; every other module runs the software of the main unit.
  const std::string& getModuleFirmwareVersion() const;
  /// Kept as the adapter's serial number: a probe has no adapter.
  void setProbeViewFirmwareVersion(std::string version) { _liaSerialNumber = std::move(version); }
  ///@}

  /// @name Link interface adapter
  /// 0 and empty where the module has none. Times as of the module.
  ///@{
  int getLiaId() const { return _liaId; }  ///< the id of a LinkAdapter, 0 none
  void setLiaId(int id) { _liaId = id; }
  const std::string& getLiaSerialNumber() const { return _liaSerialNumber; }
  void setLiaSerialNumber(std::string serialNumber) { _liaSerialNumber = std::move(serialNumber); }
  long getLiaCalibrationTime() const { return _liaCalibrationTime; }
  void setLiaCalibrationTime(long time) { _liaCalibrationTime = time; }
  ///@}

  ///@{
  /// The software version equal; of the main unit also model, hardware revision and serial number.
  bool isSoftwareVersionSameAs(const EquipmentInformation& other) const;
  bool isMainSameAs(const EquipmentInformation& other) const;
  ///@}
  /// The module and its adapter.
  bool isModuleSameAs(const EquipmentInformation& other) const;
  bool operator==(const EquipmentInformation& other) const { return isMainSameAs(other) && isModuleSameAs(other); }
  bool operator!=(const EquipmentInformation& other) const { return !(*this == other); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// Class version 1 ends before the adapter, 2 before the first-use date; what is missing stays 0 or empty.
  /// @return 0; -3 the stream ran out; header codes unchanged. On failure: partly filled, clear() it.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson().
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// A flat object, the same at every level. Times to the minute as sysTimeToStr() writes them; the adapter as its part
  /// number, empty for an id without one.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  /// Reads the object toJson() writes: member `source` of `value` if it has one, otherwise `value` itself. Every key
  /// except "_classVersion" is required; an unknown part number gives adapter 0.
  /// @return false, with the record unchanged: a key is missing or of another kind, or a time does not fit time_t (the
  ///         first such key is logged); or another "_className", which is not logged
  [[nodiscard]] bool fromJson(const Json::Value& value, const char* source);
  /// The same; a null `value` is logged and clears the record.
  [[nodiscard]] bool fromJson(const Json::Value* value, const char* source);

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);

  int _modelHardwareRevision = 0;
  int _moduleId = 0;
  int _moduleHardwareRevision = 0;
  long _moduleCalibrationTime = 0;
  long _moduleFirstUseDate = 0;
  int _liaId = 0;
  std::string _liaSerialNumber;  ///< of a fibre-inspection probe: its firmware version
  long _liaCalibrationTime = 0;
  std::string _softwareVersion;
  std::string _modelIdStr;
  std::string _modelSerialNumber;
  std::string _moduleSerialNumber;

  template <class Self, class Members>
  VELTRA_HIDDEN static void jsonMembers(Self& self, Members& m);
};

}  // namespace Veltra
