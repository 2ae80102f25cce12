#pragma once

// Threads: any number may call these functions at once.

#include <iosfwd>
#include <new>
#include <string>

#include <json/value.h>

#include <libcrossplatform/logging/Export.h>

namespace Dump {

// JSON is UTF-8, records hold bytes. In a text or member name that is not UTF-8, the writers below replace what is
// ill-formed by U+FFFD, and log one warning that says how many there are and where the first is, never what it
// contains. Code with its own writer calls replaceIllFormedTexts() first: JsonCpp's writers turn such bytes, and the
// ASCII after them, into other characters.

/// The styled text every dump and document of the system is written in, ending in a newline.
VELTRA_EXPORT std::string styledJson(const Json::Value& value);

/// One line without spaces and without a newline.
VELTRA_EXPORT std::string compactJson(const Json::Value& value);

/// The styled stream form with the given indentation for each level, ending in a newline.
VELTRA_EXPORT void writeStyledJson(std::ostream& out, const Json::Value& value, const char* indentation);
/// The same into a text of at most `most` bytes: the indentation of a deeply nested value can be a thousand times the
/// size of the document it was read from.
/// @return false when there is more; `text` then holds its beginning
[[nodiscard]] VELTRA_EXPORT bool writeStyledJson(std::string& text, const Json::Value& value, const char* indentation,
                                                 std::size_t most);
/// Whether that text has at most `most` bytes. Stores none of them.
VELTRA_EXPORT bool isStyledJsonWithin(const Json::Value& value, const char* indentation, std::size_t most);

/// Makes every text and member name of a value well-formed UTF-8. Comments are unchanged. A name that becomes equal to
/// another member's gets U+FFFD and a number, so that no member is lost. Nothing is logged.
/// @return true when something was replaced
VELTRA_EXPORT bool replaceIllFormedTexts(Json::Value& value);

// A pointer is not the JSON value true.
std::string styledJson(const Json::Value*) = delete;
std::string compactJson(const Json::Value*) = delete;
void writeStyledJson(std::ostream&, const Json::Value*, const char*) = delete;
bool writeStyledJson(std::string&, const Json::Value*, const char*, std::size_t) = delete;
bool isStyledJsonWithin(const Json::Value*, const char*, std::size_t) = delete;

/// Calls JsonCpp, and throws std::bad_alloc in place of its own exception for exhausted memory.
template <class Call>
decltype(auto) orBadAlloc(Call call) {
  try {
    return call();
  } catch (const Json::RuntimeError&) {
    throw std::bad_alloc();
  }
}

}  // namespace Dump
