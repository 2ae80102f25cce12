#include <libinspect/container/Secrets.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

#include <libcrossplatform/common/jsonutil.h>
#include <libinspect/container/JsonFaults.h>

namespace Inspect {
namespace {

constexpr std::string_view NET_PROFILE = "net_profile";
constexpr char SPACES[] = " \t\r\n";
constexpr char MASK[] = "********";
constexpr uint8_t MASK_BYTE = '*';

/// Whether a text has a member that is a secret by its name, as it is written there.
bool namesPlainly(std::string_view text) {
  const auto isNamed = [text](std::string_view member, bool isProfile) {
    const std::string begin = "\"" + std::string(member) + "\"";
    for (std::size_t at = text.find(begin); at != std::string_view::npos; at = text.find(begin, at + begin.size())) {
      const std::size_t next = text.find_first_not_of(SPACES, at + begin.size());
      if (next == std::string_view::npos || (text[next] != ':' && text[next] != '/')) continue;
      const std::size_t value = text.find_first_not_of(SPACES, next + 1);
      const bool isOpen = isProfile && text[next] == ':' && value != std::string_view::npos &&
                          (text[value] == '{' || text.compare(value, 4, "null") == 0);
      if (!isOpen) return true;
    }
    return false;
  };
  return isNamed(NET_PROFILE, true) || std::any_of(std::begin(SECRETS), std::end(SECRETS),
                                                   [&](const Secret& secret) { return isNamed(secret.member, false); });
}

/// The character that four hexadecimal digits at `at` stand for, as far as a name of a secret may have it; or -1.
int codeAt(std::string_view text, std::size_t at) {
  constexpr std::size_t DIGITS = 4;
  if (text.size() - at < DIGITS) return -1;
  int code = 0;
  for (const char c : text.substr(at, DIGITS)) {
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return -1;
    code = 16 * code + (c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
  }
  return code < 0x80 ? code : '?';
}

/// A text with what backslashes escape in the place of the escapes: of a document within a string, the document.
std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\' || at + 1 == text.size()) {
      plain += text[at];
      continue;
    }
    const char c = text[++at];
    const int code = c == 'u' ? codeAt(text, at + 1) : -1;
    if (code >= 0) {
      plain += static_cast<char>(code);
      at += 4;
    } else {
      plain += c == 'n' || c == 'r' || c == 't' ? ' ' : c;
    }
  }
  return plain;
}

bool isEmptyContainer(const Json::Value& value) {
  return (value.isObject() || value.isArray()) && value.empty();
}

bool isDocumentWithSecrets(const Json::Value& value) {
  const char *begin = nullptr, *end = nullptr;
  return value.isString() && value.getString(&begin, &end) &&
         namesSecret({begin, static_cast<std::size_t>(end - begin)});
}

void maskWithin(Json::Value& value) {
  if (value.isArray()) {
    for (Json::Value& element : value) maskWithin(element);
  } else if (isDocumentWithSecrets(value)) {
    value = masked(value);
  }
  if (!value.isObject()) return;
  for (const std::string& name : value.getMemberNames()) {
    Json::Value& member = value[name];
    if (isSecret(name, member)) {
      member = masked(member);
    } else {
      maskWithin(member);
    }
    if (!namesSecret(name)) continue;
    Json::Value shown;
    shown.swap(member);
    value.removeMember(name);
    std::string mask = MASK;
    while (value.isMember(mask)) mask += '*';
    value[mask].swap(shown);
  }
}

/// Overwrites the inside of a text, object or array that is a secret, in the text it was parsed from.
/// @return false when that is not possible
bool maskValue(const Json::Value& value, uint8_t* text) {
  if (value.isNull()) return true;
  const std::ptrdiff_t begin = value.getOffsetStart(), end = value.getOffsetLimit();
  const bool hasInside = value.isString() || value.isObject() || value.isArray();
  if (!hasInside || end - begin < 2 || std::strchr("\"{[", text[begin]) == nullptr) return false;
  std::fill(text + begin + 1, text + end - 1, MASK_BYTE);
  return true;
}

/// The same of all secrets within a value.
bool maskWithin(const Json::Value& value, uint8_t* text) {
  if (value.isObject()) {
    const std::vector<std::string> names = value.getMemberNames();
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
      const Json::Value& member = value[name];
      return !namesSecret(name) && (isSecret(name, member) ? maskValue(member, text) : maskWithin(member, text));
    });
  }
  if (value.isArray()) {
    return std::all_of(value.begin(), value.end(),
                       [&](const Json::Value& element) { return maskWithin(element, text); });
  }
  return !isDocumentWithSecrets(value) || maskValue(value, text);
}

}  // namespace

bool isSecret(const std::string& member, const Json::Value& value) {
  return isSecret(member) || (member == NET_PROFILE && !(value.isObject() || value.isNull()));
}

bool namesSecret(std::string_view text) {
  constexpr int MOST_LEVELS = 16;  // of documents within documents: more have no purpose but to hide
  if (text.find_first_of("\"\\") == std::string_view::npos) return false;
  if (namesPlainly(text)) return true;
  std::string plain;
  for (int level = 0; text.find('\\') != std::string_view::npos; ++level) {
    if (level == MOST_LEVELS) return true;
    std::string next = unescaped(text);
    if (next == text) break;
    plain.swap(next);
    text = plain;
    if (namesPlainly(text)) return true;
  }
  return false;
}

Json::Value masked(const Json::Value& value) {
  const bool isNone = value.isNull() || value == Json::Value("") || isEmptyContainer(value);
  return isNone ? value : Json::Value(MASK);
}

Json::Value withoutSecrets(Json::Value document) {
  maskWithin(document);
  return document;
}

void maskAll(uint8_t* bytes, std::size_t size) {
  std::fill(bytes, bytes + size, MASK_BYTE);
}

void maskSecretsInText(uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  Json::Value document;
  if (Veltra::parseJson(text, document, false)) {
    const JsonOversights oversights = oversightsIn(text);
    if (!oversights.hasComments && oversights.kept.empty() && maskWithin(document, bytes)) return;
  }
  maskAll(bytes, size);
}

void maskSecretsInBytes(uint8_t* bytes, std::size_t size) {
  if (namesSecret({reinterpret_cast<const char*>(bytes), size})) maskAll(bytes, size);
}

}  // namespace Inspect
