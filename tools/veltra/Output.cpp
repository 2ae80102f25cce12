#include "Output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

#include <fmt/format.h>
#include <json/writer.h>
#include <libsmartcols/libsmartcols.h>

namespace Command {

std::string jsonText(const Json::Value& value, const char* indentation) {
  constexpr int NUMBER_DIGITS = 10;  // what a measurement of 32 bits has
  Json::StreamWriterBuilder builder;
  builder["indentation"] = indentation;
  builder["precision"] = NUMBER_DIGITS;
  builder["emitUTF8"] = false;  // names may hold any bytes; JSON may not
  return Json::writeString(builder, value);
}

namespace {

/// Length of the UTF-8 sequence at `at`, 0 when there is none that may be shown.
std::size_t sequenceLength(const std::string& text, std::size_t at) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7F ? 1 : 0;
  const std::size_t length = lead >= 0xF0 && lead < 0xF5 ? 4 : lead >= 0xE0 && lead < 0xF0 ? 3 : lead >= 0xC2 ? 2 : 0;
  if (length == 0 || lead >= 0xF5 || length > text.size() - at) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
  }
  const bool isControl = lead == 0xC2 && byte(at + 1) < 0xA0;
  const bool isOverlong = (lead == 0xE0 && byte(at + 1) < 0xA0) || (lead == 0xF0 && byte(at + 1) < 0x90);
  const bool isSurrogate = lead == 0xED && byte(at + 1) >= 0xA0;
  return isControl || isOverlong || isSurrogate ? 0 : length;
}

bool isMeasurement(const Json::Value& value) {
  return value.isObject() && value.isMember("relation");
}

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

int worse(int a, int b) {
  constexpr int ORDER[] = {EXIT_COULD_NOT, EXIT_NO, EXIT_WITH_LOSS, EXIT_DONE};
  for (const int code : ORDER) {
    if (a == code || b == code) return code;
  }
  return a;
}

std::string printable(const std::string& text) {
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = sequenceLength(text, at);
    if (length == 0) {
      shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[at++]));
    } else {
      shown.append(text, at, length);
      at += length;
    }
  }
  return shown;
}

void printJson(Json::Value document) {
  document["schema"] = SCHEMA;
  fmt::print("{}\n", jsonText(document, "  "));
}

void printWithLists(const Json::Value& object, const std::vector<LongList>& lists, bool styled) {
  std::string head = jsonText(object, styled ? "  " : "");
  const auto closing = static_cast<std::size_t>(styled && !lists.empty() ? 2 : lists.empty() ? 0 : 1);  // "\n}" or "}"
  fmt::print("{}", head.substr(0, head.size() - closing));
  for (const LongList& list : lists) {
    fmt::print(styled ? ",\n  \"{}\" : [" : ",\"{}\":[", list.name);
    for (std::size_t i = 0; i < list.size; ++i) {
      fmt::print("{}{}{}", i == 0 ? "" : ",", styled ? "\n    " : "", jsonText(list.element(i), ""));
    }
    fmt::print(styled && list.size > 0 ? "\n  ]" : "]");
  }
  fmt::print("{}", head.substr(head.size() - closing));
}

void printJsonLine(const Json::Value& value) {
  fmt::print("{}\n", jsonText(value, ""));
}

void printCsvHeader(const std::vector<std::string>& columns) {
  fmt::print("{}\n", fmt::join(columns, ","));
}

void printCsvRow(const Json::Value& row, const std::vector<std::string>& columns) {
  std::string line;
  for (const std::string& column : columns) {
    const Json::Value& value = row[column];
    std::string cell = value.isString() ? value.asString() : value.isNull() ? "" : jsonText(value, "");
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
  const bool isOneRow = document.rows.empty() && document.columns.empty();
  const std::vector<Json::Value> rows = isOneRow ? std::vector<Json::Value>{document.json} : document.rows;
  switch (options.format) {
    case FORMAT_TABLE:
      fmt::print("{}", document.text);
      break;
    case FORMAT_JSON:
      printJson(document.json);
      break;
    case FORMAT_JSONL:
      std::for_each(rows.begin(), rows.end(), printJsonLine);
      break;
    case FORMAT_CSV: {
      const std::vector<std::string> columns =
          document.columns.empty() ? rows.front().getMemberNames() : document.columns;
      printCsvHeader(columns);
      for (const Json::Value& row : rows) printCsvRow(row, columns);
      break;
    }
  }
}

std::string indentedText(const Json::Value& object) {
  std::string text;
  for (const std::string& key : object.getMemberNames()) appendIndented(printable(key), object[key], 0, text);
  return text;
}

std::string Table::text() const {
  const std::unique_ptr<libscols_table, void (*)(libscols_table*)> table(scols_new_table(), scols_unref_table);
  char* printed = nullptr;
  if (table == nullptr) throw std::bad_alloc();
  for (const Column& column : _columns) {
    scols_table_new_column(table.get(), column.name, 0, column.right ? SCOLS_FL_RIGHT : 0);
  }
  for (const std::vector<std::string>& row : _rows) {
    libscols_line* const line = scols_table_new_line(table.get(), nullptr);
    for (std::size_t i = 0; i < row.size(); ++i) scols_line_set_data(line, i, printable(row[i]).c_str());
  }
  if (scols_print_table_to_string(table.get(), &printed) != 0) throw std::bad_alloc();
  const std::unique_ptr<char, void (*)(void*)> owned(printed, std::free);
  return _rows.empty() ? std::string() : std::string(printed) + "\n";
}

std::string hexDump(const std::vector<uint8_t>& bytes) {
  constexpr std::size_t WIDTH = 16;
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += WIDTH) {
    std::string codes, characters;
    for (std::size_t i = at; i < std::min(at + WIDTH, bytes.size()); ++i) {
      codes += fmt::format("{:02x}{}", bytes[i], i - at == WIDTH / 2 - 1 ? "  " : " ");
      characters += bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
    }
    text += fmt::format("{:08x}  {:<50}{}\n", at, codes, characters);
  }
  return text;
}

void complain(const std::string& text) {
  fmt::print(stderr, "veltra: {}\n", printable(text));
}

}  // namespace Command
