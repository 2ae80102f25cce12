#include <libinspect/report/ReportPage.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <kainjow/mustache.hpp>

#include <libinspect/container/ByteSource.h>
#include <libinspect/container/PrintableText.h>
#include <libinspect/report/ReportFigures.h>
#include <libinspect/report/ReportTemplate.h>

namespace Inspect {
namespace {

using Data = kainjow::mustache::data;
using Members = std::initializer_list<std::pair<const char*, std::string>>;

/// An object of texts; an empty text is omitted, so that its section is left out.
Data object(Members members) {
  Data data;
  for (const auto& [name, text] : members) {
    if (!text.empty()) data[name] = Data(text);
  }
  return data;
}

/// A section for each item. Items become data one at a time, when the page reaches them: of a long list only
/// the text of the page is held in memory.
template <class Items, class DataOf>
Data eachOf(const Items& items, DataOf dataOf) {
  return Data(kainjow::mustache::lambda2(
      [&items, dataOf](const std::string& section, const kainjow::mustache::renderer&) -> std::string {
        kainjow::mustache::mustache rows(section);
        rows.set_custom_escape(htmlText);
        std::string text;
        for (const auto& item : items) text += rows.render(dataOf(item));
        return text;
      }));
}

Data wordsOf(const std::string& words) {
  return object({{"words", words}});
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

template <class Predicate>
std::size_t countOf(const VerdictCounts& verdicts, Predicate wanted) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < VERDICTS; ++i) count += wanted(verdictLook(i).status) ? verdicts[i] : 0;
  return count;
}

std::size_t damagedFiles(const JobFiles& job) {
  return static_cast<std::size_t>(
      std::count_if(job.notes.begin(), job.notes.end(), [](const FileNote& note) { return note.isDamaged; }));
}

/// The verdict on the whole job. Results that could not be read are always mentioned.
std::string leadOf(const JobFiles& job, const Report& report) {
  const std::size_t all = report.results;
  const std::size_t fails = countOf(report.verdicts, isFail), passes = countOf(report.verdicts, isPass);
  const char* const readable = damagedFiles(job) + job.unread.size() > 0 ? " that could be read" : "";
  if (all == 0) return fmt::format("No results{}.", readable);
  if (fails == all || passes == all) {
    const char* const verb = fails == all ? "fail" : "pass";
    return all == 1 ? fmt::format("The result{} {}{}.", readable, verb, fails == all ? "s" : "es")
                    : fmt::format("All {} results{} {}.", all, readable, verb);
  }
  const std::size_t others = all - fails - passes;
  return fmt::format("Of {}{}, {} and {}{}.", counted(all, "result", "results"), readable,
                     counted(passes, "passes", "pass"), counted(fails, "fails", "fail"),
                     others > 0 ? fmt::format("; {} neither", counted(others, "does", "do")) : "");
}

/// "28 copper, 12 fibre. Tested from 2024-01-31 to 2024-02-05 (UTC)."
std::string factsOf(const Report& report) {
  constexpr std::size_t DAY = 10;  // characters of a date
  std::string text;
  for (const MediumReport& medium : report.media) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", medium.rows.size(), medium.phrase);
  }
  if (!text.empty()) text += ". ";
  if (report.firstTime == 0) return text;
  const std::string first = isoUtc(report.firstTime).substr(0, DAY), last = isoUtc(report.lastTime).substr(0, DAY);
  return text + (first == last ? fmt::format("Tested on {} (UTC).", first)
                               : fmt::format("Tested from {} to {} (UTC).", first, last));
}

