#include <libcrossplatform/common/LinkAdapters.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

using namespace Veltra;

namespace {

// Ids and keys in the order of search.
constexpr char IN_ORDER[] =
    "400 pla2g 401 cha2g 404 plaGG452g 405 chaGG452g 406 plaTERA2g 407 plaTERA2g 408 setref2g 414 coax2g "
    "409 labsma2g 415 labmain2g 416 labrem2g 417 shorty2g 410 chaSPE-LC 411 chaSPE-IP20 200 pla "
    "201 obsolete 203 legacy 202 cha 224 chaIX 204 plaGG45 205 chaGG45 223 chaGG45A 206 plaTERA "
    "207 chaTERA 208 setref 209 labsma 210 lab 211 ec7 212 m12w4 213 m12w8 214 coax 215 labmain "
    "221 lab2main 216 labrem 222 lab2rem 217 shorty 218 pc5e 219 pc6 220 pc6a 225 mptl5e 226 mptl6 "
    "227 mptl6a 301 nxgain2g 302 cmload2g 303 cmshort2g 304 open2g 305 cmdm2g 306 tclun2g 307 resist2g "
    "308 seload2g 101 nxgain 102 cmload 103 cmshort 104 open 105 cmdm 106 tclun 107 resist 109 load "
    "110 short 311 rlverif2g 312 nextverif2g 313 ilverifmain2g 320 ilverifrem2g 314 cdnextverif2g "
    "315 tclverif2g 316 loopres2g 317 resunbal2g 318 slrlmain2g 319 slrlrem2g 321 outputbalA2g "
    "322 outputbalB2g 111 rlverif 112 nextverif 113 ilverifmain 120 ilverifrem 114 cdnextverif "
    "115 tclverif 116 loopres 117 resunbal 118 slrlmain 119 slrlrem 1 unknown";

}  // namespace

TEST(LinkAdapters, TableInSearchOrder) {
  std::istringstream list(IN_ORDER);
  std::map<int, int> ratings;
  std::map<uint32_t, int> kinds;
  for (const LinkAdapter& adapter : linkAdapters()) {
    int id = 0;
    std::string key;
    ASSERT_TRUE(list >> id >> key);
    SCOPED_TRACE(key);
    EXPECT_EQ(adapter.id, id);
    EXPECT_EQ(adapter.key, key);
    const bool unnamed = id == 201 || id == 1;
    EXPECT_EQ(*adapter.displayName == '\0', unnamed);
    EXPECT_EQ(adapter.partNumber == nullptr, unnamed);
    if (!unnamed) {
      EXPECT_EQ(adapter.partNumber, "VLA-" + std::to_string(id));
      EXPECT_EQ(findLinkAdapterByPartNumber(adapter.partNumber), &adapter);
    }
    EXPECT_EQ(findLinkAdapter(id), &adapter);
    // All adapters from id 300 on are made for 2 GHz.
    EXPECT_EQ(adapter.ratingMHz == 2500, id >= 300);
    ++ratings[adapter.ratingMHz];
    ++kinds[adapter.flags];
  }
  EXPECT_EQ(linkAdapters().size(), 82u);
  EXPECT_EQ(ratings, (std::map<int, int>{{2500, 34}, {1200, 33}, {500, 9}, {250, 3}, {100, 3}}));
  EXPECT_EQ(kinds,
            (std::map<uint32_t, int>{{0, 1}, {1, 6}, {2, 13}, {4, 3}, {8, 3}, {16, 2}, {32, 52}, {64, 1}, {65, 1}}));
}

TEST(LinkAdapters, Row407HasTheKeyOf406) {
  ASSERT_NE(findLinkAdapter(407), nullptr);
  EXPECT_STREQ(findLinkAdapter(407)->key, findLinkAdapter(406)->key);
  EXPECT_STREQ(findLinkAdapter(407)->displayName, "TERA Class II Channel");
}

TEST(LinkAdapters, NoTextAndNoIdOutsideTheTableIsFound) {
  for (const char* text : {"", "VLA-", "VLA-201", "VLA-1", "vla-400", "VLA-400 ", "pla2g"}) {
    EXPECT_EQ(findLinkAdapterByPartNumber(text), nullptr) << text;
  }
  int found = 0;
  for (int id = -1000; id <= 1000; ++id) found += findLinkAdapter(id) != nullptr ? 1 : 0;
  EXPECT_EQ(found, 82);
}
