#include "Solidity.h"

#include "Bodies.h"
#include "RandomNumbers.h"
#include "TestScale.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_ask::BodyOf;
using sweep_shapes::AddQuad;
using sweep_shapes::AddTriangle;
using sweep_shapes::Append;

Mesh UnitBox() {
  return sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
}

Mesh TurnedOver(Mesh mesh) {
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
    std::swap(mesh.corners[k + 1], mesh.corners[k + 2]);
  return mesh;
}

/// Returns triangles with normals outwards when d is on the side from which a, b, c turn left.
Mesh Tetrahedron(const Coord3& a, const Coord3& b, const Coord3& c, const Coord3& d) {
  Mesh mesh;
  AddTriangle(mesh, a, c, b);
  AddTriangle(mesh, a, b, d);
  AddTriangle(mesh, b, c, d);
  AddTriangle(mesh, c, a, d);
  return mesh;
}

/// Returns a closed ball of 2 * count * (count - 1) triangles in single precision.
Mesh Ball(int count) {
  Mesh mesh;
  const double pi = 3.14159265358979323846;
  const auto at = [&](int i, int j) {
    if (j == 0 || j == count) return Coord3{0, 0, j == 0 ? -1.0 : 1.0};
    const double a = 2.0 * pi * (i % count) / count;
    const double b = pi * j / count - pi / 2.0;
    return Coord3{std::cos(a) * std::cos(b), std::sin(a) * std::cos(b), std::sin(b)};
  };
  for (int j = 0; j < count; ++j) {
    for (int i = 0; i < count; ++i) {
      if (j > 0) AddTriangle(mesh, at(i, j), at(i + 1, j), at(i, j + 1));
      if (j < count - 1) AddTriangle(mesh, at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    }
  }
  return Single(mesh);
}

Solidity Judged(const Mesh& mesh) {
  return BodyOf(mesh).IsSolid();
}

void ExpectEdge(const Solidity& solidity, SolidityFault fault, std::size_t triangle,
                std::size_t other, const Coord3& from, const Coord3& to) {
  EXPECT_EQ(solidity.fault, fault) << solidity.Reason();
  EXPECT_FALSE(solidity);
  EXPECT_TRUE(solidity.hasEdge);
  EXPECT_EQ(solidity.triangle, triangle);
  EXPECT_EQ(solidity.otherTriangle, other);
  EXPECT_TRUE(sweep_ask::SameBits(solidity.edgeFrom, from)) << solidity.Reason();
  EXPECT_TRUE(sweep_ask::SameBits(solidity.edgeTo, to)) << solidity.Reason();
}

void ExpectWhole(const Solidity& solidity, SolidityFault fault) {
  EXPECT_EQ(solidity.fault, fault) << solidity.Reason();
  EXPECT_EQ(static_cast<bool>(solidity), fault == SolidityFault::None);
  EXPECT_FALSE(solidity.hasEdge);
}

TEST(Solidity, ClosedBodiesAreSolids) {
  ExpectWhole(Judged(UnitBox()), SolidityFault::None);
  ExpectWhole(Judged(sweep_shapes::PlateWithHole(4, 2, 0, 1)), SolidityFault::None);
  ExpectWhole(Judged(Ball(40)), SolidityFault::None);
  EXPECT_EQ(Judged(UnitBox()).Reason(), "");
}

TEST(Solidity, AMissingTriangleLeavesAnOpenEdge) {
  // Triangle 1 of the box is (0, 0, 0), (1, 1, 0), (1, 0, 0). Triangle 0 shares its first edge.
  Mesh mesh = UnitBox();
  mesh.corners.erase(mesh.corners.begin() + 3, mesh.corners.begin() + 6);
  const Solidity solidity = Judged(mesh);
  ExpectEdge(solidity, SolidityFault::OpenEdge, 0, 0, {1, 1, 0}, {0, 0, 0});
  EXPECT_EQ(solidity.Reason(),
            "open edge: triangle 0 alone uses the edge from (1, 1, 0) to (0, 0, 0)");
}

TEST(Solidity, ATurnedTriangleHasTheWrongOrientation) {
  Mesh mesh = UnitBox();
  std::swap(mesh.corners[4], mesh.corners[5]);
  // Triangle 1 is now (0, 0, 0), (1, 0, 0), (1, 1, 0).
  const Solidity solidity = Judged(mesh);
  ExpectEdge(solidity, SolidityFault::WrongOrientation, 0, 1, {1, 1, 0}, {0, 0, 0});
  EXPECT_EQ(solidity.Reason(), "wrong orientation: triangles 0 and 1 use the edge from "
                               "(1, 1, 0) to (0, 0, 0) in the same direction");
}

TEST(Solidity, AFinMakesANonManifoldEdge) {
  Mesh mesh = UnitBox();
  AddTriangle(mesh, {0, 0, 0}, {1, 1, 0}, {5, 5, 5});
  const Solidity solidity = Judged(mesh);
  ExpectEdge(solidity, SolidityFault::NonManifoldEdge, 0, 1, {1, 1, 0}, {0, 0, 0});
  EXPECT_EQ(solidity.Reason(), "non-manifold edge: three or more triangles, the first of them 0 "
                               "and 1, use the edge from (1, 1, 0) to (0, 0, 0)");
}

TEST(Solidity, AnInsideOutBodyHasTheWrongOrientation) {
  const Solidity solidity = Judged(TurnedOver(UnitBox()));
  ExpectWhole(solidity, SolidityFault::WrongOrientation);
  EXPECT_EQ(solidity.Reason(), "wrong orientation: the component of triangle 0 is inside out");
}

TEST(Solidity, AComponentThatIsInsideOutIsNamed) {
  // The larger box makes the volume positive. A triangle without area comes first.
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {9, 9, 9});
  AddTriangle(mesh, {20, 0, 0}, {20, 0, 0}, {20, 1, 0});
  Append(mesh, TurnedOver(sweep_shapes::Box({20, 0, 0}, {21, 1, 1})));
  const Solidity beside = Judged(mesh);
  ExpectWhole(beside, SolidityFault::WrongOrientation);
  EXPECT_EQ(beside.triangle, 13u);
  // Where the small box touches the large one from outside, and inside the large one.
  for (const double x : {9.0, 8.0, 3.0}) {
    Mesh both = sweep_shapes::Box({0, 0, 0}, {9, 9, 9});
    Append(both, TurnedOver(sweep_shapes::Box({x, 0, 0}, {x + 1, 1, 1})));
    const Solidity judged = Judged(both);
    ExpectWhole(judged, x == 9.0 ? SolidityFault::WrongOrientation : SolidityFault::None);
  }
  // A cavity within a cavity, and a box that is turned outwards within a solid.
  Mesh nested = sweep_shapes::Box({0, 0, 0}, {9, 9, 9});
  Append(nested, TurnedOver(sweep_shapes::Box({1, 1, 1}, {8, 8, 8})));
  Mesh twice = nested;
  Append(twice, TurnedOver(sweep_shapes::Box({2, 2, 2}, {3, 3, 3})));
  EXPECT_EQ(Judged(twice).triangle, 24u);
  ExpectWhole(Judged(twice), SolidityFault::WrongOrientation);
  Append(nested, sweep_shapes::Box({2, 2, 2}, {4, 4, 4}));
  Append(nested, sweep_shapes::Box({3, 3, 3}, {5, 5, 5}));
  ExpectWhole(Judged(nested), SolidityFault::None);
}

