#ifndef GSL_SWEEP_CROSSING_SEARCH_H
#define GSL_SWEEP_CROSSING_SEARCH_H

#include "PreparedBody.h"

namespace gsl_sweep {

/// Does what Crossings does for a body.
std::size_t FindCrossings(const PreparedBody& body, Crossing* out, std::size_t capacity,
                          const Run& run);

} // namespace gsl_sweep

#endif
