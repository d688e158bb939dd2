#include "TravelScale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace gsl_view;

namespace {

/// The lightness L* of CIELAB, from 0 to 100, of a colour of sRGB.
double LightnessOf(const Colour& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  const double y =
      0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
  return y <= 216.0 / 24389.0 ? y * 24389.0 / 27.0 : 116.0 * std::cbrt(y) - 16.0;
}

} // namespace

TEST(TravelScale, LightnessGrowsInEvenSteps) {
  constexpr int kSteps = 64;
  const double first = LightnessOf(TravelScale::ColourAt(0.0));
  const double step = (LightnessOf(TravelScale::ColourAt(1.0)) - first) / kSteps;
  EXPECT_GT(step * kSteps, 60.0);
  for (int k = 0; k < kSteps; ++k) {
    const double rise = LightnessOf(TravelScale::ColourAt((k + 1.0) / kSteps)) -
                        LightnessOf(TravelScale::ColourAt(1.0 * k / kSteps));
    EXPECT_GT(rise, 0.7 * step) << k;
    EXPECT_LT(rise, 1.3 * step) << k;
  }
}

TEST(TravelScale, StartIsDarkerAndFreeIsLighterThanEveryTravel) {
  EXPECT_LT(LightnessOf(kStartColour), LightnessOf(TravelScale::ColourAt(0.0)) - 10.0);
  EXPECT_GT(LightnessOf(kFreeColour), LightnessOf(TravelScale::ColourAt(1.0)) + 10.0);
  // Their patterns are seen too.
  EXPECT_GT(LightnessOf(kStartDots), LightnessOf(kStartColour) + 50.0);
  EXPECT_LT(LightnessOf(kFreeStripes), LightnessOf(kFreeColour) - 30.0);
}

TEST(TravelScale, EvenTravelsHaveALinearScale) {
  const TravelScale scale = TravelScale::Of({4.0, 2.0, 6.0, 3.0});
  EXPECT_EQ(scale.low, 2.0);
  EXPECT_EQ(scale.high, 6.0);
  EXPECT_FALSE(scale.isLogarithmic);
  EXPECT_FALSE(scale.isCut);
  EXPECT_EQ(scale.PartOf(2.0), 0.0);
  EXPECT_EQ(scale.PartOf(3.0), 0.25);
  EXPECT_EQ(scale.PartOf(6.0), 1.0);
  EXPECT_EQ(scale.PartOf(99.0), 1.0);
}

TEST(TravelScale, FewLongTravelsMakeItLogarithmic) {
  // The middle one is 2; eight times as much is not enough.
  EXPECT_FALSE(TravelScale::Of({1.0, 2.0, 16.0}).isLogarithmic);
  const TravelScale scale = TravelScale::Of({100.0, 1.0, 2.0});
  EXPECT_TRUE(scale.isLogarithmic);
  EXPECT_FALSE(scale.isCut);
  EXPECT_EQ(scale.PartOf(1.0), 0.0);
  EXPECT_NEAR(scale.PartOf(10.0), 0.5, 1e-15);
  EXPECT_EQ(scale.PartOf(100.0), 1.0);
}

TEST(TravelScale, TravelsOfRoundingTakeNoColours) {
  const TravelScale scale = TravelScale::Of({1e-17, 1.0, 1.0, 1.0, 50.0});
  EXPECT_TRUE(scale.isCut);
  EXPECT_TRUE(scale.isLogarithmic);
  EXPECT_EQ(scale.low, 1.0);
  EXPECT_EQ(scale.PartOf(1e-17), 0.0);
  EXPECT_EQ(scale.Ticks(), (std::vector<double>{1, 2, 5, 10, 20, 50}));
  // Many of them do not decide which scale it is, as in a seated part.
  const TravelScale seated = TravelScale::Of({1e-17, 2e-17, 3e-17, 4e-17, 0.06, 0.2, 0.28});
  EXPECT_TRUE(seated.isCut);
  EXPECT_FALSE(seated.isLogarithmic);
  EXPECT_EQ(seated.low, 0.06);
  EXPECT_EQ(seated.high, 0.28);
  EXPECT_EQ(seated.PartOf(4e-17), 0.0);
}

TEST(TravelScale, AScaleHasFourPowersOfTen) {
  // Exactly a ten thousandth of the greatest is kept, and the next number below is not.
  const double least = 1e-4 * 64.0;
  const TravelScale scale = TravelScale::Of({least, 1.0, 1.0, 1.0, 64.0});
  EXPECT_FALSE(scale.isCut);
  EXPECT_EQ(scale.low, least);
  EXPECT_EQ(scale.Ticks(),
            (std::vector<double>{0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50}));
  EXPECT_TRUE(TravelScale::Of({std::nextafter(least, 0.0), 1.0, 1.0, 1.0, 64.0}).isCut);
}

TEST(TravelScale, OneTravelHasTheMiddleColour) {
  const TravelScale scale = TravelScale::Of({7.0, 7.0});
  EXPECT_EQ(scale.PartOf(7.0), 0.5);
  EXPECT_TRUE(scale.Ticks().empty());
  EXPECT_EQ(PixelOf(scale.At(7.0)), PixelOf(kTravelColours[4]));
  EXPECT_EQ(TravelScale::Of({}).high, 0.0);
}

TEST(TravelScale, TicksAreRound) {
  EXPECT_EQ(TravelScale::Of({10.09, 20.0, 36.63}).Ticks(),
            (std::vector<double>{15, 20, 25, 30, 35}));
  EXPECT_EQ(TravelScale::Of({0.5, 1.0, 16.0}).Ticks(), (std::vector<double>{0.5, 1, 2, 5, 10}));
}

TEST(TravelScale, TicksThatLookTheSameAreLeftOut) {
  EXPECT_TRUE(TravelScale::Of({1e6, 1e6 + 1.0}).Ticks().empty());
  EXPECT_FALSE(TravelScale::Of({1e6, 1e6 + 100.0}).Ticks().empty());
}

TEST(TravelScale, ExtremeTravelsHaveFiniteParts) {
  constexpr double kMost = std::numeric_limits<double>::max();
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  for (const auto& travels :
       {std::vector<double>{kLeast, kMost, kMost}, std::vector<double>{kLeast, kLeast, kMost},
        std::vector<double>{kLeast, 3 * kLeast, 4 * kLeast}}) {
    const TravelScale scale = TravelScale::Of(travels);
    EXPECT_LE(scale.Ticks().size(), 15u);
    for (const double travel : travels) {
      EXPECT_GE(scale.PartOf(travel), 0.0);
      EXPECT_LE(scale.PartOf(travel), 1.0);
    }
  }
}
