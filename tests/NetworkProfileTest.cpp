#include <libcrossplatform/common/NetworkProfile.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <libcrossplatform/common/EncryptedString.h>

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

std::string textOf(const NetworkProfile& profile) {
  std::ostringstream out;
  profile.dump(out);
  return out.str();
}

Json::Value& root(NetworkProfile& profile) {
  return profile;
}

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

std::vector<std::string> recentNames(const NetworkProfile& profile) {
  std::vector<std::string> names;
  WifiProfile recent;
  for (std::size_t i = 0; profile.getWifiProfile(i, recent); ++i) names.push_back(recent.ssid);
  return names;
}

}  // namespace

TEST(NetworkProfile, RefusesAddressesNoInterfaceCanHave) {
  const std::string inside("10.0.0.1\0x", 10);
  for (const std::string& text : {std::string(), std::string("10.0.0"), std::string("10.0.0.256"), std::string("host"),
                                  std::string("10.0.0.1 "), std::string("::1"), inside}) {
    EXPECT_TRUE(NetworkProfile::invalidIPv4(text)) << text;
    EXPECT_TRUE(NetworkProfile::invalidMask(text)) << text;
  }
  for (const char* text : {"0.1.2.3", "127.0.0.1", "255.1.1.1", "224.0.0.1", "239.255.255.255", "169.254.1.1"}) {
    EXPECT_TRUE(NetworkProfile::invalidIPv4(text)) << text;
  }
  for (const char* text :
       {"1.0.0.0", "223.255.255.255", "240.1.1.1", "254.255.255.255", "169.253.1.1", "169.255.1.1"}) {
    EXPECT_FALSE(NetworkProfile::invalidIPv4(text)) << text;
  }
  for (const char* text : {"255.255.0.255", "0.0.0.1", "127.255.255.255", "255.0.255.0", "1.0.0.0"}) {
    EXPECT_TRUE(NetworkProfile::invalidMask(text)) << text;
  }
  for (const char* text : {"0.0.0.0", "128.0.0.0", "255.255.254.0", "255.255.255.254", "255.255.255.255"}) {
    EXPECT_FALSE(NetworkProfile::invalidMask(text)) << text;
  }
}

// The wired settings and their USB Wi-Fi twins, with the keys they are stored under.
struct Twin {
  std::string prefix;
  std::string (NetworkProfile::*get[4])() const;
  bool (NetworkProfile::*set[4])(const std::string&);
  bool (NetworkProfile::*getDHCP)() const;
  bool (NetworkProfile::*setDHCP)(bool);
  std::string (NetworkProfile::*getDNS)(std::size_t) const;
  std::size_t (NetworkProfile::*getDNSSize)() const;
  void (NetworkProfile::*clearDNS)();
  bool (NetworkProfile::*addDNS)(const std::string&);
  bool (NetworkProfile::*setDNS)(std::size_t, const std::string&);
};

using NP = NetworkProfile;
const Twin TWINS[] = {
    // clang-format off
    {"", {&NP::getInetAddr, &NP::getMask, &NP::getBroadcast, &NP::getGateway},
     {&NP::setInetAddr, &NP::setMask, &NP::setBroadcast, &NP::setGateway}, &NP::getDHCP, &NP::setDHCP,
     &NP::getDNS, &NP::getDNSSize, &NP::clearDNS, &NP::addDNS, &NP::setDNS},
    {"UsbWifi", {&NP::getUsbWifiInetAddr, &NP::getUsbWifiMask, &NP::getUsbWifiBroadcast, &NP::getUsbWifiGateway},
     {&NP::setUsbWifiInetAddr, &NP::setUsbWifiMask, &NP::setUsbWifiBroadcast, &NP::setUsbWifiGateway},
     &NP::getUsbWifiDHCP, &NP::setUsbWifiDHCP, &NP::getUsbWifiDNS, &NP::getUsbWifiDNSSize, &NP::clearUsbWifiDNS,
     &NP::addUsbWifiDNS, &NP::setUsbWifiDNS},
    // clang-format on
};

