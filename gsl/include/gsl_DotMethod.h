#ifndef GSL_DOT_METHOD_H
#define GSL_DOT_METHOD_H

#include <cstdint>

/// How a datum point was created. Records hold the name, prefix included, and hosts are compiled
/// with the numbers, so neither ever changes. The marker for "invalid" is deliberately not the
/// last.
enum gsl_DotMethod : std::int32_t {
  gsl_FROM_POINT = 0,
  gsl_FROM_VERTEX = 1,
  gsl_FROM_DATUM_POINT = 2,
  gsl_FROM_EDGE_PARAM = 3,
  gsl_FROM_FACE_DIM = 4,
  gsl_FROM_EDGE_VTX = 5,
  gsl_FROM_FACE_VTX = 6,
  gsl_FROM_IP_VTX_ONTO_EDGE = 7,
  gsl_FROM_IP_CENTER_OF_EDGE = 8,
  gsl_FROM_IP_MIDPT_OF_EDGE = 9,
  gsl_FROM_NODE = 10,
  // values-follow-the-invalid-marker: hosts are compiled with these numbers.
  gsl_DOT_INVALID = 11,
  gsl_FROM_DATUM_CSYS_ORIGIN = 12
};

#endif
