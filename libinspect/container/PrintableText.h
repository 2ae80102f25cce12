#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Inspect {

/// The characters that can be shown where a text goes.
enum class Charset { UTF8, ASCII };

/// "1 file", "2 files"
std::string counted(uint64_t count, const std::string& noun);

/// The last place up to `at` where a character of UTF-8 text begins, or the end of a shorter text: text is cut there.
std::size_t cutAt(const std::string& text, std::size_t at);

/// A very long text without its middle: a document may repeat a long name for each of its values.
std::string shortened(const std::string& text);

/// Text from outside as a terminal may show it: control characters, those that begin a line or change the direction of
/// writing, bytes that are not UTF-8, and with ASCII all others beyond it, become \xNN.
std::string printable(const std::string& text, Charset charset = Charset::UTF8);

/// Text from outside as it may be used in a page, between tags and in quoted attributes: printable, with what HTML or
/// SVG would take as markup escaped.
std::string htmlText(const std::string& text);

/// Text from outside as one word of a command line that can be copied from the terminal into a shell: quoted if a
/// shell would treat it as more than text, and never taken as an option.
std::string shellWord(const std::string& text, Charset charset = Charset::UTF8);

}  // namespace Inspect
