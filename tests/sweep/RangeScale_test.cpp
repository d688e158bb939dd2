#include "RangeScale.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace gsl_sweep;

template <class Work>
std::string OverflowOf(const Work& work) {
  try {
    work();
  } catch (const std::overflow_error& error) {
    return error.what();
  }
  return {};
}

TEST(RangeScale, SaysWhichNumberIsTooLarge) {
  const double most = std::numeric_limits<double>::max();
  const RangeScale scale(most);
  const double below = scale.Down(most); // the greatest double below 1
  EXPECT_EQ(below, 1.0 - 0x1p-53);
  EXPECT_EQ(scale.UpTravel(below), most);
  EXPECT_EQ(scale.UpPoint({0.0, -below, 0.0}).y, -most);
  EXPECT_EQ(OverflowOf([&] { scale.UpTravel(1.0); }), "the travel is too large for a double");
  for (const Coord3& p : {Coord3{1.0, 0.0, 0.0}, Coord3{0.0, -1.0, 0.0}, Coord3{0.0, 0.0, 1.0}}) {
    EXPECT_EQ(OverflowOf([&] { scale.UpPoint(p); }),
              "a coordinate of the contact is too large for a double");
  }
}

TEST(RangeScale, BringsTheLargestBelowOne) {
  for (const double largest : {5e-324, 0x1p-1000, 0.7, 1.0, 3.0, 1e300}) {
    const RangeScale scale(largest);
    const double down = scale.Down(largest);
    EXPECT_GE(down, 0.5);
    EXPECT_LT(down, 1.0);
    EXPECT_EQ(scale.UpTravel(down), largest);
  }
  const RangeScale unit(0.5);
  EXPECT_EQ(unit.Down(0x1p-288), 0x1p-288);
  EXPECT_EQ(unit.Down(0x1.8p-339), 0x1p-338); // half a unit goes to the even neighbour
  EXPECT_EQ(unit.Down(0x1.7p-339), 0x1p-339);
}

} // namespace
