#include "Grown.h"

#include "RandomNumbers.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "support/MeshView.h"

#include "gsl_Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using namespace gsl_sweep;
using gsl_mesh::Mesh;
using sweep_ask::BodyOf;
using sweep_shapes::AddTriangle;

/// Returns the corners of a grown mesh, three for each triangle.
std::vector<Coord3> GrownCorners(const Mesh& mesh, double e, double* deviation = nullptr) {
  const GrownVertices grown = GrowVertices(Corners(gsl_tools::ViewOf(mesh)), e);
  if (deviation != nullptr) *deviation = grown.deviation;
  std::vector<Coord3> corners;
  for (std::size_t k = 0; k < mesh.corners.size(); ++k) {
    const double* p = grown.vertices.data() + 3 * k;
    corners.push_back({p[0], p[1], p[2]});
  }
  return corners;
}

std::string RefusalOf(const Mesh& mesh, double e) {
  try {
    BodyOf(mesh).Grown(e);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return {};
}

/// Divides every triangle at its centre, and then the first two again.
Mesh Divided(const Mesh& mesh) {
  Mesh result;
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3) {
    const Coord3* c = mesh.corners.data() + k;
    const Coord3 sum = gsl_arithmetic::Add(gsl_arithmetic::Add(c[0], c[1]), c[2]);
    const Coord3 centre = gsl_arithmetic::Multiply(sum, 1.0 / 3.0);
    for (int j = 0; j < 3; ++j)
      AddTriangle(result, c[j], c[(j + 1) % 3], centre);
  }
  return result;
}

TEST(Grown, ABoxGrowsToExactlyTheBoxAroundIt) {
  for (const double e : {0.1, -0.1, 1e-4, -0.3, 7.0, 0.0}) {
    const Mesh box = sweep_shapes::Box({-1.0, -0.7, 0.3}, {1.9, 2.3, 5.1});
    const Mesh expected =
        sweep_shapes::Box({-1.0 - e, -0.7 - e, 0.3 - e}, {1.9 + e, 2.3 + e, 5.1 + e});
    double deviation = -1.0;
    const std::vector<Coord3> corners = GrownCorners(box, e, &deviation);
    EXPECT_LE(deviation, 0x1p-50);
    ASSERT_EQ(corners.size(), expected.corners.size());
    for (std::size_t k = 0; k < corners.size(); ++k) {
      EXPECT_EQ(corners[k].x, expected.corners[k].x);
      EXPECT_EQ(corners[k].y, expected.corners[k].y);
      EXPECT_EQ(corners[k].z, expected.corners[k].z);
    }
  }
}

TEST(Grown, TheTriangulationDoesNotMatter) {
  // Other diagonals, and divided faces whose new corners are up to rounding in the faces.
  Mesh turned;
  const Mesh box = sweep_shapes::Box({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  for (std::size_t k = 0; k < box.corners.size(); k += 6) {
    const Coord3* c = box.corners.data() + k; // a b c, a c d
    AddTriangle(turned, c[0], c[1], c[5]);
    AddTriangle(turned, c[1], c[2], c[5]);
  }
  // A corner of the box moves out along all axes, one inside a face along its normal, and one
  // inside the common edge of two faces along both normals.
  const auto expected = [](double c, double high) {
    return c == 0.0 ? -0.125 : c == high ? high + 0.125 : c;
  };
  for (const Mesh& mesh : {box, turned, Divided(box), Divided(turned)}) {
    const std::vector<Coord3> corners = GrownCorners(mesh, 0.125);
    for (std::size_t k = 0; k < corners.size(); ++k) {
      const Coord3& p = mesh.corners[k];
      EXPECT_NEAR(corners[k].x, expected(p.x, 1.0), 0x1p-50);
      EXPECT_NEAR(corners[k].y, expected(p.y, 2.0), 0x1p-50);
      EXPECT_NEAR(corners[k].z, expected(p.z, 3.0), 0x1p-50);
    }
  }
}

/// Around the origin; the inner radius is 1 / root(3).
Mesh Octahedron() {
  Mesh octahedron;
  for (int k = 0; k < 8; ++k) {
    const Coord3 x{(k & 1) != 0 ? 1.0 : -1.0, 0.0, 0.0};
    const Coord3 y{0.0, (k & 2) != 0 ? 1.0 : -1.0, 0.0};
    const Coord3 z{0.0, 0.0, (k & 4) != 0 ? 1.0 : -1.0};
    const bool isLeft = x.x * y.y * z.z > 0.0;
    AddTriangle(octahedron, x, isLeft ? y : z, isLeft ? z : y);
  }
  return octahedron;
}

TEST(Grown, PlanesThatAreObliqueMoveByE) {
  // The planes around each corner meet in one point again.
  double deviation = -1.0;
  const std::vector<Coord3> corners = GrownCorners(Octahedron(), 0.25, &deviation);
  EXPECT_LE(deviation, 0x1p-50);
  const double out = 1.0 + 0.25 * std::sqrt(3.0);
  for (const Coord3& p : corners) {
    EXPECT_NEAR(std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}), out, 0x1p-50);
    EXPECT_NEAR(std::min({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}), 0.0, 0x1p-50);
  }
}

