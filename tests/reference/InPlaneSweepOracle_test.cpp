#include "InPlaneSweepOracle.h"

#include "InPlaneTranscription.h"
#include "TestScale.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using in_plane_oracle::Range;
using in_plane_oracle::Real;
using in_plane_oracle::Segment2;
using in_plane_transcription::Branch;

constexpr std::uint64_t kSeed = 0x0DDBA11;

/// The largest change of a gap by rounding.
constexpr Real kRounding = 1e-9L;
/// A distance above the tolerance within which an end that misses a segment still meets it.
constexpr Real kReach = 2e-6L;
constexpr Real kLinearTolerance = 1e-6L;
constexpr Real kCosineTolerance = 1e-10L;

/// How a call compares with the motion. The first four kinds agree with the motion.
/// docs/in-plane-sweep.md explains the differences of the other kinds, whose limits are checked.
enum Verdict {
  AgreesContact,       ///< the travel is the smallest one, and the contacts are where it ends
  AgreesNoContact,     ///< apart, behind, or no closer than the running minimum
  AgreesRefused,       ///< an orientation that is not allowed
  AgreesOnTwoLines,    ///< both along the direction, side by side
  OrientationRounded,  ///< one-sided and along the direction: the sign of its facing is rounding
  NearlyAlong,         ///< too steep to be crossed, not steep enough to count as along
  ShortSegment,        ///< shorter than the tolerance: no end meets it
  WithinReachOfAnEnd,  ///< an end passes by the other segment closer than the tolerance
  FirstEndsCoincide,   ///< both along on one line, but the vector between their first ends is zero
  OffsetAtTheLimit,    ///< both along, on two lines that are one line within rounding
  SameWay,             ///< both across and running the same way: never a contact
  SameWayRounded,      ///< both across and at right angles: the sign is rounding
  CrossingAlready,     ///< both across and crossing before A moves: depends on the order of ends
  TouchingRounded,     ///< both across and touching before A moves: the sign of the gap is rounding
  MarginKeepsEarlier,  ///< a closer contact improves by less than the margin
  SecondPassStoresA,   ///< the contact on B is A's end of the same index
  AtTheRunningMinimum, ///< no closer or closer than the running minimum within rounding
  Unexplained,
  kVerdicts
};

constexpr const char* kNames[kVerdicts] = {"AgreesContact",
                                           "AgreesNoContact",
                                           "AgreesRefused",
                                           "AgreesOnTwoLines",
                                           "OrientationRounded",
                                           "NearlyAlong",
                                           "ShortSegment",
                                           "WithinReachOfAnEnd",
                                           "FirstEndsCoincide",
                                           "OffsetAtTheLimit",
                                           "SameWay",
                                           "SameWayRounded",
                                           "CrossingAlready",
                                           "TouchingRounded",
                                           "MarginKeepsEarlier",
                                           "SecondPassStoresA",
                                           "AtTheRunningMinimum",
                                           "Unexplained"};

/// One call with its result, and the same in the frame of the motion.
struct Swept {
  const InPlaneCase& c;
  in_plane_oracle::Frame frame;
  Segment2 a, b;
  gsl_Point contacts[2];
  double distance;
  bool result;

  explicit Swept(const InPlaneCase& sweep)
      : c(sweep), frame(c.direction), a(frame.Of(c.a)), b(frame.Of(c.b)), distance(c.distance) {
    result = gsl_InPlaneSegSegMinDirectionalDist(c.direction, c.a[0], c.a[1], c.b[0], c.b[1],
                                                 c.twoSided, c.margin, contacts, distance);
  }

  bool Untouched() const { return !result && distance == c.distance; }
};

