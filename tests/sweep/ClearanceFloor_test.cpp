#include "ClearanceFloor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

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

/// Triangles with a common corner, above a face that is oblique to the axes, all in single
/// precision. The normal of the face does not fit into three doubles.
struct CornerAboveFace {
  Coord3 tip{}, around[3]{};
  Triangle fixed{};

  explicit CornerAboveFace(std::mt19937_64& random) {
    const auto draw = [&random](double from, double to) {
      const double part = static_cast<double>(random() >> 40) * 0x1p-24;
      return static_cast<double>(static_cast<float>(from + part * (to - from)));
    };
    Coord3 corner[3];
    const double x[] = {-0.875, 0.875, 0.0};
    const double y[] = {-0.875, -0.875, 0.875};
    for (int k = 0; k < 3; ++k) {
      corner[k].x = draw(x[k] - 0.125, x[k] + 0.125);
      corner[k].y = draw(y[k] - 0.125, y[k] + 0.125);
      corner[k].z = k == 2 ? draw(-0x1p-14, 0.0) : draw(-0.25, 0.0);
    }
    fixed = MakeTriangle(kDirection, corner[0], corner[1], corner[2]);
    tip.x = draw(-0.25, -0.125);
    tip.y = draw(-0.125, -0.0625);
    tip.z = draw(0.5, 0.625);
    const double aside[] = {-0.125, 0.125, 0.0};
    for (int k = 0; k < 3; ++k)
      around[k] = {tip.x + aside[k], tip.y + draw(-0.125, 0.125), draw(0.8125, 0.875)};
  }

  Triangle Moving(const Coord3& corner, int k) const {
    return MakeTriangle(kDirection, corner, around[k], around[k == 2 ? 0 : k + 1]);
  }
};

TEST(ClearanceFloor, TrianglesAroundACornerTieAboveAnObliqueFace) {
  std::mt19937_64 random(11);
  constexpr double kClearance = 0.0625;
  int earlier = 0;
  for (int round = 0; round < 200; ++round) {
    const CornerAboveFace scene(random);
    const ClearanceContact best = ContactOf(scene.Moving(scene.tip, 0), scene.fixed, kClearance);
    ASSERT_EQ(best.contact.kind, ContactKind::VertexFace) << round;
    ClearanceFloor floor(kDirection, kClearance);
    EXPECT_FALSE(floor.Holds());
    floor.Set(scene.Moving(scene.tip, 0), scene.fixed, best);
    EXPECT_TRUE(floor.Holds()) << round;
    EXPECT_TRUE(floor.HoldsFixed(scene.fixed.corner)) << round;
    for (int k = 1; k < 3; ++k) {
      const Triangle other = scene.Moving(scene.tip, k);
      EXPECT_TRUE(floor.IsNotBefore(other.corner, scene.fixed.corner)) << round;
      EXPECT_TRUE(floor.HoldsMoving(other.corner)) << round;
    }
    // A corner that is lower by one unit in the last place.
    const Coord3 lower{scene.tip.x, scene.tip.y, std::nextafter(scene.tip.z, 0.0)};
    const Triangle nearer = scene.Moving(lower, 1);
    EXPECT_FALSE(floor.HoldsMoving(nearer.corner)) << round;
    const double travel = ContactOf(nearer, scene.fixed, kClearance).contact.travel;
    if (travel < best.contact.travel) {
      ++earlier;
      EXPECT_FALSE(floor.IsNotBefore(nearer.corner, scene.fixed.corner)) << round;
    }
    const Coord3 raised{scene.fixed.corner[0].x, scene.fixed.corner[0].y,
                        std::nextafter(scene.fixed.corner[0].z, 1.0)};
    const Triangle higher =
        MakeTriangle(kDirection, raised, scene.fixed.corner[1], scene.fixed.corner[2]);
    EXPECT_FALSE(floor.HoldsFixed(higher.corner)) << round;
  }
  EXPECT_GT(earlier, 50);
}

TEST(ClearanceFloor, AnEdgeThatACornerApproachesHoldsItsTriangles) {
  // The corner is before the edge from (-1, 0, 0) to (1, 0.5, 0), whose triangles fall away.
  const Triangle fixed = MakeTriangle(kDirection, {-1, 0, 0}, {1, 0.5, 0}, {0, -0.5, -1});
  const Triangle otherSide = MakeTriangle(kDirection, {1, 0.5, 0}, {-1, 0, 0}, {0, 1, -1});
  const Coord3 tip{-0.25, 0.125, 0.5};
  const Triangle moving = MakeTriangle(kDirection, tip, {-0.25, 0.25, 1}, {0, 0, 1});
  const ClearanceContact best = ContactOf(moving, fixed, 0.0625);
  ASSERT_EQ(best.contact.kind, ContactKind::VertexEdge);
  ClearanceFloor floor(kDirection, 0.0625);
  floor.Set(moving, fixed, best);
  EXPECT_TRUE(floor.HoldsMoving(moving.corner));
  EXPECT_TRUE(floor.HoldsFixed(fixed.corner));
  EXPECT_TRUE(floor.HoldsFixed(otherSide.corner));
  EXPECT_TRUE(floor.IsNotBefore(moving.corner, otherSide.corner));
  // No plane holds the other pair forever.
  floor.SetNever({0.0, 0.0, -0.5});
  EXPECT_FALSE(floor.Holds());
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
