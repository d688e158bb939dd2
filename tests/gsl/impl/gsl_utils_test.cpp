#include "gsl_utils.h"

#include "Numbers.h"
#include "ScopedSettings.h"
#include "gsl_utils_private.h"
#include "nex_AssertException.h"
#include "omi_gettimecounter.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>

using numbers::Above;
using numbers::Below;
using numbers::Bits;
using numbers::kDenormal;
using numbers::kInfinity;
using numbers::kLargest;
using numbers::kNaN;

// ---- gsl_Util

TEST(GslUtil, IsElevenDoublesInTheDocumentedOrder) {
  EXPECT_EQ(sizeof(gsl_Util), 11 * sizeof(double));
  EXPECT_EQ(offsetof(gsl_Util, linearTolerance), 0u);
  EXPECT_EQ(offsetof(gsl_Util, zeroTolerance), 8u);
  EXPECT_EQ(offsetof(gsl_Util, cosineTolerance), 16u);
  EXPECT_EQ(offsetof(gsl_Util, coarseTolerance), 24u);
  EXPECT_EQ(offsetof(gsl_Util, reservedSetting), 32u);
  EXPECT_EQ(offsetof(gsl_Util, displayAngleCoarse), 40u);
  EXPECT_EQ(offsetof(gsl_Util, displayAngleMedium), 48u);
  EXPECT_EQ(offsetof(gsl_Util, displayFactor), 56u);
  EXPECT_EQ(offsetof(gsl_Util, displayAngleFine), 64u);
  EXPECT_EQ(offsetof(gsl_Util, displayScale), 72u);
  EXPECT_EQ(offsetof(gsl_Util, startTime), 80u);
  EXPECT_FALSE(std::is_polymorphic<gsl_Util>::value);
  EXPECT_TRUE(std::is_standard_layout<gsl_Util>::value);
  EXPECT_TRUE(std::is_trivially_copyable<gsl_Util>::value);
}

TEST(GslUtil, DefaultsAreTheDocumentedOnes) {
  const gsl_Util settings;
  EXPECT_EQ(settings.linearTolerance, 1e-6);
  EXPECT_EQ(settings.zeroTolerance, 1e-12);
  EXPECT_EQ(settings.cosineTolerance, 1e-10);
  EXPECT_EQ(settings.coarseTolerance, 1e-4);
  EXPECT_EQ(settings.displayScale, 1.0);
}

TEST(GslUtil, DisplaySettingsAreAHalvingSeries) {
  const gsl_Util settings;
  EXPECT_EQ(settings.displayAngleCoarse, 45.0);
  EXPECT_EQ(settings.displayAngleMedium, settings.displayAngleCoarse / 2.0);
  EXPECT_EQ(settings.displayFactor, settings.displayAngleMedium / 2.0);
  EXPECT_EQ(settings.displayAngleFine, settings.displayFactor / 2.0);
}

TEST(GslUtil, ConstructorLeavesTheReservedSettingAsTheStorageHeldIt) {
  alignas(gsl_Util) unsigned char storage[sizeof(gsl_Util)];
  std::memset(storage, 0x5A, sizeof storage);
  ::new (static_cast<void*>(storage)) gsl_Util;
  for (std::size_t i = 0; i < sizeof(double); ++i) {
    EXPECT_EQ(storage[offsetof(gsl_Util, reservedSetting) + i], 0x5A);
  }
}

TEST(GslUtil, StartTimeIsTheCounterAtConstruction) {
  const double before = omi_gettimecounter();
  const gsl_Util settings;
  const double after = omi_gettimecounter();
  EXPECT_LE(before, settings.startTime);
  EXPECT_LE(settings.startTime, after);
}

TEST(GslUtil, SetOldDisplayFactorChangesThatFieldAlone) {
  gsl_Util settings;
  const double start = settings.startTime;
  settings.SetOldDisplayFactor(true);
  EXPECT_EQ(settings.displayFactor, 15.0);
  settings.SetOldDisplayFactor(false);
  EXPECT_EQ(settings.displayFactor, 11.25);
  EXPECT_EQ(settings.linearTolerance, 1e-6);
  EXPECT_EQ(settings.zeroTolerance, 1e-12);
  EXPECT_EQ(settings.cosineTolerance, 1e-10);
  EXPECT_EQ(settings.coarseTolerance, 1e-4);
  EXPECT_EQ(settings.displayAngleCoarse, 45.0);
  EXPECT_EQ(settings.displayAngleMedium, 22.5);
  EXPECT_EQ(settings.displayAngleFine, 5.625);
  EXPECT_EQ(settings.displayScale, 1.0);
  EXPECT_EQ(settings.startTime, start);
}

TEST(GslUtil, InstanceIsOneObject) {
  gsl_Util& first = omi_Singleton<gsl_Util>::Instance();
  EXPECT_EQ(&first, &omi_Singleton<gsl_Util>::Instance());
}

