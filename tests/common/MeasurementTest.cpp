#include <cmath>

#include <libcrossplatform/common/Celsius.h>
#include <libcrossplatform/common/Length.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/ToleranceMeas.h>
#include <libcrossplatform/serialization/NumberText.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;
using FibDbus::OtdrSpan;

namespace {

using Scale = ScaledInt::ScaledTo;

ScaledInt raw(int32_t value, int scale) {
  return ScaledInt::fromRaw(value, static_cast<Scale>(scale));
}

std::string shown(const ScaledInt& v) {
  return std::to_string(v.getRaw()) + "/" + std::to_string(v.getScaledTo());
}

ToleranceMeas tol(float value, int type, float pos, float neg) {
  return ToleranceMeas(ScaledInt(value, ScaledInt::SCALED_TO_TENTHS), static_cast<DisplayType>(type), pos, neg);
}

std::string shown(const ToleranceMeas& m) {
  return "[" + std::to_string(m.type) + " " + m.toString() + "]";
}

OtdrSpan span(const char* start, const char* end) {
  OtdrSpan s;
  EXPECT_TRUE(s.spanStart.fromString(start));
  EXPECT_TRUE(s.spanEnd.fromString(end));
  return s;
}

}  // namespace

// Every kind of number, bound and tolerance with every other: the results are in the golden file.
TEST(Measurements, CombineAsTheTableSays) {
  std::ostringstream table;
  constexpr std::pair<int32_t, int> VALUES[] = {{-2147483647, 1}, {2147483647, 2}, {-2147483646, 3}, {2147483647, 0},
                                                {0, 0},           {12, -1},        {120, 0},         {1200000, 4},
                                                {-3, 1},          {-300, 3},       {5, 2},           {-12, -1},
                                                {7, 0},           {-7, 0},         {1, 4},           {-2147483646, 1}};
  for (const auto& [rawOfA, scaleOfA] : VALUES) {
    for (const auto& [rawOfB, scaleOfB] : VALUES) {
      const ScaledInt a = raw(rawOfA, scaleOfA), b = raw(rawOfB, scaleOfB);
      table << shown(a) << " and " << shown(b) << (a < b ? " <" : "") << (a <= b ? " <=" : "") << (a == b ? " ==" : "")
            << ": sum " << shown(a + b) << " difference " << shown(a - b) << " average " << shown(a.avg(b))
            << " smaller " << shown(min(a, b)) << " larger " << shown(max(a, b)) << '\n';
      EXPECT_TRUE((a > b) == (b < a) && (a >= b) == (b <= a) && (a != b) == !(a == b));
    }
  }
  for (const int mine : {-1, 0, 1, 2, 3, 4, 7}) {
    for (const int others : {-1, 0, 1, 2, 3, 4, 7}) {
      for (const float number : {1.0f, 2.0f, 3.0f}) {
        const ToleranceMeas a = tol(number, mine, 3, 0), b = tol(2, others, 4, 1);
        DisplayMeas low(a.value, a.type), high = low;
        const DisplayMeas next(b.value, b.type);
        low.mergeLowest(next);
        high.mergeHighest(next);
        table << shown(a) << " and " << shown(b) << ": lowest " << low.type << ' ' << shown(low.value) << " highest "
              << high.type << ' ' << shown(high.value) << " larger " << shown(max(a, b)) << " smaller "
              << shown(minTolerance(a, b)) << " difference " << shown(subtractWithQuadratureTolerance(a, b)) << " sum "
              << shown(addLossToleranceMeas(a, b)) << '\n';
      }
    }
  }
  // Tolerances that are no numbers or zero of either sign, values that are none; "-inf" becomes plus infinity less one.
  const ToleranceMeas other = tol(2, 2, 0.1f, 0.3f);
  for (const float number : {-1.2f, INFINITY, -INFINITY, NAN}) {
    for (const auto& [pos, neg] :
         {std::pair{1.0f, 2.0f}, {1.0f, NAN}, {NAN, 1.0f}, {NAN, NAN}, {0.0f, 1.0f}, {1.0f, -0.0f}}) {
      for (const int type : {0, 3, 4}) {
        ToleranceMeas m = tol(number, type, pos, neg);
        table << shown(m) << ": absolute " << shown(m.abs()) << ' ' << shown(m.abs().value) << " larger "
              << shown(max(m, other)) << shown(max(other, m)) << " smaller " << shown(minTolerance(m, other))
              << shown(minTolerance(other, m)) << " sums " << shown(addLossToleranceMeas(m, other))
              << shown(addLossToleranceMeas(other, m)) << shown(addLossToleranceMeas(m, m)) << " none "
              << shown(minTolerance(m, {}));
        m.calculateDisplayType();
        table << " derived " << m.type << '\n';
      }
    }
  }
  expectGoldenText(table.str(), "measurements");
}

