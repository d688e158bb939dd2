#include "LeafPair.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
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
  int ahead = 0, touching = 0, apart = 0, byHeight = 0, byShadow = 0, atStart = 0, byBox = 0;
  int parting = 0, afterByHeight = 0, afterBox = 0, afterPair = 0, beforeBox = 0, beforePair = 0;
};

/// The travels that matter to a search without limits.
constexpr TravelRange<double> kAnyTravel{-kInfinity, kInfinity};

/// Returns whether a bound is at most a travel, up to the last bit that is known of the travel.
template <class Scalar>
bool IsAtMost(double bound, const Scene<Scalar>& scene, const DoubleDouble& travel) {
  const double high = scene.WalkTravel(travel.hi);
  return bound < high || (bound == high && travel.lo >= 0.0);
}

/// The bounds of the travels of a pair of triangles.
struct TravelBounds {
  double ofPair, ofMovingBox, ofFixedBox;
};

template <class Scalar>
TravelBounds FirstTravels(const Scene<Scalar>& scene, const LeafPair<Scalar>& pair,
                          double limit = kInfinity) {
  const TravelRange<double> range{-kInfinity, limit};
  const LeafBeforeBox<Scalar, true> moving(scene, pair.moving, pair.fixed.BoxOf(0));
  const LeafBeforeBox<Scalar, false> fixed(scene, pair.fixed, pair.moving.BoxOf(0));
  return {pair.FirstTravel(0, 0), fixed.FirstTravel(range), moving.FirstTravel(range)};
}

template <class Scalar>
TravelBounds LastTravels(const Scene<Scalar>& scene, const LeafPair<Scalar>& pair) {
  const LeafBeforeBox<Scalar, true> moving(scene, pair.moving, pair.fixed.BoxOf(0));
  const LeafBeforeBox<Scalar, false> fixed(scene, pair.fixed, pair.moving.BoxOf(0));
  return {pair.LastTravel(0, 0), fixed.LastTravel(kAnyTravel), moving.LastTravel(kAnyTravel)};
}

/// A triangle that touches at a travel is never left out of a range that begins there, or ends
/// there.
template <class Scalar>
void ExpectTouchAt(const Scene<Scalar>& scene, const LeafPair<Scalar>& pair,
                   const DoubleDouble& travel) {
  const double at = scene.WalkTravel(travel.hi);
  const TravelRange<double> after{travel.lo < 0.0 ? std::nextafter(at, -kInfinity) : at, kInfinity};
  const TravelRange<double> before{-kInfinity,
                                   travel.lo > 0.0 ? std::nextafter(at, kInfinity) : at};
  const LeafBeforeBox<Scalar, true> moving(scene, pair.moving, pair.fixed.BoxOf(0));
  const LeafBeforeBox<Scalar, false> fixed(scene, pair.fixed, pair.moving.BoxOf(0));
  EXPECT_LT(moving.FirstTravel(after), kInfinity);
  EXPECT_LT(fixed.FirstTravel(after), kInfinity);
  EXPECT_GT(moving.LastTravel(before), -kInfinity);
  EXPECT_GT(fixed.LastTravel(before), -kInfinity);
}

/// The motion backwards brings together last what parts first, so the bounds are the same numbers.
/// `parted` is the exact end of the motion where there is one.
template <class Scalar>
void CompareBackwards(const Scene<Scalar>& scene, const TravelBounds& last,
                      const DoubleDouble* parted, LeafCache<Scalar>& movingCache,
                      LeafCache<Scalar>& fixedCache) {
  const Coord3& d = scene.direction.Vector();
  const TravelDirection backwards({-d.x, -d.y, -d.z});
  Question question;
  question.offset = scene.moving.Offset();
  const Scene<Scalar> scene2(scene.bodies, backwards, scene.scale, question, true);
  movingCache.Forget();
  fixedCache.Forget();
  const LeafPair<Scalar> pair(scene2, movingCache.Moving(scene2, 0),
                              fixedCache.Fixed(scene2, 0, 0));
  const TravelBounds first = FirstTravels(scene2, pair);
  EXPECT_EQ(first.ofPair, -last.ofPair);
  EXPECT_EQ(first.ofMovingBox, -last.ofMovingBox);
  EXPECT_EQ(first.ofFixedBox, -last.ofFixedBox);
  if (parted == nullptr) return;
  const DoubleDouble met{-parted->hi, -parted->lo};
  EXPECT_TRUE(IsAtMost(first.ofPair, scene2, met));
  EXPECT_TRUE(IsAtMost(first.ofMovingBox, scene2, met));
  EXPECT_TRUE(IsAtMost(first.ofFixedBox, scene2, met));
}

