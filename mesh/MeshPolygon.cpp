#include "MeshPolygon.h"

#include <algorithm>
#include <cmath>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

constexpr std::size_t kTestBudget = 400'000'000;
constexpr signed char kGone = 2;

/// Largest absolute coordinate; NaN or infinity when a coordinate is not finite.
double LargestCoordinate(const Coord3* ring, std::size_t count) {
  double largest = 0.0;
  for (std::size_t k = 0; k < count; ++k) {
    for (const double c : {ring[k].x, ring[k].y, ring[k].z}) {
      if (!std::isfinite(c)) return c;
      largest = std::max(largest, std::fabs(c));
    }
  }
  return largest;
}

/// Twice the area vector of the ring (Newell). It is computed from differences, so that a ring far
/// from the origin loses no digits.
Coord3 NewellNormal(const std::vector<Coord3>& ring) {
  Coord3 normal{0.0, 0.0, 0.0};
  for (std::size_t k = 1; k + 1 < ring.size(); ++k) {
    const Coord3 a = gsl_arithmetic::Subtract(ring[k], ring[0]);
    const Coord3 b = gsl_arithmetic::Subtract(ring[k + 1], ring[0]);
    normal = gsl_arithmetic::Add(normal, gsl_arithmetic::Cross(a, b));
  }
  return normal;
}

} // namespace

const std::vector<PolygonTriangulator::Triangle>*
PolygonTriangulator::Triangulate(const Coord3* ring, std::size_t count) {
  if (count == 3) {
    Fan(count);
    return &m_triangles;
  }
  if (!Project(ring, count) || FanCovers(count)) {
    Fan(count);
    return &m_triangles;
  }
  switch (ClipEars(count)) {
  case Outcome::TooLong:
    return nullptr;
  case Outcome::Stuck:
    Fan(count);
    break;
  case Outcome::Done:
    break;
  }
  return &m_triangles;
}

/// Fills m_points so that the polygon turns counter-clockwise. False when it has no area or a
/// corner is not finite.
bool PolygonTriangulator::Project(const Coord3* ring, std::size_t count) {
  const double largest = LargestCoordinate(ring, count);
  if (!std::isfinite(largest) || largest == 0.0) return false;
  // Scaling by a power of two keeps every digit, and products do not overflow.
  const int exponent = -std::ilogb(largest) - 1;
  std::vector<Coord3> scaled(ring, ring + count);
  for (Coord3& p : scaled) {
    p = {std::ldexp(p.x, exponent), std::ldexp(p.y, exponent), std::ldexp(p.z, exponent)};
  }
  const Coord3 normal = NewellNormal(scaled);
  const double nx = std::fabs(normal.x), ny = std::fabs(normal.y), nz = std::fabs(normal.z);
  if (!(nx > 0.0 || ny > 0.0 || nz > 0.0)) return false;

  m_points.resize(count);
  for (std::size_t k = 0; k < count; ++k) {
    const Coord3& p = scaled[k];
    if (nz >= nx && nz >= ny) {
      m_points[k] = normal.z > 0.0 ? Point{p.x, p.y} : Point{p.y, p.x};
    } else if (nx >= ny) {
      m_points[k] = normal.x > 0.0 ? Point{p.y, p.z} : Point{p.z, p.y};
    } else {
      m_points[k] = normal.y > 0.0 ? Point{p.z, p.x} : Point{p.x, p.z};
    }
  }
  return true;
}

/// Returns the sign of the turn a, b, c. It is 0 also when rounding hides the sign; that changes
/// the area by a rounding error only.
int PolygonTriangulator::Turn(std::size_t a, std::size_t b, std::size_t c) const {
  const Point& p = m_points[a];
  const Point& q = m_points[b];
  const Point& r = m_points[c];
  const double left = (p.u - r.u) * (q.v - r.v);
  const double right = (p.v - r.v) * (q.u - r.u);
  const double turn = left - right;
  // Shewchuk's bound for this determinant, 3 + 16 ulp of its permanent.
  const double bound = 3.3306690738754716e-16 * (std::fabs(left) + std::fabs(right));
  return turn > bound ? 1 : (turn < -bound ? -1 : 0);
}

bool PolygonTriangulator::SamePlace(std::size_t a, std::size_t b) const {
  return m_points[a].u == m_points[b].u && m_points[a].v == m_points[b].v;
}

