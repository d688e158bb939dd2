#include "SweepOracle.h"

#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "TestScale.h"
#include "gsl_TriTriMinDirectionalDist.h"
#include "gsl_Util.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>

namespace {

using oracle::Real;
using oracle::Triangle;
using oracle::Vec;

constexpr std::uint64_t kSeed = 0x5EEDBA11u;

/// A triangle needs at least this cosine of its normal and the direction.
constexpr double kLeastFacing = 0.01;
/// A triangle needs at least this height across the direction.
constexpr double kLeastHeight = 0.02;
/// The library lengthens edges by linearTolerance at each end. Pairs that a shift of this size
/// across the direction would change are not decided.
constexpr Real kSlack = 4e-6L;
/// Up to about 1.7e-5 the library treats edges as parallel, and finds no crossing.
constexpr Real kLeastSine = 3e-5L;

struct Pair {
  gsl_Vector direction;
  gsl_Point a[3];
  gsl_Point b[3];
  Vec d;
  /// The same limit in the plane of triangles that are both edge-on.
  Vec across;
  Triangle A;
  Triangle B;
  Real facingA;
  Real facingB;
};

/// The triangles that are edge-on to the direction, and the place of B.
enum class Kind { Facing, EdgeOnA, EdgeOnB, Coplanar, Overlapping };

class Pairs {
public:
  explicit Pairs(std::uint64_t seed, Kind pairKind = Kind::Facing) : random(seed), kind(pairKind) {}

  /// Makes a pair of the kind, away from the tolerances. B is wholly ahead of A except for
  /// Overlapping.
  Pair Next() {
    for (;;) {
      Pair pair = Any();
      if (Usable(pair)) return pair;
    }
  }

private:
  RandomNumbers random;
  Kind kind;

  gsl_Vector AnyVector(double size) {
    return {random.In(-size, size), random.In(-size, size), random.In(-size, size)};
  }

  void AnyTriangle(gsl_Point* tri, const gsl_Vector& origin, double size) {
    for (int i = 0; i < 3; ++i) {
      tri[i] = gsl_Point() + origin + AnyVector(size);
    }
  }

  /// In the plane of d and `across` through the origin.
  void EdgeOnTriangle(gsl_Point* tri, const gsl_Vector& d, const gsl_Vector& across, double size) {
    for (int i = 0; i < 3; ++i) {
      tri[i] = gsl_Point() + d * random.In(-size, size) + across * random.In(-size, size);
    }
  }

  Pair Any() {
    Pair pair;
    pair.direction = AnyVector(3.0);
    const gsl_Vector unit = pair.direction.NormalizedCopy();
    const gsl_Vector across = unit.CrossProduct(AnyVector(1.0)).NormalizedCopy();
    const double sizeA = random.In(0.2, 2.0);
    const double sizeB = random.In(0.2, 2.0);
    if (kind == Kind::EdgeOnA || kind == Kind::Coplanar) {
      EdgeOnTriangle(pair.a, unit, across, sizeA);
    } else {
      AnyTriangle(pair.a, gsl_Vector(0.0, 0.0, 0.0), sizeA);
    }
    if (kind == Kind::EdgeOnB || kind == Kind::Coplanar) {
      EdgeOnTriangle(pair.b, unit, across, sizeB);
    } else {
      AnyTriangle(pair.b, AnyVector(0.4 * (sizeA + sizeB)), sizeB);
    }
    PlaceB(pair, unit);
    pair.d = oracle::Unit({pair.direction.x, pair.direction.y, pair.direction.z});
    pair.across = oracle::Unit({across.x, across.y, across.z});
    pair.A = oracle::Of(pair.a);
    pair.B = oracle::Of(pair.b);
    pair.facingA = std::fabs(Dot(UnitNormal(pair.A), pair.d));
    pair.facingB = std::fabs(Dot(UnitNormal(pair.B), pair.d));
    return pair;
  }

  /// The move is along d only, so that an edge-on triangle stays in its plane.
  void PlaceB(Pair& pair, const gsl_Vector& unit) {
    double minA = 1e300;
    double maxA = -1e300;
    double minB = 1e300;
    double maxB = -1e300;
    for (int i = 0; i < 3; ++i) {
      const double tA = gsl_Vector(gsl_Point(), pair.a[i]).DotProduct(unit);
      const double tB = gsl_Vector(gsl_Point(), pair.b[i]).DotProduct(unit);
      minA = std::min(minA, tA);
      maxA = std::max(maxA, tA);
      minB = std::min(minB, tB);
      maxB = std::max(maxB, tB);
    }
    const double overlap = 0.99 * (maxA - minA + maxB - minB);
    const double gap = kind == Kind::Overlapping ? -random.In(0.0, overlap) : random.In(0.0, 3.0);
    const gsl_Vector shift = unit * (maxA - minB + gap);
    for (gsl_Point& p : pair.b) {
      p = p + shift;
    }
  }

