#include "MeshSamples.h"
#include "MeshWrite.h"

using namespace gsl_mesh_samples;

TEST(MeshWritePly, FollowsTheLayoutOfTheFormat) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.ply");
  gsl_mesh::WriteMesh(
      path, {"", {{0, 0, 5}, {2, 0, 5}, {0, 3, 5}, {2, 0, 5}, {0, 0, 5}, {1, 1, 9}}, {}}, false);
  std::string expected = "ply\nformat binary_little_endian 1.0\nelement vertex 4\n"
                         "property double x\nproperty double y\nproperty double z\n"
                         "element face 2\nproperty list uchar int vertex_indices\nend_header\n";
  for (const double c : {0, 0, 5, 2, 0, 5, 0, 3, 5, 1, 1, 9})
    AppendNumber(expected, c);
  for (const auto& face : {std::array<std::int32_t, 3>{0, 1, 2}, {1, 0, 3}}) {
    expected.push_back(3);
    for (const std::int32_t k : face)
      AppendNumber(expected, k);
  }
  EXPECT_EQ(BytesOf(path), expected);
}
