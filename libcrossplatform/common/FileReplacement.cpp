#include <libcrossplatform/common/FileReplacement.h>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <tuple>
#include <utility>

#include <libcrossplatform/common/Uninterrupted.h>

namespace Veltra {

/// The name of a temporary file. An entry is reused for a later file and never released, so that a
/// signal handler may walk the list at any time.
struct FileReplacement::Temporary {
  enum State : int { FREE, TAKEN, NAMED };
  static std::atomic<Temporary*> first;

  /// The name stays listed from before the file exists until it has another name, so no signal can miss it.
  static Temporary* take() {
    for (Temporary* at = first; at != nullptr; at = at->next) {
      int expected = FREE;
      if (at->state.compare_exchange_strong(expected, TAKEN)) return at;
    }
    auto* const made = new Temporary;
    made->next = first;
    while (!first.compare_exchange_weak(made->next, made)) {
    }
    return made;
  }

  std::atomic<int> state{TAKEN};
  Temporary* next = nullptr;
  pid_t process = -1;
  int folder = -1;
  char name[NAME_MAX + 1] = {};
};

std::atomic<FileReplacement::Temporary*> FileReplacement::Temporary::first{nullptr};

namespace {

constexpr char ENDING[] = ".0123456789abcdef.tmp";
constexpr std::size_t ENDING_LENGTH = sizeof ENDING - 1;

/// From the system if it has random numbers. Saving must not depend on that: clock, process and a counter also give
/// another number at each call, and O_EXCL makes sure that no other file has the name.
uint64_t randomNumber() {
  constexpr uint64_t SPREAD = 0x9E3779B97F4A7C15;
  static std::atomic<uint64_t> calls{0};
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof number)) return number;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  number = static_cast<uint64_t>(now.tv_sec) << 32 ^ static_cast<uint64_t>(now.tv_nsec);
  return (number ^ static_cast<uint64_t>(getpid()) << 20) * SPREAD + ++calls * SPREAD;
}

/// The beginning of a file's name that leaves room for the suffix, without splitting a character.
std::size_t keptLength(const std::string& name) {
  std::size_t kept = std::min<std::size_t>(name.size(), NAME_MAX - ENDING_LENGTH);
  while (kept < name.size() && kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0) == 0x80) --kept;
  return kept;
}

/// Read without changing it where the system allows that.
mode_t currentUmask() {
  constexpr char LABEL[] = "\nUmask:";
  char text[4096] = {};
  const int status = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
  if (status >= 0) {
    if (uninterrupted([&] { return ::read(status, text, sizeof text - 1); }) < 0) text[0] = '\0';
    ::close(status);
  }
  const char* const found = std::strstr(text, LABEL);
  if (found != nullptr) return static_cast<mode_t>(std::strtoul(found + sizeof LABEL - 1, nullptr, 8)) & 0777;
  const mode_t mask = umask(077);  // a file that another thread creates right now is private
  umask(mask);
  return mask;
}

/// Opened for a later sync. A folder that may not be read is enough where a failed sync does not matter.
int openFolder(const std::string& folder, FileReplacement::Access access) {
  const char* const path = folder.empty() ? "." : folder.c_str();
  const int descriptor = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0 || errno != EACCES || access == FileReplacement::ACCESS_PRIVATE) return descriptor;
  return ::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
}

FileStamp stampOf(const struct stat& info) {
  FileStamp stamp;
  stamp.exists = true;
  stamp.device = info.st_dev;
  stamp.inode = info.st_ino;
  stamp.bytes = info.st_size;
  stamp.modifiedSeconds = info.st_mtim.tv_sec;
  stamp.modifiedNanoseconds = info.st_mtim.tv_nsec;
  stamp.changedSeconds = info.st_ctim.tv_sec;
  stamp.changedNanoseconds = info.st_ctim.tv_nsec;
  return stamp;
}

}  // namespace

FileStamp FileStamp::of(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? stampOf(info) : FileStamp();
}

bool FileStamp::operator==(const FileStamp& other) const {
  const auto members = [](const FileStamp& s) {
    return std::tie(s.exists, s.device, s.inode, s.bytes, s.modifiedSeconds, s.modifiedNanoseconds, s.changedSeconds,
                    s.changedNanoseconds);
  };
  return members(*this) == members(other);
}

FileReplacement::~FileReplacement() {
  discard();
}

bool FileReplacement::open(const std::string& path, Access access) {
  if (isOpen()) {
    errno = EBUSY;
    return false;
  }
  // Allocates before there is anything to release.
  const std::size_t slash = path.rfind('/');
  _folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  _name = path.substr(_folder.size());
  if (_name.empty() || path.find('\0') != std::string::npos) {
    errno = path.empty() ? ENOENT : _name.empty() ? EISDIR : EINVAL;
    return false;
  }
  _access = access;
  _expected.reset();
  _failure = 0;
  _temporary = Temporary::take();
  _folderDescriptor = openFolder(_folder, access);
  if (_folderDescriptor >= 0 && createTemporary()) return true;
  discard();
  return false;
}

