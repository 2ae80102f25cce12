#include <libcrossplatform/common/Celsius.h>

#include <cmath>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

TEST(Celsius, Wire) {
  expectWire(Celsius(-2.56f), "celsius");
}

TEST(Celsius, AnswersWhatTheStreamAnswers) {
  struct OddWriter : PlainWriter {
    unsigned writeInt16(int16_t v) override { return 699 + PlainWriter::writeInt16(v); }
  } out;
  EXPECT_EQ(Celsius(1.0f).serialize(out), 701u);
  struct RefusingReader : PlainReader {
    using PlainReader::PlainReader;
    bool readInt16(int16_t&) override { return false; }
  } in(out.bytes);
  Celsius c(3.0f);
  EXPECT_EQ(c.deserialize(in), -3) << "though the stream's status is 0";
  EXPECT_TRUE(c == Celsius());
}

TEST(Celsius, ScalesRoundsAndSaturates) {
  struct Row {
    float degrees;
    int scaled;
  };
  const Row rows[] = {{0.125f, 13},       {-0.125f, -13},    {-0.001f, 0},        {327.66f, 32766},
                      {327.67f, 32767},   {400.0f, 32767},   {INFINITY, 32767},   {-327.66f, -32766},
                      {-327.68f, -32767}, {-400.0f, -32767}, {-INFINITY, -32767}, {NAN, -32768}};
  for (const Row& row : rows) EXPECT_EQ(Celsius(row.degrees).getScaled(), row.scaled) << row.degrees;
  EXPECT_TRUE(Celsius() == Celsius()) << "not set equals not set";
  EXPECT_TRUE(Celsius(20.001f) == Celsius(20.004f)) << "the same hundredth";
  EXPECT_TRUE(Celsius() != Celsius(0.0f));
}

TEST(Celsius, EveryScaledValueComesBackTimesTheFloatHundredth) {
  Celsius c;
  for (int scaled = -32767; scaled <= 32767; ++scaled) {
    c.setFromScaled(static_cast<int16_t>(scaled));
    ASSERT_EQ(c.degrees, static_cast<float>(scaled) * 0.01f);
    ASSERT_EQ(c.getScaled(), scaled);
  }
  c.setFromScaled(-32768);
  EXPECT_TRUE(std::isnan(c.degrees));
}

TEST(Celsius, TextForms) {
  using Row = std::pair<float, std::string>;
  for (const auto& [degrees, text] :
       {Row{21.5f, "21.50"}, Row{-0.125f, "-0.13"}, Row{INFINITY, "+inf"}, Row{-INFINITY, "-inf"}, Row{NAN, "NaN"}}) {
    const Celsius c(degrees);
    EXPECT_EQ(c.toJson(level(0)), text);
    Celsius read(1.0f);
    EXPECT_TRUE(read.fromJsonString("/* comment */ " + Dump::toJsonString(c)));
    EXPECT_TRUE(read == c) << text;
  }
}