std::string Describe(const Swept& run) {
  char text[512];
  const InPlaneCase& c = run.c;
  std::snprintf(text, sizeof text,
                "direction %a %a\na %a %a  %a %a\nb %a %a  %a %a\ntwoSided %d %d margin %a "
                "distance %a\ngave %d %.17g\n",
                c.direction.x, c.direction.y, c.a[0].x, c.a[0].y, c.a[1].x, c.a[1].y, c.b[0].x,
                c.b[0].y, c.b[1].x, c.b[1].y, c.twoSided[0], c.twoSided[1], c.margin, c.distance,
                run.result, run.distance);
  return text;
}

/// Returns whether the contacts are on their segments and one gap apart.
bool ContactsAreWhereTheMotionEnds(const Swept& run) {
  const auto onA = run.frame.Of(run.contacts[0]);
  const auto onB = run.frame.Of(run.contacts[1]);
  return DistanceTo(run.a, onA) < kReach && DistanceTo(run.b, onB) < kReach &&
         std::fabs(onB.side - onA.side) < kRounding &&
         std::fabs(onB.forward - onA.forward - static_cast<Real>(run.distance)) < kRounding;
}

/// Returns whether the second contact is an end of A, and the contact of A moved by the gap is on
/// B.
bool SecondContactIsAnEndOfA(const Swept& run) {
  const bool isEnd = run.contacts[1].uid == run.c.a[0].uid || run.contacts[1].uid == run.c.a[1].uid;
  auto moved = run.frame.Of(run.contacts[0]);
  const bool onA = DistanceTo(run.a, moved) < kReach;
  moved.forward += static_cast<Real>(run.distance);
  return isEnd && onA && DistanceTo(run.b, moved) < kReach;
}

Verdict JudgeContacts(const Swept& run, bool across) {
  if (ContactsAreWhereTheMotionEnds(run)) return AgreesContact;
  return across && SecondContactIsAnEndOfA(run) ? SecondPassStoresA : Unexplained;
}

/// All common travels are at least `travel.low`, and the smallest counts.
Verdict JudgeTravel(const Swept& run, const Range& travel, const Range& widest, bool across) {
  const Real margin = run.c.margin;
  Real limit = static_cast<Real>(run.c.distance) - margin;
  if (across) limit = std::min(limit, static_cast<Real>(run.c.distance));
  if (!run.result) {
    if (!run.Untouched()) return Unexplained;
    if (travel.low >= limit) return AgreesNoContact;
    return travel.low > limit - kRounding ? AtTheRunningMinimum : Unexplained;
  }
  const Real g = run.distance;
  // Steps that use the margin alone let a negative margin raise the minimum, once per candidate.
  const Real rise = across || margin > 0 ? 0 : -3 * margin;
  if (g >= limit + rise + kRounding) return Unexplained;
  if (g < travel.low - kRounding) {
    return g >= widest.low - kRounding ? WithinReachOfAnEnd : Unexplained;
  }
  const Verdict contacts = JudgeContacts(run, across);
  if (contacts == Unexplained || g <= travel.low + kRounding) return contacts;
  const Real slack = std::max<Real>(margin, rise);
  return g <= travel.low + slack + kRounding ? MarginKeepsEarlier : Unexplained;
}

struct Offset {
  Real ends;  ///< of the nearest ends
  Range sine; ///< of the angle between the direction and the vectors from A's ends to B's
};

/// For segments along the direction, rounding decides which ends are first, so all ends are tried.
Offset OffsetBetweenEnds(const Swept& run) {
  Offset offset = {std::numeric_limits<Real>::infinity(), {1, 0}};
  for (const auto& onA : run.a.p) {
    for (const auto& onB : run.b.p) {
      const Real apart = std::hypot(onB.side - onA.side, onB.forward - onA.forward);
      const Real sine = apart > 0 ? std::fabs(onB.side - onA.side) / apart : 0;
      offset.ends = std::min(offset.ends, apart);
      offset.sine = {std::min(offset.sine.low, sine), std::max(offset.sine.high, sine)};
    }
  }
  return offset;
}