TEST(GslUtil, SettingsMadeAgainHaveTheDefaults) {
  omi_Singleton<gsl_Util>::Instance().linearTolerance = 0.5;
  omi_Singleton<gsl_Util>::Destroy();
  EXPECT_FALSE(omi_Singleton<gsl_Util>::Exists());
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().linearTolerance, 1e-6);
  EXPECT_TRUE(omi_Singleton<gsl_Util>::Exists());
}

// ---- gsl_RealEqual

TEST(GslRealEqual, BandIsClosedOnBothSides) {
  EXPECT_TRUE(gsl_RealEqual(1.0, 1.0 + 1e-6, 1e-6));
  const double tol = 1e-6;
  EXPECT_TRUE(gsl_RealEqual(0.0, tol, tol));
  EXPECT_TRUE(gsl_RealEqual(0.0, -tol, tol));
  EXPECT_TRUE(gsl_RealEqual(tol, 0.0, tol));
  EXPECT_FALSE(gsl_RealEqual(0.0, Above(tol), tol));
  EXPECT_FALSE(gsl_RealEqual(0.0, Below(-tol), tol));
  EXPECT_TRUE(gsl_RealEqual(0.0, Below(tol), tol));
  EXPECT_TRUE(gsl_RealEqual(0.0, Above(-tol), tol));
}

TEST(GslRealEqual, ZeroToleranceIsExactEquality) {
  EXPECT_TRUE(gsl_RealEqual(2.5, 2.5, 0.0));
  EXPECT_TRUE(gsl_RealEqual(0.0, -0.0, 0.0));
  EXPECT_FALSE(gsl_RealEqual(2.5, Above(2.5), 0.0));
  EXPECT_FALSE(gsl_RealEqual(0.0, kDenormal, 0.0));
}

TEST(GslRealEqual, NaNComparesEqualToEverything) {
  EXPECT_TRUE(gsl_RealEqual(kNaN, 1.0, 1e-6));
  EXPECT_TRUE(gsl_RealEqual(1.0, kNaN, 1e-6));
  EXPECT_TRUE(gsl_RealEqual(kNaN, kNaN, 1e-6));
  EXPECT_TRUE(gsl_RealEqual(kNaN, kInfinity, 0.0));
  EXPECT_TRUE(gsl_RealEqual(1.0, 2.0, kNaN));
}

TEST(GslRealEqual, InfinitiesDifferFromNumbers) {
  EXPECT_FALSE(gsl_RealEqual(kInfinity, 1.0, 1e300));
  EXPECT_FALSE(gsl_RealEqual(1.0, -kInfinity, 1e300));
  EXPECT_FALSE(gsl_RealEqual(-kLargest, kLargest, kLargest));
  // Their difference is NaN.
  EXPECT_TRUE(gsl_RealEqual(kInfinity, kInfinity, 0.0));
  EXPECT_TRUE(gsl_RealEqual(0.0, kInfinity, kInfinity));
}

TEST(GslRealEqual, NegativeToleranceAcceptsNothing) {
  EXPECT_FALSE(gsl_RealEqual(1.0, 1.0, -1e-6));
  EXPECT_FALSE(gsl_RealEqual(1.0, 5.0, -1e-6));
}

// ---- gsl_RealRelEqual

TEST(GslRealRelEqual, BandScalesWithTheFirstArgument) {
  EXPECT_TRUE(gsl_RealRelEqual(1000.0, 1000.5, 1e-3));
  EXPECT_TRUE(gsl_RealRelEqual(1000.5, 1000.0, 1e-3));
  EXPECT_TRUE(gsl_RealRelEqual(8.0, 12.0, 0.5));
  EXPECT_FALSE(gsl_RealRelEqual(8.0, Above(12.0), 0.5));
  EXPECT_TRUE(gsl_RealRelEqual(8.0, 4.0, 0.5));
  // The last place of the difference, which is 4.
  EXPECT_FALSE(gsl_RealRelEqual(8.0, 4.0 - 0x1p-50, 0.5));
  EXPECT_TRUE(gsl_RealRelEqual(-8.0, -12.0, 0.5));
  EXPECT_FALSE(gsl_RealRelEqual(-8.0, Below(-12.0), 0.5));
}

TEST(GslRealRelEqual, IsNotSymmetric) {
  // Bands 14 and 12.25 around a difference of 14.
  EXPECT_TRUE(gsl_RealRelEqual(112.0, 98.0, 0.125));
  EXPECT_FALSE(gsl_RealRelEqual(98.0, 112.0, 0.125));
  // The band of the second argument alone: 1.0005 and 1.0 around a difference of 1.0005.
  EXPECT_TRUE(gsl_RealRelEqual(1000.5, 1000.5 - 1.0004, 1e-3));
  EXPECT_FALSE(gsl_RealRelEqual(1000.0, 1000.0 + 1.0004, 1e-3));
}

