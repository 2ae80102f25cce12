#include <libcrossplatform/common/CIDNumber.h>
#include <libcrossplatform/common/CIDPattern.h>
#include <libcrossplatform/common/CableIDSeq.h>

#include <algorithm>
#include <array>
#include <random>

#include "RecordTesting.h"

namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

std::string repeated(int n, const std::string& text) {
  std::string result;
  while (n-- > 0) result += text;
  return result;
}

CableIDSeq sequenceOf(const std::string& first, const std::string& last, const Strings& taken = {}) {
  CableIDSeq sequence;
  EXPECT_TRUE(sequence.verifyIDSet(first, last));
  for (const std::string& id : taken) EXPECT_TRUE(sequence.pruneID(id)) << id;
  return sequence;
}

}  // namespace

// Most of the rules that refuse a pair are in tests/cli/ids.sh. Here: the most IDs and one radix over the limit, no
// position at all, a field that falls although its last digit rises, two more than 32 bits hold, and lengths in
// characters, of which stray continuation bytes are none.
TEST(CIDPattern, CountsTheSetsOfTheTable) {
  std::string table;
  const std::pair<std::string, std::string> sets[] = {{"A0", "Z9"},
                                                      {"00000", "32766"},
                                                      {"00000", "32767"},
                                                      {"", ""},
                                                      {"10", "09"},
                                                      {"0000000000", "4294967298"},
                                                      {repeated(60, "0"), repeated(59, "0") + "9"},
                                                      {repeated(61, "0"), repeated(60, "0") + "9"},
                                                      {repeated(59, "\u20ac") + "1", repeated(59, "\u20ac") + "2"},
                                                      {repeated(60, "\u20ac") + "1", repeated(60, "\u20ac") + "2"},
                                                      {repeated(99, "\x80") + "a", repeated(99, "\x80") + "c"}};
  for (const auto& [first, last] : sets) {
    CableIDSeq sequence = sequenceOf("a", "b", {"a"});
    table += sequence.verifyIDSet(first, last) ? "taken: " : "refused: ";
    EXPECT_TRUE(sequence.getLastID().empty() || sequence.getLastID() == last);
    table += std::to_string(sequence.getTotal()) + " to " + testing::PrintToString(sequence.getLastID()) +
             (sequence == CableIDSeq() ? ", cleared\n" : "\n");
  }
  RecordTesting::expectGoldenText(table, "cable_id_sets");
}

TEST(CIDPattern, OffsetsEndBeforeTheFault) {
  CIDPattern pattern;
  ASSERT_TRUE(pattern.compile("B-0000000000-b"));
  std::string table;
  const auto add = [&](const std::string& id) {
    std::array<uint32_t, 200> offsets{};
    int n = -1;  // of another length it stays: not even started
    const bool fits = pattern.computeDelta(id, offsets.data(), n);
    table += id + (fits ? " fits " : " fails ") + std::to_string(n) + ":";
    for (int i = 0; i < n; ++i) table += " " + std::to_string(offsets[static_cast<size_t>(i)]);
    table += "\n";
  };
  for (const char* id : {"C-2684354559-d", "C-2684354560-d", "C-0000000001-a", "A-0000000001-b", "C-1"}) add(id);
  EXPECT_FALSE(pattern.compile(repeated(61, "a")));
  EXPECT_EQ(pattern.toString(CIDNumber()), "B-0000000000-b");  // a refused pattern keeps the old one
  ASSERT_TRUE(pattern.compile(repeated(24, "\u20ac")));
  add(repeated(72, "a"));
  RecordTesting::expectGoldenText(table, "cable_id_offsets");
}

TEST(CIDNumber, RefusesWhatDoesNotFit) {
  CIDNumber number;
  const uint32_t radices[] = {3, 120};
  ASSERT_TRUE(number.initialize(radices, 2));
  const uint32_t tooLarge[] = {1, 120};
  const uint32_t largest[] = {2, 119};
  EXPECT_FALSE(number.setOrdinal(tooLarge, 2));
  EXPECT_EQ(number.Ordinal(), 0u);  // no value is copied before all are tested
  EXPECT_FALSE(number.setOrdinal(largest, 1) || number.checkOrdinal(largest, -1));
  EXPECT_TRUE(number.setOrdinal(largest, 2));
  EXPECT_FALSE(number.setOrdinal(360));
  EXPECT_EQ(number.Ordinal(), 359u);  // as it was
  EXPECT_EQ(number.getValue(2) + number.getValue(-1), 0u);
  const CIDNumber moved(std::move(number));
  EXPECT_EQ(moved.Ordinal(), 359u);
  EXPECT_EQ(number.getTotal() + number.Ordinal(), 0u);  // NOLINT: a number moved from is cleared

  for (const std::array<uint32_t, 3>& refused :
       {std::array<uint32_t, 3>{2, 0, 2}, {2, 32768, 1}, {256, 128, 1}, {2, 0x80000001u, 1}}) {
    number = moved;
    EXPECT_FALSE(number.initialize(refused.data(), 3));
    EXPECT_EQ(number.getTotal() + number.Ordinal() + static_cast<uint32_t>(number.getCount()), 0u);
  }
  EXPECT_TRUE(number.initialize(nullptr, 0) && number.checkOrdinal(nullptr, 0));
  EXPECT_FALSE(number.setOrdinal(uint32_t{0}));
}

