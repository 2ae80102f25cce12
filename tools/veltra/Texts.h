#pragma once

#include <string>

namespace Command {

// What a command's files in pages/ and examples/ say; empty without them.

/// The paragraphs that describe a command, or "veltra" itself, with a newline at the end.
std::string descriptionOf(const std::string& command);
/// The command lines of the examples of a command's man page, for the end of its help.
std::string examplesOf(const std::string& command);

}  // namespace Command
