#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include "GuardedMemory.h"
#include "Numbers.h"
#include "ScopedSettings.h"
#include "gsl_utils.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using numbers::Above;
using numbers::kInfinity;
using numbers::kNaN;

/// One call along +Y with outputs that hold a sentinel. A faces as it must when it runs towards -X,
/// and B when it runs towards +X.
struct Sweep {
  gsl_Vector direction{0.0, 1.0, 0.0};
  gsl_Point a[2];
  gsl_Point b[2];
  bool twoSided[2] = {false, false};
  double margin = 0.0;
  double distance = kInfinity;
  gsl_Point contacts[2] = {{91.0, 92.0, 93.0}, {94.0, 95.0, 96.0}};
  const gsl_Point sentinel[2] = {contacts[0], contacts[1]};

  Sweep(const gsl_Point& a0, const gsl_Point& a1, const gsl_Point& b0, const gsl_Point& b1)
      : a{a0, a1}, b{b0, b1} {}

  bool operator()() {
    return gsl_InPlaneSegSegMinDirectionalDist(direction, a[0], a[1], b[0], b[1], twoSided, margin,
                                               contacts, distance);
  }

  bool IsUntouched(int k) const {
    return contacts[k].x == sentinel[k].x && contacts[k].y == sentinel[k].y &&
           contacts[k].z == sentinel[k].z && contacts[k].uid == sentinel[k].uid;
  }

  void ExpectUntouched(double before = kInfinity) const {
    EXPECT_TRUE(IsUntouched(0));
    EXPECT_TRUE(IsUntouched(1));
    EXPECT_EQ(distance, before);
  }

  bool IsKnown(const cls_Uid& uid) const {
    return uid == a[0].uid || uid == a[1].uid || uid == b[0].uid || uid == b[1].uid ||
           uid == sentinel[0].uid || uid == sentinel[1].uid || uid.IsNull();
  }

  void ExpectEnd(int k, const gsl_Point& end) const {
    EXPECT_EQ(contacts[k].x, end.x);
    EXPECT_EQ(contacts[k].y, end.y);
    EXPECT_EQ(contacts[k].z, end.z);
    EXPECT_EQ(contacts[k].uid, end.uid);
  }

  void ExpectComputed(int k, double x, double y) const {
    EXPECT_NEAR(contacts[k].x, x, 1e-12);
    EXPECT_NEAR(contacts[k].y, y, 1e-12);
    EXPECT_FALSE(IsKnown(contacts[k].uid));
  }
};

TEST(GslInPlaneSweep, FacingSegmentsMeetAfterTheGap) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectComputed(1, 1.0, 3.0);
}

TEST(GslInPlaneSweep, DirectionIsNormalised) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.direction = gsl_Vector(0.0, 0.25, 0.0);
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
}

TEST(GslInPlaneSweep, EndsThatMeetEndsTakeTheEndOfAAndAComputedPoint) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_TRUE(sweep());
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectComputed(1, 1.0, 3.0);
}

