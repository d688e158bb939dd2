#include "ClearanceScenes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace reference;

TEST(ClearanceScenes, EverySceneCanBeAsked) {
  for (std::size_t family = 0; family < ClearanceFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
      const ClearanceScene scene = MakeClearanceScene(family, seed);
      SCOPED_TRACE(Describe(scene));
      EXPECT_GT(scene.clearance, 0.0);
      EXPECT_TRUE(std::isfinite(scene.clearance));
      EXPECT_NE(gsl_arithmetic::Length(scene.direction), 0.0);
      EXPECT_FALSE(scene.moving.empty());
      EXPECT_EQ(scene.moving.size() % 3, 0u);
      EXPECT_EQ(scene.fixed.size() % 3, 0u);
      EXPECT_EQ(Describe(MakeClearanceScene(family, seed)), Describe(scene));
    }
  }
}

} // namespace
