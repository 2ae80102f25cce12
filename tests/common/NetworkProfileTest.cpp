#include <libcrossplatform/common/NetworkProfile.h>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/JsonText.h>

#include "ProfileAnswers.h"
#include "RecordTesting.h"

namespace fs = std::filesystem;
using namespace RecordTesting;
using NP = NetworkProfile;

namespace {

WifiProfile network(const std::string& ssid, uint32_t securityType) {
  WifiProfile profile;
  profile.ssid = ssid;
  profile.useDhcp = true;
  profile.securityType = securityType;
  return profile;
}

// Every member set, in the order of the members.
WifiProfile fullNetwork(uint32_t securityType) {
  return {"10.0.0.1",    "255.0.0.0",  "10.255.255.255", "10.0.0.9",    {"8.8.8.8"}, false,
          "net",         securityType, Encryption::AES,  Eap::TTLS_PAP, 2,           {"", "abcde"},
          "pass phrase", "user",       "password",       true,          "outer"};
}

std::string recentNames(const NetworkProfile& profile) {
  std::string names;
  WifiProfile recent;
  for (std::size_t i = 0; profile.getWifiProfile(i, recent); ++i) names += recent.ssid + ' ';
  return names;
}

// Every member set, no two of a kind alike.
NetworkProfile fullProfile() {
  NetworkProfile p;
  EXPECT_TRUE(p.setWifiEnabled() && p.setDHCP(true) && p.setUsbWifiDHCP(false));
  EXPECT_TRUE(p.setInetAddr("10.0.0.1") && p.setUsbWifiInetAddr("10.1.0.1"));
  EXPECT_TRUE(p.setMask("255.0.0.0") && p.setUsbWifiMask("255.255.0.0"));
  EXPECT_TRUE(p.setBroadcast("10.0.0.2") && p.setUsbWifiBroadcast("10.1.0.2"));
  EXPECT_TRUE(p.setGateway("10.0.0.3") && p.setUsbWifiGateway("10.1.0.3"));
  EXPECT_TRUE(p.addDNS("10.0.0.4") && p.setDNS(1, "10.0.0.5"));
  EXPECT_TRUE(p.addUsbWifiDNS("10.1.0.4") && p.setUsbWifiDNS(1, "10.1.0.5") && p.addUsbWifiDNS("10.1.0.6"));
  EXPECT_TRUE(p.setUsbWifiSSID("net") && p.setUsbWifiSecurity(UsbWifiSecurity::ENTERPRISE));
  EXPECT_TRUE(p.setEncryption(Encryption::WEP) && p.setEap(Eap::TTLS_EAP_MSCHAP_V2) && p.setWirelessKey(2, "abcde"));
  EXPECT_TRUE(p.setWirelessPassword("pass phrase") && p.setUser("user") && p.setPassword("password"));
  EXPECT_TRUE(p.setSecurityId("outer") && p.setAlternateId(true) && p.setCertificateName("client"));
  EXPECT_TRUE(p.setCertificate(Bytes{'c', 'r', 't'}) && p.setCertificateKey(std::string("pem")));
  EXPECT_TRUE(p.addCurrentWifiProfile());
  return p;
}

// The document with its secrets in plain text.
Json::Value decrypted(Json::Value document) {
  if (document.isString()) return EncryptedString::Decrypt(document.asString());
  for (Json::Value& member : document) member = decrypted(member);
  return document;
}

}  // namespace

TEST(NetworkProfile, RefusesAddressesNoInterfaceCanHave) {
  const std::string none = "|10.0.0|10.0.0.256|host|10.0.0.1 |::1|";
  const std::string noHosts = "0.1.2.3|127.0.0.1|255.1.1.1|224.0.0.1|239.255.255.255|169.254.1.1";
  const std::string hosts = "1.0.0.0|223.255.255.255|240.1.1.1|254.255.255.255|169.253.1.1|169.255.1.1";
  const std::string noMasks = "255.255.0.255|0.0.0.1|127.255.255.255|255.0.255.0|1.0.0.0";
  const std::string masks = "0.0.0.0|128.0.0.0|255.255.254.0|255.255.255.254|255.255.255.255";
  for (const std::string& text : split(none + noHosts)) EXPECT_TRUE(NP::invalidIPv4(text)) << text;
  for (const std::string& text : split(hosts)) EXPECT_FALSE(NP::invalidIPv4(text)) << text;
  for (const std::string& text : split(none + noMasks)) EXPECT_TRUE(NP::invalidMask(text)) << text;
  for (const std::string& text : split(masks)) EXPECT_FALSE(NP::invalidMask(text)) << text;
  EXPECT_TRUE(NP::invalidIPv4(std::string("10.0.0.1\0x", 10)));
}

