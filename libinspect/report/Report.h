#pragma once

#include <array>
#include <ctime>
#include <string>
#include <vector>

#include <libinspect/job/JobStatus.h>
#include <libinspect/report/VerdictLook.h>

namespace Inspect {

/// One result among those of its medium.
struct ReportRow {
  const ResultRow* result;
  std::size_t severity;  ///< of its verdict, see verdictLook()
};

/// The medium of a result.
/// @return "Copper", "Fibre" or "No medium"
const char* mediumOf(const ResultRow& row);

/// The results of one medium that count.
struct MediumReport {
  std::string name;
  const char* phrase;           ///< after a number of results: "copper"
  std::vector<ReportRow> rows;  ///< in the order of the links
};

using VerdictCounts = std::array<std::size_t, VERDICTS>;
VerdictCounts verdictCounts(const std::vector<ReportRow>& rows);

/// A row of the table of all links: one for each result that counts, and one for each link without any.
struct TableRow {
  const JobLink* link;
  const ResultRow* result;  ///< null if there is none
};

/// How many files of a job are damaged.
std::size_t damagedFiles(const JobFiles& files);

/// What the page says of a job, which it borrows.
struct Report {
  JobStatus status;
  LinkCounts counts;                   ///< of the expected links, or of all where none is expected
  std::vector<const JobLink*> judged;  ///< these links
  std::vector<const JobLink*> grid;    ///< the same, then those that are not expected where any is
  std::vector<const JobLink*> work;    ///< those of them that did not pass
  std::vector<TableRow> table;         ///< of all links, in their order
  std::vector<MediumReport> media;     ///< copper, fibre, none: those with results
  time_t firstTime = 0;                ///< of the results with a time after 1970, 0 without any
  time_t lastTime = 0;
  std::size_t counted = 0;          ///< results
  std::vector<std::string> strays;  ///< damaged and unreadable files of which nobody knows the link
};
/// @param job  settled
Report reportOf(const Job& job);

/// "All 16 links passed.", or how many are in which state.
/// @param hasStrays  there are files that could not be read, of which nobody knows the link
std::string verdictSentence(const LinkCounts& counts, bool hasStrays);

/// What identifies the block of a link within a page, whatever other links there are: "link-" and its ID, in which what
/// is not a letter, a digit or "-" is written as "_" and two hexadecimal digits.
std::string anchorOf(const std::string& id);

}  // namespace Inspect
