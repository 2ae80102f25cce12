#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <libinspect/job/FileRun.h>
#include <libinspect/job/ManyFiles.h>
#include <libinspect/job/ResultRows.h>

namespace Inspect {

/// A file with findings.
struct FileNote {
  static constexpr std::size_t MOST_FINDINGS = 5;

  std::string file;
  bool isDamaged = false;  ///< false: there are only warnings
  std::vector<Finding> findings;
  uint64_t leftOut = 0;  ///< findings not listed
  std::string next;      ///< the command that helps next
  std::string advice;    ///< what to do where no command helps
};
FileNote noteOf(const JudgedFile& file, OutputPlace place);

/// A file of a job that is a result, or may have been one.
struct FileRow {
  ResultRow row;  ///< only its file is known where there is no result
  bool hasResult = false;
  std::string error;  ///< what is wrong with the file; empty if it is intact
};
/// What is wrong with a damaged file, as its row says it; empty for any other.
std::string damageOf(const JudgedFile& file);
/// The row of a file as JobFiles::add() takes it in: it has a result where JobFiles::rows have it.
/// @return none for what is no result: intact without a summary, or in a folder and no container
std::optional<FileRow> fileRowOf(const std::string& name, const ReadOutcome& outcome, const JudgedFile* file,
                                 const FileRun& run);
/// Puts rows in the order of results, those without one after them by name.
void sortRows(std::vector<FileRow>& rows);

/// What is known of a job: one row per result file, and the other files worth mentioning.
struct JobFiles {
  std::vector<ResultRow> rows;
  std::vector<FileNote> notes;
  std::vector<std::string> withoutResult;  ///< intact, but not result files
  std::vector<std::string> unread;         ///< could not be opened or read to the end, or named and no container
  /// Damaged, or not read though it was tried, and no summary tells the ID: it may be the name without its extension.
  std::vector<std::string> lost;
  std::vector<std::string> leftOut;  ///< larger than the limit
  std::size_t others = 0;            ///< files of folders that are no containers
  bool hasPassed = false;            ///< there were rows or notes, which are not held

  /// Takes in one file.
  /// @param outcome  of reading it; what was read before an error is not taken for intact
  /// @param file     null if nothing was read
  void add(const std::string& name, const ReadOutcome& outcome, const JudgedFile* file, const FileRun& run);
  /// Brings everything into the order of IDs and names. Call it after the last.
  void sort();
  /// No result was found, nor what may have been one.
  bool isEmpty() const { return rows.empty() && notes.empty() && !hasPassed; }
};

/// Called for each file after reading it, before the next: with the outcome, and what it is, null if it was not read.
using OnFile = std::function<void(const std::string& file, const ReadOutcome&, const JudgedFile*)>;

/// Receives the result of a file, after OnFile.
using OnRow = std::function<void(const ResultRow&)>;

/// Reads the result of each file of a run and notes the others.
/// @param onRow  if given, receives the results in the order of the files, and is not held: the answer only counts the
/// others
JobFiles readJob(const FileRun& run, const ReadingOptions& options, const OnFile& onFile, const OnRow& onRow = {});

/// Reads files of a run, all or some of them, and gives the row of each that has one, in their order.
void readRows(const std::vector<std::string>& files, const FileRun& run, const ReadingOptions& options,
              const std::function<void(FileRow)>& onRow);

}  // namespace Inspect
