#include "Raster.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gsl_view {

using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Subtract;

namespace {

// Few tones keep the picture small.
constexpr int kTones = 14;
constexpr double kDarkest = 0.45;
constexpr float kFar = -std::numeric_limits<float>::infinity();

/// Returns the number of the tone, 0 for the darkest.
std::size_t ToneOf(const Coord3& a, const Coord3& b, const Coord3& c, const Coord3& light) {
  const Coord3 normal = Cross(Subtract(b, a), Subtract(c, a));
  const double length = gsl_arithmetic::Length(normal);
  const double brightness = std::fabs(Dot(normal, light)) / length;
  if (!(brightness >= 0.0)) return kTones - 1; // without area, or too large
  return static_cast<std::size_t>(std::min(brightness, 1.0) * (kTones - 1) + 0.5);
}

std::vector<std::uint32_t> TonesOf(const Colour& colour) {
  std::vector<std::uint32_t> tones;
  for (int k = 0; k < kTones; ++k) {
    const double factor = kDarkest + (1.0 - kDarkest) * k / (kTones - 1);
    tones.push_back(PixelOf({factor * colour.red, factor * colour.green, factor * colour.blue}));
  }
  return tones;
}

} // namespace

Raster::Raster(const Rect& area, double pixelsPerMillimetre)
    : m_left(area.left), m_top(area.top), m_perMillimetre(pixelsPerMillimetre),
      m_width(std::max(1, static_cast<int>(std::ceil(area.Width() * pixelsPerMillimetre)))),
      m_height(std::max(1, static_cast<int>(std::ceil(area.Height() * pixelsPerMillimetre)))) {
  const std::size_t count = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height);
  m_pixels.assign(count, 0xFFFFFFu);
  m_depths.assign(count, kFar);
  m_bodies.assign(count, 0);
}

Rect Raster::Area() const {
  return {m_left, m_top, m_left + m_width / m_perMillimetre, m_top + m_height / m_perMillimetre};
}

PagePoint Raster::MiddleOf(int x, int y) const {
  return {m_left + (x + 0.5) / m_perMillimetre, m_top + (y + 0.5) / m_perMillimetre};
}

std::size_t Raster::IndexOf(int x, int y) const {
  return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
         static_cast<std::size_t>(x);
}

Raster::Bounds Raster::PixelsOf(const Rect& panel) const {
  const auto pixel = [&](double at, double first, int end) {
    return static_cast<int>(
        std::clamp(std::round((at - first) * m_perMillimetre), 0.0, static_cast<double>(end)));
  };
  return {pixel(panel.left, m_left, m_width), pixel(panel.top, m_top, m_height),
          pixel(panel.right, m_left, m_width), pixel(panel.bottom, m_top, m_height)};
}

Raster::Corner Raster::CornerAt(const Coord3& p, const View& view) const {
  const PagePoint at = view.At(p);
  return {(at.x - m_left) * m_perMillimetre, (at.y - m_top) * m_perMillimetre, view.Depth(p)};
}

void Raster::Shade(const std::vector<Coord3>& corners, const Coord3& shift, const View& view,
                   const Colour& colour, const std::vector<unsigned char>& isMarked,
                   const Colour& marked) {
  ++m_calls;
  const Bounds bounds = PixelsOf(view.panel);
  const std::vector<std::uint32_t> tones = TonesOf(colour), markedTones = TonesOf(marked);
  // The light comes over the left shoulder of the viewer.
  const Axes& axes = view.axes;
  const Coord3 light = Unit({axes.toward.x - 0.35 * axes.right.x + 0.45 * axes.up.x,
                             axes.toward.y - 0.35 * axes.right.y + 0.45 * axes.up.y,
                             axes.toward.z - 0.35 * axes.right.z + 0.45 * axes.up.z});
  for (std::size_t k = 0; k + 2 < corners.size(); k += 3) {
    const Coord3 a = gsl_arithmetic::Add(corners[k], shift);
    const Coord3 b = gsl_arithmetic::Add(corners[k + 1], shift);
    const Coord3 c = gsl_arithmetic::Add(corners[k + 2], shift);
    const bool useMark = k / 3 < isMarked.size() && isMarked[k / 3] != 0;
    const Corner placed[3] = {CornerAt(a, view), CornerAt(b, view), CornerAt(c, view)};
    Fill(placed, bounds, (useMark ? markedTones : tones)[ToneOf(a, b, c, light)]);
  }
}