TEST(Grown, PlanesThatCannotAllMoveByEReportTheirDeviation) {
  // Four planes meet at (0, 0, 1), two steep and two flat.
  Mesh tent;
  const Coord3 apex{0.0, 0.0, 1.0};
  const Coord3 ring[4] = {{1.0, 0.0, 0.0}, {0.0, 4.0, 0.0}, {-1.0, 0.0, 0.0}, {0.5, -4.0, 0.0}};
  for (int k = 0; k < 4; ++k)
    AddTriangle(tent, ring[k], ring[(k + 1) % 4], apex);
  double deviation = 0.0;
  const std::vector<Coord3> corners = GrownCorners(tent, 0.01, &deviation);
  EXPECT_GT(deviation, 1e-6);
  EXPECT_LT(deviation, 0.01);
  // No place near the one that was taken has a smaller sum of weighed squares.
  const auto sumAt = [&](const Coord3& p) {
    double sum = 0.0;
    for (int k = 0; k < 4; ++k) {
      const Coord3 u = gsl_arithmetic::Subtract(ring[k], apex);
      const Coord3 v = gsl_arithmetic::Subtract(ring[(k + 1) % 4], apex);
      const Coord3 n = gsl_arithmetic::Cross(u, v);
      const double length = gsl_arithmetic::Length(n);
      const double angle = std::atan2(length, gsl_arithmetic::Dot(u, v));
      const double off = gsl_arithmetic::Dot(n, gsl_arithmetic::Subtract(p, apex)) / length - 0.01;
      sum += angle * off * off;
    }
    return sum;
  };
  const Coord3 taken = corners[2];
  for (const Coord3& step : {Coord3{1e-5, 0, 0}, Coord3{0, 1e-5, 0}, Coord3{0, 0, 1e-5}}) {
    EXPECT_GT(sumAt(gsl_arithmetic::Add(taken, step)), sumAt(taken));
    EXPECT_GT(sumAt(gsl_arithmetic::Subtract(taken, step)), sumAt(taken));
  }
}

TEST(Grown, PlanesThatRoundingTellsApartMoveNoCornerAlongThem) {
  // A cylinder of facets in single precision: the two triangles of a facet are one plane, nearly.
  Mesh tube;
  constexpr int kSides = 24;
  const auto corner = [](int k, double z) {
    const double angle = 6.283185307179586 * (k % kSides) / kSides;
    return Coord3{static_cast<double>(static_cast<float>(3.0 * std::cos(angle))),
                  static_cast<double>(static_cast<float>(3.0 * std::sin(angle))),
                  static_cast<double>(static_cast<float>(z + 0.1 * std::sin(5.0 * angle)))};
  };
  for (int k = 0; k < kSides; ++k) {
    for (const double z : {0.0, 1.0}) {
      sweep_shapes::AddQuad(tube, corner(k, z), corner(k + 1, z), corner(k + 1, z + 1.0),
                            corner(k, z + 1.0));
    }
  }
  double deviation = 0.0;
  const std::vector<Coord3> corners = GrownCorners(tube, 0.5, &deviation);
  EXPECT_LT(deviation, 1e-3 * 0.5);
  for (std::size_t k = 0; k < corners.size(); ++k) {
    const double radius = std::hypot(corners[k].x, corners[k].y);
    EXPECT_NEAR(radius, 3.0 + 0.5 / std::cos(3.141592653589793 / kSides), 1e-3);
    EXPECT_NEAR(corners[k].z, tube.corners[k].z, 1e-3);
  }
}

TEST(Grown, EqualCoordinatesAreOneCorner) {
  Mesh box = sweep_shapes::Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  for (std::size_t k = 0; k < box.corners.size(); k += 2)
    if (box.corners[k].x == 0.0) box.corners[k].x = -0.0;
  for (const Coord3& p : GrownCorners(box, 0.25)) {
    EXPECT_TRUE(p.x == -0.25 || p.x == 1.25);
    EXPECT_TRUE(p.y == -0.25 || p.y == 1.25);
    EXPECT_TRUE(p.z == -0.25 || p.z == 1.25);
  }
}

