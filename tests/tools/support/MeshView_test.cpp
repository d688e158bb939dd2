#include "support/MeshView.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace gsl_sweep;
using namespace gsl_tools;

TEST(MeshView, IsOfTheMeshesOwnNumbers) {
  Mesh mesh;
  mesh.corners = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {9, 10, 11}, {12, 13, 14}, {15, 16, 17}};
  const TriangleView view = ViewOf(mesh);
  EXPECT_EQ(view.triangleCount, 2u);
  EXPECT_EQ(view.vertexCount, 6u);
  EXPECT_EQ(view.corners, nullptr);
  for (int k = 0; k < 18; ++k)
    EXPECT_EQ(view.vertices[k], k);
  const TriangleView none = ViewOf(Mesh{});
  EXPECT_EQ(none.triangleCount, 0u);
  EXPECT_EQ(none.vertices, nullptr);
}

TEST(MeshView, IsOfNineNumbersEach) {
  const std::vector<double> corners(18, 1.0);
  const TriangleView view = ViewOf(corners);
  EXPECT_EQ(view.triangleCount, 2u);
  EXPECT_EQ(view.vertexCount, 6u);
  EXPECT_EQ(view.corners, nullptr);
  EXPECT_EQ(view.vertices, corners.data());
}

} // namespace
