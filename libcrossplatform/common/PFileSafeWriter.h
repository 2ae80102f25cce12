#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <optional>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/PFileWriter.h>

namespace PFile {

/// Saves a container so that after a power cut there is either the old file or the whole new one: a FileReplacement
/// that is written section by section.
///
///     PFile::SafeFileWriter file;
///     if (file.open(path) != 0) ...
///     file.writer().write(section);
///     if (file.commit() != 0) ...
class VELTRA_EXPORT SafeFileWriter {
 public:
  SafeFileWriter() = default;
  /// Callbacks for messages; null drops them.
  SafeFileWriter(LogCallback debug, LogCallback error);
  ~SafeFileWriter();  ///< without commit(): the temporary file is removed, the old file is unchanged
  SafeFileWriter(const SafeFileWriter&) = delete;
  SafeFileWriter& operator=(const SafeFileWriter&) = delete;

  /// Creates the temporary file next to the path. May be called again after commit().
  /// @return 0; -1 not committed yet, null path, the path is not that of a regular file, or the new one could not
  ///         be created or written: nothing is open then and errno has the reason
  [[nodiscard]] int open(char const* path);
  /// Where the sections go. Its failures are not remembered: check each code before commit().
  FileWriter& writer() { return *_writer; }
  /// Replaces the old file by the new one, with the mode and, where possible, owner and group of the old one; a new
  /// file gets what the umask leaves. A symbolic link is replaced, not followed.
  /// @return 0: the file has its name and its bytes are on the disk; -1 nothing open, the writer closed already, or a
  ///         write, sync or rename failed: the old file is then unchanged
  [[nodiscard]] int commit();

 private:
  void discard();

  LogCallback _debug = nullptr;
  LogCallback _error = nullptr;
  Veltra::FileReplacement _file;
  std::optional<FileWriter> _writer{std::in_place};  ///< one for each file: a writer used again continues its count
};

}  // namespace PFile
