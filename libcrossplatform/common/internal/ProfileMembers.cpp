#include <libcrossplatform/common/internal/ProfileMembers.h>

#include <cstring>
#include <utility>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/Utf8Text.h>

namespace Veltra::ProfileMembers {
namespace {

const Json::Value* findOfType(const Json::Value& parent, const char* key, Json::ValueType type) {
  const Json::Value* const member = find(parent, key);
  return member != nullptr && member->type() == type ? member : nullptr;
}

Json::Value& writable(Json::Value& parent, const char* key, Json::ValueType type) {
  if (!parent.isObject()) parent = Json::Value(Json::objectValue);
  Json::Value& member = Dump::orBadAlloc([&]() -> Json::Value& { return parent[key]; });
  if (member.type() != type) member = Json::Value(type);
  return member;
}

const Json::Value* wirelessKeyAt(const Json::Value& security, unsigned number) {
  const Json::Value& keys = array(security, KEYS);
  if (number < 1 || number > WIRELESS_KEYS || number > keys.size()) return nullptr;
  return &keys[number - 1];
}

}  // namespace

const Json::Value* find(const Json::Value& parent, const char* key) {
  return parent.isObject() ? parent.find(key, key + std::strlen(key)) : nullptr;
}

bool flag(const Json::Value& parent, const char* key) {
  const Json::Value* const member = findOfType(parent, key, Json::booleanValue);
  return member != nullptr && member->asBool();
}

uint32_t number(const Json::Value& parent, const char* key) {
  const Json::Value* const member = find(parent, key);
  return member != nullptr && member->isUInt() ? member->asUInt() : 0;
}

std::string text(const Json::Value& parent, const char* key) {
  const Json::Value* const member = findOfType(parent, key, Json::stringValue);
  return member != nullptr ? member->asString() : std::string();
}

std::string secret(const Json::Value& parent, const char* key) {
  return EncryptedString::Decrypt(text(parent, key));
}

const Json::Value& array(const Json::Value& parent, const char* key) {
  static const Json::Value EMPTY(Json::arrayValue);
  const Json::Value* const member = findOfType(parent, key, Json::arrayValue);
  return member != nullptr ? *member : EMPTY;
}

std::string textAt(const Json::Value& array, std::size_t index) {
  if (index >= array.size()) return {};
  const Json::Value& entry = array[static_cast<Json::ArrayIndex>(index)];
  return entry.isString() ? entry.asString() : std::string();
}

bool set(Json::Value& parent, const char* key, Json::Value&& value) {
  writable(parent, key, value.type()) = std::move(value);
  return true;
}

bool set(Json::Value& parent, const char* key, const std::string& text) {
  return Dump::isUtf8(text) && set(parent, key, Dump::orBadAlloc([&] { return Json::Value(text); }));
}

bool set(Json::Value& parent, const char* key, const char* text) {
  return set(parent, key, Dump::orBadAlloc([&] { return Json::Value(text); }));
}

void remove(Json::Value& parent, const char* key) {
  if (parent.isObject()) parent.removeMember(key);
}

Json::Value& writableArray(Json::Value& parent, const char* key) {
  return writable(parent, key, Json::arrayValue);
}

const Json::Value& security(const Json::Value& document) {
  static const Json::Value EMPTY(Json::objectValue);
  const Json::Value* const member = findOfType(document, SECURITY, Json::objectValue);
  return member != nullptr ? *member : EMPTY;
}

Json::Value& writableSecurity(Json::Value& document) {
  return writable(document, SECURITY, Json::objectValue);
}

bool setInSecurity(Json::Value& document, const char* key, const std::string& text) {
  return Dump::isUtf8(text) && set(writableSecurity(document), key, text);
}

bool setEncrypted(Json::Value& document, const char* key, const std::string& encrypted) {
  return !encrypted.empty() && setInSecurity(document, key, encrypted);
}

bool wirelessKeyIsSet(const Json::Value& security, unsigned number) {
  const Json::Value* const key = wirelessKeyAt(security, number);
  return key != nullptr && key->isString() && !key->asString().empty();
}

std::string wirelessKey(const Json::Value& security, unsigned number) {
  return wirelessKeyIsSet(security, number) ? EncryptedString::Decrypt(wirelessKeyAt(security, number)->asString())
                                            : std::string();
}

bool setWirelessKey(Json::Value& document, unsigned number, const std::string& key) {
  if (number < 1 || number > WIRELESS_KEYS) return false;
  Json::Value stored;
  if (!key.empty()) {
    const std::string encrypted = EncryptedString::Encrypt(key);
    if (encrypted.empty()) return false;
    stored = Dump::orBadAlloc([&] { return Json::Value(encrypted); });
  }
  Json::Value& keys = writableArray(writableSecurity(document), KEYS);
  if (keys.size() < WIRELESS_KEYS) keys.resize(WIRELESS_KEYS);
  keys[number - 1] = std::move(stored);
  return true;
}

}  // namespace Veltra::ProfileMembers
