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

FileAnswer answerOf(const Inspect::ContainerReport& report, const Options& options) {
  FileAnswer answer;
  const std::string name = report.name;
  answer.findings = report.findings;
  answer.json["file"] = name;
  answer.json["damaged"] = report.damaged();
  for (const Inspect::Finding& finding : report.findings) {
    if (options.format != FORMAT_TABLE || options.quiet) break;
    answer.text += printable(describe(name, finding)) + "; next: " + printable(nextCommand(name, finding)) + "\n";
  }
  answer.list = LongList{"findings", report.findings.size(), [name, findings = report.findings](std::size_t i) {
                           Json::Value row = toJson(findings[i]);
                           row["next"] = nextCommand(name, findings[i]);
                           return row;
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
  command->add_option("paths", args->paths, "files, or directories with -r; - reads standard input")
      ->required()
      ->type_name("PATH...");
  CLI::Option* const quick = command->add_flag("--quick", args->quick, "headers alone, no CRC of the data");
  command->add_flag("--deep", args->deep, "inflate and decode as well")->excludes(quick);
  command->callback([args, &options, &run] { run = [args, &options] { return doctor(*args, options); }; });
}

}  // namespace Command
