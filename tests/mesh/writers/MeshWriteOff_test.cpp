#include "MeshSamples.h"
#include "MeshWrite.h"

using namespace gsl_mesh_samples;

TEST(MeshWriteOff, FollowsTheLayoutOfTheFormat) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.off");
  gsl_mesh::WriteMesh(
      path, {"", {{0, 0, 0.1}, {2, 0, 5}, {0, -3e-7, 5}, {2, 0, 5}, {0, 0, 0.1}, {1, 1, 9}}, {}},
      false);
  EXPECT_EQ(BytesOf(path), "OFF\n4 2 0\n0 0 0.1\n2 0 5\n0 -3e-07 5\n1 1 9\n3 0 1 2\n3 1 0 3\n");
}
