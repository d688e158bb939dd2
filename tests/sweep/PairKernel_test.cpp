#include "PairKernel.h"

#include "RandomNumbers.h"
#include "reference/PairSweepOracle.h"

#include "gsl_TriTriMinDirectionalDist.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>

namespace {

using namespace gsl_sweep;
using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;

const Coord3 down{0.0, 0.0, -1.0};

struct Corners {
  Coord3 p[3];
};

/// What one pair does, with the triangles made from bare corners.
struct Answer {
  bool met = false;
  ContactInterval interval{};
};

Answer Sweep(const Coord3& d, const Corners& a, const Corners& b) {
  const TravelDirection direction(d);
  const Triangle moving = MakeTriangle(direction, a.p[0], a.p[1], a.p[2]);
  const Triangle fixed = MakeTriangle(direction, b.p[0], b.p[1], b.p[2]);
  Answer answer;
  answer.met = FindContactInterval(direction, moving, fixed, answer.interval);
  return answer;
}

PairOutcome Judge(const Coord3& d, const Corners& a, const Corners& b, double limit,
                  PairContact& first) {
  const TravelDirection direction(d);
  ExactRatio travel;
  return JudgePair(direction, MakeTriangle(direction, a.p[0], a.p[1], a.p[2]),
                   MakeTriangle(direction, b.p[0], b.p[1], b.p[2]), Rule::Touch, limit, first,
                   travel);
}

void ExpectPoint(const Coord3& actual, const Coord3& expected) {
  EXPECT_EQ(actual.x, expected.x);
  EXPECT_EQ(actual.y, expected.y);
  EXPECT_EQ(actual.z, expected.z);
}

TEST(TravelDirection, IsScaledByAPowerOfTwo) {
  for (const double scale : {0x1p-280, 0x1p-3, 1.0, 0x1p290}) {
    const TravelDirection direction({3.0 * scale, -0.0, -4.0 * scale});
    ExpectPoint(direction.Vector(), {0.375, 0.0, -0.5});
    EXPECT_EQ(direction.Length().hi, 0.625);
    EXPECT_EQ(direction.Length().lo, 0.0);
    ExpectPoint(direction.Unit(), {0.6, 0.0, -0.8});
    EXPECT_FALSE(std::signbit(direction.Unit().y));
    EXPECT_EQ(direction.Dominant(), 2);
  }
}

TEST(TravelDirection, LengthHasTwiceTheDigits) {
  // The root of 3 / 4, to 34 digits: 0.8660254037844386467637231707529362.
  const TravelDirection direction({1.0, 1.0, -1.0});
  EXPECT_EQ(direction.Length().hi, 0.8660254037844386467637231707529362);
  const auto rest = static_cast<long double>(direction.Length().hi) - 0.8660254037844386467637L;
  EXPECT_NEAR(direction.Length().lo, static_cast<double>(-rest), 0x1p-63);
  for (const double c : {direction.Unit().x, direction.Unit().y, -direction.Unit().z})
    EXPECT_EQ(c, 0.5773502691896257645091487805019575);
}

TEST(TravelDirection, DominantIsTheFirstOfTheLargest) {
  EXPECT_EQ(TravelDirection({1.0, -1.0, 1.0}).Dominant(), 0);
  EXPECT_EQ(TravelDirection({-1.0, 0.5, 1.0}).Dominant(), 0);
  EXPECT_EQ(TravelDirection({0.5, 1.0, -1.0}).Dominant(), 1);
  EXPECT_EQ(TravelDirection({0.5, -1.0, 0.75}).Dominant(), 1);
  EXPECT_EQ(TravelDirection({-1.0, 0.5, -1.5}).Dominant(), 2);
}

TEST(PointBounds, HoldEveryPointThatIsIncluded) {
  PointBounds bounds;
  bounds.Include({1.0, 2.0, 3.0});
  ExpectPoint(bounds.low, {1.0, 2.0, 3.0});
  ExpectPoint(bounds.high, {1.0, 2.0, 3.0});
  bounds.Include({4.0, -5.0, 3.5});
  bounds.Include({2.0, 1.0, -6.0});
  ExpectPoint(bounds.low, {1.0, -5.0, -6.0});
  ExpectPoint(bounds.high, {4.0, 2.0, 3.5});
}

const Corners bigFloor{{{-8.0, -8.0, 0.0}, {8.0, -8.0, 0.0}, {0.0, 8.0, 0.0}}};

TEST(PairKernel, VertexOverFace) {
  const Corners spike{{{0.0, 0.0, 3.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  const Answer answer = Sweep(down, spike, bigFloor);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::VertexFace);
  ExpectPoint(answer.interval.first.onMoving, {0.0, 0.0, 3.0});
  ExpectPoint(answer.interval.first.onFixed, {0.0, 0.0, 0.0});
  EXPECT_EQ(answer.interval.last.travel, 6.0);
  ExpectPoint(answer.interval.last.onMoving, {0.0, 1.0, 6.0});
}

TEST(PairKernel, FaceOverVertex) {
  const Corners plate{{{-8.0, -8.0, 4.0}, {8.0, -8.0, 4.0}, {0.0, 8.0, 4.0}}};
  const Corners spike{{{0.0, 0.0, 1.0}, {1.0, 0.0, -5.0}, {0.0, 1.0, -6.0}}};
  const Answer answer = Sweep(down, plate, spike);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::FaceVertex);
  ExpectPoint(answer.interval.first.onMoving, {0.0, 0.0, 4.0});
  ExpectPoint(answer.interval.first.onFixed, {0.0, 0.0, 1.0});
}

TEST(PairKernel, EdgeOverEdge) {
  // A ridge turned down along x over a ridge along y; all other corners keep away.
  const Corners moving{{{-1.0, 0.0, 5.0}, {1.0, 0.0, 5.0}, {0.0, 0.5, 9.0}}};
  const Corners fixed{{{0.25, -1.0, 2.0}, {0.25, 1.0, 2.0}, {0.5, 0.0, -9.0}}};
  const Answer answer = Sweep(down, moving, fixed);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::EdgeEdge);
  ExpectPoint(answer.interval.first.onMoving, {0.25, 0.0, 5.0});
  ExpectPoint(answer.interval.first.onFixed, {0.25, 0.0, 2.0});
}

TEST(PairKernel, VertexOverVertex) {
  const Corners moving{{{0.0, 0.0, 3.0}, {2.0, 1.0, 4.0}, {1.0, 2.0, 5.0}}};
  const Corners fixed{{{0.0, 0.0, 1.0}, {-2.0, -1.0, 0.0}, {-1.0, -2.0, 0.0}}};
  const Answer answer = Sweep(down, moving, fixed);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 2.0);
  EXPECT_EQ(answer.interval.last.travel, 2.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::VertexVertex);
  ExpectPoint(answer.interval.first.onMoving, {0.0, 0.0, 3.0});
  ExpectPoint(answer.interval.first.onFixed, {0.0, 0.0, 1.0});
}