/// Adds two boxes that share the edge from (1, 1, 0) to (1, 1, 1), in one of many orders.
Mesh BoxesAtAnEdge(const Mesh& first, const Mesh& second, RandomNumbers& random) {
  std::vector<std::array<Coord3, 3>> triangles;
  for (const Mesh* mesh : {&first, &second}) {
    for (std::size_t k = 0; k < mesh->corners.size(); k += 3)
      triangles.push_back({mesh->corners[k], mesh->corners[k + 1], mesh->corners[k + 2]});
  }
  for (std::size_t k = triangles.size(); k > 1; --k)
    std::swap(triangles[k - 1],
              triangles[static_cast<std::size_t>(random.Below(static_cast<int>(k)))]);
  Mesh mesh;
  for (const auto& triangle : triangles)
    AddTriangle(mesh, triangle[0], triangle[1], triangle[2]);
  return mesh;
}

TEST(Solidity, ABoxInsideOutAtTheEdgeOfAnotherIsNoticedInAnyOrder) {
  RandomNumbers random(8);
  const Mesh large = sweep_shapes::Box({-9, -9, 0}, {1, 1, 1});
  const Mesh small = sweep_shapes::Box({1, 1, 0}, {2, 2, 1});
  const Mesh cavity = TurnedOver(sweep_shapes::Box({-3, -3, 0.25}, {-2, -2, 0.75}));
  const Mesh other = TurnedOver(sweep_shapes::Box({-2, -2, 0.25}, {-1, -1, 0.75}));
  for (int round = 0; round < 200; ++round) {
    ExpectWhole(Judged(BoxesAtAnEdge(large, small, random)), SolidityFault::None);
    ExpectWhole(Judged(BoxesAtAnEdge(large, TurnedOver(small), random)),
                SolidityFault::WrongOrientation);
    // Two cavities that share an edge, and one of them turned outwards.
    Mesh withCavity = large;
    Append(withCavity, cavity);
    ExpectWhole(Judged(BoxesAtAnEdge(withCavity, other, random)), SolidityFault::None);
    const Solidity wrong = Judged(BoxesAtAnEdge(withCavity, TurnedOver(other), random));
    ExpectWhole(wrong, SolidityFault::None); // a box within a solid may overlap it
  }
}

