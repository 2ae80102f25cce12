#pragma once

#include <array>
#include <ctime>
#include <string>
#include <vector>

#include <libinspect/job/JobFiles.h>
#include <libinspect/report/VerdictLook.h>

namespace Inspect {

/// One result among those of its medium.
struct ReportRow {
  const ResultRow* result;
  std::size_t severity;  ///< of its verdict, see verdictLook()
};

/// The results of one medium.
struct MediumReport {
  std::string name;
  const char* phrase;           ///< after a number of results: "copper"
  std::vector<ReportRow> rows;  ///< the worst verdict first, then the least headroom, then by ID
};

/// An ID of the job and the results it has.
struct ExpectedId {
  std::string id;
  int results = 0;                  ///< intact ones
  std::size_t severity = VERDICTS;  ///< the worst of its results, in damaged files too; VERDICTS without any
  bool isDamaged = false;           ///< there is nothing of it but a damaged or unreadable file
};

using VerdictCounts = std::array<std::size_t, VERDICTS>;
VerdictCounts verdictCounts(const std::vector<ReportRow>& rows);

/// What the page says. Holds pointers to the rows it was made from.
struct Report {
  std::size_t results = 0;
  VerdictCounts verdicts{};
  std::vector<MediumReport> media;  ///< copper, fibre, none: those with results
  time_t firstTime = 0;             ///< of the results with a time after 1970, 0 without any
  time_t lastTime = 0;
  bool hasExpected = false;
  Coverage coverage;
  std::vector<ExpectedId> expected;
};
Report reportOf(const JobFiles& job);

}  // namespace Inspect
