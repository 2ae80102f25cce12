#include <libcrossplatform/common/OtdrSpan.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using FibDbus::OtdrSpan;

namespace {

OtdrSpan span(const char* start, const char* end) {
  OtdrSpan s;
  EXPECT_TRUE(s.spanStart.fromString(start));
  EXPECT_TRUE(s.spanEnd.fromString(end));
  return s;
}

}  // namespace

TEST(OtdrSpan, Wire) {
  OtdrSpan s = span("-12.5", "2041.03"), other = span("1.0", "2.0");
  expectWire(s, "otdr_span_v1");
  EXPECT_TRUE(s == span("-12.50", "2041.03") && OtdrSpan() != OtdrSpan()) << "ends that are no numbers equal nothing";
  EXPECT_EQ(Dump::toJsonString(s, level(0), false),
            R"({"_className":"OtdrSpan","_classVersion":1,"spanEnd":"2041.03","spanStart":"-12.5"})");
  // A read that fails leaves the span as it was. Marker, class version, id, length, then the version of both ends.
  const Bytes good = bytesOf(s), before = bytesOf(other);
  for (const auto& [at, status] : {std::pair{1, -2}, {3, -5}, {7, -1}, {11, -4}, {12, -5}, {18, -5}}) {
    EXPECT_EQ(readFrom(other, withByte(good, static_cast<std::size_t>(at), 9)), status) << "byte " << at;
    EXPECT_EQ(bytesOf(other), before);
  }
}

TEST(OtdrSpan, LogsTheKeyThatFailedButNoOtherClass) {
  const CapturedLog log;
  OtdrSpan s = span("1", "2");
  for (const char* row : {"_className||92", "_className|otdrSpan|", "spanStart||98", "spanStart|x|98", "spanEnd||99"}) {
    const std::string key = split(row)[0], value = split(row)[1], line = split(row)[2];
    log.lines().clear();
    Json::Value changed = s.toJson(level(2));
    changed[key] = value.empty() ? Json::Value() : Json::Value(value);
    EXPECT_FALSE(s.fromJson(changed, nullptr));
    const std::string report = "13|1|fromJson failed for " + key + " in libcrossplatform/common/OtdrSpan line " + line;
    EXPECT_EQ(log.lines(), line.empty() ? std::vector<std::string>() : std::vector<std::string>{report});
  }
  log.lines().clear();
  EXPECT_TRUE(s.fromJsonString("// a comment\n" + Dump::toJsonString(s)));
  EXPECT_FALSE(s.fromJson(static_cast<const Json::Value*>(nullptr), "span"));
  EXPECT_EQ(s.toJson(level(2)), OtdrSpan().toJson(level(2))) << "a null pointer clears, unlike other failures";
  EXPECT_EQ(log.lines().size(), 1u);
}
