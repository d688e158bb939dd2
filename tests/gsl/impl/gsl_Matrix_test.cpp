#include "gsl_Matrix.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

using numbers::Above;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kPi;
using numbers::kSentinel;

namespace {

/// Sixteen different entries, 1 to 16 row by row, flag unknown.
gsl_Matrix Counting() {
  gsl_Matrix m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      m.m[r][c] = 1.0 + 4 * r + c;
  }
  m.isIdentity = -1;
  return m;
}

gsl_Matrix Rotation(const gsl_Vector& axis, double angle) {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(), axis, angle);
  return m;
}

void ExpectEntries(const gsl_Matrix& m, const double (&expected)[4][4], double tol = 0.0) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      EXPECT_NEAR(m.m[r][c], expected[r][c], tol) << r << "," << c;
  }
}

constexpr double kIdentity[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

bool SameBits(const gsl_Matrix& a, const gsl_Matrix& b) {
  return std::memcmp(a.m, b.m, sizeof a.m) == 0 && a.isIdentity == b.isIdentity;
}

} // namespace

// ---- layout, identity, equality

TEST(GslMatrix, IsSixteenDoublesRowByRowAndTheFlag) {
  EXPECT_EQ(offsetof(gsl_Matrix, m), 0u);
  EXPECT_EQ(offsetof(gsl_Matrix, isIdentity), 128u);
  EXPECT_EQ(sizeof(gsl_Matrix), 136u);
  EXPECT_EQ(sizeof(gsl_Matrix::isIdentity), 4u);
  EXPECT_FALSE(std::is_polymorphic<gsl_Matrix>::value);
  EXPECT_TRUE(std::is_standard_layout<gsl_Matrix>::value);
  EXPECT_TRUE(std::is_trivially_copyable<gsl_Matrix>::value);
  gsl_Matrix m;
  EXPECT_EQ(&m.m[1][0] - &m.m[0][0], 4);
}

TEST(GslMatrix, DefaultIsTheIdentityWithTheFlagSet) {
  const gsl_Matrix m;
  ExpectEntries(m, kIdentity);
  EXPECT_EQ(m.isIdentity, 1);
}

TEST(GslMatrix, FillIdentitySetsEveryEntryAndTheFlag) {
  gsl_Matrix m = Counting();
  m.FillIdentity();
  ExpectEntries(m, kIdentity);
  EXPECT_EQ(m.isIdentity, 1);
}

TEST(GslMatrix, CopyTakesEntriesAndFlag) {
  for (const std::int32_t flag : {-1, 0, 1}) {
    gsl_Matrix m = Counting();
    m.isIdentity = flag;
    const gsl_Matrix copy(m);
    EXPECT_TRUE(SameBits(copy, m));
    gsl_Matrix assigned;
    assigned = m;
    EXPECT_TRUE(SameBits(assigned, m));
  }
}

TEST(GslMatrix, EqualityIsClosedAtAFixedTolerance) {
  const gsl_Matrix zero = [] {
    gsl_Matrix m;
    std::memset(m.m, 0, sizeof m.m);
    return m;
  }();
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      gsl_Matrix other(zero);
      for (const double sign : {1.0, -1.0}) {
        other.m[r][c] = sign * 0.001;
        EXPECT_TRUE(zero == other) << r << "," << c;
        EXPECT_FALSE(zero != other);
        other.m[r][c] = sign * Above(0.001);
        EXPECT_FALSE(zero == other) << r << "," << c;
        EXPECT_TRUE(zero != other);
      }
    }
  }
  gsl_Matrix far;
  far.m[0][3] = 0.0011;
  EXPECT_FALSE(gsl_Matrix() == far);
}

TEST(GslMatrix, EqualityUsesNoSettingAndNotTheFlag) {
  const ScopedSettings settings;
  settings->linearTolerance = settings->cosineTolerance = settings->zeroTolerance =
      settings->coarseTolerance = 100.0;
  gsl_Matrix a, b;
  b.m[2][1] = 0.5;
  EXPECT_FALSE(a == b);
  b.m[2][1] = 0.0;
  b.isIdentity = 0;
  EXPECT_TRUE(a == b);
}

TEST(GslMatrix, EqualsItselfAndNaN) {
  gsl_Matrix nan;
  nan.m[1][2] = kNaN;
  EXPECT_TRUE(nan == gsl_Matrix());
  gsl_Matrix infinite;
  infinite.m[1][2] = kInfinity;
  const gsl_Matrix& same = infinite;
  EXPECT_TRUE(infinite == same);
  EXPECT_FALSE(infinite == gsl_Matrix());
}

// ---- transforming

TEST(GslMatrix, TransformsAPointWithTheTranslationInColumnThree) {
  const gsl_Matrix m = Counting();
  gsl_Point p(1.0, 10.0, 100.0);
  const cls_Uid before = p.uid;
  m.Transform(p);
  EXPECT_XYZ(p, 325.0, 5.0 + 60.0 + 700.0 + 8.0, 9.0 + 100.0 + 1100.0 + 12.0);
  EXPECT_EQ(p.uid, before);
}

