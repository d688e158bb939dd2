#include "MeshSamples.h"
#include "MeshWrite.h"

using namespace gsl_mesh_samples;

TEST(MeshWriteObj, FollowsTheLayoutOfTheFormat) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("part.obj");
  gsl_mesh::WriteMesh(
      path, {"", {{0, 0, 0.1}, {2, 0, 5}, {0, -3e-7, 5}, {2, 0, 5}, {0, 0, 0.1}, {1, 1, 9}}, {}},
      false);
  EXPECT_EQ(BytesOf(path), "v 0 0 0.1\nv 2 0 5\nv 0 -3e-07 5\nv 1 1 9\nf 1 2 3\nf 2 1 4\n");
}
