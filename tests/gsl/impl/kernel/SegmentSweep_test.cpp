#include "kernel/SegmentSweep.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>

namespace {

using gsl_kernel::AsideReach;
using gsl_kernel::Coord3;
using gsl_kernel::Measured3;
using gsl_kernel::SweepContacts;
using gsl_kernel::SweepTolerances;
using gsl_kernel::SweptSegment;
using Real = long double;

constexpr std::uint64_t kSeed = 0xA51DE5u;

SweptSegment SegmentBetween(const Coord3& p0, const Coord3& p1) {
  return gsl_kernel::SweptSegmentBetween({p0, 0}, {p1, 1});
}

/// Returns the gap between the segments, across d and times |d|, like GapAside in extended
/// precision.
Real ExactGapAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  const auto aside = [&d](const gsl_kernel::SourcedPoint& p) {
    return Real(d.c.y) * Real(p.c.x) - Real(d.c.x) * Real(p.c.y);
  };
  const Real a0 = aside(a.p[0]), a1 = aside(a.p[1]), b0 = aside(b.p[0]), b1 = aside(b.p[1]);
  return std::max(std::min(b0, b1) - std::max(a0, a1), std::min(a0, a1) - std::max(b0, b1));
}

/// A frame around a direction of any length: `along` and `across` the direction, from the origin.
struct Frame {
  Measured3 d;
  double cosine, sine;

  Frame(double turn, double size)
      : d(gsl_kernel::Measure({std::cos(turn) * size, std::sin(turn) * size, 0.0})),
        cosine(std::cos(turn)), sine(std::sin(turn)) {}
  explicit Frame(RandomNumbers& random)
      : Frame(random.In(0.0, 6.283),
              random.Chance(0.5) ? 1.0 : std::pow(10.0, random.In(-2.0, 2.0))) {}

  Coord3 At(double along, double across) const {
    return {along * cosine - across * sine, along * sine + across * cosine, 0.0};
  }
};

/// Returns whether the line of d through the first end of `a` counts as meeting `b`.
bool Meets(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
           const SweepTolerances& tol) {
  const gsl_kernel::RayDirection ray(d, tol.linear);
  const gsl_kernel::RayTarget target(b.Coordinates(), ray, tol.linear);
  gsl_kernel::SourcedPoint hit;
  return gsl_kernel::MeetTarget(a.p[0].c, ray, target, tol.linear, hit);
}

/// The largest gap that was accepted, divided by the reach.
struct Worst {
  Real ratio = 0.0;
  long accepted = 0;

  void Take(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
            const SweepTolerances& tol) {
    ++accepted;
    ratio = std::max(ratio, ExactGapAside(a, b, d) / Real(AsideReach(a, b, d, tol)));
  }
};

/// Tries a target from the origin, `length` long and `slope` off d. One end of the segment lies
/// `beyond` the far end of the target, across d.
void TryEndBeyondTarget(const Frame& frame, double length, double slope, double behind,
                        double beyond, const SweepTolerances& tol, Worst& worst) {
  const SweptSegment b = SegmentBetween(
      frame.At(0.0, 0.0), frame.At(length * std::cos(slope), length * std::sin(slope)));
  const double aside = length * std::sin(slope) + beyond;
  const SweptSegment a = SegmentBetween(frame.At(-behind, aside), frame.At(-behind, aside + 1e-3));
  if (Meets(a, b, frame.d, tol)) worst.Take(a, b, frame.d, tol);
}

/// A crossing of a target that is as steep as a target may be. Only rounding can accept it.
struct SteepCrossing {
  double turn, length, slope, behind, beyond;

  explicit SteepCrossing(RandomNumbers& random)
      : turn(random.In(0.0, 6.283)), length(random.In(0.1, 1.0)),
        slope(gsl_kernel::kLineParallelTolerance * (1.0 + std::pow(10.0, random.In(-6.0, 0.0)))),
        behind(random.In(-1.0, 1.0)), beyond(std::pow(10.0, random.In(-12.0, -10.0))) {}

  SteepCrossing Near(RandomNumbers& random) const {
    SteepCrossing other = *this;
    const double step = std::pow(10.0, random.In(-15.0, -1.0));
    other.turn += random.In(-step, step);
    other.length *= 1.0 + random.In(-step, step);
    other.slope *= 1.0 + random.In(0.0, 1e-3 * step);
    other.behind += random.In(-step, step);
    other.beyond *= random.In(0.9, 1.2);
    return other;
  }

  /// Returns 0 when the crossing is not accepted.
  Real Ratio() const {
    Worst worst;
    TryEndBeyondTarget(Frame(turn, 1.0), length, slope, behind, beyond, {0.0, 0.0}, worst);
    return worst.ratio;
  }
};

SweptSegment OfA(const Coord3& p0, const Coord3& p1) {
  return gsl_kernel::SweptSegmentBetween({p0, 0}, {p1, 1});
}

SweptSegment OfB(const Coord3& p0, const Coord3& p1) {
  return gsl_kernel::SweptSegmentBetween({p0, 3}, {p1, 4});
}

SweepContacts Within(double distance) {
  SweepContacts contacts = {};
  contacts.distance = distance;
  return contacts;
}

void ExpectContact(const gsl_kernel::SourcedPoint& actual, double x, double y, int source) {
  EXPECT_XYZ(actual.c, x, y, 0.0);
  EXPECT_EQ(actual.source, source);
}

void ExpectUnwritten(const SweepContacts& contacts, double distance) {
  EXPECT_FALSE(contacts.written[0]);
  EXPECT_FALSE(contacts.written[1]);
  EXPECT_EQ(contacts.distance, distance);
}

const Measured3 kForward = gsl_kernel::Measure({0.0, 1.0, 0.0});
constexpr double kTolerance = 1e-6;

TEST(KernelSegmentSweep, SideNormalThatFacesTheWrongWayIsTurnedIfAllowed) {
  const bool oneSided = false, twoSided = true;
  // (1, 0, 0) x Z = (0, -1, 0), against the direction.
  SweptSegment segment = OfA({0, 0, 0}, {1, 0, 0});
  EXPECT_FALSE(TurnSegment(segment, kForward, +1.0, &oneSided));
  EXPECT_EQ(segment.p[0].source, 0);
  EXPECT_TRUE(TurnSegment(segment, kForward, -1.0, nullptr));
  EXPECT_EQ(segment.p[0].source, 0);
  EXPECT_TRUE(TurnSegment(segment, kForward, +1.0, &twoSided));
  ExpectContact(segment.p[0], 1.0, 0.0, 1);
  ExpectContact(segment.p[1], 0.0, 0.0, 0);
  EXPECT_XYZ(segment.edge.c, -1.0, 0.0, 0.0);
  EXPECT_EQ(segment.edge.magnitude, 1.0);
}

TEST(KernelSegmentSweep, SegmentAlongTheDirectionOrOfNaNNeedNotTurn) {
  SweptSegment along = OfA({0, 0, 0}, {0, 1, 0});
  EXPECT_TRUE(TurnSegment(along, kForward, +1.0, nullptr));
  SweptSegment nan = OfA({0, 0, 0}, {std::nan(""), 1, 0});
  EXPECT_TRUE(TurnSegment(nan, kForward, +1.0, nullptr));
}

TEST(KernelSegmentSweep, HeightOfTheDirectionDoesNotTurnASegment) {
  // (1, 1, 0) x Z = (1, -1, 0), along the direction at every height.
  for (const double height : {-2.0, 0.0, 2.0}) {
    SweptSegment segment = OfA({0, 0, 0}, {1, 1, 0});
    EXPECT_TRUE(TurnSegment(segment, gsl_kernel::Measure({1.0, 0.0, height}), +1.0, nullptr));
  }
}

