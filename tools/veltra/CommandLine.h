#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Command {

using Run = std::function<int()>;  ///< runs the command; returns the exit code
using Take = std::function<void(const std::string&)>;

/// Where the value of an argument goes, which also determines its type. Borrowed while the command line is parsed.
/// Without one the parser handles the argument itself: --help and --version.
using Target = std::variant<std::monostate, bool*, int*, uint32_t*, std::optional<int>*, std::optional<uint32_t>*,
                            uint64_t*,  ///< bytes, also as 64K, 10M and 1G
                            std::string*, std::optional<std::string>*, std::vector<std::string>*, Take>;

/// One argument of a command.
struct Argument {
  std::string names;  ///< "FILE" for a positional argument, "-s,--section" for an option
  std::string type;   ///< name of its value in help; a choice of words as "auto|never"; empty for a flag
  std::string help;
  Target target;
  bool isCommand = false;  ///< names a command: shells complete them
  bool isRequired = false;
  bool isRepeated = false;   ///< of a list: given several times with one value each, not once with several
  bool showsPreset = false;  ///< help shows its default value
  std::string preset;        ///< the default for help, if its target does not hold it
  std::string group;         ///< purpose of its group; at most one option of a group may be given
  std::string needs;         ///< the option that must be given with this one
  std::string excludes;      ///< the option that must not be given with this one

  Argument(std::string all, std::string valueType, std::string text, Target to)
      : names(std::move(all)), type(std::move(valueType)), help(std::move(text)), target(std::move(to)) {}

  bool isOption() const { return names.front() == '-'; }
  /// The words its value must be one of; none if it may be anything.
  std::vector<std::string> choices() const;

  Argument& namingCommands() { return isCommand = true, *this; }
  Argument& required() { return isRequired = true, *this; }
  Argument& repeated() { return isRepeated = true, *this; }
  Argument& showingPreset() { return showsPreset = true, *this; }
  Argument& showing(std::string value) { return preset = std::move(value), *this; }
  Argument& inGroup(std::string purpose) { return group = std::move(purpose), *this; }
  Argument& needing(std::string option) { return needs = std::move(option), *this; }
  Argument& excluding(std::string option) { return excludes = std::move(option), *this; }
};

/// A command as data: its name, arguments and action. Parser, help texts, man pages and completions
/// are made from it.
struct Subcommand {
  std::string name;
  std::string help;
  std::vector<Argument> arguments;
  std::vector<Subcommand> commands;  ///< if there are any, one of them must be given
  Run run;                           ///< of a command without subcommands
  bool makesTables = false;          ///< its answer may be a file of tables

  Subcommand(std::string commandName, std::string commandHelp)
      : name(std::move(commandName)), help(std::move(commandHelp)) {}

  // Each adds an argument; the reference is valid until the next is added.
  Argument& place(std::string argumentName, std::string type, Target target, std::string argumentHelp) {
    return arguments.emplace_back(std::move(argumentName), std::move(type), std::move(argumentHelp), std::move(target));
  }
  Argument& option(std::string names, std::string type, Target target, std::string argumentHelp) {
    return place(std::move(names), std::move(type), std::move(target), std::move(argumentHelp));
  }
  Argument& flag(std::string names, bool& isGiven, std::string argumentHelp) {
    return place(std::move(names), "", &isGiven, std::move(argumentHelp));
  }
};

/// For an option with a few words that stand for values.
template <class Choice>
Take takeChoice(Choice& choice, std::map<std::string, Choice> meanings) {
  return [&choice, meanings = std::move(meanings)](const std::string& word) { choice = meanings.at(word); };
}

/// The text with every occurrence of a part replaced.
std::string replaced(std::string text, const std::string& part, const std::string& by);

/// Parses a command line. Help, the version and complaints are printed here.
/// @param code  receives the exit code if there is nothing to run
/// @return what to run; empty after help, the version or a usage error
Run parseCommandLine(const Subcommand& root, const std::string& version, int argc, char** argv, int& code);

/// Prints the help of the command that these words name, or of the program without any; complains of other words.
/// @return the exit code
int printHelp(const Subcommand& root, const std::vector<std::string>& words);

}  // namespace Command