TEST(GslMatrix, TransformsAVectorWithoutTheTranslationAndMeasuresIt) {
  const gsl_Matrix m = Counting();
  gsl_Vector v(1.0, 10.0, 100.0);
  v.magnitude = kSentinel;
  m.Transform(v);
  EXPECT_XYZ(v, 321.0, 765.0, 1209.0);
  EXPECT_EQ(v.magnitude, gsl_Vector(321.0, 765.0, 1209.0).magnitude);
}

TEST(GslMatrix, TransformDoesNotUseRowThree) {
  gsl_Matrix m;
  for (int c = 0; c < 4; ++c)
    m.m[3][c] = kNaN;
  gsl_Point p(1.0, 2.0, 3.0);
  gsl_Vector v(1.0, 2.0, 3.0);
  m.Transform(p);
  m.Transform(v);
  EXPECT_XYZ(p, 1.0, 2.0, 3.0);
  EXPECT_XYZ(v, 1.0, 2.0, 3.0);
}

TEST(GslMatrix, TransformAddsFromLeftToRight) {
  gsl_Matrix m;
  m.m[0][0] = 1e16;
  m.m[0][1] = 1.0;
  m.m[0][2] = 0.0;
  m.m[0][3] = -1e16;
  gsl_Point p(1.0, 1.0, 1.0);
  m.Transform(p);
  EXPECT_EQ(p.x, 0.0);
}

TEST(GslMatrix, ConcatenateAppliesTheArgumentAfterwards) {
  gsl_Matrix a;
  a.SetTranslation(gsl_Vector(1.0, 0.0, 0.0));
  gsl_Matrix b = Rotation(gsl_Vector(0.0, 0.0, 1.0), kPi / 2);
  gsl_Matrix ab(a);
  ab.Concatenate(b);
  gsl_Point p(0.0, 0.0, 0.0);
  ab.Transform(p);
  EXPECT_XYZ_NEAR(p, 0.0, 1.0, 0.0, 1e-15);
  gsl_Matrix ba(b);
  ba.Concatenate(a);
  gsl_Point q(0.0, 0.0, 0.0);
  ba.Transform(q);
  EXPECT_XYZ_NEAR(q, 1.0, 0.0, 0.0, 1e-15);
}

TEST(GslMatrix, ConcatenateIsTheFullProductOfTheArgumentAndThis) {
  const gsl_Matrix a = Counting();
  gsl_Matrix o;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      o.m[r][c] = (r + 1) * (c == (r + 1) % 4 ? 1.0 : 0.0);
  }
  gsl_Matrix product(a);
  product.Concatenate(o);
  // Row r of the product is r + 1 times row r + 1 of a.
  ExpectEntries(product, {{5, 6, 7, 8}, {18, 20, 22, 24}, {39, 42, 45, 48}, {4, 8, 12, 16}});
  EXPECT_EQ(product.isIdentity, -1);
}

TEST(GslMatrix, WritingAnEntryLeavesTheFlagStale) {
  gsl_Matrix m;
  m.m[0][1] = 7.0;
  EXPECT_EQ(m.isIdentity, 1);
  EXPECT_TRUE(m.IsIdentity()) << "asked of the flag, not of the entries";
  m.isIdentity = -1;
  EXPECT_FALSE(m.IsIdentity());
}

TEST(GslMatrix, ConcatenateLeavesTheFlagUnknownEvenForIdentities) {
  gsl_Matrix m;
  m.Concatenate(gsl_Matrix());
  EXPECT_EQ(m.isIdentity, -1);
  EXPECT_TRUE(m.IsIdentity());
  m.isIdentity = 0;
  m.Concatenate(gsl_Matrix());
  EXPECT_EQ(m.isIdentity, -1);
}

TEST(GslMatrix, ConcatenateWithItselfSquares) {
  gsl_Matrix m;
  m.SetTranslation(gsl_Vector(1.0, 2.0, 3.0));
  m.Concatenate(m);
  EXPECT_XYZ(m.NewOrigin(), 2.0, 4.0, 6.0);
}

// ---- the identity flag

TEST(GslMatrixIsIdentity, AKnownFlagDecidesWithoutTheEntries) {
  gsl_Matrix m = Counting();
  m.isIdentity = 1;
  EXPECT_TRUE(m.IsIdentity());
  EXPECT_EQ(m.m[0][1], 2.0) << "nothing was snapped";
  gsl_Matrix exact;
  exact.isIdentity = 0;
  EXPECT_FALSE(exact.IsIdentity());
  EXPECT_EQ(exact.isIdentity, 0);
}

