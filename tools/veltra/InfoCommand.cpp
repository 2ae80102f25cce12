#include <bitset>
#include <memory>

#include <fmt/format.h>

#include <libinspect/job/ResultRows.h>
#include <libinspect/records/FileJudge.h>

#include "Commands.h"

namespace Command {
namespace {

std::string line(const char* name, const std::string& value, Tone tone = Tone::PLAIN) {
  return fmt::format("  {:<9} {}\n", name, painted(printable(value), tone));
}

std::string screen(const Inspect::JudgedFile& file) {
  const Inspect::ContainerReport& report = file.report;
  std::string text = fmt::format("{}: {}\n", printable(report.name), file.kind);
  if (file.hasSummary) {
    const Veltra::ResultSummary& s = file.summary;
    text += line("Result", fmt::format("{} ({})", s.getResultName(), toString(s.resultType)));
    text += line("Verdict", toString(s.status), toneOf(s.status));
    text += line("Length", Inspect::measurementText(s.length));
    text += line("Headroom", Inspect::measurementText(s.headroom));
    text += line("Time", Inspect::isoUtc(static_cast<time_t>(s.timeStamp)));
    text += line("Tests",
                 fmt::format("{} contained; {} passed, {} passed with a star, {} failed",
                             std::bitset<32>(s.testFlags).count(), s.numPassTests, s.numPassStarTests, s.numFailTests));
  }
  text += line("Sections", fmt::format("{}, {} bytes of data, {} uncompressed", report.sections, report.storedBytes,
                                       report.originalBytes));
  text += line("Size", report.recordedLength && *report.recordedLength != report.size
                           ? fmt::format("{} bytes, {} recorded", report.size, *report.recordedLength)
                           : fmt::format("{} bytes", report.size));
  return text +
         line("State", toString(file.state), file.state == Inspect::FileState::DAMAGED ? Tone::BAD : Tone::PLAIN);
}

/// A CSV row: the file, then its result as summary shows it.
Json::Value flatRow(const Inspect::JudgedFile& file) {
  Json::Value row = file.hasSummary ? toJson(Inspect::ResultRow{file.report.name, file.summary, false}) : Json::Value();
  const Json::Value whole = toJson(file);
  for (const char* member : {"file", "kind", "damaged", "bytes", "recordedBytes", "sections"}) {
    row[member] = whole[member];
  }
  return row;
}

int info(const std::vector<std::string>& files, const Options& options) {
  std::vector<std::string> columns = {"file", "kind", "damaged", "bytes", "recordedBytes", "sections"};
  columns.insert(columns.end(), Inspect::rowColumns().begin() + 1,
                 Inspect::rowColumns().end());  // both begin with "file"
  const auto answerOf = [&options](const Inspect::JudgedFile& file, Inspect::OutputPlace) {
    FileAnswer answer;
    if (options.format == FORMAT_TABLE) {
      answer.text = screen(file);
    } else if (options.format == FORMAT_CSV) {
      answer.rows = {flatRow(file)};
    } else {
      answer.json = toJson(file);
      if (options.format == FORMAT_JSONL) answer.rows = {answer.json};
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
