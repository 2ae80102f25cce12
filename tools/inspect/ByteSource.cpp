#include <tools/inspect/ByteSource.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fmt/format.h>

namespace Inspect {

ByteSource::~ByteSource() {
  if (_descriptor > STDIN_FILENO) close(_descriptor);
}

bool ByteSource::open(const std::string& path, std::string& error) {
  const bool isStandardInput = path == "-";
  _name = isStandardInput ? "standard input" : path;
  _descriptor = isStandardInput ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat info {};
  if (_descriptor < 0 || fstat(_descriptor, &info) != 0) {
    error = fmt::format("{}: {}", _name, std::strerror(errno));
    return false;
  }
  if (S_ISDIR(info.st_mode)) {
    error = fmt::format("{}: is a directory, a file is wanted", _name);
    return false;
  }
  if (!S_ISREG(info.st_mode)) return takeIn(error);
  _size = static_cast<uint64_t>(info.st_size);
  return true;
}

bool ByteSource::takeIn(std::string& error) {
  constexpr std::size_t PIECE = 64 * 1024;
  _inMemory = true;
  for (;;) {
    const std::size_t at = _bytes.size();
    if (at > PIPE_LIMIT) {
      error = fmt::format("{}: more than {} bytes, give a file instead", _name, PIPE_LIMIT);
      return false;
    }
    _bytes.resize(at + PIECE);
    const ssize_t got = read(_descriptor, &_bytes[at], PIECE);
    _bytes.resize(at + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got == 0) break;
    if (got < 0 && errno != EINTR) {
      error = fmt::format("{}: {}", _name, std::strerror(errno));
      return false;
    }
  }
  _size = _bytes.size();
  return true;
}

std::size_t ByteSource::readAt(uint64_t offset, void* to, std::size_t size) const {
  if (offset >= _size) return 0;
  const auto wanted = static_cast<std::size_t>(std::min<uint64_t>(size, _size - offset));
  if (_inMemory) {
    std::memcpy(to, &_bytes[static_cast<std::size_t>(offset)], wanted);
    return wanted;
  }
  std::size_t done = 0;
  while (done < wanted) {
    const ssize_t got =
        pread(_descriptor, static_cast<uint8_t*>(to) + done, wanted - done, static_cast<off_t>(offset + done));
    if (got == 0 || (got < 0 && errno != EINTR)) break;
    if (got > 0) done += static_cast<std::size_t>(got);
  }
  return done;
}

bool readText(const std::string& path, uint64_t limit, std::string& text, std::string& error) {
  ByteSource source;
  if (!source.open(path, error)) return false;
  if (source.size() > limit) {
    error = fmt::format("{}: {} bytes, at most {} are wanted", source.name(), source.size(), limit);
    return false;
  }
  text.resize(static_cast<std::size_t>(source.size()));
  if (source.readAt(0, &text[0], text.size()) == text.size()) return true;
  error = fmt::format("{}: read error", source.name());
  return false;
}

}  // namespace Inspect
