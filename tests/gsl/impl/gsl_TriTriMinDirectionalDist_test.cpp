#include "gsl_TriTriMinDirectionalDist.h"

#include "GuardedMemory.h"
#include "PointChecks.h"
#include "ScopedSettings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

using numbers::Above;
using numbers::Below;

using Order = std::array<unsigned int, 3>;

double LinearTolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

std::vector<Order> EveryOrder() {
  std::vector<Order> orders;
  Order order = {0, 1, 2};
  do {
    orders.push_back(order);
  } while (std::next_permutation(order.begin(), order.end()));
  return orders;
}

struct Triangle {
  gsl_Point p[3];

  Triangle In(const Order& order) const { return {{p[order[0]], p[order[1]], p[order[2]]}}; }
  Triangle Reversed() const { return {{p[0], p[2], p[1]}}; }
};

/// One call with its outputs, which start as sentinels.
struct Sweep {
  gsl_Vector direction = gsl_Vector(0.0, 0.0, 1.0);
  bool twoSided[2] = {false, false};
  double margin = 0.0;
  double distance = 1e10;
  gsl_Point contacts[2] = {Sentinel(), gsl_Point(801.0, -802.0, 803.0)};
  const gsl_Point before[2] = {contacts[0], contacts[1]};

  Sweep() = default;
  explicit Sweep(double reach, double slack = 0.0) : margin(slack), distance(reach) {}

  bool Run(const Triangle& a, const Triangle& b) {
    return gsl_TriTriMinDirectionalDist(direction, a.p[0], a.p[1], a.p[2], b.p[0], b.p[1], b.p[2],
                                        twoSided, margin, contacts, distance);
  }
  Sweep& EitherSide() {
    twoSided[0] = twoSided[1] = true;
    return *this;
  }
  Sweep& Along(double x, double y, double z) {
    direction = gsl_Vector(x, y, z);
    return *this;
  }

  bool FirstUntouched() const { return Is(contacts[0], before[0]); }
  bool SecondUntouched() const { return Is(contacts[1], before[1]); }
  bool AllUntouched(double reach) const {
    return FirstUntouched() && SecondUntouched() && SameBits(distance, reach);
  }
  /// Returns whether no object had this identity before the call.
  bool IsFresh(int k, const Triangle& a, const Triangle& b) const {
    const cls_Uid& uid = contacts[k].uid;
    bool fresh = !uid.IsNull() && uid != before[0].uid && uid != before[1].uid;
    for (int i = 0; i < 3; ++i) {
      fresh = fresh && uid != a.p[i].uid && uid != b.p[i].uid;
    }
    return fresh;
  }
};

/// Facing up, in the plane z.
Triangle Up(double z) {
  return {{{0.0, 0.0, z}, {1.0, 0.0, z}, {0.0, 1.0, z}}};
}

/// Facing down, in the plane z, covering Up entirely.
Triangle WideDown(double z) {
  return {{{-2.0, -2.0, z}, {-2.0, 8.0, z}, {8.0, -2.0, z}}};
}

// ---- Rejections, in the order of the tests

TEST(GslTriTriMinDirectionalDist, CollinearVerticesAreRefusedWithAnyFlags) {
  const Triangle flat = {{{0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {3.0, 3.0, 0.0}}};
  const Triangle dot = {{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}}};
  const Triangle flatAhead = {{{0.0, 0.0, 2.0}, {1.0, 1.0, 2.0}, {3.0, 3.0, 2.0}}};
  for (const bool either : {false, true}) {
    for (const Order& order : EveryOrder()) {
      Sweep sweep(7.0);
      sweep.twoSided[0] = sweep.twoSided[1] = either;
      EXPECT_FALSE(sweep.Run(flat.In(order), WideDown(2.0)));
      EXPECT_FALSE(sweep.Run(dot.In(order), WideDown(2.0)));
      EXPECT_FALSE(sweep.Run(Up(0.0), flatAhead.In(order)));
      EXPECT_FALSE(sweep.Run(flat, flatAhead.In(order)));
      EXPECT_TRUE(sweep.AllUntouched(7.0));
    }
  }
}

TEST(GslTriTriMinDirectionalDist, NormalAgainstTheDirectionIsRefusedUnlessTwoSided) {
  const Triangle a = Up(0.0).Reversed();
  Sweep refused;
  EXPECT_FALSE(refused.Run(a, WideDown(2.0)));
  EXPECT_TRUE(refused.AllUntouched(1e10));
  refused.twoSided[1] = true;
  EXPECT_FALSE(refused.Run(a, WideDown(2.0))) << "the other triangle's flag does not help";
  Sweep turned;
  turned.twoSided[0] = true;
  EXPECT_TRUE(turned.Run(a, WideDown(2.0)));
  EXPECT_EQ(turned.distance, 2.0);
}

TEST(GslTriTriMinDirectionalDist, ObstacleFacingAlongIsRefusedUnlessTwoSided) {
  const Triangle b = WideDown(2.0).Reversed();
  Sweep refused;
  EXPECT_FALSE(refused.Run(Up(0.0), b));
  EXPECT_TRUE(refused.AllUntouched(1e10));
  refused.twoSided[0] = true;
  EXPECT_FALSE(refused.Run(Up(0.0), b)) << "the other triangle's flag does not help";
  Sweep turned;
  turned.twoSided[1] = true;
  EXPECT_TRUE(turned.Run(Up(0.0), b));
  EXPECT_EQ(turned.distance, 2.0);
}

TEST(GslTriTriMinDirectionalDist, BothFacingTheWrongWayAreRefused) {
  Sweep sweep;
  EXPECT_FALSE(sweep.Run(Up(0.0).Reversed(), WideDown(2.0).Reversed()));
  EXPECT_TRUE(sweep.AllUntouched(1e10));
}

TEST(GslTriTriMinDirectionalDist, TurnedTriangleSweepsLikeTheReverseWinding) {
  const Triangle a = {{{0.1, 0.2, 0.3}, {1.1, 0.1, -0.2}, {0.2, 0.9, 0.1}}};
  const Triangle b = {{{-0.2, 0.1, 2.0}, {0.3, 1.2, 2.5}, {1.3, 0.2, 2.2}}};
  Sweep plain;
  ASSERT_TRUE(plain.Run(a, b));
  Sweep turned;
  turned.EitherSide();
  ASSERT_TRUE(turned.Run(a.Reversed(), b.Reversed()));
  EXPECT_NEAR(turned.distance, plain.distance, 1e-14);
  EXPECT_TRUE(IsNear(turned.contacts[0], plain.contacts[0].x, plain.contacts[0].y,
                     plain.contacts[0].z, 1e-14));
}

