#include <libinspect/records/ProfileView.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

#include <fmt/format.h>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/common/ProfileNames.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/container/PrintableText.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

namespace Names = Veltra::ProfileNames;

constexpr char WANTED_ADDRESS[] = "an IPv4 address an interface can have, such as 192.168.1.20";
constexpr char WANTED_MASK[] = "an IPv4 mask of ones followed by zeros, such as 255.255.255.0";
constexpr char WANTED_FLAG[] = "yes or no";
constexpr char WANTED_DNS[] = "an IPv4 address (servers are set in order, at most 3)";
constexpr char WANTED_KEY[] =
    "5 characters or 10 hexadecimal digits, 13 or 26 for WEP-128 (an empty line removes the key)";

/// "None, WEP-64 or WEP-128"
template <std::size_t N>
std::string choiceOf(const char* const (&names)[N]) {
  return fmt::format("{} or {}", fmt::join(names, names + N - 1, ", "), names[N - 1]);
}

Json::Value textOrNull(const std::string& text) {
  return text.empty() ? Json::Value() : Json::Value(text);
}

template <std::string (NetworkProfile::*GET)() const>
Json::Value text(const NetworkProfile& p) {
  return textOrNull((p.*GET)());
}

template <bool (NetworkProfile::*GET)() const>
Json::Value flag(const NetworkProfile& p) {
  return (p.*GET)();
}

template <bool (NetworkProfile::*SET)(bool)>
bool setFlag(NetworkProfile& p, const std::string& value) {
  return (value == "yes" || value == "no") && (p.*SET)(value == "yes");
}

template <bool (NetworkProfile::*SET)(const std::string&)>
bool setText(NetworkProfile& p, const std::string& value) {
  return (p.*SET)(value);
}

template <std::string (NetworkProfile::*GET)(std::size_t) const, std::size_t I>
Json::Value dns(const NetworkProfile& p) {
  return textOrNull((p.*GET)(I));
}

template <bool (NetworkProfile::*SET)(std::size_t, const std::string&), std::size_t I>
bool setDns(NetworkProfile& p, const std::string& value) {
  return (p.*SET)(I, value);
}

template <unsigned K>
Json::Value wepKey(const NetworkProfile& p) {
  return textOrNull(p.getWirelessKey(K));
}

template <unsigned K>
bool setWepKey(NetworkProfile& p, const std::string& value) {
  return p.setWirelessKey(K, value);
}

template <class Enumeration>
bool setByName(NetworkProfile& p, const std::string& name, bool (NetworkProfile::*set)(uint32_t)) {
  const auto* const end = std::end(Enumeration::desc);
  const auto* const found = std::find(std::begin(Enumeration::desc), end, name);
  return found != end && (p.*set)(static_cast<uint32_t>(found - std::begin(Enumeration::desc)));
}

bool setActiveKey(NetworkProfile& p, const std::string& value) {
  return value.size() == 1 && value[0] >= '1' && value[0] <= '4' &&
         p.setActiveKey(static_cast<unsigned>(value[0] - '0'));
}

Json::Value certificateSize(const std::vector<uint8_t>& bytes) {
  return bytes.empty() ? Json::Value() : Json::Value(counted(bytes.size(), "byte"));
}

using P = NetworkProfile;

static_assert(isSecret(Names::KEYS) && isSecret(Names::WIRELESS_PASSWORD) && isSecret(Names::USER) &&
                  isSecret(Names::PASSWORD) && isSecret(Names::SECURITY_ID),
              "shown masked");

