#include <libcrossplatform/common/NetworkProfile.h>

#include <cerrno>
#include <ostream>

#include <arpa/inet.h>

#include <libcrossplatform/common/internal/JsonScan.h>
#include <libcrossplatform/common/internal/ProfileFile.h>
#include <libcrossplatform/common/internal/ProfileMembers.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/JsonText.h>

namespace Stored = Veltra::ProfileMembers;

namespace {

constexpr char INDENTATION[] = "\t";

// The wired and the USB Wi-Fi settings differ only in their keys: these serve both.

// The address in host order; false when the text is not a dotted address.
bool parseIPv4(const std::string& text, uint32_t& address) {
  in_addr parsed;
  if (text.find('\0') != std::string::npos || inet_pton(AF_INET, text.c_str(), &parsed) != 1) return false;
  address = ntohl(parsed.s_addr);
  return true;
}

bool setAddress(Json::Value& document, const char* key, const std::string& text) {
  if (NetworkProfile::invalidIPv4(text)) return false;
  return Stored::set(document, key, text);
}

bool setMaskMember(Json::Value& document, const char* key, const std::string& text) {
  if (NetworkProfile::invalidMask(text)) return false;
  return Stored::set(document, key, text);
}

bool addServer(Json::Value& document, const char* key, const std::string& text) {
  if (Stored::array(document, key).size() >= NetworkProfile::MAX_DNS || NetworkProfile::invalidIPv4(text)) return false;
  Stored::writableArray(document, key).append(Dump::orBadAlloc([&] { return Json::Value(text); }));
  return true;
}

bool setServer(Json::Value& document, const char* key, std::size_t i, const std::string& text) {
  const std::size_t size = Stored::array(document, key).size();
  if (i > size) return false;
  if (i == size) return addServer(document, key, text);
  if (!text.empty() && NetworkProfile::invalidIPv4(text)) return false;
  Stored::writableArray(document, key)[static_cast<Json::ArrayIndex>(i)] =
      Dump::orBadAlloc([&] { return Json::Value(text); });
  return true;
}

}  // namespace

std::mutex NetworkProfile::_mutex;

NetworkProfile::NetworkProfile() : Json::Value(Json::objectValue) {}

bool NetworkProfile::getWifiEnabled() const {
  return Stored::flag(*this, Stored::WIFI_INTERFACE);
}

bool NetworkProfile::getWiredEnabled() const {
  return !getWifiEnabled();
}

bool NetworkProfile::setWifiEnabled(bool enabled) {
  return Stored::set(*this, Stored::WIFI_INTERFACE, enabled);
}

bool NetworkProfile::setWiredEnabled(bool enabled) {
  return setWifiEnabled(!enabled);
}

std::string NetworkProfile::getInetAddr() const {
  return Stored::text(*this, Stored::WIRED.inetAddr);
}

std::string NetworkProfile::getMask() const {
  return Stored::text(*this, Stored::WIRED.mask);
}

std::string NetworkProfile::getBroadcast() const {
  return Stored::text(*this, Stored::WIRED.broadcast);
}

std::string NetworkProfile::getGateway() const {
  return Stored::text(*this, Stored::WIRED.gateway);
}

bool NetworkProfile::getDHCP() const {
  return Stored::flag(*this, Stored::WIRED.useDhcp);
}

bool NetworkProfile::setInetAddr(const std::string& text) {
  return setAddress(*this, Stored::WIRED.inetAddr, text);
}

bool NetworkProfile::setMask(const std::string& text) {
  return setMaskMember(*this, Stored::WIRED.mask, text);
}

bool NetworkProfile::setBroadcast(const std::string& text) {
  return setAddress(*this, Stored::WIRED.broadcast, text);
}

bool NetworkProfile::setGateway(const std::string& text) {
  return setAddress(*this, Stored::WIRED.gateway, text);
}

bool NetworkProfile::setDHCP(bool use) {
  return Stored::set(*this, Stored::WIRED.useDhcp, use);
}

std::string NetworkProfile::getDNS(std::size_t i) const {
  return Stored::textAt(Stored::array(*this, Stored::WIRED.dnsList), i);
}

std::size_t NetworkProfile::getDNSSize() const {
  return Stored::array(*this, Stored::WIRED.dnsList).size();
}

void NetworkProfile::clearDNS() {
  Stored::remove(*this, Stored::WIRED.dnsList);
}

bool NetworkProfile::addDNS(const std::string& text) {
  return addServer(*this, Stored::WIRED.dnsList, text);
}

bool NetworkProfile::setDNS(std::size_t i, const std::string& text) {
  return setServer(*this, Stored::WIRED.dnsList, i, text);
}

