#include "Facings.h"

#include "ExactArithmetic.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

using gsl_exact::TwoDifference;
using gsl_exact::TwoProduct;
using gsl_exact::TwoSum;

namespace {

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

bool FitsSingle(double c) {
  return static_cast<double>(static_cast<float>(c)) == c;
}

/// An edge of a triangle.
struct Edge {
  Edge(const Coord3& p, const Coord3& q) {
    const double from[3] = {p.x, p.y, p.z};
    const double to[3] = {q.x, q.y, q.z};
    for (int k = 0; k < 3; ++k) {
      const auto difference = TwoDifference(to[k], from[k]);
      along[k] = difference.hi;
      isShort &= difference.lo == 0.0 && FitsSingle(difference.hi);
    }
  }

  double along[3];
  bool isShort = true; ///< single precision holds it exactly
};

/// The normal of a triangle, of any length. Each component is off by at most its error.
struct Normal {
  explicit Normal(const Coord3 (&p)[3]);

  bool HasNoArea() const { return isExact && n[0] == 0.0 && n[1] == 0.0 && n[2] == 0.0; }
  bool Is(const double (&exact)[3]) const {
    return isExact && n[0] == exact[0] && n[1] == exact[1] && n[2] == exact[2];
  }
  /// Returns a box that holds a positive multiple of the exact normal.
  Box<double> Bounds() const;

  double n[3], error[3];
  bool isExact; ///< n is a positive multiple of the exact normal

private:
  void SetComponent(int k, const Edge (&edges)[3]);
  void SettleAxis();
};

Normal::Normal(const Coord3 (&p)[3]) {
  const Edge edges[3] = {{p[0], p[1]}, {p[1], p[2]}, {p[2], p[0]}};
  for (int k = 0; k < 3; ++k)
    SetComponent(k, edges);
  isExact = error[0] == 0.0 && error[1] == 0.0 && error[2] == 0.0;
  if (!isExact) SettleAxis();
}

/// Any two edges in turn have the same product. The one with the smallest terms is taken: a term of
/// zero is exact.
//
// With u = 2^-53 and t the sum of the magnitudes of both terms: two factors of 1 u each and the
// product are off by 3 u of each term, and squares, and the difference by 1 u of t: less than 5 u t
// in all. The rest of 8 u t, and the margin of 4 u of the component in Bounds(), cover the
// roundings there: 1 u each for the margin, the sum and the product with the scale, which is the
// same for all components. Edges that single precision holds have exact terms, and their difference
// is then exact where its remainder is zero.
void Normal::SetComponent(int k, const Edge (&edges)[3]) {
  const int i = Next(k);
  const int j = Next(i);
  double least = Box<double>::kFar;
  for (int first = 0; first < 3; ++first) {
    const Edge& a = edges[first];
    const Edge& b = edges[Next(first)];
    const double p = a.along[i] * b.along[j];
    const double q = a.along[j] * b.along[i];
    const double terms = std::fabs(p) + std::fabs(q);
    if (terms >= least) continue;
    least = terms;
    const auto difference = TwoDifference(p, q);
    n[k] = difference.hi;
    error[k] = 0x1p-50 * terms;
    if (terms == 0.0 || (a.isShort && b.isShort && difference.lo == 0.0)) {
      error[k] = 0.0;
      return;
    }
  }
}

/// A normal along an axis is known but for its length.
void Normal::SettleAxis() {
  for (int k = 0; k < 3; ++k) {
    const bool isAlong = std::fabs(n[k]) > error[k];
    const int i = Next(k);
    const int j = Next(i);
    if (!isAlong || n[i] != 0.0 || error[i] != 0.0 || n[j] != 0.0 || error[j] != 0.0) continue;
    n[k] = n[k] > 0.0 ? 1.0 : -1.0;
    error[k] = 0.0;
    isExact = true;
  }
}

Box<double> Normal::Bounds() const {
  const double largest = std::max({std::fabs(n[0]), std::fabs(n[1]), std::fabs(n[2])});
  const double scale = 1.0 / largest;
  Box<double> box;
  for (int k = 0; k < 3; ++k) {
    // A normal that is lost in its error can have any direction.
    if (!(largest > error[k])) return {{-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0}};
    const double margin = std::fabs(n[k]) * 0x1p-51 + error[k];
    box.low[k] = (n[k] - margin) * scale;
    box.high[k] = (n[k] + margin) * scale;
  }
  return box;
}

bool AreEqualProducts(double a, double b, double c, double d) {
  if (a * b != c * d) return false;
  return TwoProduct(a, b).lo == TwoProduct(c, d).lo;
}

/// Returns true when two exact normals have the same direction.
bool HaveOneDirection(const double (&a)[3], const double (&b)[3]) {
  bool areEqual = true;
  bool pointTheSameWay = false;
  for (int k = 0; k < 3; ++k) {
    areEqual = areEqual && a[k] == b[k];
    if ((a[k] > 0.0 && b[k] < 0.0) || (a[k] < 0.0 && b[k] > 0.0)) return false;
    pointTheSameWay = pointTheSameWay || (a[k] != 0.0 && b[k] != 0.0);
  }
  if (areEqual) return true;
  for (int k = 0; k < 3; ++k) {
    if (!AreEqualProducts(a[k], b[Next(k)], a[Next(k)], b[k])) return false;
  }
  return pointTheSameWay;
}

/// What is known of the normals of several triangles.
struct ManyNormals {
  Box<float> bounds = Box<float>::Empty();
  std::uint32_t parallel = FacingNode::kNone; ///< as in FacingNode

