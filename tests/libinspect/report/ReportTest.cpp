#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/ChartScale.h>
#include <libinspect/report/ReportCharts.h>
#include <libinspect/report/ReportPage.h>

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

JobFiles jobOf(std::size_t count, int32_t lengths, int32_t headrooms) {
  JobFiles job;
  std::mt19937 random(1);
  for (std::size_t i = 0; i < count; ++i) {
    ResultRow made = row("A" + std::to_string(i), static_cast<Veltra::Status>(1 << (random() % 8)), "1.0", "1.0");
    const auto draw = [&random](int32_t range) {
      return range == 0 ? 0 : static_cast<int32_t>(random() % static_cast<uint32_t>(range));
    };
    made.summary.length.value = ScaledInt::fromRaw(450 + draw(lengths), ScaledInt::SCALED_TO_TENTHS);
    made.summary.headroom.value =
        ScaledInt::fromRaw(300 + draw(headrooms) - headrooms / 2, ScaledInt::SCALED_TO_HUNDREDTHS);
    job.rows.push_back(made);
  }
  return job;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

struct Tag {
  std::string name;  ///< with its slash where it closes
  bool isAlone;
  std::map<std::string, std::string> attributes;
};

/// The tags of a page, for which every "<" begins one and every attribute has quotes. Anything else fails.
std::vector<Tag> tagsOf(const std::string& page) {
  std::vector<Tag> tags;
  for (std::size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at + 1)) {
    std::size_t end = page.find('>', at);
    Tag tag{
        page.substr(at + 1, page.find_first_of(" >", at) - at - 1), page[end - 1] == '/' || page[at + 1] == '!', {}};
    at += tag.name.size() + 1;
    while (page[at] == ' ' && page.find("=\"", at) < end) {
      const std::size_t equals = page.find("=\"", at), quote = page.find('"', equals + 2);
      tag.attributes[page.substr(at + 1, equals - at - 1)] = page.substr(equals + 2, quote - equals - 2);
      at = quote + 1;
      end = page.find('>', at);
    }
    tags.push_back(std::move(tag));
  }
  return tags;
}

/// What holds of every page, whatever the files say: it is whole, asks nothing of anybody, and runs nothing.
void expectSelfContained(const std::string& page) {
  const std::set<std::string> known = {
      "!DOCTYPE", "html",       "head",  "meta",  "title", "style",  "body",    "svg",   "symbol",
      "path",     "use",        "text",  "rect",  "main",  "header", "section", "h1",    "h2",
      "h3",       "p",          "ul",    "li",    "b",     "bdi",    "span",    "small", "div",
      "figure",   "figcaption", "table", "thead", "tbody", "tr",     "th",      "td",    "code"};
  std::vector<std::string> open;
  for (const Tag& tag : tagsOf(page)) {
    if (tag.name[0] == '/') {
      ASSERT_FALSE(open.empty()) << tag.name;
      ASSERT_EQ("/" + open.back(), tag.name);
      open.pop_back();
      continue;
    }
    EXPECT_EQ(known.count(tag.name), 1u) << tag.name;
    if (!tag.isAlone && tag.name != "meta") open.push_back(tag.name);
    for (const auto& [name, value] : tag.attributes) {
      EXPECT_NE(name.substr(0, 2), "on") << value;
      EXPECT_NE(name, "src");
      EXPECT_TRUE(name != "href" || value[0] == '#') << value;
      if (tag.name == "rect" || tag.name == "path" || tag.name == "use" || tag.name == "text") {
        const bool isNoNumber = name != "x" && name != "y" && name != "d" && name != "width" && name != "height";
        EXPECT_TRUE(isNoNumber || value.find_first_of("nfi") == std::string::npos) << name << " " << value;
      }
    }
  }
  EXPECT_TRUE(open.empty());
  for (const char* part : {"://", "url(", "@import", "{{"}) EXPECT_EQ(countOf(page, part), 0u) << part;
}

