#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <json/value.h>

#include <libcrossplatform/common/ProfileNames.h>

namespace Inspect {

/// How a secret is stored under its name.
enum class SecretForm { PLAIN, ENCRYPTED_TEXT, ENCRYPTED_TEXTS, ENCRYPTED_BLOB };

/// A member of records and stored network profiles that no screen shows unless asked to.
struct Secret {
  const char* member;  ///< its name as it is stored; all that it holds is secret
  SecretForm form;
};
// clang-format off
constexpr Secret SECRETS[] = {
    {"sync_userpass", SecretForm::PLAIN},
    {Veltra::ProfileNames::WIRELESS_PASSWORD, SecretForm::ENCRYPTED_TEXT},
    {Veltra::ProfileNames::USER, SecretForm::ENCRYPTED_TEXT},
    {Veltra::ProfileNames::PASSWORD, SecretForm::ENCRYPTED_TEXT},
    {Veltra::ProfileNames::SECURITY_ID, SecretForm::ENCRYPTED_TEXT},
    {Veltra::ProfileNames::CERTIFICATE, SecretForm::ENCRYPTED_BLOB},
    {Veltra::ProfileNames::CERTIFICATE_KEY, SecretForm::ENCRYPTED_BLOB},
    {Veltra::ProfileNames::KEYS, SecretForm::ENCRYPTED_TEXTS},
};
// clang-format on

/// Whether a member of this name is a secret.
constexpr bool isSecret(std::string_view member) {
  for (const Secret& secret : SECRETS) {
    if (member == secret.member) return true;
  }
  return false;
}
/// The same of a member with its value: a network profile that is no object is one, too.
bool isSecret(const std::string& member, const Json::Value& value);

/// Whether a text is, or contains, a JSON document that names a secret as a member, also by escapes and in a document
/// within a string of it. In doubt it does.
bool namesSecret(std::string_view text);

/// What stands for a secret on a screen: "********", or the value itself where there is none: null, or anything empty.
Json::Value masked(const Json::Value& value);

/// A document with every value masked that is a secret, whatever is in it, and every text and name of a member that is
/// a document with secrets.
Json::Value withoutSecrets(Json::Value document);

/// Overwrites bytes by asterisks.
void maskAll(uint8_t* bytes, std::size_t size);

/// Overwrites what withoutSecrets() masks, in a JSON text, by asterisks; all of the text where that is not all there is
/// to it: it is no JSON, has comments, a name twice, or anything after its end, or a name or number has to be masked.
void maskSecretsInText(uint8_t* bytes, std::size_t size);

/// The same for bytes of unknown meaning: all of them if namesSecret().
void maskSecretsInBytes(uint8_t* bytes, std::size_t size);

}  // namespace Inspect