/// No filter of a pair contradicts the exact judgement.
template <class Scalar>
void Compare(const Mesh& moving, const Mesh& fixed, const Coord3& vector, const Coord3& offset,
             LeafCache<Scalar>& movingCache, LeafCache<Scalar>& fixedCache, Counts& counts) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(vector);
  const RangeScale scale(0x1p104);
  Question question;
  question.direction = vector;
  question.offset = offset;
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  movingCache.Forget();
  fixedCache.Forget();
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
  PairContact last{};
  ExactRatio lastTravel;
  const bool parts = JudgeLast(direction, triangle(left), triangle(right), Rule::Touch, noLimit,
                               0.0, last, lastTravel) == LastOutcome::Parts;
  if (parts) {
    ++counts.parting;
    const double end = scene.WalkTravel(Reduced(lastTravel.rounded.hi));
    EXPECT_EQ(pair.TouchingByHeight(0, 0, end) & 1u, 1u);
    Four<Scalar> from, to;
    EXPECT_EQ(pair.Reached(0, 0, {scene.AtMost(end), Box<Scalar>::kFar}, from, to) & 1u, 1u);
    counts.afterByHeight += (pair.TouchingByHeight(0, 0, 1.1 * end) & 1u) == 0 ? 1 : 0;
    const TravelBounds bounds = LastTravels(scene, pair);
    ExpectTouchAt(scene, pair, lastTravel.rounded);
    const DoubleDouble parted{-lastTravel.rounded.hi, -lastTravel.rounded.lo};
    EXPECT_TRUE(IsAtMost(-bounds.ofPair, scene, parted));
    EXPECT_TRUE(IsAtMost(-bounds.ofMovingBox, scene, parted));
    EXPECT_TRUE(IsAtMost(-bounds.ofFixedBox, scene, parted));
    counts.afterPair += bounds.ofPair < 1.001 * end ? 1 : 0;
    const double ofBoxes = std::min(bounds.ofMovingBox, bounds.ofFixedBox);
    counts.afterBox += ofBoxes < static_cast<double>(to[0]) ? 1 : 0;
  }
  const bool isShadowApart = pair.AreShadowsApart(0, 0);
  const bool isApartAtStart = pair.AreApartAtStart(0, 0);
  const auto isBoxApart = [&](double limit) {
    const TravelBounds first = FirstTravels(scene, pair, limit);
    const double most = std::max(first.ofMovingBox, first.ofFixedBox);
    return most > limit || most == kInfinity;
  };
  counts.byShadow += isShadowApart ? 1 : 0;
  counts.atStart += isApartAtStart ? 1 : 0;
  if (outcome == PairOutcome::Touching) {
    ++counts.touching;
    EXPECT_FALSE(isShadowApart);
    EXPECT_FALSE(isApartAtStart);
    EXPECT_FALSE(isBoxApart(0.0));
    EXPECT_LE(pair.FirstTravel(0, 0), 0.0);
    EXPECT_EQ(pair.ReachedByHeight(0, 0, 0.0) & 1u, 1u);
  } else if (outcome == PairOutcome::Ahead) {
    ++counts.ahead;
    EXPECT_FALSE(isShadowApart);
    const double limit = scene.WalkTravel(travel.rounded.hi * (1.0 + 0x1p-50) + 0x1p-1060);
    EXPECT_EQ(pair.ReachedByHeight(0, 0, limit) & 1u, 1u);
    EXPECT_FALSE(isBoxApart(limit));
    Four<Scalar> from, to;
    const Scalar above = std::nextafter(static_cast<Scalar>(limit), Box<Scalar>::kFar);
    EXPECT_EQ(pair.Reached(0, 0, {0, above}, from, to) & 1u, 1u);
    counts.byHeight += (pair.ReachedByHeight(0, 0, 0.9 * limit) & 1u) == 0 ? 1 : 0;
    ExpectTouchAt(scene, pair, travel.rounded);
    const TravelBounds first = FirstTravels(scene, pair);
    EXPECT_TRUE(IsAtMost(first.ofPair, scene, travel.rounded));
    EXPECT_TRUE(IsAtMost(first.ofMovingBox, scene, travel.rounded));
    EXPECT_TRUE(IsAtMost(first.ofFixedBox, scene, travel.rounded));
    counts.beforePair += first.ofPair > 0.999 * limit ? 1 : 0;
    const double ofBoxes = std::max(first.ofMovingBox, first.ofFixedBox);
    counts.beforeBox += ofBoxes > static_cast<double>(from[0]) ? 1 : 0;
  } else {
    ++counts.apart;
    counts.byBox += isBoxApart(kInfinity) ? 1 : 0;
  }
  CompareBackwards(scene, LastTravels(scene, pair), parts ? &lastTravel.rounded : nullptr,
                   movingCache, fixedCache);
}

