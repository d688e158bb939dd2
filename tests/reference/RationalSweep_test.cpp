#include "RationalSweep.h"

#include "RandomNumbers.h"
#include "SweepScenes.h"
#include "TestScale.h"
#include "reference/PairSweepOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace reference {

// gtest prints them with these functions.
void PrintTo(const Kind& kind, std::ostream* out) {
  *out << static_cast<int>(kind);
}

} // namespace reference

namespace {

using namespace reference;

constexpr double infinity = std::numeric_limits<double>::infinity();

WholePoint At(int x, int y, int z) {
  return {x, y, z};
}

Rational Ratio(int over, int under) {
  Rational ratio(over, under);
  ratio.canonicalize();
  return ratio;
}

void ExpectInterval(const WholePoint& d, const WholeTriangle& moving, const WholeTriangle& fixed,
                    const Rational& first, const Rational& last) {
  const auto interval = SweepPair(d, moving, fixed);
  ASSERT_TRUE(interval.has_value());
  EXPECT_EQ(interval->first, first);
  EXPECT_EQ(interval->last, last);
  EXPECT_EQ(interval->IsSinglePoint(), first == last);
}

const WholePoint down = At(0, 0, -1);
const WholeTriangle floorPlane{At(-9, -9, 0), At(9, -9, 0), At(0, 9, 0)};

TEST(RationalSweepPair, CornerOverFace) {
  ExpectInterval(down, {At(0, 0, 3), At(1, 0, 5), At(0, 1, 6)}, floorPlane, 3, 6);
  // Twice the direction is half the multiple.
  ExpectInterval(At(0, 0, -2), {At(0, 0, 3), At(1, 0, 5), At(0, 1, 6)}, floorPlane, Ratio(3, 2), 3);
  // Upwards the contact was before the start.
  ExpectInterval(At(0, 0, 1), {At(0, 0, 3), At(1, 0, 5), At(0, 1, 6)}, floorPlane, -6, -3);
}

TEST(RationalSweepPair, CornerOverASlopeOfAThird) {
  // The plane is z = x / 3, and its height at x = 1 is 1/3.
  const WholeTriangle slope{At(-9, -9, -3), At(9, -9, 3), At(0, 9, 0)};
  ExpectInterval(down, {At(1, 0, 1), At(1, 0, 1), At(1, 0, 1)}, slope, Ratio(2, 3), Ratio(2, 3));
}

TEST(RationalSweepPair, EdgeOverEdge) {
  // A ridge along x at height 5 is over a ridge along y at height 2. They cross over (1, 0).
  ExpectInterval(down, {At(0, 0, 5), At(4, 0, 5), At(2, 0, 9)},
                 {At(1, -2, 2), At(1, 2, 2), At(1, 0, -9)}, 3, Ratio(5 * 2 + 4 + 9 * 2, 2));
}

TEST(RationalSweepPair, ShadowsThatMeetInOneCorner) {
  const WholeTriangle fixed{At(0, 0, 1), At(-2, -1, 0), At(-1, -2, 0)};
  ExpectInterval(down, {At(0, 0, 3), At(2, 1, 4), At(1, 2, 5)}, fixed, 2, 2);
  EXPECT_FALSE(SweepPair(down, {At(1, 0, 3), At(2, 1, 4), At(1, 2, 5)}, fixed).has_value());
}

TEST(RationalSweepPair, WallsInOnePlaneSlide) {
  const WholeTriangle moving{At(1, 0, 5), At(1, 4, 5), At(1, 2, 9)};
  const WholeTriangle fixed{At(1, 1, 2), At(1, 3, 2), At(1, 2, -2)};
  ExpectInterval(down, moving, fixed, 3, 11);
  EXPECT_FALSE(SweepPair(down, moving, {At(2, 1, 2), At(2, 3, 2), At(2, 2, -2)}).has_value());
  // A wall across the ridge.
  ExpectInterval(down, moving, {At(0, 2, 2), At(2, 2, 2), At(1, 2, 0)}, 3, 9);
}

TEST(RationalSweepPair, DegenerateTrianglesAreSegmentsAndPoints) {
  const WholeTriangle point{At(2, 2, 4), At(2, 2, 4), At(2, 2, 4)};
  const WholeTriangle segment{At(0, 0, 0), At(4, 4, 2), At(2, 2, 1)};
  const WholeTriangle upright{At(2, 2, -1), At(2, 2, -4), At(2, 2, -2)};
  ExpectInterval(down, point, segment, 3, 3);
  ExpectInterval(down, point, point, 0, 0);
  ExpectInterval(down, segment, upright, 2, 5);
  ExpectInterval(down, segment, {At(0, 4, -1), At(4, 0, -1), At(4, 0, -1)}, 2, 2);
  EXPECT_FALSE(SweepPair(down, point, {At(0, 0, 0), At(4, 5, 2), At(0, 0, 0)}).has_value());
}

TEST(RationalSweepPair, AgreesWithTheProgrammeInSixWeights) {
  RandomNumbers random(77);
  int met = 0;
  for (int round = 0; round < Scaled(3000); ++round) {
    const int reach = 1 + round % 5;
    oracle::IntTriangle a{};
    oracle::IntTriangle b{};
    oracle::IntPoint d{};
    const auto fill = [&](oracle::IntPoint& p) {
      for (std::int64_t& c : p)
        c = random.Below(2 * reach + 1) - reach;
    };
    for (oracle::IntTriangle* t : {&a, &b})
      for (oracle::IntPoint& p : *t)
        fill(p);
    while (d == oracle::IntPoint{})
      fill(d);
    const auto whole = [](const oracle::IntPoint& p) {
      return At(static_cast<int>(p[0]), static_cast<int>(p[1]), static_cast<int>(p[2]));
    };
    const auto expected = oracle::SweepPair(d, a, b);
    const auto actual = SweepPair(whole(d), {whole(a[0]), whole(a[1]), whole(a[2])},
                                  {whole(b[0]), whole(b[1]), whole(b[2])});
    ASSERT_EQ(actual.has_value(), expected.has_value()) << round;
    if (!expected) continue;
    ++met;
    const auto ratio = [](const oracle::Fraction& f) {
      return Ratio(static_cast<int>(f.numerator), static_cast<int>(f.denominator));
    };
    ASSERT_EQ(actual->first, ratio(expected->low)) << round;
    ASSERT_EQ(actual->last, ratio(expected->high)) << round;
  }
  EXPECT_GT(met, Scaled(1000));
}

void ExpectMeeting(const WholeTriangle& moving, const WholeTriangle& fixed, Kind kind,
                   std::size_t onMoving, std::size_t onFixed, int x, int y, int z) {
  const Meeting meeting = FirstMeeting(moving, fixed);
  EXPECT_EQ(meeting.kind, kind);
  EXPECT_EQ(meeting.onMoving, onMoving);
  EXPECT_EQ(meeting.onFixed, onFixed);
  EXPECT_EQ(meeting.point.x, x);
  EXPECT_EQ(meeting.point.y, y);
  EXPECT_EQ(meeting.point.z, z);
}

TEST(RationalMeeting, NamesTheFeaturesThatMeet) {
  const WholeTriangle base{At(0, 0, 0), At(8, 0, 0), At(0, 8, 0)};
  const auto standing = [](int x, int y) {
    return WholeTriangle{At(x, y + 1, 5), At(x, y, 0), At(x + 1, y, 5)};
  };
  ExpectMeeting(standing(8, 0), base, Kind::VertexVertex, 1, 1, 8, 0, 0);
  ExpectMeeting(standing(4, 4), base, Kind::VertexEdge, 1, 1, 4, 4, 0);
  ExpectMeeting(standing(1, 1), base, Kind::VertexFace, 1, 0, 1, 1, 0);
  ExpectMeeting(base, standing(0, 3), Kind::EdgeVertex, 2, 1, 0, 3, 0);
  ExpectMeeting(base, standing(2, 3), Kind::FaceVertex, 0, 1, 2, 3, 0);
  ExpectMeeting({At(4, -2, -1), At(4, 2, 1), At(9, 0, 9)}, base, Kind::EdgeEdge, 0, 0, 4, 0, 0);
}

TEST(RationalMeeting, OfSeveralTheFirstKindThenTheFirstFeatures) {
  const WholeTriangle base{At(0, 0, 0), At(8, 0, 0), At(0, 8, 0)};
  // The triangles are in one plane: corner 1 is on the fixed corner 2, other corners are on edges
  // and inside.
  ExpectMeeting({At(1, 1, 0), At(0, 8, 0), At(4, 0, 0)}, base, Kind::VertexVertex, 1, 2, 0, 8, 0);
  ExpectMeeting({At(1, 1, 0), At(2, 2, 0), At(4, 0, 0)}, base, Kind::VertexEdge, 2, 0, 4, 0, 0);
  ExpectMeeting({At(9, 1, 0), At(1, 2, 0), At(1, 1, 0)}, base, Kind::VertexFace, 1, 0, 1, 2, 0);
  ExpectMeeting({At(-9, 0, 0), At(9, 0, 0), At(-9, 18, 0)}, base, Kind::EdgeVertex, 0, 0, 0, 0, 0);
}

TEST(RationalMeeting, TrianglesThatPassThroughEachOtherHaveNoFirstFeatures) {
  const WholeTriangle base{At(0, 0, 0), At(8, 0, 0), At(0, 8, 0)};
  EXPECT_EQ(FirstMeeting({At(1, 1, -5), At(2, 1, 5), At(1, 2, 5)}, base).kind, Kind::Overlap);
}

TEST(RationalDistance, IsThatOfTheNearestPoint) {
  const auto point = [](int x, int y, int z) {
    return RationalPoint{Rational(x), Rational(y), Rational(z)};
  };
  const std::array<RationalPoint, 3> t{point(0, 0, 0), point(6, 0, 0), point(0, 6, 0)};
  EXPECT_EQ(SquaredDistance(point(1, 1, 3), t), 9);
  EXPECT_EQ(SquaredDistance(point(3, -2, 0), t), 4);
  EXPECT_EQ(SquaredDistance(point(-3, -4, 0), t), 25);
  EXPECT_EQ(SquaredDistance(point(4, 4, 0), t), 2);
  EXPECT_EQ(SquaredDistance(point(2, 2, 0), t), 0);
  const std::array<RationalPoint, 3> segment{point(0, 0, 0), point(6, 0, 0), point(2, 0, 0)};
  EXPECT_EQ(SquaredDistance(point(4, 0, 5), segment), 25);
  EXPECT_EQ(SquaredDistance(point(9, 4, 0), {point(6, 0, 0), point(6, 0, 0), point(6, 0, 0)}), 25);
}

TEST(RationalRoot, IsTheNearestDouble) {
  EXPECT_EQ(NearestRoot(0), 0.0);
  EXPECT_EQ(NearestRoot(9), 3.0);
  EXPECT_EQ(NearestRoot(2), std::sqrt(2.0));
  EXPECT_EQ(NearestRoot(Ratio(4, 9)), 2.0 / 3.0);
  // Half way between one and the next double, the even number is taken. Beyond half way, the next
  // double is taken.
  const Rational half = Rational(1) + Rational(0x1p-53);
  EXPECT_EQ(NearestRoot(half * half), 1.0);
  EXPECT_EQ(NearestRoot(half * half + Rational(0x1p-200)), 1.0 + 0x1p-52);
  EXPECT_EQ(NearestRoot(half * half - Rational(0x1p-200)), 1.0);
  const Rational nextHalf = Rational(1) + Rational(0x3p-53);
  EXPECT_EQ(NearestRoot(nextHalf * nextHalf), 1.0 + 0x1p-51);
  // These are the ends of the range.
  const Rational most(std::numeric_limits<double>::max());
  EXPECT_EQ(NearestRoot(most * most), std::numeric_limits<double>::max());
  EXPECT_EQ(NearestRoot(most * most * 4), infinity);
  const Rational least(5e-324);
  EXPECT_EQ(NearestRoot(least * least), 5e-324);
  EXPECT_EQ(NearestRoot(least * least / 16), 0.0);
  EXPECT_EQ(NearestRoot(least * least * 9 / 16), 5e-324);
}

Question Asked(std::vector<Coord3> moving, std::vector<Coord3> fixed, const Coord3& direction) {
  return {std::move(moving), std::move(fixed), direction, false};
}

const std::vector<Coord3> ground{{-9, -9, 0}, {9, -9, 0}, {0, 9, 0}};
const Coord3 below{0.0, 0.0, -1.0};

TEST(RationalJudge, NamesTheFirstOfPairsThatTie) {
  const std::vector<Coord3> tips{{0, 0, 9}, {1, 0, 9}, {0, 1, 9}, {1, 1, 3}, {2, 1, 5},
                                 {1, 2, 5}, {0, 0, 3}, {1, 0, 5}, {0, 1, 5}};
  std::vector<Coord3> twice = ground;
  twice.insert(twice.end(), ground.begin(), ground.end());
  const Verdict verdict = Judge(Asked(tips, twice, {0.0, 0.0, -2.0}));
  EXPECT_EQ(verdict.outcome, Outcome::Contact);
  EXPECT_EQ(verdict.moving, 1u);
  EXPECT_EQ(verdict.fixed, 0u);
  EXPECT_EQ(verdict.ties, 4u);
  EXPECT_EQ(verdict.squaredTravel, 9);
  EXPECT_EQ(verdict.interval.first, Ratio(3, 2));
  EXPECT_EQ(verdict.interval.last, Ratio(5, 2));
  EXPECT_EQ(verdict.kind, Kind::VertexFace);
  EXPECT_EQ(verdict.onMoving.z, 3);
  EXPECT_EQ(verdict.onFixed.z, 0);
  EXPECT_EQ(verdict.onFixed.x, 1);
}

TEST(RationalJudge, StartIsTheFirstPairByNumberWhoseIntervalHasZero) {
  const std::vector<Coord3> moving{{0, 0, 3}, {1, 0, 5},  {0, 1, 6}, {0, 0, 0}, {1, 0, 5},
                                   {0, 1, 6}, {0, 0, -3}, {1, 0, 5}, {0, 1, 6}};
  const Verdict resting = Judge(Asked(moving, ground, below));
  EXPECT_EQ(resting.outcome, Outcome::Start);
  EXPECT_EQ(resting.moving, 1u);
  EXPECT_EQ(resting.kind, Kind::VertexFace);
  EXPECT_EQ(resting.squaredTravel, 0);
  // Away from the ground the interval ends at zero instead of beginning there.
  const Verdict leaving = Judge(Asked(moving, ground, {0.0, 0.0, 1.0}));
  EXPECT_EQ(leaving.moving, 1u);
  EXPECT_EQ(leaving.kind, Kind::VertexFace);
  EXPECT_EQ(leaving.interval.last, 0);
  const std::vector<Coord3> through(moving.begin() + 6, moving.end());
  const Verdict overlap = Judge(Asked(through, ground, below));
  EXPECT_EQ(overlap.outcome, Outcome::Start);
  EXPECT_EQ(overlap.kind, Kind::Overlap);
}

TEST(RationalJudge, PairsThatPartAtZeroDoNotCountForABodyThatLeaves) {
  // The first triangle leaves the ground, and the second goes through it.
  const std::vector<Coord3> moving{{0, 0, 0},  {1, 0, 2}, {0, 1, 3},
                                   {0, 0, -3}, {1, 0, 5}, {0, 1, 6}};
  Question question = Asked(moving, ground, {0.0, 0.0, 1.0});
  EXPECT_EQ(Judge(question).moving, 0u);
  question.notLeaving = true;
  EXPECT_EQ(Judge(question).outcome, Outcome::Start);
  EXPECT_EQ(Judge(question).moving, 1u);
  question.moving.resize(3);
  EXPECT_EQ(Judge(question).outcome, Outcome::None);
  question.direction = below;
  EXPECT_EQ(Judge(question).outcome, Outcome::Start);
}

TEST(RationalJudge, LastIsTheGreatestEndOrTheLimit) {
  // Twice 3 to 6, the second time with a lower end.
  const std::vector<Coord3> moving{{0, 0, 3}, {1, 0, 5}, {0, 1, 5.5},
                                   {0, 0, 3}, {1, 0, 5}, {0, 1, 6}};
  const Question question = Asked(moving, ground, {0.0, 0.0, -2.0});
  const double infinite = std::numeric_limits<double>::infinity();
  const Verdict last = JudgeLast(question, infinite);
  EXPECT_EQ(last.outcome, Outcome::Contact);
  EXPECT_EQ(last.moving, 1u);
  EXPECT_EQ(last.squaredTravel, 36);
  EXPECT_EQ(last.kind, Kind::VertexFace);
  EXPECT_EQ(last.onMoving.z, 6);
  EXPECT_EQ(last.ties, 1u);
  const Verdict cut = JudgeLast(question, 5.25);
  EXPECT_EQ(cut.outcome, Outcome::Contact);
  EXPECT_EQ(cut.moving, 0u);
  EXPECT_EQ(cut.ties, 2u);
  EXPECT_EQ(cut.squaredTravel, Ratio(441, 16));
  EXPECT_EQ(cut.kind, Kind::Overlap);
  EXPECT_EQ(JudgeLast(question, 3.0).kind, Kind::VertexFace);
  EXPECT_EQ(JudgeLast(question, 5.5).kind, Kind::VertexFace);
  EXPECT_EQ(JudgeLast(question, 5.5).onMoving.z, Ratio(11, 2));
  EXPECT_EQ(JudgeLast(question, std::nextafter(3.0, 0.0)).outcome, Outcome::None);
  Question leaving = Asked({{0, 0, 0}, {1, 0, 2}, {0, 1, 3}}, ground, {0.0, 0.0, 1.0});
  EXPECT_EQ(JudgeLast(leaving, infinite).outcome, Outcome::Start);
  leaving.notLeaving = true;
  EXPECT_EQ(JudgeLast(leaving, infinite).outcome, Outcome::None);
}

TEST(RationalJudge, PatchIsEveryPairOfTheFirstTravel) {
  // A tip that two triangles share, and a later one; the ground twice.
  const std::vector<Coord3> tips{{0, 0, 4}, {1, 0, 5}, {0, 1, 5}, {0, 0, 3}, {1, 0, 5},
                                 {0, 1, 5}, {0, 0, 3}, {1, 0, 5}, {0, -1, 5}};
  std::vector<Coord3> twice = ground;
  twice.insert(twice.end(), ground.begin(), ground.end());
  const Patch patch = JudgePatch(Asked(tips, twice, below), 7);
  const std::vector<std::pair<std::size_t, std::size_t>> expected{{1, 0}, {1, 1}, {2, 0}, {2, 1}};
  EXPECT_EQ(patch.pairs, expected);
  EXPECT_EQ(patch.low.x, 0);
  EXPECT_EQ(patch.high.y, 0);
  EXPECT_EQ(patch.described.moving, 2u);
  EXPECT_EQ(patch.described.fixed, 1u);
  EXPECT_EQ(patch.described.squaredTravel, 9);
  // At the start all pairs that touch there; these cross, and share a part of their boxes.
  const Patch start = JudgePatch(Asked({{0, 0, -1}, {1, 0, 1}, {0, 1, 2}}, ground, below), 0);
  EXPECT_EQ(start.pairs.size(), 1u);
  EXPECT_EQ(start.described.kind, Kind::Overlap);
  EXPECT_EQ(start.low.z, 0);
  EXPECT_EQ(start.high.x, 1);
  EXPECT_TRUE(JudgePatch(Asked(tips, twice, {0.0, 0.0, 1.0}), 0).pairs.empty());
}

TEST(RationalJudge, BodiesBehindAndBesideAreNoContact) {
  const std::vector<Coord3> tip{{0, 0, 3}, {1, 0, 5}, {0, 1, 6}};
  EXPECT_EQ(Judge(Asked(tip, ground, {0.0, 0.0, 1.0})).outcome, Outcome::None);
  EXPECT_EQ(Judge(Asked(tip, ground, {1.0, 0.0, 0.0})).outcome, Outcome::None);
  EXPECT_EQ(Judge(Asked(tip, {}, below)).outcome, Outcome::None);
}

TEST(RationalJudge, LeavesOutTrianglesThatAreNotFiniteOrAreTurnedAway) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<Coord3> moving{{nan, 0, 1}, {1, 0, 1}, {0, 1, 1}, {0, 0, 2}, {1, 0, 2},
                             {0, 1, 2},   {0, 0, 3}, {0, 1, 3}, {1, 0, 3}};
  Question question = Asked(moving, ground, below);
  EXPECT_EQ(Judge(question).moving, 1u);
  EXPECT_EQ(Judge(question).skipped[0], 1u);
  // The triangle at height 2 has its normal upwards, and the triangle at height 3 downwards.
  question.oneSided = true;
  const Verdict verdict = Judge(question);
  EXPECT_EQ(verdict.moving, 2u);
  EXPECT_EQ(verdict.turnedAway[0], 1u);
  EXPECT_EQ(verdict.turnedAway[1], 0u);
  std::swap(question.fixed[0], question.fixed[1]);
  EXPECT_EQ(Judge(question).turnedAway[1], 1u);
}

