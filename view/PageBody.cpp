#include "PageBody.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace gsl_view {

namespace {

using gsl_arithmetic::Coord3;
using gsl_sweep::TriangleView;

constexpr int kLeastExponent = -1000, kGreatestExponent = 1023;

/// The corners of a view, with or without numbers of vertices.
class Corners {
public:
  explicit Corners(const TriangleView& view) : m_view(view) {}

  Coord3 At(std::size_t corner) const {
    const std::size_t vertex = m_view.corners != nullptr ? m_view.corners[corner] : corner;
    const double* const p = m_view.vertices + 3 * vertex;
    return {p[0], p[1], p[2]};
  }

  bool HasFinite(std::size_t triangle) const {
    for (std::size_t k = 3 * triangle; k < 3 * triangle + 3; ++k) {
      const Coord3 p = At(k);
      if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
    }
    return true;
  }

private:
  const TriangleView& m_view;
};

/// Finds the box of the finite triangles, and places the body by it.
void PlaceBody(const TriangleView& view, PageBody& body) {
  const Corners corners(view);
  constexpr double kFar = std::numeric_limits<double>::infinity();
  double low[3] = {kFar, kFar, kFar}, high[3] = {-kFar, -kFar, -kFar};
  for (std::size_t t = 0; t < view.triangleCount; ++t) {
    if (!corners.HasFinite(t)) continue;
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      const Coord3 p = corners.At(k);
      const double numbers[] = {p.x, p.y, p.z};
      for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], numbers[axis]);
        high[axis] = std::max(high[axis], numbers[axis]);
      }
    }
  }
  if (low[0] > high[0]) return;
  // Halves, whose sums and differences do not overflow.
  const auto middle = [&](int axis) { return 0.5 * low[axis] + 0.5 * high[axis]; };
  body.centre = {middle(0), middle(1), middle(2)};
  double reach = 0.0;
  for (int axis = 0; axis < 3; ++axis)
    reach = std::max(reach, 0.5 * high[axis] - 0.5 * low[axis]);
  int exponent = kLeastExponent;
  if (reach > 0.0) std::frexp(reach, &exponent);
  body.scale = std::ldexp(1.0, std::clamp(exponent, kLeastExponent, kGreatestExponent));
}

/// Finds equal vertices by their bits.
class VertexTable {
public:
  VertexTable(std::size_t corners, std::vector<float>& vertices) : m_vertices(vertices) {
    std::size_t size = 16;
    while (size < 2 * corners)
      size *= 2;
    m_slots.assign(size, PageBody::kLeftOut);
  }

  std::uint32_t NumberOf(const float (&place)[3]) {
    std::size_t slot = HashOf(place) & (m_slots.size() - 1);
    while (m_slots[slot] != PageBody::kLeftOut) {
      const float* const other = &m_vertices[3 * std::size_t{m_slots[slot]}];
      if (std::equal(place, place + 3, other)) return m_slots[slot];
      slot = (slot + 1) & (m_slots.size() - 1);
    }
    m_slots[slot] = static_cast<std::uint32_t>(m_vertices.size() / 3);
    m_vertices.insert(m_vertices.end(), place, place + 3);
    return m_slots[slot];
  }

private:
  static std::size_t HashOf(const float (&place)[3]) {
    std::uint64_t hash = 0;
    for (const float number : place) {
      std::uint32_t bits = 0;
      std::memcpy(&bits, &number, sizeof bits);
      hash = (hash ^ bits) * 0x9e3779b97f4a7c15u;
      hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
  }

  std::vector<float>& m_vertices;
  std::vector<std::uint32_t> m_slots;
};

} // namespace

void PageBody::Place(const Coord3& point, float place[3]) const {
  const auto placed = [this](double number, double middle) {
    // Adding zero turns -0.0 into 0.0, so that equal numbers have the same bits.
    return static_cast<float>((0.5 * number - 0.5 * middle) / (0.5 * scale)) + 0.0f;
  };
  place[0] = placed(point.x, centre.x);
  place[1] = placed(point.y, centre.y);
  place[2] = placed(point.z, centre.z);
}

std::uint32_t PageBody::NumberOf(std::size_t triangle) const {
  return numbers.empty() ? static_cast<std::uint32_t>(triangle) : numbers.at(triangle);
}

PageBody PageBody::Of(const TriangleView& view) {
  PageBody body;
  PlaceBody(view, body);
  const Corners corners(view);
  VertexTable table(view.corners != nullptr ? std::min(view.vertexCount, 3 * view.triangleCount)
                                            : 3 * view.triangleCount,
                    body.vertices);
  body.triangles.reserve(3 * view.triangleCount);
  for (std::size_t t = 0; t < view.triangleCount; ++t) {
    if (!corners.HasFinite(t)) {
      if (body.numbers.empty()) {
        for (std::uint32_t earlier = 0; earlier < t; ++earlier)
          body.numbers.push_back(earlier);
      }
      body.numbers.resize(t, kLeftOut);
      body.numbers.push_back(kLeftOut);
      continue;
    }
    if (!body.numbers.empty()) {
      body.numbers.push_back(static_cast<std::uint32_t>(body.TriangleCount()));
    }
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      float place[3];
      body.Place(corners.At(k), place);
      body.triangles.push_back(table.NumberOf(place));
    }
  }
  return body;
}

} // namespace gsl_view
