#ifndef GSL_SWEEP_CLEARANCE_FLOOR_H
#define GSL_SWEEP_CLEARANCE_FLOOR_H

#include "ClearancePair.h"
#include "FineVector.h"

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
    return m_isSet && IsWide(Minus(Plus(Greatest(fixed, -1.0), Greatest(moving, 1.0))));
  }

  /// Return true when the plane holds a triangle, of the moving or of a fixed body, on its own side
  /// as far as it holds the triangle of the contact. No pair of which it holds both has a lesser
  /// travel when it is rounded.
  bool HoldsMoving(const Coord3 (&corners)[3]) const {
    return m_holds && !IsLess(m_mostMoving, Greatest(corners, 1.0));
  }
  bool HoldsFixed(const Coord3 (&corners)[3]) const {
    return m_holds && !IsLess(m_mostFixed, Greatest(corners, -1.0));
  }
  /// Returns true when the plane may hold triangles.
  bool Holds() const { return m_holds; }

  /// Returns the sides of the plane: bit k is set where the normal's component is positive.
  unsigned Signs() const {
    const Coord3 n = RoundedOf(m_normal);
    return static_cast<unsigned>(n.x > 0.0) | static_cast<unsigned>(n.y > 0.0) << 1 |
           static_cast<unsigned>(n.z > 0.0) << 2;
  }

private:
  /// Returns the greatest extent of corners along the normal, or against it.
  template <std::size_t kCount>
  DoubleDouble Greatest(const Coord3 (&corners)[kCount], double sign) const {
    DoubleDouble most{};
    for (std::size_t k = 0; k < kCount; ++k) {
      DoubleDouble along = FineDot(m_normal, corners[k]);
      if (sign < 0.0) along = Minus(along);
      if (k == 0 || IsLess(most, along)) most = along;
    }
    return most;
  }
  bool IsWide(const DoubleDouble& gap) const;

  const TravelDirection& m_direction;
  double m_clearance;
  bool m_isSet = false;
  bool m_holds = false;
  FineVector m_normal;
  DoubleDouble m_least; ///< the gap along the normal that closes at the best travel
  /// The extents of the triangles of the contact: along the normal, and against it.
  DoubleDouble m_mostMoving, m_mostFixed;
};

} // namespace gsl_sweep

#endif
