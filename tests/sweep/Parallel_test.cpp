#include "Parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace {

using gsl_sweep::RunOnThreads;

TEST(Parallel, RunsEachCallOnce) {
  std::atomic<unsigned> sum{0};
  RunOnThreads(
      5, [&sum](unsigned k) { sum += 1u << k; }, [] {});
  EXPECT_EQ(sum, 31u);
}

TEST(Parallel, FirstCallRunsOnTheCallingThread) {
  const auto caller = std::this_thread::get_id();
  std::thread::id first;
  RunOnThreads(
      3,
      [&first](unsigned k) {
        if (k == 0) first = std::this_thread::get_id();
      },
      [] {});
  EXPECT_EQ(first, caller);
}

TEST(Parallel, ExceptionStopsTheOthersAndIsThrown) {
  for (const unsigned thrower : {0u, 2u}) {
    std::atomic<bool> stop{false};
    const auto work = [&](unsigned k) {
      if (k == thrower) throw std::runtime_error("one");
      while (!stop)
        std::this_thread::yield();
    };
    EXPECT_THROW(RunOnThreads(3, work, [&stop] { stop = true; }), std::runtime_error);
  }
}

} // namespace
