#include "MeshRead.h"
#include "RandomNumbers.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "TestScale.h"
#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

/// What must be the same when bodies or questions change in a way that changes nothing. The scenes
/// are made bodies, and real meshes where the environment names their folder as GSL_MESH_DIR.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;
using gsl_arithmetic::Add;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Negated;
using gsl_arithmetic::Subtract;

struct SceneCase {
  const char* name;
  const char* moving; ///< a file, or null for a made body
  const char* fixed;
  Coord3 offset, direction;
};

/// The name in the messages of the test program.
void PrintTo(const SceneCase& tested, std::ostream* stream) {
  *stream << tested.name;
}

/// A closed body with waves; the surface of a cube in grid x grid squares a side, blown up.
Mesh WavyBody(int grid, double phase) {
  const auto at = [&](int face, int i, int j) {
    double c[3];
    c[face % 3] = face < 3 ? 1.0 : -1.0;
    c[(face + 1) % 3] = 2.0 * i / grid - 1.0;
    c[(face + 2) % 3] = 2.0 * j / grid - 1.0;
    const Coord3 p{c[0], c[1], c[2]};
    const double r = 1.0 + 0.15 * std::sin(5.0 * p.x + phase) * std::cos(4.0 * p.y - p.z);
    return Multiply(p, r / Length(p));
  };
  Mesh mesh;
  for (int face = 0; face < 6; ++face) {
    for (int j = 0; j < grid; ++j) {
      for (int i = 0; i < grid; ++i)
        sweep_shapes::AddQuad(mesh, at(face, i, j), at(face, i + 1, j), at(face, i + 1, j + 1),
                              at(face, i, j + 1));
    }
  }
  return mesh;
}

double Largest(const Mesh& mesh) {
  double largest = 0.0;
  for (const Coord3& p : mesh.corners)
    largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  return largest;
}

/// Two bodies whose corners are multiples of `unit`, which is 2^-24 of the power of two that bounds
/// them. So sums and halves of coordinates are exact.
struct RelationScene {
  Mesh moving, fixed;
  double bound = 0.0, unit = 0.0;
  Coord3 direction{0.0, 0.0, 0.0};
};

void Snap(Mesh& mesh, double unit) {
  for (Coord3& p : mesh.corners)
    p = {unit * std::round(p.x / unit), unit * std::round(p.y / unit),
         unit * std::round(p.z / unit)};
}

RelationScene SceneOf(const SceneCase& c, const std::string& folder) {
  RelationScene scene;
  scene.direction = c.direction;
  const int grid = TEST_UNDER_SANITIZER != 0 ? 6 : 24;
  scene.moving = c.moving == nullptr ? WavyBody(grid, 1.0) : gsl_mesh::ReadMesh(folder + c.moving);
  scene.fixed = c.fixed == nullptr ? WavyBody(grid, 0.0) : gsl_mesh::ReadMesh(folder + c.fixed);
  scene.moving = sweep_shapes::Moved(std::move(scene.moving), c.offset);
  scene.bound =
      std::exp2(std::ceil(std::log2(std::max(Largest(scene.moving), Largest(scene.fixed)))));
  scene.unit = 0x1p-24 * scene.bound;
  Snap(scene.moving, scene.unit);
  Snap(scene.fixed, scene.unit);
  return scene;
}

class PairRelations : public testing::TestWithParam<SceneCase> {
protected:
  void SetUp() override {
    const char* const folder = std::getenv("GSL_MESH_DIR");
    const bool isMade = GetParam().moving == nullptr;
    if (!isMade && (folder == nullptr || TEST_UNDER_SANITIZER != 0)) {
      GTEST_SKIP() << "real meshes need GSL_MESH_DIR and a build without sanitizers";
    }
    scene = SceneOf(GetParam(), isMade ? "" : std::string(folder) + "/");
    Question own;
    own.direction = scene.direction;
    ASSERT_NE(PairOf(scene.moving, scene.fixed).First(own).status, SweepStatus::None);
  }

