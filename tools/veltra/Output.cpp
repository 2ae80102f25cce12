#include "Output.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include <fmt/format.h>

#include <libinspect/records/Measurements.h>

#include "CommandLine.h"

namespace Command {
namespace {

using Inspect::isMeasurement;

bool isEmptyContainer(const Json::Value& value) {
  return (value.isObject() || value.isArray()) && value.empty();
}

/// A value on one line; also an empty object or array.
std::string cellOfScalar(const Json::Value& value) {
  if (isMeasurement(value)) return value["text"].isString() ? value["text"].asString() : "-";
  if (value.isNull()) return "-";
  if (value.isString()) return printable(value.asString());
  if (isEmptyContainer(value)) return jsonText(value, "");
  return jsonText(value, "");
}

void appendIndented(const std::string& name, const Json::Value& value, int depth, std::string& out) {
  const std::string indent(static_cast<std::size_t>(2 * depth), ' ');
  const bool isScalar = isMeasurement(value) || isEmptyContainer(value) || !(value.isObject() || value.isArray());
  const bool isFlat = value.isArray() && std::none_of(value.begin(), value.end(),
                                                      [](const Json::Value& v) { return v.isObject() || v.isArray(); });
  if (isScalar || isFlat) {
    std::string text;
    if (isScalar) {
      text = cellOfScalar(value);
    } else {
      for (const Json::Value& element : value) text += (text.empty() ? "" : ", ") + cellOfScalar(element);
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
  const std::string head = rowJson(object, styled ? "  " : "");
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
  Json::Value line = row;
  line["schema"] = SCHEMA;
  fmt::print("{}\n", rowJson(line));
}

namespace {

bool isForSpreadsheet = false;

/// What the numbers or times of a column are in, wherever it occurs.
struct ColumnUnit {
  const char* column;
  const char* unit;
  const char* beside = nullptr;  ///< only where this column is, too
};
constexpr ColumnUnit UNITS[] = {{"length", "m"},           {"headroom", "dB"},
                                {"time", "UTC"},           {"bytes", "bytes"},
                                {"offset", "bytes"},       {"recordedBytes", "bytes"},
                                {"size", "bytes"},         {"storedSize", "bytes"},
                                {"originalSize", "bytes"}, {"missing", "bytes", "wasClosed"}};

std::string headingOf(const std::string& column, const std::vector<std::string>& columns) {
  for (const ColumnUnit& row : UNITS) {
    if (!isForSpreadsheet || column != row.column) continue;
    if (row.beside == nullptr || std::find(columns.begin(), columns.end(), row.beside) != columns.end())
      return fmt::format("{} ({})", column, row.unit);
  }
  return column;
}

/// A spreadsheet would take some texts for formulas.
bool isLikeFormula(const std::string& text) {
  return !text.empty() && text.find_first_of("=+-@\t\r") == 0;
}

std::string csvText(const CsvCell& cell) {
  std::string text = isForSpreadsheet && cell.isText && isLikeFormula(cell.text) ? "'" + cell.text : cell.text;
  if (isOutputTerminal()) text = printable(text);
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  return "\"" + replaced(text, "\"", "\"\"") + "\"";
}

const char* csvLineEnd() {
  return isForSpreadsheet ? "\r\n" : "\n";
}

}  // namespace

void setSpreadsheet(bool isWanted) {
  isForSpreadsheet = isWanted;
}

void printCsvHeader(const std::vector<std::string>& columns) {
  constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";
  std::string line;
  for (const std::string& column : columns) line += (line.empty() ? "" : ",") + headingOf(column, columns);
  fmt::print("{}{}{}", isForSpreadsheet ? BYTE_ORDER_MARK : "", line, csvLineEnd());
}

void printCsvRow(const Json::Value& row, const std::vector<std::string>& columns, const HexBytes& hex) {
  std::string line;
  for (const std::string& column : columns) {
    if (!hex.name.empty() && column == hex.name) {
      fmt::print("{}{}", line, &column == &columns.front() ? "" : ",");
      forEachPiece(*hex.bytes, [](const std::string& digits) { fmt::print("{}", digits); });
      line.clear();
      continue;
    }
    if (&column != &columns.front()) line += ',';
    line += csvText(csvCell(row, column));
  }
  fmt::print("{}{}", line, csvLineEnd());
}

void printDocument(const Document& document, const Options& options) {
  const auto object = [&document] { return document.json ? document.json() : Json::Value(Json::objectValue); };
  const LongList& rows = document.rows;
  switch (options.format) {
    case FORMAT_TABLE:
    case FORMAT_XLSX:
    case FORMAT_SQLITE:
      if (document.print) return document.print();
      fmt::print("{}", document.text());
      break;
    case FORMAT_JSON: {
      Json::Value json = object();
      json["schema"] = SCHEMA;
      printDocumentJson(json, rows, document.hex);
      break;
    }
    case FORMAT_JSONL:
      if (!document.hex.name.empty()) {
        Json::Value json = object();
        json["schema"] = SCHEMA;
        return printObjectLine(json, document.hex);
      }
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
  std::optional<Room> room;
  if (_format != FORMAT_TABLE || !text.empty()) room.emplace(stdout);
  switch (_format) {
    case FORMAT_TABLE:
    case FORMAT_XLSX:
    case FORMAT_SQLITE:
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

void AnswerStream::finish(const Json::Value& totals) const {
  if (_format != FORMAT_JSON) return;
  fmt::print("\n]");
  for (const std::string& name : totals.getMemberNames()) fmt::print(",\n\"{}\": {}", name, jsonText(totals[name], ""));
  fmt::print("\n}}\n");
}

std::string indentedText(const Json::Value& object) {
  std::string text = isEmptyContainer(object) ? cellOfScalar(object) + "\n" : "";
  for (Json::ArrayIndex i = 0; object.isArray() && i < object.size(); ++i) {
    appendIndented(fmt::format("[{}]", i), object[i], 0, text);
  }
  if (!object.isObject()) return text;
  for (const std::string& key : object.getMemberNames()) appendIndented(printable(key), object[key], 0, text);
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

Tone toneOf(Inspect::LinkState state) {
  switch (state) {
    case Inspect::LinkState::PASSED:
    case Inspect::LinkState::PASSED_WITH_STAR:
      return Tone::GOOD;
    case Inspect::LinkState::FAILED:
    case Inspect::LinkState::DAMAGED:
      return Tone::BAD;
    default:
      return Tone::DOUBTFUL;
  }
}

std::string furtherText(const std::string& name, const Inspect::Findings& findings) {
  return fmt::format("{}: {}", name, counted(findings.leftOut(), "further finding"));
}

void complain(const std::string& text, Tone tone) {
  const Room room(stderr);
  fmt::print(stderr, "{} {}\n", paintedError("veltra:", tone), printable(text));
}

}  // namespace Command
