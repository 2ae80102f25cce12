#pragma once

#include <cstddef>

#include <benchmark/benchmark.h>

namespace Bench {

/// How often this program has called operator new so far, the shared library included. What zlib and stdio take from
/// malloc is not in it.
std::size_t allocations();

/// Reports the allocations as the counter "allocs". Stands before the loop it counts.
class AllocationCounter {
 public:
  /// @param things  handled by one iteration: the counter is for each of them
  explicit AllocationCounter(benchmark::State& state, std::size_t things = 1)
      : _state(state), _things(things), _before(allocations()) {}
  ~AllocationCounter() {
    const double perThing = static_cast<double>(allocations() - _before) / static_cast<double>(_things);
    _state.counters["allocs"] = benchmark::Counter(perThing, benchmark::Counter::kAvgIterations);
  }
  AllocationCounter(const AllocationCounter&) = delete;
  AllocationCounter& operator=(const AllocationCounter&) = delete;

 private:
  benchmark::State& _state;
  std::size_t _things;
  std::size_t _before;
};

}  // namespace Bench