TEST(Solidity, ABoxInsideOutAtAWholeFaceOfAnotherIsNoticedInAnyOrder) {
  // Each edge of the common face has four uses, some in the same half-plane.
  RandomNumbers random(9);
  const Mesh large = sweep_shapes::Box({0, 0, 0}, {9, 1, 1});
  const Mesh small = sweep_shapes::Box({9, 0, 0}, {10, 1, 1});
  for (int round = 0; round < 200; ++round) {
    ExpectWhole(Judged(BoxesAtAnEdge(large, small, random)), SolidityFault::None);
    ExpectWhole(Judged(BoxesAtAnEdge(large, TurnedOver(small), random)),
                SolidityFault::WrongOrientation);
  }
}

TEST(Solidity, ABoxInsideOutBesideCopiesOfAnotherIsNoticedInAnyOrder) {
  RandomNumbers random(11);
  Mesh twice = UnitBox();
  Append(twice, UnitBox());
  Append(twice, sweep_shapes::Box({20, 20, 20}, {26, 26, 26}));
  // The side x = 1 of the box touches the copies along one edge.
  const Mesh box = sweep_shapes::Box({1, 1, 0}, {2, 3, 1});
  for (int round = 0; round < 200; ++round) {
    ExpectWhole(Judged(BoxesAtAnEdge(twice, box, random)), SolidityFault::None);
    ExpectWhole(Judged(BoxesAtAnEdge(twice, TurnedOver(box), random)),
                SolidityFault::WrongOrientation);
  }
}

TEST(Solidity, TrianglesWithoutAreaMayBeAtACrowdedEdge) {
  RandomNumbers random(10);
  Mesh mesh = sweep_shapes::Box({-9, -9, 0}, {1, 1, 1});
  Append(mesh, sweep_shapes::Box({1, 1, 0}, {2, 2, 1}));
  // Both directions of the edge once more, by triangles on its line.
  AddTriangle(mesh, {1, 1, 0}, {1, 1, 1}, {1, 1, 0.5});
  AddTriangle(mesh, {1, 1, 1}, {1, 1, 0}, {1, 1, 0.5});
  ExpectWhole(Judged(mesh), SolidityFault::None);
}

TEST(Solidity, NothingIsNotASolid) {
  ExpectWhole(Judged(Mesh{}), SolidityFault::NoVolume);
  Mesh points;
  AddTriangle(points, {1, 2, 3}, {1, 2, 3}, {1, 2, 3});
  AddTriangle(points, {1, 2, 3}, {4, 5, 6}, {1, 2, 3});
  ExpectWhole(Judged(points), SolidityFault::NoVolume);
  EXPECT_EQ(Judged(points).Reason(), "no volume: the triangles enclose nothing");
}

TEST(Solidity, APairOfSheetsEnclosesNothing) {
  // The coordinates are not on a lattice, so each volume in double is only nearly zero.
  Mesh sheets = Bowl(9, 0.37);
  for (Coord3& p : sheets.corners)
    p = {p.x * 0.1 + 0.3, p.y * 0.7 + 0.1, p.z + 0.77 * p.x};
  Append(sheets, TurnedOver(sheets));
  ExpectWhole(Judged(sheets), SolidityFault::NoVolume);
}

