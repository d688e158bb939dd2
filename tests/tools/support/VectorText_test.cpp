#include "support/VectorText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

namespace {

using namespace gsl_tools;

void ExpectVector(const std::optional<gsl_arithmetic::Coord3>& v, double x, double y, double z) {
  ASSERT_TRUE(v.has_value());
  EXPECT_EQ(v->x, x);
  EXPECT_EQ(v->y, y);
  EXPECT_EQ(v->z, z);
}

TEST(VectorText, ReadsNumbersCorrectlyRounded) {
  EXPECT_EQ(ParseNumber("0.1"), 0.1);
  EXPECT_EQ(ParseNumber("+2.5e-3"), 2.5e-3);
  EXPECT_EQ(ParseNumber(" -7 "), -7.0);
  EXPECT_EQ(ParseNumber(".5"), 0.5);
  EXPECT_EQ(ParseNumber("9007199254740993"), 9007199254740992.0);
}

TEST(VectorText, RefusesWhatIsNotAFiniteDecimalNumber) {
  for (const char* text : {"", " ", "+", "-", "+-1", "++1", "1x", "0x10", "nan", "inf", "-infinity",
                           "1e999", "1,5", "1 2"}) {
    EXPECT_FALSE(ParseNumber(text).has_value()) << text;
  }
}

TEST(VectorText, ReadsVectors) {
  ExpectVector(ParseVector("0,0,-1"), 0.0, 0.0, -1.0);
  ExpectVector(ParseVector("1e3, +2 ,-.25"), 1000.0, 2.0, -0.25);
  ExpectVector(ParseVector("0 0 -1"), 0.0, 0.0, -1.0);
  ExpectVector(ParseVector("  1\t2  -.25 "), 1.0, 2.0, -0.25);
  ExpectVector(ParseVector("1 ,2 , 3"), 1.0, 2.0, 3.0);
  ExpectVector(ParseVector("1, 2 3"), 1.0, 2.0, 3.0);
  for (const char* text :
       {"", " ", "1", "1,2", "1,2,", "1 2 ", ",,", ",1,2", "1,,2", "1,2,,3", "1 2 3 4", "1,2,3,4",
        "1,2,3,", "1;2;3", "1,2,x", "1 2 x", "1\n2\n3", "123"}) {
    EXPECT_FALSE(ParseVector(text).has_value()) << text;
  }
}

TEST(VectorText, ReadsDirections) {
  ExpectVector(ParseDirection("+x"), 1.0, 0.0, 0.0);
  ExpectVector(ParseDirection("-X"), -1.0, 0.0, 0.0);
  ExpectVector(ParseDirection("+y"), 0.0, 1.0, 0.0);
  ExpectVector(ParseDirection("-y"), 0.0, -1.0, 0.0);
  ExpectVector(ParseDirection("+Z"), 0.0, 0.0, 1.0);
  ExpectVector(ParseDirection("-z"), 0.0, 0.0, -1.0);
  ExpectVector(ParseDirection("x"), 1.0, 0.0, 0.0);
  ExpectVector(ParseDirection("Y"), 0.0, 1.0, 0.0);
  ExpectVector(ParseDirection(" z "), 0.0, 0.0, 1.0);
  ExpectVector(ParseDirection("3,0,-4"), 3.0, 0.0, -4.0);
  ExpectVector(ParseDirection("0 0 -1"), 0.0, 0.0, -1.0);
  for (const char* text : {"", "+", "-", "w", "+w", "xy", "+xy", "--z", "+-z", "- z", "0,0,0",
                           "-0 0 0", "z-", "nan,0,1", "1"}) {
    EXPECT_FALSE(ParseDirection(text).has_value()) << text;
  }
}

TEST(VectorText, WritesTheShortestNumberThatReadsBack) {
  EXPECT_EQ(NumberText(0.1), "0.1");
  EXPECT_EQ(NumberText(30.0), "30");
  EXPECT_EQ(NumberText(1.0 / 3.0), "0.3333333333333333");
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(ParseNumber(NumberText(least)), least);
  const double lowest = std::numeric_limits<double>::lowest();
  EXPECT_EQ(ParseNumber(NumberText(lowest)), lowest);
  EXPECT_EQ(VectorText({1.0, -2.5, 0.0}), "(1, -2.5, 0)");
}

} // namespace
