#include <libinspect/container/Secrets.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <libcrossplatform/common/jsonutil.h>

namespace Inspect {
namespace {

constexpr std::string_view NET_PROFILE = "net_profile";
constexpr uint8_t MASK_BYTE = '*';

/// How many times a text names a secret as a member, also within strings and comments.
std::size_t secretsNamedIn(std::string_view text) {
  std::size_t named = 0;
  for (const Secret& secret : SECRETS) {
    const std::string begin = std::string("\"") + secret.member;
    for (std::size_t at = text.find(begin); at != std::string_view::npos; at = text.find(begin, at + begin.size())) {
      const std::size_t quote = text.find_first_not_of('\\', at + begin.size());  // within a string it is escaped
      if (quote == std::string_view::npos || text[quote] != '"') continue;
      const std::size_t next = text.find_first_not_of(" \t\r\n", quote + 1);
      if (next != std::string_view::npos && (text[next] == ':' || text[next] == '/')) ++named;
    }
  }
  return named;
}

bool isDocumentWithSecrets(const Json::Value& value) {
  const char *begin = nullptr, *end = nullptr;
  return value.isString() && value.getString(&begin, &end) &&
         secretsNamedIn({begin, static_cast<std::size_t>(end - begin)}) > 0;
}

void maskWithin(Json::Value& value, bool isWithinSecret) {
  if (value.isObject()) {
    for (const std::string& name : value.getMemberNames()) {
      maskWithin(value[name], isWithinSecret || isSecret(name, value[name]));
    }
  } else if (value.isArray()) {
    for (Json::Value& element : value) maskWithin(element, isWithinSecret);
  } else if (isWithinSecret || isDocumentWithSecrets(value)) {
    value = masked(value);
  }
}

/// Overwrites the texts that are secrets, or within one, in the text a value was parsed from.
/// @param named  receives how many members are secrets by their names
/// @return false when that is not possible
bool maskWithin(const Json::Value& value, bool isWithinSecret, uint8_t* text, std::size_t& named) {
  if (value.isObject()) {
    const std::vector<std::string> names = value.getMemberNames();
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
      const bool isHere = isSecret(name, value[name]);
      if (isHere && name != NET_PROFILE) ++named;
      return maskWithin(value[name], isWithinSecret || isHere, text, named);
    });
  }
  if (value.isArray()) {
    return std::all_of(value.begin(), value.end(),
                       [&](const Json::Value& element) { return maskWithin(element, isWithinSecret, text, named); });
  }
  if (!isWithinSecret || value.isNull()) return true;
  const std::ptrdiff_t begin = value.getOffsetStart(), end = value.getOffsetLimit();
  if (!value.isString() || end - begin < 2 || text[begin] != '"' || text[end - 1] != '"') return false;
  std::fill(text + begin + 1, text + end - 1, MASK_BYTE);
  return true;
}

}  // namespace

bool isSecret(const std::string& member, const Json::Value& value) {
  return isSecret(member) || (member == NET_PROFILE && !(value.isObject() || value.isArray()));
}

Json::Value masked(const Json::Value& value) {
  return value.isNull() || value == Json::Value("") ? value : Json::Value("********");
}

Json::Value withoutSecrets(Json::Value document) {
  maskWithin(document, false);
  return document;
}

void maskAll(uint8_t* bytes, std::size_t size) {
  std::fill(bytes, bytes + size, MASK_BYTE);
}

void maskSecretsInText(uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  Json::Value document;
  std::size_t named = 0;
  const bool hasComments = text.find("//") != std::string::npos || text.find("/*") != std::string::npos;
  if (!hasComments && Veltra::parseJson(text, document, false) && maskWithin(document, false, bytes, named) &&
      named == secretsNamedIn(text)) {
    return;
  }
  maskAll(bytes, size);
}

void maskSecretsInBytes(uint8_t* bytes, std::size_t size) {
  if (secretsNamedIn({reinterpret_cast<const char*>(bytes), size}) > 0) maskAll(bytes, size);
}

}  // namespace Inspect
