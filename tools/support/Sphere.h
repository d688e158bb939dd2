#ifndef GSL_TOOLS_SPHERE_H
#define GSL_TOOLS_SPHERE_H

#include "support/Report.h"

#include <cstddef>
#include <string>
#include <vector>

/// Many directions, evenly over the sphere, and what is reported of them.
namespace gsl_tools {

/// Returns `count` directions of length one, up to rounding, which are spread evenly over the
/// sphere: the same bits on every machine, from the top down.
///
/// Source     A. Gonzalez, Measurement of areas on a sphere using Fibonacci and latitude-longitude
///            lattices, Mathematical Geosciences 42 (2010): points on a spiral, of which each has
///            the same share of the height and the golden angle after the one before.
std::vector<Coord3> EvenDirections(std::size_t count);

struct SphereReport : SceneReport {
  std::vector<Answer> answers; ///< to EvenDirections
};

/// Returns how many directions are free, and the least and the greatest travel, in lines that end
/// with newlines.
std::string SphereAsText(const SphereReport& report);

/// Returns one strict JSON document, ended by a newline; docs/gsl-sweep.md describes it. Each
/// answer takes one line.
std::string SphereAsJson(const SphereReport& report);

} // namespace gsl_tools

#endif
