#include <libcrossplatform/common/Celsius.h>

#include <cmath>
#include <limits>

#include "JsonShapes.h"

using namespace RecordTesting;
using namespace Veltra;

TEST(Celsius, Wire) {
  Celsius c(-21.5f);
  expectRoundTrip(c);
  expectEveryPrefixRefused(c);
  expectGolden(c, "celsius");
}

TEST(Celsius, ScalesRoundsAndSaturates) {
  const float infinity = std::numeric_limits<float>::infinity();
  struct Row {
    float degrees;
    int scaled;
  };
  const Row rows[] = {{21.5f, 2150},     {0.125f, 13},      {-0.125f, -13},   {0.0f, 0},           {-0.0f, 0},
                      {327.66f, 32766},  {327.67f, 32767},  {400.0f, 32767},  {-327.66f, -32766},  {-327.68f, -32767},
                      {-400.0f, -32767}, {infinity, 32767}, {-1e30f, -32767}, {-infinity, -32767}, {1e30f, 32767},
                      {0.00499f, 0},     {-0.001f, 0},      {19.999f, 2000},  {-19.999f, -2000}};
  for (const Row& row : rows) EXPECT_EQ(Celsius(row.degrees).getScaled(), row.scaled) << row.degrees;
}

TEST(Celsius, EveryScaledValueComesBack) {
  for (int scaled = -32767; scaled <= 32767; ++scaled) {
    Celsius c;
    c.setFromScaled(static_cast<int16_t>(scaled));
    ASSERT_EQ(c.degrees, static_cast<float>(scaled) * 0.01f) << "multiplied by the float 0.01, not divided by 100";
    ASSERT_EQ(c.getScaled(), scaled);
  }
}

TEST(Celsius, NotSetIsEqualToNotSetAndComesBackFromEveryForm) {
  Celsius unset;
  EXPECT_EQ(unset.getScaled(), -32768);
  EXPECT_TRUE(unset == Celsius());
  EXPECT_TRUE(Celsius(20.001f) == Celsius(20.004f)) << "the same hundredth";
  EXPECT_TRUE(unset != Celsius(0.0f));
  Celsius read(1.0f);
  EXPECT_EQ(readFrom(read, bytesOf(unset)), 0);
  EXPECT_TRUE(std::isnan(read.degrees));
  read = Celsius(1.0f);
  EXPECT_EQ(readFrom(read, {0x12}), -3);
  EXPECT_TRUE(std::isnan(read.degrees)) << "a failed read clears";
}

TEST(Celsius, TextForms) {
  const float infinity = std::numeric_limits<float>::infinity();
  struct Row {
    float degrees;
    const char* text;
  };
  for (const Row& row : {Row{21.5f, "21.50"}, Row{-0.125f, "-0.13"}, Row{infinity, "+inf"}, Row{-infinity, "-inf"},
                         Row{std::nanf(""), "NaN"}}) {
    const Celsius c(row.degrees);
    EXPECT_EQ(dumpOf(c), std::string("celsius : ") + row.text + "\n");
    EXPECT_EQ(Dump::toJsonString(c, level(2), false), std::string("\"") + row.text + "\"");
    Celsius read(1.0f);
    EXPECT_TRUE(read.fromJson(c.toJson(level(0)), nullptr));
    EXPECT_TRUE(read == c) << row.text;
  }
}

TEST(Celsius, JsonOfAnyShape) {
  const CapturedLog log;
  Json::Value document;
  document["celsius"] = "21.50";
  expectJsonShapes(Celsius(3.0f), document, JSON_NONE, {{"celsius", JSON_NONE}},
                   [](Celsius& c, const Json::Value& v) { return c.fromJson(v, "celsius"); });
  const Celsius before(3.0f);
  for (const JsonShape& shape : jsonShapes()) {
    expectJsonRead(before, shape.value, false, [](Celsius& c, const Json::Value& v) { return c.fromJson(v, nullptr); });
  }
  expectJsonRead(before, "21.50", false, [](Celsius& c, const Json::Value& v) { return c.fromJson(v, "celsius"); });
  expectBrokenJsonTextRefused(before, [](Celsius& c, const std::string& text) { return c.fromJsonString(text); });

  Celsius c(3.0f);
  log.lines().clear();
  EXPECT_TRUE(c.fromJsonString("/* outside */ \"-4.25\""));
  EXPECT_EQ(c.getScaled(), -425);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_FALSE(c.fromJson(static_cast<const Json::Value*>(nullptr), "celsius"));
  EXPECT_TRUE(std::isnan(c.degrees)) << "a null pointer clears, unlike other failures";
  EXPECT_EQ(log.lines().size(), 1u);
}
