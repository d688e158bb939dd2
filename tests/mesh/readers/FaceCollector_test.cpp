#include "readers/FaceCollector.h"

#include <gtest/gtest.h>

using gsl_arithmetic::Coord3;
using gsl_mesh::FaceCollector;
using gsl_mesh::Mesh;
using gsl_mesh::MeshSource;

namespace {

const Coord3 kSquare[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const MeshSource kSource{"", "sample"};

} // namespace

TEST(FaceCollector, TrianglesKeepTheirCornersInOrder) {
  Mesh mesh;
  FaceCollector faces(kSource, mesh);
  faces.Add(kSquare + 1, 3, nullptr);
  faces.Finish();
  ASSERT_EQ(mesh.corners.size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(mesh.corners[k].x, kSquare[k + 1].x);
    EXPECT_EQ(mesh.corners[k].y, kSquare[k + 1].y);
  }
  EXPECT_TRUE(mesh.warnings.empty());
}

TEST(FaceCollector, FacesOfFourCornersBecomeTwoTrianglesOfTheSameArea) {
  Mesh mesh;
  FaceCollector(kSource, mesh).Add(kSquare, 4, nullptr);
  ASSERT_EQ(mesh.TriangleCount(), 2U);
  double doubledArea = 0.0;
  for (std::size_t k = 0; k < 6; k += 3) {
    const Coord3 &a = mesh.corners[k], &b = mesh.corners[k + 1], &c = mesh.corners[k + 2];
    doubledArea += (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
  }
  EXPECT_EQ(doubledArea, 2.0);
}

TEST(FaceCollector, FacesOfFewerThanThreeCornersAreCountedAndTheFirstIsNamed) {
  Mesh mesh;
  FaceCollector faces(kSource, mesh);
  faces.Add(kSquare, 3, nullptr);
  faces.Add(kSquare, 2, nullptr);
  faces.Finish();
  faces.Add(kSquare, 0, nullptr);
  faces.Finish();
  ASSERT_EQ(mesh.warnings.size(), 2U);
  EXPECT_EQ(mesh.warnings[0],
            "sample: left out 1 face of fewer than three corners, the first is face 1 "
            "(counted from 0)");
  EXPECT_EQ(mesh.warnings[1],
            "sample: left out 2 faces of fewer than three corners, the first is face 1 "
            "(counted from 0)");
  EXPECT_EQ(mesh.TriangleCount(), 1U);
}