/// Returns whether no end meets the segment.
bool IsTooShort(const Segment2& s) {
  return Length(s) < kLinearTolerance * (1 - kRounding);
}

/// Returns whether one segment is along the direction, or both are on one line.
Verdict JudgeAlong(const Swept& run, bool alongA, bool alongB) {
  const Segment2 a = alongA ? in_plane_oracle::OnOneLine(run.a) : run.a;
  Segment2 b = alongB ? in_plane_oracle::OnOneLine(run.b) : run.b;
  if (alongA && alongB) {
    const Offset offset = OffsetBetweenEnds(run);
    if (offset.ends < kLinearTolerance && !run.result) return FirstEndsCoincide;
    if (offset.sine.low > 2 * kCosineTolerance) {
      return run.Untouched() ? AgreesOnTwoLines : Unexplained;
    }
    if (offset.sine.high > kCosineTolerance / 2 && run.Untouched()) return OffsetAtTheLimit;
    b.p[0].side = b.p[1].side = a.p[0].side;
    const Range travel = TouchingTravel(a, b);
    return JudgeTravel(run, travel, travel, false);
  }
  const Segment2& across = alongA ? run.b : run.a;
  if (Length(across) < kReach) {
    return run.result && IsTooShort(across) ? Unexplained : ShortSegment;
  }
  const Range widest =
      TouchingTravel(alongA ? a : Lengthened(a, kReach), alongB ? b : Lengthened(b, kReach));
  if (widest.low > widest.high) return run.Untouched() ? AgreesNoContact : Unexplained;
  const Range inner =
      TouchingTravel(alongA ? a : Lengthened(a, -kReach), alongB ? b : Lengthened(b, -kReach));
  if (inner.low > inner.high) {
    if (!run.result) return WithinReachOfAnEnd;
    return run.distance > widest.low - kRounding ? WithinReachOfAnEnd : Unexplained;
  }
  return JudgeTravel(run, TouchingTravel(a, b), widest, false);
}

bool RunTheSameWay(const Swept& run, bool& rounded) {
  const Segment2& a = run.a;
  const Segment2& b = run.b;
  Real dot = (a.p[1].side - a.p[0].side) * (b.p[1].side - b.p[0].side) +
             (a.p[1].forward - a.p[0].forward) * (b.p[1].forward - b.p[0].forward);
  if (Facing(a) < 0) dot = -dot;
  if (Facing(b) > 0) dot = -dot;
  rounded = dot != 0 && std::fabs(dot) < kRounding * Length(a) * Length(b);
  return dot > 0;
}

Verdict JudgeAcross(const Swept& run) {
  bool rounded = false;
  const bool sameWay = RunTheSameWay(run, rounded);
  if (rounded && run.Untouched()) return SameWayRounded;
  const Range travel = TouchingTravel(run.a, run.b);
  if (sameWay && !rounded) {
    if (!run.Untouched()) return Unexplained;
    return travel.low > travel.high || travel.high < 0 ? AgreesNoContact : SameWay;
  }
  const Range widest = TouchingTravel(Lengthened(run.a, kReach), Lengthened(run.b, kReach));
  if (widest.low > widest.high) return run.Untouched() ? AgreesNoContact : Unexplained;
  const bool shortA = Length(run.a) < kReach;
  const bool shortB = Length(run.b) < kReach;
  if (shortA || shortB) {
    // The ends of a short segment still meet a longer one.
    if (!run.result) return ShortSegment;
    if (IsTooShort(run.a) && IsTooShort(run.b)) return Unexplained;
    return run.distance > widest.low - kRounding ? ShortSegment : Unexplained;
  }
  const Range inner = TouchingTravel(Lengthened(run.a, -kReach), Lengthened(run.b, -kReach));
  const bool withinWidest = run.distance > widest.low - kRounding &&
                            run.distance < widest.high + kRounding && run.distance >= 0.0;
  if (inner.low > inner.high) {
    return !run.result || withinWidest ? WithinReachOfAnEnd : Unexplained;
  }
  if (travel.low > kRounding) {
    // An end that passes by within the tolerance may be found behind A.
    if (!run.result && widest.low < kRounding) return WithinReachOfAnEnd;
    return JudgeTravel(run, travel, widest, true);
  }
  if (travel.high < -kRounding) {
    if (widest.high > -kRounding)
      return !run.result || withinWidest ? WithinReachOfAnEnd : Unexplained;
    return run.Untouched() ? AgreesNoContact : Unexplained;
  }
  const Verdict byOrder =
      travel.low < -kRounding && travel.high > kRounding ? CrossingAlready : TouchingRounded;
  if (byOrder == TouchingRounded && run.result && std::fabs(run.distance) < kRounding) {
    return JudgeContacts(run, true);
  }
  return !run.result || withinWidest ? byOrder : Unexplained;
}

