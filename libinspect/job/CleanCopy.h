#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <libinspect/container/Recover.h>
#include <libinspect/job/FileRun.h>
#include <libinspect/job/ManyFiles.h>

namespace Inspect {

/// What became of a file of a job in its clean copy.
enum class CopyAction {
  COPIED,     ///< byte for byte, with its mode and time
  RECOVERED,  ///< its intact sections, in a container with its mode
  LOST,       ///< nothing of it is intact; it is not in the copy
  OTHER,      ///< no container, nor the description of a job or its logo; it is not in the copy
  FAILED,     ///< not in the copy, though it should be
};
/// "copied", "recovered", "lost", "other" or "failed".
const char* toString(CopyAction action);

/// One file of a clean copy.
struct FileCopy {
  CopyAction action = CopyAction::FAILED;
  std::string output;  ///< its path in the copy
  std::string sum;     ///< of its bytes there
  std::string error;   ///< why it FAILED; empty if it was not tried, after another could not be written
  uint64_t size = 0;   ///< of the file, in bytes

  // Of RECOVERED and LOST:
  uint64_t kept = 0;  ///< sections
  uint64_t lostBytes = 0;
  uint64_t missing = 0;                   ///< bytes that its recorded length exceeds its size by
  std::vector<LostSection> lostSections;  ///< as in Recovery, like the next two
  uint64_t lostSectionsLeftOut = 0;
  bool isSummaryLost = false;
  std::optional<Finding> damage;  ///< what is damaged in the copy, too: a record may be, in an intact section

  bool isInCopy() const { return action == CopyAction::COPIED || action == CopyAction::RECOVERED; }
  bool hasLoss() const { return action == CopyAction::LOST || lostBytes > 0 || missing > 0 || damage; }
};

/// What to copy, and where to.
struct CopyOrder {
  static constexpr char LIST_NAME[] = "SHA256SUMS";  ///< in the copy, for `sha256sum -c`

  std::string folder;
  std::string copy;        ///< the folder to write; it may exist, its parent must
  bool replaces = false;   ///< a file in the copy that has other bytes is replaced
  bool isPartial = false;  ///< some of the folder could not be listed
  /// The SHA-256 of all bytes as hexadecimal digits, empty if there is none. Called from any thread.
  std::function<std::string(const ByteSource&)> sumOf;
};

/// Whether neither folder is, or lies in, the other, whatever their names: by device and inode; and whether the copy
/// can have a list: no folder of the job has its name, and in the copy only a file.
/// @return false, with `error`, also if one of them cannot be examined
[[nodiscard]] bool canCopy(const CopyOrder& order, std::string& error);

/// Receives what became of a file, in the order of the files, from the calling thread; null if it was not read.
using OnCopy = std::function<void(const std::string& file, const ReadOutcome&, const FileCopy*)>;

/// What there is at the end of a clean copy.
struct CopyEnd {
  bool isComplete = false;             ///< all that should be in the copy is: nothing FAILED or was not read
  std::string list;                    ///< path of the list of sums; empty: there is no new one
  std::string error;                   ///< why the list of a complete copy could not be written
  std::vector<std::string> lostLogos;  ///< a line for each logo of a description that is no file of the folder
  std::vector<std::string> foreign;    ///< files below the copy that are not of it, in order of name
  std::vector<std::string> faults;     ///< a line for each folder there that could not be looked into for them
};

/// Copies what is intact of a job, each file to the same path below the copy, and the picture that a description names
/// as its logo. Then writes the list of their sums if the copy is complete and has files. Files and folders are written
/// only in the copy, each file by FileReplacement. A file that is in the copy with the bytes it should have is not
/// touched. After a file that cannot be written no more are tried. A list that is there is replaced if the new one has
/// all its lines. Call it after canCopy().
/// @param run  of the files of `order.folder` alone
CopyEnd copyJob(const CopyOrder& order, const FileRun& run, const ReadingOptions& options, const OnCopy& onCopy);

/// A line of a list of sums, as GNU's tools write it: a name with a line break or a backslash is escaped.
std::string sumLine(const std::string& sum, const std::string& name);

}  // namespace Inspect