/// Sends a corner of one of the triangles far away.
void Stretch(std::mt19937_64& random, Mesh& moving, Mesh& fixed) {
  RealsIn unit(-1.0, 1.0);
  Coord3& corner = (random() % 2 == 0 ? moving : fixed).corners[random() % 3];
  const double far = std::ldexp(1.0, static_cast<int>(random() % 100));
  corner = {far * unit(random), far * unit(random), far * unit(random)};
}

template <class Scalar>
void CompareMany() {
  const unsigned seed = 4711;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  Counts counts;
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  for (int round = 0; round < 20000 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Coord3 d{unit(random), unit(random) * std::ldexp(1.0, -static_cast<int>(random() % 50)),
                   unit(random)};
    const double far = round % 3 == 0 ? 1000.0 : 0.0;
    const double gap = round % 2 == 0 ? 0.0 : 3.0;
    const Coord3 around{far, -far, 0.5 * far};
    Mesh fixed = SomeTriangle(random, around, 1.0);
    Mesh moving = SomeTriangle(
        random, gsl_arithmetic::Subtract(around, gsl_arithmetic::Multiply(d, gap)), 1.0);
    if (round % 4 == 3) Stretch(random, moving, fixed);
    const Coord3 offset = round % 5 == 0 ? Coord3{0.01 * unit(random), 1e-9 * unit(random), 0.0}
                                         : Coord3{0.0, 0.0, 0.0};
    Compare(moving, fixed, d, offset, movingCache, fixedCache, counts);
  }
  EXPECT_GT(counts.ahead, 1000);
  EXPECT_GT(counts.touching, 1000);
  EXPECT_GT(counts.byHeight, counts.ahead / 2);
  EXPECT_GT(counts.afterByHeight, counts.parting / 2);
  EXPECT_GT(counts.afterBox, counts.parting / 4);
  EXPECT_GT(counts.afterPair, counts.parting / 2);
  EXPECT_GT(counts.beforeBox, counts.ahead / 4);
  EXPECT_GT(counts.beforePair, counts.ahead / 2);
  EXPECT_GT(counts.byShadow, counts.apart / 2);
  EXPECT_GT(counts.byBox, counts.apart / 4);
  EXPECT_GT(counts.atStart, 5000);
}

TEST(LeafPair, FiltersNeverContradictTheExactJudgementInFloat) {
  CompareMany<float>();
}

TEST(LeafPair, FiltersNeverContradictTheExactJudgementInDouble) {
  CompareMany<double>();
}

/// As above, for a fixed triangle far ahead, nearly along one axis. So the corners of its plane
/// reach farther than what meets it.
template <class Scalar>
void CompareFarAhead() {
  std::mt19937_64 random(31);
  RealsIn unit(-1.0, 1.0);
  Counts counts;
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    double d[3];
    for (int axis = 0; axis < 3; ++axis)
      d[axis] =
          axis == round % 3 ? 1.0 : std::ldexp(unit(random), -static_cast<int>(random() % 30));
    const double far = std::ldexp(1.0, 10 + static_cast<int>(random() % 20));
    const Mesh fixed = SomeTriangle(random, {far * d[0], far * d[1], far * d[2]}, 1.0);
    const Mesh moving = SomeTriangle(random, {0.0, 0.0, 0.0}, 1.0);
    Compare(moving, fixed, {d[0], d[1], d[2]}, {0.0, 0.0, 0.0}, movingCache, fixedCache, counts);
  }
  EXPECT_GT(counts.ahead, 200);
}

TEST(LeafPair, FiltersNeverContradictTheExactJudgementFarAhead) {
  CompareFarAhead<float>();
  CompareFarAhead<double>();
}

/// A thin triangle that leads to a point as far away as a stray vertex. The direction vector has
/// length 1/2 along z.
struct Fan {
  /// The plane of the fan is z = slope * x.
  Fan(const Mesh& triangle, bool fanMoves, double slope = 0.0)
      : doesFanMove(fanMoves),
        fan(MeshOf({0.0, 0.0, 0.0}, {0.125, 0.0, 0.125 * slope}, {0.0, 0x1p100, 0.0})),
        one(triangle), fanBody(ViewOf(fan)),
        oneBody(ViewOf(one)), bodies{fanMoves ? &fanBody : &oneBody,
                                     {fanMoves ? &oneBody : &fanBody}},
        direction({0.0, 0.25, fanMoves ? 1.0 : -1.0}), scale(0x1p101),
        scene(bodies, direction, scale, Question(), true) {}

