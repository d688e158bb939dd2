#include "FeatureEdges.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace gsl_view {

using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Subtract;

namespace {

// The cosine of 29 degrees, so that chamfers of 30 degrees are sharp.
constexpr double kSharpCosine = 0.8746197071393957;

std::uint64_t BitsOf(double value) {
  const double number = value + 0.0; // -0.0 becomes 0.0
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

std::size_t HashOf(const Coord3& p) {
  std::uint64_t hash = BitsOf(p.x) * 0x9E3779B97F4A7C15u;
  hash = (hash ^ (hash >> 29) ^ BitsOf(p.y)) * 0xBF58476D1CE4E5B9u;
  hash = (hash ^ (hash >> 32) ^ BitsOf(p.z)) * 0x94D049BB133111EBu;
  return static_cast<std::size_t>(hash ^ (hash >> 31));
}

bool AreEqual(const Coord3& a, const Coord3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Returns for each corner the first corner with equal coordinates.
std::vector<std::uint32_t> MergeCorners(const std::vector<Coord3>& corners) {
  constexpr std::uint32_t kFree = UINT32_MAX;
  std::size_t size = 16;
  while (size < 2 * corners.size())
    size *= 2;
  std::vector<std::uint32_t> table(size, kFree);
  std::vector<std::uint32_t> firsts(corners.size());
  for (std::size_t k = 0; k < corners.size(); ++k) {
    std::size_t slot = HashOf(corners[k]) & (size - 1);
    while (table[slot] != kFree && !AreEqual(corners[table[slot]], corners[k]))
      slot = (slot + 1) & (size - 1);
    if (table[slot] == kFree) table[slot] = static_cast<std::uint32_t>(k);
    firsts[k] = table[slot];
  }
  return firsts;
}

/// An edge of one triangle.
struct Side {
  std::uint32_t from = 0, to = 0, other = 0;

  bool operator<(const Side& b) const {
    if (from != b.from) return from < b.from;
    if (to != b.to) return to < b.to;
    return other < b.other;
  }
};

std::vector<Side> SidesOf(const std::vector<std::uint32_t>& corners) {
  std::vector<Side> sides;
  sides.reserve(corners.size());
  for (std::size_t k = 0; k + 2 < corners.size(); k += 3) {
    const std::uint32_t a = corners[k], b = corners[k + 1], c = corners[k + 2];
    if (a == b || b == c || c == a) continue;
    sides.push_back({std::min(a, b), std::max(a, b), c});
    sides.push_back({std::min(b, c), std::max(b, c), a});
    sides.push_back({std::min(c, a), std::max(c, a), b});
  }
  std::sort(sides.begin(), sides.end());
  return sides;
}

/// Returns whether the triangles at an edge are bent. A triangle without area counts as flat.
bool IsSharp(const Coord3& from, const Coord3& to, const Coord3& left, const Coord3& right) {
  const Coord3 along = Subtract(to, from);
  // The normals point to the same side when the triangles lie in one plane.
  const Coord3 a = Cross(along, Subtract(left, from));
  const Coord3 b = Cross(Subtract(right, from), along);
  const double lengths = std::sqrt(Dot(a, a)) * std::sqrt(Dot(b, b));
  return lengths > 0.0 && Dot(a, b) < kSharpCosine * lengths;
}

} // namespace

std::vector<BodyEdge> FindEdges(const std::vector<Coord3>& corners) {
  const std::vector<Side> sides = SidesOf(MergeCorners(corners));
  std::vector<BodyEdge> edges;
  edges.reserve(sides.size() / 2);
  for (std::size_t k = 0; k < sides.size();) {
    std::size_t end = k + 1;
    while (end < sides.size() && sides[end].from == sides[k].from && sides[end].to == sides[k].to)
      ++end;
    BodyEdge edge{sides[k].from, sides[k].to, sides[k].other, sides[end - 1].other, end - k != 2};
    edge.isFeature = edge.isFeature || IsSharp(corners[edge.from], corners[edge.to],
                                               corners[edge.left], corners[edge.right]);
    edges.push_back(edge);
    k = end;
  }
  return edges;
}

bool IsDrawn(const BodyEdge& edge, const std::vector<Coord3>& corners, const Coord3& toward) {
  if (edge.isFeature) return true;
  const Coord3 from = corners[edge.from];
  // The normal of the plane through the edge that is seen edge-on.
  const Coord3 across = Cross(Subtract(corners[edge.to], from), toward);
  const double left = Dot(across, Subtract(corners[edge.left], from));
  const double right = Dot(across, Subtract(corners[edge.right], from));
  return (left > 0.0 && right > 0.0) || (left < 0.0 && right < 0.0);
}

} // namespace gsl_view
