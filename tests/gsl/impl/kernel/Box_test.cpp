#include "kernel/Box.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"

namespace {

using gsl_kernel::Box;
using gsl_kernel::Matrix4;
using numbers::kNaN;

constexpr Matrix4 kIdentity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

void ExpectBox(const Box& box, double x0, double y0, double z0, double x1, double y1, double z1) {
  EXPECT_XYZ(box.min, x0, y0, z0);
  EXPECT_XYZ(box.max, x1, y1, z1);
}

TEST(KernelBox, EmptyBoxHasItsLimitsTheWrongWayRound) {
  ExpectBox(gsl_kernel::kEmptyBox, 0.0, 0.0, 0.0, -1.0, -1.0, -1.0);
}

TEST(KernelBox, GrowTakesTheFartherLimitOnEveryAxis) {
  Box box = {{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}};
  gsl_kernel::Grow(box, {{-1.0, 0.5, 0.0}, {0.5, 2.0, 1.0}});
  ExpectBox(box, -1.0, 0.0, 0.0, 1.0, 2.0, 1.0);
}

TEST(KernelBox, GrowPassesOverNaNAndKeepsNaN) {
  Box box = {{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}};
  gsl_kernel::Grow(box, {{kNaN, -2.0, -3.0}, {kNaN, 2.0, 3.0}});
  ExpectBox(box, 0.0, -2.0, -3.0, 1.0, 2.0, 3.0);
  Box nan = {{kNaN, 0.0, 0.0}, {kNaN, 1.0, 1.0}};
  gsl_kernel::Grow(nan, {{-5.0, -5.0, -5.0}, {5.0, 5.0, 5.0}});
  EXPECT_TRUE(std::isnan(nan.min.x));
  EXPECT_TRUE(std::isnan(nan.max.x));
  EXPECT_EQ(nan.min.y, -5.0);
}

TEST(KernelBox, TransformMovesAndTurns) {
  const Box box = {{0.0, 0.0, 0.0}, {2.0, 4.0, 8.0}};
  ExpectBox(TransformBox(box, kIdentity), 0.0, 0.0, 0.0, 2.0, 4.0, 8.0);
  // A quarter turn about Z, then a translation by (10, 20, 30): x' = 10 - y, y' = 20 + x.
  const Matrix4 turn = {{0, -1, 0, 10}, {1, 0, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}};
  ExpectBox(TransformBox(box, turn), 6.0, 20.0, 30.0, 10.0, 22.0, 38.0);
}

TEST(KernelBox, TransformHoldsEveryCornerOfATurnedBox) {
  // x' = x - y, y' = x + y: the corners of the square [-1, 1]^2 go to (0, -2), (2, 0), ...
  const Matrix4 diagonal = {{1, -1, 0, 0}, {1, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  const Box box = {{-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0}};
  ExpectBox(TransformBox(box, diagonal), -2.0, -2.0, -1.0, 2.0, 2.0, 1.0);
}

TEST(KernelBox, TransformGoesThroughTheCentreAndHalfTheSize) {
  // The centre of [2^-60, 1] rounds to 0.5, as does half the size: the lower limit becomes 0.
  const Box box = {{0x1p-60, 0.0, 0.0}, {1.0, 0.0, 0.0}};
  ExpectBox(TransformBox(box, kIdentity), 0.0, 0.0, 0.0, 1.0, 0.0, 0.0);
}

TEST(KernelBox, TransformOfABoxAtTheOriginKeepsTheZeroOfItsFirstCorner) {
  // A half turn about X: y' = -y and z' = -z. Every term of y' is -0 at the first corner,
  // (-1, 0, -1), and every term of z' is -0 at the first corner with z = 0.
  const Matrix4 turn = {{1, 0, 0, 0}, {0, -1, 0, -0.0}, {0, -0.0, -1, -0.0}, {0, 0, 0, 1}};
  const Box moved = gsl_kernel::TransformBox({{-1.0, 0.0, -1.0}, {0.0, 1.0, 0.0}}, turn);
  ExpectBox(moved, -1.0, -1.0, 0.0, 0.0, 0.0, 1.0);
  EXPECT_TRUE(std::signbit(moved.max.y));
  EXPECT_TRUE(std::signbit(moved.min.z));
}

TEST(KernelBox, TransformOfNaNIsNaNOnEveryAxis) {
  const Box moved = gsl_kernel::TransformBox({{kNaN, 0.0, 0.0}, {1.0, 2.0, 2.0}}, kIdentity);
  EXPECT_TRUE(std::isnan(moved.min.x));
  EXPECT_TRUE(std::isnan(moved.max.x));
  // Zero times NaN is NaN too.
  EXPECT_TRUE(std::isnan(moved.min.y));
}

void ExpectSameBits(const gsl_kernel::Coord3& a, const gsl_kernel::Coord3& b) {
  EXPECT_PRED2(numbers::SameBits, a.x, b.x);
  EXPECT_PRED2(numbers::SameBits, a.y, b.y);
  EXPECT_PRED2(numbers::SameBits, a.z, b.z);
}

TEST(KernelBox, TransformHasTheBitsOfTheEightCorners) {
  RandomNumbers random(0xB0C5);
  const auto number = [&random] {
    const int kind = random.Below(12);
    if (kind == 0) return random.Hostile();
    if (kind == 1) return -0.0;
    return kind < 6 ? random.Below(5) - 2.0 : random.In(-3.0, 3.0);
  };
  for (long i = 0; i < Scaled(200000) && !testing::Test::HasFailure(); ++i) {
    Matrix4 m;
    for (auto& row : m) {
      for (double& entry : row)
        entry = number();
    }
    const Box box = {{number(), number(), number()}, {number(), number(), number()}};
    const Box corners = gsl_kernel::TransformBoxByCorners(box, m);
    const Box moved = gsl_kernel::TransformBox(box, m);
    ExpectSameBits(moved.min, corners.min);
    ExpectSameBits(moved.max, corners.max);
  }
}

} // namespace
