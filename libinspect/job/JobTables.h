#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include <libinspect/job/Job.h>

namespace Inspect {

/// What the cells of a column are. Each may be null.
enum class ColumnKind {
  KEY,        ///< int64_t, from 1 in the order of the rows
  REFERENCE,  ///< int64_t, the key of a row of another table
  TEXT,       ///< std::string
  ID,         ///< std::string, by which rows are looked up
  INTEGER,    ///< int64_t
  NUMBER,     ///< double, finite
  TIME,       ///< UtcTime
  VERDICT,    ///< Veltra::Status or LinkState
  FLAG,       ///< bool
};

struct TableColumn {
  const char* name;  ///< as in JSON
  ColumnKind kind;
  const char* unit = "";
  const char* references = "";  ///< of a REFERENCE: the other table, whose key has the name of this column
};

/// s since 1970-01-01 UTC
struct UtcTime {
  int64_t seconds;
};

/// Text stands as it was read: it may be no UTF-8, and have zeros in it. A verdict may be none of the vocabulary.
using TableCell = std::variant<std::monostate, bool, int64_t, double, std::string, UtcTime, Veltra::Status, LinkState>;

/// Receives a row, with a cell for each column. @return false to end there
using OnTableRow = std::function<bool(const std::vector<TableCell>&)>;

/// One table about a job: its columns, and how its rows are gone through.
struct JobTable {
  const char* name;
  std::vector<TableColumn> columns;
  /// Makes one row at a time, of a job that is settled. @return false if `onRow` ended it
  std::function<bool(const Job& job, const OnTableRow& onRow)> forEachRow;
};

/// The tables, by which every file format is written: results, links, findings.
///
/// A measurement has two columns: its number, and a relation as in JSON, "=", ">", "<", "n/a" or "none". A measurement
/// that is infinite or not a number has no number, and its relation is its text: "+inf", "-inf", "> +inf" or "nan". A
/// number whose scale is unknown is null beside its relation. The time of a result whose time stamp is 0 is null.
///
/// The findings of a file that has more than a note keeps end in a row without a code, which says how many more there
/// are; a file that could not be read has one row without a code.
const std::vector<JobTable>& jobTables();

}  // namespace Inspect
