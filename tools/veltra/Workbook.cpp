#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/job/JobTables.h>
#include <libinspect/records/IsoTime.h>

#include "TableFile.h"
#include "WorkbookCheck.h"

namespace Command {
namespace {

using Inspect::ColumnKind, Inspect::JobTable, Inspect::TableCell, Inspect::TableColumn;

/// A text as a cell can hold it: UTF-8 of 32,767 UTF-16 units at most, with a mark where it was cut, and characters
/// that XML has not as _xHHHH_, by which spreadsheets know them.
std::string cellText(const std::string& text) {
  constexpr std::size_t MOST_UNITS = 32767;
  constexpr std::string_view CUT = " ... (cut)";
  const std::string whole = Dump::withoutIllFormedUtf8(text);
  const auto isEscape = [&whole](std::size_t at) {
    constexpr std::size_t LENGTH = 7;
    return whole.size() - at >= LENGTH && whole[at] == '_' && whole[at + 1] == 'x' && whole[at + 6] == '_' &&
           whole.find_first_not_of("0123456789abcdefABCDEF", at + 2) == at + 6;
  };
  std::string out;
  std::size_t units = 0, cut = 0;
  for (std::size_t at = 0; at < whole.size();) {
    const auto lead = static_cast<unsigned char>(whole[at]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::string piece = whole.substr(at, length);
    std::size_t pieceUnits = length == 4 ? 2 : 1;
    if ((lead < 0x20 && lead != '\t' && lead != '\n') || isEscape(at)) {
      piece = fmt::format("_x{:04X}_", lead);
      pieceUnits = piece.size();
    } else if (piece == "\xEF\xBF\xBE" || piece == "\xEF\xBF\xBF") {  // no characters of XML
      piece = Dump::REPLACEMENT_CHARACTER;
    }
    units += pieceUnits;
    if (units > MOST_UNITS) return out.substr(0, cut).append(CUT);
    out += piece;
    if (units <= MOST_UNITS - CUT.size()) cut = out.size();
    at += length;
  }
  return out;
}

/// Spreadsheets have no days before, or take 1900 for a leap year.
bool isSpreadsheetTime(int64_t seconds) {
  constexpr int64_t MARCH_OF_1900 = -2203891200, YEAR_10000 = 253402300800;
  return seconds >= MARCH_OF_1900 && seconds < YEAR_10000;
}

std::string headingOf(const TableColumn& column) {
  return *column.unit == '\0' ? column.name : fmt::format("{} ({})", column.name, column.unit);
}

bool isShown(const TableColumn& column) {
  return column.kind != ColumnKind::KEY && column.kind != ColumnKind::REFERENCE;
}

/// The library prints what failed, in words of its own, onto standard error. Nothing of it gets there while one of
/// these is alive.
class QuietErrors {
 public:
  QuietErrors() : _kept(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (_kept >= 0 && nowhere >= 0) (void)dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) ::close(nowhere);
  }
  ~QuietErrors() {
    (void)std::fflush(stderr);
    if (_kept < 0) return;
    (void)dup2(_kept, STDERR_FILENO);
    ::close(_kept);
  }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  int _kept;
};

class Workbook {
 public:
  explicit Workbook(const std::string& path) : _path(path) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    _workbook.reset(workbook_new_opt(path.c_str(), &options));
    if (_workbook == nullptr) return;
    lxw_format** const formats[] = {&_heading, &_text, &_time, &_good, &_bad, &_doubtful};
    for (lxw_format** const format : formats) {
      *format = workbook_add_format(_workbook.get());
      if (*format == nullptr) return;
    }
    format_set_bold(_heading);
    format_set_bg_color(_heading, 0xE7E6E6);
    format_set_bottom(_heading, LXW_BORDER_THIN);
    format_set_num_format(_text, "@");  // what looks like a formula or a number stays text when it is edited
    format_set_num_format(_time, "yyyy-mm-dd hh:mm:ss");
    paint(_good, 0x006100, 0xC6EFCE);
    paint(_bad, 0x9C0006, 0xFFC7CE);
    paint(_doubtful, 0x7F6000, 0xFFEB9C);
    _isReady = true;
  }

  bool write(const Inspect::Job& job, std::string& error) {
    const QuietErrors quiet;
    bool isWritten = _isReady;
    for (const JobTable& table : Inspect::jobTables()) isWritten = isWritten && add(table, job);
    isWritten = isWritten && close();
    if (!isWritten) error = _error.empty() ? std::strerror(ENOMEM) : _error;
    return isWritten;
  }

 private:
  struct Free {
    void operator()(lxw_workbook* workbook) const { lxw_workbook_free(workbook); }
  };
  static void paint(lxw_format* format, lxw_color_t letters, lxw_color_t ground) {
    format_set_font_color(format, letters);
    format_set_bg_color(format, ground);
  }