TEST(GslRealRelEqual, BandHasAFloorAtTheTolerance) {
  EXPECT_TRUE(gsl_RealRelEqual(0.0, 5e-4, 1e-3));
  EXPECT_TRUE(gsl_RealRelEqual(0.5, 0.75, 0.25));
  EXPECT_FALSE(gsl_RealRelEqual(0.5, Above(0.75), 0.25));
  EXPECT_TRUE(gsl_RealRelEqual(0.0, 0.25, 0.25));
  EXPECT_FALSE(gsl_RealRelEqual(0.0, Above(0.25), 0.25));
}

TEST(GslRealRelEqual, NaNComparesEqualToEverything) {
  EXPECT_TRUE(gsl_RealRelEqual(kNaN, 1.0, 1e-6));
  EXPECT_TRUE(gsl_RealRelEqual(1.0, kNaN, 1e-6));
  EXPECT_TRUE(gsl_RealRelEqual(1.0, 5.0, kNaN));
}

TEST(GslRealRelEqual, BandOfAnInfinityHoldsEverything) {
  EXPECT_TRUE(gsl_RealRelEqual(kInfinity, 1.0, 1e-6));
  EXPECT_FALSE(gsl_RealRelEqual(1.0, kInfinity, 1e-6));
}

// ---- gsl_RealArrEqual, RealArrRelEqual

TEST(GslRealArrEqual, NoElementsAreEqual) {
  EXPECT_TRUE(gsl_RealArrEqual(0, nullptr, nullptr, 1e-6));
  EXPECT_TRUE(gsl_RealArrEqual(-3, nullptr, nullptr, 1e-6));
}

TEST(GslRealArrEqual, EveryElementMustLieInTheClosedBand) {
  const double a[] = {0.0, 1.0, -2.0};
  const double atLimit[] = {0.25, 0.75, -2.25};
  EXPECT_TRUE(gsl_RealArrEqual(3, a, atLimit, 0.25));
  for (int i = 0; i < 3; ++i) {
    double b[] = {0.0, 1.0, -2.0};
    b[i] = Above(a[i] + 0.25);
    EXPECT_FALSE(gsl_RealArrEqual(3, a, b, 0.25)) << i;
    b[i] = Below(a[i] - 0.25);
    EXPECT_FALSE(gsl_RealArrEqual(3, a, b, 0.25)) << i;
    EXPECT_EQ(gsl_RealArrEqual(i, a, b, 0.25), true) << "elements behind n do not count";
  }
}

TEST(GslRealArrEqual, NaNElementsPassAndTheRestIsStillTested) {
  const double a[] = {kNaN, 1.0, 1.0};
  const double b[] = {1.0, kNaN, 1.0};
  EXPECT_TRUE(gsl_RealArrEqual(3, a, b, 1e-6));
  const double c[] = {1.0, kNaN, 2.0};
  EXPECT_FALSE(gsl_RealArrEqual(3, a, c, 1e-6));
}

TEST(GslRealArrEqual, StopsAtTheFirstElementThatFails) {
  // An address sanitizer sees a read of the second.
  const std::unique_ptr<double[]> a(new double[1]{0.0});
  const std::unique_ptr<double[]> b(new double[1]{1.0});
  EXPECT_FALSE(gsl_RealArrEqual(100, a.get(), b.get(), 1e-6));
  EXPECT_FALSE(RealArrRelEqual(100, a.get(), b.get(), 1e-6));
}

TEST(RealArrRelEqual, HasNoFloorForSmallElements) {
  const double a[] = {0.5};
  const double atLimit[] = {0.625};
  const double beyond[] = {Above(0.625)};
  EXPECT_TRUE(RealArrRelEqual(1, a, atLimit, 0.25));
  EXPECT_FALSE(RealArrRelEqual(1, a, beyond, 0.25));
  EXPECT_TRUE(gsl_RealRelEqual(a[0], beyond[0], 0.25));
}

TEST(RealArrRelEqual, TakesTheToleranceWhereTheProductIsZero) {
  const double zero[] = {0.0};
  const double atLimit[] = {-0.25};
  const double beyond[] = {Below(-0.25)};
  EXPECT_TRUE(RealArrRelEqual(1, zero, atLimit, 0.25));
  EXPECT_FALSE(RealArrRelEqual(1, zero, beyond, 0.25));
  // The product 1e-400 is zero although neither factor is.
  const double tiny[] = {1e-200};
  const double twice[] = {2e-200};
  EXPECT_TRUE(RealArrRelEqual(1, tiny, twice, 1e-200));
}

TEST(RealArrRelEqual, BandIsClosedAndFollowsTheFirstArray) {
  const double a[] = {8.0, -8.0};
  const double b[] = {12.0, -4.0};
  EXPECT_TRUE(RealArrRelEqual(2, a, b, 0.5));
  EXPECT_FALSE(RealArrRelEqual(2, b, a, 0.5));
  const double beyond[] = {12.0, -4.0 + 0x1p-50};
  EXPECT_FALSE(RealArrRelEqual(2, a, beyond, 0.5));
}

