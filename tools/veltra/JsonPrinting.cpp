#include "JsonPrinting.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <streambuf>

#include <fmt/format.h>
#include <json/writer.h>

#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/records/Measurements.h>

namespace Command {
namespace {

using Inspect::digitsOf;
using Inspect::isMeasurement;

/// A member of a row.
struct FlatMember {
  Json::Value value;
  std::string digits;  ///< of a measured number
};

/// The members of a row as they are printed: a measurement is two of them.
std::map<std::string, FlatMember> flatMembers(const Json::Value& row) {
  std::map<std::string, FlatMember> members;
  for (const std::string& name : row.getMemberNames()) {
    const Json::Value& value = row[name];
    if (isMeasurement(value)) {
      members[name] = {value["value"], digitsOf(value)};
      members[name + "Relation"] = {value["relation"], {}};
    } else {
      members[name] = {value, {}};
    }
  }
  return members;
}

/// What JsonCpp writes texts and numbers by. It takes longer to make one than to use it.
Json::StreamWriter& scalarWriter() {
  constexpr int NUMBER_DIGITS = 10;  // the digits of a 32-bit measurement
  thread_local const std::unique_ptr<Json::StreamWriter> writer = [] {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["precision"] = NUMBER_DIGITS;
    builder["emitUTF8"] = false;  // read by terminals of any encoding
    return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
  }();
  return *writer;
}

/// What is put into it goes to standard output at once; throws std::system_error when that fails.
class OutputBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override {
    const char character = traits_type::to_char_type(c);
    xsputn(&character, 1);
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    const auto count = static_cast<std::size_t>(size);
    if (std::fwrite(text, 1, count, stdout) < count) throw fmt::system_error(errno, "cannot write to file");
    return size;
  }
};

struct OutputStream : OutputBuffer, std::ostream {
  OutputStream() : std::ostream(static_cast<OutputBuffer*>(this)) { exceptions(std::ios::badbit); }
};

/// Lays out values; their texts and numbers are written by JsonCpp, which chooses the digits of a number itself.
class JsonLayout {
 public:
  JsonLayout(std::ostream& out, const char* indentation) : _indentation(indentation), _out(out) {}

  void write(const Json::Value& value) { add(value, 0); }
  void writeRow(const Json::Value& row) { addRow(row, 0); }
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
        _out << '"';
        forEachPiece(*hex.bytes, [this](const std::string& digits) { _out << digits; });
        _out << '"';
      } else {
        add(document[key], 1);
      }
    }
    end(separator, "{}", 0);
  }

 private:
  void add(const Json::Value& value, int depth) {
    if (value.isObject()) {
      const std::string digits = isMeasurement(value) ? digitsOf(value) : "";
      const char* separator = "{";
      for (const std::string& key : value.getMemberNames()) {
        beginMember(separator, key, depth);
        addDigitsOr(key == "value" ? digits : "", value[key], depth + 1);
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
    switch (value.type()) {
      case Json::intValue:
        _out << fmt::format_int(value.asInt64()).c_str();
        break;
      case Json::uintValue:
        _out << fmt::format_int(value.asUInt64()).c_str();
        break;
      case Json::stringValue:
        addText(value.asString());
        break;
      case Json::realValue:
        _out << numberText(value);
        break;
      default:
        scalarWriter().write(value, &_out);
    }
  }

  void addText(const std::string& text) {
    const bool isPlain =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; });
    if (isPlain) {
      _out << '"' << text << '"';
    } else {  // names may hold any bytes; JSON may not
      scalarWriter().write(Dump::isUtf8(text) ? text : Dump::withoutIllFormedUtf8(text), &_out);
    }
  }

  /// As JsonCpp writes it, unless that is another number.
  static std::string numberText(const Json::Value& value) {
    std::ostringstream out;
    scalarWriter().write(value, &out);
    const double number = value.asDouble();
    const std::string text = out.str();
    return !std::isfinite(number) || std::strtod(text.c_str(), nullptr) == number ? text : fmt::format("{}", number);
  }

  void addDigitsOr(const std::string& digits, const Json::Value& value, int depth) {
    if (digits.empty()) {
      add(value, depth);
    } else {
      _out << digits;
    }
  }

  void addRow(const Json::Value& row, int depth) {
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
    _out << (*_indentation != '\0' ? ": " : ":");
  }

  void breakLine(int depth) {
    if (*_indentation == '\0') return;
    _out << '\n';
    for (int i = 0; i < depth; ++i) _out << _indentation;
  }

  void beginElement(const char*& separator, int depth) {
    _out << separator;
    separator = ",";
    breakLine(depth + 1);
  }

  void end(const char* separator, const char* brackets, int depth) {
    if (*separator != ',') {
      _out << brackets;
      return;
    }
    breakLine(depth);
    _out << brackets[1];
  }

  const char* _indentation;
  std::ostream& _out;
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
  std::ostringstream out;
  JsonLayout(out, indentation).write(value);
  return out.str();
}

std::string rowJson(const Json::Value& row) {
  std::ostringstream out;
  JsonLayout(out, "").writeRow(row);
  return out.str();
}

std::map<std::string, std::string> rowCells(const Json::Value& row) {
  std::map<std::string, std::string> cells;
  for (const auto& [name, member] : flatMembers(row)) {
    const Json::Value& value = member.value;
    cells[name] = !member.digits.empty() ? member.digits
                  : value.isString()     ? value.asString()
                  : value.isNull()       ? ""
                                         : jsonText(value, "");
  }
  return cells;
}

void printDocumentJson(const Json::Value& object, const LongList& rows, const HexBytes& hex) {
  OutputStream out;
  JsonLayout(out, "  ").writeDocument(object, rows, hex);
}

void printObjectLine(const Json::Value& object, const HexBytes& hex) {
  OutputStream out;
  JsonLayout(out, "").writeDocument(object, {}, hex);
  out << '\n';
}

}  // namespace Command
