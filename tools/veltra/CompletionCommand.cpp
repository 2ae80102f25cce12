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

/// A whole command line's words.
struct Grammar {
  std::vector<Words> all;
  std::map<std::string, std::string> choices;  ///< options that take one of a few words: those, blanks between
  std::string others;                          ///< options that take something else, as a pattern: "--jobs|-j"
};

void addOptions(const CLI::App& app, bool isRoot, Words& words, Grammar& grammar) {
  for (const CLI::Option* option : app.get_options([](const CLI::Option* o) { return o->nonpositional(); })) {
    if (option == app.get_help_ptr() && !isRoot) continue;
    std::vector<std::string> names;
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    words.options.emplace_back(names.front(), option->get_description());
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    if (option->get_items_expected_max() == 0) continue;
    const std::string type = option->get_type_name();
    for (const std::string& name : names) {
      if (type.find('|') != std::string::npos) {
        grammar.choices[name] = CLI::detail::find_and_replace(type, "|", " ");
      } else {
        grammar.others += (grammar.others.empty() ? "" : "|") + name;
      }
    }
  }
}

void collect(const CLI::App& app, const std::string& parent, Grammar& grammar) {
  const std::size_t at = grammar.all.size();
  grammar.all.emplace_back();
  Words words;
  words.path = parent + app.get_name();
  addOptions(app, parent.empty(), words, grammar);
  for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (sub->get_name().empty()) {
      addOptions(*sub, false, words, grammar);
    } else {
      words.commands.emplace_back(sub->get_name(), sub->get_description());
      collect(*sub, words.path + " ", grammar);
    }
  }
  for (const CLI::Option* option : app.get_options([](const CLI::Option* o) { return o->get_positional(); })) {
    if (option->get_type_name().find('|') == std::string::npos) continue;
    std::stringstream choices(option->get_type_name());
    for (std::string word; std::getline(choices, word, '|');) words.commands.emplace_back(word, word);
  }
  grammar.all[at] = words;
}

std::string inQuotes(const std::string& text) {
  return "'" + CLI::detail::find_and_replace(text, "'", "'\\''") + "'";
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
      "  local path= commands= options= current=${{COMP_WORDS[COMP_CWORD]}} i\n"
      "  case ${{COMP_WORDS[COMP_CWORD - 1]}} in\n"
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
      CLI::detail::find_and_replace(knownPaths(grammar), "|", "|*,"), cases);
}

std::string zshScript(const Grammar& grammar) {
  const auto listOf = [](const std::vector<Described>& words) {
    std::string list;
    for (const Described& word : words) {
      list += " " + inQuotes(CLI::detail::find_and_replace(word.first, ":", "\\:") + ":" + word.second);
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
      choicesOf(grammar, "compadd {}"), grammar.others, CLI::detail::find_and_replace(knownPaths(grammar), "|", "|*,"),
      cases);
}

int completion(const std::string& shell, const CLI::App& app) {
  Grammar grammar;
  collect(app, "", grammar);
  fmt::print("{}", shell == "bash" ? bashScript(grammar) : zshScript(grammar));
  return EXIT_DONE;
}

}  // namespace

void addCompletion(CLI::App& app, const Options&, Run& run) {
  CLI::App* const command = app.add_subcommand("completion", "Print the completion of a shell, to be sourced by it");
  const auto shell = std::make_shared<std::string>();
  command->add_option("SHELL", *shell, "the shell")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh"}).description(""))
      ->type_name("bash|zsh");
  command->callback([shell, &app, &run] { run = [shell, &app] { return completion(*shell, app); }; });
}

}  // namespace Command
