#include <libcrossplatform/common/PFileSafeWriter.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace PFile {
namespace {

constexpr mode_t ORDINARY_MODE = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

/// The mode the replaced file had, so that saving does not change who may read it.
mode_t modeOf(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : ORDINARY_MODE;
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

SafeFileWriter::SafeFileWriter(LogCallback debug, LogCallback error) : _writer(debug, error) {}

SafeFileWriter::~SafeFileWriter() {
  discard();
}

int SafeFileWriter::open(char const* path) {
  if (path == nullptr || !_temporary.empty()) return PFILE_FAILED;
  std::string temporary = std::string(path) + ".XXXXXX";
  const int descriptor = mkstemp(&temporary[0]);
  if (descriptor < 0) return PFILE_FAILED;
  fchmod(descriptor, modeOf(path));
  ::close(descriptor);
  _path = path;
  _temporary = temporary;
  return _writer.open(_temporary.c_str());
}

int SafeFileWriter::commit() {
  if (_temporary.empty()) return PFILE_FAILED;
  if (_writer.close(true) != PFILE_OK || std::rename(_temporary.c_str(), _path.c_str()) != 0) {
    discard();
    return PFILE_FAILED;
  }
  _temporary.clear();
  return syncDirectoryOf(_path);
}

void SafeFileWriter::discard() {
  if (_temporary.empty()) return;
  _writer.close(false);
  unlink(_temporary.c_str());
  _temporary.clear();
}

}  // namespace PFile