TEST(NetworkProfile, IsStoredAsItWasSetAndConfiguredNetworksBecomeRecentOnes) {
  NetworkProfile profile = fullProfile();
  EXPECT_TRUE(profile.getWifiEnabled() && !profile.getWiredEnabled() && NetworkProfile().getWiredEnabled());
  std::ostringstream table;
  table << answersOf(profile) << '\n' << Dump::compactJson(decrypted(profile)) << '\n';
  for (uint32_t type = 0; type < 4; ++type) {
    NetworkProfile p;
    EXPECT_TRUE(p.addUsbWifiDNS("8.8.8.7") && p.setWirelessKey(2, "other"));
    EXPECT_TRUE(p.setConfigFromWifiProfile(fullNetwork(type)) && p.addCurrentWifiProfile());
    WifiProfile r;
    EXPECT_TRUE(p.getWifiProfile(0, r) && r == fullNetwork(type));
    table << answersOf(p) << '\n'
          << Dump::compactJson(decrypted(p)) << '\n'
          << r.inetAddr << '|' << r.mask << '|' << r.broadcast << '|' << r.gateway << '|' << r.dns.size() << r.dns[0]
          << '|' << r.encryption << r.activeKey << r.eap << r.alternateId << '|' << r.wirelessPassword << '|' << r.user
          << '|' << r.password << '|' << r.securityId;
    for (const std::string& key : r.wepKeys) table << '|' << key;
    r.broadcast = "";
    table << '\n' << Dump::compactJson(decrypted(r.toJson())) << '\n';
    r.useDhcp = true;
    table << Dump::compactJson(decrypted(r.toJson())) << '\n';
  }
  expectGoldenText(table.str(), "network_profile");
  profile.setWiredEnabled();
  EXPECT_FALSE(profile.getWifiEnabled());
}

TEST(NetworkProfile, SettersStoreNothingThatTheyRefuse) {
  NetworkProfile profile;
  for (const auto set : {&NP::setInetAddr, &NP::setBroadcast, &NP::setGateway, &NP::addDNS, &NP::setUsbWifiInetAddr,
                         &NP::setUsbWifiBroadcast, &NP::setUsbWifiGateway, &NP::addUsbWifiDNS}) {
    EXPECT_FALSE((profile.*set)("255.255.255.0"));
  }
  for (const auto set : {&NP::setMask, &NP::setUsbWifiMask}) EXPECT_FALSE((profile.*set)("10.0.0.1"));
  for (const auto set : {&NP::setWirelessPassword, &NP::setUser, &NP::setPassword, &NP::setSecurityId}) {
    EXPECT_FALSE((profile.*set)(std::string(65536, 'x')));
  }
  for (const auto set : {&NP::setUsbWifiSSID, &NP::setCertificateName}) EXPECT_FALSE((profile.*set)("caf\xE9 au"));
  WifiProfile cafe = network("caf\xE9", UsbWifiSecurity::OPEN);
  EXPECT_FALSE(profile.addWifiProfile(cafe) || profile.setConfigFromWifiProfile(cafe));
  for (std::size_t i = 0; i < 5; ++i) {
    WifiProfile w = fullNetwork(UsbWifiSecurity::OPEN);
    *std::array<std::string*, 5>{&w.inetAddr, &w.mask, &w.broadcast, &w.gateway, &w.dns[0]}[i] = "\xFF";
    EXPECT_TRUE(w.toJson().isNull()) << i;
  }
  for (const uint32_t type : {4U, 0xFFFFFFFFU}) EXPECT_FALSE(profile.setUsbWifiSecurity(type));
  EXPECT_FALSE(profile.setEncryption(7) || profile.setEap(10));
  EXPECT_EQ(profile.size(), 0U);
}

