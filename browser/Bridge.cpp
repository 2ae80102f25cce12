// What the page asks of the library. Each function answers with text in pieces, by give(): JSON, or a report. A
// question with arguments has them as JSON in the room() asked for before. Files are those that the page shows under
// their paths. What cannot go on ends in a trap, after which nothing of the module is to be used any more.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <json/writer.h>

#include <libcrossplatform/serialization/JsonText.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/container/Recover.h>
#include <libinspect/job/JobStatus.h>
#include <libinspect/records/Measurements.h>
#include <libinspect/report/HeldSections.h>
#include <libinspect/report/ReportPage.h>

#define VELTRA_ASKED(name) __attribute__((export_name(#name)))

extern "C" __attribute__((import_module("veltra"), import_name("give"))) void give(const char* text, std::size_t size);

namespace Browser {
namespace {

/// What the page has open.
struct Session {
  Inspect::Job job;
  Inspect::ReportForm form;
  std::optional<Inspect::FileRun> run;
};

std::optional<Session> session;
std::string input;

void answer(Json::Value json) {
  Dump::replaceIllFormedTexts(json);
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  const std::string text = Json::writeString(builder, json);
  give(text.data(), text.size());
}

void answerError(const std::string& error) {
  Json::Value json(Json::objectValue);
  json["error"] = error;
  answer(json);
}

Json::Value question() {
  Json::Value json;
  std::string error;
  (void)Inspect::parseWholeJson(input, json, error);  // the page's own text
  return json;
}

template <class Texts>
Json::Value listOf(const Texts& texts) {
  Json::Value json(Json::arrayValue);
  for (const auto& text : texts) json.append(text);
  return json;
}

/// The description of the job: what was typed in, or else the job.json among the paths.
/// @return false, with `error` filled: nothing of it is used
bool describe(const Json::Value& asked, const std::vector<std::string>& paths, std::string& error) {
  Inspect::Job& job = session->job;
  if (asked["description"].isString()) {
    if (!parseJobDescription(asked["description"].asString(), job.description, job.expected, error)) return false;
    job.description.logo = asked["logo"].asString();
    return true;
  }
  const std::vector<std::string> found = Inspect::descriptionsIn(paths);
  if (found.size() > 1) error = fmt::format("expected one job, found {}", fmt::join(found, " and "));
  if (found.size() != 1) return found.empty();
  job.descriptionFile = found.front();
  return readJobDescription(job.descriptionFile, job.description, job.expected, error);
}

Json::Value jsonOf(const Inspect::JudgedFile& file, const std::string& name) {
  const bool sharesName = session->run->sharesName(name);
  Json::Value json = toJson(file);
  json["state"] = toString(file.state);
  json["canRecover"] = false;
  json["findings"] = Json::Value(Json::arrayValue);
  for (const Inspect::Finding& finding : file.report.findings) {
    Json::Value one =
        toJson(file, finding, sharesName ? Inspect::OutputPlace::BESIDE_INPUT : Inspect::OutputPlace::CURRENT_FOLDER);
    one["words"] = plainWordsOf(finding.code);
    one["advice"] = adviceFor(finding, file.hasNothingIntact);
    one["damage"] = isDamage(finding.code);
    if (asksForRecovery(finding) && !file.hasNothingIntact) json["canRecover"] = true;
    json["findings"].append(std::move(one));
  }
  return json;
}

Json::Value jsonOf(const Inspect::ResultRow& row) {
  Json::Value json(Json::objectValue), &flat = json["row"] = Json::Value(Json::objectValue);
  for (auto& [name, member] : Inspect::flatMembers(toJson(row))) flat[name] = member.value;
  for (const Inspect::RowField& field : Inspect::rowFields()) json["texts"].append(field.text(row));
  json["damaged"] = row.isDamaged;
  return json;
}

}  // namespace
}  // namespace Browser

using namespace Browser;

