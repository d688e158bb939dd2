#include "ClearanceFloor.h"

#include "gsl_Arithmetic.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

using gsl_arithmetic::Dot;
using gsl_exact::Root;
using gsl_exact::Times;

namespace {

FineVector EdgeOf(const Triangle& t, int k) {
  return FineDifference(t.corner[k == 2 ? 0 : k + 1], t.corner[k]);
}

/// Returns a vector between the features of a contact that is across both, with about twice the
/// precision. Rounded to double it would not be across the other corners of a face or of an edge.
FineVector AcrossFeatures(const TravelDirection& direction, const Triangle& moving,
                          const Triangle& fixed, const ClearanceContact& best) {
  const int i = best.contact.movingFeature;
  const int j = best.contact.fixedFeature;
  const auto between = [&] {
    const Coord3& d = direction.Vector();
    const FineVector w = FineDifference(fixed.corner[j], moving.corner[i]);
    const auto less = [&best](const DoubleDouble& a, double along) {
      return Plus(a, Minus(Times(best.multiple, {along, 0.0})));
    };
    return FineVector{less(w.x, d.x), less(w.y, d.y), less(w.z, d.z)};
  };
  const auto acrossEdge = [&between](const FineVector& edge) {
    return FineCross(edge, FineCross(between(), edge));
  };
  switch (best.contact.kind) {
  case ContactKind::VertexFace:
    return FineCross(EdgeOf(fixed, 0), EdgeOf(fixed, 1));
  case ContactKind::FaceVertex:
    return FineCross(EdgeOf(moving, 0), EdgeOf(moving, 1));
  case ContactKind::EdgeEdge:
    return FineCross(EdgeOf(moving, i), EdgeOf(fixed, j));
  case ContactKind::VertexEdge:
    return acrossEdge(EdgeOf(fixed, j));
  case ContactKind::EdgeVertex:
    return acrossEdge(EdgeOf(moving, i));
  default:
    return between();
  }
}

} // namespace

// Let n be the normal, with components of at most 1, s the best multiple, below 16, and G the gap
// along n between a pair at rest. Any n bounds the distance: it is at least (G - t n . d) / |n|
// after the multiple t. So a pair with
//   G >= s n . d + |n| C - 2^-91
// does not come within C before s - 2^-91 / (n . d), which is at least s - 2^-85, because n . d is
// at least 2^-6. Its multiple is computed with an error below 2^-89, so it is computed as s - 2^-84
// or more. Set() makes sure that s - 2^-83 has the same rounded travel as s.
//   error of n . p            three products of at most 1, sums of at most 2 and 3   < 2^-97
//   error of G                twice that, and a sum of at most 6                     < 2^-95
//   error of s n . d + |n| C  16 times that of n . d, and terms and a sum of at most
//                             6, each off by 2^-98                                   < 2^-92.5
// because the gap of the best pair, at most 6, is s n . d + |n| C. IsWide() asks for more than that
// sum less 2^-92, and 2^-92 + 2^-95 + 2^-92.5 < 2^-91. The extents that hold triangles have the
// errors of G.
void ClearanceFloor::Set(const Triangle& moving, const Triangle& fixed,
                         const ClearanceContact& best) {
  m_isSet = false;
  m_holds = false;
  const FineVector across = AcrossFeatures(m_direction, moving, fixed, best);
  const Coord3 rounded = RoundedOf(across);
  const double largest =
      std::max({std::fabs(rounded.x), std::fabs(rounded.y), std::fabs(rounded.z)});
  if (!(largest > 0x1p-900) || !(best.multiple.hi < 16.0)) return;
  int exponent = 0;
  std::frexp(largest, &exponent);
  const double sign = Dot(rounded, m_direction.Vector()) < 0.0 ? -1.0 : 1.0;
  const auto scaled = [&](const DoubleDouble& c) {
    return DoubleDouble{std::ldexp(sign * c.hi, -exponent), std::ldexp(sign * c.lo, -exponent)};
  };
  m_normal = {scaled(across.x), scaled(across.y), scaled(across.z)};
  const DoubleDouble speed = FineDot(m_normal, m_direction.Vector());
  if (!(speed.hi > 0x1p-6)) return;
  const DoubleDouble earlier = Plus(best.multiple, {-0x1p-83, 0.0});
  if (Times(earlier, m_direction.Length()).hi != best.contact.travel) return;
  const DoubleDouble length = Root(FineDot(m_normal, m_normal));
  m_least = Plus(Times(best.multiple, speed), Times(length, {m_clearance, 0.0}));
  m_isSet = true;
  m_mostMoving = Greatest(moving.corner, 1.0);
  m_mostFixed = Greatest(fixed.corner, -1.0);
  m_holds = IsWide(Minus(Plus(m_mostMoving, m_mostFixed)));
}

// A pair whose coordinates are at most 1 is at most 4 wide along any vector of length 1, so after a
// path of 5 it is never again within a clearance of at most 1. Up to that multiple s the pair is
// apart if G > |n| C + s n . d. The direction's largest component is 1/2 or more, so s is at most
// 10, and the errors of both sides are below 2^-95 + 2^-92.
void ClearanceFloor::SetNever(const Coord3& normal) {
  const Coord3& d = m_direction.Vector();
  m_holds = false;
  m_isSet = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)}) >= 0.5;
  m_normal = {{normal.x, 0.0}, {normal.y, 0.0}, {normal.z, 0.0}};
  const DoubleDouble speed = FineDot(m_normal, d);
  const DoubleDouble closed =
      speed.hi > 0.0 ? Times(speed, DoubleDouble{10.0, 0.0}) : DoubleDouble{};
  const DoubleDouble length = Root(FineDot(m_normal, m_normal));
  m_least = Plus(Plus(closed, Times(length, {m_clearance, 0.0})), {0x1p-88, 0.0});
}

bool ClearanceFloor::IsWide(const DoubleDouble& gap) const {
  return Plus(gap, Minus(m_least)).hi > -0x1p-92;
}

} // namespace gsl_sweep
