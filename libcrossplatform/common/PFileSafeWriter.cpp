#include <libcrossplatform/common/PFileSafeWriter.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <gsl/util>

namespace PFile {

SafeFileWriter::SafeFileWriter(LogCallback debug, LogCallback error)
    : _debug(debug), _error(error), _writer(std::in_place, debug, error) {}

SafeFileWriter::~SafeFileWriter() {
  discard();
}

int SafeFileWriter::open(char const* path) {
  if (path == nullptr || !_file.open(path)) return PFILE_FAILED;
  bool isStarted = false;
  // Closed also when memory runs out: otherwise a commit() would replace the old file by an empty one.
  const auto cleaning = gsl::finally([&] {
    if (!isStarted) discard();
  });
  _writer.emplace(_debug, _error);
  // The stream closes its own descriptor; that of the file is still open when it is synced and renamed.
  const int descriptor = fcntl(_file.descriptor(), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) return PFILE_FAILED;
  std::FILE* const stream = fdopen(descriptor, "wb");
  if (stream == nullptr) {
    const int why = errno;
    ::close(descriptor);
    errno = why;
    return PFILE_FAILED;
  }
  const int code = _writer->start(stream);
  isStarted = code == PFILE_OK;
  return code;
}

int SafeFileWriter::commit() {
  // The failure of a writer that the caller closed is not known.
  if (_file.isOpen() && _writer->isOpen() && _writer->close(false) == PFILE_OK && _file.commit()) return PFILE_OK;
  discard();
  return PFILE_FAILED;
}

void SafeFileWriter::discard() {
  if (!_file.isOpen()) return;
  const int why = errno;
  (void)_writer->close(false);
  _file.discard();
  errno = why;
}

}  // namespace PFile
