#include <bitset>
#include <memory>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>
#include <libinspect/records/FileJudge.h>

#include "Commands.h"

namespace Command {
namespace {

std::string line(const char* name, const std::string& value, Tone tone = Tone::PLAIN) {
  return fmt::format("  {:<16} {}\n", name, painted(printable(value), tone));
}

std::string screen(const Inspect::JudgedFile& file) {
  const Inspect::ContainerReport& report = file.report;
  std::string text = fmt::format("{}: {}\n", printable(report.name), file.kind);
  if (file.hasSummary) {
    const Veltra::ResultSummary& s = file.summary;
    text += line("id", s.getResultName());
    text += line("type", toString(s.resultType));
    text += line("status", toString(s.status), toneOf(s.status));
    text += line("length", Inspect::measurementText(s.length));
    text += line("headroom", Inspect::measurementText(s.headroom));
    text += line("time", Inspect::isoUtc(static_cast<time_t>(s.timeStamp)));
    text += line("testFlags", fmt::format("{} set", std::bitset<32>(s.testFlags).count()));
    text += line("numPassTests", std::to_string(s.numPassTests));
    text += line("numPassStarTests", std::to_string(s.numPassStarTests));
    text += line("numFailTests", std::to_string(s.numFailTests));
  }
  text += line("sections", fmt::format("{}, {} of data, {} uncompressed", report.sections,
                                       counted(report.storedBytes, "byte"), report.originalBytes));
  text += line("bytes", report.recordedLength && *report.recordedLength != report.size
                            ? fmt::format("{}, {} recorded", report.size, *report.recordedLength)
                            : std::to_string(report.size));
  return text +
         line("state", toString(file.state), file.state == Inspect::FileState::DAMAGED ? Tone::BAD : Tone::PLAIN);
}

int info(const std::vector<std::string>& files, const Options& options) {
  std::vector<std::string> columns = Inspect::fileColumns();
  columns.insert(columns.end(), Inspect::rowColumns().begin() + 1,
                 Inspect::rowColumns().end());  // both begin with "file"
  const auto answerOf = [&options](const Inspect::JudgedFile& file, Inspect::OutputPlace) {
    FileAnswer answer;
    if (options.format == FORMAT_TABLE) {
      answer.text = screen(file);
    } else {
      answer.json = Inspect::rowOf(file);
      answer.rows = {answer.json};
    }
    return answer;
  };
  return answerForJudged(files, options, columns, true, Inspect::Examination::ORDINARY, true, answerOf);
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
