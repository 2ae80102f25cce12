#pragma once

#include <string>
#include <vector>

#include <libinspect/report/Report.h>

namespace Inspect {

/// A chart of the page with the words around it.
struct Figure {
  std::string caption;
  std::string chart;                ///< SVG; empty if no result has what it shows
  std::string note;                 ///< what the chart does not show, and which values are only bounds
  std::vector<std::size_t> legend;  ///< the verdicts that have marks in it, the worst first
};

/// Headroom, length, and one against the other.
std::vector<Figure> figuresOf(const MediumReport& medium);

}  // namespace Inspect
