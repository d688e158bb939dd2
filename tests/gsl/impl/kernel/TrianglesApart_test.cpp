#include "kernel/TrianglesApart.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"
#include "kernel/TriangleSweep.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace {

using gsl_kernel::AreApart;
using gsl_kernel::Coord3;
using gsl_kernel::kComputed;
using gsl_kernel::Measured3;
using gsl_kernel::SourcedTriangle;
using numbers::Above;
using numbers::kInfinity;
using numbers::kNaN;

constexpr double kTolerance = 1e-6;

SourcedTriangle At(const Coord3& p0, const Coord3& p1, const Coord3& p2) {
  return {{{p0, kComputed}, {p1, kComputed}, {p2, kComputed}}};
}

/// A right-angled triangle of this size in the plane z = 0, from `x` on.
SourcedTriangle Level(double x, double size = 1.0) {
  return At({x, 0.0, 0.0}, {x + size, 0.0, 0.0}, {x, size, 0.0});
}

TEST(TrianglesApart, LargestAndSmallestAreOfThree) {
  EXPECT_EQ(gsl_kernel::LargestOf(1.0, 3.0, 2.0), 3.0);
  EXPECT_EQ(gsl_kernel::SmallestOf(2.0, 3.0, 1.0), 1.0);
}

TEST(TrianglesApart, LargestAndSmallestIgnoreANaNOfTheFirstTwo) {
  EXPECT_EQ(gsl_kernel::LargestOf(kNaN, 1.0, 2.0), 2.0);
  EXPECT_EQ(gsl_kernel::LargestOf(3.0, kNaN, 2.0), 3.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::LargestOf(1.0, 2.0, kNaN)));
  EXPECT_EQ(gsl_kernel::SmallestOf(kNaN, 1.0, 2.0), 1.0);
  EXPECT_EQ(gsl_kernel::SmallestOf(1.0, kNaN, 2.0), 1.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::SmallestOf(1.0, 2.0, kNaN)));
}

TEST(TrianglesApart, BoxesHaveTheirGapTheirSizeAndTheirReach) {
  const SourcedTriangle a = At({-4.0, 1.0, 2.0}, {-3.0, 2.0, 2.0}, {-3.5, 1.5, 2.0});
  const SourcedTriangle s = At({1.0, 1.0, 2.0}, {2.0, 3.0, 2.0}, {1.5, 1.0, 2.0});
  for (const gsl_kernel::TwoBoxes& boxes :
       {gsl_kernel::TwoBoxes(a, s), gsl_kernel::TwoBoxes(s, a)}) {
    EXPECT_EQ(boxes.gap, 4.0) << "along x; along y and z they overlap";
    EXPECT_EQ(boxes.size, 6.0 + 2.0 + 0.0);
    EXPECT_EQ(boxes.reach, 4.0 + 3.0 + 2.0);
  }
}

TEST(TrianglesApart, SquaresAreOfTheDoubledAreaAndOfTheEdges) {
  const Coord3 corners[3] = {{0.0, 0.0, 1.0}, {3.0, 0.0, 1.0}, {0.0, 4.0, 1.0}};
  for (int k = 0; k < 3; ++k) {
    const gsl_kernel::TriangleSquares squares(
        At(corners[k], corners[(k + 1) % 3], corners[(k + 2) % 3]));
    EXPECT_EQ(squares.area, 144.0);
    EXPECT_EQ(squares.shortest, 9.0);
    EXPECT_EQ(squares.longest, 25.0);
  }
}

TEST(TrianglesApart, WeightsAreBelowWhereTheGapAndTheAreaExceedTheirLimits) {
  gsl_kernel::TwoBoxes boxes(Level(0.0), Level(2.0));
  gsl_kernel::TriangleSquares squares(Level(0.0));
  boxes.size = 4.0;
  squares.longest = 16.0;
  const auto areBelow = [&](double gap, double area, double tolerance2) {
    boxes.gap = gap;
    squares.area = area;
    return AreWeightsBelow(boxes, squares, tolerance2);
  };
  // The error is 2^-46 4^2 16, which is 2^-38. So the product must exceed 8 * 4 * 2^-38.
  EXPECT_FALSE(areBelow(0x1p-13, 0x1p-20, 0.0));
  EXPECT_TRUE(areBelow(Above(0x1p-13), 0x1p-20, 0.0));
  // With the square of the tolerance the sum is 2^-36.
  EXPECT_FALSE(areBelow(0x1p-11, 0x1p-20, 3.0 * 0x1p-38));
  EXPECT_TRUE(areBelow(Above(0x1p-11), 0x1p-20, 3.0 * 0x1p-38));
  // The square of the area must exceed 2^-34 16^2.
  EXPECT_FALSE(areBelow(1.0, 0x1p-26, 0.0));
  EXPECT_TRUE(areBelow(1.0, Above(0x1p-26), 0.0));
}

