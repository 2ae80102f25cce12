#include <libinspect/report/ReportPage.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include <libinspect/container/ByteSource.h>
#include <libinspect/container/PrintableText.h>
#include <libinspect/report/LinkBlock.h>
#include <libinspect/report/PageText.h>
#include <libinspect/report/ReportFigures.h>
#include <libinspect/report/ReportTemplate.h>

namespace Inspect {
namespace {

/// A page on its way out. Long lists go out item by item when the page reaches them.
class Page {
 public:
  explicit Page(const WritePiece& write) : _write(write) {}

  /// Hands over what was not yet. @return false if anything could not be written
  bool flush() {
    _isWritten = _isWritten && _write(_pending);
    _pending.clear();
    return _isWritten;
  }

  /// A section for each item. Its tag stands on a line of its own, and in no other list: what was before it has gone
  /// out then, and each item can follow at once.
  template <class Items, class DataOf>
  PageData eachOf(const Items& items, DataOf dataOf) {
    return PageData(kainjow::mustache::lambda2(
        [this, &items, dataOf](const std::string& section, const kainjow::mustache::renderer&) -> std::string {
          // Its lines are for whoever edits the page: of each line end a browser would make a text.
          std::string line = section;
          line.erase(std::remove(line.begin(), line.end(), '\n'), line.end());
          kainjow::mustache::mustache item(line + "\n");
          item.set_custom_escape(htmlText);
          for (const auto& each : items) {
            if (!_isWritten) break;
            item.render(dataOf(each), [this](const std::string& piece) { put(piece); });
          }
          return {};
        }));
  }

  void render(const PageData& data) {
    kainjow::mustache::mustache form(REPORT_TEMPLATE);
    form.set_custom_escape(htmlText);
    form.render(data, [this](const std::string& piece) { put(piece); });
  }

 private:
  void put(const std::string& text) {
    constexpr std::size_t PIECE = std::size_t{64} * 1024;
    if (_isWritten) _pending += text;
    if (_pending.size() >= PIECE) (void)flush();
  }