TEST(NetworkProfile, AddressesOfBothInterfacesAreCheckedAndStoredUnderTheirKeys) {
  for (const Twin& twin : TWINS) {
    SCOPED_TRACE(twin.prefix);
    const char* const keys[] = {"InetAddr", "Mask", "Broadcast", "Gateway"};
    NetworkProfile profile;
    for (std::size_t i = 0; i < 4; ++i) {
      SCOPED_TRACE(keys[i]);
      const std::string good = i == 1 ? "255.255.255.0" : "10.0.0." + std::to_string(i + 1);
      EXPECT_EQ((profile.*twin.get[i])(), "");
      EXPECT_TRUE((profile.*twin.set[i])(good));
      EXPECT_FALSE((profile.*twin.set[i])(i == 1 ? "10.0.0.1" : "255.255.255.0"));
      EXPECT_EQ((profile.*twin.get[i])(), good);
      EXPECT_EQ(root(profile)[twin.prefix + keys[i]], good);
    }
    EXPECT_FALSE((profile.*twin.getDHCP)());
    EXPECT_TRUE((profile.*twin.setDHCP)(true));
    EXPECT_TRUE((profile.*twin.getDHCP)());
    EXPECT_EQ(root(profile)[twin.prefix + "Use DHCP"], true);
    EXPECT_EQ(profile.size(), 5U);  // nothing went to the other twin
  }
}

TEST(NetworkProfile, KeepsThreeServersOfEachInterface) {
  for (const Twin& twin : TWINS) {
    SCOPED_TRACE(twin.prefix);
    NetworkProfile profile;
    EXPECT_FALSE((profile.*twin.addDNS)("127.0.0.1"));
    EXPECT_FALSE((profile.*twin.setDNS)(0, ""));  // one past the end it is addDNS, which takes no empty text
    EXPECT_FALSE((profile.*twin.setDNS)(1, "8.8.8.8"));
    EXPECT_EQ(profile.size(), 0U);
    EXPECT_TRUE((profile.*twin.setDNS)(0, "8.8.8.1"));
    EXPECT_TRUE((profile.*twin.addDNS)("8.8.8.2"));
    EXPECT_TRUE((profile.*twin.addDNS)("8.8.8.3"));
    EXPECT_FALSE((profile.*twin.addDNS)("8.8.8.4"));
    EXPECT_FALSE((profile.*twin.setDNS)(3, "8.8.8.4"));
    EXPECT_TRUE((profile.*twin.setDNS)(1, ""));
    EXPECT_TRUE((profile.*twin.setDNS)(2, "8.8.8.5"));
    EXPECT_FALSE((profile.*twin.setDNS)(2, "8.8.8"));
    EXPECT_EQ((profile.*twin.getDNSSize)(), 3U);
    EXPECT_EQ((profile.*twin.getDNS)(0), "8.8.8.1");
    EXPECT_EQ((profile.*twin.getDNS)(1), "");
    EXPECT_EQ((profile.*twin.getDNS)(2), "8.8.8.5");
    EXPECT_EQ((profile.*twin.getDNS)(3), "");
    EXPECT_TRUE(profile.isMember(twin.prefix + "DNSList"));
    (profile.*twin.clearDNS)();
    EXPECT_EQ(profile.size(), 0U);
  }
}

TEST(NetworkProfile, OneInterfaceIsInUse) {
  NetworkProfile profile;
  EXPECT_TRUE(profile.getWiredEnabled());
  profile.setWifiEnabled();
  EXPECT_TRUE(profile.getWifiEnabled());
  EXPECT_FALSE(profile.getWiredEnabled());
  profile.setWiredEnabled();
  EXPECT_EQ(root(profile)["Wifi Interface"], false);
}

