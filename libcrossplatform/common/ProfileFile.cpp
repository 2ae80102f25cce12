#include <libcrossplatform/common/internal/ProfileFile.h>

#include <cerrno>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Veltra {
namespace {

constexpr int MAX_LINKS = 8;

class Descriptor {
 public:
  explicit Descriptor(int fd) : m_fd(fd) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return m_fd; }
  bool isOpen() const { return m_fd >= 0; }

  /// False when the file system reports late that it could not keep the bytes.
  bool close() { return m_fd < 0 || ::close(std::exchange(m_fd, -1)) == 0; }

 private:
  int m_fd;
};

// The result of a call that a signal may interrupt. One that is interrupted without end has failed like any other.
template <class Call>
ssize_t uninterrupted(Call call) {
  constexpr int MOST_TRIES = 100;
  ssize_t n = call();
  for (int tries = 1; n < 0 && errno == EINTR && tries < MOST_TRIES; ++tries) n = call();
  return n;
}

// The path a link leads to, empty when it is not to be followed. Owner and target are asked of one open link, so that
// it cannot be exchanged in between.
std::string trustedTarget(const std::string& path) {
  const Descriptor link(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!link.isOpen() || ::fstat(link.get(), &status) != 0 || !S_ISLNK(status.st_mode)) return {};
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) return {};
  char target[PATH_MAX];
  const ssize_t length = ::readlinkat(link.get(), "", target, sizeof target);
  if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target) return {};
  const std::string text(target, static_cast<std::size_t>(length));
  return text[0] == '/' ? text : path.substr(0, path.rfind('/') + 1) + text;
}

// Opens a regular file, and nothing else.
Descriptor openRegular(std::string path, int flags) {
  for (int links = 0; links <= MAX_LINKS && !path.empty(); ++links) {
    Descriptor file(::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file.isOpen()) {
      struct stat status;
      const bool regular = ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
      return regular ? std::move(file) : Descriptor(-1);
    }
    if (errno != ELOOP) break;  // ELOOP: the path ends in a link
    path = trustedTarget(path);
  }
  return Descriptor(-1);
}

}  // namespace

bool writeProfileFile(const std::string& path, const std::string& text) {
  Descriptor file = openRegular(path, O_WRONLY | O_CREAT);
  // Truncated only once it is known to be a regular file.
  if (!file.isOpen() || ::ftruncate(file.get(), 0) != 0) return false;
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t n = uninterrupted([&] { return ::write(file.get(), text.data() + written, text.size() - written); });
    if (n <= 0) return false;
    written += static_cast<std::size_t>(n);
  }
  return file.close();
}

bool readProfileFile(const std::string& path, std::string& text) {
  const Descriptor file = openRegular(path, O_RDONLY);
  if (!file.isOpen()) return false;
  std::string content;
  char piece[16 * 1024];
  for (;;) {
    const ssize_t n = uninterrupted([&] { return ::read(file.get(), piece, sizeof piece); });
    if (n < 0) return false;
    if (n == 0) break;
    if (static_cast<std::size_t>(n) > PROFILE_FILE_MAX_BYTES - content.size()) return false;
    content.append(piece, static_cast<std::size_t>(n));
  }
  text = std::move(content);
  return true;
}

}  // namespace Veltra
