#include "PairKernel.h"

#include "BigNumber.h"

#include <algorithm>
#include <limits>

namespace gsl_sweep {

using gsl_exact::BigNumber;
using gsl_exact::DeterminantSign;
using gsl_exact::Estimate;
using gsl_exact::EstimateDeterminant;
using gsl_exact::ExactCross;
using gsl_exact::ExactCrossProduct;
using gsl_exact::ExactDeterminant;
using gsl_exact::TwoDifference;
using gsl_exact::TwoProduct;
using gsl_exact::VectorBetween;

namespace {

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

double Component(const Coord3& a, int axis) {
  return axis == 0 ? a.x : axis == 1 ? a.y : a.z;
}

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

VectorBetween FromOrigin(const Coord3& a) {
  return {&kOrigin, &a};
}

VectorBetween EdgeOf(const Triangle& t, int k) {
  return {&t.corner[k], &t.corner[Next(k)]};
}

/// Returns p + s * v, each component rounded once.
Coord3 Advance(const Coord3& p, const DoubleDouble& s, const VectorBetween& v) {
  const auto advance = [&s](double start, double from, double to) {
    return Plus({start, 0.0}, Times(s, TwoDifference(to, from))).hi;
  };
  return {advance(p.x, v.from->x, v.to->x), advance(p.y, v.from->y, v.to->y),
          advance(p.z, v.from->z, v.to->z)};
}

/// One way in which features meet. They do so after moving by s times the direction vector, where
/// s = det[gap, u, v] / det[direction, u, v].
struct Candidate {
  ContactKind kind;
  int onMoving, onFixed; ///< corner or edge; of a face, its corner or 0
  VectorBetween gap, u, v;
  int sign;         ///< of s
  double low, high; ///< s is between them
};

/// The ways in which one pair of triangles meets.
class TrianglePair {
public:
  TrianglePair(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed)
      : m_direction(direction), m_along(FromOrigin(direction.Vector())), m_moving(moving),
        m_fixed(fixed) {}

  /// Collects every way in which features meet; false when the shadows are apart.
  bool Meet();

  /// Returns true when the shadows of two triangles that both have area share area. Requires Meet.
  bool ShareArea() const;

  bool SomeBehind() const { return m_behind; }
  bool SomeAhead() const { return m_ahead; }
  bool SomeAtZero() const { return m_atZero; }

  /// No contact comes before the lower bound, and none after the upper bound.
  double LowerBound() const;
  double UpperBound() const;
  PairContact First(ExactRatio& travel) { return Extreme(1, travel); }
  PairContact Last(ExactRatio& travel) { return Extreme(-1, travel); }

  /// Calls visit(contact) for each way in which features meet at exactly this travel.
  template <class Visit>
  void EachAt(const ExactRatio& travel, const Visit& visit);
  /// Does the same at travel zero.
  template <class Visit>
  void EachAtZero(const Visit& visit);

private:
  bool ShadowsMeet();
  void CornersOverFace();
  void FaceOverCorners();
  void EdgesCrossing();
  void CornersOnFixedEdges();
  void MovingEdgesOnCorners();
  void CornersOnCorners();
  void AddCornerOverFace(int i, int zeros, int lastZero);
  void AddFaceOverCorner(int j, int zeros, int lastZero);
  void AddCornerOnCorner(int i, int j);
  void Add(ContactKind kind, int onMoving, int onFixed, const VectorBetween& gap,
           const VectorBetween& u, const VectorBetween& v);
  void Bracket(Candidate& candidate) const;
  int CompareShadows(const Coord3& p, const Coord3& q) const;
  bool IsStrictlyBetween(const Coord3& p, const VectorBetween& edge) const;
  const Coord3& AxisAcross(const VectorBetween& edge) const;
  void Measure(const Candidate& candidate, ExactRatio& s) const;
  double TravelOf(const DoubleDouble& s) const { return Times(s, m_direction.Length()).hi; }
  PairContact Extreme(int sense, ExactRatio& travel);
  PairContact ContactOf(const Candidate& candidate, const DoubleDouble& s) const;
  Coord3 PointOnMovingEdge(const Candidate& candidate) const;