TEST(GslTriTriMinDirectionalDist, ObstacleWhollyBehindIsRejected) {
  Sweep sweep(7.0, 100.0);
  EXPECT_FALSE(sweep.Run(Up(0.0), WideDown(-1e-9)));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDist, EqualExtentsAreNotBehind) {
  Sweep sweep(7.0);
  EXPECT_TRUE(sweep.Run(Up(0.0), WideDown(0.0)));
  EXPECT_EQ(sweep.distance, 0.0);
}

TEST(GslTriTriMinDirectionalDist, ExtentsGrowOverAllThreeVertices) {
  // A reaches from 0 to 5 and B from -3 to 1, each at another vertex: neither is behind.
  for (const Order& order : EveryOrder()) {
    const Triangle a = {{{0.0, 0.0, 0.0}, {1.0, 0.0, 5.0}, {0.0, 1.0, 2.0}}};
    const Triangle b = {{{0.0, 0.0, -3.0}, {1.0, 0.0, -1.0}, {0.0, 1.0, 1.0}}};
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a.In(order), b.In(order)));
    // At (0, 1) the planes are closest: 2 against 1.
    EXPECT_NEAR(sweep.distance, 1.0, 1e-14);
  }
}

TEST(GslTriTriMinDirectionalDist, BeyondDistanceAndMarginIsRejected) {
  Sweep beyond(Below(1.5), 0.5);
  EXPECT_FALSE(beyond.Run(Up(0.0), WideDown(2.0)));
  EXPECT_TRUE(beyond.AllUntouched(Below(1.5)));
}

TEST(GslTriTriMinDirectionalDist, ExactlyDistanceAndMarginIsTried) {
  Sweep at(1.5, 0.5);
  EXPECT_TRUE(at.Run(Up(0.0), WideDown(2.0)));
  EXPECT_EQ(at.distance, 1.5) << "found, and no closer";
}

TEST(GslTriTriMinDirectionalDist, MarginLoosensTheRejectionOnly) {
  Sweep sweep(1.0, 50.0);
  EXPECT_TRUE(sweep.Run(Up(0.0), WideDown(2.0)));
  EXPECT_EQ(sweep.distance, 1.0);
  EXPECT_TRUE(sweep.FirstUntouched());
}

TEST(GslTriTriMinDirectionalDist, NegativeMarginTightensTheRejection) {
  Sweep sweep(10.0, -8.5);
  EXPECT_FALSE(sweep.Run(Up(0.0), WideDown(2.0)));
  EXPECT_TRUE(sweep.AllUntouched(10.0));
}

// ---- What is touched, and when

/// A call that may read and write only the flags and outputs that a test opens.
struct GuardedSweep {
  GuardedPair<bool> twoSided;
  GuardedPair<gsl_Point> contacts{Sentinel(), Sentinel()};
  GuardedPair<double> distance;
  double margin = 0.0;
  gsl_Vector direction = gsl_Vector(0.0, 0.0, 1.0);

  explicit GuardedSweep(bool first = false, bool second = false, double reach = 1e10)
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

  bool Run(const Triangle& a, const Triangle& b) {
    return gsl_TriTriMinDirectionalDist(direction, a.p[0], a.p[1], a.p[2], b.p[0], b.p[1], b.p[2],
                                        twoSided.Get(), margin, contacts.Get(), *distance.Get());
  }
};

/// Edge-on to Z, in the plane x = `x`, above z.
Triangle EdgeOn(double x, double z) {
  return {{{x, 0.0, z}, {x, 1.0, z}, {x, 0.0, z + 1.0}}};
}

const Triangle kFlat = {{{0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {3.0, 3.0, 0.0}}};

TEST(GslTriTriMinDirectionalDistTouches, NoFlagAndNoOutputOfADegenerateTriangle) {
  EXPECT_FALSE(GuardedSweep().Run(kFlat, WideDown(2.0)));
  EXPECT_FALSE(GuardedSweep().Run(Up(0.0).Reversed(), kFlat));
  EXPECT_FALSE(GuardedSweep().Run(kFlat, kFlat));
}

TEST(GslTriTriMinDirectionalDistTouches, TheFlagOfBOnlyAfterTheFlagOfA) {
  const Triangle wrongA = Up(0.0).Reversed();
  const Triangle wrongB = WideDown(2.0).Reversed();
  EXPECT_FALSE(GuardedSweep(false, true).Ask(0).Run(wrongA, wrongB));
  EXPECT_FALSE(GuardedSweep(false, false).Ask(0).Run(wrongA, WideDown(2.0)));
  EXPECT_FALSE(GuardedSweep(true, false).Ask(0).Ask(1).Run(wrongA, wrongB));
}

TEST(GslTriTriMinDirectionalDistTouches, AFlagOnlyOfATriangleThatFacesTheWrongWay) {
  EXPECT_FALSE(GuardedSweep(true, false).Ask(1).Run(Up(0.0), WideDown(2.0).Reversed()));
  EXPECT_FALSE(GuardedSweep(true, false).Ask(1).Run(EdgeOn(0.0, 0.0), WideDown(2.0).Reversed()));
  EXPECT_FALSE(GuardedSweep(false, true).Ask(0).Run(Up(0.0).Reversed(), EdgeOn(0.0, 2.0)));
  EXPECT_FALSE(GuardedSweep().Run(EdgeOn(0.0, 0.0), EdgeOn(1.0, 2.0))) << "two planes";
}

TEST(GslTriTriMinDirectionalDistTouches, NoOutputOfATriangleBehindOrOutOfReach) {
  EXPECT_FALSE(GuardedSweep().Run(Up(0.0), WideDown(-1.0)));
  EXPECT_FALSE(
      GuardedSweep(true, true).Ask(0).Ask(1).Run(Up(0.0).Reversed(), WideDown(-1.0).Reversed()));
  EXPECT_FALSE(GuardedSweep(false, false, 1.0).Run(Up(0.0), WideDown(2.0)));
}

TEST(GslTriTriMinDirectionalDistTouches, NoOutputWithoutAContact) {
  const Triangle beside = {{{9.0, 9.0, 2.0}, {9.0, 10.0, 2.0}, {10.0, 9.0, 2.0}}};
  EXPECT_FALSE(GuardedSweep().Run(Up(0.0), beside));
  EXPECT_FALSE(GuardedSweep().Run(EdgeOn(-3.0, 0.0), beside));
  EXPECT_FALSE(GuardedSweep().Run(Up(0.0), EdgeOn(9.0, 2.0)));
}

TEST(GslTriTriMinDirectionalDistTouches, NoOutputForAnEdgeOnCrossingThatIsNotCloser) {
  // The triangle is edge-on across a corner of the face. Edges cross 2 apart, and the margin lets
  // them be tried.
  const Triangle across = {{{-1.0, 0.5, -3.0}, {3.0, 0.5, -3.0}, {0.0, 0.5, -2.0}}};
  const Triangle face = {{{0.0, 0.0, 0.0}, {0.0, 2.0, 0.0}, {1.0, 0.0, 0.0}}};
  GuardedSweep sweep(false, false, 1.0);
  sweep.margin = 10.0;
  EXPECT_TRUE(sweep.Run(across, face));
}

TEST(GslTriTriMinDirectionalDistTouches, OnlyTheSecondContactOfFacesThatAreNotCloser) {
  GuardedSweep sweep(false, false, 1.0);
  sweep.margin = 10.0;
  sweep.contacts.KeepAsItIs(0);
  sweep.contacts.Open(1);
  EXPECT_TRUE(sweep.Run(Up(0.0), WideDown(2.0)));
  const gsl_Point& first = sweep.contacts.Get()[0];
  EXPECT_TRUE(IsAt(sweep.contacts.Get()[1], first.x, first.y, 2.0));
}

// ---- Faces

TEST(GslTriTriMinDirectionalDist, FirstVertexOfAWinsAmongEqualDistances) {
  const Triangle b = WideDown(2.0);
  for (const Order& order : EveryOrder()) {
    const Triangle a = Up(0.0).In(order);
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a, b));
    EXPECT_EQ(sweep.distance, 2.0);
    EXPECT_TRUE(Is(sweep.contacts[0], a.p[0])) << "a vertex keeps its identity";
    EXPECT_TRUE(IsAt(sweep.contacts[1], a.p[0].x, a.p[0].y, 2.0));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
  }
}

