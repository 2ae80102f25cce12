#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <libinspect/container/PrintableText.h>

#include "FirstFew.h"
#include "Terminal.h"

namespace Command {

/// Rows under column names, aligned; numbers on the right. On a terminal their number follows, "17 sections".
class Table {
 public:
  struct Column {
    const char* name;
    bool right = false;
  };
  struct Cell {
    Cell(std::string cellText, Tone cellTone = Tone::PLAIN) : text(std::move(cellText)), tone(cellTone) {}
    Cell(const char* cellText, Tone cellTone = Tone::PLAIN) : text(cellText), tone(cellTone) {}
    std::string text;
    Tone tone;
  };
  using Row = std::vector<Cell>;

  /// @param noun  what a row is, for the number of them; an 's' makes it several
  explicit Table(std::vector<Column> columns, std::string noun = "row");
  void add(Row row);
  /// Empty without rows.
  std::string text() const;

  // The other way, for rows that are not held but made twice: for the widths of the columns, and to be printed.

  void measure(const Row& row);
  std::string heading() const;
  std::string line(const Row& row) const;

 private:
  /// No other cell is filled up for a wider one: it may have millions of characters.
  static constexpr std::size_t MOST_WIDTH = 200;

  std::vector<Column> _columns;
  std::string _noun;
  std::vector<std::size_t> _widths;  ///< columns of the terminal, MOST_WIDTH at most
  std::vector<Row> _rows;
};

/// A table of any length in little memory: its first rows are held; if there are more, all are made again to be
/// printed.
class LongTable {
 public:
  using OnRow = std::function<void(const Table::Row&)>;

  LongTable(std::vector<Table::Column> columns, std::string noun);
  void add(const Table::Row& row);
  /// Prints nothing without rows.
  /// @param again  called if not all rows are held: makes the same rows again
  void print(const std::function<void(const OnRow&)>& again) const;

 private:
  Table _table;
  std::string _noun;
  FirstFew<Table::Row> _rows;
};

/// A table of rows that are made twice. Empty without rows.
std::string tableText(Table& table, std::size_t rows, const std::function<Table::Row(std::size_t)>& row);

using Inspect::counted;
/// A line after an answer for people: the text on a terminal, nothing anywhere else.
std::string totalLine(const std::string& text);

}  // namespace Command
