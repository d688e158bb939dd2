#include "SolidPair.h"

#include "RandomNumbers.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using namespace gsl_sweep;

/// Judges in both orders and for every first corner of both.
SolidMeeting Judged(const SurfaceTriangle& a, const SurfaceTriangle& b) {
  const SolidMeeting meeting = MeetAtRest(a, b);
  SurfaceTriangle turnedA = a;
  for (int i = 0; i < 3; ++i) {
    std::rotate(turnedA.corner, turnedA.corner + 1, turnedA.corner + 3);
    SurfaceTriangle turnedB = b;
    for (int j = 0; j < 3; ++j) {
      std::rotate(turnedB.corner, turnedB.corner + 1, turnedB.corner + 3);
      EXPECT_EQ(MeetAtRest(turnedA, turnedB), meeting);
      EXPECT_EQ(MeetAtRest(turnedB, turnedA), meeting);
    }
  }
  return meeting;
}

SurfaceTriangle TurnedOver(const SurfaceTriangle& t) {
  return {{t.corner[0], t.corner[2], t.corner[1]}};
}

// Its outer side is up.
const SurfaceTriangle floorFace{{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}};

TEST(SolidPair, TrianglesBesideEachOtherAreApart) {
  EXPECT_EQ(Judged(floorFace, {{{0, 0, 1}, {8, 0, 1}, {0, 8, 2}}}), SolidMeeting::Apart);
  EXPECT_EQ(Judged(floorFace, {{{0, 0, -1}, {8, 0, -1}, {0, 8, -2}}}), SolidMeeting::Apart);
}

TEST(SolidPair, InsidesThatCrossShowAnOverlap) {
  const SurfaceTriangle through{{{1, 1, -1}, {3, 1, -1}, {2, 2, 1}}};
  EXPECT_EQ(Judged(floorFace, through), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(floorFace, TurnedOver(through)), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(TurnedOver(floorFace), through), SolidMeeting::Overlapping);
}

TEST(SolidPair, ACornerInsideAFaceShowsAnOverlapOnItsInnerSideOnly) {
  const SurfaceTriangle below{{{2, 2, 0}, {3, 2, -4}, {2, 3, -4}}};
  const SurfaceTriangle above{{{2, 2, 0}, {3, 2, 4}, {2, 3, 4}}};
  EXPECT_EQ(Judged(floorFace, below), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(floorFace, above), SolidMeeting::Touching);
  EXPECT_EQ(Judged(TurnedOver(floorFace), below), SolidMeeting::Touching);
  EXPECT_EQ(Judged(TurnedOver(floorFace), above), SolidMeeting::Overlapping);
  // The corner is on an edge, and on a corner.
  for (const double x : {4.0, 0.0}) {
    const SurfaceTriangle atBorder{{{x, 0, 0}, {x + 1, 2, -4}, {x + 2, 3, -4}}};
    EXPECT_EQ(Judged(floorFace, atBorder), SolidMeeting::Touching);
  }
}

TEST(SolidPair, AnEdgeInsideAFaceShowsAnOverlapOnItsInnerSideOnly) {
  for (const double end : {4.0, 9.0}) {
    const SurfaceTriangle below{{{1, 1, 0}, {end, 1, 0}, {2, 3, -4}}};
    const SurfaceTriangle above{{{1, 1, 0}, {end, 1, 0}, {2, 3, 4}}};
    EXPECT_EQ(Judged(floorFace, below), SolidMeeting::Overlapping);
    EXPECT_EQ(Judged(floorFace, above), SolidMeeting::Touching);
  }
  // Both ends are outside, and the middle is inside.
  EXPECT_EQ(Judged(floorFace, {{{-1, 1, 0}, {9, 1, 0}, {2, 3, -4}}}), SolidMeeting::Overlapping);
  // The edge is along a border, or passes through a corner and beside the face.
  EXPECT_EQ(Judged(floorFace, {{{1, 0, 0}, {4, 0, 0}, {2, 3, -4}}}), SolidMeeting::Touching);
  EXPECT_EQ(Judged(floorFace, {{{4, -4, 0}, {-4, 4, 0}, {2, 3, -4}}}), SolidMeeting::Touching);
  EXPECT_EQ(Judged(floorFace, {{{9, -1, 0}, {7, 1, 0}, {2, 3, -4}}}), SolidMeeting::Touching);
}

TEST(SolidPair, ATriangleThatPassesThroughABorderShowsNothing) {
  // It goes down through the edge y = 0, with its inside and with an edge. The outer side is the
  // side of the floor, which otherwise begins inside it and goes to its inner side.
  const SurfaceTriangle wall{{{2, 0, -1}, {3, 0, 1}, {4, 0, -1}}};
  EXPECT_EQ(Judged(floorFace, wall), SolidMeeting::Touching);
  EXPECT_EQ(Judged(floorFace, TurnedOver(wall)), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(floorFace, {{{2, 0, -1}, {2, 0, 1}, {3, -2, 1}}}), SolidMeeting::Touching);
  // And just inside.
  const double inside = std::nextafter(0.0, 1.0) * 0x1p100;
  EXPECT_EQ(Judged(floorFace, {{{2, inside, -1}, {4, inside, -1}, {3, inside, 1}}}),
            SolidMeeting::Overlapping);
}

