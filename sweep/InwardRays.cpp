#include "InwardRays.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace gsl_sweep {

using gsl_exact::DeterminantSign;
using gsl_exact::DoubleDouble;
using gsl_exact::Estimate;
using gsl_exact::EstimateDeterminant;
using gsl_exact::TwoSum;
using gsl_exact::VectorBetween;

namespace {

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

/// Returns a box that holds the point where the ray from a triangle begins.
//
// Each coordinate is computed with two roundings of numbers of at most four times the largest
// coordinate, divided by four: it is off by less than 2^-51 of that coordinate. Where both sums are
// exact, it is not off at all. It is between those of the corners.
Box<double> BeginOf(const SurfaceTriangle& face) {
  const Coord3* p = face.corner;
  const double coordinates[3][3] = {
      {p[0].x, p[1].x, p[2].x}, {p[0].y, p[1].y, p[2].y}, {p[0].z, p[1].z, p[2].z}};
  Box<double> box{};
  for (int k = 0; k < 3; ++k) {
    const double* c = coordinates[k];
    const DoubleDouble two = TwoSum(2.0 * c[0], c[1]);
    const DoubleDouble sum = TwoSum(two.hi, c[2]);
    const double at = 0.25 * sum.hi;
    const bool isExact = two.lo == 0.0 && sum.lo == 0.0;
    const double size = std::fabs(c[0]) + std::fabs(c[1]) + std::fabs(c[2]);
    const double error = isExact ? 0.0 : 0x1p-50 * size;
    box.low[k] = std::max(at - error, std::min({c[0], c[1], c[2]}));
    box.high[k] = std::min(at + error, std::max({c[0], c[1], c[2]}));
  }
  return box;
}

/// Returns the sign of det[u, v, y - on] for all points y of a box, or 0 where it is not certain.
//
// The determinant is linear in y. So its sign is the same for all points when it is for all
// corners. Corners of boxes may be off the grid of the coordinates, and products of them below the
// range. A determinant has fewer than 2^5 products of factors below 2, each off by 2^-1074 at most.
int SignOver(const Box<double>& box, const VectorBetween& u, const VectorBetween& v,
             const Coord3& on) {
  int common = 0;
  for (unsigned k = 0; k < 8; ++k) {
    const Coord3 y{(k & 1u) != 0 ? box.high[0] : box.low[0],
                   (k & 2u) != 0 ? box.high[1] : box.low[1],
                   (k & 4u) != 0 ? box.high[2] : box.low[2]};
    const Estimate estimate = EstimateDeterminant(u, v, {&on, &y});
    if (!(std::fabs(estimate.value) > estimate.bound + 0x1p-1000)) return 0;
    if (k > 0 && estimate.Sign() != common) return 0;
    common = estimate.Sign();
  }
  return common;
}

std::tuple<double, double, double> Key(const Coord3& p) {
  return {p.x, p.y, p.z};
}

/// Orders rays along one axis by the triangles. Triangles whose last corners are exchanged have the
/// same ray.
auto KeyOf(const FaceRay& ray) {
  const Coord3* p = ray.face.corner;
  return std::make_tuple(Key(p[0]), std::min(Key(p[1]), Key(p[2])), std::max(Key(p[1]), Key(p[2])));
}

} // namespace

FaceRay::FaceRay(const SurfaceTriangle& triangle, std::size_t itsNumber)
    : face(triangle), ray(face), begin(BeginOf(face)), number(itsNumber) {}

RayTree::RayTree(std::vector<const FaceRay*> rays)
    : m_rays(std::move(rays)), m_axis(m_rays.front()->ray.Axis()),
      m_sense(m_rays.front()->ray.Sense()) {
  m_nodes.reserve(2 * m_rays.size());
  m_nodes.emplace_back();
  m_nodes.front().count = m_rays.size();
  for (std::uint32_t node = 0; node < m_nodes.size(); ++node)
    Divide(node);
}

/// Computes the box of a node and makes two children where it has more than one ray.
void RayTree::Divide(std::uint32_t index) {
  Node& node = m_nodes[index];
  for (std::size_t k = node.first; k < node.first + node.count; ++k)
    node.begin.Include(m_rays[k]->begin);
  node.isColumn = true;
  for (int k = 0; k < 3; ++k)
    node.isColumn = node.isColumn && (k == m_axis || node.begin.low[k] == node.begin.high[k]);
  if (node.count == 1) return;
  const std::size_t half = HalfOf(node);
  if (!node.isColumn) FindRow(node);
  node.children = static_cast<std::uint32_t>(m_nodes.size());
  Node low;
  Node high;
  low.first = node.first;
  low.count = half;
  high.first = node.first + half;
  high.count = node.count - half;
  m_nodes.push_back(low); // room was reserved, so that `node` stays where it is
  m_nodes.push_back(high);
}