TEST(NetworkProfile, KeepsThreeServers) {
  NetworkProfile profile;
  EXPECT_FALSE(profile.setDNS(0, ""));  // one past the end it is addDNS, which takes no empty text
  EXPECT_FALSE(profile.setDNS(1, "8.8.8.8"));
  EXPECT_TRUE(profile.setDNS(0, "8.8.8.1") && profile.addDNS("8.8.8.2") && profile.addDNS("8.8.8.3"));
  EXPECT_FALSE(profile.addDNS("8.8.8.4") || profile.setDNS(3, "8.8.8.4"));
  EXPECT_TRUE(profile.setDNS(1, "") && profile.setDNS(2, "8.8.8.5"));
  EXPECT_FALSE(profile.setDNS(2, "8.8.8"));
  EXPECT_EQ(Dump::compactJson(profile), R"({"DNSList":["8.8.8.1","","8.8.8.5"]})");
  profile.clearUsbWifiDNS();
  EXPECT_EQ(profile.getDNSSize(), 3U);
  profile.clearDNS();
  EXPECT_EQ(profile.size(), 0U);
}

TEST(NetworkProfile, SecurityTypeMovesTheEncryption) {
  std::string table;
  for (uint32_t type = 0; type < 4; ++type) {
    for (uint32_t encryption = 0; encryption < 7; ++encryption) {
      NetworkProfile profile;
      EXPECT_TRUE(profile.setEncryption(encryption) && profile.setUsbWifiSecurity(type));
      EXPECT_EQ(profile["Wireless Security"]["Security Type"], UsbWifiSecurity::desc[type]);
      table += std::to_string(profile.getEncryption()) + (profile.anyEap() ? "E" : "") + (encryption == 6 ? " " : "");
    }
  }
  EXPECT_EQ(table, "0000000 1121116 3333453 3E3E3E3E4E5E3E ");
  NetworkProfile profile;
  EXPECT_TRUE(profile.setEap(Eap::TTLS_PAP) && profile.setUsbWifiSecurity(UsbWifiSecurity::ENTERPRISE));
  EXPECT_EQ(profile.getEap(), Eap::TTLS_PAP);
  profile["Wireless Security"]["EAP"] = "ttls pap";  // unknown: names are compared exactly
  EXPECT_EQ(profile.getEap(), 0U);
}

TEST(NetworkProfile, WirelessKeyMustFitTheEncryption) {
  const auto fitting = [](const std::string& key) {
    std::string types;
    for (uint32_t type = 0; type < 7; ++type) types += NP::validWirelessKey(type, key) ? std::to_string(type) : "";
    return types;
  };
  for (const char* key : {"abcde", "0123456789"}) EXPECT_EQ(fitting(key), "013456") << key;
  for (const char* key : {"thirteen char", "0123456789abcdefABCDEF0123"}) EXPECT_EQ(fitting(key), "2") << key;
  for (const char* key : {"abc", "012345678g", "0123456789abcdefABCDEg0123"}) EXPECT_EQ(fitting(key), "") << key;
  EXPECT_FALSE(NP::hexWirelessKey("abcde"));  // hexadecimal digits, but not of a hexadecimal key's length
  NetworkProfile profile;
  EXPECT_TRUE(profile.setEncryption(Encryption::WEP_128));
  EXPECT_FALSE(profile.setWirelessKey(1, "abcde"));
  EXPECT_EQ(profile.getWirelessKeySize(), 0U);
}

TEST(NetworkProfile, RemovingAnyWirelessKeyActivatesTheLowestLeft) {
  NetworkProfile profile;
  for (const unsigned k : {0U, 5U, 0xFFFFFFFFU}) EXPECT_FALSE(profile.setWirelessKey(k, "abcde"));
  EXPECT_FALSE(profile.setActiveKey(1));
  for (const unsigned k : {2U, 4U, 3U}) EXPECT_TRUE(profile.setWirelessKey(k, "key " + std::to_string(k)));
  EXPECT_EQ(profile.getActiveKey(), 3U);
  for (const unsigned k : {0U, 1U, 5U}) EXPECT_FALSE(profile.setActiveKey(k));
  EXPECT_TRUE(profile.setWirelessKey(4, ""));  // not the active one, and yet
  EXPECT_EQ(profile.getActiveKey(), 2U);
  EXPECT_TRUE(profile["Wireless Security"]["Key"][3].isNull());
  EXPECT_TRUE(profile.setWirelessKey(2, ""));
  EXPECT_EQ(profile.getActiveKey(), 3U);
  EXPECT_TRUE(profile.setWirelessKey(3, ""));
  EXPECT_EQ(profile.getActiveKey(), 3U);  // none is left to move to
  profile.clearWirelessKey();
  EXPECT_EQ(profile.getWirelessKeySize(), 0U);
}

