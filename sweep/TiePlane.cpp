#include "TiePlane.h"

#include "Determinant.h"

namespace gsl_sweep {

using gsl_exact::ExactCross;
using gsl_exact::ExactCrossProduct;
using gsl_exact::Expand;
using gsl_exact::Expansion;
using gsl_exact::Scaled;
using gsl_exact::Sum;
using gsl_exact::TwoDifference;
using gsl_exact::TwoProduct;
using gsl_exact::TwoSum;
using gsl_exact::VectorBetween;

namespace {

int SignOf(double c) {
  return (c > 0.0) - (c < 0.0);
}

/// Returns normal . (to - from) without error.
Expansion<12> Along(const double (&normal)[3], const Coord3& from, const Coord3& to) {
  const auto part = [](const DoubleDouble& difference, double factor) {
    return Scaled(Expand(difference), factor);
  };
  return Sum(Sum(part(TwoDifference(to.x, from.x), normal[0]),
                 part(TwoDifference(to.y, from.y), normal[1])),
             part(TwoDifference(to.z, from.z), normal[2]));
}

/// Returns the exact sign of normal . (to - from).
int SignAlong(const double (&normal)[3], const Coord3& from, const Coord3& to) {
  const DoubleDouble d[3] = {TwoDifference(to.x, from.x), TwoDifference(to.y, from.y),
                             TwoDifference(to.z, from.z)};
  const double x = normal[0] * d[0].hi;
  const double y = normal[1] * d[1].hi;
  const double z = normal[2] * d[2].hi;
  const double sum = (x + y) + z;
  // A difference, a product and two sums round each term four times by 2^-53; this is 16 times.
  const double bound = (std::fabs(x) + std::fabs(y) + std::fabs(z)) * 0x1p-49;
  if (std::fabs(sum) > bound) return SignOf(sum);
  if (bound == 0.0) return 0;
  if (d[0].lo == 0.0 && d[1].lo == 0.0 && d[2].lo == 0.0) {
    const double rest = std::fabs(TwoProduct(normal[0], d[0].hi).lo) +
                        std::fabs(TwoProduct(normal[1], d[1].hi).lo) +
                        std::fabs(TwoProduct(normal[2], d[2].hi).lo);
    // The sign of a sum of two doubles survives its rounding.
    if (rest == 0.0 && TwoSum(x, y).lo == 0.0) return SignOf(sum);
  }
  return Along(normal, from, to).Sign();
}

/// Writes the sum of the components where one double holds it, and returns false elsewhere.
bool FitsIntoDouble(const Expansion<16>& value, double& sum) {
  sum = 0.0;
  for (int k = 0; k < value.count; ++k) {
    const DoubleDouble next = TwoSum(sum, value.component[k]);
    if (next.lo != 0.0) return false;
    sum = next.hi;
  }
  return true;
}

/// Returns the corner that is farthest along the normal (sense 1), or farthest against it (-1).
const Coord3& Farthest(const Triangle& triangle, const double (&normal)[3], int sense) {
  const Coord3* best = &triangle.corner[0];
  for (const Coord3& corner : triangle.corner) {
    if (SignAlong(normal, *best, corner) == sense) best = &corner;
  }
  return *best;
}

VectorBetween EdgeOf(const Triangle& triangle, int k) {
  return {&triangle.corner[k], &triangle.corner[k == 2 ? 0 : k + 1]};
}

} // namespace

void TiePlane::Find(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                    const PairContact& contact, const ExactRatio& travel) {
  m_isSet = Try(direction, EdgeOf(fixed, 0), EdgeOf(fixed, 1), moving, fixed, travel) ||
            Try(direction, EdgeOf(moving, 0), EdgeOf(moving, 1), moving, fixed, travel) ||
            (contact.kind == ContactKind::EdgeEdge &&
             Try(direction, EdgeOf(moving, contact.movingFeature),
                 EdgeOf(fixed, contact.fixedFeature), moving, fixed, travel));
}

bool TiePlane::Try(const TravelDirection& direction, const VectorBetween& u, const VectorBetween& v,
                   const Triangle& moving, const Triangle& fixed, const ExactRatio& travel) {
  const ExactCross cross = ExactCrossProduct(u, v);
  if (!FitsIntoDouble(cross.x, m_normal[0]) || !FitsIntoDouble(cross.y, m_normal[1]) ||
      !FitsIntoDouble(cross.z, m_normal[2])) {
    return false;
  }
  const Coord3 origin{0.0, 0.0, 0.0};
  const int sense = SignAlong(m_normal, origin, direction.Vector());
  if (sense == 0) return false;
  for (double& c : m_normal)
    c *= sense;
  m_moving = Farthest(moving, m_normal, 1);
  m_fixed = Farthest(fixed, m_normal, -1);
  // The plane of the moving corner reaches the fixed corner at the travel, and not before.
  Expansion<192> over;
  Expansion<192> under;
  const Expansion<12> gap = Along(m_normal, m_moving, m_fixed);
  const Expansion<12> speed = Along(m_normal, origin, direction.Vector());
  for (int k = 0; k < gap.count; ++k)
    over.Append(gap.component[k]);
  for (int k = 0; k < speed.count; ++k)
    under.Append(speed.component[k]);
  ExactRatio reached;
  reached.Set(over, under);
  return CompareRatios(reached, travel) == 0;
}

bool TiePlane::HoldsMoving(const Coord3 (&corners)[3]) const {
  return SignAlong(m_normal, m_moving, corners[0]) <= 0 &&
         SignAlong(m_normal, m_moving, corners[1]) <= 0 &&
         SignAlong(m_normal, m_moving, corners[2]) <= 0;
}

bool TiePlane::HoldsFixed(const Coord3 (&corners)[3]) const {
  return SignAlong(m_normal, m_fixed, corners[0]) >= 0 &&
         SignAlong(m_normal, m_fixed, corners[1]) >= 0 &&
         SignAlong(m_normal, m_fixed, corners[2]) >= 0;
}

} // namespace gsl_sweep