TEST(GslMatrixIsIdentity, ASetterThatChangesNothingMakesItComputeAgain) {
  gsl_Matrix m;
  m.SetTranslation(gsl_Vector(0.0, 0.0, 0.0));
  EXPECT_EQ(m.isIdentity, -1);
  EXPECT_TRUE(m.IsIdentity());
  EXPECT_EQ(m.isIdentity, 1);
}

TEST(GslMatrixIsIdentity, SnapsNearIdentitiesToTheExactOne) {
  gsl_Matrix m;
  m.m[0][1] = 1e-5;
  m.m[2][3] = -1e-5;
  m.m[1][1] = 1.0 + 1e-6;
  m.isIdentity = -1;
  const gsl_Matrix& view = m;
  EXPECT_TRUE(view.IsIdentity());
  ExpectEntries(m, kIdentity);
  EXPECT_EQ(m.isIdentity, 1);
}

TEST(GslMatrixIsIdentity, BoundsAreInclusiveForEveryEntryOfTheFirstThreeRows) {
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) {
      const double exact = r == c ? 1.0 : 0.0;
      const double low = exact - 1e-5, high = exact + 1e-5;
      for (const double inside : {low, high}) {
        gsl_Matrix m;
        m.m[r][c] = inside;
        m.isIdentity = -1;
        EXPECT_TRUE(m.IsIdentity()) << r << "," << c;
      }
      for (const double outside : {Below(low), Above(high), exact + 1.0001e-5}) {
        gsl_Matrix m;
        m.m[r][c] = outside;
        m.isIdentity = -1;
        EXPECT_FALSE(m.IsIdentity()) << r << "," << c;
        EXPECT_EQ(m.isIdentity, 0);
        EXPECT_EQ(m.m[r][c], outside) << "a matrix that is not the identity stays as it is";
      }
    }
  }
}

TEST(GslMatrixIsIdentity, RowThreeIsNotCheckedButSnapped) {
  gsl_Matrix m;
  m.m[3][0] = 7.0;
  m.m[3][3] = 2.0;
  m.isIdentity = -1;
  EXPECT_TRUE(m.IsIdentity());
  ExpectEntries(m, kIdentity);
}

TEST(GslMatrixIsIdentity, NaNIsNotTheIdentity) {
  gsl_Matrix m;
  m.m[1][3] = kNaN;
  m.isIdentity = -1;
  EXPECT_FALSE(m.IsIdentity());
  EXPECT_EQ(m.isIdentity, 0);
}

TEST(GslMatrixIsIdentity, UsesNoSetting) {
  const ScopedSettings settings;
  settings->linearTolerance = settings->cosineTolerance = settings->zeroTolerance =
      settings->coarseTolerance = 100.0;
  gsl_Matrix m;
  m.m[0][1] = 0.5;
  m.isIdentity = -1;
  EXPECT_FALSE(m.IsIdentity());
}

// ---- setters and getters

TEST(GslMatrix, SettersWriteTheirEntriesAndForgetTheFlag) {
  const gsl_Vector v(-1.0, -2.0, -3.0);
  for (const std::int32_t flag : {0, 1}) {
    gsl_Matrix translation = Counting();
    translation.isIdentity = flag;
    translation.SetTranslation(v);
    ExpectEntries(translation, {{1, 2, 3, -1}, {5, 6, 7, -2}, {9, 10, 11, -3}, {13, 14, 15, 16}});
    EXPECT_EQ(translation.isIdentity, -1);

    gsl_Matrix row = Counting();
    row.isIdentity = flag;
    row.SetRow(1, v);
    ExpectEntries(row, {{1, 2, 3, 4}, {-1, -2, -3, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}});
    EXPECT_EQ(row.isIdentity, -1);

    gsl_Matrix column = Counting();
    column.isIdentity = flag;
    column.SetColumn(1, v);
    ExpectEntries(column, {{1, -1, 3, 4}, {5, -2, 7, 8}, {9, -3, 11, 12}, {13, 14, 15, 16}});
    EXPECT_EQ(column.isIdentity, -1);

    gsl_Matrix axes = Counting();
    axes.isIdentity = flag;
    axes.SetRotationVectors(v, v, v);
    EXPECT_EQ(axes.isIdentity, -1);
  }
}

TEST(GslMatrix, SetRowAndColumnReachTheFourthOnes) {
  gsl_Matrix m = Counting();
  m.SetRow(3, gsl_Vector(-1.0, -2.0, -3.0));
  m.SetColumn(3, gsl_Vector(-4.0, -5.0, -6.0));
  ExpectEntries(m, {{1, 2, 3, -4}, {5, 6, 7, -5}, {9, 10, 11, -6}, {-1, -2, -3, 16}});
}

TEST(GslMatrix, GetTranslationIsAFreshVector) {
  gsl_Vector t(9.0, 9.0, 9.0);
  gsl_Matrix m;
  m.SetTranslation(gsl_Vector(2.0, 3.0, 6.0));
  m.GetTranslation(t);
  EXPECT_XYZ(t, 2.0, 3.0, 6.0);
  EXPECT_EQ(t.magnitude, 7.0);
}