std::string NetworkProfile::getUsbWifiInetAddr() const {
  return Stored::text(*this, Stored::USB_WIFI.inetAddr);
}

std::string NetworkProfile::getUsbWifiMask() const {
  return Stored::text(*this, Stored::USB_WIFI.mask);
}

std::string NetworkProfile::getUsbWifiBroadcast() const {
  return Stored::text(*this, Stored::USB_WIFI.broadcast);
}

std::string NetworkProfile::getUsbWifiGateway() const {
  return Stored::text(*this, Stored::USB_WIFI.gateway);
}

bool NetworkProfile::getUsbWifiDHCP() const {
  return Stored::flag(*this, Stored::USB_WIFI.useDhcp);
}

bool NetworkProfile::setUsbWifiInetAddr(const std::string& text) {
  return setAddress(*this, Stored::USB_WIFI.inetAddr, text);
}

bool NetworkProfile::setUsbWifiMask(const std::string& text) {
  return setMaskMember(*this, Stored::USB_WIFI.mask, text);
}

bool NetworkProfile::setUsbWifiBroadcast(const std::string& text) {
  return setAddress(*this, Stored::USB_WIFI.broadcast, text);
}

bool NetworkProfile::setUsbWifiGateway(const std::string& text) {
  return setAddress(*this, Stored::USB_WIFI.gateway, text);
}

bool NetworkProfile::setUsbWifiDHCP(bool use) {
  return Stored::set(*this, Stored::USB_WIFI.useDhcp, use);
}

std::string NetworkProfile::getUsbWifiDNS(std::size_t i) const {
  return Stored::textAt(Stored::array(*this, Stored::USB_WIFI.dnsList), i);
}

std::size_t NetworkProfile::getUsbWifiDNSSize() const {
  return Stored::array(*this, Stored::USB_WIFI.dnsList).size();
}

void NetworkProfile::clearUsbWifiDNS() {
  Stored::remove(*this, Stored::USB_WIFI.dnsList);
}

bool NetworkProfile::addUsbWifiDNS(const std::string& text) {
  return addServer(*this, Stored::USB_WIFI.dnsList, text);
}

bool NetworkProfile::setUsbWifiDNS(std::size_t i, const std::string& text) {
  return setServer(*this, Stored::USB_WIFI.dnsList, i, text);
}

bool NetworkProfile::invalidIPv4(const std::string& text) {
  uint32_t address = 0;
  if (!parseIPv4(text, address)) return true;
  const uint32_t first = address >> 24;
  // 240 to 254 are accepted although reserved: networks in the field use them.
  return first == 0 || first == 127 || first == 255 || (first >= 224 && first <= 239) || address >> 16 == 0xA9FE;
}

bool NetworkProfile::invalidMask(const std::string& text) {
  uint32_t mask = 0;
  if (!parseIPv4(text, mask)) return true;
  const uint32_t host = ~mask;  // ones at the end and nowhere else, or none at all
  return (host & (host + 1)) != 0;
}

void NetworkProfile::dump(std::ostream& stream) const {
  Dump::writeStyledJson(stream, *this, INDENTATION);
}

bool NetworkProfile::save() const {
  return saveTo(FILE_PATH);
}

bool NetworkProfile::saveTo(const std::string& path) const {
  return store(path, nullptr);
}

bool NetworkProfile::saveTo(const std::string& path, const Veltra::FileStamp& expected) const {
  return store(path, &expected);
}

bool NetworkProfile::store(const std::string& path, const Veltra::FileStamp* expected) const {
  const std::lock_guard<std::mutex> lock(_mutex);
  std::string text;
  const bool isTaken = Dump::writeStyledJson(text, *this, INDENTATION, Veltra::JsonBounds::STYLED_BYTES) &&
                       Veltra::isWithinBounds(Veltra::extentOf(text));
  if (!isTaken) errno = EFBIG;
  return isTaken && Veltra::writeProfileFile(path, text, expected);
}

bool NetworkProfile::read() {
  return load(FILE_PATH, Veltra::ProfileOwner::TRUSTED);
}

bool NetworkProfile::readFrom(const std::string& path) {
  return load(path, Veltra::ProfileOwner::ANY);
}

bool NetworkProfile::load(const std::string& path, Veltra::ProfileOwner owner) {
  const std::lock_guard<std::mutex> lock(_mutex);
  std::string text;
  if (!Veltra::readProfileFile(path, owner, text)) return false;
  const bool isBounded = Veltra::isWithinBounds(Veltra::extentOf(text));
  if (isBounded && Veltra::parseJson(text, *this, true)) return true;
  errno = isBounded ? EBADMSG : EFBIG;
  return false;
}
