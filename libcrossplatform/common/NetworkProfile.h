#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/WifiProfile.h>
#include <libcrossplatform/logging/Export.h>

namespace Veltra {
enum class ProfileOwner : int32_t;
}

/// The network configuration of the instrument: interface, addresses, wireless security and recent networks. It is
/// itself the JSON document that is stored; every accessor reads or writes a member of it.
///
/// Getters never throw: a member that is absent or of another JSON kind than expected reads as false, 0 or empty, and a
/// document that is not an object reads as an empty one. Setters replace members of another kind. Every setter returns
/// true when the value is stored; on false the document is as it was, unless said otherwise. Types and key numbers are
/// checked against their lists, so any 32-bit number may be passed.
///
/// Passwords, keys, names and certificates are stored through EncryptedString. A stored secret that does not decrypt
/// reads as empty; one of more than 65535 bytes is refused by its setter.
///
/// An instance shared between threads needs the caller's own lock. Only `save` and `read` lock, among all instances.
class VELTRA_EXPORT NetworkProfile : public Json::Value {
 public:
  /// The file of `save` and `read`.
  static constexpr const char* FILE_PATH = "/tmp/netprofile.dat";
  static constexpr std::size_t MAX_DNS = 3;   ///< servers of an interface
  static constexpr unsigned MAX_RECENT = 10;  ///< recent networks kept

  /// An empty document.
  NetworkProfile();
  using Json::Value::operator=;  ///< replaces the whole document
  NetworkProfile& operator=(const Json::Value*) = delete;

  ///@{
  /// Either the USB Wi-Fi adapter or the wired interface is in use: switching one off switches the other on.
  /// @return of a setter, true
  bool getWifiEnabled() const;
  bool getWiredEnabled() const;
  bool setWifiEnabled(bool enabled = true);
  bool setWiredEnabled(bool enabled = true);
  ///@}

  ///@{
  /// Static IPv4 settings in dotted form, used while DHCP is off, and DHCP, for the wired interface and the USB Wi-Fi
  /// adapter. @return of a setter, false for an address that invalidIPv4() names, or a mask that invalidMask() does
  std::string getInetAddr() const;
  std::string getMask() const;
  std::string getBroadcast() const;
  std::string getGateway() const;
  bool getDHCP() const;
  [[nodiscard]] bool setInetAddr(const std::string& text);
  [[nodiscard]] bool setMask(const std::string& text);
  [[nodiscard]] bool setBroadcast(const std::string& text);
  [[nodiscard]] bool setGateway(const std::string& text);
  bool setDHCP(bool use);

  std::string getUsbWifiInetAddr() const;
  std::string getUsbWifiMask() const;
  std::string getUsbWifiBroadcast() const;
  std::string getUsbWifiGateway() const;
  bool getUsbWifiDHCP() const;
  [[nodiscard]] bool setUsbWifiInetAddr(const std::string& text);
  [[nodiscard]] bool setUsbWifiMask(const std::string& text);
  [[nodiscard]] bool setUsbWifiBroadcast(const std::string& text);
  [[nodiscard]] bool setUsbWifiGateway(const std::string& text);
  bool setUsbWifiDHCP(bool use);
  ///@}

  /// True when the text is not a dotted IPv4 address, or is one that no interface can have: first octet 0, 127 or 255,
  /// multicast (224.0.0.0 to 239.255.255.255) or link-local (169.254.0.0/16).
  static bool invalidIPv4(const std::string& text);

  /// True when the text is not a dotted IPv4 mask of ones followed by zeros; 0.0.0.0 and 255.255.255.255 are masks.
  static bool invalidMask(const std::string& text);

  // DNS servers of either interface, at most MAX_DNS, counted from 0.

  std::string getDNS(std::size_t i) const;  ///< empty beyond the end
  /// Servers the document lists; more than MAX_DNS only in one that was read from a file.
  std::size_t getDNSSize() const;
  /// Removes them all.
  void clearDNS();
  /// Appends a server. @return false when the list is full or the address invalid
  [[nodiscard]] bool addDNS(const std::string& text);
  /// Replaces server i; an empty text is accepted. One past the last appends like addDNS.
  /// @return false for a larger i, or when the address is invalid
  [[nodiscard]] bool setDNS(std::size_t i, const std::string& text);

