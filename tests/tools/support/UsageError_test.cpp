#include "support/UsageError.h"

#include <gtest/gtest.h>

TEST(UsageError, IsOneLineForAnyInput) {
  EXPECT_STREQ(gsl_tools::UsageError("unknown option --a\x1b[2J\n").what(),
               "unknown option --a?[2J?");
}