TEST(KernelSegmentSweep, GapLeadsFromAToB) {
  EXPECT_EQ(gsl_kernel::GapFromEnd(+1, kForward, {0, 1, 0}, {0, 4, 0}), 3.0);
  EXPECT_EQ(gsl_kernel::GapFromEnd(-1, kForward, {0, 4, 0}, {0, 1, 0}), 3.0);
  EXPECT_FALSE(std::signbit(gsl_kernel::GapFromEnd(+1, kForward, {0, 1, 0}, {0, 1, 0})));
  EXPECT_TRUE(std::signbit(gsl_kernel::GapFromEnd(-1, kForward, {0, 1, 0}, {0, 1, 0})));
}

TEST(KernelSegmentSweep, EndsOfASegmentAlongMeetTheOtherFromBothSides) {
  SweepContacts fromA = Within(100.0);
  EXPECT_TRUE(EndsOfAlong(+1, OfA({1, 0, 0}, {1, 2, 0}), OfB({0, 5, 0}, {4, 5, 0}), kForward, 0.0,
                          kTolerance, fromA));
  EXPECT_EQ(fromA.distance, 3.0);
  ExpectContact(fromA.point[0], 1.0, 2.0, 1);
  ExpectContact(fromA.point[1], 1.0, 5.0, gsl_kernel::kComputed);
  SweepContacts fromB = Within(100.0);
  EXPECT_TRUE(EndsOfAlong(-1, OfB({1, 5, 0}, {1, 7, 0}), OfA({0, 0, 0}, {4, 0, 0}), kForward, 0.0,
                          kTolerance, fromB));
  EXPECT_EQ(fromB.distance, 5.0);
  ExpectContact(fromB.point[1], 1.0, 5.0, 3);
  ExpectContact(fromB.point[0], 1.0, 0.0, gsl_kernel::kComputed);
}

TEST(KernelSegmentSweep, EndOfASegmentAlongMustBeatTheDistanceLessTheMargin) {
  const SweptSegment along = OfA({1, 0, 0}, {1, 2, 0}), across = OfB({0, 5, 0}, {4, 5, 0});
  SweepContacts at = Within(4.0);
  EXPECT_FALSE(EndsOfAlong(+1, along, across, kForward, 1.0, kTolerance, at));
  ExpectUnwritten(at, 4.0);
  SweepContacts above = Within(numbers::Above(4.0));
  EXPECT_TRUE(EndsOfAlong(+1, along, across, kForward, 1.0, kTolerance, above));
  SweepContacts behind = Within(0.0);
  EXPECT_TRUE(
      EndsOfAlong(+1, along, OfB({0, -5, 0}, {4, -5, 0}), kForward, 0.0, kTolerance, behind));
  EXPECT_EQ(behind.distance, -7.0);
}

