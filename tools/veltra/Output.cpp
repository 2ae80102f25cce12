#include "Output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <map>
#include <memory>
#include <new>

#include <fmt/format.h>
#include <libsmartcols/libsmartcols.h>

#include <libinspect/records/Measurements.h>

namespace Command {
namespace {

using Inspect::isMeasurement;

std::string scalarText(const Json::Value& value) {
  if (isMeasurement(value)) return value["text"].isString() ? value["text"].asString() : "-";
  if (value.isNull()) return "-";
  if (value.isString()) return printable(value.asString());
  return jsonText(value, "");
}

void appendIndented(const std::string& name, const Json::Value& value, int depth, std::string& out) {
  const std::string indent(static_cast<std::size_t>(2 * depth), ' ');
  const bool isScalar = isMeasurement(value) || !(value.isObject() || value.isArray());
  const bool isFlat = value.isArray() && std::none_of(value.begin(), value.end(),
                                                      [](const Json::Value& v) { return v.isObject() || v.isArray(); });
  if (isScalar || isFlat) {
    std::string text;
    if (isScalar) {
      text = scalarText(value);
    } else {
      for (const Json::Value& element : value) text += (text.empty() ? "" : ", ") + scalarText(element);
    }
    out += fmt::format("{}{}: {}\n", indent, name, text);
    return;
  }
  out += fmt::format("{}{}\n", indent, name);
  if (value.isObject()) {
    for (const std::string& key : value.getMemberNames()) appendIndented(printable(key), value[key], depth + 1, out);
  } else {
    for (Json::ArrayIndex i = 0; i < value.size(); ++i)
      appendIndented(fmt::format("[{}]", i), value[i], depth + 1, out);
  }
}

}  // namespace

void printWithLists(const Json::Value& object, const std::vector<LongList>& lists, bool styled) {
  std::string head = jsonText(object, styled ? "  " : "");
  const auto closing = static_cast<std::size_t>(styled && !lists.empty() ? 2 : lists.empty() ? 0 : 1);  // "\n}" or "}"
  fmt::print("{}", head.substr(0, head.size() - closing));
  for (const LongList& list : lists) {
    fmt::print(styled ? ",\n  \"{}\": [" : ",\"{}\":[", list.name);
    const char* separator = "";
    list.forEach([&](const Json::Value& element) {
      fmt::print("{}{}{}", separator, styled ? "\n    " : "", jsonText(element, ""));
      separator = ",";
    });
    fmt::print(styled && *separator == ',' ? "\n  ]" : "]");
  }
  fmt::print("{}", head.substr(head.size() - closing));
}

void printJsonLine(const Json::Value& row) {
  fmt::print("{}\n", rowJson(row));
}

void printCsvHeader(const std::vector<std::string>& columns) {
  fmt::print("{}\n", fmt::join(columns, ","));
}

void printCsvRow(const Json::Value& row, const std::vector<std::string>& columns, const HexBytes& hex) {
  std::string line;
  const std::map<std::string, std::string> cells = rowCells(row);
  for (const std::string& column : columns) {
    if (!hex.name.empty() && column == hex.name) {
      fmt::print("{}{}", line, &column == &columns.front() ? "" : ",");
      forEachPiece(*hex.bytes, [](const std::string& digits) { fmt::print("{}", digits); });
      line.clear();
      continue;
    }
    const auto found = cells.find(column);
    std::string cell = found == cells.end() ? "" : found->second;
    if (cell.find_first_of(",\"\r\n") != std::string::npos) {
      std::string quoted;
      for (const char c : cell) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
      cell = "\"" + quoted + "\"";
    }
    line += (&column == &columns.front() ? "" : ",") + cell;
  }
  fmt::print("{}\n", line);
}

void printDocument(const Document& document, const Options& options) {
  const auto object = [&document] { return document.json ? document.json() : Json::Value(Json::objectValue); };
  const LongList& rows = document.rows;
  switch (options.format) {
    case FORMAT_TABLE:
      if (document.print) return document.print();
      fmt::print("{}", document.text());
      break;
    case FORMAT_JSON: {
      Json::Value json = object();
      json["schema"] = SCHEMA;
      printDocumentJson(json, rows, document.hex);
      fmt::print("\n");
      break;
    }
    case FORMAT_JSONL:
      if (!document.hex.name.empty()) return printObjectLine(object(), document.hex);
      if (document.columns.empty()) return printJsonLine(object());
      rows.forEach(printJsonLine);
      break;
    case FORMAT_CSV: {
      const Json::Value row = document.columns.empty() ? object() : Json::Value();
      std::vector<std::string> columns = document.columns.empty() ? row.getMemberNames() : document.columns;
      if (const std::string& hex = document.hex.name; !hex.empty()) {
        columns.insert(std::upper_bound(columns.begin(), columns.end(), hex), hex);
      }
      printCsvHeader(columns);
      if (document.columns.empty()) return printCsvRow(row, columns, document.hex);
      rows.forEach([&columns](const Json::Value& element) { printCsvRow(element, columns); });
      break;
    }
  }
}

AnswerStream::AnswerStream(const Options& options, const char* member, std::vector<std::string> columns)
    : _format(options.format), _columns(std::move(columns)) {
  if (_format == FORMAT_JSON) fmt::print("{{\n\"schema\": {},\n\"{}\": [", SCHEMA, member);
  if (_format == FORMAT_CSV) printCsvHeader(_columns);
}

void AnswerStream::printRow(const Json::Value& row) const {
  if (_format == FORMAT_JSONL) {
    printJsonLine(row);
  } else {
    printCsvRow(row, _columns);
  }
}

void AnswerStream::print(const std::string& text, const Json::Value& element, const std::vector<Json::Value>& rows,
                         const std::optional<LongList>& list) {
  switch (_format) {
    case FORMAT_TABLE:
      fmt::print("{}", text);
      break;
    case FORMAT_JSON:
      fmt::print("{}\n", _first ? "" : ",");
      printWithLists(element, list ? std::vector<LongList>{*list} : std::vector<LongList>(), true);
      break;
    case FORMAT_JSONL:
    case FORMAT_CSV:
      for (const Json::Value& row : rows) printRow(row);
      if (!list) break;
      list->forEach([&](const Json::Value& listed) {
        Json::Value row = listed;
        row["file"] = element["file"];
        printRow(row);
      });
      break;
  }
  _first = false;
}

void AnswerStream::finish() const {
  if (_format == FORMAT_JSON) fmt::print("\n]\n}}\n");
}

std::string indentedText(const Json::Value& object) {
  std::string text;
  for (Json::ArrayIndex i = 0; object.isArray() && i < object.size(); ++i) {
    appendIndented(fmt::format("[{}]", i), object[i], 0, text);
  }
  if (!object.isObject()) return text;
  for (const std::string& key : object.getMemberNames()) appendIndented(printable(key), object[key], 0, text);
  return text;
}

namespace {

/// Columns a printable text takes.
std::size_t widthOf(const std::string& text) {
  std::size_t width = 0;
  std::mbstate_t state{};
  for (std::size_t at = 0; at < text.size();) {
    wchar_t character = 0;
    const std::size_t size = std::mbrtowc(&character, &text[at], text.size() - at, &state);
    const bool isCharacter = size > 0 && size <= text.size() - at;  // always, unless the locale changed
    width += isCharacter ? static_cast<std::size_t>(std::max(wcwidth(character), 0)) : 1;
    at += isCharacter ? size : 1;
  }
  return width;
}

void setTone(libscols_cell* cell, Tone tone) {
  const char* const sequence = sequenceOf(tone);
  if (*sequence != '\0') scols_cell_set_color(cell, sequence);
}

}  // namespace

std::string Table::text() const {
  if (_rows.empty()) return {};
  const std::unique_ptr<libscols_table, void (*)(libscols_table*)> table(scols_new_table(), scols_unref_table);
  char* printed = nullptr;
  if (table == nullptr) throw std::bad_alloc();
  // Encoding would escape the escapes of printable() again. Without it every character must be one of the locale, which
  // printable() sees to: on any other the library's measuring of widths does not end.
  scols_table_enable_noencoding(table.get(), 1);
  scols_table_enable_colors(table.get(), 1);  // a tone without colour has no sequence
  for (const Column& column : _columns) {
    libscols_column* const added =
        scols_table_new_column(table.get(), column.name, 0, column.right ? SCOLS_FL_RIGHT : 0);
    setTone(scols_column_get_header(added), Tone::HEADING);
  }
  for (const std::vector<Cell>& row : _rows) {
    libscols_line* const line = scols_table_new_line(table.get(), nullptr);
    for (std::size_t i = 0; i < row.size(); ++i) {
      scols_line_set_data(line, i, printable(row[i].text).c_str());
      setTone(scols_line_get_cell(line, i), row[i].tone);
    }
  }
  if (scols_print_table_to_string(table.get(), &printed) != 0) throw std::bad_alloc();
  const std::unique_ptr<char, void (*)(void*)> owned(printed, std::free);
  return std::string(printed) + "\n";
}

LongTable::LongTable(std::vector<Table::Column> columns) : _columns(std::move(columns)) {
  for (const Table::Column& column : _columns) _widths.push_back(widthOf(column.name));
}

void LongTable::add(const Cells& cells) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::size_t width = widthOf(printable(cells[i].text));
    _hasWideCell = _hasWideCell || width > MOST_WIDTH;
    _widths[i] = std::max(_widths[i], std::min(width, MOST_WIDTH));
  }
  _rows.add(cells);
}

