#include "Hemisphere.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gsl_view;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr Hemisphere kUpper{{100.0, 50.0}, 40.0, true}, kLower{{200.0, 50.0}, 40.0, false};

void ExpectAt(const Hemisphere& half, const Coord3& direction, double x, double y) {
  const PagePoint at = half.At(direction);
  EXPECT_NEAR(at.x, x, 1e-12);
  EXPECT_NEAR(at.y, y, 1e-12);
}

} // namespace

TEST(Hemisphere, AxesAreWhereTheyAreSeenFromOutside) {
  ExpectAt(kUpper, {0, 0, 1}, 100, 50);
  ExpectAt(kUpper, {1, 0, 0}, 140, 50);
  ExpectAt(kUpper, {0, 1, 0}, 100, 10);
  ExpectAt(kUpper, {-1, 0, 0}, 60, 50);
  ExpectAt(kLower, {0, 0, -1}, 200, 50);
  ExpectAt(kLower, {1, 0, 0}, 160, 50);
  ExpectAt(kLower, {0, 1, 0}, 200, 10);
  ExpectAt(kLower, {0, -1, 0}, 200, 90);
}

TEST(Hemisphere, TheRimBelongsToTheUpperHalf) {
  EXPECT_TRUE(kUpper.Has({1, 0, 0}));
  EXPECT_FALSE(kLower.Has({1, 0, 0}));
  EXPECT_TRUE(kLower.Has({1, 0, -1e-300}));
  EXPECT_FALSE(kUpper.Has({1, 0, -1e-300}));
}

TEST(Hemisphere, EqualAreasAreEqualSolidAngles) {
  // A cap within an angle of the axis has the share 1 - cos of the half, and its disc the share
  // r^2 of the map.
  for (const double angle : {0.1, 0.5, 1.0, 1.5}) {
    const PagePoint at = kUpper.At({std::sin(angle), 0.0, std::cos(angle)});
    const double part = (at.x - 100.0) / 40.0;
    EXPECT_NEAR(part * part, 1.0 - std::cos(angle), 1e-14);
  }
}

TEST(Hemisphere, PlacesLeadBackToTheirDirections) {
  for (const Hemisphere& half : {kUpper, kLower}) {
    for (double around = 0.0; around < 2.0 * kPi; around += 0.7) {
      for (const double reach : {0.0, 3.0, 17.0, 39.9}) {
        const PagePoint place{half.centre.x + reach * std::cos(around),
                              half.centre.y + reach * std::sin(around)};
        const auto direction = half.DirectionAt(place);
        ASSERT_TRUE(direction);
        EXPECT_TRUE(half.Has(*direction));
        EXPECT_NEAR(std::hypot(direction->x, direction->y, direction->z), 1.0, 1e-15);
        ExpectAt(half, *direction, place.x, place.y);
      }
    }
  }
}

TEST(Hemisphere, OutsideTheRimThereIsNoDirection) {
  EXPECT_TRUE(kUpper.DirectionAt({140.0, 50.0}));
  EXPECT_FALSE(kUpper.DirectionAt({std::nextafter(140.0, 200.0), 50.0}));
  EXPECT_FALSE(kUpper.DirectionAt({std::nan(""), 50.0}));
}