TEST(KernelSegmentSweep, EndsWhoseLinesMissMakeNoContact) {
  SweepContacts contacts = Within(100.0);
  EXPECT_FALSE(EndsOfAlong(+1, OfA({9, 0, 0}, {9, 2, 0}), OfB({0, 5, 0}, {4, 5, 0}), kForward, 0.0,
                           kTolerance, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, EndsOnOneLineMustBeatTheDistanceLessTheMargin) {
  // The least gap is 3.
  const SweptSegment a = OfA({0, 0, 0}, {0, 2, 0}), b = OfB({0, 5, 0}, {0, 7, 0});
  SweepContacts at = Within(4.0);
  EXPECT_FALSE(EndsOnOneLine(a, b, kForward, 1.0, 1e-10, at));
  ExpectUnwritten(at, 4.0);
  SweepContacts above = Within(numbers::Above(4.0));
  EXPECT_TRUE(EndsOnOneLine(a, b, kForward, 1.0, 1e-10, above));
  EXPECT_EQ(above.distance, 3.0);
}

TEST(KernelSegmentSweep, EndsOnOneLineTakeTheLeastGap) {
  SweepContacts contacts = Within(100.0);
  EXPECT_TRUE(EndsOnOneLine(OfA({0, 0, 0}, {0, 2, 0}), OfB({0, 5, 0}, {0, 7, 0}), kForward, 0.0,
                            1e-10, contacts));
  EXPECT_EQ(contacts.distance, 3.0);
  ExpectContact(contacts.point[0], 0.0, 2.0, 1);
  ExpectContact(contacts.point[1], 0.0, 5.0, 3);
}

TEST(KernelSegmentSweep, EndsOnOneLineNeedFirstEndsThatDifferAlongIt) {
  SweepContacts contacts = Within(100.0);
  const SweptSegment a = OfA({0, 0, 0}, {0, 2, 0});
  EXPECT_FALSE(EndsOnOneLine(a, OfB({0, 0, 0}, {0, 7, 0}), kForward, 0.0, 1e-10, contacts));
  EXPECT_FALSE(EndsOnOneLine(a, OfB({1, 5, 0}, {1, 7, 0}), kForward, 0.0, 1e-10, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, EndsOnOneLineMultiplyByTheWayOfTheEndsFirst) {
  // The cross product of (3, 0, 0) and (3, 4, 0) is 12. With the double 0.8, (0.8 * 5) * 3 is 12,
  // and (0.8 * 3) * 5 is the next number.
  const Measured3 along = gsl_kernel::Measure({3.0, 0.0, 0.0});
  const Measured3 aslant = gsl_kernel::Measure({3.0, 4.0, 0.0});
  const SweptSegment a = OfA({0, 0, 0}, {1, 0, 0});
  SweepContacts contacts = Within(100.0);
  EXPECT_FALSE(EndsOnOneLine(a, OfB({3, 4, 0}, {9, 9, 0}), along, 0.0, 0.8, contacts));
  ExpectUnwritten(contacts, 100.0);
  EXPECT_TRUE(EndsOnOneLine(a, OfB({3, 0, 0}, {9, 9, 0}), aslant, 0.0, 0.8, contacts));
}

TEST(KernelSegmentSweep, SegmentIsAlongByTheLengthOfTheDirectionFirst) {
  // The short segment is along (3, 4, 0) only if 0.8 is first multiplied by its own length, as
  // above. Then it meets the wide segment from the wrong side, which is no contact across.
  const Measured3 d = gsl_kernel::Measure({3.0, 4.0, 0.0});
  const SweepTolerances tol = {kTolerance, 0.8};
  const bool both[2] = {true, true};
  SweepContacts contacts = Within(100.0);
  EXPECT_FALSE(SweepSegment(d, OfA({3, 0, 0}, {0, 0, 0}), OfB({-11, 2, 0}, {5, -10, 0}), both, 0.0,
                            tol, contacts));
  EXPECT_FALSE(SweepSegment(d, OfA({-5, 10, 0}, {11, -2, 0}), OfB({3, 0, 0}, {0, 0, 0}), both, 0.0,
                            tol, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, SegmentsOfOnePlaneThatAreFarAsidePassEachOther) {
  const SweepTolerances tol = {kTolerance, 1e-10};
  const auto passes = [&tol](const double(&z)[4]) {
    return PassAside(OfA({0.0, 0.0, z[0]}, {1.0, 0.0, z[1]}),
                     OfB({1.5, 5.0, z[2]}, {2.5, 5.0, z[3]}), kForward, tol);
  };
  EXPECT_TRUE(passes({0.0, 0.0, 0.0, 0.0}));
  EXPECT_TRUE(passes({3.0, 3.0, 3.0, 3.0}));
  EXPECT_FALSE(passes({3.0, 0.0, 0.0, 0.0}));
  EXPECT_FALSE(passes({0.0, 3.0, 0.0, 0.0}));
  EXPECT_FALSE(passes({0.0, 0.0, 3.0, 0.0}));
  EXPECT_FALSE(passes({0.0, 0.0, 0.0, 3.0}));
}

TEST(KernelSegmentSweep, AGapWithoutASquareIsNotAside) {
  const Measured3 d = gsl_kernel::Measure({1e-90, 0.0, 0.0});
  const SweepTolerances none = {0.0, 1e-10};
  const auto passes = [&](double size) {
    return PassAside(OfA({0.0, 0.0, 0.0}, {0.0, size, 0.0}),
                     OfB({size, 2.0 * size, 0.0}, {size, 4.0 * size, 0.0}), d, none);
  };
  EXPECT_FALSE(passes(1e-76));
  EXPECT_TRUE(passes(1e-50));
}

TEST(KernelSegmentSweep, TheLeastGapAsideIsNotDecided) {
  // The gap aside is 2^-266 times the distance, without rounding.
  const Measured3 d = gsl_kernel::Measure({0x1p-266, 0.0, 0.0});
  const auto passes = [&d](double apart) {
    return PassAside(OfA({0.0, 0.0, 0.0}, {0.0, 1e-70, 0.0}),
                     OfB({0.0, -apart, 0.0}, {0.0, -2.0 * apart, 0.0}), d, {0.0, 1e-10});
  };
  const double least = gsl_kernel::kLeastDecidedGap * 0x1p266;
  EXPECT_FALSE(passes(least));
  EXPECT_TRUE(passes(numbers::Above(least)));
}

TEST(KernelSegmentSweep, SumOfSizesCountsEveryCoordinate) {
  EXPECT_EQ(gsl_kernel::SumOfSizes({1.0, -2.0, -4.0}), 7.0);
}

TEST(KernelSegmentSweep, OrdinarySegmentsAreNeitherTinyNorHuge) {
  const Coord3 origin = {0.0, 0.0, 0.0}, one = {1.0, 0.0, 0.0};
  const Coord3 tiny = {1e-101, 0.0, 0.0}, large = {0.0, 6e99, 0.0}, huge = {0.0, 2e100, 0.0};
  const auto areOrdinary = [](const SweptSegment& a, const SweptSegment& b) {
    return gsl_kernel::AreOrdinary(a, b, kForward);
  };
  const SweptSegment unit = OfA(origin, one);
  EXPECT_TRUE(areOrdinary(unit, unit));
  for (const SweptSegment& other :
       {OfB(origin, tiny), OfB(origin, huge), OfB(huge, origin), OfB(large, {0.0, 5e99, 0.0}),
        OfB(origin, {0.0, std::nan(""), 0.0})}) {
    EXPECT_FALSE(areOrdinary(unit, other));
    EXPECT_FALSE(areOrdinary(other, unit));
  }
  EXPECT_FALSE(AreOrdinary(unit, unit, gsl_kernel::Measure(tiny)));
  EXPECT_FALSE(AreOrdinary(unit, unit, gsl_kernel::Measure(huge)));
}

// Both segments are turned: A faces along the direction, and B faces against it.
const SweptSegment kAcrossA = OfA({4, 0, 0}, {0, 0, 0});

TEST(KernelSegmentSweep, EndOfAAcrossMeetsB) {
  SweepContacts contacts = Within(100.0);
  EXPECT_TRUE(EndsAcross(kAcrossA, OfB({3, 5, 0}, {9, 5, 0}), kForward, 0.0, kTolerance, contacts));
  EXPECT_EQ(contacts.distance, 5.0);
  ExpectContact(contacts.point[0], 4.0, 0.0, 0);
  ExpectContact(contacts.point[1], 4.0, 5.0, gsl_kernel::kComputed);
}

TEST(KernelSegmentSweep, EndOfBAcrossStoresTheEndOfAWithItsIndex) {
  SweepContacts contacts = Within(100.0);
  EXPECT_TRUE(EndsAcross(kAcrossA, OfB({1, 6, 0}, {2, 5, 0}), kForward, 0.0, kTolerance, contacts));
  EXPECT_EQ(contacts.distance, 5.0);
  ExpectContact(contacts.point[0], 2.0, 0.0, gsl_kernel::kComputed);
  ExpectContact(contacts.point[1], 0.0, 0.0, 1);
}

TEST(KernelSegmentSweep, SegmentsThatRunTheSameWayOrHavePassedMakeNoContact) {
  SweepContacts contacts = Within(100.0);
  EXPECT_FALSE(
      EndsAcross(kAcrossA, OfB({9, 5, 0}, {3, 5, 0}), kForward, 0.0, kTolerance, contacts));
  EXPECT_FALSE(
      EndsAcross(kAcrossA, OfB({3, -5, 0}, {9, -5, 0}), kForward, 0.0, kTolerance, contacts));
  EXPECT_FALSE(
      EndsAcross(kAcrossA, OfB({1, -5, 0}, {2, -5, 0}), kForward, 0.0, kTolerance, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, SegmentsAtARightAngleFaceEachOther) {
  SweepContacts contacts = Within(100.0);
  EXPECT_FALSE(
      EndsAcross(kAcrossA, OfB({2.1, 5, 0}, {2, 5, 0}), kForward, 0.0, kTolerance, contacts));
  ExpectUnwritten(contacts, 100.0);
  EXPECT_TRUE(EndsAcross(kAcrossA, OfB({1, 5, 0}, {1, 7, 0}), kForward, 0.0, kTolerance, contacts));
  EXPECT_EQ(contacts.distance, 5.0);
}

TEST(KernelSegmentSweep, EndsAcrossThatTouchAreAContactAtDistanceZero) {
  SweepContacts ofA = Within(100.0);
  EXPECT_TRUE(EndsAcross(kAcrossA, OfB({3, 0, 0}, {9, 0, 0}), kForward, 0.0, kTolerance, ofA));
  EXPECT_EQ(ofA.distance, 0.0);
  SweepContacts ofB = Within(100.0);
  EXPECT_TRUE(EndsAcross(kAcrossA, OfB({1, 0.5, 0}, {2, 0, 0}), kForward, 0.0, kTolerance, ofB));
  EXPECT_EQ(ofB.distance, 0.0);
}

TEST(KernelSegmentSweep, AcrossTheDistanceAndTheMarginMustBothBeBeaten) {
  const SweptSegment b = OfB({3, 5, 0}, {9, 5, 0});
  SweepContacts at = Within(5.0);
  EXPECT_FALSE(EndsAcross(kAcrossA, b, kForward, 0.0, kTolerance, at));
  EXPECT_FALSE(EndsAcross(kAcrossA, b, kForward, -1.0, kTolerance, at));
  ExpectUnwritten(at, 5.0);
  SweepContacts margin = Within(6.0);
  EXPECT_FALSE(EndsAcross(kAcrossA, b, kForward, 1.0, kTolerance, margin));
  SweepContacts above = Within(numbers::Above(6.0));
  EXPECT_TRUE(EndsAcross(kAcrossA, b, kForward, 1.0, kTolerance, above));
}

TEST(KernelSegmentSweep, AcrossNothingIsMetWithANegativeTolerance) {
  // Every distance from the line, even 0, is then above the tolerance.
  SweepContacts contacts = Within(100.0);
  const SweptSegment b = OfB({3, 5, 0}, {9, 5, 0});
  EXPECT_FALSE(EndsAcross(kAcrossA, b, kForward, 0.0, -1e-3, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, AcrossARayThatLeavesThePlaneMeetsNothing) {
  SweepContacts contacts = Within(100.0);
  const Measured3 leaving = gsl_kernel::Measure({0.0, 1.0, 1.0});
  const SweptSegment b = OfB({3, 5, 0}, {9, 5, 0});
  EXPECT_FALSE(EndsAcross(kAcrossA, b, leaving, 0.0, kTolerance, contacts));
  ExpectUnwritten(contacts, 100.0);
}

TEST(KernelSegmentSweep, AIsRefusedBeforeBIsLookedAt) {
  const SweepTolerances tol = {kTolerance, 1e-10};
  const bool neither[2] = {false, false}, both[2] = {true, true};
  SweepContacts contacts = Within(100.0);
  const SweptSegment wrongA = OfA({0, 0, 0}, {4, 0, 0}), b = OfB({3, 5, 0}, {9, 5, 0});
  EXPECT_FALSE(SweepSegment(kForward, wrongA, b, neither, 0.0, tol, contacts));
  EXPECT_FALSE(
      SweepSegment(kForward, kAcrossA, OfB({9, 5, 0}, {3, 5, 0}), neither, 0.0, tol, contacts));
  ExpectUnwritten(contacts, 100.0);
  EXPECT_TRUE(SweepSegment(kForward, wrongA, b, both, 0.0, tol, contacts));
  ExpectContact(contacts.point[0], 4.0, 0.0, 1);
}

/// Three angles and a length, from which the tests of the parts of kCrossingRounding make their
/// vectors. A search moves from some parameters to worse parameters nearby.
using Parameters = std::array<double, 4>;

/// Returns the largest value of `measure` that a search finds. The search restarts at random and
/// takes ever smaller steps.
template <class Measure>
Real SearchForTheWorst(RandomNumbers& random, const Measure& measure) {
  Real worst = 0.0;
  for (long restart = 0; restart < Scaled(300); ++restart) {
    Parameters best = {};
    Real most = -1.0;
    for (int step = 0; step < 1000; ++step) {
      Parameters other = best;
      const double size = std::pow(10.0, random.In(-16.0, 0.0));
      for (double& value : other)
        value = step < 50 ? random.In(0.01, 6.28) : value * (1.0 + random.In(-size, size));
      const Real found = measure(other);
      if (!(found > most)) continue;
      best = other;
      most = found;
    }
    worst = std::max(worst, most);
  }
  return worst;
}

Coord3 UnitAt(double angle, double length) {
  return gsl_arithmetic::NormalizedCopy(
             gsl_kernel::Measure({length * std::cos(angle), length * std::sin(angle), 0.0}), 0.0)
      .c;
}

Real ExactDot(const Coord3& a, const Coord3& b) {
  return Real(a.x) * Real(b.x) + Real(a.y) * Real(b.y);
}

Real ExactCross(const Coord3& a, const Coord3& b) {
  return Real(a.x) * Real(b.y) - Real(a.y) * Real(b.x);
}

constexpr Real kRoundoff = gsl_kernel::kUnitRoundoff;

TEST(CrossingRounding, IsMadeOfItsParts) {
  const double h = std::ldexp(1.0, -53);
  EXPECT_EQ(gsl_kernel::kUnitSquareRoundoffs, 8.0);
  EXPECT_EQ(gsl_kernel::kCosineRoundoffs, 2.0);
  EXPECT_EQ(gsl_kernel::kDenominatorRoundoffs, 22.0);
  EXPECT_EQ(gsl_kernel::kNumeratorRoundoffs, 16.0);
  EXPECT_EQ(gsl_kernel::kCrossingPointRoundoffs, 5.0);
  EXPECT_EQ(gsl_kernel::kRayTurnRoundoffs, 2.0);
  EXPECT_EQ(gsl_kernel::kTargetTurnRoundoffs, 2.0);
  EXPECT_EQ(gsl_kernel::kPositionRoundoffs, 16.0);
  EXPECT_EQ(gsl_kernel::kGapAsideRoundoffs, 3.0);
  EXPECT_EQ(gsl_kernel::kFirstEndsRoundoffs, 10.0);
  EXPECT_EQ(gsl_kernel::kReachRoundoffs, 13.0);
  EXPECT_EQ(gsl_kernel::kUndividedRoundoffs, 51.0);
  EXPECT_EQ(gsl_kernel::kLeastCross, 1e-5 * (1.0 - 1e-5 * 1e-5 / 4.0) - 10.0 * h);
  EXPECT_EQ(gsl_kernel::kCrossingRounding, (38.0 / gsl_kernel::kLeastCross + 51.0) * h);
}

TEST(CrossingRounding, SquareOfAUnitVectorReachesAQuarterOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 u = UnitAt(p[0], p[3]);
    return std::fabs(ExactDot(u, u) - 1.0L) / kRoundoff;
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kUnitSquareRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kUnitSquareRoundoffs / 4.0);
}

TEST(CrossingRounding, CosineReachesAQuarterOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 u = UnitAt(p[0], 1.0), v = UnitAt(p[1], p[3]);
    return std::fabs(Real(gsl_kernel::Dot(u, v)) - ExactDot(u, v)) / kRoundoff;
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kCosineRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kCosineRoundoffs / 4.0);
}

TEST(CrossingRounding, DenominatorReachesAQuarterOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 u = UnitAt(p[0], 1.0), v = UnitAt(p[0] + 1e-3 * p[1], p[3]);
    const double c = gsl_kernel::Dot(u, v);
    const Real cross = ExactCross(u, v);
    return std::fabs(Real(c * c - 1.0) + cross * cross) / kRoundoff;
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kDenominatorRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kDenominatorRoundoffs / 4.0);
}

TEST(CrossingRounding, NumeratorReachesAQuarterOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 u = UnitAt(p[0], 1.0), v = UnitAt(p[0] + 1e-3 * p[1], p[3]);
    const Coord3 w = {std::cos(p[2]), std::sin(p[2]), 0.0};
    const double c = gsl_kernel::Dot(u, v);
    const double n = gsl_kernel::Dot(w, v) * c - gsl_kernel::Dot(w, u);
    return std::fabs(Real(n) + ExactCross(w, v) * ExactCross(u, v)) /
           (kRoundoff * std::sqrt(ExactDot(w, w)));
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kNumeratorRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kNumeratorRoundoffs / 4.0);
}

Real ExactLength(const Coord3& a) {
  return std::sqrt(ExactDot(a, a));
}

Coord3 PointAt(double angle, double distance) {
  return {distance * std::cos(angle), distance * std::sin(angle), 0.0};
}

/// A number in extended precision for each coordinate.
struct RealPoint {
  Real x, y;

  Real Length() const { return std::sqrt(x * x + y * y); }
};

RealPoint ExactDifference(const Coord3& a, const Coord3& b) {
  return {Real(a.x) - Real(b.x), Real(a.y) - Real(b.y)};
}

Real ExactCross(const Coord3& a, const RealPoint& b) {
  return Real(a.x) * b.y - Real(a.y) * b.x;
}

TEST(UndividedRounding, CrossingPointReachesAThirdOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    // A target of length 1 from `start`, and rays that are far from parallel to it.
    const Coord3 start = PointAt(p[2], 0.1 * p[3]), origin = PointAt(p[1], p[3]);
    const Coord3 u = UnitAt(p[0], 1.0), v = UnitAt(p[0] + 1.0 + p[1] / 6.28, 1.0);
    const Coord3 w = gsl_kernel::Subtract(origin, start);
    const double c = gsl_kernel::Dot(u, v);
    const Real s = Real(gsl_kernel::Dot(w, v) * c - gsl_kernel::Dot(w, u)) / Real(c * c - 1.0);
    const Coord3 computed = gsl_kernel::ClosestOfNonParallel(start, u, origin, v).onFirst;
    const RealPoint off = {Real(computed.x) - Real(start.x) - s * Real(u.x),
                           Real(computed.y) - Real(start.y) - s * Real(u.y)};
    const RealPoint exactW = ExactDifference(origin, start);
    const RealPoint offW = {Real(w.x) - exactW.x, Real(w.y) - exactW.y};
    const Real size = std::max({gsl_kernel::SumOfSizes(start) + gsl_kernel::SumOfSizes(origin),
                                gsl_kernel::Length(w), static_cast<double>(std::fabs(s))});
    return (std::fabs(ExactCross(v, off)) + std::fabs(ExactCross(v, offW))) / (kRoundoff * size);
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kCrossingPointRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kCrossingPointRoundoffs / 3.0);
}

TEST(UndividedRounding, RayTurnReachesAThirdOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Measured3 d = gsl_kernel::Measure(PointAt(p[0], p[3]));
    const Coord3 v = gsl_kernel::RayDirection(d, 0.0).unit;
    return 2.0L * std::fabs(ExactCross(d.c, v)) / (kRoundoff * ExactLength(d.c) * ExactLength(v));
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kRayTurnRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kRayTurnRoundoffs / 3.0);
}

TEST(UndividedRounding, TargetTurnReachesAThirdOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 start = PointAt(p[2], p[3]), end = PointAt(p[0], p[1]);
    const gsl_kernel::RayTarget target({start, end}, {gsl_kernel::Measure({1.0, 0.0, 0.0}), 0.0},
                                       0.0);
    const RealPoint edge = ExactDifference(end, start);
    return std::fabs(ExactCross(target.unit, edge)) /
           (kRoundoff * ExactLength(target.unit) * edge.Length());
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kTargetTurnRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kTargetTurnRoundoffs / 3.0);
}

TEST(UndividedRounding, PositionReachesAQuarterOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Coord3 start = PointAt(p[2], p[3]), end = PointAt(p[0], p[1]);
    const Coord3 x = gsl_kernel::Add(
        start, gsl_kernel::Multiply(gsl_kernel::Subtract(end, start), 0.5 + p[2] / 12.56));
    double weights[2] = {0.0, 0.0};
    const double length = gsl_kernel::Distance(start, end);
    gsl_kernel::PointSegmentParameters(x, start, end, length, 0.0, weights);
    const RealPoint edge = ExactDifference(end, start), reached = ExactDifference(x, start);
    const Real exact = (edge.x * reached.x + edge.y * reached.y) / edge.Length();
    return std::fabs(Real(weights[0] * length) - exact) / (kRoundoff * reached.Length());
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kPositionRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kPositionRoundoffs / 4.0);
}

TEST(UndividedRounding, GapAsideReachesAThirdOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Measured3 d = gsl_kernel::Measure(PointAt(p[0], 1.0));
    // Both ends of each segment are at one place, so both ends count.
    const Coord3 ofA = PointAt(p[1], p[3]), ofB = PointAt(p[2], 1.0);
    const SweptSegment a = SegmentBetween(ofA, ofA), b = SegmentBetween(ofB, ofB);
    const Real size = Real(gsl_kernel::SumOfSizes(ofA)) + Real(gsl_kernel::SumOfSizes(ofB));
    return std::fabs(Real(gsl_kernel::GapAside(a, b, d)) - ExactGapAside(a, b, d)) /
           (kRoundoff * size * ExactLength(d.c));
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kGapAsideRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kGapAsideRoundoffs / 3.0);
}

TEST(UndividedRounding, FirstEndsReachAThirdOfTheirBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const Measured3 d = gsl_kernel::Measure(PointAt(p[0], p[3]));
    const Coord3 ofA = PointAt(p[1], 1.0), ofB = PointAt(p[2], p[3]);
    const Measured3 ends = gsl_kernel::Between(ofA, ofB);
    const double cosine = p[1] / 6.28;
    const RealPoint exact = ExactDifference(ofB, ofA);
    // These are both sides of IsOn, as IsOn computes them.
    const Real cross = gsl_kernel::Length(gsl_kernel::Cross(ends.c, d.c));
    const Real within = cosine * ends.magnitude * d.magnitude;
    const Real exactWithin = Real(cosine) * exact.Length() * ExactLength(d.c);
    const Real size = std::max(exact.Length(), Real(cosine) * exact.Length()) * ExactLength(d.c);
    return (std::fabs(cross - std::fabs(ExactCross(d.c, exact))) +
            std::fabs(within - exactWithin)) /
           (kRoundoff * size);
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kFirstEndsRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kFirstEndsRoundoffs / 3.0);
}