TEST(TrianglesApart, OrdinaryTrianglesWithAGapAreApartAndOthersAreNot) {
  EXPECT_TRUE(AreApart(Level(0.0), Level(1.1), 5.0, kTolerance));
  EXPECT_TRUE(AreApart(Level(1.1), Level(0.0), 5.0, kTolerance));
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.0), 5.0, kTolerance)) << "they touch";
  EXPECT_FALSE(AreApart(Level(0.0), Level(0.5), 5.0, kTolerance)) << "they overlap";
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.001), 5.0, kTolerance)) << "too narrow for the size";
}

TEST(TrianglesApart, TheGapMustBeWiderThanFourTolerances) {
  EXPECT_TRUE(AreApart(Level(0.0, 8.0), Level(9.0, 8.0), 5.0, 0.24));
  EXPECT_FALSE(AreApart(Level(0.0, 8.0), Level(9.0, 8.0), 5.0, 0.25));
}

TEST(TrianglesApart, TheGapMustBeWiderThanAPartOfTheSize) {
  constexpr double kGap = 0x1p-8;
  const auto areApart = [](double gap) {
    // The size is 2 and the gap along x, and 2 less kGap along y.
    const SourcedTriangle shadow =
        At({1.0 + gap, 0.0, 0.0}, {2.0 + gap, 0.0, 0.0}, {1.0 + gap, 2.0 - kGap, 0.0});
    return AreApart(Level(0.0), shadow, 5.0, 0.0);
  };
  EXPECT_FALSE(areApart(kGap)) << "2^-10 of the size 4";
  EXPECT_TRUE(areApart(kGap + 0x1p-40));
}

TEST(TrianglesApart, EveryEdgeMustBeLongerThanTwoTolerances) {
  const auto areApart = [](double edgeOfA, double edgeOfS) {
    const SourcedTriangle a = At({0.0, 0.0, 0.0}, {edgeOfA, 0.0, 0.0}, {2.0, 10.0, 0.0});
    const SourcedTriangle s = At({20.0, 0.0, 0.0}, {20.0 + edgeOfS, 0.0, 0.0}, {22.0, 10.0, 0.0});
    return AreApart(a, s, 5.0, 2.0);
  };
  EXPECT_FALSE(areApart(4.0, 5.0));
  EXPECT_FALSE(areApart(5.0, 4.0));
  EXPECT_TRUE(areApart(4.0 + 0x1p-20, 5.0));
  EXPECT_TRUE(areApart(5.0, 4.0 + 0x1p-20));
}

TEST(TrianglesApart, TriangleWhoseBandIsWiderThanTheGapIsNotDecided) {
  // The test of a triangle compares the weight times the square of the doubled area.
  constexpr double kWide = 0.01;
  const SourcedTriangle small = Level(0.0, 0.025), large = Level(1.0);
  double weights[3];
  EXPECT_TRUE(gsl_kernel::PointInTriangle(large.p[0].c, small.p[0].c, small.p[1].c, small.p[2].c,
                                          kWide, weights));
  EXPECT_FALSE(AreApart(small, large, 5.0, kWide));
  EXPECT_FALSE(AreApart(large, small, 5.0, kWide));
  EXPECT_TRUE(AreApart(small, large, 5.0, kTolerance));
}

TEST(TrianglesApart, TheTiltOfAThinTriangleAndTheDistanceFromTheOriginAddUp) {
  for (const double scale : {0x1p-40, 1.0, 0x1p40}) {
    // A is 1 long and 2^-16 high, and its shortest edge is about 2^-9 or 2^-11. The size is 4 and
    // the gap 1. So G l |n| is 2^-25 or 2^-27, and 2^-30 D^2 L^2 is 2^-26.
    const auto areApart = [scale](double shortest, double height, double longest) {
      const double z = scale * height;
      const SourcedTriangle a =
          At({0.0, 0.0, z}, {scale, 0.0, z}, {scale * shortest, scale * 0x1p-16, z});
      SourcedTriangle s = Level(2.0 * scale, scale);
      for (gsl_kernel::SourcedPoint& p : s.p)
        p.c.z = z;
      return AreApart(a, s, longest * scale, 0.0);
    };
    EXPECT_TRUE(areApart(0x1p-9, 0.0, 0.0)) << scale;
    EXPECT_FALSE(areApart(0x1p-11, 0.0, 0.0)) << scale;
    // 2^-25 D |n| times 2^13 is 2^-26, the rest of the product.
    EXPECT_TRUE(areApart(0x1p-9, 0.0, 0.5 * 0x1p13)) << scale;
    EXPECT_FALSE(areApart(0x1p-9, 0.0, 1.5 * 0x1p13)) << scale;
    EXPECT_TRUE(areApart(0x1p-9, 0.75 * 0x1p13, 0.0)) << scale;
    EXPECT_TRUE(areApart(0x1p-9, 0.0, 0.75 * 0x1p13)) << scale;
    EXPECT_FALSE(areApart(0x1p-9, 0.75 * 0x1p13, 0.75 * 0x1p13)) << scale;
  }
}