/// Finds out whether all rays are in one plane. Only rays whose places are exact are looked at.
void RayTree::FindRow(Node& node) const {
  const VectorBetween along{&kOrigin, &kAxes[m_axis]};
  const auto placeOf = [](const FaceRay& ray) {
    return Coord3{ray.begin.low[0], ray.begin.low[1], ray.begin.low[2]};
  };
  const int side = (m_axis + 1) % 3;
  const int other = (m_axis + 2) % 3;
  const auto isExact = [side, other](const Box<double>& begin) {
    return begin.low[side] == begin.high[side] && begin.low[other] == begin.high[other];
  };
  const Box<double>& first = m_rays[node.first]->begin;
  const Box<double>& last = m_rays[node.first + node.count - 1]->begin;
  if (first.low[side] == last.low[side] && first.low[other] == last.low[other]) return;
  node.ends[0] = placeOf(*m_rays[node.first]);
  node.ends[1] = placeOf(*m_rays[node.first + node.count - 1]);
  for (std::size_t k = node.first; k < node.first + node.count; ++k) {
    const Coord3 place = placeOf(*m_rays[k]);
    if (!isExact(m_rays[k]->begin) ||
        DeterminantSign(along, {&node.ends[0], &node.ends[1]}, {&node.ends[0], &place}) != 0)
      return;
  }
  node.isRow = true;
}

/// Returns true for a triangle in a plane along the rays, which no ray crosses: a ray beside the
/// plane misses it, and one in the plane is not inside the triangle.
bool RayTree::IsAlongRays(const SurfaceTriangle& t) const {
  const Coord3* p = t.corner;
  return DeterminantSign({&kOrigin, &kAxes[m_axis]}, {&p[0], &p[1]}, {&p[0], &p[2]}) == 0;
}

/// Orders the rays of a node, and returns how many of them are in its first half. The rays are
/// divided along the axis on which they are farthest apart.
//
// Rays along one line, which begin over each other, stay together as long as the node has few such
// lines for its rays: a triangle crosses them alike although an edge of it is on their line. Rays
// that begin at few heights are divided by these first: a triangle at one of the heights is over
// none that begins there.
std::size_t RayTree::HalfOf(const Node& node) {
  const auto length = [&node](int k) { return node.begin.high[k] - node.begin.low[k]; };
  const auto byAxis = [](int axis) {
    return [axis](const FaceRay* a, const FaceRay* b) {
      return a->begin.low[axis] < b->begin.low[axis];
    };
  };
  const std::size_t half = node.count / 2;
  const auto cutNearHalf = [half](const std::vector<std::size_t>& cuts) {
    const auto next = std::lower_bound(cuts.begin(), cuts.end(), half);
    return next == cuts.end() ? cuts.back() : *next;
  };
  const std::vector<std::size_t> heights = SortedCuts(node, byAxis(m_axis));
  if (!heights.empty() && heights.size() < kFewHeights && node.count >= kRaysOfLine * kFewHeights) {
    return cutNearHalf(heights);
  }
  int side = (m_axis + 1) % 3;
  int other = (m_axis + 2) % 3;
  if (length(other) > length(side)) std::swap(side, other);
  const auto byLine = [side, other](const FaceRay* a, const FaceRay* b) {
    const double* p = a->begin.low;
    const double* q = b->begin.low;
    return p[side] != q[side] ? p[side] < q[side] : p[other] < q[other];
  };
  const std::vector<std::size_t> lines = SortedCuts(node, byLine);
  const bool hasFewLines = kRaysOfLine * (lines.size() + 1) <= node.count;
  if (!lines.empty() && (hasFewLines || length(side) >= length(m_axis))) return cutNearHalf(lines);
  SortedCuts(node, byAxis(m_axis));
  return half;
}

