#include "Tally.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using gsl_sweep::Tally;

TEST(Tally, ReportsNumbersThatNeverDecrease) {
  std::vector<double> told;
  gsl_sweep::Run run;
  run.progress = [&told](double part) {
    told.push_back(part);
    return true;
  };
  Tally tally(run, 4);
  EXPECT_TRUE(tally.Continue(0.5));
  tally.Add();
  EXPECT_TRUE(tally.Continue(0.0));
  tally.Add();
  EXPECT_EQ(told, (std::vector<double>{0.125, 0.25, 0.25, 0.5}));
}

TEST(Tally, DoesNotCallAgainAfterFalse) {
  int calls = 0;
  gsl_sweep::Run run;
  run.progress = [&calls](double) { return ++calls < 2; };
  Tally tally(run, 4);
  tally.Add();
  EXPECT_FALSE(tally.IsCancelled());
  EXPECT_FALSE(tally.Continue(0.5));
  EXPECT_TRUE(tally.IsCancelled());
  tally.Add();
  EXPECT_FALSE(tally.Continue(0.5));
  EXPECT_EQ(calls, 2);
}

TEST(Tally, DoesNotCallAgainAfterAnException) {
  int calls = 0;
  gsl_sweep::Run run;
  run.progress = [&calls](double) -> bool {
    ++calls;
    throw std::runtime_error("no");
  };
  Tally tally(run, 4);
  EXPECT_THROW(tally.Add(), std::runtime_error);
  EXPECT_TRUE(tally.IsCancelled());
  tally.Add();
  EXPECT_FALSE(tally.Continue(0.5));
  EXPECT_EQ(calls, 1);
}

} // namespace
