#include "writers/SharedVertices.h"

#include "Numbers.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace gsl_mesh;
using testing::ElementsAre;

namespace {

SharedVertices VerticesOf(const Mesh& mesh) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("out");
  OutputFile file(path, false);
  return ShareVertices(mesh, MeshOutput(path, file));
}

} // namespace

TEST(SharedVertices, CornersOfTheSameBitsShareAVertexInTheOrderOfFirstUse) {
  const double above = numbers::Above(1.0);
  const Mesh mesh{
      "", {{1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {above, 0, 0}, {-0.0, 0, 0}, {0, 0, 0}}, {}};
  const SharedVertices shared = VerticesOf(mesh);
  EXPECT_THAT(shared.corner, ElementsAre(0, 1, 3, 4));
  EXPECT_THAT(shared.ofCorner, ElementsAre(0, 1, 0, 2, 3, 1));
}

TEST(SharedVertices, CornersOfTheSameNanShareAVertex) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Mesh mesh{"", {{nan, 0, 0}, {-nan, 0, 0}, {nan, 0, 0}}, {}};
  EXPECT_THAT(VerticesOf(mesh).ofCorner, ElementsAre(0, 1, 0));
}

TEST(SharedVertices, EveryCoordinateDistinguishesCorners) {
  Mesh mesh;
  for (int k = 0; k < 20 * 20 * 20; ++k)
    mesh.corners.push_back({0.5 * (k % 20), 0.5 * (k / 20 % 20), 0.5 * (k / 400)});
  mesh.corners.insert(mesh.corners.end(), mesh.corners.begin(), mesh.corners.end());
  const SharedVertices shared = VerticesOf(mesh);
  ASSERT_EQ(shared.corner.size(), 8000U);
  for (std::uint32_t k = 0; k < 8000; ++k) {
    EXPECT_EQ(shared.corner[k], k);
    EXPECT_EQ(shared.ofCorner[k], k);
    EXPECT_EQ(shared.ofCorner[k + 8000], k);
  }
}