TEST(GslInPlaneSweep, AAgainstTheDirectionIsRefusedBeforeBIsLookedAt) {
  Sweep sweep({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
  Sweep nothing({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {kNaN, kNaN, kNaN}, {kNaN, kNaN, kNaN});
  EXPECT_FALSE(nothing());
  nothing.ExpectUntouched();
}

TEST(GslInPlaneSweep, TwoSidedAIsTurnedAndItsSecondEndComesFirst) {
  Sweep sweep({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.twoSided[0] = true;
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[1]);
  sweep.ExpectComputed(1, 1.0, 3.0);
}

TEST(GslInPlaneSweep, BAlongTheDirectionIsRefusedUnlessTwoSided) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {4.0, 3.0, 0.0}, {-4.0, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
  sweep.twoSided[1] = true;
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
}

TEST(GslInPlaneSweep, TwoSidedOfAIsNotTwoSidedOfB) {
  Sweep sweep({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.twoSided[1] = true;
  EXPECT_FALSE(sweep());
  Sweep other({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {4.0, 3.0, 0.0}, {-4.0, 3.0, 0.0});
  other.twoSided[0] = true;
  EXPECT_FALSE(other());
}

TEST(GslInPlaneSweep, SegmentsRunningTheSameWayAcrossMakeNoContact) {
  // The segments are steep: both face as they must, but they run the same way.
  Sweep sweep({1.0, 0.0, 0.0}, {0.0, 5.0, 0.0}, {0.0, 10.0, 0.0}, {1.0, 15.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, SegmentsAtRightAnglesAreAContact) {
  Sweep sweep({1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 4.0, 0.0}, {1.0, 5.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_NEAR(sweep.distance, 3.0, 1e-12);
}

TEST(GslInPlaneSweep, RunningTheSameWayIsJudgedAfterTurning) {
  // Before A is turned they run the same way, and after that they do not.
  Sweep sweep({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.twoSided[0] = true;
  EXPECT_TRUE(sweep());
}

TEST(GslInPlaneSweep, AcceptsOnlyStrictlyCloserByMoreThanTheMargin) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.distance = 3.0;
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched(3.0);
  sweep.distance = Above(3.0);
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.margin = 0.5;
  sweep.distance = 3.5;
  EXPECT_FALSE(sweep());
  EXPECT_EQ(sweep.distance, 3.5);
  sweep.distance = Above(3.5);
  EXPECT_TRUE(sweep());
}

TEST(GslInPlaneSweep, CloserContactWithinTheMarginDoesNotReplaceTheFirst) {
  // A's first end travels 3, its second 2.75.
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, 2.75, 0.0}, {1.0, 3.0, 0.0});
  sweep.margin = 0.5;
  EXPECT_TRUE(sweep());
  EXPECT_NEAR(sweep.distance, 3.0, 1e-12);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.margin = 0.125;
  sweep.distance = kInfinity;
  EXPECT_TRUE(sweep());
  EXPECT_NEAR(sweep.distance, 2.75, 1e-12);
  sweep.ExpectEnd(0, sweep.a[1]);
}

TEST(GslInPlaneSweep, AcrossANegativeMarginDoesNotLoosenTheRunningMinimum) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.margin = -5.0;
  for (const double distance : {2.0, 3.0}) {
    sweep.distance = distance;
    EXPECT_FALSE(sweep());
    sweep.ExpectUntouched(distance);
  }
  sweep.distance = Above(3.0);
  EXPECT_TRUE(sweep());
}

TEST(GslInPlaneSweep, AlongANegativeMarginLoosensTheRunningMinimum) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.margin = -5.0;
  sweep.distance = 1.5;
  EXPECT_TRUE(sweep());
  // End 0 travels 3, end 1 travels 2.
  EXPECT_EQ(sweep.distance, 2.0);
  sweep.ExpectEnd(0, sweep.a[1]);
}

TEST(GslInPlaneSweep, OnlyBAlongANegativeMarginLoosensTheRunningMinimum) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.5, 4.0, 0.0}, {0.5, 6.0, 0.0});
  sweep.margin = -5.0;
  sweep.distance = 1.5;
  EXPECT_TRUE(sweep());
  // End 0 is 4 away. Then end 1, at 6, is at most 5 farther.
  EXPECT_EQ(sweep.distance, 6.0);
  sweep.ExpectEnd(1, sweep.b[1]);
}

TEST(GslInPlaneSweep, BothAlongANegativeMarginLoosensTheRunningMinimum) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 3.0, 0.0}, {0.0, 4.0, 0.0});
  sweep.margin = -5.0;
  sweep.distance = 1.5;
  EXPECT_TRUE(sweep());
  // The gaps are 3, 4, 2 and 3 in their order; the last one stays.
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[1]);
  sweep.ExpectEnd(1, sweep.b[1]);
}

TEST(GslInPlaneSweep, SecondPassStoresTheEndOfAWithTheSameIndex) {
  Sweep first({2.0, 0.0, 0.0}, {-2.0, 0.0, 0.0}, {-1.0, 3.0, 0.0}, {1.0, 5.0, 0.0});
  EXPECT_TRUE(first());
  EXPECT_EQ(first.distance, 3.0);
  first.ExpectComputed(0, -1.0, 0.0);
  first.ExpectEnd(1, first.a[0]);
  Sweep second({2.0, 0.0, 0.0}, {-2.0, 0.0, 0.0}, {-1.0, 5.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_TRUE(second());
  EXPECT_EQ(second.distance, 3.0);
  second.ExpectComputed(0, 1.0, 0.0);
  second.ExpectEnd(1, second.a[1]);
}

TEST(GslInPlaneSweep, SecondPassStoresTheEndOfTheTurnedA) {
  Sweep sweep({-2.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {-1.0, 3.0, 0.0}, {1.0, 5.0, 0.0});
  sweep.twoSided[0] = true;
  EXPECT_TRUE(sweep());
  sweep.ExpectEnd(1, sweep.a[1]);
}

TEST(GslInPlaneSweep, PassedEndOfAKeepsTheResultSoFar) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, -1.0, 0.0}, {1.0, 1.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_NEAR(sweep.distance, 1.0, 1e-12);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectComputed(1, 1.0, 1.0);
}

TEST(GslInPlaneSweep, PassedFirstEndOfAMakesNoContact) {
  // The second end would travel 1.
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, 1.0, 0.0}, {1.0, -1.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, PassedEndOfBMakesNoContactAlthoughTheFirstPassWroteOne) {
  Sweep sweep({2.0, 0.0, 0.0}, {-2.0, 0.0, 0.0}, {-1.0, -1.0, 0.0}, {3.0, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  EXPECT_NEAR(sweep.distance, 2.0, 1e-12);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectComputed(1, 2.0, 2.0);
}

TEST(GslInPlaneSweep, PassedEndOfBMakesNoContactAlthoughTheSecondPassWroteOne) {
  Sweep sweep({4.0, 0.0, 0.0}, {-4.0, 0.0, 0.0}, {-1.0, 1.0, 0.0}, {1.0, -1.0, 0.0});
  EXPECT_FALSE(sweep());
  EXPECT_EQ(sweep.distance, 1.0);
  sweep.ExpectComputed(0, -1.0, 0.0);
  sweep.ExpectEnd(1, sweep.a[0]);
}

TEST(GslInPlaneSweep, PassedFirstEndOfBMakesNoContact) {
  Sweep sweep({4.0, 0.0, 0.0}, {-4.0, 0.0, 0.0}, {-1.0, -1.0, 0.0}, {1.0, 1.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, TouchingSegmentsTravelNothing) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 0.0);
}

TEST(GslInPlaneSweep, SegmentsBesideEachOtherDoNotMeet) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {1.5, 3.0, 0.0}, {4.0, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, EndThatPassesWithinTheToleranceMeets) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.25;
  Sweep at({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {1.25, 3.0, 0.0}, {4.25, 3.0, 0.0});
  EXPECT_TRUE(at());
  Sweep above({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {1.3125, 3.0, 0.0}, {4.3125, 3.0, 0.0});
  EXPECT_FALSE(above());
}

TEST(GslInPlaneSweep, AAcrossAndBAlongStoresTheEndOfB) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.5, 6.0, 0.0}, {0.5, 4.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 4.0);
  sweep.ExpectComputed(0, 0.5, 0.0);
  sweep.ExpectEnd(1, sweep.b[1]);
}

TEST(GslInPlaneSweep, AAcrossAndBAlongAcceptsANegativeGap) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.5, 2.0, 0.0}, {0.5, -4.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, -4.0);
  sweep.ExpectEnd(1, sweep.b[1]);
}

TEST(GslInPlaneSweep, AAlongAndBAcrossStoresTheEndOfA) {
  Sweep sweep({0.5, 0.0, 0.0}, {0.5, 1.0, 0.0}, {-1.0, 4.0, 0.0}, {1.0, 4.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[1]);
  sweep.ExpectComputed(1, 0.5, 4.0);
}

TEST(GslInPlaneSweep, AAlongAndBAcrossAcceptsANegativeGap) {
  Sweep sweep({0.5, 0.0, 0.0}, {0.5, 1.0, 0.0}, {-1.0, -4.0, 0.0}, {1.0, -4.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, -5.0);
  sweep.ExpectEnd(0, sweep.a[1]);
}

TEST(GslInPlaneSweep, BothAlongOnOneLineTakeTheSmallestGap) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 5.0, 0.0}, {0.0, 3.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 2.0);
  sweep.ExpectEnd(0, sweep.a[1]);
  sweep.ExpectEnd(1, sweep.b[1]);
}

TEST(GslInPlaneSweep, BothAlongOnOneLineAcceptANegativeGap) {
  Sweep sweep({0.0, 5.0, 0.0}, {0.0, 6.0, 0.0}, {0.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, -6.0);
  sweep.ExpectEnd(0, sweep.a[1]);
  sweep.ExpectEnd(1, sweep.b[0]);
}

TEST(GslInPlaneSweep, BothAlongOffsetSidewaysMakeNoContact) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {1e-3, 5.0, 0.0}, {1e-3, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, BothAlongWhoseFirstEndsCoincideMakeNoContact) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}, {0.0, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, BothAlongKeepTheFirstOfEqualGaps) {
  // Ends (0, 0) and (1, 1) are both 3 apart, and ends (1, 0) are within the margin of that.
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 3.0, 0.0}, {0.0, 4.0, 0.0});
  sweep.margin = 1.0;
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectEnd(1, sweep.b[0]);
}

