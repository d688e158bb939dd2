#ifndef GSL_SWEEP_AXIS_GAPS_H
#define GSL_SWEEP_AXIS_GAPS_H

#include "Box.h"
#include "PairKernel.h"

namespace gsl_sweep {

/// Compares the travels at which an axis brings boxes together, or parts them, with a given travel.
/// The boxes are exact and in the coordinates of the pair kernel.
class AxisGaps {
public:
  explicit AxisGaps(const TravelDirection& direction) : m_direction(direction) {}

  /// Sets the travel, a multiple of the direction vector that is not negative.
  void SetTravel(const ExactRatio& travel);

  /// Returns true when some axis keeps the boxes apart at every travel after the given one.
  bool ArePartedAfter(const Box<double>& moving, const Box<double>& fixed);

private:
  int Compare(int axis, double d, const DoubleDouble& gap);

  const TravelDirection& m_direction;
  ExactRatio m_travel;
  /// The gap that gave the travel exactly, along each axis.
  DoubleDouble m_equal[3];
  bool m_hasEqual[3] = {};
};

} // namespace gsl_sweep

#endif
