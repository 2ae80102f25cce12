// Every system call and every allocation of every workload fails in turn.

#include <cerrno>
#include <cstring>

#include "AllocationFaults.h"
#include "CallFaults.h"
#include "Workloads.h"

using namespace Workloads;
using RecordTesting::inChild;

namespace {

class Sweep : public ::testing::TestWithParam<Workload> {
 protected:
  Sweep() {
    setenv("TZ", "UTC0", 1);       // libc looks after its file of time zones, and at times frees what it knows of it
    for (int i = 0; i < 2; ++i) {  // what is allocated once is allocated now
      prepare(workload, _directory);
      EXPECT_EQ(run(workload, _path), 0);
      EXPECT_EQ(check(workload, _directory, 0, Fault::CALL), "");
    }
  }

  /// One run between `arm` and `disarm`.
  /// @return how many faults it met
  long tryOnce(const std::function<void()>& arm, long (*disarm)(), Fault fault) {
    long faults = 0;
    bool isLeaking = true;
    // What leaks does so each time; OpenSSL's tables grow and shrink by a slot as it pleases.
    for (int attempt = 0; attempt < 8 && isLeaking; ++attempt) {
      prepare(workload, _directory);
      const int descriptors = openDescriptors();
      const std::size_t bytes = Allocations::live();
      arm();
      const int code = run(workload, _path);
      faults = disarm();
      isLeaking = Allocations::live() > bytes;
      EXPECT_EQ(openDescriptors(), descriptors) << "a descriptor leaked";
      EXPECT_EQ(check(workload, _directory, code, fault), "");
    }
    EXPECT_FALSE(isLeaking) << "memory leaked";
    _met += faults > 0;
    return faults;
  }

  void failsInTurn(const Calls::Call& call, int error, bool forGood) {
    for (long k = 0, faults = 1; faults > 0; ++k) {
      SCOPED_TRACE(std::string(call.name) + " number " + std::to_string(k) + ": " + std::strerror(error) +
                   (forGood ? " for good" : " once"));
      faults = tryOnce([&] { Calls::failAfter(call.number, k, error, forGood); }, Calls::stopFailing,
                       std::string(call.name) == "unlinkat" ? Fault::REMOVING : Fault::CALL);
    }
  }

  const Workload& workload = GetParam();
  const RecordTesting::TempDir _scratch;
  const std::string& _directory = _scratch.path;
  const std::string _path = pathIn(_directory);
  long _met = 0;  ///< runs that met a fault
};

INSTANTIATE_TEST_SUITE_P(Of, Sweep, ::testing::ValuesIn(all()), [](const auto& tested) { return tested.param.name; });

}  // namespace

TEST_P(Sweep, EveryCallFailsInTurn) {
  inChild([this] {
    if (!Calls::trap()) return false;
    for (const Calls::Call& call : Calls::ALL) {
      const long before = _met;
      for (const int error : {EIO, ENOSPC, EINTR, EMFILE}) {
        failsInTurn(call, error, false);
        if (_met == before) break;  // a call that this workload does not make
        failsInTurn(call, error, true);
      }
    }
    std::printf("%ld runs met a failing call\n", _met);
    EXPECT_GT(_met, 0);
    return true;
  });
}

TEST_P(Sweep, EveryAllocationFailsInTurn) {
  if (!Allocations::isReplaced()) GTEST_SKIP();
  for (const bool forGood : {false, true}) {
    for (long k = 0, faults = 1; faults > 0; ++k) {
      SCOPED_TRACE("allocation " + std::to_string(k) + (forGood ? " and all later ones" : " alone"));
      faults = tryOnce([&] { Allocations::refuseAfter(k, forGood); }, Allocations::stopRefusing, Fault::ALLOCATION);
    }
  }
  std::printf("%ld runs met a failing allocation\n", _met);
}