void LongTable::print(const std::function<void(const OnRow&)>& again) const {
  if (_rows.areAll() && !_hasWideCell) {
    Table table(_columns);
    for (const Cells& cells : _rows.held()) table.add(cells);
    fmt::print("{}", table.text());
    return;
  }
  Cells headings;
  for (const Table::Column& column : _columns) headings.emplace_back(column.name, Tone::HEADING);
  fmt::print("{}", line(headings));
  for (const Cells& cells : _rows.held()) fmt::print("{}", line(cells));
  if (!_rows.areAll()) again([this](const Cells& cells) { fmt::print("{}", line(cells)); });
}

/// As Table lays it out: nothing is filled up after the last cell.
std::string LongTable::line(const Cells& cells) const {
  std::string text;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string cell = printable(cells[i].text);
    const std::size_t width = widthOf(cell);
    const std::string filling(std::max(_widths[i], width) - width, ' ');
    const bool isLast = i + 1 == cells.size();
    text += _columns[i].right ? filling : "";
    text += painted(cell, cells[i].tone);
    text += _columns[i].right || isLast ? "" : filling;
    text += isLast ? "\n" : " ";
  }
  return text;
}

void printHexDump(const std::vector<uint8_t>& bytes) {
  constexpr std::size_t WIDTH = 16, HALF = WIDTH / 2;
  for (std::size_t at = 0; at < bytes.size(); at += WIDTH) {
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const std::vector<uint8_t> line(begin, begin + static_cast<std::ptrdiff_t>(std::min(WIDTH, bytes.size() - at)));
    std::string codes, characters;
    forEachPiece(line, [&codes](const std::string& digits) { codes = digits; });
    for (std::size_t i = line.size(); i-- > 0;) codes.insert(2 * i + 2, i == HALF - 1 ? "  " : " ");
    for (const uint8_t byte : line) characters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    fmt::print("{:08x}  {:<50}{}\n", at, codes, characters);
  }
}

Tone toneOf(Inspect::FindingCode code) {
  return Inspect::isDamage(code) ? Tone::BAD : Tone::DOUBTFUL;
}

Tone toneOf(Veltra::Status status) {
  struct ToneRow {
    Veltra::Status status;
    Tone tone;
  };
  constexpr ToneRow TONES[] = {{Veltra::STATUS_PASS, Tone::GOOD},
                               {Veltra::STATUS_PASS_STAR, Tone::DOUBTFUL},
                               {Veltra::STATUS_PASS_ACCEPTABLE, Tone::DOUBTFUL},
                               {Veltra::STATUS_FAIL_STAR, Tone::DOUBTFUL},
                               {Veltra::STATUS_FAIL, Tone::BAD}};
  for (const ToneRow& row : TONES) {
    if (row.status == status) return row.tone;
  }
  return Tone::PLAIN;
}

std::string furtherText(const std::string& name, const Inspect::Findings& findings) {
  return fmt::format("{}: {} further findings", name, findings.leftOut());
}

void complain(const std::string& text, Tone tone) {
  fmt::print(stderr, "{} {}\n", paintedError("veltra:", tone), printable(text));
}

}  // namespace Command
