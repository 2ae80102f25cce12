#include <libcrossplatform/common/OtdrSpan.h>

#include "JsonShapes.h"

using namespace RecordTesting;
using FibDbus::OtdrSpan;

namespace {

OtdrSpan span(const char* start, const char* end) {
  OtdrSpan s;
  EXPECT_TRUE(s.spanStart.fromString(start));
  EXPECT_TRUE(s.spanEnd.fromString(end));
  return s;
}

bool readRoot(OtdrSpan& s, const Json::Value& v) {
  return s.fromJson(v, nullptr);
}

std::string failure(const char* key, int line) {
  return std::string("13|1|fromJson failed for ") + key + " in libcrossplatform/common/OtdrSpan line " +
         std::to_string(line);
}

}  // namespace

TEST(OtdrSpan, Wire) {
  OtdrSpan s = span("-12.5", "2041.03");
  expectRoundTrip(s);
  expectEveryPrefixRefused(s);
  expectGolden(s, "otdr_span_v1");
  EXPECT_EQ(Dump::toJsonString(s, level(0), false),
            R"({"_className":"OtdrSpan","_classVersion":1,"spanEnd":"2041.03","spanStart":"-12.5"})");
}

TEST(OtdrSpan, EveryFailedReadLeavesTheSpanAsItWas) {
  OtdrSpan s = span("1.0", "2.0");
  const Bytes before = bytesOf(s);
  OtdrSpan other = span("3.0", "4.0");
  const Bytes good = bytesOf(other);
  struct Row {
    const char* name;
    std::size_t at;
    uint8_t value;
    Marshal::StreamOpStatus status;
  };
  const Row rows[] = {
      {"class id", 7, 0x16, -1},         {"class version", 3, 2, -5}, {"version of the start", 12, 2, -5},
      {"version of the end", 18, 2, -5}, {"length", 11, 13, -4},      {"marker", 0, 0, -2}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Bytes bad = good;
    bad[row.at] = row.value;
    EXPECT_EQ(readFrom(s, bad), row.status);
    EXPECT_EQ(bytesOf(s), before);
  }
  for (std::size_t n = 12; n < good.size(); ++n) {
    EXPECT_EQ(readFrom(s, Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n))), -3) << n;
    EXPECT_EQ(bytesOf(s), before);
  }
  EXPECT_EQ(readFrom(s, good), 0);
  EXPECT_EQ(bytesOf(s), good);
}

TEST(OtdrSpan, JsonOfAnyShape) {
  const CapturedLog log;
  const OtdrSpan before = span("1.0", "2.0");
  const Json::Value document = span("-12.5", "+inf").toJson(level(2));
  // A number is taken by its text.
  expectJsonShapes(before, document, JSON_NONE,
                   {{"_className", JSON_NONE},
                    {"_classVersion", JSON_EVERY_KIND},
                    {"spanStart", JSON_NUMBERS},
                    {"spanEnd", JSON_NUMBERS}},
                   readRoot);
  Json::Value wrapped;
  wrapped["span"] = document;
  expectJsonShapes(before, wrapped, JSON_NONE, {{"span", JSON_NONE}},
                   [](OtdrSpan& s, const Json::Value& v) { return s.fromJson(v, "span"); });
  expectBrokenJsonTextRefused(before, [](OtdrSpan& s, const std::string& text) { return s.fromJsonString(text); });

  OtdrSpan s;
  EXPECT_TRUE(s.fromJsonString("// a comment\n" + document.toStyledString()));
  EXPECT_EQ(s.spanStart.toString(), "-12.5");
  EXPECT_EQ(s.spanEnd.toString(), "+inf");
}

TEST(OtdrSpan, LogsTheKeyThatFailedButNoOtherClass) {
  const CapturedLog log;
  const Json::Value document = span("1", "2").toJson(level(2));
  struct Row {
    const char* key;
    Json::Value value;
    std::vector<std::string> logged;
  };
  const Row rows[] = {{"_className", Json::Value(), {failure("_className", 92)}},
                      {"_className", "OtdrSpam", {}},
                      {"_className", "otdrSpan", {}},
                      {"spanStart", Json::Value(), {failure("spanStart", 98)}},
                      {"spanStart", "x", {failure("spanStart", 98)}},
                      {"spanEnd", Json::Value(), {failure("spanEnd", 99)}},
                      {"spanEnd", "nan", {failure("spanEnd", 99)}}};
  for (const Row& row : rows) {
    log.lines().clear();
    Json::Value changed = document;
    changed[row.key] = row.value;
    OtdrSpan s;
    EXPECT_FALSE(readRoot(s, changed));
    EXPECT_EQ(log.lines(), row.logged);
  }
}
