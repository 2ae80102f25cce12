#include <memory>

#include <fmt/format.h>

#include <libinspect/container/Doctor.h>
#include <libinspect/records/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::vector<std::string> paths;
  bool quick = false;
  bool deep = false;
};

std::string textOf(const Inspect::ContainerReport& report) {
  std::string text;
  for (const Inspect::Finding& finding : report.findings) {
    text += fmt::format("{}: {}: {}: {}; next: {}\n", printable(report.name), placeOf(finding),
                        painted(nameOf(finding), toneOf(finding.code)), printable(detailsOf(finding)),
                        nextCommand(report.path, finding));
  }
  if (report.findings.leftOut() > 0) text += printable(furtherText(report.name, report.findings)) + "\n";
  return text;
}

/// Findings become JSON one by one when they are printed: a hostile folder has a thousand in each file.
FileAnswer answerOf(const Inspect::ContainerReport& report, const Options& options) {
  FileAnswer answer;
  answer.findings = report.findings;
  if (options.format == FORMAT_TABLE) {
    if (!options.quiet) answer.text = textOf(report);
    return answer;
  }
  answer.json["file"] = report.name;
  answer.json["damaged"] = report.damaged();
  answer.json["findingsLeftOut"] = static_cast<Json::UInt64>(report.findings.leftOut());
  const auto size = static_cast<std::size_t>(report.findings.end() - report.findings.begin());
  answer.list = LongList{"findings", size, [findings = report.findings, path = report.path](std::size_t i) {
                           const Inspect::Finding& finding = *(findings.begin() + static_cast<std::ptrdiff_t>(i));
                           Json::Value json = toJson(finding);
                           json["next"] = nextCommand(path, finding);
                           return json;
                         }};
  return answer;
}

int doctor(const Arguments& args, const Options& options) {
  const std::vector<std::string> columns = {"file", "offset", "section", "code", "meaning", "wanted", "found", "next"};
  const Inspect::Examination examination = args.deep    ? Inspect::Examination::DEEP
                                           : args.quick ? Inspect::Examination::QUICK
                                                        : Inspect::Examination::ORDINARY;
  return answerForFiles(args.paths, options, columns, false, [&](const Inspect::ByteSource& source) {
    return answerOf(examine(source, examination), options);
  });
}

}  // namespace

void addDoctor(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("doctor", "What is wrong with files, one line a finding");
  const auto args = std::make_shared<Arguments>();
  command->add_option("PATH", args->paths, "files, or directories with -r; - reads standard input")
      ->required()
      ->type_name("PATH...");
  CLI::Option* const quick = command->add_flag("--quick", args->quick, "headers alone, no CRC of the data");
  command->add_flag("--deep", args->deep, "inflate and decode as well")->excludes(quick);
  command->callback([args, &options, &run] { run = [args, &options] { return doctor(*args, options); }; });
}

}  // namespace Command
