#include <map>
#include <memory>
#include <sstream>

#include <fmt/format.h>

#include "Commands.h"

namespace Command {
namespace {

using Described = std::pair<std::string, std::string>;  ///< a word, and what it stands for

/// What may follow one command on the command line; the options of the commands before it may, too.
struct Words {
  std::string path;  ///< "veltra", "veltra manifest", "veltra manifest new"
  std::vector<Described> commands;
  std::vector<Described> options;
};

/// The words of all command lines.
struct Grammar {
  std::vector<Words> all;
  std::map<std::string, std::string> choices;  ///< options that take one of a few words: these, separated by spaces
  std::string others;                          ///< options that take something else, as a pattern: "--jobs|-j"
};

/// "-s,--section" as "--section" and "-s".
std::vector<std::string> namesOf(const Argument& option) {
  std::vector<std::string> names;
  std::istringstream list(option.names);
  for (std::string name; std::getline(list, name, ',');) {
    const bool isLong = name.rfind("--", 0) == 0;
    names.insert(isLong ? names.begin() : names.end(), name);
  }
  return names;
}

void addOption(const Argument& option, Words& words, Grammar& grammar) {
  const std::vector<std::string> names = namesOf(option);
  words.options.emplace_back(names.front(), option.help);
  if (option.type.empty()) return;
  for (const std::string& name : names) {
    if (option.choices().empty()) {
      grammar.others += (grammar.others.empty() ? "" : "|") + name;
    } else {
      grammar.choices[name] = replaced(option.type, "|", " ");
    }
  }
}

void collect(const Subcommand& command, const std::string& parent, const Subcommand& root, Grammar& grammar) {
  const std::size_t at = grammar.all.size();
  grammar.all.emplace_back();
  Words words;
  words.path = parent + command.name;
  for (const bool isGrouped : {false, true}) {
    for (const Argument& argument : command.arguments) {
      if (argument.isOption() && argument.group.empty() != isGrouped) addOption(argument, words, grammar);
    }
  }
  for (const Subcommand& sub : command.commands) {
    words.commands.emplace_back(sub.name, sub.help);
    collect(sub, words.path + " ", root, grammar);
  }
  for (const Argument& argument : command.arguments) {
    if (argument.isOption()) continue;
    for (const std::string& word : argument.choices()) words.commands.emplace_back(word, word);
    if (argument.isCommand) {
      for (const Subcommand& any : root.commands) words.commands.emplace_back(any.name, any.help);
    }
  }
  grammar.all[at] = words;
}

std::string inQuotes(const std::string& text) {
  return "'" + replaced(text, "'", "'\\''") + "'";
}

/// A case pattern of all commands below the first.
std::string knownPaths(const Grammar& grammar) {
  std::string known;
  for (const Words& words : grammar.all) {
    if (words.path.find(' ') != std::string::npos) known += (known.empty() ? "" : "|") + inQuotes(words.path);
  }
  return known;
}

/// One line for each command; `line` gets its words.
template <class Line>
std::string casesOf(const Grammar& grammar, const Line& line) {
  std::string cases;
  for (const Words& words : grammar.all) cases += fmt::format("      {}) {} ;;\n", inQuotes(words.path), line(words));
  return cases;
}

std::string choicesOf(const Grammar& grammar, const char* command) {
  std::string cases;
  for (const auto& [name, words] : grammar.choices) {
    cases += fmt::format("    {}) {}; return ;;\n", name, fmt::format(fmt::runtime(command), words));
  }
  return cases;
}

std::string bashScript(const Grammar& grammar) {
  const auto namesOf = [](const std::vector<Described>& words) {
    std::string names;
    for (const Described& word : words) names += " " + word.first;
    return names;
  };
  const std::string cases = casesOf(grammar, [&](const Words& words) {
    return fmt::format("commands='{}' options+='{}'", namesOf(words.commands), namesOf(words.options));
  });
  return fmt::format(
      "# bash completion of veltra, made by \"veltra completion bash\"\n"
      "_veltra() {{\n"
      "  local path= commands= options= current=${{COMP_WORDS[COMP_CWORD]}} before=$((COMP_CWORD - 1)) i\n"
      "  # bash takes the sign of --option=value for a word.\n"
      "  [[ $current != = ]] || current=\n"
      "  [[ ${{COMP_WORDS[before]}} != = ]] || ((--before))\n"
      "  case ${{COMP_WORDS[before]}} in\n"
      "{}"
      "    {}) COMPREPLY=(); return ;;\n"
      "  esac\n"
      "  for ((i = 0; i < COMP_CWORD; ++i)); do\n"
      "    case $i,\"$path ${{COMP_WORDS[i]}}\" in\n"
      "      0,*) path=veltra ;;\n"
      "      *,{}) path+=\" ${{COMP_WORDS[i]}}\" ;;\n"
      "      *) continue ;;\n"
      "    esac\n"
      "    case $path in\n"
      "{}"
      "    esac\n"
      "  done\n"
      "  mapfile -t COMPREPLY < <(compgen -W \"$commands $options\" -- \"$current\")\n"
      "}}\n"
      "complete -o default -F _veltra veltra\n",
      choicesOf(grammar, "mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$current\")"), grammar.others,
      replaced(knownPaths(grammar), "|", "|*,"), cases);
}

std::string zshScript(const Grammar& grammar) {
  const auto listOf = [](const std::vector<Described>& words) {
    std::string list;
    for (const Described& word : words) {
      list += " " + inQuotes(replaced(word.first, ":", "\\:") + ":" + word.second);
    }
    return list;
  };
  const std::string cases = casesOf(grammar, [&](const Words& words) {
    return fmt::format("commands=({}) options+=({})", listOf(words.commands), listOf(words.options));
  });
  return fmt::format(
      "#compdef veltra\n"
      "# zsh completion of veltra, made by \"veltra completion zsh\"\n"
      "_veltra() {{\n"
      "  local called= i\n"
      "  local -a commands options\n"
      "  case $words[CURRENT-1] in\n"
      "{}"
      "    {}) _files; return ;;\n"
      "  esac\n"
      "  for ((i = 1; i < CURRENT; ++i)); do\n"
      "    case $i,\"$called $words[i]\" in\n"
      "      1,*) called=veltra ;;\n"
      "      *,{}) called+=\" $words[i]\" ;;\n"
      "      *) continue ;;\n"
      "    esac\n"
      "    case $called in\n"
      "{}"
      "    esac\n"
      "  done\n"
      "  if [[ $words[CURRENT] == -* ]]; then\n"
      "    _describe option options\n"
      "  elif (( $#commands )); then\n"
      "    _describe command commands\n"
      "  else\n"
      "    _files\n"
      "  fi\n"
      "}}\n"
      "compdef _veltra veltra\n",
      choicesOf(grammar, "compadd {}"), grammar.others, replaced(knownPaths(grammar), "|", "|*,"), cases);
}

int completion(const std::string& shell, const Subcommand& root) {
  Grammar grammar;
  collect(root, "", root, grammar);
  fmt::print("{}", shell == "bash" ? bashScript(grammar) : zshScript(grammar));
  return EXIT_DONE;
}

}  // namespace

Subcommand completionCommand(const Subcommand& root) {
  const auto shell = std::make_shared<std::string>();
  Subcommand command("completion", "Print a completion script for a shell to source");
  command.place("SHELL", "bash|zsh", shell.get(), "the shell").required();
  command.run = [shell, &root] { return completion(*shell, root); };
  return command;
}

}  // namespace Command
