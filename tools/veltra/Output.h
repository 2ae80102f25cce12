#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/ResultVocabulary.h>
#include <libinspect/container/ContainerWalk.h>

#include "ExitCodes.h"
#include "JsonPrinting.h"
#include "Terminal.h"

namespace Command {

enum Format { FORMAT_TABLE, FORMAT_JSON, FORMAT_JSONL, FORMAT_CSV };

constexpr int SCHEMA = 1;  ///< of the JSON documents

/// The options of every command.
struct Options {
  Format format = FORMAT_TABLE;
  bool quiet = false;      ///< no findings on standard error: the exit code reports them
  bool recursive = false;  ///< look into directories
  unsigned jobs = 0;       ///< threads for many files; 0: one per core
  uint64_t maxSize = 0;    ///< larger inputs are skipped; 0: no limit
  Color color = COLOR_AUTO;
  bool progress = true;  ///< on a terminal
};

/// Prints an object that ends in long lists, styled with each of their elements on a line, or all on one line. Without
/// a final newline.
void printWithLists(const Json::Value& object, const std::vector<LongList>& lists, bool styled);
/// Prints one row on a line of its own.
void printJsonLine(const Json::Value& row);
/// Prints the members of a row as one line of CSV (RFC 4180); a missing or null member is empty.
/// @param hex  one more member
void printCsvRow(const Json::Value& row, const std::vector<std::string>& columns, const HexBytes& hex = {});
void printCsvHeader(const std::vector<std::string>& columns);
/// One answer in all formats. Its parts are made when they are printed.
struct Document {
  std::function<std::string()> text;  ///< for the table format
  std::function<Json::Value()> json;  ///< an object; none: only the rows
  LongList rows;                      ///< JSON lines and CSV rows; by their name, if they have one, also in the object
  std::vector<std::string> columns;   ///< columns of the CSV; without columns the object is the only row
  std::function<void()> print = {};   ///< in place of `text`, where it is too long to hold
  HexBytes hex = {};                  ///< one more member of the object
};
void printDocument(const Document& document, const Options& options);

/// Prints answers one after the other, keeping none: a JSON document grows with each.
class AnswerStream {
 public:
  /// @param member   name of the array in the JSON document
  /// @param columns  of the CSV
  AnswerStream(const Options& options, const char* member, std::vector<std::string> columns);
  /// @param text     for the table format
  /// @param element  element of the array
  /// @param rows     JSON lines and CSV rows
  /// @param list     more of both: the last member of the element, and rows that repeat its "file"
  void print(const std::string& text, const Json::Value& element, const std::vector<Json::Value>& rows,
             const std::optional<LongList>& list = {});
  /// Call it once after the last.
  void finish() const;

 private:
  void printRow(const Json::Value& row) const;

  Format _format;
  std::vector<std::string> _columns;
  bool _first = true;
};

/// An object or array as indented `name: value` lines; a measurement as its text.
std::string indentedText(const Json::Value& object);

/// The first elements of a list, as long as there are no more.
template <class Element>
class FirstFew {
 public:
  static constexpr std::size_t MOST_HELD = 256;

  void add(const Element& element) {
    if (++_count <= MOST_HELD) return _held.push_back(element);
    std::vector<Element>().swap(_held);
  }
  uint64_t count() const { return _count; }
  bool areAll() const { return _held.size() == _count; }
  const std::vector<Element>& held() const { return _held; }  ///< all or none

 private:
  std::vector<Element> _held;
  uint64_t _count = 0;
};

/// Rows under column names, aligned; numbers on the right.
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
  explicit Table(std::vector<Column> columns) : _columns(std::move(columns)) {}
  void add(std::vector<Cell> cells) { _rows.push_back(std::move(cells)); }
  std::string text() const;

 private:
  std::vector<Column> _columns;
  std::vector<std::vector<Cell>> _rows;
};

/// A table of any length in little memory: its first rows are held; if there are more, all are made again to be
/// printed.
class LongTable {
 public:
  using Cells = std::vector<Table::Cell>;
  using OnRow = std::function<void(const Cells&)>;

  explicit LongTable(std::vector<Table::Column> columns);
  void add(const Cells& cells);
  /// @param again  called if not all rows are held: makes the same rows again
  void print(const std::function<void(const OnRow&)>& again) const;

 private:
  /// No other cell is filled up for a wider one: it may have millions of characters.
  static constexpr std::size_t MOST_WIDTH = 1000;

  std::string line(const Cells& cells) const;

  bool _hasWideCell = false;
  std::vector<Table::Column> _columns;
  std::vector<std::size_t> _widths;
  FirstFew<Cells> _rows;
};

/// Prints sixteen bytes per line: offset, hexadecimal, characters.
void printHexDump(const std::vector<uint8_t>& bytes);

Tone toneOf(Inspect::FindingCode code);
Tone toneOf(Veltra::Status status);
/// "FILE: 17 further findings"
std::string furtherText(const std::string& name, const Inspect::Findings& findings);

/// One line on standard error, after the command's name.
void complain(const std::string& text, Tone tone = Tone::BAD);

}  // namespace Command
