#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <libinspect/job/ExpectedIds.h>
#include <libinspect/job/JobFiles.h>

namespace Inspect {

/// What is known of a link: the state of its ID.
enum class LinkState {
  PASSED,
  PASSED_WITH_STAR,
  FAILED,
  NO_VERDICT,  ///< a result that counts neither passes nor fails, and none fails
  DAMAGED,     ///< there is nothing of it but damaged and unreadable files
  MISSING,
};
/// "passed", "passed with a star", "failed", "no verdict", "damaged" or "missing".
const char* toString(LinkState state);

/// What the verdict of a result alone makes of its link.
LinkState stateOf(Veltra::Status status);

/// One result of a link.
struct LinkResult {
  const ResultRow* row = nullptr;
  const ResultRow* replacedBy = nullptr;  ///< a later result, which stands for this one
  const ResultRow* copyOf = nullptr;      ///< a file with the same bytes
  bool counts = false;                    ///< it is a part of the link's verdict
  bool isTied = false;                    ///< only the name of `replacedBy` is later, not its time
};

/// All results of one ID.
struct JobLink {
  std::string id;
  bool isExpected = false;
  LinkState state = LinkState::MISSING;
  Veltra::Status verdict = Veltra::STATUS_NOT_SET;  ///< the worst of the results that count, as mergeStatus() has it
  std::vector<LinkResult> results;                  ///< by time, then by name of the file; damaged ones never count
  std::vector<std::string> lostFiles;               ///< damaged and unreadable files that stand for it

  bool passed() const { return state == LinkState::PASSED || state == LinkState::PASSED_WITH_STAR; }
  /// Whether a later result stands for one of it: its history.
  bool isTestedAgain() const;
};

/// Which of several results of one ID count.
enum class CountPolicy {
  LATEST,  ///< not those that a later one stands for
  ALL,     ///< every intact one, but for copies of a file: none stands for another
};

/// The links of a job: those expected in their order, then those that are not, by ID.
///
/// A later result stands for an earlier one of the same ID and medium if it contains all tests of it; otherwise both
/// count. Of equal times the later file name is later, numbers in it counted. A result without a time stands for no
/// other, and no other for it. Files with the same bytes are one result. Reads files once more whose summaries are
/// equal.
/// @param files  sorted; outlives the links
std::vector<JobLink> linksOf(const JobFiles& files, const ExpectedIds& expected, CountPolicy policy);

/// The files of the results that count, in the order of their links.
std::vector<std::string> countedFiles(const std::vector<JobLink>& links);

/// The IDs of links that are not as expected.
struct Coverage {
  std::vector<std::string> missing;  ///< without a result
  std::vector<std::string> damaged;  ///< with nothing but damaged and unreadable files
  std::vector<std::string> twice;    ///< with more than one intact result
  std::vector<std::string> foreign;  ///< not expected, once for each result
};
Coverage coverageOf(const std::vector<JobLink>& links);

}  // namespace Inspect
