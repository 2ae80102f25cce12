#include <libinspect/container/ByteSource.h>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fmt/format.h>

#include <libcrossplatform/common/Uninterrupted.h>

namespace Inspect {

namespace {

/// A file that nobody else can open, and that ends with the last descriptor of it. @return -1 where none can be made
int namelessFile() {
  const char* const directory = std::getenv("TMPDIR");
  std::string path = std::string(directory != nullptr && *directory != '\0' ? directory : "/tmp") + "/veltra.XXXXXX";
  const int file = mkostemp(path.data(), O_CLOEXEC);
  if (file >= 0) unlink(path.c_str());
  return file;
}

bool isStandardInput(const std::string& path) {
  return path == "-";
}

bool writeAll(int file, const uint8_t* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t put = Veltra::uninterrupted([&] { return write(file, bytes, size); });
    if (put <= 0) return false;
    bytes += put;
    size -= static_cast<std::size_t>(put);
  }
  return true;
}

}  // namespace

/// Bytes in memory up to MOST_IN_MEMORY; then all of them in a file, or all in memory if that cannot be written.
struct ByteSource::Stream {
  std::vector<uint8_t> bytes;
  int file = -1;
  bool triesFile = true;
  uint64_t size = 0;

  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    if (file >= 0) ::close(file);
  }

  /// @return false where what is in the file cannot be read back
  bool add(const uint8_t* from, std::size_t count) {
    if (file < 0 && triesFile && bytes.size() + count > MOST_IN_MEMORY) {
      file = namelessFile();
      triesFile = false;
      if (file >= 0 && !writeAll(file, bytes.data(), bytes.size())) leaveFile();
      if (file >= 0) std::vector<uint8_t>().swap(bytes);
    }
    if (file >= 0 && !writeAll(file, from, count)) {
      bytes.resize(static_cast<std::size_t>(size));
      if (pread(file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return false;
      leaveFile();
    }
    if (file < 0) bytes.insert(bytes.end(), from, from + count);
    size += count;
    return true;
  }

 private:
  void leaveFile() {
    ::close(file);
    file = -1;
  }
};

ByteSource::~ByteSource() {
  close();
}

void ByteSource::close() {
  const bool isOwn = _taken == nullptr && !_isStandardInput;
  if (isOwn && _descriptor >= 0) ::close(_descriptor);
  _descriptor = -1;
  _taken.reset();
  _windowSize = 0;
}

bool ByteSource::open(const std::string& path, std::string& error) {
  return openInput(path, isStandardInput(path), error);
}

bool ByteSource::openFile(const std::string& path, std::string& error) {
  return openInput(path, false, error);
}

bool ByteSource::openInput(const std::string& path, bool isStandardInput, std::string& error) {
  close();
  _isOverLimit = false;
  _hasFailed = false;
  _isStandardInput = isStandardInput;
  _name = isStandardInput ? inputName(path) : path;
  // A FIFO among the files of a folder must not block.
  _descriptor = _isStandardInput ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat info {};
  if (_descriptor < 0 || fstat(_descriptor, &info) != 0) {
    error = fmt::format("{}: {}", _name, std::strerror(errno));
    return false;
  }
  if (S_ISDIR(info.st_mode)) {
    error = fmt::format("{}: expected a file, found a directory", _name);
    return false;
  }
  _inMemory = false;
  if (!S_ISREG(info.st_mode)) {
    auto stream = std::make_shared<Stream>();
    if (!_isStandardInput && S_ISFIFO(info.st_mode) && !hasWriter(*stream)) {
      error = fmt::format("{}: expected a file, found a FIFO that nobody writes to", _name);
      return false;
    }
    fcntl(_descriptor, F_SETFL, fcntl(_descriptor, F_GETFL) & ~O_NONBLOCK);  // a pipe may be slow to fill
    if (!takeIn(*stream, S_ISCHR(info.st_mode), error)) return false;
    close();
    use(stream);
    return true;
  }
  _size = static_cast<uint64_t>(info.st_size);
  if (_limit > 0 && _size > _limit) return refuse(_limit, error);
  _bytes.resize(WINDOW);
  return true;
}

bool ByteSource::openAgain(const std::string& path, const Taken& taken, std::string& error) {
  if (taken == nullptr) return open(path, error);
  close();
  _hasFailed = false;
  _isStandardInput = isStandardInput(path);
  _name = inputName(path);
  use(taken);
  return true;
}

void ByteSource::use(const Taken& taken) {
  _taken = taken;
  _size = taken->size;
  _inMemory = taken->file < 0;
  _descriptor = taken->file;
  if (!_inMemory) _bytes.resize(WINDOW);
}

bool ByteSource::refuse(uint64_t limit, std::string& error) {
  error = fmt::format("{}: larger than the limit of {} bytes", _name, limit);
  _isOverLimit = true;
  return false;
}

/// Takes in what is there. Only a read tells a FIFO that nobody has open for writing from one that is still empty.
bool ByteSource::hasWriter(Stream& stream) const {
  struct statfs system {};
  uint8_t first = 0;
  const ssize_t got = Veltra::uninterrupted([&] { return read(_descriptor, &first, 1); });
  if (got > 0) stream.add(&first, 1);
  // A pipe of a shell's process substitution has no name: its writer may have ended without writing.
  return got != 0 || (fstatfs(_descriptor, &system) == 0 && system.f_type == PIPEFS_MAGIC);
}

bool ByteSource::takeIn(Stream& stream, bool isDevice, std::string& error) {
  uint8_t piece[64 * 1024];
  const uint64_t limit = _limit > 0 ? std::min(_limit, PIPE_LIMIT) : PIPE_LIMIT;
  for (;;) {
    _size = stream.size;
    if (_size > limit) return refuse(limit, error);
    if (isDevice && _size > DEVICE_LIMIT) {
      error = fmt::format("{}: expected a file, found a device that gives more than {} bytes", _name, DEVICE_LIMIT);
      return false;
    }
    const ssize_t got = Veltra::uninterrupted([&] { return read(_descriptor, piece, sizeof piece); });
    if (got == 0) return true;
    if (got < 0 || !stream.add(piece, static_cast<std::size_t>(got))) {
      error = fmt::format("{}: {}", _name, std::strerror(errno));
      return false;
    }
  }
}

std::size_t ByteSource::readFile(uint64_t offset, uint8_t* to, std::size_t size) const {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = Veltra::uninterrupted(
        [&] { return pread(_descriptor, to + done, size - done, static_cast<off_t>(offset + done)); });
    if (got < 0) _hasFailed = true;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  if (_told) _told(done);
  return done;
}

std::size_t ByteSource::view(uint64_t offset, const uint8_t*& at) const {
  if (offset >= _size) return 0;
  if (_inMemory) {
    at = &_taken->bytes[static_cast<std::size_t>(offset)];
    return static_cast<std::size_t>(std::min<uint64_t>(WINDOW, _size - offset));
  }
  // Most inputs fit in the window. In larger ones a header at its end is read again with the bytes after it.
  const bool isInside = offset >= _windowAt && offset - _windowAt < _windowSize;
  const std::size_t skipped = isInside ? static_cast<std::size_t>(offset - _windowAt) : 0;
  const bool reachesEnd = _windowAt + _windowSize >= _size;
  if (!isInside || (!reachesEnd && _windowSize - skipped < WINDOW / 2)) {
    _windowAt = offset;
    _windowSize = 0;  // whoever is told of reading may end it
    _windowSize = readFile(offset, _bytes.data(), static_cast<std::size_t>(std::min<uint64_t>(WINDOW, _size - offset)));
    at = _bytes.data();
    return _windowSize;
  }
  at = &_bytes[skipped];
  return _windowSize - skipped;
}

std::size_t ByteSource::readAt(uint64_t offset, void* to, std::size_t size) const {
  std::size_t done = 0;
  while (done < size) {
    const uint8_t* at = nullptr;
    const std::size_t got = std::min(view(offset + done, at), size - done);
    if (got == 0) break;
    std::memcpy(static_cast<uint8_t*>(to) + done, at, got);
    done += got;
  }
  return done;
}

std::size_t ByteSource::readAside(uint64_t offset, void* to, std::size_t size) const {
  return _inMemory ? readAt(offset, to, size) : readFile(offset, static_cast<uint8_t*>(to), size);
}

std::string inputName(const std::string& path) {
  return isStandardInput(path) ? "standard input" : path;
}

bool isSameFile(const std::string& input, const std::string& path) {
  struct stat a {
  }, b{};
  const bool isKnown = (isStandardInput(input) ? fstat(STDIN_FILENO, &a) : stat(input.c_str(), &a)) == 0;
  return isKnown && stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

namespace {

/// Whether a path is a link, or leads over links, to a name by which the system gives out open files and devices.
bool leadsToOpenFile(const std::string& path) {
  namespace fs = std::filesystem;
  constexpr int MOST_LINKS = 40;
  std::error_code error;
  fs::path at = path;
  for (int i = 0; i < MOST_LINKS && fs::is_symlink(fs::symlink_status(at, error)); ++i) {
    const fs::path folder = fs::canonical(at.has_parent_path() ? at.parent_path() : fs::path("."), error);
    const std::string name = folder.string();
    if (error) return false;
    if (name == "/dev" || name.rfind("/proc/", 0) == 0) return true;
    at = folder / fs::read_symlink(at, error);
  }
  return false;
}

/// Whether a path leads to what this process prints into.
bool isOutputStream(const std::string& path) {
  struct stat file {
  }, stream{};
  const auto isIt = [&](int descriptor) {
    return fstat(descriptor, &stream) == 0 && stream.st_dev == file.st_dev && stream.st_ino == file.st_ino;
  };
  return stat(path.c_str(), &file) == 0 && (isIt(STDOUT_FILENO) || isIt(STDERR_FILENO));
}

}  // namespace

std::string refusalToReplace(const std::string& path, bool replaces, const std::vector<std::string>& inputs) {
  struct stat info {};
  if (stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) return path + ": not a regular file, not replaced";
  if (isOutputStream(path)) return path + ": is the standard output or error, not replaced; expected another file";
  if (leadsToOpenFile(path)) return path + ": leads to an open file, not replaced; expected a file by its own name";
  if (!replaces && lstat(path.c_str(), &info) == 0) return EXISTS;
  for (const std::string& input : inputs) {
    if (isSameFile(input, path)) return inputName(input) + ": is the input and would be replaced";
  }
  return {};
}

bool haveSameBytes(const ByteSource& a, uint64_t offsetA, const ByteSource& b, uint64_t offsetB, uint64_t size) {
  for (uint64_t done = 0; done < size;) {
    const uint8_t *atA = nullptr, *atB = nullptr;
    const std::size_t gotA = a.view(offsetA + done, atA), gotB = b.view(offsetB + done, atB);
    const std::size_t got = std::min({gotA, gotB, static_cast<std::size_t>(std::min<uint64_t>(size - done, gotA))});
    if (got == 0 || std::memcmp(atA, atB, got) != 0) return false;
    done += got;
  }
  return true;
}

bool haveSameBytes(const ByteSource& a, const ByteSource& b) {
  return a.size() == b.size() && haveSameBytes(a, 0, b, 0, a.size());
}

bool readText(const std::string& path, uint64_t limit, std::string& text, std::string& error) {
  ByteSource source;
  source.setLimit(limit);
  if (!source.open(path, error)) {
    if (source.isOverLimit())
      error = fmt::format("{}: expected at most {} bytes, found {}", source.name(), limit, source.size());
    return false;
  }
  text.resize(static_cast<std::size_t>(source.size()));
  if (source.readAt(0, text.data(), text.size()) == text.size()) return true;
  error = fmt::format("{}: read error", source.name());
  return false;
}

}  // namespace Inspect