  bool Any() const { return bounds.low[0] <= bounds.high[0]; }
};

Box<float> Outward(const Box<double>& box) {
  Box<float> result;
  for (int k = 0; k < 3; ++k) {
    result.low[k] = RoundedDown(box.low[k]);
    result.high[k] = RoundedUp(box.high[k]);
  }
  return result;
}

/// Numbers the exact directions. Equal ones that come soon after each other have one number.
class DirectionNumbers {
public:
  explicit DirectionNumbers(std::vector<Coord3>& directions) : m_directions(directions) {}

  std::uint32_t Of(const double (&n)[3]) {
    const std::size_t count = m_directions.size();
    for (std::size_t back = 1; back <= std::min(count, kBack); ++back) {
      if (AreOne(m_directions[count - back], {n[0], n[1], n[2]}))
        return static_cast<std::uint32_t>(count - back);
    }
    m_directions.push_back({n[0], n[1], n[2]});
    return static_cast<std::uint32_t>(count);
  }

  /// Returns the number of the direction that both have, or none.
  std::uint32_t Common(std::uint32_t one, std::uint32_t other) const {
    if (one == other) return one;
    if (one == FacingNode::kNone || other == FacingNode::kNone) return FacingNode::kNone;
    return AreOne(m_directions[one], m_directions[other]) ? one : FacingNode::kNone;
  }

private:
  static constexpr std::size_t kBack = 8;

  static bool AreOne(const Coord3& a, const Coord3& b) {
    return HaveOneDirection({a.x, a.y, a.z}, {b.x, b.y, b.z});
  }

  std::vector<Coord3>& m_directions;
};

/// Fills the nodes of a tree, from its last node to its first: children come after their parents.
/// Several threads fill runs of nodes side by side.
class FacingMaker {
public:
  FacingMaker(const Corners& corners, const Leaves& leaves, const Tree<float>& tree, Team& team,
              Facings& facings)
      : m_corners(corners), m_leaves(leaves), m_tree(tree), m_team(team), m_facings(facings),
        m_ofLeaf(leaves.Count()), m_exact(leaves.Count()), m_ofNode(tree.nodes.size()),
        m_numbers(facings.directions) {
    facings.nodes = Array<FacingNode>(tree.nodes.size());
  }

