#include <libinspect/report/ReportCharts.h>

#include <algorithm>
#include <cmath>
#include <set>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>

namespace Inspect {
namespace {

// Units of the drawing; text has a size of 12.
constexpr double WIDTH = 440, HEIGHT = 250;
constexpr double LEFT = 52, RIGHT = 426, TOP = 30, BOTTOM = 206;
constexpr double OUTSIDE_WIDTH = 30, OUTSIDE_GAP = 8;  ///< of the bars for values outside the axis
constexpr double CHARACTER = 6.8;                      ///< width of a digit

/// An axis placed on the drawing.
struct Scale {
  Axis axis;
  double from, to;  ///< where its ends are drawn

  double at(double value) const { return from + (value - axis.low) / (axis.high - axis.low) * (to - from); }
  double within(double value) const { return at(std::clamp(value, axis.low, axis.high)); }
};

std::string line(const char* style, double x1, double y1, double x2, double y2) {
  return fmt::format("<path class=\"{}\" d=\"M{:.1f} {:.1f}L{:.1f} {:.1f}\"/>", style, x1, y1, x2, y2);
}

std::string text(const char* style, double x, double y, const std::string& words) {
  return fmt::format("<text class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\">{}</text>", style, x, y, htmlText(words));
}

std::string bar(const char* style, double left, double right, double top, const std::string& title) {
  constexpr double LEAST = 1.5;  ///< one among thousands is still visible
  return fmt::format(
      "<rect class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\"><title>{}</title></rect>", style,
      left, std::min(top, BOTTOM - LEAST), right - left, std::max(BOTTOM - top, LEAST), htmlText(title));
}

std::string nameText(const AxisName& name) {
  return *name.unit == '\0' ? name.quantity : fmt::format("{} ({})", name.quantity, name.unit);
}

/// Ticks below, as many as fit next to each other.
std::string bottomAxis(const Scale& x, const AxisName& name) {
  constexpr double WORD_WIDTH = OUTSIDE_WIDTH + 6;  // below a bar for values outside
  std::string svg = line("axis", LEFT, BOTTOM, RIGHT, BOTTOM);
  double free = x.from > LEFT + OUTSIDE_WIDTH ? LEFT + WORD_WIDTH : 0;
  const double end = x.to < RIGHT - OUTSIDE_WIDTH ? RIGHT - WORD_WIDTH : WIDTH;
  for (const double tick : x.axis.ticks()) {
    const std::string words = x.axis.text(tick);
    const double at = x.at(tick), half = (static_cast<double>(words.size()) / 2 + 1) * CHARACTER;
    if (at - half < free || at + half > end + CHARACTER) continue;
    free = at + half;
    svg += line("axis", at, BOTTOM, at, BOTTOM + 4);
    svg += text("middle", at, BOTTOM + 17, words);
  }
  return svg + text("name middle", (LEFT + RIGHT) / 2, HEIGHT - 8, nameText(name));
}

/// Ticks to the left, with lines across.
std::string leftAxis(const Scale& y, const AxisName& name) {
  std::string svg;
  for (const double tick : y.axis.ticks()) {
    svg += line("grid", LEFT, y.at(tick), RIGHT, y.at(tick));
    svg += text("end", LEFT - 6, y.at(tick) + 4, y.axis.text(tick));
  }
  return svg + text("name", 4, 12, nameText(name));
}

std::string drawing(const std::string& label, const std::string& content) {
  return fmt::format("<svg class=\"chart\" viewBox=\"0 0 {:.0f} {:.0f}\" role=\"img\" aria-label=\"{}\">{}</svg>",
                     WIDTH, HEIGHT, htmlText(label), content);
}

/// The bar of values outside the axis, and a word below it.
std::string outsideBar(double left, const Scale& y, std::size_t count, const char* word, const std::string& title) {
  const double right = left + OUTSIDE_WIDTH;
  return bar("bar outside", left, right, y.at(static_cast<double>(count)), title + ": " + counted(count, "result")) +
         text("middle", (left + right) / 2, BOTTOM + 17, word);
}

bool hasZero(const Axis& axis) {
  return axis.low <= 0 && 0 <= axis.high;
}

/// A vertical line at zero and a label next to its upper end.
std::string zeroLine(const Scale& x, const AxisName& name) {
  const double at = x.at(0);
  const bool isFarRight = at > RIGHT - 40;
  return line("zero", at, TOP - 12, at, BOTTOM) + text(isFarRight ? "zero-text end" : "zero-text",
                                                       at + (isFarRight ? -5 : 5), TOP - 6,
                                                       std::string("0 ") + name.unit);
}

}  // namespace

std::string histogramSvg(const Histogram& histogram, const AxisName& name, bool marksZero, const std::string& label) {
  const double outside = OUTSIDE_WIDTH + OUTSIDE_GAP;
  const Scale x{histogram.axis, LEFT + (histogram.below > 0 ? outside : 0),
                RIGHT - (histogram.above > 0 ? outside : 0)};
  const Scale y{countAxis(histogram.highest()), BOTTOM, TOP};
  Axis bins = histogram.axis;
  bins.tick = histogram.width;  // for the texts of the edges
  std::string svg = leftAxis(y, {"Results", ""}) + bottomAxis(x, name);
  for (std::size_t i = 0; i < histogram.counts.size(); ++i) {
    if (histogram.counts[i] == 0) continue;
    const double begin = histogram.beginOf(i), end = histogram.beginOf(i + 1);
    const bool isNegative = begin + end < 0;
    svg += bar(isNegative ? "bar negative" : "bar", x.at(begin) + 0.5, x.at(end) - 0.5,
               y.at(static_cast<double>(histogram.counts[i])),
               fmt::format("{} to {} {}: {}", bins.text(begin), bins.text(end), name.unit,
                           counted(histogram.counts[i], "result")));
  }
  if (histogram.below > 0) {
    svg += outsideBar(LEFT, y, histogram.below, "less", "Less than " + bins.text(bins.low) + " " + name.unit);
  }
  if (histogram.above > 0) {
    svg += outsideBar(RIGHT - OUTSIDE_WIDTH, y, histogram.above, "more",
                      bins.text(bins.high) + " " + name.unit + " or more");
  }
  if (marksZero && hasZero(histogram.axis)) svg += zeroLine(x, name);
  return drawing(label, svg);
}

std::string scatterSvg(const std::vector<ChartPoint>& points, const Axis& xAxis, const Axis& yAxis,
                       const AxisName& xName, const AxisName& yName, const std::string& label) {
  constexpr double INSET = 6;  ///< whole marks stay within the frame
  const Scale x{xAxis, LEFT + INSET, RIGHT - INSET}, y{yAxis, BOTTOM - INSET, TOP + INSET};
  const bool hasTitles = points.size() <= MOST_TITLED_POINTS;
  const double size = points.size() <= 100 ? 11 : hasTitles ? 9 : 7;
  std::string svg = leftAxis(y, yName) + bottomAxis(x, xName);
  if (hasZero(yAxis)) svg += line("zero", LEFT, y.at(0), RIGHT, y.at(0));
  for (std::size_t severity = VERDICTS; severity-- > 0;) {
    std::set<std::pair<long, long>> drawn;
    for (const ChartPoint& point : points) {
      if (point.severity != severity) continue;
      const double atX = x.within(point.x), atY = y.within(point.y);
      if (!hasTitles && !drawn.insert({std::lround(atX), std::lround(atY)}).second) continue;
      svg += fmt::format("<use href=\"#{}\" x=\"{:.1f}\" y=\"{:.1f}\" width=\"{}\" height=\"{}\"",
                         verdictLook(severity).style, atX - size / 2, atY - size / 2, size, size);
      svg += hasTitles ? "><title>" + htmlText(point.title) + "</title></use>" : "/>";
    }
  }
  return drawing(label, svg);
}

}  // namespace Inspect
