#include "ShadowTree.h"

#include <algorithm>
#include <iterator>

namespace gsl_sweep {

namespace {

using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Divide;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;

constexpr std::size_t leafSize = 4;
constexpr int binCount = 16;
constexpr int costDepth = 48; ///< deeper than this, halves keep the depth logarithmic

constexpr double infinity = std::numeric_limits<double>::infinity();

ShadowBox EmptyBox() {
  return {{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
}

void Include(ShadowBox& box, const ShadowBox& other) {
  box.low = {std::min(box.low.x, other.low.x), std::min(box.low.y, other.low.y),
             std::min(box.low.z, other.low.z)};
  box.high = {std::max(box.high.x, other.high.x), std::max(box.high.y, other.high.y),
              std::max(box.high.z, other.high.z)};
}

/// Half the surface: the chance that a box is met grows with it.
double Surface(const ShadowBox& box) {
  const Coord3 side = Subtract(box.high, box.low);
  return side.x * side.y + side.y * side.z + side.z * side.x;
}

/// Twice the middle of a triangle's box along one axis.
double Middle(const ShadowTriangle& t, int axis) {
  if (axis == 2) return t.zLow + t.zHigh;
  const double* c = axis == 0 ? t.u : t.v;
  return std::min({c[0], c[1], c[2]}) + std::max({c[0], c[1], c[2]});
}

/// An axis of the coordinates that is far from parallel to a direction.
Coord3 AxisAwayFrom(const Coord3& unit) {
  if (std::fabs(unit.x) <= std::fabs(unit.y) && std::fabs(unit.x) <= std::fabs(unit.z)) {
    return {1.0, 0.0, 0.0};
  }
  if (std::fabs(unit.y) <= std::fabs(unit.z)) return {0.0, 1.0, 0.0};
  return {0.0, 0.0, 1.0};
}

} // namespace

ShadowFrame::ShadowFrame(const TravelDirection& direction, const Coord3& center, double reach)
    : m_center(center), m_z(direction.Unit()) {
  const Coord3 u = Cross(m_z, AxisAwayFrom(m_z));
  m_u = Divide(u, Length(u));
  m_v = Cross(m_z, m_u);
  // Differences, products, sums and the axes themselves are off by a few roundings each, and a
  // travel of up to four times the reach leaves the axes' error in the shadow: 40 roundings of
  // 2^-53 in all, of which some to spare.
  m_error = 128.0 * 0x1p-53 * reach;
  // Differences of (u, v) are at most four times the reach and each off by two errors.
  m_crossError = 64.0 * m_error * reach;
}

ShadowFrame ShadowFrame::Turned(double angle) const {
  ShadowFrame turned = *this;
  const double cosine = std::cos(angle);
  const double sine = std::sin(angle);
  turned.m_u = Add(Multiply(m_u, cosine), Multiply(m_v, sine));
  turned.m_v = Subtract(Multiply(m_v, cosine), Multiply(m_u, sine));
  return turned;
}

Coord3 ShadowFrame::Transform(const Coord3& p) const {
  const Coord3 r = Subtract(p, m_center);
  return {Dot(r, m_u), Dot(r, m_v), Dot(r, m_z)};
}

ShadowBox ShadowTriangle::Box(double error) const {
  return {{std::min({u[0], u[1], u[2]}) - error, std::min({v[0], v[1], v[2]}) - error, zLow},
          {std::max({u[0], u[1], u[2]}) + error, std::max({v[0], v[1], v[2]}) + error, zHigh}};
}

namespace {

/// True when the line of an edge of `own` has the other corners beyond its own.
bool SomeEdgeSeparates(const ShadowTriangle& own, const ShadowTriangle& other, double crossError) {
  for (int k = 0; k < 3; ++k) {
    const int next = k == 2 ? 0 : k + 1;
    const int third = 3 - k - next;
    const double eu = own.u[next] - own.u[k];
    const double ev = own.v[next] - own.v[k];
    const auto side = [&](const ShadowTriangle& t, int c) {
      return eu * (t.v[c] - own.v[k]) - ev * (t.u[c] - own.u[k]);
    };
    const double ownThird = side(own, third);
    const double s0 = side(other, 0);
    const double s1 = side(other, 1);
    const double s2 = side(other, 2);
    if (std::min({s0, s1, s2}) > std::max(0.0, ownThird) + crossError) return true;
    if (std::max({s0, s1, s2}) < std::min(0.0, ownThird) - crossError) return true;
  }
  return false;
}

} // namespace

bool ShadowsApart(const ShadowTriangle& a, const ShadowTriangle& b, double crossError) {
  return SomeEdgeSeparates(a, b, crossError) || SomeEdgeSeparates(b, a, crossError);
}

ShadowTree::ShadowTree(const ShadowFrame& frame, std::vector<ShadowTriangle> triangles)
    : m_error(frame.Error()), m_triangles(std::move(triangles)) {
  if (m_triangles.empty()) return;
  m_nodes.reserve(m_triangles.size());
  Build({0, m_triangles.size()}, 0);
}

std::uint32_t ShadowTree::Build(Range range, int depth) {
  const auto node = static_cast<std::uint32_t>(m_nodes.size());
  m_nodes.push_back({EmptyBox(), 0, 0});
  if (range.end - range.begin <= leafSize) {
    ShadowBox box = EmptyBox();
    for (std::size_t k = range.begin; k < range.end; ++k)
      Include(box, m_triangles[k].Box(m_error));
    m_nodes[node] = {box, static_cast<std::uint32_t>(range.begin),
                     static_cast<std::uint32_t>(range.end - range.begin)};
    return node;
  }
  const std::size_t middle = SplitRange(range, depth);
  const std::uint32_t left = Build({range.begin, middle}, depth + 1);
  const std::uint32_t right = Build({middle, range.end}, depth + 1);
  ShadowBox box = m_nodes[left].box;
  Include(box, m_nodes[right].box);
  m_nodes[node] = {box, right, 0};
  return node;
}

/// Puts the triangles of two children in order; returns where the second begins.
std::size_t ShadowTree::SplitRange(Range range, int depth) {
  double low[3];
  double high[3];
  int longest = 0;
  for (int axis = 0; axis < 3; ++axis) {
    low[axis] = infinity;
    high[axis] = -infinity;
    for (std::size_t k = range.begin; k < range.end; ++k) {
      const double middle = Middle(m_triangles[k], axis);
      low[axis] = std::min(low[axis], middle);
      high[axis] = std::max(high[axis], middle);
    }
    if (high[axis] - low[axis] > high[longest] - low[longest]) longest = axis;
  }
  if (depth >= costDepth) return SplitInHalf(range, longest);

  Cut best;
  for (int axis = 0; axis < 3; ++axis) {
    const Cut cut = CheapestCut(range, axis, low[axis], high[axis]);
    if (cut.cost < best.cost) best = cut;
  }
  if (best.axis < 0) return SplitInHalf(range, longest);
  const auto isLeft = [&best](const ShadowTriangle& t) { return best.Bin(t) <= best.lastLeft; };
  const auto begin = m_triangles.begin();
  const auto middle = std::partition(begin + static_cast<std::ptrdiff_t>(range.begin),
                                     begin + static_cast<std::ptrdiff_t>(range.end), isLeft);
  return static_cast<std::size_t>(middle - begin);
}

/// Weighs the cuts between equal slices of one axis by the surfaces and counts on both sides.
ShadowTree::Cut ShadowTree::CheapestCut(Range range, int axis, double low, double high) const {
  Cut cut;
  const double scale = binCount / (high - low);
  // Middles that do not spread, or by a subnormal amount, have no cut.
  if (!(high > low) || !std::isfinite(scale)) return cut;
  cut = {axis, 0, low, scale, infinity};
  ShadowBox boxes[binCount];
  std::size_t counts[binCount] = {};
  std::fill(std::begin(boxes), std::end(boxes), EmptyBox());
  for (std::size_t k = range.begin; k < range.end; ++k) {
    const int bin = cut.Bin(m_triangles[k]);
    Include(boxes[bin], m_triangles[k].Box(m_error));
    ++counts[bin];
  }
  double rightCost[binCount];
  ShadowBox right = EmptyBox();
  std::size_t rightCount = 0;
  for (int bin = binCount - 1; bin > 0; --bin) {
    Include(right, boxes[bin]);
    rightCount += counts[bin];
    rightCost[bin] = rightCount == 0 ? 0.0 : Surface(right) * static_cast<double>(rightCount);
  }
  ShadowBox left = EmptyBox();
  std::size_t leftCount = 0;
  for (int bin = 0; bin + 1 < binCount; ++bin) {
    Include(left, boxes[bin]);
    leftCount += counts[bin];
    // A cut that leaves one side empty is none.
    if (leftCount == 0 || leftCount == range.end - range.begin) continue;
    const double cost = Surface(left) * static_cast<double>(leftCount) + rightCost[bin + 1];
    if (!(cost < cut.cost)) continue;
    cut.cost = cost;
    cut.lastLeft = bin;
  }
  return cut;
}

std::size_t ShadowTree::SplitInHalf(Range range, int axis) {
  const std::size_t middle = range.begin + (range.end - range.begin) / 2;
  const auto begin = m_triangles.begin();
  const auto precedes = [axis](const ShadowTriangle& a, const ShadowTriangle& b) {
    const double atA = Middle(a, axis);
    const double atB = Middle(b, axis);
    return atA != atB ? atA < atB : a.index < b.index;
  };
  std::nth_element(begin + static_cast<std::ptrdiff_t>(range.begin),
                   begin + static_cast<std::ptrdiff_t>(middle),
                   begin + static_cast<std::ptrdiff_t>(range.end), precedes);
  return middle;
}

int ShadowTree::Cut::Bin(const ShadowTriangle& t) const {
  const int bin = static_cast<int>((Middle(t, axis) - low) * scale);
  return std::min(bin, binCount - 1);
}

} // namespace gsl_sweep