  // Three corners over a face, three faces over a corner, nine crossings; of two edge-on triangles
  // nine corners on edges, nine edges on corners, nine corners on corners, nine crossings.
  static constexpr int kCapacity = 48;

  const TravelDirection& m_direction;
  VectorBetween m_along;
  const Triangle& m_moving;
  const Triangle& m_fixed;
  int m_ofFixedEdge[3][3] = {};  ///< [edge j][corner i]: side of the moving corner, in the shadow
  int m_ofMovingEdge[3][3] = {}; ///< [edge i][corner j]
  Candidate m_candidates[kCapacity];
  int m_count = 0;
  bool m_behind = false;
  bool m_ahead = false;
  bool m_atZero = false;
};

/// Computes the sides of the corners of `other` as seen from edge k of `own`. Returns true when the
/// edge separates.
bool FillSides(const VectorBetween& along, const Triangle& own, int k, const Triangle& other,
               int sides[3]) {
  const VectorBetween edge = EdgeOf(own, k);
  int common = -own.facing;
  bool separates = true;
  for (int c = 0; c < 3; ++c) {
    sides[c] = DeterminantSign(along, edge, {&own.corner[k], &other.corner[c]});
    if (c == 0 && own.facing == 0) common = sides[0];
    separates = separates && sides[c] != 0 && sides[c] == common;
  }
  return separates;
}

bool TrianglePair::ShadowsMeet() {
  for (int k = 0; k < 3; ++k) {
    if (FillSides(m_along, m_fixed, k, m_moving, m_ofFixedEdge[k])) return false;
  }
  for (int k = 0; k < 3; ++k) {
    if (FillSides(m_along, m_moving, k, m_fixed, m_ofMovingEdge[k])) return false;
  }
  return true;
}

/// Returns true when an edge has all corners of the other triangle on its outer side or on itself.
bool HoldsOff(const int sides[3][3], int facing) {
  for (int k = 0; k < 3; ++k) {
    if (sides[k][0] != facing && sides[k][1] != facing && sides[k][2] != facing) return true;
  }
  return false;
}

bool TrianglePair::ShareArea() const {
  return !HoldsOff(m_ofFixedEdge, m_fixed.facing) && !HoldsOff(m_ofMovingEdge, m_moving.facing);
}

bool TrianglePair::Meet() {
  if (!ShadowsMeet()) return false;
  if (m_fixed.facing != 0) {
    CornersOverFace();
  } else {
    CornersOnFixedEdges();
  }
  if (m_moving.facing != 0) {
    FaceOverCorners();
  } else {
    MovingEdgesOnCorners();
  }
  EdgesCrossing();
  if (m_moving.facing == 0 && m_fixed.facing == 0) CornersOnCorners();
  return m_count > 0;
}

/// Counts the edges that a corner is on, from zero. Returns false when the corner is outside one of
/// them.
bool IsInside(const int sides[3][3], int corner, int facing, int& zeros, int& lastZero) {
  for (int k = 0; k < 3; ++k) {
    if (sides[k][corner] == -facing) return false;
    if (sides[k][corner] != 0) continue;
    ++zeros;
    lastZero = k;
  }
  return true;
}

/// Returns the corner at which two edges meet that both hold `corner` of the other triangle.
int SharedCorner(const int sides[3][3], int corner) {
  if (sides[0][corner] != 0) return 2;
  return sides[1][corner] != 0 ? 0 : 1;
}

void TrianglePair::CornersOverFace() {
  for (int i = 0; i < 3; ++i) {
    int zeros = 0;
    int lastZero = 0;
    if (!IsInside(m_ofFixedEdge, i, m_fixed.facing, zeros, lastZero)) continue;
    AddCornerOverFace(i, zeros, lastZero);
  }
}

void TrianglePair::AddCornerOverFace(int i, int zeros, int lastZero) {
  if (zeros == 2) return AddCornerOnCorner(i, SharedCorner(m_ofFixedEdge, i));
  const ContactKind kind = zeros == 1 ? ContactKind::VertexEdge : ContactKind::VertexFace;
  const Coord3* b = m_fixed.corner;
  Add(kind, i, lastZero, {&m_moving.corner[i], &b[0]}, {&b[0], &b[1]}, {&b[0], &b[2]});
}

void TrianglePair::FaceOverCorners() {
  for (int j = 0; j < 3; ++j) {
    int zeros = 0;
    int lastZero = 0;
    if (!IsInside(m_ofMovingEdge, j, m_moving.facing, zeros, lastZero)) continue;
    AddFaceOverCorner(j, zeros, lastZero);
  }
}

void TrianglePair::AddFaceOverCorner(int j, int zeros, int lastZero) {
  if (zeros == 2) return AddCornerOnCorner(SharedCorner(m_ofMovingEdge, j), j);
  const ContactKind kind = zeros == 1 ? ContactKind::EdgeVertex : ContactKind::FaceVertex;
  const Coord3* a = m_moving.corner;
  Add(kind, lastZero, j, {&a[0], &m_fixed.corner[j]}, {&a[0], &a[1]}, {&a[0], &a[2]});
}

/// Collects crossings inside both edges. Where a corner is on an edge, the functions for corners
/// find the contact.
void TrianglePair::EdgesCrossing() {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (m_ofFixedEdge[j][i] * m_ofFixedEdge[j][Next(i)] != -1) continue;
      if (m_ofMovingEdge[i][j] * m_ofMovingEdge[i][Next(j)] != -1) continue;
      Add(ContactKind::EdgeEdge, i, j, {&m_moving.corner[i], &m_fixed.corner[j]},
          EdgeOf(m_moving, i), EdgeOf(m_fixed, j));
    }
  }
}