TEST(RationalJudge, DecidesUponCoordinatesRoundedFarBelowTheLargest) {
  // The largest coordinate is 1, and the power of two above it is 2.
  const auto travel = [](double z) {
    const std::vector<Coord3> point{{0.25, 0.25, z}, {0.25, 0.25, z}, {0.25, 0.25, z}};
    const Verdict verdict = Judge(Asked(point, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, below));
    return verdict.outcome == Outcome::Start ? 0.0 : NearestRoot(verdict.squaredTravel);
  };
  EXPECT_EQ(travel(0x1p-300), 0x1p-300);
  EXPECT_EQ(travel(0x1p-400), 0.0);
  EXPECT_EQ(travel(0x1p-300 + 0x1p-340), 0x1p-300 + 0x1p-338 * 0.0);
  EXPECT_EQ(travel(0x1p-300 + 0x3p-339), 0x1p-300 + 0x1p-337);
  EXPECT_EQ(travel(0x1p-287), 0x1p-287);
  EXPECT_EQ(travel(0x1p-287 + 0x1p-339), 0x1p-287 + 0x1p-339);
  EXPECT_EQ(travel(std::nextafter(0x1p-287, 0.0)), 0x1p-287);
}

TEST(RationalJudge, ExtentsLeaveOutNothing) {
  for (std::size_t family = 0; family < FamilyCount(); ++family) {
    for (std::uint64_t seed = 500; seed < 501 + Scaled(40) / 20; ++seed) {
      const Scene scene = MakeScene(family, seed);
      if (scene.question.moving.size() * scene.question.fixed.size() > 9 * 2000) continue;
      const Verdict expected = JudgeEveryPair(scene.question);
      const Verdict actual = Judge(scene.question);
      EXPECT_EQ(actual.outcome, expected.outcome) << scene.name;
      EXPECT_EQ(actual.moving, expected.moving) << scene.name;
      EXPECT_EQ(actual.fixed, expected.fixed) << scene.name;
      EXPECT_EQ(actual.ties, expected.ties) << scene.name;
      EXPECT_EQ(actual.squaredTravel, expected.squaredTravel) << scene.name;
    }
  }
}

} // namespace