  /// Returns false when `goesOn` stops the work.
  bool Make(GoesOn& goesOn) {
    LookAtLeaves(goesOn);
    if (goesOn.IsStopped()) return false;
    // Numbers depend on the order of the leaves.
    for (std::size_t leaf = 0; leaf < m_leaves.Count(); ++leaf) {
      if (m_ofLeaf[leaf].parallel != kUnnumbered) continue;
      const Coord3& n = m_exact[leaf];
      m_ofLeaf[leaf].parallel = m_numbers.Of({n.x, n.y, n.z});
    }
    const std::vector<NodeRun> runs = m_tree.RunsUpwards(m_team);
    EachUpwards(runs, m_team, [&](std::size_t run) {
      for (std::size_t k = runs[run].end; !goesOn.IsStopped() && k-- > runs[run].begin;) {
        Fill(k);
        if (k % kAskEvery == kAskEvery - 1) goesOn.Ask();
      }
    });
    return !goesOn.IsStopped();
  }

private:
  static constexpr std::size_t kAskEvery = 1024;
  /// The direction is exact, and has no number yet.
  static constexpr std::uint32_t kUnnumbered = FacingNode::kNone - 1;

  void LookAtLeaves(GoesOn& goesOn) {
    const Blocks blocks(m_leaves.Count(), kLeafBlock);
    m_corners.Read([&](const auto& reader) {
      blocks.ForEach(m_team, [&](std::size_t block) {
        for (std::size_t leaf = blocks.Begin(block); leaf < blocks.End(block); ++leaf) {
          if (goesOn.IsStopped()) return;
          m_ofLeaf[leaf] = OfLeaf(reader, leaf);
          if (leaf % kAskEvery == kAskEvery - 1) goesOn.Ask();
        }
      });
    });
  }

  void Fill(std::size_t k) {
    FacingNode filled{};
    ManyNormals all;
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = m_tree.nodes[k].child[lane];
      ManyNormals normals;
      if (!child.IsNone())
        normals = child.IsLeaf() ? m_ofLeaf[child.Index()] : m_ofNode[child.Index()];
      filled.normals.Set(lane, normals.bounds);
      filled.parallel[lane] = normals.parallel;
      if (!normals.Any()) continue;
      all.parallel =
          all.Any() ? m_numbers.Common(all.parallel, normals.parallel) : normals.parallel;
      all.bounds.Include(normals.bounds);
    }
    m_facings.nodes[k] = filled;
    m_ofNode[k] = all;
  }

  template <class Reader>
  ManyNormals OfLeaf(const Reader& reader, std::size_t leaf) {
    const auto corner = [&reader](std::size_t place, int k) {
      const auto* p = reader.At(place, k);
      return Coord3{static_cast<double>(p[0]), static_cast<double>(p[1]),
                    static_cast<double>(p[2])};
    };
    Box<double> bounds = Box<double>::Empty();
    double exact[3];
    bool areParallel = true;
    bool any = false;
    for (std::size_t place = m_leaves.begin[leaf]; place < m_leaves.begin[leaf + 1]; ++place) {
      const Normal normal({corner(place, 0), corner(place, 1), corner(place, 2)});
      // Of many equal normals one is looked at.
      if (any && areParallel && normal.Is(exact)) continue;
      if (normal.HasNoArea()) continue;
      bounds.Include(normal.Bounds());
      if (!any) std::copy_n(normal.n, 3, exact);
      areParallel = areParallel && normal.isExact && HaveOneDirection(exact, normal.n);
      any = true;
    }
    if (!any) return {};
    if (!areParallel) return {Outward(bounds), FacingNode::kNone};
    m_exact[leaf] = {exact[0], exact[1], exact[2]};
    return {Outward(bounds), kUnnumbered};
  }

