#include <libcrossplatform/common/OrbelSettings.h>

#include <cstring>
#include <type_traits>
#include <utility>

#include <libcrossplatform/common/internal/JsonMembers.h>
#include <libcrossplatform/common/internal/JsonScan.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/logging/Logger.h>
#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/JsonText.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/OrbelSettings";

constexpr char PROJECT_ID[] = "project_id";
constexpr char PROJECT_NAME[] = "project_name";
constexpr char AUTO_SAVE[] = "auto_save";
constexpr char AUTO_INCREMENT[] = "auto_increment";
constexpr char SYNC_USER_NAME[] = "sync_username";
constexpr char SYNC_USER_PASS[] = "sync_userpass";
constexpr char NET_PROFILE[] = "net_profile";
constexpr char TRACKIT_ENABLE[] = "trackit_enable";
constexpr char KEY_POSITION[] = "key_position";

/// The members of the JSON object except the network profile.
template <class Members, class Record>
void walkJson(Members& m, Record& s) {
  m.boolean(AUTO_INCREMENT, s.autoIncrement);
  m.boolean(AUTO_SAVE, s.autoSave);
  m.text(PROJECT_ID, s.project.id);
  m.text(PROJECT_NAME, s.project.name);
  m.text(SYNC_USER_NAME, s.syncUserName);
  m.text(SYNC_USER_PASS, s.syncUserPass);
  m.boolean(TRACKIT_ENABLE, s.trackitEnable);
  m.integer(KEY_POSITION, s.keyPosition);
}

/// The record's object in a document; null when there is none.
const Json::Value* recordIn(const Json::Value& root) {
  const Json::Value* const object = root.isObject() ? jsonMember(root, OrbelSettings::JSON_ROOT_NAME) : nullptr;
  return object != nullptr && object->isObject() ? object : nullptr;
}

/// The network profile that a record's object names; null when it names none.
const Json::Value* profileIn(const Json::Value& object) {
  const Json::Value* const profile = jsonMember(object, NET_PROFILE);
  return profile != nullptr && !profile->isNull() ? profile : nullptr;
}

bool isShortProfile(const Json::Value& profile) {
  return Dump::isStyledJsonWithin(profile, "   ", JsonBounds::STYLED_BYTES);
}

/// Whether a profile is certainly short, whatever the text it was read from: no byte of a text becomes more than the
/// indentation of one line and a few characters.
bool isShortProfileOf(const std::string& text, const JsonExtent& extent) {
  constexpr std::size_t INDENTATION = 3;
  constexpr std::size_t CHARACTERS = 16;
  return text.size() <= JsonBounds::STYLED_BYTES / (INDENTATION * extent.levels + CHARACTERS);
}

/// Json::Value's own comparison, except for whole numbers, which compare by value: unsigned ones may come back signed.
bool isSameJson(const Json::Value& a, const Json::Value& b) {
  const auto isWhole = [](const Json::Value& v) { return v.type() == Json::intValue || v.type() == Json::uintValue; };
  if (isWhole(a) && isWhole(b) && a.type() != b.type()) {
    return a.isUInt64() && b.isUInt64() && a.asUInt64() == b.asUInt64();
  }
  if (a.type() != b.type() || (!a.isArray() && !a.isObject())) return a == b;
  if (a.size() != b.size()) return false;
  if (a.isArray()) {
    for (Json::ArrayIndex i = 0; i < a.size(); ++i) {
      if (!isSameJson(a[i], b[i])) return false;
    }
    return true;
  }
  for (auto x = a.begin(), y = b.begin(); x != a.end(); ++x, ++y) {
    if (x.name() != y.name() || !isSameJson(*x, *y)) return false;
  }
  return true;
}

/// Warns of a record that deserialize() will refuse.
/// @param text  the text being written, with the whole profile
void warnUnlessReadBack(const std::string& text, const Json::Value& profile) {
  const JsonExtent extent = extentOf(text);
  const auto warn = [](std::size_t most, const char* of) {
    Logger::log(Logger::FACILITY_COMMON, Logger::SEVERITY_WARNING,
                "OrbelSettings is written with more than %zu %s: it cannot be read back", most, of);
  };
  if (extent.values > JsonBounds::VALUES) warn(JsonBounds::VALUES, "JSON values");
  if (extent.levels > JsonBounds::LEVELS) warn(JsonBounds::LEVELS, "levels of JSON");
  if (text.size() > JsonBounds::STYLED_BYTES && !isShortProfile(profile)) {
    warn(JsonBounds::STYLED_BYTES, "bytes of network profile");
  }
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
         syncUserName == other.syncUserName && syncUserPass == other.syncUserPass &&
         isSameJson(netProfile, other.netProfile) && trackitEnable == other.trackitEnable &&
         keyPosition == other.keyPosition;
}

template <class Fields>
void OrbelSettings::fields(Fields& f) {
  std::string text;
  if constexpr (std::is_same_v<Fields, Marshal::FieldWriter>) {
    text = Dump::toJsonString(*this, Dump::DumpFlags(), true);
    warnUnlessReadBack(text, netProfile);
  } else {  // the same text without a warning: it is only counted
    text = Dump::orBadAlloc([this] {
      Json::Value json = toJson(Dump::DumpFlags());
      Dump::replaceIllFormedTexts(json);
      return Dump::styledJson(json);
    });
  }
  f.terminatedText("json", text);
}

unsigned OrbelSettings::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus OrbelSettings::deserialize(Marshal::IObjectReader& in) {
  Marshal::Header header;
  if (const Marshal::StreamOpStatus s = header.deserialize(in); s != Marshal::STREAM_OK) return s;
  // Only the id is compared: a record of any class version is read.
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
  MemberWriter members(object);
  walkJson(members, *this);
  object[NET_PROFILE] = netProfile;
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

bool OrbelSettings::fromJson(const Json::Value* root) {
  const Json::Value* const object = root != nullptr ? recordIn(*root) : nullptr;
  if (object == nullptr) return false;
  // All except the profile, which may be large.
  OrbelSettings read(project, autoSave, autoIncrement, syncUserName, syncUserPass, Json::Value(), trackitEnable,
                     keyPosition);
  MemberReader members(*object, MemberRule::CONVERTED_OR_NULL, SOURCE, __LINE__);
  walkJson(members, read);
  if (!members.ok()) return false;
  if (const Json::Value* const profile = profileIn(*object)) {
    read.netProfile = *profile;
  } else {
    read.netProfile.swap(netProfile);
  }
  *this = std::move(read);
  return true;
}

bool OrbelSettings::fromString(const std::string& text) {
  const JsonExtent extent = extentOf(text);
  Json::Value root;
  if (!isWithinBounds(extent) || !parseJson(text, root, true)) return false;
  return Dump::orBadAlloc([&] {
    const Json::Value* const object = recordIn(root);
    const Json::Value* const profile = object != nullptr ? profileIn(*object) : nullptr;
    if (profile != nullptr && !isShortProfileOf(text, extent) && !isShortProfile(*profile)) return false;
    return fromJson(&root);
  });
}

void OrbelSettings::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

}  // namespace Veltra
