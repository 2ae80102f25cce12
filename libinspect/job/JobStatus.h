#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/job/Job.h>

namespace Inspect {

/// How many IDs there are of each kind. `tested` are those of `passed` to `noVerdict`; they, `damaged` and `missing`
/// are all `expected` ones.
struct LinkCounts {
  std::size_t expected = 0;
  std::size_t tested = 0;
  std::size_t passed = 0;  ///< without a star
  std::size_t passedStar = 0;
  std::size_t failed = 0;
  std::size_t noVerdict = 0;
  std::size_t damaged = 0;
  std::size_t missing = 0;
  std::size_t testedAgain = 0;  ///< a later result stands for an earlier one of it

  void add(const JobLink& link);
  bool areAllPassed() const { return passed + passedStar == expected; }
};

/// The names of the counts, in their order: "expected" and so on, in JSON and CSV; the words for people.
struct LinkCountColumn {
  const char* name;
  const char* words;
  std::size_t LinkCounts::*count;
};
const std::vector<LinkCountColumn>& linkCountColumns();

/// One range of the job.
struct RangeStatus {
  std::string text;  ///< as it was given
  LinkCounts counts;
};

/// Why an ID needs work, and the file that says so.
struct WorkItem {
  const JobLink* link = nullptr;
  LinkState why = LinkState::MISSING;
  const ResultRow* result = nullptr;  ///< null if it is missing or damaged
  std::string file;                   ///< empty if it is missing
};

/// Whether a job is finished. Borrows the job it was made from.
struct JobStatus {
  std::vector<RangeStatus> ranges;
  LinkCounts all;                       ///< each expected ID once
  std::vector<WorkItem> work;           ///< of each expected ID that did not pass, in their order
  std::vector<const JobLink*> history;  ///< links that were tested again
  std::vector<const JobLink*> foreign;  ///< links that are not expected
  std::vector<std::string> notes;       ///< what to know of these answers, a sentence each

  bool isFinished() const { return all.areAllPassed(); }
};
/// The note of a job whose expected IDs were guessed.
constexpr char GUESSED_NOTE[] =
    "The expected IDs were guessed from results: what is missing before the first and after the last of a range cannot "
    "be told";
/// @param job  settled
JobStatus statusOf(const Job& job);

/// The status as JSON, all but its links.
Json::Value toJson(const Job& job, const JobStatus& status);
/// A link with its results as JSON.
Json::Value toJson(const JobLink& link);
/// Calls with rows of several kinds, told apart by their member "kind".
void forEachStatusRow(const JobStatus& status, const std::function<void(const Json::Value&)>& onRow);
/// The columns of these rows.
const std::vector<std::string>& statusColumns();

}  // namespace Inspect
