#include "MeshRead.h"
#include "SweepAsk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

/// Meshes from elsewhere, in the folder that the environment names as GSL_MESH_DIR. Without it
/// these tests say so and pass.
namespace {

using namespace gsl_sweep;
using gsl_mesh::ReadMesh;
using namespace sweep_ask;
using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;

struct MeshCase {
  const char* moving;
  const char* fixed;
  Coord3 offset, direction;
  SweepStatus status;
};

void PrintTo(const MeshCase& c, std::ostream* out) {
  *out << c.moving << " to " << c.fixed;
}

double Largest(const Mesh& mesh) {
  double largest = 0.0;
  for (const Coord3& p : mesh.corners) {
    for (const double c : {p.x, p.y, p.z}) {
      if (std::isfinite(c)) largest = std::max(largest, std::fabs(c));
    }
  }
  return largest;
}

double DistanceToSegment(const Coord3& p, const Coord3& a, const Coord3& b) {
  const Coord3 e = Subtract(b, a);
  const double square = Dot(e, e);
  const double at = square == 0.0 ? 0.0 : std::clamp(Dot(Subtract(p, a), e) / square, 0.0, 1.0);
  return Length(Subtract(p, Add(a, Multiply(e, at))));
}

double DistanceToTriangle(const Coord3& p, const Coord3* t) {
  const double toEdges =
      std::min({DistanceToSegment(p, t[0], t[1]), DistanceToSegment(p, t[1], t[2]),
                DistanceToSegment(p, t[2], t[0])});
  const Coord3 n = Cross(Subtract(t[1], t[0]), Subtract(t[2], t[0]));
  if (Length(n) == 0.0) return toEdges;
  for (int k = 0; k < 3; ++k) {
    const Coord3 e = Subtract(t[(k + 1) % 3], t[k]);
    if (Dot(Cross(n, e), Subtract(p, t[k])) < 0.0) return toEdges;
  }
  return std::min(toEdges, std::fabs(Dot(n, Subtract(p, t[0]))) / Length(n));
}

void ExpectPointsOnSurfaces(const Answer& answer, const Mesh& moving, const Mesh& fixed) {
  const double size = std::max(Largest(moving), Largest(fixed));
  const Coord3* onMoving = moving.corners.data() + 3 * answer.contact.movingTriangle;
  const Coord3* onFixed = fixed.corners.data() + 3 * answer.contact.fixedTriangle;
  EXPECT_LE(DistanceToTriangle(answer.contact.movingPoint, onMoving), 1e-12 * size);
  EXPECT_LE(DistanceToTriangle(answer.contact.fixedPoint, onFixed), 1e-12 * size);
  const double unit = std::nextafter(size, 2.0 * size) - size;
  const Coord3 arrived =
      Add(answer.contact.movingPoint, Multiply(answer.unitDirection, answer.contact.travel));
  EXPECT_LE(std::fabs(arrived.x - answer.contact.fixedPoint.x), 4.0 * unit);
  EXPECT_LE(std::fabs(arrived.y - answer.contact.fixedPoint.y), 4.0 * unit);
  EXPECT_LE(std::fabs(arrived.z - answer.contact.fixedPoint.z), 4.0 * unit);
}

class PairRealMeshes : public testing::TestWithParam<MeshCase> {};

TEST_P(PairRealMeshes, PointsLieOnBothSurfacesAndMeet) {
  const char* const folder = std::getenv("GSL_MESH_DIR");
  if (folder == nullptr) {
    std::printf("GSL_MESH_DIR is not set: no real mesh is swept\n");
    return;
  }
  const MeshCase& c = GetParam();
  Mesh moving = ReadMesh(std::string(folder) + "/" + c.moving);
  for (Coord3& p : moving.corners)
    p = Add(p, c.offset);
  const Mesh fixed = ReadMesh(std::string(folder) + "/" + c.fixed);
  Question question;
  question.direction = c.direction;
  const Answer answer = AskInEveryWay(moving, fixed, question, 3);
  ASSERT_EQ(answer.status, c.status);
  std::printf("travel %.17g\n", answer.contact.travel);
  ExpectPointsOnSurfaces(answer, moving, fixed);
}

constexpr SweepStatus contact = SweepStatus::Contact;
constexpr SweepStatus start = SweepStatus::Start;

INSTANTIATE_TEST_SUITE_P(
    Pairs, PairRealMeshes,
    testing::Values(
        MeshCase{"nist_pump_base.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0, -1}, contact},
        MeshCase{"nist_pump_base.stl", "nist_insert.stl", {0.1, 0.05, 0.5}, {0.1, 0, -1}, contact},
        MeshCase{"nist_regulator.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0, -1}, contact},
        MeshCase{"nist_regulator.stl", "nist_insert.stl", {0, 0, 0.01}, {1, 0, 0}, contact},
        MeshCase{"sword.obj", "koala.obj", {0, 6, 0}, {0, -1, 0}, contact},
        MeshCase{"sword.obj", "koala.obj", {0, 0, 12}, {0.05, 0.1, -1}, contact},
        MeshCase{"koala.obj", "nefertiti_lowres.obj", {0, 300, 0}, {0, -1, 0}, contact},
        MeshCase{"koala.obj", "koala.obj", {0, 6, 0}, {0.1, -1, 0.2}, contact},
        MeshCase{"koala.obj", "koala.obj", {0, 0.01, 0}, {0, -1, 0}, start},
        MeshCase{"counter_unitsmm.stl", "counter_unitsmm.stl", {0, 0, 100}, {0, 1, -1}, contact},
        MeshCase{"adis16480.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0.1, -1}, contact},
        MeshCase{"featuretype.stl", "idler_riser.stl", {0, 0, 5}, {0, 0, -1}, contact},
        MeshCase{"cycloidal.ply", "featuretype.stl", {0, 0, 40}, {0, 0, -1}, contact},
        MeshCase{"wallhole.obj", "nefertiti_lowres.obj", {0, 400, 0}, {0, -1, 0.1}, contact},
        MeshCase{"broken_pump_base.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0, -1}, contact}));

} // namespace