TEST(SolidPair, FacesInOnePlaneOverlapWhenTheyFaceTheSameWayAndShareArea) {
  const SurfaceTriangle within{{{1, 1, 0}, {2, 1, 0}, {1, 2, 0}}};
  EXPECT_EQ(Judged(floorFace, within), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(floorFace, floorFace), SolidMeeting::Overlapping);
  EXPECT_EQ(Judged(floorFace, TurnedOver(within)), SolidMeeting::Touching);
  EXPECT_EQ(Judged(floorFace, TurnedOver(floorFace)), SolidMeeting::Touching);
  const SurfaceTriangle beside{{{0, 0, 0}, {4, -4, 0}, {8, 0, 0}}};
  EXPECT_EQ(Judged(floorFace, beside), SolidMeeting::Touching);
  const SurfaceTriangle across{{{4, -4, 0}, {5, 1, 0}, {4, 1, 0}}};
  EXPECT_EQ(Judged(floorFace, across), SolidMeeting::Overlapping);
  const SurfaceTriangle far{{{10, 10, 0}, {12, 10, 0}, {10, 12, 0}}};
  EXPECT_NE(Judged(floorFace, far), SolidMeeting::Overlapping);
}

TEST(SolidPair, TrianglesWithoutAreaAreKnown) {
  EXPECT_TRUE(floorFace.HasArea());
  EXPECT_EQ(Judged(floorFace, {{{1, 1, -1}, {1, 1, 1}, {1, 1, 2}}}), SolidMeeting::Apart);
  EXPECT_EQ(Judged(floorFace, {{{1, 1, 0}, {1, 1, 0}, {1, 1, 0}}}), SolidMeeting::Apart);
  EXPECT_FALSE((SurfaceTriangle{{{0, 0, 0}, {1, 2, 3}, {2, 4, 6}}}.HasArea()));
  EXPECT_FALSE((SurfaceTriangle{{{0.1, 0.1, 0.1}, {0.1, 0.1, 0.1}, {2, 4, 6}}}.HasArea()));
  EXPECT_TRUE((SurfaceTriangle{{{0, 0, 0}, {1, 2, 3}, {2, 4, 0x1.8000000000001p2}}}.HasArea()));
}

/// Finds the same by sampling: a lattice of points inside one triangle, against the other's side.
/// All corners are multiples of 12, so that the points are whole numbers.
bool ShowsOverlapBySamples(const SurfaceTriangle& t, const SurfaceTriangle& f) {
  using Whole = std::array<long, 3>;
  const auto whole = [](const Coord3& p) {
    return Whole{std::lround(p.x), std::lround(p.y), std::lround(p.z)};
  };
  const auto minus = [](const Whole& a, const Whole& b) {
    return Whole{a[0] - b[0], a[1] - b[1], a[2] - b[2]};
  };
  const auto cross = [](const Whole& a, const Whole& b) {
    return Whole{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
  };
  const auto dot = [](const Whole& a, const Whole& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
  };
  const Whole p[3] = {whole(f.corner[0]), whole(f.corner[1]), whole(f.corner[2])};
  const Whole q[3] = {whole(t.corner[0]), whole(t.corner[1]), whole(t.corner[2])};
  const Whole normal = cross(minus(p[1], p[0]), minus(p[2], p[0]));
  long deepest = 0;
  for (const Whole& c : q)
    deepest = std::min(deepest, dot(normal, minus(c, p[0])));
  if (deepest == 0) return false;
  for (long i = 0; i <= 12; ++i) {
    for (long j = 0; i + j <= 12; ++j) {
      Whole x{};
      for (std::size_t k = 0; k < 3; ++k)
        x[k] = (i * q[0][k] + j * q[1][k] + (12 - i - j) * q[2][k]) / 12;
      bool isInside = dot(normal, minus(x, p[0])) == 0;
      for (std::size_t k = 0; k < 3 && isInside; ++k)
        isInside = dot(normal, cross(minus(p[(k + 1) % 3], p[k]), minus(x, p[k]))) > 0;
      if (isInside) return true;
    }
  }
  return false;
}

TEST(SolidPair, AgreesWithPointsOfTheTriangles) {
  RandomNumbers random(4);
  int overlapping = 0;
  for (int round = 0; round < Scaled(40000); ++round) {
    const auto point = [&] {
      return Coord3{12.0 * random.Below(4), 12.0 * random.Below(4), 12.0 * random.Below(3)};
    };
    const SurfaceTriangle a{{point(), point(), point()}};
    const SurfaceTriangle b{{point(), point(), point()}};
    if (!a.HasArea() || !b.HasArea()) continue;
    const SolidMeeting meeting = MeetAtRest(a, b);
    // Samples can miss a crossing and never invent one.
    if (ShowsOverlapBySamples(a, b) || ShowsOverlapBySamples(b, a)) {
      ASSERT_EQ(meeting, SolidMeeting::Overlapping) << round;
      ++overlapping;
    }
    ASSERT_EQ(MeetAtRest(b, a), meeting) << round;
  }
  EXPECT_GT(overlapping, Scaled(500));
}

} // namespace
