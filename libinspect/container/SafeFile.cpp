#include <libinspect/container/SafeFile.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include <libinspect/container/Uninterrupted.h>

namespace Inspect {
namespace {

constexpr int ENDING_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

char unfinished[PATH_MAX];
volatile std::sig_atomic_t hasUnfinished = 0;

extern "C" void endBySignal(int signal) {
  if (hasUnfinished != 0) unlink(unfinished);
  std::signal(signal, SIG_DFL);
  raise(signal);  // delivered when this returns
}

bool writeAll(const std::string& path, const char* at, std::size_t size) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  bool ok = descriptor >= 0;
  while (ok && size > 0) {
    const ssize_t written = uninterrupted([&] { return write(descriptor, at, size); });
    ok = written > 0;
    if (!ok) break;
    at += written;
    size -= static_cast<std::size_t>(written);
  }
  const int failure = errno;
  if (descriptor >= 0 && close(descriptor) != 0) return false;
  errno = failure;
  return ok;
}

bool syncFile(const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool ok = fsync(descriptor) == 0;
  return close(descriptor) == 0 && ok;
}

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

bool writeBeside(const std::string& path, std::string& error,
                 const std::function<bool(const std::string& temporary, std::string& error)>& write) {
  const std::string temporary = fmt::format("{}.{}", path, getpid());
  error.clear();
  UnfinishedFile file;
  const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor >= 0) {
    file.created(temporary);
    file.removeAtEnd();  // also when memory runs out in the writing
  }
  const bool ok = descriptor >= 0 && close(descriptor) == 0 && write(temporary, error) &&
                  syncFile(temporary, O_RDONLY) && std::rename(temporary.c_str(), path.c_str()) == 0;
  if (ok) file.keep();
  if (ok && syncFile(directoryOf(path), O_DIRECTORY)) return true;
  if (error.empty()) error = fmt::format("{}: {}", path, std::strerror(errno));
  return false;
}

bool writeSafely(const std::string& path, const void* bytes, std::size_t size, std::string& error) {
  return writeBeside(path, error, [&](const std::string& temporary, std::string&) {
    return writeAll(temporary, static_cast<const char*>(bytes), size);
  });
}

void removeUnfinishedOnSignals() {
  for (const int signal : ENDING_SIGNALS) {
    if (std::signal(signal, endBySignal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

UnfinishedFile::UnfinishedFile() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : ENDING_SIGNALS) sigaddset(&signals, signal);
  pthread_sigmask(SIG_BLOCK, &signals, &_before);
}

void UnfinishedFile::created(const std::string& path) {
  if (!path.empty() && path.size() < sizeof unfinished) {
    std::memcpy(unfinished, path.c_str(), path.size() + 1);
    hasUnfinished = 1;
  }
  if (_holds) pthread_sigmask(SIG_SETMASK, &_before, nullptr);
  _holds = false;
}

UnfinishedFile::~UnfinishedFile() {
  if (_holds) pthread_sigmask(SIG_SETMASK, &_before, nullptr);
  if (_removes && hasUnfinished != 0) unlink(unfinished);
  hasUnfinished = 0;
}

}  // namespace Inspect
