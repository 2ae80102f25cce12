#include <algorithm>
#include <fstream>
#include <limits>
#include <random>
#include <regex>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/ChartScale.h>
#include <libinspect/report/PageText.h>
#include <libinspect/report/Report.h>
#include <libinspect/report/ReportCharts.h>
#include <libinspect/report/ReportPage.h>
#include <libinspect/report/ReportTemplate.h>

#include "RecordTesting.h"

namespace Inspect {
namespace {

using Veltra::ScaledInt;

ResultRow row(const std::string& id, Veltra::Status status, const std::string& length, const std::string& headroom,
              Veltra::ResultType type = Veltra::RESULT_TYPE_COPPER) {
  ResultRow row{"job/" + id + ".vres", {}, false};
  row.summary.resultName = id;
  row.summary.status = status;
  row.summary.resultType = type;
  row.summary.timeStamp = 1706692500;
  EXPECT_TRUE(row.summary.length.fromString(length));
  EXPECT_TRUE(row.summary.headroom.fromString(headroom));
  return row;
}

void fillJob(std::size_t count, double lengths, double headrooms, Job& job) {
  std::mt19937 random(1);
  const auto draw = [&random](double least, double range) {
    return fmt::format("{:.2f}", least + range * static_cast<double>(random() % 1000) / 1000);
  };
  for (std::size_t i = 0; i < count; ++i) {
    const auto status = static_cast<Veltra::Status>(1 << (random() % 8));
    job.files.rows.push_back(row(fmt::format("A{}", i), status, draw(45, lengths), draw(3 - headrooms / 2, headrooms)));
  }
}

std::string pageOf(Job& job, const ReportForm& form = {}) {
  std::string page;
  std::vector<UnreadAgain> unread;
  TimeZone zone;
  std::string error;
  EXPECT_TRUE(zone.use("UTC", error));
  job.settle(CountPolicy::LATEST);
  EXPECT_TRUE(writeReport(
      job, form, zone,
      [&page](std::string_view piece) {
        page += piece;
        return true;
      },
      unread));
  std::size_t counted = 0;  // none of their files exists
  for (const JobLink& link : job.links) {
    counted += static_cast<std::size_t>(
        std::count_if(link.results.begin(), link.results.end(), [](const LinkResult& each) { return each.counts; }));
  }
  EXPECT_EQ(unread.size(), counted);
  return page;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

/// What holds of every page, whatever the files say: it is whole, asks nothing of anybody, runs nothing but its own
/// script, and draws no number that is none.
void expectSelfContained(std::string page) {
  static const std::regex TAG(R"re(<(/?)([!\w]+)((?: [\w-]+="[^"]*"| (?:html|hidden|open))*)(/?)>|<)re"),
      FORBIDDEN(R"re(<script|<[^>]* (?:on\w*|src)=|<[^>]* href="[^#]|://|url\(|@import|\{\{)re"),
      NO_NUMBER(R"re(<[^>]* (?:x|y|d|width|height)="[^"]*[nfi])re"),
      MARKS(
          R"re(\n\.[\w-]+ \{ --c: var\(--[\w-]+\); --mark: url\("data:image/svg\+xml,%3Csvg xmlns='http://www.w3.org/2000/svg'[^"]*='black'[^"]*"\);)re"
          R"re( --printed: url\("data:image/svg\+xml,%3Csvg xmlns='http://www.w3.org/2000/svg'[^"]*='%23[0-9a-f]{6}'[^"]*"\); \})re");
  for (const std::string& own : {std::string(REPORT_STYLE), "<script>" + std::string(REPORT_SCRIPT) + "</script>"}) {
    const std::size_t at = page.find(own);
    ASSERT_NE(at, std::string::npos);
    page.erase(at, own.size());
  }
  page = std::regex_replace(page, MARKS, "");
  static const std::set<std::string> VOID = {"!DOCTYPE", "img", "input", "meta"};
  std::vector<std::string> open;
  for (std::sregex_iterator tag(page.begin(), page.end(), TAG), end; tag != end; ++tag) {
    const std::string name = (*tag)[2];
    ASSERT_FALSE(name.empty()) << page.substr(static_cast<std::size_t>(tag->position()), 80);
    if ((*tag)[1] == "/") {
      ASSERT_TRUE(!open.empty() && open.back() == name) << name;
      open.pop_back();
    } else if ((*tag)[4] != "/" && VOID.count(name) == 0) {
      open.push_back(name);
    }
  }
  EXPECT_TRUE(open.empty());
  std::smatch found;
  for (const std::regex& none : {FORBIDDEN, NO_NUMBER})
    EXPECT_FALSE(std::regex_search(page, found, none)) << found.str();
}

// Ticks are round and few, zero is an edge of bins, a far value leaves room for the others, decimals fall into the bin
// they begin, one among thousands has a bar: all of it is in the golden file.
TEST(ChartScale, AxesBinsAndBarsAreThoseOfTheTable) {
  std::vector<double> far = {2000, -900}, tenths, thousands(4001, 7.0);
  for (int i = 0; i < 50; ++i) far.push_back(i / 10.0);
  for (int i = -10; i <= 10; ++i) tenths.push_back(i / 10.0);
  thousands.push_back(1);
  const std::vector<double> rows[] = {far,
                                      tenths,
                                      thousands,
                                      {-231, 0, 10, 20, 30, 40, 50, 60, 70, 309, 311},
                                      {-2001, -1000, -1000, -1000, -1000, -1000, -1000, -1000, -1, 5},
                                      {0, 0, 0, 0, 0, 0, 0, 3.9, 4.1},
                                      {100, 100},
                                      {0},
                                      {30, 40},
                                      {-30, -40},
                                      {0.3, 0.1},
                                      {0.0011, 0.0042, 0.0013},
                                      {-7.1e9, 2.2e9, 3.3e8},
                                      {1204, 1198.5, 300, 77, 4020}};
  std::string table;
  for (const std::vector<double>& values : rows) {
    for (const bool withZero : {false, true}) {
      const Axis axis = axisFor(values, withZero);
      const Histogram made = histogramOf(values, withZero);
      table += fmt::format(
          "{} values{}: {:.10g} to {:.10g}; axis {:.10g} to {:.10g} by {:.10g}, bins of {:.10g}: {}|{}|{}\n",
          values.size(), withZero ? " and 0" : "", axis.low, axis.high, made.axis.low, made.axis.high, made.axis.tick,
          made.width, made.below, fmt::join(made.counts, " "), made.above);
      for (const double tick : made.axis.ticks()) table += " " + made.axis.text(tick);
      table += "\n" + histogramSvg(made, {"Length", "m"}, withZero, "Lengths") + "\n";
    }
  }
  RecordTesting::expectGoldenText(table, "chart_scale");
}

TEST(ReportPage, EveryJobGivesAWholePage) {
  // None, one, all the same, varied, huge: so many, their lengths and headrooms within these ranges.
  const std::tuple<std::size_t, double, double> cases[] = {
      {0, 0, 0}, {1, 0, 0}, {40, 0, 0}, {700, 90, 5}, {60, 2e7, 2e7}};
  for (const auto& [count, lengths, headrooms] : cases) {
    SCOPED_TRACE(count);
    Job job;
    fillJob(count, lengths, headrooms, job);
    const std::string page = pageOf(job);
    expectSelfContained(page);
    EXPECT_EQ(countOf(page, "<td class=\"verdict "), count);
    EXPECT_EQ(countOf(page, "<svg class=\"chart\""), count == 0 ? 0u : 3u);
    EXPECT_EQ(countOf(page, "<tbody style"), countOf(page, "</tr></tbody>"));
  }
}

// A page that cannot be written to its end is not made to its end, and no link after that is read.
TEST(ReportPage, EndsWithTheFirstPieceThatCannotBeWritten) {
  Job job;
  fillJob(700, 90, 5, job);
  job.settle(CountPolicy::LATEST);
  std::size_t pieces = 0;
  std::vector<UnreadAgain> unread;
  EXPECT_FALSE(writeReport(
      job, {}, TimeZone(), [&pieces](std::string_view) { return ++pieces < 3; }, unread));
  EXPECT_EQ(pieces, 3u);
}

TEST(Report, VerdictSentencesAreThoseOfTheTable) {
  std::string table;
  for (unsigned each = 0; each < 3 * 2 * 2 * 3; ++each) {
    LinkCounts counts;
    counts.passed = each % 3 == 2 ? 12 : each % 3;
    counts.passedStar = each / 3 % 2;
    counts.failed = each / 6 % 2 * 2;
    counts.noVerdict = counts.missing = each / 12 % 3;
    counts.damaged = each / 12 % 3 / 2;
    counts.expected =
        counts.passed + counts.passedStar + counts.failed + counts.noVerdict + counts.missing + counts.damaged;
    table += verdictSentence(counts, {}, each % 2 == 1) + "\n";
  }
  LinkCounts counts, foreign;
  counts.expected = counts.passed = foreign.expected = foreign.passed = 1;
  table += verdictSentence(counts, foreign, false) + "\n";
  foreign.expected += foreign.failed = foreign.damaged = 1;
  ++foreign.expected;
  table += verdictSentence(counts, foreign, false) + "\n";
  counts.expected += counts.missing = 1;
  table += verdictSentence(counts, foreign, false) + "\n";
  RecordTesting::expectGoldenText(table, "report_leads");
}

TEST(Report, ThePeriodSpansResultsThatWereReplacedAndNoDamagedOnes) {
  Job job;
  job.files.rows.assign(3, row("A1", Veltra::STATUS_PASS, "45.0", "1.0"));
  job.files.rows[0].summary.timeStamp = 1000;
  job.files.rows[2].summary.timeStamp = 2000000000;
  job.files.rows[2].isDamaged = true;
  job.settle(CountPolicy::LATEST);
  const Report report = reportOf(job);
  EXPECT_EQ(report.counted, 1u);
  EXPECT_EQ(report.firstTime, 1000);
  EXPECT_EQ(report.lastTime, 1706692500);
}

TEST(Report, TheZoneOfThePageIsThatOfTheProcessOnlyWhileItIsMade) {
  std::string error;
  ASSERT_EQ(setenv("TZ", "Asia/Tokyo", 1), 0);
  {
    TimeZone zone;
    EXPECT_FALSE(zone.use("Europe/Nowhere", error));
    EXPECT_EQ(zone.nameDuring(0, 1774746000), "Asia/Tokyo, UTC+09:00");
    ASSERT_TRUE(zone.use("Europe/Berlin", error));
    constexpr time_t SUMMER = 1774746000, YEAR = 31536000;  // the first second of summer time
    EXPECT_EQ(zone.minute(SUMMER), "2026-03-29 03:00");
    const std::tuple<time_t, time_t, const char*> periods[] = {
        {SUMMER - 1, SUMMER - 1, "Europe/Berlin, UTC+01:00"},
        {SUMMER - 1, SUMMER, "Europe/Berlin, UTC+01:00, from 2026-03-29 UTC+02:00"},
        {SUMMER - 9, SUMMER + YEAR * 3 / 4,
         "Europe/Berlin, UTC+01:00, from 2026-03-29 UTC+02:00, from 2026-10-25 UTC+01:00"},
        {SUMMER, SUMMER + 4 * YEAR, "Europe/Berlin, UTC+02:00, UTC+01:00 in turn"},
        {1, std::numeric_limits<time_t>::max(), "Europe/Berlin, UTC+01:00, UTC+02:00 in turn"}};
    for (const auto& [first, last, text] : periods) EXPECT_EQ(zone.nameDuring(first, last), text);
  }
  EXPECT_STREQ(getenv("TZ"), "Asia/Tokyo");
  EXPECT_EQ(TimeZone().minute(0), "1970-01-01 09:00");
  ASSERT_EQ(unsetenv("TZ"), 0);
}

TEST(Report, TextsOfPeopleAreShownByTheirLines) {
  const std::tuple<const char*, const char*> rows[] = {
      {" Sample  Street 12\r\n\n \t Floor\xC2\xA0 2 ", "Sample Street 12|Floor 2"},
      {"a\xE2\x80\xA8"
       "b\xC2\x85"
       "c\xE2\x80\x8B\xE2\x80\xA9\xEF\xBB\xBF",
       "a|b|c\xE2\x80\x8B"},
      {" \n\t\xE3\x80\x80\xE2\x80\x8D", ""},
      {"\xE2\x80\xAE\xFF\xE2\x80", "\xE2\x80\xAE\xFF\xE2\x80"}};
  for (const auto& [text, lines] : rows) EXPECT_EQ(fmt::format("{}", fmt::join(linesOf(text), "|")), lines);
  // IDs that differ only in what nobody sees.
  const std::tuple<const char*, const char*> ids[] = {{"A 1", "A 1"},
                                                      {"A  1 ", "A\u2423\u24231\u2423"},
                                                      {" A 1", "\u2423A 1"},
                                                      {"A\xC2\xA0\xE2\x80\x8B"
                                                       "1",
                                                       "A[U+00A0][U+200B]1"},
                                                      {" \xE2\x80\x8B", "\u2423[U+200B] (2 unseen characters)"}};
  for (const auto& [id, shown] : ids) EXPECT_EQ(shownId(id), shown);
  EXPECT_EQ(shownId(std::string(300, 'A')), std::string(200, 'A') + "... (300 bytes in all)");
  EXPECT_EQ(shownLines("a\n" + std::string(2000, '\n')).back(), "... (2002 bytes in all)");
  EXPECT_EQ(shownId("\t"), "\t");  // shown as an escape
  EXPECT_EQ(shownId(""), "(no ID)");
}

// A logo that is cut anywhere would be a broken picture on every page.
TEST(Report, ALogoIsWholeOrRefused) {
  const auto bytesOf = [](const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
      bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
  };
  const std::string tables =
      "FFC40014000100000000000000000000000000000000"
      "FFC40014100100000000000000000000000000000000";
  const std::string rows[] = {bytesOf("89504e470d0a1a0a0000000d49484452000000010000000108000000003a7e9b550000"
                                      "000a4944415478da6360000000020001e527defc0000000049454e44ae426082"),
                              bytesOf("FFD8FFC0000B080001000101011100" + tables +
                                      "FFDA0008010100003F00"
                                      "7FFF00D0FFFFD9")};
  RecordTesting::TempDir folder;
  const std::string path = folder.file("logo");
  for (const std::string& whole : rows) {
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      Picture logo;
      std::string error;
      std::ofstream(path, std::ios::binary) << whole.substr(0, size);
      EXPECT_EQ(readLogo(path, logo, error), size == whole.size()) << size << error;
    }
  }
}

// An address that was mailed leads to the same link in the next page, and to no other.
TEST(Report, AnchorsAreSafeAndTellIdsApart) {
  EXPECT_EQ(anchorOf("A-001"), "link-A-001");
  EXPECT_EQ(anchorOf("a_1 \"><\xC3\xA9"), "link-a_5f1_20_22_3e_3c_c3_a9");
  EXPECT_NE(anchorOf("_20"), anchorOf(" "));
}

// Text that is markup or cannot be shown, numbers that are none, damage, what was not read, expected IDs.
TEST(ReportPage, OfAwkwardResultsIsTheGoldenOne) {
  const std::string hostile = "\"><script>x</script>' onload='a' {title} \x01\xff\xE2\x80\xAE https:";
  Job job;
  std::string error;
  ASSERT_TRUE(job.expected.add("A1..A9", error));
  job.description = {hostile, hostile, hostile, hostile, hostile, "", {}, true};
  job.files.rows = {row(hostile, Veltra::STATUS_FAIL, "45.0", "-1.0"),
                    row("A1", Veltra::STATUS_PASS, "45.0", "NaN"),
                    row("A2", Veltra::STATUS_PASS, "N/A", "+inf"),
                    row("A3", Veltra::STATUS_FAIL, "46.0", "---"),
                    row("A3", Veltra::STATUS_PASS, ">47.0", "2.00"),
                    row("A4", static_cast<Veltra::Status>(5), "1", "9.0"),
                    row("A5", Veltra::STATUS_FAIL_STAR, "1", "-9.0"),
                    row("A6", Veltra::STATUS_PASS, "1", "1.0"),
                    row("B1", Veltra::STATUS_FAIL, "700", "-1.0", Veltra::RESULT_TYPE_FIBER)};
  job.files.rows[7].summary.headroom.value = ScaledInt::fromRaw(5, static_cast<ScaledInt::ScaledTo>(9));
  job.files.notes = {{hostile, true, {{E04_DATA_CRC, 24, 1, "1", hostile}}, 3, hostile, ""},
                     {"job/A6.vres", true, {}, 0, "", ""}};
  job.files.unread = {hostile};
  job.files.lost = {hostile, "job/A6.vres"};
  job.files.withoutResult = {hostile};
  ReportForm form;
  form.title = hostile;
  form.edition = Edition::TECHNICIAN;
  form.instruments = {hostile};
  const std::string page = pageOf(job, form);
  expectSelfContained(page);
  RecordTesting::expectGoldenText(
      std::regex_replace(page.substr(page.find("@page :first"), page.find("<script>") - page.find("@page :first")),
                         std::regex("><"), ">\n<"),
      "report_page");
}

}  // namespace
}  // namespace Inspect