  ///@{
  /// The same for the USB Wi-Fi adapter.
  std::string getUsbWifiDNS(std::size_t i) const;
  std::size_t getUsbWifiDNSSize() const;
  void clearUsbWifiDNS();
  [[nodiscard]] bool addUsbWifiDNS(const std::string& text);
  [[nodiscard]] bool setUsbWifiDNS(std::size_t i, const std::string& text);
  ///@}

  // The wireless network and how it is secured.

  /// Name of the network; empty when none is set.
  std::string getUsbWifiSSID() const;
  /// @return false for a name that is not UTF-8: network names may be any bytes, but JSON cannot hold them
  [[nodiscard]] bool setUsbWifiSSID(const std::string& ssid);

  ///@{
  /// How it encrypts; of a setter, false for a number that is no Encryption::Type.
  Encryption::Type getEncryption() const;
  [[nodiscard]] bool setEncryption(uint32_t type);
  ///@}

  /// How it admits its stations.
  UsbWifiSecurity::Type getUsbWifiSecurity() const;
  /// Stores the security type and moves the encryption to one that suits it: "None" for open; for WEP "WEP-64" unless
  /// it is "WEP-128" or "WEP"; for WPA "Auto" unless it is "TKIP" or "AES". Enterprise sets a missing EAP to "PEAP
  /// MD5". @return false for a number that is no UsbWifiSecurity::Type
  [[nodiscard]] bool setUsbWifiSecurity(uint32_t type);

  ///@{
  /// How a station proves itself; PEAP MD5 when none is stored. Of a setter, false for a number that is no Eap::Type.
  Eap::Type getEap() const;
  [[nodiscard]] bool setEap(uint32_t type);
  ///@}
  bool anyEap() const;  ///< whether an EAP type is stored

  // WEP keys, numbered 1 to 4.

  /// Key k in the clear; empty for one that is not set, for a k outside 1 to 4 and for one that does not decrypt.
  std::string getWirelessKey(unsigned k) const;
  std::size_t getWirelessKeySize() const;  ///< slots of the stored list, including those without a key
  /// Removes all keys.
  void clearWirelessKey();
  /// Stores key k and makes it the active one. An empty key removes it, and the lowest key that is still set becomes
  /// active, even when the removed one was not.
  /// @return false when k is not 1..4, or a key is not valid for the encryption (validWirelessKey)
  [[nodiscard]] bool setWirelessKey(unsigned k, const std::string& key);
  uint32_t getActiveKey() const;  ///< 1..4, 0 when none was ever set
  /// @return false when key k is not set
  [[nodiscard]] bool setActiveKey(unsigned k);

  /// True for 10 or 26 hexadecimal digits.
  static bool hexWirelessKey(const std::string& key);
  /// True for 13 characters or 26 hexadecimal digits when `type` is WEP-128, for 5 characters or 10 hexadecimal digits
  /// when it is any other.
  static bool validWirelessKey(uint32_t type, const std::string& key);

  // Credentials.

  ///@{
  /// Secrets in the clear, encrypted where they are stored: the WPA personal pass phrase, and of WPA enterprise user,
  /// password and outer identity. @return of a setter, false for one that EncryptedString::Encrypt() refuses
  std::string getWirelessPassword() const;
  [[nodiscard]] bool setWirelessPassword(const std::string& password);
  std::string getUser() const;
  [[nodiscard]] bool setUser(const std::string& user);
  std::string getPassword() const;
  [[nodiscard]] bool setPassword(const std::string& password);
  std::string getSecurityId() const;
  [[nodiscard]] bool setSecurityId(const std::string& id);
  ///@}
  ///@{
  /// Whether the outer identity is used. @return of the setter, true
  bool getAlternateId() const;
  bool setAlternateId(bool use);
  ///@}

