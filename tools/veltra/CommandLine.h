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

using Run = std::function<int()>;  ///< does what was asked for; returns the exit code
using Take = std::function<void(const std::string&)>;

/// Where the value of an argument goes, which also says what it may be. Borrowed; as long as the command line is read.
/// Without one the parser itself knows what to do: --help and --version.
using Target = std::variant<std::monostate, bool*, int*, uint32_t*, std::optional<int>*, std::optional<uint32_t>*,
                            uint64_t*,  ///< bytes, also as 64K, 10M and 1G
                            std::string*, std::optional<std::string>*, std::vector<std::string>*, Take>;

/// One argument of a command.
struct Argument {
  std::string names;  ///< "FILE" of one that is told by its place, "-s,--section" of an option
  std::string type;   ///< what stands for its value in help; one of a few words as "auto|never"; empty for a flag
  std::string help;
  Target target;
  bool isRequired = false;
  bool showsPreset = false;  ///< help tells the value it has unless given
  std::string preset;        ///< what help tells of one whose target does not hold it
  std::string group;         ///< at most one option of a group may be given; what the group is for
  std::string needs;         ///< the option without which this one may not be given
  std::string excludes;      ///< the option beside which this one may not be given

  Argument(std::string all, std::string valueType, std::string text, Target to)
      : names(std::move(all)), type(std::move(valueType)), help(std::move(text)), target(std::move(to)) {}

  bool isOption() const { return names.front() == '-'; }
  /// The words a value is one of; none where it may be anything.
  std::vector<std::string> choices() const;

  Argument& required() { return isRequired = true, *this; }
  Argument& showingPreset() { return showsPreset = true, *this; }
  Argument& showing(std::string value) { return preset = std::move(value), *this; }
  Argument& inGroup(std::string purpose) { return group = std::move(purpose), *this; }
  Argument& needing(std::string option) { return needs = std::move(option), *this; }
  Argument& excluding(std::string option) { return excludes = std::move(option), *this; }
};

/// A command as data: what it is called, what it takes and what it does. Parser, help texts, man pages and completions
/// are made from it.
struct Subcommand {
  std::string name;
  std::string help;
  std::vector<Argument> arguments;
  std::vector<Subcommand> commands;  ///< one of them must be named, if there are any
  Run run;                           ///< of one without commands

  Subcommand(std::string commandName, std::string commandHelp)
      : name(std::move(commandName)), help(std::move(commandHelp)) {}

  // Each adds an argument; its reference is good until the next is added.
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

/// For an option that is one of a few words, which stand for values.
template <class Choice>
Take takeChoice(Choice& choice, std::map<std::string, Choice> meanings) {
  return [&choice, meanings = std::move(meanings)](const std::string& word) { choice = meanings.at(word); };
}

/// Text with each of some parts replaced.
std::string replaced(std::string text, const std::string& part, const std::string& by);

/// Reads a command line. Help, the version and complaints are printed here.
/// @param code  receives the exit code where nothing is to be run
/// @return what to run; empty where the line asks for nothing else, or cannot be understood
Run parseCommandLine(const Subcommand& root, const std::string& version, int argc, char** argv, int& code);

}  // namespace Command
