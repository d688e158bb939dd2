#include "PreparedBody.h"

#include "Bodies.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

bool IsComfortable(double coordinate) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {0.0, 0.0, 0.0}, {1.0, 0.0, -coordinate}, {0.0, 1.0, 0.0});
  return PreparedBody(ViewOf(mesh)).IsComfortable();
}

TEST(PreparedBody, IsComfortableUpToItsLimits) {
  EXPECT_TRUE(IsComfortable(0.0));
  EXPECT_TRUE(IsComfortable(0x1p-100));
  EXPECT_FALSE(IsComfortable(std::nextafter(0x1p-100, 0.0)));
  EXPECT_FALSE(IsComfortable(0x1p-101)); // in single precision
  EXPECT_TRUE(IsComfortable(0x1p120));
  EXPECT_FALSE(IsComfortable(std::nextafter(0x1p120, 0x1p121)));
  EXPECT_FALSE(IsComfortable(0x1p121));
}

TEST(PreparedBody, VerticesOfNoTriangleDoNotCount) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double vertices[] = {0.0, 0.0, 0.0, 1.0,    0.0, 0.0, 0.0,     1.0,
                             0.0, 0.5, 0.5, 1e-200, 0.5, 0.5, infinity};
  const std::uint32_t corners[] = {0, 1, 2, 0, 1, 4};
  const auto isComfortable = [&](std::uint32_t third) {
    const std::uint32_t of[] = {0, 1, third, 0, 1, 4};
    return PreparedBody(gsl_sweep::TriangleView{vertices, 5, of, 2}).IsComfortable();
  };
  EXPECT_EQ(gsl_sweep::Body(gsl_sweep::TriangleView{vertices, 5, corners, 2}).SkippedCount(), 1u);
  EXPECT_TRUE(isComfortable(2)); // the tiny vertex is of no triangle, the infinite one of a skipped
  EXPECT_FALSE(isComfortable(3)); // the tiny vertex takes part
}

