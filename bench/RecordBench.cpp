// Encoding and decoding of result summaries, each beside its limit: the bare stores and loads of the same bytes.

#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>

#include <cstring>
#include <memory>
#include <vector>

#include "AllocationCounter.h"
#include "OwnStreams.h"
#include "SummaryFields.h"

using namespace Bench;
using namespace Veltra;

namespace {

constexpr uint32_t LIST_HEAD_BYTES = 12 + 2;  // header and count

template <class T>
uint8_t* store(uint8_t* to, T value) {
  if constexpr (sizeof(T) == 2) value = static_cast<T>(__builtin_bswap16(static_cast<uint16_t>(value)));
  if constexpr (sizeof(T) == 4) value = static_cast<T>(__builtin_bswap32(static_cast<uint32_t>(value)));
  if constexpr (sizeof(T) == 8) value = static_cast<T>(__builtin_bswap64(static_cast<uint64_t>(value)));
  std::memcpy(to, &value, sizeof value);
  return to + sizeof value;
}

template <class T>
const uint8_t* load(const uint8_t* from, T& value) {
  std::memcpy(&value, from, sizeof value);
  if constexpr (sizeof(T) == 2) value = static_cast<T>(__builtin_bswap16(static_cast<uint16_t>(value)));
  if constexpr (sizeof(T) == 4) value = static_cast<T>(__builtin_bswap32(static_cast<uint32_t>(value)));
  if constexpr (sizeof(T) == 8) value = static_cast<T>(__builtin_bswap64(static_cast<uint64_t>(value)));
  return from + sizeof value;
}

uint8_t* storeHeader(uint8_t* to, uint16_t classId, uint32_t length) {
  to = store<uint32_t>(to, 0xABCD0101);  // marker, header format, class version
  to = store<uint16_t>(to, 0x51);
  to = store(to, classId);
  return store(to, length);
}

uint8_t* storeMeasurement(uint8_t* to, const Measurement& m) {
  to = store<uint16_t>(to, 0x0101);  // class versions of the measurement and of its value
  to = store(to, m.raw);
  to = store(to, m.scaledTo);
  return store(to, m.type);
}

const uint8_t* loadMeasurement(const uint8_t* from, Measurement& m) {
  from = load(from + 2, m.raw);
  from = load(from, m.scaledTo);
  return load(from, m.type);
}

[[gnu::noinline]] uint8_t* storeSummary(uint8_t* to, const SummaryFields& s) {
  const auto nameBytes = static_cast<uint32_t>(s.resultName.size());
  to = storeHeader(to, 1, 37 + nameBytes);
  to = store(to, nameBytes);
  std::memcpy(to, s.resultName.data(), nameBytes);
  to = store(to + nameBytes, s.resultType);
  to = store(to, s.timeStamp);
  to = store(to, s.status);
  to = storeMeasurement(to, s.length);
  to = storeMeasurement(to, s.headroom);
  to = store(to, s.testFlags);
  to = store(to, s.numPassTests);
  to = store(to, s.numPassStarTests);
  return store(to, s.numFailTests);
}

[[gnu::noinline]] const uint8_t* loadSummary(const uint8_t* from, SummaryFields& s) {
  uint32_t nameBytes = 0;
  from = load(from + 12, nameBytes);
  s.resultName.assign(reinterpret_cast<const char*>(from), nameBytes);
  from = load(from + nameBytes, s.resultType);
  from = load(from, s.timeStamp);
  from = load(from, s.status);
  from = loadMeasurement(from, s.length);
  from = loadMeasurement(from, s.headroom);
  from = load(from, s.testFlags);
  from = load(from, s.numPassTests);
  from = load(from, s.numPassStarTests);
  return load(from, s.numFailTests);
}

DisplayMeas measurementOf(const Measurement& m) {
  return {ScaledInt::fromRaw(m.raw, static_cast<ScaledInt::ScaledTo>(m.scaledTo)), static_cast<DisplayType>(m.type)};
}

ResultSummary sampleSummary() {
  const SummaryFields s = sampleFields();
  return ResultSummary(s.resultName.c_str(), static_cast<ResultType>(s.resultType), static_cast<long>(s.timeStamp),
                       static_cast<Status>(s.status), measurementOf(s.length), measurementOf(s.headroom), s.testFlags,
                       s.numPassTests, s.numPassStarTests, s.numFailTests);
}

void fillSample(ResultSummaryList& list) {
  for (int i = 0; i < LIST_SIZE; ++i) list.add(std::make_unique<ResultSummary>(sampleSummary()));
}

template <class Record>
std::vector<uint8_t> bytesOf(Record& record) {
  Marshal::ByteStreamBuilder out;
  record.serialize(out);
  return {out.data(), out.data() + out.size()};
}

/// The summary's bytes, as library and limit both write them.
std::vector<uint8_t> sampleBytes(benchmark::State& state) {
  ResultSummary summary = sampleSummary();
  std::vector<uint8_t> bytes = bytesOf(summary);
  uint8_t bare[SUMMARY_BYTES];
  if (bytes.size() != SUMMARY_BYTES || storeSummary(bare, sampleFields()) != bare + SUMMARY_BYTES ||
      std::memcmp(bytes.data(), bare, SUMMARY_BYTES) != 0) {
    state.SkipWithError("the limit stores other bytes than the library");
  }
  return bytes;
}

std::vector<uint8_t> sampleListBytes() {
  ResultSummaryList list;
  fillSample(list);
  return bytesOf(list);
}

void encodeLimit(benchmark::State& state) {
  std::vector<uint8_t> buffer = sampleBytes(state);
  const SummaryFields fields = sampleFields();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(storeSummary(buffer.data(), fields));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encodeLimit)->Name("encode/limit");

void encodeFreshLimit(benchmark::State& state) {
  const std::size_t size = sampleBytes(state).size();
  const SummaryFields fields = sampleFields();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    const std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]);
    benchmark::DoNotOptimize(storeSummary(buffer.get(), fields));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encodeFreshLimit)->Name("encode fresh/limit");

