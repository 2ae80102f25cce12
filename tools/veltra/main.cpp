#include <clocale>
#include <cstdio>
#include <exception>
#include <map>

#include <CLI/CLI.hpp>

#include <libcrossplatform/common/Version.h>

#include "Commands.h"

namespace {

int runCommand(int argc, char** argv) {
  using namespace Command;
  CLI::App app("Packs, lists and shows the files of cabling testers.", "veltra");
  Options options;
  Run run;
  app.set_version_flag("--version", "veltra " VELTRA_VERSION_TEXT);
  app.require_subcommand(1);
  app.fallthrough();
  const std::map<std::string, Format> formats{
      {"table", FORMAT_TABLE}, {"json", FORMAT_JSON}, {"jsonl", FORMAT_JSONL}, {"csv", FORMAT_CSV}};
  app.add_option("-f,--format", options.format, "table, json, jsonl or csv")
      ->transform(CLI::Transformer(formats))
      ->type_name("FORMAT");
  app.add_flag("-q,--quiet", options.quiet, "no findings in words: the exit code tells");
  app.add_flag("-r,--recursive", options.recursive, "look into directories");
  app.add_option("-j,--jobs", options.jobs, "threads for many files, one a core unless given")->type_name("N");
  addPack(app, options, run);
  addInfo(app, options, run);
  addList(app, options, run);
  addShow(app, options, run);
  addIds(app, options, run);
  addSummary(app, options, run);
  addReport(app, options, run);
  addAnnotate(app, options, run);
  addExtract(app, options, run);
  addDiff(app, options, run);
  addTypes(app, options, run);
  addDoctor(app, options, run);
  addRecover(app, options, run);
  addManifest(app, options, run);
  addNetprofile(app, options, run);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? EXIT_DONE : EXIT_USAGE;  // --help and --version are no errors
  }
  const int code = run();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  complain("standard output cannot be written");
  return EXIT_COULD_NOT;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");  // widths of characters in tables; numbers stay in the C locale
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& e) {  // out of memory, or a closed standard output
    Command::complain(e.what());
    return Command::EXIT_COULD_NOT;
  }
}