TEST(ScaledInt, AlignmentWrapsAndReportsScalesTooFarApart) {
  EXPECT_EQ(shown(raw(0x7FFFFFF0, 0) + raw(1, 1)), "-159/1");
  EXPECT_EQ(shown(raw(-0x7FFFFFF0, 0) - raw(0x20, 0)), std::to_string(0x7FFFFFF0) + "/0");
  CapturedAsserts asserts;
  EXPECT_EQ(shown(raw(1, -1) + raw(1, 4)), "100001/4");
  EXPECT_EQ(asserts.reports().size(), 0u);
  EXPECT_EQ(shown(raw(1, -1) + raw(1, 5)), "2/5") << "goes on with a factor of 1";
  EXPECT_TRUE(raw(3, 127) == raw(3, -128));
  ASSERT_EQ(asserts.reports().size(), 2u);
  EXPECT_EQ(asserts.reports()[0].find("Unexpected ScaledInt exponent|libcrossplatform/common/ScaledInt|"), 0u);
}

// Floats are rounded in one step, texts in two; scales are floats; a bound's type goes with its text.
TEST(Measurements, AreReadAndShownAsTheTableSays) {
  std::ostringstream table;
  const std::pair<float, int> floats[] = {{2.5f, 0},      {-2.5f, 0}, {-2.4f, 0},          {125.0f, -1},
                                          {838860.1f, 1}, {1e10f, 0}, {-3.4028235e38f, 4}, {INFINITY, 0},
                                          {-INFINITY, 0}, {NAN, 1}};
  for (const auto& [value, scale] : floats) {
    table << value << " at scale " << scale << ": " << shown(ScaledInt(value, static_cast<Scale>(scale))) << '\n';
  }
  for (const std::string& text :
       split("1.500|-0.50|NaN|+inf|-inf| 12|-3.|1.2x|1.2.3|0.25 dB|abc||inf|nan|1e39|838860.1|N/A|"
             "---|>2.50|< 1.3|-7|>|n/a|<x")) {
    ScaledInt v = raw(7, 1);
    DisplayMeas m(raw(99, 3), DISPLAY_TYPE_VALUE);
    const bool isNumber = v.fromString(text), isMeasurement = m.fromString(text);
    table << '"' << text << "\": " << isNumber << ' ' << shown(v) << ' ' << isMeasurement << ' ' << m.type << ' '
          << shown(m.value) << " \"" << (m.value.hasPrintableScale() ? m.toString() : "no text") << "\"\n";
  }
  constexpr std::pair<int32_t, int> RAWS[] = {{12, -1},         {-12, 0},        {-5, 1},
                                              {1, 4},           {12345678, 4},   {125, 2},
                                              {-2147483647, 1}, {2147483647, 2}, {-2147483646, 0}};
  for (const auto& [value, scale] : RAWS) {
    const ScaledInt v = raw(value, scale);
    table << shown(v) << ": " << v.toString() << ' ' << v.toFloat() << ' ' << Dump::fixedToStr(v.toDouble(), 9) << ' '
          << v.scalingValue() << '\n';
  }
  expectGoldenText(table.str(), "measurement_texts");
  EXPECT_EQ(raw(2147483647, 99).toString(), "+inf");
  EXPECT_EQ(saturateToInt32(NAN), 0);
  for (int scale = -200; scale < 200; ++scale) {
    EXPECT_EQ(raw(1, scale).hasPrintableScale(), scale >= -1 && scale <= 4);
  }
  for (const int scale : {-2, 5}) {
    EXPECT_DEATH(raw(1, scale).toString(), "Invalid ScaledInt::scaledTo, libcrossplatform/common/ScaledInt:177");
  }
}