TEST(GslTriTriMinDirectionalDist, NearestVertexOfAIsChosenInEveryOrder) {
  const Triangle a = {{{0.0, 0.0, 0.0}, {1.0, 0.0, 0.5}, {0.0, 1.0, 0.25}}};
  const Triangle b = WideDown(2.0);
  for (const Order& order : EveryOrder()) {
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a.In(order), b));
    EXPECT_EQ(sweep.distance, 1.5);
    EXPECT_TRUE(Is(sweep.contacts[0], a.p[1]));
    EXPECT_TRUE(IsAt(sweep.contacts[1], 1.0, 0.0, 2.0));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
  }
}

TEST(GslTriTriMinDirectionalDist, NearestVertexOfBIsChosenInEveryOrder) {
  const Triangle a = {{{-2.0, -2.0, 0.0}, {8.0, -2.0, 0.0}, {-2.0, 8.0, 0.0}}};
  const Triangle b = {{{0.0, 0.0, 2.0}, {0.0, 1.0, 1.75}, {1.0, 0.0, 1.5}}};
  for (const Order& order : EveryOrder()) {
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a, b.In(order)));
    EXPECT_EQ(sweep.distance, 1.5);
    EXPECT_TRUE(IsAt(sweep.contacts[0], 1.0, 0.0, 0.0));
    EXPECT_TRUE(sweep.IsFresh(0, a, b)) << "the shadow of a vertex is computed";
    EXPECT_TRUE(IsAt(sweep.contacts[1], 1.0, 0.0, 1.5));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
    EXPECT_NE(sweep.contacts[0].uid, sweep.contacts[1].uid);
  }
}

TEST(GslTriTriMinDirectionalDist, EdgeCrossingIsFoundInEveryOrder) {
  // A's ridge along x at y = 0, B's along y at x = 0; every vertex is off the other triangle.
  const Triangle a = {{{-2.0, 0.0, 1.0}, {2.0, 0.0, 1.0}, {0.0, -9.0, -5.0}}};
  const Triangle b = {{{0.0, -2.0, 3.0}, {0.0, 2.0, 3.0}, {9.0, 0.0, 8.0}}};
  for (const Order& orderA : EveryOrder()) {
    for (const Order& orderB : EveryOrder()) {
      Sweep sweep;
      EXPECT_TRUE(sweep.EitherSide().Run(a.In(orderA), b.In(orderB)));
      EXPECT_NEAR(sweep.distance, 2.0, 1e-14);
      EXPECT_TRUE(IsNear(sweep.contacts[0], 0.0, 0.0, 1.0, 1e-14));
      EXPECT_TRUE(IsNear(sweep.contacts[1], 0.0, 0.0, 3.0, 1e-14));
      EXPECT_TRUE(sweep.IsFresh(0, a, b));
      EXPECT_TRUE(sweep.IsFresh(1, a, b));
      EXPECT_NE(sweep.contacts[0].uid, sweep.contacts[1].uid);
    }
  }
}

TEST(GslTriTriMinDirectionalDist, VertexOfAComesBeforeAnEquallyCloseVertexOfB) {
  // The same triangle twice: all six vertices and all crossings are 2 apart.
  const Triangle a = Up(0.0);
  const Triangle b = Up(2.0).Reversed();
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 2.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
}

TEST(GslTriTriMinDirectionalDist, VertexOfBComesBeforeAnEquallyCloseCrossing) {
  // Parallel faces; A's vertices miss B, one of B's is under A and its edges cross A's.
  const Triangle a = {{{0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 4.0, 0.0}}};
  const Triangle b = {{{1.0, 1.0, 2.0}, {1.0, -8.0, 2.0}, {-8.0, 1.0, 2.0}}};
  const Triangle bFacing = b.Reversed();
  for (const Triangle& obstacle : {b, bFacing}) {
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a.In({1, 2, 0}), obstacle));
    EXPECT_EQ(sweep.distance, 2.0);
    // A[2] of this order, (0, 0), lies in B's shadow and comes first.
    EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
  }
  const Triangle narrow = {{{1.0, 1.0, 2.0}, {3.0, -8.0, 2.0}, {2.0, -8.0, 2.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, narrow));
  EXPECT_TRUE(IsAt(sweep.contacts[0], 1.0, 1.0, 0.0));
}

