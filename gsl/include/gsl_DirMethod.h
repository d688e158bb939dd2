#ifndef GSL_DIR_METHOD_H
#define GSL_DIR_METHOD_H

#include <cstdint>

/// How a datum plane was created. Records hold the name, and hosts are compiled with the
/// numbers, so neither ever changes.
enum gsl_DirMethod : std::int32_t {
  FROM_POINT_VECTOR = 0,
  FROM_FACE = 1,
  FROM_DATUM_PLANE = 2,
  FROM_ELEM_FACE = 3,
  PLANE_INVALID = 4
};

#endif