  const WritePiece& _write;
  std::string _pending;
  bool _isWritten = true;
};

PageData wordsOf(const std::string& words) {
  return pageObject({{"words", words}});
}

/// A number with words that are not only another form of one noun.
std::string countOf(std::size_t count, const char* one, const char* many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string titleOf(const Job& job, const ReportForm& form) {
  for (const std::string& given : {form.title, job.description.title}) {
    if (std::string title = oneLine(given); !title.empty()) return shortenedTo(200, title);
  }
  return "Cable test report";
}

/// Text as the inside of a CSS string, for a line of a sheet: no ASCII character of it but letters and digits is
/// written as itself.
std::string cssText(const std::string& text) {
  constexpr std::size_t MOST = 100;
  const std::string shown = printable(text);
  std::string css;
  for (const char c : shown.substr(0, cutAt(shown, MOST))) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = byte >= 0x80 || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    css += isPlain ? std::string(1, c) : fmt::format("\\{:06x}", byte);
  }
  return css;
}

std::string periodOf(const Report& report, const TimeZone& zone) {
  if (report.firstTime == 0) return {};
  const std::string first = zone.day(report.firstTime), last = zone.day(report.lastTime);
  return first == last ? first : first + " to " + last;
}

/// The zone, and what it is ahead of UTC at the times of all results, also of those that do not count.
std::string zoneOf(const Job& job, const TimeZone& zone) {
  std::optional<std::pair<time_t, time_t>> period;
  for (const ResultRow& row : job.files.rows) {
    if (!hasTime(row)) continue;
    const auto time = static_cast<time_t>(row.summary.timeStamp);
    if (!period) period = {time, time};
    period = {std::min(period->first, time), std::max(period->second, time)};
  }
  return period ? zone.nameDuring(period->first, period->second) : zone.name();
}

std::string mediaOf(const Report& report) {
  std::string text;
  for (const MediumReport& medium : report.media) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", medium.rows.size(), medium.phrase);
  }
  return text;
}

PageData factsOf(const Job& job, const Report& report, const ReportForm& form, const TimeZone& zone) {
  const JobDescription& description = job.description;
  PageData facts(PageData::type::list);
  const auto add = [&facts](const char* name, const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    PageData fact = pageObject({{"name", name}});
    fact["lines"] = pageList(lines, [](const std::string& line) { return pageObject({{"text", line}}); });
    facts << fact;
  };
  add("Customer", shownLines(description.customer));
  add("Site", shownLines(description.site));
  add("Reference", shownLines(description.reference));
  add("Tested by", shownLines(description.operatorName));
  add("Tested", linesOf(periodOf(report, zone)));
  add("Times", linesOf(zoneOf(job, zone)));
  add("Results that count", linesOf(mediaOf(report)));
  for (const std::string& instrument : form.instruments) add("Instrument", {instrument});
  return facts;
}

std::string tooLargeWords(const Job& job) {
  return countOf(job.files.leftOut.size(), "file was too large to be read here",
                 "files were too large to be read here");
}

/// What the page says of a link without a result, of which a file that was not read may have one.
std::string missingWords(const JobLink& link, const Job& job, const Report& report) {
  if (link.state != LinkState::MISSING || job.files.leftOut.empty()) return {};
  return report.tooLarge.count(link.id) > 0 ? "a file of this name was too large to be read here" : tooLargeWords(job);
}

/// What a reader of the page must know first.
std::vector<std::string> alertsOf(const Job& job, const Report& report, Edition edition) {
  std::vector<std::string> alerts;
  if (job.description.isGuessed) alerts.push_back(std::string(GUESSED_NOTE) + ".");
  const std::size_t damagedLinks = report.counts.damaged + report.foreign.damaged;
  if (damagedLinks > 0) alerts.push_back(counted(damagedLinks, "link") + " could not be read: test again.");
  if (!report.strays.empty()) {
    alerts.push_back(counted(report.strays.size(), "file") + " could not be read; nobody knows of which link.");
  }
  if (!job.expected.empty() && !report.status.foreign.empty()) {
    alerts.push_back(countOf(report.status.foreign.size(), "link has an ID that is", "links have IDs that are") +
                     " not expected.");
  }
  if (!job.files.leftOut.empty()) {
    const char* const links = report.counts.missing > 0 ? "; what is not tested may be there." : ".";
    alerts.push_back(tooLargeWords(job) + links);
  }
  const std::size_t damaged = damagedFiles(job.files);
  if (edition == Edition::TECHNICIAN && damaged > 0) {
    alerts.push_back(countOf(damaged, "file is", "files are") + " damaged.");
  }
  return alerts;
}

/// How the palette has a colour on paper and on a light screen, for an address: "%23b3123a".
std::string inkOf(const char* colour) {
  const std::string_view sheet = REPORT_STYLE;
  const std::string variable = fmt::format("--{}: #", colour);
  const std::size_t at = sheet.find(variable);
  return at == std::string_view::npos ? "black" : fmt::format("%23{}", sheet.substr(at + variable.size(), 6));
}

template <class Look>
PageData markOf(const Look& look) {
  const auto paint = [&look](const std::string& ink) {
    return look.isStroked ? "fill='none' stroke='" + ink + "' stroke-width='.42'" : "fill='" + ink + "'";
  };
  return pageObject({{"name", look.style},
                     {"colour", look.colour},
                     {"shape", look.shape},
                     {"kind", look.isStroked ? "drawn" : "filled"},
                     {"mask", paint("black")},
                     {"ink", paint(inkOf(look.colour))}});
}

/// Every mark once: links have those of verdicts where they look alike.
PageData marks() {
  PageData list(PageData::type::list);
  for (std::size_t i = 0; i < VERDICTS; ++i) list << markOf(verdictLook(i));
  for (const LinkState state : {LinkState::DAMAGED, LinkState::MISSING}) list << markOf(stateLook(state));
  return list;
}

void addStates(const Report& report, PageData& page) {
  const LinkCounts &counts = report.counts, &foreign = report.foreign;
  constexpr std::size_t LinkCounts::*OF[LINK_STATES] = {&LinkCounts::passed,  &LinkCounts::passedStar,
                                                        &LinkCounts::failed,  &LinkCounts::noVerdict,
                                                        &LinkCounts::damaged, &LinkCounts::missing};
  PageData tiles(PageData::type::list), states(PageData::type::list);
  for (std::size_t i = 0; i < LINK_STATES; ++i) {
    const StateLook& look = stateLook(i);
    const std::size_t count = counts.*OF[i], others = foreign.*OF[i];
    const double share =
        counts.expected == 0 ? 0 : 100.0 * static_cast<double>(count) / static_cast<double>(counts.expected);
    std::string detail = fmt::format("{:.1f} %", share);
    if (others > 0) detail += fmt::format(", and {} not expected", others);
    PageData tile =
        pageObject({{"style", look.style}, {"word", look.word}, {"count", std::to_string(count)}, {"detail", detail}});
    tile["isZero"] = PageData(count + others == 0);
    tiles << tile;
    states << pageObject({{"style", look.style}, {"word", look.word}});
  }
  page["tiles"] = std::move(tiles);
  page["states"] = std::move(states);
}

/// A link in the grid, or in the list of those that need work.
PageData dataOf(const JobLink& link) {
  const StateLook& look = stateLook(link.state);
  return pageObject({{"style", look.style},
                     {"word", look.word},
                     {"note", link.state == LinkState::PASSED ? "" : look.shortWord},
                     {"id", shownId(link.id)},
                     {"anchor", anchorOf(link.id)}});
}

/// What is said of a link that needs work: "not expected, Copper, 88.0 m, headroom -0.20 dB, and 2 more".
std::string workWords(const JobLink& link, const Job& job, const Report& report) {
  std::string words;
  const auto add = [&words](const std::string& what) {
    if (!what.empty()) words += (words.empty() ? "" : ", ") + what;
  };
  if (!job.expected.empty() && !link.isExpected) add("not expected");
  std::size_t others = 0;
  if (const ResultRow* const worst = worstOf(link, others)) {
    add(mediumOf(*worst));
    add(measuredWords(*worst));
    if (others > 0) add(fmt::format("and {} more", others));
  }
  if (link.state == LinkState::DAMAGED) add("test again");
  add(missingWords(link, job, report));
  return words;
}

/// The room that the cells of a grid have for their IDs, in characters.
std::string widthOf(const std::vector<const JobLink*>& links) {
  constexpr std::size_t LEAST = 4, MOST = 32;
  std::size_t width = LEAST;
  for (const JobLink* link : links) width = std::max(width, std::min(shownId(link->id).size(), MOST));
  return std::to_string(width);
}

/// Long lists stand in groups, of which a browser lays out those that are seen.
void addGroup(std::size_t place, std::size_t count, std::size_t most, PageData& data) {
  if (place % most == 0) data["group"] = PageData(std::to_string(std::min(most, count - place)));
  data["isLast"] = PageData(place % most == most - 1 || place + 1 == count);
}

template <class Item>
void addGroup(const Item& item, const std::vector<Item>& items, PageData& data) {
  constexpr std::size_t MOST = 100;
  addGroup(static_cast<std::size_t>(&item - items.data()), items.size(), MOST, data);
}

/// The links that are judged, and after a heading those that are not expected.
void addGrid(const Report& report, Page& out, PageData& page) {
  constexpr std::size_t MOST_ON_HALF_A_SHEET = 200;  // in print
  constexpr std::size_t MOST_IN_A_LIST = 840;        // whole rows of up to eight cells, and of ten
  const std::vector<const JobLink*>&judged = report.judged, &foreign = report.status.foreign;
  page["hasMany"] = PageData(judged.size() > MOST_ON_HALF_A_SHEET);
  page["gridWidth"] = PageData(widthOf(judged));
  page["grid"] = out.eachOf(report.grid, [&report, foreignWidth = widthOf(foreign)](const JobLink* const& link) {
    PageData data = dataOf(*link);
    const std::size_t judgedLinks = report.judged.size();
    const auto place = static_cast<std::size_t>(&link - report.grid.data());
    if (place == judgedLinks) data["foreignWidth"] = PageData(foreignWidth);
    if (place < judgedLinks)
      addGroup(place, judgedLinks, MOST_IN_A_LIST, data);
    else
      addGroup(place - judgedLinks, report.grid.size() - judgedLinks, MOST_IN_A_LIST, data);
    return data;
  });
}

std::string linkFacts(const Job& job, const Report& report) {
  std::string text;
  for (const ExpectedIds::Range& range : job.expected.ranges()) text += (text.empty() ? "" : ", ") + range.text;
  text = shortenedTo(500, text);
  if (!text.empty()) text = "Expected: " + text + ". ";
  text += counted(report.counts.expected, "link");
  if (report.counts.testedAgain > 0) text += fmt::format(", {} of them tested again", report.counts.testedAgain);
  return text + ".";
}

/// Sorts failures first and passes last.
std::size_t rankOf(const TableRow& row) {
  constexpr std::size_t WITHOUT_RESULT = 10, NO_VERDICT = 20, PASS = 40;
  if (row.result == nullptr) return WITHOUT_RESULT + static_cast<std::size_t>(row.link->state);
  const Veltra::Status status = row.result->summary.status;
  return severityOf(status) + (isFail(status) ? 0 : isPass(status) ? PASS : NO_VERDICT);
}

PageData dataOf(const TableRow& row, const ReportForm& form, const TimeZone& zone) {
  const JobLink& link = *row.link;
  const StateLook& state = stateLook(row.result != nullptr ? stateOf(row.result->summary.status) : link.state);
  PageData data = pageObject({{"state", state.style},
                              {"rank", std::to_string(rankOf(row))},
                              {"style", state.style},
                              {"word", state.word},
                              {"id", shownId(link.id)},
                              {"anchor", anchorOf(link.id)}});
  data["isTechnical"] = PageData(form.edition == Edition::TECHNICIAN);
  if (row.result == nullptr) return data;
  const Veltra::ResultSummary& s = row.result->summary;
  const VerdictLook& look = verdictLook(severityOf(s.status));
  data["style"] = PageData(look.style);
  data["word"] = PageData(look.word);
  data["medium"] = PageData(mediumOf(*row.result));
  data["length"] = PageData(measurementText(s.length));
  data["headroom"] = PageData(measurementText(s.headroom));
  data["passed"] = PageData(std::to_string(s.numPassTests));
  data["starred"] = PageData(std::to_string(s.numPassStarTests));
  data["failed"] = PageData(std::to_string(s.numFailTests));
  data["time"] = PageData(hasTime(*row.result) ? zone.minute(static_cast<time_t>(s.timeStamp)) : "-");
  data["file"] = PageData(row.result->file);
  return data;
}

PageData dataOf(const Figure& figure) {
  PageData data = pageObject({{"caption", figure.caption}, {"chart", figure.chart}, {"note", figure.note}});
  data["hasLegend"] = PageData(!figure.legend.empty());
  data["legend"] = pageList(figure.legend, [](std::size_t severity) {
    return pageObject({{"style", verdictLook(severity).style}, {"word", verdictLook(severity).word}});
  });
  return data;
}

/// "28 results: 3 Fail, 25 Pass"
std::string factsOf(const MediumReport& medium) {
  const VerdictCounts verdicts = verdictCounts(medium.rows);
  std::string text = counted(medium.rows.size(), "result");
  const char* separator = ": ";
  for (std::size_t i = 0; i < VERDICTS; ++i) {
    if (verdicts[i] == 0) continue;
    text += fmt::format("{}{} {}", separator, verdicts[i], verdictLook(i).word);
    separator = ", ";
  }
  return text;
}

std::string anchorOf(const MediumReport& medium) {
  return std::string("medium-") + (medium.name == "No medium" ? "none" : medium.phrase);
}

PageData dataOf(const MediumReport& medium) {
  PageData data = pageObject({{"name", medium.name}, {"anchor", anchorOf(medium)}, {"facts", factsOf(medium)}});
  data["figures"] = pageList(figuresOf(medium), [](const Figure& figure) { return dataOf(figure); });
  return data;
}

PageData dataOf(const FileNote& note) {
  PageData data = pageObject({{"file", note.file},
                              {"state", note.isDamaged ? "damaged" : "warning"},
                              {"next", note.next},
                              {"advice", note.advice}});
  PageData findings = pageList(note.findings, [](const Finding& finding) { return wordsOf(describe(finding)); });
  if (note.leftOut > 0) findings << wordsOf(fmt::format("and {} more", note.leftOut));
  data["findings"] = std::move(findings);
  return data;
}

PageData contentsOf(const Report& report, bool hasLinks, const char* filesHeading) {
  PageData list(PageData::type::list);
  const auto add = [&list](const std::string& anchor, const std::string& name, const std::string& detail = {}) {
    list << pageObject({{"anchor", anchor}, {"name", name}, {"detail", detail}});
  };
  if (!report.work.empty()) add("work", "Links that need work", std::to_string(report.work.size()));
  if (hasLinks) add("links", "All links", std::to_string(report.grid.size()));
  if (hasLinks) add("results", "Results", std::to_string(report.counted));
  for (const MediumReport& medium : report.media) {
    add(anchorOf(medium), medium.name, std::to_string(medium.rows.size()));
  }
  if (hasLinks) add("blocks", "Each link");
  if (*filesHeading != '\0') add("files", filesHeading);
  return list;
}

/// The heading of what the page says of files; "" if there is nothing to say.
const char* filesHeadingOf(const Job& job, const Report& report, const std::vector<std::string>& remarks,
                           Edition edition) {
  const JobFiles& files = job.files;
  if (edition == Edition::CUSTOMER) return report.strays.empty() ? "" : "Files that could not be read";
  const bool isSilent = remarks.empty() && files.notes.empty() && files.unread.empty() && files.withoutResult.empty() &&
                        files.others == 0;
  return isSilent ? "" : "Files";
}

/// What a technician is told of files.
void addFiles(const JobFiles& files, const std::vector<std::string>& remarks, Page& out, PageData& page) {
  page["hasRemarks"] = PageData(!remarks.empty());
  page["remarks"] = out.eachOf(remarks, wordsOf);
  page["hasNotes"] = PageData(!files.notes.empty());
  page["notes"] = out.eachOf(files.notes, [](const FileNote& note) { return dataOf(note); });
  page["hasUnread"] = PageData(!files.unread.empty());
  page["unread"] = out.eachOf(files.unread, wordsOf);
  page["hasWithoutResult"] = PageData(!files.withoutResult.empty());
  page["withoutResult"] = out.eachOf(files.withoutResult, wordsOf);
  if (files.others > 0) {
    page["others"] = PageData(countOf(files.others, "other file is no container", "other files are no containers"));
  }
}

/// Whether a file is a page of any version: HTML that names its maker near its begin. False if it cannot be read.
bool isReportPage(const std::string& path) {
  constexpr char TYPE[] = "<!DOCTYPE html>", MAKER[] = "<meta name=\"generator\" content=\"veltra report\">";
  std::string begin(1024, '\0'), error;
  ByteSource source;
  if (!source.openFile(path, error)) return false;
  begin.resize(source.readAt(0, begin.data(), begin.size()));
  return begin.rfind(TYPE, 0) == 0 && begin.find(MAKER) != std::string::npos;
}

constexpr char EXPLANATION[] =
    "A link is all results of one ID. A later result stands for an earlier one of the same medium if it contains all "
    "tests of it; copies count once, and files that could not be read do not count. A link has the worst verdict of "
    "the results that count. > and < say that a value is above or below what is shown; - that there is none.";

}  // namespace

