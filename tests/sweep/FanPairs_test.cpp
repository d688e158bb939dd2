#include "FanPairs.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <vector>

namespace {

using namespace gsl_sweep;

const auto kAlways = [] { return true; };

bool HoldsDirection(const Box<double>& box, const Coord3& d) {
  const double largest = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)});
  return sweep_bodies::Holds(box, {d.x / largest, d.y / largest, d.z / largest});
}

TEST(DirectionsFrom, HoldTheDirectionsOfAllPointsOfTheTriangle) {
  std::mt19937_64 random(11);
  const RealsIn wide(-1, 1);
  const RealsIn narrow(-0x1p-20, 0x1p-20);
  const RealsIn part(0, 1);
  for (int round = 0; round < 20000; ++round) {
    SurfaceTriangle t{};
    for (Coord3& p : t.corner) {
      p.x = wide(random);
      p.y = wide(random);
      p.z = wide(random);
    }
    if (round % 3 == 0) { // a thin fan triangle
      t.corner[2] = t.corner[1];
      t.corner[2].x += narrow(random);
      t.corner[2].z += narrow(random);
    }
    const int tip = round % 3;
    const Coord3& from = t.corner[tip];
    const Box<double> box = DirectionsFrom(t, tip);
    for (int k = 0; k < 10; ++k) {
      const double a = k == 0 ? 0.0 : k == 1 ? 1.0 : part(random);
      const Coord3 u = gsl_arithmetic::Subtract(t.corner[(tip + 1) % 3], from);
      const Coord3 v = gsl_arithmetic::Subtract(t.corner[(tip + 2) % 3], from);
      const Coord3 d{u.x + a * (v.x - u.x), u.y + a * (v.y - u.y), u.z + a * (v.z - u.z)};
      EXPECT_TRUE(HoldsDirection(box, d)) << round << ' ' << a;
    }
  }
}

TEST(DirectionsFrom, AreNarrowWhereTheTriangleIsThin) {
  // Seen from the origin, the ends of the edge are (0, -1/64, 1) and (0, 1/64, 1). The box goes
  // beyond them by half of their difference.
  const SurfaceTriangle t{{{0, 0, 0}, {0, -1, 64}, {0, 1, 64}}};
  const Box<double> box = DirectionsFrom(t, 0);
  const double low[3] = {-0x1p-6, -0x1p-5, 1 - 0x1p-6};
  const double high[3] = {0x1p-6, 0x1p-5, 1 + 0x1p-6};
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(box.low[k], low[k], 0x1p-39);
    EXPECT_NEAR(box.high[k], high[k], 0x1p-39);
    EXPECT_LT(box.low[k], low[k]);
    EXPECT_GT(box.high[k], high[k]);
  }
}

TEST(DirectionsFrom, TrianglesApartSeenFromACommonCornerTouchThereAlone) {
  // Whole coordinates, so that many triangles share edges, planes or a part of themselves.
  std::mt19937_64 random(3);
  const WholesIn<int> whole(-3, 3);
  int apart = 0;
  int overlapping = 0;
  for (int round = 0; round < 100000; ++round) {
    SurfaceTriangle pair[2] = {};
    for (SurfaceTriangle& t : pair) {
      for (int k = 1; k < 3; ++k) {
        t.corner[k].x = whole(random);
        t.corner[k].y = whole(random);
        t.corner[k].z = whole(random);
      }
    }
    if (!pair[0].HasArea() || !pair[1].HasArea()) continue;
    const bool isApart = !ShareAPoint(DirectionsFrom(pair[0], 0), DirectionsFrom(pair[1], 0));
    const SolidMeeting meeting = MeetAtRest(pair[0], pair[1]);
    EXPECT_FALSE(isApart && meeting != SolidMeeting::Touching) << round;
    apart += isApart ? 1 : 0;
    overlapping += meeting == SolidMeeting::Overlapping ? 1 : 0;
  }
  EXPECT_GT(apart, 10000);
  EXPECT_GT(overlapping, 5000);
}

std::vector<Box<double>> RandomBoxes(std::mt19937_64& random, std::size_t count, double size) {
  const RealsIn place(-1, 1);
  const RealsIn length(0, size);
  std::vector<Box<double>> boxes(count);
  for (Box<double>& box : boxes) {
    for (int k = 0; k < 3; ++k) {
      box.low[k] = place(random);
      box.high[k] = box.low[k] + length(random);
    }
  }
  return boxes;
}