TEST(Grown, TrianglesWithoutAreaFollowTheirCorners) {
  Mesh box = sweep_shapes::Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  AddTriangle(box, {0, 0, 0}, {0, 0, 1}, {0, 0, 1});
  AddTriangle(box, {1, 1, 1}, {1, 1, 1}, {1, 1, 1});
  const std::vector<Coord3> corners = GrownCorners(box, 0.5);
  EXPECT_EQ(corners[36].z, -0.5);
  EXPECT_EQ(corners[37].z, 1.5);
  EXPECT_EQ(corners[41].x, 1.5);
}

TEST(Grown, TurningOverIsRefusedWithTheFirstTriangle) {
  const Mesh plate = sweep_shapes::Box({0.0, 0.0, 0.0}, {4.0, 4.0, 0.5});
  EXPECT_EQ(RefusalOf(plate, -0.24), "");
  // The walls are triangles 4 and up. At -0.25 they lose their area.
  EXPECT_EQ(RefusalOf(plate, -0.25), "triangle 4 turns over when the body grows by -0.25");
  EXPECT_EQ(RefusalOf(plate, -0.5), "triangle 4 turns over when the body grows by -0.5");
  for (const Coord3& high : {Coord3{1.5e308, 1, 1}, Coord3{1, 1.5e308, 1}}) {
    EXPECT_EQ(RefusalOf(sweep_shapes::Box({0, 0, 0}, high), 1e308),
              "triangle 0 leaves the range of double when the body grows by 1e+308");
  }
}

TEST(Grown, EachCornerOfATriangleStaysWithinTheRange) {
  // The triangle is in the plane x + z = 0 and faces along x. One corner leaves the range.
  const Coord3 p[3] = {{1.797e308, 0, -1.797e308}, {0, 1e308, 0}, {0, 0, 0}};
  for (int k = 0; k < 3; ++k) {
    Mesh mesh;
    AddTriangle(mesh, p[k], p[(k + 1) % 3], p[(k + 2) % 3]);
    EXPECT_EQ(RefusalOf(mesh, 1e307),
              "triangle 0 leaves the range of double when the body grows by 1e+307");
  }
}

TEST(Grown, TurningOverIsRefusedAtEveryScale) {
  const double unit = 0x1p-600;
  const Mesh plate = sweep_shapes::Box({0, 0, 0}, {4 * unit, 4 * unit, 0.5 * unit});
  EXPECT_EQ(RefusalOf(plate, -0.24 * unit), "");
  EXPECT_EQ(RefusalOf(plate, -0.5 * unit).find("triangle 4 turns over"), 0u);
}

TEST(Grown, ATriangleAloneMovesAlongItsNormal) {
  RandomNumbers random(5);
  const auto any = [&random] { return random.Unit(); };
  for (int round = 0; round < 200; ++round) {
    const Coord3 p[3] = {{any(), any(), any()}, {any(), any(), any()}, {any(), any(), any()}};
    const Coord3 n = gsl_arithmetic::Cross(gsl_arithmetic::Subtract(p[1], p[0]),
                                           gsl_arithmetic::Subtract(p[2], p[0]));
    const double length = gsl_arithmetic::Length(n);
    if (length < 0.1) continue;
    Mesh mesh;
    AddTriangle(mesh, p[0], p[1], p[2]);
    const std::vector<Coord3> corners = GrownCorners(mesh, 0.5);
    for (std::size_t k = 0; k < 3; ++k) {
      const Coord3 moved = gsl_arithmetic::Add(p[k], gsl_arithmetic::Multiply(n, 0.5 / length));
      EXPECT_LT(gsl_arithmetic::Length(gsl_arithmetic::Subtract(corners[k], moved)), 0x1p-45);
    }
  }
}

