#ifndef GSL_COORDINATES_H
#define GSL_COORDINATES_H

#include "gsl_Point.h"
#include "kernel/Vector.h"

#include <ostream>

/// Crossing between entities and the kernels' bare coordinates.

/// A computed point: its identity is a fresh one.
inline gsl_Point ComputedPoint(const gsl_kernel::Coord3& c) {
  return {c.x, c.y, c.z};
}

/// A vector with a length that is known already.
inline gsl_Vector VectorOf(const gsl_kernel::Measured3& v) {
  gsl_Vector vector;
  vector.x = v.c.x;
  vector.y = v.c.y;
  vector.z = v.c.z;
  vector.magnitude = v.magnitude;
  return vector;
}

/// Writes a computed point over an output: coordinates and a fresh identity.
inline void AcceptComputed(gsl_Point& out, const gsl_kernel::Coord3& c) {
  out.x = c.x;
  out.y = c.y;
  out.z = c.z;
  out.uid = cls_Uid::AllocateUid();
}

inline aio_FormattedDouble PrintedNumber(double value) {
  return {value, 0, 15};
}

inline void PrintIndent(aio_ostream& out, int indent) {
  for (int i = 0; i < indent; ++i)
    out << ' ';
}

/// One labelled line, flushed.
inline void PrintCoordinates(aio_ostream& out, int indent, const gsl_kernel::Coord3& c) {
  PrintIndent(out, indent);
  out << "x:\t" << PrintedNumber(c.x) << "\ty:\t" << PrintedNumber(c.y) << "\tz:\t"
      << PrintedNumber(c.z) << '\n'
      << std::flush;
}

/// The settings, fetched once per public call.
inline const gsl_Util& Settings() {
  return omi_Singleton<gsl_Util>::Instance();
}

#endif
