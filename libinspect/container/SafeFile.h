#pragma once

#include <csignal>
#include <cstdint>
#include <functional>
#include <string>

namespace Inspect {

/// Has a file written beside `path`, syncs it and renames it into place.
/// @param write  writes the file it is given, which exists and is empty; false, with its argument filled, if it cannot
/// @return false, with `error` filled; the file at `path` is then as it was, unless only its directory could not be
/// synced
bool writeBeside(const std::string& path, std::string& error,
                 const std::function<bool(const std::string& temporary, std::string& error)>& write);

/// The same for bytes that are all there.
bool writeSafely(const std::string& path, const void* bytes, std::size_t size, std::string& error);

/// From now on SIGINT, SIGTERM, SIGHUP and SIGPIPE remove the unfinished file before they end the program as they
/// always do. A signal that was ignored stays ignored.
void removeUnfinishedOnSignals();

/// The file being written, until this ends. One at a time.
class UnfinishedFile {
 public:
  /// Holds those signals back, so that the file can be created and made known in one step.
  UnfinishedFile();
  ~UnfinishedFile();
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  /// The file was created, or nothing was with the empty path; signals come through again.
  void created(const std::string& path);
  /// Has this remove the file when it ends, unless it was kept.
  void removeAtEnd() { _removes = true; }
  void keep() { _removes = false; }

 private:
  sigset_t _before;
  bool _holds = true;
  bool _removes = false;
};

}  // namespace Inspect