TEST(GslTriTriMinDirectionalDist, FirstVertexOfBWinsAmongEqualDistances) {
  const Triangle a = {{{-2.0, -2.0, 0.0}, {8.0, -2.0, 0.0}, {-2.0, 8.0, 0.0}}};
  for (const Order& order : EveryOrder()) {
    const Triangle b = Up(2.0).In(order);
    Sweep sweep;
    EXPECT_TRUE(sweep.EitherSide().Run(a, b));
    EXPECT_TRUE(IsAt(sweep.contacts[0], b.p[0].x, b.p[0].y, 0.0));
  }
}

TEST(GslTriTriMinDirectionalDist, FirstEdgePairWinsAmongEqualDistances) {
  // Parallel faces as a six-pointed star: only crossings, all at distance 2.
  const Triangle a = {{{0.0, 3.0, 0.0}, {-3.0, -2.0, 0.0}, {3.0, -2.0, 0.0}}};
  const Triangle b = {{{0.0, -3.0, 2.0}, {-3.0, 2.0, 2.0}, {3.0, 2.0, 2.0}}};
  // Edge 0 of A runs from the top to the lower left: over x = -(3 - y) * 3/5. Edge 0 of B runs from
  // the bottom to the upper left: x = -(y + 3) * 3/5. They meet at y = 0; edge 1 of B is y = 2.
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, b));
  EXPECT_NEAR(sweep.distance, 2.0, 1e-15);
  EXPECT_TRUE(IsNear(sweep.contacts[0], -1.8, 0.0, 0.0, 1e-14));
  Sweep second;
  EXPECT_TRUE(second.EitherSide().Run(a, b.In({1, 2, 0})));
  EXPECT_TRUE(IsNear(second.contacts[0], -0.6, 2.0, 0.0, 1e-14)) << "edge 0 of B is y = 2 now";
  Sweep third;
  EXPECT_TRUE(third.EitherSide().Run(a.In({2, 0, 1}), b.In({1, 2, 0})));
  EXPECT_TRUE(IsNear(third.contacts[0], 0.6, 2.0, 0.0, 1e-14)) << "edge 0 of A is the right one";
}

TEST(GslTriTriMinDirectionalDist, VertexExactlyOnAShadowEdgeIsInside) {
  // (0, 0) of A lies on B's edge x = 0; the rest of A is off B.
  const Triangle a = {{{0.0, 0.0, 0.5}, {3.0, -1.0, 0.5}, {3.0, 1.0, 0.5}}};
  const Triangle b = {{{0.0, -4.0, 2.0}, {-4.0, 0.0, 2.0}, {0.0, 4.0, 2.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, b));
  EXPECT_EQ(sweep.distance, 1.5);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
}

TEST(GslTriTriMinDirectionalDist, VertexExactlyOnAShadowVertexIsInside) {
  const Triangle a = {{{0.0, 0.0, 0.5}, {3.0, -1.0, 0.5}, {3.0, 1.0, 0.5}}};
  const Triangle b = {{{0.0, 0.0, 2.0}, {-4.0, -1.0, 2.0}, {-4.0, 1.0, 2.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, b));
  EXPECT_EQ(sweep.distance, 1.5);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
}

TEST(GslTriTriMinDirectionalDist, ShadowsThatMissFindNothing) {
  const Triangle b = {{{5.0, 5.0, 2.0}, {5.0, 6.0, 2.0}, {6.0, 5.0, 2.0}}};
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Run(Up(0.0), b));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDist, OnlyAStrictlySmallerDistanceReplaces) {
  Sweep at(2.0);
  EXPECT_TRUE(at.Run(Up(0.0), WideDown(2.0)));
  EXPECT_TRUE(at.FirstUntouched());
  EXPECT_EQ(at.distance, 2.0);
  Sweep above(Above(2.0));
  EXPECT_TRUE(above.Run(Up(0.0), WideDown(2.0)));
  EXPECT_FALSE(above.FirstUntouched());
  EXPECT_EQ(above.distance, 2.0);
}

TEST(GslTriTriMinDirectionalDist, SecondContactFollowsFirstEvenWithoutImprovement) {
  // second-contact-follows-first
  Sweep sweep(1.0, 5.0);
  sweep.contacts[0].z = -7.0;
  const gsl_Point first = sweep.contacts[0];
  const Triangle a = Up(0.0);
  const Triangle b = WideDown(2.0);
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 1.0);
  EXPECT_TRUE(Is(sweep.contacts[0], first));
  EXPECT_TRUE(IsAt(sweep.contacts[1], first.x, first.y, 2.0)) << "far off B, on its plane";
  EXPECT_TRUE(sweep.IsFresh(1, a, b));
}

TEST(GslTriTriMinDirectionalDist, SecondContactTakesTheFirstsIdentityOnThePlaneOfB) {
  // second-contact-follows-first
  for (const double off : {0.0, Below(1e-6)}) {
    Sweep sweep(1.0, 5.0);
    sweep.contacts[0] = gsl_Point(40.0, 50.0, off);
    const gsl_Point first = sweep.contacts[0];
    const Triangle b = WideDown(0.0);
    const Triangle a = Up(-2.0);
    EXPECT_TRUE(sweep.Run(a, b));
    EXPECT_TRUE(Is(sweep.contacts[0], first));
    EXPECT_TRUE(Is(sweep.contacts[1], first)) << "it stays where it is, identity included";
  }
}

TEST(GslTriTriMinDirectionalDist, TouchingTrianglesShareTheVertexsIdentityInBothContacts) {
  const Triangle a = Up(0.0);
  const Triangle b = WideDown(0.0);
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 0.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
  EXPECT_TRUE(Is(sweep.contacts[1], a.p[0]));
}

