#pragma once

#include <string>
#include <vector>

#include <libinspect/report/ChartScale.h>
#include <libinspect/report/VerdictLook.h>

namespace Inspect {

// Charts as inline SVG without scripts or references to anything but the page's own marks. Their colours are CSS
// classes; their texts are escaped here.

/// What a chart's axis shows.
struct AxisName {
  const char* quantity;  ///< "Headroom"
  const char* unit;      ///< "dB"; empty for counts
};

/// Bars of counts; values outside the axis have their own bars.
/// @param marksZero  a line at zero, if zero is on the axis
/// @param label      describes the chart in a sentence, for screen readers
std::string histogramSvg(const Histogram& histogram, const AxisName& name, bool marksZero, const std::string& label);

/// One mark of a scatter chart.
struct ChartPoint {
  double x, y;
  std::size_t severity;  ///< chooses the mark, see verdictLook()
  std::string title;     ///< what it is; browsers show it under the pointer
};

constexpr std::size_t MOST_TITLED_POINTS = 500;  ///< with more, marks have no titles, and equal ones are drawn once

/// One mark per point, the worst verdicts on top. Points outside an axis are drawn at its end.
std::string scatterSvg(const std::vector<ChartPoint>& points, const Axis& x, const Axis& y, const AxisName& xName,
                       const AxisName& yName, const std::string& label);

}  // namespace Inspect
