#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

#include <libcrossplatform/common/ToleranceMeas.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

using Scale = ScaledInt::ScaledTo;

constexpr float INF = std::numeric_limits<float>::infinity();
const float NONE = std::nanf("");

ScaledInt raw(int32_t value, int scale) {
  return ScaledInt::fromRaw(value, static_cast<Scale>(scale));
}

std::string shown(const ScaledInt& v) {
  return std::to_string(v.getRaw()) + "/" + std::to_string(v.getScaledTo());
}

const ScaledInt NAN_TENTHS = raw(ScaledInt::RAW_NOT_A_NUMBER, 1);
const ScaledInt PLUS_INF = raw(ScaledInt::RAW_PLUS_INFINITY, 2);
const ScaledInt MINUS_INF = raw(ScaledInt::RAW_MINUS_INFINITY, 3);

/// A second model of the arithmetic: kinds by letter, finite values exact in ten-thousandths.
char kindOf(const ScaledInt& v) {
  if (v.getRaw() == -2147483647) return 'N';
  if (v.getRaw() == 2147483647) return 'P';
  return v.getRaw() == -2147483646 ? 'M' : 'F';
}
int64_t exactly(const ScaledInt& v) {
  int64_t value = v.getRaw();
  for (int scale = v.getScaledTo(); scale < 4; ++scale) value *= 10;
  return value;
}
std::string finite(int64_t exact, int scale) {
  for (int i = scale; i < 4; ++i) exact /= 10;
  return std::to_string(exact) + "/" + std::to_string(scale);
}

}  // namespace

