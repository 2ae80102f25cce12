#include <libinspect/report/ReportFigures.h>

#include <algorithm>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/PageText.h>
#include <libinspect/report/ReportCharts.h>

namespace Inspect {
namespace {

using Veltra::DisplayMeas;
using Veltra::ResultSummary;

constexpr AxisName HEADROOM{"Headroom", "dB"};
constexpr AxisName LENGTH{"Length", "m"};

bool isBound(const DisplayMeas& measurement) {
  return measurement.type == Veltra::DISPLAY_TYPE_GREATER_THAN || measurement.type == Veltra::DISPLAY_TYPE_LESS_THAN;
}

/// The figures for the note below a chart.
struct Tally {
  std::size_t shown = 0;
  std::size_t bounds = 0;  ///< of those shown
  std::size_t without = 0;
  std::string outside;  ///< about values outside the axes, as sentences
};

/// "38 results, 2 of them bounds shown at their values. 1 above 100 m, up to 2000. 3 without a value."
std::string noteText(const Tally& tally, const char* missing) {
  std::string note;
  if (tally.shown > 0) note = counted(tally.shown, "result");
  if (tally.bounds > 0) {
    note += fmt::format(", {} of them {}", tally.bounds,
                        tally.bounds == 1 ? "a bound shown at its value" : "bounds shown at their values");
  }
  if (tally.shown > 0) note += ". ";
  note += tally.outside;
  if (tally.without > 0) note += fmt::format("{} without {}. ", tally.without, missing);
  return note.substr(0, note.empty() ? 0 : note.size() - 1);
}

Figure histogramFigure(const MediumReport& medium, const AxisName& name, const DisplayMeas ResultSummary::*measurement,
                       bool withZero) {
  Figure figure;
  Tally tally;
  std::vector<double> values;
  for (const ReportRow& row : medium.rows) {
    const DisplayMeas& shown = row.result->summary.*measurement;
    if (const std::optional<double> number = measuredNumber(shown)) {
      values.push_back(*number);
      tally.bounds += isBound(shown) ? 1 : 0;
    }
  }
  const Histogram histogram = histogramOf(values, withZero);
  tally.shown = values.size();
  tally.without = medium.rows.size() - values.size();
  figure.caption = name.quantity;
  if (values.empty()) {
    figure.note = noteText(tally, "a value");
    return figure;
  }
  const auto ends = std::minmax_element(values.begin(), values.end());
  const Axis& axis = histogram.axis;
  if (histogram.below > 0) {
    tally.outside += fmt::format("{} below {:g} {}, down to {:g}. ", histogram.below, axis.low, name.unit, *ends.first);
  }
  if (histogram.above > 0) {
    tally.outside += fmt::format("{} above {:g} {}, up to {:g}. ", histogram.above, axis.high, name.unit, *ends.second);
  }
  figure.note = noteText(tally, "a value");
  const std::string label = fmt::format("{}, histogram of {} {} results from {:g} to {:g} {}", name.quantity,
                                        values.size(), medium.name, *ends.first, *ends.second, name.unit);
  figure.chart = histogramSvg(histogram, name, withZero, label);
  return figure;
}

bool isOutside(const Axis& axis, double value) {
  return value < axis.low || value > axis.high;
}

Figure scatterFigure(const MediumReport& medium) {
  Figure figure;
  Tally tally;
  std::vector<ChartPoint> points;
  std::vector<double> lengths, headrooms;
  VerdictCounts verdicts{};
  const bool hasTitles = medium.rows.size() <= MOST_TITLED_POINTS;
  for (const ReportRow& row : medium.rows) {
    const ResultSummary& s = row.result->summary;
    const std::optional<double> length = measuredNumber(s.length), headroom = measuredNumber(s.headroom);
    if (!length || !headroom) continue;
    std::string title;
    if (hasTitles) {
      title = fmt::format("{}: {}, {} m, headroom {} dB", shownId(s.resultName), verdictLook(row.severity).word,
                          measurementText(s.length), measurementText(s.headroom));
    }
    points.push_back({*length, *headroom, row.severity, std::move(title)});
    lengths.push_back(*length);
    headrooms.push_back(*headroom);
    ++verdicts[row.severity];
    tally.bounds += isBound(s.length) || isBound(s.headroom) ? 1 : 0;
  }
  const Axis x = axisFor(lengths, false), y = axisFor(headrooms, true);
  const auto outside = std::count_if(points.begin(), points.end(), [&x, &y](const ChartPoint& point) {
    return isOutside(x, point.x) || isOutside(y, point.y);
  });
  if (outside > 0) tally.outside = fmt::format("{} outside the axes, drawn at their ends. ", outside);
  tally.shown = points.size();
  tally.without = medium.rows.size() - points.size();
  figure.caption = "Headroom against length";
  figure.note = noteText(tally, "both values");
  for (std::size_t i = 0; i < VERDICTS; ++i) {
    if (verdicts[i] > 0) figure.legend.push_back(i);
  }
  if (points.empty()) return figure;
  const std::string label = fmt::format("Headroom against length of {} {} results", points.size(), medium.name);
  figure.chart = scatterSvg(points, x, y, LENGTH, HEADROOM, label);
  return figure;
}

}  // namespace

std::vector<Figure> figuresOf(const MediumReport& medium) {
  return {histogramFigure(medium, HEADROOM, &ResultSummary::headroom, true),
          histogramFigure(medium, LENGTH, &ResultSummary::length, false), scatterFigure(medium)};
}

}  // namespace Inspect