TEST(NetworkProfile, SecurityTypeMovesTheEncryption) {
  // By security type: what each encryption, in the order of its list, becomes.
  const uint32_t expected[4][7] = {
      {0, 0, 0, 0, 0, 0, 0}, {1, 1, 2, 1, 1, 1, 6}, {3, 3, 3, 3, 4, 5, 3}, {3, 3, 3, 3, 4, 5, 3}};
  for (uint32_t type = 0; type < 4; ++type) {
    for (uint32_t encryption = 0; encryption < 7; ++encryption) {
      NetworkProfile profile;
      ASSERT_TRUE(profile.setEncryption(encryption));
      EXPECT_TRUE(profile.setUsbWifiSecurity(type));
      EXPECT_EQ(profile.getUsbWifiSecurity(), type);
      EXPECT_EQ(root(profile)["Wireless Security"]["Security Type"], UsbWifiSecurity::desc[type]);
      EXPECT_EQ(profile.getEncryption(), expected[type][encryption]) << type << " from " << encryption;
      EXPECT_EQ(profile.anyEap(), type == UsbWifiSecurity::ENTERPRISE);
    }
  }
  NetworkProfile profile;
  for (const uint32_t type : {4U, 0xFFFFFFFFU}) EXPECT_FALSE(profile.setUsbWifiSecurity(type));
  EXPECT_FALSE(profile.setEncryption(7));
  EXPECT_FALSE(profile.setEap(10));
  EXPECT_EQ(profile.size(), 0U);
  EXPECT_TRUE(profile.setEap(Eap::TTLS_EAP_MSCHAP_V2));
  EXPECT_TRUE(profile.setUsbWifiSecurity(UsbWifiSecurity::ENTERPRISE));
  EXPECT_EQ(profile.getEap(), Eap::TTLS_EAP_MSCHAP_V2);
  root(profile)["Wireless Security"]["EAP"] = "peap md5";  // unknown: names are compared exactly
  EXPECT_EQ(profile.getEap(), 0U);
}

TEST(NetworkProfile, WirelessKeyMustFitTheEncryption) {
  struct Row {
    std::string key;
    bool wep64;
    bool wep128;
  };
  const Row rows[] = {{"abcde", true, false},
                      {"abc", false, false},
                      {"0123456789", true, false},
                      {"012345678g", false, false},
                      {"thirteen char", false, true},
                      {"0123456789abcdefABCDEF0123", false, true},
                      {"0123456789abcdefABCDEg0123", false, false}};
  for (const Row& row : rows) {
    for (uint32_t type = 0; type < 7; ++type) {
      EXPECT_EQ(NetworkProfile::validWirelessKey(type, row.key), type == 2 ? row.wep128 : row.wep64) << row.key << type;
    }
  }
  EXPECT_FALSE(NetworkProfile::hexWirelessKey("abcde"));  // hexadecimal digits, but not of a hexadecimal key's length
  NetworkProfile profile;
  profile.setEncryption(Encryption::WEP_128);
  EXPECT_FALSE(profile.setWirelessKey(1, "abcde"));
  EXPECT_EQ(profile.getWirelessKeySize(), 0U);
}

TEST(NetworkProfile, RemovingAnyWirelessKeyActivatesTheLowestLeft) {
  NetworkProfile profile;
  for (const unsigned k : {0U, 5U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(profile.setWirelessKey(k, "abcde"));
    EXPECT_FALSE(profile.setActiveKey(k));
    EXPECT_EQ(profile.getWirelessKey(k), "");
  }
  EXPECT_FALSE(profile.setActiveKey(1));
  EXPECT_TRUE(profile.setWirelessKey(2, "key 2"));
  EXPECT_EQ(profile.getWirelessKeySize(), 4U);
  EXPECT_TRUE(profile.setWirelessKey(4, "key 4"));
  EXPECT_TRUE(profile.setWirelessKey(3, "key 3"));
  EXPECT_EQ(profile.getActiveKey(), 3U);
  EXPECT_FALSE(profile.setActiveKey(1));
  EXPECT_TRUE(profile.setWirelessKey(4, ""));  // not the active one, and yet
  EXPECT_EQ(profile.getActiveKey(), 2U);
  EXPECT_TRUE(root(profile)["Wireless Security"]["Key"][3].isNull());
  EXPECT_TRUE(profile.setWirelessKey(2, ""));
  EXPECT_EQ(profile.getActiveKey(), 3U);
  EXPECT_EQ(profile.getWirelessKey(3), "key 3");
  EXPECT_TRUE(profile.setWirelessKey(3, ""));
  EXPECT_EQ(profile.getActiveKey(), 3U);  // none is left to move to
  profile.clearWirelessKey();
  EXPECT_EQ(profile.getWirelessKeySize(), 0U);
}

TEST(NetworkProfile, CredentialsAreStoredEncrypted) {
  struct Row {
    const char* key;
    std::string (NetworkProfile::*get)() const;
    bool (NetworkProfile::*set)(const std::string&);
  };
  const Row rows[] = {{"Wireless Password", &NP::getWirelessPassword, &NP::setWirelessPassword},
                      {"User", &NP::getUser, &NP::setUser},
                      {"Password", &NP::getPassword, &NP::setPassword},
                      {"ID", &NP::getSecurityId, &NP::setSecurityId}};
  NetworkProfile profile;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.key);
    EXPECT_EQ((profile.*row.get)(), "");
    EXPECT_TRUE((profile.*row.set)("hidden"));
    Json::Value& stored = root(profile)["Wireless Security"][row.key];
    EXPECT_EQ(EncryptedString::Decrypt(stored.asString()), "hidden");
    EXPECT_FALSE((profile.*row.set)(std::string(65536, 'x')));
    EXPECT_EQ((profile.*row.get)(), "hidden");
    stored = std::string(64, 'A');
    EXPECT_EQ((profile.*row.get)(), "");
  }
  const Bytes certificate = {0, 1, 0xFF};
  EXPECT_TRUE(profile.setCertificate(certificate));
  EXPECT_EQ(profile.getCertificate(), certificate);
  EXPECT_TRUE(profile.setCertificateKey(std::string("pem")));
  EXPECT_EQ(profile.getCertificateKey(), (Bytes{'p', 'e', 'm'}));
  root(profile)["Wireless Security"]["Certificate"] = "no blob";
  EXPECT_TRUE(profile.getCertificate().empty());
  EXPECT_TRUE(profile.setCertificateName("client") && profile.setAlternateId(true));
  EXPECT_EQ(profile.getCertificateName(), "client");
  EXPECT_TRUE(profile.getAlternateId());
}