/// Sorts the rays of a node, and returns where the order goes from a ray to a greater one.
template <class IsBefore>
std::vector<std::size_t> RayTree::SortedCuts(const Node& node, const IsBefore& isBefore) {
  const auto first = m_rays.begin() + static_cast<std::ptrdiff_t>(node.first);
  std::sort(first, first + static_cast<std::ptrdiff_t>(node.count), isBefore);
  std::vector<std::size_t> cuts;
  for (std::size_t k = 1; k < node.count; ++k) {
    if (isBefore(m_rays[node.first + k - 1], m_rays[node.first + k])) cuts.push_back(k);
  }
  return cuts;
}

/// Returns true when some ray of a node may meet what is in a box, elsewhere than where it begins.
//
// What is not above the beginning of a ray upwards, along its axis, is nowhere above the ray.
bool RayTree::Meets(const Node& node, const Box<double>& box) const {
  for (int k = 0; k < 3; ++k) {
    if (k == m_axis) {
      if (m_sense > 0 ? node.begin.low[k] >= box.high[k] : node.begin.high[k] <= box.low[k])
        return false;
    } else if (node.begin.high[k] < box.low[k] || node.begin.low[k] > box.high[k]) {
      return false;
    }
  }
  return true;
}

/// Returns true when the rays of a node are side by side farther apart than the ends of a box. Then
/// no triangle in the box is over all of them.
bool RayTree::IsWider(const Node& node, const Box<double>& box) const {
  if (node.children == 0) return false;
  for (int k = 0; k < 3; ++k) {
    if (k == m_axis) continue;
    if (node.begin.high[k] - node.begin.low[k] > box.high[k] - box.low[k]) return true;
  }
  return false;
}

/// Returns true when a triangle is certain to have the same crossing with all rays of a node. See
/// InwardRay::Crossing.
//
// Rays of one line that begin on one side of the plane of the triangle meet the plane nearly at one
// point, beside which they are turned the same way. So they cross the triangle alike. Rays in one
// plane through an edge are all turned to one side of this edge.
bool RayTree::CrossesAlike(const Node& node, const SurfaceTriangle& t, int& crossing) const {
  const Coord3* p = t.corner;
  const VectorBetween along{&kOrigin, &kAxes[m_axis]};
  crossing = 0;
  int first = 0;
  bool areCertain = true;
  bool isOpen = false;
  for (int edge = 0; edge < 3; ++edge) {
    const VectorBetween ofEdge{&p[edge], &p[edge == 2 ? 0 : edge + 1]};
    const int side = SignOver(node.begin, along, ofEdge, p[edge]);
    if (side * first < 0) return true; // all rays pass beside the triangle
    if (first == 0) first = side;
    if (side != 0) continue;
    areCertain = false;
    if (node.isColumn || isOpen) continue;
    isOpen = !node.isRow;
    for (const Coord3& end : node.ends)
      isOpen = isOpen || DeterminantSign(along, ofEdge, {&p[edge], &end}) != 0;
  }
  if (isOpen) return false;
  const int height = SignOver(node.begin, {&p[0], &p[1]}, {&p[0], &p[2]}, p[0]);
  if (height == 0) return false;
  if (areCertain) {
    crossing = height * first * m_sense < 0 ? first * m_sense : 0;
  } else {
    crossing = m_rays[node.first]->ray.Crossing(t);
  }
  return true;
}

std::vector<InwardRays::Group> InwardRays::Groups() const {
  std::vector<Group> groups(6);
  for (const FaceRay& ray : m_rays) {
    const int group = 2 * ray.ray.Axis() + (ray.ray.Sense() > 0 ? 1 : 0);
    groups[static_cast<std::size_t>(group)].push_back(&ray);
  }
  groups.erase(std::remove_if(groups.begin(), groups.end(),
                              [](const Group& group) { return group.empty(); }),
               groups.end());
  for (Group& group : groups) {
    std::sort(group.begin(), group.end(),
              [](const FaceRay* a, const FaceRay* b) { return KeyOf(*a) < KeyOf(*b); });
  }
  return groups;
}

InwardRays::Group InwardRays::Distinct(const Group& group) {
  Group distinct;
  for (const FaceRay* ray : group)
    if (distinct.empty() || KeyOf(*distinct.back()) != KeyOf(*ray)) distinct.push_back(ray);
  return distinct;
}

void InwardRays::Spread(const Group& group, std::vector<int>& turns) {
  for (std::size_t k = 1; k < group.size(); ++k) {
    if (KeyOf(*group[k - 1]) == KeyOf(*group[k]))
      turns[group[k]->number] = turns[group[k - 1]->number];
  }
}

} // namespace gsl_sweep