void TrianglePair::CornersOnFixedEdges() {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (m_ofFixedEdge[j][i] != 0) continue;
      const VectorBetween edge = EdgeOf(m_fixed, j);
      if (!IsStrictlyBetween(m_moving.corner[i], edge)) continue;
      Add(ContactKind::VertexEdge, i, j, {&m_moving.corner[i], edge.from}, edge,
          FromOrigin(AxisAcross(edge)));
    }
  }
}

void TrianglePair::MovingEdgesOnCorners() {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (m_ofMovingEdge[i][j] != 0) continue;
      const VectorBetween edge = EdgeOf(m_moving, i);
      if (!IsStrictlyBetween(m_fixed.corner[j], edge)) continue;
      Add(ContactKind::EdgeVertex, i, j, {edge.from, &m_fixed.corner[j]}, edge,
          FromOrigin(AxisAcross(edge)));
    }
  }
}

void TrianglePair::CornersOnCorners() {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (CompareShadows(m_moving.corner[i], m_fixed.corner[j]) == 0) AddCornerOnCorner(i, j);
    }
  }
}

void TrianglePair::AddCornerOnCorner(int i, int j) {
  const int axis = m_direction.Dominant();
  Add(ContactKind::VertexVertex, i, j, {&m_moving.corner[i], &m_fixed.corner[j]},
      FromOrigin(kAxes[Next(axis)]), FromOrigin(kAxes[Next(Next(axis))]));
}

void TrianglePair::Add(ContactKind kind, int onMoving, int onFixed, const VectorBetween& gap,
                       const VectorBetween& u, const VectorBetween& v) {
  Candidate& added = m_candidates[m_count++];
  added = {kind, onMoving, onFixed, gap, u, v, 0, 0.0, 0.0};
  Bracket(added);
  m_behind = m_behind || added.sign < 0;
  m_ahead = m_ahead || added.sign > 0;
  m_atZero = m_atZero || added.sign == 0;
}

