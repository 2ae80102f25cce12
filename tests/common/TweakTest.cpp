#include <libcrossplatform/common/Tweak.h>

#include <cmath>
#include <limits>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

/// A tweak of each type, all in one list.
struct Tweaks : testing::Test {
  Tweak<int> offset{"offset", -5, "shift of the trace in samples"};
  Tweak<unsigned int> depth{"averagingDepth", 4000000000u, "sweeps that are averaged"};
  Tweak<float> threshold{"threshold", 0.1f, "smallest loss of an event in dB"};
  Tweak<std::string> profile{"profile", "field", "profile the analysis starts from"};
  TweakList list;
  std::string message;

  void SetUp() override {
    for (TweakBase* tweak : all()) EXPECT_TRUE(list.add(*tweak));
  }
  std::vector<TweakBase*> all() { return {&offset, &depth, &threshold, &profile}; }
};

}  // namespace

TEST_F(Tweaks, Wire) {
  Bytes all4;
  for (TweakBase* tweak : all()) {
    const Bytes bytes = bytesOf(*tweak);
    all4.insert(all4.end(), bytes.begin(), bytes.end());
  }
  expectGoldenBytes(all4, "tweak_values");
  offset.set(std::numeric_limits<int>::min());
  depth.set(3000000000u);
  threshold.set(-INFINITY);
  profile.set(std::string("a\0b", 3));
  for (TweakBase* tweak : all()) {
    const std::string text = tweak->getValueText();
    const Bytes bytes = bytesOf(*tweak);
    tweak->reset();
    EXPECT_EQ(readFrom(*tweak, Bytes(bytes.begin(), bytes.end() - 1)), -3);
    EXPECT_EQ(tweak->getValueText(), tweak->getDefaultText()) << "unchanged by a failed read";
    EXPECT_EQ(readFrom(*tweak, bytes), 0);
    EXPECT_EQ(tweak->getValueText(), text);
  }
}

TEST_F(Tweaks, ListTellsAllOfEachSortedByName) {
  EXPECT_EQ(list.set("offset", "7", message), TWEAK_OK);
  std::string text;
  for (const TweakInfo& t : list.list()) {
    text += t.name + "|" + t.type + "|" + t.value + "|" + t.defaultValue + "|" + t.help + "\n";
  }
  EXPECT_EQ(text,
            "averagingDepth|unsigned int|4000000000|4000000000|sweeps that are averaged\n"
            "offset|int|7|-5|shift of the trace in samples\n"
            "profile|string|field|field|profile the analysis starts from\n"
            "threshold|float|0.1|0.1|smallest loss of an event in dB\n");
  EXPECT_EQ(dumpOf(offset), "offset: 7\n");
  EXPECT_EQ(offset.get(), 7);
}

// The status, the value after it and the message of each text, which is taken whole or not at all.
TEST_F(Tweaks, TakeTheTextsOfTheTable) {
  std::string table;
  for (const char* const row :
       {"offset|2147483647|-2147483648|0|2147483648|-99999999999999999999999|abc||+1| 1|1 |1.0|0x10|"
        "99999999999999999999999x",
        "averagingDepth|4294967295|4294967296|-1",
        "threshold|2.5|-0.001|3.4028235e+38|NaN|+inf|-inf|3.5e38|1e-60||nan|inf|INFINITY|nan(1)|1,5|1.5dB",
        "profile|| two words ", "Offset|1"}) {
    const std::vector<std::string> texts = split(row);
    for (std::size_t i = 1; i < texts.size(); ++i) {
      list.reset();
      const TweakBase* const tweak = list.find(texts[0]);
      const TweakStatus status = list.set(texts[0], texts[i], message);
      table +=
          std::to_string(status) + " \"" + (tweak != nullptr ? tweak->getValueText() : "") + "\" " + message + "\n";
    }
  }
  expectGoldenText(table, "tweak_texts");
}

TEST_F(Tweaks, ASecondOneOfANameIsNotAdded) {
  Tweak<float> again("offset", 1.0f, "");
  const CapturedAsserts asserts;
  EXPECT_FALSE(list.add(again));
  EXPECT_EQ(asserts.reports().size(), 1u);
  EXPECT_TRUE(list.size() == 4 && list.find("offset") == &offset);
}