// Every getter, as one text.
std::string allGetters(const NetworkProfile& p) {
  std::ostringstream out;
  for (const auto get :
       {&NP::getInetAddr, &NP::getMask, &NP::getBroadcast, &NP::getGateway, &NP::getUsbWifiInetAddr,
        &NP::getUsbWifiMask, &NP::getUsbWifiBroadcast, &NP::getUsbWifiGateway, &NP::getUsbWifiSSID,
        &NP::getWirelessPassword, &NP::getUser, &NP::getPassword, &NP::getSecurityId, &NP::getCertificateName}) {
    out << (p.*get)() << '|';
  }
  for (const auto get : {&NP::getWifiEnabled, &NP::getDHCP, &NP::getUsbWifiDHCP, &NP::getAlternateId}) {
    out << (p.*get)() << '|';
  }
  for (unsigned i = 0; i < 6; ++i) out << p.getDNS(i) << '|' << p.getUsbWifiDNS(i) << '|' << p.getWirelessKey(i) << '|';
  out << p.getDNSSize() << p.getUsbWifiDNSSize() << p.getWirelessKeySize() << p.getActiveKey() << p.getEncryption()
      << p.getUsbWifiSecurity() << p.getEap() << p.getCertificate().size() << p.getCertificateKey().size()
      << p.recentIsEmpty();
  WifiProfile recent;
  for (unsigned i = 0; i < 3; ++i) out << p.getWifiProfile(i, recent);
  return out.str();
}

void useEverySetter(NetworkProfile& p) {
  p.setWifiEnabled();
  p.setInetAddr("10.0.0.1");
  p.addDNS("10.0.0.2");
  p.clearUsbWifiDNS();
  p.setUsbWifiSSID("net");
  p.setUsbWifiSecurity(UsbWifiSecurity::ENTERPRISE);
  p.setUser("user");
  p.setWirelessKey(1, "abcde");
  p.setCertificate(Bytes{1});
  p.addCurrentWifiProfile();
  EXPECT_EQ(p.getInetAddr() + p.getDNS(p.getDNSSize() - 1) + p.getUsbWifiSSID() + p.getUser() + p.getWirelessKey(1),
            "10.0.0.110.0.0.2netuserabcde");
  EXPECT_EQ(recentNames(p).at(0), "net");
  p.clearWirelessKey();
  p.removeAllStoredWifiData();
  EXPECT_TRUE(p.recentIsEmpty());
}

