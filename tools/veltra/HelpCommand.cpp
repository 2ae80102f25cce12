#include <memory>

#include "Commands.h"

namespace Command {

Subcommand helpCommand(const Subcommand& root) {
  const auto words = std::make_shared<std::vector<std::string>>();
  Subcommand command("help", "Print the help of a command");
  command.place("COMMAND", "COMMAND...", words.get(), "the command; without one, the commands there are")
      .namingCommands();
  command.run = [words, &root] { return printHelp(root, *words); };
  return command;
}

}  // namespace Command
