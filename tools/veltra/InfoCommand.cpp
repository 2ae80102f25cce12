#include <bitset>
#include <memory>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>
#include <libinspect/records/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

std::string line(const char* name, const std::string& value, Tone tone = Tone::PLAIN) {
  return fmt::format("  {:<9} {}\n", name, painted(printable(value), tone));
}

std::string screen(const Inspect::FileSummary& file) {
  const Inspect::ContainerReport& report = file.report;
  std::string text = fmt::format("{}: {}\n", printable(report.name), file.kind);
  if (file.hasSummary) {
    const Veltra::ResultSummary& s = file.summary;
    text += line("ID", s.getResultName());
    text += line("Type", toString(s.resultType));
    text += line("Status", toString(s.status), toneOf(s.status));
    text += line("Length", Inspect::measurementText(s.length));
    text += line("Headroom", Inspect::measurementText(s.headroom));
    text += line("Time", Inspect::isoUtc(static_cast<time_t>(s.timeStamp)));
    text += line("Tests", std::to_string(std::bitset<32>(s.testFlags).count()));
    text += line("Passed", std::to_string(s.numPassTests));
    text += line("Star", std::to_string(s.numPassStarTests));
    text += line("Failed", std::to_string(s.numFailTests));
  }
  text += line("Sections", fmt::format("{}, {} bytes of data, {} uncompressed", report.sections, report.storedBytes,
                                       report.originalBytes));
  text += line("Size", report.recordedLength && *report.recordedLength != report.size
                           ? fmt::format("{} bytes, {} recorded", report.size, *report.recordedLength)
                           : fmt::format("{} bytes", report.size));
  return text + line("State", report.damaged() ? "damaged" : "intact", report.damaged() ? Tone::BAD : Tone::PLAIN);
}

/// What is known of a file, with its result as summary shows it.
Json::Value rowOf(const Inspect::FileSummary& file) {
  Json::Value row = toJson(file);
  Json::Value summary;
  row.removeMember("summary", &summary);
  if (!file.hasSummary) return row;
  const Json::Value result = toJson(Inspect::ResultRow{file.report.name, file.summary});
  for (const std::string& member : result.getMemberNames()) row[member] = result[member];
  row["testFlags"] = summary["testFlags"];
  return row;
}

int info(const std::vector<std::string>& files, const Options& options) {
  std::vector<std::string> columns = {"file", "kind", "damaged", "bytes", "recordedBytes", "sections"};
  columns.insert(columns.end(), Inspect::rowColumns().begin() + 1,
                 Inspect::rowColumns().end());  // both begin with "file"
  return answerForFiles(files, options, columns, true, [&options](const Inspect::ByteSource& source) {
    const Inspect::FileSummary file = Inspect::summarize(source);
    FileAnswer answer;
    answer.findings = file.report.findings;
    if (options.format == FORMAT_TABLE) {
      answer.text = screen(file);
    } else {
      answer.json = rowOf(file);
      answer.rows = {answer.json};
    }
    return answer;
  });
}

}  // namespace

Subcommand infoCommand(const Options& options) {
  const auto files = std::make_shared<std::vector<std::string>>();
  Subcommand command("info", "What a file is: result, verdict, measurements, sizes");
  command.place("FILE", "FILE...", files.get(), "files to look at; - reads standard input").required();
  command.run = [files, &options] { return info(*files, options); };
  return command;
}

}  // namespace Command