  /// The direction of the case first, then others near it and far from it; components are dyadic.
  std::vector<Question> Questions(long count) const {
    std::vector<Question> questions;
    if (scene.moving.corners.empty()) return questions;
    RandomNumbers random(20);
    const Coord3 d = Multiply(scene.direction, 1.0 / Length(scene.direction));
    for (long k = 0; k < std::max(count, 3L); ++k) {
      Question question;
      question.direction = scene.direction;
      const double reach = k % 3 == 2 ? 2.0 : 0.25;
      const auto near = [&](double c) {
        return std::round(64.0 * (c + random.In(-reach, reach))) / 64.0;
      };
      if (k > 0) question.direction = {near(d.x), near(d.y), near(d.z) + 0x1p-10};
      questions.push_back(question);
    }
    return questions;
  }

  RelationScene scene;
};

bool IsMet(const Answer& answer) {
  return answer.status == SweepStatus::Contact || answer.status == SweepStatus::Start;
}

Mesh One(const Mesh& mesh, std::size_t triangle) {
  Mesh one;
  one.corners.assign(mesh.corners.begin() + static_cast<std::ptrdiff_t>(3 * triangle),
                     mesh.corners.begin() + static_cast<std::ptrdiff_t>(3 * triangle + 3));
  return one;
}

/// The travel of two triangles alone.
double TravelOf(const Mesh& moving, std::size_t i, const Mesh& fixed, std::size_t j,
                const Question& question) {
  return PairOf(One(moving, i), One(fixed, j)).First(question, OnThreads(1)).contact.travel;
}

/// Status and travel, which every relation keeps.
void ExpectSameTravel(const Answer& actual, const Answer& expected) {
  EXPECT_EQ(actual.status, expected.status);
  EXPECT_TRUE(SameBits(actual.contact.travel, expected.contact.travel))
      << actual.contact.travel << " " << expected.contact.travel;
}

void ExpectSamePair(const Answer& actual, const Answer& expected) {
  EXPECT_EQ(actual.contact.movingTriangle, expected.contact.movingTriangle);
  EXPECT_EQ(actual.contact.fixedTriangle, expected.contact.fixedTriangle);
  EXPECT_EQ(actual.contact.kind, expected.contact.kind);
  EXPECT_EQ(actual.contact.hasNormal, expected.contact.hasNormal);
}

void ExpectNear(const Coord3& actual, const Coord3& expected, double error) {
  EXPECT_NEAR(actual.x, expected.x, error);
  EXPECT_NEAR(actual.y, expected.y, error);
  EXPECT_NEAR(actual.z, expected.z, error);
}

TEST_P(PairRelations, SwappedAndReversedHasTheSameTravel) {
  const Pair pair = PairOf(scene.moving, scene.fixed);
  const Pair swapped = PairOf(scene.fixed, scene.moving);
  for (Question question : Questions(Scaled(20))) {
    const Answer answer = pair.First(question, OnThreads(1));
    question.direction = Negated(question.direction);
    const Answer back = swapped.First(question, OnThreads(1));
    ExpectSameTravel(back, answer);
    if (answer.status != SweepStatus::Contact) continue;
    // Each triangle that is named belongs to a first pair; other pairs may tie with it.
    const Contact& c = back.contact;
    EXPECT_EQ(TravelOf(scene.fixed, c.movingTriangle, scene.moving, c.fixedTriangle, question),
              answer.contact.travel);
    EXPECT_GE(c.fixedTriangle, answer.contact.movingTriangle);
    EXPECT_GE(answer.contact.fixedTriangle, c.movingTriangle);
  }
}

/// Four triangles for each, in its order.
Mesh Split(const Mesh& mesh) {
  Mesh parts;
  parts.corners.reserve(4 * mesh.corners.size());
  const auto middle = [](const Coord3& a, const Coord3& b) { return Multiply(Add(a, b), 0.5); };
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const Coord3* const c = mesh.corners.data() + 3 * k;
    const Coord3 ab = middle(c[0], c[1]);
    const Coord3 bc = middle(c[1], c[2]);
    const Coord3 ca = middle(c[2], c[0]);
    sweep_shapes::AddTriangle(parts, c[0], ab, ca);
    sweep_shapes::AddTriangle(parts, ab, c[1], bc);
    sweep_shapes::AddTriangle(parts, ca, bc, c[2]);
    sweep_shapes::AddTriangle(parts, ab, bc, ca);
  }
  return parts;
}