  const Corners& m_corners;
  const Leaves& m_leaves;
  const Tree<float>& m_tree;
  Team& m_team;
  Facings& m_facings;
  Array<ManyNormals> m_ofLeaf;
  Array<Coord3> m_exact; ///< of each leaf whose direction is exact
  Array<ManyNormals> m_ofNode;
  DirectionNumbers m_numbers;
};

/// Returns the largest power of two of which a number other than zero is a whole multiple.
double UnitOf(double c) {
  int exponent = 0;
  auto digits = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::fabs(c), &exponent), 53));
  for (exponent -= 53; digits % 2 == 0; digits /= 2)
    ++exponent;
  return std::ldexp(1.0, exponent);
}

/// Returns true when a number, not below zero, is a whole multiple of a power of two. From 2^52 on
/// every number is whole, and below it the sum is rounded to a whole number.
bool IsMultiple(double c, double unit) {
  const double count = c * (1.0 / unit);
  return count >= 0x1p52 || (count + 0x1p52) - 0x1p52 == count;
}

/// The units of vertices and how far they reach, as in Facings.
struct Units {
  double unit[3] = {Box<double>::kFar, Box<double>::kFar, Box<double>::kFar};
  double reach[3] = {0.0, 0.0, 0.0};

  void Include(const Coord3& p) {
    const double magnitudes[3] = {std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)};
    for (int k = 0; k < 3; ++k) {
      const double c = magnitudes[k];
      if (c == 0.0 || !std::isfinite(c)) continue;
      reach[k] = std::max(reach[k], c);
      const bool isFirst = unit[k] == Box<double>::kFar;
      if (isFirst || !IsMultiple(c, unit[k]))
        unit[k] = isFirst ? UnitOf(c) : std::min(unit[k], UnitOf(c));
    }
  }
  void Include(const Units& other) {
    for (int k = 0; k < 3; ++k) {
      unit[k] = std::min(unit[k], other.unit[k]);
      reach[k] = std::max(reach[k], other.reach[k]);
    }
  }
};

void SetUnits(const Corners& corners, Team& team, Facings& facings) {
  const Blocks blocks(corners.VertexCount(), kTriangleBlock);
  std::vector<Units> ofBlock(blocks.Count());
  blocks.ForEach(team, [&](std::size_t block) {
    Units units;
    for (std::size_t vertex = blocks.Begin(block); vertex < blocks.End(block); ++vertex)
      units.Include(corners.VertexAt(vertex));
    ofBlock[block] = units;
  });
  Units all;
  for (const Units& units : ofBlock)
    all.Include(units);
  std::copy_n(all.unit, 3, facings.unit);
  std::copy_n(all.reach, 3, facings.reach);
}

} // namespace

std::unique_ptr<const Facings> Facings::Of(const Corners& corners, const Leaves& leaves,
                                           const Tree<float>& tree,
                                           const std::function<bool()>& goesOn, Team& team) {
  auto facings = std::make_unique<Facings>();
  GoesOn asked(goesOn);
  if (!FacingMaker(corners, leaves, tree, team, *facings).Make(asked)) return nullptr;
  SetUnits(corners, team, *facings);
  return facings;
}

// The sum of two multiples of a unit is one too. A double holds every one of up to 2^53 units. A
// component of the normal comes from the coordinates along the two other axes.
bool Facings::Hold(const Coord3& offset, const Coord3& direction) const {
  const double o[3] = {offset.x, offset.y, offset.z};
  const double d[3] = {direction.x, direction.y, direction.z};
  for (int k = 0; k < 3; ++k) {
    const bool matters = d[Next(k)] != 0.0 || d[Next(Next(k))] != 0.0;
    if (!matters || o[k] == 0.0) continue;
    const double smaller = std::min(unit[k], UnitOf(o[k]));
    const double most = 0x1p53 * smaller;
    const auto sum = TwoSum(reach[k], std::fabs(o[k]));
    if (!(sum.hi < most || (sum.hi == most && sum.lo <= 0.0))) return false;
  }
  return true;
}

