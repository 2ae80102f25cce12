#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// The version of one database file, in four numbers.
/// A plain value. On the wire: headed record, docs/format.md#databaseversion.
class VELTRA_EXPORT DatabaseVersion : public Marshal::ISerializable, public Dump::IDumpable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510008;
  static constexpr const char* JSON_ROOT_NAME = "DatabaseVersion";

  DatabaseVersion() = default;
  DatabaseVersion(uint16_t schema, uint16_t content, uint16_t object, uint16_t build);

  bool operator==(const DatabaseVersion& other) const;
  bool operator!=(const DatabaseVersion& other) const { return !(*this == other); }
  void clear() { *this = DatabaseVersion(); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; header and length codes unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"DatabaseVersion": {...}}, the four numbers at every level.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  uint16_t schema = 0;   ///< of the tables
  uint16_t content = 0;  ///< of what is in them
  uint16_t object = 0;   ///< of the objects made of it
  uint16_t build = 0;    ///< counts builds of the same three

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// The version of a package as customers see it: "V3.12 beta".
/// A plain value. On the wire: plain inline record, docs/format.md#customerdatabaseversion.
class VELTRA_EXPORT CustomerDatabaseVersion : public Marshal::ISerializable,
                                              public Dump::IDumpable,
                                              public Dump::IJsonable {
 public:
  static constexpr const char* JSON_ROOT_NAME = "CustomDatabaseVersion";  ///< not the class name: documents use this

  CustomerDatabaseVersion() = default;
  CustomerDatabaseVersion(uint16_t majorNumber, uint16_t minorNumber, std::string suffix);

  bool operator==(const CustomerDatabaseVersion& other) const;
  bool operator!=(const CustomerDatabaseVersion& other) const { return !(*this == other); }
  void clear() { *this = CustomerDatabaseVersion(); }

  /// "V3.12", with a suffix "V3.12 beta".
  std::string getVersionString() const;
  /// The reverse, tolerant of junk: looks for the first "V", the first "." and the first space after that dot. Major
  /// is the text between "V" and ".", minor the one between "." and the space; each is used when it is not empty.
  /// The suffix is what follows the space; without a space the old one stays. Of a number text only the leading decimal
  /// digits count, modulo 65536; a text without any is 0.
  /// @return whether both number texts were present
  [[nodiscard]] bool setVersionFromString(std::string const& s);

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"CustomDatabaseVersion": {"Version": "V3.12 beta"}}
  Json::Value toJson(const Dump::DumpFlags& flags) const override;
  /// Reads that document with setVersionFromString(): a text without a space keeps the old suffix.
  /// @return false, with the record unchanged, when the member is missing or not a text, or lacks a number (logged)
  [[nodiscard]] bool fromJson(Json::Value const& root);
  /// The same; null is logged, clears the record and gives false.
  [[nodiscard]] bool fromJson(const Json::Value* root);

  uint16_t major = 0;  ///< the number after "V"
  uint16_t minor = 0;  ///< the number after the dot
  std::string suffix;  ///< may be empty

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