TEST(Measurements, Wire) {
  const ScaledInt value = raw(-125, -1);
  expectWire(ScaledInt(value), "scaled_int");
  expectWire(DisplayMeas(value, DISPLAY_TYPE_LESS_THAN), "display_meas");
  expectWire(ToleranceMeas(value, static_cast<DisplayType>(-2), 1.5f, -2.0f), "tolerance_meas");
}

TEST(ToleranceMeas, TextsAndEquality) {
  const ToleranceMeas m = tol(5, 2, 0.25f, NAN);
  EXPECT_EQ(m.toString(), "> 5.0, +tol = 0.25, -tol = nan");
  EXPECT_TRUE(m == m && ToleranceMeas() == ToleranceMeas()) << "not-a-number, too";
  EXPECT_TRUE(m != ToleranceMeas(raw(50, 2), DISPLAY_TYPE_GREATER_THAN, 0.25f, NAN));
}

TEST(ToleranceMeas, QuadratureIsFused) {
  EXPECT_EQ(subtractWithQuadratureTolerance(tol(1, 1, 0.1f, 1e-3f), tol(1, 1, 0.7f, 3.0f)).posTolerance,
            std::sqrt(std::fmaf(0.1f, 0.1f, 0.7f * 0.7f)));
}

// Halves are rounded away from zero, at every precision, in metres and in feet; each length with its digits.
TEST(Length, IsShownAsTheTableSays) {
  std::ostringstream table;
  for (const float meters : {12.345f, -12.35f, 1234.0f, 2.5f, -2.5f, 15.0f, 99.96f, 49.0f, 0.125f, INFINITY}) {
    for (const int decimals : {-2, -1, 0, 1, 2}) {
      const auto r = static_cast<LengthRoundedTo>(decimals);
      table << meters << " to " << decimals << ": " << displayLengthMeters(meters, r) << " of "
            << getMetersNumSigDigits(meters, r) << ", " << displayLengthFeet(meters, r) << " of "
            << getFeetNumSigDigits(meters, r) << '\n';
    }
  }
  expectGoldenText(table.str(), "lengths");
  EXPECT_EQ(getMetersNumSigDigits(NAN, LENGTH_ROUNDED_TO_ONES), 1);
}

TEST(Length, ProductAndHalfAreOneRoundingStep) {
  const float length = 4.99999952f;  // a tenth of it plus a half is just below 1, but rounds to 1 in two steps
  ASSERT_EQ(std::floor(length * 0.1f + 0.5f), 1.0f) << "not the example it was chosen to be";
  EXPECT_EQ(displayLengthMeters(length, LENGTH_ROUNDED_TO_TENS), 0.0f);
  EXPECT_EQ(displayLengthMeters(-length, LENGTH_ROUNDED_TO_TENS), 0.0f);
}

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

TEST(OtdrSpan, Wire) {
  const OtdrSpan s = span("-12.5", "2041.03");
  expectWire(OtdrSpan(s), "otdr_span_v1");
  OtdrSpan read;
  EXPECT_TRUE(read.fromJsonString("// a comment\n" + Dump::toJsonString(s)) && read == s);
  EXPECT_TRUE(s == span("-12.50", "2041.03") && OtdrSpan() != OtdrSpan()) << "ends that are no numbers equal nothing";
}
