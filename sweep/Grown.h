#ifndef GSL_SWEEP_GROWN_H
#define GSL_SWEEP_GROWN_H

#include "Corners.h"

namespace gsl_sweep {

/// The vertices of a body that was made thicker or thinner, three numbers each.
struct GrownVertices {
  Array<double> vertices;
  double deviation = 0.0; ///< see Body::Grown
};

/// Errors     see Body::Grown.
GrownVertices GrowVertices(const Corners& corners, double e);

} // namespace gsl_sweep

#endif
