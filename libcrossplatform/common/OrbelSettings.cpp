#include <libcrossplatform/common/OrbelSettings.h>

#include <utility>

#include <libcrossplatform/common/internal/JsonScan.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/JsonText.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/OrbelSettings";

constexpr std::size_t MOST_WRITTEN = std::size_t{4} * 1024 * 1024;

constexpr char PROJECT_ID[] = "project_id";
constexpr char PROJECT_NAME[] = "project_name";
constexpr char AUTO_SAVE[] = "auto_save";
constexpr char AUTO_INCREMENT[] = "auto_increment";
constexpr char SYNC_USER_NAME[] = "sync_username";
constexpr char SYNC_USER_PASS[] = "sync_userpass";
constexpr char NET_PROFILE[] = "net_profile";
constexpr char TRACKIT_ENABLE[] = "trackit_enable";
constexpr char KEY_POSITION[] = "key_position";

/// Sets `out` from the member `key` of an object; leaves it when the member is missing or null.
/// @return false when the member cannot be converted
template <class T>
bool takeIfPresent(const Json::Value& object, const char* key, T& out) {
  const Json::Value* const member = jsonMember(object, key);
  if (member == nullptr || member->isNull() || convertJson(*member, out)) return true;
  logJsonFailure(SOURCE, __LINE__, key);
  return false;
}

}  // namespace

OrbelSettings::OrbelSettings(Project::ProjectId projectId, bool save, bool increment, std::string userName,
                             std::string userPass, Json::Value profile, bool trackit, unsigned int position)
    : project(std::move(projectId)),
      autoSave(save),
      autoIncrement(increment),
      syncUserName(std::move(userName)),
      syncUserPass(std::move(userPass)),
      netProfile(std::move(profile)),
      trackitEnable(trackit),
      keyPosition(position) {}

bool OrbelSettings::operator==(const OrbelSettings& other) const {
  return project == other.project && autoSave == other.autoSave && autoIncrement == other.autoIncrement &&
         syncUserName == other.syncUserName && syncUserPass == other.syncUserPass && netProfile == other.netProfile &&
         trackitEnable == other.trackitEnable && keyPosition == other.keyPosition;
}

template <class Fields>
void OrbelSettings::fields(Fields& f) {
  f.terminatedText("json", Dump::toJsonString(*this, Dump::DumpFlags(), true));
}

unsigned OrbelSettings::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus OrbelSettings::deserialize(Marshal::IObjectReader& in) {
  Marshal::Header header;
  if (const Marshal::StreamOpStatus s = header.deserialize(in); s != Marshal::STREAM_OK) return s;
  // The id alone is compared: a record of any class version is read.
  if (header.serialTypeId().combined() != SERIAL_TYPE_ID) return Marshal::STREAM_WRONG_ELEMENT;
  std::string json;
  {
    Marshal::FieldReader f(in, header.classVersion());
    f.terminatedText("json", json);
    if (!f.ok()) return f.status();
  }
  if (!fromString(json)) return Marshal::STREAM_WRONG_ELEMENT;
  return header.checkLength(in, Marshal::STREAM_OK);
}

Json::Value OrbelSettings::toJson(const Dump::DumpFlags&) const {
  Json::Value object(Json::objectValue);
  object[PROJECT_NAME] = project.name;
  object[PROJECT_ID] = project.id;
  object[AUTO_SAVE] = autoSave;
  object[AUTO_INCREMENT] = autoIncrement;
  object[SYNC_USER_NAME] = syncUserName;
  object[SYNC_USER_PASS] = syncUserPass;
  object[NET_PROFILE] = netProfile;
  object[TRACKIT_ENABLE] = trackitEnable;
  object[KEY_POSITION] = keyPosition;
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

bool OrbelSettings::fromJson(const Json::Value* root) {
  const Json::Value* const object = root != nullptr && root->isObject() ? jsonMember(*root, JSON_ROOT_NAME) : nullptr;
  if (object == nullptr || !object->isObject()) return false;

  OrbelSettings read = *this;
  const bool converted =
      takeIfPresent(*object, AUTO_INCREMENT, read.autoIncrement) && takeIfPresent(*object, AUTO_SAVE, read.autoSave) &&
      takeIfPresent(*object, PROJECT_ID, read.project.id) && takeIfPresent(*object, PROJECT_NAME, read.project.name) &&
      takeIfPresent(*object, SYNC_USER_NAME, read.syncUserName) &&
      takeIfPresent(*object, SYNC_USER_PASS, read.syncUserPass) &&
      takeIfPresent(*object, TRACKIT_ENABLE, read.trackitEnable) &&
      takeIfPresent(*object, KEY_POSITION, read.keyPosition);
  if (!converted) return false;
  const Json::Value* const profile = jsonMember(*object, NET_PROFILE);
  if (profile != nullptr && !profile->isNull()) read.netProfile = *profile;
  *this = std::move(read);
  return true;
}

bool OrbelSettings::fromString(const std::string& text) {
  Json::Value root;
  if (hasTooManyValues(text) || !parseJson(text, root, true)) return false;
  return Dump::orBadAlloc([&] {
    OrbelSettings read = *this;
    std::string written;
    if (!read.fromJson(&root) || !Dump::writeStyledJson(written, read.netProfile, "   ", MOST_WRITTEN)) return false;
    *this = std::move(read);
    return true;
  });
}

void OrbelSettings::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

}  // namespace Veltra
