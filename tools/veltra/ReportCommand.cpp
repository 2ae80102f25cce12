#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/job/JobStatus.h>
#include <libinspect/report/HeldSections.h>
#include <libinspect/report/Report.h>
#include <libinspect/report/ReportPage.h>

#include "Commands.h"

namespace Command {
namespace {

struct ReportArguments {
  JobArguments job;
  std::string output;
  std::string title;
  std::optional<std::string> timeZone;
  Inspect::Edition edition = Inspect::Edition::CUSTOMER;
  bool details = false;
  bool force = false;
};

/// Writes the page so that the whole old or the whole new one exists at any time. @return false, with a complaint
bool savePage(const std::string& path, const Inspect::Job& job, const Inspect::ReportForm& form,
              const Inspect::TimeZone& zone, std::vector<Inspect::UnreadAgain>& unread) {
  Veltra::FileReplacement file;
  const auto write = [&file](std::string_view piece) { return file.write(piece.data(), piece.size()); };
  if (file.open(path) && writeReport(job, form, zone, write, unread) && file.commit()) return true;
  complain(fmt::format("{}: {}", path, std::strerror(errno)));
  return false;
}

/// @return true, with a complaint, for the name of a description: the page would be taken for that of its folder
bool refusesToBeDescription(const std::string& path) {
  if (std::filesystem::path(path).filename() != Inspect::JobDescription::FILE_NAME) return false;
  complain(path + ": expected the name of a page, found that of a job's description");
  return true;
}

int report(const ReportArguments& args, const Options& options) {
  Inspect::Job job;
  Inspect::TimeZone zone;
  Inspect::ReportForm form;
  std::string error;
  int code = EXIT_DONE;
  if (!describeJob(args.job, job, code)) return code;
  if (args.timeZone ? !zone.use(*args.timeZone, error) : !Inspect::TimeZone::checkMachine(error)) {
    complain(error);
    return EXIT_USAGE;
  }
  const std::string& logo = job.description.logo;
  if (!logo.empty() && !readLogo(logo, form.logo, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  if (refusesToBeDescription(args.output) || refusesToReplace(args.output, args.force, args.job.paths))
    return EXIT_COULD_NOT;
  Options recursive = options;
  recursive.recursive = true;
  std::size_t passedOver = 0;
  std::vector<std::string> files = filesOf(args.job.paths, recursive, code, passedOver);
  if (code == EXIT_COULD_NOT) return code;  // nobody can say what the page would leave out
  for (const std::string& known : {job.descriptionFile, logo}) {
    if (!known.empty()) Inspect::leaveOutDescription(files, known);
    if (!known.empty() && refusesToReplace(args.output, true, {known})) return EXIT_COULD_NOT;
  }
  Inspect::leaveOutPage(files, args.output);
  if (refusesToReplace(args.output, true, files)) return EXIT_COULD_NOT;
  const bool expectsNone = job.expected.empty();
  if (expectsNone && complainsOfNoFiles(args.job.paths, files)) return EXIT_COULD_NOT;
  const Inspect::FileRun run(std::move(files), args.job.paths, options.maxSize, passedOver);
  job.files = readJob(run, options, code, EXIT_WITH_LOSS);
  if ((expectsNone || !job.files.unread.empty()) && complainsOfNoResults(args.job.paths, job.files))
    return EXIT_COULD_NOT;
  job.settle(args.job.policy);
  const Inspect::JobStatus status = statusOf(job);
  if (status.all.missing + status.all.damaged > 0 || (!expectsNone && !status.foreign.empty()))
    code = worse(code, EXIT_NO);

  form.edition = args.edition;
  form.showsDetails = args.details;
  form.title = args.title;
  Inspect::ReadingOptions reading;
  reading.threads = options.jobs;
  form.instruments = Inspect::instrumentsOf(countedFiles(job.links), reading);
  std::vector<Inspect::UnreadAgain> unreadAgain;
  if (!savePage(args.output, job, form, zone, unreadAgain)) return EXIT_COULD_NOT;
  for (const Inspect::UnreadAgain& each : unreadAgain) complain(each.error);
  if (!unreadAgain.empty()) code = worse(code, EXIT_WITH_LOSS);
  const std::size_t damaged = damagedFiles(job.files), unread = job.files.unread.size() + unreadAgain.size();
  Json::Value json(Json::objectValue);
  json["file"] = args.output;
  json["links"] = static_cast<Json::UInt64>(job.links.size());
  json["results"] = static_cast<Json::UInt64>(job.files.rows.size());
  json["damaged"] = static_cast<Json::UInt64>(damaged);
  json["unread"] = static_cast<Json::UInt64>(unread);
  json["otherFiles"] = static_cast<Json::UInt64>(job.files.others);
  std::string text = fmt::format("{}: {}, {} damaged, {} not read\n", printable(args.output),
                                 counted(job.files.rows.size(), "result"), counted(damaged, "file"), unread);
  printDocument({[&] { return text; }, [&] { return json; }, {}, {}}, options);
  return code;
}

}  // namespace

Subcommand reportCommand(const Options& options) {
  const auto args = std::make_shared<ReportArguments>();
  Subcommand command("report", "One page about a job, to print or to hand over");
  addJobArguments(command, args->job);
  command.option("-o,--output", "PAGE", &args->output, "the page to write, HTML").required();
  command.option("--title", "TEXT", &args->title, "the page's headline (default: that of job.json)");
  command.option("--edition", "customer|technician",
                 takeChoice<Inspect::Edition>(args->edition, {{"customer", Inspect::Edition::CUSTOMER},
                                                              {"technician", Inspect::Edition::TECHNICIAN}}),
                 "whom it is for; a technician's tells what is wrong with files and which command helps (default: "
                 "customer)");
  command.flag("--details", args->details, "open the block of each link, and print them");
  command.option("--timezone", "ZONE", &args->timeZone,
                 "zone of the page's times, such as Europe/Berlin (default: that of the machine)");
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] { return report(*args, options); };
  return command;
}

}  // namespace Command