bool writeReport(const Job& job, const ReportForm& form, const TimeZone& zone, const WritePiece& write,
                 std::vector<UnreadAgain>& unread) {
  const Report report = reportOf(job);
  const std::vector<std::string> alerts = alertsOf(job, report, form.edition);
  const std::string title = titleOf(job, form);
  const bool hasUnread = !report.strays.empty() || !job.files.leftOut.empty();
  const bool hasLinks = !job.links.empty(), isTechnical = form.edition == Edition::TECHNICIAN;
  std::vector<std::string> remarks = report.status.notes;
  remarks.erase(std::remove(remarks.begin(), remarks.end(), GUESSED_NOTE), remarks.end());  // an alert says it
  const char* const filesHeading = filesHeadingOf(job, report, remarks, form.edition);
  Page out(write);
  PageData page = pageObject({{"title", title},
                              {"cssTitle", cssText(title)},
                              {"lead", verdictSentence(report.counts, report.foreign, hasUnread)},
                              {"linkFacts", linkFacts(job, report)},
                              {"filesHeading", filesHeading},
                              {"explanation", EXPLANATION},
                              {"hash", REPORT_SCRIPT_HASH},
                              {"script", REPORT_SCRIPT},
                              {"style", REPORT_STYLE},
                              {"logo", form.logo.uri},
                              {"logoWidth", std::to_string(form.logo.width)},
                              {"logoHeight", std::to_string(form.logo.height)}});
  page["isTechnical"] = PageData(isTechnical);
  page["marks"] = marks();
  page["hasAlerts"] = PageData(!alerts.empty());
  page["alerts"] = pageList(alerts, wordsOf);
  page["facts"] = factsOf(job, report, form, zone);
  page["contents"] = contentsOf(report, hasLinks, filesHeading);
  page["hasContents"] = PageData(!page["contents"].list_value().empty());
  page["hasTiles"] = PageData(report.counts.expected > 0);
  addStates(report, page);

  page["hasWork"] = PageData(!report.work.empty());
  page["work"] = out.eachOf(report.work, [&job, &report](const JobLink* const& link) {
    PageData data = dataOf(*link);
    addGroup(link, report.work, data);
    if (const std::string words = workWords(*link, job, report); !words.empty()) data["detail"] = PageData(words);
    return data;
  });
  page["hasLinks"] = PageData(hasLinks);
  addGrid(report, out, page);
  page["rows"] = out.eachOf(report.table, [&form, &zone, &report](const TableRow& row) {
    PageData data = dataOf(row, form, zone);
    if (row.place != static_cast<std::size_t>(&row - report.table.data())) {
      data["order"] = PageData(std::to_string(row.place));
    }
    addGroup(row, report.table, data);
    return data;
  });
  page["media"] = pageList(report.media, [](const MediumReport& medium) { return dataOf(medium); });
  page["blocks"] = out.eachOf(job.links, [&](const JobLink& link) {
    PageData data = linkBlock(link, form, zone, unread);
    const std::string missing = missingWords(link, job, report);
    if (link.state == LinkState::MISSING) {
      data["missing"] = PageData(missing.empty() ? "Not tested." : "No result was found; " + missing + ".");
    }
    addGroup(link, job.links, data);
    return data;
  });
  page["unreadAgain"] = out.eachOf(unread, [&form](const UnreadAgain& each) {
    return pageObject({{"file", shownFile(each.file, form.edition)}});
  });

  addFiles(job.files, remarks, out, page);
  page["strays"] =
      out.eachOf(report.strays, [](const std::string& file) { return wordsOf(shownFile(file, Edition::CUSTOMER)); });
  out.render(page);
  return out.flush();
}

void leaveOutPage(std::vector<std::string>& files, const std::string& page) {
  if (!isReportPage(page)) return;
  const auto isPage = [&page](const std::string& file) { return isSameFile(file, page); };
  files.erase(std::remove_if(files.begin(), files.end(), isPage), files.end());
}

}  // namespace Inspect
