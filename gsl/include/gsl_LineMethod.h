#ifndef GSL_LINE_METHOD_H
#define GSL_LINE_METHOD_H

#include <cstdint>

/// How a datum axis was created. Records hold the name, and hosts are compiled with the
/// numbers, so neither ever changes.
/// The marker for "invalid" is deliberately not the last.
enum gsl_LineMethod : std::int32_t {
  FROM_PNT_VECTOR = 0,
  FROM_EDGE = 1,
  FROM_REVFACE = 2,
  FROM_DATUM_AXIS = 3,
  FROM_ELEM_EDGE = 4,
  FROM_PNT_PNT = 5,
  // values-follow-the-invalid-marker: hosts are compiled with these numbers.
  STLINE_INVALID = 6,
  FROM_DATUM_CSYS = 7
};

#endif
