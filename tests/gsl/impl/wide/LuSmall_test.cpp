#include "wide/LuSmall.h"

#include "SmallSystems.h"
#include "wide/gsl_WideKernels.h"

#include <gtest/gtest.h>

#include <vector>

using small_systems::ExpectTheTextbook;
using small_systems::Solver;
using small_systems::System;

namespace {

/// Returns the solver of this test's own registers, and of each set that the processor has.
std::vector<Solver> Solvers() {
  std::vector<Solver> solvers = {gsl_wide::GSL_LANES_NAMESPACE::SolveSmall};
  for (const gsl_VectorWidth width : {gsl_VectorWidth::Avx2, gsl_VectorWidth::Avx512}) {
    const gsl_WideKernels* const kernels = gsl_FindWideKernels(width);
    if (kernels != nullptr) solvers.push_back(kernels->solveSmall);
  }
  return solvers;
}

} // namespace

TEST(LuSmall, EveryWidthHasTheBitsOfTheTextbook) {
  for (const Solver solver : Solvers()) {
    RandomNumbers random(51);
    for (int n = 1; n <= gsl_wide::kLargestSmall; ++n) {
      for (const MatrixFamily family : kMatrixFamilies) {
        for (int round = 0; round < 40; ++round)
          ExpectTheTextbook(System(family, n, random), solver);
        ASSERT_FALSE(HasFailure()) << n;
      }
    }
  }
}

TEST(LuSmall, EqualMeritsTakeTheLastPositionNotTheLastLane) {
  // Step 0 takes row 2, and row 0 goes to position 2. At step 1 rows 1 and 0 have equal merits: row
  // 0 is at the later position.
  for (const Solver solver : Solvers()) {
    System system(3);
    system.matrix.At(0, 0) = 0.5, system.matrix.At(0, 1) = 1.0;
    system.matrix.At(1, 0) = 0.5, system.matrix.At(1, 1) = 1.0, system.matrix.At(1, 2) = 0.25;
    system.matrix.At(2, 0) = 1.0;
    const small_systems::Outcome outcome = small_systems::Solve(system, solver);
    EXPECT_EQ(outcome.pivots, (std::vector<std::int32_t>{2, 2, 2}));
    ExpectTheTextbook(system, solver);
  }
}

TEST(LuSmall, SolutionMayReplaceTheRightSide) {
  RandomNumbers random(52);
  for (const Solver solver : Solvers()) {
    for (int n = 1; n <= gsl_wide::kLargestSmall; ++n)
      small_systems::ExpectInPlace(System(MatrixFamily::Random, n, random), solver);
  }
}

TEST(LuSmall, ZeroRowLeavesEverythingUntouched) {
  for (const Solver solver : Solvers()) {
    for (int n = 1; n <= gsl_wide::kLargestSmall; ++n)
      small_systems::ExpectZeroRowRefused(n, solver);
  }
}
