#ifndef FUZZ_FUZZ_ENTITIES_H
#define FUZZ_FUZZ_ENTITIES_H

#include "FuzzInput.h"
#include "ScopedSettings.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cmath>

/// Objects of the library from an input.

inline gsl_Point PointOf(FuzzInput& in) {
  const double x = in.Number();
  const double y = in.Number();
  const double z = in.Number();
  return {x, y, z};
}

/// Sometimes the components and the length do not agree, which a host can cause.
inline gsl_Vector VectorOf(FuzzInput& in) {
  const double x = in.Number();
  const double y = in.Number();
  const double z = in.Number();
  gsl_Vector v(x, y, z);
  if (in.HasStaleLengths() && in.Below(4) == 1) v.magnitude = in.Number();
  return v;
}

/// Returns a tolerance: usually the default, or a number that is not negative.
inline double ToleranceOf(FuzzInput& in, double usual) {
  const std::uint8_t kind = in.Below(8);
  if (kind == 1) return 0.0;
  if (kind == 2) return 1.0;
  if (kind != 3) return usual;
  const double number = std::fabs(in.Number());
  return number <= 10.0 ? number : usual;
}

/// Sets the tolerances of the library while `settings` lives.
inline void SetTolerances(FuzzInput& in, ScopedSettings& settings) {
  if (!in.HasTolerances()) return;
  settings->linearTolerance = ToleranceOf(in, 1e-6);
  settings->zeroTolerance = ToleranceOf(in, 1e-12);
  settings->cosineTolerance = ToleranceOf(in, 1e-10);
}

inline bool SamePoint(const gsl_Point& a, const gsl_Point& b) {
  return SameNumber(a.x, b.x) && SameNumber(a.y, b.y) && SameNumber(a.z, b.z);
}

#endif
