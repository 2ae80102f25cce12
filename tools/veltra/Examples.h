#pragma once

#include <string>

namespace Command {

/// The command lines of the examples of a command's man page, for the end of its help; empty if it has none.
std::string examplesOf(const std::string& command);

}  // namespace Command
