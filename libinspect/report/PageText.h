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

/// A text of a file as the page shows it: at most so many bytes of it, then how long it is.
std::string shortenedTo(std::size_t most, const std::string& text);

/// The lines of a text that people wrote, as linesOf() has them, of a very long one its begin and how long it is.
std::vector<std::string> shownLines(const std::string& text);

/// A link of the page by its ID, "(no ID)" where a result has none. IDs that differ only in what nobody sees look
/// different: spaces at the ends and repeated ones are shown as U+2423, other unseen characters as "[U+00A0]".
std::string shownId(const std::string& id);

}  // namespace Inspect