TEST(GslTriTriMinDirectionalDist, VertexOfBOnThePlaneOfAIsItsOwnShadow) {
  // Only B's first vertex lies under A, and on its plane: the contact keeps its identity.
  const Triangle a = {{{-2.0, -2.0, 0.0}, {8.0, -2.0, 0.0}, {-2.0, 8.0, 0.0}}};
  const Triangle b = {{{0.5, 0.5, 0.0}, {0.5, -20.0, 6.0}, {-20.0, 0.5, 6.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, b));
  EXPECT_EQ(sweep.distance, 0.0);
  EXPECT_TRUE(Is(sweep.contacts[0], b.p[0]));
  EXPECT_TRUE(Is(sweep.contacts[1], b.p[0]));
}

TEST(GslTriTriMinDirectionalDist, DistanceIsMeasuredAlongTheDirection) {
  // Along (0, 3, 4) / 5 the plane z = 2 is 2.5 away.
  Sweep sweep;
  const Triangle a = Up(0.0);
  EXPECT_TRUE(sweep.Along(0.0, 3.0, 4.0).Run(a, WideDown(2.0)));
  EXPECT_NEAR(sweep.distance, 2.5, 1e-15);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
  EXPECT_TRUE(IsNear(sweep.contacts[1], 0.0, 1.5, 2.0, 1e-15));
}

TEST(GslTriTriMinDirectionalDist, DirectionNeedNotBeUnit) {
  for (const double length : {1e-5, 1.0, 1e6}) {
    Sweep sweep;
    EXPECT_TRUE(sweep.Along(0.0, 0.0, length).Run(Up(0.0), WideDown(2.0)));
    EXPECT_NEAR(sweep.distance, 2.0, 1e-15);
  }
}

TEST(GslTriTriMinDirectionalDist, DistancesAreUnsigned) {
  // A's nearest vertex is 1 behind B's plane: the extents overlap, so it counts with its size.
  const Triangle a = {{{0.0, 0.0, -4.0}, {1.0, 0.0, 3.0}, {0.0, 1.0, -4.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, WideDown(2.0)));
  EXPECT_EQ(sweep.distance, 1.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[1]));
}

TEST(GslTriTriMinDirectionalDist, RunningMinimumFallsOverSeveralObstacles) {
  const Triangle a = Up(0.0);
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, WideDown(5.0)));
  EXPECT_EQ(sweep.distance, 5.0);
  EXPECT_TRUE(sweep.Run(a, WideDown(3.0)));
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_TRUE(IsAt(sweep.contacts[1], 0.0, 0.0, 3.0));
  EXPECT_FALSE(sweep.Run(a, WideDown(4.0))) << "out of reach now";
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_TRUE(IsAt(sweep.contacts[1], 0.0, 0.0, 3.0));
}

// ---- One triangle edge-on

/// Edge-on to Z: in the plane y = 0.25, over x from 0.2 to 0.4, nearest at its last vertex.
Triangle Blade() {
  return {{{0.2, 0.25, 0.0}, {0.4, 0.25, 0.0}, {0.3, 0.25, 1.0}}};
}

TEST(GslTriTriMinDirectionalDistEdgeOn, NearestVertexOfAnEdgeOnAIsItsOwnContact) {
  const Triangle b = WideDown(3.0);
  for (const Order& order : EveryOrder()) {
    const Triangle a = Blade();
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(a.In(order), b)) << "an edge-on triangle faces neither way";
    EXPECT_EQ(sweep.distance, 2.0);
    EXPECT_TRUE(Is(sweep.contacts[0], a.p[2]));
    EXPECT_TRUE(IsAt(sweep.contacts[1], 0.3, 0.25, 3.0));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
  }
}

TEST(GslTriTriMinDirectionalDistEdgeOn, NearestVertexOfAnEdgeOnBIsItsOwnContact) {
  const Triangle a = WideDown(-3.0).Reversed();
  for (const Order& order : EveryOrder()) {
    const Triangle b = {{{0.2, 0.25, 0.0}, {0.4, 0.25, 0.0}, {0.3, 0.25, -1.0}}};
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(a, b.In(order)));
    EXPECT_EQ(sweep.distance, 2.0);
    EXPECT_TRUE(IsAt(sweep.contacts[0], 0.3, 0.25, -3.0)) << "on A, where B's vertex meets it";
    EXPECT_TRUE(sweep.IsFresh(0, a, b));
    EXPECT_TRUE(Is(sweep.contacts[1], b.p[2]));
  }
}

TEST(GslTriTriMinDirectionalDistEdgeOn, FaceTurnedTheWrongWayIsStillRefused) {
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Run(Blade(), WideDown(3.0).Reversed()));
  EXPECT_FALSE(sweep.Run(WideDown(-3.0), Blade()));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDistEdgeOn, FirstOfEquallyCloseVerticesWins) {
  const Triangle a = {{{0.2, 0.25, 1.0}, {0.3, 0.25, 0.0}, {0.4, 0.25, 1.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, WideDown(3.0)));
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
  Sweep reversed;
  EXPECT_TRUE(reversed.Run(a.In({2, 1, 0}), WideDown(3.0)));
  EXPECT_TRUE(Is(reversed.contacts[0], a.p[2]));
}

TEST(GslTriTriMinDirectionalDistEdgeOn, EdgeOnVertexCountsWhenCloser) {
  // Three vertices are over the face, none is closer, and nothing crosses.
  Sweep at(2.0);
  EXPECT_FALSE(at.Run(Blade(), WideDown(3.0)));
  EXPECT_TRUE(at.AllUntouched(2.0));
  Sweep above(Above(2.0));
  EXPECT_TRUE(above.Run(Blade(), WideDown(3.0)));
  EXPECT_EQ(above.distance, 2.0);
  Sweep other(2.0, 5.0);
  EXPECT_FALSE(other.Run(WideDown(-3.0).Reversed(),
                         {{{0.2, 0.25, 0.0}, {0.4, 0.25, 0.0}, {0.3, 0.25, -1.0}}}));
  EXPECT_TRUE(other.AllUntouched(2.0));
}

/// Edge-on to Z in the plane y = 0.25 and wider than Up: its top edge crosses two edges of it.
Triangle WideBlade(double z) {
  return {{{-1.0, 0.25, z}, {2.0, 0.25, z}, {0.5, 0.25, z - 1.0}}};
}

/// Up turned over.
Triangle Down(double z) {
  return Up(z).Reversed();
}

TEST(GslTriTriMinDirectionalDistEdgeOn, CrossingJoinsTheEdgeOfTheFaceToTheBladesOwnEdge) {
  const Triangle b = Down(3.0);
  for (const Order& order : EveryOrder()) {
    const Triangle a = WideBlade(0.0);
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(a.In(order), b));
    EXPECT_NEAR(sweep.distance, 3.0, 1e-15);
    EXPECT_TRUE(sweep.IsFresh(0, a, b));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
    EXPECT_NE(sweep.contacts[0].uid, sweep.contacts[1].uid);
    EXPECT_NEAR(sweep.contacts[0].z, 0.0, 1e-15);
    EXPECT_NEAR(sweep.contacts[1].z, 3.0, 1e-15);
    EXPECT_NEAR(sweep.contacts[0].x, sweep.contacts[1].x, 1e-15);
    // At x = 0 or x = 0.75, where the plane y = 0.25 meets the border of the face.
    EXPECT_NEAR(std::fabs(sweep.contacts[0].x - 0.375), 0.375, 1e-15);
  }
}