TEST(ChartScale, TicksAreRoundAndZeroIsAnEdge) {
  std::mt19937 random(3);
  for (int round = 0; round < 2000; ++round) {
    const double size = std::pow(10.0, static_cast<double>(random() % 13) - 3);
    const auto draw = [&] { return (static_cast<double>(random() % 20001) / 10000 - 1) * size; };
    std::vector<double> values(1 + random() % 40);
    for (double& value : values) value = draw();
    const Histogram histogram = histogramOf(values, round % 2 == 0);
    SCOPED_TRACE(
        fmt::format("round {}: {} to {}, bins of {}", round, histogram.axis.low, histogram.axis.high, histogram.width));
    std::size_t sum = histogram.below + histogram.above;
    for (const std::size_t count : histogram.counts) sum += count;
    EXPECT_EQ(sum, values.size());
    EXPECT_TRUE(histogram.counts.size() >= 2 && histogram.counts.size() <= 24) << histogram.counts.size();
    const double edge = histogram.axis.low / histogram.width;
    EXPECT_NEAR(edge, std::round(edge), 1e-6);
    const std::size_t ticks = histogram.axis.ticks().size();
    EXPECT_TRUE(ticks >= 2 && ticks <= 9) << ticks;
    const double digit = histogram.axis.tick / std::pow(10.0, std::floor(std::log10(histogram.axis.tick) + 1e-9));
    EXPECT_TRUE(std::abs(digit - 1) < 1e-6 || std::abs(digit - 2) < 1e-6 || std::abs(digit - 5) < 1e-6) << digit;
    EXPECT_TRUE(round % 2 == 1 || (histogram.axis.low <= 0 && histogram.axis.high >= 0));
  }
}

TEST(ChartScale, FarValuesLeaveRoomForTheOthers) {
  std::vector<double> values = {2000, -900};
  for (int i = 0; i < 50; ++i) values.push_back(i / 10.0);
  const Histogram histogram = histogramOf(values, true);
  EXPECT_EQ(histogram.below, 1u);
  EXPECT_EQ(histogram.above, 1u);
  EXPECT_LT(histogram.width, 5);
  EXPECT_EQ(histogramOf({0.3, 0.1}, false).below, 0u);
}

