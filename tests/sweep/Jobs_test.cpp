#include "Jobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
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

TEST(UnevenJobs, EachRunsOnce) {
  for (const unsigned threads : {0u, 1u, 2u, 7u}) {
    for (const std::size_t count : {0u, 1u, 2u, 100u, 5000u}) {
      gsl_sweep::Run run;
      run.threads = threads;
      std::vector<std::atomic<int>> seen(count);
      UnevenJobs jobs(run, count, [&] { return [&](std::size_t k) { ++seen[k]; }; });
      jobs.RunAll();
      for (const std::atomic<int>& times : seen)
        EXPECT_EQ(times, 1);
    }
  }
}

TEST(UnevenJobs, GoToTheExecutor) {
  std::vector<std::size_t> order;
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  UnevenJobs jobs(run, 3, [&] { return [&](std::size_t k) { order.push_back(k); }; });
  jobs.RunAll();
  EXPECT_EQ(order, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(UnevenJobs, AJobThatTicksIsJoinedByOtherThreads) {
  gsl_sweep::Run run;
  run.threads = 2;
  std::atomic<bool> isJoined{false};
  std::size_t started = 0;
  std::mutex mutex;
  UnevenJobs* ticking = nullptr;
  UnevenJobs jobs(run, 2, [&] {
    const std::lock_guard<std::mutex> lock(mutex);
    ++started;
    return [&](std::size_t k) {
      isJoined = isJoined || k == 1;
      while (!isJoined) {
        ticking->Tick();
        std::this_thread::yield();
      }
    };
  });
  ticking = &jobs;
  jobs.RunAll();
  EXPECT_EQ(started, 2u);
}

TEST(UnevenJobs, AfterALongJobOtherThreadsHelp) {
  gsl_sweep::Run run;
  run.threads = 2;
  std::mutex mutex;
  std::set<std::thread::id> threads;
  UnevenJobs jobs(run, 100, [&] {
    return [&](std::size_t) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      const std::lock_guard<std::mutex> lock(mutex);
      threads.insert(std::this_thread::get_id());
    };
  });
  jobs.RunAll();
  EXPECT_EQ(threads.size(), 2u);
}

TEST(UnevenJobs, TheErrorOfTheLeastJobIsThrownAfterAllHaveRun) {
  for (const unsigned threads : {1u, 3u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    std::atomic<int> done{0};
    UnevenJobs jobs(run, 50, [&] {
      return [&](std::size_t k) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));
        ++done;
        if (k % 20 == 11) throw std::runtime_error(std::to_string(k));
      };
    });
    try {
      jobs.RunAll();
      FAIL();
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "11");
    }
    EXPECT_EQ(done, 50);
  }
}

TEST(UnevenJobs, AThreadThatCannotStartReportsItsFirstJob) {
  gsl_sweep::Run run;
  run.threads = 1;
  UnevenJobs jobs(run, 3, []() -> UnevenJobs::Job { throw std::bad_alloc(); });
  EXPECT_THROW(jobs.RunAll(), std::bad_alloc);
}

} // namespace