TEST(GslInPlaneSweep, MarginLargerThanTheDistanceAcceptsOnlyGapsBelowTheDifference) {
  Sweep along({0.5, 0.0, 0.0}, {0.5, 0.25, 0.0}, {-1.0, 0.5, 0.0}, {1.0, 0.5, 0.0});
  along.distance = 1.0;
  along.margin = 2.0;
  EXPECT_FALSE(along());
  along.ExpectUntouched(1.0);
  Sweep behind({0.5, 0.0, 0.0}, {0.5, 0.25, 0.0}, {-1.0, -1.0, 0.0}, {1.0, -1.0, 0.0});
  behind.distance = 1.0;
  behind.margin = 2.0;
  EXPECT_TRUE(behind());
  EXPECT_EQ(behind.distance, -1.25);
}

TEST(GslInPlaneSweep, MarginAtTheDifferenceIsStrictForSegmentsAlong) {
  Sweep sweep({0.5, 0.0, 0.0}, {0.5, 1.0, 0.0}, {-1.0, 4.0, 0.0}, {1.0, 4.0, 0.0});
  sweep.distance = 3.5;
  sweep.margin = 0.5;
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched(3.5);
  sweep.margin = 0.25;
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
}

TEST(GslInPlaneSweep, MarginAtTheDifferenceIsStrictForAAcrossAndBAlong) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {0.5, 4.0, 0.0}, {0.5, 6.0, 0.0});
  sweep.distance = 4.5;
  sweep.margin = 0.5;
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched(4.5);
  sweep.distance = Above(4.5);
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 4.0);
}

