#ifndef GSL_MESH_SHARED_VERTICES_H
#define GSL_MESH_SHARED_VERTICES_H

#include "Mesh.h"
#include "writers/MeshOutput.h"

#include <cstdint>
#include <vector>

namespace gsl_sweep {

/// The distinct corners of a mesh, and which of them each corner is. Corners are the same when all
/// their bits are, so that reading gives back what was written.
struct SharedVertices {
  std::vector<std::uint32_t> corner;   ///< of each vertex, the corner that uses it first
  std::vector<std::uint32_t> ofCorner; ///< of each corner, its vertex
};

/// Fails for more than 1431655765 triangles or 2147483647 vertices, the most that indices of 32
/// bits can tell apart in every reader.
SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output);

} // namespace gsl_sweep

#endif