/// Finds the sign of s and, cheaply, two numbers between which s lies.
void TrianglePair::Bracket(Candidate& candidate) const {
  const Estimate gap = EstimateDeterminant(candidate.gap, candidate.u, candidate.v);
  const Estimate whole = EstimateDeterminant(m_along, candidate.u, candidate.v);
  candidate.sign = DeterminantSign(candidate.gap, candidate.u, candidate.v) *
                   DeterminantSign(m_along, candidate.u, candidate.v);
  if (std::fabs(whole.value) > 3.0 * whole.bound) {
    const double s = gap.value / whole.value;
    const double error = (gap.bound + std::fabs(s) * whole.bound) /
                             (std::fabs(whole.value) - whole.bound) * (1.0 + 0x1p-40) +
                         std::fabs(s) * 0x1p-50;
    candidate.low = s - error;
    candidate.high = s + error;
    return;
  }
  ExactRatio exact;
  Measure(candidate, exact);
  const double rounded = exact.rounded.hi;
  candidate.low = rounded - std::fabs(rounded) * 0x1p-50;
  candidate.high = rounded + std::fabs(rounded) * 0x1p-50;
}

void TrianglePair::Measure(const Candidate& candidate, ExactRatio& s) const {
  s.Set(ExactDeterminant(candidate.gap, candidate.u, candidate.v),
        ExactDeterminant(m_along, candidate.u, candidate.v));
}

/// Orders shadows totally along any line: returns -1, 0 for the same shadow, or 1.
int TrianglePair::CompareShadows(const Coord3& p, const Coord3& q) const {
  const int axis = m_direction.Dominant();
  for (const int other : {Next(axis), Next(Next(axis))}) {
    const int sign = DeterminantSign(m_along, FromOrigin(kAxes[other]), {&p, &q});
    if (sign != 0) return sign;
  }
  return 0;
}

bool TrianglePair::IsStrictlyBetween(const Coord3& p, const VectorBetween& edge) const {
  const int order = CompareShadows(*edge.from, p);
  return order != 0 && order == CompareShadows(p, *edge.to);
}

/// Returns an axis that is not in the plane of the direction and an edge, which are not parallel.
const Coord3& TrianglePair::AxisAcross(const VectorBetween& edge) const {
  for (const int k : {0, 1}) {
    if (DeterminantSign(m_along, edge, FromOrigin(kAxes[k])) != 0) return kAxes[k];
  }
  return kAxes[2];
}

double TrianglePair::LowerBound() const {
  double low = std::numeric_limits<double>::infinity();
  for (int k = 0; k < m_count; ++k)
    low = std::min(low, m_candidates[k].low);
  const double travel = low * m_direction.Length().hi;
  return travel - std::fabs(travel) * 0x1p-50;
}

double TrianglePair::UpperBound() const {
  double high = -std::numeric_limits<double>::infinity();
  for (int k = 0; k < m_count; ++k)
    high = std::max(high, m_candidates[k].high);
  const double travel = high * m_direction.Length().hi;
  return travel + std::fabs(travel) * 0x1p-50;
}

template <class Visit>
void TrianglePair::EachAt(const ExactRatio& travel, const Visit& visit) {
  const double given = travel.rounded.hi;
  const double error = std::fabs(given) * 0x1p-50;
  ExactRatio s;
  for (int k = 0; k < m_count; ++k) {
    const Candidate& candidate = m_candidates[k];
    if (candidate.low > given + error || candidate.high < given - error) continue;
    Measure(candidate, s);
    if (CompareRatios(s, travel) == 0) visit(ContactOf(candidate, s.rounded));
  }
}

template <class Visit>
void TrianglePair::EachAtZero(const Visit& visit) {
  for (int k = 0; k < m_count; ++k) {
    if (m_candidates[k].sign == 0) visit(ContactOf(m_candidates[k], DoubleDouble{0.0, 0.0}));
  }
}

