#include "wide/SegmentSweepLanes.h"

#include "InPlaneTranscription.h"
#include "SweepBatches.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace sweep_batches;
using gsl_wide::SegmentSweepBatch;

/// Sweeps one pair after the other with `sweep`.
template <class Sweep>
SweptPairs LoopOfSegments(const SegmentBatch& in, const Sweep& sweep) {
  const InPlaneCase& terms = in.Terms();
  return in.Loop([&terms, &sweep](const InPlaneCase& pair, gsl_Point* contacts, double& distance) {
    return sweep(terms.direction, pair.a[0], pair.a[1], pair.b[0], pair.b[1], terms.twoSided,
                 terms.margin, contacts, distance);
  });
}

long left = 0;

void CountedOne(const SegmentSweepBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OneSweptSegment(batch, k);
}

/// Sweeps one pair in every lane. Returns what the lanes find.
SweptPairs InEveryLane(const gsl_WideKernels& kernels, const InPlaneCase& c) {
  std::vector<PointArray> ends(4, PointArray(8, 3));
  for (std::size_t k = 0; k < 8; ++k) {
    for (std::size_t i = 0; i < 2; ++i) {
      ends[i].Set(k, c.a[i].Coords());
      ends[i + 2].Set(k, c.b[i].Coords());
    }
  }
  const gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
  SegmentSweepBatch batch = {};
  batch.count = 8;
  for (std::size_t i = 0; i < 2; ++i) {
    batch.a[i] = ends[i].In();
    batch.b[i] = ends[i + 2].In();
    batch.twoSided[i] = c.twoSided[i];
  }
  const gsl_arithmetic::Measured3 d =
      gsl_arithmetic::NormalizedCopy(c.direction.Measured(), settings.linearTolerance);
  gsl_batch::WritePoint(batch.direction, d.c);
  batch.length = d.magnitude;
  batch.linearTolerance = settings.linearTolerance;
  batch.cosineTolerance = settings.cosineTolerance;
  batch.margin = c.margin;
  SweptPairs best = SegmentBatch::Nothing(c.distance);
  batch.distance = &best.distance;
  batch.contact = &best;
  batch.one = CountedOne;
  left = 0;
  kernels.sweepSegments(batch);
  return best;
}

/// A runs along -X and faces +Y, as it must. B runs along X at `height`, from `from`.
InPlaneCase Facing(double from, double height) {
  InPlaneCase c;
  c.direction = gsl_Vector(0.0, 1.0, 0.0);
  c.a[0] = gsl_Point(1.0, 0.0, 0.0);
  c.a[1] = gsl_Point(-1.0, 0.0, 0.0);
  c.b[0] = gsl_Point(from, height, 0.0);
  c.b[1] = gsl_Point(from + 2.0, height, 0.0);
  c.twoSided[0] = c.twoSided[1] = false;
  return c;
}

} // namespace

TEST(SegmentSweepLanes, EveryWidthFindsWhatTheLoopOfSingleCallsFinds) {
  constexpr std::uint64_t kSeed = 0x5E65;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  for (int f = 0; f < InPlaneCases::kFamilies; ++f) {
    const auto family = static_cast<InPlaneCases::Family>(f);
    const std::uint64_t seed = kSeed + static_cast<std::uint64_t>(f);
    RandomNumbers random(seed);
    InPlaneCases cases(seed);
    RandomSettings settings(seed);
    const long wanted = PairsOfAFamily(40000);
    for (long pairs = 0; pairs < wanted;) {
      const SegmentBatch in(cases, family, random, settings);
      // The single call and the lanes share bounds, and the documented steps know none.
      const SweptPairs expected = LoopOfSegments(in, [](auto&&... arguments) {
        return in_plane_transcription::SegSegMinDirectionalDist(arguments...);
      });
      const SweptPairs single = LoopOfSegments(in, gsl_InPlaneSegSegMinDirectionalDist);
      ASSERT_EQ(Describe(single), Describe(expected))
          << settings.Describe() << "family " << f << " after pair " << pairs;
      ASSERT_TRUE(Same(single, expected));
      for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
        SweptPairs best = SegmentBatch::Nothing(in.Terms().distance);
        gsl_batch::SweepSegments(*kernels, in.Arguments<SegmentSweepBatch>(),
                                 in.Terms().direction.Measured(), best);
        ASSERT_EQ(Describe(best), Describe(expected))
            << settings.Describe() << "family " << f << " after pair " << pairs;
        ASSERT_TRUE(Same(best, expected));
      }
      pairs += static_cast<long>(in.pairs.size());
    }
  }
}