TEST(PairKernel, CornersThatMeetAreNamedAsTheyAre) {
  // In lengths of the direction the travel is a third of 1 - 0x1.23456789abcdep-110, which has no
  // end. So a corner that is moved by what is measured misses the other one.
  const double high = 0x1.23456789abcdep-110;
  const Corners moving{{{0.0, 0.0, 1.0}, {2.0, 1.0, 4.0}, {1.0, 2.0, 5.0}}};
  const Corners fixed{{{0.0, 0.0, high}, {-2.0, -1.0, 0.0}, {-1.0, -2.0, 0.0}}};
  const Answer answer = Sweep({0.0, 0.0, -3.0}, moving, fixed);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::VertexVertex);
  ExpectPoint(answer.interval.first.onMoving, {0.0, 0.0, 1.0});
  ExpectPoint(answer.interval.first.onFixed, {0.0, 0.0, high});
}

TEST(PairKernel, VertexOverEdgeOfAFaceTriangle) {
  const Corners moving{{{0.0, -8.0, 3.0}, {1.0, -9.0, 3.5}, {-1.0, -9.0, 4.0}}};
  const Answer answer = Sweep(down, moving, bigFloor);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::VertexEdge);
}

TEST(PairKernel, OneUlpBesideAnEdgeNeverTouches) {
  const double beside = std::nextafter(-8.0, -9.0);
  const Corners moving{{{0.0, beside, 3.0}, {1.0, -9.0, 3.5}, {-1.0, -9.0, 4.0}}};
  EXPECT_FALSE(Sweep(down, moving, bigFloor).met);
}

TEST(PairKernel, EdgeOnTrianglesOfOneWallSlideOntoEachOther) {
  // Both in the plane x = 1, along the direction.
  const Corners moving{{{1.0, 0.0, 5.0}, {1.0, 4.0, 5.0}, {1.0, 2.0, 9.0}}};
  const Corners fixed{{{1.0, 1.0, 2.0}, {1.0, 3.0, 2.0}, {1.0, 2.0, -2.0}}};
  const Answer answer = Sweep(down, moving, fixed);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::EdgeVertex);
  EXPECT_EQ(answer.interval.last.travel, 11.0);
  EXPECT_EQ(answer.interval.last.kind, ContactKind::VertexVertex);
}

TEST(PairKernel, EdgeOnTrianglesOfTwoWallsTouchAlongTheirCrossing) {
  const Corners moving{{{0.0, -1.0, 5.0}, {0.0, 1.0, 5.0}, {0.0, 0.5, 9.0}}};
  const Corners fixed{{{-1.0, 0.0, 2.0}, {1.0, 0.0, 2.0}, {0.5, 0.0, -2.0}}};
  const Answer answer = Sweep(down, moving, fixed);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::EdgeEdge);
  ExpectPoint(answer.interval.first.onFixed, {0.0, 0.0, 2.0});
}

TEST(PairKernel, WallsOneUlpApartNeverTouch) {
  const double beside = std::nextafter(1.0, 2.0);
  const Corners moving{{{1.0, 0.0, 5.0}, {1.0, 4.0, 5.0}, {1.0, 2.0, 9.0}}};
  const Corners fixed{{{beside, 1.0, 2.0}, {beside, 3.0, 2.0}, {beside, 2.0, -2.0}}};
  EXPECT_FALSE(Sweep(down, moving, fixed).met);
}

TEST(PairKernel, DegenerateTrianglesCountAsSegmentsAndPoints) {
  const Corners point{{{0.5, 0.5, 4.0}, {0.5, 0.5, 4.0}, {0.5, 0.5, 4.0}}};
  const Corners segment{{{0.0, 0.0, 1.0}, {1.0, 1.0, 1.0}, {0.25, 0.25, 1.0}}};
  const Corners upright{{{0.5, 0.5, -1.0}, {0.5, 0.5, -4.0}, {0.5, 0.5, -2.0}}};
  const Answer onFloor = Sweep(down, point, bigFloor);
  ASSERT_TRUE(onFloor.met);
  EXPECT_EQ(onFloor.interval.first.travel, 4.0);
  const Answer onSegment = Sweep(down, point, segment);
  ASSERT_TRUE(onSegment.met);
  EXPECT_EQ(onSegment.interval.first.travel, 3.0);
  EXPECT_EQ(onSegment.interval.first.kind, ContactKind::VertexEdge);
  const Answer onPoint = Sweep(down, point, point);
  ASSERT_TRUE(onPoint.met);
  EXPECT_EQ(onPoint.interval.first.travel, 0.0);
  EXPECT_EQ(onPoint.interval.first.kind, ContactKind::VertexVertex);
  const Answer onUpright = Sweep(down, segment, upright);
  ASSERT_TRUE(onUpright.met);
  EXPECT_EQ(onUpright.interval.first.travel, 2.0);
  EXPECT_EQ(onUpright.interval.last.travel, 5.0);
  const Answer crossing =
      Sweep(down, segment, {{{0.0, 1.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}}});
  ASSERT_TRUE(crossing.met);
  EXPECT_EQ(crossing.interval.first.travel, 1.0);
  EXPECT_EQ(crossing.interval.first.kind, ContactKind::EdgeEdge);
}

TEST(PairKernel, EveryOrderOfCornersHasTheSameInterval) {
  const Corners moving{{{-1.0, 0.0, 5.0}, {1.0, 0.25, 5.5}, {0.0, 0.5, 9.0}}};
  const Corners fixed{{{0.25, -1.0, 2.0}, {0.25, 1.0, 2.5}, {0.5, 0.0, -9.0}}};
  const Coord3 d{0.25, 0.125, -1.0};
  const Answer expected = Sweep(d, moving, fixed);
  ASSERT_TRUE(expected.met);
  int order[3] = {0, 1, 2};
  do {
    const Corners turned{{moving.p[order[0]], moving.p[order[1]], moving.p[order[2]]}};
    const Answer ofMoving = Sweep(d, turned, fixed);
    ASSERT_TRUE(ofMoving.met);
    EXPECT_EQ(ofMoving.interval.first.travel, expected.interval.first.travel);
    EXPECT_EQ(ofMoving.interval.last.travel, expected.interval.last.travel);
    const Corners turnedFixed{{fixed.p[order[0]], fixed.p[order[1]], fixed.p[order[2]]}};
    const Answer ofFixed = Sweep(d, moving, turnedFixed);
    ASSERT_TRUE(ofFixed.met);
    EXPECT_EQ(ofFixed.interval.first.travel, expected.interval.first.travel);
  } while (std::next_permutation(order, order + 3));
}

TEST(PairKernel, TravelIsMeasuredAlongTheUnitDirection) {
  const Corners spike{{{0.0, 0.0, 3.0}, {-0.1, 0.0, 5.0}, {-0.2, -0.1, 6.0}}};
  const Answer answer = Sweep({3.0, 0.0, -4.0}, spike, bigFloor);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.75);
  ExpectPoint(answer.interval.first.onFixed, {2.25, 0.0, 0.0});
}