TEST(NetworkProfile, AMemberOfAnotherKindIsTakenForAMissingOne) {
  const NetworkProfile full = fullProfile();
  std::vector<std::string> places = full.getMemberNames();
  for (const std::string& key : full["Wireless Security"].getMemberNames())
    places.push_back("Wireless Security." + key);
  Json::Value kinds;
  ASSERT_TRUE(Veltra::parseJson(R"([null, true, -7, 2.5, "x", [], [{}], {}])", kinds, false));
  NetworkProfile list;
  list = kinds;
  EXPECT_EQ(answersOf(list), answersOf(NetworkProfile()));
  EXPECT_TRUE(list.setUsbWifiSSID("other") && list.getUsbWifiSSID() == "other");
  for (const std::string& place : places) {
    for (const Json::Value& value : kinds) {
      NetworkProfile missing = full, other = full;
      Json::Value& member = Json::Path(place).make(other);
      if (member.type() == value.type()) continue;
      member = value;
      const std::size_t dot = place.find('.');
      (dot == std::string::npos ? missing : missing["Wireless Security"]).removeMember(place.substr(dot + 1));
      EXPECT_EQ(answersOf(other), answersOf(missing)) << place << " " << value.toStyledString();
      EXPECT_TRUE(other.setUsbWifiSSID("other") && other.addDNS("10.0.0.6") && other.setWirelessKey(1, "vwxyz"));
      EXPECT_EQ(other.getDNS(other.getDNSSize() - 1) + other.getWirelessKey(1), "10.0.0.6vwxyz");
      EXPECT_TRUE(other.addCurrentWifiProfile());
      EXPECT_EQ(recentNames(other).substr(0, 6), "other ");
    }
  }
}

TEST(NetworkProfile, ReaddedNetworkMovesToTheFrontAndTheEleventhIsDropped) {
  NetworkProfile profile;
  for (int i = 0; i < 11; ++i) EXPECT_TRUE(profile.addWifiProfile(network("n" + std::to_string(i), 2)));
  EXPECT_EQ(recentNames(profile), "n10 n9 n8 n7 n6 n5 n4 n3 n2 n1 ");
  WifiProfile again = network("n8", 2);
  again.wirelessPassword = "another";
  EXPECT_TRUE(profile.addWifiProfile(again));
  EXPECT_EQ(recentNames(profile), "n8 n10 n9 n7 n6 n5 n4 n3 n2 n1 ");
  WifiProfile found;
  EXPECT_TRUE(profile.getWifiProfile(0, found));
  EXPECT_EQ(found.wirelessPassword, "another");
  EXPECT_TRUE(profile.addWifiProfile(network("n8", 0)));  // another security type is another network
  profile["Recent"][2] = Json::Value();                   // the first empty place takes the entries before it
  EXPECT_TRUE(profile.addWifiProfile(network("new", 0)));
  EXPECT_EQ(recentNames(profile), "new n8 n8 n9 n7 n6 n5 n4 n3 n2 ");
  EXPECT_FALSE(profile.getWifiProfile(10, found));
  EXPECT_EQ(found.ssid, "n8");

  again.wirelessPassword.assign(65536, 'x');
  const std::string before = Dump::compactJson(profile);
  EXPECT_FALSE(profile.addWifiProfile(again));
  EXPECT_EQ(Dump::compactJson(profile), before);
  EXPECT_TRUE(profile.setUsbWifiSSID("now") && profile.setUsbWifiSecurity(2));
  profile.removeAllStoredWifiData();
  EXPECT_EQ(Dump::compactJson(profile), R"({"Recent":[]})");
}

TEST(WifiProfile, SecretsAreWipedAndTextIsNoProfile) {
  WifiProfile full = fullNetwork(UsbWifiSecurity::PERSONAL);
  EXPECT_FALSE(full.fromJson(Json::Value("text")));
  EXPECT_EQ(full.ssid, "net");
  const char* const secret = full.wirelessPassword.data();
  full.wipeSecrets();
  EXPECT_EQ(std::string(secret, 11), std::string(11, '\0'));
}

