#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

namespace Inspect {

/// Reads the members of one JSON object that a person wrote. Keeps the first fault, naming the key, what was
/// expected and what was found; refuses unknown members. A missing member does not change its target.
class ObjectReader {
 public:
  /// @param source  the text that it was parsed from; outlives the reader
  /// @param path    name of the object in faults
  /// @param error   empty, or the fault of an enclosing object: nothing is read then
  ObjectReader(const Json::Value& json, const std::string& source, std::string path, std::string& error);

  bool ok() const { return _error.empty(); }
  /// The member, or null when it is not there.
  const Json::Value* take(const char* key);
  void text(const char* key, std::string& out);
  void boolean(const char* key, bool& out);
  template <class Int>
  void integer(const char* key, Int& out, int64_t least, int64_t most) {
    int64_t number = out;
    wholeNumber(key, number, least, most);
    out = static_cast<Int>(number);
  }
  /// Call it last: refuses members that were not read, since they are probably misspelt.
  void finish();
  void fail(const std::string& key, const Json::Value& found, const std::string& wanted);

 private:
  void wholeNumber(const char* key, int64_t& out, int64_t least, int64_t most);

  const Json::Value& _json;
  const std::string& _source;
  std::string _path;
  std::string& _error;
  std::vector<std::string> _taken;
};

}  // namespace Inspect
