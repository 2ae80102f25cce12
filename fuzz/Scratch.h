#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "FuzzInput.h"

namespace Fuzz {

/// Puts an input into a file in memory, for what reads files. @return its path, until the next one
inline const std::string& asFile(const Input& input) {
  static const int DESCRIPTOR = memfd_create("fuzz", MFD_CLOEXEC);
  static const std::string PATH = "/proc/self/fd/" + std::to_string(DESCRIPTOR);
  FUZZ_CHECK(ftruncate(DESCRIPTOR, 0) == 0);
  FUZZ_CHECK(pwrite(DESCRIPTOR, input.data, input.size, 0) == static_cast<ssize_t>(input.size));
  return PATH;
}

/// A directory of its own under TMPDIR with one file, for what writes beside it and renames. Gone when the process ends
/// in order.
class ScratchFile {
 public:
  ScratchFile() { FUZZ_CHECK(mkdtemp(_directory.data()) != nullptr); }
  ~ScratchFile() {
    std::error_code ignored;
    std::filesystem::remove_all(_directory, ignored);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  std::string path() const { return _directory + "/file"; }
  bool isAlone() const { return std::distance(std::filesystem::directory_iterator(_directory), {}) == 1; }

 private:
  std::string _directory = std::filesystem::temp_directory_path().string() + "/fuzz.XXXXXX";
};

}  // namespace Fuzz