TEST(PairKernel, JudgeIsClosedAtTheLimit) {
  const Corners spike{{{0.0, 0.0, 3.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  PairContact contact{-7.0, ContactKind::Overlap, {}, {}};
  EXPECT_EQ(Judge(down, spike, bigFloor, std::nextafter(3.0, 0.0), contact), PairOutcome::Apart);
  EXPECT_EQ(contact.travel, -7.0);
  EXPECT_EQ(Judge(down, spike, bigFloor, 3.0, contact), PairOutcome::Ahead);
  EXPECT_EQ(contact.travel, 3.0);
}

TEST(PairKernel, JudgeIsClosedAtTheLimitOnAFaceAllButEdgeOn) {
  // The shadow is 2^-52 wide, less than the bound of its rounded area.
  const double hair = 0x1p-52;
  const Corners sliver{{{0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {1.0 + hair, 1.0, 5.0}}};
  const Coord3 p{0.5 + hair / 2.0, 0.5, 9.0};
  PairContact contact{};
  EXPECT_EQ(Judge(down, {{p, p, p}}, sliver, 6.5, contact), PairOutcome::Ahead);
  EXPECT_EQ(contact.travel, 6.5);
  EXPECT_EQ(contact.kind, ContactKind::VertexEdge);
  EXPECT_EQ(Judge(down, {{p, p, p}}, sliver, std::nextafter(6.5, 0.0), contact),
            PairOutcome::Apart);
}

TEST(PairKernel, JudgeSeesBehindAndTouching) {
  PairContact contact{};
  const Corners below{{{0.0, 0.0, -3.0}, {1.0, 0.0, -5.0}, {0.0, 1.0, -6.0}}};
  EXPECT_EQ(Judge(down, below, bigFloor, 1e9, contact), PairOutcome::Apart);
  const Corners through{{{0.0, 0.0, -3.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  EXPECT_EQ(Judge(down, through, bigFloor, 1e9, contact), PairOutcome::Touching);
  const Corners standing{{{0.0, 0.0, 0.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  EXPECT_EQ(Judge(down, standing, bigFloor, 1e9, contact), PairOutcome::Touching);
  const Corners hanging{{{0.0, 0.0, 0.0}, {1.0, 0.0, -5.0}, {0.0, 1.0, -6.0}}};
  EXPECT_EQ(Judge(down, hanging, bigFloor, 1e9, contact), PairOutcome::Touching);
  const double above = std::numeric_limits<double>::denorm_min();
  const Corners hair{{{0.0, 0.0, 0x1p-288}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  EXPECT_EQ(Judge(down, hair, bigFloor, 1e9, contact), PairOutcome::Ahead);
  EXPECT_GE(contact.travel, above);
}

LastOutcome JudgeEnd(const Coord3& d, const Corners& a, const Corners& b, Rule rule, double limit,
                     PairContact& last, double least = 0.0) {
  const TravelDirection direction(d);
  ExactRatio travel;
  return JudgeLast(direction, MakeTriangle(direction, a.p[0], a.p[1], a.p[2]),
                   MakeTriangle(direction, b.p[0], b.p[1], b.p[2]), rule, {limit, 0}, least, last,
                   travel);
}

Corners At(const Corners& corners, double z) {
  Corners moved = corners;
  for (Coord3& p : moved.p)
    p.z += z;
  return moved;
}

/// Touches the floor from travel 3 to travel 6.
const Corners tip{{{0.0, 0.0, 3.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
constexpr double noLimit = std::numeric_limits<double>::infinity();

TEST(PairKernel, RuleLeavesOutPairsThatPartAtZero) {
  const auto judge = [](double z, Rule rule) {
    const TravelDirection direction(down);
    const Corners a = At(tip, z);
    PairContact first{};
    ExactRatio travel;
    return JudgePair(direction, MakeTriangle(direction, a.p[0], a.p[1], a.p[2]),
                     MakeTriangle(direction, bigFloor.p[0], bigFloor.p[1], bigFloor.p[2]), rule,
                     noLimit, first, travel);
  };
  EXPECT_EQ(judge(-6.0, Rule::Touch), PairOutcome::Touching);
  EXPECT_EQ(judge(-6.0, Rule::NotLeaving), PairOutcome::Apart);
  EXPECT_EQ(judge(std::nextafter(-6.0, 0.0), Rule::NotLeaving), PairOutcome::Touching);
  EXPECT_EQ(judge(std::nextafter(-6.0, -7.0), Rule::Touch), PairOutcome::Apart);
  EXPECT_EQ(judge(-3.0, Rule::NotLeaving), PairOutcome::Touching);
  EXPECT_EQ(judge(-2.0, Rule::NotLeaving), PairOutcome::Ahead);
}

TEST(PairKernel, SolidsMeetFaceToFaceOverACommonArea) {
  const TravelDirection direction(down);
  PairContact first{};
  const auto judge = [&](const Coord3& a, const Coord3& b, const Coord3& c) {
    ExactRatio travel;
    const Triangle floorFace =
        MakeTriangle(direction, {0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 4.0, 0.0});
    return JudgePair(direction, MakeTriangle(direction, a, b, c), floorFace, Rule::Solid, noLimit,
                     first, travel);
  };
  EXPECT_EQ(judge({1.0, 1.0, 3.0}, {1.0, 2.0, 3.0}, {2.0, 1.0, 3.0}), PairOutcome::Ahead);
  EXPECT_EQ(first.travel, 3.0);
  EXPECT_EQ(judge({1.0, 1.0, 0.0}, {1.0, 2.0, 0.0}, {2.0, 1.0, 0.0}), PairOutcome::Ahead);
  EXPECT_EQ(first.travel, 0.0);
  // It faces upwards, it is edge-on, or its shadow shares a border or a corner alone.
  EXPECT_EQ(judge({1.0, 1.0, 3.0}, {2.0, 1.0, 3.0}, {1.0, 2.0, 3.0}), PairOutcome::Apart);
  EXPECT_EQ(judge({1.0, 1.0, 3.0}, {1.0, 2.0, 3.0}, {1.0, 1.0, 5.0}), PairOutcome::Apart);
  EXPECT_EQ(judge({0.0, 1.0, 3.0}, {-1.0, 2.0, 3.0}, {0.0, 2.0, 3.0}), PairOutcome::Apart);
  EXPECT_EQ(judge({4.0, 0.0, 3.0}, {5.0, 1.0, 3.0}, {6.0, 0.0, 3.0}), PairOutcome::Apart);
  // It crosses the border by one unit in the last place.
  EXPECT_EQ(judge({0x1p-60, 1.0, 3.0}, {-1.0, 2.0, 3.0}, {0.0, 2.0, 3.0}), PairOutcome::Ahead);
  // A part of it has passed.
  EXPECT_EQ(judge({1.0, 1.0, -0x1p-60}, {1.0, 2.0, 3.0}, {2.0, 1.0, 3.0}), PairOutcome::Apart);
}

TEST(PairKernel, LastIsCutAtTheGreatestTravelExactly) {
  PairContact last{};
  EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, noLimit, last), LastOutcome::Parts);
  EXPECT_EQ(last.travel, 6.0);
  EXPECT_EQ(last.kind, ContactKind::VertexFace);
  EXPECT_EQ(last.movingFeature, 2);
  EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, std::nextafter(6.0, 7.0), last),
            LastOutcome::Parts);
  last.travel = -77.0;
  for (const double limit : {6.0, 4.0, 3.0})
    EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, limit, last), LastOutcome::Cut);
  EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, std::nextafter(3.0, 0.0), last),
            LastOutcome::Apart);
  // What parts too early need not be measured.
  EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, noLimit, last, 6.1), LastOutcome::Apart);
  EXPECT_EQ(last.travel, -77.0);
  EXPECT_EQ(JudgeEnd(down, tip, bigFloor, Rule::Touch, noLimit, last, 6.0), LastOutcome::Parts);
}

TEST(PairKernel, LastAtZeroDependsOnTheRule) {
  PairContact last{};
  last.travel = -77.0;
  const Corners leaving = At(tip, -6.0);
  EXPECT_EQ(JudgeEnd(down, leaving, bigFloor, Rule::NotLeaving, noLimit, last), LastOutcome::Apart);
  EXPECT_EQ(JudgeEnd(down, leaving, bigFloor, Rule::NotLeaving, 0.0, last), LastOutcome::Apart);
  EXPECT_EQ(JudgeEnd(down, leaving, bigFloor, Rule::Touch, 0.0, last), LastOutcome::Cut);
  EXPECT_EQ(last.travel, -77.0);
  EXPECT_EQ(JudgeEnd(down, leaving, bigFloor, Rule::Touch, noLimit, last), LastOutcome::Parts);
  EXPECT_EQ(last.travel, 0.0);
  EXPECT_EQ(JudgeEnd(down, At(tip, -7.0), bigFloor, Rule::Touch, noLimit, last),
            LastOutcome::Apart);
  EXPECT_EQ(JudgeEnd(down, At(tip, -4.0), bigFloor, Rule::NotLeaving, 0.0, last), LastOutcome::Cut);
}

TEST(PairKernel, ContactAtACutIsOnBothTriangles) {
  const TravelDirection direction(down);
  const auto cut = [&](double limit) {
    return ContactAtCut(direction, MakeTriangle(direction, tip.p[0], tip.p[1], tip.p[2]),
                        MakeTriangle(direction, bigFloor.p[0], bigFloor.p[1], bigFloor.p[2]),
                        {limit, 0});
  };
  EXPECT_EQ(cut(3.0).kind, ContactKind::VertexFace);
  EXPECT_EQ(cut(3.0).movingFeature, 0);
  EXPECT_EQ(cut(6.0).kind, ContactKind::VertexFace);
  EXPECT_EQ(cut(6.0).movingFeature, 2);
  // Two thirds of the way from the first to the last contact.
  const PairContact between = cut(5.0);
  EXPECT_EQ(between.kind, ContactKind::Overlap);
  EXPECT_EQ(between.travel, 5.0);
  EXPECT_NEAR(between.onMoving.y, 2.0 / 3.0, 1e-15);
  EXPECT_NEAR(between.onMoving.z, 5.0, 1e-15);
  EXPECT_NEAR(between.onFixed.y, 2.0 / 3.0, 1e-15);
  EXPECT_EQ(between.onFixed.z, 0.0);
  // One unit in the last place decides.
  const Corners flat{{{0.0, 0.0, 3.0}, {1.0, 0.0, std::nextafter(3.0, 4.0)}, {0.0, 1.0, 3.0}}};
  const PairContact near =
      ContactAtCut(direction, MakeTriangle(direction, flat.p[0], flat.p[1], flat.p[2]),
                   MakeTriangle(direction, bigFloor.p[0], bigFloor.p[1], bigFloor.p[2]),
                   {std::nextafter(3.0, 4.0), 0});
  EXPECT_EQ(near.kind, ContactKind::VertexFace);
  EXPECT_EQ(near.movingFeature, 1);
}

TEST(PairKernel, MeetingAtATravelCollectsEveryPoint) {
  const TravelDirection direction(down);
  const Triangle fixed = MakeTriangle(direction, {0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 4.0, 0.0});
  // Level, with a corner inside, a corner outside and an edge across an edge.
  const Triangle level = MakeTriangle(direction, {1.0, 1.0, 2.0}, {5.0, 1.0, 2.0}, {1.0, 5.0, 2.0});
  PairContact first{};
  ExactRatio travel;
  ASSERT_EQ(JudgePair(direction, level, fixed, Rule::Touch, noLimit, first, travel),
            PairOutcome::Ahead);
  PointBounds points;
  EXPECT_TRUE(MeetFirstAt(direction, level, fixed, travel, points));
  ExpectPoint(points.low, {1.0, 1.0, 0.0});
  ExpectPoint(points.high, {3.0, 3.0, 0.0});
  // Another pair at another travel leaves the bounds alone.
  const Triangle later = MakeTriangle(direction, {0.0, 0.0, 2.5}, {9.0, 0.0, 2.5}, {0.0, 9.0, 2.5});
  EXPECT_FALSE(MeetFirstAt(direction, later, fixed, travel, points));
  EXPECT_FALSE(MeetAtStart(direction, later, fixed, Rule::Touch, points));
  ExpectPoint(points.high, {3.0, 3.0, 0.0});
  // At the start: by features, or by what the boxes share.
  const Triangle resting =
      MakeTriangle(direction, {1.0, 1.0, 0.0}, {5.0, 1.0, 0.0}, {1.0, 5.0, 0.0});
  PointBounds atStart;
  EXPECT_FALSE(MeetAtStart(direction, resting, fixed, Rule::NotLeaving, atStart));
  EXPECT_TRUE(MeetAtStart(direction, resting, fixed, Rule::Touch, atStart));
  ExpectPoint(atStart.high, {3.0, 3.0, 0.0});
  const Triangle crossing =
      MakeTriangle(direction, {1.0, 1.0, -1.0}, {2.0, 1.0, 1.0}, {1.5, 1.5, 3.0});
  PointBounds crossed;
  EXPECT_TRUE(MeetAtStart(direction, crossing, fixed, Rule::NotLeaving, crossed));
  ExpectPoint(crossed.low, {1.0, 1.0, 0.0});
  ExpectPoint(crossed.high, {2.0, 1.5, 0.0});
}

TEST(PairKernel, ContactAtStartIsOnBothTriangles) {
  const Corners through{{{0.25, 0.0, -3.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  const Answer answer = Sweep(down, through, bigFloor);
  ASSERT_TRUE(answer.met);
  const PairContact contact = ContactAtStart(answer.interval);
  EXPECT_EQ(contact.travel, 0.0);
  EXPECT_EQ(contact.kind, ContactKind::Overlap);
  ExpectPoint(contact.onMoving, contact.onFixed);
  EXPECT_NEAR(contact.onFixed.z, 0.0, 1e-15);
  const Corners standing{{{0.0, 0.0, 0.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 6.0}}};
  const Answer atRest = Sweep(down, standing, bigFloor);
  ASSERT_TRUE(atRest.met);
  EXPECT_EQ(ContactAtStart(atRest.interval).kind, ContactKind::VertexFace);
  ExpectPoint(ContactAtStart(atRest.interval).onFixed, {0.0, 0.0, 0.0});
}

/// The normal of the first contact; the sentinel when there is none.
constexpr Coord3 noNormal{-7.0, -8.0, -9.0};

Coord3 FirstNormal(const Coord3& d, const Corners& a, const Corners& b) {
  const TravelDirection direction(d);
  const Triangle moving = MakeTriangle(direction, a.p[0], a.p[1], a.p[2]);
  const Triangle fixed = MakeTriangle(direction, b.p[0], b.p[1], b.p[2]);
  ContactInterval interval{};
  EXPECT_TRUE(FindContactInterval(direction, moving, fixed, interval));
  Coord3 normal = noNormal;
  const bool found = ContactNormal(direction, moving, fixed, interval.first, normal);
  EXPECT_EQ(found, normal.x != noNormal.x);
  return normal;
}

Corners Scaled(Corners t, double scale) {
  for (Coord3& p : t.p)
    p = Multiply(p, scale);
  return t;
}

TEST(PairKernel, NormalOfAVertexOnAFaceIsThatOfTheFixedFace) {
  const Corners spike{{{0.0, 0.0, 3.0}, {1.0, 0.5, 9.0}, {0.0, 1.0, 8.0}}};
  ExpectPoint(FirstNormal(down, spike, bigFloor), {0.0, 0.0, 1.0});
  ExpectPoint(FirstNormal({1.0, 0.0, -1.0}, spike, bigFloor), {0.0, 0.0, 1.0});
  // The plane 3x + 4z = 0, whichever way the fixed triangle turns.
  const Corners slope{{{-8.0, -8.0, 6.0}, {8.0, -8.0, -6.0}, {0.0, 8.0, 0.0}}};
  const Corners turned{{slope.p[1], slope.p[0], slope.p[2]}};
  ExpectPoint(FirstNormal(down, spike, slope), {0.6, 0.0, 0.8});
  ExpectPoint(FirstNormal(down, spike, turned), {0.6, 0.0, 0.8});
  // From below it is the other side.
  const Corners hanging{{{0.0, 0.0, -3.0}, {1.0, 0.5, -9.0}, {0.0, 1.0, -8.0}}};
  ExpectPoint(FirstNormal({0.0, 0.0, 1.0}, hanging, slope), {-0.6, 0.0, -0.8});
}

TEST(PairKernel, NormalOfAFaceOnAVertexIsThatOfTheMovingFace) {
  const Corners plate{{{-8.0, -8.0, 10.0}, {8.0, -8.0, -2.0}, {0.0, 8.0, 4.0}}};
  const Corners spike{{{0.0, 0.0, -3.0}, {1.0, 0.0, -15.0}, {0.0, 1.0, -16.0}}};
  ExpectPoint(FirstNormal(down, plate, spike), {0.6, 0.0, 0.8});
  ExpectPoint(FirstNormal(down, {{plate.p[2], plate.p[1], plate.p[0]}}, spike), {0.6, 0.0, 0.8});
}

TEST(PairKernel, NormalOfTwoEdgesIsAcrossBoth) {
  const Corners ridge{{{-1.0, 0.0, 5.0}, {1.0, 0.0, 5.0}, {0.0, 0.5, 9.0}}};
  const Corners level{{{0.25, -1.0, 2.0}, {0.25, 1.0, 2.0}, {0.5, 0.0, -9.0}}};
  ExpectPoint(FirstNormal(down, ridge, level), {0.0, 0.0, 1.0});
  // The fixed edge rises by 3 in 4 along y, so that the normal is (0, -3, 4) / 5.
  const Corners rising{{{0.25, -4.0, -1.0}, {0.25, 4.0, 5.0}, {0.5, 0.0, -19.0}}};
  for (int k = 0; k < 3; ++k) {
    const Corners moving{{ridge.p[k], ridge.p[(k + 1) % 3], ridge.p[(k + 2) % 3]}};
    const Corners fixed{{rising.p[2 - k], rising.p[(4 - k) % 3], rising.p[(3 - k) % 3]}};
    ExpectPoint(FirstNormal(down, moving, fixed), {0.0, -0.6, 0.8});
  }
}

TEST(PairKernel, OtherKindsHaveNoNormal) {
  const Corners onEdge{{{0.0, -8.0, 3.0}, {1.0, -9.0, 3.5}, {-1.0, -9.0, 4.0}}};
  ExpectPoint(FirstNormal(down, onEdge, bigFloor), noNormal);
  const Corners onCorner{{{8.0, -8.0, 3.0}, {18.0, -9.0, 3.5}, {17.0, -9.0, 4.0}}};
  ExpectPoint(FirstNormal(down, onCorner, bigFloor), noNormal);
  const Corners wall{{{1.0, 0.0, 5.0}, {1.0, 4.0, 5.0}, {1.0, 2.0, 9.0}}};
  const Corners below{{{1.0, 1.0, 2.0}, {1.0, 3.0, 2.0}, {1.0, 2.0, -2.0}}};
  ExpectPoint(FirstNormal(down, wall, below), noNormal); // edge on corner
  const TravelDirection direction(down);
  const Triangle floor = MakeTriangle(direction, bigFloor.p[0], bigFloor.p[1], bigFloor.p[2]);
  Coord3 normal = noNormal;
  EXPECT_FALSE(ContactNormal(direction, floor, floor, {0.0, ContactKind::Overlap, {}, {}}, normal));
  ExpectPoint(normal, noNormal);
}

TEST(PairKernel, NormalIsNullWhereTheProductWithTheDirectionIsZero) {
  // No contact of these kinds is found on such triangles; the rule holds for any that is named.
  const Corners wall{{{1.0, 0.0, 5.0}, {1.0, 4.0, 5.0}, {1.0, 2.0, 9.0}}};
  const TravelDirection direction(down);
  const Triangle edgeOn = MakeTriangle(direction, wall.p[0], wall.p[1], wall.p[2]);
  Coord3 normal = noNormal;
  for (const ContactKind kind :
       {ContactKind::VertexFace, ContactKind::FaceVertex, ContactKind::EdgeEdge}) {
    EXPECT_FALSE(ContactNormal(direction, edgeOn, edgeOn, {1.0, kind, {}, {}, 0, 1}, normal));
    EXPECT_FALSE(ContactNormal(direction, edgeOn, edgeOn, {1.0, kind, {}, {}, 2, 2}, normal));
  }
  ExpectPoint(normal, noNormal);
}

/// Moves each component of a point to the next axis, `count` times.
Coord3 Cycled(const Coord3& p, int count) {
  const double c[3] = {p.x, p.y, p.z};
  return {c[(3 - count) % 3], c[(4 - count) % 3], c[(5 - count) % 3]};
}

TEST(PairKernel, NormalIsAgainstTheDirectionWhereItsRoundingWasNot) {
  // The plane is so nearly along the direction that the rounded components
  // (0.6399746063114223, 0.025598984252456894, -0.7679695275737068) are along it.
  const Coord3 turned{0.6399746063114223, 0.025598984252456894 - 0x1p-53, -0.7679695275737068};
  for (const int count : {0, 1, 2}) {
    const TravelDirection direction(Cycled({-1.0, 5.0, -2.0 / 3.0}, count));
    const Triangle face = MakeTriangle(direction, {0.0, 0.0, 0.0}, Cycled({-5.0, 5.0, -4.0}, count),
                                       Cycled({7.0, 5.0, 6.0}, count));
    for (const ContactKind kind : {ContactKind::VertexFace, ContactKind::FaceVertex}) {
      Coord3 normal = noNormal;
      ASSERT_TRUE(ContactNormal(direction, face, face, {1.0, kind, {}, {}, 0, 0}, normal));
      ExpectPoint(normal, Cycled(turned, count));
    }
  }
}

TEST(PairKernel, NormalIsAgainstTheDirectionWhereItsRoundingWasAcross) {
  // The cross product of the edges is (-2^60, 2^60 + 1, 0). Rounded, both components of the normal
  // have the size of the root of one half, and their product with the direction is zero.
  const TravelDirection direction({1.0, 1.0, 0.0});
  const Triangle face =
      MakeTriangle(direction, {-1.0, 0.0, 0.0}, {-1.0, 0.0, 1.0}, {0x1p60, 0x1p60, 0.0});
  Coord3 normal = noNormal;
  ASSERT_TRUE(ContactNormal(direction, face, face, {1.0, ContactKind::VertexFace, {}, {}}, normal));
  const double half = 0.70710678118654752440;
  ExpectPoint(normal, {half - 0x1p-53, -half, 0.0});
}

TEST(PairKernel, NormalIsTheSameAtEverySize) {
  const Corners spike{{{0.25, 0.5, 30.0}, {1.0, 0.5, 90.0}, {0.0, 1.0, 80.0}}};
  const Corners slope{{{-8.0, -7.0, 6.0}, {9.0, -8.0, -6.0}, {1.0, 8.0, 0.125}}};
  const Coord3 d{0.0625, 0.03125, -1.0};
  const Coord3 expected = FirstNormal(d, spike, slope);
  ASSERT_NE(expected.x, noNormal.x);
  for (const double scale : {0x1p-270, 0x1p-100, 0x1p100, 0x1p290})
    ExpectPoint(FirstNormal(d, Scaled(spike, scale), Scaled(slope, scale)), expected);
}

TEST(PairKernel, NormalKeepsEveryDigitWhereTheEdgesAreAllButParallel) {
  // Neighbours of the Fibonacci series: F(n) F(n+2) - F(n+1)^2 is 1 for the odd n = 69, though the
  // products have 29 digits. The cross product of the edges is (-F(69), F(68), 1).
  const double f68 = 72723460248141.0;
  const double f69 = 117669030460994.0;
  const double f70 = 190392490709135.0;
  const double f71 = 308061521170129.0;
  const Corners needle{{{0.0, 0.0, 0.0}, {f69, f70, 1.0}, {f70, f71, 1.0}}};
  // No double is over the inside of this face, so that the contact is only named.
  const TravelDirection direction(down);
  const Triangle fixed = MakeTriangle(direction, needle.p[0], needle.p[1], needle.p[2]);
  Coord3 normal = noNormal;
  ASSERT_TRUE(
      ContactNormal(direction, fixed, fixed, {1.0, ContactKind::VertexFace, {}, {}}, normal));
  const long double length =
      std::sqrt(static_cast<long double>(f69) * static_cast<long double>(f69) +
                static_cast<long double>(f68) * static_cast<long double>(f68) + 1.0L);
  const auto expected = [length](double c) {
    return static_cast<double>(static_cast<long double>(c) / length);
  };
  EXPECT_NEAR(normal.x, expected(-f69), 0x1p-53);
  EXPECT_NEAR(normal.y, expected(f68), 0x1p-53);
  EXPECT_NEAR(normal.z, expected(1.0), expected(1.0) * 0x1p-52);
}

TEST(PairKernel, SmallComponentOfANormalIsKept) {
  // The plane z = 2^-400 x, made of coordinates that are in range.
  const double rise = 0x1p-240;
  const double run = 0x1p160;
  const Corners floor{{{-run, -run, -rise}, {run, -run, rise}, {0.0, run, 0.0}}};
  const Corners spike{{{1.0, 1.0, 3.0}, {1.0, 1.0, 5.0}, {1.0, 1.0, 6.0}}};
  ExpectPoint(FirstNormal(down, spike, floor), {-0x1p-400, 0.0, 1.0});
  // The cross product of the edges is (15 2^-470, -5 2^65, 2^600) but for far lower bits: the first
  // component of the normal is subnormal.
  const double big = 0x1p300;
  const TravelDirection direction(down);
  const Triangle face =
      MakeTriangle(direction, {0.0, 0.0, 0.0}, {big, 0x3p-235, 0.0}, {big, big, 0x5p-235});
  Coord3 normal = noNormal;
  ASSERT_TRUE(ContactNormal(direction, face, face, {1.0, ContactKind::VertexFace, {}, {}}, normal));
  ExpectPoint(normal, {0xfp-1070, -0x5p-535, 1.0});
}

TEST(PairKernel, NormalIsTurnedWhereItsProductWithTheDirectionUnderflows) {
  // The cross product of the edges is (3 b 2^-470, -b 2^65, 2^600) but for far lower bits. The
  // first component of the normal rounds up, from 240.75 to 241 least doubles, which turns the
  // normal along the direction. Both products with the direction are 120 least doubles in rounded
  // arithmetic.
  const double b = 5.0 + 1.0 / 64.0;
  const double big = 0x1p300;
  const TravelDirection direction({0x1p260, 0x3.0000000000004p-275, 0.0});
  const Triangle face =
      MakeTriangle(direction, {0.0, 0.0, 0.0}, {big, 0x3p-235, 0.0}, {big, big, b * 0x1p-235});
  Coord3 normal = noNormal;
  ASSERT_TRUE(ContactNormal(direction, face, face, {1.0, ContactKind::VertexFace, {}, {}}, normal));
  ExpectPoint(normal, {-0x1p-53, -b * 0x1p-535, 1.0});
}

/// What meets first of level triangles that land on each other all at once.
void ExpectFirst(const Corners& moving, const Corners& fixed, ContactKind kind,
                 const Coord3& onMoving) {
  const Answer answer = Sweep(down, moving, fixed);
  ASSERT_TRUE(answer.met);
  for (const PairContact& contact : {answer.interval.first, answer.interval.last}) {
    EXPECT_EQ(contact.travel, 3.0);
    EXPECT_EQ(contact.kind, kind);
    ExpectPoint(contact.onMoving, onMoving);
  }
}

TEST(PairKernel, OfContactsAtOnceTheFirstKindAndCornerIsNamed) {
  const Corners floor{{{0.0, 0.0, 0.0}, {8.0, 0.0, 0.0}, {0.0, 8.0, 0.0}}};
  // A corner over the face, one over a corner or an edge, one beyond, so that edges cross.
  ExpectFirst({{{1.0, 1.0, 3.0}, {0.0, 0.0, 3.0}, {9.0, 1.0, 3.0}}}, floor,
              ContactKind::VertexVertex, {0.0, 0.0, 3.0});
  ExpectFirst({{{1.0, 1.0, 3.0}, {2.0, 0.0, 3.0}, {9.0, 1.0, 3.0}}}, floor, ContactKind::VertexEdge,
              {2.0, 0.0, 3.0});
  ExpectFirst({{{9.0, 1.0, 3.0}, {1.0, 2.0, 3.0}, {1.0, 1.0, 3.0}}}, floor, ContactKind::VertexFace,
              {1.0, 2.0, 3.0});
  // A corner of the floor under an edge, or under the face.
  ExpectFirst({{{-9.0, 0.0, 3.0}, {9.0, 0.0, 3.0}, {-9.0, 18.0, 3.0}}}, floor,
              ContactKind::EdgeVertex, {0.0, 0.0, 3.0});
  ExpectFirst({{{-9.0, -9.0, 3.0}, {14.0, -9.0, 3.0}, {-9.0, 14.0, 3.0}}}, floor,
              ContactKind::FaceVertex, {0.0, 0.0, 3.0});
  // Edges alone; the first edge of the moving one, at the first edge of the floor.
  ExpectFirst({{{3.0, -1.0, 3.0}, {3.0, 10.0, 3.0}, {2.0, -1.0, 3.0}}}, floor,
              ContactKind::EdgeEdge, {3.0, 0.0, 3.0});
}

TEST(PairKernel, ContactsThatRoundToTheSameTravelAreToldApart) {
  // Above the plane z = x / 3, corner 0 is by 2/3 and corner 1 by the double next below 2/3.
  const double below = 0x1.5555555555555p-1;
  const Corners slope{{{-9.0, -9.0, -3.0}, {9.0, -9.0, 3.0}, {0.0, 9.0, 0.0}}};
  const Corners moving{{{1.0, 0.0, 1.0}, {0.0, 1.0, below}, {0.0, 0.0, 5.0}}};
  const Answer answer = Sweep(down, moving, slope);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, below);
  ExpectPoint(answer.interval.first.onMoving, {0.0, 1.0, below});
  // The other way about, the last contact is the one at 2/3.
  const Corners upside{{{0.0, 1.0, below}, {1.0, 0.0, 1.0}, {0.0, 0.0, 0.5}}};
  const Answer turned = Sweep(down, upside, slope);
  ASSERT_TRUE(turned.met);
  EXPECT_EQ(turned.interval.last.travel, below);
  ExpectPoint(turned.interval.last.onMoving, {1.0, 0.0, 1.0});
}

TEST(PairKernel, CutBetweenContactsThatRoundToTheSameTravelIsTheFirst) {
  // Above the plane z = x / 3, corner 0 is by 2/3. The other corners are by 4/3 less a third of
  // 2^-52, less 2/3. Between them is the double next below 2/3, to which both round.
  const double cut = 0x1.5555555555555p-1;
  const TravelDirection direction(down);
  const Triangle fixed =
      MakeTriangle(direction, {-9.0, -9.0, -3.0}, {9.0, -9.0, 3.0}, {0.0, 9.0, 0.0});
  const Triangle moving =
      MakeTriangle(direction, {1.0, 0.0, 1.0}, {2.0, 1.0, 2.0 * cut}, {2.0, -1.0, 2.0 * cut});
  ContactInterval interval{};
  ASSERT_TRUE(FindContactInterval(direction, moving, fixed, interval));
  EXPECT_EQ(interval.first.travel, cut);
  EXPECT_EQ(interval.first.movingFeature, 1);
  EXPECT_EQ(interval.last.travel, cut);
  EXPECT_EQ(interval.last.movingFeature, 0);
  const PairContact contact = ContactAtCut(direction, moving, fixed, {cut, 0});
  EXPECT_EQ(contact.kind, ContactKind::Overlap);
  EXPECT_EQ(contact.travel, cut);
  ExpectPoint(contact.onMoving, interval.first.onMoving);
  ExpectPoint(contact.onFixed, interval.first.onFixed);
}

TEST(PairKernel, SmallTrianglesAreNotTakenForTouching) {
  // Sizes and gaps near 1e-9: an absolute tolerance would join them.
  const double s = 0x1p-30;
  const Corners spike{{{0.0, 0.0, 3.0 * s}, {s, 0.0, 5.0 * s}, {0.0, s, 6.0 * s}}};
  Corners floor = bigFloor;
  for (Coord3& p : floor.p)
    p = Multiply(p, s);
  const Answer answer = Sweep(down, spike, floor);
  ASSERT_TRUE(answer.met);
  EXPECT_EQ(answer.interval.first.travel, 3.0 * s);
  EXPECT_EQ(answer.interval.first.kind, ContactKind::VertexFace);
}

oracle::IntTriangle RandomIntTriangle(std::mt19937_64& random, int range) {
  WholesIn<std::int64_t> coordinate(-range, range);
  oracle::IntTriangle t;
  for (auto& p : t) {
    for (auto& c : p)
      c = coordinate(random);
  }
  return t;
}

Corners ToCorners(const oracle::IntTriangle& t, double scale, double offset) {
  Corners result{};
  for (std::size_t k = 0; k < 3; ++k) {
    result.p[k] = {static_cast<double>(t[k][0]) * scale + offset,
                   static_cast<double>(t[k][1]) * scale + offset,
                   static_cast<double>(t[k][2]) * scale + offset};
  }
  return result;
}

double DistanceToTriangle(const Coord3& p, const Corners& t) {
  const auto toSegment = [&p](const Coord3& a, const Coord3& b) {
    const Coord3 e = Subtract(b, a);
    const double length = Dot(e, e);
    const double at = length == 0.0 ? 0.0 : std::clamp(Dot(Subtract(p, a), e) / length, 0.0, 1.0);
    return gsl_arithmetic::Length(Subtract(p, Add(a, Multiply(e, at))));
  };
  double best =
      std::min({toSegment(t.p[0], t.p[1]), toSegment(t.p[1], t.p[2]), toSegment(t.p[2], t.p[0])});
  const Coord3 n = Cross(Subtract(t.p[1], t.p[0]), Subtract(t.p[2], t.p[0]));
  const double square = Dot(n, n);
  if (square == 0.0) return best;
  const double height = Dot(n, Subtract(p, t.p[0])) / std::sqrt(square);
  bool inside = true;
  for (int k = 0; k < 3; ++k) {
    const Coord3 e = Subtract(t.p[(k + 1) % 3], t.p[k]);
    inside = inside && Dot(Cross(n, e), Subtract(p, t.p[k])) >= 0.0;
  }
  return inside ? std::min(best, std::fabs(height)) : best;
}

void CompareWithOracle(std::mt19937_64& random, int range, double scale, double offset) {
  const oracle::IntTriangle a = RandomIntTriangle(random, range);
  const oracle::IntTriangle b = RandomIntTriangle(random, range);
  oracle::IntPoint d{};
  while (d == oracle::IntPoint{})
    d = RandomIntTriangle(random, std::min(range, 3))[0];
  const auto expected = oracle::SweepPair(d, a, b);
  const Coord3 direction{static_cast<double>(d[0]), static_cast<double>(d[1]),
                         static_cast<double>(d[2])};
  const Corners moving = ToCorners(a, scale, offset);
  const Corners fixed = ToCorners(b, scale, offset);
  const Answer answer = Sweep(direction, moving, fixed);
  ASSERT_EQ(answer.met, expected.has_value());
  if (!answer.met) return;
  const auto length = static_cast<long double>(scale) *
                      std::sqrt(static_cast<long double>(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]));
  const auto travel = [length](const oracle::Fraction& s) {
    return static_cast<double>(s.Value() * length);
  };
  const PairContact& first = answer.interval.first;
  const PairContact& last = answer.interval.last;
  // Both are rounded from more bits; the last may differ where the long double is near a tie.
  EXPECT_NEAR(first.travel, travel(expected->low), std::fabs(first.travel) * 0x1p-52);
  EXPECT_NEAR(last.travel, travel(expected->high), std::fabs(last.travel) * 0x1p-52);
  EXPECT_EQ((first.travel > 0) - (first.travel < 0), expected->low.Sign());
  EXPECT_EQ((last.travel > 0) - (last.travel < 0), expected->high.Sign());
  const double size = scale * range + std::fabs(offset);
  for (const PairContact& contact : {first, last}) {
    EXPECT_LE(DistanceToTriangle(contact.onMoving, moving), 1e-15 * size);
    EXPECT_LE(DistanceToTriangle(contact.onFixed, fixed), 1e-15 * size);
  }
}

using WholeVector = std::array<std::int64_t, 3>;

WholeVector WholeEdge(const oracle::IntTriangle& t, int k) {
  const auto from = static_cast<std::size_t>(k);
  const std::size_t to = (from + 1) % 3;
  return {t[to][0] - t[from][0], t[to][1] - t[from][1], t[to][2] - t[from][2]};
}

WholeVector WholeCross(const WholeVector& u, const WholeVector& v) {
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

/// A vector across the features that a contact names, in whole numbers; nothing for the kinds that
/// name no plane.
std::optional<WholeVector> AcrossFeatures(const oracle::IntTriangle& a,
                                          const oracle::IntTriangle& b,
                                          const PairContact& contact) {
  switch (contact.kind) {
  case ContactKind::VertexFace:
    return WholeCross(WholeEdge(b, 0), WholeEdge(b, 1));
  case ContactKind::FaceVertex:
    return WholeCross(WholeEdge(a, 0), WholeEdge(a, 1));
  case ContactKind::EdgeEdge:
    return WholeCross(WholeEdge(a, contact.movingFeature), WholeEdge(b, contact.fixedFeature));
  default:
    return std::nullopt;
  }
}

double DistanceToEdge(const Coord3& p, const Corners& t, int k) {
  const Coord3& from = t.p[k];
  return DistanceToTriangle(p, {{from, t.p[(k + 1) % 3], from}});
}

TEST(PairKernel, NormalsAgreeWithWholeNumbers) {
  const unsigned seed = 515;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  int counts[7] = {};
  for (int round = 0; round < 40000 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const int range = round % 2 == 0 ? 1000 : 3;
    const oracle::IntTriangle a = RandomIntTriangle(random, range);
    const oracle::IntTriangle b = RandomIntTriangle(random, range);
    const oracle::IntPoint d = RandomIntTriangle(random, range)[0];
    if (d == oracle::IntPoint{}) continue;
    const TravelDirection direction(
        {static_cast<double>(d[0]), static_cast<double>(d[1]), static_cast<double>(d[2])});
    const Corners movingCorners = ToCorners(a, 0x1p-7, 0.0);
    const Corners fixedCorners = ToCorners(b, 0x1p-7, 0.0);
    const Triangle moving =
        MakeTriangle(direction, movingCorners.p[0], movingCorners.p[1], movingCorners.p[2]);
    const Triangle fixed =
        MakeTriangle(direction, fixedCorners.p[0], fixedCorners.p[1], fixedCorners.p[2]);
    ContactInterval interval{};
    if (!FindContactInterval(direction, moving, fixed, interval)) continue;
    const PairContact& contact = round % 3 == 0 ? interval.last : interval.first;
    ++counts[static_cast<int>(contact.kind)];
    Coord3 normal = noNormal;
    const bool found = ContactNormal(direction, moving, fixed, contact, normal);
    const auto across = AcrossFeatures(a, b, contact);
    ASSERT_EQ(found, across.has_value());
    if (!found) continue;
    if (contact.kind == ContactKind::EdgeEdge) {
      EXPECT_LT(DistanceToEdge(contact.onMoving, movingCorners, contact.movingFeature), 1e-13);
      EXPECT_LT(DistanceToEdge(contact.onFixed, fixedCorners, contact.fixedFeature), 1e-13);
    }
    const auto& n = *across;
    const std::int64_t along = n[0] * d[0] + n[1] * d[1] + n[2] * d[2];
    ASSERT_NE(along, 0);
    const auto square = static_cast<long double>(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    const long double length = (along > 0 ? -1.0L : 1.0L) * std::sqrt(square);
    const double values[3] = {normal.x, normal.y, normal.z};
    for (std::size_t k = 0; k < 3; ++k) {
      const auto expected = static_cast<double>(static_cast<long double>(n[k]) / length);
      EXPECT_NEAR(values[k], expected, std::fabs(expected) * 0x1p-52);
    }
  }
  for (const ContactKind kind :
       {ContactKind::VertexFace, ContactKind::FaceVertex, ContactKind::EdgeEdge}) {
    EXPECT_GT(counts[static_cast<int>(kind)], 500) << static_cast<int>(kind);
  }
}

struct OracleCase {
  int range;
  double scale, offset;
  int rounds;
};

void PrintTo(const OracleCase& c, std::ostream* out) {
  *out << "range " << c.range << ", scale " << c.scale << ", offset " << c.offset;
}

class PairKernelOracle : public testing::TestWithParam<OracleCase> {};

TEST_P(PairKernelOracle, MatchesTheLinearProgram) {
  const OracleCase& c = GetParam();
  const unsigned seed = 4242u + static_cast<unsigned>(c.range);
  std::mt19937_64 random(seed);
  for (int round = 0; round < c.rounds && !HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " round " << round);
    CompareWithOracle(random, c.range, c.scale, c.offset);
  }
}

// Ranges of one and two make nearly every pair degenerate in some way.
INSTANTIATE_TEST_SUITE_P(Ranges, PairKernelOracle,
                         testing::Values(OracleCase{1, 1.0, 0.0, 1500},
                                         OracleCase{2, 0x1p-20, 0.0, 1500},
                                         OracleCase{4, 1.0, 0x1p40, 800},
                                         OracleCase{30, 0x1p-3, 0.0, 400},
                                         OracleCase{1000, 1.0, 0.0, 400}));

double RandomIn(std::mt19937_64& random, double low, double high) {
  return RealsIn(low, high)(random);
}

TEST(PairKernel, AgreesWithTheToleranceBasedSweepWhereBothAreDefined) {
  const unsigned seed = 99;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  const bool twoSided[2] = {true, true};
  int compared = 0;
  for (int round = 0; round < 20000; ++round) {
    Corners a{};
    Corners b{};
    for (Coord3& p : a.p)
      p = {RandomIn(random, -9, 9), RandomIn(random, -9, 9), RandomIn(random, 20, 30)};
    for (Coord3& p : b.p)
      p = {RandomIn(random, -9, 9), RandomIn(random, -9, 9), RandomIn(random, -30, -20)};
    const Coord3 d{RandomIn(random, -0.3, 0.3), RandomIn(random, -0.3, 0.3), -1.0};
    if (round % 4 == 1) {
      // A wall along the direction.
      b.p[2] = Add(b.p[0], Add(Multiply(Subtract(b.p[1], b.p[0]), 0.4), Multiply(d, 5.0)));
    }
    const Answer answer = Sweep(d, a, b);
    const auto point = [](const Coord3& p) { return gsl_Point(p.x, p.y, p.z); };
    gsl_Point contacts[2];
    double distance = 1e9;
    const bool found = gsl_TriTriMinDirectionalDist(
        gsl_Vector(d.x, d.y, d.z), point(a.p[0]), point(a.p[1]), point(a.p[2]), point(b.p[0]),
        point(b.p[1]), point(b.p[2]), twoSided, 0.0, contacts, distance);
    // Its tolerances may see a contact that grazes by less than them.
    if (found != answer.met) {
      ADD_FAILURE() << "round " << round << ": " << found << " " << answer.met;
      continue;
    }
    if (!found) continue;
    ++compared;
    ASSERT_GT(answer.interval.first.travel, 0.0);
    ASSERT_NEAR(distance, answer.interval.first.travel, 1e-4) << round;
  }
  EXPECT_GT(compared, 2000);
}

} // namespace