TEST_P(PairRelations, SplittingEveryTriangleKeepsTheTravel) {
  const Pair pair = PairOf(scene.moving, scene.fixed);
  const Pair splitBoth = PairOf(Split(scene.moving), Split(scene.fixed));
  const Pair splitMoving = PairOf(Split(scene.moving), scene.fixed);
  for (const Question& question : Questions(Scaled(12))) {
    const Answer answer = pair.First(question, OnThreads(1));
    const Answer both = splitBoth.First(question, OnThreads(1));
    const Answer half = splitMoving.First(question, OnThreads(1));
    ExpectSameTravel(both, answer);
    ExpectSameTravel(half, answer);
    if (!IsMet(answer)) continue;
    // Parts of the first moving triangle come before those of later triangles.
    EXPECT_EQ(both.contact.movingTriangle / 4, answer.contact.movingTriangle);
    EXPECT_EQ(half.contact.movingTriangle / 4, answer.contact.movingTriangle);
    EXPECT_GE(both.contact.fixedTriangle / 4, answer.contact.fixedTriangle);
    EXPECT_GE(half.contact.fixedTriangle, answer.contact.fixedTriangle);
  }
}

TEST_P(PairRelations, TranslatingBothByExactStepsTranslatesThePoints) {
  const Pair pair = PairOf(scene.moving, scene.fixed);
  for (const double steps : {1.0, 0x1p10, 0x1p20}) {
    const double step = steps * scene.bound;
    const Coord3 by{step, -2.0 * step, 0.5 * step};
    const Pair moved =
        PairOf(sweep_shapes::Moved(scene.moving, by), sweep_shapes::Moved(scene.fixed, by));
    for (const Question& question : Questions(Scaled(6))) {
      const Answer expected = pair.First(question, OnThreads(1));
      const Answer answer = moved.First(question, OnThreads(1));
      ExpectSameTravel(answer, expected);
      ExpectSamePair(answer, expected);
      if (!IsMet(expected)) continue;
      ExpectNear(answer.contact.movingPoint, Add(expected.contact.movingPoint, by), 0x1p-50 * step);
      ExpectNear(answer.contact.fixedPoint, Add(expected.contact.fixedPoint, by), 0x1p-50 * step);
      ExpectNear(answer.contact.normal, expected.contact.normal, 0x1p-50);
    }
  }
}

TEST_P(PairRelations, ScalingByPowersOfTwoScalesTheAnswer) {
  const Pair pair = PairOf(scene.moving, scene.fixed);
  for (const int exponent : {-500, -40, 3, 40, 500}) {
    // Beyond the range of single precision the search is slow.
    if (std::abs(exponent) > 100 && scene.moving.TriangleCount() > 20000) continue;
    const double s = std::ldexp(1.0, exponent);
    const Pair scaled = PairOf(sweep_shapes::Stretched(scene.moving, {s, s, s}),
                               sweep_shapes::Stretched(scene.fixed, {s, s, s}));
    for (const Question& question : Questions(Scaled(4))) {
      Answer expected = pair.First(question, OnThreads(1));
      expected.contact.travel *= s;
      expected.contact.movingPoint = Multiply(expected.contact.movingPoint, s);
      expected.contact.fixedPoint = Multiply(expected.contact.fixedPoint, s);
      EXPECT_TRUE(SameBits(scaled.First(question, OnThreads(1)), expected)) << exponent;
    }
  }
}

/// Triangle k of the result is triangle order[k] of the mesh, with its corners turned.
Mesh Permuted(const Mesh& mesh, const std::vector<std::size_t>& order) {
  Mesh permuted;
  permuted.corners.reserve(mesh.corners.size());
  for (std::size_t k = 0; k < order.size(); ++k) {
    const Coord3* const c = mesh.corners.data() + 3 * order[k];
    sweep_shapes::AddTriangle(permuted, c[k % 3], c[(k + 1) % 3], c[(k + 2) % 3]);
  }
  return permuted;
}