TEST(RealArrRelEqual, NoElementsAndNaNAreEqual) {
  EXPECT_TRUE(RealArrRelEqual(0, nullptr, nullptr, 1e-6));
  EXPECT_TRUE(RealArrRelEqual(-1, nullptr, nullptr, 1e-6));
  const double a[] = {kNaN, 1.0};
  const double b[] = {1.0, kNaN};
  EXPECT_TRUE(RealArrRelEqual(2, a, b, 1e-6));
}

// ---- gsl_RealEqualDig

TEST(GslRealEqualDig, ComparesTheLeadingDigits) {
  EXPECT_TRUE(gsl_RealEqualDig(1.234, 1.2341, 3));
  EXPECT_TRUE(gsl_RealEqualDig(1.234, 1.2341, 4));
  EXPECT_FALSE(gsl_RealEqualDig(1.234, 1.2341, 5));
  EXPECT_FALSE(gsl_RealEqualDig(1.234, 1.2346, 4));
  EXPECT_TRUE(gsl_RealEqualDig(-1.234, -1.2341, 3));
  EXPECT_TRUE(gsl_RealEqualDig(1.00000000000001, 1.00000000000001 + 1e-15, 15));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, 1.00000000000001, 15));
}

TEST(GslRealEqualDig, ExponentsDoNotTakePart) {
  EXPECT_TRUE(gsl_RealEqualDig(1.0, 10.0, 1));
  EXPECT_TRUE(gsl_RealEqualDig(1.5, 1.5e6, 4));
  EXPECT_TRUE(gsl_RealEqualDig(-2.0, -2e-3, 2));
}

TEST(GslRealEqualDig, OppositeSignsDiffer) {
  for (const double x : {1.0, 0.25, 1e100, 1e-100}) {
    EXPECT_FALSE(gsl_RealEqualDig(x, -x, 3)) << x;
    EXPECT_FALSE(gsl_RealEqualDig(-x, x, 3)) << x;
  }
}

TEST(GslRealEqualDig, HalfRoundsAwayFromZero) {
  EXPECT_TRUE(gsl_RealEqualDig(1.25, 1.3, 2));
  EXPECT_FALSE(gsl_RealEqualDig(1.25, 1.2, 2));
  EXPECT_TRUE(gsl_RealEqualDig(-1.25, -1.3, 2));
  EXPECT_FALSE(gsl_RealEqualDig(Below(1.25), 1.3, 2));
}

TEST(GslRealEqualDig, RoundingUpToTheNextPowerOfTenIsNotRenormalised) {
  // 99.6 has the mantissa 100 at two digits, 100.0 the mantissa 10.
  EXPECT_FALSE(gsl_RealEqualDig(99.6, 100.0, 2));
  EXPECT_FALSE(gsl_RealEqualDig(99.6, 1.0, 2));
}

TEST(GslRealEqualDig, ZeroHasTheMantissaZero) {
  EXPECT_TRUE(gsl_RealEqualDig(0.0, -0.0, 3));
  EXPECT_FALSE(gsl_RealEqualDig(0.0, 1e-300, 3));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, 0.0, 1));
}

TEST(GslRealEqualDig, FewerThanOneDigitRoundsToZeroOrOne) {
  EXPECT_TRUE(gsl_RealEqualDig(3.0, 4.0, 0));
  EXPECT_FALSE(gsl_RealEqualDig(4.0, 6.0, 0));
  EXPECT_TRUE(gsl_RealEqualDig(6.0, 9.0, 0));
  EXPECT_TRUE(gsl_RealEqualDig(6.0, 0.0, -1));
}

TEST(GslRealEqualDig, MoreThanFifteenDigitsAreExact) {
  EXPECT_TRUE(gsl_RealEqualDig(1.0, 1.0, 16));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, Above(1.0), 16));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, 10.0, 16));
  EXPECT_FALSE(gsl_RealEqualDig(kNaN, kNaN, 16));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, kNaN, 16));
  EXPECT_TRUE(gsl_RealEqualDig(kInfinity, kInfinity, 99));
}

TEST(GslRealEqualDig, NaNCountsAsZeroUpToFifteenDigits) {
  EXPECT_TRUE(gsl_RealEqualDig(kNaN, kNaN, 15));
  EXPECT_TRUE(gsl_RealEqualDig(kNaN, 0.0, 15));
  EXPECT_FALSE(gsl_RealEqualDig(kNaN, 1.0, 15));
}

TEST(GslRealEqualDig, InfinityEqualsOnlyItself) {
  EXPECT_TRUE(gsl_RealEqualDig(kInfinity, kInfinity, 3));
  EXPECT_FALSE(gsl_RealEqualDig(kInfinity, -kInfinity, 3));
  EXPECT_FALSE(gsl_RealEqualDig(kInfinity, kLargest, 3));
  EXPECT_FALSE(gsl_RealEqualDig(1.0, -kInfinity, 3));
  EXPECT_FALSE(gsl_RealEqualDig(kNaN, kInfinity, 3));
}

