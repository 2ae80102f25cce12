#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Inspect {

/// An axis of a chart. Its ticks are at multiples of 1, 2 or 5 times a power of ten.
struct Axis {
  double low = 0;
  double high = 1;
  double tick = 1;

  std::vector<double> ticks() const;
  /// The text of a tick, with enough decimals to differ from its neighbours.
  std::string text(double tickValue) const;
};

/// The smallest of 1, 2 or 5 times a power of ten that is not below a positive value.
double roundedStep(double value);

/// An axis on which most finite values can be told apart: single values far from the others are outside
/// it. Values that are all equal get room on both sides.
/// @param values    in any order; none gives an axis from 0 to 1
/// @param withZero  the axis includes zero wherever the values are
Axis axisFor(std::vector<double> values, bool withZero);

/// An axis from 0 to at least the highest count, with whole numbers as ticks.
Axis countAxis(std::size_t highest);

/// Values counted in bins of one width. Bins begin at multiples of that width: zero is never inside one.
struct Histogram {
  Axis axis;         ///< ends where bins end
  double width = 1;  ///< of a bin
  std::vector<std::size_t> counts;
  std::size_t below = 0;  ///< values outside the axis
  std::size_t above = 0;

  double beginOf(std::size_t bin) const { return axis.low + static_cast<double>(bin) * width; }
  std::size_t highest() const;  ///< the largest count, of those outside too
};
Histogram histogramOf(const std::vector<double>& values, bool withZero);

}  // namespace Inspect
