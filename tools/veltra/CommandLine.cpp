#include "CommandLine.h"

#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <sstream>
#include <type_traits>
#include <utility>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "Output.h"
#include "Texts.h"

namespace Command {
namespace {

/// "veltra manifest new", whatever name the program was called by.
std::string fullName(const CLI::App* app) {
  const CLI::App* const parent = app->get_parent();
  return parent == nullptr ? app->get_name() : fullName(parent) + " " + app->get_name();
}

/// Help texts for people and help2man: the usage first, arguments by their placeholders, the subcommands of a
/// subcommand with their own options.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() { label("Positionals", "Arguments"); }

  std::string make_usage(const CLI::App* app, std::string) const override {
    std::string usage = "Usage: " + fullName(app) + " [OPTIONS]";
    for (const CLI::Option* option : app->get_options([](const CLI::Option* o) { return o->get_positional(); })) {
      usage += " " + make_option_usage(option);
    }
    const bool hasCommands = !app->get_subcommands([](const CLI::App* s) { return !s->get_name().empty(); }).empty();
    return usage + (hasCommands ? " COMMAND\n\n" : "\n\n");
  }

  std::string make_description(const CLI::App* app) const override {
    const std::string more = app->get_parent() == nullptr || app->get_parent()->get_parent() == nullptr
                                 ? descriptionOf(app->get_name())
                                 : std::string();
    return app->get_description() + "\n" + (more.empty() ? "" : "\n" + more);
  }

  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    if (mode == CLI::AppFormatMode::Sub) return make_expanded(app);
    return make_usage(app, name) + make_description(app) + make_positionals(app) + make_groups(app, mode) +
           make_subcommands(app, mode) + make_footer(app);
  }

  /// A group of options under its purpose, or a subcommand with its usage and options.
  std::string make_expanded(const CLI::App* sub) const override {
    if (!sub->get_name().empty()) {
      return "\n" + fullName(sub) + ": " + sub->get_description() + "\n" + make_positionals(sub) +
             make_groups(sub, CLI::AppFormatMode::Sub);
    }
    std::string lines;
    for (const CLI::Option* option :
         sub->get_options([sub](const CLI::Option* o) { return o != sub->get_help_ptr(); })) {
      lines += make_option(option, false);
    }
    return fmt::format("\n{}:\n{}", sub->get_description(), lines);
  }

  // The formatter's own functions write to streams, which keep quiet about memory that runs out.

  std::string make_group(std::string group, bool isPositional, std::vector<const CLI::Option*> options) const override {
    std::string text = "\n" + group + ":\n";
    for (const CLI::Option* option : options) text += make_option(option, isPositional);
    return text;
  }

  std::string make_groups(const CLI::App* app, CLI::AppFormatMode mode) const {
    std::string text;
    for (const std::string& group : app->get_groups()) {
      const auto isShown = [&](const CLI::Option* option) {
        const bool isHelp = mode == CLI::AppFormatMode::Sub && option == app->get_help_ptr();
        return option->get_group() == group && option->nonpositional() && !isHelp;
      };
      const std::vector<const CLI::Option*> options = app->get_options(isShown);
      if (!group.empty() && !options.empty()) text += make_group(group, false, options);
    }
    return text;
  }

  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
    std::string groups, commands;
    for (const CLI::App* sub : app->get_subcommands([](const CLI::App*) { return true; })) {
      if (sub->get_name().empty()) {
        groups += make_expanded(sub);
      } else {
        commands += make_subcommand(sub);
      }
    }
    const bool isFirst = app->get_parent() == nullptr && !commands.empty();
    return groups + (isFirst ? "\nCommands:\n" : "") + commands;
  }

  std::string make_subcommand(const CLI::App* sub) const override {
    const bool isNested = sub->get_parent()->get_parent() != nullptr;
    return isNested ? make_expanded(sub) : row(sub->get_name(), sub->get_description());
  }

  std::string make_option(const CLI::Option* option, bool isPositional) const override {
    return row(make_option_name(option, isPositional) + make_option_opts(option), make_option_desc(option));
  }

  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    return isPositional ? option->get_type_name() : replaced(option->get_name(false, true), ",", ", ");
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_positional() || option->get_items_expected_max() == 0) return "";
    const std::string& preset = option->get_default_str();
    return " " + option->get_type_name() + (preset.empty() ? "" : " (" + preset + ")");
  }

  std::string make_option_usage(const CLI::Option* option) const override {
    return option->get_required() ? option->get_type_name() : "[" + option->get_type_name() + "]";
  }

 private:
  static constexpr std::size_t WIDTH = 32;  ///< of the column with the names

  static std::string row(const std::string& name, const std::string& about) {
    const std::string first = fmt::format("{:<{}}", "  " + name, WIDTH);
    return first + (first.size() > WIDTH - 1 && first.back() != ' ' ? "\n" + std::string(WIDTH, ' ') : "") + about +
           "\n";
  }
};

