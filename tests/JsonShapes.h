#pragma once

#include <json/value.h>

#include <limits>
#include <string>
#include <vector>

#include "RecordTesting.h"

/// Records read from JSON of any shape: every kind of value at every key and in place of the whole document.
namespace RecordTesting {

/// Sets of kinds of a JSON value. JSON_TEXT is a text that is no number, no time and no enumeration text.
enum JsonKinds : unsigned {
  JSON_NONE = 0,
  JSON_MISSING = 1u << 0,
  JSON_NULL = 1u << 1,
  JSON_BOOL = 1u << 2,
  JSON_INT = 1u << 3,
  JSON_NEGATIVE = 1u << 4,
  JSON_UINT64 = 1u << 5,  ///< beyond every signed kind
  JSON_REAL = 1u << 6,    ///< with a fraction
  JSON_TEXT = 1u << 7,
  JSON_EMPTY_TEXT = 1u << 8,
  JSON_ARRAY = 1u << 9,
  JSON_OBJECT = 1u << 10,
  JSON_EVERY_KIND = (1u << 11) - 1,

  JSON_NUMBERS = JSON_INT | JSON_NEGATIVE | JSON_UINT64 | JSON_REAL,
  JSON_TEXTS = JSON_TEXT | JSON_EMPTY_TEXT,
  JSON_STRING_READER = JSON_TEXTS | JSON_NUMBERS | JSON_BOOL,  ///< what Veltra::stringFromJson takes
  JSON_INT_READER = JSON_INT | JSON_NEGATIVE,                  ///< what Veltra::intFromJson takes

  // What Veltra::convertJson takes for a text and for a truth value, and what of it leaves the target alone.
  JSON_ABSENT = JSON_MISSING | JSON_NULL,
  JSON_TO_TEXT = JSON_STRING_READER | JSON_ABSENT,
  JSON_TO_BOOL = JSON_BOOL | JSON_NUMBERS | JSON_ABSENT,
};

struct JsonShape {
  const char* name;
  JsonKinds kind;
  Json::Value value;
};

inline const std::vector<JsonShape>& jsonShapes() {
  static const std::vector<JsonShape> shapes = [] {
    Json::Value array(Json::arrayValue);
    array.append(1);
    array.append("a");
    Json::Value object(Json::objectValue);
    object["a"] = 1;
    return std::vector<JsonShape>{
        {"missing", JSON_MISSING, Json::Value()},
        {"null", JSON_NULL, Json::Value()},
        {"bool", JSON_BOOL, Json::Value(true)},
        {"int", JSON_INT, Json::Value(7)},
        {"negative", JSON_NEGATIVE, Json::Value(-7)},
        {"uint64", JSON_UINT64, Json::Value(std::numeric_limits<Json::UInt64>::max())},
        {"real", JSON_REAL, Json::Value(2.5)},
        {"text", JSON_TEXT, Json::Value("some text")},
        {"empty text", JSON_EMPTY_TEXT, Json::Value("")},
        {"array", JSON_ARRAY, array},
        {"empty array", JSON_ARRAY, Json::Value(Json::arrayValue)},
        {"object", JSON_OBJECT, object},
        {"empty object", JSON_OBJECT, Json::Value(Json::objectValue)},
    };
  }();
  return shapes;
}

/// A place in a document and the kinds of value with which the document is still read.
struct JsonPlace {
  std::string path;  ///< keys with "/" between them, all but the last naming objects of the document
  unsigned accepted;
};

/// The document with one value exchanged, or taken out for JSON_MISSING.
inline Json::Value withShape(Json::Value document, const std::string& path, const JsonShape& shape) {
  Json::Value* at = &document;
  std::size_t start = 0;
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', start)) {
    at = &(*at)[path.substr(start, slash - start)];
    start = slash + 1;
  }
  if (shape.kind == JSON_MISSING) {
    at->removeMember(path.substr(start));
  } else {
    (*at)[path.substr(start)] = shape.value;
  }
  return document;
}

/// Reads `document` into a copy of `before`: the stated result, no exception, the copy unchanged where it fails. A
/// record is compared as its bytes.
/// @param read  bool(Record&, const Json::Value&)
template <class Record, class Read>
void expectJsonRead(const Record& before, const Json::Value& document, bool expected, Read read) {
  Record target = before;
  const Bytes untouched = bytesOf(target);
  bool result = !expected;
  EXPECT_NO_THROW(result = read(target, document));
  EXPECT_EQ(result, expected) << document.toStyledString();
  if (!expected) {
    EXPECT_EQ(bytesOf(target), untouched) << "changed by a read that failed";
  }
}

/// Every kind of value at every place of a document, and in place of the document.
/// @param before        what is read into; it must differ from what `document` holds
/// @param document      is read with success
/// @param rootAccepted  kinds of a whole document that are read
template <class Record, class Read>
void expectJsonShapes(const Record& before, const Json::Value& document, unsigned rootAccepted,
                      const std::vector<JsonPlace>& places, Read read) {
  Record target = before;
  const Bytes untouched = bytesOf(target);
  ASSERT_TRUE(read(target, document));
  ASSERT_NE(bytesOf(target), untouched) << "reading changes nothing, so the rest would prove nothing";
  for (const JsonShape& shape : jsonShapes()) {
    SCOPED_TRACE(shape.name);
    if (shape.kind != JSON_MISSING) expectJsonRead(before, shape.value, (rootAccepted & shape.kind) != 0, read);
    for (const JsonPlace& place : places) {
      SCOPED_TRACE(place.path);
      expectJsonRead(before, withShape(document, place.path, shape), (place.accepted & shape.kind) != 0, read);
    }
  }
}

/// Every member below the root counts: with the value another record shows for it, it is read as one that differs.
template <class Record>
void expectEveryJsonMemberCounts(const Record& record, const Record& other) {
  const Json::Value whole = record.toJson(level(2));
  const std::string root = whole.getMemberNames().at(0);
  for (const std::string& key : whole[root].getMemberNames()) {
    SCOPED_TRACE(key);
    Json::Value changed = whole;
    changed[root][key] = other.toJson(level(2))[root][key];
    Record read;
    EXPECT_TRUE(read.fromJson(&changed));
    EXPECT_NE(read, record);
    EXPECT_EQ(read.toJson(level(2)), changed);
  }
}

}  // namespace RecordTesting
