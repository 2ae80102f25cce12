#include "JsonPrinting.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include <fmt/format.h>
#include <json/writer.h>

#include <libcrossplatform/serialization/JsonText.h>
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

/// Lays out a value; its texts and numbers are written by JsonCpp, which chooses the digits of a number itself.
class JsonLayout {
 public:
  explicit JsonLayout(const char* indentation) : _indentation(indentation) {
    constexpr int NUMBER_DIGITS = 10;  // the digits of a 32-bit measurement
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["precision"] = NUMBER_DIGITS;
    builder["emitUTF8"] = false;  // read by terminals of any encoding
    _scalars.reset(builder.newStreamWriter());
    _out.exceptions(std::ios::badbit);  // memory that runs out is no shorter text
  }

  std::string of(const Json::Value& value) {
    add(value, 0);
    return _out.str();
  }
  std::string ofRow(const Json::Value& row) {
    addRow(row, 0);
    return _out.str();
  }
  /// Prints an object with one more member, an array of rows, and holds none of them.
  void printDocument(const Json::Value& document, const LongList& rows) {
    Json::Value names = document;
    if (!rows.name.empty()) names[rows.name] = Json::Value();
    const char* separator = "{";
    for (const std::string& key : names.getMemberNames()) {
      beginMember(separator, key, 0);
      if (key == rows.name) {
        addRows(rows);
      } else {
        add(document[key], 1);
      }
    }
    end(separator, "{}", 0);
    _out << '\n';
    flush();
  }

 private:
  void flush() {
    fmt::print("{}", _out.str());
    _out.str({});
  }

  void add(const Json::Value& value, int depth) {
    if (value.isObject()) {
      const std::vector<std::string> names = value.getMemberNames();
      if (!std::all_of(names.begin(), names.end(), [](const std::string& name) { return Dump::isUtf8(name); })) {
        Json::Value repaired = value;  // the library tells members apart whose names become the same
        Dump::replaceIllFormedTexts(repaired);
        return add(repaired, depth);
      }
      const std::string digits = isMeasurement(value) ? digitsOf(value) : "";
      const char* separator = "{";
      for (const std::string& key : names) {
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
    const bool isOther = value.isString() && !Dump::isUtf8(value.asString());  // names may hold any bytes; JSON may not
    _scalars->write(isOther ? Json::Value(Dump::withoutIllFormedUtf8(value.asString())) : value, &_out);
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
    for (std::size_t i = 0; i < rows.size; ++i) {
      beginElement(separator, 1);
      addRow(rows.element(i), 2);
      flush();
    }
    end(separator, "[]", 1);
  }

  void beginMember(const char*& separator, const std::string& name, int depth) {
    beginElement(separator, depth);
    addScalar(name);
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
  std::unique_ptr<Json::StreamWriter> _scalars;
  std::ostringstream _out;
};

}  // namespace

std::string jsonText(const Json::Value& value, const char* indentation) {
  return JsonLayout(indentation).of(value);
}

std::string rowJson(const Json::Value& row, const char* indentation) {
  return JsonLayout(indentation).ofRow(row);
}

std::map<std::string, CsvCell> rowCells(const Json::Value& row) {
  std::map<std::string, CsvCell> cells;
  for (const auto& [name, member] : flatMembers(row)) {
    const Json::Value& value = member.value;
    cells[name] = !member.digits.empty() ? CsvCell{member.digits, false}
                  : value.isString()     ? CsvCell{value.asString(), true}
                  : value.isNull()       ? CsvCell{}
                                         : CsvCell{jsonText(value, ""), false};
  }
  return cells;
}

void printDocumentJson(const Json::Value& object, const LongList& rows) {
  JsonLayout("  ").printDocument(object, rows);
}

}  // namespace Command