FacedNodes::FacedNodes(const Facings& facings, const Tree<float>& tree, const Coord3& direction)
    : m_facings(facings), m_tree(tree), m_direction(direction), m_known(facings.nodes.size()),
      m_signs(facings.directions.size(), kUnknown) {
  const double d[3] = {direction.x, direction.y, direction.z};
  for (int k = 0; k < 3; ++k) {
    m_sign[k] = (d[k] > 0.0) - (d[k] < 0.0);
    m_component[k] = static_cast<float>(d[k]);
  }
}

unsigned FacedNodes::Of(std::size_t node) {
  // The other nodes of a fine tree are between a leaf and its parts.
  if (node >= m_known.size()) return 15u;
  if ((m_known[node] & kIsKnown) == 0) {
    unsigned mask = ByBounds(node);
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = m_tree.nodes[node].child[lane];
      if ((mask >> lane & 1u) != 0 && !child.IsLeaf() && !HasSome(child.Index()))
        mask &= ~(1u << lane);
    }
    m_known[node] = static_cast<std::uint8_t>(kIsKnown | (mask != 0 ? kHasSome : 0u) | mask);
  }
  return m_known[node] & 15u;
}

/// Returns false when no triangle below the node faces the direction. It goes down until one may.
bool FacedNodes::HasSome(std::size_t node) {
  if ((m_known[node] & kHasSome) != 0) return true;
  if ((m_known[node] & kIsKnown) != 0) return false;
  const unsigned mask = ByBounds(node);
  bool hasSome = false;
  for (int lane = 0; lane < 4 && !hasSome; ++lane) {
    const TreeRef child = m_tree.nodes[node].child[lane];
    hasSome = (mask >> lane & 1u) != 0 && (child.IsLeaf() || HasSome(child.Index()));
  }
  m_known[node] = static_cast<std::uint8_t>(hasSome ? kHasSome : kIsKnown);
  return hasSome;
}

/// Does the same as Of() by the bounds of each child alone.
//
// The sum is off by less than 2^-18: each of its three terms is at most 2 + 2^-22 in magnitude, the
// component of the direction and the product are off by 2^-24 of the term each, and the two sums by
// 2^-24 of at most 6.1 each. Together that is less than 25 * 2^-24.
unsigned FacedNodes::ByBounds(std::size_t node) {
  constexpr float kMargin = 0x1p-18f;
  const FacingNode& facing = m_facings.nodes[node];
  const Float4 zero = Float4::Of(0.0f);
  unsigned aside = 15u; // no term is above zero
  Float4 most = zero;
  for (int k = 0; k < 3; ++k) {
    if (m_sign[k] == 0) continue;
    const Float4& front = m_sign[k] > 0 ? facing.normals.high[k] : facing.normals.low[k];
    aside &= m_sign[k] > 0 ? AtMost(front, zero) : AtMost(zero, front);
    most = most + front * Float4::Of(m_component[k]);
  }
  unsigned mask = 15u & ~(aside | AtMost(most, Float4::Of(-kMargin)));
  for (int lane = 0; lane < 4; ++lane) {
    const std::uint32_t parallel = facing.parallel[lane];
    if ((mask >> lane & 1u) == 0 || parallel == FacingNode::kNone || most[lane] > kMargin) continue;
    if (!Faces(parallel)) mask &= ~(1u << lane);
  }
  return mask;
}

/// Decides exactly whether normals of an exact direction have a positive product with the
/// direction.
bool FacedNodes::Faces(std::uint32_t parallel) {
  std::int8_t& sign = m_signs[parallel];
  if (sign == kUnknown) {
    const Coord3& n = m_facings.directions[parallel];
    const Coord3& d = m_direction;
    const auto product = Sum(Sum(Expand(TwoProduct(n.x, d.x)), Expand(TwoProduct(n.y, d.y))),
                             Expand(TwoProduct(n.z, d.z)));
    sign = static_cast<std::int8_t>(product.Sign());
  }
  return sign > 0;
}

} // namespace gsl_sweep