/// Made when it is first asked for: what is made before main() ends the program where memory is short.
const std::vector<ProfileSetting>& settings() {
  static const std::string WANTED_TEXT = fmt::format("a text of at most {} bytes", EncryptedString::MAX_BYTES);
  static const std::string SECURITY_TYPES = choiceOf(UsbWifiSecurity::desc), ENCRYPTIONS = choiceOf(Encryption::desc);
  static const std::vector<ProfileSetting> LIST = {
      {"wifi", false, WANTED_FLAG, flag<&P::getWifiEnabled>, setFlag<&P::setWifiEnabled>},
      {"address", false, WANTED_ADDRESS, text<&P::getInetAddr>, setText<&P::setInetAddr>},
      {"mask", false, WANTED_MASK, text<&P::getMask>, setText<&P::setMask>},
      {"broadcast", false, WANTED_ADDRESS, text<&P::getBroadcast>, setText<&P::setBroadcast>},
      {"gateway", false, WANTED_ADDRESS, text<&P::getGateway>, setText<&P::setGateway>},
      {"dhcp", false, WANTED_FLAG, flag<&P::getDHCP>, setFlag<&P::setDHCP>},
      {"dns1", false, WANTED_DNS, dns<&P::getDNS, 0>, setDns<&P::setDNS, 0>},
      {"dns2", false, WANTED_DNS, dns<&P::getDNS, 1>, setDns<&P::setDNS, 1>},
      {"dns3", false, WANTED_DNS, dns<&P::getDNS, 2>, setDns<&P::setDNS, 2>},
      {"wifi-address", false, WANTED_ADDRESS, text<&P::getUsbWifiInetAddr>, setText<&P::setUsbWifiInetAddr>},
      {"wifi-mask", false, WANTED_MASK, text<&P::getUsbWifiMask>, setText<&P::setUsbWifiMask>},
      {"wifi-broadcast", false, WANTED_ADDRESS, text<&P::getUsbWifiBroadcast>, setText<&P::setUsbWifiBroadcast>},
      {"wifi-gateway", false, WANTED_ADDRESS, text<&P::getUsbWifiGateway>, setText<&P::setUsbWifiGateway>},
      {"wifi-dhcp", false, WANTED_FLAG, flag<&P::getUsbWifiDHCP>, setFlag<&P::setUsbWifiDHCP>},
      {"wifi-dns1", false, WANTED_DNS, dns<&P::getUsbWifiDNS, 0>, setDns<&P::setUsbWifiDNS, 0>},
      {"wifi-dns2", false, WANTED_DNS, dns<&P::getUsbWifiDNS, 1>, setDns<&P::setUsbWifiDNS, 1>},
      {"wifi-dns3", false, WANTED_DNS, dns<&P::getUsbWifiDNS, 2>, setDns<&P::setUsbWifiDNS, 2>},
      {"ssid", false, "a network name in UTF-8", text<&P::getUsbWifiSSID>, setText<&P::setUsbWifiSSID>},
      {"security", false, SECURITY_TYPES.c_str(),
       [](const P& p) { return Json::Value(UsbWifiSecurity::desc[p.getUsbWifiSecurity()]); },
       [](P& p, const std::string& name) { return setByName<UsbWifiSecurity>(p, name, &P::setUsbWifiSecurity); }},
      {"encryption", false, ENCRYPTIONS.c_str(),
       [](const P& p) { return Json::Value(Encryption::desc[p.getEncryption()]); },
       [](P& p, const std::string& name) { return setByName<Encryption>(p, name, &P::setEncryption); }},
      {"eap", false, "an EAP method such as \"PEAP MSCHAP V2\" or \"TTLS PAP\"",
       [](const P& p) { return p.anyEap() ? Json::Value(Eap::desc[p.getEap()]) : Json::Value(); },
       [](P& p, const std::string& name) { return setByName<Eap>(p, name, &P::setEap); }},
      {"wep-key1", isSecret(Names::KEYS), WANTED_KEY, wepKey<1>, setWepKey<1>},
      {"wep-key2", isSecret(Names::KEYS), WANTED_KEY, wepKey<2>, setWepKey<2>},
      {"wep-key3", isSecret(Names::KEYS), WANTED_KEY, wepKey<3>, setWepKey<3>},
      {"wep-key4", isSecret(Names::KEYS), WANTED_KEY, wepKey<4>, setWepKey<4>},
      {"active-key", false, "the number of a key that is set, 1 to 4",
       [](const P& p) { return p.getActiveKey() != 0 ? Json::Value(p.getActiveKey()) : Json::Value(); }, setActiveKey},
      {"passphrase", isSecret(Names::WIRELESS_PASSWORD), WANTED_TEXT.c_str(), text<&P::getWirelessPassword>,
       setText<&P::setWirelessPassword>},
      {"user", isSecret(Names::USER), WANTED_TEXT.c_str(), text<&P::getUser>, setText<&P::setUser>},
      {"password", isSecret(Names::PASSWORD), WANTED_TEXT.c_str(), text<&P::getPassword>, setText<&P::setPassword>},
      {"identity", isSecret(Names::SECURITY_ID), WANTED_TEXT.c_str(), text<&P::getSecurityId>,
       setText<&P::setSecurityId>},
      {"alternate-id", false, WANTED_FLAG, flag<&P::getAlternateId>, setFlag<&P::setAlternateId>},
      {"certificate-name", false, "a text in UTF-8", text<&P::getCertificateName>, setText<&P::setCertificateName>},
      {"certificate", false, nullptr, [](const P& p) { return certificateSize(p.getCertificate()); }, nullptr},
      {"certificate-key", false, nullptr, [](const P& p) { return certificateSize(p.getCertificateKey()); }, nullptr},
  };
  return LIST;
}