/// Returns the least travel for sense 1, and the greatest for -1.
PairContact TrianglePair::Extreme(int sense, ExactRatio& travel) {
  const auto nearEnd = [sense](const Candidate& c) { return sense > 0 ? c.low : -c.high; };
  const auto farEnd = [sense](const Candidate& c) { return sense > 0 ? c.high : -c.low; };
  double reach = std::numeric_limits<double>::infinity();
  for (int k = 0; k < m_count; ++k)
    reach = std::min(reach, farEnd(m_candidates[k]));
  const Candidate* best = nullptr;
  const auto precedes = [&](const Candidate& c, const ExactRatio& s) {
    const int order = sense * CompareRatios(s, travel);
    if (order != 0) return order < 0;
    if (c.kind != best->kind) return c.kind < best->kind;
    if (c.onMoving != best->onMoving) return c.onMoving < best->onMoving;
    return c.onFixed < best->onFixed;
  };
  ExactRatio s;
  for (int k = 0; k < m_count; ++k) {
    const Candidate& candidate = m_candidates[k];
    if (nearEnd(candidate) > reach) continue;
    Measure(candidate, s);
    if (best != nullptr && !precedes(candidate, s)) continue;
    best = &candidate;
    travel = s;
  }
  // There is a candidate, and the one that set `reach` is never left out.
  // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
  return ContactOf(*best, travel.rounded);
}

PairContact TrianglePair::ContactOf(const Candidate& candidate, const DoubleDouble& s) const {
  PairContact contact;
  contact.travel = TravelOf(s);
  contact.kind = candidate.kind;
  contact.movingFeature = candidate.onMoving;
  contact.fixedFeature = candidate.onFixed;
  const DoubleDouble back = Minus(s);
  const Coord3& moving = m_moving.corner[candidate.onMoving];
  const Coord3& fixed = m_fixed.corner[candidate.onFixed];
  switch (candidate.kind) {
  case ContactKind::VertexVertex:
    contact.onMoving = moving;
    contact.onFixed = fixed;
    break;
  case ContactKind::VertexEdge:
  case ContactKind::VertexFace:
    contact.onMoving = moving;
    contact.onFixed = Advance(moving, s, m_along);
    break;
  case ContactKind::EdgeVertex:
  case ContactKind::FaceVertex:
    contact.onMoving = Advance(fixed, back, m_along);
    contact.onFixed = fixed;
    break;
  case ContactKind::EdgeEdge:
  case ContactKind::Overlap:
  case ContactKind::Inside:
    contact.onMoving = PointOnMovingEdge(candidate);
    contact.onFixed = Advance(contact.onMoving, s, m_along);
    break;
  }
  return contact;
}

/// Computes where the edges of an EdgeEdge candidate cross in the shadow.
Coord3 TrianglePair::PointOnMovingEdge(const Candidate& candidate) const {
  // start + position * edge is on the line of the fixed edge, as seen along the direction.
  const DoubleDouble start = ExactDeterminant(m_along, candidate.gap, candidate.v).Rounded();
  const DoubleDouble whole = ExactDeterminant(m_along, candidate.u, candidate.v).Rounded();
  return Advance(*candidate.u.from, Over(start, whole), candidate.u);
}

/// Returns whether n . d is negative, without rounding error.
bool IsAgainst(const Coord3& n, const Coord3& d) {
  const Coord3 terms{n.x * d.x, n.y * d.y, n.z * d.z};
  const double sum = terms.x + terms.y + terms.z;
  const double sizes = std::fabs(terms.x) + std::fabs(terms.y) + std::fabs(terms.z);
  if (sum < -0x1p-50 * sizes - 0x1p-1000) return true;
  const auto product = [](double a, double b) { return BigNumber(a) * BigNumber(b); };
  return (product(n.x, d.x) + product(n.y, d.y) + product(n.z, d.z)).Sign() < 0;
}