TEST(NetworkProfile, AnyMemberMayHoldAnyKindOfJson) {
  Json::Value list(Json::arrayValue);
  list.append(1);
  list.append(Json::Value(Json::objectValue));
  Json::Value object(Json::objectValue);
  object["Key"] = 5;
  object["WiFi SSID"] = list;
  object["Wireless Security"] = list;
  const Json::Value kinds[] = {Json::Value(),
                               Json::Value(-1),
                               Json::Value(Json::UInt64{1} << 40),
                               Json::Value(1e300),
                               Json::Value(true),
                               Json::Value("text"),
                               list,
                               object};
  const std::string empty = allGetters(NetworkProfile());
  // The keys by the one kind that is read; those after the bar are members of the security object.
  const std::pair<Json::ValueType, const char*> keysByKind[] = {
      {Json::booleanValue, "Wifi Interface,Use DHCP,UsbWifiUse DHCP|Alternate Id"},
      {Json::stringValue,
       "InetAddr,Mask,Broadcast,Gateway,UsbWifiInetAddr,UsbWifiMask,UsbWifiBroadcast,UsbWifiGateway,WiFi SSID|"
       "Security Type,Encryption,EAP,Wireless Password,User,Password,ID,Certificate,Certificate Key,Certificate Name"},
      {Json::arrayValue, "DNSList,UsbWifiDNSList,Recent|Key"},
      {Json::objectValue, "Wireless Security"},
      {Json::uintValue, "|Active Key"}};
  for (const Json::Value& kind : kinds) {
    SCOPED_TRACE(kind.toStyledString());
    NetworkProfile whole;
    whole = kind;
    EXPECT_EQ(allGetters(whole), empty);
    useEverySetter(whole);
    for (const auto& [expected, keys] : keysByKind) {
      const std::string all = keys;
      for (std::size_t at = 0; at < all.size();) {
        const std::size_t end = std::min(all.find_first_of(",|", at), all.size());
        const std::string key = all.substr(at, end - at);
        SCOPED_TRACE(key);
        NetworkProfile profile;
        (all.rfind('|', at) != std::string::npos ? root(profile)["Wireless Security"] : root(profile))[key] = kind;
        const std::string read = allGetters(profile);
        EXPECT_TRUE(read == empty || kind.type() == expected) << read;
        WifiProfile recent;
        EXPECT_TRUE(recent.fromJson(profile));
        useEverySetter(profile);
        at = end + 1;
      }
    }
  }
}

TEST(NetworkProfile, ReaddedNetworkMovesToTheFrontAndTheEleventhIsDropped) {
  NetworkProfile profile;
  EXPECT_TRUE(profile.recentIsEmpty());
  for (int i = 0; i < 11; ++i) EXPECT_TRUE(profile.addWifiProfile(network("n" + std::to_string(i), 2)));
  EXPECT_EQ(recentNames(profile),
            (std::vector<std::string>{"n10", "n9", "n8", "n7", "n6", "n5", "n4", "n3", "n2", "n1"}));
  WifiProfile again = network("n8", 2);
  again.wirelessPassword = "another";
  profile.addWifiProfile(again);
  EXPECT_EQ(recentNames(profile),
            (std::vector<std::string>{"n8", "n10", "n9", "n7", "n6", "n5", "n4", "n3", "n2", "n1"}));
  WifiProfile first;
  EXPECT_TRUE(profile.getWifiProfile(0, first));
  EXPECT_EQ(first.wirelessPassword, "another");
  profile.addWifiProfile(network("n8", 0));  // another security type is another network
  EXPECT_EQ(recentNames(profile)[1], "n8");
  EXPECT_EQ(recentNames(profile).size(), 10U);

  root(profile)["Recent"][2] = Json::Value();  // the first empty place takes the entries before it
  profile.addWifiProfile(network("new", 0));
  EXPECT_EQ(recentNames(profile),
            (std::vector<std::string>{"new", "n8", "n8", "n9", "n7", "n6", "n5", "n4", "n3", "n2"}));
  first.ssid = "kept";
  EXPECT_FALSE(profile.getWifiProfile(10, first));
  EXPECT_EQ(first.ssid, "kept");

  again.wirelessPassword.assign(65536, 'x');
  const std::string before = textOf(profile);
  EXPECT_FALSE(profile.addWifiProfile(again));
  EXPECT_EQ(textOf(profile), before);

  profile.setUsbWifiSSID("now");
  profile.setUsbWifiSecurity(2);
  profile.removeAllStoredWifiData();
  EXPECT_EQ(textOf(profile), "{\n\t\"Recent\" : []\n}\n");
}