  static bool IsFace(const Triangle& t, Real facing, const Vec& d) {
    return facing > kLeastFacing && LeastHeightAcross(t, d) > kLeastHeight;
  }

  static bool IsBlade(const Triangle& t, Real facing) {
    return facing < 1e-12L && LeastHeight(t) > kLeastHeight;
  }

  bool Usable(const Pair& pair) const {
    const bool bladeA = kind == Kind::EdgeOnA || kind == Kind::Coplanar;
    const bool bladeB = kind == Kind::EdgeOnB || kind == Kind::Coplanar;
    return pair.direction.magnitude > 0.01 &&
           (bladeA ? IsBlade(pair.A, pair.facingA) : IsFace(pair.A, pair.facingA, pair.d)) &&
           (bladeB ? IsBlade(pair.B, pair.facingB) : IsFace(pair.B, pair.facingB, pair.d));
  }
};

struct Tally {
  long decided = 0;
  long contacts = 0;
  long withinTolerance = 0;
  long nearParallel = 0;
  long nearParallelOther = 0;
  long disagreements = 0;
  Real greatestError = 0;
  std::string first;

  void Add(const Tally& o) {
    decided += o.decided;
    contacts += o.contacts;
    withinTolerance += o.withinTolerance;
    nearParallel += o.nearParallel;
    nearParallelOther += o.nearParallelOther;
    disagreements += o.disagreements;
    greatestError = std::fmax(greatestError, o.greatestError);
    if (first.empty()) first = o.first;
  }
};

/// Returns the error of the travel by rounding in double precision. The slope of A's plane and the
/// angle of crossing edges lose positions across the direction; the slope of B's plane loses
/// travels.
Real RoundingBound(const Pair& pair, Real leastSine) {
  constexpr Real kExtent = 16;
  return 64 * 0x1p-52L * kExtent / (pair.facingA * pair.facingB * leastSine);
}

constexpr double kNoDistance = std::numeric_limits<double>::infinity();

/// Returns the answer of the library for any facing and any distance.
struct Answer {
  bool found;
  double distance;
  gsl_Point contacts[2];

  explicit Answer(const Pair& pair) : Answer(pair, gsl_Point(), kNoDistance) {}