TEST(GslMatrix, SetRotationVectorsDividesByTheirMagnitudes) {
  gsl_Matrix m = Counting();
  gsl_Vector stale(0.0, 0.0, 8.0);
  stale.magnitude = 2.0;
  m.SetRotationVectors(gsl_Vector(3.0, 0.0, 4.0), stale, gsl_Vector(0.0, -2.0, 0.0));
  ExpectEntries(m, {{0.6, 0, 0, 4}, {0, 0, -1, 8}, {0.8, 4, 0, 12}, {13, 14, 15, 16}});
}

TEST(GslMatrix, SetRotationVectorsWritesZeroForAMagnitudeOfExactlyZero) {
  gsl_Matrix m;
  gsl_Vector noLength(5.0, 6.0, 7.0);
  noLength.magnitude = 0.0;
  m.SetRotationVectors(gsl_Vector(0.0, 0.0, 0.0), noLength, gsl_Vector(0.0, 0.0, 1e-100));
  ExpectEntries(m, {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
}

TEST(GslMatrix, SetRotationVectorsDoesNotCheckOrthogonality) {
  gsl_Matrix m;
  const gsl_Vector x(2.0, 0.0, 0.0);
  m.SetRotationVectors(x, x, x);
  ExpectEntries(m, {{1, 1, 1, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 1}});
}

TEST(GslMatrix, AsArrayCopiesRowByRow) {
  const gsl_Matrix m = Counting();
  double out[4][4] = {};
  m.AsArray(out);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      EXPECT_EQ(out[r][c], 1.0 + 4 * r + c);
  }
}

TEST(GslMatrix, NewOriginAndAxesAreTheColumns) {
  gsl_Matrix m = Counting();
  EXPECT_XYZ(m.NewOrigin(), 4.0, 8.0, 12.0);
  EXPECT_XYZ(m.NewXAxis(), 1.0, 5.0, 9.0);
  EXPECT_XYZ(m.NewYAxis(), 2.0, 6.0, 10.0);
  EXPECT_XYZ(m.NewZAxis(), 3.0, 7.0, 11.0);
  for (unsigned int c = 0; c < 3; ++c)
    EXPECT_XYZ(m.Column(c), c + 1.0, c + 5.0, c + 9.0);
  EXPECT_EQ(m.NewXAxis().magnitude, std::sqrt(1.0 + 25.0 + 81.0));
  EXPECT_NE(m.NewOrigin().uid, m.NewOrigin().uid);
}

// ---- angles

TEST(GslMatrixRotationAngles, OfTheIdentityAreZero) {
  double a = kSentinel, b = kSentinel, c = kSentinel;
  gsl_Matrix().GetRotationAngles(a, b, c);
  EXPECT_EQ(a, 0.0);
  EXPECT_EQ(b, 0.0);
  EXPECT_EQ(c, 0.0);
}

TEST(GslMatrixRotationAngles, AreAboutFixedAxesXThenYThenZ) {
  gsl_Matrix m = Rotation(gsl_Vector(1.0, 0.0, 0.0), 0.3);
  m.Concatenate(Rotation(gsl_Vector(0.0, 1.0, 0.0), -0.7));
  m.Concatenate(Rotation(gsl_Vector(0.0, 0.0, 1.0), 2.5));
  double a = 0.0, b = 0.0, c = 0.0;
  m.GetRotationAngles(a, b, c);
  EXPECT_NEAR(a, 0.3, 1e-14);
  EXPECT_NEAR(b, -0.7, 1e-14);
  EXPECT_NEAR(c, 2.5, 1e-14);
}

TEST(GslMatrixRotationAngles, AQuarterTurnAboutYIsGimbalLock) {
  double a = kSentinel, b = kSentinel, c = kSentinel;
  Rotation(gsl_Vector(0.0, 1.0, 0.0), kPi / 2).GetRotationAngles(a, b, c);
  EXPECT_NEAR(a, 0.0, 1e-15);
  EXPECT_NEAR(b, kPi / 2, 1e-15);
  EXPECT_EQ(c, 0.0);
}

TEST(GslMatrixRotationAngles, GimbalLockPutsTheRemainingAngleAboutX) {
  // At b = pi / 2 only the difference of the other two angles is known, here 0.4 - 0.1.
  gsl_Matrix m = Rotation(gsl_Vector(1.0, 0.0, 0.0), 0.4);
  m.Concatenate(Rotation(gsl_Vector(0.0, 1.0, 0.0), kPi / 2));
  m.Concatenate(Rotation(gsl_Vector(0.0, 0.0, 1.0), 0.1));
  double a = kSentinel, b = kSentinel, c = kSentinel;
  m.GetRotationAngles(a, b, c);
  EXPECT_NEAR(a, 0.3, 1e-14);
  EXPECT_NEAR(b, kPi / 2, 1e-7);
  EXPECT_EQ(c, 0.0);
}

TEST(GslMatrixRotationAngles, GimbalLockLimitIsStrict) {
  const double limit = 0x1p-19;
  EXPECT_EQ(limit, 1.9073486328125e-6);
  for (const bool column : {false, true}) {
    gsl_Matrix m;
    m.m[2][1] = 3.0;
    m.m[2][2] = 1.0;
    m.m[1][2] = 0.0;
    m.m[1][1] = 1.0;
    double& entry = column ? m.m[1][0] : m.m[0][0];
    m.m[0][0] = m.m[1][0] = 0.0;
    double a = 0.0, b = 0.0, c = 0.0;
    entry = limit;
    m.GetRotationAngles(a, b, c);
    EXPECT_EQ(a, 0.0) << "locked: from m12 and m11";
    EXPECT_EQ(c, 0.0);
    entry = Above(limit);
    m.GetRotationAngles(a, b, c);
    EXPECT_EQ(a, std::atan2(3.0, 1.0));
    EXPECT_EQ(c, column ? kPi / 2 : 0.0);
  }
}

RC_GTEST_PROP(GslMatrixRotationAngles, ComposeTheSameRotationAgain, ()) {
  const auto angle = [] { return *rc::gen::inRange(-1500, 1500) / 1000.0; };
  const double a = 2.0 * angle(), b = angle(), c = 2.0 * angle();
  gsl_Matrix m = Rotation(gsl_Vector(1.0, 0.0, 0.0), a);
  m.Concatenate(Rotation(gsl_Vector(0.0, 1.0, 0.0), b));
  m.Concatenate(Rotation(gsl_Vector(0.0, 0.0, 1.0), c));
  double a2 = 0.0, b2 = 0.0, c2 = 0.0;
  m.GetRotationAngles(a2, b2, c2);
  RC_ASSERT(std::fabs(a2 - a) < 1e-10);
  RC_ASSERT(std::fabs(b2 - b) < 1e-10);
  RC_ASSERT(std::fabs(c2 - c) < 1e-10);
}

// ---- inverse

TEST(GslMatrixInverse, OfAFlaggedIdentityIsTheIdentityUnseen) {
  gsl_Matrix m = Counting();
  m.isIdentity = 1;
  const gsl_Matrix inverse = m.InverseRigidTransform();
  ExpectEntries(inverse, kIdentity);
  EXPECT_EQ(inverse.isIdentity, 1);
}

TEST(GslMatrixInverse, OfAnUnflaggedIdentityTakesTheGeneralPath) {
  for (const std::int32_t flag : {-1, 0}) {
    gsl_Matrix m;
    m.isIdentity = flag;
    const gsl_Matrix inverse = m.InverseRigidTransform();
    ExpectEntries(inverse, kIdentity);
    EXPECT_EQ(inverse.isIdentity, -1);
    EXPECT_EQ(m.isIdentity, flag);
  }
}

TEST(GslMatrixInverse, TransposesAndTurnsTheTranslationBack) {
  const gsl_Matrix m = Counting();
  const gsl_Matrix inverse = m.InverseRigidTransform();
  // Translation: rows of the transpose times (-4, -8, -12).
  ExpectEntries(inverse, {{1, 5, 9, -4.0 - 40.0 - 108.0},
                          {2, 6, 10, -8.0 - 48.0 - 120.0},
                          {3, 7, 11, -12.0 - 56.0 - 132.0},
                          {0, 0, 0, 1}});
  EXPECT_EQ(inverse.isIdentity, -1);
}

RC_GTEST_PROP(GslMatrixInverse, UndoesARigidTransform, ()) {
  const auto number = [] { return *rc::gen::inRange(-1000, 1000) / 64.0; };
  const gsl_Vector axis(number(), number(), number());
  RC_PRE(axis.magnitude > 0.1);
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(number(), number(), number()), axis, number());
  const gsl_Point p(number(), number(), number());
  gsl_Point moved(p);
  m.Transform(moved);
  m.InverseRigidTransform().Transform(moved);
  RC_ASSERT(moved.GetDistance(p) < 1e-10);
}

