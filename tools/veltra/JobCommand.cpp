#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/job/JobStatus.h>
#include <libinspect/records/IsoTime.h>

#include "TableFile.h"

namespace Command {
namespace {

using Inspect::JobStatus;

Table::Cell verdictCell(Veltra::Status status) {
  return {toString(status), toneOf(status)};
}

/// A heading, and the table under it; nothing without rows.
std::string listText(const std::string& heading, const Table& table) {
  const std::string text = table.text();
  return text.empty() ? text : "\n" + painted(heading, Tone::HEADING) + "\n" + text;
}

std::string rangesText(const JobStatus& status) {
  std::vector<Table::Column> columns = {{"range"}};
  for (const Inspect::LinkCountColumn& column : Inspect::linkCountColumns()) columns.push_back({column.words, true});
  Table table(std::move(columns), "range");
  const auto add = [&table](const std::string& text, const Inspect::LinkCounts& counts) {
    Table::Row row = {text};
    for (const Inspect::LinkCountColumn& column : Inspect::linkCountColumns()) {
      row.emplace_back(std::to_string(counts.*column.count));
    }
    table.add(std::move(row));
  };
  for (const Inspect::RangeStatus& range : status.ranges) add(range.text, range.counts);
  if (status.ranges.size() > 1) add("all", status.all);
  return table.text();
}

std::string workText(const JobStatus& status) {
  Table table({{"id"}, {"why"}, {"status"}, {"file"}}, "item");
  for (const Inspect::WorkItem& item : status.work) {
    table.add({item.link->id,
               {toString(item.why), toneOf(item.why)},
               item.result != nullptr ? verdictCell(item.result->summary.status) : "-",
               item.file.empty() ? "-" : item.file});
  }
  return table.text();
}

std::string historyText(const JobStatus& status) {
  Table table({{"id"}, {"status"}, {"time"}, {"file"}, {"replaced by"}}, "earlier result");
  for (const Inspect::JobLink* link : status.history) {
    for (const Inspect::LinkResult& result : link->results) {
      if (result.replacedBy == nullptr) continue;
      const Veltra::ResultSummary& summary = result.row->summary;
      table.add({link->id, verdictCell(summary.status), Inspect::isoUtc(static_cast<time_t>(summary.timeStamp)),
                 result.row->file, result.replacedBy->file});
    }
  }
  return listText("Tested again, earlier results:", table);
}

std::string foreignText(const JobStatus& status) {
  Table table({{"id"}, {"state"}, {"file"}}, "result");
  for (const Inspect::JobLink* link : status.foreign) {
    for (const Inspect::LinkResult& result : link->results) {
      table.add({link->id, {toString(link->state), toneOf(link->state)}, result.row->file});
    }
  }
  return listText("Not expected:", table);
}

std::string verdictText(const JobStatus& status) {
  const std::size_t all = status.all.expected, open = all - status.all.passed - status.all.passedStar;
  if (open == 0) {
    return painted(all == 1 ? "The expected ID passed." : fmt::format("All {} expected IDs passed.", all), Tone::GOOD) +
           "\n";
  }
  const std::string text = all == 1
                               ? "The expected ID needs work:"
                               : fmt::format("{} of {} expected IDs {} work:", open, all, open == 1 ? "needs" : "need");
  return painted(text, Tone::BAD) + "\n";
}

std::string textOf(const Inspect::Job& job, const JobStatus& status) {
  std::string text = job.description.title.empty() ? "" : printable(job.description.title) + "\n";
  text +=
      rangesText(status) + "\n" + verdictText(status) + workText(status) + historyText(status) + foreignText(status);
  if (!status.notes.empty()) text += "\n";
  for (const std::string& note : status.notes) text += printable(note) + ".\n";
  return text;
}

/// Complains of a job without expected IDs, and says how it gets them. @return the exit code
int complainOfNoIds(const JobArguments& args, const Inspect::Job& job) {
  namespace fs = std::filesystem;
  std::error_code unknown;
  const std::string& path = args.paths.front();
  if (!job.descriptionFile.empty()) {
    complain(fmt::format("{}: job.expected: no IDs; add them, or use --expect", job.descriptionFile));
    return EXIT_USAGE;
  }
  if (path != "-" && fs::status(path, unknown).type() == fs::file_type::not_found) {
    complain(fmt::format("{}: {}", path, std::strerror(ENOENT)));
    return EXIT_COULD_NOT;
  }
  fs::path folder = path;
  if (!fs::is_directory(folder, unknown)) folder = folder.parent_path().empty() ? "." : folder.parent_path();
  const fs::path beside = folder / Inspect::JobDescription::FILE_NAME;
  complain(path == "-" ? path + ": no expected IDs; name them with --expect"
           : fs::exists(beside, unknown)
               ? fmt::format("{}: no expected IDs; for those of its folder: --job {}", path,
                             Inspect::shellWord(beside.string()))
               : fmt::format("{}: no expected IDs; to make them of its results: veltra job init {}", path,
                             Inspect::shellWord(folder.string())));
  return EXIT_USAGE;
}

int status(const JobArguments& args, const TableOutput& output, const Options& options) {
  Inspect::Job job;
  int code = EXIT_DONE;
  if (!takeTableOutput(output, args.paths, options, code)) return code;
  if (!describeJob(args, job, code)) return code;
  if (job.expected.empty()) return complainOfNoIds(args, job);
  const auto choose = [&](std::vector<std::string>& files) {
    return leaveOutTableOutput(output, files, {job.descriptionFile});
  };
  if (!readWholeJob(args, options, job, code, choose)) return EXIT_COULD_NOT;
  const JobStatus status = statusOf(job);
  const int answer = status.isFinished() ? EXIT_DONE : EXIT_NO;
  if (!output.path.empty()) return worse(worse(code, answer), saveTables(job, output, options));
  Document document;
  document.columns = Inspect::statusColumns();
  document.text = [&] { return textOf(job, status); };
  document.json = [&] { return toJson(job, status); };
  if (options.format == FORMAT_JSON) {
    document.rows = {"links", job.links.size(), [&](std::size_t i) { return toJson(job.links[i]); }};
  } else {
    document.rows.all = [&status](const LongList::OnElement& onRow) { forEachStatusRow(status, onRow); };
  }
  printDocument(document, options);
  return worse(code, answer);
}

struct InitArguments {
  std::string folder;
  bool dryRun = false;
};

constexpr char NEVER_REPLACED[] = "exists, and is never replaced";

/// @return false, with a complaint
bool writeNew(const std::string& path, const std::string& text) {
  Veltra::FileReplacement file;
  bool isWritten = file.open(path);
  if (isWritten) {
    file.expect({});  // none: who was faster keeps his
    isWritten = file.write(text.data(), text.size()) && file.commit();
  }
  if (!isWritten) complain(fmt::format("{}: {}", path, errno == ESTALE ? NEVER_REPLACED : std::strerror(errno)));
  return isWritten;
}

int init(const InitArguments& args, const Options& options) {
  namespace fs = std::filesystem;
  JobArguments wanted;
  wanted.paths = {args.folder};
  const std::string path = (fs::path(args.folder) / Inspect::JobDescription::FILE_NAME).string();
  std::error_code unknown;
  if (!fs::is_directory(args.folder, unknown)) {
    complain(args.folder + ": expected the folder of a job");
    return EXIT_COULD_NOT;
  }
  const fs::file_type found = fs::symlink_status(path, unknown).type();
  if (!args.dryRun && found != fs::file_type::not_found && found != fs::file_type::none) {
    complain(fmt::format("{}: {}; with --dry-run nothing is written", path, NEVER_REPLACED));
    return EXIT_COULD_NOT;
  }
  Inspect::Job job;
  int code = EXIT_DONE;
  readWholeJob(wanted, options, job, code);
  std::vector<std::string> unusual;
  job.description = guessedDescription(job, unusual);
  for (const std::string& id : unusual) {
    complain(
        fmt::format("{}: an ID that cannot be expected: expected UTF-8 text without \"..\"", Inspect::shellWord(id)));
    code = worse(code, EXIT_WITH_LOSS);
  }
  if (job.description.expected.empty()) {
    complain(args.folder + ": no results with an ID");
    return EXIT_COULD_NOT;
  }
  if (!args.dryRun && !writeNew(path, Inspect::textOf(job.description))) return EXIT_COULD_NOT;
  Json::Value json(Json::objectValue);
  json["file"] = path;
  json["written"] = !args.dryRun;
  json["expected"] = Json::Value(Json::arrayValue);
  for (const std::string& range : job.description.expected) json["expected"].append(range);
  Document document;
  document.text = [&] {
    std::string text = fmt::format("{}: {} expected, guessed from {}; {}\n", printable(path),
                                   counted(job.description.expected.size(), "range"),
                                   counted(job.files.rows.size(), "result"), args.dryRun ? "not written" : "edit it");
    for (const std::string& range : job.description.expected) text += "  " + printable(range) + "\n";
    return text;
  };
  document.json = [&json] { return json; };
  printDocument(document, options);
  return code;
}

}  // namespace

Subcommand jobCommand(const Options& options) {
  const auto statusArgs = std::make_shared<JobArguments>();
  const auto initArgs = std::make_shared<InitArguments>();
  Subcommand command("job", "Whether a job is finished: which links passed, and which need work");
  Subcommand ask("status", "What was tested of what is expected, and the IDs that need work");
  const auto output = std::make_shared<TableOutput>();
  addJobArguments(ask, *statusArgs);
  addTableOutput(ask, *output);
  ask.makesTables = true;
  ask.run = [statusArgs, output, &options] { return status(*statusArgs, *output, options); };
  Subcommand make("init", "Write job.json into a folder of results, with the IDs that it seems to be about");
  make.place("FOLDER", "FOLDER", &initArgs->folder, "the folder of the job").required();
  make.flag("--dry-run", initArgs->dryRun, "print the IDs, write nothing");
  make.run = [initArgs, &options] { return init(*initArgs, options); };
  command.commands.push_back(std::move(ask));
  command.commands.push_back(std::move(make));
  return command;
}

}  // namespace Command
