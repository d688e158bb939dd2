#ifndef REFERENCE_CLEARANCE_JUDGE_H
#define REFERENCE_CLEARANCE_JUDGE_H

#include "RationalSweep.h"

/// Judges when two triangles come within a distance of each other, in exact rationals.
///
/// The distance of two triangles at rest is the least of the distances of their corners from the
/// other triangle and of their edges from each other, or zero where they cross. As a function of
/// the travel it is convex. So a slope on each side of an interval decides where its least value
/// is, and no equation is solved for the travel.
namespace reference {

using RationalTriangle = std::array<RationalPoint, 3>;

/// One pair of triangles, of which one moves by a multiple of the direction.
class ClearancePair {
public:
  ClearancePair(const std::array<Coord3, 3>& moving, const std::array<Coord3, 3>& fixed,
                const Coord3& direction);

  /// Returns a shortest vector from the moving triangle to the fixed one.
  RationalPoint Nearest(const Rational& multiple) const;

  bool IsWithin(const Rational& multiple, const Rational& squaredClearance) const;

  /// Decides whether the triangles are within the clearance at some multiple from `from` to `to`.
  /// Returns nothing when the least distance is too near to the clearance to tell.
  std::optional<bool> IsWithinBetween(const Rational& from, const Rational& to,
                                      const Rational& squaredClearance) const;

  /// Returns the first multiple from `from` to `to` at which they are within the clearance, up to
  /// 2^-bits. Requires that they are so at `to`, and not at `from`.
  Rational First(Rational from, Rational to, const Rational& squaredClearance, int bits) const;

private:
  Rational Slope(const RationalPoint& nearest) const;

  RationalTriangle m_moving, m_fixed;
  RationalPoint m_direction;
};

} // namespace reference

#endif
