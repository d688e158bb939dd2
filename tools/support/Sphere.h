#ifndef GSL_TOOLS_SPHERE_H
#define GSL_TOOLS_SPHERE_H

#include "support/Report.h"

#include <cstddef>
#include <string>
#include <vector>

/// What is reported of many directions, evenly over the sphere.
namespace gsl_tools {

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