  bool add(const JobTable& table, const Inspect::Job& job) {
    errno = 0;
    lxw_worksheet* const sheet = workbook_add_worksheet(_workbook.get(), table.name);
    if (sheet == nullptr) {
      if (errno != 0 && errno != ENOMEM) _error = temporaryFailure();
      return false;
    }
    _sheets.push_back(sheet);
    std::vector<std::size_t> shown;  // places of the columns
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      if (isShown(table.columns[i])) shown.push_back(i);
    }
    std::vector<std::size_t> widths;
    for (const std::size_t i : shown) {
      constexpr std::size_t ARROW = 3;  // of the filter
      const std::string heading = headingOf(table.columns[i]);
      if (!passes(worksheet_write_string(sheet, 0, columnOf(widths.size()), heading.c_str(), _heading))) return false;
      widths.push_back(heading.size() + ARROW);
    }
    lxw_row_t row = 0;
    const bool isWhole = table.forEachRow(job, [&](const std::vector<TableCell>& cells) {
      if (++row >= LXW_ROW_MAX) {
        _error = fmt::format("a sheet has {} rows at most, {} has more; use -f sqlite", LXW_ROW_MAX - 1, table.name);
        return false;
      }
      for (std::size_t i = 0; i < shown.size(); ++i) {
        if (!writeCell(sheet, row, columnOf(i), cells[shown[i]], widths[i])) return false;
      }
      return true;
    });
    if (!isWhole) return false;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      constexpr std::size_t WIDEST = 60;
      const auto width = static_cast<double>(std::min(widths[i], WIDEST) + 1);
      if (!passes(worksheet_set_column(sheet, columnOf(i), columnOf(i), width, nullptr))) return false;
    }
    worksheet_freeze_panes(sheet, 1, 0);
    _rows[fmt::format("xl/worksheets/sheet{}.xml", _sheets.size())] = uint64_t{row} + 1;
    return passes(worksheet_autofilter(sheet, 0, 0, row, columnOf(shown.size() - 1)));
  }

  bool writeCell(lxw_worksheet* sheet, lxw_row_t row, lxw_col_t column, const TableCell& cell, std::size_t& width) {
    const auto writeText = [&](const std::string& text, lxw_format* format) {
      const std::string shown = cellText(text);
      width = std::max(width, shown.size());
      return passes(worksheet_write_string(sheet, row, column, shown.c_str(), format));
    };
    const auto writeNumber = [&](double number) {
      return passes(worksheet_write_number(sheet, row, column, number, nullptr));
    };
    if (std::holds_alternative<std::monostate>(cell)) return true;
    if (const auto* const text = std::get_if<std::string>(&cell)) return writeText(*text, _text);
    if (const auto* const number = std::get_if<double>(&cell)) return writeNumber(*number);
    if (const auto* const number = std::get_if<int64_t>(&cell)) return writeNumber(static_cast<double>(*number));
    if (const auto* const flag = std::get_if<bool>(&cell)) {
      return passes(worksheet_write_boolean(sheet, row, column, *flag ? 1 : 0, nullptr));
    }
    if (const auto* const time = std::get_if<Inspect::UtcTime>(&cell)) {
      if (!isSpreadsheetTime(time->seconds)) {
        return writeText(Inspect::isoUtc(static_cast<time_t>(time->seconds)), _text);
      }
      width = std::max(width, std::strlen("yyyy-mm-dd hh:mm:ss"));
      return passes(worksheet_write_unixtime(sheet, row, column, time->seconds, _time));
    }
    if (const auto* const status = std::get_if<Veltra::Status>(&cell)) {
      return writeText(toString(*status), formatOf(toneOf(*status)));
    }
    const Inspect::LinkState state = std::get<Inspect::LinkState>(cell);
    return writeText(toString(state), formatOf(toneOf(state)));
  }

  lxw_format* formatOf(Tone tone) const {
    switch (tone) {
      case Tone::GOOD:
        return _good;
      case Tone::BAD:
        return _bad;
      case Tone::DOUBTFUL:
        return _doubtful;
      default:
        return _text;
    }
  }

  /// Takes the reason of a failure.
  bool passes(lxw_error result) {
    if (result != LXW_NO_ERROR) _error = lxw_strerror(result);
    return result == LXW_NO_ERROR;
  }

  /// Rows go through temporary files, whose write errors the library passes over.
  bool close() {
    errno = 0;
    for (const lxw_worksheet* const sheet : _sheets) {
      if (std::fflush(sheet->optimize_tmpfile) == 0 && std::ferror(sheet->optimize_tmpfile) == 0) continue;
      _error = temporaryFailure();
      return false;
    }
    const lxw_error result = workbook_close(_workbook.release());
    const int reason = errno;
    if (result != LXW_NO_ERROR && reason != 0) _error = std::strerror(reason);
    if (_error.empty() && !passes(result)) return false;
    if (_error.empty() && !isWholeWorkbook(_path, _rows)) _error = temporaryFailure();
    return _error.empty();
  }

  static std::string temporaryFailure() {
    return fmt::format("a temporary file could not be written{}{}; TMPDIR may name another folder",
                       errno != 0 ? ": " : "", errno != 0 ? std::strerror(errno) : "");
  }

  static lxw_col_t columnOf(std::size_t place) { return static_cast<lxw_col_t>(place); }

  std::string _path, _error;
  std::unique_ptr<lxw_workbook, Free> _workbook;
  std::vector<lxw_worksheet*> _sheets;
  std::map<std::string, uint64_t> _rows;  ///< of each sheet, by its name in the file
  lxw_format *_heading = nullptr, *_text = nullptr, *_time = nullptr;
  lxw_format *_good = nullptr, *_bad = nullptr, *_doubtful = nullptr;
  bool _isReady = false;
};

}  // namespace

bool writeWorkbook(const Inspect::Job& job, const std::string& path, std::string& error) {
  return Workbook(path).write(job, error);
}

}  // namespace Command
