#include "writers/MeshWriters.h"
#include "writers/SharedVertices.h"

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

void WritePly(const Mesh& mesh, MeshOutput& output) {
  const SharedVertices shared = ShareVertices(mesh, output);
  output.Text("ply\nformat binary_little_endian 1.0\nelement vertex ");
  output.Decimal(std::uint64_t{shared.corner.size()});
  output.Text("\nproperty double x\nproperty double y\nproperty double z\nelement face ");
  output.Decimal(std::uint64_t{mesh.TriangleCount()});
  output.Text("\nproperty list uchar int vertex_indices\nend_header\n");
  for (const std::uint32_t k : shared.corner) {
    const Coord3& vertex = mesh.corners[k];
    output.Double(vertex.x);
    output.Double(vertex.y);
    output.Double(vertex.z);
  }
  for (std::size_t k = 0; k < shared.ofCorner.size(); ++k) {
    if (k % 3 == 0) output.Byte(3);
    output.Bits32(shared.ofCorner[k]);
  }
}

} // namespace gsl_mesh
