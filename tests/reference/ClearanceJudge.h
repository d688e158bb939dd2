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

/// The squared distance of two triangles, one of which has moved, and its slope.
struct Nearness {
  Rational at; ///< a multiple of the direction
  Rational square, slope;
};

/// One pair of triangles, of which one moves by a multiple of the direction.
class ClearancePair {
public:
  ClearancePair(const std::array<Coord3, 3>& moving, const std::array<Coord3, 3>& fixed,
                const Coord3& direction);

  Nearness At(const Rational& multiple) const;

  bool IsWithin(const Rational& multiple, const Rational& squaredClearance) const;

  /// Decides whether the triangles are within the clearance at some multiple from `from` to `to`.
  /// Returns nothing when the least distance is too near to the clearance to tell.
  std::optional<bool> IsWithinBetween(const Rational& from, const Rational& to,
                                      const Rational& squaredClearance) const;

private:
  // In whole multiples of 2^unit.
  WholeTriangle m_moving, m_fixed;
  WholePoint m_direction;
  int m_unit;
};

} // namespace reference

#endif
