#include <libinspect/container/JsonFaults.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>
#include <json/reader.h>

#include <libcrossplatform/common/jsonutil.h>
#include <libinspect/container/PrintableText.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

constexpr char SPACES[] = " \t\r\n";

std::string placeAt(const std::string& text, std::size_t at) {
  std::size_t line = 1, begin = 0;
  for (std::size_t i = 0; i < at; ++i) {
    if (text[i] != '\n' && (text[i] != '\r' || text[i + 1] == '\n')) continue;
    ++line;
    begin = i + 1;
  }
  return fmt::format("line {}, column {}", line, at - begin + 1);
}

/// A name without its end, if it is long.
std::string shortenedName(const std::string& name) {
  constexpr std::size_t MOST = 80;
  return name.size() <= MOST ? name : name.substr(0, cutAt(name, MOST)) + "...";
}

/// Goes once over the tokens of a text that is known to be JSON.
class OversightScan {
 public:
  explicit OversightScan(const std::string& text) : _text(text) {}

  JsonOversights run() {
    for (skipFiller(); _at < _text.size(); skipFiller()) {
      if (_isDone) {
        add(JsonOversight::EXTRA, _at);
        break;
      }
      take(_text[_at]);
    }
    return std::move(_found);
  }

 private:
  struct Level {
    bool isObject;
    bool isWithinSecret;
    bool expectsName;
    bool isSecretNext;  ///< the value after the last name is one
    std::unordered_set<std::string> names;
  };

  void add(JsonOversight::Kind kind, std::size_t at, const std::string& name = {}) {
    if (_found.kept.size() < JsonOversights::MOST_KEPT) {
      _found.kept.push_back({kind, placeAt(_text, at), name});
    } else {
      ++_found.leftOut;
    }
  }

  /// White space and comments.
  void skipFiller() {
    for (;;) {
      _at = std::min(_text.find_first_not_of(SPACES, _at), _text.size());
      const bool isLine = _text.compare(_at, 2, "//") == 0;
      if (!isLine && _text.compare(_at, 2, "/*") != 0) return;
      _found.hasComments = true;
      const std::size_t end = isLine ? _text.find_first_of("\r\n", _at) : _text.find("*/", _at + 2);
      _at = end == std::string::npos ? _text.size() : end + (isLine ? 0 : 2);
    }
  }

  void take(char c) {
    switch (c) {
      case '{':
      case '[': {
        const bool isSecretHere = !_levels.empty() && (_levels.back().isWithinSecret || _levels.back().isSecretNext);
        _levels.push_back({c == '{', isSecretHere, c == '{', false, {}});
        ++_at;
        break;
      }
      case '}':
      case ']':
        if (!_levels.empty()) _levels.pop_back();
        ++_at;
        _isDone = _levels.empty();
        break;
      case ':':
      case ',':
        if (!_levels.empty()) _levels.back().expectsName = c == ',' && _levels.back().isObject;
        ++_at;
        break;
      case '"':
        takeText();
        break;
      default:
        _at = std::min(_text.find_first_of(" \t\r\n,:]}/\"", _at + 1), _text.size());
        _isDone = _levels.empty();
    }
  }

  static constexpr std::size_t ESCAPE = 6;  // bytes of "\u0041"