/// Moves a component of a rounded normal until the normal is against the direction.
//
// The exact normal is. Each component is rounded by at most 2^-54, so by the size of d along its
// dominant axis the product is off by at most 3 * 2^-54: two steps are enough.
void TurnAgainst(const TravelDirection& direction, Coord3& normal) {
  double* const component[3] = {&normal.x, &normal.y, &normal.z};
  const int axis = direction.Dominant();
  const double step = std::copysign(0x1p-53, -Component(direction.Vector(), axis));
  while (!IsAgainst(normal, direction.Vector()))
    *component[axis] += step;
}

/// Computes u x v or its opposite, of length one, against the direction. Returns false when u and v
/// are in a plane with the direction.
bool NormalAgainst(const TravelDirection& direction, const VectorBetween& u, const VectorBetween& v,
                   Coord3& normal) {
  const int along = DeterminantSign(FromOrigin(direction.Vector()), u, v);
  if (along == 0) return false;
  // The components, the length and their quotients are each known within 2^-98 of their size, so
  // only the rounding of a quotient to double matters.
  const ExactCross cross = ExactCrossProduct(u, v);
  const DoubleDouble component[3] = {cross.x.Rounded(), cross.y.Rounded(), cross.z.Rounded()};
  double largest = 0.0;
  for (const DoubleDouble& c : component)
    largest = std::max(largest, std::fabs(c.hi));
  // A power of two brings the largest component near one, so that no square leaves the range. The
  // squares of small components lose far less than the last place of the length.
  int exponent = 0;
  std::frexp(largest, &exponent);
  DoubleDouble squared;
  for (const DoubleDouble& c : component) {
    const DoubleDouble scaled{std::ldexp(c.hi, -exponent), std::ldexp(c.lo, -exponent)};
    squared = Plus(squared, Times(scaled, scaled));
  }
  const DoubleDouble length = Root(squared);
  // The quotient is formed before the scaling, so that only a subnormal component is rounded twice.
  const auto unit = [&](const DoubleDouble& c) {
    const double quotient = c.hi == 0.0 ? 0.0 : std::ldexp(Over(c, length).hi, -exponent);
    return (along > 0 ? -quotient : quotient) + 0.0;
  };
  normal = {unit(component[0]), unit(component[1]), unit(component[2])};
  TurnAgainst(direction, normal);
  return true;
}

/// Returns a point that one of the triangles has in common with the other after a travel within the
/// interval: the average of its points at both ends, weighed to that travel. It is on the triangle,
/// which is convex.
Coord3 PointBetween(const ContactInterval& interval, Coord3 PairContact::*side, double travel) {
  const double first = std::max(travel - interval.first.travel, 0.0);
  const double last = std::max(interval.last.travel - travel, 0.0);
  const double sum = first + last;
  const Coord3& p = interval.first.*side;
  const Coord3& q = interval.last.*side;
  // Rounding can make all three travels equal.
  if (sum == 0.0) return p;
  const auto weigh = [&](double atFirst, double atLast) {
    return atFirst * (last / sum) + atLast * (first / sum);
  };
  return {weigh(p.x, q.x), weigh(p.y, q.y), weigh(p.z, q.z)};
}

/// Returns the exact sign of the difference of a travel and a length that is not negative. `travel`
/// is the exact travel of the contact.
int CompareTravel(const TravelDirection& direction, const PairContact& contact,
                  const ExactRatio& travel, const ScaledLength& length) {
  if (contact.travel > 0.0) return CompareLength(travel, direction.Vector(), length);
  return contact.travel < 0.0 || length.value > 0.0 ? -1 : 0;
}

PointBounds BoundsOf(const Triangle& t) {
  PointBounds bounds;
  for (const Coord3& corner : t.corner)
    bounds.Include(corner);
  return bounds;
}

