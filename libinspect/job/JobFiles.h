#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <libinspect/job/ManyFiles.h>
#include <libinspect/job/ResultRows.h>

namespace Inspect {

/// A file that is not as it should be, in doctor's words.
struct FileNote {
  static constexpr std::size_t MOST_FINDINGS = 5;

  std::string file;
  bool isDamaged = false;  ///< or there are warnings alone
  std::vector<std::string> findings;
  uint64_t leftOut = 0;  ///< findings beyond those
  std::string next;      ///< the command that helps next
};
FileNote noteOf(const ContainerReport& report);

/// What is known of a job: one row a file, and the files that need a word.
struct JobFiles {
  std::vector<ResultRow> rows;
  std::vector<FileNote> notes;
  std::vector<std::string> withoutResult;  ///< sound, but no result files
  std::vector<std::string> unread;         ///< could not be opened or read
  const CableIdSet* expected = nullptr;    ///< null where no IDs were named
};

/// What is told of a file once it was read, before the next: how that went, and what was found in it.
using OnFile = std::function<void(const std::string& file, const ReadOutcome&, const Findings&)>;

/// Reads the result of each file, in the order of their IDs, and notes the others.
JobFiles readJob(const std::vector<std::string>& files, const ReadingOptions& options, const OnFile& onFile);

}  // namespace Inspect