TEST(Grown, ABodyTurnedInsideOutIsRefused) {
  const double third = 1.0 / std::sqrt(3.0);
  Mesh tetrahedron; // of inner radius 1 / root(3)
  const Coord3 p[4] = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
  AddTriangle(tetrahedron, p[0], p[1], p[2]);
  AddTriangle(tetrahedron, p[0], p[3], p[1]);
  AddTriangle(tetrahedron, p[0], p[2], p[3]);
  AddTriangle(tetrahedron, p[1], p[3], p[2]);
  const Mesh cube = sweep_shapes::Box({-third, -third, -third}, {third, third, third});
  for (const Mesh& mesh : {cube, tetrahedron, Octahedron()}) {
    EXPECT_EQ(RefusalOf(mesh, -0.9 * third), "");
    for (const double part : {1.2, 3.0})
      EXPECT_NE(RefusalOf(mesh, -part * third).find("triangle 0 turns around"), std::string::npos);
  }
  EXPECT_EQ(RefusalOf(sweep_shapes::Box({0, 0, 0}, {1, 1, 1}), -0.6),
            "triangle 0 turns around when the body grows by -0.6");
}

TEST(Grown, SliversFollowTheirCorners) {
  // A corner inside the edge from (0, 0, 1) to (1, 0, 1), but for rounding. The front has no corner
  // there, and a sliver closes the gap.
  const Coord3 a{0, 0, 1};
  const Coord3 b{1, 0, 1};
  for (const double height : {1.0 - 0x1p-24, 1.0 + 0x1p-24, 1.0 + 0x1p-50}) {
    const Coord3 middle{0.5, 0, height};
    Mesh cube;
    sweep_shapes::AddQuad(cube, {0, 0, 0}, {1, 0, 0}, b, a);
    sweep_shapes::AddQuad(cube, {1, 1, 0}, {0, 1, 0}, {0, 1, 1}, {1, 1, 1});
    sweep_shapes::AddQuad(cube, {0, 1, 0}, {0, 0, 0}, a, {0, 1, 1});
    sweep_shapes::AddQuad(cube, {1, 0, 0}, {1, 1, 0}, {1, 1, 1}, b);
    sweep_shapes::AddQuad(cube, {0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0});
    AddTriangle(cube, a, middle, {0, 1, 1});
    AddTriangle(cube, middle, {1, 1, 1}, {0, 1, 1});
    AddTriangle(cube, middle, b, {1, 1, 1});
    AddTriangle(cube, a, b, middle);
    for (const double e : {1e-4, -1e-4, 0.25, -0.25}) {
      ASSERT_EQ(RefusalOf(cube, e), "");
      double deviation = -1.0;
      const std::vector<Coord3> corners = GrownCorners(cube, e, &deviation);
      EXPECT_LT(deviation, 1e-3 * std::fabs(e));
      for (std::size_t k = 0; k < corners.size(); ++k) {
        const Coord3& p = cube.corners[k];
        const bool isMiddle = p.x == 0.5;
        const double near = 1e-3 * std::fabs(e);
        EXPECT_NEAR(corners[k].x, isMiddle ? 0.5 : p.x == 0.0 ? -e : 1.0 + e, near);
        EXPECT_NEAR(corners[k].y, isMiddle ? 0.0 : p.y == 0.0 ? -e : 1.0 + e, near);
        EXPECT_NEAR(corners[k].z, p.z == 0.0 ? -e : p.z + e, near);
      }
    }
  }
}

TEST(Grown, SliversAreAsLowAsFourUnitsOfSinglePrecision) {
  // Flat along z, and a steep triangle across y that is 2^-22 high.
  const auto movedY = [](double height, double shift) {
    Mesh mesh;
    AddTriangle(mesh, {1, 1, 1}, {1 + 0x1p-6, 1, 1}, {1, 1 + 0x1p-6, 1});
    AddTriangle(mesh, {1, 1, 1}, {1 + 0x1p-6, 1, 1}, {1 + 0x1p-7 + shift, 1, 1 + height});
    const Coord3 corner = GrownCorners(mesh, 0x1p-30)[0];
    EXPECT_NEAR(corner.z, 1.0 + 0x1p-30, 0x1p-45);
    return corner.y;
  };
  EXPECT_NEAR(movedY(0x1p-22, 0.0), 1.0, 0x1p-45);
  EXPECT_NEAR(movedY(0x1p-21, 0.0), 1.0 - 0x1p-30, 0x1p-45);
  EXPECT_NEAR(movedY(0x1p-22, 0x1p-40), 1.0 - 0x1p-30, 0x1p-45); // not in single precision
}

