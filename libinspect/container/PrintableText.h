#pragma once

#include <string>

namespace Inspect {

/// Text from outside as a terminal may show it: control characters, those that turn the direction of
/// writing, and bytes that are no UTF-8 become \xNN.
std::string printable(const std::string& text);

/// Text from outside as it may stand in a page, between tags and in quoted attributes: printable, and what HTML or SVG
/// would take for markup escaped.
std::string htmlText(const std::string& text);

/// Text from outside as one word of a command line that can be copied from the terminal into a shell: in quotes where a
/// shell would take it for more than text, and never for an option.
std::string shellWord(const std::string& text);

}  // namespace Inspect
