#include "support/RecordCheck.h"

#include "ModelSamples.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_tools;
using namespace model_samples;

TEST(RecordCheck, OrdinaryRecordsHaveNoProblem) {
  EXPECT_EQ(CheckNesting(gsl_RecordStore()), "");
  EXPECT_EQ(CheckCycles(gsl_RecordStore()), "");
  EXPECT_EQ(CheckNesting(EveryKind()), "");
  EXPECT_EQ(CheckCycles(EveryKind()), "");
}

TEST(RecordCheck, NestingEndsAtTheLimitOfTheLibrary) {
  EXPECT_EQ(CheckNesting(Nested(kMostNesting)), "");
  EXPECT_EQ(CheckNesting(Nested(kMostNesting + 1)),
            "records are nested 1001 levels deep, but the library reads at most 1000");
  // No level costs stack.
  EXPECT_NE(CheckNesting(Nested(200000)), "");
  EXPECT_EQ(CheckCycles(Nested(200000)), "");
}

TEST(RecordCheck, ObjectThatContainsItselfIsNamed) {
  EXPECT_EQ(CheckNesting(Circular()), "");
  EXPECT_EQ(CheckCycles(Circular()),
            "ring has a my_Part that contains itself, which the library does not read");
}

} // namespace
