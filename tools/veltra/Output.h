#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/ResultVocabulary.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/job/JobLinks.h>

#include "ExitCodes.h"
#include "JsonPrinting.h"
#include "Table.h"
#include "Terminal.h"

namespace Command {

/// How an answer is given. The last two are files, of which only a line is printed: see TableFile.h.
enum Format { FORMAT_TABLE, FORMAT_JSON, FORMAT_JSONL, FORMAT_CSV, FORMAT_XLSX, FORMAT_SQLITE };

constexpr int SCHEMA = 1;  ///< of JSON documents and lines

/// The options of every command.
struct Options {
  Format format = FORMAT_TABLE;
  bool spreadsheet = false;  ///< CSV for people
  bool quiet = false;        ///< no findings on standard error: the exit code reports them
  bool recursive = false;    ///< look into directories
  unsigned jobs = 0;         ///< threads for many files; 0: one per core
  uint64_t maxSize = 0;      ///< larger inputs are skipped; 0: no limit
  Color color = COLOR_AUTO;
  bool progress = true;  ///< on a terminal
};

/// Prints a row that ends in long lists, styled with each of their elements on a line, or all on one line. Without
/// a final newline.
void printWithLists(const Json::Value& object, const std::vector<LongList>& lists, bool styled);
/// Prints one row on a line of its own.
void printJsonLine(const Json::Value& row);
/// Whether CSV is for a spreadsheet and those who read it: with a byte-order mark, CRLF, units in the headings, and no
/// text that would be taken for a formula. It is for programs otherwise: exact, equal to JSON.
void setSpreadsheet(bool isWanted);
/// Prints the members of a row as one line of CSV (RFC 4180); a missing or null member is empty. On a terminal it is
/// printable.
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
  /// @param totals  further members of the JSON document; null if there are none
  void finish(const Json::Value& totals = {}) const;

 private:
  void printRow(const Json::Value& row) const;

  Format _format;
  std::vector<std::string> _columns;
  bool _first = true;
};

/// An object or array as indented `name: value` lines; a measurement as its text.
std::string indentedText(const Json::Value& object);

/// Prints sixteen bytes per line: offset, hexadecimal, characters.
void printHexDump(const std::vector<uint8_t>& bytes);

Tone toneOf(Inspect::FindingCode code);
Tone toneOf(Veltra::Status status);
Tone toneOf(Inspect::LinkState state);
/// "FILE: 17 further findings"
std::string furtherText(const std::string& name, const Inspect::Findings& findings);

/// One line on standard error, after the command's name.
void complain(const std::string& text, Tone tone = Tone::BAD);

}  // namespace Command