TEST(GslTriTriMinDirectionalDistEdgeOn, CrossingOnAnEdgeOnBGoesIntoTheSwappedSlots) {
  const Triangle a = Up(0.0);
  const Triangle b = {{{-1.0, 0.25, 3.0}, {2.0, 0.25, 3.0}, {0.5, 0.25, 4.0}}};
  for (const Order& order : EveryOrder()) {
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(a, b.In(order)));
    EXPECT_NEAR(sweep.distance, 3.0, 1e-15);
    EXPECT_NEAR(sweep.contacts[0].z, 0.0, 1e-15) << "on A";
    EXPECT_NEAR(sweep.contacts[1].z, 3.0, 1e-15) << "on B";
    EXPECT_TRUE(sweep.IsFresh(0, a, b));
    EXPECT_TRUE(sweep.IsFresh(1, a, b));
    EXPECT_NE(sweep.contacts[0].uid, sweep.contacts[1].uid);
  }
}

TEST(GslTriTriMinDirectionalDistEdgeOn, FirstCrossingWinsInOrderOfFaceThenBladeEdges) {
  // Face edges in order: y = 0 (missed), the hypotenuse at x = 0.75, x = 0. Blade level at the top.
  const Triangle face = {{{0.0, 0.0, 3.0}, {1.0, 0.0, 3.0}, {0.0, 1.0, 3.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(WideBlade(0.0), face));
  EXPECT_NEAR(sweep.contacts[0].x, 0.75, 1e-15);
  Sweep rotated;
  EXPECT_TRUE(rotated.EitherSide().Run(WideBlade(0.0), face.In({2, 0, 1})));
  EXPECT_NEAR(rotated.contacts[0].x, 0.0, 1e-15);
}

TEST(GslTriTriMinDirectionalDistEdgeOn, WeightsFollowTheBladesOwnEdge) {
  // The top edge falls from z = 2 at x = -1 to z = -1 at x = 2: at x = 0 it is at 1.
  const Triangle a = {{{-1.0, 0.25, 2.0}, {2.0, 0.25, -1.0}, {-1.0, 0.25, -8.0}}};
  for (const Order& order : EveryOrder()) {
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(a.In(order), Down(3.0)));
    EXPECT_NEAR(sweep.distance, 2.0, 1e-14);
    EXPECT_TRUE(IsNear(sweep.contacts[0], 0.0, 0.25, 1.0, 1e-14));
    EXPECT_TRUE(IsNear(sweep.contacts[1], 0.0, 0.25, 3.0, 1e-14));
  }
}

TEST(GslTriTriMinDirectionalDistEdgeOn, EdgeOnCrossingAlwaysCounts) {
  // edge-on-crossing-always-counts: found although nothing improved, and nothing is written.
  Sweep ofA(1.0, 5.0);
  EXPECT_TRUE(ofA.Run(WideBlade(0.0), Down(3.0)));
  EXPECT_TRUE(ofA.AllUntouched(1.0));
  Sweep ofB(1.0, 5.0);
  EXPECT_TRUE(ofB.Run(Up(0.0), {{{-1.0, 0.25, 3.0}, {2.0, 0.25, 3.0}, {0.5, 0.25, 4.0}}}));
  EXPECT_TRUE(ofB.AllUntouched(1.0)) << "the second contact is not recomputed here";
}

TEST(GslTriTriMinDirectionalDistEdgeOn, BladeBesideTheFaceFindsNothing) {
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Run({{{5.0, 0.25, 0.0}, {6.0, 0.25, 0.0}, {5.0, 0.25, 1.0}}}, Down(3.0)));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDistEdgeOn, VertexOnTheFacesPlaneKeepsItsIdentityInBothContacts) {
  const Triangle a = {{{0.2, 0.25, 3.0}, {0.4, 0.25, 0.0}, {0.3, 0.25, 0.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, WideDown(3.0)));
  EXPECT_EQ(sweep.distance, 0.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
  EXPECT_TRUE(Is(sweep.contacts[1], a.p[0]));
}

TEST(GslTriTriMinDirectionalDistEdgeOn, CosineOfExactlyTheToleranceIsNotEdgeOn) {
  // A in z = 0 swept almost along X; the normal's component on the direction is -1e-10.
  const double cosine = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  const Triangle a = {{{0.0, -1.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}};
  const Triangle b = {{{3.0, -5.0, -5.0}, {3.0, 0.0, 9.0}, {3.0, 5.0, -5.0}}};
  Sweep at;
  at.twoSided[1] = true;
  EXPECT_FALSE(at.Along(1.0, 0.0, -cosine).Run(a, b)) << "a face, turned the wrong way";
  EXPECT_TRUE(at.AllUntouched(1e10));
  EXPECT_TRUE(at.Along(1.0, 0.0, -Below(cosine)).Run(a, b)) << "edge-on, and so never refused";
  EXPECT_EQ(at.distance, 2.0);
  EXPECT_TRUE(Is(at.contacts[0], a.p[1]));
}

// ---- Both edge-on

/// In the plane y = 0: a0 at x = 0, a1 at x = 2, a2 at x = 1 and highest.
Triangle CoplanarA() {
  return {{{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {1.0, 0.0, 1.0}}};
}

/// In the plane y = 0: edge 0 over x in [0.5, 1.5] at z = 3, edges 1 and 2 up to (1, 5).
Triangle CoplanarB() {
  return {{{0.5, 0.0, 3.0}, {1.5, 0.0, 3.0}, {1.0, 0.0, 5.0}}};
}

TEST(GslTriTriMinDirectionalDistCoplanar, CoplanarEdgeIThreeTimes) {
  // coplanar-edge-i-three-times: a2 is tried against edge 2 alone and meets it at (1, 5). Edge 0 is
  // nearer, at z = 3, and is never tried.
  const Triangle a = CoplanarA();
  const Triangle b = CoplanarB();
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 4.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[2]));
  EXPECT_TRUE(IsAt(sweep.contacts[1], 1.0, 0.0, 5.0));
  EXPECT_TRUE(sweep.IsFresh(1, a, b));
}

TEST(GslTriTriMinDirectionalDistCoplanar, ResultDependsOnTheVertexOrder) {
  // These results are by hand: vertex i of A against edge i of B, in this order of B's vertices.
  struct Expected {
    Order order;
    double distance;
  };
  // Only a2 (x = 1, z = 1) lies under an edge of B.
  const Expected expected[] = {{{0, 1, 2}, 4.0},  // edge 2: (1, 5) to (0.5, 3)
                               {{1, 2, 0}, 2.0},  // edge 2: (0.5, 3) to (1.5, 3)
                               {{2, 0, 1}, 4.0},  // edge 2: (1.5, 3) to (1, 5)
                               {{1, 0, 2}, 4.0},  // edge 2: (1, 5) to (1.5, 3)
                               {{0, 2, 1}, 2.0},  // edge 2: (1.5, 3) to (0.5, 3)
                               {{2, 1, 0}, 4.0}}; // edge 2: (0.5, 3) to (1, 5)
  for (const Expected& e : expected) {
    Sweep sweep;
    EXPECT_TRUE(sweep.Run(CoplanarA(), CoplanarB().In(e.order)));
    EXPECT_EQ(sweep.distance, e.distance) << e.order[0] << e.order[1] << e.order[2];
  }
}

TEST(GslTriTriMinDirectionalDistCoplanar, CoplanarBOnlyWithoutA) {
  // coplanar-b-only-without-a: b1 is 2.5 above edge 1 of A, closer than the 4 that a2 finds; it is
  // tried only when A's vertices improved nothing.
  const Triangle a = CoplanarA();
  const Triangle b = CoplanarB();
  Sweep aFinds;
  EXPECT_TRUE(aFinds.Run(a, b));
  EXPECT_EQ(aFinds.distance, 4.0);
  Sweep aFindsNothing(4.0);
  EXPECT_TRUE(aFindsNothing.Run(a, b));
  EXPECT_NEAR(aFindsNothing.distance, 2.5, 1e-15);
  EXPECT_TRUE(IsNear(aFindsNothing.contacts[0], 1.5, 0.0, 0.5, 1e-15)) << "on A";
  EXPECT_TRUE(aFindsNothing.IsFresh(0, a, b));
  EXPECT_TRUE(Is(aFindsNothing.contacts[1], b.p[1])) << "on B";
}

TEST(GslTriTriMinDirectionalDistCoplanar, NothingCloserFindsNothing) {
  // The extents are 2 apart, so the reach of 2 is tried; every candidate is farther.
  Sweep sweep(2.0);
  EXPECT_FALSE(sweep.Run(CoplanarA(), CoplanarB()));
  EXPECT_TRUE(sweep.AllUntouched(2.0));
}

TEST(GslTriTriMinDirectionalDistCoplanar, TrianglesSideBySideFindNothing) {
  const Triangle b = {{{5.0, 0.0, 3.0}, {6.0, 0.0, 3.0}, {5.0, 0.0, 5.0}}};
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Run(CoplanarA(), b));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDistCoplanar, VertexOfEqualDistanceKeepsTheEarlier) {
  // a0 under edge 0 and a1 under edge 1, both 3 below.
  const Triangle a = {{{0.25, 0.0, 0.0}, {0.75, 0.0, 0.0}, {0.5, 0.0, -4.0}}};
  const Triangle b = {{{0.0, 0.0, 3.0}, {0.5, 0.0, 3.0}, {1.0, 0.0, 3.0 + 1e-3}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[0]));
}

TEST(GslTriTriMinDirectionalDistCoplanar, PlanesExactlyTheToleranceApartAreTried) {
  // At y = 0 a distance from the plane y = tol is the tolerance itself.
  const auto moved = [](double y) {
    Triangle b = CoplanarB();
    for (gsl_Point& p : b.p) {
      p.y = y;
    }
    return b;
  };
  const double tol = LinearTolerance();
  Sweep at;
  EXPECT_TRUE(at.Run(CoplanarA(), moved(tol)));
  EXPECT_EQ(at.distance, 4.0);
  Sweep above;
  EXPECT_FALSE(above.Run(CoplanarA(), moved(Above(tol))));
  EXPECT_TRUE(above.AllUntouched(1e10));
}

TEST(GslTriTriMinDirectionalDistCoplanar, SeparateParallelPlanesFindNothing) {
  Triangle b = CoplanarB();
  for (gsl_Point& p : b.p) {
    p.y = 0.5;
  }
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Run(CoplanarA(), b));
  EXPECT_FALSE(sweep.Run(CoplanarA(), b.Reversed())) << "opposite normals are parallel too";
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDistCoplanar, EdgeOnPlanesThatCrossAreTriedAsOne) {
  // B is in the plane x = 1, where a2 passes under edge 2 of B.
  const Triangle b = {{{1.0, -1.0, 4.0}, {1.0, 0.5, 7.0}, {1.0, 1.0, 4.0}}};
  const Triangle a = CoplanarA();
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 3.0);
  EXPECT_TRUE(Is(sweep.contacts[0], a.p[2]));
  EXPECT_TRUE(IsAt(sweep.contacts[1], 1.0, 0.0, 4.0));
}

