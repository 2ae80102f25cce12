#include <libcrossplatform/common/ResultSummary.h>

#include <ctime>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

DisplayMeas measurement(const char* text) {
  DisplayMeas m;
  EXPECT_TRUE(m.fromString(text));
  return m;
}

ResultSummary sampleSummary() {
  return ResultSummary("A-017", RESULT_TYPE_COPPER, 1706692500, STATUS_PASS_STAR, measurement("45.2"),
                       measurement("<1.3"), 0x80000001u, 12, 1, 0);
}

ResultPathSummary samplePath(const char* name = "A-017", unsigned size = 4711) {
  return ResultPathSummary(name, RESULT_TYPE_FIBER, 1551675967, "/data/A-017.res", size);
}

template <class List, class Element>
void addCopy(List& list, const Element& element) {
  list.add(std::make_unique<Element>(element));
}

/// A summary or path summary that goes its own way onto the wire.
template <class Record>
struct Own : Record {
  explicit Own(const Record& record) : Record(record) {}
  unsigned serialize(Marshal::IObjectWriter& out) override { return out.writeUInt16(0xBEEF); }
};

/// A caller's own streams that offer a window: what they are asked for is noted.
struct WindowWriter : PlainWriter {
  Marshal::ByteStreamBuilder own{1};  // its window moves
  mutable std::string calls;
  uint32_t position() const override { return calls += 'p', own.position(); }
  Marshal::WriteWindow window(uint32_t need) override { return calls += 'w', own.window(need); }
  void advanceTo(uint8_t* cursor) override { calls += 'a', own.advanceTo(cursor); }
  bool rewriteUInt32(uint32_t at, uint32_t v) override { return calls += 'r', own.rewriteUInt32(at, v); }
  bool countsOnly() const override { return calls += 'c', false; }
};
struct WindowReader : PlainReader {
  explicit WindowReader(const Bytes& bytes)
      : PlainReader(bytes), own(bytes.data(), static_cast<uint32_t>(bytes.size())) {}
  Marshal::ByteStreamReader own;
  mutable std::string calls;
  uint32_t position() const override { return calls += 'p', own.position(); }
  Marshal::ReadWindow window() override { return calls += 'w', own.window(); }
  void advanceTo(const uint8_t* cursor) override { calls += 'a', own.advanceTo(cursor); }
  Marshal::StreamOpStatus status() const override { return calls += 's', own.status(); }
};

/// Runs in a time zone of its own; the tests need none besides.
struct InZone {
  explicit InZone(const char* zone) { setenv("TZ", zone, 1); }
  ~InZone() { unsetenv("TZ"); }
};

}  // namespace

TEST(ResultSummary, Wire) {
  expectWire(sampleSummary(), "result_summary_v1");
  EXPECT_FALSE(ResultSummary() == ResultSummary()) << "measurements that are no numbers equal nothing";
  ResultSummary r = sampleSummary();
  r.numFailTests = 1;
  EXPECT_TRUE(r != sampleSummary() && !(r == sampleSummary()));
  // Counts and enumerations are single signed bytes.
  r.resultName.assign("a\0b", 3);
  r.timeStamp = -2;
  r.numFailTests = 200;
  r.numPassTests = -1;
  r.numPassStarTests = 0x17F;
  r.resultType = static_cast<ResultType>(-3);
  r.status = static_cast<Status>(0x80);
  ResultSummary read;
  ASSERT_EQ(readFrom(read, bytesOf(r)), 0);
  EXPECT_TRUE(read.resultName == r.resultName && read.timeStamp == -2);
  EXPECT_TRUE(read.numPassTests == -1 && read.numPassStarTests == 127 && read.numFailTests == -56);
  EXPECT_TRUE(read.resultType == -3 && read.status == -128);
  Bytes claims = bytesOf(r);
  claims[11] = static_cast<uint8_t>(claims[11] + 100);
  claims[15] = static_cast<uint8_t>(claims[15] + 100);
  EXPECT_EQ(readFrom(read, claims), -3) << "record and name agree on bytes that are not there";
}

TEST(ResultSummary, ItsTimeIsThatOfTheZone) {
  const InZone zone("XYZ-3");
  const ResultSummary r = sampleSummary();
  EXPECT_NE(Dump::toJsonString(r).find("Wed Jan 31 12:15:00 2024"), std::string::npos);
  setenv("TZ", "XYZ+5", 1);
  EXPECT_NE(Dump::toJsonString(r).find("Wed Jan 31 04:15:00 2024"), std::string::npos) << "a zone set since";
  EXPECT_EQ(samplePath().getDateTimeString(), "2019-03-04T05:06:07");
}

