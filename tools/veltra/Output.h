#pragma once

#include <string>
#include <vector>

#include <json/value.h>

namespace Command {

enum Format { FORMAT_TABLE, FORMAT_JSON, FORMAT_JSONL };

// Exit codes.
constexpr int EXIT_DONE = 0;
constexpr int EXIT_NO = 1;  ///< the answer is no: damage
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_WITH_LOSS = 3;  ///< done, with loss or warnings
constexpr int EXIT_COULD_NOT = 4;  ///< could not be done

/// What every command is given.
struct Options {
  Format format = FORMAT_TABLE;
};

/// With many inputs the worst code counts: 4, 1, 3, 0.
int worse(int a, int b);

/// Text from outside as a terminal may show it: control characters and bytes that are no UTF-8 become \xNN.
std::string printable(const std::string& text);

/// Prints a document with its "schema" member, styled.
void printJson(Json::Value document);
/// Prints one value on a line of its own.
void printJsonLine(const Json::Value& value);
/// Prints a JSON value as indented `name: value` lines; a measurement as its text.
void printAsText(const Json::Value& value);

/// Rows under column names, aligned; numbers to the right.
class Table {
 public:
  struct Column {
    const char* name;
    bool right = false;
  };
  explicit Table(std::vector<Column> columns) : _columns(std::move(columns)) {}
  void add(std::vector<std::string> cells) { _rows.push_back(std::move(cells)); }
  void print() const;

 private:
  std::vector<Column> _columns;
  std::vector<std::vector<std::string>> _rows;
};

/// Sixteen bytes a line: offset, hexadecimal, characters.
void printHexDump(const std::vector<uint8_t>& bytes);

/// One line on standard error, after the command's name.
void complain(const std::string& text);

}  // namespace Command
