#include <libcrossplatform/common/internal/ProfileFile.h>

#include <cerrno>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <libcrossplatform/common/Uninterrupted.h>

namespace Veltra {
namespace {

constexpr int MAX_LINKS = 8;

class Descriptor {
 public:
  explicit Descriptor(int fd) : _fd(fd) {}
  ~Descriptor() {
    if (_fd >= 0) ::close(_fd);
  }
  Descriptor(Descriptor&& other) noexcept : _fd(std::exchange(other._fd, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return _fd; }
  bool isOpen() const { return _fd >= 0; }

 private:
  int _fd;
};

bool isTrusted(uid_t owner) {
  return owner == 0 || owner == ::geteuid();
}

// The path a link leads to, empty when it must not be followed. Owner and target are read from one open link, so that
// it cannot be replaced in between.
std::string trustedTarget(const std::string& path) {
  const Descriptor link(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!link.isOpen() || ::fstat(link.get(), &status) != 0 || !S_ISLNK(status.st_mode)) return {};
  if (!isTrusted(status.st_uid)) return {};
  char target[PATH_MAX];
  const ssize_t length = ::readlinkat(link.get(), "", target, sizeof target);
  if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target) return {};
  const std::string text(target, static_cast<std::size_t>(length));
  return text[0] == '/' ? text : path.substr(0, path.rfind('/') + 1) + text;
}

// The path of the file that trusted links lead to, itself not a link; empty, with errno, when one must not be followed.
std::string withoutLinks(std::string path) {
  for (int links = 0; links <= MAX_LINKS && !path.empty(); ++links) {
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    path = trustedTarget(path);
    if (path.empty()) {
      errno = EACCES;
      return path;
    }
  }
  errno = path.empty() ? ENOENT : ELOOP;
  return {};
}

// Whether others can put their own file in the place of this one.
bool isInSharedFolder(const std::string& path) {
  struct stat folder;
  const std::string name = path.substr(0, path.rfind('/') + 1);
  return ::stat(name.empty() ? "." : name.c_str(), &folder) != 0 || !isTrusted(folder.st_uid) ||
         (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// The reason is set last: closing may change it.
Descriptor refused(Descriptor file, int why) {
  { const Descriptor closed = std::move(file); }
  errno = why;
  return Descriptor(-1);
}

// Opens a regular file, and nothing else; says why not in errno.
Descriptor openRegular(const std::string& path, ProfileOwner owner) {
  Descriptor file(path.empty() ? -1 : ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status;
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return refused(std::move(file), errno);
  if (!S_ISREG(status.st_mode)) return refused(std::move(file), S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
  const bool isStrangers = owner == ProfileOwner::TRUSTED && !isTrusted(status.st_uid) && isInSharedFolder(path);
  return isStrangers ? refused(std::move(file), EPERM) : std::move(file);
}

}  // namespace

bool writeProfileFile(const std::string& path, const std::string& text, const FileStamp* expected) {
  const std::string target = withoutLinks(path);
  FileReplacement file;
  if (target.empty() || !file.open(target, FileReplacement::ACCESS_PRIVATE)) return false;
  if (expected != nullptr) file.expect(*expected);
  return file.write(text.data(), text.size()) && file.commit();
}

bool readProfileFile(const std::string& path, ProfileOwner owner, std::string& text) {
  const Descriptor file = openRegular(withoutLinks(path), owner);
  if (!file.isOpen()) return false;
  std::string content;
  char piece[16 * 1024];
  for (;;) {
    const ssize_t n = uninterrupted([&] { return ::read(file.get(), piece, sizeof piece); });
    if (n < 0) return false;
    if (n == 0) break;
    if (static_cast<std::size_t>(n) > PROFILE_FILE_MAX_BYTES - content.size()) {
      errno = EFBIG;
      return false;
    }
    content.append(piece, static_cast<std::size_t>(n));
  }
  text = std::move(content);
  return true;
}

}  // namespace Veltra
