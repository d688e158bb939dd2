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
constexpr std::size_t smallRange = 8;
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

ShadowTree::Bounds::Bounds() {
  std::fill(std::begin(least), std::end(least), infinity);
}

ShadowTree::Bounds::Bounds(const ShadowTriangle& t, double error) {
  const ShadowBox box = t.Box(error);
  least[0] = box.low.x;
  least[1] = box.low.y;
  least[2] = box.low.z;
  least[3] = -box.high.x;
  least[4] = -box.high.y;
  least[5] = -box.high.z;
}

void ShadowTree::Bounds::Include(const Bounds& other) {
  for (int k = 0; k < 6; ++k)
    least[k] = other.least[k] < least[k] ? other.least[k] : least[k];
}

double ShadowTree::Bounds::Surface() const {
  const double x = -least[3] - least[0];
  const double y = -least[4] - least[1];
  const double z = -least[5] - least[2];
  return x * y + y * z + z * x;
}

/// Puts the triangles of two children in order; returns where the second begins.
std::size_t ShadowTree::SplitRange(Range range, int depth) {
  double low[3] = {infinity, infinity, infinity};
  double high[3] = {-infinity, -infinity, -infinity};
  for (std::size_t k = range.begin; k < range.end; ++k) {
    const Bounds bounds(m_triangles[k], m_error);
    for (int axis = 0; axis < 3; ++axis) {
      const double middle = bounds.Middle(axis);
      low[axis] = middle < low[axis] ? middle : low[axis];
      high[axis] = middle > high[axis] ? middle : high[axis];
    }
  }
  Cut cuts[3];
  int longest = 0;
  for (int axis = 0; axis < 3; ++axis) {
    const double spread = high[axis] - low[axis];
    const double scale = binCount / spread;
    if (spread > high[longest] - low[longest]) longest = axis;
    // Middles that do not spread, or by a subnormal amount, have no cut.
    if (spread > 0.0 && std::isfinite(scale)) cuts[axis] = {axis, 0, low[axis], scale, infinity};
  }
  // Weighing costs more than it saves where there is little to divide.
  const bool isSmall = range.end - range.begin <= smallRange;
  if (isSmall || depth >= costDepth) return SplitInHalf(range, longest);

  const Cut best = CheapestCut(range, cuts);
  if (best.axis < 0) return SplitInHalf(range, longest);
  const auto isLeft = [&best, this](const ShadowTriangle& t) {
    return best.Bin(Bounds(t, m_error).Middle(best.axis)) <= best.lastLeft;
  };
  const auto begin = m_triangles.begin();
  const auto middle = std::partition(begin + static_cast<std::ptrdiff_t>(range.begin),
                                     begin + static_cast<std::ptrdiff_t>(range.end), isLeft);
  return static_cast<std::size_t>(middle - begin);
}

/// Weighs the cuts between equal slices of the axes by the surfaces and counts on both sides.
ShadowTree::Cut ShadowTree::CheapestCut(Range range, Cut (&cuts)[3]) const {
  Slices slices[3];
  for (std::size_t k = range.begin; k < range.end; ++k) {
    const Bounds bounds(m_triangles[k], m_error);
    for (int axis = 0; axis < 3; ++axis) {
      if (cuts[axis].axis < 0) continue;
      const int bin = cuts[axis].Bin(bounds.Middle(axis));
      slices[axis].bounds[bin].Include(bounds);
      ++slices[axis].counts[bin];
    }
  }
  Cut best;
  for (int axis = 0; axis < 3; ++axis) {
    if (cuts[axis].axis < 0) continue;
    slices[axis].Weigh(range.end - range.begin, cuts[axis]);
    if (cuts[axis].cost < best.cost) best = cuts[axis];
  }
  return best;
}

void ShadowTree::Slices::Weigh(std::size_t total, Cut& cut) const {
  double rightCost[binCount];
  Bounds right;
  std::size_t rightCount = 0;
  for (int bin = binCount - 1; bin > 0; --bin) {
    right.Include(bounds[bin]);
    rightCount += counts[bin];
    rightCost[bin] = rightCount == 0 ? 0.0 : right.Surface() * static_cast<double>(rightCount);
  }
  Bounds left;
  std::size_t leftCount = 0;
  for (int bin = 0; bin + 1 < binCount; ++bin) {
    left.Include(bounds[bin]);
    leftCount += counts[bin];
    // A cut that leaves one side empty is none.
    if (leftCount == 0 || leftCount == total) continue;
    const double cost = left.Surface() * static_cast<double>(leftCount) + rightCost[bin + 1];
    if (!(cost < cut.cost)) continue;
    cut.cost = cost;
    cut.lastLeft = bin;
  }
}

std::size_t ShadowTree::SplitInHalf(Range range, int axis) {
  const std::size_t middle = range.begin + (range.end - range.begin) / 2;
  const auto begin = m_triangles.begin();
  const auto precedes = [axis, this](const ShadowTriangle& a, const ShadowTriangle& b) {
    const double atA = Bounds(a, m_error).Middle(axis);
    const double atB = Bounds(b, m_error).Middle(axis);
    return atA != atB ? atA < atB : a.index < b.index;
  };
  std::nth_element(begin + static_cast<std::ptrdiff_t>(range.begin),
                   begin + static_cast<std::ptrdiff_t>(middle),
                   begin + static_cast<std::ptrdiff_t>(range.end), precedes);
  return middle;
}

int ShadowTree::Cut::Bin(double middle) const {
  const int bin = static_cast<int>((middle - low) * scale);
  return std::min(bin, binCount - 1);
}

} // namespace gsl_sweep