Verdict JudgeAllowed(const Swept& run) {
  const auto sine = [](const Segment2& s) { return Length(s) > 0 ? SineToDirection(s) : Real(1); };
  const Real sineA = sine(run.a);
  const Real sineB = sine(run.b);
  const auto isNearly = [](Real s) { return s > kCosineTolerance / 2 && s < 3e-5L; };
  if (isNearly(sineA) || isNearly(sineB)) return NearlyAlong;
  const bool alongA = sineA < kCosineTolerance;
  const bool alongB = sineB < kCosineTolerance;
  return alongA || alongB ? JudgeAlong(run, alongA, alongB) : JudgeAcross(run);
}

Verdict Judge(const Swept& run) {
  const Real facingA = in_plane_oracle::Facing(run.a);
  const Real facingB = in_plane_oracle::Facing(run.b);
  // Along an axis every product is exact. Along any other direction a zero may be rounded, here or
  // in the library.
  const bool isAlongAxis = run.c.direction.x == 0.0 || run.c.direction.y == 0.0;
  const auto isRounded = [isAlongAxis](Real facing) {
    return (facing != 0 || !isAlongAxis) && std::fabs(facing) < 1e-12L;
  };
  const bool roundedA = isRounded(facingA) && !run.c.twoSided[0];
  const bool roundedB = isRounded(facingB) && !run.c.twoSided[1];
  if ((facingA < 0 && !run.c.twoSided[0] && !roundedA) ||
      (facingB > 0 && !run.c.twoSided[1] && !roundedB)) {
    return run.Untouched() ? AgreesRefused : Unexplained;
  }
  // Calls that were not refused are judged like the others.
  if ((roundedA || roundedB) && run.Untouched()) return OrientationRounded;
  return JudgeAllowed(run);
}