TEST(WifiProfile, StoredFormHoldsWhatTheSecurityTypeNeeds) {
  WifiProfile full = fullNetwork(UsbWifiSecurity::OPEN);
  full.broadcast = "";
  using Names = std::vector<std::string>;
  const Names byType[] = {{"Encryption", "Security Type"},
                          {"Active Key", "Encryption", "Key", "Security Type"},
                          {"Encryption", "Security Type", "Wireless Password"},
                          {"Alternate Id", "EAP", "Encryption", "ID", "Password", "Security Type", "User"}};
  for (uint32_t type = 0; type < 4; ++type) {
    SCOPED_TRACE(type);
    full.securityType = type;
    EXPECT_EQ(full.toJson()["Wireless Security"].getMemberNames(), byType[type]);
    WifiProfile back = network("other", 3);
    EXPECT_TRUE(back.fromJson(full.toJson()));
    EXPECT_EQ(back.toJson().getMemberNames(), full.toJson().getMemberNames());
    EXPECT_EQ(back.wepKeys, type == 1 ? Names({"", "abcde", "", ""}) : Names());
    EXPECT_EQ(back.activeKey, type == 1 ? 2U : 0U);
    EXPECT_EQ(back.wirelessPassword, type == 2 ? "pass phrase" : "");
    EXPECT_EQ(back.user + back.password + back.securityId, type == 3 ? "userpasswordouter" : "");
    EXPECT_EQ(back.eap, type == 3 ? 3U : 0U);
    EXPECT_EQ(back.alternateId, type == 3);
    EXPECT_TRUE(back == full);
  }
  EXPECT_EQ(full.toJson().getMemberNames(), (Names{"UsbWifiDNSList", "UsbWifiGateway", "UsbWifiInetAddr", "UsbWifiMask",
                                                   "UsbWifiUse DHCP", "WiFi SSID", "Wireless Security"}));
  full.broadcast = "10.255.255.255";
  EXPECT_TRUE(full.toJson().isMember("UsbWifiBroadcast"));
  full.useDhcp = true;
  EXPECT_EQ(full.toJson().getMemberNames(),
            (Names{"UsbWifiDNSList", "UsbWifiUse DHCP", "WiFi SSID", "Wireless Security"}));
  EXPECT_FALSE(full.fromJson(Json::Value("text")));
  EXPECT_EQ(full.ssid, "net");

  const char* const secret = full.wirelessPassword.data();
  full.wipeSecrets();
  EXPECT_EQ(std::string(secret, 11), std::string(11, '\0'));
}

TEST(NetworkProfile, CurrentSettingsBecomeARecentNetworkAndBack) {
  NetworkProfile profile;
  EXPECT_TRUE(profile.setConfigFromWifiProfile(fullNetwork(UsbWifiSecurity::ENTERPRISE)));
  EXPECT_TRUE(profile.addCurrentWifiProfile());
  EXPECT_EQ(textOf(profile).find("\"user\""), std::string::npos);
  const std::string before = allGetters(profile);
  WifiProfile recent;
  ASSERT_TRUE(profile.getWifiProfile(0, recent));
  profile.removeMember("Wireless Security");
  profile.addUsbWifiDNS("8.8.8.7");
  profile.setUsbWifiInetAddr("10.0.0.2");
  EXPECT_TRUE(profile.setConfigFromWifiProfile(recent));
  EXPECT_EQ(allGetters(profile), before);
}