template <class Record>
void encodeReused(benchmark::State& state, Record& record) {
  Marshal::ByteStreamBuilder out;
  record.serialize(out);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    out.reset();
    record.serialize(out);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}

void encodeFresh(benchmark::State& state, ResultSummary& summary) {
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    Marshal::ByteStreamBuilder out;
    summary.serialize(out);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}

template <class Record>
void encodeOwn(benchmark::State& state, Record& record) {
  std::vector<uint8_t> buffer = bytesOf(record);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    OwnWriter out(buffer.data());
    record.serialize(out);
    benchmark::ClobberMemory();
  }
}

template <class Record>
void countBytes(benchmark::State& state, Record& record) {
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    Marshal::ByteStreamCounter counter;
    record.serialize(counter);
    benchmark::DoNotOptimize(counter.size());
    benchmark::ClobberMemory();
  }
}

template <class Stream, class Record>
void decodeReused(benchmark::State& state, const std::vector<uint8_t>& bytes, Record& record) {
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    Stream in(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (record.deserialize(in) != 0) state.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
}

template <class Record>
void decodeFresh(benchmark::State& state, const std::vector<uint8_t>& bytes) {
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    Record record;
    Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (record.deserialize(in) != 0) state.SkipWithError("not read");
    benchmark::DoNotOptimize(&record);
    benchmark::ClobberMemory();
  }
}

template <void (*RUN)(benchmark::State&, ResultSummary&)>
void one(benchmark::State& state) {
  ResultSummary summary = sampleSummary();
  RUN(state, summary);
}
BENCHMARK(one<encodeReused>)->Name("encode/veltra");
BENCHMARK(one<encodeFresh>)->Name("encode fresh/veltra");
BENCHMARK(one<encodeOwn>)->Name("encode/own stream");
BENCHMARK(one<countBytes>)->Name("count/veltra");