TEST(Solidity, TheSignOfTheVolumeIsExact) {
  // All corners are in the plane x = y, up to one step of the last corner.
  const double a = 0.1;
  const double b = 0.7;
  const double beyond = std::nextafter(b, 1.0);
  const double below = std::nextafter(b, 0.0);
  const Coord3 p{a, a, 0.3};
  const Coord3 q{1.3, 1.3, 0.9};
  const Coord3 r{0.9, 0.9, 2.7};
  ExpectWhole(Judged(Tetrahedron(p, q, r, {b, b, 0.5})), SolidityFault::NoVolume);
  // (q - p) x (r - p) = (1.2 * 2.4 - 0.6 * 0.8) * (1, -1, 0), which points to where x > y.
  ExpectWhole(Judged(Tetrahedron(p, q, r, {beyond, b, 0.5})), SolidityFault::None);
  ExpectWhole(Judged(Tetrahedron(p, q, r, {below, b, 0.5})), SolidityFault::WrongOrientation);
}

TEST(Solidity, ThinBodiesFarAwayAreMeasuredExactly) {
  // Away from the origin the volume is far below the rounding of its terms.
  const Coord3 far{0x1p20 + 0.1, 0x1p21 + 0.3, 0x1p19 + 0.7};
  for (const double height : {0x1p-31, -0x1p-31}) {
    Mesh mesh = Bowl(20, 0.31);
    Mesh lower = TurnedOver(mesh);
    for (Coord3& p : mesh.corners) {
      const bool isBorder = std::fabs(p.x) == 1.0 || std::fabs(p.y) == 1.0;
      if (!isBorder) p.z += height;
    }
    Append(mesh, lower);
    // Only the order of the heights matters, and a sum that rounds keeps it or makes both equal.
    ExpectWhole(Judged(sweep_shapes::Moved(mesh, far)),
                height > 0.0 ? SolidityFault::None : SolidityFault::WrongOrientation);
  }
}

TEST(Solidity, ComponentsMayTouch) {
  Mesh inFaces = UnitBox();
  Append(inFaces, sweep_shapes::Box({1, 0, 0}, {2, 1, 1}));
  ExpectWhole(Judged(inFaces), SolidityFault::None);
  Mesh inAnEdge = UnitBox();
  Append(inAnEdge, sweep_shapes::Box({1, 1, 0}, {2, 2, 1}));
  ExpectWhole(Judged(inAnEdge), SolidityFault::None);
  Mesh inACorner = UnitBox();
  Append(inACorner, sweep_shapes::Box({1, 1, 1}, {2, 2, 2}));
  ExpectWhole(Judged(inACorner), SolidityFault::None);
}

TEST(Solidity, CavitiesAreTurnedInwards) {
  Mesh shell = sweep_shapes::Box({0, 0, 0}, {9, 9, 9});
  Append(shell, TurnedOver(sweep_shapes::Box({2, 2, 2}, {7, 7, 7})));
  Append(shell, sweep_shapes::Box({3, 3, 3}, {5, 5, 5}));
  ExpectWhole(Judged(shell), SolidityFault::None);
  ExpectWhole(Judged(TurnedOver(shell)), SolidityFault::WrongOrientation);
}

TEST(Solidity, ZerosOfBothSignsAreOneVertex) {
  Mesh mesh = UnitBox();
  RandomNumbers random(5);
  for (Coord3& p : mesh.corners) {
    for (double* c : {&p.x, &p.y, &p.z})
      if (*c == 0.0 && random.Below(2) == 0) *c = -0.0;
  }
  ExpectWhole(Judged(mesh), SolidityFault::None);
  // Single precision does not hold 0.1.
  for (Coord3& p : mesh.corners)
    p = {p.x * 0.1, p.y * 0.1, p.z * 0.1};
  ExpectWhole(Judged(mesh), SolidityFault::None);
}

TEST(Solidity, DegenerateTrianglesWithEqualCornersCountAsAbsent) {
  Mesh mesh = UnitBox();
  AddTriangle(mesh, {0, 0, 0}, {0, 0, 0}, {1, 1, 0});
  AddTriangle(mesh, {1, 0, 0}, {0, 0, 0}, {1, 0, 0});
  AddTriangle(mesh, {7, 0, 0}, {8, 0, 0}, {8, 0, 0});
  AddTriangle(mesh, {5, 5, 5}, {5, 5, 5}, {5, 5, 5});
  ExpectWhole(Judged(mesh), SolidityFault::None);
  mesh.corners.erase(mesh.corners.begin() + 3, mesh.corners.begin() + 6);
  ExpectEdge(Judged(mesh), SolidityFault::OpenEdge, 0, 0, {1, 1, 0}, {0, 0, 0});
}