TEST(NetworkProfile, ConfigStopsAtTheFirstRefusal) {
  WifiProfile wanted = fullNetwork(UsbWifiSecurity::PERSONAL);
  wanted.encryption = Encryption::NONE;
  // What is wrong, and how many members are stored before it is met.
  struct Row {
    const char* name;
    std::function<void(WifiProfile&)> spoil;
    unsigned stored;
  };
  const Row rows[] = {{"address", [](WifiProfile& p) { p.inetAddr = "x"; }, 2},
                      {"broadcast left empty", [](WifiProfile& p) { p.broadcast = ""; }, 3},
                      {"mask", [](WifiProfile& p) { p.mask = "x"; }, 4},
                      {"gateway", [](WifiProfile& p) { p.gateway = "x"; }, 5},
                      {"server", [](WifiProfile& p) { p.dns = {"x"}; }, 6},
                      {"security type", [](WifiProfile& p) { p.securityType = 4; }, 7}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    WifiProfile spoilt = wanted;
    row.spoil(spoilt);
    NetworkProfile profile;
    EXPECT_FALSE(profile.setConfigFromWifiProfile(spoilt));
    EXPECT_EQ(profile.size(), row.stored);
  }
  NetworkProfile profile;
  EXPECT_TRUE(profile.setConfigFromWifiProfile(wanted));
  EXPECT_EQ(profile.getEncryption(), Encryption::NONE);  // the network's own, after the security type moved it
  wanted.encryption = 7;
  EXPECT_FALSE(profile.setConfigFromWifiProfile(wanted));
  wanted = network("corp", UsbWifiSecurity::ENTERPRISE);
  wanted.eap = 10;
  wanted.user = "never stored";
  EXPECT_FALSE(profile.setConfigFromWifiProfile(wanted));
  EXPECT_EQ(profile.getUser(), "");
  EXPECT_EQ(profile.getUsbWifiDNSSize(), 1U);  // with DHCP the servers stay as they were
  EXPECT_TRUE(profile.setConfigFromWifiProfile(network("open", UsbWifiSecurity::OPEN)));
}

TEST(NetworkProfile, ConfigOfWepNeedsItsActiveKeyStoredBefore) {
  WifiProfile wep = network("net", UsbWifiSecurity::WEP);
  wep.encryption = Encryption::WEP_64;
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
  wep.activeKey = 1;
  EXPECT_FALSE(profile.setConfigFromWifiProfile(wep));
}

class NetworkProfileFile : public testing::Test {
 protected:
  NetworkProfileFile() {
    std::string pattern = testing::TempDir() + "/netprofileXXXXXX";
    m_folder = mkdtemp(pattern.data());
  }
  ~NetworkProfileFile() override { fs::remove_all(m_folder); }

  std::string path(const std::string& name) const { return m_folder / name; }
  static void write(const std::string& file, const std::string& text) { std::ofstream(file) << text; }
  static std::string content(const std::string& file) {
    std::ostringstream out;
    out << std::ifstream(file).rdbuf();
    return out.str();
  }
  // Neither saved to nor read from, and the document stays.
  static void expectRefused(const std::string& file) {
    NetworkProfile profile;
    profile.setUsbWifiSSID("kept");
    EXPECT_FALSE(profile.saveTo(file));
    EXPECT_FALSE(profile.readFrom(file));
    EXPECT_EQ(profile.getUsbWifiSSID(), "kept");
  }

  fs::path m_folder;
};

TEST_F(NetworkProfileFile, SavesStyledTextThatComesBackWithItsComments) {
  NetworkProfile profile;
  profile.setWifiEnabled();
  profile.addDNS("8.8.8.8");
  const std::string file = path("profile");
  EXPECT_TRUE(profile.saveTo(file));
  EXPECT_EQ(content(file), "{\n\t\"DNSList\" : [ \"8.8.8.8\" ],\n\t\"Wifi Interface\" : true\n}\n");
  struct stat status;
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U & ~umask(umask(0)));

  write(file, "// by hand\n{\n\t\"WiFi SSID\" : \"net\"\n}\n" + std::string(100, ' '));
  EXPECT_TRUE(profile.readFrom(file));
  EXPECT_EQ(profile.getUsbWifiSSID(), "net");
  EXPECT_FALSE(profile.getWifiEnabled());  // replaced, not merged
  EXPECT_TRUE(profile.saveTo(file));
  EXPECT_EQ(content(file), "// by hand\n{\n\t\"WiFi SSID\" : \"net\"\n}\n");  // the longer text is gone
}

TEST_F(NetworkProfileFile, UnreadableTextKeepsTheDocument) {
  NetworkProfile profile;
  profile.setUsbWifiSSID("kept");
  EXPECT_FALSE(profile.readFrom(path("missing")));
  const std::string most = "{}" + std::string(4 * 1024 * 1024 - 2, ' ');
  for (const std::string& text : {std::string(), std::string("{\"WiFi SSID\" : \"x\""), std::string(2000, '['),
                                  std::string(100, '\0'), most + " "}) {
    write(path("bad"), text);
    EXPECT_FALSE(profile.readFrom(path("bad"))) << text.substr(0, 20);
    EXPECT_EQ(profile.getUsbWifiSSID(), "kept");
  }
  write(path("most"), most);
  EXPECT_TRUE(profile.readFrom(path("most")));
  EXPECT_EQ(profile.getUsbWifiSSID(), "");
}

