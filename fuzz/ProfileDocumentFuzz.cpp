// A stored network profile, whatever document it is: every getter, then what changes it.
#include <libcrossplatform/common/NetworkProfile.h>

#include <algorithm>

#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/JsonText.h>

#include <tests/ProfileAnswers.h>

#include "RecordProperties.h"
#include "Scratch.h"

namespace {

void checkAnswers(const NetworkProfile& p) {
  const std::string before = Dump::compactJson(p);
  answersOf(p);
  p.anyEap();
  std::ostringstream out;
  p.dump(out);
  FUZZ_CHECK(Dump::compactJson(p) == before);
  // Types and key numbers are of their lists, whatever the document says.
  FUZZ_CHECK(p.getEncryption() <= Encryption::WEP && p.getEap() <= Eap::TTLS_EAP_MSCHAP_V2);
  FUZZ_CHECK(p.getUsbWifiSecurity() <= UsbWifiSecurity::ENTERPRISE);
}

/// What is stored in a file is what is read from it. A second profile that cannot be read stays as it is.
/// @param plain  the document is ASCII without escapes: JsonCpp's writer does not keep every other name
void checkFile(const NetworkProfile& p, bool plain) {
  static const Fuzz::ScratchFile FILE;
  const std::string path = FILE.path();
  FUZZ_CHECK(p.saveTo(path));
  NetworkProfile again;
  FUZZ_CHECK(again.readFrom(path));
  if (plain) FUZZ_CHECK(Dump::compactJson(again) == Dump::compactJson(p));
  FUZZ_CHECK(FILE.isAlone());
}

std::size_t recentNetworks(const NetworkProfile& p) {
  std::size_t count = 0;
  for (WifiProfile network; p.getWifiProfile(count, network);) ++count;
  return count;
}

void checkRecent(NetworkProfile& p) {
  for (std::size_t i = 0; i < NetworkProfile::MAX_RECENT; ++i) {
    WifiProfile network;
    NetworkProfile fresh;
    if (!p.getWifiProfile(i, network)) break;
    (void)fresh.setConfigFromWifiProfile(network);
    FUZZ_CHECK(fresh.getUsbWifiSSID() == (Dump::isUtf8(network.ssid) ? network.ssid : std::string()));
    FUZZ_CHECK(fresh.addWifiProfile(network) == Fuzz::isStorable(network));
  }
  WifiProfile current;
  (void)current.fromJson(p);
  FUZZ_CHECK(p.addCurrentWifiProfile() == Fuzz::isStorable(current));
  if (!Fuzz::isStorable(current)) return;
  WifiProfile newest;
  FUZZ_CHECK(!p.recentIsEmpty() && p.getWifiProfile(0, newest));
  FUZZ_CHECK(newest.ssid == p.getUsbWifiSSID() && newest.securityType == p.getUsbWifiSecurity());
  FUZZ_CHECK(recentNetworks(p) <= NetworkProfile::MAX_RECENT);
}

/// Setters replace what is of another kind, and what was set is got.
void checkSetters(NetworkProfile& p) {
  const std::string secret = p.getUsbWifiSSID().substr(0, 200);
  FUZZ_CHECK(p.setInetAddr("192.168.1.20") && p.getInetAddr() == "192.168.1.20");
  FUZZ_CHECK(p.setUsbWifiMask("255.255.0.0") && p.getUsbWifiMask() == "255.255.0.0");
  FUZZ_CHECK(p.setUsbWifiDHCP(true) && p.getUsbWifiDHCP());
  for (const auto type : {UsbWifiSecurity::WEP, UsbWifiSecurity::PERSONAL, UsbWifiSecurity::ENTERPRISE}) {
    FUZZ_CHECK(p.setUsbWifiSecurity(type) && p.getUsbWifiSecurity() == type);
  }
  FUZZ_CHECK(p.setUser(secret) && p.getUser() == secret);
  FUZZ_CHECK(p.setWirelessPassword(secret) && p.getWirelessPassword() == secret);
  FUZZ_CHECK(p.setCertificate(secret) && p.getCertificate() == std::vector<uint8_t>(secret.begin(), secret.end()));
  FUZZ_CHECK(p.setEncryption(Encryption::WEP_64) && p.setWirelessKey(2, "12345") && p.getWirelessKey(2) == "12345");
  FUZZ_CHECK(p.getActiveKey() == 2 && p.setActiveKey(2));
  p.clearDNS();
  FUZZ_CHECK(p.addDNS("10.0.0.1") && p.getDNSSize() == 1 && p.getDNS(0) == "10.0.0.1");
  p.removeAllStoredWifiData();
  FUZZ_CHECK(p.recentIsEmpty() && p.getUsbWifiSSID().empty());
}

}  // namespace

void Fuzz::runTarget(const Input& input) {
  Json::Value json;
  if (!Veltra::parseJson(input.text(), json, true)) return;
  NetworkProfile profile;
  profile = json;
  checkAnswers(profile);
  const std::string text = input.text();
  const auto isPlain = [](char c) { return (c >= ' ' && c < '\x7f' && c != '\\') || c == '\n' || c == '\t'; };
  checkFile(profile, std::all_of(text.begin(), text.end(), isPlain));
  checkRecent(profile);
  checkAnswers(profile);
  checkSetters(profile);
  checkAnswers(profile);
}