/// What a reader of the page must know first.
std::vector<std::string> alertsOf(const JobFiles& job, const Report& report) {
  std::vector<std::string> alerts;
  const std::size_t damaged = damagedFiles(job);
  if (!job.unread.empty()) alerts.push_back(counted(job.unread.size(), "file", "files") + " could not be read.");
  if (damaged > 0) {
    alerts.push_back(counted(damaged, "file is", "files are") +
                     " damaged. If the summary could still be read, the result is shown and marked.");
  }
  const std::size_t missing = report.coverage.missing.size(), foreign = report.coverage.foreign.size();
  const std::size_t onlyDamaged = report.coverage.damaged.size();
  if (missing > 0) {
    alerts.push_back(fmt::format("{} of {} expected IDs {} no result.", missing, report.expected.size(),
                                 missing == 1 ? "has" : "have"));
  }
  if (onlyDamaged > 0) {
    alerts.push_back(fmt::format("{} of {} expected IDs {} no result but a damaged one.", onlyDamaged,
                                 report.expected.size(), onlyDamaged == 1 ? "has" : "have"));
  }
  if (!report.coverage.twice.empty()) {
    alerts.push_back(counted(report.coverage.twice.size(), "expected ID has", "expected IDs have") +
                     " more than one result.");
  }
  if (foreign > 0)
    alerts.push_back(counted(foreign, "result has an ID that is", "results have IDs that are") + " not expected.");
  return alerts;
}

Data markOf(const VerdictLook& look) {
  return object({{"style", look.style}, {"kind", look.isStroked ? "drawn" : "filled"}, {"shape", look.shape}});
}

void addTiles(const Report& report, Data& page) {
  Data tiles(Data::type::list), marks(Data::type::list);
  for (std::size_t i = 0; i < VERDICTS; ++i) {
    const VerdictLook& look = verdictLook(i);
    const std::size_t count = report.verdicts[i];
    marks << markOf(look);
    if (count == 0 && !look.isAlwaysCounted) continue;
    const double share =
        report.results == 0 ? 0 : 100.0 * static_cast<double>(count) / static_cast<double>(report.results);
    Data tile = object({{"style", look.style},
                        {"word", look.word},
                        {"count", std::to_string(count)},
                        {"detail", fmt::format("{:.1f} %", share)}});
    tile["isZero"] = Data(count == 0);
    tiles << tile;
  }
  page["hasResults"] = Data(report.results > 0);
  page["tiles"] = std::move(tiles);
  page["marks"] = std::move(marks);
}

Data dataOf(const ExpectedId& id) {
  const bool hasVerdict = id.severity < VERDICTS;
  const VerdictLook& look = verdictLook(hasVerdict ? id.severity : 0);
  const char* const state = id.results > 1   ? "twice"
                            : id.results > 0 ? "present"
                            : id.isDamaged   ? "damaged"
                                             : "missing";
  return object({{"state", state},
                 {"id", id.id},
                 {"style", hasVerdict ? look.style : ""},
                 {"verdict", hasVerdict ? look.word : ""},
                 {"word", id.results > 1   ? fmt::format("\u00d7{}", id.results)
                          : id.results > 0 ? ""
                                           : state}});
}

void addExpected(const Report& report, Data& page) {
  page["hasExpected"] = Data(report.hasExpected);
  if (!report.hasExpected) return;
  const Coverage& coverage = report.coverage;
  const std::size_t all = report.expected.size(), missing = coverage.missing.size(), twice = coverage.twice.size();
  const std::size_t damaged = coverage.damaged.size();
  page["expectedFacts"] =
      Data(fmt::format("{} to {}: {} IDs, {} with one result, {} with more{}, {} missing. {} with another ID.",
                       report.expected.front().id, report.expected.back().id, all, all - missing - damaged - twice,
                       twice, damaged > 0 ? fmt::format(", {} damaged", damaged) : "", missing,
                       counted(coverage.foreign.size(), "result", "results")));
  page["idWidth"] = Data(std::to_string(report.expected.front().id.size()));
  page["ids"] = eachOf(report.expected, [](const ExpectedId& id) { return dataOf(id); });
  page["hasForeign"] = Data(!coverage.foreign.empty());
  page["foreign"] = eachOf(coverage.foreign, wordsOf);
}

Data dataOf(const Figure& figure) {
  Data data = object({{"caption", figure.caption}, {"chart", figure.chart}, {"note", figure.note}});
  Data legend(Data::type::list);
  for (const std::size_t severity : figure.legend) {
    legend << object({{"style", verdictLook(severity).style}, {"word", verdictLook(severity).word}});
  }
  data["hasLegend"] = Data(!figure.legend.empty());
  data["legend"] = std::move(legend);
  return data;
}

