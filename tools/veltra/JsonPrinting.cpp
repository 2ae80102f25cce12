#include "JsonPrinting.h"

#include <memory>
#include <sstream>

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
  }

  std::string of(const Json::Value& value) {
    add(value, 0);
    return _out.str();
  }
  std::string ofRow(const Json::Value& row) {
    addRow(row, 0);
    return _out.str();
  }
  /// An object with one more member: an array of rows.
  std::string ofDocument(const Json::Value& document, const LongList& rows) {
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
    return _out.str();
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

std::string rowJson(const Json::Value& row) {
  return JsonLayout("").ofRow(row);
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

std::string documentJson(const Json::Value& object, const LongList& rows) {
  return JsonLayout("  ").ofDocument(object, rows);
}

}  // namespace Command
