#include "Dimension.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

namespace {

constexpr Pen kThin{0.18, {0.1, 0.1, 0.1}};
constexpr double kHeadLength = 2.6, kHeadWidth = 0.9;
constexpr double kGap = 1.0;    // between a place and its extension line
constexpr double kBeyond = 1.8; // of an extension line beyond the dimension line
constexpr double kTail = 6.0;   // of an arrow outside
constexpr double kTextSize = 3.6;

/// Turns an upright dimension into one across, and back: swaps x and y.
PagePoint Turned(const PagePoint& p, bool isUpright) {
  return isUpright ? PagePoint{p.y, p.x} : p;
}

/// Draws the line from `first` to `last` at the height `line`, with a zigzag in its middle when it
/// is broken.
void DrawMeasure(Page& page, const Dimension& d, double first, double last) {
  const auto at = [&](double along, double across) {
    return Turned({along, d.line + across}, d.isUpright);
  };
  if (!d.isBroken) {
    page.DrawLine(at(first, 0.0), at(last, 0.0), kThin);
    return;
  }
  const double middle = 0.5 * (first + last);
  page.DrawLines({{at(first, 0.0), at(middle - 2.0, 0.0)},
                  {at(middle - 2.0, 0.0), at(middle - 1.0, -2.0)},
                  {at(middle - 1.0, -2.0), at(middle + 1.0, 2.0)},
                  {at(middle + 1.0, 2.0), at(middle + 2.0, 0.0)},
                  {at(middle + 2.0, 0.0), at(last, 0.0)}},
                 kThin);
}

void DrawNumber(Page& page, const Dimension& d, double first, double last, bool isHighSide) {
  TextStyle style{kTextSize, Align::Left, true, {0.0, 0.0, 0.0}};
  const double width = page.WidthOf(d.text, style);
  const double middle = 0.5 * (first + last);
  const double beside = d.isBroken ? 3.2 : 2.0;
  if (d.isUpright) {
    const double left = isHighSide ? d.line + beside : d.line - beside - width;
    const double top = d.bounds.top + kTextSize;
    page.DrawText({std::clamp(left, d.bounds.left, std::max(d.bounds.left, d.bounds.right - width)),
                   std::clamp(middle + 0.36 * kTextSize, top, std::max(top, d.bounds.bottom))},
                  d.text, style);
    return;
  }
  // Between the extension lines if it fits there, else beyond their ends.
  const bool fits = width + 2.0 < last - first && !d.isBroken;
  const double clear = fits ? 1.2 : kBeyond + 1.0;
  const double y = isHighSide && !fits ? d.line + clear + 0.75 * kTextSize : d.line - clear;
  const double left = std::clamp(middle - 0.5 * width, d.bounds.left,
                                 std::max(d.bounds.left, d.bounds.right - width));
  page.DrawText({left, y}, d.text, style);
}

} // namespace

void DrawArrow(Page& page, const PagePoint& tail, const PagePoint& tip, const Pen& pen) {
  const double length = std::hypot(tip.x - tail.x, tip.y - tail.y);
  if (!(length > 0.0)) return;
  const double x = (tip.x - tail.x) / length, y = (tip.y - tail.y) / length;
  const PagePoint neck{tip.x - kHeadLength * x, tip.y - kHeadLength * y};
  if (length > kHeadLength) page.DrawLine(tail, neck, pen);
  const double half = 0.5 * kHeadWidth + pen.width;
  page.FillPolygon(
      {tip, {neck.x - half * y, neck.y + half * x}, {neck.x + half * y, neck.y - half * x}},
      pen.colour, 1.0);
}

void DrawDimension(Page& page, const Dimension& d) {
  const PagePoint a = Turned(d.from, d.isUpright), b = Turned(d.to, d.isUpright);
  const bool isHighSide = d.line > a.y;
  for (const PagePoint& place : {a, b}) {
    const double sign = isHighSide ? 1.0 : -1.0;
    page.DrawLine(Turned({place.x, place.y + sign * kGap}, d.isUpright),
                  Turned({place.x, d.line + sign * kBeyond}, d.isUpright), kThin);
  }
  const double first = std::min(a.x, b.x), last = std::max(a.x, b.x);
  const auto at = [&](double along) { return Turned({along, d.line}, d.isUpright); };
  const bool isRoomy = last - first >= 3.0 * kHeadLength;
  if (isRoomy) {
    DrawMeasure(page, d, first, last);
    DrawArrow(page, at(last - kHeadLength), at(last), kThin);
    DrawArrow(page, at(first + kHeadLength), at(first), kThin);
  } else {
    page.DrawLine(at(first), at(last), kThin);
    DrawArrow(page, at(first - kTail), at(first), kThin);
    DrawArrow(page, at(last + kTail), at(last), kThin);
  }
  DrawNumber(page, d, first, last, isHighSide);
}

} // namespace gsl_view
