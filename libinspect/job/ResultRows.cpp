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
                    const CableIdSet& expected) {
  Coverage coverage;
  std::vector<int>& results = coverage.results;
  results.resize(expected.count());
  std::vector<bool> isLost(expected.count());
  for (const std::string& file : lostFiles) {
    const std::optional<uint32_t> ordinal = expected.ordinalOf(std::filesystem::path(file).stem().string());
    if (ordinal) isLost[*ordinal] = true;
  }
  for (const ResultRow& row : rows) {
    const std::optional<uint32_t> ordinal = expected.ordinalOf(row.summary.resultName);
    if (!ordinal) {
      coverage.foreign.push_back(row.summary.resultName);
    } else if (row.isDamaged) {
      isLost[*ordinal] = true;
    } else if (++results[*ordinal] == 2) {
      coverage.twice.push_back(row.summary.resultName);
    }
  }
  const std::vector<std::string> ids = expected.ids(0, expected.count());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (results[i] == 0) (isLost[i] ? coverage.damaged : coverage.missing).push_back(ids[i]);
  }
  return coverage;
}

bool parseExpected(const std::string& text, CableIdSet& set, std::string& error) {
  const std::size_t dots = text.find("..");
  std::string refusal = "expected FIRST..LAST";
  if (dots != std::string::npos && set.build(text.substr(0, dots), text.substr(dots + 2), refusal)) return true;
  error = fmt::format("{}: {}", text, refusal);
  return false;
}

}  // namespace Inspect
