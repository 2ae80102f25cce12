#include "HelpFormatter.h"

#include <fmt/format.h>

namespace Command {
namespace {

/// "veltra manifest new", whatever the program was called as.
std::string fullName(const CLI::App* app) {
  const CLI::App* const parent = app->get_parent();
  return parent == nullptr ? app->get_name() : fullName(parent) + " " + app->get_name();
}

}  // namespace

HelpFormatter::HelpFormatter() {
  constexpr std::size_t OPTION_WIDTH = 32;
  column_width(OPTION_WIDTH);
  label("Positionals", "Arguments");
}

std::string HelpFormatter::make_usage(const CLI::App* app, std::string) const {
  std::string usage = "Usage: " + fullName(app) + " [OPTIONS]";
  for (const CLI::Option* option : app->get_options([](const CLI::Option* o) { return o->get_positional(); })) {
    usage += " " + make_option_usage(option);
  }
  const bool hasCommands = !app->get_subcommands([](const CLI::App* s) { return !s->get_name().empty(); }).empty();
  return usage + (hasCommands ? " COMMAND\n\n" : "\n\n");
}

std::string HelpFormatter::make_description(const CLI::App* app) const {
  return app->get_description() + "\n";
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
  if (mode == CLI::AppFormatMode::Sub) return make_expanded(app);
  return make_usage(app, name) + make_description(app) + make_positionals(app) + make_groups(app, mode) +
         make_subcommands(app, mode) + make_footer(app);
}

/// A group of options under what it is for, or a subcommand with its usage and options.
std::string HelpFormatter::make_expanded(const CLI::App* sub) const {
  if (!sub->get_name().empty()) {
    return "\n" + fullName(sub) + ": " + sub->get_description() + "\n" + make_positionals(sub) +
           make_groups(sub, CLI::AppFormatMode::Sub);
  }
  std::string lines;
  for (const CLI::Option* option : sub->get_options([sub](const CLI::Option* o) { return o != sub->get_help_ptr(); }))
    lines += make_option(option, false);
  return fmt::format("\n{}:\n{}", sub->get_description(), lines);
}

std::string HelpFormatter::make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const {
  std::string text = CLI::Formatter::make_subcommands(app, mode);
  return app->get_parent() == nullptr ? CLI::detail::find_and_replace(text, "Subcommands:", "Commands:")
                                      : CLI::detail::find_and_replace(text, "\nSubcommands:\n", "");
}

std::string HelpFormatter::make_subcommand(const CLI::App* sub) const {
  const bool isNested = sub->get_parent()->get_parent() != nullptr;
  return isNested ? make_expanded(sub) : CLI::Formatter::make_subcommand(sub);
}

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
  if (isPositional) return option->get_type_name();
  return CLI::detail::find_and_replace(option->get_name(false, true), ",", ", ");
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  if (option->get_positional() || option->get_items_expected_max() == 0) return "";
  const std::string& preset = option->get_default_str();
  return " " + option->get_type_name() + (preset.empty() ? "" : " (" + preset + ")");
}

std::string HelpFormatter::make_option_usage(const CLI::Option* option) const {
  return option->get_required() ? option->get_type_name() : "[" + option->get_type_name() + "]";
}

}  // namespace Command
