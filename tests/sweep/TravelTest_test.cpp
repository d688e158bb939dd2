#include "TravelTest.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using namespace gsl_sweep;

template <class Scalar>
class TravelTests : public testing::Test {};

using Scalars = testing::Types<float, double>;

struct ScalarNames {
  template <class Scalar>
  static std::string GetName(int) {
    return sizeof(Scalar) == sizeof(float) ? "Float" : "Double";
  }
};
TYPED_TEST_SUITE(TravelTests, Scalars, ScalarNames);

template <class Scalar>
Boxes<Scalar> Fourfold(const Box<Scalar>& box) {
  Boxes<Scalar> boxes;
  for (int lane = 0; lane < 4; ++lane)
    boxes.Set(lane, box);
  return boxes;
}

/// What both forms and the single one say of a pair.
template <class Scalar>
void ExpectWithin(const TravelTest<Scalar>& test, const Box<Scalar>& moving,
                  const Box<Scalar>& fixed, Scalar limit, Scalar atLeast, Scalar atMost) {
  const TravelRange<Scalar> range{0, limit};
  Four<Scalar> from, to;
  EXPECT_EQ(test.template Survivors<true>(Fourfold(moving), fixed, range, from, to), 15u);
  EXPECT_LE(from[3], atMost);
  EXPECT_GE(from[3], atLeast);
  EXPECT_LE(to[3], limit);
  EXPECT_EQ(test.template Survivors<false>(Fourfold(fixed), moving, range, from, to), 15u);
  EXPECT_LE(from[2], atMost);
  EXPECT_GE(from[2], atLeast);
  Scalar first = -1;
  Scalar last = -1;
  EXPECT_TRUE(test.CanTouch(moving, fixed, {0, Box<Scalar>::kFar}, first, last));
  EXPECT_LE(first, atMost);
  EXPECT_GE(first, atLeast);
  EXPECT_GE(last, limit);
}

template <class Scalar>
unsigned Survivors(const TravelTest<Scalar>& test, const Boxes<Scalar>& moving,
                   const Box<Scalar>& fixed, const TravelRange<Scalar>& range) {
  Four<Scalar> from, to;
  return test.template Survivors<true>(moving, fixed, range, from, to);
}

template <class Scalar>
unsigned Survivors(const TravelTest<Scalar>& test, const Box<Scalar>& moving,
                   const Boxes<Scalar>& fixed, const TravelRange<Scalar>& range) {
  Four<Scalar> from, to;
  return test.template Survivors<false>(fixed, moving, range, from, to);
}

/// Boxes whose corners meet at one travel alone, which is the limit as well.
TYPED_TEST(TravelTests, BoxesThatTouchAtOneTravelSurvive) {
  using Scalar = TypeParam;
  std::mt19937_64 random(4);
  const auto whole = [&](int low, int high) {
    return static_cast<double>(static_cast<int>(random() % static_cast<unsigned>(high - low + 1)) +
                               low);
  };
  for (int round = 0; round < 20000; ++round) {
    double d[3];
    for (double& c : d)
      c = whole(-1023, 1023) / 1024.0;
    d[round % 3] = round % 2 == 0 ? 513.0 / 1024.0 : -1023.0 / 1024.0;
    const double travel = whole(0, 4000);
    Box<Scalar> moving, fixed;
    for (int k = 0; k < 3; ++k) {
      // The side in front, 1/1024 of whole numbers: exact in single precision after the travel.
      const double front = whole(-2000, 2000) / 1024.0;
      const double met = front + travel * d[k];
      const double size = whole(0, 3);
      const double fixedSize = whole(0, 3);
      moving.low[k] = static_cast<Scalar>(d[k] >= 0.0 ? front - size : front);
      moving.high[k] = static_cast<Scalar>(d[k] >= 0.0 ? front : front + size);
      fixed.low[k] = static_cast<Scalar>(d[k] >= 0.0 ? met : met - fixedSize);
      fixed.high[k] = static_cast<Scalar>(d[k] >= 0.0 ? met + fixedSize : met);
      // What moves does not have to meet there along every axis first.
      ASSERT_EQ(static_cast<double>(static_cast<Scalar>(met)), met);
    }
    const TravelTest<Scalar> test({d[0], d[1], d[2]});
    const Scalar limit = static_cast<Scalar>(travel);
    ExpectWithin<Scalar>(test, moving, fixed, limit, limit * (1 - static_cast<Scalar>(0x1p-19)),
                         limit);
  }
}