TEST(BoxIndex, FindsTheBoxesThatShareAPoint) {
  std::mt19937_64 random(5);
  for (const std::size_t count : {1u, 4u, 5u, 300u}) {
    const std::vector<Box<double>> boxes = RandomBoxes(random, count, 0.3);
    const BoxIndex index(boxes);
    for (const Box<double>& box : RandomBoxes(random, 100, 0.5)) {
      std::multiset<std::size_t> found;
      index.EachMeeting(box, kAlways, [&found](std::size_t k) { found.insert(k); });
      std::multiset<std::size_t> expected;
      for (std::size_t k = 0; k < count; ++k)
        if (ShareAPoint(box, boxes[k])) expected.insert(k);
      EXPECT_EQ(found, expected);
    }
  }
}

TEST(BoxIndex, StopsWhenTheCallerDoes) {
  std::mt19937_64 random(6);
  const std::vector<Box<double>> boxes = RandomBoxes(random, 1000, 0.3);
  int calls = 0;
  BoxIndex(boxes).EachMeeting(
      {{-9, -9, -9}, {9, 9, 9}}, [&calls] { return ++calls < 5; }, [](std::size_t) {});
  EXPECT_EQ(calls, 5);
}

std::vector<PlacedCorner> At(const Coord3& p, std::uint32_t first, std::uint32_t count) {
  std::vector<PlacedCorner> corners;
  for (std::uint32_t k = 0; k < count; ++k)
    corners.push_back({p, first + k});
  return corners;
}

void Add(std::vector<PlacedCorner>& all, const std::vector<PlacedCorner>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

using Places = std::vector<std::uint32_t>;

TEST(FindSharedFans, FindsTheCornersThatManyTrianglesOfBothShare) {
  const Coord3 p{1, 2, 3};
  const Coord3 q{1, 2, 4};
  std::vector<PlacedCorner> moving = At(q, 0, 3);
  Add(moving, At({5, 5, 5}, 0, 9));
  Add(moving, At(p, 10, 4));
  std::vector<PlacedCorner> fixed = At({-5, 5, 5}, 0, 9);
  Add(fixed, At(p, 20, 2));
  Add(fixed, At(q, 30, 3));
  const std::vector<SharedFan> both = FindSharedFans(moving, fixed, 8);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(both[0].tip.z, 4);
  EXPECT_EQ(both[0].moving, (Places{0, 1, 2}));
  EXPECT_EQ(both[0].fixed, (Places{30, 31, 32}));
  EXPECT_EQ(both[1].tip.z, 3);
  EXPECT_EQ(both[1].moving, (Places{10, 11, 12, 13}));
  EXPECT_EQ(both[1].fixed, (Places{20, 21}));
  EXPECT_EQ(FindSharedFans(moving, fixed, 9).size(), 1u);
  EXPECT_TRUE(FindSharedFans(moving, fixed, 10).empty());
  EXPECT_TRUE(FindSharedFans({}, fixed, 1).empty());
  EXPECT_TRUE(FindSharedFans(moving, {}, 1).empty());
}

TEST(FindSharedFans, ATriangleIsInOneFan) {
  // Triangle 1 of the moving body has both corners.
  std::vector<PlacedCorner> moving = At({0, 0, 0}, 0, 2);
  Add(moving, At({1, 0, 0}, 1, 3));
  std::vector<PlacedCorner> fixed = At({-0.0, 0, -0.0}, 0, 2);
  Add(fixed, At({1, 0, 0}, 5, 2));
  const std::vector<SharedFan> fans = FindSharedFans(moving, fixed, 1);
  ASSERT_EQ(fans.size(), 2u);
  EXPECT_EQ(fans[0].moving, (Places{1, 2, 3}));
  EXPECT_EQ(fans[1].moving, Places{0});
}

TEST(FindSharedFans, AFanWhoseTrianglesAreAllTakenIsNone) {
  // Triangle 1 of the moving body, the only one at the second corner, is in the first fan.
  std::vector<PlacedCorner> moving = At({0, 0, 0}, 0, 2);
  Add(moving, At({1, 0, 0}, 1, 1));
  std::vector<PlacedCorner> fixed = At({0, 0, 0}, 0, 2);
  Add(fixed, At({1, 0, 0}, 5, 2));
  const std::vector<SharedFan> fans = FindSharedFans(moving, fixed, 1);
  ASSERT_EQ(fans.size(), 1u);
  EXPECT_EQ(fans[0].moving, (Places{0, 1}));
  EXPECT_TRUE(FindSharedFans(fixed, moving, 1).size() == 1u);
}

} // namespace
