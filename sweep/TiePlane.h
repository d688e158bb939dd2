#ifndef GSL_SWEEP_TIE_PLANE_H
#define GSL_SWEEP_TIE_PLANE_H

#include "PairKernel.h"

namespace gsl_sweep {

/// A plane that proves exactly of whole faces that they do not touch before a given travel.
///
/// At that travel the plane lies between the two triangles of a pair and goes through their
/// contact. A moving triangle that has not passed the plane then, and a fixed triangle that lies
/// wholly beyond it, do not touch any sooner.
class TiePlane {
public:
  /// Looks for the plane of a pair that first touches at `travel`: along the fixed face, along the
  /// moving face, or along the two edges that meet. There is none when no such plane separates the
  /// triangles, or when the components of its normal do not fit into doubles.
  void Find(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
            const PairContact& contact, const ExactRatio& travel);
  void Forget() { m_isSet = false; }
  bool IsSet() const { return m_isSet; }

  /// Requires a plane.
  bool HoldsMoving(const Coord3 (&corners)[3]) const;
  bool HoldsFixed(const Coord3 (&corners)[3]) const;

private:
  using VectorBetween = gsl_exact::VectorBetween;

  bool Try(const TravelDirection& direction, const VectorBetween& u, const VectorBetween& v,
           const Triangle& moving, const Triangle& fixed, const ExactRatio& travel);

  double m_normal[3];       ///< its product with the direction is positive
  Coord3 m_moving, m_fixed; ///< a point of either body that meets the plane at the travel
  bool m_isSet = false;
};

} // namespace gsl_sweep

#endif