TEST(GslRealEqualDig, NumbersTooSmallToScaleEqualEachOther) {
  EXPECT_TRUE(gsl_RealEqualDig(kDenormal, 3 * kDenormal, 15));
  EXPECT_FALSE(gsl_RealEqualDig(kDenormal, -kDenormal, 15));
  EXPECT_FALSE(gsl_RealEqualDig(kDenormal, 1.0, 15));
}

// ---- gsl_RoundFloat

TEST(GslRoundFloat, RoundsToSignificantDigits) {
  EXPECT_EQ(gsl_RoundFloat(1234.5, 2), 1200.0);
  EXPECT_EQ(gsl_RoundFloat(1234.5, 1), 1000.0);
  EXPECT_EQ(gsl_RoundFloat(1000.0, 1), 1000.0);
  EXPECT_EQ(gsl_RoundFloat(0.012345, 3), 0.0123);
  EXPECT_EQ(gsl_RoundFloat(9.96, 2), 10.0);
  EXPECT_EQ(gsl_RoundFloat(-1234.5, 2), -1200.0);
  EXPECT_EQ(gsl_RoundFloat(3.14159265358979, 15), 3.14159265358979);
}

TEST(GslRoundFloat, TiesGoAwayFromZero) {
  EXPECT_EQ(gsl_RoundFloat(2.5, 1), 3.0);
  EXPECT_EQ(gsl_RoundFloat(-2.5, 1), -3.0);
  EXPECT_EQ(gsl_RoundFloat(0.125, 2), 0.13);
  EXPECT_EQ(gsl_RoundFloat(-0.125, 2), -0.13);
  EXPECT_EQ(gsl_RoundFloat(Below(2.5), 1), 2.0);
  EXPECT_EQ(gsl_RoundFloat(Above(-2.5), 1), -2.0);
}

TEST(GslRoundFloat, ZeroStaysAsItIs) {
  EXPECT_EQ(Bits(gsl_RoundFloat(0.0, 3)), Bits(0.0));
  EXPECT_EQ(Bits(gsl_RoundFloat(-0.0, 3)), Bits(-0.0));
}

TEST(GslRoundFloat, SixteenDigitsAndMoreChangeNothing) {
  for (const double x : {1.0 / 3.0, -1e300, 5e-324, kInfinity, -kInfinity}) {
    EXPECT_EQ(gsl_RoundFloat(x, 16), x);
    EXPECT_EQ(gsl_RoundFloat(x, INT_MAX), x);
  }
  EXPECT_TRUE(std::isnan(gsl_RoundFloat(kNaN, 16)));
}

TEST(GslRoundFloat, ZeroDigitsAndFewerRoundToAPowerAboveTheLeadingDigit) {
  EXPECT_EQ(gsl_RoundFloat(6.0, 0), 10.0);
  EXPECT_EQ(gsl_RoundFloat(4.0, 0), 0.0);
  EXPECT_EQ(gsl_RoundFloat(-6.0, 0), -10.0);
  EXPECT_EQ(gsl_RoundFloat(60.0, 0), 100.0);
  EXPECT_EQ(gsl_RoundFloat(60.0, -1), 0.0);
}

TEST(GslRoundFloat, InfinityAndNaNAreReturnedUnchanged) {
  EXPECT_EQ(gsl_RoundFloat(kInfinity, 3), kInfinity);
  EXPECT_EQ(gsl_RoundFloat(-kInfinity, 3), -kInfinity);
  EXPECT_TRUE(std::isnan(gsl_RoundFloat(kNaN, 3)));
}

TEST(GslRoundFloat, NumbersTooSmallToScaleBecomeNaN) {
  EXPECT_TRUE(std::isnan(gsl_RoundFloat(1e-300, 15)));
  EXPECT_TRUE(std::isnan(gsl_RoundFloat(1.0, INT_MIN)));
}

RC_GTEST_PROP(GslRoundFloat, StaysWithinHalfAUnitOfTheLastDigit, ()) {
  const int digits = *rc::gen::inRange(1, 15);
  const auto mantissa = *rc::gen::inRange<std::int64_t>(-999999999999, 999999999999);
  const int exponent = *rc::gen::inRange(-40, 40);
  RC_PRE(mantissa != 0);
  const double x = static_cast<double>(mantissa) * std::pow(10.0, exponent);
  // The conversion of the C library supplies the decimal exponent.
  char text[64];
  std::snprintf(text, sizeof text, "%.17e", x);
  const int leading = std::atoi(std::strchr(text, 'e') + 1);
  const double unit = std::pow(10.0, leading - digits + 1);
  // Scaling and dividing round too, which shows where the last digit is near the last bit.
  const double rounding = 4.0 * std::numeric_limits<double>::epsilon() * std::fabs(x);
  RC_ASSERT(std::fabs(gsl_RoundFloat(x, digits) - x) <= 0.5 * unit * (1.0 + 1e-9) + rounding);
}