extern "C" {

/// Room for the arguments of the next question, until that is asked.
VELTRA_ASKED(room) char* room(std::size_t size) {
  input.resize(size);
  return input.data();
}

/// Opens what was dropped: {"paths": [...]}, and of a job that was typed in "description", the text of a job.json, and
/// "logo", the path of a picture. Answers with the files to be looked at, and with an "error" if the job cannot be
/// used.
VELTRA_ASKED(open) void openPaths() {
  const Json::Value asked = question();
  session.emplace();
  std::vector<std::string> paths, faults;
  for (const Json::Value& path : asked["paths"]) paths.push_back(path.asString());
  Json::Value json(Json::objectValue);
  std::string error;
  Inspect::Job& job = session->job;
  if (!describe(asked, paths, error)) {
    job.description = {};
    job.expected = {};
  } else if (!job.description.logo.empty()) {
    (void)readLogo(job.description.logo, session->form.logo, error);  // a report goes without it
  }
  json["error"] = error.empty() ? Json::Value() : Json::Value(error);
  std::size_t others = 0;
  std::vector<std::string> files = Inspect::filesWithoutDescriptions(paths, true, faults, others);
  for (const std::string& known : {job.descriptionFile, job.description.logo}) {
    if (!known.empty()) Inspect::leaveOutDescription(files, known);
  }
  json["files"] = listOf(files);
  json["faults"] = listOf(faults);
  json["job"] = job.descriptionFile.empty() ? Json::Value() : Json::Value(job.descriptionFile);
  json["description"] = textOf(job.description);
  json["fields"] = Json::Value(Json::arrayValue);
  for (const Inspect::RowField& field : Inspect::rowFields()) {
    Json::Value one(Json::objectValue);
    one["name"] = field.name;
    one["isNumber"] = field.isNumber;
    json["fields"].append(std::move(one));
  }
  session->run.emplace(std::move(files), paths, 0, others);
  answer(json);
}

/// Looks at one of the files, by its number: what it is and what is wrong with it, or the "error" why it cannot be
/// read.
VELTRA_ASKED(look) void lookAt(uint32_t number) {
  const Inspect::FileRun& run = *session->run;
  const auto isNamedAsResult = [](const std::string& path) { return session->run->isNamedAsResult(path); };
  const auto ask = [&](const Inspect::ByteSource& source) {
    return judge(source, Inspect::Examination::ORDINARY, isNamedAsResult);
  };
  const auto tell = [&](const std::string& name, const Inspect::ReadOutcome& outcome,
                        const std::optional<Inspect::JudgedFile>& file) {
    session->job.files.add(name, outcome, file ? &*file : nullptr, run);
    Json::Value json = file ? jsonOf(*file, name) : Json::Value(Json::objectValue);
    json["file"] = name;
    const bool isRead = outcome.state == Inspect::ReadOutcome::WAS_READ;
    const bool isOther = isRead && file->state == Inspect::FileState::OTHER;
    json["error"] = !isRead                        ? Json::Value(outcome.error)
                    : isOther && run.isNamed(name) ? Json::Value(noContainerText(*file))
                                                   : Json::Value();
    answer(json);
  };
  Inspect::askEach<Inspect::JudgedFile>({run.files().at(number)}, {}, ask, tell);
}

/// Once all files were looked at: their results in the order of IDs, and the status of a job whose IDs are known, or
/// else the IDs that its results speak for.
VELTRA_ASKED(settle) void settle() {
  Inspect::Job& job = session->job;
  job.files.others += session->run->passedOver();
  job.files.sort();
  job.settle(Inspect::CountPolicy::LATEST);
  Json::Value json(Json::objectValue);
  json["results"] = Json::Value(Json::arrayValue);
  for (const Inspect::ResultRow& row : job.files.rows) json["results"].append(jsonOf(row));
  json["otherFiles"] = static_cast<Json::UInt64>(job.files.others);
  json["isEmpty"] = job.files.isEmpty();
  json["status"] = Json::Value();
  if (job.expected.empty()) {
    std::vector<std::string> unusual;
    json["guess"] = listOf(guessedDescription(job, unusual).expected);
  } else {
    Json::Value& status = json["status"] = toJson(job, statusOf(job));
    status["links"] = Json::Value(Json::arrayValue);
    for (const Inspect::JobLink& link : job.links) status["links"].append(toJson(link));
  }
  answer(json);
}

/// The numbers of the results in the order of a field: {"field": NAME, "descending": BOOL}.
VELTRA_ASKED(order) void order() {
  const Json::Value asked = question();
  const std::vector<Inspect::ResultRow>& rows = session->job.files.rows;
  std::vector<const Inspect::ResultRow*> sorted;
  for (const Inspect::ResultRow& row : rows) sorted.push_back(&row);
  const Inspect::RowField* const field = Inspect::rowField(asked["field"].asString());
  if (field != nullptr) sortBy({{field, asked["descending"].asBool()}}, sorted);
  Json::Value json(Json::arrayValue);
  for (const Inspect::ResultRow* const row : sorted) json.append(static_cast<Json::UInt64>(row - rows.data()));
  answer(json);
}

/// The page about the job, as HTML: {"edition": "customer" or "technician", "title": TEXT, "details": BOOL}. An empty
/// title is that of the job.
VELTRA_ASKED(report) void report() {
  const Json::Value asked = question();
  const Inspect::Job& job = session->job;
  Inspect::ReportForm form = session->form;
  form.edition =
      asked["edition"].asString() == "technician" ? Inspect::Edition::TECHNICIAN : Inspect::Edition::CUSTOMER;
  form.showsDetails = asked["details"].asBool();
  form.title = asked["title"].asString();
  form.instruments = Inspect::instrumentsOf(countedFiles(job.links), {});
  const Inspect::TimeZone zone;
  const auto write = [](std::string_view piece) {
    give(piece.data(), piece.size());
    return true;
  };
  std::vector<Inspect::UnreadAgain> unread;  // the page names them
  (void)writeReport(job, form, zone, write, unread);
}

/// What is intact of one of the files: a file header as bytes, and the parts of the file after it; null where nothing
/// is. What is lost is told as "veltra recover" tells it.
VELTRA_ASKED(recover) void recover(uint32_t number) {
  Inspect::ByteSource source;
  Inspect::RecoveredLayout layout;
  std::string error;
  if (!source.openFile(session->run->files().at(number), error)) return answerError(error);
  const Inspect::Recovery recovery = findSections(source);
  if (source.hasFailed()) return answerError(source.name() + ": read error");
  if (!layOut(source, recovery, layout, error)) return answerError(error);
  Json::Value json(Json::objectValue);
  json["header"] = listOf(layout.header);
  json["parts"] = Json::Value(Json::arrayValue);
  for (const Inspect::RecoveredLayout::Part& part : layout.parts) {
    json["parts"].append(static_cast<Json::UInt64>(part.offset));
    json["parts"].append(static_cast<Json::UInt64>(part.bytes));
  }
  uint64_t lost = 0;
  for (const Inspect::LostRange& range : recovery.lost) lost += range.bytes;
  json["kept"] = static_cast<Json::UInt64>(recovery.kept.size());
  json["lostBytes"] = static_cast<Json::UInt64>(lost);
  json["lostSections"] = Json::Value(Json::arrayValue);
  for (const Inspect::LostSection& section : recovery.lostSections) json["lostSections"].append(toJson(section));
  json["missing"] = static_cast<Json::UInt64>(recovery.missing);
  json["isSummaryLost"] = recovery.isSummaryLost;
  json["isNothing"] = recovery.kept.empty() && !recovery.isContainer;
  answer(json);
}
}
