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
  OtdrSpan other = span("3.0", "4.0");
  const Bytes good = bytesOf(other);
  OtdrSpan s = span("1.0", "2.0");
  const Bytes before = bytesOf(s);
  for (std::size_t at = 0; at < good.size(); ++at) {
    SCOPED_TRACE(at);
    EXPECT_EQ(readFrom(s, Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at))), -3);
    Bytes bad = good;
    bad[at] ^= 0x40;
    // Marker, format, class version, ids, length, then the version bytes of both ends.
    const Marshal::StreamOpStatus status = at < 2 ? -2 : at < 4 ? -5 : at < 8 ? -1 : at < 12 ? -4 : -5;
    if (at > 12 && at != 18) continue;
    EXPECT_EQ(readFrom(s, bad), status);
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
  EXPECT_EQ(s.toJson(level(2)), document);
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
