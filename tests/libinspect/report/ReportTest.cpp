#include <random>
#include <regex>
#include <tuple>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/ChartScale.h>
#include <libinspect/report/ReportCharts.h>
#include <libinspect/report/ReportPage.h>

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

JobFiles jobOf(std::size_t count, double lengths, double headrooms) {
  JobFiles job;
  std::mt19937 random(1);
  const auto draw = [&random](double least, double range) {
    return fmt::format("{:.2f}", least + range * static_cast<double>(random() % 1000) / 1000);
  };
  for (std::size_t i = 0; i < count; ++i) {
    const auto status = static_cast<Veltra::Status>(1 << (random() % 8));
    job.rows.push_back(row(fmt::format("A{}", i), status, draw(45, lengths), draw(3 - headrooms / 2, headrooms)));
  }
  return job;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

/// What holds of every page, whatever the files say: it is whole, asks nothing of anybody, runs nothing, and draws no
/// number that is none.
void expectSelfContained(const std::string& page) {
  static const std::regex TAG(R"re(<(/?)([!\w]+)((?: [\w-]+="[^"]*"| html)*)(/?)>|<)re"),
      FORBIDDEN(R"re(<script|<[^>]* (?:on\w*|src)=|<[^>]* href="[^#]|://|url\(|@import|\{\{)re"),
      NO_NUMBER(R"re(<[^>]* (?:x|y|d|width|height)="[^"]*[nfi])re");
  std::vector<std::string> open;
  for (std::sregex_iterator tag(page.begin(), page.end(), TAG), end; tag != end; ++tag) {
    const std::string name = (*tag)[2];
    ASSERT_FALSE(name.empty()) << page.substr(static_cast<std::size_t>(tag->position()), 80);
    if ((*tag)[1] == "/") {
      ASSERT_TRUE(!open.empty() && open.back() == name) << name;
      open.pop_back();
    } else if ((*tag)[4] != "/" && name != "meta" && name != "!DOCTYPE") {
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
    const std::string page = reportPage(jobOf(count, lengths, headrooms), "Job");
    expectSelfContained(page);
    EXPECT_EQ(countOf(page, "<td class=\"verdict\">"), count);
    EXPECT_EQ(countOf(page, "role=\"img\""), count == 0 ? 0u : 3u);
  }
}

// The lead of jobs of none to two results of each verdict, with a damaged file and one that could not be read.
TEST(ReportPage, TheLeadIsThatOfTheTable) {
  std::string table;
  for (unsigned job = 0; job < 2 * 2 * 27; ++job) {
    const unsigned counts[] = {job / 4 % 3, job / 12 % 3, job / 36};
    JobFiles made;
    std::size_t verdict = 0;
    for (const Veltra::Status status : {Veltra::STATUS_PASS, Veltra::STATUS_FAIL, Veltra::STATUS_NOT_SET}) {
      made.rows.insert(made.rows.end(), counts[verdict++], row("A1", status, "1", "1"));
    }
    made.notes.push_back({"a", job % 2 == 1, {{W02_UNKNOWN_TYPE, 0, 1, "", ""}}, 0, "", ""});
    if (job / 2 % 2 == 1) made.unread = {"b"};
    const std::string page = reportPage(made, "Job");
    std::smatch lead;
    EXPECT_TRUE(std::regex_search(page, lead, std::regex("<p class=\"lead\">([^<]*)<")));
    table += fmt::format("{}{}{}: {}\n", fmt::join(counts, " "), job % 2 == 1 ? " damaged" : "",
                         countOf(page, "1 file could not be read.") == 1 ? " unread" : "", lead[1].str());
  }
  RecordTesting::expectGoldenText(table, "report_leads");
}

// Text that is markup or cannot be shown, numbers that are none, damage, what was not read, expected IDs.
TEST(ReportPage, OfAwkwardResultsIsTheGoldenOne) {
  const std::string hostile = "\"><script>x</script>' onload='a' {title} \x01\xff\xE2\x80\xAE https:";
  ExpectedIds expected;
  std::string error;
  ASSERT_TRUE(expected.add("A1..A9", error));
  JobFiles job;
  job.expected = &expected;
  job.rows = {row(hostile, Veltra::STATUS_FAIL, "45.0", "-1.0"),
              row("A1", Veltra::STATUS_PASS, "45.0", "NaN"),
              row("A2", Veltra::STATUS_PASS, "N/A", "+inf"),
              row("A3", Veltra::STATUS_FAIL, "46.0", "---"),
              row("A3", Veltra::STATUS_PASS, ">47.0", "2.00"),
              row("A4", static_cast<Veltra::Status>(5), "1", "9.0"),
              row("A5", Veltra::STATUS_FAIL_STAR, "1", "-9.0"),
              row("A6", Veltra::STATUS_PASS, "1", "1.0"),
              row("B1", Veltra::STATUS_FAIL, "700", "-1.0", Veltra::RESULT_TYPE_FIBER)};
  job.rows[7].summary.headroom.value = ScaledInt::fromRaw(5, static_cast<ScaledInt::ScaledTo>(9));
  job.notes = {{hostile, true, {{E04_DATA_CRC, 24, 1, "1", hostile}}, 3, hostile, ""},
               {"job/A6.vres", true, {}, 0, "", ""}};
  job.unread = {hostile};
  job.withoutResult = {hostile};
  const std::string page = reportPage(job, "Job");
  expectSelfContained(page);
  RecordTesting::expectGoldenText(std::regex_replace(page.substr(page.find("<body")), std::regex("><"), ">\n<"),
                                  "report_page");
}

}  // namespace
}  // namespace Inspect