void decodeLimit(benchmark::State& state) {
  const std::vector<uint8_t> bytes = sampleBytes(state);
  SummaryFields fields = sampleFields();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(loadSummary(bytes.data(), fields));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decodeLimit)->Name("decode/limit");

void decodeFreshLimit(benchmark::State& state) {
  const std::vector<uint8_t> bytes = sampleBytes(state);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    SummaryFields fields;
    benchmark::DoNotOptimize(loadSummary(bytes.data(), fields));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decodeFreshLimit)->Name("decode fresh/limit");

template <class Stream>
void decodeOne(benchmark::State& state) {
  ResultSummary summary = sampleSummary();
  decodeReused<Stream>(state, sampleBytes(state), summary);
}
void decodeOneFresh(benchmark::State& state) {
  decodeFresh<ResultSummary>(state, sampleBytes(state));
}
BENCHMARK(decodeOne<Marshal::ByteStreamReader>)->Name("decode/veltra");
BENCHMARK(decodeOneFresh)->Name("decode fresh/veltra");
BENCHMARK(decodeOne<OwnReader>)->Name("decode/own stream");

using FieldsList = std::vector<std::unique_ptr<SummaryFields>>;

FieldsList sampleFieldsList() {
  FieldsList list;
  for (int i = 0; i < LIST_SIZE; ++i) list.push_back(std::make_unique<SummaryFields>(sampleFields()));
  return list;
}

void encodeListLimit(benchmark::State& state) {
  const FieldsList list = sampleFieldsList();
  std::vector<uint8_t> buffer = sampleListBytes();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    uint8_t* to = storeHeader(buffer.data(), 2, static_cast<uint32_t>(buffer.size()) - 12);
    to = store<uint16_t>(to, LIST_SIZE);
    for (const auto& element : list) to = storeSummary(to, *element);
    benchmark::DoNotOptimize(to);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encodeListLimit)->Name("encode list/limit");

template <void (*RUN)(benchmark::State&, ResultSummaryList&)>
void thousand(benchmark::State& state) {
  ResultSummaryList list;
  fillSample(list);
  RUN(state, list);
}
BENCHMARK(thousand<encodeReused>)->Name("encode list/veltra");
BENCHMARK(thousand<encodeOwn>)->Name("encode list/own stream");
BENCHMARK(thousand<countBytes>)->Name("count list/veltra");

void decodeListLimit(benchmark::State& state) {
  const std::vector<uint8_t> bytes = sampleListBytes();
  const FieldsList list = sampleFieldsList();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    const uint8_t* from = bytes.data() + LIST_HEAD_BYTES;
    for (const auto& element : list) from = loadSummary(from, *element);
    benchmark::DoNotOptimize(from);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decodeListLimit)->Name("decode list/limit");

/// A list owns its elements one by one, so the limit allocates them one by one too.
void decodeListFreshLimit(benchmark::State& state) {
  const std::vector<uint8_t> bytes = sampleListBytes();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    FieldsList list;
    list.reserve(LIST_SIZE);
    const uint8_t* from = bytes.data() + LIST_HEAD_BYTES;
    for (int i = 0; i < LIST_SIZE; ++i) {
      list.push_back(std::make_unique<SummaryFields>());
      from = loadSummary(from, *list.back());
    }
    benchmark::DoNotOptimize(from);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decodeListFreshLimit)->Name("decode list fresh/limit");

template <class Stream>
void decodeThousand(benchmark::State& state) {
  ResultSummaryList list;
  fillSample(list);
  decodeReused<Stream>(state, bytesOf(list), list);
}
BENCHMARK(decodeThousand<Marshal::ByteStreamReader>)->Name("decode list/veltra");
void decodeThousandFresh(benchmark::State& state) {
  decodeFresh<ResultSummaryList>(state, sampleListBytes());
}
BENCHMARK(decodeThousandFresh)->Name("decode list fresh/veltra");
BENCHMARK(decodeThousand<OwnReader>)->Name("decode list/own stream");

}  // namespace
