#include "TiePlane.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace gsl_sweep;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Judged {
  PairOutcome outcome;
  PairContact contact{};
  ExactRatio travel;
};

Judged JudgeAll(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed) {
  Judged judged;
  judged.outcome =
      JudgePair(direction, moving, fixed, Rule::Touch, kInfinity, judged.contact, judged.travel);
  return judged;
}

/// Points on a plane that is oblique to every axis, above each other along z.
Coord3 OnPlane(double x, double y, double z) {
  return {x, y, z + 0.5 * x + 0.25 * y};
}

/// Parallel faces, of which the moving one is 0.5 above the fixed one.
struct Faces {
  Faces()
      : moving(MakeTriangle(direction, OnPlane(0.125, 0.125, 0.5), OnPlane(0.25, 0.125, 0.5),
                            OnPlane(0.125, 0.25, 0.5))),
        fixed(MakeTriangle(direction, OnPlane(0.0, 0.0, 0.0), OnPlane(0.5, 0.0, 0.0),
                           OnPlane(0.0, 0.5, 0.0))) {
    const Judged judged = JudgeAll(direction, moving, fixed);
    EXPECT_EQ(judged.outcome, PairOutcome::Ahead);
    plane.Find(direction, moving, fixed, judged.contact, judged.travel);
  }

  TravelDirection direction{{0.125, -0.25, -1.0}};
  Triangle moving, fixed;
  TiePlane plane;
};

TEST(TiePlane, HoldsWhatIsExactlyOnItsSide) {
  const Faces faces;
  ASSERT_TRUE(faces.plane.IsSet());
  const auto at = [](double x, double y, double z) { return OnPlane(x - 7.0, y + 3.0, z); };
  const double above = std::nextafter(at(0.0, 0.0, 0.5).z, kInfinity);
  const double below = std::nextafter(at(0.0, 0.0, 0.5).z, -kInfinity);
  const Coord3 on = at(0.0, 0.0, 0.5);
  EXPECT_TRUE(faces.plane.HoldsMoving({on, at(1.0, 0.0, 0.5), at(0.0, 1.0, 9.0)}));
  EXPECT_TRUE(faces.plane.HoldsMoving({{on.x, on.y, above}, on, at(1.0, 0.0, 0.5)}));
  for (int corner = 0; corner < 3; ++corner) {
    Coord3 corners[3] = {on, at(1.0, 0.0, 0.5), at(0.0, 1.0, 0.5)};
    corners[corner] = {on.x, on.y, below};
    EXPECT_FALSE(faces.plane.HoldsMoving(corners)) << corner;
  }
  const Coord3 under = at(0.0, 0.0, 0.0);
  EXPECT_TRUE(faces.plane.HoldsFixed({under, at(1.0, 0.0, 0.0), at(0.0, 1.0, -9.0)}));
  for (int corner = 0; corner < 3; ++corner) {
    Coord3 corners[3] = {under, at(1.0, 0.0, 0.0), at(0.0, 1.0, 0.0)};
    corners[corner].z = std::nextafter(corners[corner].z, -kInfinity);
    EXPECT_TRUE(faces.plane.HoldsFixed(corners)) << corner;
    corners[corner].z = std::nextafter(std::nextafter(corners[corner].z, kInfinity), kInfinity);
    EXPECT_FALSE(faces.plane.HoldsFixed(corners)) << corner;
  }
}

TEST(TiePlane, HoldsNothingThatIsLessThanARoundingBeyondIt) {
  const TravelDirection direction({1.0, 0.0, 0.0});
  const auto planeOf = [&](const Triangle& moving, const Triangle& fixed) {
    const Judged judged = JudgeAll(direction, moving, fixed);
    EXPECT_EQ(judged.outcome, PairOutcome::Ahead);
    TiePlane plane;
    plane.Find(direction, moving, fixed, judged.contact, judged.travel);
    EXPECT_TRUE(plane.IsSet());
    return plane;
  };
  // The plane is x = y - 1 at first, and the normal is (16, -16, 0).
  const TiePlane two = planeOf(MakeTriangle(direction, {0, 1, 1}, {1, 2, 1}, {0, 1, 2}),
                               MakeTriangle(direction, {0, 0, 0}, {4, 4, 0}, {0, 0, 4}));
  const auto holds = [](const TiePlane& plane, const Coord3& p) {
    return plane.HoldsMoving({p, p, p});
  };
  EXPECT_TRUE(holds(two, {0x1p44, 0x1p44 + 1.0, 1.0}));
  // The terms are 2^48 + 1/2 and 1/2 - 2^48, of which the sizes add up to 2^49.
  EXPECT_FALSE(holds(two, {0x1p44 + 0x1p-5, 0x1p44 + 1.0 - 0x1p-5, 1.0}));
  // The difference of the y, 2^60 - 1, takes two doubles.
  EXPECT_FALSE(holds(two, {0x1p60, 0x1p60, 1.0}));
  // The plane is x + y + z = -1 at first. Two of the terms cancel, and the third is far smaller.
  const TiePlane three = planeOf(MakeTriangle(direction, {-3, 1, 1}, {-4, 2, 1}, {-4, 1, 2}),
                                 MakeTriangle(direction, {0, 0, 0}, {-4, 4, 0}, {-4, 0, 4}));
  EXPECT_TRUE(holds(three, {0x1p40 - 3.0, 1.0, 1.0 - 0x1p40}));
  EXPECT_FALSE(holds(three, {0x1p40 - 3.0, 1.0 + 0x1p-20, 1.0 - 0x1p40}));
  EXPECT_TRUE(holds(three, {0x1p40 - 3.0, 1.0 - 0x1p-20, 1.0 - 0x1p40}));
}

