#include "Outline.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

namespace gsl_view {

namespace {

// Eighths of a point.
constexpr double kGridPerMillimetre = 8.0 * 72.0 / 25.4;
// The distance between the places of a line that are tested, in millimetres.
constexpr double kStep = 0.15;
// A shorter part of a line that is otherwise hidden is a matter of the pixels. In millimetres.
constexpr double kShortest = 0.45;
// A line that goes farther, in millimetres, cannot be cut to the page without great rounding
// errors.
constexpr double kFarthest = 1e12;
// Lines along the border of a panel are in it, whatever their rounding is.
constexpr double kBorder = 0.2;

double OnGrid(double value) {
  return std::round(value * kGridPerMillimetre) / kGridPerMillimetre;
}

/// A line with the depths of its ends.
struct DeepLine {
  PagePoint from, to;
  double fromDepth, toDepth;

  PagePoint At(double part) const {
    return {from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)};
  }
  double DepthAt(double part) const { return fromDepth + part * (toDepth - fromDepth); }
};

/// Cuts the range of parts so that from + part * step stays within low and high.
bool Cut(double from, double step, double low, double high, double& first, double& last) {
  if (step == 0.0) return from >= low && from <= high;
  const double a = (low - from) / step, b = (high - from) / step;
  first = std::max(first, std::min(a, b));
  last = std::min(last, std::max(a, b));
  return first <= last;
}

/// Returns the part of a line within the panel.
std::optional<DeepLine> Clipped(const DeepLine& line, const Rect& box) {
  const auto isInRange = [](const PagePoint& p) {
    return std::fabs(p.x) < kFarthest && std::fabs(p.y) < kFarthest;
  };
  if (!isInRange(line.from) || !isInRange(line.to)) return std::nullopt;
  const Rect panel = box.Inner(-kBorder);
  double first = 0.0, last = 1.0;
  const bool isInside =
      Cut(line.from.x, line.to.x - line.from.x, panel.left, panel.right, first, last) &&
      Cut(line.from.y, line.to.y - line.from.y, panel.top, panel.bottom, first, last);
  if (!isInside) return std::nullopt;
  return DeepLine{line.At(first), line.At(last), line.DepthAt(first), line.DepthAt(last)};
}

enum class Sight : unsigned char { None, Hidden, Visible };

Sight SightOf(const DeepLine& line, double part, const Raster& own, const Raster& others) {
  const PagePoint at = line.At(part);
  const double depth = line.DepthAt(part);
  if (!own.IsVisible(at, depth)) return Sight::None;
  return others.IsVisible(at, depth) ? Sight::Visible : Sight::Hidden;
}

void Take(const DeepLine& line, double first, double last, Sight sight, Outline& outline) {
  if (sight == Sight::None) return;
  const double length = std::hypot(line.to.x - line.from.x, line.to.y - line.from.y);
  if (last - first < 1.0 && (last - first) * length < kShortest) return;
  const PagePoint a = line.At(first), b = line.At(last);
  PagePoint from{OnGrid(a.x), OnGrid(a.y)}, to{OnGrid(b.x), OnGrid(b.y)};
  if (from.x == to.x && from.y == to.y) return;
  if (std::tie(to.x, to.y) < std::tie(from.x, from.y)) std::swap(from, to);
  (sight == Sight::Visible ? outline.visible : outline.hidden).push_back({from, to});
}

/// Divides a line where its sight changes.
void Divide(const DeepLine& line, const Raster& own, const Raster& others, Outline& outline) {
  const double length = std::hypot(line.to.x - line.from.x, line.to.y - line.from.y);
  const int count = 1 + static_cast<int>(length / kStep);
  double begin = 0.0;
  Sight sight = SightOf(line, 0.5 / count, own, others);
  for (int k = 1; k < count; ++k) {
    const Sight next = SightOf(line, (k + 0.5) / count, own, others);
    if (next == sight) continue;
    const double end = static_cast<double>(k) / count;
    Take(line, begin, end, sight, outline);
    begin = end;
    sight = next;
  }
  Take(line, begin, 1.0, sight, outline);
}

void SortAndMerge(std::vector<PageLine>& lines) {
  const auto key = [](const PageLine& line) {
    return std::tie(line.from.x, line.from.y, line.to.x, line.to.y);
  };
  std::sort(lines.begin(), lines.end(),
            [&](const PageLine& a, const PageLine& b) { return key(a) < key(b); });
  const auto same = [&](const PageLine& a, const PageLine& b) { return key(a) == key(b); };
  lines.erase(std::unique(lines.begin(), lines.end(), same), lines.end());
}

} // namespace

Outline OutlineOf(const std::vector<BodyEdge>& edges, const std::vector<Coord3>& corners,
                  const Coord3& shift, const View& view, const Raster& own, const Raster& others) {
  Outline outline;
  for (const BodyEdge& edge : edges) {
    if (!IsDrawn(edge, corners, view.axes.toward)) continue;
    const Coord3 from = gsl_arithmetic::Add(corners[edge.from], shift);
    const Coord3 to = gsl_arithmetic::Add(corners[edge.to], shift);
    const DeepLine line{view.At(from), view.At(to), view.Depth(from), view.Depth(to)};
    if (const auto clipped = Clipped(line, view.panel)) Divide(*clipped, own, others, outline);
  }
  SortAndMerge(outline.visible);
  SortAndMerge(outline.hidden);
  return outline;
}

} // namespace gsl_view
