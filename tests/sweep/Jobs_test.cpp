#include "Jobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace gsl_sweep;

TEST(Jobs, EachRunsOnce) {
  for (const unsigned threads : {0u, 1u, 2u, 7u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    std::vector<std::atomic<int>> seen(100);
    RunJobs(run, seen.size(), [&](std::size_t k) { ++seen[k]; });
    for (const std::atomic<int>& times : seen)
      EXPECT_EQ(times, 1);
  }
  RunJobs({}, 0, [](std::size_t) { FAIL(); });
}

TEST(Jobs, GoToTheExecutor) {
  std::vector<std::size_t> order;
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  RunJobs(run, 3, [&](std::size_t k) { order.push_back(k); });
  EXPECT_EQ(order, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(Jobs, TheErrorOfTheLeastJobIsThrownAfterAllHaveRun) {
  for (const bool withExecutor : {false, true}) {
    gsl_sweep::Run run;
    run.threads = 3;
    if (withExecutor) {
      run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
        for (std::size_t k = count; k-- > 0;)
          job(k);
      };
    }
    std::atomic<int> done{0};
    try {
      RunJobs(run, 50, [&](std::size_t k) {
        ++done;
        if (k % 20 == 11) throw std::runtime_error(std::to_string(k));
      });
      FAIL();
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "11");
    }
    EXPECT_EQ(done, 50);
  }
}

} // namespace
