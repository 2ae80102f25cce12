#pragma once

// Threads: types and constants alone; nothing is shared.

/// The names of the members of a stored network profile, as files carry them.
namespace Veltra::ProfileNames {

/// The members of one interface.
struct InterfaceKeys {
  const char* inetAddr;   ///< text, dotted IPv4, as the next three
  const char* mask;       ///< text
  const char* broadcast;  ///< text
  const char* gateway;    ///< text
  const char* useDhcp;    ///< boolean
  const char* dnsList;    ///< list of texts
};
///@{
/// The members of either interface.
constexpr InterfaceKeys WIRED = {"InetAddr", "Mask", "Broadcast", "Gateway", "Use DHCP", "DNSList"};
constexpr InterfaceKeys USB_WIFI = {"UsbWifiInetAddr", "UsbWifiMask",     "UsbWifiBroadcast",
                                    "UsbWifiGateway",  "UsbWifiUse DHCP", "UsbWifiDNSList"};
///@}
///@{
/// Members of the document: a boolean, a text, a list of networks and an object.
constexpr char WIFI_INTERFACE[] = "Wifi Interface";
constexpr char SSID[] = "WiFi SSID";
constexpr char RECENT[] = "Recent";
constexpr char SECURITY[] = "Wireless Security";
///@}

///@{
/// Members of the security object.
constexpr char SECURITY_TYPE[] = "Security Type";
constexpr char ENCRYPTION[] = "Encryption";
constexpr char EAP[] = "EAP";
constexpr char KEYS[] = "Key";
constexpr char ACTIVE_KEY[] = "Active Key";
constexpr char WIRELESS_PASSWORD[] = "Wireless Password";
constexpr char USER[] = "User";
constexpr char PASSWORD[] = "Password";
constexpr char SECURITY_ID[] = "ID";
constexpr char ALTERNATE_ID[] = "Alternate Id";
constexpr char CERTIFICATE[] = "Certificate";
constexpr char CERTIFICATE_KEY[] = "Certificate Key";
constexpr char CERTIFICATE_NAME[] = "Certificate Name";
///@}

}  // namespace Veltra::ProfileNames
