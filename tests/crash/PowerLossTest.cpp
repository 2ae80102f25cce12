// What a file may hold after its writer was killed: what was written up to there; and after the power failed: of
// everything written since the last sync any subset of the sectors, in place of the others what stood there before,
// zeros, or whatever the disk held. How many images is in VELTRA_SUBSETS, drawn from VELTRA_SEED, which is printed.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>

#include <algorithm>
#include <random>

#include <libcrossplatform/common/PFile.h>
#include <libinspect/container/Recover.h>

#include "CallFaults.h"
#include "Workloads.h"

using namespace Workloads;
using RecordTesting::inChild, RecordTesting::writeFile;

namespace {

constexpr std::size_t SECTOR = 512;

/// What was done to the file that the workload writes, in order.
struct Step {
  enum Kind { WRITE, SYNC, RENAME, SYNC_DIRECTORY } kind;
  std::size_t offset;
  Bytes bytes;
};
std::vector<Step> steps;
int descriptor = -1, duplicate = -1, directoryDescriptor = -1;
std::size_t position = 0;

/// Follows the first descriptor of the file that is written, and the one that a stream has of it.
void record(int number, const long* arguments, long result) {
  if (result < 0) return;
  const int fd = static_cast<int>(arguments[0]);
  const bool isFile = fd >= 0 && (fd == descriptor || fd == duplicate);
  if (number == SYS_openat) {
    if ((arguments[2] & O_DIRECTORY) != 0) directoryDescriptor = static_cast<int>(result);
    if ((arguments[2] & O_ACCMODE) != O_WRONLY) return;
    (descriptor < 0 ? descriptor : duplicate) = static_cast<int>(result);
    position = 0;
  } else if (number == SYS_fcntl && fd == descriptor && arguments[1] == F_DUPFD_CLOEXEC) {
    duplicate = static_cast<int>(result);
  } else if (number == SYS_write && isFile) {
    const auto* const at = reinterpret_cast<const uint8_t*>(arguments[1]);
    steps.push_back({Step::WRITE, position, Bytes(at, at + result)});
    position += static_cast<std::size_t>(result);
  } else if (number == SYS_lseek && isFile) {
    position = static_cast<std::size_t>(result);
  } else if (number == SYS_fsync) {
    if (isFile) steps.push_back({Step::SYNC, 0, {}});
    if (fd == directoryDescriptor) steps.push_back({Step::SYNC_DIRECTORY, 0, {}});
  } else if (number == SYS_close) {
    if (fd == descriptor) descriptor = -1;
    if (fd == duplicate) duplicate = -1;
    if (fd == directoryDescriptor) directoryDescriptor = -1;
#ifdef SYS_renameat
  } else if (number == SYS_renameat) {
    steps.push_back({Step::RENAME, 0, {}});
#endif
  }
}

/// The disk while the steps are done: what is surely there, and what may be.
class Disk {
 public:
  Disk(std::mt19937& random, Bytes before) : _random(random), _before(std::move(before)) {}

  void apply(const Step& step) {
    if (step.kind == Step::WRITE) {
      _written.resize(std::max(_written.size(), step.offset + step.bytes.size()));
      std::copy(step.bytes.begin(), step.bytes.end(), _written.begin() + static_cast<std::ptrdiff_t>(step.offset));
      _versions.push_back(_written);
    } else if (step.kind == Step::SYNC) {
      _versions = {_written};
      _isSynced = true;
    }
  }

  /// What a reader finds of the new file after its writer was killed now, one time in four, or the power failed: each
  /// sector from any version since the last sync, or never written, and the length of any version.
  Bytes afterTheEnd() {
    if (_random() % 4 == 0) return _written;
    Bytes found = _versions.empty() ? Bytes() : _versions[_random() % _versions.size()];
    for (std::size_t at = 0; at < found.size(); at += SECTOR) {
      const std::size_t end = std::min(at + SECTOR, found.size());
      const std::size_t pick = _random() % (_versions.size() + (_isSynced ? 0 : 1));
      const Bytes* const version = pick < _versions.size() ? &_versions[pick] : nullptr;
      const unsigned unwritten = static_cast<unsigned>(_random() % 3);
      for (std::size_t i = at; i < end; ++i) {
        const auto garbage = static_cast<uint8_t>(unwritten == 0 ? 0 : _random());
        const uint8_t old = unwritten == 2 && i < _before.size() ? _before[i] : garbage;
        found[i] = version == nullptr ? old : i < version->size() ? (*version)[i] : garbage;
      }
    }
    return found;
  }