TEST(GslTriTriMinDirectionalDistCoplanar, DistancesAreUnsigned) {
  // a0 is 1 above edge 0 of B; the extents overlap.
  const Triangle a = {{{0.5, 0.0, 1.0}, {8.0, 0.0, -5.0}, {9.0, 0.0, 4.0}}};
  const Triangle b = {{{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.5, 0.0, -3.0}}};
  Sweep sweep;
  EXPECT_TRUE(sweep.Run(a, b));
  EXPECT_EQ(sweep.distance, 1.0);
}

// ---- Odd input

TEST(GslTriTriMinDirectionalDist, ZeroDirectionIsNotRejectedAndImprovesNothing) {
  // Without a direction no triangle is edge-on or refused. Shadows are the points themselves, and
  // distances along the direction are NaN.
  for (const double length : {0.0, Below(1e-6)}) {
    Sweep sweep(7.0);
    const Triangle b = WideDown(2.0).Reversed();
    EXPECT_TRUE(sweep.Along(0.0, 0.0, length).Run(Up(0.0).Reversed(), b));
    EXPECT_EQ(sweep.distance, 7.0);
    EXPECT_TRUE(sweep.FirstUntouched());
    EXPECT_TRUE(Is(sweep.contacts[1], sweep.before[0])) << "stays, identity included";
  }
}

