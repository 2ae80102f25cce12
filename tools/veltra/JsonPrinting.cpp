#include "JsonPrinting.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

#include <fmt/format.h>
#include <json/writer.h>

#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/records/Measurements.h>

namespace Command {
namespace {

using Inspect::digitsOf;
using Inspect::flatMembers;
using Inspect::isMeasurement;

/// As JsonCpp writes it; a number exactly, also where JsonCpp would round it.
std::string scalarText(const Json::Value& value) {
  constexpr unsigned NUMBER_DIGITS = 10;  // the digits of a 32-bit measurement
  if (value.isNull()) return "null";
  if (value.isBool()) return Json::valueToString(value.asBool());
  if (value.type() == Json::intValue) return std::to_string(value.asInt64());
  if (value.type() == Json::uintValue) return std::to_string(value.asUInt64());
  const double number = value.asDouble();
  std::string text = Json::valueToString(number, NUMBER_DIGITS);
  const bool isExact = !std::isfinite(number) || std::strtod(text.c_str(), nullptr) == number;
  return isExact ? text : fmt::format("{}", number);
}

/// Writes texts as JSON. Takes longer to make than to use.
class TextWriter {
 public:
  TextWriter() {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = false;  // read by terminals of any encoding
    _writer.reset(builder.newStreamWriter());
  }
  std::string of(const std::string& text) const {
    std::ostringstream out;
    out.exceptions(std::ios::badbit);  // memory that runs out is no shorter text
    _writer->write(text, &out);
    return out.str();
  }

 private:
  std::unique_ptr<Json::StreamWriter> _writer;
};

bool hasIllFormedName(const Json::Value& object) {
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (!Dump::isUtf8(member.name())) return true;
  }
  return false;
}

bool hasMeasurement(const Json::Value& row) {
  return std::any_of(row.begin(), row.end(), [](const Json::Value& member) { return isMeasurement(member); });
}

/// Lays out values; their texts and numbers are written by JsonCpp, which chooses the digits of a number itself.
class JsonLayout {
 public:
  /// @param to  null, or the stream to which the text goes piece by piece; a failure throws std::system_error
  explicit JsonLayout(const char* indentation, std::FILE* to = nullptr) : _indentation(indentation), _to(to) {}

  std::string of(const Json::Value& value) {
    add(value, 0);
    return std::move(_text);
  }
  std::string ofRow(const Json::Value& row) {
    addRow(row, 0);
    return std::move(_text);
  }
  /// An object with two more members: an array of rows, and bytes.
  void writeDocument(const Json::Value& document, const LongList& rows, const HexBytes& hex) {
    std::vector<std::string> names = document.getMemberNames();
    for (const std::string& name : {rows.name, hex.name}) {
      if (!name.empty()) names.insert(std::upper_bound(names.begin(), names.end(), name), name);
    }
    const char* separator = "{";
    for (const std::string& key : names) {
      beginMember(separator, key, 0);
      if (key == rows.name) {
        addRows(rows);
      } else if (key == hex.name) {
        put("\"");
        forEachPiece(*hex.bytes, [this](const std::string& digits) { put(digits); });
        put("\"");
      } else {
        add(document[key], 1);
      }
    }
    end(separator, "{}", 0);
    flush();
  }

 private:
  void put(std::string_view text) {
    constexpr std::size_t PIECE = std::size_t{32} * 1024;
    _text += text;
    if (_to != nullptr && _text.size() > PIECE) flush();
  }
  void flush() {
    fmt::print(_to, "{}", _text);
    _text.clear();
  }

  void add(const Json::Value& value, int depth) {
    if (value.isObject()) {
      if (hasIllFormedName(value)) {
        Json::Value repaired = value;  // the library tells members apart whose names become the same
        Dump::replaceIllFormedTexts(repaired);
        return add(repaired, depth);
      }
      const std::string digits = isMeasurement(value) ? digitsOf(value) : "";
      const char* separator = "{";
      for (auto member = value.begin(); member != value.end(); ++member) {
        const std::string key = member.name();
        beginMember(separator, key, depth);
        addDigitsOr(key == "value" ? digits : "", *member, depth + 1);
      }
      end(separator, "{}", depth);
    } else if (value.isArray()) {
      const char* separator = "[";
      for (const Json::Value& element : value) {
        beginElement(separator, depth);
        add(element, depth + 1);
      }
      end(separator, "[]", depth);
    } else {
      addScalar(value);
    }
  }

