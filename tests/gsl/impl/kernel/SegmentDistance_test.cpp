#include "kernel/SegmentDistance.h"

#include "EntityTranscription.h"
#include "FourPoints.h"
#include "KernelNames.h"
#include "TestScale.h"

#include <cstdio>

namespace {

using namespace kernel_names;
using gsl_kernel::Connection;
using gsl_kernel::ConnectionKind;
using gsl_kernel::Segment;
using gsl_kernel::SegmentPart;

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
