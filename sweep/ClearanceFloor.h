#ifndef GSL_SWEEP_CLEARANCE_FLOOR_H
#define GSL_SWEEP_CLEARANCE_FLOOR_H

#include "ClearancePair.h"

namespace gsl_sweep {

/// A plane through the best contact of a search, which proves of other pairs that their rounded
/// travel is not less; or a plane that proves that pairs never come within the clearance. Faces
/// that lie parallel tie in thousands of pairs, and each exact judgement takes many microseconds.
///
/// Requires coordinates and a clearance of at most 1 in magnitude.
class ClearanceFloor {
public:
  ClearanceFloor(const TravelDirection& direction, double clearance)
      : m_direction(direction), m_clearance(clearance) {}

  /// Puts the plane across the closest features of a contact.
  void Set(const Triangle& moving, const Triangle& fixed, const ClearanceContact& best);

  /// Puts the plane across a normal with components of at most 1, which points from the moving body
  /// to the fixed one. IsNotBefore() then proves that pairs never come within the clearance.
  void SetNever(const Coord3& normal);

  /// Returns true when every pair of triangles, of which the moving one has all its corners on one
  /// side of the first points along the plane's normal and the fixed one of the second, has a
  /// travel that is not less when it is rounded. May return false in any case.
  template <std::size_t kMoving, std::size_t kFixed>
  bool IsNotBefore(const Coord3 (&moving)[kMoving], const Coord3 (&fixed)[kFixed]) const {
    if (!m_isSet) return false;
    DoubleDouble most = Along(moving[0]);
    for (const Coord3& p : moving)
      most = Greater(most, Along(p));
    DoubleDouble least = Minus(Along(fixed[0]));
    for (const Coord3& p : fixed)
      least = Greater(least, Minus(Along(p)));
    return IsWide(Minus(Plus(least, most)));
  }

  /// Returns the sides of the plane: bit k is set where the normal's component is positive.
  unsigned Signs() const {
    return static_cast<unsigned>(m_normal.x > 0.0) | static_cast<unsigned>(m_normal.y > 0.0) << 1 |
           static_cast<unsigned>(m_normal.z > 0.0) << 2;
  }

private:
  static DoubleDouble Greater(const DoubleDouble& a, const DoubleDouble& b) {
    return a.hi > b.hi || (a.hi == b.hi && a.lo > b.lo) ? a : b;
  }
  DoubleDouble Along(const Coord3& p) const;
  bool IsWide(const DoubleDouble& gap) const;

  const TravelDirection& m_direction;
  double m_clearance;
  bool m_isSet = false;
  Coord3 m_normal{0.0, 0.0, 0.0};
  DoubleDouble m_least; ///< the gap along the normal that closes at the best travel
};

} // namespace gsl_sweep

#endif