TEST(TiePlane, IsForgotten) {
  Faces faces;
  faces.plane.Forget();
  EXPECT_FALSE(faces.plane.IsSet());
}

TEST(TiePlane, IsNotFoundWhereItsNormalNeedsMoreBits) {
  const TravelDirection direction({0.1, -0.2, -1.0});
  const Triangle moving =
      MakeTriangle(direction, {0.1, 0.1, 1.1}, {0.3, 0.1, 1.3}, {0.1, 0.7, 1.2});
  const Triangle fixed =
      MakeTriangle(direction, {-0.9, -1.1, 0.1}, {1.7, 0.1, 0.3}, {0.1, 1.9, 0.07});
  const Judged judged = JudgeAll(direction, moving, fixed);
  ASSERT_EQ(judged.outcome, PairOutcome::Ahead);
  TiePlane plane;
  plane.Find(direction, moving, fixed, judged.contact, judged.travel);
  EXPECT_FALSE(plane.IsSet());
}

/// A pair that a plane holds on both sides never touches before the pair of the plane. Corners are
/// small whole numbers, so that many pairs tie.
TEST(TiePlane, NeverHoldsAPairThatTouchesSooner) {
  const unsigned seed = 77;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  const auto whole = [&random](int reach) {
    return static_cast<double>(
        static_cast<int>(random() % (2u * static_cast<unsigned>(reach) + 1u)) - reach);
  };
  const auto triangle = [&](const TravelDirection& direction, double z) {
    const auto corner = [&] { return Coord3{whole(4), whole(4), z + whole(1)}; };
    const Coord3 a = corner();
    const Coord3 b = corner();
    return MakeTriangle(direction, a, b, corner());
  };
  int found = 0;
  int byEdges = 0;
  int ties = 0;
  int later = 0;
  for (int round = 0; round < 1000 && !testing::Test::HasFailure(); ++round) {
    const TravelDirection direction({whole(2) / 4.0, whole(2) / 4.0, -1.0});
    const Triangle bestMoving = triangle(direction, 4.0);
    const Triangle bestFixed = triangle(direction, 0.0);
    const Judged best = JudgeAll(direction, bestMoving, bestFixed);
    if (best.outcome != PairOutcome::Ahead) continue;
    TiePlane plane;
    plane.Find(direction, bestMoving, bestFixed, best.contact, best.travel);
    if (!plane.IsSet()) continue;
    ++found;
    byEdges += best.contact.kind == ContactKind::EdgeEdge ? 1 : 0;
    EXPECT_TRUE(plane.HoldsMoving(bestMoving.corner));
    EXPECT_TRUE(plane.HoldsFixed(bestFixed.corner));
    for (int other = 0; other < 60; ++other) {
      const Triangle moving = triangle(direction, 4.0);
      const Triangle fixed = triangle(direction, 0.0);
      if (!plane.HoldsMoving(moving.corner) || !plane.HoldsFixed(fixed.corner)) continue;
      const Judged judged = JudgeAll(direction, moving, fixed);
      if (judged.outcome == PairOutcome::Apart) continue;
      ASSERT_EQ(judged.outcome, PairOutcome::Ahead);
      const int order = CompareRatios(judged.travel, best.travel);
      EXPECT_GE(order, 0);
      ++(order == 0 ? ties : later);
    }
  }
  EXPECT_GT(found, 100);
  EXPECT_GT(byEdges, 20);
  EXPECT_GT(ties, 20);
  EXPECT_GT(later, 100);
}

} // namespace
