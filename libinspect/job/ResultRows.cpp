#include <libinspect/job/ResultRows.h>

#include <algorithm>

#include <fmt/format.h>

namespace Inspect {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The run of digits at `at` without its leading zeros; `at` moves to its end.
std::string numberAt(const std::string& text, std::size_t& at) {
  const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
  const std::size_t begin = std::min(text.find_first_not_of('0', at), end);
  at = end;
  return text.substr(begin, end - begin);
}

}  // namespace

bool comesBefore(const std::string& a, const std::string& b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::string x = numberAt(a, i), y = numberAt(b, j);
      if (x != y) return x.size() != y.size() ? x.size() < y.size() : x < y;
    } else {
      if (a[i] != b[j]) return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
      ++i;
      ++j;
    }
  }
  return a.size() - i < b.size() - j;
}

void sortRows(std::vector<ResultRow>& rows) {
  std::sort(rows.begin(), rows.end(), [](const ResultRow& a, const ResultRow& b) {
    const std::string &x = a.summary.resultName, &y = b.summary.resultName;
    if (comesBefore(x, y)) return true;
    if (comesBefore(y, x)) return false;
    if (x != y) return x < y;  // 7 and 07
    if (a.summary.timeStamp != b.summary.timeStamp) return a.summary.timeStamp < b.summary.timeStamp;
    return a.file < b.file;
  });
}

const std::vector<std::string>& rowColumns() {
  static const std::vector<std::string> COLUMNS = {
      "file", "id",     "type", "status", "length", "lengthRelation", "headroom", "headroomRelation",
      "time", "passed", "star", "failed"};
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
  json["passed"] = s.numPassTests;
  json["star"] = s.numPassStarTests;
  json["failed"] = s.numFailTests;
  return json;
}

Coverage coverageOf(const std::vector<ResultRow>& rows, const CableIdSet& expected) {
  Coverage coverage;
  std::vector<int>& results = coverage.results;
  results.resize(expected.count());
  for (const ResultRow& row : rows) {
    const std::optional<uint32_t> ordinal = expected.ordinalOf(row.summary.resultName);
    if (!ordinal) {
      coverage.foreign.push_back(row.summary.resultName);
    } else if (++results[*ordinal] == 2) {
      coverage.twice.push_back(row.summary.resultName);
    }
  }
  const std::vector<std::string> ids = expected.ids(0, expected.count());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (results[i] == 0) coverage.missing.push_back(ids[i]);
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
