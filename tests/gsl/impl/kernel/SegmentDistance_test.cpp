#include "kernel/SegmentDistance.h"

#include "EntityTranscription.h"
#include "FourPoints.h"
#include "KernelNames.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <cstdio>

namespace {

using namespace kernel_names;
using gsl_kernel::Connection;
using gsl_kernel::ConnectionKind;
using gsl_kernel::Segment;
using gsl_kernel::SegmentPart;
using gsl_kernel::SegmentProducts;

constexpr double kLinear = 1e-6;

transcription::Pt Plain(const Coord3& c, int identity) {
  return {c.x, c.y, c.z, identity};
}

/// The source of an identity: the number of an end, or a computed point.
int IdentityOf(SegmentPart part, int first) {
  if (part == SegmentPart::Foot) return transcription::kFresh;
  return part == SegmentPart::First ? first : first + 1;
}

bool SamePoint(const Coord3& c, int identity, const transcription::Pt& expected) {
  return identity == expected.identity && numbers::SameBits(c.x, expected.x) &&
         numbers::SameBits(c.y, expected.y) && numbers::SameBits(c.z, expected.z);
}

bool Agrees(const Connection& actual, const transcription::Segment& expected) {
  if (actual.kind == ConnectionKind::None) {
    return expected.point1.identity == transcription::kUntouched;
  }
  return SamePoint(actual.onA, IdentityOf(actual.partA, 0), expected.point1) &&
         SamePoint(actual.onB, IdentityOf(actual.partB, 2), expected.point2);
}

void ExpectJoined(const Segment& a, const Segment& b, SegmentPart partA, SegmentPart partB) {
  const Connection connection = gsl_kernel::ConnectSegments(a, b, kLinear);
  EXPECT_EQ(connection.kind, ConnectionKind::Joined);
  EXPECT_EQ(connection.partA, partA);
  EXPECT_EQ(connection.partB, partB);
}

TEST(KernelSegmentDistance, SegmentsThatCrossHaveOnePoint) {
  const Connection connection = gsl_kernel::ConnectSegments(
      {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}}, {{1.0, -1.0, 0.0}, {1.0, 1.0, 0.0}}, kLinear);
  EXPECT_EQ(connection.kind, ConnectionKind::Crossing);
  EXPECT_XYZ(connection.onB, 1.0, 0.0, 0.0);
}

TEST(KernelSegmentDistance, SkewSegmentsAreJoinedAlongTheirNormal) {
  const Connection connection = gsl_kernel::ConnectSegments(
      {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}}, {{1.0, -1.0, 1.0}, {1.0, 1.0, 1.0}}, kLinear);
  EXPECT_EQ(connection.kind, ConnectionKind::Joined);
  EXPECT_XYZ(connection.onA, 1.0, 0.0, 0.0);
  EXPECT_XYZ(connection.onB, 1.0, 0.0, 1.0);
}

TEST(KernelSegmentDistance, EveryPairOfEndsAndFeetIsFound) {
  // The first segment runs along X. The second segment begins or ends near one of its ends, or
  // beside its middle.
  const Segment a = {{0.0, 0.0, 0.0}, {8.0, 0.0, 0.0}};
  const Coord3 away = {3.0, 50.0, 60.0};
  ExpectJoined(a, {{-1.0, 1.0, 1.0}, away}, SegmentPart::First, SegmentPart::First);
  ExpectJoined(a, {away, {-1.0, 1.0, 1.0}}, SegmentPart::First, SegmentPart::Second);
  ExpectJoined(a, {{9.0, 1.0, 1.0}, away}, SegmentPart::Second, SegmentPart::First);
  ExpectJoined(a, {away, {9.0, 1.0, 1.0}}, SegmentPart::Second, SegmentPart::Second);
  ExpectJoined(a, {{5.0, 1.0, 1.0}, away}, SegmentPart::Foot, SegmentPart::First);
  ExpectJoined(a, {away, {5.0, 1.0, 1.0}}, SegmentPart::Foot, SegmentPart::Second);
  const Segment beside = {{-1.0, -7.0, 1.0}, {-1.0, 9.0, -1.0}};
  ExpectJoined(a, beside, SegmentPart::First, SegmentPart::Foot);
  ExpectJoined({a.p2, a.p1}, beside, SegmentPart::Second, SegmentPart::Foot);
}

