#pragma once

#include <CLI/CLI.hpp>

namespace Command {

/// Help texts as people and help2man read them: the usage first, arguments by what they stand for, the subcommands of a
/// subcommand with their own options.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter();
  std::string make_usage(const CLI::App* app, std::string name) const override;
  std::string make_description(const CLI::App* app) const override;
  std::string make_expanded(const CLI::App* sub) const override;
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override;
  std::string make_subcommand(const CLI::App* sub) const override;
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override;
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_usage(const CLI::Option* option) const override;
};

}  // namespace Command
