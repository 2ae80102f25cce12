#include <libinspect/container/Secrets.h>

#include <algorithm>
#include <iterator>

namespace Inspect {
namespace {

void maskWithin(Json::Value& value, bool isWithinSecret) {
  if (value.isObject()) {
    for (const std::string& name : value.getMemberNames()) maskWithin(value[name], isWithinSecret || isSecret(name));
  } else if (value.isArray()) {
    for (Json::Value& element : value) maskWithin(element, isWithinSecret);
  } else if (isWithinSecret) {
    value = masked(value);
  }
}

}  // namespace

bool isSecret(const std::string& member) {
  return std::any_of(std::begin(SECRETS), std::end(SECRETS),
                     [&member](const Secret& secret) { return member == secret.member; });
}

Json::Value masked(const Json::Value& value) {
  return value.isNull() || value == Json::Value("") ? value : Json::Value("********");
}

Json::Value withoutSecrets(Json::Value document) {
  maskWithin(document, false);
  return document;
}

}  // namespace Inspect