TEST(GslInPlaneSweep, ShortSegmentIsNeverMetByAnEnd) {
  // B's ends miss the short A, and A's own ends still meet B.
  Sweep shortA({5e-7, 0.0, 0.0}, {0.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, {2e-7, 3.0, 0.0});
  EXPECT_FALSE(shortA());
  shortA.ExpectUntouched();
  Sweep longB({5e-7, 0.0, 0.0}, {0.0, 0.0, 0.0}, {-1.0, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_TRUE(longB());
  EXPECT_EQ(longB.distance, 3.0);
}

TEST(GslInPlaneSweep, ShortSegmentCanStillLieAlong) {
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1e-7, 0.0}, {-1.0, -3.0, 0.0}, {1.0, -3.0, 0.0});
  // Only a segment that counts as along accepts a negative gap.
  EXPECT_TRUE(sweep());
  EXPECT_NEAR(sweep.distance, -3.0 - 1e-7, 1e-15);
}

TEST(GslInPlaneSweep, SegmentOfExactlyTheToleranceIsMetNearItsFirstEndOnly) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  Sweep at({-1.75, 0.0, 0.0}, {-1.85, -9.0, 0.0}, {-2.0, 3.0, 0.0}, {-1.5, 3.0, 0.0});
  EXPECT_TRUE(at());
  Sweep beyond({-1.45, 0.0, 0.0}, {-1.48, -9.0, 0.0}, {-2.0, 3.0, 0.0}, {-1.5, 3.0, 0.0});
  EXPECT_FALSE(beyond());
  Sweep shorter({-1.75, 0.0, 0.0}, {-1.85, -9.0, 0.0}, {-2.0, 3.0, 0.0},
                {numbers::Below(-1.5), 3.0, 0.0});
  EXPECT_FALSE(shorter());
}