TEST(NetworkProfile, ConfigStopsAtTheFirstRefusal) {
  for (std::size_t i = 0; i < 7; ++i) {
    WifiProfile w = fullNetwork(UsbWifiSecurity::PERSONAL);
    if (i == 5) w.securityType = 4;
    if (i == 6) w.encryption = 7;
    if (i < 5) {
      *std::array<std::string*, 5>{&w.inetAddr, &w.broadcast, &w.mask, &w.gateway, &w.dns[0]}[i] = i == 1 ? "" : "x";
    }
    NetworkProfile profile;
    EXPECT_FALSE(profile.setConfigFromWifiProfile(w));
    EXPECT_EQ(profile.size(), 2 + i);
    EXPECT_EQ(profile.getWirelessPassword(), "");
  }
  NetworkProfile profile = fullProfile();
  WifiProfile enterprise = network("corp", UsbWifiSecurity::ENTERPRISE);
  enterprise.eap = 10;
  enterprise.user = "never stored";
  EXPECT_FALSE(profile.setConfigFromWifiProfile(enterprise));
  EXPECT_EQ(profile.getUser(), "user");
  EXPECT_EQ(profile.getUsbWifiDNSSize(), 3U);  // with DHCP the servers stay as they were
}

TEST(NetworkProfile, ConfigOfWepNeedsItsActiveKeyStoredBefore) {
  WifiProfile wep = network("net", UsbWifiSecurity::WEP);
  wep.activeKey = 2;
  wep.wepKeys = {"key 1", "key 2", "", ""};
  NetworkProfile profile;
  EXPECT_FALSE(profile.setConfigFromWifiProfile(wep));
  EXPECT_EQ(profile.getWirelessKeySize(), 0U);
  ASSERT_TRUE(profile.setWirelessKey(2, "other"));
  EXPECT_TRUE(profile.setConfigFromWifiProfile(wep));
  EXPECT_EQ(profile.getWirelessKey(1) + profile.getWirelessKey(2), "key 1key 2");
  EXPECT_EQ(profile.getActiveKey(), 1U);  // storing no key 3 and 4 moved it
  wep.wepKeys.push_back("key 5");
  EXPECT_FALSE(profile.setConfigFromWifiProfile(wep));
}

struct NetworkProfileFile : testing::Test {
  const TempDir dir;

  std::string path(const std::string& name) const { return dir.file(name); }
  void write(const std::string& name, const std::string& text) const { writeFile(path(name), text); }
  std::string content(const std::string& name) const { return fileText(path(name)); }
  // Neither saved to nor read from, and the document stays.
  static void expectRefused(const std::string& file, int reason) {
    NetworkProfile profile;
    EXPECT_TRUE(profile.setUsbWifiSSID("kept"));
    EXPECT_FALSE(profile.saveTo(file));
    EXPECT_FALSE(profile.readFrom(file));
    EXPECT_EQ(errno, reason);
    EXPECT_EQ(profile.getUsbWifiSSID(), "kept");
  }
};

