#ifndef REFERENCE_CLEARANCE_SCENES_H
#define REFERENCE_CLEARANCE_SCENES_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Scenes of two small bodies that come within a distance of each other, or just do not. Most are
/// degenerate: parallel faces and edges, paths that graze, segments and points.
namespace reference {

using gsl_arithmetic::Coord3;

struct ClearanceScene {
  std::string name;                  ///< family and seed, enough to make the scene again
  std::vector<Coord3> moving, fixed; ///< three corners of each triangle
  Coord3 direction{0.0, 0.0, -1.0};
  Coord3 offset{0.0, 0.0, 0.0};
  double clearance = 1.0;
};

std::size_t ClearanceFamilyCount();
const char* ClearanceFamilyName(std::size_t family);

/// Makes a scene, which is the same on every machine.
ClearanceScene MakeClearanceScene(std::size_t family, std::uint64_t seed);

/// Returns all numbers of a scene as hexadecimal floats, for a report.
std::string Describe(const ClearanceScene& scene);

} // namespace reference

#endif
