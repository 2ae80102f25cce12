// The same summary through protobuf: messages kept filled and buffers reused, as the library's are.

#include <string>

#include "AllocationCounter.h"
#include "SummaryFields.h"
#include "summary.pb.h"

using namespace Bench;

namespace {

void fill(peer_protobuf::Measurement& to, const Measurement& m) {
  to.set_raw(m.raw);
  to.set_scaled_to(m.scaledTo);
  to.set_type(m.type);
}

void fill(peer_protobuf::Summary& to) {
  const SummaryFields s = sampleFields();
  to.set_result_name(s.resultName);
  to.set_result_type(s.resultType);
  to.set_time_stamp(s.timeStamp);
  to.set_status(s.status);
  fill(*to.mutable_length(), s.length);
  fill(*to.mutable_headroom(), s.headroom);
  to.set_test_flags(s.testFlags);
  to.set_num_pass_tests(s.numPassTests);
  to.set_num_pass_star_tests(s.numPassStarTests);
  to.set_num_fail_tests(s.numFailTests);
}

void fill(peer_protobuf::SummaryList& to) {
  for (int i = 0; i < LIST_SIZE; ++i) fill(*to.add_elements());
}

template <class Message>
void encode(benchmark::State& state) {
  Message message;
  fill(message);
  std::string buffer = message.SerializeAsString();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    if (!message.SerializeToArray(buffer.data(), static_cast<int>(buffer.size()))) state.SkipWithError("not written");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(encode<peer_protobuf::Summary>)->Name("encode/protobuf");
BENCHMARK(encode<peer_protobuf::SummaryList>)->Name("encode list/protobuf");

template <class Message>
void decode(benchmark::State& state) {
  Message message;
  fill(message);
  const std::string bytes = message.SerializeAsString();
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    if (!message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) state.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(decode<peer_protobuf::Summary>)->Name("decode/protobuf");
BENCHMARK(decode<peer_protobuf::SummaryList>)->Name("decode list/protobuf");

}  // namespace
