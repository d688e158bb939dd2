#include "Projection.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Negated;
using gsl_arithmetic::Subtract;

namespace {

bool IsZero(const Coord3& v) {
  return v.x == 0.0 && v.y == 0.0 && v.z == 0.0;
}

/// Returns the part of v at right angles to the unit vector, with length 1.
Coord3 UnitAcross(const Coord3& v, const Coord3& unit) {
  return Unit(Subtract(v, Multiply(unit, Dot(v, unit))));
}

/// Returns how well these axes show the vectors, from 0 to 1.
double Clarity(const Axes& axes, const Coord3 (&normals)[2], const Coord3& line) {
  double clarity = 1.0;
  for (const Coord3& normal : normals) {
    if (!IsZero(normal)) clarity = std::min(clarity, std::fabs(Dot(normal, axes.toward)));
  }
  if (IsZero(line)) return clarity;
  return std::min(clarity, std::hypot(Dot(line, axes.right), Dot(line, axes.up)));
}

} // namespace

Coord3 Unit(const Coord3& v) {
  const double largest = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
  const Coord3 scaled = gsl_arithmetic::Divide(v, largest);
  return gsl_arithmetic::Divide(scaled, gsl_arithmetic::Length(scaled));
}

Axes AxesToward(const Coord3& toward) {
  const bool isUpright = std::fabs(toward.z) > 0.999;
  const Coord3 up = UnitAcross(isUpright ? Coord3{0.0, 1.0, 0.0} : Coord3{0.0, 0.0, 1.0}, toward);
  return {Cross(up, toward), up, toward};
}

Axes IsometricAxes(const Coord3& direction) {
  constexpr Coord3 kCorners[] = {
      {1.0, -1.0, 1.0}, {-1.0, -1.0, 1.0}, {1.0, 1.0, 1.0}, {-1.0, 1.0, 1.0}};
  for (const Coord3& corner : kCorners) {
    const Axes axes = AxesToward(Unit(corner));
    if (std::fabs(Dot(direction, axes.toward)) < 0.9) return axes;
  }
  return AxesToward(Unit(kCorners[0]));
}

Axes SideAxes(const Coord3& direction) {
  if (std::fabs(direction.z) > std::sqrt(0.5)) {
    const Coord3 up = direction.z > 0.0 ? direction : Negated(direction);
    const Coord3 toward = UnitAcross({0.0, -1.0, 0.0}, up);
    return {Cross(up, toward), up, toward};
  }
  // The viewer is in front, or to the right of a direction along y.
  Coord3 toward = Unit(Cross(direction, {0.0, 0.0, 1.0}));
  if (Dot(toward, {0.4, -0.9, 0.0}) < 0.0) toward = Negated(toward);
  Coord3 right = direction;
  const Coord3 up = Cross(toward, right);
  if (up.z >= 0.0) return {right, up, toward};
  right = Negated(right);
  return {right, Negated(up), toward};
}

Axes AxesThatShow(const Coord3 (&normals)[2], const Coord3& line, const Axes& preferred) {
  constexpr double kGoodEnough = 0.35;
  Axes best = preferred;
  double clarity = Clarity(best, normals, line);
  if (clarity >= kGoodEnough) return best;
  constexpr int kSteps = 24;
  for (int row = -2; row <= 5; ++row) {
    for (int step = 0; step < kSteps; ++step) {
      const double height = 0.16 * row;
      const double width = std::sqrt(1.0 - height * height);
      const double angle = 6.283185307179586 * step / kSteps;
      const Axes axes = AxesToward({width * std::cos(angle), width * std::sin(angle), height});
      const double other = Clarity(axes, normals, line);
      if (other <= clarity) continue;
      clarity = other;
      best = axes;
    }
  }
  return best;
}

void ViewBox::Add(double x, double y) {
  left = isEmpty ? x : std::min(left, x);
  right = isEmpty ? x : std::max(right, x);
  bottom = isEmpty ? y : std::min(bottom, y);
  top = isEmpty ? y : std::max(top, y);
  isEmpty = false;
}

void ViewBox::Add(const ViewBox& other) {
  if (other.isEmpty) return;
  Add(other.left, other.bottom);
  Add(other.right, other.top);
}

ViewBox ViewBox::Moved(double x, double y) const {
  return {left + x, bottom + y, right + x, top + y, isEmpty};
}

PagePoint View::At(const Coord3& p) const {
  const PagePoint middle = panel.Centre();
  return {middle.x + scale * (Dot(axes.right, p) - centreX),
          middle.y - scale * (Dot(axes.up, p) - centreY)};
}

double View::Depth(const Coord3& p) const {
  return scale * Dot(axes.toward, p);
}

View FitView(const Axes& axes, const ViewBox& box, const Rect& panel) {
  View view{axes, 1.0, 0.5 * (box.left + box.right), 0.5 * (box.bottom + box.top), panel};
  const double width = box.right - box.left, height = box.top - box.bottom;
  const double scale = std::min(panel.Width() / width, panel.Height() / height);
  if (std::isfinite(scale) && scale > 0.0) view.scale = scale;
  return view;
}

} // namespace gsl_view