TEST(ScaledInt, ComparesAndCombinesEveryKindWithEveryOther) {
  // Rows: the kind of a, columns: that of b, both in the order N P M F. Operands a and b, kinds with scale 0.
  const std::string order = "NPMF", sums = "aaaa aPNP aNMM aPM.", differences = "aaaa bNaa baNa bbb.";
  const std::string less = "MP MF FP", same = " MM PP";
  const ScaledInt values[] = {NAN_TENTHS, PLUS_INF,     MINUS_INF,   raw(ScaledInt::RAW_PLUS_INFINITY, 0),
                              raw(0, 0),  raw(12, -1),  raw(120, 0), raw(1200000, 4),
                              raw(-3, 1), raw(-300, 3), raw(5, 2),   raw(-12, -1),
                              raw(7, 0),  raw(-7, 0),   raw(1, 4),   raw(ScaledInt::RAW_MINUS_INFINITY, 1)};
  for (const ScaledInt& a : values) {
    for (const ScaledInt& b : values) {
      SCOPED_TRACE(shown(a) + " and " + shown(b));
      const std::string kinds = {kindOf(a), kindOf(b)};
      const bool both = kinds == "FF";
      const auto holds = [&](const std::string& pairs, bool exact) {
        return both ? exact : pairs.find(kinds) != std::string::npos;
      };
      EXPECT_EQ(a < b, holds(less, exactly(a) < exactly(b)));
      EXPECT_EQ(a <= b, holds(less + same, exactly(a) <= exactly(b)));
      EXPECT_EQ(a == b, holds(same, exactly(a) == exactly(b)));
      EXPECT_TRUE((a > b) == (b < a) && (a >= b) == (b <= a) && (a != b) == !(a == b));

      const int scale = std::max(a.getScaledTo(), b.getScaledTo());
      const std::map<char, std::string> results = {
          {'a', shown(a)}, {'b', shown(b)}, {'N', "-2147483647/0"}, {'P', "2147483647/0"}, {'M', "-2147483646/0"}};
      const auto expected = [&](const std::string& table, const std::string& finiteResult) {
        return both ? finiteResult : results.at(table[5 * order.find(kinds[0]) + order.find(kinds[1])]);
      };
      EXPECT_EQ(shown(a + b), expected(sums, finite(exactly(a) + exactly(b), scale)));
      EXPECT_EQ(shown(a - b), expected(differences, finite(exactly(a) - exactly(b), scale)));
      const int64_t sum = std::stoll(finite(exactly(a) + exactly(b), scale));
      const int64_t half = (sum + (sum > 0) - (sum < 0)) / 2;  // halves away from zero
      EXPECT_EQ(shown(a.avg(b)), expected(sums, std::to_string(half) + "/" + std::to_string(scale)));
      EXPECT_EQ(shown(min(a, b)), shown(kinds[0] == 'N' || (kinds[1] != 'N' && !(a < b)) ? b : a));
      EXPECT_EQ(shown(max(a, b)), shown(kinds[0] == 'N' || (kinds[1] != 'N' && a < b) ? b : a));
    }
  }
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

TEST(ScaledInt, RoundsFloatsInOneStepAndTextsInTwo) {
  using Row = std::tuple<float, int, const char*>;
  for (const auto& [value, scale, expected] :
       {Row{2.5f, 0, "3/0"}, Row{-2.5f, 0, "-3/0"}, Row{-2.4f, 0, "-2/0"}, Row{125.0f, -1, "13/-1"},
        Row{838860.1f, 1, "8388602/1"}, Row{1e10f, 0, "2147483647/0"}, Row{-3.4028235e38f, 4, "-2147483648/4"},
        Row{INF, 0, "2147483647/0"}, Row{-INF, 0, "-2147483646/0"}, Row{NONE, 1, "-2147483647/1"}}) {
    EXPECT_EQ(shown(ScaledInt(value, static_cast<Scale>(scale))), expected);
  }
  ScaledInt text;
  ASSERT_TRUE(text.fromString("838860.1"));
  EXPECT_EQ(shown(text), "8388601/1") << "the product is rounded first";
  EXPECT_EQ(saturateToInt32(NONE), 0);
}

TEST(ScaledInt, TextsKeepTheirDecimals) {
  for (const char* row :
       {"1.500|1500/3", "-0.50|-50/2", "NaN|-2147483647/1", "+inf|2147483647/1", "-inf|-2147483646/1", " 12|12/0",
        "-3.|-3/0", "1.2x|120/2", "1.2.3|1200/3", "0.25 dB|25000/5", "abc|", "|", "inf|", "nan|", "1e39|"}) {
    const std::string text = split(row)[0], value = split(row)[1];
    ScaledInt v = raw(7, 1);
    EXPECT_EQ(v.fromString(text), !value.empty()) << text;
    EXPECT_EQ(shown(v), value.empty() ? "7/1" : value) << text;
  }
  using Row = std::tuple<int32_t, int, const char*>;
  for (const auto& [value, scale, text] :
       {Row{12, -1, "120"}, Row{-12, 0, "-12"}, Row{-5, 1, "-0.5"}, Row{1, 4, "0.0001"},
        Row{12345678, 4, "1234.5677"},  // as a float has it
        Row{-2147483647, 1, "NaN"}, Row{2147483647, 99, "+inf"}, Row{-2147483646, 0, "-inf"}}) {
    EXPECT_EQ(raw(value, scale).toString(), text);
  }
  const char* const names[] = {"tens", "ones", "tenths", "hundredths", "thousandths", "tenthousandths"};
  for (int scale = -200; scale < 200; ++scale) {
    const bool listed = scale >= -1 && scale <= 4;
    EXPECT_STREQ(toString(static_cast<Scale>(scale)), listed ? names[scale + 1] : "");
    EXPECT_EQ(raw(1, scale).hasPrintableScale(), listed);
  }
  for (const int scale : {-2, 5}) {
    EXPECT_DEATH(raw(1, scale).toString(), "Invalid ScaledInt::scaledTo, libcrossplatform/common/ScaledInt:177");
  }
}

TEST(ScaledInt, ConvertsToFloats) {
  EXPECT_EQ(raw(125, 2).toFloat(), 1.25f);
  EXPECT_EQ(raw(12, -1).scalingValue(), 0.1f);
  EXPECT_EQ(raw(12, -1).toDouble(), 12.0 / static_cast<double>(0.1f)) << "the scale is a float";
  EXPECT_EQ(PLUS_INF.toDouble(), static_cast<double>(INF));
  EXPECT_EQ(MINUS_INF.toFloat(), -INF);
  EXPECT_TRUE(std::isnan(NAN_TENTHS.toDouble()));
}

TEST(Measurements, Wire) {
  ScaledInt value = raw(-125, -1);
  DisplayMeas display(value, DISPLAY_TYPE_LESS_THAN);
  ToleranceMeas tolerance(value, static_cast<DisplayType>(-2), 1.5f, -2.0f);
  const auto check = [](auto& record, const Bytes& bytes) {
    EXPECT_EQ(bytesOf(record), bytes);
    expectValue(record, {});
    expectRoundTrip(record);
    expectEveryPrefixRefused(record);
    EXPECT_EQ(readFrom(record, withByte(bytes, 0, 0)), 0) << "version 0";
    EXPECT_EQ(readFrom(record, withByte(bytes, 0, 2)), -5);
    EXPECT_EQ(bytesOf(record), bytes) << "nothing further is read";
  };
  check(value, {1, 0xff, 0xff, 0xff, 0x83, 0xff});
  check(display, {1, 1, 0xff, 0xff, 0xff, 0x83, 0xff, 3});
  check(tolerance, {1, 1, 0xff, 0xff, 0xff, 0x83, 0xff, 0xfe, 0x3f, 0xc0, 0, 0, 0xc0, 0, 0, 0});
  EXPECT_EQ(dumpOf(raw(125, 2)), "ScaledInt: 1.25\n");
}

TEST(DisplayMeas, ShowsAndReadsBounds) {
  const std::string none = "-2147483647/0";
  using Row = std::tuple<const char*, int, std::string, const char*>;
  for (const auto& [text, type, value, again] :
       {Row{"", 0, none, "N/A"}, Row{"N/A", 0, none, "N/A"}, Row{"---", 4, none, "---"},
        Row{">2.50", 2, "250/2", "> 2.50"}, Row{"< 1.3", 3, "13/1", "< 1.3"}, Row{"-7", 1, "-7/0", "-7"},
        Row{"NaN", 1, none, "NaN"}, Row{">", -1, none, "N/A"}, Row{"n/a", -1, none, "N/A"},
        Row{"<x", -1, none, "N/A"}}) {
    SCOPED_TRACE(text);
    DisplayMeas m(raw(99, 3), DISPLAY_TYPE_VALUE);
    EXPECT_EQ(m.fromString(text), type >= 0);
    EXPECT_EQ(m.type, std::max(type, 0));
    EXPECT_EQ(shown(m.value), value);
    EXPECT_EQ(m.toString(), again);
  }
  const DisplayMeas m(raw(10, 1), DISPLAY_TYPE_VALUE);
  EXPECT_TRUE(m == DisplayMeas(raw(1, 0), m.type) && m != DisplayMeas(raw(2, 0), m.type));
  EXPECT_TRUE(m != DisplayMeas(m.value, DISPLAY_TYPE_LESS_THAN) && DisplayMeas() != DisplayMeas());
  for (const int type : {-1, 5, 127}) EXPECT_EQ(DisplayMeas(raw(1, 0), static_cast<DisplayType>(type)).toString(), "");
}

TEST(DisplayMeas, MergesEveryTypeWithEveryOther) {
  const std::string types = "012347";
  // Rows: this type; columns: the other's. For the highest the two bounds, 2 and 3, change places.
  const std::string lowest[] = {"012347", "112347", "222342", "333343", "444444", "777747"};
  const auto opposite = [](char type) { return type == '2' ? '3' : type == '3' ? '2' : type; };
  for (const char mine : types) {
    for (const char others : types) {
      for (const int32_t number : {1, 3}) {
        SCOPED_TRACE(testing::Message() << mine << " with " << others << ", value " << number);
        const DisplayMeas a(raw(number, 0), static_cast<DisplayType>(mine - '0'));
        const DisplayMeas b(raw(20, 1), static_cast<DisplayType>(others - '0'));
        DisplayMeas low = a, high = a;
        low.mergeLowest(b);
        high.mergeHighest(b);
        EXPECT_EQ('0' + low.type, lowest[types.find(mine)][types.find(others)]);
        EXPECT_EQ('0' + high.type, opposite(lowest[types.find(opposite(mine))][types.find(opposite(others))]));
        const bool given = others != '0' && others != '4';
        const bool taken = given && mine == '0', compared = given && mine >= '1' && mine <= '3';
        EXPECT_EQ(shown(low.value), taken || (compared && number == 3) ? "20/1" : shown(a.value));
        EXPECT_EQ(shown(high.value), taken || (compared && number == 1) ? "20/1" : shown(a.value));
      }
    }
  }
}

namespace {

ToleranceMeas tol(float value, int type, float pos, float neg) {
  return ToleranceMeas(ScaledInt(value, ScaledInt::SCALED_TO_TENTHS), static_cast<DisplayType>(type), pos, neg);
}

void expectMeas(const ToleranceMeas& m, const ToleranceMeas& expected) {
  EXPECT_TRUE(m.isSameAs(expected)) << m.toString() << " type " << m.type << ", not " << expected.toString() << " type "
                                    << expected.type;
}

}  // namespace

TEST(ToleranceMeas, DerivesItsType) {
  using Row = std::array<float, 4>;  // value, positive and negative tolerance, type
  const Row rows[] = {{1, 1, 1, 1},        {1, 1, NONE, 3},       {1, NONE, 1, 2},
                      {1, NONE, NONE, 1},  {INF, 1, NONE, 3},     {NONE, 1, 0, 4},
                      {NONE, 1, -0.0f, 4}, {NONE, NONE, NONE, 0}, {NONE, 0, 1, 0}};
  for (const Row& row : rows) {
    ToleranceMeas m = tol(row[0], 9, row[1], row[2]);
    m.calculateDisplayType();
    EXPECT_EQ(m.type, static_cast<int>(row[3])) << m.toString();
  }
}

TEST(ToleranceMeas, TextsAndEquality) {
  const ToleranceMeas m = tol(5, 2, 0.25f, NONE);
  EXPECT_EQ(m.toString(), "> 5.0, +tol = 0.25, -tol = nan");
  EXPECT_EQ(dumpOf(m),
            "ToleranceMeas {\n  class: ToleranceMeas\n  value: > 5.0\n  posTolerance: 0.25\n"
            "  negTolerance: nan\n}\n");
  EXPECT_EQ(Dump::toJsonString(m, {}, false),
            "{\"negTolerance\":\"nan\",\"posTolerance\":\"0.25\",\"value\":\"> 5.0\"}");
  EXPECT_TRUE(m == m && ToleranceMeas() == ToleranceMeas()) << "not-a-number, too";
  for (const ToleranceMeas& other :
       {tol(6, 2, 0.25f, NONE), tol(5, 1, 0.25f, NONE), tol(5, 2, 0.5f, NONE), tol(5, 2, NONE, NONE),
        tol(5, 2, 0.25f, 0), ToleranceMeas(raw(50, 2), DISPLAY_TYPE_GREATER_THAN, 0.25f, NONE)}) {
    EXPECT_TRUE(m != other);
  }
}

TEST(ToleranceMeas, AbsoluteValueTakesReservedValuesAsPlainIntegers) {
  expectMeas(tol(-1.2f, 3, 1, 2).abs(), tol(1.2f, 3, 1, 2));
  EXPECT_EQ(shown(ToleranceMeas().abs().value), "2147483647/0") << "not-a-number becomes plus infinity";
  EXPECT_EQ(shown(tol(-INF, 1, 0, 0).abs().value), "2147483646/1");
}

TEST(ToleranceMeas, SubtractsAReference) {
  EXPECT_EQ(subtractWithQuadratureTolerance(tol(1, 1, 0.1f, 1e-3f), tol(1, 1, 0.7f, 3.0f)).posTolerance,
            std::sqrt(std::fmaf(0.1f, 0.1f, 0.7f * 0.7f)));
  for (int a = -1; a <= 5; ++a) {
    for (int b = -1; b <= 5; ++b) {
      SCOPED_TRACE(testing::Message() << a << " less " << b);
      const ToleranceMeas left = tol(5, a, 3, 0), right = tol(2, b, 4, 1);
      const ToleranceMeas expected = a == 0   ? left
                                     : b == 0 ? right
                                     : a == 4 ? left
                                     : b == 4 ? right
                                     : b == 3 ? tol(3, 2, 1, 4)
                                     : b == 2 ? tol(3, 3, 1, 4)
                                              : tol(3, 1, 5, 1);
      expectMeas(subtractWithQuadratureTolerance(left, right), expected);
    }
  }
}

TEST(ToleranceMeas, AddsLosses) {
  const ToleranceMeas none = tol(NONE, 4, 1, 0), a = tol(1, 3, 0.2f, NONE), b = tol(2, 2, 0.1f, 0.3f);
  expectMeas(addLossToleranceMeas(a, b), tol(3, 1, 0.2f, 0.3f));
  expectMeas(addLossToleranceMeas(a, a), tol(2, 3, 0.2f, NONE));
  expectMeas(addLossToleranceMeas(none, a), a);
  expectMeas(addLossToleranceMeas(a, none), a);
}

TEST(ToleranceMeas, PicksTheLargerAndTheSmaller) {
  const ToleranceMeas none = tol(NONE, 0, 1, 1), one = tol(1, 1, 1, 1);
  expectMeas(max(none, one), one);
  expectMeas(max(one, none), one);
  expectMeas(minTolerance(none, one), one);
  expectMeas(minTolerance(one, none), one);
  expectMeas(minTolerance(none, ToleranceMeas()), none);
  for (const int typeA : {1, 2, 3}) {
    for (const int typeB : {1, 2, 3}) {
      for (const float valueB : {1.0f, 2.0f, 3.0f}) {
        const ToleranceMeas a = tol(2, typeA, 1, 1), b = tol(valueB, typeB, 2, 2);
        expectMeas(max(a, b), valueB < 2 ? a : b);
        // A bound never takes the place of a value, a value always that of a bound.
        const bool takesB = typeA != 2 && typeB == 2 ? false : typeA == 2 && typeB != 2 ? true : valueB < 2;
        expectMeas(minTolerance(a, b), takesB ? b : a);
      }
    }
  }
}
