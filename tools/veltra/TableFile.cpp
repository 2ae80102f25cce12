#include "TableFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>

namespace Command {
namespace {

using Write = bool (*)(const Inspect::Job& job, const std::string& path, std::string& error);
#ifdef VELTRA_XLSX
constexpr Write WRITE_XLSX = writeWorkbook;
#else
constexpr Write WRITE_XLSX = nullptr;
#endif
#ifdef VELTRA_SQLITE
constexpr Write WRITE_SQLITE = writeJobDatabase;
#else
constexpr Write WRITE_SQLITE = nullptr;
#endif

/// A format that is a file of its own.
struct TableFormat {
  Format format;
  const char* name;
  const char* kind;         ///< the files it makes, in words
  std::string_view begins;  ///< how each of them begins
  Write write;              ///< null: this command was built without
};
constexpr TableFormat TABLE_FORMATS[] = {
    {FORMAT_XLSX, "xlsx", "workbooks", "PK\x03\x04", WRITE_XLSX},
    {FORMAT_SQLITE, "sqlite", "databases", "SQLite format 3", WRITE_SQLITE},
};

const TableFormat* tableFormatOf(Format format) {
  for (const TableFormat& row : TABLE_FORMATS) {
    if (row.format == format) return &row;
  }
  return nullptr;
}

bool isTableFile(const std::string& path) {
  Inspect::ByteSource source;
  std::string begin, error;
  return source.openFile(path, error) &&
         std::any_of(std::begin(TABLE_FORMATS), std::end(TABLE_FORMATS), [&](const TableFormat& row) {
           begin.resize(row.begins.size());
           return source.readAt(0, begin.data(), begin.size()) == begin.size() && begin == row.begins;
         });
}

}  // namespace

bool isTableFormat(Format format) {
  return tableFormatOf(format) != nullptr;
}

void addTableOutput(Subcommand& command, TableOutput& output) {
  command.option("-o,--output", "FILE", &output.path, "the file to write, with -f xlsx or -f sqlite");
  command.flag("--force", output.force, FORCE_HELP);
}

bool takeTableOutput(const TableOutput& output, const std::vector<std::string>& paths, const Options& options,
                     int& code) {
  const TableFormat* const format = tableFormatOf(options.format);
  if ((format == nullptr) != output.path.empty()) {
    complain(format == nullptr ? "-o: expected -f xlsx or -f sqlite, found a format that is printed"
                               : fmt::format("-f {}: expected -o and the file to write", format->name));
    code = EXIT_USAGE;
    return false;
  }
  if (format == nullptr) return true;
  if (format->write == nullptr) {
    complain(fmt::format("-f {}: this veltra was built without {}", format->name, format->kind));
  } else if (!refusesToReplace(output.path, output.force, paths)) {
    return true;
  }
  code = EXIT_COULD_NOT;
  return false;
}

bool leaveOutTableOutput(const TableOutput& output, std::vector<std::string>& files,
                         const std::vector<std::string>& descriptions) {
  if (output.path.empty()) return true;
  if (isTableFile(output.path)) {
    const auto isOutput = [&output](const std::string& file) { return Inspect::isSameFile(file, output.path); };
    files.erase(std::remove_if(files.begin(), files.end(), isOutput), files.end());
  }
  return !refusesToReplace(output.path, true, files) && !refusesToReplace(output.path, true, descriptions);
}

int saveTables(const Inspect::Job& job, const TableOutput& output, const Options& options) {
  Veltra::FileReplacement file;
  std::string error;
  bool isWritten = file.open(output.path);
  if (isWritten && !tableFormatOf(options.format)->write(job, file.temporaryPath(), error)) {
    complain(fmt::format("{}: {}", output.path, error));
    return EXIT_COULD_NOT;
  }
  isWritten = isWritten && file.commit();
  if (!isWritten) {
    complain(fmt::format("{}: {}", output.path, std::strerror(errno)));
    return EXIT_COULD_NOT;
  }
  const auto text = [&] {
    return fmt::format("{}: {}, {}\n", printable(output.path), counted(job.files.rows.size(), "result"),
                       counted(job.links.size(), "link"));
  };
  printDocument({text, {}, {}, {}}, options);
  return EXIT_DONE;
}

void refuseTableFormats(Subcommand& root, const Options& options) {
  for (Subcommand& command : root.commands) {
    refuseTableFormats(command, options);
    if (!command.run || command.makesTables) continue;
    command.run = [run = std::move(command.run), &options] {
      const TableFormat* const format = tableFormatOf(options.format);
      if (format == nullptr) return run();
      complain(fmt::format("-f {}: expected for summary or job status", format->name));
      return EXIT_USAGE;
    };
  }
}

}  // namespace Command
