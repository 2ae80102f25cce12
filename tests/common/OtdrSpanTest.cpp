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
  const OtdrSpan s = span("-12.5", "2041.03");
  expectWire(OtdrSpan(s), "otdr_span_v1");
  OtdrSpan read;
  EXPECT_TRUE(read.fromJsonString("// a comment\n" + Dump::toJsonString(s)) && read == s);
  EXPECT_TRUE(s == span("-12.50", "2041.03") && OtdrSpan() != OtdrSpan()) << "ends that are no numbers equal nothing";
}
