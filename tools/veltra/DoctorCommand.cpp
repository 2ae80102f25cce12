#include <memory>

#include <fmt/format.h>

#include <tools/inspect/Doctor.h>
#include <tools/inspect/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::vector<std::string> paths;
  bool quick = false;
  bool deep = false;
};

FileAnswer answerOf(const Inspect::ContainerReport& report) {
  FileAnswer answer;
  answer.findings = report.findings;
  answer.json["file"] = report.name;
  answer.json["damaged"] = report.damaged();
  answer.json["findings"] = Json::Value(Json::arrayValue);
  for (const Inspect::Finding& finding : report.findings) {
    const std::string next = nextCommand(report.name, finding);
    answer.text +=
        fmt::format("{}: {}: {}: {}; next: {}\n", printable(report.name), placeOf(finding),
                    painted(nameOf(finding), toneOf(finding.code)), printable(detailsOf(finding)), printable(next));
    Json::Value row = toJson(finding);
    row["next"] = next;
    answer.json["findings"].append(row);
    row["file"] = report.name;
    answer.rows.push_back(row);
  }
  if (report.findings.leftOut() > 0) answer.text += printable(furtherText(report.name, report.findings)) + "\n";
  answer.json["findingsLeftOut"] = static_cast<Json::UInt64>(report.findings.leftOut());
  return answer;
}

int doctor(const Arguments& args, const Options& options) {
  const std::vector<std::string> columns = {"file", "offset", "section", "code", "meaning", "wanted", "found", "next"};
  const Inspect::Examination examination = args.deep    ? Inspect::Examination::DEEP
                                           : args.quick ? Inspect::Examination::QUICK
                                                        : Inspect::Examination::ORDINARY;
  return answerForFiles(args.paths, options, columns, false, [&](const Inspect::ByteSource& source) {
    FileAnswer answer = answerOf(examine(source, examination));
    if (options.quiet) answer.text.clear();
    return answer;
  });
}

}  // namespace

void addDoctor(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("doctor", "What is wrong with files, one line a finding");
  const auto args = std::make_shared<Arguments>();
  command->add_option("paths", args->paths, "files, or directories with -r; - reads standard input")
      ->required()
      ->type_name("PATH...");
  CLI::Option* const quick = command->add_flag("--quick", args->quick, "headers alone, no CRC of the data");
  command->add_flag("--deep", args->deep, "inflate and decode as well")->excludes(quick);
  command->callback([args, &options, &run] { run = [args, &options] { return doctor(*args, options); }; });
}

}  // namespace Command
