#include "Table.h"

#include <wchar.h>

#include <algorithm>

#include <fmt/format.h>

namespace Command {
namespace {

/// The columns of a terminal that a printable text takes.
std::size_t widthOf(const std::string& text) {
  std::size_t width = 0;
  std::mbstate_t state{};
  for (std::size_t at = 0; at < text.size();) {
    wchar_t character = 0;
    const std::size_t length = std::mbrtowc(&character, text.data() + at, text.size() - at, &state);
    const bool isCharacter = length > 0 && length <= text.size() - at;
    if (!isCharacter) state = {};
    const int columns = isCharacter ? wcwidth(character) : 1;
    width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    at += isCharacter ? length : 1;
  }
  return width;
}

}  // namespace

Table::Table(std::vector<Column> columns, std::string noun) : _columns(std::move(columns)), _noun(std::move(noun)) {
  for (const Column& column : _columns) _widths.push_back(widthOf(column.name));
}

void Table::add(Row row) {
  measure(row);
  _rows.push_back(std::move(row));
}

void Table::measure(const Row& row) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    _widths[i] = std::max(_widths[i], std::min(widthOf(printable(row[i].text)), MOST_WIDTH));
  }
}

std::string Table::heading() const {
  Row names;
  for (const Column& column : _columns) names.emplace_back(column.name, Tone::HEADING);
  return line(names);
}

std::string Table::line(const Row& row) const {
  std::string text;
  for (std::size_t i = 0; i < row.size(); ++i) {
    std::string shown = printable(row[i].text);
    const std::size_t width = widthOf(shown);
    const std::string padding(_widths[i] > width ? _widths[i] - width : 0, ' ');
    if (_columns[i].right) {
      shown.insert(0, padding);
    } else if (i + 1 < row.size()) {
      shown += padding;
    }
    if (i > 0) text += ' ';
    text += painted(shown, row[i].tone);
  }
  return text + "\n";
}

std::string Table::text() const {
  if (_rows.empty()) return {};
  std::string text = heading();
  for (const Row& row : _rows) text += line(row);
  return text + totalLine(counted(_rows.size(), _noun));
}

LongTable::LongTable(std::vector<Table::Column> columns, std::string noun)
    : _table(std::move(columns)), _noun(std::move(noun)) {}

void LongTable::add(const Table::Row& row) {
  _table.measure(row);
  _rows.add(row);
}

void LongTable::print(const std::function<void(const OnRow&)>& again) const {
  if (_rows.count() == 0) return;
  fmt::print("{}", _table.heading());
  const OnRow printRow = [this](const Table::Row& row) { fmt::print("{}", _table.line(row)); };
  for (const Table::Row& row : _rows.held()) printRow(row);
  if (!_rows.areAll()) again(printRow);
  fmt::print("{}", totalLine(counted(_rows.count(), _noun)));
}

std::string tableText(Table& table, std::size_t rows, const std::function<Table::Row(std::size_t)>& row) {
  if (rows == 0) return {};
  for (std::size_t i = 0; i < rows; ++i) table.measure(row(i));
  std::string text = table.heading();
  for (std::size_t i = 0; i < rows; ++i) text += table.line(row(i));
  return text;
}

std::string totalLine(const std::string& text) {
  return isOutputTerminal() ? text + "\n" : "";
}

}  // namespace Command
