#include <libcrossplatform/common/Tweak.h>

#include <limits>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr float INFINITE = std::numeric_limits<float>::infinity();

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
  threshold.set(-INFINITE);
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

TEST_F(Tweaks, WholeTextMustBeAValueOfTheType) {
  struct Row {
    const char* name;
    TweakStatus status;
    std::vector<std::string> texts;
  };
  const Row rows[] = {
      {"offset", TWEAK_OK, {"2147483647", "-2147483648", "0"}},
      {"offset", TWEAK_OUT_OF_RANGE, {"2147483648", "-99999999999999999999999"}},
      {"offset", TWEAK_NOT_A_VALUE, {"", "+1", " 1", "1 ", "1.0", "0x10", "99999999999999999999999x"}},
      {"averagingDepth", TWEAK_OK, {"4294967295"}},
      {"averagingDepth", TWEAK_OUT_OF_RANGE, {"4294967296"}},
      {"averagingDepth", TWEAK_NOT_A_VALUE, {"-1"}},
      {"threshold", TWEAK_OK, {"2.5", "-0.001", "3.4028235e+38", "NaN", "+inf", "-inf"}},
      {"threshold", TWEAK_OUT_OF_RANGE, {"3.5e38", "1e-60"}},
      {"threshold", TWEAK_NOT_A_VALUE, {"", "nan", "inf", "INFINITY", "nan(1)", "1,5", "1.5dB"}},
      {"profile", TWEAK_OK, {"", " two words "}},
  };
  for (const Row& row : rows) {
    for (const std::string& text : row.texts) {
      SCOPED_TRACE(std::string(row.name) + " from \"" + text + '"');
      list.reset();
      const TweakBase* const tweak = list.find(row.name);
      EXPECT_EQ(list.set(row.name, text, message), row.status);
      EXPECT_EQ(tweak->getValueText(), row.status == TWEAK_OK ? text : tweak->getDefaultText());
      EXPECT_EQ(message.empty(), row.status == TWEAK_OK) << message;
    }
  }
}

TEST_F(Tweaks, RefusalNamesItsCause) {
  EXPECT_EQ(list.set("offset", "abc", message), TWEAK_NOT_A_VALUE);
  EXPECT_EQ(message, "offset: \"abc\" is not a value of type int");
  EXPECT_EQ(list.set("averagingDepth", "4294967296", message), TWEAK_OUT_OF_RANGE);
  EXPECT_EQ(message, "averagingDepth: \"4294967296\" is out of range for type unsigned int");
  EXPECT_EQ(list.set("Offset", "1", message), TWEAK_UNKNOWN_NAME);
  EXPECT_EQ(message, "no tweak is named \"Offset\"");
  EXPECT_EQ(list.find("Offset"), nullptr);
}

TEST_F(Tweaks, SecondTweakOfANameIsRefused) {
  Tweak<float> again("offset", 1.0f, "");
  const CapturedAsserts asserts;
  EXPECT_FALSE(list.add(again));
  EXPECT_EQ(asserts.reports().size(), 1u);
  EXPECT_EQ(list.size(), 4u);
  EXPECT_EQ(list.find("offset"), &offset);
}
