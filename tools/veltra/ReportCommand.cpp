#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>

#include <fmt/format.h>

#include <libinspect/report/ReportPage.h>

#include "Commands.h"

namespace Command {
namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::vector<std::string> paths;
  std::string expected;
  std::string output;
  std::string title = "Cable test report";
  bool force = false;
};

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code missing;
  return fs::equivalent(a, b, missing);
}

/// Reads the job. What could not be read was complained of.
/// @return as readResults()
int readJob(const Arguments& args, const Options& options, Inspect::JobFiles& job) {
  std::vector<std::string> files;
  int code = filesOf(args.paths, options, files) ? EXIT_DONE : EXIT_COULD_NOT;
  // The page of last time stands among the files of the job.
  files.erase(std::remove_if(files.begin(), files.end(),
                             [&args](const std::string& file) { return isSameFile(file, args.output); }),
              files.end());
  Options listed = options;
  listed.recursive = false;
  std::set<std::string> read;
  code = worse(code, readResults(files, listed, job.rows, [&](const Inspect::FileSummary& file) {
                 read.insert(file.report.name);
                 if (!file.report.findings.empty()) {
                   job.notes.push_back(noteOf(file.report));
                 } else if (!file.hasSummary) {
                   job.withoutResult.push_back(file.report.name);
                 }
               }));
  for (const std::string& file : files) {
    if (file != "-" && read.count(file) == 0) job.unread.push_back(file);
  }
  std::sort(job.notes.begin(), job.notes.end(), [](const Inspect::FileNote& a, const Inspect::FileNote& b) {
    return Inspect::comesBefore(a.file, b.file);
  });
  std::sort(job.withoutResult.begin(), job.withoutResult.end(), Inspect::comesBefore);
  return code;
}

int report(const Arguments& args, const Options& options) {
  Inspect::CableIdSet expected;
  Inspect::JobFiles job;
  std::string error;
  if (!args.expected.empty()) {
    if (!parseExpected(args.expected, expected, error)) {
      complain(error);
      return EXIT_USAGE;
    }
    job.expected = &expected;
  }
  if (refusesToReplace(args.output, args.force)) return EXIT_COULD_NOT;
  for (const std::string& path : args.paths) {
    if (refusesToReplaceInput(path, args.output)) return EXIT_COULD_NOT;
  }
  int code = readJob(args, options, job);
  if (job.expected != nullptr) code = worse(code, codeOf(coverageOf(job.rows, expected)));
  const std::string page = Inspect::reportPage(job, args.title);
  if (!saveOutput(args.output, page.data(), page.size())) return EXIT_COULD_NOT;
  const auto damaged =
      std::count_if(job.notes.begin(), job.notes.end(), [](const Inspect::FileNote& note) { return note.isDamaged; });
  Json::Value json(Json::objectValue);
  json["file"] = args.output;
  json["results"] = static_cast<Json::UInt64>(job.rows.size());
  json["damaged"] = static_cast<Json::Int64>(damaged);
  json["unread"] = static_cast<Json::UInt64>(job.unread.size());
  const std::string text = fmt::format("{}: {} results, {} files damaged, {} not read\n", printable(args.output),
                                       job.rows.size(), damaged, job.unread.size());
  printDocument({text, json, {}, {}}, options);
  return code;
}

}  // namespace

void addReport(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("report", "One page about many results, to print or to hand over");
  const auto args = std::make_shared<Arguments>();
  command->add_option("PATH", args->paths, "result files, or directories with -r")->required()->type_name("PATH...");
  command->add_option("-o,--output", args->output, "the page to write, HTML")->required()->type_name("PAGE");
  command->add_option("--expect", args->expected, "the IDs of the job: which are missing, doubled or foreign")
      ->type_name("FIRST..LAST");
  command->add_option("--title", args->title, "the page's headline")->capture_default_str();
  command->add_flag("--force", args->force, "replace an existing file");
  command->callback([args, &options, &run] { run = [args, &options] { return report(*args, options); }; });
}

}  // namespace Command
