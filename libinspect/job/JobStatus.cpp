#include <libinspect/job/JobStatus.h>

#include <fmt/format.h>

namespace Inspect {
namespace {

/// The count that a state adds to.
std::size_t LinkCounts::*countOf(LinkState state) {
  switch (state) {
    case LinkState::PASSED:
      return &LinkCounts::passed;
    case LinkState::PASSED_WITH_STAR:
      return &LinkCounts::passedStar;
    case LinkState::FAILED:
      return &LinkCounts::failed;
    case LinkState::NO_VERDICT:
      return &LinkCounts::noVerdict;
    case LinkState::DAMAGED:
      return &LinkCounts::damaged;
    default:
      return &LinkCounts::missing;
  }
}

void addWork(const JobLink& link, std::vector<WorkItem>& work) {
  if (link.state == LinkState::MISSING) work.push_back({&link, link.state, nullptr, {}});
  if (link.state == LinkState::DAMAGED) {
    for (const std::string& file : link.lostFiles) work.push_back({&link, link.state, nullptr, file});
  }
  for (const LinkResult& result : link.results) {
    if (!result.counts) continue;
    const LinkState state = stateOf(result.row->summary.status);
    if (state == LinkState::FAILED || state == LinkState::NO_VERDICT) {
      work.push_back({&link, state, result.row, result.row->file});
    }
  }
}

void addNotes(const JobLink& link, std::vector<std::string>& notes) {
  for (const LinkResult& result : link.results) {
    if (result.isTied) {
      notes.push_back(fmt::format("{}: {} and {} have the same time: the later name stands for the other", link.id,
                                  result.row->file, result.replacedBy->file));
    }
    if (result.copyOf != nullptr) {
      notes.push_back(fmt::format("{}: {} has the bytes of {} and is no other result", link.id, result.row->file,
                                  result.copyOf->file));
    }
    if (link.results.size() > 1 && !result.row->isDamaged && !hasTime(*result.row)) {
      notes.push_back(fmt::format("{}: {} has no time: it stands for no other result, nor another for it", link.id,
                                  result.row->file));
    }
  }
  if (link.state == LinkState::DAMAGED) return;
  for (const std::string& file : link.lostFiles) {
    notes.push_back(fmt::format("{}: {} is damaged and does not count; an intact result does", link.id, file));
  }
}

}  // namespace

void LinkCounts::add(const JobLink& link) {
  ++expected;
  ++(this->*countOf(link.state));
  if (link.state != LinkState::DAMAGED && link.state != LinkState::MISSING) ++tested;
  if (link.isTestedAgain()) ++testedAgain;
}

const std::vector<LinkCountColumn>& linkCountColumns() {
  static const std::vector<LinkCountColumn> COLUMNS = {
      {"expected", "expected", &LinkCounts::expected},
      {"tested", "tested", &LinkCounts::tested},
      {"passed", "passed", &LinkCounts::passed},
      {"passedStar", "with a star", &LinkCounts::passedStar},
      {"failed", "failed", &LinkCounts::failed},
      {"noVerdict", "no verdict", &LinkCounts::noVerdict},
      {"damaged", "damaged", &LinkCounts::damaged},
      {"missing", "missing", &LinkCounts::missing},
      {"testedAgain", "tested again", &LinkCounts::testedAgain},
  };
  return COLUMNS;
}

JobStatus statusOf(const Job& job) {
  JobStatus status;
  for (const ExpectedIds::Range& range : job.expected.ranges()) {
    RangeStatus& counted = status.ranges.emplace_back();
    counted.text = range.text;
    for (const uint32_t id : range.ids) counted.counts.add(job.links[id]);
  }
  for (const JobLink& link : job.links) {
    addNotes(link, status.notes);
    if (link.isTestedAgain()) status.history.push_back(&link);
    if (link.isExpected) {
      status.all.add(link);
      if (!link.passed()) addWork(link, status.work);
    } else {
      status.foreign.push_back(&link);
    }
  }
  for (const std::string& file : job.strays()) {
    status.notes.push_back(file + " is damaged or could not be read: its ID is not known");
  }
  for (const std::string& file : job.files.leftOut) {
    status.notes.push_back(file + " was not read: it is larger than the limit");
  }
  if (job.description.isGuessed) status.notes.emplace_back(GUESSED_NOTE);
  return status;
}

namespace {

// What a row tells of.
constexpr char KIND[] = "kind";
constexpr char RANGE[] = "range";
constexpr char ALL[] = "all";
constexpr char WORK[] = "work";
constexpr char HISTORY[] = "history";
constexpr char FOREIGN[] = "foreign";
constexpr char NOTE[] = "note";

void addCounts(const LinkCounts& counts, Json::Value& json) {
  for (const LinkCountColumn& column : linkCountColumns()) {
    json[column.name] = static_cast<Json::UInt64>(counts.*column.count);
  }
}

Json::Value rowOf(const char* kind) {
  Json::Value row(Json::objectValue);
  row[KIND] = kind;
  return row;
}

Json::Value jsonOf(const LinkResult& result) {
  const Veltra::ResultSummary& summary = result.row->summary;
  Json::Value json(Json::objectValue);
  json["file"] = result.row->file;
  json["type"] = toString(summary.resultType);
  json["status"] = toString(summary.status);
  json["time"] = isoUtc(static_cast<time_t>(summary.timeStamp));
  json["damaged"] = result.row->isDamaged;
  json["counts"] = result.counts;
  json["replacedBy"] = result.replacedBy != nullptr ? Json::Value(result.replacedBy->file) : Json::Value();
  json["tied"] = result.isTied;
  json["copyOf"] = result.copyOf != nullptr ? Json::Value(result.copyOf->file) : Json::Value();
  return json;
}

}  // namespace

const std::vector<std::string>& statusColumns() {
  static const std::vector<std::string> COLUMNS = [] {
    std::vector<std::string> columns = {KIND, RANGE, "id", "why", "status", "file", "time", "replacedBy", NOTE};
    for (const LinkCountColumn& column : linkCountColumns()) columns.emplace_back(column.name);
    return columns;
  }();
  return COLUMNS;
}

void forEachStatusRow(const JobStatus& status, const std::function<void(const Json::Value&)>& onRow) {
  for (const RangeStatus& range : status.ranges) {
    Json::Value row = rowOf(RANGE);
    row[RANGE] = range.text;
    addCounts(range.counts, row);
    onRow(row);
  }
  Json::Value all = rowOf(ALL);
  addCounts(status.all, all);
  onRow(all);
  for (const WorkItem& item : status.work) {
    Json::Value row = rowOf(WORK);
    row["id"] = item.link->id;
    row["why"] = toString(item.why);
    row["status"] = item.result != nullptr ? Json::Value(toString(item.result->summary.status)) : Json::Value();
    row["file"] = item.file.empty() ? Json::Value() : Json::Value(item.file);
    onRow(row);
  }
  for (const JobLink* link : status.history) {
    for (const LinkResult& result : link->results) {
      if (result.replacedBy == nullptr) continue;
      Json::Value row = rowOf(HISTORY);
      row["id"] = link->id;
      row["status"] = toString(result.row->summary.status);
      row["file"] = result.row->file;
      row["time"] = isoUtc(static_cast<time_t>(result.row->summary.timeStamp));
      row["replacedBy"] = result.replacedBy->file;
      onRow(row);
    }
  }
  for (const JobLink* link : status.foreign) {
    for (const LinkResult& result : link->results) {
      Json::Value row = rowOf(FOREIGN);
      row["id"] = link->id;
      row["why"] = toString(link->state);
      row["status"] = toString(result.row->summary.status);
      row["file"] = result.row->file;
      onRow(row);
    }
  }
  for (const std::string& note : status.notes) {
    Json::Value row = rowOf(NOTE);
    row[NOTE] = note;
    onRow(row);
  }
}

Json::Value toJson(const JobLink& link) {
  Json::Value json(Json::objectValue);
  json["id"] = link.id;
  json["expected"] = link.isExpected;
  json["state"] = toString(link.state);
  json["status"] = toString(link.verdict);
  Json::Value& results = json["results"] = Json::Value(Json::arrayValue);
  for (const LinkResult& result : link.results) results.append(jsonOf(result));
  Json::Value& lost = json["damagedFiles"] = Json::Value(Json::arrayValue);
  for (const std::string& file : link.lostFiles) lost.append(file);
  return json;
}

Json::Value toJson(const Job& job, const JobStatus& status) {
  Json::Value json(Json::objectValue);
  json["job"] = job.descriptionFile.empty() ? Json::Value() : Json::Value(job.descriptionFile);
  json["title"] = job.description.title;
  json["guessed"] = job.description.isGuessed;
  json["finished"] = status.isFinished();
  json["otherFiles"] = static_cast<Json::UInt64>(job.files.others);
  addCounts(status.all, json["all"] = Json::Value(Json::objectValue));
  for (const char* list : {"ranges", "work", "notes"}) json[list] = Json::Value(Json::arrayValue);
  forEachStatusRow(status, [&json](Json::Value row) {
    const std::string kind = row[KIND].asString();
    row.removeMember(KIND);
    if (kind == RANGE) {
      json["ranges"].append(std::move(row));
    } else if (kind == WORK) {
      json["work"].append(std::move(row));
    } else if (kind == NOTE) {
      json["notes"].append(row[NOTE]);
    }
  });
  return json;
}

}  // namespace Inspect