TEST(GslInPlaneSweep, AlongIsStrictlyBelowTheCosineTolerance) {
  const ScopedSettings settings;
  // |d x A| is 3, and 0.6 |A| is 3 exactly. B lies behind A: only along it is a contact.
  settings->cosineTolerance = 0.6;
  Sweep at({3.0, 0.0, 0.0}, {0.0, 4.0, 0.0}, {-9.0, -5.0, 0.0}, {9.0, -5.0, 0.0});
  EXPECT_FALSE(at());
  at.ExpectUntouched();
  settings->cosineTolerance = Above(0.6);
  EXPECT_TRUE(at());
  EXPECT_NEAR(at.distance, -9.0, 1e-12);
}

TEST(GslInPlaneSweep, AnyCommonHeightIsAllowed) {
  Sweep sweep({1.0, 0.0, 7.0}, {-1.0, 0.0, 7.0}, {-4.0, 3.0, 7.0}, {4.0, 3.0, 7.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_EQ(sweep.contacts[1].z, 7.0);
}

TEST(GslInPlaneSweep, SegmentsAtDifferentHeightsDoNotMeet) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.5}, {4.0, 3.0, 0.5});
  EXPECT_FALSE(sweep());
  sweep.ExpectUntouched();
}

TEST(GslInPlaneSweep, SegmentWhoseLengthOverflowsIsMetAtItsFirstEnd) {
  // An infinite length leaves a unit vector of zeros: every line crosses such a segment in its
  // first point, however far beside it.
  Sweep sweep({1e200, 0.0, 0.0}, {0.0, 0.0, 0.0}, {3e200, 3.0, 0.0}, {5e200, 3.0, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 3.0);
  sweep.ExpectEnd(0, sweep.a[0]);
  EXPECT_EQ(sweep.contacts[1].x, 3e200);
  EXPECT_EQ(sweep.contacts[1].y, 3.0);
  EXPECT_FALSE(sweep.IsKnown(sweep.contacts[1].uid));
}

TEST(GslInPlaneSweep, DirectionShorterThanTheToleranceMeetsWithoutTravel) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  sweep.direction = gsl_Vector(0.0, 1e-7, 0.0);
  // The zero vector leads to the foot on B, and every gap along it is 0.
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 0.0);
  sweep.ExpectEnd(0, sweep.a[0]);
  sweep.ExpectComputed(1, 1.0, 3.0);
}

TEST(GslInPlaneSweep, ToleranceAboveTheUnitDirectionMeetsAtTheFoot) {
  // The direction has a length of 1, which is too short to be divided by its length again. So an
  // end meets the foot on the other segment's line, however far aside.
  const ScopedSettings settings;
  for (const double tolerance : {Above(1.0), 1.5}) {
    settings->linearTolerance = tolerance;
    Sweep sweep({0.0, 0.0, 0.0}, {10.0, 0.0, 0.0}, {20.0, 50.0, 0.0}, {40.0, 10.0, 0.0});
    sweep.direction = gsl_Vector(4.0, 0.0, 0.0);
    sweep.twoSided[0] = sweep.twoSided[1] = true;
    sweep.distance = 1e30;
    EXPECT_TRUE(sweep());
    EXPECT_NEAR(sweep.distance, 28.0, 1e-12);
    sweep.ExpectEnd(0, sweep.a[1]);
    EXPECT_NEAR(sweep.contacts[1].x, 38.0, 1e-12);
    EXPECT_NEAR(sweep.contacts[1].y, 14.0, 1e-12);
  }
}

