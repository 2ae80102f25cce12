#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <json/value.h>

namespace Command {

/// A member with too many elements to hold: each is created when it is printed.
struct LongList {
  std::string name;
  std::size_t size = 0;
  std::function<Json::Value(std::size_t)> element;
};

/// A value as styled JSON, or on one line with an empty indentation. A measurement shows its measured digits.
std::string jsonText(const Json::Value& value, const char* indentation);

// A row is a flat object; a measurement in it is printed as two members, its number and its relation.

/// A row as styled JSON, or on one line with an empty indentation.
std::string rowJson(const Json::Value& row, const char* indentation = "");
struct CsvCell {
  std::string text;
  bool isText = false;  ///< in JSON, too: no number, no true or false
};
/// The cells of a row by column, as CSV has them before quoting; null is empty.
std::map<std::string, CsvCell> rowCells(const Json::Value& row);
/// Prints an object, styled, with one more member: a list of rows, each made when it is printed. Without a name the
/// rows are omitted.
void printDocumentJson(const Json::Value& object, const LongList& rows);

}  // namespace Command
