#pragma once

#include <array>
#include <ctime>
#include <set>
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
  std::size_t place = 0;    ///< of the row when all are sorted by ID, as results are
};

/// How many files of a job are damaged.
std::size_t damagedFiles(const JobFiles& files);

/// What the page says of a job, which it borrows.
struct Report {
  JobStatus status;
  LinkCounts counts;                   ///< of the expected links, or of all where none is expected
  LinkCounts foreign;                  ///< of those that are not expected where any is
  std::vector<const JobLink*> judged;  ///< the links of `counts`
  std::vector<const JobLink*> grid;    ///< the same, then those of `foreign`
  std::vector<const JobLink*> work;    ///< those of them all that did not pass
  std::vector<TableRow> table;         ///< of all links, in their order
  std::vector<MediumReport> media;     ///< copper, fibre, none: those with results
  time_t firstTime = 0;                ///< of the intact results with a time after 1970, 0 without any; also of those
  time_t lastTime = 0;                 ///< that do not count
  std::size_t counted = 0;             ///< results
  std::vector<std::string> strays;     ///< damaged and unreadable files of which nobody knows the link
  std::set<std::string> tooLarge;      ///< names, without extensions, of files that are larger than the limit

  /// There is a link that is not expected and did not pass.
  bool hasForeignWork() const { return !foreign.areAllPassed(); }
};
/// @param job  settled
Report reportOf(const Job& job);

/// "All 16 links passed.", or how many are in which state; also of links that are not expected if one did not pass.
/// @param hasUnread  there are files that could not be read, of which nobody knows the link
std::string verdictSentence(const LinkCounts& counts, const LinkCounts& foreign, bool hasUnread);

/// Of the results of a link that count and did not pass: the one with the worst verdict, of equal ones that with the
/// least headroom; and how many others there are. @return null if there is none
const ResultRow* worstOf(const JobLink& link, std::size_t& others);

/// What identifies the block of a link within a page, whatever other links there are: "link-" and its ID, in which what
/// is not a letter, a digit or "-" is written as "_" and two hexadecimal digits.
std::string anchorOf(const std::string& id);

}  // namespace Inspect