TEST(KernelSegmentDistance, ProductsAreThoseOfTheEdgesAndTheWay) {
  // u = (0, 2, 0), v = (4, 1, 0), r = (1, 1, -3), u x v = (0, 0, -8).
  const SegmentProducts q({{1.0, 1.0, 0.0}, {1.0, 3.0, 0.0}}, {{0.0, 0.0, 3.0}, {4.0, 1.0, 3.0}});
  EXPECT_EQ(q.uu, 4.0);
  EXPECT_EQ(q.vv, 17.0);
  EXPECT_EQ(q.uv, 2.0);
  EXPECT_EQ(q.ru, 2.0);
  EXPECT_EQ(q.rv, 5.0);
  EXPECT_EQ(q.rr, 11.0);
  EXPECT_EQ(q.nn, 64.0);
  EXPECT_EQ(q.rn, 24.0);
  EXPECT_EQ(q.reach2, 4.0 * (2.0 + 9.0 + 4.0 + 17.0));
}

/// Products of two segments of these squares of lengths, which are otherwise all 1.
SegmentProducts Products(double uu, double vv, double nn, double reach2) {
  SegmentProducts q({{0, 0, 0}, {1, 0, 0}}, {{0, 0, 0}, {0, 1, 0}});
  q.uu = uu;
  q.vv = vv;
  q.nn = nn;
  q.reach2 = reach2;
  return q;
}

TEST(KernelSegmentDistance, GeneralSegmentsAreStrictlyWithinEveryLimit) {
  const auto areGeneral = [](double uu, double vv, double nn, double reach2, double tolerance) {
    return Products(uu, vv, nn, reach2).AreGeneral(tolerance);
  };
  EXPECT_TRUE(areGeneral(1.0, 1.0, 1.0, 16.0, 0x1p-20));
  // The square of the sine is nn / (uu vv), at least 2^-18.
  EXPECT_FALSE(areGeneral(4.0, 2.0, 0x1p-15, 16.0, 0x1p-20));
  EXPECT_TRUE(areGeneral(4.0, 2.0, Above(0x1p-15), 16.0, 0x1p-20));
  // The common normal is longer than the tolerance, with a factor of 2 between the squares.
  EXPECT_FALSE(areGeneral(0x1p-12, 0x1p-12, 0x1p-39, 16.0, 0x1p-20));
  EXPECT_TRUE(areGeneral(0x1p-12, 0x1p-12, Above(0x1p-39), 16.0, 0x1p-20));
  // Both lengths are at least 2^-14 of the reach, and at least 2^12 tolerances.
  EXPECT_FALSE(areGeneral(0x1p-8, 1.0, 1.0, 0x1p20, 0x1p-20));
  EXPECT_TRUE(areGeneral(Above(0x1p-8), 1.0, 1.0, 0x1p20, 0x1p-20));
  EXPECT_FALSE(areGeneral(1.0, 0x1p-8, 1.0, 0x1p20, 0x1p-20));
  EXPECT_FALSE(areGeneral(16.0, 32.0, 512.0, 64.0, 0x1p-10));
  EXPECT_TRUE(areGeneral(Above(16.0), 32.0, 512.0, 64.0, 0x1p-10));
  // The tolerance is at least 2^-32 of the reach, and its square has all its digits.
  EXPECT_FALSE(areGeneral(1.0, 1.0, 1.0, 0x1p24, 0x1p-20));
  EXPECT_TRUE(areGeneral(1.0, 1.0, 1.0, Below(0x1p24), 0x1p-20));
  EXPECT_FALSE(areGeneral(1e-43, 1e-43, 1.0, 1e-42, 1e-30));
  EXPECT_TRUE(areGeneral(1e-43, 1e-43, 1.0, 1e-42, Above(1e-30)));
  // The reach is at most half the distance over which segments are connected.
  EXPECT_FALSE(areGeneral(0x1p40, 0x1p40, 0x1p70, 2.5e19, 2.0));
  EXPECT_TRUE(areGeneral(0x1p40, 0x1p40, 0x1p70, Below(2.5e19), 2.0));
}