  ///@{
  /// The client certificate and its private key, any bytes, encrypted where they are stored; empty is none.
  /// @return of a setter, false for one that EncryptedString::Encrypt() refuses
  std::vector<uint8_t> getCertificate() const;
  [[nodiscard]] bool setCertificate(const std::vector<uint8_t>& certificate);
  [[nodiscard]] bool setCertificate(const std::string& certificate);
  std::vector<uint8_t> getCertificateKey() const;
  [[nodiscard]] bool setCertificateKey(const std::vector<uint8_t>& key);
  [[nodiscard]] bool setCertificateKey(const std::string& key);
  ///@}
  std::string getCertificateName() const;                          ///< as shown, in plain text
  [[nodiscard]] bool setCertificateName(const std::string& name);  ///< false for a name that is not UTF-8

  // Recent wireless networks, newest first.

  /// @return false, with `out` unchanged, when there is no network i
  [[nodiscard]] bool getWifiProfile(std::size_t i, WifiProfile& out) const;
  /// Puts a network first. An equal one is replaced; of more than MAX_RECENT the oldest are dropped.
  /// @return false, with nothing changed, when its name or an address is not UTF-8, or a secret could not be encrypted
  [[nodiscard]] bool addWifiProfile(const WifiProfile& profile);
  /// Puts the current wireless settings first. @return as addWifiProfile
  [[nodiscard]] bool addCurrentWifiProfile();
  /// Whether there is none.
  bool recentIsEmpty() const;
  /// Removes the recent networks, the current network's name and its security.
  void removeAllStoredWifiData();
  /// Makes a network the current wireless settings, through the setters above and in their order: name, DHCP, static
  /// addresses and DNS while DHCP is off, security type, encryption, then what the security type needs.
  /// @return false at the first setter that refuses; what was set before it stays set. An empty broadcast address is
  ///         refused while DHCP is off, as is a WEP network whose active key number has no key yet
  [[nodiscard]] bool setConfigFromWifiProfile(const WifiProfile& profile);

  // The document as a whole.

  /// Writes the document as styled JSON, indented by tabs. Text that is not UTF-8, which a document read from a
  /// file can hold, is written with U+FFFD, here and by save; a warning is logged.
  void dump(std::ostream& stream) const;

  ///@{
  /// Replaces FILE_PATH, or a file of the caller's choice, by the document: a reader finds the whole old
  /// file or the whole new one at any time. The file then has mode 0600 and belongs to the caller, whatever it had
  /// before. A symbolic link is followed when it belongs to root or the caller.
  /// `expected`, a stamp of the file taken before it was read: it is replaced only if nobody has changed it since.
  /// @return false with the reason in `errno`, the old file unchanged: it is not the expected one (ESTALE), not a
  ///         regular file, or a link of somebody else; the system does not let the caller replace it; the text is
  ///         larger than read() accepts (EFBIG); or the new file could not be written or made private. Also false, with
  ///         the new file in its place, when only the folder could not be synced.
  [[nodiscard]] bool save() const;
  [[nodiscard]] bool saveTo(const std::string& path) const;
  [[nodiscard]] bool saveTo(const std::string& path, const Veltra::FileStamp& expected) const;
  ///@}

  ///@{
  /// Replaces the document by the one in FILE_PATH, or a path of the caller's choice. Comments are kept as
  /// parseJson() keeps them.
  /// @return false, with the document unchanged and the reason in `errno`: the file is missing or cannot be read (as
  ///         the system says), is not JSON (EBADMSG), beyond docs/reader-behaviour.md#the-bounds-of-json (EFBIG), a
  ///         folder (EISDIR), another file that saveTo would not replace (ENOTSUP), or a link of somebody else
  ///         (EACCES). read() also refuses a file that belongs neither to root nor to the caller, in a folder that
  ///         others can write to (EPERM); readFrom() does not check this.
  [[nodiscard]] bool read();
  [[nodiscard]] bool readFrom(const std::string& path);
  ///@}

 private:
  [[nodiscard]] bool setConfigOfSecurity(const WifiProfile& profile);
  [[nodiscard]] bool store(const std::string& path, const Veltra::FileStamp* expected) const;
  [[nodiscard]] bool load(const std::string& path, Veltra::ProfileOwner owner);

  static std::mutex _mutex;  // one for the profile file, among all instances
};