TEST(ChartScale, AnAxisReachesFourSpreadsBeyondTheMiddleHalf) {
  struct Row {
    const char* name;
    std::vector<double> values;
    bool withZero;
    double low, high;
  };
  const Row rows[] = {
      {"the middle half", {-231, 0, 10, 20, 30, 40, 50, 60, 70, 309, 311}, false, 0, 309},
      {"a quarter of the middle value",
       {-2001, -1000, -1000, -1000, -1000, -1000, -1000, -1000, -1, 5},
       false,
       -1000,
       -1},
      {"at least one", {0, 0, 0, 0, 0, 0, 0, 3.9, 4.1}, false, 0, 3.9},
      {"room around equal values", {100, 100}, false, 90, 110},
      {"room around zero", {0}, false, -1, 1},
      {"with zero", {30, 40}, true, 0, 40},
      {"with zero", {-30, -40}, true, -40, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const Axis axis = axisFor(row.values, row.withZero);
    EXPECT_DOUBLE_EQ(axis.low, row.low);
    EXPECT_DOUBLE_EQ(axis.high, row.high);
  }
}

TEST(ReportCharts, BarsStandOnTheAxisAsHighAsTheirCounts) {
  Histogram histogram;
  histogram.axis.high = 4;
  histogram.counts = {1, 0, 3000, 4000};
  histogram.below = 1000;
  histogram.above = 2000;
  std::string heights;
  for (const Tag& tag : tagsOf(histogramSvg(histogram, {"Length", "m"}, false, "Lengths"))) {
    if (tag.name != "rect") continue;
    const double y = std::stod(tag.attributes.at("y")), height = std::stod(tag.attributes.at("height"));
    EXPECT_DOUBLE_EQ(y + height, 206);
    heights += tag.attributes.at("height") + " ";
  }
  EXPECT_EQ(heights, "1.5 132.0 176.0 44.0 88.0 ") << "one among thousands is visible";
}

TEST(ChartScale, DecimalsFallIntoTheBinTheyBegin) {
  std::vector<double> values;
  for (int i = -10; i <= 10; ++i) values.push_back(i / 10.0);
  const Histogram histogram = histogramOf(values, true);
  EXPECT_NEAR(histogram.width, 0.1, 1e-9);
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(histogram.counts[i], 1u) << i;
}

TEST(ReportPage, EveryJobGivesAWholePage) {
  // None, one, all the same, varied, huge: so many, their lengths and headrooms within these ranges.
  const std::tuple<std::size_t, int32_t, int32_t> cases[] = {
      {0, 0, 0}, {1, 0, 0}, {40, 0, 0}, {700, 900, 500}, {60, 2000000000, 2000000000}};
  for (const auto& [count, lengths, headrooms] : cases) {
    SCOPED_TRACE(count);
    const std::string page = reportPage(jobOf(count, lengths, headrooms), "Job");
    expectSelfContained(page);
    EXPECT_EQ(countOf(page, "<td class=\"verdict\">"), count);
    EXPECT_EQ(countOf(page, "role=\"img\""), count == 0 ? 0u : 3u);
  }
}

TEST(ReportPage, TheLeadTellsOfResultsThatCouldNotBeRead) {
  struct Row {
    std::vector<Veltra::Status> results;
    bool isDamaged, isUnread;
    const char* lead;
  };
  constexpr Veltra::Status PASS = Veltra::STATUS_PASS, FAIL = Veltra::STATUS_FAIL, NONE = Veltra::STATUS_NOT_SET;
  const Row rows[] = {
      {{}, false, false, "No results."},
      {{}, false, true, "No results that could be read."},
      {{PASS}, false, false, "The result passes."},
      {{FAIL}, false, true, "The result that could be read fails."},
      {{PASS, PASS}, true, false, "All 2 results that could be read pass."},
      {{FAIL, PASS}, true, true, "Of 2 results that could be read, 1 passes and 1 fails."},
      {{FAIL, FAIL, NONE}, false, false, "Of 3 results, 0 pass and 2 fail; 1 does neither."},
  };
  for (const Row& made : rows) {
    JobFiles job;
    for (const Veltra::Status status : made.results) job.rows.push_back(row("A1", status, "1", "1"));
    job.notes.push_back({"a", made.isDamaged, {"W02"}, 0, ""});
    if (made.isUnread) job.unread = {"b"};
    const std::string page = reportPage(job, "Job");
    EXPECT_EQ(countOf(page, std::string(">") + made.lead + "<"), 1u) << made.lead;
    EXPECT_EQ(countOf(page, "1 file could not be read."), made.isUnread ? 1u : 0u) << made.lead;
  }
}

TEST(ReportPage, HostileTextStaysText) {
  const std::string hostile = "\"><script>x</script>' onload='a' {title} \x01\xff\xE2\x80\xAE https:";
  JobFiles job;
  job.rows = {row(hostile, Veltra::STATUS_FAIL, "45.0", "-1.0")};
  job.notes.push_back({hostile, true, {hostile}, 3, hostile});
  job.unread = {hostile};
  job.withoutResult = {hostile};
  const std::string page = reportPage(job, "Job");
  expectSelfContained(page);
  const std::string shown =
      "&quot;&gt;&lt;script&gt;x&lt;/script&gt;&#39; onload=&#39;a&#39; {title} \\x01\\xff\\xe2\\x80\\xae https:";
  EXPECT_EQ(countOf(page, shown), 8u);  // mark, ID, row's file, note's file, finding and command, two lists
}

TEST(ReportPage, NumbersThatAreNoneAreCountedNotDrawn) {
  JobFiles job;
  job.rows = {row("A1", Veltra::STATUS_PASS, "45.0", "NaN"), row("A2", Veltra::STATUS_PASS, "N/A", "+inf"),
              row("A3", Veltra::STATUS_PASS, "46.0", "---"), row("A4", Veltra::STATUS_PASS, ">47.0", "2.00")};
  ResultRow unprintable = row("A5", Veltra::STATUS_PASS, "45.0", "1.0");
  unprintable.summary.headroom.value = ScaledInt::fromRaw(5, static_cast<ScaledInt::ScaledTo>(9));
  job.rows.push_back(unprintable);
  const std::string page = reportPage(job, "Job");
  expectSelfContained(page);
  EXPECT_EQ(countOf(page, "<p>1 result. 4 without a value.</p>"), 1u);
  EXPECT_EQ(countOf(page, "<p>4 results, 1 of them a bound shown at its value. 1 without a value.</p>"), 1u);
  EXPECT_EQ(countOf(page, "<p>1 result, 1 of them a bound shown at its value. 4 without both values.</p>"), 1u);
}

TEST(Report, WorstFirstMediaApart) {
  JobFiles job;
  job.rows = {row("A1", Veltra::STATUS_PASS, "1", "3.0"),
              row("A2", Veltra::STATUS_FAIL, "1", "N/A"),
              row("A3", Veltra::STATUS_FAIL_STAR, "1", "-9.0"),
              row("A4", Veltra::STATUS_FAIL, "1", "-2.0"),
              row("A5", static_cast<Veltra::Status>(5), "1", "9.0"),
              row("A6", Veltra::STATUS_PASS, "1", "1.0"),
              row("B1", Veltra::STATUS_FAIL, "1", "-1.0", Veltra::RESULT_TYPE_FIBER)};
  job.rows[5].isDamaged = true;
  const Report report = reportOf(job);
  ASSERT_EQ(report.media.size(), 2u);
  std::string order;
  for (const ReportRow& made : report.media[0].rows)
    order += made.result->summary.resultName + (made.result->isDamaged ? "! " : " ");
  EXPECT_EQ(order, "A5 A4 A2 A3 A6! A1 ");
  EXPECT_EQ(report.media[1].name, "Fibre");
  // The order is the one verdicts are merged in.
  for (std::size_t i = 0; i + 1 < VERDICTS; ++i) {
    Veltra::Status merged = verdictLook(i + 1).status;
    mergeStatus(merged, verdictLook(i).status);
    EXPECT_EQ(merged, verdictLook(i).status);
    EXPECT_EQ(severityOf(verdictLook(i).status), i);
    EXPECT_STREQ(verdictLook(i).word, i == 0 ? "Unknown" : toString(verdictLook(i).status));
  }
}

TEST(Report, ExpectedIdsTakeTheirWorstVerdict) {
  CableIdSet expected;
  std::string error;
  ASSERT_TRUE(parseExpected("A1..A4", expected, error));
  JobFiles job;
  job.expected = &expected;
  job.rows = {row("A1", Veltra::STATUS_PASS, "1", "1"), row("A3", Veltra::STATUS_FAIL, "1", "1"),
              row("A3", Veltra::STATUS_PASS, "1", "1"), row("Z9", Veltra::STATUS_PASS, "1", "1")};
  const Report report = reportOf(job);
  ASSERT_EQ(report.expected.size(), 4u);
  EXPECT_EQ(verdictLook(report.expected[2].severity).status, Veltra::STATUS_FAIL);
  const std::string page = reportPage(job, "Job");
  expectSelfContained(page);
  EXPECT_EQ(countOf(page, "<li class=\"twice\" title=\"Fail\">"), 1u);
}

}  // namespace
}  // namespace Inspect
