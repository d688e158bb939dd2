#include "Mesh.h"

#include <gtest/gtest.h>

#include <limits>

using gsl_mesh::IsFinite;

TEST(Mesh, TrianglesHaveThreeCornersEach) {
  gsl_mesh::Mesh mesh;
  EXPECT_EQ(mesh.TriangleCount(), 0U);
  mesh.corners.resize(12);
  EXPECT_EQ(mesh.TriangleCount(), 4U);
}

TEST(Mesh, APointIsFiniteWhenEachCoordinateIs) {
  const double most = std::numeric_limits<double>::max();
  EXPECT_TRUE(IsFinite({most, -most, 0.0}));
  for (const double bad :
       {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(IsFinite({bad, 0.0, 0.0}));
    EXPECT_FALSE(IsFinite({0.0, bad, 0.0}));
    EXPECT_FALSE(IsFinite({0.0, 0.0, bad}));
  }
}

TEST(Mesh, EveryErrorIsOneLine) {
  EXPECT_STREQ(gsl_mesh::MeshError("a\n\x7f: is odd").what(), "a??: is odd");
}
