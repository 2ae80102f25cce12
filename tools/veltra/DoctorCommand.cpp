#include <atomic>
#include <memory>
#include <set>

#include <fmt/format.h>

#include "Commands.h"

namespace Command {
namespace {

struct DoctorArguments {
  std::vector<std::string> paths;
  bool quick = false;
  bool deep = false;
};

/// Each next step is told once: after it was taken, the file it writes is there.
std::string textOf(const Inspect::JudgedFile& file, Inspect::OutputPlace place) {
  const Inspect::ContainerReport& report = file.report;
  std::set<std::string> told = {""};
  std::string text;
  for (const Inspect::Finding& finding : report.findings) {
    const Inspect::NextStep step = nextStep(file, finding, place, charset());
    const std::string& next = step.command.empty() ? step.advice : step.command;
    text += fmt::format("{}: {}: {}: {}{}{}\n", printable(report.name), placeOf(finding),
                        painted(nameOf(finding), toneOf(finding.code)), printable(detailsOf(finding)),
                        told.count(next) > 0 ? "" : "; next: ", told.count(next) > 0 ? "" : next);
    told.insert(next);
  }
  if (report.findings.leftOut() > 0) text += printable(furtherText(report.name, report.findings)) + "\n";
  return text;
}

/// Findings become JSON one by one when they are printed: a hostile folder may have a thousand in each file.
FileAnswer answerOf(const Inspect::JudgedFile& file, bool isDeep, Inspect::OutputPlace place, const Options& options) {
  const Inspect::ContainerReport& report = file.report;
  FileAnswer answer;
  if (options.format == FORMAT_TABLE) {
    if (!options.quiet) answer.text = textOf(file, place);
    return answer;
  }
  answer.json = diagnosisJson(file, isDeep);
  const auto size = static_cast<std::size_t>(report.findings.end() - report.findings.begin());
  answer.list = LongList{"findings", size, [file, place](std::size_t i) {
                           const Inspect::Findings& findings = file.report.findings;
                           return toJson(file, *(findings.begin() + static_cast<std::ptrdiff_t>(i)), place);
                         }};
  return answer;
}

/// "17 files: nothing wrong", "17 files: 2 damaged, 1 with warnings"
std::string totalOf(std::size_t files, std::size_t damaged, std::size_t doubtful) {
  const std::string text = damaged + doubtful == 0 ? "nothing wrong"
                           : doubtful == 0         ? fmt::format("{} damaged", damaged)
                           : damaged == 0          ? fmt::format("{} with warnings", doubtful)
                                                   : fmt::format("{} damaged, {} with warnings", damaged, doubtful);
  return files == 0 ? "" : totalLine(counted(files, "file") + ": " + text);
}

int doctor(const DoctorArguments& args, const Options& options) {
  std::vector<std::string> columns = Inspect::findingColumns();
  columns.insert(columns.begin(), "file");
  columns.emplace_back("next");
  const Inspect::Examination examination = args.quick  ? Inspect::Examination::QUICK
                                           : args.deep ? Inspect::Examination::DEEP
                                                       : Inspect::Examination::ORDINARY;
  std::atomic<std::size_t> files{0}, damaged{0}, doubtful{0};
  const auto answer = [&](const Inspect::JudgedFile& file, Inspect::OutputPlace place) {
    if (file.state != Inspect::FileState::OTHER) ++files;
    if (file.state == Inspect::FileState::DAMAGED) {
      ++damaged;
    } else if (file.state == Inspect::FileState::INTACT && !file.report.findings.empty()) {
      ++doubtful;
    }
    return answerOf(file, args.deep, place, options);
  };
  const int code = answerForJudged(args.paths, options, columns, false, examination, false, answer);
  if (options.format == FORMAT_TABLE && !options.quiet) fmt::print("{}", totalOf(files, damaged, doubtful));
  return code;
}

}  // namespace

Subcommand doctorCommand(const Options& options) {
  const auto args = std::make_shared<DoctorArguments>();
  Subcommand command("doctor", "What is wrong with files, one line per finding");
  command.place("PATH", "PATH...", &args->paths, "files, or directories with -r; - reads standard input").required();
  command.flag("--quick", args->quick, "headers only, without the CRC of the data");
  command.flag("--deep", args->deep, "inflate and decode as well").excluding("--quick");
  command.run = [args, &options] { return doctor(*args, options); };
  return command;
}

}  // namespace Command
