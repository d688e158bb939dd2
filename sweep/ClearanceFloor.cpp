#include "ClearanceFloor.h"

#include "gsl_Arithmetic.h"

#include <cmath>

namespace gsl_sweep {

using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_exact::Root;
using gsl_exact::Times;
using gsl_exact::TwoProduct;

namespace {

Coord3 EdgeOf(const Triangle& t, int k) {
  return Subtract(t.corner[k == 2 ? 0 : k + 1], t.corner[k]);
}

/// Returns a vector between the features of a contact, or across both.
Coord3 AcrossFeatures(const TravelDirection& direction, const Triangle& moving,
                      const Triangle& fixed, const ClearanceContact& best) {
  const PairContact& contact = best.contact;
  switch (contact.kind) {
  case ContactKind::VertexFace:
    return Cross(EdgeOf(fixed, 0), EdgeOf(fixed, 1));
  case ContactKind::FaceVertex:
    return Cross(EdgeOf(moving, 0), EdgeOf(moving, 1));
  case ContactKind::EdgeEdge:
    return Cross(EdgeOf(moving, contact.movingFeature), EdgeOf(fixed, contact.fixedFeature));
  default:
    return Subtract(Subtract(contact.onFixed, contact.onMoving),
                    Multiply(direction.Vector(), best.multiple.hi));
  }
}

} // namespace

DoubleDouble ClearanceFloor::Along(const Coord3& p) const {
  return Plus(Plus(TwoProduct(m_normal.x, p.x), TwoProduct(m_normal.y, p.y)),
              TwoProduct(m_normal.z, p.z));
}

// Let n be the normal, with components of at most 1, s the best multiple, below 16, and G the gap
// along n between a pair at rest. The distance is at least (G - t n . d) / |n| after the multiple
// t, so a pair with
//   G >= s n . d + |n| C - 2^-93
// does not come within C before s - 2^-93 / (n . d), which is at least s - 2^-87, because n . d is
// at least 2^-6. Its multiple is computed with an error below 2^-89, so it is computed as s - 2^-86
// or more. Set() makes sure that s - 2^-85 has the same rounded travel as s.
//   error of G                six products, four sums of at most 3 each    < 2^-95
//   error of s n . d + |n| C  sums of at most 6, each off by 2^-100        < 2^-96
// IsWide() asks for more than that sum less 2^-94, and 2^-94 + 2^-95 + 2^-96 < 2^-93.
void ClearanceFloor::Set(const Triangle& moving, const Triangle& fixed,
                         const ClearanceContact& best) {
  m_isSet = false;
  const Coord3 across = AcrossFeatures(m_direction, moving, fixed, best);
  const double largest = std::max({std::fabs(across.x), std::fabs(across.y), std::fabs(across.z)});
  if (!(largest > 0x1p-900) || !(best.multiple.hi < 16.0)) return;
  int exponent = 0;
  std::frexp(largest, &exponent);
  const double sign = Dot(across, m_direction.Vector()) < 0.0 ? -1.0 : 1.0;
  m_normal = {std::ldexp(sign * across.x, -exponent), std::ldexp(sign * across.y, -exponent),
              std::ldexp(sign * across.z, -exponent)};
  const DoubleDouble speed = Along(m_direction.Vector());
  if (!(speed.hi > 0x1p-6)) return;
  const DoubleDouble earlier = Plus(best.multiple, {-0x1p-85, 0.0});
  if (Times(earlier, m_direction.Length()).hi != best.contact.travel) return;
  const DoubleDouble length = Root(Along(m_normal));
  m_least = Plus(Times(best.multiple, speed), Times(length, {m_clearance, 0.0}));
  m_isSet = true;
}

// A pair whose coordinates are at most 1 is at most 4 wide along any vector of length 1, so after a
// path of 5 it is never again within a clearance of at most 1. Up to that multiple s the pair is
// apart if G > |n| C + s n . d. The direction's largest component is 1/2 or more, so s is at most
// 10, and the errors of both sides are below 2^-95 + 16 * 2^-96.
void ClearanceFloor::SetNever(const Coord3& normal) {
  const Coord3& d = m_direction.Vector();
  m_isSet = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)}) >= 0.5;
  m_normal = normal;
  const DoubleDouble speed = Along(d);
  const DoubleDouble closed =
      speed.hi > 0.0 ? Times(speed, DoubleDouble{10.0, 0.0}) : DoubleDouble{};
  const DoubleDouble length = Root(Along(m_normal));
  m_least = Plus(Plus(closed, Times(length, {m_clearance, 0.0})), {0x1p-88, 0.0});
}

bool ClearanceFloor::IsWide(const DoubleDouble& gap) const {
  return Plus(gap, Minus(m_least)).hi > -0x1p-94;
}

} // namespace gsl_sweep
