#include <libcrossplatform/serialization/JsonText.h>

#include <algorithm>
#include <ostream>
#include <streambuf>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <json/writer.h>

#include <libcrossplatform/logging/Logger.h>
#include <libcrossplatform/serialization/Utf8Text.h>

// Documents in the field are compared as text: they hold what these writers write, and the newer builder writes
// spaces, arrays and empty values differently. So the deprecated writers stay, in this unit only.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace Dump {
namespace {

// Accepts a number of bytes and refuses the rest.
class BoundedText : public std::streambuf {
 public:
  /// @param text  null: the bytes are only counted
  BoundedText(std::string* text, std::size_t most) : _text(text), _room(most) {}

 protected:
  int_type overflow(int_type character) override {
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const auto size = static_cast<std::size_t>(count);
    if (size > _room) return 0;
    _room -= size;
    if (_text != nullptr) _text->append(bytes, size);
    return count;
  }

 private:
  std::string* const _text;
  std::size_t _room;
};

std::string_view textOf(const Json::Value& value) {
  const char* begin = nullptr;
  const char* end = nullptr;
  return value.getString(&begin, &end) ? std::string_view(begin, static_cast<std::size_t>(end - begin))
                                       : std::string_view();
}

std::string_view nameOf(const Json::Value::const_iterator& member) {
  const char* end = nullptr;
  const char* const begin = member.memberName(&end);  // null for an element of an array
  return begin != nullptr ? std::string_view(begin, static_cast<std::size_t>(end - begin)) : std::string_view();
}

bool isAllUtf8(const Json::Value& value) {
  if (value.isString()) return isUtf8(textOf(value));
  if (!value.isObject() && !value.isArray()) return true;
  for (auto member = value.begin(); member != value.end(); ++member) {
    if (!isUtf8(nameOf(member)) || !isAllUtf8(*member)) return false;
  }
  return true;
}

/// Makes the texts and names of a value well-formed, at a cost that follows its size: names that become the same are
/// numbered, and where something was found is put together once.
class IllFormedTexts {
 public:
  void replaceIn(Json::Value& value) {
    if (value.isString()) {
      if (isUtf8(textOf(value))) return;
      found();
      Json::Value repaired(withoutIllFormedUtf8(textOf(value)));
      value.swapPayload(repaired);  // comments and offsets stay
    } else if (value.isArray()) {
      for (Json::Value& element : value) replaceIn(element);
    } else if (value.isObject()) {
      replaceInMembers(value);
    }
  }

  void log() const {
    Veltra::Logger::log(Veltra::Logger::FACILITY_COMMON, Veltra::Logger::SEVERITY_WARNING,
                        "JSON: texts that are not UTF-8 are written with U+FFFD: %zu, the first at \"%s\"", _count,
                        _first.c_str());
  }

 private:
  void replaceInMembers(Json::Value& object) {
    std::unordered_map<std::string, std::size_t> taken;  // how often a name was wanted that another member has
    for (const std::string& name : object.getMemberNames()) {
      _place.push_back(&name);
      if (isUtf8(name)) {
        replaceIn(object[name]);
      } else {
        found();
        Json::Value member;
        object.removeMember(name, &member);
        replaceIn(member);
        object[freeName(object, withoutIllFormedUtf8(name), taken)] = std::move(member);
      }
      _place.pop_back();
    }
  }

  static std::string freeName(const Json::Value& object, const std::string& wanted,
                              std::unordered_map<std::string, std::size_t>& taken) {
    std::string name = wanted;
    while (object.isMember(name)) {
      name = wanted;
      name.append(REPLACEMENT_CHARACTER).append(std::to_string(++taken[wanted]));
    }
    return name;
  }

  void found() {
    constexpr std::size_t SHOWN = 80;
    if (++_count > 1) return;
    for (const std::string* name : _place) {
      if (!_first.empty()) _first += '.';
      _first.append(*name, 0, SHOWN - std::min(SHOWN, _first.size()));
    }
    _first.resize(std::min(_first.size(), SHOWN));
    // Names come from documents of any origin, and a log line is one line.
    std::replace_if(
        _first.begin(), _first.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  }

  std::vector<const std::string*> _place;  // names of the members that lead to the value in hand
  std::size_t _count = 0;
  std::string _first;
};

/// Calls a writer with the value, or with a copy in which everything is UTF-8.
template <class Write>
auto writeAsUtf8(const Json::Value& value, bool isLogged, Write write) {
  if (isAllUtf8(value)) return write(value);
  const Json::Value repaired = orBadAlloc([&] {
    Json::Value copy = value;
    IllFormedTexts texts;
    texts.replaceIn(copy);
    if (isLogged) texts.log();
    return copy;
  });
  return write(repaired);
}

void writeStyled(std::ostream& out, const Json::Value& value, const char* indentation) {
  Json::StyledStreamWriter(indentation).write(out, value);
}

bool writeWithin(std::string* text, const Json::Value& value, const char* indentation, std::size_t most) {
  BoundedText bounded(text, most);
  std::ostream out(&bounded);
  out.exceptions(std::ios::badbit);  // ends the writing at once; std::bad_alloc is passed on
  try {
    // Text that is only counted is not written, so nothing is logged.
    writeAsUtf8(value, text != nullptr, [&](const Json::Value& v) { writeStyled(out, v, indentation); });
    return true;
  } catch (const std::ios::failure&) {
    return false;
  }
}

}  // namespace

std::string styledJson(const Json::Value& value) {
  return writeAsUtf8(value, true, [](const Json::Value& v) { return Json::StyledWriter().write(v); });
}

std::string compactJson(const Json::Value& value) {
  Json::FastWriter writer;
  writer.omitEndingLineFeed();
  return writeAsUtf8(value, true, [&](const Json::Value& v) { return writer.write(v); });
}

void writeStyledJson(std::ostream& out, const Json::Value& value, const char* indentation) {
  writeAsUtf8(value, true, [&](const Json::Value& v) { writeStyled(out, v, indentation); });
}

bool writeStyledJson(std::string& text, const Json::Value& value, const char* indentation, std::size_t most) {
  text.clear();
  return writeWithin(&text, value, indentation, most);
}

bool isStyledJsonWithin(const Json::Value& value, const char* indentation, std::size_t most) {
  return writeWithin(nullptr, value, indentation, most);
}

bool replaceIllFormedTexts(Json::Value& value) {
  if (isAllUtf8(value)) return false;
  IllFormedTexts texts;
  texts.replaceIn(value);
  return true;
}

}  // namespace Dump
