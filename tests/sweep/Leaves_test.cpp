#include "Leaves.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

void ExpectWhole(const Parts& parts, std::size_t count) {
  const Leaves& leaves = parts.leaves;
  EXPECT_EQ(leaves.begin[0], 0u);
  EXPECT_EQ(leaves.begin[leaves.Count()], count);
  for (std::size_t leaf = 0; leaf < leaves.Count(); ++leaf) {
    ASSERT_LT(leaves.begin[leaf], leaves.begin[leaf + 1]);
    EXPECT_LE(leaves.begin[leaf + 1] - leaves.begin[leaf], static_cast<unsigned>(kLeafSize));
    std::uint32_t least = 0xffffffffu;
    for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
      least = std::min(least, parts.corners.Number(place));
      for (int c = 0; c < 3; ++c) {
        EXPECT_TRUE(Holds(parts.boxes.boxes[leaf], parts.corners.At(place, c)));
        EXPECT_TRUE(Holds(parts.boxes.bounds, parts.corners.At(place, c)));
      }
    }
    EXPECT_EQ(LeastNumber(parts.corners, leaves, leaf), least);
  }
}

TEST(Leaves, HoldEveryTriangleOnceInBoxesOutward) {
  for (const bool single : {true, false}) {
    const Mesh mesh = single ? Single(Bowl(40, 0.3)) : Bowl(40, 0.3);
    const Parts parts(mesh);
    EXPECT_EQ(parts.corners.IsSingle(), single);
    EXPECT_FALSE(parts.corners.IsReordered());
    ExpectWhole(parts, mesh.TriangleCount());
    EXPECT_LT(parts.leaves.Count(), mesh.TriangleCount() / 4);
  }
}

TEST(Leaves, BoundsAreExact) {
  Mesh mesh = Bowl(20, 0.1);
  mesh.corners[100] = {-1.0 - 0x1p-52, 0.1, 7.3};
  const Parts parts(mesh);
  EXPECT_EQ(parts.boxes.bounds.low[0], -1.0 - 0x1p-52);
  EXPECT_EQ(parts.boxes.bounds.high[2], 7.3);
}

Mesh Shuffled(const Mesh& mesh) {
  std::vector<std::size_t> order(mesh.TriangleCount());
  std::iota(order.begin(), order.end(), 0u);
  Shuffle(order, 7);
  Mesh shuffled;
  for (const std::size_t k : order) {
    sweep_shapes::AddTriangle(shuffled, mesh.corners[3 * k], mesh.corners[3 * k + 1],
                              mesh.corners[3 * k + 2]);
  }
  return shuffled;
}

TEST(Leaves, ScatteredTrianglesAreSorted) {
  const Mesh mesh = Bowl(60, 0.2);
  const Mesh shuffled = Shuffled(mesh);
  const Parts parts(shuffled);
  EXPECT_TRUE(parts.corners.IsReordered());
  ExpectWhole(parts, mesh.TriangleCount());
  EXPECT_LT(parts.leaves.Count(), mesh.TriangleCount() / 3);
  std::vector<std::uint32_t> numbers;
  for (std::size_t place = 0; place < parts.corners.Count(); ++place) {
    numbers.push_back(parts.corners.Number(place));
    const Coord3 p = parts.corners.At(place, 1);
    EXPECT_EQ(p.x, shuffled.corners[3 * numbers.back() + 1].x);
  }
  std::sort(numbers.begin(), numbers.end());
  for (std::size_t k = 0; k < numbers.size(); ++k)
    ASSERT_EQ(numbers[k], k);
}

/// The leaves are the same at any size and at any place: those that single precision cannot measure
/// are no worse.
TEST(Leaves, SizeAndPlaceOfABodyDoNotMatter) {
  Mesh mesh = Shuffled(Bowl(60, 0.2));
  for (Coord3& p : mesh.corners)
    p = {std::round(0x1p20 * p.x), std::round(0x1p20 * p.y), std::round(0x1p20 * p.z)};
  const Parts plain(mesh);
  ASSERT_TRUE(plain.corners.IsReordered());
  const auto expectTheSame = [&](const Mesh& other, int stray) {
    Parts parts(other);
    EXPECT_TRUE(parts.corners.IsReordered());
    ExpectWhole(parts, mesh.TriangleCount());
    ASSERT_NEAR(static_cast<double>(parts.leaves.Count()),
                static_cast<double>(plain.leaves.Count()), stray);
    for (std::size_t leaf = 0; stray == 0 && leaf < plain.leaves.Count(); ++leaf)
      ASSERT_EQ(parts.leaves.begin[leaf], plain.leaves.begin[leaf]);
  };
  for (const int exponent : {-990, -498, -130, 130, 498, 990}) {
    const double factor = std::ldexp(1.0, exponent);
    Mesh other = sweep_shapes::Stretched(mesh, {factor, factor, factor});
    expectTheSame(other, 0);
    if (exponent > 0) other.corners[1000] = {0.0, 0x1p1020, 0.0};
    expectTheSame(other, 32);
  }
  // Too far from the origin for single precision: four triangles to one unit in its last place.
  expectTheSame(sweep_shapes::Moved(mesh, {0x1p40, 0.0, -0x1p41}), 0);
  expectTheSame(sweep_shapes::Moved(mesh, {0x1p40, 0.0, 0.0}), 0);
  expectTheSame(sweep_shapes::Moved(mesh, {0.0, 0x1p40, 0.0}), 0);
  expectTheSame(sweep_shapes::Moved(mesh, {0.0, 0.0, 0x1p40}), 0);
}