  /// Asks with a first contact and a distance to improve, and without rejection by extents.
  Answer(const Pair& pair, const gsl_Point& first, double reach) : distance(reach) {
    const bool either[2] = {true, true};
    contacts[0] = first;
    found = gsl_TriTriMinDirectionalDist(pair.direction, pair.a[0], pair.a[1], pair.a[2], pair.b[0],
                                         pair.b[1], pair.b[2], either, 1e3, contacts, distance);
  }
};

std::string Describe(const Pair& pair, const oracle::Travel& travel, const Answer& library) {
  char text[256];
  std::snprintf(
      text, sizeof text,
      "oracle %.15Lg (shrunk %.15Lg, grown %.15Lg), library %d %.15g\ndirection %a %a %a\n",
      travel.exact, travel.shrunk, travel.grown, library.found, library.distance, pair.direction.x,
      pair.direction.y, pair.direction.z);
  std::string result = text;
  for (int i = 0; i < 6; ++i) {
    const gsl_Point& p = i < 3 ? pair.a[i] : pair.b[i - 3];
    std::snprintf(text, sizeof text, "%c%d %a %a %a\n", i < 3 ? 'a' : 'b', i % 3, p.x, p.y, p.z);
    result += text;
  }
  return result;
}

bool ContactsFit(const Pair& pair, const Answer& library, Real bound) {
  const Vec onA = oracle::Of(library.contacts[0]);
  const Vec onB = oracle::Of(library.contacts[1]);
  const double distance = library.distance;
  // A first contact that lies within linearTolerance of B's plane stays where it is.
  const Real stays = distance < 1e-6 / static_cast<double>(pair.facingB) ? 1e-6L : 0;
  return Outside(onA, pair.A) <= bound + 2e-6L && Outside(onB, pair.B) <= bound + stays + 2e-6L &&
         Length(onA + pair.d * distance - onB) <= bound + stays / pair.facingB;
}

bool Decided(const oracle::Travel& travel, Real bound) {
  return (travel.shrunk < oracle::kNone) == (travel.grown < oracle::kNone) &&
         (travel.grown == oracle::kNone || travel.shrunk - travel.grown <= bound);
}

bool Same(const Answer& library, Real travel, Real bound) {
  return library.found == (travel < oracle::kNone) &&
         (!library.found || std::fabs(library.distance - travel) <= bound);
}

void Compare(const Pair& pair, Tally& tally) {
  const Answer library(pair);
  const oracle::Travel travel = oracle::FirstContact(pair.A, pair.B, pair.d, kSlack);
  const Real leastSine = LeastSineBetweenEdges(pair.A, pair.B, pair.d, UnitNormal(pair.A));
  const Real bound = RoundingBound(pair, std::fmax(leastSine, kLeastSine));

  const bool nearParallel = leastSine < kLeastSine;
  const bool decided = !nearParallel && Decided(travel, bound);
  bool agrees;
  if (decided) {
    ++tally.decided;
    agrees = library.found == (travel.exact < oracle::kNone);
    if (agrees && library.found) {
      ++tally.contacts;
      const Real error = std::fabs(library.distance - travel.exact);
      tally.greatestError = std::fmax(tally.greatestError, error);
      agrees = error <= bound && ContactsFit(pair, library, bound);
    }
  } else {
    ++(nearParallel ? tally.nearParallel : tally.withinTolerance);
    if (nearParallel && !Same(library, travel.exact, bound)) ++tally.nearParallelOther;
    // The contact is not sooner than with both triangles grown. Where no crossing is left out, it
    // is not later than with both shrunk.
    agrees = !library.found || library.distance >= travel.grown - bound;
    if (!nearParallel && travel.shrunk < oracle::kNone) {
      agrees = agrees && library.found && library.distance <= travel.shrunk + bound;
    }
  }
  if (agrees) return;
  if (tally.disagreements++ == 0) tally.first = Describe(pair, travel, library);
}

void CompareUntilDecided(std::uint64_t seed, long count, Tally& tally) {
  Pairs pairs(seed);
  while (tally.decided < count && tally.disagreements < 10) {
    Compare(pairs.Next(), tally);
  }
}

TEST(SweepOracle, LibraryFindsTheFirstContactOfTheMotion) {
  const long perThread = Scaled(500000);
  Tally tallies[2];
  // The process calls it once before threads may use the library.
  omi_Singleton<gsl_Util>::Instance();
  std::thread other(CompareUntilDecided, kSeed + 1, perThread, std::ref(tallies[1]));
  CompareUntilDecided(kSeed, perThread, tallies[0]);
  other.join();
  Tally all = tallies[0];
  all.Add(tallies[1]);
  std::printf("seed %" PRIu64 "%s\n", kSeed,
              kTestScaleDivisor == 1 ? "" : ", scaled down for a slow build");
  std::printf("decided %ld, of these in contact %ld, greatest error %.3Lg\n", all.decided,
              all.contacts, all.greatestError);
  std::printf(
      "within tolerance of another answer %ld, edges parallel within 3e-5 %ld (%ld differ)\n",
      all.withinTolerance, all.nearParallel, all.nearParallelOther);
  EXPECT_EQ(all.disagreements, 0) << all.first;
  EXPECT_GE(all.decided, 2 * perThread);
  EXPECT_GE(all.contacts, perThread / 2);
}

/// The differences between the library and the motion, by class.
struct Classes {
  long pairs = 0;
  long undecided = 0;
  long same = 0;
  long later = 0;
  long missed = 0;
  long sooner = 0;
  long unexplained = 0;
  std::string first;