TEST(GslInPlaneSweep, ToleranceOfExactlyTheUnitDirectionMeetsAlongTheDirection) {
  const ScopedSettings settings;
  settings->linearTolerance = 1.0;
  Sweep aside({0.0, 0.0, 0.0}, {10.0, 0.0, 0.0}, {20.0, 50.0, 0.0}, {40.0, 10.0, 0.0});
  aside.direction = gsl_Vector(4.0, 0.0, 0.0);
  aside.twoSided[0] = aside.twoSided[1] = true;
  EXPECT_FALSE(aside());
  aside.ExpectUntouched();
}

TEST(GslInPlaneSweep, StaleDirectionIsDividedByItsCachedMagnitude) {
  // The direction in use has a length of 10. So gaps along it count tenfold, and distances aside do
  // not.
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {5.0, 1.0000005, 0.0}, {5.0, 2.0, 0.0});
  sweep.direction = gsl_Vector(1.0, 0.0, 0.0);
  sweep.direction[0] = 10.0;
  sweep.twoSided[0] = sweep.twoSided[1] = true;
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 50.0);
  Sweep aside({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {5.0, 1.000002, 0.0}, {5.0, 2.0, 0.0});
  aside.direction = sweep.direction;
  aside.twoSided[0] = aside.twoSided[1] = true;
  EXPECT_FALSE(aside());
  aside.ExpectUntouched();
}

TEST(GslInPlaneSweep, TinySegmentAlongTheDirectionIsMetHoweverFarAside) {
  // The square of its length has one digit left, so its unit vector does not have the length 1. A
  // segment along the direction then counts as across it, and every line meets it at its first end.
  const ScopedSettings settings;
  settings->linearTolerance = 0.0;
  settings->cosineTolerance = 0.0;
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {3.0, 0.0, 0.0}, {3.0, 1.6e-162, 0.0});
  EXPECT_TRUE(sweep());
  EXPECT_EQ(sweep.distance, 0.0);
  EXPECT_EQ(sweep.contacts[1].x, 3.0);
}

