#pragma once

#include <string>
#include <vector>

#include <libinspect/records/FileJudge.h>

namespace Inspect {

/// One result file in a table of many: what is kept of it after reading.
struct ResultRow {
  std::string file;
  Veltra::ResultSummary summary;
  bool isDamaged = false;  ///< the file is damaged after its summary, or could not be read to its end
};

/// Whether a result says when it was taken.
bool hasTime(const ResultRow& row);

/// True when `a` comes before `b` with runs of digits compared as numbers: A2 before A10.
bool comesBefore(const std::string& a, const std::string& b);

/// The numeric order of IDs; equal IDs by time, then by name of the file, numbers in it counted.
bool isBefore(const ResultRow& a, const ResultRow& b);

/// Puts rows in that order.
void sortRows(std::vector<ResultRow>& rows);

/// A member of a row: its name in every table, CSV and JSON, what rows can be sorted by, and which columns can be
/// chosen.
struct RowField {
  const char* name;
  bool isNumber;                                       ///< on the right of a table
  bool isMeasurement;                                  ///< two columns: its number and its relation
  std::string (*text)(const ResultRow&);               ///< for people
  Json::Value (*json)(const ResultRow&);               ///< a measurement as measurementJson()
  int (*compare)(const ResultRow&, const ResultRow&);  ///< below 0: the first one is the lower
  int (*absence)(const ResultRow&);                    ///< 0: there is a value; the others stand last, in this order
};
/// The members in the order of the columns.
const std::vector<RowField>& rowFields();
/// The member of that name; null if there is none.
const RowField* rowField(const std::string& name);
/// The row as an object with all members.
Json::Value toJson(const ResultRow& row);
/// What is known of a file, with its result as such a row.
Json::Value rowOf(const JudgedFile& file);
/// The columns of a row, or of some of its members, in order, with a measurement as a number and a relation.
std::vector<std::string> rowColumns(const std::vector<const RowField*>& fields);
const std::vector<std::string>& rowColumns();

/// One field that rows are sorted by.
struct SortKey {
  const RowField* field = nullptr;
  bool isDescending = false;
};
/// Puts rows in the order of the first key, equal ones in that of the second, and so on; the rest stays as it is. Those
/// without a value come last, whatever the direction: not set, not available, not applicable.
void sortBy(const std::vector<SortKey>& keys, std::vector<const ResultRow*>& rows);

}  // namespace Inspect