TEST(PreparedBody, IsMadeOnceByManyThreads) {
  const Mesh mesh = Bowl(60, 0.3);
  const PreparedBody body(ViewOf(mesh));
  const std::size_t before = body.Bytes();
  const Tree<float>* single[4] = {};
  const Tree<double>* exact[4] = {};
  std::vector<std::thread> threads;
  for (int k = 0; k < 4; ++k) {
    threads.emplace_back([&, k] {
      exact[k] = &body.DoubleTree();
      single[k] = &body.SingleTree();
      body.MakeSlabs();
      body.MakeFine();
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  for (int k = 1; k < 4; ++k) {
    EXPECT_EQ(single[k], single[0]);
    EXPECT_EQ(exact[k], exact[0]);
  }
  ASSERT_NE(body.FineIfMade(), nullptr);
  EXPECT_EQ(body.FineIfMade()->slabs->nodes.size(), body.FineIfMade()->tree.nodes.size());
  ASSERT_NE(body.SlabsIfMade(), nullptr);
  EXPECT_EQ(body.SlabsIfMade()->nodes.size(), single[0]->nodes.size());
  EXPECT_GT(body.Bytes(), before);
}

TEST(PreparedBody, LeavesAreMadeOnceByManyThreads) {
  const Mesh mesh = Soup(5, 3000); // in no order, so that making the leaves sorts it
  const PreparedBody body(ViewOf(mesh));
  EXPECT_EQ(body.TriangleCount(), 3000u);
  std::uint32_t first[4] = {};
  double low[4] = {};
  std::vector<std::thread> threads;
  for (int k = 0; k < 4; ++k) {
    threads.emplace_back([&, k] {
      if (k % 2 == 0) low[k] = body.Bounds().low[0];
      first[k] = body.Triangles().Number(0);
      if (k % 2 != 0) low[k] = body.Bounds().low[0];
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_TRUE(body.Triangles().IsReordered());
  double least = mesh.corners[0].x;
  for (const Coord3& p : mesh.corners)
    least = std::min(least, p.x);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(first[k], first[0]);
    EXPECT_EQ(low[k], least);
  }
}

TEST(PreparedBody, AFineTreeThatIsGivenUpIsMadeLater) {
  const Mesh mesh = Bowl(200, 0.3);
  const PreparedBody body(ViewOf(mesh));
  int asked = 0;
  body.MakeFine([&asked] { return ++asked < 0; });
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(body.FineIfMade(), nullptr);
  EXPECT_THROW(body.MakeFine([]() -> bool { throw std::runtime_error("no"); }), std::runtime_error);
  EXPECT_EQ(body.FineIfMade(), nullptr);
  body.MakeFine([&asked] { return ++asked > 0; });
  EXPECT_GT(asked, 1);
  EXPECT_NE(body.FineIfMade(), nullptr);
}

TEST(PreparedBody, WhatTheCallerThrowsIsNotTakenForAShortageOfMemory) {
  const Mesh mesh = Bowl(200, 0.3);
  const PreparedBody body(ViewOf(mesh));
  const auto throws = []() -> bool { throw std::bad_alloc(); };
  EXPECT_THROW(body.MakeSlabs(throws), std::bad_alloc);
  EXPECT_THROW(body.MakeFine(throws), std::bad_alloc);
  EXPECT_EQ(body.SlabsIfMade(), nullptr);
  EXPECT_EQ(body.FineIfMade(), nullptr);
  body.MakeSlabs();
  body.MakeFine();
  EXPECT_NE(body.SlabsIfMade(), nullptr);
  EXPECT_NE(body.FineIfMade(), nullptr);
}

TEST(PreparedBody, CountsTheMemoryOfItsComponents) {
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  const PreparedBody one(ViewOf(mesh));
  const std::size_t before = one.Bytes();
  EXPECT_TRUE(one.AsSolid());
  EXPECT_GE(one.Bytes(), before + sizeof(std::uint32_t));
  // With several components each triangle has the number of its own.
  for (int k = 1; k < 100; ++k)
    sweep_shapes::Append(mesh, sweep_shapes::Box({2.0 * k, 0, 0}, {2.0 * k + 1, 1, 1}));
  const PreparedBody many(ViewOf(mesh));
  const std::size_t manyBefore = many.Bytes();
  EXPECT_TRUE(many.AsSolid());
  EXPECT_GE(many.Bytes(), manyBefore + 1300 * sizeof(std::uint32_t));
  EXPECT_EQ(many.ComponentOf(0), many.ComponentOf(11));
  EXPECT_EQ(many.Components().size(), 100u);
}

TEST(PreparedBody, IsDistinctAndCountedItselfWithoutCopies) {
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  sweep_shapes::Append(mesh, sweep_shapes::Box({1, 1, 0}, {2, 2, 1})); // one edge has four uses
  const PreparedBody body(ViewOf(mesh));
  EXPECT_EQ(&body.Distinct(), &body);
  EXPECT_EQ(&body.Counted(), &body);
  EXPECT_EQ(body.WeightOf(7), 1);
  EXPECT_EQ(body.WholeNumber(7), 7u);
}

TEST(PreparedBody, CopiesOfTrianglesCountAtOnce) {
  // A box, a wall of zero thickness, and two more boxes at the place of the first.
  const Mesh box = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  Mesh mesh = box;
  sweep_shapes::Append(mesh, Sheet(3, 1));
  sweep_shapes::Append(mesh, TurnedOver(Sheet(3, 1)));
  sweep_shapes::Append(mesh, box);
  sweep_shapes::Append(mesh, box);
  const PreparedBody body(ViewOf(mesh));
  EXPECT_TRUE(body.AsSolid());
  const std::size_t before = PreparedBody(ViewOf(mesh)).Bytes();
  const PreparedBody& distinct = body.Distinct();
  ASSERT_EQ(distinct.TriangleCount(), 14u);
  for (std::uint32_t number = 0; number < 14; ++number)
    EXPECT_EQ(distinct.WholeNumber(number), number);
  const PreparedBody& counted = body.Counted();
  ASSERT_EQ(counted.TriangleCount(), 12u);
  for (std::size_t place = 0; place < 12; ++place)
    EXPECT_EQ(counted.WeightOf(place), 3) << place;
  EXPECT_GT(body.Bytes(), before + distinct.Bytes() + counted.Bytes());
}

TEST(PreparedBody, ATriangleAfterCopiesKeepsItsNumberInTheWhole) {
  // Two boxes at one place, then another box beside them.
  const Mesh box = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  Mesh mesh = box;
  sweep_shapes::Append(mesh, box);
  sweep_shapes::Append(mesh, sweep_shapes::Box({2, 0, 0}, {3, 1, 1}));
  const PreparedBody body(ViewOf(mesh));
  EXPECT_TRUE(body.AsSolid());
  const PreparedBody& distinct = body.Distinct();
  ASSERT_EQ(distinct.TriangleCount(), 24u);
  for (std::uint32_t number = 0; number < 24; ++number)
    EXPECT_EQ(distinct.WholeNumber(number), number < 12 ? number : number + 12);
}

TEST(PreparedBody, MemoryIsTheSumOfItsParts) {
  const Mesh mesh = Bowl(30, 0.3);
  const PreparedBody body(ViewOf(mesh));
  const std::size_t unprepared = body.Bytes();
  const std::size_t leaves = body.Triangles().Bytes() + body.Runs().begin.Bytes();
  EXPECT_EQ(unprepared, leaves + body.Runs().Count() * sizeof(Box<float>));
  const std::size_t tree = body.SingleTree().Bytes();
  EXPECT_EQ(body.Bytes(), leaves + tree);
}

TEST(PreparedBody, AComponentOfManyThatIsInsideOutIsFound) {
  // Nested boxes are shells. The walls of boxes 60 and 70 face the wrong way.
  Mesh mesh;
  const auto add = [&mesh](int k, bool isTurned) {
    const double reach = 100.0 - k;
    const Mesh box = sweep_shapes::Box({-reach, -reach, -reach}, {reach, reach, reach});
    sweep_shapes::Append(mesh, isTurned ? TurnedOver(box) : box);
  };
  for (int k = 0; k < 80; ++k)
    add(k, k % 2 == 1);
  EXPECT_TRUE(PreparedBody(ViewOf(mesh)).AsSolid());
  mesh = Mesh();
  for (int k = 0; k < 80; ++k)
    add(k, k % 2 == 1 || k == 60 || k == 70);
  const Solidity fault = PreparedBody(ViewOf(mesh)).AsSolid();
  EXPECT_EQ(fault.fault, SolidityFault::WrongOrientation);
  EXPECT_EQ(fault.triangle, 12u * 60);
}

TEST(PreparedBody, SlabsThatAreGivenUpAreMadeLater) {
  const Mesh mesh = Bowl(200, 0.3);
  const PreparedBody body(ViewOf(mesh));
  body.MakeSlabs([] { return false; });
  EXPECT_EQ(body.SlabsIfMade(), nullptr);
  body.MakeSlabs();
  EXPECT_NE(body.SlabsIfMade(), nullptr);
}

TEST(PreparedBody, DeservesAFineTreeAfterManyVisits) {
  const Mesh mesh = Bowl(100, 0.3); // 20000 triangles
  const PreparedBody body(ViewOf(mesh));
  body.CountVisits(29999);
  EXPECT_FALSE(body.DeservesFine());
  body.CountVisits(1);
  EXPECT_TRUE(body.DeservesFine());
}

TEST(PreparedBody, MovedEqualsABodyMadeAgain) {
  gsl_Matrix matrix;
  matrix.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.3, -0.2, 0.9), 1.1);
  const Mesh mesh = Soup(21, 400);
  const PreparedBody body(ViewOf(mesh));
  Mesh moved = mesh;
  for (Coord3& p : moved.corners) {
    gsl_Point point(p.x, p.y, p.z);
    matrix.Transform(point);
    p = point.Coords();
  }
  const PreparedBody refitted(body, MovedVertices(body, matrix));
  const PreparedBody fresh(ViewOf(moved));
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(refitted.Bounds().low[k], fresh.Bounds().low[k]);
    EXPECT_EQ(refitted.Bounds().high[k], fresh.Bounds().high[k]);
    EXPECT_EQ(refitted.SingleTree().box.low[k], fresh.SingleTree().box.low[k]);
  }
  const Array<double> shifted = ShiftedVertices(body, {0.1, 0.2, 0.3});
  EXPECT_EQ(shifted[0], body.Triangles().VertexAt(0).x + 0.1);
  EXPECT_EQ(shifted[2], body.Triangles().VertexAt(0).z + 0.3);
}

TEST(PreparedBody, MovedOutOfRangeLosesTriangles) {
  Mesh mesh = Soup(2, 50);
  mesh.corners[3] = {1e300, 0.0, 0.0};
  const PreparedBody body(ViewOf(mesh));
  gsl_Matrix matrix;
  matrix.m[0][0] = 1e10;
  matrix.isIdentity = 0;
  const PreparedBody moved(body, MovedVertices(body, matrix));
  EXPECT_EQ(moved.Triangles().SkippedCount(), 1u);
  EXPECT_EQ(moved.Triangles().Count(), 49u);
  EXPECT_FALSE(moved.SingleTree().root.IsNone());
}

} // namespace
