#include "aio_ostream.h"

#include "Numbers.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace {

std::string Written(double value, int precision) {
  std::ostringstream out;
  out << aio_FormattedDouble{value, 0, precision};
  return out.str();
}

/// Writes numbers with a comma, as many European languages do.
class Continental : public std::numpunct<char> {
protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(AioFormattedDouble, WritesSignificantDigitsWithoutTrailingZeros) {
  EXPECT_EQ(Written(0.1, 15), "0.1");
  EXPECT_EQ(Written(2.0, 15), "2");
  EXPECT_EQ(Written(1.0 / 3.0, 15), "0.333333333333333");
  EXPECT_EQ(Written(-2.0 / 3.0, 15), "-0.666666666666667");
  EXPECT_EQ(Written(123456.789, 3), "1.23e+05");
  EXPECT_EQ(Written(0.0, 15), "0");
  EXPECT_EQ(Written(-0.0, 15), "-0");
}

TEST(AioFormattedDouble, TurnsScientificOutsideItsRange) {
  EXPECT_EQ(Written(1e14, 15), "100000000000000");
  EXPECT_EQ(Written(1e15, 15), "1e+15");
  EXPECT_EQ(Written(1e-4, 15), "0.0001");
  EXPECT_EQ(Written(1e-5, 15), "1e-05");
  EXPECT_EQ(Written(1e300, 15), "1e+300");
  EXPECT_EQ(Written(-std::numeric_limits<double>::max(), 17), "-1.7976931348623157e+308");
  EXPECT_EQ(Written(5e-324, 15), "4.94065645841247e-324");
}

TEST(AioFormattedDouble, WritesInfinitiesAndNaN) {
  EXPECT_EQ(Written(numbers::kInfinity, 15), "inf");
  EXPECT_EQ(Written(-numbers::kInfinity, 15), "-inf");
  EXPECT_EQ(Written(numbers::kNaN, 15), "nan");
}

TEST(AioFormattedDouble, PrecisionStaysBetweenOneAndSeventeen) {
  EXPECT_EQ(Written(1.0 / 3.0, 0), "0.3");
  EXPECT_EQ(Written(1.0 / 3.0, -5), "0.3");
  EXPECT_EQ(Written(0.1, 17), "0.10000000000000001");
  EXPECT_EQ(Written(0.1, 99), "0.10000000000000001");
}

TEST(AioFormattedDouble, SeventeenDigitsReadBackTheSameNumber) {
  RandomNumbers random(30);
  for (int i = 0; i < 1000; ++i) {
    const double x = random.In(-1.0, 1.0) * std::pow(10.0, random.Below(600) - 300);
    EXPECT_EQ(std::strtod(Written(x, 17).c_str(), nullptr), x);
  }
}

TEST(AioFormattedDouble, DoesNotFollowTheLocaleOfTheStream) {
  std::ostringstream out;
  out.imbue(std::locale(std::locale::classic(), new Continental));
  out << aio_FormattedDouble{1234567.5, 0, 15};
  EXPECT_EQ(out.str(), "1234567.5");
}

TEST(AioFormattedDouble, DoesNotFollowTheGlobalLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new Continental));
  const std::string written = Written(1234567.5, 15);
  std::locale::global(before);
  EXPECT_EQ(written, "1234567.5");
}

TEST(AioFormattedDouble, DoesNotFollowTheFormatOfTheStream) {
  std::ostringstream out;
  out << std::fixed << std::showpos << std::uppercase << std::setprecision(2)
      << aio_FormattedDouble{1e-7 / 3.0, 0, 15};
  EXPECT_EQ(out.str(), "3.33333333333333e-08");
}

TEST(AioFormattedDouble, ChainsLikeAnyOtherOutput) {
  std::ostringstream out;
  out << 'a' << aio_FormattedDouble{1.5, 0, 15} << 'b' << aio_FormattedDouble{-2.0, 0, 15};
  EXPECT_EQ(out.str(), "a1.5b-2");
}
