#include "AxisGaps.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace gsl_sweep;

ExactRatio Ratio(double over, double under) {
  ExactRatio ratio;
  gsl_exact::Expansion<192> numerator;
  gsl_exact::Expansion<192> denominator;
  if (over != 0.0) numerator.Append(over);
  denominator.Append(under);
  ratio.Set(numerator, denominator);
  return ratio;
}

/// Boxes that part along z after (3 - low) / (3 / 4).
bool ArePartedAfter(double travelOver, double travelUnder, double low) {
  const TravelDirection direction({0.0, 0.0, 0.75});
  AxisGaps gaps(direction);
  gaps.SetTravel(Ratio(travelOver, travelUnder));
  const Box<double> moving{{0.0, 0.0, low}, {1.0, 1.0, low + 1.0}};
  const Box<double> fixed{{0.0, 0.0, 2.0}, {1.0, 1.0, 3.0}};
  const bool parted = gaps.ArePartedAfter(moving, fixed);
  // The answer is remembered for equal gaps.
  EXPECT_EQ(gaps.ArePartedAfter(moving, fixed), parted);
  return parted;
}

TEST(AxisGaps, EqualTravelsAreEqualExactly) {
  // 2 / (3 / 4) is 8 / 3, which no double holds.
  EXPECT_TRUE(ArePartedAfter(8.0, 3.0, 1.0));
  EXPECT_TRUE(ArePartedAfter(8.0, 3.0, std::nextafter(1.0, 2.0)));
  EXPECT_FALSE(ArePartedAfter(8.0, 3.0, std::nextafter(1.0, 0.0)));
  EXPECT_TRUE(ArePartedAfter(9.0, 3.0, 1.0));
  EXPECT_FALSE(ArePartedAfter(7.0, 3.0, 1.0));
}

TEST(AxisGaps, BoxesThatPartAtZeroOrBeforeAreParted) {
  EXPECT_TRUE(ArePartedAfter(0.0, 1.0, 3.0));
  EXPECT_TRUE(ArePartedAfter(0.0, 1.0, 4.0));
  EXPECT_FALSE(ArePartedAfter(0.0, 1.0, std::nextafter(3.0, 0.0)));
}

TEST(AxisGaps, AnyAxisCanPartAndAnAxisAcrossTheDirectionCannot) {
  const TravelDirection direction({-0.5, 0.0, 0.75});
  AxisGaps gaps(direction);
  gaps.SetTravel(Ratio(4.0, 1.0));
  const Box<double> fixed{{0.0, -3.0, 0.0}, {1.0, 1.0, 9.0}};
  // Along x the gap is -2 and closes after 4, whatever y is.
  EXPECT_TRUE(gaps.ArePartedAfter({{1.0, 7.0, 0.0}, {2.0, 8.0, 1.0}}, fixed));
  EXPECT_FALSE(gaps.ArePartedAfter({{1.0, 7.0, 0.0}, {2.5, 8.0, 1.0}}, fixed));
  // A new travel forgets the gaps that were equal to the one before.
  gaps.SetTravel(Ratio(3.0, 1.0));
  EXPECT_FALSE(gaps.ArePartedAfter({{1.0, 7.0, 0.0}, {2.0, 8.0, 1.0}}, fixed));
}

} // namespace