// One overload for each kind of target: what the parser makes of the argument.

CLI::Option* known(CLI::App&, const Argument&, std::monostate) {
  return nullptr;
}

CLI::Option* known(CLI::App& app, const Argument& argument, bool* target) {
  return app.add_flag(argument.names, *target, argument.help);
}

template <class Value>
CLI::Option* known(CLI::App& app, const Argument& argument, Value* target) {
  return app.add_option(argument.names, *target, argument.help);
}

template <class Value>
CLI::Option* known(CLI::App& app, const Argument& argument, std::optional<Value>* target) {
  return app.add_option_function<Value>(
      argument.names, [target](const Value& value) { *target = value; }, argument.help);
}

CLI::Option* known(CLI::App& app, const Argument& argument, const Take& take) {
  return app.add_option_function<std::string>(argument.names, take, argument.help);
}

void checkValue(const Argument& argument, CLI::Option& option) {
  const std::vector<std::string> words = argument.choices();
  if (std::holds_alternative<uint64_t*>(argument.target)) {
    option.transform(CLI::AsSizeValue(false).description(""));
  } else if (std::holds_alternative<int*>(argument.target) && !words.empty()) {
    option.check(CLI::Range(std::stoi(words.front()), std::stoi(words.back())).description(""));
  } else if (!words.empty()) {
    option.check(CLI::IsMember(std::set<std::string>(words.begin(), words.end())).description(""));
  }
}

void addArguments(CLI::App& app, const Subcommand& command) {
  std::map<std::string, CLI::App*> groups;
  std::map<std::string, CLI::Option*> options;
  for (const Argument& argument : command.arguments) {
    CLI::App* place = &app;
    if (!argument.group.empty()) {
      CLI::App*& group = groups[argument.group];
      if (group == nullptr) {
        group = app.add_option_group("what", argument.group);
        group->require_option(0, 1);
      }
      place = group;
    }
    CLI::Option* const option =
        std::visit([&](const auto& target) { return known(*place, argument, target); }, argument.target);
    if (option == nullptr) continue;
    options[argument.names] = option;
    checkValue(argument, *option);
    if (!argument.type.empty()) option->type_name(argument.type);
    if (argument.isRepeated) option->allow_extra_args(false);
    if (argument.isRequired) option->required();
    if (argument.showsPreset) option->capture_default_str();
    if (!argument.preset.empty()) option->default_str(argument.preset);
    if (!argument.needs.empty()) option->needs(options.at(argument.needs));
    if (!argument.excludes.empty()) option->excludes(options.at(argument.excludes));
  }
}

using LineWords = std::set<std::string>;

/// @param words   what stands on the line: of the first commands, those not among them get a name and a help line alone
/// @param chosen  receives the action of the command on the line
void addCommand(CLI::App& app, const Subcommand& command, const LineWords& words, Run& chosen) {
  if (command.commands.empty()) {
    app.callback([&command, &chosen] { chosen = command.run; });
  } else {
    app.require_subcommand(1);
    app.fallthrough();  // commands inherit what is set up to here
  }
  addArguments(app, command);
  for (const Subcommand& sub : command.commands) {
    CLI::App* const added = app.add_subcommand(sub.name, sub.help);
    const bool isFirst = app.get_parent() == nullptr;
    if (isFirst && words.count(sub.name) == 0) continue;
    addCommand(*added, sub, words, chosen);
    if (isFirst) added->footer(examplesOf(sub.name));
  }
}