TEST(Solidity, AVertexInsideAnEdgeLeavesAGapThatASegmentCloses) {
  // The bottom is divided at the middle of the edge from (0, 0, 0) to (1, 0, 0), the front is not.
  Mesh mesh = UnitBox();
  mesh.corners.erase(mesh.corners.begin(), mesh.corners.begin() + 6);
  const Coord3 middle{0.5, 0, 0};
  AddTriangle(mesh, {0, 0, 0}, {0, 1, 0}, middle);
  AddTriangle(mesh, {0, 1, 0}, {1, 1, 0}, middle);
  AddTriangle(mesh, {1, 1, 0}, {1, 0, 0}, middle);
  // Without the bottom the front is triangles 2 and 3, which begins at (0, 0, 0).
  ExpectEdge(Judged(mesh), SolidityFault::OpenEdge, 2, 2, {0, 0, 0}, {1, 0, 0});
  AddTriangle(mesh, middle, {1, 0, 0}, {0, 0, 0});
  ExpectWhole(Judged(mesh), SolidityFault::None);
}

TEST(Solidity, SkippedTrianglesCountAsAbsentAndKeepTheirNumbers) {
  Mesh mesh;
  AddTriangle(mesh, {0, 0, 0}, {std::nan(""), 0, 0}, {1, 1, 1});
  Append(mesh, UnitBox());
  ExpectWhole(Judged(mesh), SolidityFault::None);
  mesh.corners[3].x = std::numeric_limits<double>::infinity();
  // Triangle 1 was (0, 0, 0), (0, 1, 0), (1, 1, 0).
  ExpectEdge(Judged(mesh), SolidityFault::OpenEdge, 2, 2, {0, 0, 0}, {1, 1, 0});
}