// ---- rotation about an axis

TEST(GslMatrixAxisRotation, TurnsRightHandedAboutTheAxis) {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0), kPi / 2);
  gsl_Point p(0.0, 0.0, 0.0);
  m.Transform(p);
  EXPECT_XYZ_NEAR(p, 1.0, -1.0, 0.0, 1e-15);
  EXPECT_EQ(m.isIdentity, -1);
}

TEST(GslMatrixAxisRotation, KeepsTheAxisInPlace) {
  const gsl_Point on(1.0, 2.0, 3.0);
  const gsl_Vector axis(2.0, -3.0, 6.0);
  gsl_Matrix m;
  m.AxisRotation(on, axis, 1.234);
  gsl_Point p = on + axis * 5.0;
  m.Transform(p);
  EXPECT_XYZ_NEAR(p, 11.0, -13.0, 33.0, 1e-13);
}

TEST(GslMatrixAxisRotation, FollowsTheFormulaOfTheUnitAxis) {
  // Unit axis (2, 3, 6) / 7 and a half turn: 2 u u^T - 1.
  const gsl_Matrix m = Rotation(gsl_Vector(4.0, 6.0, 12.0), kPi);
  ExpectEntries(m,
                {{8.0 / 49 - 1, 12.0 / 49, 24.0 / 49, 0},
                 {12.0 / 49, 18.0 / 49 - 1, 36.0 / 49, 0},
                 {24.0 / 49, 36.0 / 49, 72.0 / 49 - 1, 0},
                 {0, 0, 0, 1}},
                1e-15);
  const gsl_Matrix x = Rotation(gsl_Vector(1.0, 0.0, 0.0), 0.5);
  ExpectEntries(x,
                {{1, 0, 0, 0},
                 {0, std::cos(0.5), -std::sin(0.5), 0},
                 {0, std::sin(0.5), std::cos(0.5), 0},
                 {0, 0, 0, 1}},
                1e-16);
  const gsl_Matrix y = Rotation(gsl_Vector(0.0, 1.0, 0.0), 0.5);
  ExpectEntries(y,
                {{std::cos(0.5), 0, std::sin(0.5), 0},
                 {0, 1, 0, 0},
                 {-std::sin(0.5), 0, std::cos(0.5), 0},
                 {0, 0, 0, 1}},
                1e-16);
}