  static Mesh MeshOf(const Coord3& a, const Coord3& b, const Coord3& c) {
    Mesh mesh;
    sweep_shapes::AddTriangle(mesh, a, b, c);
    return mesh;
  }
  LeafPair<float> Pair() {
    return LeafPair<float>(scene, moving.Moving(scene, 0), fixed.Fixed(scene, 0, 0));
  }
  /// Bounds by the leaf of the fan, before the box of the other triangle.
  double FirstTravelBeforeBox(const TravelRange<double>& range, double enough = -kInfinity) {
    const LeafPair<float> pair = Pair();
    const LeafBeforeBox<float, true> ofMoving(scene, pair.moving, pair.fixed.BoxOf(0));
    const LeafBeforeBox<float, false> ofFixed(scene, pair.fixed, pair.moving.BoxOf(0));
    return doesFanMove ? ofMoving.FirstTravel(range, enough) : ofFixed.FirstTravel(range, enough);
  }
  double LastTravelBeforeBox(const TravelRange<double>& range = kAnyTravel,
                             double enough = kInfinity) {
    const LeafPair<float> pair = Pair();
    const LeafBeforeBox<float, true> ofMoving(scene, pair.moving, pair.fixed.BoxOf(0));
    const LeafBeforeBox<float, false> ofFixed(scene, pair.fixed, pair.moving.BoxOf(0));
    return doesFanMove ? ofMoving.LastTravel(range, enough) : ofFixed.LastTravel(range, enough);
  }

  bool doesFanMove;
  Mesh fan, one;
  PreparedBody fanBody, oneBody;
  SceneBodies bodies;
  TravelDirection direction;
  RangeScale scale;
  Scene<float> scene;
  LeafCache<float> moving, fixed;
};

TEST(LeafPair, FiltersDecideBesideATriangleThatLeadsFarAway) {
  const auto at = [](double x) {
    return Fan::MeshOf({x, 5.0, 1.0}, {x, 5.125, 1.0}, {x + 0.0625, 5.0, 1.125});
  };
  for (const bool fanMoves : {false, true}) {
    Fan over(at(0.03125), fanMoves);
    EXPECT_FALSE(over.Pair().AreShadowsApart(0, 0));
    EXPECT_EQ(over.Pair().ReachedByHeight(0, 0, 2.0) & 1u, 1u);
    EXPECT_EQ(over.Pair().ReachedByHeight(0, 0, 2.0 - 0x1p-40) & 1u, 0u);
    Fan beside(at(0.1250001), fanMoves);
    EXPECT_TRUE(beside.Pair().AreShadowsApart(0, 0));
    Fan besideToo(at(-0.0625001), fanMoves);
    EXPECT_TRUE(besideToo.Pair().AreShadowsApart(0, 0));
  }
}

TEST(LeafBeforeBox, DecidesBesideATriangleThatLeadsFarAway) {
  const auto at = [](double x) {
    return Fan::MeshOf({x, 5.0, 1.0}, {x, 5.125, 1.0}, {x + 0.0625, 5.0, 1.125});
  };
  for (const bool fanMoves : {false, true}) {
    Fan over(at(0.03125), fanMoves);
    const double first = over.FirstTravelBeforeBox(kAnyTravel);
    EXPECT_LE(first, 2.0);
    EXPECT_GE(first, 2.0 - 0x1p-40);
    // The box is passed from travel 2 to 2.25.
    EXPECT_GT(over.FirstTravelBeforeBox({0.0, 1.75}), 1.75);
    EXPECT_LE(over.FirstTravelBeforeBox({2.125, 3.0}), 2.0);
    EXPECT_LE(over.FirstTravelBeforeBox({2.25, 3.0}), 2.0);
    EXPECT_EQ(over.FirstTravelBeforeBox({2.25 + 0x1p-40, 3.0}), kInfinity);
    EXPECT_EQ(over.FirstTravelBeforeBox(kAnyTravel, 2.0), -kInfinity);
    EXPECT_GE(over.FirstTravelBeforeBox(kAnyTravel, 2.0 - 0x1p-40), 2.0 - 0x1p-40);
    Fan beside(at(0.1250001), fanMoves);
    EXPECT_EQ(beside.FirstTravelBeforeBox(kAnyTravel), kInfinity);
    Fan besideToo(at(-0.0625001), fanMoves);
    EXPECT_EQ(besideToo.FirstTravelBeforeBox(kAnyTravel), kInfinity);
  }
}