TEST(KernelSegmentDistance, PositionOfACrossingIsCertainBeyondTheMargin) {
  using gsl_kernel::CrossingPlace;
  // With uv = 0 and edges of length 1, the positions are -ru and rv, times nn.
  const auto placeOf = [](double s, double t) {
    SegmentProducts q = Products(1.0, 1.0, 4.0, 16.0);
    q.uv = 0.0;
    q.ru = -s;
    q.rv = t;
    return gsl_kernel::PlaceOf(q);
  };
  const double margin = 4.0 * 0x1p-9;
  EXPECT_EQ(placeOf(2.0, 2.0), CrossingPlace::Within);
  EXPECT_EQ(placeOf(2.0, 4.0 - margin), CrossingPlace::Unknown);
  EXPECT_EQ(placeOf(2.0, Below(4.0 - margin)), CrossingPlace::Within);
  EXPECT_EQ(placeOf(margin, 2.0), CrossingPlace::Unknown);
  EXPECT_EQ(placeOf(margin + 0x1p-50, 2.0), CrossingPlace::Within);
  EXPECT_EQ(placeOf(4.0 + margin, 2.0), CrossingPlace::Unknown);
  EXPECT_EQ(placeOf(Above(4.0 + margin), 2.0), CrossingPlace::Beyond);
  EXPECT_EQ(placeOf(2.0, -margin), CrossingPlace::Unknown);
  EXPECT_EQ(placeOf(2.0, -margin - 0x1p-50), CrossingPlace::Beyond);
}

TEST(KernelSegmentDistance, PositionOfAFootIsCertainBeyondTheMargin) {
  using gsl_kernel::FootPlace;
  using gsl_kernel::PlaceOfFoot;
  const double margin = 0x1p-9;
  EXPECT_EQ(PlaceOfFoot(Below(-margin)), FootPlace::First);
  EXPECT_EQ(PlaceOfFoot(-margin), FootPlace::Unknown);
  EXPECT_EQ(PlaceOfFoot(margin), FootPlace::Unknown);
  EXPECT_EQ(PlaceOfFoot(Above(margin)), FootPlace::Within);
  EXPECT_EQ(PlaceOfFoot(Below(1.0 - margin)), FootPlace::Within);
  EXPECT_EQ(PlaceOfFoot(1.0 - margin), FootPlace::Unknown);
  EXPECT_EQ(PlaceOfFoot(1.0 + margin), FootPlace::Unknown);
  EXPECT_EQ(PlaceOfFoot(Above(1.0 + margin)), FootPlace::Second);
  EXPECT_EQ(PlaceOfFoot(kNaN), FootPlace::Unknown);
}

TEST(KernelSegmentDistance, NearestEndIsCertainWhereTheOthersAreFarther) {
  using gsl_kernel::FootPlace;
  SegmentProducts ofA = Products(1.0, 1.0, 1.0, 0.0), ofB = Products(4.0, 1.0, 1.0, 0.0);
  ofA.rr = ofB.rr = 0.25;
  ofA.uv = ofB.uv = 0.0;
  // The foot of the first end of a is in the middle of b. The squares of the four distances are 0,
  // 1, 1/4 and 1/4.
  ofA.ru = 0.0;
  ofA.rv = 0.5;
  // The foot of the first end of b is at a quarter of a. The squares are 1/4, 9/4, 0 and 1.
  ofB.ru = -1.0;
  ofB.rv = 0.0;
  const auto placeOf = [](SegmentProducts q, int end, double reach2, double tolerance) {
    q.reach2 = reach2;
    const gsl_kernel::NearestEnd nearest = NearestEndOf(q, tolerance);
    EXPECT_EQ(nearest.end, end);
    return nearest.place;
  };
  for (const int end : {0, 2}) {
    const SegmentProducts& q = end == 0 ? ofA : ofB;
    // The square of two tolerances is 1/4.
    EXPECT_EQ(placeOf(q, end, 0.0, 0.25), FootPlace::Unknown);
    EXPECT_EQ(placeOf(q, end, 0.0, Below(0.25)), FootPlace::Within);
    // 2^-42 of the square of the reach is 1/4.
    EXPECT_EQ(placeOf(q, end, 0x1p40, 0.0), FootPlace::Unknown);
    EXPECT_EQ(placeOf(q, end, Below(0x1p40), 0.0), FootPlace::Within);
  }
}

