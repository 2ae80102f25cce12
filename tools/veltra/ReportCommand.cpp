#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>

#include <fmt/format.h>

#include <libinspect/container/SafeFile.h>
#include <libinspect/report/ReportPage.h>

#include "Commands.h"

namespace Command {
namespace {

namespace fs = std::filesystem;

struct ReportArguments {
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
int readJob(const ReportArguments& args, const Options& options, Inspect::JobFiles& job) {
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

int report(const ReportArguments& args, const Options& options) {
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
  if (!Inspect::writeSafely(args.output, page.data(), page.size(), error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
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

Subcommand reportCommand(const Options& options) {
  const auto args = std::make_shared<ReportArguments>();
  Subcommand command("report", "One page about many results, to print or to hand over");
  command.place("PATH", "PATH...", &args->paths, "result files, or directories with -r").required();
  command.option("-o,--output", "PAGE", &args->output, "the page to write, HTML").required();
  command.option("--expect", "FIRST..LAST", &args->expected,
                 "the IDs of the job: which are missing, doubled or foreign");
  command.option("--title", "TEXT", &args->title, "the page's headline").showingPreset();
  command.flag("--force", args->force, "replace an existing file");
  command.run = [args, &options] { return report(*args, options); };
  return command;
}

}  // namespace Command