/// How many characters must be added, removed or changed to make one word of the other.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// "doctr: no such command; did you mean doctor?"
std::string noSuchCommand(const std::string& word, const CLI::App& parent) {
  constexpr std::size_t CLOSE = 2;
  constexpr std::size_t LONGEST = 32;  // no command's name is nearly as long
  if (word.empty()) return "expected the name of a command, found an empty word";
  std::size_t least = CLOSE + 1;
  std::string closest;
  for (const CLI::App* command : parent.get_subcommands([](const CLI::App* c) { return !c->get_name().empty(); })) {
    const std::size_t distance = word.size() > LONGEST ? least : editDistance(word, command->get_name());
    if (distance >= least) continue;
    least = distance;
    closest = command->get_name();
  }
  return fmt::format("{}: no such command{}", word, closest.empty() ? "" : "; did you mean " + closest + "?");
}

int usageError(const std::string& text) {
  complain(text);
  fmt::print(stderr, "Run with --help for more information.\n");
  return EXIT_USAGE;
}

/// "-x: no such option; the file of this name is ./-x". Empty if the error is about something else.
std::string noSuchOption(const CLI::ParseError& error, const CLI::App& app) {
  const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (!isMissing && dynamic_cast<const CLI::ExtrasError*>(&error) == nullptr) return {};
  for (const std::string& word : app.remaining(true)) {
    if (word == "--") break;
    if (word.size() < 2 || word[0] != '-') continue;
    const bool isFile = access(word.c_str(), F_OK) == 0;
    const std::string path = fmt::format("./{}", word);
    const std::string hint = isFile ? "; the file of this name is " + Inspect::shellWord(path, charset()) : "";
    return fmt::format("{}: no such option{}", word, hint);
  }
  return {};
}

/// The parser's message, except for a misspelt command, of which it only says that a command is missing, and for an
/// option that there is not.
std::string explain(const CLI::ParseError& error, const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  const std::vector<std::string> unknown =
      command->get_require_subcommand_min() > 0 ? app.remaining(true) : std::vector<std::string>();
  const bool isWord = !unknown.empty() && unknown.front().rfind('-', 0) != 0;
  if (isWord) return noSuchCommand(unknown.front(), *command);
  if (std::string option = noSuchOption(error, app); !option.empty()) return option;
  const bool lacksCommand = command->get_require_subcommand_min() > 0 && command->get_subcommands().empty();
  return lacksCommand && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ? "A command is required"
                                                                                    : error.what();
}

void prepare(CLI::App& app, const Subcommand& root, const std::string& version, const LineWords& words, Run& chosen) {
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_version_flag("--version", version);
  addCommand(app, root, words, chosen);
}

}  // namespace

std::vector<std::string> Argument::choices() const {
  std::vector<std::string> words;
  if (type.find('|') == std::string::npos) return words;
  std::istringstream list(type);
  for (std::string word; std::getline(list, word, '|');) words.push_back(word);
  return words;
}

std::string replaced(std::string text, const std::string& part, const std::string& by) {
  return CLI::detail::find_and_replace(std::move(text), part, by);
}

Run parseCommandLine(const Subcommand& root, const std::string& version, int argc, char** argv, int& code) {
  CLI::App app(root.help, root.name);
  Run chosen;
  prepare(app, root, version, LineWords(argv, argv + argc), chosen);
  try {
    app.parse(argc, argv);
    return chosen;
  } catch (const CLI::Success& asked) {  // --help and --version
    app.exit(asked);
    code = EXIT_DONE;
  } catch (const CLI::ParseError& e) {
    code = usageError(explain(e, app));
  }
  return {};
}

int printHelp(const Subcommand& root, const std::vector<std::string>& words) {
  CLI::App app(root.help, root.name);
  Run chosen;
  prepare(app, root, "", LineWords(words.begin(), words.end()), chosen);
  const CLI::App* command = &app;
  for (const std::string& word : words) {
    const auto isNamed = [&word](const CLI::App* c) { return !word.empty() && c->get_name() == word; };
    const std::vector<const CLI::App*> named = command->get_subcommands(isNamed);
    if (named.empty()) return usageError(noSuchCommand(word, *command));
    command = named.front();
  }
  fmt::print("{}", command->help());
  return EXIT_DONE;
}

}  // namespace Command