TEST(KernelSegmentDistance, FootATinyWayBeyondAnEndIsNotTheEnd) {
  // The first end of b is 5 from the line of a, half a tolerance beyond the first end of a.
  const double half = 0x1p-11;
  const Connection connection = gsl_kernel::ConnectSegments(
      {{0.0, 0.0, 0.0}, {8.0, 0.0, 0.0}}, {{-half, 3.0, 4.0}, {-5.0, 50.0, 60.0}}, 2.0 * half);
  EXPECT_EQ(connection.partA, SegmentPart::Foot);
  EXPECT_EQ(connection.partB, SegmentPart::First);
  EXPECT_XYZ(connection.onA, -half, 0.0, 0.0);
}

/// Returns whether one of the four ends is clearly nearest, by the distances in full: no other
/// connection is nearly as short, and no foot is near an end.
bool IsOneEndClearlyNearest(const Segment& a, const Segment& b) {
  const Connection nearest = ConnectEnds(a, b, kLinear);
  const double least = gsl_kernel::Distance(nearest.onA, nearest.onB);
  const Coord3* const ends[4] = {&a.p1, &a.p2, &b.p1, &b.p2};
  for (int i = 0; i < 4; ++i) {
    const Segment& target = i < 2 ? b : a;
    Coord3 foot = {};
    double t = 0.0;
    gsl_kernel::FootOnSegment(*ends[i], target.p1, target.p2, kLinear, foot, t);
    if (std::fabs(t) < 0.01 || std::fabs(t - 1.0) < 0.01) return false;
    const gsl_kernel::NearestPoint other =
        gsl_kernel::NearestOnSegment(*ends[i], target.p1, target.p2, kLinear);
    const Coord3& onA = i < 2 ? *ends[i] : other.point;
    const bool isSame = gsl_kernel::Distance(onA, nearest.onA) < 1e-9;
    if (!isSame && other.distance < least + 0.01) return false;
  }
  return true;
}

TEST(KernelSegmentDistance, EveryEndIsDecidedAtEveryPlace) {
  using gsl_kernel::FootPlace;
  RandomNumbers random(0xE0D);
  long counts[4][4] = {};
  for (long i = 0; i < 40000 && !testing::Test::HasFailure(); ++i) {
    Segment a = {}, b = {};
    for (Coord3* const p : {&a.p1, &a.p2, &b.p1, &b.p2}) {
      for (double* const c : {&p->x, &p->y, &p->z})
        *c = random.In(-8.0, 8.0);
    }
    const SegmentProducts q(a, b);
    if (!q.AreGeneral(kLinear) || PlaceOf(q) != gsl_kernel::CrossingPlace::Beyond) continue;
    const gsl_kernel::NearestEnd nearest = NearestEndOf(q, kLinear);
    ++counts[nearest.end][static_cast<int>(nearest.place)];
    if (nearest.place == FootPlace::Unknown) {
      EXPECT_FALSE(IsOneEndClearlyNearest(a, b)) << "case " << i;
      continue;
    }
    const Connection expected = ConnectEnds(a, b, kLinear);
    const Connection actual = ConnectionOfEnd(a, b, nearest, kLinear);
    EXPECT_EQ(actual.partA, expected.partA) << "case " << i;
    EXPECT_EQ(actual.partB, expected.partB) << "case " << i;
    EXPECT_XYZ(actual.onA, expected.onA.x, expected.onA.y, expected.onA.z);
    EXPECT_XYZ(actual.onB, expected.onB.x, expected.onB.y, expected.onB.z);
  }
  // Two ends have one distance to each other, so that rounding decides which of the two is nearest.
  // Both first ends have the same products, and the tie goes to the end of a.
  for (int end = 0; end < 4; ++end) {
    for (int place = 1; place < 4; ++place) {
      const bool isTie = end == 2 && place == static_cast<int>(FootPlace::First);
      EXPECT_EQ(counts[end][place] > 10, !isTie) << end << ", " << place;
    }
  }
}

