#ifndef GSL_FROM_COORDINATES_H
#define GSL_FROM_COORDINATES_H

#include "gsl_Point.h"
#include "gsl_Vector.h"
#include "kernel/Vector.h"

/// Makes entities from the bare coordinates of the kernels.

/// Returns a computed point, which has a fresh identity.
inline gsl_Point ComputedPoint(const gsl_kernel::Coord3& c) {
  return {c.x, c.y, c.z};
}

/// Returns a vector with the length that is already known.
inline gsl_Vector VectorOf(const gsl_kernel::Measured3& v) {
  gsl_Vector vector;
  vector.x = v.c.x;
  vector.y = v.c.y;
  vector.z = v.c.z;
  vector.magnitude = v.magnitude;
  return vector;
}

/// Writes the coordinates of a computed point and a fresh identity to an output.
inline void AcceptComputed(gsl_Point& out, const gsl_kernel::Coord3& c) {
  out.x = c.x;
  out.y = c.y;
  out.z = c.z;
  out.uid = cls_Uid::AllocateUid();
}

#endif