/// Includes the common part of the bounds of triangles that touch.
void IncludeCommon(const Triangle& a, const Triangle& b, PointBounds& points) {
  const PointBounds p = BoundsOf(a);
  const PointBounds q = BoundsOf(b);
  points.Include(
      {std::max(p.low.x, q.low.x), std::max(p.low.y, q.low.y), std::max(p.low.z, q.low.z)});
  points.Include(
      {std::min(p.high.x, q.high.x), std::min(p.high.y, q.high.y), std::min(p.high.z, q.high.z)});
}

} // namespace

TravelDirection::TravelDirection(const Coord3& direction) : m_dominant(0) {
  for (int k = 1; k < 3; ++k) {
    if (std::fabs(Component(direction, k)) > std::fabs(Component(direction, m_dominant))) {
      m_dominant = k;
    }
  }
  // A power of two keeps every ratio of the components exactly.
  int exponent = 0;
  std::frexp(Component(direction, m_dominant), &exponent);
  m_vector = {std::ldexp(direction.x, -exponent), std::ldexp(direction.y, -exponent),
              std::ldexp(direction.z, -exponent)};
  const DoubleDouble squared =
      Plus(Plus(TwoProduct(m_vector.x, m_vector.x), TwoProduct(m_vector.y, m_vector.y)),
           TwoProduct(m_vector.z, m_vector.z));
  m_length = Root(squared);
  // A quotient of zero is a positive zero.
  const auto over = [this](double c) { return Over({c, 0.0}, m_length).hi; };
  m_unit = {over(m_vector.x), over(m_vector.y), over(m_vector.z)};
}

Triangle MakeTriangle(const TravelDirection& direction, const Coord3& a, const Coord3& b,
                      const Coord3& c) {
  Triangle triangle{{a, b, c}, 0};
  const Coord3* corner = triangle.corner;
  triangle.facing = DeterminantSign(FromOrigin(direction.Vector()), {&corner[0], &corner[1]},
                                    {&corner[0], &corner[2]});
  return triangle;
}

bool FindContactInterval(const TravelDirection& direction, const Triangle& moving,
                         const Triangle& fixed, ContactInterval& interval) {
  TrianglePair pair(direction, moving, fixed);
  if (!pair.Meet()) return false;
  ExactRatio unused;
  interval = {pair.First(unused), pair.Last(unused)};
  return true;
}

PairOutcome JudgePair(const TravelDirection& direction, const Triangle& moving,
                      const Triangle& fixed, Rule rule, double limit, PairContact& first,
                      ExactRatio& travel) {
  const bool isSolid = rule == Rule::Solid;
  if (isSolid && (moving.facing <= 0 || fixed.facing >= 0)) return PairOutcome::Apart;
  TrianglePair pair(direction, moving, fixed);
  if (!pair.Meet()) return PairOutcome::Apart;
  if (isSolid && (pair.SomeBehind() || !pair.ShareArea())) return PairOutcome::Apart;
  if (rule == Rule::NotLeaving && !pair.SomeAhead()) return PairOutcome::Apart;
  const bool touches = pair.SomeAtZero() || (pair.SomeBehind() && pair.SomeAhead());
  if (touches && !isSolid) return PairOutcome::Touching;
  if (pair.SomeBehind() || pair.LowerBound() > limit) return PairOutcome::Apart;
  ExactRatio exact;
  const PairContact contact = pair.First(exact);
  if (contact.travel > limit) return PairOutcome::Apart;
  first = contact;
  travel = exact;
  return PairOutcome::Ahead;
}

PairContact ContactAtStart(const ContactInterval& interval) {
  if (interval.first.travel == 0.0) return interval.first;
  if (interval.last.travel == 0.0) return interval.last;
  const Coord3 point = PointBetween(interval, &PairContact::onMoving, 0.0);
  return {0.0, ContactKind::Overlap, point, point};
}