TEST(GslTriTriMinDirectionalDist, EdgesThatAreSkewDoNotCross) {
  // The triangles make a six-pointed star. Without a direction no point moves, and the edges are 2
  // apart.
  const Triangle a = {{{0.0, 3.0, 0.0}, {-3.0, -2.0, 0.0}, {3.0, -2.0, 0.0}}};
  const Triangle b = {{{0.0, -3.0, 2.0}, {-3.0, 2.0, 2.0}, {3.0, 2.0, 2.0}}};
  Sweep sweep(7.0);
  EXPECT_FALSE(sweep.Along(0.0, 0.0, 0.0).Run(a, b));
  EXPECT_TRUE(sweep.AllUntouched(7.0));
}

TEST(GslTriTriMinDirectionalDist, DirectionOfExactlyTheToleranceIsUsed) {
  Sweep sweep;
  EXPECT_TRUE(sweep.Along(0.0, 0.0, LinearTolerance()).Run(Up(0.0), WideDown(2.0)));
  EXPECT_NEAR(sweep.distance, 2.0, 1e-15);
}

TEST(GslTriTriMinDirectionalDist, NaNReachIsNeverImproved) {
  Sweep sweep(kNaN);
  EXPECT_TRUE(sweep.Run(Up(0.0), WideDown(2.0)));
  EXPECT_TRUE(SameBits(sweep.distance, kNaN));
  EXPECT_TRUE(sweep.FirstUntouched());
  EXPECT_TRUE(IsAt(sweep.contacts[1], sweep.before[0].x, sweep.before[0].y, 2.0));
}

TEST(GslTriTriMinDirectionalDist, VertexOfNaNIsNotRefused) {
  // The plane of this triangle rejects nothing, so the two other vertices are tried.
  Triangle a = Up(0.0);
  a.p[2][0] = kNaN;
  Sweep sweep(7.0);
  EXPECT_TRUE(sweep.EitherSide().Run(a, WideDown(2.0)));
  EXPECT_EQ(sweep.distance, 2.0);
  EXPECT_TRUE(IsAt(sweep.contacts[0], a.p[0][0], a.p[0][1], a.p[0][2]));
}

TEST(GslTriTriMinDirectionalDist, OddNumbersNeverMakeTheDistanceNaN) {
  for (unsigned int i = 0; i < 9; ++i) {
    for (const double odd : {kNaN, kInfinity, -kInfinity}) {
      Triangle a = Up(0.0);
      a.p[i / 3][i % 3] = odd;
      Sweep ofA(7.0);
      ofA.EitherSide().Run(a, WideDown(2.0));
      EXPECT_FALSE(std::isnan(ofA.distance));
      Triangle b = WideDown(2.0);
      b.p[i / 3][i % 3] = odd;
      Sweep ofB(7.0);
      ofB.EitherSide().Run(Up(0.0), b);
      EXPECT_FALSE(std::isnan(ofB.distance));
    }
  }
  Sweep sweep(7.0);
  sweep.EitherSide().Along(kNaN, 0.0, 1.0).Run(Up(0.0), WideDown(2.0));
  EXPECT_EQ(sweep.distance, 7.0);
}

TEST(GslTriTriMinDirectionalDist, InfiniteReachIsImproved) {
  Sweep sweep(kInfinity);
  EXPECT_TRUE(sweep.Run(Up(0.0), WideDown(2.0)));
  EXPECT_EQ(sweep.distance, 2.0);
}

TEST(GslTriTriMinDirectionalDist, ContactsMayBeTheInputPoints) {
  Triangle a = Up(0.0);
  const Triangle b = WideDown(2.0);
  const cls_Uid first = a.p[0].uid;
  double distance = 10.0;
  const bool oneSided[2] = {false, false};
  // The outputs are a1 and a2, which are inputs still to be read.
  EXPECT_TRUE(gsl_TriTriMinDirectionalDist(gsl_Vector(), a.p[0], a.p[1], a.p[2], b.p[0], b.p[1],
                                           b.p[2], oneSided, 0.0, &a.p[1], distance));
  EXPECT_EQ(distance, 2.0);
  EXPECT_TRUE(IsAt(a.p[1], 0.0, 0.0, 0.0));
  EXPECT_EQ(a.p[1].uid, first);
  EXPECT_TRUE(IsAt(a.p[2], 0.0, 0.0, 2.0));
}

TEST(GslTriTriMinDirectionalDist, InputsAreLeftAlone) {
  const Triangle a = Up(0.0).Reversed();
  const Triangle b = WideDown(2.0);
  const Triangle copyA = a;
  const Triangle copyB = b;
  Sweep sweep;
  EXPECT_TRUE(sweep.EitherSide().Run(a, b));
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(Is(a.p[i], copyA.p[i]));
    EXPECT_TRUE(Is(b.p[i], copyB.p[i]));
  }
}

TEST(GslTriTriMinDirectionalDist, CosineToleranceIsReadAtTheCall) {
  const ScopedSettings settings;
  // A fin whose normal leans 0.01 against the direction: a face turned the wrong way.
  const Triangle a = {{{0.2, 0.2, 0.0}, {0.4, 0.2, 0.0}, {0.3, 0.19, 1.0}}};
  Sweep sweep;
  EXPECT_FALSE(sweep.Run(a, WideDown(3.0)));
  settings->cosineTolerance = 0.05;
  EXPECT_TRUE(sweep.Run(a, WideDown(3.0))) << "edge-on now";
  EXPECT_EQ(sweep.distance, 2.0);
}

TEST(GslTriTriMinDirectionalDist, LinearToleranceIsReadAtTheCall) {
  const ScopedSettings settings;
  Triangle b = CoplanarB();
  for (gsl_Point& p : b.p) {
    p.y = 0.25;
  }
  Sweep sweep;
  EXPECT_FALSE(sweep.Run(CoplanarA(), b));
  settings->linearTolerance = 0.25;
  EXPECT_TRUE(sweep.Run(CoplanarA(), b));
  EXPECT_EQ(sweep.distance, 4.0);
}

} // namespace