void Raster::Fill(const Corner (&corners)[3], const Bounds& bounds, std::uint32_t pixel) {
  const Corner &a = corners[0], &b = corners[1], &c = corners[2];
  const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
  if (!(std::fabs(area) > 0.0) || !std::isfinite(area)) return;
  const auto [low, high] = std::minmax({a.y, b.y, c.y});
  const auto [far, near] = std::minmax({a.depth, b.depth, c.depth});
  const double depthX =
      ((b.depth - a.depth) * (c.y - a.y) - (c.depth - a.depth) * (b.y - a.y)) / area;
  const double depthY =
      ((b.x - a.x) * (c.depth - a.depth) - (c.x - a.x) * (b.depth - a.depth)) / area;
  // A pixel is inside when its centre is.
  const int top =
      static_cast<int>(std::clamp(std::ceil(low - 0.5), 1.0 * bounds.top, 1.0 * bounds.bottom));
  const int end =
      static_cast<int>(std::clamp(std::ceil(high - 0.5), 1.0 * bounds.top, 1.0 * bounds.bottom));
  for (int y = top; y < end; ++y) {
    const double centre = y + 0.5;
    double left = std::numeric_limits<double>::infinity(), right = -left;
    for (int k = 0; k < 3; ++k) {
      const Corner &from = corners[k], &to = corners[(k + 1) % 3];
      if ((from.y <= centre) == (to.y <= centre)) continue;
      const double x = from.x + (to.x - from.x) * ((centre - from.y) / (to.y - from.y));
      left = std::min(left, x);
      right = std::max(right, x);
    }
    const int first =
        static_cast<int>(std::clamp(std::ceil(left - 0.5), 1.0 * bounds.left, 1.0 * bounds.right));
    const int last =
        static_cast<int>(std::clamp(std::ceil(right - 0.5), 1.0 * bounds.left, 1.0 * bounds.right));
    for (int x = first; x < last; ++x) {
      const double exact = a.depth + depthX * (x + 0.5 - a.x) + depthY * (centre - a.y);
      const float depth = static_cast<float>(std::clamp(exact, far, near));
      const std::size_t index = IndexOf(x, y);
      if (!(depth > m_depths[index])) continue;
      m_depths[index] = depth;
      m_pixels[index] = pixel;
      m_bodies[index] = m_calls;
    }
  }
}

bool Raster::IsVisible(const PagePoint& at, double depth) const {
  const double column = std::floor((at.x - m_left) * m_perMillimetre);
  const double row = std::floor((at.y - m_top) * m_perMillimetre);
  if (!(column >= 1.0 && row >= 1.0 && column < m_width - 1 && row < m_height - 1)) return true;
  const int x = static_cast<int>(column), y = static_cast<int>(row);
  const float behind = static_cast<float>(depth + 1.0 / m_perMillimetre);
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (m_depths[IndexOf(x + dx, y + dy)] <= behind) return true;
    }
  }
  return false;
}

bool Raster::IsOutline(std::size_t here, std::size_t next, std::size_t opposite) const {
  const float drop = m_depths[here] - m_depths[next];
  if (m_bodies[next] != m_bodies[here]) return drop > 0.0f;
  // A smooth surface that is nearly edge-on falls as fast on the opposite side.
  const float step = static_cast<float>(4.0 / m_perMillimetre);
  return drop > step && drop > 4.0f * std::fabs(m_depths[opposite] - m_depths[here]);
}

void Raster::TraceOutlines(const Raster& shape, const Rect& panel, const Colour& colour,
                           Traced traced) {
  const Bounds bounds = PixelsOf(panel);
  const float tolerance = static_cast<float>(4.0 / m_perMillimetre);
  const std::uint32_t pixel = PixelOf(colour);
  const std::size_t row = static_cast<std::size_t>(m_width);
  for (int y = bounds.top + 1; y + 1 < bounds.bottom; ++y) {
    for (int x = bounds.left + 1; x + 1 < bounds.right; ++x) {
      const std::size_t here = IndexOf(x, y);
      if (shape.m_bodies[here] == 0) continue;
      const bool isOutline = shape.IsOutline(here, here - 1, here + 1) ||
                             shape.IsOutline(here, here + 1, here - 1) ||
                             shape.IsOutline(here, here - row, here + row) ||
                             shape.IsOutline(here, here + row, here - row);
      const bool isShown =
          traced == Traced::All || shape.m_depths[here] + tolerance >= m_depths[here];
      if (isOutline && isShown) m_pixels[here] = pixel;
    }
  }
}

} // namespace gsl_view
