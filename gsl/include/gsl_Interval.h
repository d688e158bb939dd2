#ifndef GSL_INTERVAL_H
#define GSL_INTERVAL_H

#include "gsl_Export.h"

/// Two bounds; nothing requires that lower <= upper.
///
/// Units      the caller's units.
/// Errors     none thrown, none printed.
class GSL_API gsl_Interval {
public:
  double lower; ///< lower bound
  double upper; ///< upper bound

  /// The bounds are not set; gsl_Interval{} is [0, 0].
  gsl_Interval() = default;
  /// The bounds are taken as they are.
  gsl_Interval(double lowerBound, double upperBound) : lower(lowerBound), upper(upperBound) {}

  /// Returns (1 - t) * lower + t * upper. A t outside [0, 1] extrapolates.
  double Interpolate(double t) const { return (1.0 - t) * lower + t * upper; }

  /// Returns true for the same object, and when both bounds agree within 1e-8 (closed; NaN counts
  /// as equal). The width is fixed and deliberately independent of the gsl_Util tolerances.
  [[nodiscard]] bool operator==(const gsl_Interval& o) const;
  [[nodiscard]] bool operator!=(const gsl_Interval& o) const { return !(*this == o); }
};

#endif
