// The same summary through FlatBuffers: built from plain fields in a builder that is reused; verified and taken out
// into plain fields, as a program does that keeps records.

#include <vector>

#include "AllocationCounter.h"
#include "SummaryFields.h"
#include "summary_generated.h"

using namespace Bench;
namespace peer = peer_flatbuffers;

namespace {

peer::Measurement packed(const Measurement& m) {
  return {m.raw, m.scaledTo, m.type};
}

Measurement unpacked(const peer::Measurement& m) {
  return {m.raw(), m.scaled_to(), m.type()};
}

flatbuffers::Offset<peer::Summary> put(flatbuffers::FlatBufferBuilder& out, const SummaryFields& s) {
  const peer::Measurement length = packed(s.length);
  const peer::Measurement headroom = packed(s.headroom);
  return peer::CreateSummary(out, out.CreateString(s.resultName), s.resultType, s.timeStamp, s.status, &length,
                             &headroom, s.testFlags, s.numPassTests, s.numPassStarTests, s.numFailTests);
}

void take(SummaryFields& to, const peer::Summary& s) {
  if (s.result_name() != nullptr) to.resultName.assign(s.result_name()->c_str(), s.result_name()->size());
  to.resultType = s.result_type();
  to.timeStamp = s.time_stamp();
  to.status = s.status();
  if (s.length() != nullptr) to.length = unpacked(*s.length());
  if (s.headroom() != nullptr) to.headroom = unpacked(*s.headroom());
  to.testFlags = s.test_flags();
  to.numPassTests = s.num_pass_tests();
  to.numPassStarTests = s.num_pass_star_tests();
  to.numFailTests = s.num_fail_tests();
}

void build(flatbuffers::FlatBufferBuilder& out, const SummaryFields& fields) {
  out.Finish(put(out, fields));
}

void build(flatbuffers::FlatBufferBuilder& out, const std::vector<SummaryFields>& list,
           std::vector<flatbuffers::Offset<peer::Summary>>& offsets) {
  offsets.clear();
  for (const SummaryFields& fields : list) offsets.push_back(put(out, fields));
  out.Finish(peer::CreateSummaryList(out, out.CreateVector(offsets)));
}

template <class Root>
const Root* verified(const flatbuffers::FlatBufferBuilder& bytes) {
  flatbuffers::Verifier verifier(bytes.GetBufferPointer(), bytes.GetSize());
  return verifier.VerifyBuffer<Root>(nullptr) ? flatbuffers::GetRoot<Root>(bytes.GetBufferPointer()) : nullptr;
}

void encode(benchmark::State& state) {
  const SummaryFields fields = sampleFields();
  flatbuffers::FlatBufferBuilder out;
  build(out, fields);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    out.Clear();
    build(out, fields);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encode)->Name("encode/flatbuffers");

void decode(benchmark::State& state) {
  flatbuffers::FlatBufferBuilder bytes;
  SummaryFields fields = sampleFields();
  build(bytes, fields);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    const peer::Summary* const summary = verified<peer::Summary>(bytes);
    if (summary == nullptr) return state.SkipWithError("not read");
    take(fields, *summary);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decode)->Name("decode/flatbuffers");

void encodeList(benchmark::State& state) {
  const std::vector<SummaryFields> list(LIST_SIZE, sampleFields());
  std::vector<flatbuffers::Offset<peer::Summary>> offsets;
  flatbuffers::FlatBufferBuilder out;
  build(out, list, offsets);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    out.Clear();
    build(out, list, offsets);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encodeList)->Name("encode list/flatbuffers");

/// Into elements that stay: kinder than what the library's list does, which owns each of its elements anew.
void decodeList(benchmark::State& state) {
  std::vector<SummaryFields> list(LIST_SIZE, sampleFields());
  std::vector<flatbuffers::Offset<peer::Summary>> offsets;
  flatbuffers::FlatBufferBuilder bytes;
  build(bytes, list, offsets);
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    const peer::SummaryList* const read = verified<peer::SummaryList>(bytes);
    if (read == nullptr || read->elements() == nullptr) return state.SkipWithError("not read");
    for (flatbuffers::uoffset_t i = 0; i < read->elements()->size(); ++i) take(list[i], *read->elements()->Get(i));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decodeList)->Name("decode list/flatbuffers");

}  // namespace
