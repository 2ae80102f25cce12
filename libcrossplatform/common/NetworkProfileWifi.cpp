// The wireless half of NetworkProfile: security, keys, credentials and recent networks.

#include <libcrossplatform/common/NetworkProfile.h>

#include <iterator>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/common/internal/ProfileMembers.h>

namespace Stored = Veltra::ProfileMembers;

namespace {

// The recent network in a place of the list. A place that does not hold an object is empty.
const Json::Value* recentAt(const Json::Value& document, std::size_t i) {
  const Json::Value& recent = Stored::array(document, Stored::RECENT);
  if (i >= recent.size()) return nullptr;
  const Json::Value& entry = recent[static_cast<Json::ArrayIndex>(i)];
  return entry.isObject() ? &entry : nullptr;
}

// operator== on the stored form, which leaves the secrets encrypted.
bool isStoredAs(const WifiProfile& profile, const Json::Value& entry) {
  WifiProfile stored;
  stored.ssid = Stored::text(entry, Stored::SSID);
  stored.securityType = Stored::name(Stored::security(entry), Stored::SECURITY_TYPE, UsbWifiSecurity::desc);
  return stored == profile;
}

}  // namespace

std::string NetworkProfile::getUsbWifiSSID() const {
  return Stored::text(*this, Stored::SSID);
}

bool NetworkProfile::setUsbWifiSSID(const std::string& ssid) {
  return Stored::set(*this, Stored::SSID, ssid);
}

Encryption::Type NetworkProfile::getEncryption() const {
  return static_cast<Encryption::Type>(Stored::name(Stored::security(*this), Stored::ENCRYPTION, Encryption::desc));
}

bool NetworkProfile::setEncryption(uint32_t type) {
  if (type >= std::size(Encryption::desc)) return false;
  return Stored::setName(Stored::writableSecurity(*this), Stored::ENCRYPTION, Encryption::desc, type);
}

UsbWifiSecurity::Type NetworkProfile::getUsbWifiSecurity() const {
  return static_cast<UsbWifiSecurity::Type>(
      Stored::name(Stored::security(*this), Stored::SECURITY_TYPE, UsbWifiSecurity::desc));
}

bool NetworkProfile::setUsbWifiSecurity(uint32_t type) {
  const Encryption::Type now = getEncryption();
  bool isStored = true;
  switch (type) {
    case UsbWifiSecurity::OPEN:
      isStored = setEncryption(Encryption::NONE);
      break;
    case UsbWifiSecurity::WEP:
      if (now != Encryption::WEP_128 && now != Encryption::WEP) isStored = setEncryption(Encryption::WEP_64);
      break;
    case UsbWifiSecurity::PERSONAL:
    case UsbWifiSecurity::ENTERPRISE:
      if (now != Encryption::TKIP && now != Encryption::AES) isStored = setEncryption(Encryption::AUTO);
      if (type == UsbWifiSecurity::ENTERPRISE && !anyEap()) isStored = isStored && setEap(Eap::PEAP_MD5);
      break;
    default:
      return false;
  }
  return isStored &&
         Stored::setName(Stored::writableSecurity(*this), Stored::SECURITY_TYPE, UsbWifiSecurity::desc, type);
}

Eap::Type NetworkProfile::getEap() const {
  return static_cast<Eap::Type>(Stored::name(Stored::security(*this), Stored::EAP, Eap::desc));
}

bool NetworkProfile::setEap(uint32_t type) {
  if (type >= std::size(Eap::desc)) return false;
  return Stored::setName(Stored::writableSecurity(*this), Stored::EAP, Eap::desc, type);
}

bool NetworkProfile::anyEap() const {
  return Stored::find(Stored::security(*this), Stored::EAP) != nullptr;
}

std::string NetworkProfile::getWirelessKey(unsigned k) const {
  return Stored::wirelessKey(Stored::security(*this), k);
}

std::size_t NetworkProfile::getWirelessKeySize() const {
  return Stored::array(Stored::security(*this), Stored::KEYS).size();
}