TYPED_TEST(TravelTests, BoxesThatTouchAcrossAZeroComponentSurvive) {
  using Scalar = TypeParam;
  const TravelTest<Scalar> test({0.0, -0.0, -1.0});
  const Box<Scalar> moving{{0, 0, 5}, {1, 1, 6}};
  ExpectWithin<Scalar>(test, moving, {{1, -1, 0}, {2, 0, 1}}, 4,
                       4 * (1 - static_cast<Scalar>(0x1p-19)), 4);
  const Scalar beyond = std::nextafter(Scalar{1}, Scalar{2});
  const Box<Scalar> beside{{beyond, 0, 0}, {2, 1, 1}};
  EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), beside, {0, 9}), 0u);
  EXPECT_EQ(Survivors<Scalar>(test, moving, Fourfold(beside), {0, 9}), 0u);
  // Before the start, and beyond the limit.
  EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), {{0, 0, 7}, {1, 1, 8}}, {0, 9}), 0u);
  EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), {{0, 0, 0}, {1, 1, 1}}, {0, 3}), 0u);
}

/// The moving box touches the fixed box from travel 4 to travel 6.
TYPED_TEST(TravelTests, BothEndsOfTheRangeCount) {
  using Scalar = TypeParam;
  const TravelTest<Scalar> test({0.0, 0.0, -1.0});
  const Box<Scalar> moving{{0, 0, 5}, {1, 1, 6}};
  const Box<Scalar> fixed{{0, 0, 0}, {1, 1, 1}};
  const Scalar margin = static_cast<Scalar>(0x1p-18);
  EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), fixed, {6, 9}), 15u);
  EXPECT_EQ(Survivors<Scalar>(test, moving, Fourfold(fixed), {6, 9}), 15u);
  EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), fixed, {6 + 6 * margin, 9}), 0u);
  EXPECT_EQ(Survivors<Scalar>(test, moving, Fourfold(fixed), {6 + 6 * margin, 9}), 0u);
  Scalar first = -1;
  Scalar last = -1;
  EXPECT_TRUE(test.CanTouch(moving, fixed, {0, 9}, first, last));
  EXPECT_LE(first, 4);
  EXPECT_GE(last, 6);
  EXPECT_LE(last, 6 + 6 * margin);
  EXPECT_FALSE(test.CanTouch(moving, fixed, {6 + 6 * margin, 9}, first, last));
  EXPECT_FALSE(test.CanTouch(moving, fixed, {0, 4 - 4 * margin}, first, last));
}

/// A range that begins at the least number leaves out boxes that part at zero, and no others.
TYPED_TEST(TravelTests, BoxesThatPartAtZeroAreOutsideAnyPositiveRange) {
  using Scalar = TypeParam;
  const Scalar least = std::numeric_limits<Scalar>::denorm_min();
  for (const double d : {1.0, -1.0, 0.75}) {
    const TravelTest<Scalar> test({0.0, 0.0, d});
    const Box<Scalar> moving =
        d > 0.0 ? Box<Scalar>{{0, 0, 1}, {1, 1, 2}} : Box<Scalar>{{0, 0, -1}, {1, 1, 0}};
    const Box<Scalar> fixed{{0, 0, 0}, {1, 1, 1}};
    EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), fixed, {0, 9}), 15u);
    EXPECT_EQ(Survivors<Scalar>(test, Fourfold(moving), fixed, {least, 9}), 0u);
    EXPECT_EQ(Survivors<Scalar>(test, moving, Fourfold(fixed), {least, 9}), 0u);
    Box<Scalar> pressed = moving;
    if (d > 0.0) {
      pressed.low[2] = std::nextafter(Scalar{1}, Scalar{0});
    } else {
      pressed.high[2] = static_cast<Scalar>(0x1p-100);
    }
    EXPECT_EQ(Survivors<Scalar>(test, Fourfold(pressed), fixed, {least, 9}), 15u);
    EXPECT_EQ(Survivors<Scalar>(test, pressed, Fourfold(fixed), {least, 9}), 15u);
  }
}

TYPED_TEST(TravelTests, EmptyLanesNeverSurvive) {
  using Scalar = TypeParam;
  const Box<Scalar> other{{-1, -1, -1}, {1, 1, 1}};
  const TravelRange<Scalar> all{0, Box<Scalar>::kFar};
  const Boxes<Scalar> none = Fourfold(Box<Scalar>::Empty());
  for (const Coord3& d : {Coord3{0.0, 0.0, 1.0}, Coord3{-0.5, 0.5, 0.75}}) {
    const TravelTest<Scalar> test(d);
    EXPECT_EQ(Survivors<Scalar>(test, none, other, all), 0u);
    EXPECT_EQ(Survivors<Scalar>(test, other, none, all), 0u);
  }
}

} // namespace
