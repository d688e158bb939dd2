#include "wide/LuFixed.h"

#include "SmallSystems.h"

#include <gtest/gtest.h>

using small_systems::ExpectTheTextbook;
using small_systems::System;

TEST(LuFixed, HasTheBitsOfTheTextbook) {
  RandomNumbers random(41);
  for (int n = 1; n <= gsl_wide::kLargestFixed; ++n) {
    for (const MatrixFamily family : kMatrixFamilies) {
      for (int round = 0; round < 200; ++round)
        ExpectTheTextbook(System(family, n, random), gsl_wide::SolveFixed);
      ASSERT_FALSE(HasFailure()) << n;
    }
  }
}

TEST(LuFixed, SolutionMayReplaceTheRightSide) {
  RandomNumbers random(42);
  for (int n = 1; n <= gsl_wide::kLargestFixed; ++n)
    small_systems::ExpectInPlace(System(MatrixFamily::Random, n, random), gsl_wide::SolveFixed);
}

TEST(LuFixed, ZeroRowLeavesEverythingUntouched) {
  for (int n = 1; n <= gsl_wide::kLargestFixed; ++n)
    small_systems::ExpectZeroRowRefused(n, gsl_wide::SolveFixed);
}
