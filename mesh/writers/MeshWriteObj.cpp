#include "writers/MeshWriters.h"
#include "writers/SharedVertices.h"

namespace gsl_mesh {

void WriteObj(const Mesh& mesh, MeshOutput& output) {
  const SharedVertices shared = ShareVertices(mesh, output);
  for (const std::uint32_t k : shared.corner) {
    output.Text("v ");
    WriteVertexLine(mesh.corners[k], output);
  }
  for (std::size_t k = 0; k < shared.ofCorner.size(); ++k) {
    if (k % 3 == 0) output.Text("f");
    output.Text(" ");
    output.Decimal(std::uint64_t{shared.ofCorner[k]} + 1); // OBJ counts from 1
    if (k % 3 == 2) output.Text("\n");
  }
}

} // namespace gsl_mesh