 private:
  std::mt19937& _random;
  Bytes _before;  ///< what the sectors held before: the file that is overwritten
  Bytes _written;
  std::vector<Bytes> _versions;
  bool _isSynced = false;
};

/// What an environment variable says.
unsigned long numberFrom(const char* variable, unsigned long otherwise) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::strtoul(text, nullptr, 10) : otherwise;
}

/// The steps of a workload, recorded from its system calls.
bool recordSteps(const Workload& workload) {
  const RecordTesting::TempDir directory;
  prepare(workload, directory.path);
  if (!Calls::trap()) return false;
  Calls::observe(record);
  EXPECT_EQ(run(workload, pathIn(directory.path)), 0);
  Calls::observe(nullptr);
  EXPECT_EQ(check(workload, directory.path, 0, Fault::CALL), "");
  return true;
}

/// Replacing a file: only what was synced gets its name, so that the name always leads to the old file or the new one.
void expectNamedOnlyWhenSynced() {
  std::string order;
  for (const Step& step : steps) {
    if (order.empty() || step.kind != Step::WRITE || order.back() != 'w') order += "wsrd"[step.kind];
  }
  EXPECT_EQ(order, "wsrd") << "written, synced, renamed, and the directory synced";
}

/// A file in memory with these bytes, by its path: no disk is worn for thousands of images.
const std::string& imageOf(const Bytes& bytes) {
  static const std::string PATH = "/proc/self/fd/" + std::to_string(memfd_create("image", 0));
  writeFile(PATH, bytes);
  return PATH;
}

/// @return how many of the images were the whole new file
int endAnywhere(const Workload& workload, const Bytes& before, unsigned long subsets, std::mt19937& random) {
  int whole = 0;
  for (unsigned long n = 0; n < subsets && !::testing::Test::HasFailure(); ++n) {
    SCOPED_TRACE("subset " + std::to_string(n));
    Disk disk(random, before);
    const std::size_t done = random() % (steps.size() + 1);
    for (std::size_t i = 0; i < done; ++i) disk.apply(steps[i]);
    const Bytes found = disk.afterTheEnd();
    const bool isWhole = found == workload.after;
    EXPECT_EQ(isClean(imageOf(found)), isWhole)
        << "doctor is content with " << found.size() << " bytes that are not the file";
    whole += isWhole;
  }
  return whole;
}

class PowerLoss : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Of, PowerLoss,
                         ::testing::Values("save", "save_in_place", "package", "replace", "profile_save", "recover"));

}  // namespace

TEST_P(PowerLoss, AFileHasItsNameWhenItIsSyncedAndDoctorIsContentWithTheWholeOneAlone) {
  const Workload& workload = *find(GetParam());
  const unsigned long subsets = numberFrom("VELTRA_SUBSETS", 1000);
  const unsigned long seed = numberFrom("VELTRA_SEED", std::random_device()());
  std::printf("VELTRA_SEED=%lu VELTRA_SUBSETS=%lu\n", seed, subsets);
  // A file of the same kind stood there before: its sections verify too.
  const Bytes before = find("save")->after;
  inChild([&] {
    std::mt19937 random(static_cast<unsigned>(seed));
    if (!recordSteps(workload)) return false;
    if (workload.kind == Workload::REPLACES) expectNamedOnlyWhenSynced();
    if (!workload.isContainer) return true;
    // The same writing in place of another file, in other sectors: shifted, so that it is not the new one itself.
    const Bytes other(before.begin() + 24, before.end());
    const int whole = endAnywhere(workload, other, subsets, random);
    std::printf("%zu steps; %d of the images whole\n", steps.size(), whole);
    EXPECT_GT(whole, 0);
    return true;
  });
}
