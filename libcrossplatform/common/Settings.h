#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <memory>

#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// Base of the settings records: lets a caller rebuild the right one from bytes without knowing its type.
/// The order of the virtual functions is fixed.
class VELTRA_EXPORT Settings : public Marshal::ISerializable, public Dump::IDumpable, public Dump::IJsonable {
 public:
  ~Settings() override;

  /// 0 for InstrumentSettings, 2 for OrbelSettings.
  virtual unsigned int getSettingsType() const = 0;
  Json::Value toJson(const Dump::DumpFlags& flags) const override = 0;
  /// Reads the document. @return false, with the record unchanged, on failure
  [[nodiscard]] virtual bool fromJson(const Json::Value* root) = 0;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override = 0;

  /// A default-constructed settings object for a combined type id; null for an id that is not a settings record's.
  static std::unique_ptr<Settings> create(unsigned int serialType);

  /// Rebuilds a settings object from the bytes of one record.
  /// @param buffer  only read; bytes after the record are ignored
  /// @param status  0; -1 null or no bytes; -3 the bytes ran out; otherwise the code of Marshal::Header or of the
  ///                record's deserialize()
  /// @return null when `status` is not 0; null with status 0 when the bytes are those of another record
  static std::unique_ptr<Settings> create(unsigned char* buffer, unsigned int length, Marshal::StreamOpStatus& status);

 protected:
  Settings() = default;
  ///@{
  /// Copies nothing: the base has no members.
  Settings(const Settings&) = default;
  Settings& operator=(const Settings&) = default;
  ///@}
};

}  // namespace Veltra
