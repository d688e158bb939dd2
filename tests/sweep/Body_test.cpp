#include "gsl_Sweep.h"

#include "Bodies.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_ask::BodyOf;

TEST(Body, CountsItsTriangles) {
  Mesh mesh = sweep_shapes::Box({0, 1, 2}, {3, 4, 5});
  const double infinity = std::numeric_limits<double>::infinity();
  sweep_shapes::AddTriangle(mesh, {0, 0, 0}, {9, 9, infinity}, {0, 0, 0});
  const Body body = BodyOf(mesh);
  EXPECT_EQ(body.TriangleCount(), 13u);
  EXPECT_EQ(body.SkippedCount(), 1u);
  Coord3 low{-7, -7, -7};
  Coord3 high = low;
  body.GetBounds(low, high);
  EXPECT_TRUE(sweep_ask::SameBits(low, Coord3{0, 1, 2}));
  EXPECT_TRUE(sweep_ask::SameBits(high, Coord3{3, 4, 5}));
  BodyOf(Mesh{}).GetBounds(low, high);
  EXPECT_TRUE(sweep_ask::SameBits(low, Coord3{0, 0, 0}));
  EXPECT_TRUE(sweep_ask::SameBits(high, Coord3{0, 0, 0}));
}

TEST(Body, WritesItsTrianglesInTheirOrder) {
  // Enough triangles that they are sorted for the search, the first and one in between skipped.
  const double infinity = std::numeric_limits<double>::infinity();
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {0, 0, 0}, {9, 9, infinity}, {0, 0, 0});
  const Mesh bowl = Bowl(8, 0.1);
  mesh.corners.insert(mesh.corners.end(), bowl.corners.begin(), bowl.corners.end());
  mesh.corners[3 * 50].y = -infinity;
  const Body body = BodyOf(mesh);
  ASSERT_EQ(3 * body.TriangleCount(), mesh.corners.size());
  std::vector<double> written(9 * body.TriangleCount() + 1, -77.0);
  body.GetTriangles(written.data());
  EXPECT_EQ(written.back(), -77.0);
  for (std::size_t k = 0; k < mesh.corners.size(); ++k) {
    const Coord3 found{written[3 * k], written[3 * k + 1], written[3 * k + 2]};
    if (k / 3 == 0 || k / 3 == 50) {
      EXPECT_TRUE(std::isnan(found.x) && std::isnan(found.y) && std::isnan(found.z)) << k;
    } else {
      EXPECT_TRUE(sweep_ask::SameBits(found, mesh.corners[k])) << k;
    }
  }
  BodyOf(Mesh{}).GetTriangles(nullptr);
}

TEST(Body, CopiesShareAndMovedFromBodiesCanBeAsked) {
  Body body = BodyOf(Bowl(50, 0.1));
  const Body copy = body;
  const Body taken = std::move(body);
  EXPECT_EQ(copy.TriangleCount(), 5000u);
  EXPECT_EQ(taken.TriangleCount(), 5000u);
  EXPECT_EQ(body.TriangleCount(), 5000u); // NOLINT(bugprone-use-after-move): that is the promise
  body = BodyOf(Mesh{});
  EXPECT_EQ(body.TriangleCount(), 0u);
  EXPECT_EQ(copy.TriangleCount(), 5000u);
}

TEST(Body, ReadsTheViewDuringConstructionOnly) {
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  const Body body = BodyOf(mesh);
  const Body below = BodyOf(sweep_shapes::Moved(mesh, {0, 0, -3}));
  for (Coord3& p : mesh.corners)
    p = {99, 99, 99};
  Question down;
  down.direction = {0, 0, -1};
  EXPECT_EQ(Pair(body, {below}).First(down).contact.travel, 2.0);
}

TEST(Body, WrongCornersAreRefused) {
  const double vertices[9] = {};
  const std::uint32_t corners[3] = {0, 1, 3};
  EXPECT_THROW(Body({vertices, 3, corners, 1}), std::invalid_argument);
}

TEST(Body, MirroredTurnsItsTrianglesOver) {
  gsl_Matrix mirror;
  mirror.m[0][0] = -1.0;
  mirror.isIdentity = 0;
  // Its normal points down, along the travel.
  Mesh plate;
  sweep_shapes::AddTriangle(plate, {0, 0, 0}, {0, 1, 0}, {1, 0, 0});
  const Body below = BodyOf(sweep_shapes::Box({-9, -9, -9}, {9, 9, -3}));
  Question down;
  down.direction = {0, 0, -1};
  down.oneSided = true;
  EXPECT_EQ(Pair(BodyOf(plate), {below}).First(down).contact.travel, 3.0);
  EXPECT_EQ(Pair(BodyOf(plate).Moved(mirror), {below}).First(down).status, SweepStatus::None);
}

TEST(Body, TakesFewBytesForEachTriangle) {
  const Mesh mesh = Single(Bowl(200, 0.3));
  const Body soup = BodyOf(mesh);
  Question question;
  question.direction = {0, 0, -1};
  const Pair pair(soup, {soup});
  for (int k = 0; k < 3; ++k)
    pair.First(question);
  EXPECT_LT(soup.MemoryBytes(), 140u * mesh.TriangleCount());
}

} // namespace
