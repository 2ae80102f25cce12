#include <sqlite3.h>

#include <cstring>
#include <memory>
#include <string_view>

#include <fmt/format.h>

#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/job/JobTables.h>
#include <libinspect/records/IsoTime.h>

#include "TableFile.h"

namespace Command {
namespace {

using Inspect::ColumnKind, Inspect::JobTable, Inspect::TableCell, Inspect::TableColumn;

constexpr int SCHEMA_VERSION = 1;           ///< PRAGMA user_version
constexpr int APPLICATION_ID = 0x564C5452;  ///< "VLTR"

/// The definition of a column in CREATE TABLE.
std::string definitionOf(const TableColumn& column) {
  switch (column.kind) {
    case ColumnKind::KEY:
      return fmt::format("\"{}\" INTEGER PRIMARY KEY", column.name);
    case ColumnKind::REFERENCE:
      return fmt::format("\"{0}\" INTEGER REFERENCES \"{1}\" (\"{0}\")", column.name, column.references);
    case ColumnKind::INTEGER:
      return fmt::format("\"{}\" INTEGER", column.name);
    case ColumnKind::FLAG:
      return fmt::format("\"{0}\" INTEGER CHECK (\"{0}\" IN (0, 1))", column.name);
    case ColumnKind::NUMBER:
      return fmt::format("\"{}\" REAL", column.name);
    default:
      return fmt::format("\"{}\" TEXT", column.name);
  }
}

/// A new database in one transaction. Nothing else uses the file: a failure leaves one to be removed, so that neither a
/// journal nor a sync is needed.
class JobDatabase {
 public:
  bool write(const Inspect::Job& job, const std::string& path, std::string& error) {
    // A file: URI is no path, whatever the library was built to take it for.
    const std::string file = path.rfind('/', 0) == 0 ? path : "./" + path;
    sqlite3* database = nullptr;
    const int opened = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    _database.reset(database);
    bool isWritten =
        opened == SQLITE_OK &&
        execute(fmt::format("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA application_id = {}; "
                            "PRAGMA user_version = {}; BEGIN",
                            APPLICATION_ID, SCHEMA_VERSION));
    for (const JobTable& table : Inspect::jobTables()) isWritten = isWritten && add(table, job);
    isWritten = isWritten && execute("COMMIT");
    if (!isWritten) error = reason();
    return isWritten;
  }

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  std::string reason() const {
    constexpr int PRIMARY_CODE = 0xFF;
    if (_database == nullptr) return sqlite3_errstr(SQLITE_NOMEM);
    const bool isInput = (sqlite3_errcode(_database.get()) & PRIMARY_CODE) == SQLITE_IOERR;
    const int cause = isInput ? sqlite3_system_errno(_database.get()) : 0;
    return cause != 0 ? std::strerror(cause) : sqlite3_errmsg(_database.get());
  }

  bool execute(const std::string& sql) {
    return sqlite3_exec(_database.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  /// Creates a table with its indexes and fills it.
  bool add(const JobTable& table, const Inspect::Job& job) {
    std::string columns, indexes, places;
    for (const TableColumn& column : table.columns) {
      columns += (columns.empty() ? "\n  " : ",\n  ") + definitionOf(column);
      places += places.empty() ? "?" : ", ?";
      if (column.kind == ColumnKind::ID || column.kind == ColumnKind::REFERENCE) {
        indexes += fmt::format(R"(; CREATE INDEX "{0}.{1}" ON "{0}" ("{1}"))", table.name, column.name);
      }
    }
    if (!execute(fmt::format("CREATE TABLE \"{}\" ({}\n) STRICT{}", table.name, columns, indexes))) return false;
    sqlite3_stmt* prepared = nullptr;
    const std::string insertion = fmt::format("INSERT INTO \"{}\" VALUES ({})", table.name, places);
    sqlite3_prepare_v2(_database.get(), insertion.c_str(), -1, &prepared, nullptr);
    const Statement statement(prepared);
    return statement && table.forEachRow(job, [&](const std::vector<TableCell>& cells) {
      for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!bind(statement.get(), static_cast<int>(i + 1), cells[i])) return false;
      }
      return sqlite3_step(statement.get()) == SQLITE_DONE && sqlite3_reset(statement.get()) == SQLITE_OK;
    });
  }

  static bool bindText(sqlite3_stmt* statement, int place, const std::string& text) {
    const std::string shown = Dump::withoutIllFormedUtf8(text);
    return sqlite3_bind_text64(statement, place, shown.data(), shown.size(), SQLITE_TRANSIENT, SQLITE_UTF8) ==
           SQLITE_OK;
  }

  static bool bind(sqlite3_stmt* statement, int place, const TableCell& cell) {
    if (const auto* const text = std::get_if<std::string>(&cell)) return bindText(statement, place, *text);
    if (const auto* const number = std::get_if<double>(&cell)) {
      return sqlite3_bind_double(statement, place, *number) == SQLITE_OK;
    }
    if (const auto* const number = std::get_if<int64_t>(&cell)) {
      return sqlite3_bind_int64(statement, place, *number) == SQLITE_OK;
    }
    if (const auto* const flag = std::get_if<bool>(&cell)) {
      return sqlite3_bind_int(statement, place, *flag ? 1 : 0) == SQLITE_OK;
    }
    if (const auto* const status = std::get_if<Veltra::Status>(&cell)) {
      return bindText(statement, place, toString(*status));
    }
    if (const auto* const state = std::get_if<Inspect::LinkState>(&cell)) {
      return bindText(statement, place, toString(*state));
    }
    if (const auto* const time = std::get_if<Inspect::UtcTime>(&cell)) {
      const std::string text = Inspect::isoUtc(static_cast<time_t>(time->seconds));
      if (!text.empty()) return bindText(statement, place, text);
    }
    return sqlite3_bind_null(statement, place) == SQLITE_OK;
  }

  std::unique_ptr<sqlite3, Close> _database;
};

}  // namespace

bool writeJobDatabase(const Inspect::Job& job, const std::string& path, std::string& error) {
  return JobDatabase().write(job, path, error);
}

}  // namespace Command
