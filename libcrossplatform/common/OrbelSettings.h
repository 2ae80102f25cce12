#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/ProjectId.h>
#include <libcrossplatform/common/Settings.h>

namespace Veltra {

/// Settings of the current project: where results go, how they are numbered, how they are synchronised.
/// A plain value. On the wire: headed record that holds its own JSON text, docs/format.md#orbelsettings.
class VELTRA_EXPORT OrbelSettings : public Settings {
 public:
  static constexpr uint8_t CLASS_VERSION = 0;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x51000b;
  static constexpr const char* JSON_ROOT_NAME = "OrbelSettings";

  OrbelSettings() = default;
  OrbelSettings(Project::ProjectId project, bool autoSave, bool autoIncrement, std::string syncUserName,
                std::string syncUserPass, Json::Value netProfile, bool trackitEnable, unsigned int keyPosition);
  OrbelSettings(Project::ProjectId, bool, bool, std::string, std::string, const Json::Value*, bool, unsigned) = delete;

  unsigned int getSettingsType() const override { return 2; }

  void clear() { *this = OrbelSettings(); }
  /// Whole numbers in the profile are equal by value, signed or not; otherwise as Json::Value compares them.
  bool operator==(const OrbelSettings& other) const;
  bool operator!=(const OrbelSettings& other) const { return !(*this == other); }

  /// Text that fromString() would refuse, docs/reader-behaviour.md#the-bounds-of-json, is still written; a
  /// warning is logged.
  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// Not cleared first: members the text does not name keep their values. Any class version is read.
  /// @return 0; -1 another record's id, or text that fromString() refuses: the record is then unchanged; -3 the stream
  ///         ran out; header and length codes unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// {"OrbelSettings": {...}}, all members at every level, the password as plain text.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;
  /// Reads {"OrbelSettings": {...}} with JsonCpp's own conversions: a number is also text. A member that is missing or
  /// null keeps its value.
  /// @return true; false, with the record unchanged, for a null pointer, without the root member, and when a value
  ///         cannot be converted (logged)
  [[nodiscard]] bool fromJson(const Json::Value* root) override;
  /// fromJson() of a JSON text; comments in the network profile are kept as parseJson() keeps them. The bounds apply
  /// only to what the text names.
  /// @return false also for text that is not JSON or exceeds docs/reader-behaviour.md#the-bounds-of-json
  [[nodiscard]] bool fromString(const std::string& text);
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  Project::ProjectId project{"", "DEFAULT"};  ///< the current project
  bool autoSave = false;                      ///< store results without asking
  bool autoIncrement = false;                 ///< number results automatically
  std::string syncUserName;                   ///< for the remote service results are synchronised with
  std::string syncUserPass;                   ///< plain text, here and in every rendering of the record
  Json::Value netProfile;                     ///< the network to use, any JSON value
  bool trackitEnable = false;    ///< stored for the applications, as keyPosition: the record gives neither a meaning
  unsigned int keyPosition = 0;  ///< any number

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
