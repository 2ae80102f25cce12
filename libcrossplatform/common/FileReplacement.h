#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// Which file a path leads to and when it was last changed. Two are equal when nobody wrote, replaced, removed or made
/// the file in between.
struct VELTRA_EXPORT FileStamp {
  /// Links are followed. What cannot be looked at counts as missing.
  static FileStamp of(const std::string& path);
  bool operator==(const FileStamp& other) const;
  bool operator!=(const FileStamp& other) const { return !(*this == other); }

  bool exists = false;
  uint64_t device = 0, inode = 0;
  int64_t bytes = 0;
  int64_t modifiedSeconds = 0, modifiedNanoseconds = 0;
  int64_t changedSeconds = 0, changedNanoseconds = 0;  ///< of mode, owner and names, too
};

/// A file that is written beside another and takes its place once it is whole: at any time, also after a kill or a
/// power cut, the name leads to the old file or to the whole new one. Two that replace the same file at once do not
/// disturb each other; the last to commit stays.
///
///     Veltra::FileReplacement file;
///     if (!file.open(path) || !file.write(bytes, size) || !file.commit()) std::perror(path);
///
/// The new file is written under a temporary name, that of the file with a dot, 16 random hexadecimal digits and ".tmp"
/// after it (a long name is cut for it), and is readable by its owner alone until commit(). A temporary file is left
/// only by a process that is killed, or by a power cut. Nobody else uses it, so it may be removed at any time when no
/// save is under way.
///
/// Functions answer false with the reason in `errno`, and may leave with std::bad_alloc, the old file being as it was.
/// An object belongs to one thread at a time.
class VELTRA_EXPORT FileReplacement {
 public:
  /// Who may use the new file.
  enum Access : int32_t {
    /// Who could use the old one: its mode and, where the system lets the caller give them, its owner and group. Where
    /// the group could not be given it gets the rights of everybody else. A new file has what the umask leaves. A
    /// symbolic link is replaced by the file; the file it led to stays, and mode and owner are taken from it.
    ACCESS_AS_BEFORE,
    /// The caller alone: mode 0600, owned by who saves, whatever the old file was. A symbolic link is refused (ELOOP),
    /// and so is a file system on which the file would not be private (EPERM).
    ACCESS_PRIVATE,
  };

  FileReplacement() = default;
  ~FileReplacement();  ///< discard()
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Creates the temporary file in the folder of `path`, which may be relative: what becomes of the current directory
  /// later does not matter. May be called again after commit() or discard().
  /// @return false: one is open already (EBUSY), what stands there is no regular file (EISDIR, ENOTSUP), or the
  ///         temporary file could not be made; nothing is left of it
  bool open(const std::string& path, Access access = ACCESS_AS_BEFORE);
  bool isOpen() const { return _descriptor >= 0; }
  /// commit() fails unless what it would replace still is the file of this stamp, or still missing. To be called after
  /// open().
  void expect(const FileStamp& old) { _expected = old; }

  /// Appends to the temporary file. After a failure commit() fails too.
  bool write(const void* bytes, std::size_t size);
  /// The temporary file, open for writing, for those who write on their own; -1 when none is. It stays this object's.
  int descriptor() const { return _descriptor; }
  /// Its path, for those who write or read through one; empty when none is open.
  std::string temporaryPath() const;

  /// Syncs the file, gives it its mode and owner, renames it into place and syncs the folder. A mode or an owner that
  /// cannot be given is no failure, and with ACCESS_AS_BEFORE neither is a folder that cannot be synced: the name may
  /// then lead to the old file again after a power cut.
  /// @return false: nothing open (EBADF), a failed write(), the old file is not the expected one (ESTALE), or the file
  ///         could not be synced or renamed: the old file is as it was and the temporary one removed. With
  ///         ACCESS_PRIVATE also when the folder could not be synced; the new file is then in its place.
  bool commit();
  /// Removes the temporary file; the old one is as it was. `errno` stays.
  void discard();

  /// Removes the temporary files of all saves under way in this process; those saves fail. For the handler of a signal
  /// that ends the program: it may be called at any time and from any thread. After fork() the child removes none of
  /// its parent's.
  static void removeUnfinished();

 private:
  struct Temporary;

  bool createTemporary();
  bool makePrivate() const;
  void giveAccess() const;
  bool isAsExpected() const;
  bool putInPlace();
  void close();

  std::string _folder;              ///< with a slash at its end, as the caller gave it; empty for the current one
  std::string _name;                ///< of the file within it
  Temporary* _temporary = nullptr;  ///< its name there, where a signal handler finds it
  Access _access = ACCESS_AS_BEFORE;
  bool _replaces = false;
  mode_t _mode = 0;  ///< to be given; of the file that is replaced, with its owner and group
  uid_t _owner = 0;
  gid_t _group = 0;
  std::optional<FileStamp> _expected;
  int _failure = 0;  ///< errno of the first write that failed
  int _folderDescriptor = -1;
  int _descriptor = -1;
};

/// Replaces a file by these bytes, as FileReplacement does.
/// @return false with the reason in `errno`, the old file being as it was
VELTRA_EXPORT bool replaceFile(const std::string& path, const void* bytes, std::size_t size,
                               FileReplacement::Access access = FileReplacement::ACCESS_AS_BEFORE);

}  // namespace Veltra
