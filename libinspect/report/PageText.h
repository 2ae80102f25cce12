#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Inspect {

/// The lines of a text that people wrote: white space within them as single spaces, none at their ends; lines in which
/// nothing can be seen are left out.
std::vector<std::string> linesOf(const std::string& text);

/// The same as one line; empty if nothing of it can be seen.
std::string oneLine(const std::string& text);

/// How many characters a text has of which none can be seen, such as spaces; 0 for any other text.
std::size_t unseenCharacters(const std::string& text);

/// A link of the page by its ID: "(no ID)" where a result has none, "(2 unseen characters)" where nobody would see it.
std::string shownId(const std::string& id);

}  // namespace Inspect
