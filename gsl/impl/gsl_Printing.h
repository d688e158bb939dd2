#ifndef GSL_PRINTING_H
#define GSL_PRINTING_H

#include "aio_ostream.h"
#include "kernel/Vector.h"

/// The shared parts of the Print operations.

inline aio_FormattedDouble PrintedNumber(double value) {
  return {value, 0, 15};
}

inline void PrintIndent(aio_ostream& out, int indent) {
  for (int i = 0; i < indent; ++i)
    out << ' ';
}

/// Writes one labelled line and flushes it.
inline void PrintCoordinates(aio_ostream& out, int indent, const gsl_kernel::Coord3& c) {
  PrintIndent(out, indent);
  out << "x:\t" << PrintedNumber(c.x) << "\ty:\t" << PrintedNumber(c.y) << "\tz:\t"
      << PrintedNumber(c.z) << '\n';
  out.flush();
}

#endif
