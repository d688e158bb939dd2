#include "g3d_Sphere.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace {

TEST(G3dPoint, DefaultIsTheOriginWithWeightOne) {
  EXPECT_EQ(g3d_Point(), g3d_Point(0.0f, 0.0f, 0.0f, 1.0f));
}

TEST(G3dPoint, EveryValueCountsForEquality) {
  const g3d_Point p(1.0f, 2.0f, 3.0f, 4.0f);
  EXPECT_EQ(p, g3d_Point(1.0f, 2.0f, 3.0f, 4.0f));
  EXPECT_NE(p, g3d_Point(9.0f, 2.0f, 3.0f, 4.0f));
  EXPECT_NE(p, g3d_Point(1.0f, 9.0f, 3.0f, 4.0f));
  EXPECT_NE(p, g3d_Point(1.0f, 2.0f, 9.0f, 4.0f));
  EXPECT_NE(p, g3d_Point(1.0f, 2.0f, 3.0f, 9.0f));
}

TEST(G3dPoint, IsFourSinglePrecisionNumbers) {
  static_assert(std::is_same_v<decltype(g3d_Point::w), float>, "single precision");
  EXPECT_EQ(sizeof(g3d_Point), 4 * sizeof(float));
}

TEST(G3dSphere, DefaultIsAPointAtTheOrigin) {
  const g3d_Sphere sphere;
  EXPECT_EQ(sphere.Centre(), g3d_Point());
  EXPECT_EQ(sphere.Radius(), 0.0f);
}

TEST(G3dSphere, SetTakesCentreAndRadiusUnchecked) {
  g3d_Sphere sphere;
  sphere.Set(g3d_Point(1.0f, 2.0f, 3.0f), -0.5f);
  EXPECT_EQ(sphere.Centre(), g3d_Point(1.0f, 2.0f, 3.0f, 1.0f));
  EXPECT_EQ(sphere.Radius(), -0.5f);
}

} // namespace