// 30 kB that would be 14 MB: what could not be read again is not saved, and does not replace what can.
TEST_F(NetworkProfileFile, ADocumentThatItsIndentationMakesTooLargeIsNotSaved) {
  constexpr std::size_t DEEP = 900;
  std::string text = "{ \"x\" : " + std::string(DEEP, '[');
  for (int i = 0; i < 15000; ++i) text += "1,";
  write(path("deep"), text + "1" + std::string(DEEP, ']') + "}");
  write(path("kept"), "{}");
  NetworkProfile profile;
  ASSERT_TRUE(profile.readFrom(path("deep")));
  EXPECT_FALSE(profile.saveTo(path("kept")));
  EXPECT_EQ(content(path("kept")), "{}");
}

TEST_F(NetworkProfileFile, RefusesWhatIsNoFileWithoutBlocking) {
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  expectRefused(path("fifo"));
  expectRefused(m_folder);
  expectRefused("/dev/null");
  expectRefused("/dev/full");
  expectRefused(path("no/such/folder"));
  expectRefused("");
}

TEST_F(NetworkProfileFile, FollowsLinksOfTheCallerOnly) {
  NetworkProfile profile;
  fs::create_directory(m_folder / "sub");
  fs::create_symlink("sub/next", path("link"));
  fs::create_symlink("target", path("sub/next"));
  EXPECT_TRUE(profile.saveTo(path("link")));
  EXPECT_TRUE(fs::is_regular_file(path("sub/target")) && fs::is_symlink(path("link")));
  EXPECT_TRUE(profile.readFrom(path("link")));
  fs::create_symlink("loop", path("loop"));
  expectRefused(path("loop"));
  fs::create_symlink(path("sub"), path("folder"));
  expectRefused(path("folder"));

  if (geteuid() != 0) GTEST_SKIP() << "only root can make a link someone else's";
  ASSERT_EQ(lchown(path("sub/next").c_str(), 12345, 12345), 0);
  write(path("sub/target"), "{}");
  expectRefused(path("link"));
  EXPECT_EQ(content(path("sub/target")), "{}");
}

// A limit on file size fails the write as a full disk does.
TEST_F(NetworkProfileFile, FullDiskFailsTheSave) {
  NetworkProfile profile;
  profile.setUsbWifiSSID(std::string(1000, 'x'));
  rlimit old;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{512, old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const bool saved = profile.saveTo(path("full"));
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(saved);
}

// The sanitizers see no race on a file: a torn one shows in what is read.
TEST_F(NetworkProfileFile, ThreadsNeverReadHalfAFile) {
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 50;
  const std::string file = path("shared");
  const auto nameOf = [](int t) { return std::string(static_cast<std::size_t>(1000 + 20000 * t), char('a' + t)); };
  std::atomic<int> faults{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < THREADS; ++t) {
    threads.emplace_back([&, t] {
      NetworkProfile profile;
      for (int i = 0; i < ROUNDS; ++i) {
        profile.setCertificateName(nameOf(t));
        if (!profile.saveTo(file) || !profile.readFrom(file)) ++faults;
        const std::string name = profile.getCertificateName();
        if (name.empty() || name != nameOf(name[0] - 'a')) ++faults;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, 0);
}

// In a mount of its own, so that no file of the machine is touched, and in a child, so that no test after it sees the
// mount.
TEST(NetworkProfile, SavesToTheFixedPath) {
  constexpr int NOT_ALLOWED = 77;
  const pid_t child = fork();
  if (child == 0) {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", "/tmp", "tmpfs", 0, "size=64k") != 0) {
      std::_Exit(NOT_ALLOWED);
    }
    NetworkProfile profile;
    NetworkProfile back;
    const bool missing = !back.read();
    profile.setUsbWifiSSID("net");
    const bool stored =
        profile.save() && back.read() && back.getUsbWifiSSID() == "net" && fs::exists("/tmp/netprofile.dat");
    std::_Exit(missing && stored ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == NOT_ALLOWED) GTEST_SKIP() << "no private mount of /tmp here";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}
