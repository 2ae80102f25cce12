#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/job/JobStatus.h>
#include <libinspect/records/IsoTime.h>

#include "Commands.h"

namespace Command {
namespace {

using Inspect::JobStatus;

// What a row tells of.
constexpr char RANGE[] = "range";
constexpr char ALL[] = "all";
constexpr char WORK[] = "work";

Table::Cell verdictCell(Veltra::Status status) {
  return {toString(status), toneOf(status)};
}

Tone toneOf(Inspect::LinkState state) {
  switch (state) {
    case Inspect::LinkState::PASSED:
    case Inspect::LinkState::PASSED_WITH_STAR:
      return Tone::GOOD;
    case Inspect::LinkState::FAILED:
    case Inspect::LinkState::DAMAGED:
      return Tone::BAD;
    default:
      return Tone::DOUBTFUL;
  }
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
  const std::string text = fmt::format("{} of {} expected IDs {} work:", open, all, open == 1 ? "needs" : "need");
  return painted(text, Tone::BAD) + "\n";
}

constexpr char GUESSED[] =
    "The expected IDs were guessed from results: what is missing before the first and after the last of a range cannot "
    "be "
    "told";

std::string textOf(const Inspect::Job& job, const JobStatus& status) {
  std::string text = job.description.title.empty() ? "" : printable(job.description.title) + "\n";
  text +=
      rangesText(status) + "\n" + verdictText(status) + workText(status) + historyText(status) + foreignText(status);
  if (job.description.isGuessed || !status.notes.empty()) text += "\n";
  if (job.description.isGuessed) text += std::string(GUESSED) + ".\n";
  for (const std::string& note : status.notes) text += printable(note) + ".\n";
  return text;
}

void addCounts(const Inspect::LinkCounts& counts, Json::Value& json) {
  for (const Inspect::LinkCountColumn& column : Inspect::linkCountColumns()) {
    json[column.name] = static_cast<Json::UInt64>(counts.*column.count);
  }
}

/// Rows of three kinds, told apart by their first column.
std::vector<Json::Value> rowsOf(const JobStatus& status) {
  std::vector<Json::Value> rows;
  const auto add = [&rows](const char* kind) -> Json::Value& {
    Json::Value& row = rows.emplace_back(Json::objectValue);
    row["kind"] = kind;
    return row;
  };
  for (const Inspect::RangeStatus& range : status.ranges) {
    Json::Value& row = add(RANGE);
    row[RANGE] = range.text;
    addCounts(range.counts, row);
  }
  addCounts(status.all, add(ALL));
  for (const Inspect::WorkItem& item : status.work) {
    Json::Value& row = add(WORK);
    row["id"] = item.link->id;
    row["why"] = toString(item.why);
    row["status"] = item.result != nullptr ? Json::Value(toString(item.result->summary.status)) : Json::Value();
    row["file"] = item.file.empty() ? Json::Value() : Json::Value(item.file);
  }
  return rows;
}

Json::Value jsonOf(const Inspect::LinkResult& result) {
  const Veltra::ResultSummary& summary = result.row->summary;
  Json::Value json(Json::objectValue);
  json["file"] = result.row->file;
  json["type"] = toString(summary.resultType);
  json["status"] = toString(summary.status);
  json["time"] = Inspect::isoUtc(static_cast<time_t>(summary.timeStamp));
  json["damaged"] = result.row->isDamaged;
  json["counts"] = result.counts;
  json["replacedBy"] = result.replacedBy != nullptr ? Json::Value(result.replacedBy->file) : Json::Value();
  json["copyOf"] = result.copyOf != nullptr ? Json::Value(result.copyOf->file) : Json::Value();
  return json;
}

Json::Value jsonOf(const Inspect::JobLink& link) {
  Json::Value json(Json::objectValue);
  json["id"] = link.id;
  json["expected"] = link.isExpected;
  json["state"] = toString(link.state);
  json["status"] = toString(link.verdict);
  Json::Value& results = json["results"] = Json::Value(Json::arrayValue);
  for (const Inspect::LinkResult& result : link.results) results.append(jsonOf(result));
  Json::Value& lost = json["damagedFiles"] = Json::Value(Json::arrayValue);
  for (const std::string& file : link.lostFiles) lost.append(file);
  return json;
}

Json::Value jsonOf(const Inspect::Job& job, const JobStatus& status) {
  Json::Value json(Json::objectValue);
  json["job"] = job.descriptionFile.empty() ? Json::Value() : Json::Value(job.descriptionFile);
  json["title"] = job.description.title;
  json["guessed"] = job.description.isGuessed;
  json["finished"] = status.isFinished();
  json["otherFiles"] = static_cast<Json::UInt64>(job.files.others);
  addCounts(status.all, json["all"] = Json::Value(Json::objectValue));
  for (const char* list : {"ranges", "work", "notes"}) json[list] = Json::Value(Json::arrayValue);
  for (Json::Value& row : rowsOf(status)) {
    const std::string kind = row["kind"].asString();
    row.removeMember("kind");
    if (kind != ALL) json[kind == RANGE ? "ranges" : "work"].append(std::move(row));
  }
  for (const std::string& note : status.notes) json["notes"].append(note);
  return json;
}

int status(const JobArguments& args, const Options& options) {
  Inspect::Job job;
  int code = EXIT_DONE;
  if (!describeJob(args, job, code)) return code;
  if (job.expected.empty()) {
    const std::string folder = Inspect::shellWord(args.paths.front());
    complain(job.descriptionFile.empty()
                 ? fmt::format("{}: no expected IDs; to make them of its results: veltra job init {}",
                               args.paths.front(), folder)
                 : fmt::format("{}: job.expected: no IDs; add them, or use --expect", job.descriptionFile));
    return EXIT_USAGE;
  }
  readWholeJob(args, options, job, code);
  const JobStatus status = statusOf(job);
  Document document;
  document.columns = {"kind"};
  for (const char* column : {RANGE, "id", "why", "status", "file"}) document.columns.emplace_back(column);
  for (const Inspect::LinkCountColumn& column : Inspect::linkCountColumns()) document.columns.emplace_back(column.name);
  document.text = [&] { return textOf(job, status); };
  document.json = [&] { return jsonOf(job, status); };
  std::vector<Json::Value> rows;
  if (options.format == FORMAT_JSON) {
    document.rows = {"links", job.links.size(), [&](std::size_t i) { return jsonOf(job.links[i]); }};
  } else {
    rows = rowsOf(status);
    document.rows = {"", rows.size(), [&rows](std::size_t i) { return rows[i]; }};
  }
  printDocument(document, options);
  return worse(code, status.isFinished() ? EXIT_DONE : EXIT_NO);
}

struct InitArguments {
  std::string folder;
};

int init(const InitArguments& args, const Options& options) {
  JobArguments wanted;
  wanted.paths = {args.folder};
  const std::string path = (std::filesystem::path(args.folder) / Inspect::JobDescription::FILE_NAME).string();
  std::error_code unknown;
  if (!std::filesystem::is_directory(args.folder, unknown)) {
    complain(args.folder + ": expected the folder of a job");
    return EXIT_COULD_NOT;
  }
  if (std::filesystem::symlink_status(path, unknown).type() != std::filesystem::file_type::not_found) {
    complain(path + ": exists, and is never replaced");
    return EXIT_COULD_NOT;
  }
  Inspect::Job job;
  int code = EXIT_DONE;
  readWholeJob(wanted, options, job, code);
  std::vector<std::string> ids, unusual;
  for (const Inspect::JobLink& link : job.links) ids.push_back(link.id);
  job.description.expected = Inspect::guessedRanges(std::move(ids), unusual);
  job.description.isGuessed = true;
  for (const std::string& id : unusual) {
    complain(
        fmt::format("{}: an ID that cannot be expected: expected UTF-8 text without \"..\"", Inspect::shellWord(id)));
    code = worse(code, EXIT_WITH_LOSS);
  }
  if (job.description.expected.empty() && complainsOfNoResults(wanted.paths, job.files)) return EXIT_COULD_NOT;
  const std::string text = Inspect::textOf(job.description);
  Veltra::FileReplacement file;
  bool isWritten = file.open(path);
  if (isWritten) {
    file.expect({});  // none: who was faster keeps his
    isWritten = file.write(text.data(), text.size()) && file.commit();
  }
  if (!isWritten) {
    complain(fmt::format("{}: {}", path, errno == ESTALE ? "exists, and is never replaced" : std::strerror(errno)));
    return EXIT_COULD_NOT;
  }
  Json::Value json(Json::objectValue);
  json["file"] = path;
  json["expected"] = Json::Value(Json::arrayValue);
  for (const std::string& range : job.description.expected) json["expected"].append(range);
  Document document;
  document.text = [&] {
    std::string shown =
        fmt::format("{}: {} expected, guessed from {}; edit it\n", printable(path),
                    counted(job.description.expected.size(), "range"), counted(job.files.rows.size(), "result"));
    for (const std::string& range : job.description.expected) shown += "  " + printable(range) + "\n";
    return shown;
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
  addJobArguments(ask, *statusArgs);
  ask.run = [statusArgs, &options] { return status(*statusArgs, options); };
  Subcommand make("init", "Write job.json into a folder of results, with the IDs that it seems to be about");
  make.place("FOLDER", "FOLDER", &initArgs->folder, "the folder of the job").required();
  make.run = [initArgs, &options] { return init(*initArgs, options); };
  command.commands.push_back(std::move(ask));
  command.commands.push_back(std::move(make));
  return command;
}

}  // namespace Command
