#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// Which file a path leads to and when it was last changed. Two are equal when nobody wrote, replaced, removed or
/// created the file in between.
struct VELTRA_EXPORT FileStamp {
  /// Links are followed. A file that cannot be examined counts as missing.
  static FileStamp of(const std::string& path);
  bool operator==(const FileStamp& other) const;
  bool operator!=(const FileStamp& other) const { return !(*this == other); }

  bool exists = false;              ///< false: all other members are 0
  uint64_t device = 0;              ///< which file, with the next
  uint64_t inode = 0;               ///< its number on the device
  int64_t bytes = 0;                ///< its size
  int64_t modifiedSeconds = 0;      ///< of its bytes, since 1970-01-01 UTC
  int64_t modifiedNanoseconds = 0;  ///< after those seconds
  int64_t changedSeconds = 0;       ///< of mode, owner and names, too
  int64_t changedNanoseconds = 0;   ///< after those seconds
};

/// A file that is written next to another and replaces it once it is complete: at any time, also after a kill or a
/// power cut, the name leads to the whole old file or to the whole new one. Two that replace the same file at once do
/// not disturb each other; the last to commit wins.
///
///     Veltra::FileReplacement file;
///     if (!file.open(path) || !file.write(bytes, size) || !file.commit()) std::perror(path);
///
/// The new file is written under a temporary name, that of the file with a dot, 16 random hexadecimal digits and ".tmp"
/// after it (a long name is shortened for it), and is readable only by its owner until commit(). A temporary file
/// remains only after a process is killed or the power is cut. Nobody else uses it, so it may be removed at any time
/// when no save is in progress.
///
/// Functions return false with the reason in `errno`, or throw std::bad_alloc; the old file is then unchanged.
/// An object belongs to one thread at a time.
class VELTRA_EXPORT FileReplacement {
 public:
  /// Who may use the new file.
  enum Access : int32_t {
    /// Whoever could use the old one: its mode and, where the system lets the caller set them, its owner and group. If
    /// the group could not be set it gets the rights of everybody else. A new file has what the umask leaves. A
    /// symbolic link is replaced by the file; the file it led to stays, and mode and owner are taken from it.
    ACCESS_AS_BEFORE,
    /// Only the caller: mode 0600, owned by the caller, whatever the old file had. A symbolic link is refused (ELOOP),
    /// as is a file system on which the file would not be private (EPERM).
    ACCESS_PRIVATE,
  };

  FileReplacement() = default;
  ~FileReplacement();  ///< discard()
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Creates the temporary file in the folder of `path`, which may be relative: later changes of the current directory
  /// do not matter. May be called again after commit() or discard().
  /// @return false: one is open already (EBUSY), the path is not that of a regular file (EISDIR, ENOTSUP) or has
  ///         a zero in it (EINVAL), with ACCESS_PRIVATE the folder may not be read (EACCES), or the temporary file
  ///         could not be created; nothing remains of it
  [[nodiscard]] bool open(const std::string& path, Access access = ACCESS_AS_BEFORE);
  /// Whether a temporary file is there: after open(), until commit() or discard().
  bool isOpen() const { return _descriptor >= 0; }
  /// Makes commit() fail unless the file to replace still has this stamp, or is still missing: a default stamp stands
  /// for a file that must not be there, and where the file system can, none is replaced that is made meanwhile. Call it
  /// after open().
  void expect(const FileStamp& old) { _expected = old; }
  /// Gives the new file this mode, whatever the old one had, and the caller as its owner; of a mode no more than the
  /// rights to read, write and run. Not with ACCESS_PRIVATE. Call it after open().
  void useMode(mode_t mode) {
    _mode = mode & 0777;
    _replaces = false;
  }

  /// Appends to the temporary file. After a failure commit() fails too.
  [[nodiscard]] bool write(const void* bytes, std::size_t size);
  /// The temporary file, open for writing, for callers that write it themselves; -1 when none. Owned by this object.
  int descriptor() const { return _descriptor; }
  /// Its path, for callers that write or read by path; empty when none is open.
  std::string temporaryPath() const;

  /// Syncs the file, gives it its mode and owner, renames it into place and syncs the folder. A mode or an owner that
  /// cannot be set is not a failure, nor, with ACCESS_AS_BEFORE, is a folder that cannot be synced: the name may
  /// then lead to the old file again after a power cut.
  /// @return false: nothing open (EBADF), a failed write(), the old file is not the expected one (ESTALE), or the file
  ///         could not be synced or renamed: the old file is unchanged and the temporary one removed. With
  ///         ACCESS_PRIVATE also when the folder could not be synced; the new file is then in its place.
  [[nodiscard]] bool commit();
  /// Removes the temporary file; the old one is unchanged. `errno` is kept.
  void discard();

  /// Removes the temporary files of all saves in progress in this process; those saves fail. For the handler of a
  /// signal that ends the program: it may be called at any time and from any thread. After fork() the child does not
  /// remove those of its parent.
  static void removeUnfinished();

 private:
  struct Temporary;

  [[nodiscard]] bool createTemporary();
  [[nodiscard]] bool makePrivate() const;
  void giveAccess() const;
  bool isAsExpected() const;
  [[nodiscard]] bool putInPlace();
  void close();

  std::string _folder;              ///< with a final slash, as the caller gave it; empty for the current one
  std::string _name;                ///< of the file within it
  Temporary* _temporary = nullptr;  ///< its name there, where a signal handler finds it
  Access _access = ACCESS_AS_BEFORE;
  bool _replaces = false;
  mode_t _mode = 0;  ///< to be set: that of the replaced file, with its owner and group
  uid_t _owner = 0;
  gid_t _group = 0;
  std::optional<FileStamp> _expected;
  int _failure = 0;  ///< errno of the first write that failed
  int _folderDescriptor = -1;
  int _descriptor = -1;
};

/// Replaces a file by these bytes, as FileReplacement does.
/// @return false with the reason in `errno`; the old file is then unchanged
[[nodiscard]] VELTRA_EXPORT bool replaceFile(const std::string& path, const void* bytes, std::size_t size,
                                             FileReplacement::Access access = FileReplacement::ACCESS_AS_BEFORE);

}  // namespace Veltra