// Take triangles that share their edges, have the polygon as their border and have its orientation.
// They cover each place as often as the polygon winds around it: once, unless it crosses itself.
bool PolygonTriangulator::FanCovers(std::size_t count) const {
  for (std::size_t k = 1; k + 1 < count; ++k) {
    if (Turn(0, k, k + 1) < 0) return false;
  }
  return true;
}

void PolygonTriangulator::Fan(std::size_t count) {
  m_triangles.clear();
  for (std::size_t k = 1; k + 1 < count; ++k)
    m_triangles.push_back({0, k, k + 1});
}

PolygonTriangulator::Outcome PolygonTriangulator::ClipEars(std::size_t count) {
  m_triangles.clear();
  m_previous.resize(count);
  m_following.resize(count);
  m_turns.assign(count, 1);
  m_obstacles.clear();
  for (std::size_t k = 0; k < count; ++k) {
    m_previous[k] = k == 0 ? count - 1 : k - 1;
    m_following[k] = k + 1 == count ? 0 : k + 1;
  }
  for (std::size_t k = 0; k < count; ++k)
    UpdateTurn(k);
  m_remaining = count;
  m_current = 1;
  m_testsLeft = kTestBudget;

  while (m_remaining > 3) {
    const bool clipped = ClipOne(Strictness::Closed) || ClipOne(Strictness::Open) || ClipFlat();
    if (m_testsLeft == 0) return Outcome::TooLong;
    if (!clipped) return Outcome::Stuck;
  }
  const std::size_t middle = m_current;
  if (Turn(m_previous[middle], middle, m_following[middle]) < 0) return Outcome::Stuck;
  m_triangles.push_back({m_previous[middle], middle, m_following[middle]});
  return Outcome::Done;
}

/// Clips the first ear at or after the current corner.
bool PolygonTriangulator::ClipOne(Strictness strictness) {
  std::size_t corner = m_current;
  for (std::size_t k = 0; k < m_remaining; ++k) {
    if (IsEar(corner, strictness)) {
      Clip(corner);
      return true;
    }
    corner = m_following[corner];
  }
  return false;
}

/// A corner in line with its neighbours adds a triangle without area, so it is clipped last.
bool PolygonTriangulator::ClipFlat() {
  std::size_t corner = m_current;
  for (std::size_t k = 0; k < m_remaining; ++k) {
    if (m_turns[corner] == 0) {
      Clip(corner);
      return true;
    }
    corner = m_following[corner];
  }
  return false;
}

/// Only a corner that is not convex can be the first obstacle of an ear. A corner at the same place
/// as a corner of the ear (an end of a bridge to a hole) is not an obstacle.
bool PolygonTriangulator::IsEar(std::size_t corner, Strictness strictness) {
  if (m_turns[corner] != 1) return false;
  const std::size_t a = m_previous[corner], b = corner, c = m_following[corner];
  const auto [lowU, highU] = std::minmax({m_points[a].u, m_points[b].u, m_points[c].u});
  const auto [lowV, highV] = std::minmax({m_points[a].v, m_points[b].v, m_points[c].v});
  const int least = strictness == Strictness::Closed ? 0 : 1;
  for (std::size_t k = 0; k < m_obstacles.size();) {
    if (m_testsLeft == 0) return false;
    --m_testsLeft;
    const std::size_t q = m_obstacles[k];
    if (m_turns[q] > 0) {
      m_obstacles[k] = m_obstacles.back();
      m_obstacles.pop_back();
      continue;
    }
    ++k;
    const Point& p = m_points[q];
    if (p.u < lowU || p.u > highU || p.v < lowV || p.v > highV) continue;
    if (SamePlace(q, a) || SamePlace(q, b) || SamePlace(q, c)) continue;
    if (Turn(a, b, q) >= least && Turn(b, c, q) >= least && Turn(c, a, q) >= least) return false;
  }
  return true;
}

void PolygonTriangulator::Clip(std::size_t corner) {
  const std::size_t before = m_previous[corner], after = m_following[corner];
  m_triangles.push_back({before, corner, after});
  m_following[before] = after;
  m_previous[after] = before;
  m_turns[corner] = kGone;
  --m_remaining;
  UpdateTurn(before);
  UpdateTurn(after);
  // The search continues after the ear, so that the triangles do not all meet in one corner.
  m_current = m_following[after];
}

void PolygonTriangulator::UpdateTurn(std::size_t corner) {
  const signed char old = m_turns[corner];
  const int turn = Turn(m_previous[corner], corner, m_following[corner]);
  m_turns[corner] = static_cast<signed char>(turn);
  if (old > 0 && turn <= 0) m_obstacles.push_back(corner);
}

} // namespace gsl_mesh
