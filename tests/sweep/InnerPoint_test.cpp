#include "InnerPoint.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace gsl_sweep;

const Coord3 origin{0, 0, 0};
const Coord3 axes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

/// Returns the side of a point as seen along +z from a line through `from`.
int SideOfLine(const InnerPoint& point, const Coord3& from, const Coord3& to) {
  return point.Side({&origin, &axes[2]}, {&from, &to}, from);
}

/// Returns the side of the plane x = `at` on which a point is.
int SideOfX(const InnerPoint& point, double at) {
  const Coord3 on{at, 0, 0};
  return point.Side({&origin, &axes[1]}, {&origin, &axes[2]}, on);
}
int SideOfY(const InnerPoint& point, double at) {
  const Coord3 on{0, at, 0};
  return point.Side({&origin, &axes[2]}, {&origin, &axes[0]}, on);
}
int SideOfZ(const InnerPoint& point, double at) {
  const Coord3 on{0, 0, at};
  return point.Side({&origin, &axes[0]}, {&origin, &axes[1]}, on);
}

TEST(InnerPoint, LaterPlacesCountWhereEarlierOnesAreOnThePlane) {
  InnerPoint point;
  point.Add({1, 1, 0});
  point.Add({1, 5, 0});
  point.Add({3, 5, 2});
  EXPECT_EQ(SideOfX(point, 0.5), 1);
  EXPECT_EQ(SideOfX(point, 1), 1); // by the last place
  EXPECT_EQ(SideOfX(point, std::nextafter(1.0, 2.0)), -1);
  EXPECT_EQ(SideOfY(point, 1), 1); // by the second place
  EXPECT_EQ(SideOfY(point, 2), -1);
  EXPECT_EQ(SideOfZ(point, 0), 1);
  point.Rotate(2);
  EXPECT_EQ(SideOfY(point, 5), -1);
  EXPECT_EQ(SideOfX(point, 1), 1);
}

TEST(InnerPoint, ACrossingIsNotRounded) {
  // The segment from (0, 0, -1) to (3, 0, 2) meets z = 0 at x = 1, and the one from (0, 0, -1) to
  // (1, 0, 2) at x = 1/3, between two doubles.
  for (const double x : {3.0, 1.0}) {
    InnerPoint point;
    point.AddCrossing({0, 0, -1}, {x, 0, 2}, {&origin, &axes[0]}, {&origin, &axes[1]}, origin);
    EXPECT_EQ(SideOfZ(point, 0), 0);
    const double third = x / 3;
    EXPECT_EQ(SideOfX(point, std::nextafter(third, 0.0)), 1);
    EXPECT_EQ(SideOfX(point, third), x == 3 ? 0 : 1); // the double is less than 1/3
    EXPECT_EQ(SideOfX(point, std::nextafter(third, 2.0)), -1);
    const Box<double> reach = point.Reach();
    EXPECT_LE(reach.low[0], third);
    EXPECT_GT(reach.high[0], third);
    EXPECT_LT(reach.high[0] - reach.low[0], 1e-13);
  }
}

TEST(InnerPoint, ACrossingIsFoundWhereRoundingHidesTheSides) {
  // The ends are one unit in the last place above the plane z = x, and twice that below it. So the
  // crossing is a third of the way, at (2, 0, 2).
  const Coord3 oblique{1, 0, 1};
  InnerPoint point;
  point.AddCrossing({1, 0, 1 + 0x1p-52}, {4, 0, 4 - 0x1p-51}, {&origin, &oblique},
                    {&origin, &axes[1]}, origin);
  EXPECT_EQ(SideOfX(point, 1.5), 1);
  EXPECT_EQ(SideOfX(point, 2), 0);
  EXPECT_EQ(SideOfX(point, 2.5), -1);
  const Box<double> reach = point.Reach();
  EXPECT_LE(reach.low[0], 2.0);
  EXPECT_GE(reach.high[0], 2.0);
  EXPECT_LT(reach.high[0] - reach.low[0], 1e-12);
}