TEST(Leaves, AHugeTriangleIsALeafOfItsOwn) {
  Mesh mesh = Bowl(10, 0.2);
  const std::size_t huge = 50;
  for (std::size_t c = 0; c < 3; ++c) {
    Coord3& p = mesh.corners[3 * huge + c];
    p = {p.x * 1e3, p.y * 1e3, p.z};
  }
  const Parts parts(mesh);
  for (std::size_t leaf = 0; leaf < parts.leaves.Count(); ++leaf) {
    const std::size_t begin = parts.leaves.begin[leaf];
    const std::size_t end = parts.leaves.begin[leaf + 1];
    if (begin <= huge && huge < end) {
      EXPECT_EQ(end - begin, 1u);
    }
  }
}

TEST(Leaves, PointsAtOnePlaceShareLeaves) {
  Mesh mesh;
  for (int k = 0; k < 4 * kLeafSize; ++k)
    sweep_shapes::AddTriangle(mesh, {1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, {1.0, 2.0, 3.0});
  const Parts parts(mesh);
  EXPECT_EQ(parts.leaves.Count(), 4u);
}

TEST(Leaves, MeasuredAgainAreTheSame) {
  const Parts parts(Soup(3, 500));
  LeafBoxes again;
  MeasureLeaves(parts.corners, parts.leaves, again);
  for (std::size_t leaf = 0; leaf < parts.leaves.Count(); ++leaf) {
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(again.boxes[leaf].low[k], parts.boxes.boxes[leaf].low[k]);
      EXPECT_EQ(again.boxes[leaf].high[k], parts.boxes.boxes[leaf].high[k]);
      EXPECT_EQ(again.bounds.low[k], parts.boxes.bounds.low[k]);
    }
  }
}

TEST(Leaves, AreTheSameForAnyTeam) {
  for (Mesh& mesh : LargeMeshes()) {
    for (const double shift : {0.0, 1000.0}) { // far away, runs are measured around their middle
      const Mesh moved = sweep_shapes::Moved(mesh, {shift, 0.0, 0.0});
      const Parts alone(moved);
      WithEachTeam([&](Team& team) {
        const Parts parts(moved, team);
        EXPECT_TRUE(SameBytes(parts.leaves.begin, alone.leaves.begin));
        EXPECT_TRUE(SameBytes(parts.boxes.boxes, alone.boxes.boxes));
        EXPECT_EQ(std::memcmp(&parts.boxes.bounds, &alone.boxes.bounds, sizeof alone.boxes.bounds),
                  0);
        EXPECT_EQ(parts.corners.IsReordered(), alone.corners.IsReordered());
        for (std::size_t place = 0; place < alone.corners.Count(); ++place)
          ASSERT_EQ(parts.corners.Number(place), alone.corners.Number(place));
        LeafBoxes measured;
        MeasureLeaves(alone.corners, alone.leaves, measured, team);
        EXPECT_TRUE(SameBytes(measured.boxes, alone.boxes.boxes));
      });
    }
  }
}

TEST(Leaves, EndWhereABlockEnds) {
  const Parts parts(Single(Bowl(120, 0.3)));
  const Array<std::uint32_t>& begin = parts.leaves.begin;
  EXPECT_TRUE(std::binary_search(begin.begin(), begin.end(), kTriangleBlock));
}

TEST(Box, RoundsOutwardAndKeepsMagnitudesFrom2ToTheMinus100On) {
  EXPECT_EQ(RoundedDown(0x1p-100), 0x1p-100f);
  EXPECT_EQ(RoundedUp(-0x1p-100), -0x1p-100f);
  const double less = std::nextafter(0x1p-100, 0.0);
  EXPECT_EQ(RoundedDown(less), 0.0f);
  EXPECT_EQ(RoundedUp(less), 0x1p-100f);
  EXPECT_EQ(RoundedDown(-less), -0x1p-100f);
  EXPECT_EQ(RoundedDown(std::nextafter(1.0, 0.0)), std::nextafter(1.0f, 0.0f));
  EXPECT_EQ(RoundedUp(std::nextafter(1.0, 2.0)), std::nextafter(1.0f, 2.0f));
}

} // namespace
