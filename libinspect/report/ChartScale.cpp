#include <libinspect/report/ChartScale.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace Inspect {
namespace {

constexpr double EPSILON = 1e-9;  ///< of a step: decimals such as 0.3 are not multiples of 0.1 in binary

double floorTo(double value, double step) {
  return std::floor(value / step + EPSILON) * step;
}

}  // namespace

double roundedStep(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  for (const double digit : {1.0, 2.0, 5.0}) {
    if (value <= digit * power * (1 + EPSILON)) return digit * power;
  }
  return 10 * power;
}

std::vector<double> Axis::ticks() const {
  const double first = std::ceil(low / tick - EPSILON), last = std::floor(high / tick + EPSILON);
  std::vector<double> ticks(static_cast<std::size_t>(std::max(0.0, last - first + 1)));
  for (std::size_t i = 0; i < ticks.size(); ++i) ticks[i] = (first + static_cast<double>(i)) * tick;
  return ticks;
}

std::string Axis::text(double tickValue) const {
  const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(tick) + EPSILON)));
  const bool isZero = std::abs(tickValue) < tick / 2;
  return (tickValue < 0 && !isZero ? "\u2212" : "") +
         fmt::format("{:.{}f}", isZero ? 0.0 : std::abs(tickValue), decimals);
}

Axis axisFor(std::vector<double> values, bool withZero) {
  constexpr double REACH = 4;         ///< how far the axis extends beyond the middle half, in spreads
  constexpr double LEAST_SPREAD = 1;  ///< metres or decibels: nearer values are not outliers
  constexpr double TICKS = 6;
  Axis axis;
  if (values.empty()) return axis;
  std::sort(values.begin(), values.end());
  const double lowerQuarter = values[values.size() / 4], upperQuarter = values[values.size() * 3 / 4];
  const double middle = values[values.size() / 2];
  const double spread = std::max({upperQuarter - lowerQuarter, std::abs(middle) / 4, LEAST_SPREAD});
  // The quarters themselves are within reach: both searches end at a value.
  axis.low = *std::lower_bound(values.begin(), values.end(), lowerQuarter - REACH * spread);
  axis.high = *std::prev(std::upper_bound(values.begin(), values.end(), upperQuarter + REACH * spread));
  if (withZero) {
    axis.low = std::min(axis.low, 0.0);
    axis.high = std::max(axis.high, 0.0);
  }
  const double least = std::max(2 * LEAST_SPREAD, std::abs(middle) / 5);
  if (axis.high - axis.low < least) {
    const double room = (least - (axis.high - axis.low)) / 2;
    axis.low -= room;
    axis.high += room;
  }
  axis.tick = roundedStep((axis.high - axis.low) / TICKS);
  return axis;
}

Axis countAxis(std::size_t highest) {
  constexpr double TICKS = 4;
  Axis axis;
  const double top = std::max(1.0, static_cast<double>(highest));
  axis.tick = std::max(1.0, roundedStep(top / TICKS));
  axis.high = std::ceil(top / axis.tick - EPSILON) * axis.tick;
  return axis;
}

std::size_t Histogram::highest() const {
  const std::size_t inside = counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end());
  return std::max({inside, below, above});
}

Histogram histogramOf(const std::vector<double>& values, bool withZero) {
  constexpr double BINS = 20;
  Histogram histogram;
  Axis& axis = histogram.axis;
  axis = axisFor(values, withZero);
  histogram.width = roundedStep((axis.high - axis.low) / BINS);
  axis.low = floorTo(axis.low, histogram.width);
  axis.high = floorTo(axis.high, histogram.width) + histogram.width;
  histogram.counts.resize(static_cast<std::size_t>(std::lround((axis.high - axis.low) / histogram.width)));
  for (const double value : values) {
    const double bin = std::floor((value - axis.low) / histogram.width + EPSILON);
    if (bin < 0) {
      ++histogram.below;
    } else if (bin >= static_cast<double>(histogram.counts.size())) {
      ++histogram.above;
    } else {
      ++histogram.counts[static_cast<std::size_t>(bin)];
    }
  }
  return histogram;
}

}  // namespace Inspect
