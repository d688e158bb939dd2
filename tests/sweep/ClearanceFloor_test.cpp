#include "ClearanceFloor.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace gsl_sweep;

const TravelDirection kDirection({0.5, 0.25, -1.0});

Triangle At(double x, double y, double z) {
  return MakeTriangle(kDirection, {x, y, z}, {x + 0.125, y, z}, {x, y + 0.125, z});
}

ClearanceContact ContactOf(const Triangle& moving, const Triangle& fixed, double clearance) {
  ClearanceContact found{};
  EXPECT_EQ(JudgeClearance(kDirection, moving, fixed, clearance, 8.0, found),
            ClearanceOutcome::Ahead);
  return found;
}

TEST(ClearanceFloor, PairsInTheSamePlanesAreNotBefore) {
  const Triangle moving = At(-0.25, 0.0, 0.75);
  const Triangle fixed = MakeTriangle(kDirection, {-1, -1, 0}, {1, -1, 0}, {0, 1, 0});
  ClearanceFloor floor(kDirection, 0.0625);
  EXPECT_FALSE(floor.IsNotBefore(moving.corner, fixed.corner));
  floor.Set(moving, fixed, ContactOf(moving, fixed, 0.0625));
  EXPECT_TRUE(floor.IsNotBefore(moving.corner, fixed.corner));
  EXPECT_TRUE(floor.IsNotBefore(At(0.5, 0.5, 0.75).corner, At(0.25, 0.25, 0.0).corner));
  EXPECT_TRUE(floor.IsNotBefore(At(0.5, 0.5, 0.875).corner, fixed.corner));
  // One unit nearer, which may come first.
  const double lower = std::nextafter(0.75, 0.0);
  EXPECT_FALSE(floor.IsNotBefore(At(0.5, 0.5, lower).corner, fixed.corner));
  const double higher = std::nextafter(0.125, 1.0) - 0.125;
  EXPECT_FALSE(floor.IsNotBefore(moving.corner, At(0.0, 0.0, higher).corner));
}

TEST(ClearanceFloor, TheSignsChooseTheNearCornersOfBoxes) {
  const Triangle moving = At(-0.25, 0.0, 0.75);
  const Triangle fixed = MakeTriangle(kDirection, {-1, -1, 0}, {1, -1, 0}, {0, 1, 0});
  ClearanceFloor floor(kDirection, 0.0625);
  floor.Set(moving, fixed, ContactOf(moving, fixed, 0.0625));
  // The normal is (0, 0, -1).
  EXPECT_EQ(floor.Signs(), 0u);
  EXPECT_TRUE((floor.IsNotBefore<1, 1>({{0.0, 0.0, 0.75}}, {{1.0, 1.0, 0.0}})));
  EXPECT_FALSE((floor.IsNotBefore<1, 1>({{0.0, 0.0, 0.5}}, {{1.0, 1.0, 0.0}})));
}

TEST(ClearanceFloor, ADirectionAlongThePlaneSetsNone) {
  const TravelDirection along({1.0, 0.0, -0x1p-8});
  const Triangle moving = MakeTriangle(along, {-0.25, 0, 0.5}, {-0.25, 0, 0.5}, {-0.25, 0, 0.5});
  const Triangle fixed = MakeTriangle(along, {-1, -1, 0}, {1, -1, 0}, {0, 1, 0});
  ClearanceContact found{};
  ASSERT_EQ(JudgeClearance(along, moving, fixed, 0.4990234375, 8.0, found),
            ClearanceOutcome::Ahead);
  ClearanceFloor floor(along, 0.4990234375);
  floor.Set(moving, fixed, found);
  EXPECT_FALSE(floor.IsNotBefore(moving.corner, fixed.corner));
}

TEST(ClearanceFloor, APlaneKeepsPairsApartForever) {
  const TravelDirection along({1.0, 0.0, 0.0});
  const auto flat = [&along](double x, double z) {
    return MakeTriangle(along, {x, 0, z}, {x + 0.125, 0, z}, {x, 0.125, z});
  };
  ClearanceFloor floor(along, 0.25 - 0x1p-54);
  floor.SetNever({0.0, 0.0, 0.5});
  EXPECT_TRUE(floor.IsNotBefore(flat(-0.5, 0.5).corner, flat(0.5, 0.75).corner));
  EXPECT_TRUE(floor.IsNotBefore(flat(0.5, 0.25).corner, flat(0.5, 0.75).corner));
  const double lower = std::nextafter(0.75, 0.0);
  EXPECT_FALSE(floor.IsNotBefore(flat(-0.5, 0.5).corner, flat(0.5, lower).corner));
  ClearanceFloor exact(along, 0.25);
  exact.SetNever({0.0, 0.0, 0.5});
  EXPECT_FALSE(exact.IsNotBefore(flat(-0.5, 0.5).corner, flat(0.5, 0.75).corner));
  // The direction closes a gap of 2^-20 within any path that matters.
  const TravelDirection oblique({1.0, 0.0, 0x1p-20});
  ClearanceFloor closing(oblique, 0.25 - 0x1p-54);
  closing.SetNever({0.0, 0.0, 0.5});
  EXPECT_FALSE(closing.IsNotBefore(flat(-0.5, 0.5).corner, flat(0.5, 0.75).corner));
  EXPECT_TRUE(closing.IsNotBefore(flat(-0.5, 0.5).corner, flat(0.5, 0.75 + 0x1p-16).corner));
}

} // namespace
