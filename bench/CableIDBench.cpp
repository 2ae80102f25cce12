// Handing out cable IDs, beside the obvious other way: a std::set of all IDs as texts, the first one erased. The set is
// faster at that, and the larger by far; it has no answer to which place an ID has, nor to which ID has a place.

#include <libcrossplatform/common/CableIDSeq.h>

#include <chrono>
#include <cstdlib>
#include <new>
#include <set>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

namespace {

size_t bytesAllocated = 0;

}  // namespace

[[gnu::noinline]] void* operator new(size_t size) {
  bytesAllocated += size;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

using Peer = std::set<std::string>;

std::string lastID(benchmark::IterationCount total) {
  const std::string digits = std::to_string(total - 1);
  return std::string(5 - digits.size(), '0') + digits;
}

CableIDSeq freshSequence(benchmark::State& state) {
  CableIDSeq sequence;
  if (!sequence.verifyIDSet("00000", lastID(state.range(0)))) state.SkipWithError("no such set");
  return sequence;
}

Peer freshPeer(const CableIDSeq& sequence) {
  Peer ids;
  for (int i = 0; i < static_cast<int>(sequence.getTotal()); ++i) ids.insert(ids.end(), sequence[i]);
  return ids;
}

std::string takeFrom(CableIDSeq& sequence) {
  return sequence.takeNextID();
}

std::string takeFrom(Peer& ids) {
  return std::move(ids.extract(ids.begin()).value());
}

/// The whole set: built, then handed out to the last ID.
void wholeSet(benchmark::State& state) {
  for (auto _ : state) {
    CableIDSeq sequence = freshSequence(state);
    while (sequence.getUsed() != sequence.getTotal()) benchmark::DoNotOptimize(takeFrom(sequence));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void wholeSetPeer(benchmark::State& state) {
  for (auto _ : state) {
    Peer ids = freshPeer(freshSequence(state));
    while (!ids.empty()) benchmark::DoNotOptimize(takeFrom(ids));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// One ID from a set with nearly all IDs free, which is the dearest; the time of TAKES of them is divided. Also counts
/// the bytes that a copy of the set allocates.
template <class Ids>
void timeTakes(benchmark::State& state, const Ids& all) {
  constexpr int TAKES = 32;
  for (auto _ : state) {
    bytesAllocated = 0;
    Ids ids = all;
    state.counters["bytes"] = static_cast<double>(bytesAllocated);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < TAKES; ++i) benchmark::DoNotOptimize(takeFrom(ids));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(elapsed.count() / TAKES);
  }
}

void oneTake(benchmark::State& state) {
  timeTakes(state, freshSequence(state));
}

void oneTakePeer(benchmark::State& state) {
  timeTakes(state, freshPeer(freshSequence(state)));
}

BENCHMARK(wholeSet)->Arg(32767)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeSetPeer)->Arg(32767)->Unit(benchmark::kMillisecond);
BENCHMARK(oneTake)->Arg(100)->Arg(1000)->Arg(10000)->Arg(32767)->UseManualTime()->Iterations(2000);
BENCHMARK(oneTakePeer)->Arg(100)->Arg(1000)->Arg(10000)->Arg(32767)->UseManualTime()->Iterations(100);

}  // namespace

BENCHMARK_MAIN();
