// What the module needs of a system and WASI does not have.
#include <setjmp.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <new>

// An exception ends the module, and so does memory that runs out: nothing is there to unwind a stack.
extern "C" {
void* __cxa_allocate_exception(std::size_t) {
  __builtin_trap();
}
void __cxa_throw(void*, void*, void (*)(void*)) {
  __builtin_trap();
}
void longjmp(jmp_buf, int) {
  __builtin_trap();
}

/// @param time  in s since 1970-01-01 UTC
/// @return s that the zone of the machine is ahead of UTC then
__attribute__((import_module("veltra"), import_name("ahead"))) int32_t secondsAhead(double time);

std::tm* localtime_r(const time_t* time, std::tm* parts) {
  const int32_t ahead = secondsAhead(static_cast<double>(*time));
  const time_t local = *time + ahead;
  if (gmtime_r(&local, parts) == nullptr) return nullptr;
  parts->tm_gmtoff = ahead;
  return parts;
}
}

void* operator new(std::size_t size) {
  void* const found = std::malloc(size > 0 ? size : 1);
  if (found == nullptr) __builtin_trap();
  return found;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}

// What is used of a file system.
_LIBCPP_BEGIN_NAMESPACE_FILESYSTEM

namespace {

/// Where the last name of a path begins.
size_t nameAt(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? 0 : slash + 1;
}

/// Where the extension of a name begins.
size_t extensionAt(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 || name == ".." ? name.size() : dot;
}

file_status statusOf(int answer, const struct stat& info, error_code* error) {
  const int reason = answer == 0 ? 0 : errno;
  const bool isMissing = reason == ENOENT || reason == ENOTDIR;
  if (error != nullptr) *error = isMissing ? error_code() : error_code(reason, generic_category());
  if (answer != 0) return file_status(isMissing ? file_type::not_found : file_type::none);
  return file_status(S_ISDIR(info.st_mode)   ? file_type::directory
                     : S_ISREG(info.st_mode) ? file_type::regular
                                             : file_type::unknown);
}

}  // namespace

path::__string_view path::__filename() const {
  return __string_view(__pn_).substr(nameAt(__pn_));
}
path::__string_view path::__extension() const {
  return __filename().substr(extensionAt(__filename()));
}
path::__string_view path::__stem() const {
  return __filename().substr(0, extensionAt(__filename()));
}
path::__string_view path::__parent_path() const {
  size_t end = nameAt(__pn_);
  while (end > 1 && __pn_[end - 1] == '/') --end;
  return __string_view(__pn_).substr(0, end);
}
path::__string_view path::__root_directory() const {
  return __string_view(__pn_).substr(0, !__pn_.empty() && __pn_.front() == '/' ? 1 : 0);
}
int path::__compare(__string_view other) const {
  return __string_view(__pn_).compare(other);
}

file_status __status(const path& path, error_code* error) {
  struct stat info {};
  return statusOf(stat(path.c_str(), &info), info, error);
}
file_status __symlink_status(const path& path, error_code* error) {
  struct stat info {};
  return statusOf(lstat(path.c_str(), &info), info, error);
}
uintmax_t __file_size(const path& path, error_code* error) {
  struct stat info {};
  (void)statusOf(stat(path.c_str(), &info), info, error);
  return static_cast<uintmax_t>(info.st_size);
}
path __canonical(const path&, error_code* error) {  // there are no links
  *error = error_code(ENOSYS, generic_category());
  return {};
}

_LIBCPP_END_NAMESPACE_FILESYSTEM