TEST(InnerPoint, TheReachHoldsACrossing) {
  RandomNumbers random(11);
  const auto any = [&random] { return random.Unit(); };
  for (int round = 0; round < 2000; ++round) {
    // Ends near a plane, on both sides, whose heights over it are rounded.
    const Coord3 u{1 + any(), any(), any()};
    const Coord3 v{any(), 1 + any(), any()};
    const auto near = [&](double x, double y, double above) {
      const double det = u.x * v.y - u.y * v.x;
      const double a = (x * v.y - y * v.x) / det;
      const double b = (y * u.x - x * u.y) / det;
      return Coord3{x, y, a * u.z + b * v.z + above};
    };
    const double height = std::ldexp(1.0, -12 - round % 32);
    const Coord3 p = near(1 + any(), any(), height * (0.5 + any()));
    const Coord3 q = near(-any(), p.x, -height * (0.5 + any()));
    InnerPoint point;
    point.AddCrossing(p, q, {&origin, &u}, {&origin, &v}, origin);
    const Box<double> reach = point.Reach();
    EXPECT_GE(SideOfX(point, reach.low[0]), 0) << round;
    EXPECT_LE(SideOfX(point, reach.high[0]), 0) << round;
    EXPECT_GE(SideOfY(point, reach.low[1]), 0) << round;
    EXPECT_LE(SideOfY(point, reach.high[1]), 0) << round;
    EXPECT_GE(SideOfZ(point, reach.low[2]), 0) << round;
    EXPECT_LE(SideOfZ(point, reach.high[2]), 0) << round;
  }
}

TEST(InnerPoint, APlaceAlongADirectionIsInThePlane) {
  // From (1, 1, 5) along (1, 0, -3) the plane z = 4 is met at x = 4/3.
  InnerPoint point;
  point.AddAlong({1, 1, 5}, {1, 0, -3}, {&origin, &axes[0]}, {&origin, &axes[1]}, {0, 0, 4});
  EXPECT_EQ(SideOfZ(point, 4), 0);
  EXPECT_EQ(SideOfY(point, 1), 0);
  const double x = 4.0 / 3.0; // rounded down
  EXPECT_EQ(SideOfX(point, x), 1);
  EXPECT_EQ(SideOfX(point, std::nextafter(x, 2.0)), -1);
  const Box<double> reach = point.Reach();
  EXPECT_LE(reach.low[0], x);
  EXPECT_GE(reach.high[0], std::nextafter(x, 2.0));
}

/// Expects a point inside a triangle with a normal along +z or -z.
void ExpectInside(const InnerPoint& point, const SurfaceTriangle& t) {
  const Coord3* p = t.corner;
  const int side = SideOfLine(point, p[0], p[1]);
  EXPECT_NE(side, 0);
  EXPECT_EQ(SideOfLine(point, p[1], p[2]), side);
  EXPECT_EQ(SideOfLine(point, p[2], p[0]), side);
}

TEST(InnerPoint, PointsInAShadowAreInsideBothTriangles) {
  // A star of two triangles whose corners are outside each other, and one inside the other.
  const SurfaceTriangle base{{{0, 0, 0}, {6, 0, 0}, {3, 6, 0}}};
  const SurfaceTriangle star{{{0, 4, 2}, {6, 4, 2}, {3, -2, 2}}};
  const SurfaceTriangle within{{{2, 1, 0}, {4, 1, 0}, {3, 2, 0}}};
  // Two edges are on one line, and each ends outside of the other triangle.
  const SurfaceTriangle beside{{{2, 0, 0}, {10, 0, 0}, {6, 6, 0}}};
  for (const SurfaceTriangle& other : {star, within, base, beside}) {
    SharedPoints points = PointsInShadow(base, other, {0, 0, 1});
    EXPECT_GE(points.count, 3u);
    EXPECT_EQ(points.onSecond.PlaceCount(), points.count);
    for (std::size_t k = 0; k < points.count; ++k, points.Rotate()) {
      ExpectInside(points.onFirst, base);
      ExpectInside(points.onFirst, other);
      ExpectInside(points.onSecond, base);
      ExpectInside(points.onSecond, other);
      EXPECT_EQ(SideOfZ(points.onFirst, 0), 0);
      EXPECT_EQ(SideOfZ(points.onSecond, other.corner[0].z), 0);
      // The first places of both are on one line along the direction.
      const Box<double> first = points.onFirst.Reach();
      const Box<double> second = points.onSecond.Reach();
      for (int axis = 0; axis < 2; ++axis) {
        EXPECT_LE(first.low[axis], second.high[axis]);
        EXPECT_LE(second.low[axis], first.high[axis]);
      }
    }
  }
}

