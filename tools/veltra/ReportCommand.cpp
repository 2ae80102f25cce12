#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include <libinspect/report/ReportPage.h>

#include "Commands.h"

namespace Command {
namespace {

struct ReportArguments {
  std::vector<std::string> paths;
  std::vector<std::string> expected;
  std::string output;
  std::string title = "Cable test report";
  bool force = false;
};

int report(const ReportArguments& args, const Options& options) {
  Inspect::ExpectedIds expected;
  if (!takeExpected(args.expected, expected)) return EXIT_USAGE;
  if (refusesToReplace(args.output, args.force, args.paths)) return EXIT_COULD_NOT;
  int code = EXIT_DONE;
  std::size_t passedOver = 0;
  std::vector<std::string> files = filesOf(args.paths, options, code, passedOver);
  if (code == EXIT_COULD_NOT) return code;  // nobody can say what the page would leave out
  Inspect::leaveOutPage(files, args.output);
  if (refusesToReplace(args.output, true, files)) return EXIT_COULD_NOT;
  if (args.expected.empty() && complainsOfNoFiles(args.paths, files)) return EXIT_COULD_NOT;
  const Inspect::FileRun run(std::move(files), args.paths, options.maxSize, passedOver);
  Inspect::JobFiles job = readJob(run, options, code, EXIT_WITH_LOSS);
  const bool isUnread = !job.unread.empty();
  if ((args.expected.empty() || isUnread) && complainsOfNoResults(args.paths, job)) return EXIT_COULD_NOT;
  if (!args.expected.empty()) job.expected = &expected;
  if (job.expected != nullptr) code = worse(code, codeOf(job.coverageOf(expected)));
  const std::string page = Inspect::reportPage(job, args.title);
  if (!saveOutput(args.output, page.data(), page.size())) return EXIT_COULD_NOT;
  const auto damaged =
      std::count_if(job.notes.begin(), job.notes.end(), [](const Inspect::FileNote& note) { return note.isDamaged; });
  Json::Value json(Json::objectValue);
  json["file"] = args.output;
  json["results"] = static_cast<Json::UInt64>(job.rows.size());
  json["damaged"] = static_cast<Json::Int64>(damaged);
  json["unread"] = static_cast<Json::UInt64>(job.unread.size());
  json["otherFiles"] = static_cast<Json::UInt64>(job.others);
  const std::string text =
      fmt::format("{}: {}, {} damaged, {} not read\n", printable(args.output), counted(job.rows.size(), "result"),
                  counted(static_cast<std::size_t>(damaged), "file"), job.unread.size());
  printDocument({[&] { return text; }, [&] { return json; }, {}, {}}, options);
  return code;
}

}  // namespace

Subcommand reportCommand(const Options& options) {
  const auto args = std::make_shared<ReportArguments>();
  Subcommand command("report", "One page about many results, to print or to hand over");
  command.place("PATH", "PATH...", &args->paths, "result files, or directories with -r").required();
  command.option("-o,--output", "PAGE", &args->output, "the page to write, HTML").required();
  addExpect(command, args->expected);
  command.option("--title", "TEXT", &args->title, "the page's headline").showingPreset();
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] { return report(*args, options); };
  return command;
}

}  // namespace Command
