#ifndef GSL_TOOLS_EVEN_DIRECTIONS_H
#define GSL_TOOLS_EVEN_DIRECTIONS_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <vector>

namespace gsl_tools {

using gsl_arithmetic::Coord3;

/// Returns `count` directions of length one, up to rounding, which are spread evenly over the
/// sphere: the same bits on every machine, from the top down.
///
/// Source     A. Gonzalez, Measurement of areas on a sphere using Fibonacci and latitude-longitude
///            lattices, Mathematical Geosciences 42 (2010): points on a spiral, of which each has
///            the same share of the height and the golden angle after the one before.
std::vector<Coord3> EvenDirections(std::size_t count);

} // namespace gsl_tools

#endif