  static bool isFirstHalf(unsigned unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
  static bool isSecondHalf(unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

  /// The number of an escape, 0 where there is none.
  unsigned unitAt(std::size_t at) const {
    if (_text.compare(at < _text.size() ? at : _text.size(), 2, "\\u") != 0) return 0;
    return static_cast<unsigned>(std::strtoul(_text.substr(at + 2, ESCAPE - 2).c_str(), nullptr, 16));
  }

  void takeText() {
    const std::size_t begin = _at++;
    while (_at < _text.size() && _text[_at] != '"') {
      if (_text[_at] == '\0') add(JsonOversight::NUL, _at);
      const unsigned unit = unitAt(_at);
      if (isFirstHalf(unit) && isSecondHalf(unitAt(_at + ESCAPE))) {
        _at += 2 * ESCAPE;
        continue;
      }
      if (isFirstHalf(unit) || isSecondHalf(unit)) add(JsonOversight::HALF, _at);
      _at += _text[_at] == '\\' ? 2 : 1;
    }
    _at = std::min(_at + 1, _text.size());
    _isDone = _levels.empty();
    if (!_isDone && _levels.back().expectsName) takeName(begin);
  }

  void takeName(std::size_t begin) {
    const std::string token = _text.substr(begin, _at - begin);
    Json::Value parsed;
    const bool isEscaped = token.find('\\') != std::string::npos && Veltra::parseJson(token, parsed, false);
    const std::string name = isEscaped ? parsed.asString() : token.substr(1, token.size() - 2);
    Level& level = _levels.back();
    level.isSecretNext = isSecret(name);
    if (level.names.insert(name).second) return;
    add(JsonOversight::NAME_TWICE, begin,
        level.isWithinSecret || namesSecret(name) ? masked(name).asString() : shortenedName(name));
  }

  const std::string& _text;
  std::size_t _at = 0;
  bool _isDone = false;
  std::vector<Level> _levels;
  JsonOversights _found;
};

}  // namespace

JsonOversights oversightsIn(const std::string& text) {
  return OversightScan(text).run();
}

std::string toString(const JsonOversight& oversight) {
  switch (oversight.kind) {
    case JsonOversight::NAME_TWICE:
      return fmt::format("{}: the name \"{}\" was given before", oversight.place, oversight.name);
    case JsonOversight::EXTRA:
      return oversight.place + ": more after the end of the document";
    case JsonOversight::NUL:
      return oversight.place + ": a zero byte within a text";
    case JsonOversight::HALF:
      return oversight.place + ": an escape that is half a character, without its other half";
  }
  return {};
}

std::string jsonFaultIn(const std::string& text) {
  constexpr char EXPECTED[] = "expected JSON";
  if (text.rfind("\xEF\xBB\xBF", 0) == 0)
    return fmt::format("{}, found a byte-order mark at line 1, column 1", EXPECTED);
  Json::CharReaderBuilder builder;
  builder["allowTrailingCommas"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &document, &errors)) return EXPECTED;
  } catch (const Json::Exception& e) {  // no std::runtime_error
    if (std::strstr(e.what(), "allocate") != nullptr) throw std::bad_alloc();
    return fmt::format("{}, found something else at a level that is too deep", EXPECTED);
  }
  unsigned line = 1, column = 1;  // "* Line 3, Column 5"; what follows may quote a secret
  (void)std::sscanf(errors.c_str(), "* Line %u, Column %u", &line, &column);
  return fmt::format("{}, found something else at line {}, column {}", EXPECTED, line, column);
}

std::string numberIn(std::string_view text, const Json::Value& number) {
  if (number.getOffsetLimit() <= number.getOffsetStart()) return {};
  const auto begin = static_cast<std::size_t>(number.getOffsetStart());
  return std::string(text.substr(begin, text.find_first_not_of("+-.0123456789eE", begin) - begin));
}

void useDigits(Json::Value& document, std::string_view text) {
  if (document.isObject() || document.isArray()) {
    for (Json::Value& child : document) useDigits(child, text);
  } else if (document.type() == Json::realValue) {
    document = numberIn(text, document);
  }
}

bool parseWholeJson(const std::string& text, Json::Value& document, std::string& error) {
  Json::Value parsed;
  if (!Veltra::parseJson(text, parsed, false)) {
    error = jsonFaultIn(text);
    return false;
  }
  const JsonOversights oversights = oversightsIn(text);
  if (!oversights.kept.empty()) {
    error = toString(oversights.kept.front());
    return false;
  }
  document.swap(parsed);
  return true;
}

}  // namespace Inspect