TEST(GslMatrixAxisRotation, ReplacesTheWholeMatrix) {
  gsl_Matrix m = Counting();
  m.AxisRotation(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0), 0.0);
  ExpectEntries(m, kIdentity);
}

TEST(GslMatrixAxisRotation, AShortAxisLeavesTheIdentityStrictly) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  gsl_Matrix m = Counting();
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 0.0), 1.0);
  ExpectEntries(m, kIdentity);
  EXPECT_EQ(m.isIdentity, 1);
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, Below(tol)), 1.0);
  EXPECT_EQ(m.isIdentity, 1);
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, tol), 1.0);
  EXPECT_EQ(m.isIdentity, -1);
  EXPECT_NEAR(m.m[0][0], std::cos(1.0), 1e-15);
}

TEST(GslMatrixAxisRotation, ReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  gsl_Matrix m;
  settings->linearTolerance = Above(2.0);
  m.AxisRotation(gsl_Point(), gsl_Vector(0.0, 0.0, 2.0), 1.0);
  EXPECT_EQ(m.isIdentity, 1);
  settings->linearTolerance = 2.0;
  m.AxisRotation(gsl_Point(), gsl_Vector(0.0, 0.0, 2.0), 1.0);
  EXPECT_EQ(m.isIdentity, -1);
}

TEST(GslMatrixAxisRotation, LeavesTheCallersAxis) {
  const gsl_Vector axis(0.0, 0.0, 5.0);
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(), axis, 1.0);
  EXPECT_EQ(axis.z, 5.0);
  EXPECT_EQ(axis.magnitude, 5.0);
}

// ---- axis of a rotation

namespace {

struct AxisAngle {
  gsl_Point p{kSentinel, kSentinel, kSentinel};
  gsl_Vector axis{kSentinel, kSentinel, kSentinel};
  double angle = kSentinel;

  explicit AxisAngle(const gsl_Matrix& m) { m.GetAxisRotation(p, axis, angle); }
};

} // namespace

TEST(GslMatrixGetAxisRotation, OfTheIdentityIsAZeroAngleAndTheZeroAxis) {
  const AxisAngle r{gsl_Matrix()};
  EXPECT_EQ(r.angle, 0.0);
  EXPECT_XYZ(r.axis, 0.0, 0.0, 0.0);
  EXPECT_EQ(r.axis.magnitude, 0.0);
  EXPECT_XYZ(r.p, 0.0, 0.0, 0.0);
}

TEST(GslMatrixGetAxisRotation, RecoversAxisAndAngleToSinglePrecision) {
  for (const double angle : {0.1, 1.0, 2.0, 3.0, 3.14}) {
    const AxisAngle r(Rotation(gsl_Vector(2.0, -3.0, 6.0), angle));
    EXPECT_NEAR(r.angle, angle, 1e-6);
    EXPECT_XYZ_NEAR(r.axis, 2.0 / 7, -3.0 / 7, 6.0 / 7, 1e-6);
  }
}

TEST(GslMatrixGetAxisRotation, BothSensesOfTurningHaveAPositiveAngle) {
  const AxisAngle r(Rotation(gsl_Vector(0.0, 0.0, 1.0), -0.5));
  EXPECT_NEAR(r.angle, 0.5, 1e-7);
  EXPECT_XYZ_NEAR(r.axis, 0.0, 0.0, -1.0, 1e-7);
}