TEST(KernelSegmentDistance, SegmentsAToleranceApartAreConnectedAsByTheSteps) {
  RandomNumbers random(0x7014);
  long joined = 0;
  for (long i = 0; i < Scaled(20000) && !testing::Test::HasFailure(); ++i) {
    // Two edges that cross at their middles, where the second edge is moved along their normal.
    Coord3 u = {1.5, 0.0, 0.0}, v = {0.0, 1.5, 0.0};
    for (double* const c : {&u.x, &u.y, &u.z, &v.x, &v.y, &v.z})
      *c += random.In(-0.5, 0.5);
    Measured3 n = Measure(gsl_kernel::Cross(u, v));
    gsl_arithmetic::Normalize(n, kLinear);
    const double part = random.Below(2) == 0 ? random.In(0.5, 1.6) : 1.0;
    const Coord3 middle = gsl_kernel::Multiply(n.c, part * kLinear);
    const Segment a = {gsl_kernel::Negated(u), u};
    const Segment b = {gsl_kernel::Subtract(middle, v), gsl_kernel::Add(middle, v)};
    const Connection expected = ConnectSegmentsBySteps(a, b, kLinear);
    const Connection actual = ConnectSegments(a, b, kLinear);
    EXPECT_EQ(actual.kind, expected.kind);
    EXPECT_XYZ(actual.onA, expected.onA.x, expected.onA.y, expected.onA.z);
    EXPECT_XYZ(actual.onB, expected.onB.x, expected.onB.y, expected.onB.z);
    if (expected.kind == ConnectionKind::Joined) ++joined;
  }
  EXPECT_GT(joined, Scaled(20000) / 4);
  EXPECT_LT(joined, Scaled(20000) * 3 / 4);
}

TEST(KernelSegmentDistance, FarAndNaNHaveNoConnection) {
  const Segment a = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}};
  EXPECT_EQ(gsl_kernel::ConnectSegments(a, {{0.0, 2e10, 0.0}, {0.0, 3e10, 1.0}}, kLinear).kind,
            ConnectionKind::None);
  EXPECT_EQ(gsl_kernel::ConnectSegments(a, {{kNaN, 0.0, 0.0}, {kNaN, 1.0, 0.0}}, kLinear).kind,
            ConnectionKind::None);
}

TEST(KernelSegmentDistance, AgreesWithTheTranscriptionBitForBitAndIdentityForIdentity) {
  constexpr std::uint64_t kSeed = 0x5E65;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints in(kSeed);
  for (long i = 0; i < Scaled(200000); ++i) {
    in.Draw();
    const transcription::Pt untouched = {7.5, -8.5, 9.5, transcription::kUntouched};
    transcription::Segment expected = {untouched, untouched};
    transcription::ShortestConnection({Plain(in.p[0], 0), Plain(in.p[1], 1)},
                                      {Plain(in.p[2], 2), Plain(in.p[3], 3)}, expected,
                                      {in.linearTolerance, 1e-12, in.cosineTolerance});
    const Segment a = {in.p[0], in.p[1]}, b = {in.p[2], in.p[3]};
    ASSERT_TRUE(Agrees(gsl_kernel::ConnectSegments(a, b, in.linearTolerance), expected))
        << "case " << i;
    ASSERT_TRUE(Agrees(gsl_kernel::ConnectSegmentsBySteps(a, b, in.linearTolerance), expected))
        << "case " << i;
  }
}

} // namespace
