#include "writers/MeshWriters.h"
#include "writers/SharedVertices.h"

namespace gsl_mesh {

void WriteOff(const Mesh& mesh, MeshOutput& output) {
  const SharedVertices shared = ShareVertices(mesh, output);
  output.Text("OFF\n");
  output.Decimal(std::uint64_t{shared.corner.size()});
  output.Text(" ");
  output.Decimal(std::uint64_t{mesh.TriangleCount()});
  output.Text(" 0\n");
  for (const std::uint32_t k : shared.corner)
    WriteVertexLine(mesh.corners[k], output);
  for (std::size_t k = 0; k < shared.ofCorner.size(); ++k) {
    if (k % 3 == 0) output.Text("3");
    output.Text(" ");
    output.Decimal(std::uint64_t{shared.ofCorner[k]});
    if (k % 3 == 2) output.Text("\n");
  }
}

} // namespace gsl_mesh