TEST(CIDPattern, AcceptsNumbersNotMadeForIt) {
  const auto text = [](const std::string& first, uint32_t ordinal) {
    CIDPattern pattern;
    CIDNumber number;
    const uint32_t radix = 32767;
    EXPECT_TRUE(pattern.compile(first) && number.initialize(&radix, 1) && number.setOrdinal(ordinal));
    EXPECT_FALSE(pattern.setOrdinal(first + "1", number));
    return pattern.toString(number);
  };
  EXPECT_EQ(text("95-b", 7), "02-b");  // the carry out of the field is dropped; the missing position stays at its start
  EXPECT_EQ(text("y1", 3), "|1");      // no wrap at the end of the alphabet
  EXPECT_EQ(text("--", 5), "--");
}

TEST(CableIDSeq, SameTakenIDsAreEqualInWhateverOrderTheyWereTaken) {
  const CableIDSeq sequence = sequenceOf("A1", "A5", {"A1", "A5"});
  const CableIDSeq other = sequenceOf("A1", "A5", {"A5", "A1"});
  EXPECT_NE(sequence.calcID("A4"), other.calcID("A4"));  // the entries after the free IDs do differ
  EXPECT_TRUE(sequence == other);
  EXPECT_TRUE(sequence != sequenceOf("A1", "A5", {"A1", "A4"}));
  EXPECT_TRUE(sequence != sequenceOf("A1", "A5", {"A1"}));
  EXPECT_TRUE(sequenceOf("A1", "A4") != sequenceOf("A1", "B2"));  // as many IDs, another last one
  EXPECT_TRUE(sequenceOf("A3", "D4") != sequenceOf("C1", "D4"));
}

TEST(CableIDSeq, OfNoIDsAnswersNothingAndVerifiesItsOwnIDsAgain) {
  for (CableIDSeq sequence : {CableIDSeq(), sequenceOf("-", "-")}) {
    const std::string& id = sequence.getFirstID();
    EXPECT_FALSE(sequence.pruneID(id) || sequence.updateNextID(id));
    EXPECT_EQ(sequence.takeNextID() + sequence.calcID(id) + sequence[0], "");
    EXPECT_EQ(sequence.getNextOrd(), 0);
  }
  CableIDSeq sequence = sequenceOf("A1", "A5", {"A3"});
  EXPECT_TRUE(sequence.verifyIDSet(sequence.getFirstID(), sequence.getLastID()));
  EXPECT_EQ(sequence, sequenceOf("A1", "A5"));
}

TEST(CableIDSeq, HandsOutTheFullSet) {
  CableIDSeq sequence = sequenceOf("00000", "32766");
  EXPECT_EQ(sequence.getTotal(), MAX_CABLE_IDS);
  EXPECT_EQ(sequence[32766] + sequence[32767] + sequence.calcID("32766"), "32766");
  EXPECT_TRUE(sequence.pruneID("32766"));
  for (int i = 0; i < 32766; ++i) ASSERT_EQ(sequence.takeNextID(), std::to_string(100000 + i).substr(1));
  EXPECT_EQ(sequence.takeNextID(), "");
  EXPECT_EQ(sequence.getNextOrd(), 0);
}

// Sets of every kind of position; IDs are taken, picked and looked up at random, some of them none of the set.
TEST(CableIDSeq, AnswersEachStepAsInTheTableAndIsRebuiltFromItsIDs) {
  std::mt19937 random(2);
  std::string table;
  const std::pair<const char*, const char*> sets[] = {
      {"A5", "C7"}, {"y-08.x", "z-11.z"}, {"\u00e9 098/K", "\u00e9 104/L"}, {"m", "p"}, {"0", "1"}, {"aB1c2", "bC2d3"}};
  for (const auto& [first, last] : sets) {
    CableIDSeq sequence = sequenceOf(first, last);
    Strings ids, taken;
    for (int i = 0; i < static_cast<int>(sequence.getTotal()); ++i) ids.push_back(sequence[i]);
    table += testing::PrintToString(ids) + "\n";
    for (int i = 0; i < 60; ++i) {
      std::string id = ids[random() % ids.size()];
      if (random() % 8 == 0) id[random() % id.size()] = static_cast<char>('!' + random() % 90);
      if (random() % 32 == 0) id.resize(random() % 9, 'A');
      const auto operation = random() % 4;
      bool isTaken = operation == 1 && sequence.pruneID(id);
      if (operation == 0) isTaken = !(id = sequence.takeNextID()).empty();
      const bool isPicked = operation == 2 && sequence.updateNextID(id);
      if (isTaken) taken.push_back(id);
      table += id +
               (isTaken    ? " taken"
                : isPicked ? " picked"
                           : " left") +
               ": next " + std::to_string(sequence.getNextOrd()) + " of " +
               std::to_string(sequence.getTotal() - sequence.getUsed()) + ", " + sequence[sequence.getNextOrd()] +
               "; after it \"" + sequence.calcID(id) + "\", fourth \"" + sequence[3] + "\"" + sequence[-1] + "\n";
    }
    EXPECT_EQ(sequence, sequenceOf(first, last, taken));
    std::shuffle(taken.begin(), taken.end(), random);
    EXPECT_EQ(sequence, sequenceOf(first, last, taken));
  }
  RecordTesting::expectGoldenText(table, "cable_ids");
}
