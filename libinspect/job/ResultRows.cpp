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

int orderAsCounted(const std::string& a, const std::string& b) {
  const int counted = compared(a, b);
  return counted != 0 ? counted : a.compare(b);
}

/// The name of a file in its folder, without its extension: "A-1" comes before "A-1 copy".
std::string nameOf(const std::string& file) {
  return std::filesystem::path(file).stem().string();
}

}  // namespace

bool hasTime(const ResultRow& row) {
  return row.summary.timeStamp > 0;
}

bool comesBefore(const std::string& a, const std::string& b) {
  return compared(a, b) < 0;
}

bool isBefore(const ResultRow& a, const ResultRow& b) {
  if (const int ids = orderAsCounted(a.summary.resultName, b.summary.resultName); ids != 0) return ids < 0;
  if (a.summary.timeStamp != b.summary.timeStamp) return a.summary.timeStamp < b.summary.timeStamp;
  const int names = orderAsCounted(nameOf(a.file), nameOf(b.file));
  return names != 0 ? names < 0 : orderAsCounted(a.file, b.file) < 0;
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

namespace {

template <class Value>
int order(const Value& a, const Value& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

/// The worse verdict is the higher one.
int orderOf(Veltra::Status a, Veltra::Status b) {
  Veltra::Status merged = a;
  mergeStatus(merged, b);
  if (merged != a) return -1;
  merged = b;
  mergeStatus(merged, a);
  return merged != b ? 1 : 0;
}

int never(const ResultRow&) {
  return 0;
}

using Row = const ResultRow&;

std::string timeText(Row row) {
  return isoUtc(static_cast<time_t>(row.summary.timeStamp));
}

/// A member that is a text, the same in JSON.
template <std::string (*TEXT)(Row), int (*COMPARE)(Row, Row), int (*ABSENCE)(Row) = never>
constexpr RowField textField(const char* name) {
  return {name, false, false, TEXT, [](Row row) { return Json::Value(TEXT(row)); }, COMPARE, ABSENCE};
}

template <int Veltra::ResultSummary::*COUNT>
constexpr RowField countField(const char* name) {
  return {name,
          true,
          false,
          [](Row row) { return std::to_string(row.summary.*COUNT); },
          [](Row row) { return Json::Value(row.summary.*COUNT); },
          [](Row a, Row b) { return order(a.summary.*COUNT, b.summary.*COUNT); },
          never};
}

template <Veltra::DisplayMeas Veltra::ResultSummary::*MEASUREMENT>
constexpr RowField measurementField(const char* name) {
  return {name,
          true,
          true,
          [](Row row) { return presenceText(row.summary.*MEASUREMENT); },
          [](Row row) { return measurementJson(row.summary.*MEASUREMENT); },
          [](Row a, Row b) { return compareNumbers(a.summary.*MEASUREMENT, b.summary.*MEASUREMENT); },
          [](Row row) { return static_cast<int>(presenceOf(row.summary.*MEASUREMENT)); }};
}

std::string fileText(Row row) {
  return row.file;
}
int fileOrder(Row a, Row b) {
  return orderAsCounted(a.file, b.file);
}
std::string idText(Row row) {
  return row.summary.resultName;
}
int idOrder(Row a, Row b) {
  return orderAsCounted(a.summary.resultName, b.summary.resultName);
}
std::string typeText(Row row) {
  return toString(row.summary.resultType);
}
int typeOrder(Row a, Row b) {
  return order(a.summary.resultType, b.summary.resultType);
}
std::string statusText(Row row) {
  return toString(row.summary.status);
}
int statusOrder(Row a, Row b) {
  return orderOf(a.summary.status, b.summary.status);
}
int timeOrder(Row a, Row b) {
  return order(a.summary.timeStamp, b.summary.timeStamp);
}
int timeAbsence(Row row) {
  return hasTime(row) ? 0 : 1;
}

}  // namespace

const std::vector<RowField>& rowFields() {
  static const std::vector<RowField> FIELDS = {
      textField<fileText, fileOrder>("file"),
      textField<idText, idOrder>("id"),
      textField<typeText, typeOrder>("type"),
      textField<statusText, statusOrder>("status"),
      measurementField<&Veltra::ResultSummary::length>("length"),
      measurementField<&Veltra::ResultSummary::headroom>("headroom"),
      textField<timeText, timeOrder, timeAbsence>("time"),
      countField<&Veltra::ResultSummary::numPassTests>("numPassTests"),
      countField<&Veltra::ResultSummary::numPassStarTests>("numPassStarTests"),
      countField<&Veltra::ResultSummary::numFailTests>("numFailTests"),
  };
  return FIELDS;
}

const RowField* rowField(const std::string& name) {
  const std::vector<RowField>& fields = rowFields();
  const auto found = std::find_if(fields.begin(), fields.end(), [&name](const RowField& f) { return name == f.name; });
  return found == fields.end() ? nullptr : &*found;
}

std::vector<std::string> rowColumns(const std::vector<const RowField*>& fields) {
  std::vector<std::string> columns;
  for (const RowField* const field : fields) {
    columns.emplace_back(field->name);
    if (field->isMeasurement) columns.push_back(std::string(field->name) + "Relation");
  }
  return columns;
}

const std::vector<std::string>& rowColumns() {
  static const std::vector<std::string> COLUMNS = [] {
    std::vector<const RowField*> fields;
    for (const RowField& field : rowFields()) fields.push_back(&field);
    return rowColumns(fields);
  }();
  return COLUMNS;
}

void sortBy(const std::vector<SortKey>& keys, std::vector<const ResultRow*>& rows) {
  std::stable_sort(rows.begin(), rows.end(), [&keys](const ResultRow* a, const ResultRow* b) {
    for (const SortKey& key : keys) {
      const RowField& field = *key.field;
      if (const int absence = field.absence(*a) - field.absence(*b); absence != 0) return absence < 0;
      if (const int found = field.compare(*a, *b); found != 0) return key.isDescending ? found > 0 : found < 0;
    }
    return false;
  });
}

Json::Value toJson(const ResultRow& row) {
  Json::Value json(Json::objectValue);
  for (const RowField& field : rowFields()) json[field.name] = field.json(row);
  return json;
}

Json::Value rowOf(const JudgedFile& file) {
  Json::Value row = toJson(file);
  Json::Value summary;
  row.removeMember("summary", &summary);
  if (!file.hasSummary) return row;
  const Json::Value result = toJson(ResultRow{file.report.name, file.summary, false});
  for (const std::string& member : result.getMemberNames()) row[member] = result[member];
  row["testFlags"] = summary["testFlags"];
  return row;
}

}  // namespace Inspect
