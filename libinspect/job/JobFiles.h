#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <libinspect/job/ManyFiles.h>
#include <libinspect/job/ResultRows.h>

namespace Inspect {

/// A file with findings, in the words of doctor.
struct FileNote {
  static constexpr std::size_t MOST_FINDINGS = 5;

  std::string file;
  bool isDamaged = false;  ///< false: there are only warnings
  std::vector<std::string> findings;
  uint64_t leftOut = 0;  ///< findings not listed
  std::string next;      ///< the command that helps next
};
FileNote noteOf(const ContainerReport& report);

/// What is known of a job: one row per result file, and the other files worth mentioning.
struct JobFiles {
  std::vector<ResultRow> rows;
  std::vector<FileNote> notes;
  std::vector<std::string> withoutResult;  ///< intact, but not result files
  std::vector<std::string> unread;         ///< could not be opened or read
  const CableIdSet* expected = nullptr;    ///< null if no IDs were given
};

/// Called for each file after reading it, before the next: with the outcome, and what was found in it.
using OnFile = std::function<void(const std::string& file, const ReadOutcome&, const Findings&)>;

/// Receives the result of a file, after OnFile.
using OnRow = std::function<void(const ResultRow&)>;

/// Reads the result of each file, in the order of their IDs, and notes the others.
/// @param onRow  if given, receives the results in the order of the files, and the answer is empty: nothing is held
JobFiles readJob(const std::vector<std::string>& files, const ReadingOptions& options, const OnFile& onFile,
                 const OnRow& onRow = {});

}  // namespace Inspect