TEST(LeafBeforeBox, BoundsTheLastTravelBesideATriangleThatLeadsFarAway) {
  const auto at = [](double x) {
    return Fan::MeshOf({x, 5.0, 1.0}, {x, 5.125, 1.0}, {x + 0.0625, 5.0, 1.125});
  };
  for (const bool fanMoves : {false, true}) {
    // The box ends at a height of 9/8 over the plane of the fan.
    Fan over(at(0.03125), fanMoves);
    EXPECT_GE(over.LastTravelBeforeBox(), 2.25);
    EXPECT_LE(over.LastTravelBeforeBox(), 2.25 + 0x1p-40);
    EXPECT_LT(over.LastTravelBeforeBox({2.5, 3.0}), 2.5);
    EXPECT_GE(over.LastTravelBeforeBox({0.0, 2.0}), 2.0);
    EXPECT_EQ(over.LastTravelBeforeBox({0.0, 2.0 - 0x1p-40}), -kInfinity);
    EXPECT_EQ(over.LastTravelBeforeBox(kAnyTravel, 2.25), kInfinity);
    Fan beside(at(0.1250001), fanMoves);
    EXPECT_EQ(beside.LastTravelBeforeBox(), -kInfinity);
    Fan besideToo(at(-0.0625001), fanMoves);
    EXPECT_EQ(besideToo.LastTravelBeforeBox(), -kInfinity);
    // What is beyond the fan has passed it.
    Fan beyond(Fan::MeshOf({0.03125, 5.0, -1.0}, {0.03125, 5.125, -1.0}, {0.0625, 5.0, -1.125}),
               fanMoves);
    EXPECT_LE(beyond.LastTravelBeforeBox(), -2.0 + 0x1p-40);
    EXPECT_GE(beyond.LastTravelBeforeBox(), -2.0);
  }
}

/// The travel to the plane of the fan is 2 * z - 16 * x, and the fan begins at x = 0.
TEST(LeafBeforeBox, BoundsTheLastTravelWithinTheEdgesOfATriangle) {
  const Mesh one = Fan::MeshOf({-1.0, 5.0, 1.0}, {1.0, 5.0, 1.0}, {1.0, 5.125, 1.0});
  for (const bool fanMoves : {false, true}) {
    Fan wide(one, fanMoves, 8.0);
    const LeafPair<float> pair = wide.Pair();
    ASSERT_FALSE(pair.AreShadowsApart(0, 0));
    for (const double last : {wide.LastTravelBeforeBox(), pair.LastTravel(0, 0)}) {
      EXPECT_GE(last, 2.0);
      EXPECT_LE(last, 2.0 + 0x1p-30);
    }
  }
}

/// The travel to the plane of the fan is 2 * z + 16 * x, and the fan begins at x = 0.
TEST(LeafBeforeBox, BoundsTheFirstTravelWithinTheEdgesOfATriangle) {
  const Mesh one = Fan::MeshOf({-1.0, 5.0, 1.0}, {1.0, 5.0, 1.0}, {1.0, 5.125, 1.0});
  for (const bool fanMoves : {false, true}) {
    Fan wide(one, fanMoves, -8.0);
    const LeafPair<float> pair = wide.Pair();
    ASSERT_FALSE(pair.AreShadowsApart(0, 0));
    for (const double first : {wide.FirstTravelBeforeBox(kAnyTravel), pair.FirstTravel(0, 0)}) {
      EXPECT_LE(first, 2.0);
      EXPECT_GE(first, 2.0 - 0x1p-30);
    }
  }
}

/// Such a triangle has no height over its plane.
TEST(LeafBeforeBox, DoesNotBoundTheTravelsOfATriangleAlongTheDirection) {
  Fan edgeOn(Fan::MeshOf({0.03125, 5.0, 1.0}, {0.0625, 5.0, 1.0}, {0.03125, 5.25, 0.0}), false);
  const LeafTriangles<float>& moving = edgeOn.moving.Moving(edgeOn.scene, 0);
  const LeafTriangles<float>& fixed = edgeOn.fixed.Fixed(edgeOn.scene, 0, 0);
  const LeafBeforeBox<float, true> before(edgeOn.scene, moving, fixed.BoxOf(0));
  EXPECT_EQ(before.LastTravel(kAnyTravel), kInfinity);
  EXPECT_EQ(before.FirstTravel(kAnyTravel), -kInfinity);
  // The plane of the fan, which is larger, still bounds the pair.
  EXPECT_GE(edgeOn.Pair().LastTravel(0, 0), 2.0);
  EXPECT_LE(edgeOn.Pair().LastTravel(0, 0), 2.0 + 0x1p-30);
  EXPECT_LE(edgeOn.Pair().FirstTravel(0, 0), 0.0);
  EXPECT_GE(edgeOn.Pair().FirstTravel(0, 0), -0x1p-30);
}

/// Returns a body of one triangle.
Mesh OneTriangle(const Coord3& a, const Coord3& b, const Coord3& c) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, a, b, c);
  return mesh;
}