std::vector<std::size_t> RandomOrder(std::size_t count, std::uint64_t seed) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  Shuffle(order, seed);
  return order;
}

std::vector<std::size_t> Inverse(const std::vector<std::size_t>& order) {
  std::vector<std::size_t> inverse(order.size());
  for (std::size_t k = 0; k < order.size(); ++k)
    inverse[order[k]] = k;
  return inverse;
}

TEST_P(PairRelations, PermutedTrianglesAreNamedByTheirNewNumbers) {
  const std::vector<std::size_t> movingOrder = RandomOrder(scene.moving.TriangleCount(), 5);
  const std::vector<std::size_t> fixedOrder = RandomOrder(scene.fixed.TriangleCount(), 6);
  const std::vector<std::size_t> newMoving = Inverse(movingOrder);
  const std::vector<std::size_t> newFixed = Inverse(fixedOrder);
  const Pair pair = PairOf(scene.moving, scene.fixed);
  const Pair permuted =
      PairOf(Permuted(scene.moving, movingOrder), Permuted(scene.fixed, fixedOrder));
  for (const Question& question : Questions(Scaled(20))) {
    const Answer expected = pair.First(question, OnThreads(1));
    const Answer answer = permuted.First(question, OnThreads(1));
    ExpectSameTravel(answer, expected);
    if (!IsMet(expected)) continue;
    const std::size_t i = expected.contact.movingTriangle;
    const std::size_t j = expected.contact.fixedTriangle;
    const std::size_t oldI = movingOrder[answer.contact.movingTriangle];
    const std::size_t oldJ = fixedOrder[answer.contact.fixedTriangle];
    // The pairs are the same or tie, and each is the first of both by the numbers of its own
    // bodies.
    EXPECT_EQ(TravelOf(scene.moving, oldI, scene.fixed, oldJ, question), expected.contact.travel);
    EXPECT_LE(std::tie(i, j), std::tie(oldI, oldJ));
    EXPECT_LE(std::make_pair(answer.contact.movingTriangle, answer.contact.fixedTriangle),
              std::make_pair(newMoving[i], newFixed[j]));
  }
}

TEST_P(PairRelations, HalfTheTravelAndThenTheRestIsTheWhole) {
  const Pair pair = PairOf(scene.moving, scene.fixed);
  for (Question question : Questions(Scaled(20))) {
    const Answer whole = pair.First(question, OnThreads(1));
    if (whole.status != SweepStatus::Contact) continue;
    // A multiple of the direction that every coordinate can take exactly.
    const double length = Length(question.direction);
    const double part = scene.unit * std::floor(0.5 * whole.contact.travel / length / scene.unit);
    question.offset = Multiply(question.direction, part);
    const Answer rest = pair.First(question, OnThreads(1));
    EXPECT_EQ(rest.status, whole.status);
    ExpectSamePair(rest, whole);
    EXPECT_NEAR(part * length + rest.contact.travel, whole.contact.travel,
                0x1p-51 * whole.contact.travel);
    const Pair moved = PairOf(sweep_shapes::Moved(scene.moving, question.offset), scene.fixed);
    question.offset = {0.0, 0.0, 0.0};
    EXPECT_TRUE(SameBits(moved.First(question, OnThreads(1)), rest));
  }
}

