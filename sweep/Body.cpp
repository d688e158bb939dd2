#include "CrossingSearch.h"
#include "Grown.h"
#include "PreparedBody.h"

#include <algorithm>
#include <limits>

namespace gsl_sweep {

namespace {

std::shared_ptr<const PreparedBody> Taken(const TriangleView& view, const Run& run) {
  // Copying takes less time than starting a thread for fewer triangles.
  Team team(run, view.triangleCount >> 16);
  return std::make_shared<PreparedBody>(view, team);
}

} // namespace

Body::Body(const TriangleView& view) : Body(view, Run()) {}
Body::Body(const TriangleView& view, const Run& run) : m_prepared(Taken(view, run)) {}
Body::Body(std::shared_ptr<const PreparedBody> prepared) : m_prepared(std::move(prepared)) {}
Body::~Body() = default;
Body::Body(const Body&) = default;
Body& Body::operator=(const Body&) = default;
// A body that was moved from keeps its share, so that every body can be asked.
// NOLINTNEXTLINE(performance-move-constructor-init): a copy on purpose
Body::Body(Body&& other) noexcept : m_prepared(other.m_prepared) {}
Body& Body::operator=(Body&& other) noexcept {
  m_prepared = other.m_prepared;
  return *this;
}

Body Body::Moved(const gsl_Matrix& matrix) const {
  return Body(std::make_shared<PreparedBody>(*m_prepared, MovedVertices(*m_prepared, matrix)));
}

Body Body::Grown(double e, double* deviation) const {
  GrownVertices grown = GrowVertices(m_prepared->Triangles(), e);
  if (deviation != nullptr) *deviation = grown.deviation;
  return Body(std::make_shared<PreparedBody>(*m_prepared, grown.vertices));
}

std::size_t Body::TriangleCount() const {
  return m_prepared->TriangleCount() + SkippedCount();
}

std::size_t Body::SkippedCount() const {
  return m_prepared->SkippedCount();
}

void Body::GetBounds(Coord3& low, Coord3& high) const {
  low = high = {0.0, 0.0, 0.0};
  if (m_prepared->IsEmpty()) return;
  const Box<double>& bounds = m_prepared->Bounds();
  low = {bounds.low[0], bounds.low[1], bounds.low[2]};
  high = {bounds.high[0], bounds.high[1], bounds.high[2]};
}

void Body::GetTriangles(double* corners) const {
  std::fill_n(corners, 9 * TriangleCount(), std::numeric_limits<double>::quiet_NaN());
  const Corners& triangles = m_prepared->Triangles();
  for (std::size_t place = 0; place < triangles.Count(); ++place) {
    double* to = corners + 9 * std::size_t{triangles.Number(place)};
    for (int k = 0; k < 3; ++k, to += 3) {
      const Coord3 p = triangles.At(place, k);
      to[0] = p.x;
      to[1] = p.y;
      to[2] = p.z;
    }
  }
}

Solidity Body::IsSolid() const {
  return m_prepared->AsSolid();
}

std::size_t Body::MemoryBytes() const {
  return m_prepared->Bytes();
}

std::size_t Crossings(const Body& body, Crossing* out, std::size_t capacity, const Run& run) {
  return FindCrossings(*body.m_prepared, out, capacity, run);
}

} // namespace gsl_sweep
