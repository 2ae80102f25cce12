#include <libinspect/job/ResultRows.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace Inspect {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The run of digits at `at` without its leading zeros; `at` moves to its end.
std::string_view numberAt(std::string_view text, std::size_t& at) {
  std::size_t begin = at;
  while (at < text.size() && isDigit(text[at])) ++at;
  while (begin < at && text[begin] == '0') ++begin;
  return text.substr(begin, at - begin);
}

/// Below 0 if `a` comes before `b`, above 0 if after it; 0 also for 7 and 07.
int compared(std::string_view a, std::string_view b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::string_view x = numberAt(a, i), y = numberAt(b, j);
      if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
      if (const int order = x.compare(y); order != 0) return order;
    } else {
      if (a[i] != b[j]) return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]) ? -1 : 1;
      ++i;
      ++j;
    }
  }
  const std::size_t restOfA = a.size() - i, restOfB = b.size() - j;
  return restOfA == restOfB ? 0 : restOfA < restOfB ? -1 : 1;
}

bool isBefore(const ResultRow& a, const ResultRow& b) {
  const std::string &x = a.summary.resultName, &y = b.summary.resultName;
  if (const int order = compared(x, y); order != 0) return order < 0;
  if (x != y) return x < y;
  if (a.summary.timeStamp != b.summary.timeStamp) return a.summary.timeStamp < b.summary.timeStamp;
  return a.file < b.file;
}

}  // namespace

bool hasTime(const ResultRow& row) {
  return row.summary.timeStamp > 0;
}

bool comesBefore(const std::string& a, const std::string& b) {
  return compared(a, b) < 0;
}

void sortRows(std::vector<ResultRow>& rows) {
  std::vector<ResultRow*> order;  // moved less often than rows
  order.reserve(rows.size());
  for (ResultRow& row : rows) order.push_back(&row);
  std::sort(order.begin(), order.end(), [](const ResultRow* a, const ResultRow* b) { return isBefore(*a, *b); });
  std::vector<ResultRow> sorted;
  sorted.reserve(rows.size());
  for (ResultRow* const row : order) sorted.push_back(std::move(*row));
  rows = std::move(sorted);
}

const std::vector<std::string>& rowColumns() {
  static const std::vector<std::string> COLUMNS = {"file",
                                                   "id",
                                                   "type",
                                                   "status",
                                                   "length",
                                                   "lengthRelation",
                                                   "headroom",
                                                   "headroomRelation",
                                                   "time",
                                                   "numPassTests",
                                                   "numPassStarTests",
                                                   "numFailTests"};
  return COLUMNS;
}

Json::Value toJson(const ResultRow& row) {
  Json::Value json(Json::objectValue);
  const Veltra::ResultSummary& s = row.summary;
  json["file"] = row.file;
  json["id"] = s.resultName;
  json["type"] = toString(s.resultType);
  json["status"] = toString(s.status);
  json["length"] = measurementJson(s.length);
  json["headroom"] = measurementJson(s.headroom);
  json["time"] = isoUtc(static_cast<time_t>(s.timeStamp));
  json["numPassTests"] = s.numPassTests;
  json["numPassStarTests"] = s.numPassStarTests;
  json["numFailTests"] = s.numFailTests;
  return json;
}

Coverage coverageOf(const std::vector<ResultRow>& rows, const std::vector<std::string>& lostFiles,
                    const ExpectedIds& expected) {
  Coverage coverage;
  const std::vector<std::string>& ids = expected.ids();
  std::vector<int>& results = coverage.results;
  results.resize(ids.size());
  std::vector<bool> isLost(ids.size());
  for (const std::string& file : lostFiles) {
    const std::optional<std::size_t> place = expected.placeOf(std::filesystem::path(file).stem().string());
    if (place) isLost[*place] = true;
  }
  for (const ResultRow& row : rows) {
    const std::optional<std::size_t> place = expected.placeOf(row.summary.resultName);
    if (!place) {
      coverage.foreign.push_back(row.summary.resultName);
    } else if (row.isDamaged) {
      isLost[*place] = true;
    } else if (++results[*place] == 2) {
      coverage.twice.push_back(row.summary.resultName);
    }
  }
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (results[i] == 0) (isLost[i] ? coverage.damaged : coverage.missing).push_back(ids[i]);
  }
  return coverage;
}

}  // namespace Inspect
