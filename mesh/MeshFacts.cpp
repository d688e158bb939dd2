#include "MeshFacts.h"

#include "BigNumber.h"
#include "ExactArithmetic.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <numeric>

namespace gsl_mesh {

namespace {

using gsl_arithmetic::Coord3;
using gsl_exact::BigNumber;
using gsl_exact::DoubleDouble;

using Triple = std::array<std::uint32_t, 3>;

bool AreEqual(const Coord3& a, const Coord3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Equal points have equal numbers.
std::uint64_t HashOf(const Coord3& p) {
  std::uint64_t sum = 0;
  for (const double c : {p.x, p.y, p.z}) {
    const double positive = c + 0.0; // a zero without a sign
    std::uint64_t bits = 0;
    std::memcpy(&bits, &positive, sizeof bits);
    sum = (sum ^ bits) * 0x9e3779b97f4a7c15u;
    sum ^= sum >> 29;
  }
  return sum;
}

/// Gives equal points one number, from 0 on, in the order of their first use.
class VertexNumbers {
public:
  explicit VertexNumbers(std::size_t mostPoints) {
    std::size_t size = 16;
    while (size < 2 * mostPoints)
      size *= 2;
    m_slots.assign(size, kFree);
  }

  std::uint32_t NumberOf(const Coord3& p) {
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t k = HashOf(p) & mask;; k = (k + 1) & mask) {
      if (m_slots[k] == kFree) {
        m_slots[k] = static_cast<std::uint32_t>(m_points.size());
        m_points.push_back(p);
        return m_slots[k];
      }
      if (AreEqual(m_points[m_slots[k]], p)) return m_slots[k];
    }
  }
  std::size_t Count() const { return m_points.size(); }

private:
  static constexpr std::uint32_t kFree = 0xffffffffu;

  std::vector<std::uint32_t> m_slots; ///< a power of two; at most half of them are in use
  std::vector<Coord3> m_points;
};

/// Returns whether the vector from a to b has an area with the vector from a to c, as seen along
/// one axis. Without rounding errors where the first estimate leaves it open.
bool IsSeenWithArea(double ax, double ay, double bx, double by, double cx, double cy) {
  const double left = (bx - ax) * (cy - ay);
  const double right = (by - ay) * (cx - ax);
  const double sizes = std::fabs(left) + std::fabs(right);
  if (std::fabs(left - right) > 0x1p-50 * sizes && sizes > 0x1p-900) return true;
  const BigNumber x(ax);
  const BigNumber y(ay);
  const BigNumber exactLeft = (BigNumber(bx) - x) * (BigNumber(cy) - y);
  return BigNumber::Compare(exactLeft, (BigNumber(by) - y) * (BigNumber(cx) - x)) != 0;
}

bool HasArea(const Coord3& a, const Coord3& b, const Coord3& c) {
  return IsSeenWithArea(a.x, a.y, b.x, b.y, c.x, c.y) ||
         IsSeenWithArea(a.y, a.z, b.y, b.z, c.y, c.z) ||
         IsSeenWithArea(a.z, a.x, b.z, b.x, c.z, c.x);
}

/// Sets of numbers that are joined.
class Joined {
public:
  explicit Joined(std::size_t count) : m_above(count) {
    std::iota(m_above.begin(), m_above.end(), 0u);
  }
  std::uint32_t Top(std::uint32_t k) {
    while (m_above[k] != k)
      k = m_above[k] = m_above[m_above[k]];
    return k;
  }
  void Join(std::uint32_t a, std::uint32_t b) {
    a = Top(a);
    b = Top(b);
    m_above[std::max(a, b)] = std::min(a, b);
  }

private:
  std::vector<std::uint32_t> m_above;
};

/// One use of an edge.
struct EdgeUse {
  std::uint64_t ends; ///< the lower vertex and the higher
  std::uint32_t triangle;
  bool isForward; ///< from the lower to the higher
};

/// A finite triangle: its place in the mesh and its vertices.
struct Face {
  std::uint32_t number;
  Triple vertex;
};

/// Keeps the first number that is counted.
void Count(std::size_t number, std::size_t& count, std::size_t& first) {
  if (count == 0 || number < first) first = number;
  ++count;
}

std::vector<Face> FindFaces(const Mesh& mesh, MeshFacts& facts) {
  std::vector<Face> faces;
  faces.reserve(mesh.TriangleCount());
  VertexNumbers numbers(mesh.corners.size());
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const Coord3* p = &mesh.corners[3 * k];
    if (!IsFinite(p[0]) || !IsFinite(p[1]) || !IsFinite(p[2])) {
      Count(k, facts.notFinite, facts.firstNotFinite);
      continue;
    }
    if (!HasArea(p[0], p[1], p[2])) Count(k, facts.degenerate, facts.firstDegenerate);
    faces.push_back({static_cast<std::uint32_t>(k),
                     {numbers.NumberOf(p[0]), numbers.NumberOf(p[1]), numbers.NumberOf(p[2])}});
  }
  facts.vertices = numbers.Count();
  return faces;
}

/// Sorts by the lowest vertex, which `lowest` tells, by counting; then those that have it in common
/// by `isBefore`. Most vertices belong to a few triangles only, so the time grows with the number.
template <class Item, class Lowest, class IsBefore>
std::vector<Item> Sorted(const std::vector<Item>& items, std::size_t vertices, Lowest lowest,
                         IsBefore isBefore) {
  std::vector<std::uint32_t> end(vertices + 1);
  for (const Item& item : items)
    ++end[lowest(item) + 1];
  std::partial_sum(end.begin(), end.end(), end.begin());
  std::vector<Item> sorted(items.size());
  for (const Item& item : items)
    sorted[end[lowest(item)]++] = item;
  std::uint32_t begin = 0;
  for (std::size_t k = 0; k < vertices; ++k) {
    std::sort(sorted.begin() + begin, sorted.begin() + end[k], isBefore);
    begin = end[k];
  }
  return sorted;
}

void CountDuplicates(std::vector<Face> faces, MeshFacts& facts) {
  for (Face& face : faces)
    std::sort(face.vertex.begin(), face.vertex.end());
  const auto lowest = [](const Face& face) { return face.vertex[0]; };
  const auto isBefore = [](const Face& a, const Face& b) {
    if (a.vertex[1] != b.vertex[1]) return a.vertex[1] < b.vertex[1];
    if (a.vertex[2] != b.vertex[2]) return a.vertex[2] < b.vertex[2];
    return a.number < b.number;
  };
  const std::vector<Face> sorted = Sorted(faces, facts.vertices, lowest, isBefore);
  for (std::size_t k = 1; k < sorted.size(); ++k) {
    if (sorted[k].vertex == sorted[k - 1].vertex)
      Count(sorted[k].number, facts.duplicate, facts.firstDuplicate);
  }
}

std::vector<EdgeUse> UsesOf(const std::vector<Face>& faces, std::size_t vertices) {
  std::vector<EdgeUse> uses;
  uses.reserve(3 * faces.size());
  for (const Face& face : faces) {
    const Triple& v = face.vertex;
    if (v[0] == v[1] || v[1] == v[2] || v[2] == v[0]) continue;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::uint64_t from = v[k];
      const std::uint64_t to = v[k == 2 ? 0 : k + 1];
      uses.push_back({std::min(from, to) << 32 | std::max(from, to), face.number, from < to});
    }
  }
  const auto lowest = [](const EdgeUse& use) { return static_cast<std::uint32_t>(use.ends >> 32); };
  const auto isBefore = [](const EdgeUse& a, const EdgeUse& b) {
    return a.ends != b.ends ? a.ends < b.ends : a.triangle < b.triangle;
  };
  return Sorted(uses, vertices, lowest, isBefore);
}

