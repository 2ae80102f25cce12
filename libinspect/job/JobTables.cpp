#include <libinspect/job/JobTables.h>

#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include <libinspect/records/Measurements.h>

namespace Inspect {
namespace {

constexpr char RESULTS[] = "results";
constexpr char LINKS[] = "links";
constexpr char FINDINGS[] = "findings";

/// A column, and what stands in it.
template <class Row>
struct ColumnOf {
  TableColumn column;
  TableCell (*cellOf)(const Row&);
};

/// A table of rows that `forEach` makes one after the other.
template <class Row>
JobTable tableOf(const char* name, const std::vector<ColumnOf<Row>>& columns,
                 bool (*forEach)(const Job&, const std::function<bool(const Row&)>&)) {
  JobTable table{name, {}, {}};
  for (const ColumnOf<Row>& each : columns) table.columns.push_back(each.column);
  table.forEachRow = [columns, forEach](const Job& job, const OnTableRow& onRow) {
    std::vector<TableCell> cells(columns.size());
    return forEach(job, [&](const Row& row) {
      for (std::size_t i = 0; i < columns.size(); ++i) cells[i] = columns[i].cellOf(row);
      return onRow(cells);
    });
  };
  return table;
}

TableCell keyCell(std::size_t place) {
  return static_cast<int64_t>(place) + 1;
}

TableCell numberCell(const Veltra::DisplayMeas& measurement) {
  const std::optional<double> number = measuredNumber(measurement);
  return number ? TableCell(*number) : TableCell();
}

TableCell relationCell(const Veltra::DisplayMeas& measurement) {
  return relationBeside(measurementJson(measurement)).asString();
}

TableCell fileCell(const ResultRow* row) {
  return row != nullptr ? TableCell(row->file) : TableCell();
}

struct ResultTableRow {
  std::size_t place;
  std::size_t link;
  const ResultRow& row;
  const LinkResult& result;
};

const std::vector<ColumnOf<ResultTableRow>>& resultColumns() {
  using R = ResultTableRow;
  static const std::vector<ColumnOf<R>> COLUMNS = {
      {{"result", ColumnKind::KEY}, [](const R& r) { return keyCell(r.place); }},
      {{"link", ColumnKind::REFERENCE, "", LINKS}, [](const R& r) { return keyCell(r.link); }},
      {{"file", ColumnKind::TEXT}, [](const R& r) -> TableCell { return r.row.file; }},
      {{"id", ColumnKind::ID}, [](const R& r) -> TableCell { return r.row.summary.resultName; }},
      {{"type", ColumnKind::TEXT}, [](const R& r) -> TableCell { return toString(r.row.summary.resultType); }},
      {{"status", ColumnKind::VERDICT}, [](const R& r) -> TableCell { return r.row.summary.status; }},
      {{"length", ColumnKind::NUMBER, "m"}, [](const R& r) { return numberCell(r.row.summary.length); }},
      {{"lengthRelation", ColumnKind::TEXT}, [](const R& r) { return relationCell(r.row.summary.length); }},
      {{"headroom", ColumnKind::NUMBER, "dB"}, [](const R& r) { return numberCell(r.row.summary.headroom); }},
      {{"headroomRelation", ColumnKind::TEXT}, [](const R& r) { return relationCell(r.row.summary.headroom); }},
      {{"time", ColumnKind::TIME, "UTC"},
       [](const R& r) {
         const int64_t time = r.row.summary.timeStamp;
         return time != 0 ? TableCell(UtcTime{time}) : TableCell();
       }},
      {{"numPassTests", ColumnKind::INTEGER},
       [](const R& r) -> TableCell { return int64_t{r.row.summary.numPassTests}; }},
      {{"numPassStarTests", ColumnKind::INTEGER},
       [](const R& r) -> TableCell { return int64_t{r.row.summary.numPassStarTests}; }},
      {{"numFailTests", ColumnKind::INTEGER},
       [](const R& r) -> TableCell { return int64_t{r.row.summary.numFailTests}; }},
      {{"testFlags", ColumnKind::INTEGER}, [](const R& r) -> TableCell { return int64_t{r.row.summary.testFlags}; }},
      {{"damaged", ColumnKind::FLAG}, [](const R& r) -> TableCell { return r.row.isDamaged; }},
      {{"counts", ColumnKind::FLAG}, [](const R& r) -> TableCell { return r.result.counts; }},
      {{"replacedBy", ColumnKind::TEXT}, [](const R& r) { return fileCell(r.result.replacedBy); }},
      {{"copyOf", ColumnKind::TEXT}, [](const R& r) { return fileCell(r.result.copyOf); }},
  };
  return COLUMNS;
}

bool forEachResult(const Job& job, const std::function<bool(const ResultTableRow&)>& onRow) {
  std::vector<std::pair<std::size_t, const LinkResult*>> places(job.files.rows.size());
  for (std::size_t link = 0; link < job.links.size(); ++link) {
    for (const LinkResult& result : job.links[link].results) {
      places[static_cast<std::size_t>(result.row - job.files.rows.data())] = {link, &result};
    }
  }
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (!onRow({i, places[i].first, job.files.rows[i], *places[i].second})) return false;
  }
  return true;
}

struct LinkTableRow {
  std::size_t place;
  const JobLink& link;
};

const std::vector<ColumnOf<LinkTableRow>>& linkColumns() {
  using R = LinkTableRow;
  static const std::vector<ColumnOf<R>> COLUMNS = {
      {{"link", ColumnKind::KEY}, [](const R& r) { return keyCell(r.place); }},
      {{"id", ColumnKind::ID}, [](const R& r) -> TableCell { return r.link.id; }},
      {{"expected", ColumnKind::FLAG}, [](const R& r) -> TableCell { return r.link.isExpected; }},
      {{"state", ColumnKind::VERDICT}, [](const R& r) -> TableCell { return r.link.state; }},
      {{"status", ColumnKind::VERDICT}, [](const R& r) -> TableCell { return r.link.verdict; }},
      {{"results", ColumnKind::INTEGER},
       [](const R& r) -> TableCell { return static_cast<int64_t>(r.link.results.size()); }},
      {{"testedAgain", ColumnKind::FLAG}, [](const R& r) -> TableCell { return r.link.isTestedAgain(); }},
      {{"damagedFiles", ColumnKind::INTEGER},
       [](const R& r) -> TableCell { return static_cast<int64_t>(r.link.lostFiles.size()); }},
      {{"damagedFile", ColumnKind::TEXT},
       [](const R& r) { return r.link.lostFiles.empty() ? TableCell() : TableCell(r.link.lostFiles.front()); }},
  };
  return COLUMNS;
}

bool forEachLink(const Job& job, const std::function<bool(const LinkTableRow&)>& onRow) {
  for (std::size_t i = 0; i < job.links.size(); ++i) {
    if (!onRow({i, job.links[i]})) return false;
  }
  return true;
}

struct FindingTableRow {
  std::size_t place;
  const std::string& file;
  std::optional<std::size_t> result;
  const Finding* finding;  ///< null: the text says what else there is to know of the file
  std::string text;
  uint64_t leftOut = 0;
};

/// A cell of a row that is about a finding, null in another.
template <class Value>
TableCell ofFinding(const FindingTableRow& row, Value (*valueOf)(const Finding&)) {
  return row.finding != nullptr ? TableCell(valueOf(*row.finding)) : TableCell();
}

const std::vector<ColumnOf<FindingTableRow>>& findingTableColumns() {
  using R = FindingTableRow;
  static const std::vector<ColumnOf<R>> COLUMNS = {
      {{"finding", ColumnKind::KEY}, [](const R& r) { return keyCell(r.place); }},
      {{"result", ColumnKind::REFERENCE, "", RESULTS},
       [](const R& r) { return r.result ? keyCell(*r.result) : TableCell(); }},
      {{"file", ColumnKind::TEXT}, [](const R& r) -> TableCell { return r.file; }},
      {{"code", ColumnKind::TEXT},
       [](const R& r) {
         return ofFinding<std::string>(r, [](const Finding& f) { return std::string(toString(f.code)); });
       }},
      {{"meaning", ColumnKind::TEXT},
       [](const R& r) {
         return ofFinding<std::string>(r, [](const Finding& f) { return std::string(meaningOf(f.code)); });
       }},
      {{"offset", ColumnKind::INTEGER, "bytes"},
       [](const R& r) {
         return ofFinding<int64_t>(r, [](const Finding& f) { return static_cast<int64_t>(f.offset); });
       }},
      {{"section", ColumnKind::INTEGER},
       [](const R& r) {
         return ofFinding<TableCell>(
             r, [](const Finding& f) { return f.section ? TableCell(int64_t{*f.section}) : TableCell(); });
       }},
      {{"damage", ColumnKind::FLAG},
       [](const R& r) { return ofFinding<bool>(r, [](const Finding& f) { return isDamage(f.code); }); }},
      {{"wanted", ColumnKind::TEXT},
       [](const R& r) { return ofFinding<std::string>(r, [](const Finding& f) { return f.wanted; }); }},
      {{"found", ColumnKind::TEXT},
       [](const R& r) { return ofFinding<std::string>(r, [](const Finding& f) { return f.found; }); }},
      {{"leftOut", ColumnKind::INTEGER},
       [](const R& r) { return r.leftOut > 0 ? TableCell(static_cast<int64_t>(r.leftOut)) : TableCell(); }},
      {{"text", ColumnKind::TEXT}, [](const R& r) -> TableCell { return r.text; }},
  };
  return COLUMNS;
}

bool forEachFinding(const Job& job, const std::function<bool(const FindingTableRow&)>& onRow) {
  std::unordered_map<std::string, std::size_t> results;
  if (!job.files.notes.empty() || !job.files.unread.empty()) {
    for (std::size_t i = 0; i < job.files.rows.size(); ++i) results.emplace(job.files.rows[i].file, i);
  }
  std::size_t place = 0;
  const auto tell = [&](const std::string& file, const Finding* finding, std::string text, uint64_t leftOut = 0) {
    const auto known = results.find(file);
    const auto result = known != results.end() ? std::optional<std::size_t>(known->second) : std::nullopt;
    return onRow({place++, file, result, finding, std::move(text), leftOut});
  };
  for (const FileNote& note : job.files.notes) {
    for (const Finding& finding : note.findings) {
      if (!tell(note.file, &finding, describe(finding))) return false;
    }
    if (note.leftOut > 0 && !tell(note.file, nullptr, fmt::format("further findings: {}", note.leftOut), note.leftOut))
      return false;
  }
  for (const std::string& file : job.files.unread) {
    if (!tell(file, nullptr, "not read, or no container")) return false;
  }
  return true;
}

}  // namespace

const std::vector<JobTable>& jobTables() {
  static const std::vector<JobTable> TABLES = {
      tableOf<ResultTableRow>(RESULTS, resultColumns(), forEachResult),
      tableOf<LinkTableRow>(LINKS, linkColumns(), forEachLink),
      tableOf<FindingTableRow>(FINDINGS, findingTableColumns(), forEachFinding),
  };
  return TABLES;
}

}  // namespace Inspect