Data dataOf(const ReportRow& row) {
  constexpr std::size_t MINUTES = 16;  // characters of a time without seconds
  const Veltra::ResultSummary& s = row.result->summary;
  std::string time = isoUtc(static_cast<time_t>(s.timeStamp)).substr(0, MINUTES);
  std::replace(time.begin(), time.end(), 'T', ' ');
  Data data = object({{"style", verdictLook(row.severity).style},
                      {"word", verdictLook(row.severity).word},
                      {"id", s.resultName},
                      {"length", measurementText(s.length)},
                      {"headroom", measurementText(s.headroom)},
                      {"passed", std::to_string(s.numPassTests)},
                      {"starred", std::to_string(s.numPassStarTests)},
                      {"failed", std::to_string(s.numFailTests)},
                      {"time", time},
                      {"file", row.result->file}});
  data["isDamaged"] = Data(row.result->isDamaged);
  return data;
}

/// "28 results: 3 Fail, 25 Pass"
std::string factsOf(const MediumReport& medium) {
  const VerdictCounts verdicts = verdictCounts(medium.rows);
  std::string text = counted(medium.rows.size(), "result", "results");
  const char* separator = ": ";
  for (std::size_t i = 0; i < VERDICTS; ++i) {
    if (verdicts[i] == 0) continue;
    text += fmt::format("{}{} {}", separator, verdicts[i], verdictLook(i).word);
    separator = ", ";
  }
  return text;
}

Data dataOf(const MediumReport& medium) {
  Data data = object({{"name", medium.name}, {"facts", factsOf(medium)}});
  Data figures(Data::type::list);
  for (const Figure& figure : figuresOf(medium)) figures << dataOf(figure);
  data["figures"] = std::move(figures);
  data["rows"] = eachOf(medium.rows, [](const ReportRow& row) { return dataOf(row); });
  return data;
}

Data dataOf(const FileNote& note) {
  Data data = object({{"file", note.file},
                      {"state", note.isDamaged ? "damaged" : "warning"},
                      {"next", note.next},
                      {"advice", note.advice}});
  Data findings(Data::type::list);
  for (const Finding& finding : note.findings) findings << wordsOf(describe(finding));
  if (note.leftOut > 0) findings << wordsOf(fmt::format("and {} more", note.leftOut));
  data["findings"] = std::move(findings);
  return data;
}

/// Whether a file begins as every page does. False if it cannot be read.
bool isReportPage(const std::string& path) {
  const std::string form = REPORT_TEMPLATE;
  const std::string firstLine = form.substr(0, form.find('\n'));
  std::string begin(firstLine.size(), '\0'), error;
  ByteSource source;
  return source.openFile(path, error) && source.readAt(0, begin.data(), begin.size()) == begin.size() &&
         begin == firstLine;
}

}  // namespace

std::string reportPage(const JobFiles& job, const std::string& title) {
  const Report report = reportOf(job);
  const std::vector<std::string> alerts = alertsOf(job, report);
  Data page = object({{"title", title}, {"facts", factsOf(report)}, {"lead", leadOf(job, report)}});
  page["hasAlerts"] = Data(!alerts.empty());
  page["alerts"] = eachOf(alerts, wordsOf);
  addTiles(report, page);
  addExpected(report, page);
  Data media(Data::type::list);
  for (const MediumReport& medium : report.media) media << dataOf(medium);
  page["media"] = std::move(media);
  page["hasNotes"] = Data(!job.notes.empty());
  page["notes"] = eachOf(job.notes, [](const FileNote& note) { return dataOf(note); });
  page["hasUnread"] = Data(!job.unread.empty());
  page["unread"] = eachOf(job.unread, wordsOf);
  if (job.others > 0)
    page["others"] = Data(counted(job.others, "other file is no container", "other files are no containers"));
  page["hasWithoutResult"] = Data(!job.withoutResult.empty());
  page["withoutResult"] = eachOf(job.withoutResult, wordsOf);
  kainjow::mustache::mustache form(REPORT_TEMPLATE);
  form.set_custom_escape(htmlText);
  return form.render(page);
}

void leaveOutPage(std::vector<std::string>& files, const std::string& page) {
  if (!isReportPage(page)) return;
  const auto isPage = [&page](const std::string& file) { return isSameFile(file, page); };
  files.erase(std::remove_if(files.begin(), files.end(), isPage), files.end());
}

}  // namespace Inspect