TEST(InnerPoint, PointsAtAMeetingAreUnderTheOtherTriangle) {
  // The face is in z = 0 and faces up. The other triangle is in x = 1 and faces along -x, so its
  // inner side is at x > 1.
  const SurfaceTriangle face{{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}};
  for (const double top : {1.0, 0.0}) {
    const SurfaceTriangle wall{{{1, 2, top}, {1, 3, -2}, {1, 1, -2}}};
    ASSERT_EQ(MeetAtRest(face, wall), SolidMeeting::Overlapping);
    SharedPoints points = PointsAtMeeting(face, wall);
    EXPECT_EQ(points.count, top == 0.0 ? 1u : 2u);
    for (std::size_t k = 0; k < points.count; ++k, points.Rotate()) {
      EXPECT_EQ(SideOfZ(points.onFirst, 0), 0);
      EXPECT_EQ(SideOfX(points.onFirst, 1), 1);
      EXPECT_EQ(SideOfX(points.onFirst, 1.001), -1);
      ExpectInside(points.onFirst, face);
      EXPECT_EQ(SideOfX(points.onSecond, 1), 0);
      EXPECT_EQ(SideOfZ(points.onSecond, 0), -1);
      EXPECT_EQ(SideOfZ(points.onSecond, -0.001), 1);
    }
  }
}

TEST(InnerPoint, ARayCountsLayersAndCrossings) {
  const SurfaceTriangle face{{{0, 0, 4}, {8, 0, 4}, {0, 8, 4}}};
  InnerPoint point;
  point.Add({1, 1, 4});
  point.Add({2, 1, 4});
  point.Add({2, 2, 4});
  const InnerRay ray(face, point);
  const auto turned = [](SurfaceTriangle t) {
    std::swap(t.corner[1], t.corner[2]);
    return t;
  };
  const SurfaceTriangle below{{{0, 0, 3}, {8, 0, 3}, {0, 8, 0}}};
  const SurfaceTriangle above{{{0, 0, 5}, {8, 0, 5}, {0, 8, 5}}};
  const SurfaceTriangle aside{{{0, 0, 4}, {8, 0, 4}, {8, 0.5, 4}}};
  // An edge through the first place: the point is on its left.
  const SurfaceTriangle besides{{{1, 0, 4}, {1, 8, 4}, {0, 8, 4}}};
  EXPECT_EQ(ray.Layer(face), 1);
  EXPECT_EQ(ray.Layer(turned(face)), -1);
  EXPECT_EQ(ray.Layer(below), 0);
  EXPECT_EQ(ray.Layer(aside), 0);
  EXPECT_EQ(ray.Layer(besides), 0);
  EXPECT_EQ(ray.Crossing(face), 0);
  EXPECT_EQ(ray.Crossing(below), -1); // the ray goes down, into what is below
  EXPECT_EQ(ray.Crossing(turned(below)), 1);
  EXPECT_EQ(ray.Crossing(above), 0);
  EXPECT_TRUE(ray.BeginsIn({{0, 0, 4}, {8, 8, 4}}));
  EXPECT_FALSE(ray.BeginsIn({{0, 0, 0}, {8, 8, 3}}));
  EXPECT_TRUE(ray.Meets({{0, 0, 0}, {8, 8, 3}}));
  EXPECT_FALSE(ray.Meets({{0, 0, 5}, {8, 8, 6}}));
  EXPECT_FALSE(ray.Meets({{2, 2, 0}, {8, 8, 3}}));
}

TEST(InnerPoint, RandomMeetingsHavePoints) {
  RandomNumbers random(7);
  const auto anyTriangle = [&random] {
    SurfaceTriangle t{};
    for (Coord3& p : t.corner) {
      p.x = random.Below(5);
      p.y = random.Below(5);
      p.z = random.Below(5);
    }
    return t;
  };
  int count = 0;
  for (int k = 0; k < 20000; ++k) {
    const SurfaceTriangle a = anyTriangle();
    const SurfaceTriangle b = anyTriangle();
    if (MeetAtRest(a, b) != SolidMeeting::Overlapping) continue;
    ++count;
    SharedPoints points = PointsAtMeeting(a, b);
    ASSERT_GE(points.count, 1u);
    for (std::size_t n = 0; n < points.count; ++n, points.Rotate()) {
      // A point is inside its own triangle, on one layer of it.
      ASSERT_EQ(InnerRay(a, points.onFirst).Layer(a), 1);
      ASSERT_EQ(InnerRay(b, points.onSecond).Layer(b), 1);
      const Coord3* p = b.corner;
      ASSERT_LE(points.onFirst.Side({&p[0], &p[1]}, {&p[0], &p[2]}, p[0]), 0);
      const Coord3* q = a.corner;
      ASSERT_LE(points.onSecond.Side({&q[0], &q[1]}, {&q[0], &q[2]}, q[0]), 0);
    }
  }
  EXPECT_GT(count, 1000);
}

} // namespace
