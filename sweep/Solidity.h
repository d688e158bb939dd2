#ifndef GSL_SWEEP_SOLIDITY_H
#define GSL_SWEEP_SOLIDITY_H

#include "Corners.h"

namespace gsl_sweep {

/// Decides whether triangles are the surface of a solid, see Solidity. The time is linear. Little
/// memory is used when neighbours are stored close to each other.
Solidity SolidityOf(const Corners& corners);

} // namespace gsl_sweep

#endif
