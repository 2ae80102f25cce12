#include <tools/inspect/SafeFile.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include <tools/inspect/Uninterrupted.h>

namespace Inspect {
namespace {

bool writeAll(int descriptor, const char* at, std::size_t size) {
  while (size > 0) {
    const ssize_t written = uninterrupted([&] { return write(descriptor, at, size); });
    if (written <= 0) return false;
    at += written;
    size -= static_cast<std::size_t>(written);
  }
  return fsync(descriptor) == 0;
}

}  // namespace

bool writeSafely(const std::string& path, const void* bytes, std::size_t size, std::string& error) {
  const std::string temporary = fmt::format("{}.{}", path, getpid());
  const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  bool ok = descriptor >= 0 && writeAll(descriptor, static_cast<const char*>(bytes), size);
  if (descriptor >= 0) ok = close(descriptor) == 0 && ok;
  ok = ok && std::rename(temporary.c_str(), path.c_str()) == 0;
  if (ok) return true;
  error = fmt::format("{}: {}", path, std::strerror(errno));
  if (descriptor >= 0) unlink(temporary.c_str());
  return false;
}

}  // namespace Inspect