TEST(TrianglesApart, UnusualSizesAreNotDecided) {
  for (const double size : {1e-31, 1e51, 1e160}) {
    EXPECT_FALSE(AreApart(Level(0.0, size), Level(10.0 * size, size), size, 0.0)) << size;
  }
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.1), 1e7, kTolerance)) << "the way is long";
  const SourcedTriangle needle = At({1.1, 0.0, 0.0}, {2.1, 0.0, 0.0}, {1.1, 1e-6, 0.0});
  EXPECT_FALSE(AreApart(Level(0.0), needle, 5.0, kTolerance));
  EXPECT_FALSE(AreApart(needle, Level(0.0), 5.0, kTolerance));
  const SourcedTriangle flat = At({1.1, 0.0, 0.0}, {2.1, 0.0, 0.0}, {1.6, 0.0, 0.0});
  EXPECT_FALSE(AreApart(Level(0.0), flat, 5.0, kTolerance));
}

TEST(TrianglesApart, NaNAndInfinityAreNotDecided) {
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.1), kNaN, kTolerance));
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.1), 5.0, kNaN));
  EXPECT_FALSE(AreApart(Level(0.0), Level(1.1), kInfinity, kTolerance));
  for (const double odd : {kNaN, kInfinity, -kInfinity}) {
    for (int i = 0; i < 3; ++i) {
      for (double Coord3::*const axis : {&Coord3::x, &Coord3::y, &Coord3::z}) {
        SourcedTriangle tri = Level(1.1);
        tri.p[i].c.*axis = odd;
        EXPECT_FALSE(AreApart(Level(0.0), tri, 5.0, kTolerance)) << odd << " at " << i;
        EXPECT_FALSE(AreApart(tri, Level(0.0), 5.0, kTolerance)) << odd << " at " << i;
      }
    }
  }
}

/// A triangle of about the size 1 near z = 0, as thin as `width`.
SourcedTriangle Face(RandomNumbers& random, double width) {
  const double turn = random.In(0.0, 6.3), c = std::cos(turn), s = std::sin(turn);
  SourcedTriangle tri = {};
  for (gsl_kernel::SourcedPoint& p : tri.p) {
    const double x = random.In(-1.0, 1.0);
    const double y = random.In(-width, width);
    p = {{c * x - s * y, s * x + c * y, random.In(-0.2, 0.2)}, 0};
  }
  return tri;
}

TEST(TrianglesApart, NoStepFindsAContactOfShadowsThatAreApart) {
  constexpr std::uint64_t kSeed = 0xA9A27;
  std::printf("seed %" PRIu64 "\n", kSeed);
  RandomNumbers random(kSeed);
  const Measured3 up = gsl_kernel::Measure({0.0, 0.0, 1.0});
  long apart = 0, nearly = 0;
  for (long i = 0; i < Scaled(300000) && !testing::Test::HasFailure(); ++i) {
    const double tolerance = i % 4 == 0 ? std::pow(10.0, random.In(-9.0, -2.0)) : kTolerance;
    const SourcedTriangle a = Face(random, std::pow(10.0, random.In(-5.0, 0.0)));
    SourcedTriangle b = Face(random, std::pow(10.0, random.In(-5.0, 0.0)));
    const double aside = random.In(0.0, 2.2);
    const double ahead = random.In(1.0, 4.0);
    for (gsl_kernel::SourcedPoint& p : b.p)
      p.c = gsl_kernel::Add(p.c, {aside, 0.0, ahead});
    const Measured3 normal = gsl_kernel::NormalOf(a, 1e-10);
    const SourcedTriangle s = ProjectTriangleAlong(b, {a.p[0].c, normal}, up, {tolerance, 1e-10});
    if (!AreApart(a, s, 10.0, tolerance)) continue;
    ++apart;
    if (gsl_kernel::TwoBoxes(a, s).gap < 0.02) ++nearly;
    const gsl_kernel::PreparedEdges ofA(a, tolerance), ofS(s, tolerance);
    for (int k = 0; k < 9; ++k) {
      Coord3 p;
      double weights[2], w[3];
      EXPECT_FALSE(CrossEdges(ofA, k / 3, ofS, k % 3, tolerance, p, weights));
      if (k > 2) continue;
      EXPECT_FALSE(
          gsl_kernel::PointInTriangle(a.p[k].c, s.p[0].c, s.p[1].c, s.p[2].c, tolerance, w));
      EXPECT_FALSE(
          gsl_kernel::PointInTriangle(s.p[k].c, a.p[0].c, a.p[1].c, a.p[2].c, tolerance, w));
    }
  }
  EXPECT_GT(apart, Scaled(300000) / 20);
  EXPECT_GT(nearly, Scaled(300000) / 1000);
}

} // namespace
