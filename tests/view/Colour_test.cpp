#include "Colour.h"

#include <gtest/gtest.h>

using namespace gsl_view;

TEST(Colour, PixelHasRedFirstAndRounds) {
  EXPECT_EQ(PixelOf({1.0, 0.5, 0.0}), 0xFF8000u);
  EXPECT_EQ(PixelOf({0.0, 1.0 / 255.0, 254.6 / 255.0}), 0x0001FFu);
}

TEST(Colour, PartsBeyondTheirRangeAreCut) {
  EXPECT_EQ(PixelOf({-1.0, 2.0, 0.0}), 0x00FF00u);
}