TEST(Solidity, CornersThatAreNumbersOfVerticesAreComparedByCoordinates) {
  const double vertices[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  const std::uint32_t corners[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 4, 3};
  const Solidity solidity = Body({vertices, 5, corners, 4}).IsSolid();
  ExpectWhole(solidity, SolidityFault::None);
  const Solidity open = Body({vertices, 5, corners, 3}).IsSolid();
  ExpectEdge(open, SolidityFault::OpenEdge, 0, 0, {0, 0, 0}, {0, 1, 0});
}

TEST(Solidity, HoldsAtBothEndsOfTheRange) {
  for (const double size : {0x1p1023, 0x1p-1070, 0x1p121, 0x1p-101}) {
    Mesh mesh = sweep_shapes::Box({-size, -size, -size}, {size, 0, size});
    ExpectWhole(Judged(mesh), SolidityFault::None);
    ExpectWhole(Judged(TurnedOver(mesh)), SolidityFault::WrongOrientation);
    Mesh both = mesh;
    Append(both, TurnedOver(sweep_shapes::Box({-size, size / 2, 0}, {size, size, size})));
    ExpectWhole(Judged(both), SolidityFault::WrongOrientation);
    EXPECT_EQ(Judged(both).triangle, 12u);
  }
}

TEST(Solidity, MovedBodiesAreJudgedWhereTheyAre) {
  const Body body = BodyOf(Ball(20));
  EXPECT_TRUE(body.IsSolid());
  gsl_Matrix turn;
  turn.m[0][0] = turn.m[1][1] = 0.6;
  turn.m[0][1] = 0.8;
  turn.m[1][0] = -0.8;
  turn.isIdentity = 0;
  EXPECT_TRUE(body.Moved(turn).IsSolid());
  gsl_Matrix mirror;
  mirror.m[2][2] = -1.0;
  mirror.isIdentity = 0;
  ExpectWhole(body.Moved(mirror).IsSolid(), SolidityFault::WrongOrientation);
  gsl_Matrix flat;
  flat.m[2][2] = 0.0;
  flat.isIdentity = 0;
  ExpectWhole(body.Moved(flat).IsSolid(), SolidityFault::NoVolume);
}

/// Finds the same by counting in a map, without volumes.
Solidity Counted(const Mesh& mesh) {
  using Point = std::array<double, 3>;
  struct Uses {
    std::vector<std::size_t> forward, backward;
  };
  std::map<std::pair<Point, Point>, Uses> edges;
  const auto point = [&](std::size_t k) {
    return Point{mesh.corners[k].x, mesh.corners[k].y, mesh.corners[k].z};
  };
  const auto eachEdge = [&](const auto& work) {
    for (std::size_t t = 0; 3 * t < mesh.corners.size(); ++t) {
      const Point p[3] = {point(3 * t), point(3 * t + 1), point(3 * t + 2)};
      if (p[0] == p[1] || p[1] == p[2] || p[2] == p[0]) continue;
      for (std::size_t k = 0; k < 3; ++k)
        work(t, p[k], p[(k + 1) % 3]);
    }
  };
  eachEdge([&](std::size_t t, const Point& from, const Point& to) {
    if (from < to) {
      edges[{from, to}].forward.push_back(t);
    } else {
      edges[{to, from}].backward.push_back(t);
    }
  });
  Solidity found;
  eachEdge([&](std::size_t t, const Point& from, const Point& to) {
    const Uses& uses = edges[{std::min(from, to), std::max(from, to)}];
    if (found.hasEdge || uses.forward.size() == uses.backward.size()) return;
    std::vector<std::size_t> all = uses.forward;
    all.insert(all.end(), uses.backward.begin(), uses.backward.end());
    std::sort(all.begin(), all.end());
    found.hasEdge = true;
    found.triangle = t;
    found.otherTriangle = all.size() > 1 ? all[1] : t;
    found.edgeFrom = {from[0], from[1], from[2]};
    found.edgeTo = {to[0], to[1], to[2]};
    found.fault = all.size() == 1   ? SolidityFault::OpenEdge
                  : all.size() == 2 ? SolidityFault::WrongOrientation
                                    : SolidityFault::NonManifoldEdge;
  });
  return found;
}

/// Removes, turns, repeats and moves a few triangles.
void Damage(Mesh& mesh, RandomNumbers& random) {
  for (int k = random.Below(4); k > 0; --k) {
    const auto t =
        static_cast<std::size_t>(random.Below(static_cast<int>(mesh.corners.size() / 3)));
    const auto at = mesh.corners.begin() + static_cast<std::ptrdiff_t>(3 * t);
    switch (random.Below(5)) {
    case 0:
      mesh.corners.erase(at, at + 3);
      break;
    case 1:
      std::swap(at[1], at[2]);
      break;
    case 2: {
      const Coord3 again[3] = {at[0], at[1], at[2]};
      mesh.corners.insert(mesh.corners.end(), again, again + 3);
      break;
    }
    case 3:
      at[0].x += 0x1p-30;
      break;
    default:
      at[2] = at[1];
      break;
    }
  }
}

TEST(Solidity, AgreesWithACountOfAllEdges) {
  RandomNumbers random(20260713);
  int whole = 0;
  int faults[5] = {};
  for (int round = 0; round < Scaled(1000); ++round) {
    Mesh mesh = Ball(4 + random.Below(20));
    if (random.Below(4) == 0) Append(mesh, mesh);
    if (random.Below(3) == 0) Append(mesh, sweep_shapes::Moved(UnitBox(), {5, 5, 5}));
    if (random.Below(2) == 0) {
      for (Coord3& p : mesh.corners)
        p.z *= 0.1;
    }
    Damage(mesh, random);
    if (random.Below(2) == 0) {
      for (std::size_t k = mesh.corners.size() / 3; k > 1; --k) {
        const auto other = static_cast<std::size_t>(random.Below(static_cast<int>(k)));
        for (std::size_t c = 0; c < 3; ++c)
          std::swap(mesh.corners[3 * (k - 1) + c], mesh.corners[3 * other + c]);
      }
    }
    const Solidity expected = Counted(mesh);
    const Solidity actual = Judged(mesh);
    ++faults[static_cast<int>(actual.fault)];
    if (!expected.hasEdge) {
      ++whole;
      ExpectWhole(actual, SolidityFault::None);
    } else {
      ExpectEdge(actual, expected.fault, expected.triangle, expected.otherTriangle,
                 expected.edgeFrom, expected.edgeTo);
    }
    if (HasFailure()) FAIL() << "round " << round;
  }
  EXPECT_GT(whole, Scaled(100));
  for (const SolidityFault fault :
       {SolidityFault::OpenEdge, SolidityFault::NonManifoldEdge, SolidityFault::WrongOrientation}) {
    EXPECT_GT(faults[static_cast<int>(fault)], Scaled(40));
  }
}

} // namespace