TEST(GslMatrixGetAxisRotation, AnglesAbovePiComeFromANegativeTrace) {
  // This turns back by 3 about X. The trace is negative, X is the largest entry, and w is negative.
  const AxisAngle r(Rotation(gsl_Vector(1.0, 0.0, 0.0), -3.0));
  EXPECT_NEAR(r.angle, 2.0 * kPi - 3.0, 1e-6);
  EXPECT_XYZ_NEAR(r.axis, 1.0, 0.0, 0.0, 1e-6);
}

TEST(GslMatrixGetAxisRotation, HalfTurnsTakeTheLargestDiagonal) {
  const gsl_Vector axes[] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0},
                             {6.0, 2.0, 3.0}, {2.0, 6.0, 3.0}, {2.0, 3.0, 6.0}};
  for (const gsl_Vector& axis : axes) {
    const gsl_Vector u = axis.NormalizedCopy();
    const AxisAngle r(Rotation(axis, kPi));
    EXPECT_NEAR(r.angle, kPi, 1e-6);
    EXPECT_XYZ_NEAR(r.axis, u.x, u.y, u.z, 1e-6);
  }
}

TEST(GslMatrixGetAxisRotation, TiesOfTheDiagonalKeepTheEarlierIndex) {
  // With these entries the three cases have different axes: with index 0, x = s / 2.
  gsl_Matrix m;
  m.m[0][0] = m.m[1][1] = m.m[2][2] = -1.0;
  m.m[3][3] = 1.0;
  m.m[0][1] = m.m[1][0] = 1.0;
  // s = sqrt(-1 + 2 + 1) = sqrt(2): x = 0.707.., y = 2 * 0.353.. and z = 0.
  const AxisAngle first(m);
  EXPECT_XYZ_NEAR(first.axis, std::sqrt(0.5), std::sqrt(0.5), 0.0, 1e-6);
  m.m[1][1] = m.m[2][2] = -0.5;
  m.m[0][1] = m.m[1][0] = 0.0;
  m.m[1][2] = m.m[2][1] = 1.0;
  // Index 1: s = sqrt(-0.5 + 1.5 + 1); y = s / 2 = z.
  const AxisAngle second(m);
  EXPECT_XYZ_NEAR(second.axis, 0.0, std::sqrt(0.5), std::sqrt(0.5), 1e-6);
}

TEST(GslMatrixGetAxisRotation, ATraceOfExactlyZeroTakesTheFirstForm) {
  // A third of a turn about (1, 1, 1): a cyclic permutation with trace 0.
  gsl_Matrix m;
  m.SetRow(0, gsl_Vector(0.0, 0.0, 1.0));
  m.SetRow(1, gsl_Vector(1.0, 0.0, 0.0));
  m.SetRow(2, gsl_Vector(0.0, 1.0, 0.0));
  const AxisAngle r(m);
  // w = 1/2 and x = y = z = 1/2 exactly.
  EXPECT_NEAR(r.angle, 2.0 * kPi / 3.0, 1e-7);
  EXPECT_XYZ_NEAR(r.axis, 1.0 / std::sqrt(3.0), 1.0 / std::sqrt(3.0), 1.0 / std::sqrt(3.0), 1e-7);
}

TEST(GslMatrixGetAxisRotation, IsHeldInSinglePrecision) {
  const AxisAngle r(Rotation(gsl_Vector(2.0, -3.0, 6.0), 1.0));
  EXPECT_EQ(r.axis.x, static_cast<double>(static_cast<float>(r.axis.x)));
  EXPECT_EQ(r.axis.y, static_cast<double>(static_cast<float>(r.axis.y)));
  EXPECT_EQ(r.axis.z, static_cast<double>(static_cast<float>(r.axis.z)));
  EXPECT_NE(r.angle, 1.0);
  // Entries that are equal in single precision have the same result.
  gsl_Matrix a;
  a.m[1][0] = 0.25;
  a.m[0][1] = -0.25;
  gsl_Matrix b(a);
  b.m[1][0] = Above(0.25);
  const AxisAngle ra(a), rb(b);
  EXPECT_EQ(ra.angle, rb.angle);
}

TEST(GslMatrixGetAxisRotation, ScalesByTheLastEntry) {
  // About Z, m33 = 4: s = sqrt(3 + 4), w = s / 2, (x, y, z) = 0.5 / s * (0, 0, 2); all halved.
  const double s = std::sqrt(7.0);
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    gsl_Matrix m;
    m.m[3][3] = 4.0;
    m.m[j][i] = 1.0;
    m.m[i][j] = -1.0;
    const AxisAngle r(m);
    EXPECT_NEAR(r.angle, 2.0 * std::atan2(1.0 / s / 2.0, s / 4.0), 1e-6) << k;
    EXPECT_XYZ_NEAR(r.axis, k == 0 ? 1.0 : 0.0, k == 1 ? 1.0 : 0.0, k == 2 ? 1.0 : 0.0, 1e-7);
  }
}

