#include <libcrossplatform/common/WifiProfile.h>

#include <algorithm>
#include <iterator>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/common/internal/ProfileMembers.h>
#include <libcrossplatform/common/internal/SecretBytes.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/Utf8Text.h>

namespace Stored = Veltra::ProfileMembers;

static_assert(std::size(Encryption::desc) == Encryption::WEP + 1, "a name for each encryption");
static_assert(std::size(UsbWifiSecurity::desc) == UsbWifiSecurity::ENTERPRISE + 1, "a name for each security type");
static_assert(std::size(Eap::desc) == Eap::TTLS_EAP_MSCHAP_V2 + 1, "a name for each EAP type");

namespace {

bool writeAddresses(const WifiProfile& profile, Json::Value& json) {
  Stored::set(json, Stored::USB_WIFI.useDhcp, profile.useDhcp);
  Json::Value& dns = Stored::writableArray(json, Stored::USB_WIFI.dnsList);
  for (const std::string& address : profile.dns) {
    if (!Dump::isUtf8(address)) return false;
    Dump::orBadAlloc([&] { return dns.append(address); });
  }
  if (profile.useDhcp) return true;
  return Stored::set(json, Stored::USB_WIFI.inetAddr, profile.inetAddr) &&
         Stored::set(json, Stored::USB_WIFI.mask, profile.mask) &&
         (profile.broadcast.empty() || Stored::set(json, Stored::USB_WIFI.broadcast, profile.broadcast)) &&
         Stored::set(json, Stored::USB_WIFI.gateway, profile.gateway);
}

bool writeWep(const WifiProfile& profile, Json::Value& json) {
  static const std::string NOT_SET;
  Stored::set(Stored::writableSecurity(json), Stored::ACTIVE_KEY, Json::UInt(profile.activeKey));
  for (unsigned k = 1; k <= Stored::WIRELESS_KEYS; ++k) {
    if (!Stored::setWirelessKey(json, k, k <= profile.wepKeys.size() ? profile.wepKeys[k - 1] : NOT_SET)) return false;
  }
  return true;
}

bool writeSecret(Json::Value& json, const char* key, const std::string& secret) {
  return Stored::setEncrypted(json, key, EncryptedString::Encrypt(secret));
}

bool writeEnterprise(const WifiProfile& profile, Json::Value& json) {
  Json::Value& security = Stored::writableSecurity(json);
  Stored::setName(security, Stored::EAP, Eap::desc, profile.eap);
  Stored::set(security, Stored::ALTERNATE_ID, profile.alternateId);
  return writeSecret(json, Stored::USER, profile.user) && writeSecret(json, Stored::PASSWORD, profile.password) &&
         writeSecret(json, Stored::SECURITY_ID, profile.securityId);
}

bool writeSecurity(const WifiProfile& profile, Json::Value& json) {
  Json::Value& security = Stored::writableSecurity(json);
  Stored::setName(security, Stored::SECURITY_TYPE, UsbWifiSecurity::desc, profile.securityType);
  Stored::setName(security, Stored::ENCRYPTION, Encryption::desc, profile.encryption);
  switch (profile.securityType) {
    case UsbWifiSecurity::WEP:
      return writeWep(profile, json);
    case UsbWifiSecurity::PERSONAL:
      return writeSecret(json, Stored::WIRELESS_PASSWORD, profile.wirelessPassword);
    case UsbWifiSecurity::ENTERPRISE:
      return writeEnterprise(profile, json);
    default:
      return true;
  }
}

}  // namespace

Json::Value WifiProfile::toJson() const {
  Json::Value json(Json::objectValue);
  if (Stored::set(json, Stored::SSID, ssid) && writeAddresses(*this, json) && writeSecurity(*this, json)) return json;
  return Json::Value();
}

bool WifiProfile::fromJson(const Json::Value& json) {
  if (!json.isObject()) return false;
  wipeSecrets();
  inetAddr = Stored::text(json, Stored::USB_WIFI.inetAddr);
  mask = Stored::text(json, Stored::USB_WIFI.mask);
  broadcast = Stored::text(json, Stored::USB_WIFI.broadcast);
  gateway = Stored::text(json, Stored::USB_WIFI.gateway);
  dns.clear();
  for (const Json::Value& address : Stored::array(json, Stored::USB_WIFI.dnsList)) {
    dns.push_back(address.isString() ? address.asString() : std::string());
  }
  useDhcp = Stored::flag(json, Stored::USB_WIFI.useDhcp);
  ssid = Stored::text(json, Stored::SSID);

  const Json::Value& security = Stored::security(json);
  securityType = Stored::name(security, Stored::SECURITY_TYPE, UsbWifiSecurity::desc);
  encryption = Stored::name(security, Stored::ENCRYPTION, Encryption::desc);
  eap = Stored::name(security, Stored::EAP, Eap::desc);
  activeKey = Stored::number(security, Stored::ACTIVE_KEY);
  const unsigned keys = std::min(Stored::array(security, Stored::KEYS).size(), Stored::WIRELESS_KEYS);
  wepKeys.reserve(keys);  // growing would leave keys behind in freed memory
  for (unsigned k = 1; k <= keys; ++k) wepKeys.push_back(Stored::wirelessKey(security, k));
  wirelessPassword = Stored::secret(security, Stored::WIRELESS_PASSWORD);
  user = Stored::secret(security, Stored::USER);
  password = Stored::secret(security, Stored::PASSWORD);
  alternateId = Stored::flag(security, Stored::ALTERNATE_ID);
  securityId = Stored::secret(security, Stored::SECURITY_ID);
  return true;
}

void WifiProfile::wipeSecrets() {
  for (std::string& key : wepKeys) Veltra::wipe(key);
  wepKeys.clear();
  for (std::string* secret : {&wirelessPassword, &user, &password, &securityId}) Veltra::wipe(*secret);
}

bool operator==(const WifiProfile& a, const WifiProfile& b) {
  return a.ssid == b.ssid && a.securityType == b.securityType;
}

bool operator!=(const WifiProfile& a, const WifiProfile& b) {
  return !(a == b);
}