  void addScalar(const Json::Value& value) {
    if (value.isString()) {
      addText(value.asString());
    } else {
      put(scalarText(value));
    }
  }

  void addText(const std::string& text) {
    const bool isPlain =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; });
    if (!isPlain) {  // names may hold any bytes; JSON may not
      if (!_texts) _texts.emplace();
      return put(_texts->of(Dump::isUtf8(text) ? text : Dump::withoutIllFormedUtf8(text)));
    }
    put("\"");
    put(text);
    put("\"");
  }

  void addDigitsOr(const std::string& digits, const Json::Value& value, int depth) {
    if (digits.empty()) {
      add(value, depth);
    } else {
      put(digits);
    }
  }

  void addRow(const Json::Value& row, int depth) {
    if (!hasMeasurement(row)) return add(row, depth);
    const char* separator = "{";
    for (const auto& [name, member] : flatMembers(row)) {
      beginMember(separator, name, depth);
      addDigitsOr(member.digits, member.value, depth + 1);
    }
    end(separator, "{}", depth);
  }

  void addRows(const LongList& rows) {
    const char* separator = "[";
    rows.forEach([&](const Json::Value& row) {
      beginElement(separator, 1);
      addRow(row, 2);
    });
    end(separator, "[]", 1);
  }

  void beginMember(const char*& separator, const std::string& name, int depth) {
    beginElement(separator, depth);
    addText(name);
    put(*_indentation != '\0' ? ": " : ":");
  }

  void breakLine(int depth) {
    if (*_indentation == '\0') return;
    put("\n");
    for (int i = 0; i < depth; ++i) put(_indentation);
  }

  void beginElement(const char*& separator, int depth) {
    put(separator);
    separator = ",";
    breakLine(depth + 1);
  }

  void end(const char* separator, const char* brackets, int depth) {
    if (*separator != ',') {
      put(brackets);
      return;
    }
    breakLine(depth);
    put(brackets + 1);
  }

  const char* _indentation;
  std::FILE* _to;
  std::string _text;
  std::optional<TextWriter> _texts;
};

}  // namespace

void LongList::forEach(const OnElement& onElement) const {
  if (all) return all(onElement);
  for (std::size_t i = 0; i < size; ++i) onElement(element(i));
}

void forEachPiece(const std::vector<uint8_t>& bytes, const std::function<void(const std::string& digits)>& onPiece) {
  constexpr std::size_t BYTES_A_PIECE = 2048;
  constexpr char DIGITS[] = "0123456789abcdef";
  std::string digits;
  for (std::size_t at = 0; at < bytes.size(); at += BYTES_A_PIECE) {
    digits.clear();
    for (std::size_t i = at; i < std::min(at + BYTES_A_PIECE, bytes.size()); ++i) {
      digits += {DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 0x0F]};
    }
    onPiece(digits);
  }
}

std::string jsonText(const Json::Value& value, const char* indentation) {
  return JsonLayout(indentation).of(value);
}

std::string rowJson(const Json::Value& row, const char* indentation) {
  return JsonLayout(indentation).ofRow(row);
}

CsvCell csvCell(const Json::Value& row, const std::string& column) {
  constexpr std::string_view RELATION = "Relation";
  const auto memberNamed = [&row](const std::string& name) { return row.find(name.data(), name.data() + name.size()); };
  const auto cellOf = [](const Json::Value& value) {
    return value.isString() ? CsvCell{value.asString(), true}
           : value.isNull() ? CsvCell{}
                            : CsvCell{jsonText(value, ""), false};
  };
  if (const Json::Value* const member = memberNamed(column)) {
    if (!isMeasurement(*member)) return cellOf(*member);
    std::string digits = digitsOf(*member);
    return digits.empty() ? cellOf((*member)["value"]) : CsvCell{std::move(digits), false};
  }
  if (column.size() <= RELATION.size() || column.compare(column.size() - RELATION.size(), RELATION.size(), RELATION)) {
    return {};
  }
  const Json::Value* const measured = memberNamed(column.substr(0, column.size() - RELATION.size()));
  return measured != nullptr && isMeasurement(*measured) ? cellOf(Inspect::relationBeside(*measured)) : CsvCell{};
}

void printDocumentJson(const Json::Value& object, const LongList& rows, const HexBytes& hex) {
  JsonLayout("  ", stdout).writeDocument(object, rows, hex);
  fmt::print("\n");
}

void printObjectLine(const Json::Value& object, const HexBytes& hex) {
  JsonLayout("", stdout).writeDocument(object, {}, hex);
  fmt::print("\n");
}

}  // namespace Command
