#pragma once

#include <string>

#include <json/value.h>

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
    {"Wireless Password", SecretForm::ENCRYPTED_TEXT},
    {"User", SecretForm::ENCRYPTED_TEXT},
    {"Password", SecretForm::ENCRYPTED_TEXT},
    {"ID", SecretForm::ENCRYPTED_TEXT},
    {"Certificate", SecretForm::ENCRYPTED_BLOB},
    {"Certificate Key", SecretForm::ENCRYPTED_BLOB},
    {"Key", SecretForm::ENCRYPTED_TEXTS},
};
// clang-format on

/// Whether a member of this name is a secret.
bool isSecret(const std::string& member);

/// What stands for a secret on a screen: "********", or the value itself where there is none, null or an empty text.
Json::Value masked(const Json::Value& value);

/// A document with every value that is a secret, or within one, masked.
Json::Value withoutSecrets(Json::Value document);

}  // namespace Inspect
