#include "Scratch.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace Fuzz {

MemoryFile::MemoryFile()
    : _descriptor(memfd_create("fuzz", MFD_CLOEXEC)), _path("/proc/self/fd/" + std::to_string(_descriptor)) {
  FUZZ_CHECK(_descriptor >= 0);
}

MemoryFile::~MemoryFile() {
  close(_descriptor);
}

void MemoryFile::fill(const uint8_t* data, std::size_t size) {
  FUZZ_CHECK(ftruncate(_descriptor, 0) == 0);
  FUZZ_CHECK(pwrite(_descriptor, data, size, 0) == static_cast<ssize_t>(size));
}

ScratchDirectory::ScratchDirectory() : _path(std::filesystem::temp_directory_path().string() + "/fuzz.XXXXXX") {
  FUZZ_CHECK(mkdtemp(_path.data()) != nullptr);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(_path, ignored);
}

std::size_t ScratchDirectory::files() const {
  const std::filesystem::directory_iterator first(_path);
  return static_cast<std::size_t>(std::distance(first, std::filesystem::directory_iterator()));
}

}  // namespace Fuzz
