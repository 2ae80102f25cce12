#pragma once

#include <cstdint>
#include <string>

#include <json/value.h>
#include <boost/optional.hpp>

namespace Veltra {

// What the JSON objects of records say of themselves.
constexpr char KEY_CLASS_NAME[] = "_className";
constexpr char KEY_CLASS_VERSION[] = "_classVersion";

// The members of a record's JSON object, each named once for both directions: a record has
//
//   template <class Members, class Record> void walk(Members& m, Record& r)
//
// and calls it with a writer or a reader, which have the same verbs.

class MemberWriter {
 public:
  explicit MemberWriter(Json::Value& object) : _object(object) {}

  void text(const char* key, const std::string& v) { _object[key] = v; }
  void boolean(const char* key, bool v) { _object[key] = v; }
  template <class Int>
  void integer(const char* key, Int v) {
    _object[key] = v;
  }
  /// As sysTimeToStr() writes it.
  void time(const char* key, long v);
  /// An enumeration as its text.
  template <class E, class Parser>
  void choice(const char* key, E v, Parser) {
    _object[key] = toString(v);
  }

 private:
  Json::Value& _object;
};

/// How a reader treats a member that differs from what its writer writes.
enum class MemberRule {
  EXACT,              ///< every member must be there, of a kind that the typed readers of jsonutil.h take
  CONVERTED,          ///< convertJson(): a null is false, 0 or empty; a missing member does not change its target
  CONVERTED_OR_NULL,  ///< likewise, but neither does a null
};

/// The first member that cannot be read is logged with logJsonFailure(); the verbs do nothing from then on.
class MemberReader {
 public:
  /// @param source, line  place of the record's reader, for the log
  MemberReader(const Json::Value& object, MemberRule rule, const char* source, int line)
      : _object(object), _rule(rule), _source(source), _line(line) {}
  bool ok() const { return _ok; }

  void text(const char* key, std::string& v);
  void boolean(const char* key, bool& v);
  void integer(const char* key, int& v);
  void integer(const char* key, unsigned& v);
  void integer(const char* key, uint16_t& v);  ///< refuses what 16 bits do not hold
  void integer(const char* key, int16_t& v);   ///< keeps the low 16 bits of a number
  void time(const char* key, long& v);         ///< exact by every rule
  /// A missing text gives the parser's result for an empty one.
  template <class E, class Parser>
  void choice(const char* key, E& v, Parser parse) {
    std::string name;
    text(key, name);
    v = parse(name);
  }

 private:
  template <class T>
  void take(const char* key, T& v, boost::optional<T> (*exact)(const Json::Value&, const char*));
  void fail(const char* key);

  const Json::Value& _object;
  const MemberRule _rule;
  const char* const _source;
  const int _line;
  bool _ok = true;
};

}  // namespace Veltra