/// The last contact is on an edge of the larger triangle, and the heights over that edge cancel to
/// their last bits.
TEST(LeafPair, LastTravelAllowsForTheErrorOfTheSides) {
  const Mesh moving = OneTriangle({-0x1.4p-1, 0x1.4p-1, -0x1.8p-2}, {-0x1.4p-1, -0x1p-3, -0x1.cp-1},
                                  {0x1.7p+1, -0x1.ap+0, -0x1.80bp-2});
  const Mesh fixed =
      OneTriangle({0x1.dp-1, -0x1.7p-2, -0x1.804dp-2}, {0x1.d0008p-1, -0x1.7p-2, -0x1.804cp-2},
                  {0x1.cfff8p-1, -0x1.6fffp-2, -0x1.804d8p-2});
  Counts counts;
  LeafCache<double> movingCache, fixedCache;
  Compare(moving, fixed, {0x1.cp-1, -0x1.2p-1, -0x1.6p-13}, {0.0, 0.0, 0.0}, movingCache,
          fixedCache, counts);
  EXPECT_EQ(counts.parting, 1);
}

TEST(LeafBeforeBox, LastTravelAllowsForTheErrorOfTheSides) {
  const Mesh moving = OneTriangle({-0x1.ffffffffffffcp-23, 0x1.bp-17, -0x1.3p-18},
                                  {-0x1.00dfffffffffep-22, 0x1.affbp-17, -0x1.2ffep-18},
                                  {-0x1.00ffffffffffep-22, 0x1.aff8p-17, -0x1.3p-18});
  const Mesh fixed =
      OneTriangle({0x1.ep-19, 0x1.8p-20, 0x1.2p-19}, {0x1.000078p-1, 0x1.8p-20, 0x1.000048p-1},
                  {-0x1.fffe2p-3, 0x1.80003p-1, -0x1.1fffb8p-1});
  Counts counts;
  LeafCache<double> movingCache, fixedCache;
  Compare(moving, fixed, {-0x1p-55, 0.0, -0x1p-1}, {0.0, 0.0, 0.0}, movingCache, fixedCache,
          counts);
  EXPECT_EQ(counts.parting, 1);
}

/// The first contact is of a point, and the height of the point is off by a rounding.
TEST(LeafPair, FirstTravelAllowsForTheErrorOfTheHeights) {
  const Coord3 point{0x1.dp-3, 0x1.fp-4, -0x1.4p-6};
  const Mesh moving = OneTriangle(point, point, point);
  const Mesh fixed =
      OneTriangle({0x1.2p-2, 0x1.5p-3, -0x1.4p-6}, {-0x1.3p-1, -0x1.3p-1, -0x1.cp-6},
                  {-0x1.cec25e58a5017p+28, 0x1.af6ff556d2b28p+27, 0x1.0d3162bc747ecp+27});
  Counts counts;
  LeafCache<double> movingCache, fixedCache;
  Compare(moving, fixed, {-0x1.7a44ae1818p-1, -0x1.2p-2, 0x1.4eaep-1}, {0.0, 0.0, 0.0}, movingCache,
          fixedCache, counts);
  EXPECT_EQ(counts.ahead, 1);
}

/// The first contact is on an edge of the larger triangle.
TEST(LeafPair, FirstTravelAllowsForTheErrorOfTheSides) {
  const Mesh moving = OneTriangle({0x1.164be8ep-2, 0x1.4f8c734203cp-4, -0x1.a518d3fap-1},
                                  {0x1.164b096ap-2, 0x1.4f9645e003cp-4, -0x1.a5179149p-1},
                                  {0x1.1649a7b7p-2, 0x1.4f9a026e03cp-4, -0x1.a517e96dp-1});
  const Mesh fixed =
      OneTriangle({0x1.56ec6be5p-1, -0x1.697da2a7p-3, -0x1.31ae72e1p-1},
                  {0x1.56ec6d9f6ceeep-1, -0x1.697db17258b1ap-3, -0x1.31ae6f63ab44dp-1},
                  {0x1.cafa6b730017dp-5, 0x1.c6b02324fe607p-3, -0x1.e3a82bc37d229p-1});
  Counts counts;
  LeafCache<double> movingCache, fixedCache;
  Compare(moving, fixed, {-0x1.53p-1, 0x1.b83f88p-2, -0x1.8p-2}, {0.0, 0.0, 0.0}, movingCache,
          fixedCache, counts);
  EXPECT_EQ(counts.ahead, 1);
}

