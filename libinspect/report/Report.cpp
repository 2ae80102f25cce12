#include <libinspect/report/Report.h>

#include <algorithm>
#include <limits>

namespace Inspect {
namespace {

struct Medium {
  const char* name;
  const char* phrase;
};
constexpr Medium MEDIA[] = {{"Copper", "copper"}, {"Fibre", "fibre"}, {"No medium", "without a medium"}};

std::size_t mediumOf(const ResultRow& row) {
  if (row.summary.resultType == Veltra::RESULT_TYPE_COPPER) return 0;
  return row.summary.resultType == Veltra::RESULT_TYPE_FIBER ? 1 : 2;
}

/// Worst first. Rows come in the order of their IDs, which a stable sort keeps.
void sortByNeed(std::vector<ReportRow>& rows) {
  const auto headroom = [](const ReportRow& row) {
    return measuredNumber(row.result->summary.headroom).value_or(std::numeric_limits<double>::max());
  };
  std::stable_sort(rows.begin(), rows.end(), [&headroom](const ReportRow& a, const ReportRow& b) {
    return a.severity != b.severity ? a.severity < b.severity : headroom(a) < headroom(b);
  });
}

void addMedia(const JobFiles& job, Report& report) {
  std::vector<ReportRow> rows[std::size(MEDIA)];
  for (const ResultRow& row : job.rows) {
    rows[mediumOf(row)].push_back({&row, severityOf(row.summary.status)});
  }
  for (std::size_t i = 0; i < std::size(MEDIA); ++i) {
    if (rows[i].empty()) continue;
    sortByNeed(rows[i]);
    report.media.push_back({MEDIA[i].name, MEDIA[i].phrase, std::move(rows[i])});
  }
}

void addExpected(const JobFiles& job, Report& report) {
  const ExpectedIds& set = *job.expected;
  report.hasExpected = true;
  report.coverage = job.coverageOf(set);
  const std::vector<std::string>& ids = set.ids();
  report.expected.resize(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    report.expected[i].id = ids[i];
    report.expected[i].results = report.coverage.results[i];
  }
  for (const std::string& id : report.coverage.damaged) report.expected[*set.placeOf(id)].isDamaged = true;
  for (const ResultRow& row : job.rows) {
    const std::optional<std::size_t> place = set.placeOf(row.summary.resultName);
    if (!place) continue;
    std::size_t& severity = report.expected[*place].severity;
    severity = std::min(severity, severityOf(row.summary.status));
  }
}

}  // namespace

VerdictCounts verdictCounts(const std::vector<ReportRow>& rows) {
  VerdictCounts counts{};
  for (const ReportRow& row : rows) ++counts[row.severity];
  return counts;
}

Report reportOf(const JobFiles& job) {
  Report report;
  report.results = job.rows.size();
  for (const ResultRow& row : job.rows) {
    ++report.verdicts[severityOf(row.summary.status)];
    if (!hasTime(row)) continue;
    const auto time = static_cast<time_t>(row.summary.timeStamp);
    report.firstTime = report.firstTime == 0 ? time : std::min(report.firstTime, time);
    report.lastTime = std::max(report.lastTime, time);
  }
  addMedia(job, report);
  if (job.expected != nullptr) addExpected(job, report);
  return report;
}

}  // namespace Inspect
