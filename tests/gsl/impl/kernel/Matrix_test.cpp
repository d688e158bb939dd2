#include "kernel/Matrix.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"

namespace {

using gsl_kernel::Coord3;
using gsl_kernel::Matrix4;
using gsl_kernel::Quaternion;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;

constexpr Matrix4 kCounting = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
constexpr Matrix4 kIdentity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

void ExpectQuaternion(const Matrix4& m, double x, double y, double z, double w) {
  const Quaternion q = gsl_kernel::QuaternionOfRotation(m);
  EXPECT_EQ(q.x, static_cast<float>(x));
  EXPECT_EQ(q.y, static_cast<float>(y));
  EXPECT_EQ(q.z, static_cast<float>(z));
  EXPECT_EQ(q.w, static_cast<float>(w));
}

TEST(KernelMatrix, VectorsAreNotTranslatedAndPointsAre) {
  EXPECT_XYZ(gsl_kernel::TransformVector(kCounting, {1.0, 10.0, 100.0}), 321.0, 765.0, 1209.0);
  EXPECT_XYZ(gsl_kernel::TransformPoint(kCounting, {1.0, 10.0, 100.0}), 325.0, 773.0, 1221.0);
}

TEST(KernelMatrix, SumsRunFromLeftToRight) {
  // (2^53 + 1) + 1 loses both ones, 2^53 + (1 + 1) would not.
  const Matrix4 m = {{0x1p53, 1, 1, 0}, {1, 1, 0x1p53, 0}, {0, 0, 0, 0}, {0, 0, 0, 1}};
  EXPECT_XYZ(gsl_kernel::TransformVector(m, {1.0, 1.0, 1.0}), 0x1p53, 0x1p53 + 2.0, 0.0);
}

TEST(KernelMatrix, ProductAppliesTheSecondFirst) {
  const Matrix4 swapXy = {{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  Matrix4 out;
  for (auto& row : out)
    for (double& entry : row)
      entry = kSentinel;
  gsl_kernel::Product(kCounting, swapXy, out);
  const Matrix4 expected = {{2, 1, 3, 4}, {6, 5, 7, 8}, {10, 9, 11, 12}, {14, 13, 15, 16}};
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      EXPECT_EQ(out[r][c], expected[r][c]) << r << ", " << c;
  }
}

TEST(KernelMatrix, AxisRotationBlockTurnsRightHanded) {
  Matrix4 m = {};
  gsl_kernel::AxisRotationBlock({0.0, 0.0, 1.0}, 0.0, 1.0, m);
  EXPECT_XYZ(gsl_kernel::TransformVector(m, {1.0, 0.0, 0.0}), 0.0, 1.0, 0.0);
  EXPECT_XYZ(gsl_kernel::TransformVector(m, {0.0, 1.0, 0.0}), -1.0, 0.0, 0.0);
  gsl_kernel::AxisRotationBlock({1.0, 0.0, 0.0}, 0.0, 1.0, m);
  EXPECT_XYZ(gsl_kernel::TransformVector(m, {0.0, 1.0, 0.0}), 0.0, 0.0, 1.0);
  gsl_kernel::AxisRotationBlock({0.0, 1.0, 0.0}, 0.0, 1.0, m);
  EXPECT_XYZ(gsl_kernel::TransformVector(m, {0.0, 0.0, 1.0}), 1.0, 0.0, 0.0);
}

TEST(KernelMatrix, AxisRotationBlockLeavesItsAxis) {
  // A half turn about (0.6, 0.8, 0): 2 u u^T - 1.
  Matrix4 m = {};
  gsl_kernel::AxisRotationBlock({0.6, 0.8, 0.0}, -1.0, 0.0, m);
  EXPECT_XYZ_NEAR(gsl_kernel::TransformVector(m, {0.6, 0.8, 0.0}), 0.6, 0.8, 0.0, 1e-15);
  EXPECT_XYZ_NEAR(gsl_kernel::TransformVector(m, {0.8, -0.6, 0.0}), -0.8, 0.6, 0.0, 1e-15);
  EXPECT_EQ(m[2][2], -1.0);
}

TEST(KernelMatrix, QuaternionOfTheIdentityHasNoAxis) {
  ExpectQuaternion(kIdentity, 0.0, 0.0, 0.0, 1.0);
}

TEST(KernelMatrix, QuaternionOfHalfTurnsTakesTheLargestDiagonalEntry) {
  ExpectQuaternion({{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, 1, 0, 0, 0);
  ExpectQuaternion({{-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, 0, 1, 0, 0);
  ExpectQuaternion({{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, 0, 0, 1, 0);
}

TEST(KernelMatrix, QuaternionOfQuarterTurns) {
  const double half = std::sqrt(0.5);
  ExpectQuaternion({{1, 0, 0, 0}, {0, 0, -1, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}, half, 0, 0, half);
  ExpectQuaternion({{0, 0, 1, 0}, {0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 0, 1}}, 0, half, 0, half);
  ExpectQuaternion({{0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, 0, 0, half, half);
}

TEST(KernelMatrix, QuaternionTurnsAtATraceOfExactlyZero) {
  // Diagonal (0.25, 0.5, t), skew part (4, 0, 0) / 2: the first formula at t = -0.75, the second,
  // with Y the largest, one last place below it.
  const Matrix4 at = {{0.25, 0, 0, 0}, {0, 0.5, -2, 0}, {0, 2, -0.75, 0}, {0, 0, 0, 1}};
  ExpectQuaternion(at, 2.0, 0.0, 0.0, 0.5);
  const Matrix4 below = {{0.25, 0, 0, 0}, {0, 0.5, -2, 0}, {0, 2, Below(-0.75), 0}, {0, 0, 0, 1}};
  // s = sqrt(0.5 + 0.5 + 1): y = s / 2, and the others are 0 but for the skew part of X and Z.
  const Quaternion q = gsl_kernel::QuaternionOfRotation(below);
  EXPECT_EQ(q.y, static_cast<float>(std::sqrt(2.0) / 2.0));
  EXPECT_EQ(q.w, 0.0f);
}

TEST(KernelMatrix, QuaternionOfATieTakesTheEarlierAxis) {
  // Equal diagonal entries of -1: x = s / 2 with s = sqrt(-1 + 2 + 1).
  const Matrix4 m = {{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}};
  ExpectQuaternion(m, std::sqrt(2.0) / 2.0, 0.0, 0.0, 0.0);
}

TEST(KernelMatrix, QuaternionComparesTheDiagonalAlone) {
  // The largest diagonal entry is 0.25, less than an entry beside it: s = sqrt(0.25 + 1 + 1 + 1).
  const double s = std::sqrt(3.25);
  ExpectQuaternion({{-1, 0, 0, 0}, {1, 0.25, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, 0.5 / s, s / 2.0,
                   0.0, 0.0);
  ExpectQuaternion({{-1, 1, 0, 0}, {0, 0.25, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, 0.5 / s, s / 2.0,
                   0.0, 0.0);
  ExpectQuaternion({{-1, 0, 0, 0}, {1, -1, 0, 0}, {0, 0, 0.25, 0}, {0, 0, 0, 1}}, 0.0, 0.0, s / 2.0,
                   0.5 / s);
}

TEST(KernelMatrix, QuaternionOfNaNIsNaN) {
  Matrix4 m = {{kNaN, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  EXPECT_TRUE(std::isnan(gsl_kernel::QuaternionOfRotation(m).y));
}

TEST(KernelMatrix, RotationHasTheBitsOfTheThreeProducts) {
  RandomNumbers random(0x207A);
  const auto number = [&random] {
    const int kind = random.Below(12);
    if (kind == 0) return random.Hostile();
    return kind < 6 ? random.Below(3) - 1.0 : random.In(-3.0, 3.0);
  };
  for (long i = 0; i < Scaled(100000) && !testing::Test::HasFailure(); ++i) {
    const Coord3 fixed = {number(), number(), number()};
    const Coord3 axis = {number(), number(), number()};
    const double co = number(), si = number();
    Matrix4 products, rotation;
    gsl_kernel::RotationByProducts(fixed, axis, co, si, products);
    gsl_kernel::RotationAbout(fixed, axis, co, si, rotation);
    bool areSame = true;
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c)
        areSame &= numbers::SameBits(rotation[r][c], products[r][c]);
    }
    EXPECT_TRUE(areSame) << "case " << i;
  }
}

TEST(KernelMatrix, RotationTurnsAboutThePoint) {
  // A quarter turn about Z through (1, 2, 3): x' = 1 - (y - 2) and y' = 2 + (x - 1).
  const Matrix4 expected = {{0, -1, 0, 3}, {1, 0, 0, 1}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  const Coord3 z = {0.0, 0.0, 1.0}, fixed = {1.0, 2.0, 3.0};
  Matrix4 products, rotation;
  gsl_kernel::RotationByProducts(fixed, z, 0.0, 1.0, products);
  gsl_kernel::RotationAbout(fixed, z, 0.0, 1.0, rotation);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      EXPECT_EQ(products[r][c], expected[r][c]) << r << ", " << c;
      EXPECT_EQ(rotation[r][c], expected[r][c]) << r << ", " << c;
    }
  }
}

TEST(KernelMatrix, RotationWithInfinityIsNaNAsByTheProducts) {
  // Each product of infinity and 0 is NaN, and it is in every entry of its row or its column.
  Matrix4 rotation;
  gsl_kernel::RotationAbout({kInfinity, 0.0, 0.0}, {0.0, 0.0, 1.0}, 1.0, 0.0, rotation);
  EXPECT_TRUE(std::isnan(rotation[0][0]));
  EXPECT_TRUE(std::isnan(rotation[0][3]));
  EXPECT_TRUE(std::isnan(rotation[1][3]));
}

TEST(KernelMatrix, InverseTurnsBackWhatTheMatrixTurns) {
  // A quarter turn about Z, then a translation by (10, 20, 30).
  const Matrix4 m = {{0, -1, 0, 10}, {1, 0, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}};
  Matrix4 inverse = {{7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7}};
  gsl_kernel::InverseRigid(m, inverse);
  EXPECT_XYZ(gsl_kernel::TransformPoint(inverse, {10.0, 20.0, 30.0}), 0.0, 0.0, 0.0);
  EXPECT_XYZ(gsl_kernel::TransformPoint(inverse, {8.0, 21.0, 33.0}), 1.0, 2.0, 3.0);
  EXPECT_EQ(inverse[3][3], 1.0);
  for (int c = 0; c < 3; ++c)
    EXPECT_EQ(inverse[3][c], 0.0) << c;
}

} // namespace