TEST(LeafBeforeBox, FirstTravelAllowsForTheErrorOfTheSides) {
  const Coord3 point{0x1.4000000002ep+2, 0x1.000000001506p+1, -0x1.0000000004bp+1};
  const Mesh moving = OneTriangle(point, point, point);
  const Mesh fixed = OneTriangle({0x1p+2, 0x1.8p+1, -0x1p+1}, {0x1.cp+1, 0x1.4p+1, -0x1.cp+0},
                                 {0x1.4p+2, 0x1p+1, -0x1p+1});
  Counts counts;
  LeafCache<double> movingCache, fixedCache;
  Compare(moving, fixed, {-0x1.7p-4, -0x1.506p-2, 0x1.2cp-4}, {0.0, 0.0, 0.0}, movingCache,
          fixedCache, counts);
  EXPECT_EQ(counts.ahead, 1);
}

/// The heights of one plane do not depend on the triangles beside it in the leaf. The plane is
/// nearly along the direction, so that its heights are off by much, and a point passes through it.
TEST(LeafPair, LastHeightsAllowForTheErrorOfTheirOwnPlane) {
  std::mt19937_64 random(53);
  RealsIn unit(-1.0, 1.0);
  LeafCache<double> movingCache, fixedCache;
  int parting = 0;
  for (int round = 0; round < 500; ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Coord3 d{unit(random), unit(random), unit(random)};
    const auto near = [&](const Coord3& p, double size) {
      return Coord3{p.x + size * unit(random), p.y + size * unit(random),
                    p.z + size * unit(random)};
    };
    const auto beyond = [&](const Coord3& p, double travel) {
      return gsl_arithmetic::Add(p, gsl_arithmetic::Multiply(d, travel));
    };
    const Coord3 a = near({0.0, 0.0, 0.0}, 1.0);
    const Coord3 b = near(a, 1.0);
    const Coord3 c = near(beyond(b, 1.0), 0x1p-20);
    const double third = 1.0 / 3.0;
    const Coord3 middle =
        gsl_arithmetic::Multiply(gsl_arithmetic::Add(a, gsl_arithmetic::Add(b, c)), third);
    const Coord3 point = beyond(middle, 0.5);
    const Mesh fixed = OneTriangle(point, point, point);
    // A plane across the direction has nearly no error.
    Mesh moving = OneTriangle({0.0, 0.0, 0.0}, {d.y, -d.x, 0.0},
                              {d.z * d.x, d.z * d.y, -d.x * d.x - d.y * d.y});
    sweep_shapes::AddTriangle(moving, a, b, c);
    const PreparedBody movingBody(ViewOf(moving));
    const PreparedBody fixedBody(ViewOf(fixed));
    const SceneBodies bodies{&movingBody, {&fixedBody}};
    const TravelDirection direction(d);
    const Scene<double> scene(bodies, direction, RangeScale(4.0), Question(), true);
    movingCache.Forget();
    fixedCache.Forget();
    const LeafTriangles<double>& left = movingCache.Moving(scene, 0);
    const LeafTriangles<double>& right = fixedCache.Fixed(scene, 0, 0);
    if (left.count != 2) continue;
    PairContact last{};
    ExactRatio travel;
    if (JudgeLast(direction, left.InKernel(scene, 1), right.InKernel(scene, 0), Rule::Touch,
                  ScaledLength{kInfinity, 0}, 0.0, last, travel) != LastOutcome::Parts) {
      continue;
    }
    ++parting;
    const LeafPair<double> pair(scene, left, right);
    ASSERT_EQ(pair.TouchingByHeight(1, 0, Reduced(travel.rounded.hi)) & 1u, 1u);
  }
  EXPECT_GT(parting, 100);
}

/// A scene of two bodies without limits, and its leaves.
template <class Scalar>
struct TwoBodies {
  TwoBodies(const Mesh& moving, const Mesh& fixed, const Coord3& vector,
            const Question& question = {})
      : movingBody(ViewOf(moving)), fixedBody(ViewOf(fixed)), bodies{&movingBody, {&fixedBody}},
        direction(vector), scene(bodies, direction, RangeScale(1.0), question, true) {}

  const LeafTriangles<Scalar>& Moving() { return movingCache.Moving(scene, 0); }
  const LeafTriangles<Scalar>& Fixed() { return fixedCache.Fixed(scene, 0, 0); }

  PreparedBody movingBody, fixedBody;
  SceneBodies bodies;
  TravelDirection direction;
  Scene<Scalar> scene;
  LeafCache<Scalar> movingCache, fixedCache;
};

