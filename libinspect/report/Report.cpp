#include <libinspect/report/Report.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <tuple>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/records/Verdict.h>

namespace Inspect {
namespace {

struct Medium {
  const char* name;
  const char* phrase;
};
constexpr Medium MEDIA[] = {{"Copper", "copper"}, {"Fibre", "fibre"}, {"No medium", "without a medium"}};

std::size_t placeOf(const ResultRow& row) {
  if (row.summary.resultType == Veltra::RESULT_TYPE_COPPER) return 0;
  return row.summary.resultType == Veltra::RESULT_TYPE_FIBER ? 1 : 2;
}

void addTime(const ResultRow& row, Report& report) {
  if (!hasTime(row)) return;
  const auto time = static_cast<time_t>(row.summary.timeStamp);
  report.firstTime = report.firstTime == 0 ? time : std::min(report.firstTime, time);
  report.lastTime = std::max(report.lastTime, time);
}

void addPlaces(std::vector<TableRow>& table) {
  std::vector<TableRow*> order;
  order.reserve(table.size());
  for (TableRow& row : table) order.push_back(&row);
  std::stable_sort(order.begin(), order.end(),
                   [](const TableRow* a, const TableRow* b) { return comesBefore(a->link->id, b->link->id); });
  for (std::size_t i = 0; i < order.size(); ++i) order[i]->place = i;
}

/// "1 failed, 2 were not tested": the links that did not pass.
std::string othersOf(const LinkCounts& counts) {
  std::string others;
  const auto add = [&others](std::size_t count, const char* one, const char* many) {
    if (count > 0) others += fmt::format("{}{} {}", others.empty() ? "" : ", ", count, count == 1 ? one : many);
  };
  add(counts.failed, "failed", "failed");
  add(counts.noVerdict, "has no verdict", "have no verdict");
  add(counts.damaged, "could not be read", "could not be read");
  add(counts.missing, "was not tested", "were not tested");
  return others;
}

}  // namespace

const char* mediumOf(const ResultRow& row) {
  return MEDIA[placeOf(row)].name;
}

VerdictCounts verdictCounts(const std::vector<ReportRow>& rows) {
  VerdictCounts counts{};
  for (const ReportRow& row : rows) ++counts[row.severity];
  return counts;
}

std::size_t damagedFiles(const JobFiles& files) {
  return static_cast<std::size_t>(
      std::count_if(files.notes.begin(), files.notes.end(), [](const FileNote& note) { return note.isDamaged; }));
}

Report reportOf(const Job& job) {
  Report report;
  std::vector<ReportRow> rows[std::size(MEDIA)];
  report.status = statusOf(job);
  report.strays = job.strays();
  for (const std::string& file : job.files.leftOut) {
    report.tooLarge.insert(std::filesystem::path(file).stem().string());
  }
  for (const JobLink& link : job.links) {
    const std::size_t before = report.table.size();
    for (const LinkResult& result : link.results) {
      if (!result.row->isDamaged) addTime(*result.row, report);
      if (!result.counts) continue;
      ++report.counted;
      report.table.push_back({&link, result.row});
      rows[placeOf(*result.row)].push_back({result.row, severityOf(result.row->summary.status)});
    }
    if (report.table.size() == before) report.table.push_back({&link, nullptr});
    if (!link.passed()) report.work.push_back(&link);
    if (!link.isExpected && !job.expected.empty()) {
      report.foreign.add(link);
      continue;
    }
    report.judged.push_back(&link);
    report.counts.add(link);
  }
  addPlaces(report.table);
  report.grid = report.judged;
  if (!job.expected.empty()) {
    report.grid.insert(report.grid.end(), report.status.foreign.begin(), report.status.foreign.end());
  }
  std::stable_sort(report.work.begin(), report.work.end(),
                   [](const JobLink* a, const JobLink* b) { return a->state < b->state; });
  for (std::size_t i = 0; i < std::size(MEDIA); ++i) {
    if (!rows[i].empty()) report.media.push_back({MEDIA[i].name, MEDIA[i].phrase, std::move(rows[i])});
  }
  return report;
}

std::string verdictSentence(const LinkCounts& counts, const LinkCounts& foreign, bool hasUnread) {
  const std::string unexpected =
      foreign.areAllPassed() ? "" : " Of the links that are not expected: " + othersOf(foreign) + ".";
  if (counts.expected == 0) return hasUnread ? "No result could be read." : "There are no links.";
  const char* const kind = unexpected.empty() ? "link" : "expected link";
  const std::size_t passed = counts.passed + counts.passedStar;
  std::string star;
  if (counts.passedStar > 0) {
    star = counts.passedStar < passed ? fmt::format(", {} of them with a star", counts.passedStar)
           : passed == 1              ? ", with a star"
                                      : ", all with a star";
  }
  if (counts.areAllPassed()) {
    const char* const readable = hasUnread ? " that could be read" : "";
    return (counts.expected == 1 ? fmt::format("The {}{} passed{}.", kind, readable, star)
                                 : fmt::format("All {} {}s{} passed{}.", counts.expected, kind, readable, star)) +
           unexpected;
  }
  return fmt::format("{} of {} passed{}. {}.{}", passed, counted(counts.expected, kind), star, othersOf(counts),
                     unexpected);
}

const ResultRow* worstOf(const JobLink& link, std::size_t& others) {
  const auto rankOf = [](const ResultRow& row) {
    const Veltra::Status status = row.summary.status;
    return std::make_tuple(!isFail(status), severityOf(status),
                           measuredNumber(row.summary.headroom).value_or(std::numeric_limits<double>::infinity()));
  };
  const ResultRow* worst = nullptr;
  std::size_t count = 0;
  for (const LinkResult& result : link.results) {
    if (!result.counts || isPass(result.row->summary.status)) continue;
    if (worst == nullptr || rankOf(*result.row) < rankOf(*worst)) worst = result.row;
    ++count;
  }
  others = count > 0 ? count - 1 : 0;
  return worst;
}

std::string anchorOf(const std::string& id) {
  std::string anchor = "link-";
  for (const char c : id) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
    anchor += isPlain ? std::string(1, c) : fmt::format("_{:02x}", byte);
  }
  return anchor;
}

}  // namespace Inspect