bool FileReplacement::createTemporary() {
  constexpr int MOST_TRIES = 100;
  struct stat old {};
  const int flags = _access == ACCESS_PRIVATE ? AT_SYMLINK_NOFOLLOW : 0;
  _replaces = fstatat(_folderDescriptor, _name.c_str(), &old, flags) == 0;
  // Only a regular file is replaced; a device or a pipe of that name stays.
  if (_replaces && !S_ISREG(old.st_mode)) {
    errno = S_ISDIR(old.st_mode) ? EISDIR : S_ISLNK(old.st_mode) ? ELOOP : ENOTSUP;
    return false;
  }
  _mode = _access == ACCESS_PRIVATE ? 0600 : _replaces ? old.st_mode & 07777 : 0666 & ~currentUmask();
  _owner = old.st_uid;
  _group = old.st_gid;
  _temporary->process = getpid();
  _temporary->folder = _folderDescriptor;
  const std::size_t kept = _name.copy(_temporary->name, keptLength(_name));
  for (int i = 0; i < MOST_TRIES; ++i) {
    const auto number = static_cast<unsigned long long>(randomNumber());
    std::snprintf(_temporary->name + kept, sizeof ENDING, ".%016llx.tmp", number);
    _temporary->state = Temporary::NAMED;
    _descriptor = openat(_folderDescriptor, _temporary->name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (_descriptor >= 0) return _access != ACCESS_PRIVATE || makePrivate();
    _temporary->state = Temporary::TAKEN;  // the file of this name belongs to somebody else
    if (errno != EEXIST) return false;
  }
  return false;
}

/// Whatever the umask says; false where the file system gives files a mode or an owner of its own.
bool FileReplacement::makePrivate() const {
  struct stat info {};
  if (fchmod(_descriptor, 0600) != 0 || fstat(_descriptor, &info) != 0) return false;
  if ((info.st_mode & 07777) == 0600 && info.st_uid == geteuid()) return true;
  errno = EPERM;
  return false;
}

bool FileReplacement::write(const void* bytes, std::size_t size) {
  if (!isOpen()) errno = EBADF;
  const char* at = static_cast<const char*>(bytes);
  while (isOpen() && _failure == 0 && size > 0) {
    const ssize_t written = uninterrupted([&] { return ::write(_descriptor, at, size); });
    if (written <= 0) {
      _failure = written < 0 ? errno : EIO;
      break;
    }
    at += written;
    size -= static_cast<std::size_t>(written);
  }
  if (_failure != 0) errno = _failure;
  return isOpen() && _failure == 0;
}

std::string FileReplacement::temporaryPath() const {
  return isOpen() ? _folder + _temporary->name : std::string();
}

bool FileReplacement::commit() {
  if (!isOpen()) {
    errno = EBADF;
    return false;
  }
  errno = _failure;
  if (_failure != 0 || !putInPlace()) {
    discard();
    return false;
  }
  _temporary->state = Temporary::TAKEN;  // the file has another name
  const bool isSynced = uninterrupted([&] { return fsync(_folderDescriptor); }) == 0;
  const int why = errno;
  close();
  errno = why;
  return isSynced || _access != ACCESS_PRIVATE;
}

bool FileReplacement::putInPlace() {
  if (uninterrupted([&] { return fsync(_descriptor); }) != 0) return false;
  if (_access != ACCESS_PRIVATE) giveAccess();
  // Some file systems report only now that they could not store the bytes.
  if (::close(std::exchange(_descriptor, -1)) != 0 || !isAsExpected()) return false;
  // A file that must not be there may have been made just now: where the system can, it says so itself.
  if (_expected && !_expected->exists) {
    if (renameat2(_folderDescriptor, _temporary->name, _folderDescriptor, _name.c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
    if (errno == EEXIST) errno = ESTALE;
    if (errno != EINVAL && errno != ENOSYS) return false;
  }
  return renameat(_folderDescriptor, _temporary->name, _folderDescriptor, _name.c_str()) == 0;
}

void FileReplacement::giveAccess() const {
  struct stat info {};
  if (fstat(_descriptor, &info) != 0) return;
  mode_t mode = _mode;
  if (_replaces && (info.st_uid != _owner || info.st_gid != _group)) {
    const bool isGroupGiven =
        fchown(_descriptor, _owner, _group) == 0 || fchown(_descriptor, static_cast<uid_t>(-1), _group) == 0;
    if (!isGroupGiven && info.st_gid != _group) mode = (mode & ~mode_t{S_IRWXG}) | (mode & S_IRWXO) << 3;
    // A file must not run as a user other than the one who made it.
    mode &= ~mode_t{S_ISUID | S_ISGID};
  }
  fchmod(_descriptor, mode);
}

bool FileReplacement::isAsExpected() const {
  if (!_expected) return true;
  struct stat now {};
  const int flags = _access == ACCESS_PRIVATE ? AT_SYMLINK_NOFOLLOW : 0;
  const bool exists = fstatat(_folderDescriptor, _name.c_str(), &now, flags) == 0;
  if ((exists ? stampOf(now) : FileStamp()) == *_expected) return true;
  errno = ESTALE;
  return false;
}

void FileReplacement::discard() {
  const int why = errno;
  // The files of a parent process are its own.
  if (_temporary != nullptr && _temporary->state == Temporary::NAMED && _temporary->process == getpid()) {
    unlinkat(_temporary->folder, _temporary->name, 0);
  }
  close();
  errno = why;
}

void FileReplacement::close() {
  if (_temporary != nullptr) _temporary->state = Temporary::FREE;
  _temporary = nullptr;
  for (int* const descriptor : {&_descriptor, &_folderDescriptor}) {
    if (*descriptor >= 0) ::close(*descriptor);
    *descriptor = -1;
  }
}

bool replaceFile(const std::string& path, const void* bytes, std::size_t size, FileReplacement::Access access) {
  FileReplacement file;
  return file.open(path, access) && file.write(bytes, size) && file.commit();
}

void FileReplacement::removeUnfinished() {
  const int why = errno;
  const pid_t self = getpid();
  for (Temporary* at = Temporary::first; at != nullptr; at = at->next) {
    if (at->state == Temporary::NAMED && at->process == self) unlinkat(at->folder, at->name, 0);
  }
  errno = why;
}

}  // namespace Veltra
