#include "kernel/SegmentSweep.h"

#include "RandomNumbers.h"
#include "TestScale.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>

namespace {

using gsl_kernel::AsideReach;
using gsl_kernel::Coord3;
using gsl_kernel::Measured3;
using gsl_kernel::SweepTolerances;
using gsl_kernel::SweptSegment;
using Real = long double;

constexpr std::uint64_t kSeed = 0xA51DE5u;

SweptSegment SegmentBetween(const Coord3& p0, const Coord3& p1) {
  return gsl_kernel::SweptSegmentBetween({p0, 0}, {p1, 1});
}

/// The gap between the segments, across d and times |d|, as GapAside has it but in extended
/// precision.
Real ExactGapAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  const auto aside = [&d](const gsl_kernel::SourcedPoint& p) {
    return Real(d.c.y) * Real(p.c.x) - Real(d.c.x) * Real(p.c.y);
  };
  const Real a0 = aside(a.p[0]), a1 = aside(a.p[1]), b0 = aside(b.p[0]), b1 = aside(b.p[1]);
  return std::max(std::min(b0, b1) - std::max(a0, a1), std::min(a0, a1) - std::max(b0, b1));
}

/// Random pairs around a direction of any length: `along` and `across` it, from the origin.
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

/// Whether the line of d through the first end of `a` counts as meeting `b`.
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

/// A target from the origin, `length` long and `slope` off d, and a segment of which one end lies
/// `beyond` the target's far end, across d.
void TryEndBeyondTarget(const Frame& frame, double length, double slope, double behind,
                        double beyond, const SweepTolerances& tol, Worst& worst) {
  const SweptSegment b = SegmentBetween(
      frame.At(0.0, 0.0), frame.At(length * std::cos(slope), length * std::sin(slope)));
  const double aside = length * std::sin(slope) + beyond;
  const SweptSegment a = SegmentBetween(frame.At(-behind, aside), frame.At(-behind, aside + 1e-3));
  if (Meets(a, b, frame.d, tol)) worst.Take(a, b, frame.d, tol);
}

/// A crossing of a target as steep as one may be, with nothing but rounding to accept it.
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

  /// 0 when it is not accepted.
  Real Ratio() const {
    Worst worst;
    TryEndBeyondTarget(Frame(turn, 1.0), length, slope, behind, beyond, {0.0, 0.0}, worst);
    return worst.ratio;
  }
};

TEST(AsideReach, CoversWhatRoundingAcceptsOfTheSteepestTargetsWithinAFactorOfTwenty) {
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

TEST(AsideReach, CoversTheToleranceOfAnEndAndHardlyMore) {
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

TEST(PassAside, RejectsWhatIsBeyondTheReachAndKeepsWhatIsNot) {
  const SweepTolerances tol = {0.25, 0.0};
  const Measured3 d = gsl_kernel::Measure({0.0, 10.0, 0.0});
  const SweptSegment a = SegmentBetween({0.0, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  const SweptSegment at = SegmentBetween({0.25, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_FALSE(gsl_kernel::PassAside(a, at, d, tol));
  const SweptSegment beyond = SegmentBetween({0.2500001, 3.0, 0.0}, {1.0, 3.0, 0.0});
  EXPECT_TRUE(gsl_kernel::PassAside(a, beyond, d, tol));
  EXPECT_TRUE(gsl_kernel::PassAside(beyond, a, d, tol));
}

TEST(PassAside, TriesPairsWhoseReachIsNotKnown) {
  const SweepTolerances tol = {0.25, 0.0};
  const Measured3 d = gsl_kernel::Measure({0.0, 1.0, 0.0});
  const SweptSegment a = SegmentBetween({0.0, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  const SweptSegment far = SegmentBetween({5.0, 3.0, 0.0}, {6.0, 3.0, 0.0});
  ASSERT_TRUE(gsl_kernel::PassAside(a, far, d, tol));
  // Above |d|; a direction and segments of no ordinary length; not one plane; not a number.
  EXPECT_FALSE(gsl_kernel::PassAside(a, far, d, {std::nextafter(1.0, 2.0), 0.0}));
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