TEST(SegmentSweepLanes, AContactJustCloserThanTheLimitIsNeverRejectedByTheBoundOfItsGap) {
  constexpr std::uint64_t kSeed = 0x6A9;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  InPlaneCases cases(kSeed);
  RandomSettings settings(kSeed);
  long contacts = 0;
  for (long i = 0; i < Scaled(100000); ++i) {
    settings.Draw();
    InPlaneCase c = cases.Next(static_cast<InPlaneCases::Family>(i % InPlaneCases::kFamilies));
    c.distance = numbers::kInfinity;
    gsl_Point found[2];
    double distance = c.distance;
    if (!gsl_InPlaneSegSegMinDirectionalDist(c.direction, c.a[0], c.a[1], c.b[0], c.b[1],
                                             c.twoSided, 0.0, found, distance)) {
      continue;
    }
    c.margin = 0.0;
    c.distance = numbers::Above(distance);
    ++contacts;
    for (const gsl_WideKernels* const kernels : batch_cases::AllKernels())
      ASSERT_EQ(InEveryLane(*kernels, c).distance, distance) << settings.Describe() << i;
  }
  EXPECT_GT(contacts, Scaled(10000));
}

TEST(SegmentSweepLanes, PairsAsideTooFarAheadOrFacingAwayAreRejectedInTheLanes) {
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    InPlaneCase aside = Facing(1.5, 3.0);
    EXPECT_FALSE(InEveryLane(*kernels, aside).found);
    EXPECT_EQ(left, 0);
    InPlaneCase later = Facing(-1.0, 3.0);
    later.distance = 2.9;
    EXPECT_FALSE(InEveryLane(*kernels, later).found);
    EXPECT_EQ(left, 0);
    later.distance = 4.0;
    later.margin = 1.1;
    EXPECT_FALSE(InEveryLane(*kernels, later).found);
    EXPECT_EQ(left, 0);
    InPlaneCase away = Facing(-1.0, 3.0);
    std::swap(away.b[0], away.b[1]);
    EXPECT_FALSE(InEveryLane(*kernels, away).found);
    EXPECT_EQ(left, 0);
    std::swap(away.b[0], away.b[1]);
    std::swap(away.a[0], away.a[1]);
    EXPECT_FALSE(InEveryLane(*kernels, away).found);
    EXPECT_EQ(left, 0);
  }
}

TEST(SegmentSweepLanes, PairsThatMeetGoToTheScalarKernelUntilTheyCannotBeCloser) {
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    const SweptPairs best = InEveryLane(*kernels, Facing(-1.0, 3.0));
    EXPECT_TRUE(best.found);
    EXPECT_EQ(best.distance, 3.0);
    EXPECT_EQ(best.pair, 0u);
    // Without rounding the gap of an equal pair would be certain. The bound keeps it.
    EXPECT_EQ(left, 8);
  }
}

/// A stale length makes the direction so short that cross products with it have no squares.
TEST(SegmentSweepLanes, AGapWithoutASquareIsNotAside) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.0;
  InPlaneCase c;
  c.direction = gsl_Vector(1.0, 0.0, 0.0);
  c.direction.magnitude = 1e90;
  c.a[0] = gsl_Point(0.0, 0.0, 0.0);
  c.a[1] = gsl_Point(0.0, 1e-76, 0.0);
  c.b[0] = gsl_Point(1e-76, 2e-76, 0.0);
  c.b[1] = gsl_Point(1e-76, 4e-76, 0.0);
  c.distance = 1.0;
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels())
    EXPECT_DOUBLE_EQ(InEveryLane(*kernels, c).distance, 1e-166);
}

TEST(SegmentSweepLanes, ANegativeMarginLetsTheDistanceRise) {
  // A lies along the direction. The pairs are 2 and then 4 away, which is within the margin.
  InPlaneCase c;
  c.direction = gsl_Vector(0.0, 1.0, 0.0);
  c.a[0] = gsl_Point(0.0, 0.0, 0.0);
  c.a[1] = gsl_Point(0.0, -1.0, 0.0);
  c.b[0] = gsl_Point(1.0, 3.0, 0.0);
  c.b[1] = gsl_Point(-1.0, 3.0, 0.0);
  c.margin = -5.0;
  c.distance = 0.5;
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    const SweptPairs best = InEveryLane(*kernels, c);
    EXPECT_EQ(best.distance, 4.0) << "from the second end, which comes last";
    EXPECT_EQ(best.pair, 7u);
  }
}