TEST(InPlaneSweepOracle, LibraryFollowsTheMotionOrDiffersAsDocumented) {
  const long perFamily = Scaled(125000);
  long verdicts[kVerdicts] = {};
  std::vector<long> branches(static_cast<unsigned>(Branch::Count), 0);
  const auto count = [&branches](Branch branch) { ++branches[static_cast<unsigned>(branch)]; };
  for (int family = 0; family < InPlaneCases::kPlaneFamilies; ++family) {
    InPlaneCases cases(kSeed + static_cast<std::uint64_t>(family));
    for (long i = 0; i < perFamily; ++i) {
      const InPlaneCase c = cases.Next(static_cast<InPlaneCases::Family>(family));
      const Swept run(c);
      const Verdict verdict = Judge(run);
      ++verdicts[verdict];
      ASSERT_NE(verdict, Unexplained)
          << Describe(run) << "family " << family << ", case " << i << ", seed " << kSeed;
      gsl_Point contacts[2];
      double distance = c.distance;
      in_plane_transcription::SegSegMinDirectionalDist(c.direction, c.a[0], c.a[1], c.b[0], c.b[1],
                                                       c.twoSided, c.margin, contacts, distance,
                                                       count);
    }
  }
  std::printf("seed %" PRIu64 ", %ld pairs%s\n", kSeed, perFamily * InPlaneCases::kPlaneFamilies,
              kTestScaleDivisor == 1 ? "" : ", scaled down for a slow build");
  for (int v = 0; v < kVerdicts; ++v)
    std::printf("%-28s %9ld\n", kNames[v], verdicts[v]);
  for (unsigned i = 0; i < branches.size(); ++i) {
    const char* const name = in_plane_transcription::Name(static_cast<Branch>(i));
    std::printf("%-28s %9ld\n", name, branches[i]);
    EXPECT_GE(branches[i], Scaled(1000)) << name;
  }
  for (const Verdict agreeing : {AgreesContact, AgreesNoContact, AgreesRefused, AgreesOnTwoLines})
    EXPECT_GE(verdicts[agreeing], Scaled(1000)) << kNames[agreeing];
  for (const Verdict differing :
       {OrientationRounded, ShortSegment, WithinReachOfAnEnd, FirstEndsCoincide, SameWay,
        SameWayRounded, CrossingAlready, TouchingRounded, MarginKeepsEarlier, SecondPassStoresA})
    EXPECT_GE(verdicts[differing], Scaled(1000)) << kNames[differing];
}

/// The exact facing of B is 6e-20, which is below the precision of the oracle. Rounding decides its
/// sign in the library.
TEST(InPlaneSweepOracle, FacingThatRoundsToZeroExplainsARefusal) {
  InPlaneCase c;
  c.direction = gsl_Vector(-0x1.979de41bb8b21p-1, 0x1.35d3a1b315976p-1, 0.0);
  c.a[0] = gsl_Point(0x1.f08b1d40d802p-3, 0x1.d40ff1c5a660ep-1, 0.0);
  c.a[1] = gsl_Point(-0x1.0e9985467647p-1, 0x1.800c8cb42766cp+0, 0.0);
  c.b[0] = gsl_Point(0x1.9e467982e83a4p-2, 0x1.94f9233c82d48p-1, 0.0);
  c.b[1] = gsl_Point(0x1.0811c0f7cf1d1p+0, 0x1.41f70b4cf5ebdp-2, 0.0);
  c.twoSided[0] = true;
  c.twoSided[1] = false;
  c.margin = 0.0;
  c.distance = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Judge(Swept(c)), OrientationRounded);
}

TEST(InPlaneSweepOracle, MotionOfASquareOnIsTheGapBetweenTheSegments) {
  InPlaneCase c;
  c.direction = gsl_Vector(0.0, 2.0, 0.0);
  c.a[0] = gsl_Point(1.0, 0.0, 0.0);
  c.a[1] = gsl_Point(0.0, 0.0, 0.0);
  c.b[0] = gsl_Point(0.5, 3.0, 0.0);
  c.b[1] = gsl_Point(2.0, 6.0, 0.0);
  const in_plane_oracle::Frame frame(c.direction);
  const Range travel = TouchingTravel(frame.Of(c.a), frame.Of(c.b));
  EXPECT_EQ(travel.low, 3.0L);
  EXPECT_EQ(travel.high, 4.0L);
}

TEST(InPlaneSweepOracle, SegmentsBesideEachOtherHaveNoTravel) {
  InPlaneCase c;
  c.direction = gsl_Vector(1.0, 0.0, 0.0);
  c.a[0] = gsl_Point(0.0, 0.0, 0.0);
  c.a[1] = gsl_Point(0.0, 1.0, 0.0);
  c.b[0] = gsl_Point(2.0, 1.5, 0.0);
  c.b[1] = gsl_Point(2.0, 3.0, 0.0);
  const in_plane_oracle::Frame frame(c.direction);
  const Range travel = TouchingTravel(frame.Of(c.a), frame.Of(c.b));
  EXPECT_GT(travel.low, travel.high);
}

} // namespace
