#ifndef REFERENCE_SOLID_SCENES_H
#define REFERENCE_SOLID_SCENES_H

#include "SolidJudge.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Scenes of two solids. Most are degenerate: they share walls, edges, vertices or cross sections.
namespace reference {

struct SolidScene {
  std::string name; ///< family and seed, enough to make the scene again
  SolidQuestion question;
  double unit = 1.0; ///< of the lattice, a power of two
  /// Unless empty, the fixed solid is given as several bodies too: the numbers of triangles of
  /// each, in the order of the surface.
  std::vector<std::size_t> fixedBodies;
  /// Unless empty, the corners of the moving body before an offset of 1.5 * 2^52 units along x. The
  /// offset rounds them to those of the surface, moved by it.
  std::vector<Coord3> beforeOffset;
};

std::size_t SolidFamilyCount();
const char* SolidFamilyName(std::size_t family);

/// Makes a scene, which is the same on every machine.
SolidScene MakeSolidScene(std::size_t family, std::uint64_t seed);

/// Returns the corners of a surface in the units of the scene.
std::vector<Coord3> CornersOf(const SolidScene& scene, const LatticeSolid& solid);

/// Returns the triangles and the direction of a scene, for a report.
std::string Describe(const SolidScene& scene);

} // namespace reference

#endif
