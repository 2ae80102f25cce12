#pragma once

#include <string>
#include <vector>

#include "Commands.h"

namespace Command {

/// The file that a command makes of a job with -f xlsx or -f sqlite.
struct TableOutput {
  std::string path;  ///< empty: the answer is printed
  bool force = false;
};

/// Whether an answer in this format is a file of tables.
bool isTableFormat(Format format);

/// Adds -o and --force.
void addTableOutput(Subcommand& command, TableOutput& output);

/// Tells whether -f and -o fit each other, this command was built with what the format takes, and no file is replaced
/// that must not be. Ask before anything is read.
/// @return false, with a complaint, and the exit code in `code`
[[nodiscard]] bool takeTableOutput(const TableOutput& output, const std::vector<std::string>& paths,
                                   const Options& options, int& code);

/// Takes a workbook or database of last time out of the files of a job.
/// @param descriptions  of jobs, which are no output either; an empty name is none
/// @return false, with a complaint: the output is a description or one of the files
[[nodiscard]] bool leaveOutTableOutput(const TableOutput& output, std::vector<std::string>& files,
                                       const std::vector<std::string>& descriptions);

/// Writes the tables of a settled job, and tells of them.
/// @return 0, or 4 with a complaint; what was at the path is then unchanged
[[nodiscard]] int saveTables(const Inspect::Job& job, const TableOutput& output, const Options& options);

/// Makes every command that has no such tables refuse their formats.
void refuseTableFormats(Subcommand& root, const Options& options);

// What the build options VELTRA_XLSX and VELTRA_SQLITE add. Each writes a file that exists and is empty.
// @return false with the reason in `error`

/// As Office Open XML, a sheet for each table. Keys are left out, since people look rows up by ID and file.
[[nodiscard]] bool writeWorkbook(const Inspect::Job& job, const std::string& path, std::string& error);
/// As an SQLite database, docs/many-results.md.
[[nodiscard]] bool writeJobDatabase(const Inspect::Job& job, const std::string& path, std::string& error);

}  // namespace Command