TEST(GslMatrixGetAxisRotation, ANegativeLastEntryHasNoRootAtAnyTranslation) {
  for (const double x : {0.0, 1.0, -1.0}) {
    gsl_Matrix m;
    m.SetTranslation(gsl_Vector(x, 0.0, 0.0));
    m.m[1][0] = 1.0;
    m.m[0][1] = -1.0;
    m.m[3][3] = -1.0;
    const AxisAngle r(m);
    EXPECT_TRUE(std::isnan(r.angle)) << x;
    EXPECT_XYZ(r.axis, 0.0, 0.0, 0.0);
  }
}

TEST(GslMatrixGetAxisRotation, AxisNeedsAnAngleStrictlyAboveTheCosineTolerance) {
  const ScopedSettings settings;
  const gsl_Matrix m = Rotation(gsl_Vector(0.0, 0.0, 1.0), 0.5);
  const double angle = AxisAngle(m).angle;
  settings->cosineTolerance = angle;
  EXPECT_XYZ(AxisAngle(m).axis, 0.0, 0.0, 0.0);
  EXPECT_EQ(AxisAngle(m).angle, angle);
  settings->cosineTolerance = Below(angle);
  EXPECT_XYZ(AxisAngle(m).axis, 0.0, 0.0, 1.0);
}

TEST(GslMatrixGetAxisRotation, NaNInTheRotationMakesTheAngleNaNAndTheAxisZero) {
  for (int entry = 0; entry < 9; ++entry) {
    gsl_Matrix m;
    m.SetTranslation(gsl_Vector(1.0, 2.0, 3.0));
    m.m[entry / 3][entry % 3] = kNaN;
    gsl_Point p;
    gsl_Vector axis(kSentinel, kSentinel, kSentinel);
    double angle = kSentinel;
    m.GetAxisRotation(p, axis, angle);
    EXPECT_TRUE(std::isnan(angle));
    EXPECT_XYZ(axis, 0.0, 0.0, 0.0);
    EXPECT_EQ(axis.magnitude, 0.0);
    EXPECT_XYZ(p, 1.0, 2.0, 3.0);
  }
}

TEST(GslMatrixGetAxisRotation, PointIsTheTranslationNotAPointOnTheAxis) {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(5.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0), kPi);
  gsl_Point p(kSentinel, kSentinel, kSentinel);
  const cls_Uid before = p.uid;
  gsl_Vector axis;
  double angle = 0.0;
  m.GetAxisRotation(p, axis, angle);
  EXPECT_XYZ_NEAR(p, 10.0, 0.0, 0.0, 1e-14);
  EXPECT_NE(p.uid, before);
  EXPECT_FALSE(p.uid.IsNull());
  const cls_Uid first = p.uid;
  m.GetAxisRotation(p, axis, angle);
  EXPECT_NE(p.uid, first) << "a fresh identity at every call";
}

RC_GTEST_PROP(GslMatrixGetAxisRotation, MakesTheSameMatrixAgain, ()) {
  const auto number = [] { return *rc::gen::inRange(-1000, 1000) / 64.0; };
  const gsl_Vector axis(number(), number(), number());
  RC_PRE(axis.magnitude > 0.1);
  const gsl_Matrix m = Rotation(axis, number());
  const AxisAngle r(m);
  RC_PRE(r.angle > 1e-3);
  const gsl_Matrix again = Rotation(r.axis, r.angle);
  for (int row = 0; row < 3; ++row) {
    for (int c = 0; c < 3; ++c)
      RC_ASSERT(std::fabs(again.m[row][c] - m.m[row][c]) < 1e-5);
  }
}

// ---- bad input

TEST(GslMatrix, HostileNumbersNeverCrash) {
  const std::uint64_t seed = 23;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  RandomNumbers random(seed);
  for (int round = 0; round < 20000; ++round) {
    gsl_Matrix m, o;
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        m.m[r][c] = random.Hostile();
        o.m[r][c] = random.Below(3) - 1.0;
      }
    }
    m.isIdentity = o.isIdentity = -1;
    const gsl_Matrix inverse = m.InverseRigidTransform();
    EXPECT_NE(m == o, m != o);
    double a = 0.0, b = 0.0, c = 0.0;
    m.GetRotationAngles(a, b, c);
    gsl_Point p(random.Hostile(), random.Hostile(), random.Hostile());
    gsl_Vector v(random.Hostile(), random.Hostile(), random.Hostile());
    m.Transform(p);
    m.Transform(v);
    m.GetAxisRotation(p, v, a);
    o.GetAxisRotation(p, v, a);
    o.Concatenate(m);
    o.Concatenate(inverse);
    EXPECT_EQ(m.IsIdentity(), m.isIdentity == 1);
    m.SetRotationVectors(v, v, v);
    m.AxisRotation(p, v, random.Hostile());
  }
}