// ---- gsl_Truncate

TEST(GslTruncate, RoundsTheFractionDespiteItsName) {
  EXPECT_EQ(gsl_Truncate(3.14159, 2), 3.14);
  EXPECT_EQ(gsl_Truncate(3.14159, 3), 3.142);
  EXPECT_EQ(gsl_Truncate(0.999, 2), 1.0);
  EXPECT_EQ(gsl_Truncate(-0.001, 2), 0.0);
  EXPECT_EQ(gsl_Truncate(7.0, 5), 7.0);
  EXPECT_EQ(gsl_Truncate(-7.0, 5), -7.0);
}

TEST(GslTruncate, TiesGoTowardsPlusInfinity) {
  EXPECT_EQ(gsl_Truncate(1.25, 1), 1.3);
  EXPECT_EQ(gsl_Truncate(-1.25, 1), -1.2);
  EXPECT_EQ(gsl_Truncate(0.5, 1), 0.5);
  EXPECT_EQ(gsl_Truncate(0.03125, 4), 0.0313);
  EXPECT_EQ(gsl_Truncate(-0.96875, 4), -0.9687);
}

TEST(GslTruncate, ManyPlacesAreNotLimitedByTheRangeOfAnInteger) {
  EXPECT_EQ(gsl_Truncate(0.5, 10), 0.5);
  EXPECT_EQ(gsl_Truncate(0.718281828459045, 12), 0.718281828459);
}

TEST(GslTruncate, NoPlacesIsAnAssertionFailure) {
  for (const int places : {0, -1, INT_MIN}) {
    try {
      gsl_Truncate(1.5, places);
      FAIL() << "did not throw for " << places;
    } catch (const nex_AssertException& e) {
      EXPECT_STREQ(e.what(), "places > 0");
      EXPECT_STREQ(e.Message().CStr(), "places > 0");
      EXPECT_STREQ(e.SourceName().CStr(), "generated/module/gsl/impl/gsl_utils");
      EXPECT_EQ(e.LineNumber(), 1005);
    }
  }
}

TEST(GslTruncate, NegativeZeroBecomesZero) {
  EXPECT_EQ(Bits(gsl_Truncate(-0.0, 3)), Bits(0.0));
}

TEST(GslTruncate, NaNStaysNaN) {
  EXPECT_TRUE(std::isnan(gsl_Truncate(kNaN, 2)));
  EXPECT_TRUE(std::isnan(gsl_Truncate(kInfinity, 2)));
  EXPECT_TRUE(std::isnan(gsl_Truncate(0.5, 400)));
}

// ---- file-local rounding and powers

TEST(RoundHalfUp, HalfGoesUpOnBothSidesOfZero) {
  EXPECT_EQ(RoundHalfUp(2.5), 3.0);
  EXPECT_EQ(RoundHalfUp(Below(2.5)), 2.0);
  EXPECT_EQ(RoundHalfUp(-2.5), -2.0);
  EXPECT_EQ(RoundHalfUp(Below(-2.5)), -3.0);
  EXPECT_EQ(RoundHalfUp(0.5), 1.0);
  EXPECT_EQ(RoundHalfUp(Below(0.5)), 0.0);
  EXPECT_EQ(RoundHalfUp(4.0), 4.0);
  EXPECT_EQ(Bits(RoundHalfUp(-0.0)), Bits(0.0));
}

TEST(IntegerPower, MultipliesOut) {
  EXPECT_EQ(IntegerPower(2.0, 10), 1024.0);
  EXPECT_EQ(IntegerPower(2.0, 1), 2.0);
  EXPECT_EQ(IntegerPower(-2.0, 3), -8.0);
  EXPECT_EQ(IntegerPower(2.0, -2), 0.25);
  EXPECT_EQ(IntegerPower(10.0, 22), 1e22);
  EXPECT_EQ(IntegerPower(2.0, 1023), 0x1p1023);
  EXPECT_EQ(IntegerPower(2.0, -1023), 0x1p-1023);
}

TEST(IntegerPower, ZerothPowerIsOneForEveryBase) {
  for (const double base : {0.0, -0.0, 1.0, -7.5, kInfinity, kNaN}) {
    EXPECT_EQ(IntegerPower(base, 0), 1.0) << base;
  }
}

TEST(IntegerPower, TakesTheWholeRangeOfExponents) {
  EXPECT_EQ(IntegerPower(2.0, INT_MIN), 0.0);
  EXPECT_EQ(IntegerPower(-1.0, INT_MIN), 1.0);
  EXPECT_EQ(IntegerPower(-1.0, INT_MAX), -1.0);
  EXPECT_EQ(IntegerPower(0.0, -1), kInfinity);
}