void CountEdges(const std::vector<EdgeUse>& uses, std::size_t triangles, MeshFacts& facts) {
  Joined joined(triangles);
  facts.isClosed = !uses.empty();
  facts.isOriented = true;
  for (std::size_t begin = 0, end = 0; begin < uses.size(); begin = end) {
    std::size_t forward = 0;
    for (end = begin; end < uses.size() && uses[end].ends == uses[begin].ends; ++end) {
      forward += uses[end].isForward ? 1 : 0;
      joined.Join(uses[begin].triangle, uses[end].triangle);
    }
    const std::size_t count = end - begin;
    const std::size_t first = uses[begin].triangle;
    const bool isBalanced = 2 * forward == count;
    ++facts.edges;
    if (!isBalanced) facts.isClosed = false;
    if (!isBalanced && count > 1) facts.isOriented = false;
    if (count == 1) Count(first, facts.openEdges, facts.firstAtOpenEdge);
    if (count == 2 && !isBalanced) Count(first, facts.turnedEdges, facts.firstAtTurnedEdge);
    if (count > 2) Count(first, facts.nonManifoldEdges, facts.firstAtNonManifoldEdge);
  }
  std::vector<bool> isSeen(triangles);
  for (const EdgeUse& use : uses) {
    const std::uint32_t top = joined.Top(use.triangle);
    if (!isSeen[top]) ++facts.components;
    isSeen[top] = true;
  }
}