Json::Value recentJson(const NetworkProfile& profile) {
  Json::Value recent(Json::arrayValue);
  WifiProfile network;
  for (unsigned i = 0; profile.getWifiProfile(i, network); ++i) {
    Json::Value entry(Json::objectValue);
    entry["ssid"] = network.ssid;
    entry["security"] = network.securityType < std::size(UsbWifiSecurity::desc)
                            ? Json::Value(UsbWifiSecurity::desc[network.securityType])
                            : Json::Value();
    recent.append(entry);
    network.wipeSecrets();
  }
  return recent;
}

// The names members are stored under, for the checks that no getter answers. No name occurs both in the document and in
// its security object, so one list serves both.
struct StoredKind {
  const char* kind;
  bool (Json::Value::*is)() const;
  const char* members[20];  ///< null after the last
};
constexpr StoredKind STORED_KINDS[] = {
    // clang-format off
    {"true or false", &Json::Value::isBool, {Names::WIFI_INTERFACE, Names::WIRED.useDhcp, Names::USB_WIFI.useDhcp, Names::ALTERNATE_ID}},
    {"a text", &Json::Value::isString,
     {Names::WIRED.inetAddr, Names::WIRED.mask, Names::WIRED.broadcast, Names::WIRED.gateway,
      Names::USB_WIFI.inetAddr, Names::USB_WIFI.mask, Names::USB_WIFI.broadcast, Names::USB_WIFI.gateway,
      Names::SSID, Names::SECURITY_TYPE, Names::ENCRYPTION, Names::EAP, Names::WIRELESS_PASSWORD, Names::USER,
      Names::PASSWORD, Names::SECURITY_ID, Names::CERTIFICATE, Names::CERTIFICATE_KEY, Names::CERTIFICATE_NAME}},
    {"a list", &Json::Value::isArray, {Names::WIRED.dnsList, Names::USB_WIFI.dnsList, Names::RECENT, Names::KEYS}},
    {"an object", &Json::Value::isObject, {Names::SECURITY}},
    {"a key number", &Json::Value::isUInt, {Names::ACTIVE_KEY}},
    // clang-format on
};

struct ListedName {
  const char* member;
  const char* const* names;
  std::size_t count;
};
const ListedName LISTED_NAMES[] = {
    {Names::SECURITY_TYPE, UsbWifiSecurity::desc, std::size(UsbWifiSecurity::desc)},
    {Names::ENCRYPTION, Encryption::desc, std::size(Encryption::desc)},
    {Names::EAP, Eap::desc, std::size(Eap::desc)},
};

/// Checks a stored document: the whole profile or one of its recent networks.
class ProfileDocumentCheck {
 public:
  ProfileDocumentCheck(std::string place, std::vector<std::string>& found) : _place(std::move(place)), _found(found) {}

  void run(const Json::Value& document) {
    checkKinds(document);
    const Json::Value& security = document[Names::SECURITY];
    if (!security.isObject()) return;
    checkKinds(security);
    for (const ListedName& listed : LISTED_NAMES) checkName(listed, security[listed.member]);
    for (const Secret& secret : SECRETS) {
      if (secret.form == SecretForm::PLAIN) continue;
      if (secret.form == SecretForm::ENCRYPTED_TEXTS) {
        checkSecrets(secret.member, security[secret.member]);
      } else {
        checkSecret(secret.member, security[secret.member], secret.form == SecretForm::ENCRYPTED_BLOB);
      }
    }
  }

 private:
  void add(const std::string& member, const char* fault) {
    _found.push_back(fmt::format("{}\"{}\" {}", _place, member, fault));
  }

  void checkKinds(const Json::Value& parent) {
    for (const StoredKind& stored : STORED_KINDS) {
      for (const char* const member : stored.members) {
        if (member == nullptr) break;
        const Json::Value& value = parent[member];
        if (!value.isNull() && !(value.*stored.is)()) add(member, fmt::format("is not {}", stored.kind).c_str());
      }
    }
  }

  void checkName(const ListedName& listed, const Json::Value& name) {
    const bool known = !name.isString() || std::any_of(listed.names, listed.names + listed.count,
                                                       [&](const char* n) { return name.asString() == n; });
    if (!known) add(listed.member, "is not a known name");
  }