TEST(ResultSummaryList, WireAndNoNull) {
  ResultSummaryList list;
  addCopy(list, sampleSummary());
  addCopy(list, ResultSummary());
  expectWire(list, "result_summary_list_v1");
  CapturedAsserts asserts;
  list.add(nullptr);
  EXPECT_EQ(list.size(), 2u);
  EXPECT_EQ(asserts.reports(), std::vector<std::string>{"p != nullptr|libcrossplatform/common/ResultSummary|104"});
}

TEST(ResultSummaryList, SeventyThousandAreWrittenBehindACountCutToSixteenBits) {
  ResultSummaryList list;
  for (int i = 0; i < 70000; ++i) list.add(std::make_unique<ResultSummary>());
  list[4463].testFlags = 7;
  const Bytes bytes = bytesOf(list);
  EXPECT_EQ(bytes.size(), 14u + 70000 * bytesOf(list[0]).size());
  EXPECT_EQ((Bytes{bytes[12], bytes[13]}), (Bytes{0x11, 0x70}));
  ResultSummaryList read;
  EXPECT_EQ(readFrom(read, bytes), -4) << "bytes are left over";
  ASSERT_EQ(read.size(), 4464u);
  EXPECT_EQ(read[4463].testFlags, 7u);
}

TEST(ResultSummaryList, IsReadOverTheElementsThatAreThere) {
  ResultSummaryList two, list;
  for (const char* const name : {"a name that needs memory", "short"}) {
    addCopy(two, sampleSummary());
    two[two.size() - 1].resultName = name;
  }
  addCopy(list, ResultSummary());
  list.add(std::make_unique<Own<ResultSummary>>(sampleSummary()));
  addCopy(list, sampleSummary());
  const ResultSummary* const first = &list[0];
  const Bytes good = bytesOf(two);
  ASSERT_EQ(readFrom(list, good), 0);
  EXPECT_EQ(bytesOf(list), good) << "a subclass is replaced, a third element cut";
  EXPECT_EQ(&list[0], first);
  EXPECT_EQ(readFrom(list, withByte(good, 14 + 12, 0xFF)), -1) << "the first name is too long";
  EXPECT_TRUE(list.empty());
  for (int i = 0; i < 3; ++i) addCopy(list, sampleSummary());
  EXPECT_EQ(readFrom(list, withByte(good, good.size() - 15, 2)), -1) << "the version of the last headroom";
  ASSERT_EQ(list.size(), 1u) << "nothing older stays after the last that was read";
  EXPECT_EQ(list[0], two[0]);
  EXPECT_EQ(readFrom(list, Bytes(good.begin(), good.begin() + 13)), -3) << "no count";
  EXPECT_TRUE(list.empty());
}

TEST(ResultSummaryList, AsksACallersStreamForEachElementAndElementsForTheirOwnBytes) {
  ResultSummaryList list;
  for (int i = 0; i < 2; ++i) addCopy(list, sampleSummary());
  const Bytes written = bytesOf(list);
  WindowWriter out;
  EXPECT_EQ(list.serialize(out), written.size());
  EXPECT_EQ(Bytes(out.own.data(), out.own.data() + out.own.size()), written);
  EXPECT_EQ(out.calls, "pwawapwaprwapwaprwapr");
  WindowReader in(written);
  EXPECT_EQ(list.deserialize(in), 0);
  EXPECT_EQ(in.calls, "pwapwaspwapwaspwasp");

  list.add(std::make_unique<Own<ResultSummary>>(sampleSummary()));
  ResultPathSummaryList paths;
  paths.add(std::make_unique<Own<ResultPathSummary>>(samplePath()));
  for (const Bytes& bytes : {bytesOf(list), bytesOf(paths)}) {
    EXPECT_EQ(Bytes(bytes.end() - 2, bytes.end()), (Bytes{0xBE, 0xEF})) << "an overriding serialize() is called";
  }
}

TEST(ResultPathSummary, Wire) {
  expectWire(samplePath(), "result_path_summary_v1");
  ResultPathSummaryList list;
  addCopy(list, samplePath());
  addCopy(list, samplePath("", 0));
  expectWire(list, "result_path_summary_list_v1");
}

TEST(ResultPathSummaryList, FindsTheLastOfOneName) {
  ResultPathSummaryList list;
  for (const unsigned size : {1u, 2u}) addCopy(list, samplePath("A", size));
  addCopy(list, samplePath("B", 3));
  ASSERT_NE(list.find("A"), nullptr);
  EXPECT_EQ(list.find("A")->filesize, 2u);
  EXPECT_EQ(list.find("a"), nullptr);
}