  void Print(const char* name) const {
    std::printf(
        "%s: %ld pairs, as the motion %ld, later %ld, missed %ld, sooner %ld, undecided %ld\n",
        name, pairs, same, later, missed, sooner, undecided);
  }
};

/// Sorts one answer by its difference from the motion, and checks the prediction of its class.
void Classify(const Pair& pair, const Answer& library, const oracle::Travel& motion,
              const oracle::Travel& predicted, Real bound, Classes& classes) {
  ++classes.pairs;
  if (!Decided(motion, bound) || !Decided(predicted, bound)) {
    ++classes.undecided;
    return;
  }
  if (!Same(library, predicted.exact, bound) && classes.unexplained++ == 0) {
    classes.first = Describe(pair, predicted, library);
  }
  if (Same(library, motion.exact, bound)) {
    ++classes.same;
  } else if (!library.found) {
    ++classes.missed;
  } else {
    ++(library.distance > motion.exact ? classes.later : classes.sooner);
  }
}

TEST(SweepOracle, OneTriangleEdgeOnStillFollowsTheMotion) {
  for (const Kind kind : {Kind::EdgeOnA, Kind::EdgeOnB}) {
    Pairs pairs(kSeed + 2, kind);
    Classes classes;
    for (long i = 0; i < Scaled(60000); ++i) {
      const Pair pair = pairs.Next();
      const oracle::Travel motion = oracle::FirstContact(pair.A, pair.B, pair.d, kSlack);
      Classify(pair, Answer(pair), motion, motion, 1e-8L, classes);
    }
    classes.Print(kind == Kind::EdgeOnA ? "A edge-on" : "B edge-on");
    EXPECT_EQ(classes.unexplained, 0) << classes.first;
    EXPECT_EQ(classes.same + classes.undecided, classes.pairs);
    EXPECT_LT(classes.undecided, classes.pairs / 100);
  }
}

TEST(SweepOracle, CoplanarTrianglesAreLaterOrMissedByTheEdgesNotTried) {
  Pairs pairs(kSeed + 3, Kind::Coplanar);
  Classes classes;
  for (long i = 0; i < Scaled(60000); ++i) {
    const Pair pair = pairs.Next();
    oracle::Travel motion{kSlack};
    TakeVerticesOverEdges(pair.A, pair.B, pair.d, pair.across, 1, oracle::Tried::EveryEdge, motion);
    TakeVerticesOverEdges(pair.B, pair.A, pair.d, pair.across, -1, oracle::Tried::EveryEdge,
                          motion);
    // coplanar-edge-i-three-times, and coplanar-b-only-without-a.
    oracle::Travel tried{kSlack};
    TakeVerticesOverEdges(pair.A, pair.B, pair.d, pair.across, 1, oracle::Tried::SameIndexOnly,
                          tried);
    if (tried.exact == oracle::kNone) {
      TakeVerticesOverEdges(pair.B, pair.A, pair.d, pair.across, -1, oracle::Tried::SameIndexOnly,
                            tried);
    }
    Classify(pair, Answer(pair), motion, tried, 1e-8L, classes);
  }
  classes.Print("coplanar");
  EXPECT_EQ(classes.unexplained, 0) << classes.first;
  EXPECT_EQ(classes.sooner, 0);
  EXPECT_GT(classes.same, classes.pairs / 10);
  EXPECT_GT(classes.later, classes.pairs / 10);
  EXPECT_GT(classes.missed, classes.pairs / 1000);
}

/// Makes a triangle ahead of A. The shadow of its first edge is along the first edge of A, at an
/// angle at which lines still count as parallel. The two triangles are on the two sides of this
/// edge.
Pair AlongOneEdge(RandomNumbers& random) {
  Pair pair;
  pair.direction = gsl_Vector(0.0, 0.0, 1.0);
  pair.d = {0, 0, 1};
  pair.a[0] = gsl_Point(0.0, 0.0, random.In(0.0, 1.0));
  pair.a[1] = gsl_Point(1.0, 0.0, random.In(0.0, 1.0));
  pair.a[2] = gsl_Point(random.In(0.2, 0.8), -1.0, random.In(0.0, 1.0));
  pair.b[0] = gsl_Point(random.In(-0.4, 0.4), -4.5e-6, random.In(1.5, 2.5));
  pair.b[1] = gsl_Point(random.In(0.6, 1.4), random.In(0.0, 4.5e-6), random.In(1.5, 2.5));
  pair.b[2] = gsl_Point(random.In(0.2, 0.8), 1.0, random.In(1.5, 2.5));
  pair.A = oracle::Of(pair.a);
  pair.B = oracle::Of(pair.b);
  return pair;
}

TEST(SweepOracle, EdgesWithinTheFixedToleranceOfParallelHaveNoCrossing) {
  RandomNumbers random(kSeed + 7);
  Classes classes;
  for (long i = 0; i < Scaled(20000); ++i) {
    const Pair pair = AlongOneEdge(random);
    // The overlap is a sliver from a crossing to a vertex. The library finds the vertex alone.
    const oracle::Travel motion = oracle::FirstContact(pair.A, pair.B, pair.d, 2e-6L);
    const Answer library(pair);
    ++classes.pairs;
    if (!library.found) {
      ++classes.missed;
    } else if (library.distance > motion.shrunk + 1e-4L) {
      ++classes.later;
    } else if (library.distance < motion.grown - 1e-4L) {
      ++classes.sooner;
    } else {
      ++classes.same;
    }
  }
  classes.Print("edges along each other");
  EXPECT_EQ(classes.missed, 0) << "a sliver has a vertex to be found";
  EXPECT_EQ(classes.sooner, 0);
  EXPECT_GT(classes.same, classes.pairs / 10);
  EXPECT_GT(classes.later, classes.pairs / 10);
}

/// Returns the travel of a motion that starts at zero, from the first contact in both senses.
Real FromZeroOn(Real forward, Real backward) {
  if (forward == oracle::kNone || -backward < 0) return oracle::kNone;
  return std::fmax(forward, 0.0L);
}

TEST(SweepOracle, OverlappingExtentsMeasureWithoutSign) {
  Pairs pairs(kSeed + 4, Kind::Overlapping);
  Classes classes;
  while (classes.pairs < Scaled(60000)) {
    const Pair pair = pairs.Next();
    if (LeastSineBetweenEdges(pair.A, pair.B, pair.d, UnitNormal(pair.A)) < 1e-3L) continue;
    oracle::Travel motion = oracle::FirstContact(pair.A, pair.B, pair.d, kSlack);
    const oracle::Travel back = oracle::FirstContact(pair.A, pair.B, pair.d * -1, kSlack);
    motion.shrunk = FromZeroOn(motion.shrunk, back.shrunk);
    motion.exact = FromZeroOn(motion.exact, back.exact);
    motion.grown = FromZeroOn(motion.grown, back.grown);
    const oracle::Travel unsignedTravel =
        oracle::FirstContact(pair.A, pair.B, pair.d, kSlack, oracle::Travels::Unsigned);
    Classify(pair, Answer(pair), motion, unsignedTravel, 1e-8L, classes);
  }
  classes.Print("overlapping");
  EXPECT_EQ(classes.unexplained, 0) << classes.first;
  EXPECT_EQ(classes.missed, 0);
  EXPECT_GT(classes.same, classes.pairs / 10);
  EXPECT_GT(classes.later, classes.pairs / 100) << "already in contact, or partly behind";
  EXPECT_GT(classes.sooner, classes.pairs / 100) << "behind, where they overlap";
}

/// Returns the distance of a contact from the triangle that it must lie on.
void ExpectContactsOnTheirTriangles(Kind kind) {
  Pairs pairs(kSeed + 5, kind);
  long contacts = 0;
  for (long i = 0; i < Scaled(40000); ++i) {
    const Pair pair = pairs.Next();
    const Answer library(pair);
    if (library.distance == kNoDistance) continue;
    ++contacts;
    ASSERT_LT(Outside(oracle::Of(library.contacts[0]), pair.A), 3e-6L) << "case " << i;
    ASSERT_LT(Outside(oracle::Of(library.contacts[1]), pair.B), 3e-6L) << "case " << i;
  }
  EXPECT_GT(contacts, Scaled(1000));
}

TEST(SweepOracle, FirstContactIsOnAAndSecondOnBWhenAIsEdgeOn) {
  ExpectContactsOnTheirTriangles(Kind::EdgeOnA);
}

TEST(SweepOracle, FirstContactIsOnAAndSecondOnBWhenBIsEdgeOn) {
  ExpectContactsOnTheirTriangles(Kind::EdgeOnB);
}

TEST(SweepOracle, FirstContactIsOnAAndSecondOnBWhenBothAreEdgeOn) {
  ExpectContactsOnTheirTriangles(Kind::Coplanar);
}

TEST(SweepOracle, FirstContactIsOnAAndSecondOnBWhenBothFaceTheDirection) {
  ExpectContactsOnTheirTriangles(Kind::Facing);
}

TEST(SweepOracle, OnlyTheRecomputedSecondContactMayLeaveB) {
  // The contact is found and is not closer. The first contact stays off A, and the second is its
  // shadow on B's plane.
  Pairs pairs(kSeed + 6);
  long recomputed = 0;
  for (long i = 0; i < Scaled(40000); ++i) {
    const Pair pair = pairs.Next();
    const gsl_Point elsewhere(20.0, -30.0, 40.0);
    Answer library(pair, elsewhere, 1e-9);
    if (!library.found) continue;
    ++recomputed;
    ASSERT_EQ(library.contacts[0].uid, elsewhere.uid);
    const Vec onB = oracle::Of(library.contacts[1]);
    ASSERT_LT(std::fabs(Dot(onB - pair.B.p[0], UnitNormal(pair.B))), 1e-9L) << "case " << i;
    ASSERT_LT(Length(Cross(onB - oracle::Of(elsewhere), pair.d)), 1e-9L) << "case " << i;
  }
  EXPECT_GT(recomputed, Scaled(1000));
}

} // namespace
