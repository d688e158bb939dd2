#include "support/NearName.h"

#include <gtest/gtest.h>

using gsl_tools::NearName;

namespace {

const std::vector<std::string> names = {"--direction", "--offset", "--output",
                                        "--json",      "--quiet",  "--max-distance"};

} // namespace

TEST(NearName, OneOrTwoTypingErrorsAreCorrected) {
  EXPECT_EQ(NearName("--directoin", names), "--direction");  // exchanged
  EXPECT_EQ(NearName("--direcction", names), "--direction"); // too many
  EXPECT_EQ(NearName("--drection", names), "--direction");   // too few
  EXPECT_EQ(NearName("--durection", names), "--direction");  // wrong
  EXPECT_EQ(NearName("--driection", names), "--direction");  // exchanged at the front
  EXPECT_EQ(NearName("--derecton", names), "--direction");   // wrong and too few
  EXPECT_EQ(NearName("-quiet", names), "--quiet");
  EXPECT_EQ(NearName("--maxdistance", names), "--max-distance");
  EXPECT_EQ(NearName("--json", names), "--json");
}

TEST(NearName, ThreeTypingErrorsAreNot) {
  EXPECT_EQ(NearName("--derektoin", names), "");
  EXPECT_EQ(NearName("--outputfil", names), "");
  EXPECT_EQ(NearName("--verbose", names), "");
  EXPECT_EQ(NearName("", names), "");
}

TEST(NearName, BeginningOfThreeLettersIsEnough) {
  EXPECT_EQ(NearName("--dir", names), "--direction");
  EXPECT_EQ(NearName("--max-d", names), "--max-distance");
  EXPECT_EQ(NearName("--di", names), "");
}

TEST(NearName, NothingIsGuessedBetweenTwoNames) {
  const std::vector<std::string> twins = {"--first", "--fist", "--max-angle", "--max-distance"};
  EXPECT_EQ(NearName("--firt", twins), ""); // one error from both
  EXPECT_EQ(NearName("--max", twins), "");  // the beginning of both
  EXPECT_EQ(NearName("--max-a", twins), "--max-angle");
  EXPECT_EQ(NearName("--frist", twins), "");         // one exchanged letter, or one too many
  EXPECT_EQ(NearName("--firstt", twins), "--first"); // the nearer one
}