TEST(UndividedRounding, AsideReachReachesAThirdOfItsBound) {
  RandomNumbers random(kSeed);
  const Real worst = SearchForTheWorst(random, [](const Parameters& p) {
    const SweptSegment a = SegmentBetween(PointAt(p[0], p[3]), PointAt(p[1], p[3]));
    const SweptSegment b = SegmentBetween(PointAt(p[2], p[1]), PointAt(p[3], p[2]));
    const Measured3 d = gsl_kernel::Measure(PointAt(p[1], p[0]));
    const SweepTolerances tol = {0.1 * p[0], p[2]};
    Real size = 0.0;
    for (const SweptSegment& segment : {a, b}) {
      for (const gsl_kernel::SourcedPoint& end : segment.p)
        size += std::fabs(Real(end.c.x)) + std::fabs(Real(end.c.y));
    }
    const Real widest = Real(tol.linear) + Real(tol.cosine) * size;
    const Real exact =
        (widest + Real(gsl_kernel::kCrossingRounding) * (widest + size)) * ExactLength(d.c);
    return std::fabs(Real(AsideReach(a, b, d, tol)) - exact) / (kRoundoff * exact);
  });
  std::printf("seed %" PRIu64 ", worst %.3Lf roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kReachRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kReachRoundoffs / 3.0);
}

TEST(CrossingRounding, LeastCrossIsTheLeastOfTargetsThatAreNotParallel) {
  RandomNumbers random(kSeed);
  Real least = 1.0;
  long counted = 0;
  for (long i = 0; i < Scaled(1000000); ++i) {
    // The directions are symmetric about an axis, so that the whole difference is in one component.
    const double half = 0.5e-5 * (1.0 + random.In(-1e-10, 1e-10));
    const double axis = random.Below(4) * 1.5707963267948966;
    const Measured3 along =
        gsl_kernel::Measure({std::cos(axis + half), std::sin(axis + half), 0.0});
    const Measured3 other =
        gsl_kernel::Measure({std::cos(axis - half), std::sin(axis - half), 0.0});
    const gsl_kernel::RayDirection ray(other, 0.0);
    if (gsl_kernel::SameOrOppositeComponents(gsl_kernel::UnitComponents(along),
                                             gsl_kernel::UnitComponents(other),
                                             gsl_kernel::kLineParallelTolerance)) {
      continue;
    }
    ++counted;
    const Coord3 u = gsl_arithmetic::NormalizedCopy(along, 0.0).c;
    least = std::min(least, std::fabs(ExactCross(u, ray.unit)));
  }
  std::printf("seed %" PRIu64 ", %ld targets, least %.15Lg of the bound\n", kSeed, counted,
              least / Real(gsl_kernel::kLeastCross));
  EXPECT_GT(counted, Scaled(100000));
  EXPECT_GE(least, Real(gsl_kernel::kLeastCross));
  EXPECT_LE(least, Real(gsl_kernel::kLeastCross) * (1.0L + 1e-9L));
}

TEST(OrdinarySizes, SquaresKeepTheirDigitsAndProductsStayFinite) {
  const double leastSquare = gsl_kernel::kLeastOrdinarySize * gsl_kernel::kLeastOrdinarySize / 9.0;
  EXPECT_GT(leastSquare * gsl_kernel::kUnitRoundoff, DBL_MIN);
  const double mostProduct =
      4.0 * gsl_kernel::kLargestOrdinarySize * gsl_kernel::kLargestOrdinarySize;
  EXPECT_LT(mostProduct, DBL_MAX * gsl_kernel::kUnitRoundoff);
}

TEST(AsideReach, CoversTheRoundingOfTheSteepestTargetsWithinAFactorOfTwenty) {
  RandomNumbers random(kSeed);
  Real worst = 0.0;
  for (long i = 0; i < Scaled(1000); ++i) {
    SteepCrossing best(random);
    Real most = best.Ratio();
    for (int k = 0; k < 1000; ++k) {
      const SteepCrossing other = most > 0.0 ? best.Near(random) : SteepCrossing(random);
      const Real ratio = other.Ratio();
      if (!(ratio > most)) continue;
      best = other;
      most = ratio;
    }
    worst = std::max(worst, most);
  }
  std::printf("seed %" PRIu64 ", worst %.3Lf of the reach\n", kSeed, worst);
  EXPECT_LE(worst, 1.0L);
  EXPECT_GE(worst, 0.05L);
}

TEST(AsideReach, CoversTheToleranceOfAnEndWithinAHundredth) {
  RandomNumbers random(kSeed);
  Worst worst;
  for (long i = 0; i < Scaled(1000000); ++i) {
    const Frame frame(random);
    const double linear = std::min(std::pow(10.0, random.In(-9.0, 1.0)), frame.d.magnitude);
    const double slope = random.Chance(0.5) ? 1.5707963267948966 : random.In(0.1, 3.0);
    TryEndBeyondTarget(frame, linear + random.In(0.0, 1.0), slope, random.In(-1.0, 1.0),
                       linear * random.In(0.9, 1.1), {linear, 1e-10}, worst);
  }
  std::printf("seed %" PRIu64 ", %ld accepted, worst %.6Lf of the reach\n", kSeed, worst.accepted,
              worst.ratio);
  EXPECT_LE(worst.ratio, 1.0L);
  EXPECT_GE(worst.ratio, 0.99L);
}

TEST(AsideReach, CoversTheCosineOfSegmentsAlongWithinAFactorOfThree) {
  RandomNumbers random(kSeed);
  Worst worst;
  for (long i = 0; i < Scaled(1000000); ++i) {
    const Frame frame(random);
    const double cosine = std::pow(10.0, random.In(-12.0, 1.0));
    const SweepTolerances tol = {0.0, cosine};
    const double apart = std::pow(10.0, random.In(-2.0, 2.0));
    const double slope = std::asin(std::min(1.0, cosine)) * random.In(0.9, 1.1);
    const double along = apart * std::cos(slope);
    const double aside = apart * std::sin(slope);
    const SweptSegment a = SegmentBetween(frame.At(0.0, 0.0), frame.At(1e-6, 0.0));
    const SweptSegment b = SegmentBetween(frame.At(along, aside), frame.At(along, aside + 1e-9));
    if (!gsl_arithmetic::IsOn(gsl_kernel::Between(a.p[0].c, b.p[0].c), frame.d, cosine)) continue;
    worst.Take(a, b, frame.d, tol);
  }
  std::printf("seed %" PRIu64 ", %ld accepted, worst %.6Lf of the reach\n", kSeed, worst.accepted,
              worst.ratio);
  EXPECT_LE(worst.ratio, 1.0L);
  EXPECT_GE(worst.ratio, 0.45L);
}

TEST(MeetEveryEnd, WritesOfTheEndsAlone) {
  const gsl_kernel::EndGaps gaps =
      MeetEveryEnd(kAcrossA, OfB({3, 5, 0}, {9, 6, 0}), kForward, kTolerance);
  // The lines of x = 4 and x = 3 meet the other segment. Those of x = 0 and x = 9 miss it.
  EXPECT_NEAR(gaps.gap[0], 5.0 + 1.0 / 6.0, 1e-12);
  EXPECT_EQ(gaps.gap[1], numbers::kInfinity);
  EXPECT_NEAR(gaps.gap[2], 5.0, 1e-12);
  EXPECT_EQ(gaps.gap[3], numbers::kInfinity);
  EXPECT_EQ(gaps.gap[gsl_kernel::kNoEnd], 0.0);
}

TEST(IsUsualDirection, HasAToleranceWithinItsLengthAndNoHeight) {
  const auto isUsual = [](const Coord3& c, double tolerance) {
    return gsl_kernel::IsUsualDirection(gsl_kernel::Measure(c), tolerance);
  };
  EXPECT_TRUE(isUsual({0.0, 2.0, 0.0}, 0.0));
  EXPECT_TRUE(isUsual({0.0, 2.0, 0.0}, 0.5));
  EXPECT_TRUE(isUsual({0.0, 2.0, -0.0}, 2.0));
  EXPECT_FALSE(isUsual({0.0, 2.0, 0.0}, numbers::Above(2.0)));
  EXPECT_FALSE(isUsual({0.0, 2.0, 0.0}, -numbers::kDenormal));
  EXPECT_FALSE(isUsual({0.0, 2.0, 0.0}, numbers::kNaN));
  EXPECT_FALSE(isUsual({0.0, 2.0, numbers::kDenormal}, 0.5));
  EXPECT_FALSE(isUsual({0.0, 2.0, 1.0}, 0.5));
  EXPECT_FALSE(isUsual({0.0, numbers::kNaN, 0.0}, 0.5));
}

TEST(IsUsualDirection, HasALengthBetweenTheOrdinarySizes) {
  const auto isUsual = [](double length) {
    return gsl_kernel::IsUsualDirection({{0.0, length, 0.0}, length}, 0.0);
  };
  EXPECT_FALSE(isUsual(gsl_kernel::kLeastOrdinarySize));
  EXPECT_TRUE(isUsual(numbers::Above(gsl_kernel::kLeastOrdinarySize)));
  EXPECT_FALSE(isUsual(gsl_kernel::kLargestOrdinarySize));
  EXPECT_TRUE(isUsual(numbers::Below(gsl_kernel::kLargestOrdinarySize)));
}

TEST(MeetFlatEnds, FindsWhatTheStepsFindWhereItDecides) {
  RandomNumbers random(kSeed);
  long decided = 0, met = 0, missed = 0;
  for (long i = 0; i < Scaled(1000000) && !testing::Test::HasFailure(); ++i) {
    const Frame frame(random);
    // B begins at an end of A, about the tolerance or less aside of it, and may be steep.
    const double linear =
        i % 9 == 0 ? 0.0 : std::min(std::pow(10.0, random.In(-9.0, -1.0)), frame.d.magnitude);
    const double aside = random.In(-2.0, 2.0) * std::pow(10.0, random.In(-15.0, 0.0));
    const double slope = random.In(-1.0, 1.0) * std::pow(10.0, random.In(-5.5, 0.0));
    const double reached = random.In(0.1, 2.0);
    const double z = i % 5 == 0 ? random.Hostile() : 0.5;
    const auto at = [&frame, z](double along, double across) {
      const Coord3 c = frame.At(along, across);
      return Coord3{c.x, c.y, z};
    };
    const double tip = i % 4 == 0 ? linear * (1.0 + random.In(-4.0, 4.0) * 0x1p-52) : aside;
    const SweptSegment a = SegmentBetween(at(0.0, 0.0), at(random.In(-1.0, 1.0), 1.0));
    const SweptSegment b = SegmentBetween(at(2.0, -tip), at(2.0 + reached, slope * reached - tip));
    gsl_kernel::EndGaps flat;
    if (!MeetFlatEnds(a, b, frame.d, linear, flat)) continue;
    ++decided;
    const gsl_kernel::EndGaps steps = MeetEveryEnd(a, b, frame.d, linear);
    for (int k = 0; k < 4; ++k) {
      EXPECT_TRUE(numbers::SameBits(flat.gap[k], steps.gap[k])) << "case " << i << ", end " << k;
      const bool isMet = std::isfinite(steps.gap[k]);
      ++(isMet ? met : missed);
      if (!isMet) continue;
      EXPECT_TRUE(numbers::SameBits(flat.met[k].x, steps.met[k].x)) << "case " << i;
      EXPECT_TRUE(numbers::SameBits(flat.met[k].y, steps.met[k].y)) << "case " << i;
      EXPECT_TRUE(numbers::SameBits(flat.met[k].z, steps.met[k].z)) << "case " << i;
    }
  }
  EXPECT_GT(decided, Scaled(300000));
  EXPECT_GT(met, Scaled(100000));
  EXPECT_GT(missed, Scaled(100000));
}

TEST(MeetFlatEnds, LeavesWhatIsNotUsualToTheSteps) {
  const Measured3 d = gsl_kernel::Measure({0.0, 1.0, 0.0});
  const SweptSegment a = SegmentBetween({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  const auto isDecided = [&](const SweptSegment& b, double linear) {
    gsl_kernel::EndGaps gaps;
    const bool first = MeetFlatEnds(a, b, d, linear, gaps);
    EXPECT_EQ(MeetFlatEnds(b, a, d, linear, gaps), first);
    return first;
  };
  const SweptSegment b = SegmentBetween({-3.0, 3.0, 0.0}, {0.5, 3.0, 0.0});
  EXPECT_TRUE(isDecided(b, 0.25));
  EXPECT_TRUE(isDecided(b, 0.0));
  EXPECT_FALSE(isDecided(SegmentBetween({-3.0, 3.0, 0.0}, {0.5, 3.0, 1e-9}), 0.25));
  EXPECT_FALSE(isDecided(SegmentBetween({-3.0, 3.0, 1e-9}, {0.5, 3.0, 1e-9}), 0.25));
  EXPECT_FALSE(isDecided(SegmentBetween({0.0, 3.0, 0.0}, {0.25, 3.0, 0.0}), 0.25)) << "short";
  EXPECT_FALSE(isDecided(SegmentBetween({0.0, 3.0, 0.0}, {0.0, 5.0, 0.0}), 0.25)) << "along";
  EXPECT_FALSE(isDecided(SegmentBetween({0.0, 3.0, 0.0}, {1e-4, 5.0, 0.0}), 0.25))
      << "nearly along";
  EXPECT_FALSE(isDecided(SegmentBetween({-3.0, 3.0, 0.0}, {0.75, 3.0, 0.0}), 0.25))
      << "an end of A is the tolerance beyond B, where rounding decides";
  EXPECT_FALSE(isDecided(SegmentBetween({std::nan(""), 3.0, 0.0}, {0.5, 3.0, 0.0}), 0.25));
  EXPECT_FALSE(isDecided(SegmentBetween({-1e101, 3.0, 0.0}, {1e101, 3.0, 0.0}), 0.0));
}

/// Returns whether MeetFlatEnds decides along Y.
bool IsDecidedForward(const SweptSegment& a, const SweptSegment& b, double linearTolerance) {
  gsl_kernel::EndGaps gaps;
  const bool decided = MeetFlatEnds(a, b, kForward, linearTolerance, gaps);
  EXPECT_EQ(MeetFlatEnds(b, a, kForward, linearTolerance, gaps), decided);
  return decided;
}

TEST(MeetFlatEnds, DecidesUpToTheToleranceBeyondAnEnd) {
  // B ends at `x`. The end of A at 1 is beyond it or not.
  const auto isDecided = [](double x, double tolerance) {
    return IsDecidedForward(SegmentBetween({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}),
                            SegmentBetween({-3.0, 3.0, 0.0}, {x, 3.0, 0.0}), tolerance);
  };
  EXPECT_TRUE(isDecided(0.8, 0.25)) << "four fifths of the tolerance beyond";
  EXPECT_TRUE(isDecided(1.125, 0.0)) << "close to the end";
  EXPECT_TRUE(isDecided(1.0, 0.0)) << "at the end";
}

TEST(MeetFlatEnds, EachBodyHasTheSignOfItsOwnZeroHeight) {
  // The end of B at 1.125 meets A in front of its start: -0.0 + 0.0 * -0.125 is -0.0.
  const SweptSegment a = SegmentBetween({1.0, 0.0, -0.0}, {-1.0, 0.0, -0.0});
  const SweptSegment b = SegmentBetween({-3.0, 3.0, 0.0}, {1.125, 3.0, 0.0});
  gsl_kernel::EndGaps gaps;
  ASSERT_TRUE(MeetFlatEnds(a, b, kForward, 0.25, gaps));
  EXPECT_TRUE(numbers::SameBits(gaps.met[0].z, 0.0));
  EXPECT_TRUE(numbers::SameBits(gaps.met[3].z, -0.0));
  const gsl_kernel::EndGaps steps = MeetEveryEnd(a, b, kForward, 0.25);
  EXPECT_TRUE(numbers::SameBits(steps.met[0].z, 0.0));
  EXPECT_TRUE(numbers::SameBits(steps.met[3].z, -0.0));
}

TEST(MeetFlatEnds, LeavesExtremeLengthsToTheSteps) {
  const auto isDecided = [](double reachOfA, double reachOfB, double length) {
    SweptSegment b = SegmentBetween({0.0, 3.0, 0.0}, {reachOfB, 3.0, 0.0});
    b.edge.magnitude = length;
    return IsDecidedForward(SegmentBetween({0.0, 0.0, 0.0}, {reachOfA, 0.0, 0.0}), b, 0.0);
  };
  const double least = gsl_kernel::kLeastOrdinarySize, most = gsl_kernel::kLargestOrdinarySize;
  EXPECT_FALSE(isDecided(-1e11, least, least));
  EXPECT_TRUE(isDecided(-1e11, least, numbers::Above(least)));
  EXPECT_FALSE(isDecided(-1.0, -most, most));
  EXPECT_TRUE(isDecided(-1.0, -most, numbers::Below(most)));
}

TEST(MeetFlatEnds, LeavesTheLeastSineToTheSteps) {
  // The cosine is the height of B, and its square is 1 - 2^-20.
  const auto isDecided = [](double cosine) {
    SweptSegment b = SegmentBetween({0.0, 0.0, 0.0}, {0x1p-10, cosine, 0.0});
    b.edge.magnitude = 1.0;
    return IsDecidedForward(SegmentBetween({1.0, -5.0, 0.0}, {-1.0, -5.0, 0.0}), b, 0.0);
  };
  const double cosine = std::sqrt(1.0 - gsl_kernel::kCrossingSineSquare);
  ASSERT_EQ(1.0 - cosine * cosine, gsl_kernel::kCrossingSineSquare);
  EXPECT_FALSE(isDecided(cosine));
  EXPECT_TRUE(isDecided(numbers::Below(cosine)));
}

TEST(MeetFlatEnds, LeavesTinyPositionsToTheSteps) {
  // The first end of A is `beyond` the first end of B, which has a length of 1.
  const auto isDecided = [](double beyond, double tolerance) {
    return IsDecidedForward(SegmentBetween({beyond, 0.0, 0.0}, {-0.5, 0.0, 0.0}),
                            SegmentBetween({0.0, 3.0, 0.0}, {-1.0, 3.0, 0.0}), tolerance);
  };
  const double least = gsl_kernel::kLeastDecidedPosition;
  EXPECT_FALSE(isDecided(least, 0.0));
  EXPECT_TRUE(isDecided(numbers::Above(least), 0.0));
  EXPECT_FALSE(isDecided(least / 2, least));
  EXPECT_TRUE(isDecided(least / 2, numbers::Above(least)));
}

TEST(AcceptedEnd, IsTheFirstOfTheLeastGapsBelowTheDistance) {
  const auto accepted = [](double a0, double a1, double b0, double b1, double distance) {
    bool isContact = true;
    const unsigned end = gsl_kernel::AcceptedEnd({{a0, a1, b0, b1, distance}, {}}, 0.0, isContact);
    EXPECT_TRUE(isContact);
    return end;
  };
  const double order[4] = {1.0, 2.0, 3.0, 4.0};
  std::array<unsigned, 4> at = {0, 1, 2, 3};
  do {
    const double g[4] = {order[at[0]], order[at[1]], order[at[2]], order[at[3]]};
    const unsigned least = static_cast<unsigned>(std::min_element(g, g + 4) - g);
    EXPECT_EQ(accepted(g[0], g[1], g[2], g[3], 9.0), least);
    EXPECT_EQ(accepted(g[0], g[1], g[2], g[3], 1.0), gsl_kernel::kNoEnd);
  } while (std::next_permutation(at.begin(), at.end()));
  EXPECT_EQ(accepted(2.0, 2.0, 2.0, 2.0, 9.0), 0u);
  EXPECT_EQ(accepted(3.0, 2.0, 2.0, 2.0, 9.0), 1u);
  EXPECT_EQ(accepted(3.0, 3.0, 2.0, 2.0, 9.0), 2u);
  EXPECT_EQ(accepted(0.0, -0.0, -0.0, 0.0, 9.0), 0u);
  EXPECT_EQ(accepted(std::nan(""), 3.0, std::nan(""), std::nan(""), 9.0), 1u);
  EXPECT_EQ(accepted(std::nan(""), 3.0, 4.0, 4.0, 9.0), 1u);
  EXPECT_EQ(accepted(4.0, 4.0, std::nan(""), 3.0, 9.0), 3u);
  EXPECT_EQ(accepted(1.0, 1.0, 1.0, 1.0, -1.0), gsl_kernel::kNoEnd) << "the distance is no end";
}

TEST(AcceptedEnd, EndsAtAnEndThatWasPassed) {
  bool isContact = true;
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{2.0, -1.0, 1.0, 1.0, 9.0}, {}}, 0.0, isContact), 0u);
  EXPECT_TRUE(isContact);
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{2.0, 1.0, -1.0, 0.5, 9.0}, {}}, 0.0, isContact), 1u);
  EXPECT_FALSE(isContact);
}