TEST(GslInPlaneSweep, NaNNeverCountsAsCloser) {
  Sweep margin({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  margin.margin = kNaN;
  EXPECT_FALSE(margin());
  margin.ExpectUntouched();
  Sweep distance({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  distance.distance = kNaN;
  EXPECT_FALSE(distance());
  Sweep direction({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0}, {4.0, 3.0, 0.0});
  direction.direction = gsl_Vector(kNaN, kNaN, kNaN);
  EXPECT_FALSE(direction());
  direction.ExpectUntouched();
}

TEST(GslInPlaneSweep, TolerancesAreReadAtTheCall) {
  const ScopedSettings settings;
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {1.5, 3.0, 0.0}, {4.5, 3.0, 0.0});
  EXPECT_FALSE(sweep());
  settings->linearTolerance = 0.75;
  EXPECT_TRUE(sweep());
}

/// A call along +Y that may read and write only the flags and outputs that a test opens.
struct GuardedSweep {
  GuardedPair<bool> twoSided;
  GuardedPair<gsl_Point> contacts{gsl_Point(), gsl_Point()};
  GuardedPair<double> distance;
  double margin = 0.0;

  explicit GuardedSweep(bool first = false, bool second = false, double reach = kInfinity)
      : twoSided(first, second), distance(reach, 0.0) {
    twoSided.CloseBoth();
    contacts.CloseBoth();
    distance.KeepAsItIs(0);
  }

  /// The call may read flag k.
  GuardedSweep& Ask(int k) {
    twoSided.KeepAsItIs(k);
    return *this;
  }

  bool operator()(const gsl_Point& a0, const gsl_Point& a1, const gsl_Point& b0,
                  const gsl_Point& b1) {
    return gsl_InPlaneSegSegMinDirectionalDist(gsl_Vector(0.0, 1.0, 0.0), a0, a1, b0, b1,
                                               twoSided.Get(), margin, contacts.Get(),
                                               *distance.Get());
  }
};

TEST(GslInPlaneSweepTouches, TheFlagOfBOnlyAfterTheFlagOfA) {
  const gsl_Point left(-4.0, 3.0, 0.0), right(4.0, 3.0, 0.0);
  const gsl_Point a0(-1.0, 0.0, 0.0), a1(1.0, 0.0, 0.0);
  EXPECT_FALSE(GuardedSweep(false, true).Ask(0)(a0, a1, left, right)) << "A is refused";
  EXPECT_FALSE(GuardedSweep(false, true).Ask(0)(a0, a1, right, left)) << "A, and B is not asked";
  EXPECT_FALSE(GuardedSweep(true, false).Ask(0).Ask(1)(a0, a1, right, left)) << "B is refused";
}

TEST(GslInPlaneSweepTouches, AFlagOnlyOfASegmentThatFacesTheWrongWay) {
  const gsl_Point left(-4.0, 3.0, 0.0), right(4.0, 3.0, 0.0);
  EXPECT_FALSE(GuardedSweep(true, false).Ask(1)({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, right, left));
  // A segment along the direction faces neither way.
  EXPECT_FALSE(GuardedSweep(true, false).Ask(1)({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, right, left));
}

TEST(GslInPlaneSweepTouches, NoOutputWithoutAContact) {
  EXPECT_FALSE(GuardedSweep()({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {9.0, 3.0, 0.0}, {11.0, 3.0, 0.0}))
      << "aside";
  EXPECT_FALSE(GuardedSweep()({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {1e-3, 5.0, 0.0}, {1e-3, 3.0, 0.0}))
      << "on two lines";
  EXPECT_FALSE(GuardedSweep()({1.0, 0.0, 0.0}, {0.0, 5.0, 0.0}, {0.0, 10.0, 0.0}, {1.0, 15.0, 0.0}))
      << "running the same way";
  EXPECT_FALSE(
      GuardedSweep()({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-1.0, -3.0, 0.0}, {1.0, -3.0, 0.0}))
      << "behind";
  EXPECT_FALSE(GuardedSweep(false, false, 1.0)({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {-4.0, 3.0, 0.0},
                                               {4.0, 3.0, 0.0}))
      << "no closer";
}

/// The direction has the length 1e-90, so cross products with it have squares that are zero.
/// Everything is then on one line, and A comes to B after 1e-90 * 1e-76.
TEST(GslInPlaneSweep, AStaleLengthMayLeaveNoSquareOfACrossProduct) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.0;
  Sweep sweep({0.0, 0.0, 0.0}, {0.0, 1e-76, 0.0}, {1e-76, 2e-76, 0.0}, {1e-76, 4e-76, 0.0});
  sweep.direction = gsl_Vector(1.0, 0.0, 0.0);
  sweep.direction.magnitude = 1e90;
  sweep.twoSided[0] = sweep.twoSided[1] = true;
  EXPECT_TRUE(sweep());
  EXPECT_DOUBLE_EQ(sweep.distance, 1e-166);
  EXPECT_FALSE(sweep.IsUntouched(0));
  EXPECT_FALSE(sweep.IsUntouched(1));
}

TEST(GslInPlaneSweep, RunningMinimumOverManyObstaclesEndsAtTheNearest) {
  Sweep sweep({1.0, 0.0, 0.0}, {-1.0, 0.0, 0.0}, {}, {});
  for (const double y : {7.0, 3.0, 5.0}) {
    sweep.b[0] = gsl_Point(-4.0, y, 0.0);
    sweep.b[1] = gsl_Point(4.0, y, 0.0);
    EXPECT_EQ(sweep(), y != 5.0);
  }
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_EQ(sweep.contacts[1].y, 3.0);
}

} // namespace
