#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/DatabaseDescriptor.h>

namespace Veltra {

/// What a database package is as a whole: its version, and the firmware it needs.
/// A plain value. On the wire: headed record, docs/format.md#databasepackagemanifestsummary.
class VELTRA_EXPORT DatabasePackageManifestSummary : public Marshal::ISerializable,
                                                     public Dump::IDumpable,
                                                     public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510007;
  static constexpr const char* JSON_ROOT_NAME = "DatabasePackageManifestSummary";

  DatabasePackageManifestSummary() = default;
  DatabasePackageManifestSummary(CustomerDatabaseVersion customerVersion, uint16_t releaseType, uint16_t build,
                                 uint16_t type, std::string minReqFirmwareVersion);

  bool operator==(const DatabasePackageManifestSummary& other) const;
  bool operator!=(const DatabasePackageManifestSummary& other) const { return !(*this == other); }
  void clear() { *this = DatabasePackageManifestSummary(); }

  /// The customer version as text: "V3.12 beta".
  std::string getVersionString() const { return customerVersion.getVersionString(); }
  /// The same with the build: "V3.12.407 beta".
  std::string getFullVersionString() const;

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; header and length codes unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"DatabasePackageManifestSummary": {"CustomDatabaseVersion": {...}, ...}}, all members at every level.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;
  /// Reads that document; every member is required. The version is read by CustomerDatabaseVersion::fromJson(): without
  /// a suffix in the document the old one stays.
  /// @return false, with the record unchanged, when a member is missing or of another kind (logged)
  [[nodiscard]] bool fromJson(Json::Value const& root);
  /// The same; null is logged, clears the record and gives false.
  [[nodiscard]] bool fromJson(const Json::Value* root);

  CustomerDatabaseVersion customerVersion;  ///< as customers see it
  uint16_t releaseType = 0;                 ///< any number that builders and users of packages agree on
  uint16_t build = 0;                       ///< shown as the third number of the version
  uint16_t type = 0;                        ///< as releaseType
  std::string minReqFirmwareVersion;        ///< oldest instrument firmware that can use the package

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// A package's table of contents, the first section of its file. A default one is empty: it can be written, but only a
/// manifest with a descriptor can be read back. On the wire: headed record, docs/format.md#databasepackagemanifest.
class VELTRA_EXPORT DatabasePackageManifest : public Marshal::ISerializable,
                                              public Dump::IDumpable,
                                              public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510009;
  static constexpr const char* JSON_ROOT_NAME = "DatabasePackageManifest";

  DatabasePackageManifest() = default;
  DatabasePackageManifest(DatabasePackageManifestSummary summary, DatabaseDescriptorList descriptors);

  bool operator==(const DatabasePackageManifest& other) const;
  bool operator!=(const DatabasePackageManifest& other) const { return !(*this == other); }
  void clear() { *this = DatabasePackageManifest(); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// Fatal where DatabaseDescriptor::deserialize() is.
  /// @return 0; codes of the header, the summary, the list and the length unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"DatabasePackageManifest": {"DatabasePackageManifestSummary": {...}, "DatabaseDescriptorList": [...]}}
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  DatabasePackageManifestSummary summary;  ///< the package as a whole
  DatabaseDescriptorList descriptors;      ///< one for each of its databases; 1 to 50 can be read back

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