TEST(IntegerPower, SquaresInTheDocumentedOrder) {
  // 13 is 1101 in binary: base, then times base^4, then times base^8.
  const double b = 1.1;
  const double b2 = b * b;
  const double b4 = b2 * b2;
  const double b8 = b4 * b4;
  EXPECT_EQ(IntegerPower(b, 13), (b * b4) * b8);
  EXPECT_EQ(IntegerPower(b, -13), 1.0 / ((b * b4) * b8));
}

TEST(SinglePrecisionPower, ZeroBaseIsTestedBeforeZeroExponent) {
  EXPECT_EQ(SinglePrecisionPower(0.0, 0), 0.0);
  EXPECT_EQ(SinglePrecisionPower(-0.0, 0), 0.0);
  EXPECT_EQ(SinglePrecisionPower(0.0, 5), 0.0);
  EXPECT_EQ(SinglePrecisionPower(0.0, -5), 0.0);
  EXPECT_EQ(SinglePrecisionPower(5.0, 0), 1.0);
}

TEST(SinglePrecisionPower, RoundsToSinglePrecisionAtEveryStep) {
  EXPECT_EQ(SinglePrecisionPower(0.1, 1), static_cast<double>(0.1f));
  EXPECT_NE(SinglePrecisionPower(0.1, 1), 0.1);
  // (1 + 2^-20)^2 = 1 + 2^-19 + 2^-40, and the last term is beyond a float.
  EXPECT_EQ(SinglePrecisionPower(1.0 + 0x1p-20, 2), 1.0 + 0x1p-19);
  // Every step falls back to 1, although the exact power is 1 + 2^-20 nearly.
  EXPECT_EQ(SinglePrecisionPower(1.0 + 0x1p-30, 1024), 1.0);
  // The base itself is not rounded: 3 * (1 + 2^-24) = 3 + 3*2^-24 rounds up to 3 + 2^-22.
  EXPECT_EQ(SinglePrecisionPower(3.0 + 0x1p-23, 1), 3.0);
  EXPECT_EQ(SinglePrecisionPower(3.0 + 0x1p-23, 2), 9.0);
  EXPECT_EQ(SinglePrecisionPower(1e20, 2), kInfinity);
  EXPECT_EQ(SinglePrecisionPower(1e-20, 3), 0.0);
}

TEST(SinglePrecisionPower, NegativeExponentsDivide) {
  EXPECT_EQ(SinglePrecisionPower(2.0, -1), 0.5);
  EXPECT_EQ(SinglePrecisionPower(2.0, -3), 0.125);
  EXPECT_EQ(SinglePrecisionPower(-2.0, -3), -0.125);
  EXPECT_EQ(SinglePrecisionPower(3.0, -1), static_cast<double>(static_cast<float>(1.0 / 3.0)));
  const auto third = static_cast<float>(1.0 / 3.0);
  const auto ninth = static_cast<float>(static_cast<double>(third) / 3.0);
  EXPECT_EQ(SinglePrecisionPower(3.0, -2), static_cast<double>(ninth));
}

TEST(SinglePrecisionPower, TakesFewStepsForEveryExponent) {
  EXPECT_EQ(SinglePrecisionPower(2.0, INT_MAX), kInfinity);
  EXPECT_EQ(SinglePrecisionPower(2.0, INT_MIN), 0.0);
  EXPECT_EQ(Bits(SinglePrecisionPower(-2.0, INT_MIN)), Bits(0.0));
  EXPECT_EQ(Bits(SinglePrecisionPower(-2.0, -INT_MAX)), Bits(-0.0));
  EXPECT_EQ(SinglePrecisionPower(1.0, INT_MIN), 1.0);
  EXPECT_EQ(SinglePrecisionPower(-1.0, INT_MAX), -1.0);
  EXPECT_EQ(SinglePrecisionPower(-1.0, INT_MIN), 1.0);
  EXPECT_EQ(SinglePrecisionPower(-kInfinity, INT_MAX), -kInfinity);
  EXPECT_EQ(SinglePrecisionPower(-1e-3, INT_MIN), kInfinity);
  EXPECT_TRUE(std::isnan(SinglePrecisionPower(kNaN, INT_MAX)));
}

// ---- gsl_Interval

TEST(GslInterval, IsTwoDoublesLowerFirst) {
  EXPECT_EQ(sizeof(gsl_Interval), 16u);
  EXPECT_EQ(offsetof(gsl_Interval, lower), 0u);
  EXPECT_EQ(offsetof(gsl_Interval, upper), 8u);
  EXPECT_TRUE(std::is_trivially_copyable<gsl_Interval>::value);
}

TEST(GslInterval, BoundsMayBeInBracesOrInParentheses) {
  const gsl_Interval braces{2.0, 6.0};
  const gsl_Interval copied = {2.0, 6.0};
  const gsl_Interval parentheses(2.0, 6.0);
  for (const gsl_Interval& i : {braces, copied, parentheses}) {
    EXPECT_EQ(i.lower, 2.0);
    EXPECT_EQ(i.upper, 6.0);
  }
  const gsl_Interval zero{};
  EXPECT_EQ(zero.lower, 0.0);
  EXPECT_EQ(zero.upper, 0.0);
}