TEST(AcceptedEnd, LaterEndsMustBeatEarlierEndsByTheMargin) {
  bool isContact = true;
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{4.0, 3.5, 2.5, 2.0, 9.0}, {}}, 1.0, isContact), 2u);
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{0.0, 2.0, 2.0, 2.0, 9.0}, {}}, 1.0, isContact), 0u)
      << "an end that touches is not passed";
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{8.0, 8.5, 8.5, 8.0, 9.0}, {}}, 1.0, isContact),
            gsl_kernel::kNoEnd);
  EXPECT_EQ(gsl_kernel::AcceptedEnd({{4.0, 4.5, 3.5, 3.8, 9.0}, {}}, -1.0, isContact), 2u)
      << "a negative margin loosens nothing";
  EXPECT_TRUE(isContact);
}

TEST(LiesAlong, IsWhatIsOnSaysAtEveryAngle) {
  RandomNumbers random(kSeed);
  long along = 0, quick = 0;
  for (long i = 0; i < Scaled(200000) && !testing::Test::HasFailure(); ++i) {
    const Frame frame(random);
    const double cosine = i % 8 == 0 ? 0.0 : std::pow(10.0, random.In(-12.0, 0.0));
    const double sine = std::min(1.0, cosine * random.In(0.0, 2.0));
    const double size = i % 3 == 0 ? std::pow(10.0, random.In(-170.0, 170.0)) : 1.0;
    const SweptSegment segment =
        SegmentBetween({0.0, 0.0, 0.0}, frame.At(size * std::sqrt(1.0 - sine * sine), size * sine));
    const bool isOn = gsl_arithmetic::IsOn(frame.d, segment.edge, cosine);
    EXPECT_EQ(gsl_kernel::LiesAlong(frame.d, segment, cosine), isOn) << "case " << i;
    along += isOn ? 1 : 0;
    quick += gsl_kernel::IsCertainlyNotOn(frame.d, segment.edge, cosine) ? 1 : 0;
  }
  EXPECT_GT(along, Scaled(20000));
  EXPECT_GT(quick, Scaled(20000));
}

