#include "LeafPair.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Triangles of every kind that are about to touch: any shape, from needles to points, far from the
/// origin and close to each other.
Mesh SomeTriangle(std::mt19937_64& random, const Coord3& around, double size) {
  RealsIn unit(-1.0, 1.0);
  const double thin = std::ldexp(1.0, -static_cast<int>(random() % 40));
  Coord3 p[3];
  for (Coord3& c : p)
    c = {around.x + size * unit(random), around.y + size * unit(random),
         around.z + size * thin * unit(random)};
  if (random() % 8 == 0) p[1] = p[0];
  if (random() % 8 == 0) {
    p[2] = {p[0].x + thin * (p[1].x - p[0].x), p[0].y + thin * (p[1].y - p[0].y),
            p[0].z + thin * (p[1].z - p[0].z)};
  }
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, p[0], p[1], p[2]);
  return mesh;
}

struct Counts {
  int ahead = 0, touching = 0, apart = 0, byHeight = 0, byShadow = 0, atStart = 0;
  int parting = 0, afterByHeight = 0;
};

/// No filter of a pair contradicts the exact judgement.
template <class Scalar>
void Compare(const Mesh& moving, const Mesh& fixed, const Coord3& vector, const Coord3& offset,
             Counts& counts) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(vector);
  const RangeScale scale(1e4);
  Question question;
  question.direction = vector;
  question.offset = offset;
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  const LeafTriangles<Scalar>& left = movingCache.Moving(scene, 0);
  const LeafTriangles<Scalar>& right = fixedCache.Fixed(scene, 0, 0);
  const LeafPair<Scalar> pair(scene, left, right);
  const auto triangle = [&](const LeafTriangles<Scalar>& leaf) {
    return MakeTriangle(direction, scene.moving.ToKernel(leaf.Corner(0, 0)),
                        scene.moving.ToKernel(leaf.Corner(0, 1)),
                        scene.moving.ToKernel(leaf.Corner(0, 2)));
  };
  PairContact contact{};
  ExactRatio travel;
  const PairOutcome outcome = JudgePair(direction, triangle(left), triangle(right), Rule::Touch,
                                        kInfinity, contact, travel);
  const ScaledLength noLimit{kInfinity, 0};
  if (JudgeLast(direction, triangle(left), triangle(right), Rule::Touch, noLimit, 0.0, contact,
                travel) == LastOutcome::Parts) {
    ++counts.parting;
    const double end = scene.WalkTravel(Reduced(travel.rounded.hi));
    EXPECT_EQ(pair.TouchingByHeight(0, 0, end) & 1u, 1u);
    Four<Scalar> from, to;
    EXPECT_EQ(pair.Reached(0, 0, {scene.AtMost(end), Box<Scalar>::kFar}, from, to) & 1u, 1u);
    counts.afterByHeight += (pair.TouchingByHeight(0, 0, 1.1 * end) & 1u) == 0 ? 1 : 0;
  }
  const bool isShadowApart = pair.AreShadowsApart(0, 0);
  const bool isApartAtStart = pair.AreApartAtStart(0, 0);
  counts.byShadow += isShadowApart ? 1 : 0;
  counts.atStart += isApartAtStart ? 1 : 0;
  if (outcome == PairOutcome::Touching) {
    ++counts.touching;
    EXPECT_FALSE(isShadowApart);
    EXPECT_FALSE(isApartAtStart);
    EXPECT_EQ(pair.ReachedByHeight(0, 0, 0.0) & 1u, 1u);
  } else if (outcome == PairOutcome::Ahead) {
    ++counts.ahead;
    EXPECT_FALSE(isShadowApart);
    const double limit = scene.WalkTravel(travel.rounded.hi * (1.0 + 0x1p-50) + 0x1p-1060);
    EXPECT_EQ(pair.ReachedByHeight(0, 0, limit) & 1u, 1u);
    Four<Scalar> from, to;
    const Scalar above = std::nextafter(static_cast<Scalar>(limit), Box<Scalar>::kFar);
    EXPECT_EQ(pair.Reached(0, 0, {0, above}, from, to) & 1u, 1u);
    counts.byHeight += (pair.ReachedByHeight(0, 0, 0.9 * limit) & 1u) == 0 ? 1 : 0;
  } else {
    ++counts.apart;
  }
}

template <class Scalar>
void CompareMany() {
  const unsigned seed = 4711;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  Counts counts;
  for (int round = 0; round < 20000 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Coord3 d{unit(random), unit(random) * std::ldexp(1.0, -static_cast<int>(random() % 50)),
                   unit(random)};
    const double far = round % 3 == 0 ? 1000.0 : 0.0;
    const double gap = round % 2 == 0 ? 0.0 : 3.0;
    const Coord3 around{far, -far, 0.5 * far};
    const Mesh fixed = SomeTriangle(random, around, 1.0);
    const Mesh moving = SomeTriangle(
        random, gsl_arithmetic::Subtract(around, gsl_arithmetic::Multiply(d, gap)), 1.0);
    const Coord3 offset = round % 5 == 0 ? Coord3{0.01 * unit(random), 1e-9 * unit(random), 0.0}
                                         : Coord3{0.0, 0.0, 0.0};
    Compare<Scalar>(moving, fixed, d, offset, counts);
  }
  EXPECT_GT(counts.ahead, 1000);
  EXPECT_GT(counts.touching, 1000);
  EXPECT_GT(counts.byHeight, counts.ahead / 2);
  EXPECT_GT(counts.afterByHeight, counts.parting / 2);
  EXPECT_GT(counts.byShadow, counts.apart / 2);
  EXPECT_GT(counts.atStart, 5000);
}

TEST(LeafPair, FiltersNeverContradictTheExactJudgementInFloat) {
  CompareMany<float>();
}

TEST(LeafPair, FiltersNeverContradictTheExactJudgementInDouble) {
  CompareMany<double>();
}

TEST(LeafPair, OneSidedLeavesHoldOnlyTrianglesThatFace) {
  const Mesh box = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  const PreparedBody body(ViewOf(box));
  const SceneBodies bodies{&body, {&body}};
  const TravelDirection direction({0.0, 0.0, -1.0});
  const RangeScale scale(1.0);
  Question question;
  question.oneSided = true;
  const Scene<float> scene(bodies, direction, scale, question, true);
  LeafCache<float> moving;
  LeafCache<float> fixed;
  int movingCount = 0;
  int fixedCount = 0;
  for (std::size_t leaf = 0; leaf < body.Runs().Count(); ++leaf) {
    movingCount += moving.Moving(scene, leaf).count;
    fixedCount += fixed.Fixed(scene, 0, leaf).count;
  }
  EXPECT_EQ(movingCount, 10);
  EXPECT_EQ(fixedCount, 10);
}

} // namespace
