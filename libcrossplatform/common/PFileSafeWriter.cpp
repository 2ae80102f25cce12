#include <libcrossplatform/common/PFileSafeWriter.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

namespace PFile {
namespace {

/// A number for the name of a temporary file, another at each call. From clock, process and a count: a source of random
/// numbers may fail, and saving must not depend on it. That no other file has the name is for O_EXCL to settle.
unsigned nextNumber() {
  constexpr unsigned SPREAD = 0x9E3779B9;
  static std::atomic<unsigned> calls{0};
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<unsigned>(now.tv_nsec) ^ static_cast<unsigned>(getpid()) * SPREAD ^ calls++ * SPREAD;
}

/// Creates an empty file beside `path` that no other saving uses, with the mode the replaced file had, so that saving
/// does not change who may read it. Only a file is replaced: a device or a pipe of that name stays what it is.
bool createTemporary(const std::string& path, std::string& temporary) {
  constexpr int MOST_TRIES = 100;
  struct stat replaced {};
  const bool replaces = stat(path.c_str(), &replaced) == 0;
  if (replaces && !S_ISREG(replaced.st_mode)) {
    errno = S_ISDIR(replaced.st_mode) ? EISDIR : ENOTSUP;
    return false;
  }
  for (int i = 0; i < MOST_TRIES; ++i) {
    char ending[16];
    std::snprintf(ending, sizeof ending, ".%08x", nextNumber());
    temporary = path + ending;
    const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0) {
      const bool ok = !replaces || fchmod(descriptor, replaced.st_mode & 07777) == 0;
      ::close(descriptor);
      if (ok) return true;
      unlink(temporary.c_str());
      return false;
    }
    if (errno != EEXIST) return false;
  }
  return false;
}

int syncDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return PFILE_FAILED;
  const int synced = fsync(descriptor);
  ::close(descriptor);
  return synced == 0 ? PFILE_OK : PFILE_FAILED;
}

}  // namespace

SafeFileWriter::SafeFileWriter(LogCallback debug, LogCallback error)
    : _debug(debug), _error(error), _writer(std::in_place, debug, error) {}

SafeFileWriter::~SafeFileWriter() {
  discard();
}

int SafeFileWriter::open(char const* path) {
  if (path == nullptr || !_temporary.empty()) return PFILE_FAILED;
  std::string wanted = path, temporary;
  if (!createTemporary(wanted, temporary)) return PFILE_FAILED;
  // Nothing is allocated before the temporary file is known to discard().
  _path = std::move(wanted);
  _temporary = std::move(temporary);
  _writer.emplace(_debug, _error);
  const int code = _writer->open(_temporary.c_str());
  // Not left open: a commit() would put an empty file in the place of the old one.
  if (code != PFILE_OK) discard();
  return code;
}

int SafeFileWriter::commit() {
  if (_temporary.empty()) return PFILE_FAILED;
  // A writer that somebody else closed need not have its bytes on the disk.
  if (!_writer->isOpen() || _writer->close(true) != PFILE_OK || std::rename(_temporary.c_str(), _path.c_str()) != 0) {
    discard();
    return PFILE_FAILED;
  }
  _temporary.clear();
  return syncDirectoryOf(_path);
}

void SafeFileWriter::discard() {
  if (_temporary.empty()) return;
  const int why = errno;
  _writer->close(false);
  unlink(_temporary.c_str());
  _temporary.clear();
  errno = why;
}

}  // namespace PFile