TEST(Grown, EveryCoordinateOfASliverIsInSinglePrecision) {
  // As above, with one coordinate that is off by 2^-40. The first corner is that of both triangles.
  for (int k = 0; k < 9; ++k) {
    double steep[3][3] = {{1, 1, 1}, {1 + 0x1p-6, 1, 1}, {1 + 0x1p-7, 1, 1 + 0x1p-22}};
    steep[k / 3][k % 3] += 0x1p-40;
    const auto at = [&steep](int c) { return Coord3{steep[c][0], steep[c][1], steep[c][2]}; };
    Mesh mesh;
    AddTriangle(mesh, at(0), {1 + 0x1p-6, 1, 1}, {1, 1 + 0x1p-6, 1});
    AddTriangle(mesh, at(0), at(1), at(2));
    const Coord3 corner = GrownCorners(mesh, 0x1p-30)[0];
    EXPECT_NEAR(corner.y, at(0).y - 0x1p-30, 0x1p-45) << k;
  }
}

TEST(Grown, TheLongestEdgeTellsHowLowASliverIs) {
  // Half of the longest edge to both sides of one corner; the limit for its height is 2^-22.
  const Coord3 p[3] = {{0, 0, 0}, {-0.5, 0, -0x1p-23}, {0.5, 0, -0x1p-23}};
  for (int k = 0; k < 3; ++k) {
    Mesh mesh;
    AddTriangle(mesh, p[0], {1, 0, 0}, {0, 1, 0});
    AddTriangle(mesh, p[k], p[(k + 1) % 3], p[(k + 2) % 3]);
    const Coord3 corner = GrownCorners(mesh, 0.25)[0];
    EXPECT_EQ(corner.y, 0.0) << k;
    EXPECT_EQ(corner.z, 0.25) << k;
  }
}

TEST(Grown, ACornerOfSliversAloneMovesWithThem) {
  Mesh needle;
  AddTriangle(needle, {0, 0, 0}, {1, 0, 0}, {1, 0x1p-30, 0});
  for (const Coord3& p : GrownCorners(needle, 0.5))
    EXPECT_EQ(p.z, 0.5);
}

TEST(Grown, ACornerWhereEdgesAreOppositeMoves) {
  // The edges from the third corner are opposite, and their product is rounded to zero.
  const Coord3 c{-0.20414976065057885, -0.6608967074143532, -0.05879954289893838};
  Mesh mesh;
  AddTriangle(mesh, {-0.3424473937049559, -0.7524899523316311, 0.11105188732577731},
              {0.43208564405202066, -0.23952387578349255, -0.8401975398252286}, c);
  AddTriangle(mesh, c, gsl_arithmetic::Add(c, {1, 0, 0}), gsl_arithmetic::Add(c, {0, 1, 0}));
  const std::vector<Coord3> corners = GrownCorners(mesh, 0.1);
  EXPECT_NEAR(corners[2].z, c.z + 0.1, 0x1p-50);
  EXPECT_EQ(corners[2].z, corners[3].z);
  // Alone, the first triangle moves that corner too.
  mesh.corners.resize(3);
  const Coord3 moved = GrownCorners(mesh, 0.1)[2];
  EXPECT_NEAR(gsl_arithmetic::Length(gsl_arithmetic::Subtract(moved, c)), 0.1, 0x1p-50);
}

TEST(Grown, OnlyAFiniteLengthIsAccepted) {
  const Mesh box = sweep_shapes::Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  EXPECT_EQ(RefusalOf(box, std::numeric_limits<double>::quiet_NaN()),
            "a body grows by a finite length (got nan)");
  EXPECT_EQ(RefusalOf(box, std::numeric_limits<double>::infinity()),
            "a body grows by a finite length (got inf)");
}

TEST(Grown, NumbersAndSkippedTrianglesStay) {
  Mesh mesh = sweep_shapes::Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  mesh.corners[0].y = std::numeric_limits<double>::quiet_NaN();
  const Body body = BodyOf(mesh);
  double deviation = -1.0;
  const Body grown = body.Grown(0.25, &deviation);
  EXPECT_EQ(grown.TriangleCount(), 12u);
  EXPECT_EQ(grown.SkippedCount(), 1u);
  EXPECT_GE(deviation, 0.0);
  // The top, triangles 2 and 3, meets a plate from above as it grew.
  const Mesh plate = sweep_shapes::Box({0.5, 0.5, 3.0}, {0.75, 0.75, 4.0});
  Question question;
  question.direction = {0.0, 0.0, -1.0};
  const Answer answer = Pair(BodyOf(plate), {grown}).First(question);
  EXPECT_EQ(answer.contact.travel, 1.75);
  EXPECT_EQ(answer.contact.fixedTriangle, 2u);
}

TEST(Grown, AnEmptyBodyStaysEmpty) {
  double deviation = -1.0;
  EXPECT_EQ(Body(TriangleView()).Grown(1.0, &deviation).TriangleCount(), 0u);
  EXPECT_EQ(deviation, 0.0);
}

} // namespace