TEST(PassAside, RejectsSegmentsBeyondTheReachAndKeepsOthers) {
  const SweepTolerances tol = {0.25, 0.0};
  const Measured3 d = gsl_kernel::Measure({0.0, 10.0, 0.0});
  const SweptSegment a = SegmentBetween({0.0, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  const SweptSegment at = SegmentBetween({0.25, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_FALSE(gsl_kernel::PassAside(a, at, d, tol));
  const SweptSegment beyond = SegmentBetween({0.2500001, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_TRUE(gsl_kernel::PassAside(a, beyond, d, tol));
  EXPECT_TRUE(gsl_kernel::PassAside(beyond, a, d, tol));
}

TEST(PassAside, KeepsPairsWhoseReachIsNotKnown) {
  const SweepTolerances tol = {0.25, 0.0};
  const Measured3 d = gsl_kernel::Measure({0.0, 1.0, 0.0});
  const SweptSegment a = SegmentBetween({0.0, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  const SweptSegment far = SegmentBetween({5.0, 3.0, 0.0}, {6.0, 3.0, 0.0});
  ASSERT_TRUE(gsl_kernel::PassAside(a, far, d, tol));
  // The cases are a tolerance above |d|, a direction and segments of extreme lengths, two planes,
  // and NaN.
  EXPECT_FALSE(gsl_kernel::PassAside(a, far, d, {numbers::Above(1.0), 0.0}));
  EXPECT_TRUE(gsl_kernel::PassAside(a, far, d, {1.0, 0.0}));
  for (const double size : {0.0, 1e-170, 1e-101, 1e101, 1e170}) {
    EXPECT_FALSE(gsl_kernel::PassAside(a, far, gsl_kernel::Measure({0.0, size, 0.0}), {0.0, 0.0}));
    const SweptSegment odd = SegmentBetween({5.0, 3.0, 0.0}, {5.0, 3.0 + size, 0.0});
    EXPECT_EQ(gsl_kernel::PassAside(a, odd, d, tol), false) << size;
    EXPECT_EQ(gsl_kernel::PassAside(odd, a, d, tol), false) << size;
  }
  const SweptSegment higher = SegmentBetween({5.0, 3.0, 0.0}, {6.0, 3.0, 1e-9});
  EXPECT_FALSE(gsl_kernel::PassAside(a, higher, d, tol));
  EXPECT_FALSE(gsl_kernel::PassAside(a, far, gsl_kernel::Measure({0.0, 1.0, 1e-9}), tol));
  EXPECT_FALSE(gsl_kernel::PassAside(a, far, d, {std::nan(""), 0.0}));
  EXPECT_FALSE(gsl_kernel::PassAside(a, far, d, {0.0, std::nan("")}));
  const SweptSegment nothing = SegmentBetween({5.0, 3.0, 0.0}, {std::nan(""), 3.0, 0.0});
  EXPECT_FALSE(gsl_kernel::PassAside(a, nothing, d, tol));
}

} // namespace
