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

// Rounded half away from zero to hundredths, within what 16 bits hold; a text comes back as the same temperature.
TEST(Celsius, IsScaledAndShownAsTheTableSays) {
  std::ostringstream table;
  for (const float degrees : {0.125f, -0.125f, -0.001f, 21.5f, 327.66f, 327.67f, 400.0f, INFINITY, -327.66f, -327.68f,
                              -400.0f, -INFINITY, NAN}) {
    const Celsius c(degrees);
    Celsius read(1.0f);
    EXPECT_TRUE(read.fromJsonString("/* comment */ " + Dump::toJsonString(c)));
    table << degrees << ": " << c.getScaled() << ' ' << c.toJson(level(0)).asString()
          << (read == c ? ", read back\n" : "\n");
  }
  expectGoldenText(table.str(), "temperatures");
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
