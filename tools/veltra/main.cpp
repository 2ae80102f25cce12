#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <map>
#include <set>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/Version.h>

#include "Commands.h"
#include "Examples.h"
#include "HelpFormatter.h"

namespace {

using namespace Command;

/// An option whose argument is one of a few words. Shells complete what its type says.
template <class Choice>
void addChoice(CLI::App& app, const char* names, Choice& choice, const char* words, const char* description,
               const std::map<std::string, Choice>& meanings) {
  std::set<std::string> known;
  for (const auto& meaning : meanings) known.insert(meaning.first);
  app.add_option_function<std::string>(
         names, [&choice, meanings](const std::string& word) { choice = meanings.at(word); }, description)
      ->check(CLI::IsMember(known).description(""))
      ->type_name(words);
}

void addOptions(CLI::App& app, Options& options) {
  addChoice<Format>(app, "-f,--format", options.format, "table|json|jsonl|csv",
                    "how answers are printed; a table unless given",
                    {{"table", FORMAT_TABLE}, {"json", FORMAT_JSON}, {"jsonl", FORMAT_JSONL}, {"csv", FORMAT_CSV}});
  app.add_flag("-q,--quiet", options.quiet, "no findings in words: the exit code tells");
  app.add_flag("-r,--recursive", options.recursive, "look into directories");
  app.add_option("-j,--jobs", options.jobs, "threads for many files, one a core unless given")->type_name("N");
  app.add_option("--max-size", options.maxSize, "leave out files of more than so many bytes; also 64K, 10M, 1G")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->type_name("BYTES");
  addChoice<Color>(app, "--color", options.color, "auto|always|never",
                   "paint texts; on a terminal unless given, and unless NO_COLOR is set",
                   {{"auto", COLOR_AUTO}, {"always", COLOR_ALWAYS}, {"never", COLOR_NEVER}});
  addChoice<bool>(app, "--progress", options.progress, "auto|never",
                  "a bar on standard error after a second, on a terminal", {{"auto", true}, {"never", false}});
}

void addCommands(CLI::App& app, const Options& options, Run& run) {
  addInfo(app, options, run);
  addList(app, options, run);
  addShow(app, options, run);
  addSummary(app, options, run);
  addDoctor(app, options, run);
  addRecover(app, options, run);
  addReport(app, options, run);
  addAnnotate(app, options, run);
  addExtract(app, options, run);
  addDiff(app, options, run);
  addPack(app, options, run);
  addManifest(app, options, run);
  addNetprofile(app, options, run);
  addIds(app, options, run);
  addTypes(app, options, run);
  addCompletion(app, options, run);
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    command->footer(examplesOf(command->get_name()));
  }
}

/// What the parser says, but for a misspelt command: all it says of that is that a command is missing.
std::string explain(const CLI::ParseError& error, const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  const std::vector<std::string> unknown =
      command->get_require_subcommand_min() > 0 ? app.remaining(true) : std::vector<std::string>();
  const bool isWord = !unknown.empty() && unknown.front().rfind('-', 0) != 0;
  return isWord ? fmt::format("{}: no such command", unknown.front()) : error.what();
}

int runCommand(int argc, char** argv) {
  CLI::App app("Looks at the files of cabling testers, checks, saves and makes them.", "veltra");
  Options options;
  Run run;
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_version_flag("--version", "veltra " VELTRA_VERSION_TEXT);
  app.require_subcommand(1);
  app.fallthrough();
  addOptions(app, options);
  addCommands(app, options, run);
  int code = EXIT_DONE;
  try {
    app.parse(argc, argv);
    setColor(options.color);
    code = run();
  } catch (const CLI::Success& asked) {  // --help and --version
    app.exit(asked);
  } catch (const CLI::ParseError& e) {
    complain(explain(e, app));
    fmt::print(stderr, "Run with --help for more information.\n");
    return EXIT_USAGE;
  }
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  complain("standard output cannot be written");
  return EXIT_COULD_NOT;
}

extern "C" void endBySignal(int signal) {
  Veltra::FileReplacement::removeUnfinished();
  std::signal(signal, SIG_DFL);
  raise(signal);  // delivered when this returns
}

/// Leaves no temporary file when a signal ends the program. One that is ignored stays ignored.
void handleSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    if (std::signal(signal, endBySignal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  std::signal(SIGXFSZ, SIG_IGN);  // writing fails then, and that is said
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");  // widths of characters in tables; numbers stay in the C locale
  handleSignals();
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& e) {  // out of memory, or a closed standard output
    Command::complain(e.what());
    return Command::EXIT_COULD_NOT;
  }
}