TEST_F(NetworkProfileFile, SavesStyledTextThatComesBackWithItsComments) {
  NetworkProfile profile;
  profile.setWifiEnabled();
  EXPECT_TRUE(profile.addDNS("8.8.8.8"));
  EXPECT_TRUE(profile.saveTo(path("profile")));
  EXPECT_EQ(content("profile"), "{\n\t\"DNSList\" : [ \"8.8.8.8\" ],\n\t\"Wifi Interface\" : true\n}\n");
  struct stat status;
  ASSERT_EQ(stat(path("profile").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);

  const std::string commented = "// by hand\n{\n\t\"WiFi SSID\" : \"net\"\n}\n";
  write("profile", commented + std::string(100, ' '));
  EXPECT_TRUE(profile.readFrom(path("profile")));
  EXPECT_FALSE(profile.getWifiEnabled());  // replaced, not merged
  EXPECT_TRUE(profile.saveTo(path("profile")));
  EXPECT_EQ(content("profile"), commented);  // the longer text is gone
}

TEST_F(NetworkProfileFile, UnreadableTextKeepsTheDocument) {
  NetworkProfile profile;
  EXPECT_TRUE(profile.setUsbWifiSSID("kept"));
  const std::string most = "{}" + std::string(4 * 1024 * 1024 - 2, ' ');
  const std::pair<std::string, int> rows[] = {{"", EBADMSG},
                                              {"{\"WiFi SSID\" : \"x\"", EBADMSG},
                                              {std::string(2000, '['), EFBIG},
                                              {std::string(100, '\0'), EBADMSG},
                                              {most + " ", EFBIG}};
  for (const auto& [text, reason] : rows) {
    write("bad", text);
    EXPECT_FALSE(profile.readFrom(path("bad"))) << text.substr(0, 20);
    EXPECT_EQ(errno, reason) << text.substr(0, 20);
    EXPECT_EQ(profile.getUsbWifiSSID(), "kept");
  }
  write("most", most);
  EXPECT_TRUE(profile.readFrom(path("most")));
  EXPECT_EQ(profile.getUsbWifiSSID(), "");
}

// More values than are taken, 30 kB that would be 20 MB, too many levels: none replaces what can be read.
TEST_F(NetworkProfileFile, ADocumentThatCouldNotBeReadAgainIsNotSaved) {
  NetworkProfile profile;
  EXPECT_TRUE(profile.addDNS("8.8.8.8") && profile.saveTo(path("kept")));
  const std::string before = content("kept");
  for (const auto& [levels, values] : {std::pair<std::size_t, std::size_t>(1, 131072), {900, 15000}, {1000, 0}}) {
    EXPECT_TRUE(Veltra::parseJson(nestedJson(levels, values), profile["more"], false));
    EXPECT_FALSE(profile.saveTo(path("kept"))) << levels;
  }
  EXPECT_EQ(content("kept"), before);
}

TEST_F(NetworkProfileFile, FollowsLinksOfTheCallerOnly) {
  NetworkProfile profile;
  fs::create_directory(path("sub"));
  fs::create_symlink("sub/next", path("link"));
  fs::create_symlink("target", path("sub/next"));
  EXPECT_TRUE(profile.saveTo(path("link")));
  EXPECT_TRUE(fs::is_regular_file(path("sub/target")) && fs::is_symlink(path("link")));
  EXPECT_TRUE(profile.readFrom(path("link")));
  fs::create_symlink("loop", path("loop"));
  expectRefused(path("loop"), ELOOP);
  fs::create_symlink(path("sub"), path("folder"));
  expectRefused(path("folder"), EISDIR);

  if (geteuid() != 0) GTEST_SKIP() << "only root can make a link someone else's";
  ASSERT_EQ(lchown(path("sub/next").c_str(), 12345, 12345), 0);
  write("sub/target", "{}");
  expectRefused(path("link"), EACCES);
  EXPECT_EQ(content("sub/target"), "{}");

  // A link of root leads everybody.
  fs::create_symlink("sub/target", path("root's"));
  ASSERT_TRUE(chown(path("sub").c_str(), 12345, 12345) == 0 && chmod(dir.path.c_str(), 0755) == 0);
  ASSERT_EQ(seteuid(12345), 0);
  const bool isClosed = faccessat(AT_FDCWD, path("sub").c_str(), W_OK, AT_EACCESS) != 0;
  const bool isSaved = profile.saveTo(path("root's"));
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_TRUE(isSaved || isClosed);
}

// In a mount of its own, so that no file of the machine is touched.
TEST(NetworkProfile, SavesToTheFixedPath) {
  inChild([] {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", "/tmp", "tmpfs", 0, "size=64k") != 0) {
      return false;
    }
    NetworkProfile profile, back;
    const char* const file = NetworkProfile::FILE_PATH;
    EXPECT_FALSE(back.read());
    EXPECT_TRUE(profile.setUsbWifiSSID("net") && profile.save() && back.read() && fs::exists(file));
    EXPECT_EQ(back.getUsbWifiSSID(), "net");
    // A stranger's file, in a folder that everybody can write to, and in one that only root can.
    EXPECT_TRUE(chown(file, 12345, 0) == 0 && !back.read() && errno == EPERM && back.readFrom(file));
    EXPECT_TRUE(chmod("/tmp", 0755) == 0 && back.read());
    EXPECT_TRUE(chmod("/tmp", 01777) == 0 && profile.save() && back.read());
    return true;
  });
}
