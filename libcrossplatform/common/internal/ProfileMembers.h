#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <json/value.h>

#include <libcrossplatform/common/ProfileNames.h>

/// Access to the members of a stored network profile, shared by all units that read or write one.
///
/// The readers never throw: a member that is absent, of another kind, or of a parent that is not an object reads as
/// false, 0 or empty. The writers first turn a parent that is not an object into an empty object.
namespace Veltra::ProfileMembers {

using namespace ProfileNames;

constexpr unsigned WIRELESS_KEYS = 4;

/// The member of any kind, a JSON null included; a null pointer when there is none.
const Json::Value* find(const Json::Value& parent, const char* key);

bool flag(const Json::Value& parent, const char* key);
uint32_t number(const Json::Value& parent, const char* key);
std::string text(const Json::Value& parent, const char* key);
std::string secret(const Json::Value& parent, const char* key);  ///< decrypted
const Json::Value& array(const Json::Value& parent, const char* key);
std::string textAt(const Json::Value& array, std::size_t index);  ///< empty beyond the end

/// The position of the stored text in a table of names, 0 when it is not in it.
template <std::size_t N>
uint32_t name(const Json::Value& parent, const char* key, const char* const (&names)[N]) {
  const std::string stored = text(parent, key);
  for (uint32_t i = 0; i < N; ++i) {
    if (stored == names[i]) return i;
  }
  return 0;
}

bool set(Json::Value& parent, const char* key, Json::Value&& value);  ///< always true; no texts
/// @return false, with nothing stored, for a text that is not UTF-8: it would be read back as another
[[nodiscard]] bool set(Json::Value& parent, const char* key, const std::string& text);
bool set(Json::Value& parent, const char* key, const char* text);  ///< always true: a name from a table
void remove(Json::Value& parent, const char* key);
Json::Value& writableArray(Json::Value& parent, const char* key);

/// @return false, with nothing stored, when `type` is not a position of the table
template <std::size_t N>
bool setName(Json::Value& parent, const char* key, const char* const (&names)[N], uint32_t type) {
  if (type >= N) return false;
  return set(parent, key, names[type]);
}

// The security object of a document: the current settings or one recent network.

const Json::Value& security(const Json::Value& document);
Json::Value& writableSecurity(Json::Value& document);

/// Stores a text among the security members.
/// @return false, with nothing changed, for a text that is not UTF-8
[[nodiscard]] bool setInSecurity(Json::Value& document, const char* key, const std::string& text);

/// Stores what EncryptedString made of a secret among the security members.
/// @return false, nothing changed, when that is empty
[[nodiscard]] bool setEncrypted(Json::Value& document, const char* key, const std::string& encrypted);

// WEP keys, by number from 1. A number outside 1..4 has no key.

bool wirelessKeyIsSet(const Json::Value& security, unsigned number);
std::string wirelessKey(const Json::Value& security, unsigned number);

/// Stores a key, or a JSON null for an empty one, in an array of four places at least.
/// @return false, nothing changed, for a number outside 1..4 or a key that could not be encrypted
[[nodiscard]] bool setWirelessKey(Json::Value& document, unsigned number, const std::string& key);

}  // namespace Veltra::ProfileMembers
