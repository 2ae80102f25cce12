#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/NetworkProfile.h>

namespace Inspect {

/// One setting of the network profile, as the command names it. One table serves show, set and check; its texts live
/// as long as the program.
struct ProfileSetting {
  const char* name;
  bool secret;
  const char* wanted;  ///< what a value must be, for refusals; null where a setting is only shown
  Json::Value (*get)(const NetworkProfile& profile);              ///< null where it is not set
  bool (*set)(NetworkProfile& profile, const std::string& text);  ///< null where a setting is only shown
};

/// All settings in the order they are shown; the list lives as long as the program.
const std::vector<ProfileSetting>& profileSettings();
/// Null for an unknown name.
const ProfileSetting* findProfileSetting(const std::string& name);

/// The settings by name, secrets as "********" unless revealed, and the recent networks.
Json::Value profileJson(const NetworkProfile& profile, bool reveal);

/// What is wrong with a stored profile: values its own setters would refuse, and, in its recent networks too, members
/// of the wrong kind, names outside their lists and secrets that do not decrypt. One line each, without secrets.
std::vector<std::string> checkProfile(const NetworkProfile& profile);

/// What the reader of a profile passes over in its text: names given twice, of which it takes the last, zero bytes,
/// anything after the document, and bytes that are not UTF-8. One line each with its place, bounded, without secrets.
std::vector<std::string> checkProfileText(const std::string& text);

}  // namespace Inspect