TEST(GslInterval, InterpolatesWithoutClamping) {
  const gsl_Interval i{2.0, 6.0};
  EXPECT_EQ(i.Interpolate(0.0), 2.0);
  EXPECT_EQ(i.Interpolate(1.0), 6.0);
  EXPECT_EQ(i.Interpolate(0.25), 3.0);
  EXPECT_EQ(i.Interpolate(2.0), 10.0);
  EXPECT_EQ(i.Interpolate(-1.0), -2.0);
}

TEST(GslInterval, EqualityIsClosedAtAFixedTolerance) {
  const gsl_Interval zero{0.0, 0.0};
  EXPECT_TRUE((zero == gsl_Interval{1e-8, -1e-8}));
  EXPECT_FALSE((zero != gsl_Interval{1e-8, -1e-8}));
  EXPECT_FALSE((zero == gsl_Interval{Above(1e-8), 0.0}));
  EXPECT_FALSE((zero == gsl_Interval{0.0, Above(1e-8)}));
  EXPECT_TRUE((zero != gsl_Interval{0.0, Below(-1e-8)}));
  const ScopedSettings settings;
  settings->linearTolerance = settings->zeroTolerance = settings->cosineTolerance =
      settings->coarseTolerance = 1.0;
  EXPECT_FALSE((zero == gsl_Interval{0.5, 0.0}));
}

TEST(GslInterval, EqualsItselfAndNaN) {
  const gsl_Interval nan{kNaN, kNaN};
  EXPECT_TRUE(nan == nan);
  EXPECT_TRUE((nan == gsl_Interval{1.0, 2.0}));
  EXPECT_FALSE((gsl_Interval{kNaN, 1.0} == gsl_Interval{1.0, 2.0}));
}

// ---- console routines

namespace {

/// Collects debug output in a string, and sets the module's debug level, until the end of a scope.
class DebugConsole {
public:
  explicit DebugConsole(int level) : before(typ_DebugFlags::GetDebugFlags(778)) {
    typ_DebugFlags::SetDebugFlags(778, level);
    pnt_redirectDebugPrint(&text);
  }
  DebugConsole(const DebugConsole&) = delete;
  DebugConsole& operator=(const DebugConsole&) = delete;
  ~DebugConsole() {
    pnt_redirectDebugPrint(nullptr);
    typ_DebugFlags::SetDebugFlags(778, before);
  }
  std::string Text() const { return text.str(); }

private:
  std::ostringstream text;
  int before;
};

} // namespace

TEST(WaitForReturn, PromptsOnlyAboveDebugLevelOne) {
  for (const int level : {-1, 0, 1, 2, 3}) {
    const DebugConsole console(level);
    std::istringstream in("abc\nrest");
    EXPECT_EQ(WaitForReturn(in), '\n');
    EXPECT_EQ(console.Text(), level > 1 ? "Press <Return> to continue..." : "") << level;
    std::string rest;
    in >> rest;
    EXPECT_EQ(rest, "rest");
  }
}

TEST(WaitForReturn, EndsWithTheInput) {
  std::istringstream in("abc");
  EXPECT_EQ(WaitForReturn(in), std::istream::traits_type::eof());
}

TEST(SkipToEndOfLine, ReadsThroughTheNewlineWithoutAPrompt) {
  const DebugConsole console(5);
  std::istringstream in("first\n\nthird");
  EXPECT_EQ(SkipToEndOfLine(in), 10);
  EXPECT_EQ(SkipToEndOfLine(in), 10);
  EXPECT_EQ(in.get(), 't');
  EXPECT_EQ(SkipToEndOfLine(in), std::istream::traits_type::eof());
  EXPECT_EQ(console.Text(), "");
}

// ---- bad input

TEST(GslUtils, HostileNumbersNeverCrash) {
  for (const double a : numbers::Hostile()) {
    for (const double b : numbers::Hostile()) {
      for (const double tol : {0.0, 1e-6, -1.0, kInfinity, kNaN}) {
        static_cast<void>(gsl_RealRelEqual(a, b, tol));
        EXPECT_EQ(gsl_RealArrEqual(1, &a, &b, tol), gsl_RealEqual(a, b, tol));
        RealArrRelEqual(1, &a, &b, tol);
        (gsl_Interval{a, b}).Interpolate(tol);
      }
      for (const int digits : {INT_MIN, -400, -1, 0, 1, 7, 15, 16, INT_MAX}) {
        EXPECT_EQ(gsl_RealEqualDig(a, b, digits), gsl_RealEqualDig(b, a, digits));
      }
    }
    for (const int digits : {INT_MIN, -400, -20, 0, 1, 15, 16, 400, INT_MAX}) {
      gsl_RoundFloat(a, digits);
      if (digits > 0) gsl_Truncate(a, digits);
      IntegerPower(a, digits);
      SinglePrecisionPower(a, digits);
    }
  }
}
