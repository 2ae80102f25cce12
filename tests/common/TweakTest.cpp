#include <libcrossplatform/common/Tweak.h>

#include <limits>
#include <tuple>

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
  const std::pair<TweakStatus, const char*> rows[] = {
      {TWEAK_OK, "offset|2147483647|-2147483648|0"},
      {TWEAK_OUT_OF_RANGE, "offset|2147483648|-99999999999999999999999"},
      {TWEAK_NOT_A_VALUE, "offset||+1| 1|1 |1.0|0x10|99999999999999999999999x"},
      {TWEAK_OK, "averagingDepth|4294967295"},
      {TWEAK_OUT_OF_RANGE, "averagingDepth|4294967296"},
      {TWEAK_NOT_A_VALUE, "averagingDepth|-1"},
      {TWEAK_OK, "threshold|2.5|-0.001|3.4028235e+38|NaN|+inf|-inf"},
      {TWEAK_OUT_OF_RANGE, "threshold|3.5e38|1e-60"},
      {TWEAK_NOT_A_VALUE, "threshold||nan|inf|INFINITY|nan(1)|1,5|1.5dB"},
      {TWEAK_OK, "profile|| two words "},
  };
  for (const auto& [status, row] : rows) {
    const std::vector<std::string> texts = split(row);
    for (std::size_t i = 1; i < texts.size(); ++i) {
      SCOPED_TRACE(texts[0] + " from \"" + texts[i] + '"');
      list.reset();
      const TweakBase* const tweak = list.find(texts[0]);
      EXPECT_EQ(list.set(texts[0], texts[i], message), status);
      EXPECT_EQ(tweak->getValueText(), status == TWEAK_OK ? texts[i] : tweak->getDefaultText());
      EXPECT_EQ(message.empty(), status == TWEAK_OK) << message;
    }
  }
}

TEST_F(Tweaks, RefusalNamesItsCause) {
  const std::tuple<const char*, const char*, TweakStatus, const char*> rows[] = {
      {"offset", "abc", TWEAK_NOT_A_VALUE, "offset: \"abc\" is not a value of type int"},
      {"averagingDepth", "4294967296", TWEAK_OUT_OF_RANGE,
       "averagingDepth: \"4294967296\" is out of range for type unsigned int"},
      {"Offset", "1", TWEAK_UNKNOWN_NAME, "no tweak is named \"Offset\""}};
  for (const auto& [name, text, status, expected] : rows) {
    EXPECT_EQ(list.set(name, text, message), status);
    EXPECT_EQ(message, expected);
  }
  Tweak<float> again("offset", 1.0f, "");
  const CapturedAsserts asserts;
  EXPECT_FALSE(list.add(again)) << "a second one of a name";
  EXPECT_EQ(asserts.reports().size(), 1u);
  EXPECT_TRUE(list.size() == 4 && list.find("offset") == &offset && list.find("Offset") == nullptr);
}