LastOutcome JudgeLast(const TravelDirection& direction, const Triangle& moving,
                      const Triangle& fixed, Rule rule, const ScaledLength& greatest, double least,
                      PairContact& last, ExactRatio& travel) {
  TrianglePair pair(direction, moving, fixed);
  if (!pair.Meet()) return LastOutcome::Apart;
  const bool counts = pair.SomeAhead() || (pair.SomeAtZero() && rule != Rule::NotLeaving);
  if (!counts || pair.UpperBound() < least) return LastOutcome::Apart;
  ExactRatio exact;
  const PairContact contact = pair.Last(exact);
  if (contact.travel < least) return LastOutcome::Apart;
  if (CompareTravel(direction, contact, exact, greatest) < 0) {
    last = contact;
    travel = exact;
    return LastOutcome::Parts;
  }
  if (pair.SomeBehind() || pair.SomeAtZero()) return LastOutcome::Cut;
  const PairContact first = pair.First(exact);
  const bool isBeyond = CompareTravel(direction, first, exact, greatest) > 0;
  return isBeyond ? LastOutcome::Apart : LastOutcome::Cut;
}

PairContact ContactAtCut(const TravelDirection& direction, const Triangle& moving,
                         const Triangle& fixed, const ScaledLength& greatest) {
  TrianglePair pair(direction, moving, fixed);
  ContactInterval interval{};
  ExactRatio exact;
  if (!pair.Meet()) return interval.first;
  interval.first = pair.First(exact);
  if (CompareTravel(direction, interval.first, exact, greatest) == 0) return interval.first;
  interval.last = pair.Last(exact);
  if (CompareTravel(direction, interval.last, exact, greatest) == 0) return interval.last;
  if (greatest.value == 0.0) return ContactAtStart(interval);
  const double travel = std::ldexp(greatest.value, greatest.exponent);
  return {travel, ContactKind::Overlap, PointBetween(interval, &PairContact::onMoving, travel),
          PointBetween(interval, &PairContact::onFixed, travel)};
}

bool MeetFirstAt(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                 const ExactRatio& travel, PointBounds& points) {
  TrianglePair pair(direction, moving, fixed);
  if (!pair.Meet() || pair.SomeBehind() || pair.SomeAtZero()) return false;
  bool meets = false;
  pair.EachAt(travel, [&](const PairContact& contact) {
    points.Include(contact.onFixed);
    meets = true;
  });
  return meets;
}

bool MeetAtStart(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                 Rule rule, PointBounds& points) {
  TrianglePair pair(direction, moving, fixed);
  if (!pair.Meet()) return false;
  const bool touches = pair.SomeAtZero() || (pair.SomeBehind() && pair.SomeAhead());
  if (!touches || (rule == Rule::NotLeaving && !pair.SomeAhead())) return false;
  if (pair.SomeBehind() && pair.SomeAhead()) {
    IncludeCommon(moving, fixed, points);
  } else {
    pair.EachAtZero([&](const PairContact& contact) { points.Include(contact.onFixed); });
  }
  return true;
}

bool ContactNormal(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                   const PairContact& contact, Coord3& normal) {
  switch (contact.kind) {
  case ContactKind::VertexFace:
    return NormalAgainst(direction, EdgeOf(fixed, 0), EdgeOf(fixed, 1), normal);
  case ContactKind::FaceVertex:
    return NormalAgainst(direction, EdgeOf(moving, 0), EdgeOf(moving, 1), normal);
  case ContactKind::EdgeEdge:
    return NormalAgainst(direction, EdgeOf(moving, contact.movingFeature),
                         EdgeOf(fixed, contact.fixedFeature), normal);
  case ContactKind::VertexVertex:
  case ContactKind::VertexEdge:
  case ContactKind::EdgeVertex:
  case ContactKind::Overlap:
  case ContactKind::Inside:
    break;
  }
  return false;
}

} // namespace gsl_sweep
