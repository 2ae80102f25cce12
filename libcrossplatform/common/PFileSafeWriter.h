#pragma once

#include <optional>
#include <string>

#include <libcrossplatform/common/PFileWriter.h>

namespace PFile {

/// Saves a container so that a power cut leaves either the old file or the whole new one: everything is written to a
/// temporary file beside it, synced, renamed into its place, and the directory synced.
///
///     PFile::SafeFileWriter file;
///     if (file.open(path) != 0) ...
///     file.writer().write(section);
///     if (file.commit() != 0) ...
class VELTRA_EXPORT SafeFileWriter {
 public:
  SafeFileWriter() = default;
  SafeFileWriter(LogCallback debug, LogCallback error);
  ~SafeFileWriter();  ///< without commit(): the temporary file is removed, the old file is as it was
  SafeFileWriter(const SafeFileWriter&) = delete;
  SafeFileWriter& operator=(const SafeFileWriter&) = delete;

  /// Creates the temporary file beside the path. It gets the mode of the file it is to replace, or what a new file
  /// gets. May be called again after commit().
  /// @return 0; -1 not committed yet, null path, what has the name is no regular file, or the new one could not be
  ///         created or written: nothing is open then and errno tells why
  int open(char const* path);
  /// Where the sections go. Its failures are not remembered: look at each code before commit().
  FileWriter& writer() { return *_writer; }
  /// The temporary file, empty when nothing is open: what a program that is ended by a signal has to remove.
  const std::string& temporaryPath() const { return _temporary; }
  /// Makes the new file the file; a symbolic link is replaced, not followed.
  /// @return 0: it is on the disk under its name; -1 nothing open, the writer closed already, or a write, sync or
  ///         rename failed: the old file is then as it was, unless only the directory could not be synced
  int commit();

 private:
  void discard();

  LogCallback _debug = nullptr;
  LogCallback _error = nullptr;
  std::optional<FileWriter> _writer{std::in_place};  ///< one for each file: a writer used again counts on
  std::string _path;
  std::string _temporary;  ///< empty when nothing is open
};

}  // namespace PFile