void NetworkProfile::clearWirelessKey() {
  if (Stored::find(Stored::security(*this), Stored::KEYS) != nullptr) {
    Stored::remove(Stored::writableSecurity(*this), Stored::KEYS);
  }
}

bool NetworkProfile::setWirelessKey(unsigned k, const std::string& key) {
  if (k < 1 || k > Stored::WIRELESS_KEYS) return false;
  if (!key.empty() && !validWirelessKey(getEncryption(), key)) return false;
  if (!Stored::setWirelessKey(*this, k, key)) return false;
  if (!key.empty()) return setActiveKey(k);
  // Removing any key changes the active one, not only removing the active one.
  for (unsigned lowest = 1; lowest <= Stored::WIRELESS_KEYS; ++lowest) {
    if (setActiveKey(lowest)) break;
  }
  return true;
}

uint32_t NetworkProfile::getActiveKey() const {
  return Stored::number(Stored::security(*this), Stored::ACTIVE_KEY);
}

bool NetworkProfile::setActiveKey(unsigned k) {
  if (!Stored::wirelessKeyIsSet(Stored::security(*this), k)) return false;
  return Stored::set(Stored::writableSecurity(*this), Stored::ACTIVE_KEY, Json::UInt(k));
}

bool NetworkProfile::hexWirelessKey(const std::string& key) {
  return (key.size() == 10 || key.size() == 26) && key.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

bool NetworkProfile::validWirelessKey(uint32_t type, const std::string& key) {
  const bool wep128 = type == Encryption::WEP_128;  // "WEP" counts as WEP-64
  return key.size() == (wep128 ? 13U : 5U) || (key.size() == (wep128 ? 26U : 10U) && hexWirelessKey(key));
}

std::string NetworkProfile::getWirelessPassword() const {
  return Stored::secret(Stored::security(*this), Stored::WIRELESS_PASSWORD);
}

bool NetworkProfile::setWirelessPassword(const std::string& password) {
  return Stored::setEncrypted(*this, Stored::WIRELESS_PASSWORD, EncryptedString::Encrypt(password));
}

std::string NetworkProfile::getUser() const {
  return Stored::secret(Stored::security(*this), Stored::USER);
}

bool NetworkProfile::setUser(const std::string& user) {
  return Stored::setEncrypted(*this, Stored::USER, EncryptedString::Encrypt(user));
}

std::string NetworkProfile::getPassword() const {
  return Stored::secret(Stored::security(*this), Stored::PASSWORD);
}

bool NetworkProfile::setPassword(const std::string& password) {
  return Stored::setEncrypted(*this, Stored::PASSWORD, EncryptedString::Encrypt(password));
}

std::string NetworkProfile::getSecurityId() const {
  return Stored::secret(Stored::security(*this), Stored::SECURITY_ID);
}

bool NetworkProfile::setSecurityId(const std::string& id) {
  return Stored::setEncrypted(*this, Stored::SECURITY_ID, EncryptedString::Encrypt(id));
}

bool NetworkProfile::getAlternateId() const {
  return Stored::flag(Stored::security(*this), Stored::ALTERNATE_ID);
}

bool NetworkProfile::setAlternateId(bool use) {
  return Stored::set(Stored::writableSecurity(*this), Stored::ALTERNATE_ID, use);
}

std::vector<uint8_t> NetworkProfile::getCertificate() const {
  return EncryptedString::DecryptBlob(Stored::text(Stored::security(*this), Stored::CERTIFICATE));
}

bool NetworkProfile::setCertificate(const std::vector<uint8_t>& certificate) {
  return Stored::setEncrypted(*this, Stored::CERTIFICATE, EncryptedString::EncryptBlob(certificate));
}

bool NetworkProfile::setCertificate(const std::string& certificate) {
  return Stored::setEncrypted(*this, Stored::CERTIFICATE, EncryptedString::Encrypt(certificate));
}

std::vector<uint8_t> NetworkProfile::getCertificateKey() const {
  return EncryptedString::DecryptBlob(Stored::text(Stored::security(*this), Stored::CERTIFICATE_KEY));
}

bool NetworkProfile::setCertificateKey(const std::vector<uint8_t>& key) {
  return Stored::setEncrypted(*this, Stored::CERTIFICATE_KEY, EncryptedString::EncryptBlob(key));
}

bool NetworkProfile::setCertificateKey(const std::string& key) {
  return Stored::setEncrypted(*this, Stored::CERTIFICATE_KEY, EncryptedString::Encrypt(key));
}

std::string NetworkProfile::getCertificateName() const {
  return Stored::text(Stored::security(*this), Stored::CERTIFICATE_NAME);
}

bool NetworkProfile::setCertificateName(const std::string& name) {
  return Stored::setInSecurity(*this, Stored::CERTIFICATE_NAME, name);
}

bool NetworkProfile::getWifiProfile(std::size_t i, WifiProfile& out) const {
  const Json::Value* const entry = recentAt(*this, i);
  return entry != nullptr && out.fromJson(*entry);
}

bool NetworkProfile::addWifiProfile(const WifiProfile& profile) {
  Json::Value added = profile.toJson();
  if (added.isNull()) return false;
  std::size_t place = 0;
  for (const Json::Value* entry = recentAt(*this, 0); entry != nullptr && !isStoredAs(profile, *entry);) {
    entry = recentAt(*this, ++place);
  }
  // The entries before the place move down over it.
  Json::Value& recent = Stored::writableArray(*this, Stored::RECENT);
  for (Json::ArrayIndex i = 0; i <= place; ++i) recent[i].swap(added);
  if (recent.size() > MAX_RECENT) recent.resize(MAX_RECENT);
  return true;
}

bool NetworkProfile::addCurrentWifiProfile() {
  // The stored form of a network uses the keys of the current settings.
  WifiProfile current;
  (void)current.fromJson(*this);  // what is no object has no network, and reads as one without members
  const bool added = addWifiProfile(current);
  current.wipeSecrets();
  return added;
}

bool NetworkProfile::recentIsEmpty() const {
  return Stored::array(*this, Stored::RECENT).empty();
}

void NetworkProfile::removeAllStoredWifiData() {
  Stored::set(*this, Stored::RECENT, Json::Value(Json::arrayValue));
  Stored::remove(*this, Stored::SECURITY);
  Stored::remove(*this, Stored::SSID);
}

bool NetworkProfile::setConfigFromWifiProfile(const WifiProfile& profile) {
  if (!setUsbWifiSSID(profile.ssid) || !setUsbWifiDHCP(profile.useDhcp)) return false;
  if (!profile.useDhcp) {
    // An empty broadcast is refused here like any other invalid address, though toJson leaves it out.
    if (!setUsbWifiInetAddr(profile.inetAddr) || !setUsbWifiBroadcast(profile.broadcast) ||
        !setUsbWifiMask(profile.mask) || !setUsbWifiGateway(profile.gateway)) {
      return false;
    }
    clearUsbWifiDNS();
    for (const std::string& server : profile.dns) {
      if (!addUsbWifiDNS(server)) return false;
    }
  }
  return setUsbWifiSecurity(profile.securityType) && setEncryption(profile.encryption) && setConfigOfSecurity(profile);
}

bool NetworkProfile::setConfigOfSecurity(const WifiProfile& profile) {
  switch (profile.securityType) {
    case UsbWifiSecurity::WEP:
      // The active key comes before the keys and is refused while that key is not stored yet: this order is kept.
      if (!setActiveKey(profile.activeKey)) return false;
      for (std::size_t i = 0; i < profile.wepKeys.size(); ++i) {
        if (!setWirelessKey(static_cast<unsigned>(i + 1), profile.wepKeys[i])) return false;
      }
      return true;
    case UsbWifiSecurity::PERSONAL:
      return setWirelessPassword(profile.wirelessPassword);
    case UsbWifiSecurity::ENTERPRISE:
      return setEap(profile.eap) && setUser(profile.user) && setPassword(profile.password) &&
             setAlternateId(profile.alternateId) && setSecurityId(profile.securityId);
    default:
      return true;
  }
}
