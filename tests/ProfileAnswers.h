#pragma once

#include <sstream>
#include <string>

#include <libcrossplatform/common/NetworkProfile.h>

/// What all getters of a profile answer, one place beyond the end of every list too.
inline std::string answersOf(const NetworkProfile& p) {
  using NP = NetworkProfile;
  std::ostringstream out;
  for (const auto get :
       {&NP::getInetAddr, &NP::getMask, &NP::getBroadcast, &NP::getGateway, &NP::getUsbWifiInetAddr,
        &NP::getUsbWifiMask, &NP::getUsbWifiBroadcast, &NP::getUsbWifiGateway, &NP::getUsbWifiSSID,
        &NP::getWirelessPassword, &NP::getUser, &NP::getPassword, &NP::getSecurityId, &NP::getCertificateName}) {
    out << (p.*get)() << '|';
  }
  for (const auto& blob : {p.getCertificate(), p.getCertificateKey()})
    out << std::string(blob.begin(), blob.end()) << '|';
  for (std::size_t i = 0; i <= NP::MAX_DNS; ++i) out << p.getDNS(i) << ',' << p.getUsbWifiDNS(i) << '|';
  for (unsigned k = 0; k < 6; ++k) out << p.getWirelessKey(k) << '|';
  out << p.getDNSSize() << p.getUsbWifiDNSSize() << p.getWirelessKeySize() << p.getActiveKey() << p.getEncryption()
      << p.getUsbWifiSecurity() << p.getEap() << p.getWifiEnabled() << p.getWiredEnabled() << p.getDHCP()
      << p.getUsbWifiDHCP() << p.getAlternateId() << p.recentIsEmpty();
  return out.str();
}