/// The plane is z = 4 y - 8 x, so its normal per unit of height has the length 9. The product of
/// its edges cancels, so the plane may be steeper than it seems.
TEST(LeafPair, ClearanceIsMetAtLeastAsEarlyAsTheSlopeSays) {
  const Mesh steep = OneTriangle({0.0, 0.0, 0.0}, {512.0, 1024.0, 0.0}, {512.0, 1026.0, 8.0});
  const Mesh other = OneTriangle({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
  Question question;
  question.clearance = 2.0;
  TwoBodies<double> scene(steep, other, {0.0, 0.0, -1.0}, question);
  const double lift = scene.Moving().lift[0];
  EXPECT_GT(lift, 18.0 * (1.0 + 0x1p-46));
  EXPECT_LT(lift, 18.0 * (1.0 + 0x1p-30));
}

/// The box of the small triangle is within that of the large one in every case.
TEST(LeafPair, TrianglesOnEitherSideOfAPlaneAreApartAtTheStart) {
  const Mesh large = OneTriangle({0.0, 0.0, 0.0}, {4.0, 0.0, 4.0}, {0.0, 4.0, 0.0}); // z = x
  const auto areApart = [&](double z, bool isLargeMoving) {
    const Mesh small = OneTriangle({1.0, 1.0, z}, {1.125, 1.0, z}, {1.0, 1.0, z + 0.25});
    TwoBodies<double> scene(isLargeMoving ? large : small, isLargeMoving ? small : large,
                            {0.0, 0.0, -1.0});
    const LeafPair<double> pair(scene.scene, scene.Moving(), scene.Fixed());
    return pair.AreApartAtStart(0, 0);
  };
  for (const bool isLargeMoving : {false, true}) {
    EXPECT_TRUE(areApart(2.0, isLargeMoving));
    EXPECT_FALSE(areApart(0.875, isLargeMoving));
    EXPECT_TRUE(areApart(0.5, isLargeMoving));
  }
}

/// The plane is too nearly along the direction for heights, but the shadow of the triangle has an
/// inner side.
TEST(LeafBeforeBox, DoesNotBoundTheTravelsOfATriangleNearlyAlongTheDirection) {
  const Mesh nearly = OneTriangle({0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {0.5, 0.5 + 0x1p-34, 1.0});
  const Mesh box = OneTriangle({0.375, 0.375, 5.0}, {0.625, 0.5, 5.0}, {0.5, 0.625, 5.25});
  TwoBodies<double> scene(box, nearly, {0.0, 0.0, -1.0});
  ASSERT_EQ(scene.Fixed().error[0], 0.0);
  const LeafBeforeBox<double, false> before(scene.scene, scene.Fixed(), scene.Moving().BoxOf(0));
  EXPECT_EQ(before.LastTravel(kAnyTravel), kInfinity);
  EXPECT_EQ(before.FirstTravel(kAnyTravel), -kInfinity);
}

TEST(LeafPair, ExtentsOfTrianglesAreThoseOfTheirCorners) {
  std::mt19937_64 random(59);
  const Mesh mesh = sweep_shapes::Soup(random, 8, 0.25, 1.0, 0.0);
  TwoBodies<double> scene(mesh, mesh, {0.0, 0.0, -1.0});
  const LeafTriangles<double>& leaf = scene.Fixed();
  ASSERT_GT(leaf.count, 4);
  for (int first = 0; first < leaf.count; first += 4) {
    for (int axis = 0; axis < 3; ++axis) {
      const Double4 low = leaf.LowFrom(first, axis);
      const Double4 high = leaf.HighFrom(first, axis);
      for (int k = first; k < std::min(first + 4, leaf.count); ++k) {
        double numbers[3];
        for (int c = 0; c < 3; ++c) {
          const Coord3 p = leaf.Corner(k, c);
          numbers[c] = axis == 0 ? p.x : axis == 1 ? p.y : p.z;
        }
        std::sort(numbers, numbers + 3);
        EXPECT_EQ(low[k - first], numbers[0]);
        EXPECT_EQ(high[k - first], numbers[2]);
      }
    }
  }
}

TEST(LeafPair, CopiesOfTheTriangleBeforeAreNotDistinct) {
  Mesh mesh;
  for (const double x : {0.0, 0.0, 1.0, 0.0, 0.0})
    sweep_shapes::AddTriangle(mesh, {x, 0.0, 0.0}, {1.0, 1.0, 0.0}, {0.0, 1.0, 0.5});
  sweep_shapes::AddTriangle(mesh, {1.0, 1.0, 0.0}, {0.0, 1.0, 0.5}, {0.0, 0.0, 0.0});
  const PreparedBody body(ViewOf(mesh));
  const SceneBodies bodies{&body, {&body}};
  const TravelDirection direction({0.0, 0.0, -1.0});
  const RangeScale scale(1.0);
  const Scene<float> scene(bodies, direction, scale, Question(), true);
  ASSERT_EQ(body.Runs().Count(), 1u);
  LeafCache<float> cache;
  EXPECT_EQ(cache.Moving(scene, 0).count, 6);
  EXPECT_EQ(cache.Moving(scene, 0).distinct, 0x2du);
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
