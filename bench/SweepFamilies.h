#ifndef BENCH_SWEEP_FAMILIES_H
#define BENCH_SWEEP_FAMILIES_H

#include "gsl_Sweep.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Families of scenes for the benchmark of the sweep, each at any size.
namespace sweep_families {

using gsl_arithmetic::Coord3;

struct IndexedMesh {
  std::vector<double> vertices;
  std::vector<std::uint32_t> corners;

  std::size_t VertexCount() const { return vertices.size() / 3; }
  std::size_t TriangleCount() const { return corners.size() / 3; }
  std::size_t Bytes() const {
    return vertices.size() * sizeof(double) + corners.size() * sizeof(std::uint32_t);
  }
  gsl_sweep::TriangleView View() const {
    return {vertices.data(), VertexCount(), corners.data(), TriangleCount()};
  }
};

struct Scene {
  IndexedMesh moving, fixed;
  Coord3 direction;
};

/// What is expected of the times.
enum class Kind {
  Apart,       ///< closed bodies, one beyond the other
  Interleaved, ///< closed bodies that overlap along the direction
  HardAlongAxis,
  HardAslant
};

struct Family {
  const char* name;
  Kind kind;
  bool isDouble;                        ///< coordinates that single precision does not hold
  Scene (*make)(std::size_t triangles); ///< about so many triangles in each body
  bool isAlsoLargest = false;           ///< measured at the largest size too, which takes long
};

/// Returns the families in the order of the tables of docs/performance.md.
const std::vector<Family>& AllFamilies();

/// Scenes whose first contact is a patch that grows with the size.
struct PatchFamily {
  const char* name;
  Scene (*make)(std::size_t triangles);
  std::vector<std::size_t> sizes; ///< triangles in each body
};

/// Returns these families in the order of the tables of docs/performance.md.
const std::vector<PatchFamily>& AllPatchFamilies();

} // namespace sweep_families

#endif
