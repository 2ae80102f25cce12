#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

namespace Command {

/// A member with too many elements to hold: each is created when it is printed.
struct LongList {
  using OnElement = std::function<void(const Json::Value&)>;

  std::string name;
  std::size_t size = 0;
  std::function<Json::Value(std::size_t)> element;
  /// In place of the two before, where elements are best made in a row: calls with each of them.
  std::function<void(const OnElement&)> all = {};

  void forEach(const OnElement& onElement) const;
};

/// A member with too many bytes to hold as text, printed as hexadecimal digits.
struct HexBytes {
  std::string name;  ///< empty: there is none
  const std::vector<uint8_t>* bytes = nullptr;
};
/// Calls with the digits, piece by piece.
void forEachPiece(const std::vector<uint8_t>& bytes, const std::function<void(const std::string& digits)>& onPiece);

/// A value as styled JSON, or on one line with an empty indentation. A measurement shows its measured digits.
std::string jsonText(const Json::Value& value, const char* indentation);

// A row is a flat object; a measurement in it is printed as two members, its number and its relation.

/// A row as styled JSON, or on one line with an empty indentation.
std::string rowJson(const Json::Value& row, const char* indentation = "");
struct CsvCell {
  std::string text;
  bool isText = false;  ///< in JSON, too: no number, no true or false
};
/// The cell of a row in a column, as CSV has it before quoting; null, and a column that the row does not have, is
/// empty.
CsvCell csvCell(const Json::Value& row, const std::string& column);
/// Prints an object, styled, with two more members: a list of rows and bytes. One without a name is omitted.
void printDocumentJson(const Json::Value& object, const LongList& rows, const HexBytes& hex);
/// Prints an object with bytes on a line of its own.
void printObjectLine(const Json::Value& object, const HexBytes& hex);

}  // namespace Command