  void checkSecrets(const char* member, const Json::Value& list) {
    for (Json::ArrayIndex i = 0; list.isArray() && i < list.size(); ++i) {
      const std::string name = fmt::format("{} {}", member, i + 1);
      if (!list[i].isNull() && !list[i].isString()) add(name, "is not a text");
      checkSecret(name, list[i], false);
    }
  }

  /// A text form that this library cannot read reads as empty. The shortest text form holds the empty secret.
  void checkSecret(const std::string& name, const Json::Value& value, bool isBlob) {
    constexpr std::size_t EMPTY_SECRET = 64;
    const std::string stored = value.isString() ? value.asString() : std::string();
    if (stored.empty() || stored.size() == EMPTY_SECRET) return;
    if (isBlob ? EncryptedString::DecryptBlob(stored).empty() : EncryptedString::Decrypt(stored).empty()) {
      add(name, "does not decrypt: it was changed, or written under another key");
    }
  }

  std::string _place;
  std::vector<std::string>& _found;
};

/// Values that the setters of a fresh profile refuse.
void checkValues(const NetworkProfile& profile, std::vector<std::string>& found) {
  for (const ProfileSetting& setting : settings()) {
    const bool isAddress =
        setting.wanted == WANTED_ADDRESS || setting.wanted == WANTED_MASK || setting.wanted == WANTED_DNS;
    const Json::Value value = setting.get(profile);
    if (!isAddress || !value.isString()) continue;
    const bool bad = setting.wanted == WANTED_MASK ? NetworkProfile::invalidMask(value.asString())
                                                   : NetworkProfile::invalidIPv4(value.asString());
    if (bad)
      found.push_back(fmt::format("{}: expected {}, found \"{}\"", setting.name, setting.wanted, value.asString()));
  }
  if (profile.getUsbWifiSecurity() != UsbWifiSecurity::WEP) return;
  if (profile.getWirelessKey(profile.getActiveKey()).empty()) found.emplace_back("active-key: that WEP key is not set");
}

}  // namespace

std::vector<std::string> checkProfileText(const std::string& text) {
  std::vector<std::string> found;
  const JsonOversights oversights = oversightsIn(text);
  for (const JsonOversight& oversight : oversights.kept) {
    found.push_back(toString(oversight));
    if (oversight.kind == JsonOversight::NAME_TWICE) found.back() += "; the last one counts";
    if (oversight.kind == JsonOversight::EXTRA) found.back() += ", which is ignored";
  }
  if (oversights.leftOut > 0) found.push_back(fmt::format("{} more of these", oversights.leftOut));
  std::istringstream lines(text);
  std::size_t number = 1, foreign = 0;
  for (std::string line; std::getline(lines, line); ++number) {
    if (Dump::isUtf8(line) || ++foreign > JsonOversights::MOST_KEPT) continue;
    found.push_back(fmt::format("line {}: bytes that are not UTF-8", number));
  }
  if (foreign > JsonOversights::MOST_KEPT) {
    found.push_back(fmt::format("{} more lines of bytes that are not UTF-8", foreign - JsonOversights::MOST_KEPT));
  }
  return found;
}

const std::vector<ProfileSetting>& profileSettings() {
  return settings();
}

const ProfileSetting* findProfileSetting(const std::string& name) {
  for (const ProfileSetting& setting : profileSettings()) {
    if (name == setting.name) return &setting;
  }
  return nullptr;
}

Json::Value profileJson(const NetworkProfile& profile, bool reveal) {
  Json::Value json(Json::objectValue);
  Json::Value& settings = json["settings"] = Json::Value(Json::objectValue);
  for (const ProfileSetting& setting : profileSettings()) {
    const Json::Value value = setting.get(profile);
    settings[setting.name] = setting.secret && !reveal ? masked(value) : value;
  }
  json["recent"] = recentJson(profile);
  return json;
}

std::vector<std::string> checkProfile(const NetworkProfile& profile) {
  std::vector<std::string> found;
  const Json::Value& document = profile;
  if (!document.isObject()) {
    found.emplace_back("the document is not an object");
    return found;
  }
  checkValues(profile, found);
  ProfileDocumentCheck("", found).run(document);
  const Json::Value& recent = document[Names::RECENT];
  for (Json::ArrayIndex i = 0; recent.isArray() && i < recent.size(); ++i) {
    const std::string place = fmt::format("recent network {}: ", i + 1);
    if (recent[i].isObject()) {
      ProfileDocumentCheck(place, found).run(recent[i]);
    } else if (!recent[i].isNull()) {
      found.push_back(place + "is not an object");
    }
  }
  return found;
}

}  // namespace Inspect