/// A sum of many numbers that loses little.
class Sum {
public:
  void Add(double term) { m_sum = gsl_exact::Plus(m_sum, {term, 0.0}); }
  double Get() const { return m_sum.hi; }

private:
  DoubleDouble m_sum;
};

/// A weight, and the points that it is of.
struct Moment {
  Sum weight, x, y, z;

  void Add(double w, const Coord3& p) {
    weight.Add(w);
    x.Add(w * p.x);
    y.Add(w * p.y);
    z.Add(w * p.z);
  }
  Coord3 Center() const {
    return {x.Get() / weight.Get(), y.Get() / weight.Get(), z.Get() / weight.Get()};
  }
};

/// Measures from the middle of the box, in lengths of its longest side, so that no product leaves
/// the range.
void Measure(const Mesh& mesh, const std::vector<Face>& faces, MeshFacts& facts) {
  using namespace gsl_arithmetic;
  if (faces.empty()) return;
  facts.low = facts.high = mesh.corners[3 * std::size_t{faces.front().number}];
  for (const Face& face : faces) {
    for (std::size_t k = 0; k < 3; ++k) {
      const Coord3& p = mesh.corners[3 * std::size_t{face.number} + k];
      facts.low = {std::min(facts.low.x, p.x), std::min(facts.low.y, p.y),
                   std::min(facts.low.z, p.z)};
      facts.high = {std::max(facts.high.x, p.x), std::max(facts.high.y, p.y),
                    std::max(facts.high.z, p.z)};
    }
  }
  const Coord3 half = Subtract(Multiply(facts.high, 0.5), Multiply(facts.low, 0.5));
  const Coord3 middle = Add(Multiply(facts.high, 0.5), Multiply(facts.low, 0.5));
  int exponent = 0;
  std::frexp(std::max({half.x, half.y, half.z}), &exponent);
  const auto placed = [&](const Coord3& p) {
    const auto one = [exponent](double c, double from) {
      return std::ldexp(c * 0.5 - from * 0.5, 1 - exponent);
    };
    return Coord3{one(p.x, middle.x), one(p.y, middle.y), one(p.z, middle.z)};
  };
  Moment ofArea;
  Moment ofVolume;
  for (const Face& face : faces) {
    const Coord3* corner = &mesh.corners[3 * std::size_t{face.number}];
    const Coord3 a = placed(corner[0]);
    const Coord3 b = placed(corner[1]);
    const Coord3 c = placed(corner[2]);
    const Coord3 sum = Add(Add(a, b), c);
    const Coord3 cross = Cross(Subtract(b, a), Subtract(c, a));
    ofArea.Add(0.5 * Length(cross), Multiply(sum, 1.0 / 3.0));
    ofVolume.Add(Dot(a, Cross(b, c)) / 6.0, Multiply(sum, 0.25));
  }
  facts.area = std::ldexp(ofArea.weight.Get(), 2 * exponent);
  if (facts.isClosed) facts.volume = std::ldexp(ofVolume.weight.Get(), 3 * exponent);
  const Moment* moment = facts.isClosed && ofVolume.weight.Get() != 0.0 ? &ofVolume : &ofArea;
  if (moment->weight.Get() == 0.0) return;
  const Coord3 center = moment->Center();
  facts.centroid = {middle.x + std::ldexp(center.x, exponent),
                    middle.y + std::ldexp(center.y, exponent),
                    middle.z + std::ldexp(center.z, exponent)};
}

} // namespace

MeshFacts FactsOf(const Mesh& mesh) {
  constexpr std::size_t kMost = std::size_t{1} << 30;
  if (mesh.TriangleCount() > kMost) throw std::length_error("more than 2^30 triangles");
  MeshFacts facts;
  facts.triangles = mesh.TriangleCount();
  const std::vector<Face> faces = FindFaces(mesh, facts);
  CountDuplicates(faces, facts);
  CountEdges(UsesOf(faces, facts.vertices), facts.triangles, facts);
  Measure(mesh, faces, facts);
  return facts;
}

} // namespace gsl_mesh
