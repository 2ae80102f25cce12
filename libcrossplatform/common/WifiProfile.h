#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/logging/Export.h>

// NOLINTBEGIN(readability-identifier-naming): callers know the tables as `desc`.

/// How a wireless network encrypts. `desc[type]` is the name the stored profile holds, here and below.
struct Encryption {
  /// The number the plain form holds; its name is what the document stores.
  enum Type : uint32_t { NONE, WEP_64, WEP_128, AUTO, TKIP, AES, WEP };
  /// The names, by number.
  static constexpr const char* desc[] = {"None", "WEP-64", "WEP-128", "Auto", "TKIP", "AES", "WEP"};
};

/// How a wireless network admits its stations.
struct UsbWifiSecurity {
  /// The number the plain form holds; its name is what the document stores.
  enum Type : uint32_t { OPEN, WEP, PERSONAL, ENTERPRISE };
  /// The names, by number.
  static constexpr const char* desc[] = {"Open", "WEP", "WPA-WPA2-Personal", "WPA-WPA2-Enterprise"};
};

/// How a station proves itself in the enterprise scheme.
struct Eap {
  /// The number the plain form holds; its name is what the document stores.
  enum Type : uint32_t {
    PEAP_MD5,
    PEAP_GTC,
    PEAP_MSCHAP_V2,
    TTLS_PAP,
    TTLS_CHAP,
    TTLS_MSCHAP,
    TTLS_MSCHAP_V2,
    TTLS_EAP_MD5,
    TTLS_EAP_GTC,
    TTLS_EAP_MSCHAP_V2
  };
  /// The names, by number.
  static constexpr const char* desc[] = {"PEAP MD5",     "PEAP GTC",          "PEAP MSCHAP V2", "TTLS PAP",
                                         "TTLS CHAP",    "TTLS MSCHAP",       "TTLS MSCHAP V2", "TTLS EAP MD5",
                                         "TTLS EAP GTC", "TTLS EAP MSCHAP V2"};
};

// NOLINTEND(readability-identifier-naming)

/// One wireless network in plain form. Its secrets are readable: call wipeSecrets() once they are no longer needed.
struct VELTRA_EXPORT WifiProfile {
  std::string inetAddr;                           ///< static IPv4 address in dotted form, used while useDhcp is off
  std::string mask;                               ///< the same form, as the next two
  std::string broadcast;                          ///< may be empty
  std::string gateway;                            ///< of the network
  std::vector<std::string> dns;                   ///< servers; of more than three setConfigFromWifiProfile() refuses
  bool useDhcp = false;                           ///< addresses and servers come from the network
  std::string ssid;                               ///< a network whose name is not UTF-8 cannot be stored
  uint32_t securityType = UsbWifiSecurity::OPEN;  ///< a UsbWifiSecurity::Type
  uint32_t encryption = Encryption::NONE;         ///< an Encryption::Type
  uint32_t eap = Eap::PEAP_MD5;                   ///< an Eap::Type
  uint32_t activeKey = 0;                         ///< the WEP key in use, 1..4; 0 is none
  std::vector<std::string> wepKeys;               ///< WEP keys 1..4, an empty one is not set
  std::string wirelessPassword;                   ///< WPA personal pass phrase
  std::string user;                               ///< from here on: WPA enterprise
  std::string password;                           ///< of the user
  bool alternateId = false;                       ///< send the outer identity in place of the user
  std::string securityId;                         ///< the outer identity

  /// The stored form, with every secret encrypted. Name, DHCP and DNS are always written; static addresses only while
  /// DHCP is off, the broadcast address only when not empty; WEP keys, pass phrase and enterprise members only for the
  /// security type they belong to. A type outside its list is left out. Of `wepKeys` the first four are written.
  /// @return a JSON null when the name or an address is not UTF-8, or a secret could not be encrypted, see
  ///         EncryptedString::Encrypt
  Json::Value toJson() const;

  /// Reads every member from the stored form; one that is absent or of another kind reads as false, 0 or empty, as
  /// does a secret that does not decrypt.
  /// @return false when `json` is not an object; the profile is then unchanged
  [[nodiscard]] bool fromJson(const Json::Value& json);
  bool fromJson(const Json::Value*) = delete;

  /// Overwrites keys, passwords and names in memory and leaves them empty.
  void wipeSecrets();
};

///@{
/// True when names and security types are equal: the same network, whatever its other settings.
VELTRA_EXPORT bool operator==(const WifiProfile& a, const WifiProfile& b);
VELTRA_EXPORT bool operator!=(const WifiProfile& a, const WifiProfile& b);
///@}
