#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <memory>
#include <string>

#include <libcrossplatform/common/DatabaseVersion.h>
#include <libcrossplatform/common/RecordList.h>

namespace Veltra {

/// Kind of a database. The builders and the users of packages agree on the numbers.
enum DATABASE_TYPE : int32_t {};  // NOLINT(readability-identifier-naming): the name callers know

/// One database file of a package.
/// A plain value. On the wire: plain inline record, docs/format.md#databasedescriptor.
class VELTRA_EXPORT DatabaseDescriptor : public Marshal::ISerializable, public Dump::IDumpable, public Dump::IJsonable {
 public:
  static constexpr const char* JSON_ROOT_NAME = "DatabaseDescriptor";
  static constexpr uint32_t MAX_PATH_LENGTH = 1024;  ///< bytes of a path that can be read back, with its zero byte

  DatabaseDescriptor() = default;
  DatabaseDescriptor(const DatabaseVersion& version, DATABASE_TYPE dbType, std::string filePath,
                     std::string minReqFirmwareVersion);

  bool operator==(const DatabaseDescriptor& other) const;
  bool operator!=(const DatabaseDescriptor& other) const { return !(*this == other); }
  void clear() { *this = DatabaseDescriptor(); }

  /// A path over MAX_PATH_LENGTH is written, but cannot be read back.
  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// A path whose last byte is not zero is a fatal assertion, so that unchecked bytes can end the program: read them
  /// from a section whose CRC-32 was verified, or install an assertion handler that throws.
  /// @return 0; -1 a path length of 0 or over MAX_PATH_LENGTH; -3 the stream ran out; codes of the version unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"DatabaseDescriptor": {"DatabaseVersion": {...}, ...}}, all members at every level.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  DatabaseVersion version;            ///< of the database
  DATABASE_TYPE dbType{};             ///< any number that builders and users of packages agree on
  std::string filePath;               ///< within the package
  std::string minReqFirmwareVersion;  ///< oldest instrument firmware that can use the database

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// The databases of a package, owned by the list, in the order they were added. It accepts more than MAX_ENTRIES, but
/// then cannot be read back. On the wire: headed record with a 32-bit count.
class VELTRA_EXPORT DatabaseDescriptorList : public Marshal::ISerializable,
                                             public Dump::IDumpable,
                                             public Dump::IJsonable,
                                             public RecordList<DatabaseDescriptor> {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x51000a;
  static constexpr const char* JSON_ROOT_NAME = "DatabaseDescriptorList";
  static constexpr uint32_t MAX_ENTRIES = 50;  ///< descriptors that can be read back

  /// Appends a descriptor. Null is reported as an assertion, and nothing is added.
  void add(std::unique_ptr<DatabaseDescriptor> p) {
    addChecked(std::move(p), "libcrossplatform/common/DatabaseDescriptor", __LINE__);
  }
  ///@{
  /// The first descriptor of that type, null when there is none. Owned by the list.
  DatabaseDescriptor* getDatabaseDescriptor(DATABASE_TYPE type);
  const DatabaseDescriptor* getDatabaseDescriptor(DATABASE_TYPE type) const;
  ///@}

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// A list without entries is refused, although it can be written. Fatal where DatabaseDescriptor::deserialize() is.
  /// @return 0; -1 a count of 0 or over MAX_ENTRIES; -3 the stream ran out; codes of a descriptor, of the header and of
  ///         the length unchanged. On failure the list is empty.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"DatabaseDescriptorList": [...]}, the descriptors' JSON in list order.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
