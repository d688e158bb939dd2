#ifndef GSL_MESH_SHARED_VERTICES_H
#define GSL_MESH_SHARED_VERTICES_H

#include "Mesh.h"
#include "writers/MeshOutput.h"

#include <cstdint>
#include <vector>

namespace gsl_mesh {

/// The vertices of a mesh, and the vertex of each corner. Corners share a vertex when all their
/// bits are the same, so that a reader reads the same bits that were written.
struct SharedVertices {
  std::vector<std::uint32_t> corner;   ///< the first corner of each vertex
  std::vector<std::uint32_t> ofCorner; ///< the vertex of each corner
};

/// Fails for more than 1431655765 triangles, whose corners 32 bits can count, or 2147483647
/// vertices: some readers have signed indices of 32 bits.
SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output);

} // namespace gsl_mesh

#endif
