#include "FanPairs.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace gsl_sweep {

namespace {

/// Returns the direction from one point to another, each coordinate off by at most 2^-51.
void Direction(const Coord3& from, const Coord3& to, double (&direction)[3]) {
  const Coord3 v = gsl_arithmetic::Subtract(to, from);
  const double largest = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
  direction[0] = v.x / largest;
  direction[1] = v.y / largest;
  direction[2] = v.z / largest;
}

auto Key(const PlacedCorner& corner) {
  return std::tie(corner.p.x, corner.p.y, corner.p.z);
}
bool AtLess(const PlacedCorner& a, const PlacedCorner& b) {
  return Key(a) < Key(b);
}

using Run = std::pair<const PlacedCorner*, const PlacedCorner*>;

/// Returns the corners at the place of the first of them.
Run RunFrom(const PlacedCorner* first, const PlacedCorner* end) {
  const PlacedCorner* last = first;
  while (last != end && !AtLess(*first, *last))
    ++last;
  return {first, last};
}

/// Takes the places of a run that are still free.
std::vector<std::uint32_t> TakeFree(const Run& run, std::vector<bool>& isTaken) {
  std::vector<std::uint32_t> places;
  for (const PlacedCorner* corner = run.first; corner != run.second; ++corner) {
    if (corner->place >= isTaken.size()) isTaken.resize(corner->place + 1, false);
    if (isTaken[corner->place]) continue;
    isTaken[corner->place] = true;
    places.push_back(corner->place);
  }
  return places;
}

} // namespace

// Let a and b be the directions to the ends of the opposite edge, and d the largest difference of
// their coordinates. A direction within the triangle is c / |c| with a point c of the segment from
// a to b, where |c| is the largest magnitude of a coordinate. The nearer end of the segment is at
// most d / 2 away, so |c| is from 1 - d / 2 to 1. Then c / |c| differs from c by 1 - |c| at most in
// each coordinate, which is d / 2 at most. The coordinates of a and b, and so d / 2, are off by
// less than 2^-50.
Box<double> DirectionsFrom(const SurfaceTriangle& t, int corner) {
  double a[3];
  double b[3];
  Direction(t.corner[corner], t.corner[(corner + 1) % 3], a);
  Direction(t.corner[corner], t.corner[(corner + 2) % 3], b);
  double difference = 0.0;
  for (int k = 0; k < 3; ++k)
    difference = std::max(difference, std::fabs(a[k] - b[k]));
  const double beyond = 0.5 * difference + 0x1p-40;
  Box<double> box{};
  for (int k = 0; k < 3; ++k) {
    box.low[k] = std::min(a[k], b[k]) - beyond;
    box.high[k] = std::max(a[k], b[k]) + beyond;
  }
  return box;
}

BoxIndex::BoxIndex(std::vector<Box<double>> boxes)
    : m_boxes(std::move(boxes)), m_order(m_boxes.size()) {
  std::iota(m_order.begin(), m_order.end(), 0u);
  m_nodes.emplace_back();
  m_nodes.front().count = m_boxes.size();
  for (std::uint32_t node = 0; node < m_nodes.size(); ++node)
    Divide(node);
}

/// Computes the box of a node and makes two children where it has many boxes. They are divided in
/// the middle, along the axis on which they reach farthest.
void BoxIndex::Divide(std::uint32_t index) {
  Node node = m_nodes[index];
  const auto first = m_order.begin() + static_cast<std::ptrdiff_t>(node.first);
  const auto last = first + static_cast<std::ptrdiff_t>(node.count);
  for (auto k = first; k != last; ++k)
    node.box.Include(m_boxes[*k]);
  if (node.count > kFew) {
    int widest = 0;
    for (int k = 1; k < 3; ++k) {
      if (node.box.high[k] - node.box.low[k] > node.box.high[widest] - node.box.low[widest])
        widest = k;
    }
    const std::size_t half = node.count / 2;
    std::nth_element(first, first + static_cast<std::ptrdiff_t>(half), last,
                     [this, widest](std::uint32_t a, std::uint32_t b) {
                       return m_boxes[a].low[widest] < m_boxes[b].low[widest];
                     });
    node.children = static_cast<std::uint32_t>(m_nodes.size());
    Node low;
    Node high;
    low.first = node.first;
    low.count = half;
    high.first = node.first + half;
    high.count = node.count - half;
    m_nodes.push_back(low);
    m_nodes.push_back(high);
  }
  m_nodes[index] = node;
}

std::vector<SharedFan> FindSharedFans(std::vector<PlacedCorner> moving,
                                      std::vector<PlacedCorner> fixed, std::size_t leastPairs) {
  std::sort(moving.begin(), moving.end(), AtLess);
  std::sort(fixed.begin(), fixed.end(), AtLess);
  std::vector<std::pair<Run, Run>> runs;
  const PlacedCorner* const movingEnd = moving.data() + moving.size();
  const PlacedCorner* const fixedEnd = fixed.data() + fixed.size();
  const PlacedCorner* b = fixed.data();
  for (const PlacedCorner* a = moving.data(); a != movingEnd;) {
    const Run ofMoving = RunFrom(a, movingEnd);
    a = ofMoving.second;
    while (b != fixedEnd && AtLess(*b, *ofMoving.first))
      ++b;
    if (b == fixedEnd) break;
    const Run ofFixed = RunFrom(b, fixedEnd);
    if (!AtLess(*ofMoving.first, *b)) runs.emplace_back(ofMoving, ofFixed);
  }
  const auto pairs = [](const Run& ofMoving, const Run& ofFixed) {
    return static_cast<std::size_t>(ofMoving.second - ofMoving.first) *
           static_cast<std::size_t>(ofFixed.second - ofFixed.first);
  };
  std::stable_sort(runs.begin(), runs.end(), [&pairs](const auto& one, const auto& other) {
    return pairs(one.first, one.second) > pairs(other.first, other.second);
  });
  std::vector<SharedFan> fans;
  std::vector<bool> isMovingTaken;
  std::vector<bool> isFixedTaken;
  for (const auto& [ofMoving, ofFixed] : runs) {
    if (pairs(ofMoving, ofFixed) < leastPairs) break;
    SharedFan fan{ofMoving.first->p, TakeFree(ofMoving, isMovingTaken),
                  TakeFree(ofFixed, isFixedTaken)};
    if (!fan.moving.empty() && !fan.fixed.empty()) fans.push_back(std::move(fan));
  }
  return fans;
}

} // namespace gsl_sweep