TEST_P(PairRelations, EveryWayToPrepareAndAskGivesTheSameBits) {
  const std::vector<Question> questions = Questions(Scaled(24));
  if (questions.empty()) return;
  const Body moving = BodyOf(scene.moving);
  const Body fixed = BodyOf(scene.fixed);
  const Pair prepared(moving, {fixed}, OnThreads(2));
  std::vector<Answer> batch(questions.size());
  prepared.First(questions.data(), questions.size(), batch.data(), OnThreads(2));
  gsl_sweep::Run cancelled = OnThreads(1);
  cancelled.progress = [](double) { return false; };
  const Pair lazy(BodyOf(scene.moving), {BodyOf(scene.fixed)}, cancelled);
  const Pair ofUsedBodies(moving, {fixed});
  for (std::size_t k = 0; k < questions.size(); ++k) {
    EXPECT_TRUE(SameBits(prepared.First(questions[k], OnThreads(1)), batch[k])) << k;
    EXPECT_TRUE(SameBits(lazy.First(questions[k], OnThreads(1)), batch[k])) << k;
    EXPECT_TRUE(SameBits(ofUsedBodies.First(questions[k], OnThreads(1)), batch[k])) << k;
    if (k >= 4) continue;
    const Pair fresh = PairOf(scene.moving, scene.fixed);
    EXPECT_TRUE(SameBits(fresh.First(questions[k], OnThreads(1)), batch[k])) << k;
    EXPECT_TRUE(SameBits(fresh.FirstOfEach(questions[k], OnThreads(1))[0], batch[k])) << k;
  }
}

Mesh Transformed(Mesh mesh, const gsl_Matrix& matrix) {
  for (Coord3& p : mesh.corners) {
    gsl_Point point(p.x, p.y, p.z);
    matrix.Transform(point);
    p = point.Coords();
  }
  return mesh;
}

TEST_P(PairRelations, MovedBodiesAnswerAsTransformedOnes) {
  const std::vector<Question> questions = Questions(Scaled(12));
  if (questions.empty()) return;
  const Body body = BodyOf(scene.moving);
  const Pair used(body, {BodyOf(scene.fixed)});
  used.First(questions[0], OnThreads(1)); // prepared before it is moved
  gsl_Matrix turn;
  turn.AxisRotation(gsl_Point(0.0, 0.1 * scene.bound, 0.0), gsl_Vector(0.3, -0.2, 0.9), 0.4);
  gsl_Matrix mirror;
  mirror.m[0][0] = -1.0;
  mirror.isIdentity = 0;
  for (const gsl_Matrix& matrix : {turn, mirror}) {
    const Pair moved(body.Moved(matrix), {BodyOf(scene.fixed)});
    const Pair transformed = PairOf(Transformed(scene.moving, matrix), scene.fixed);
    for (const Question& question : questions) {
      const Answer expected = transformed.First(question, OnThreads(1));
      EXPECT_TRUE(SameBits(moved.First(question, OnThreads(1)), expected));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Made, PairRelations,
    testing::Values(SceneCase{"apart", nullptr, nullptr, {0.1, 0.2, 2.75}, {0.0, 0.0, -1.0}},
                    SceneCase{"oblique", nullptr, nullptr, {2.5, -2.0, 1.5}, {-1.25, 1.0, -0.75}},
                    SceneCase{"crossing", nullptr, nullptr, {0.1, 0.2, 1.5}, {0.0, 1.0, 0.0}},
                    SceneCase{"tied", nullptr, nullptr, {0.0, 0.0, 3.0}, {0.0, 0.0, -1.0}}),
    [](const testing::TestParamInfo<SceneCase>& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Real, PairRelations,
    testing::Values(
        SceneCase{"sword_koala", "sword.obj", "koala.obj", {0, 6, 0}, {0, -1, 0}},
        SceneCase{"koala_nefertiti", "koala.obj", "nefertiti_lowres.obj", {0, 300, 0}, {0, -1, 0}},
        SceneCase{"base_insert",
                  "nist_pump_base.stl",
                  "nist_insert.stl",
                  {0.1, 0.05, 0.5},
                  {0.125, 0, -1}},
        SceneCase{
            "regulator_insert", "nist_regulator.stl", "nist_insert.stl", {0, 0, 0.01}, {1, 0, 0}},
        SceneCase{"feature_riser", "featuretype.stl", "idler_riser.stl", {0, 0, 5}, {0, 0, -1}}),
    [](const testing::TestParamInfo<SceneCase>& tested) { return std::string(tested.param.name); });

} // namespace
