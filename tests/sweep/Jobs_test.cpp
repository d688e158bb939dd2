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

gsl_sweep::Run Backwards() {
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  return run;
}

TEST(Team, RunsEachJobOnceInLoopAfterLoop) {
  for (const unsigned threads : {0u, 1u, 2u, 7u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    Team team(run, 7);
    for (const std::size_t count : {0u, 1u, 2u, 500u, 3u}) {
      std::vector<std::atomic<int>> seen(count);
      team.ForEach(count, [&](std::size_t k) { ++seen[k]; });
      for (const std::atomic<int>& times : seen)
        EXPECT_EQ(times, 1);
    }
  }
}

TEST(Team, IsAsLargeAsTheRunAllowsAndTheWorkDeserves) {
  gsl_sweep::Run run;
  run.threads = 4;
  EXPECT_EQ(Team(run, 9).Width(), 4u);
  EXPECT_EQ(Team(run, 3).Width(), 3u);
  EXPECT_TRUE(Team(run, 0).IsAlone());
  EXPECT_TRUE(Team::Alone().IsAlone());
  const gsl_sweep::Run backwards = Backwards();
  EXPECT_FALSE(Team(backwards, 0).IsAlone());
  EXPECT_TRUE(Team(backwards, 0).HasExecutor());
}

TEST(Team, HasNoMoreThreadsThanTheRunAllows) {
  gsl_sweep::Run run;
  run.threads = 2;
  Team team(run, 2);
  std::mutex mutex;
  std::set<std::thread::id> threads;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  // A third thread would have the time to take the third job.
  team.ForEach(3, [&](std::size_t) {
    for (std::size_t seen = 0; seen < 3 && std::chrono::steady_clock::now() < end;) {
      std::this_thread::yield();
      const std::lock_guard<std::mutex> lock(mutex);
      threads.insert(std::this_thread::get_id());
      seen = threads.size();
    }
  });
  EXPECT_LE(threads.size(), 2u);
}

TEST(Team, WithoutOtherThreadsGoesInOrderOnTheCallingThread) {
  std::vector<std::size_t> order;
  Team::Alone().ForEach(3, [&](std::size_t k) { order.push_back(k); });
  EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2}));
}

TEST(Team, GoesToTheExecutor) {
  std::vector<std::size_t> order;
  const gsl_sweep::Run run = Backwards();
  Team team(run, 1);
  team.ForEach(3, [&](std::size_t k) { order.push_back(k); });
  EXPECT_EQ(order, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(Team, RunsLoopsWithinTheJobsOfALoop) {
  for (const unsigned threads : {1u, 2u, 5u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    for (int round = 0; round < 20; ++round) {
      Team team(run, threads);
      std::vector<std::atomic<int>> seen(4 * 100);
      team.ForEach(4, [&](std::size_t outer) {
        team.ForEach(60, [&](std::size_t k) { ++seen[100 * outer + k]; });
        team.ForEach(40, [&](std::size_t k) { ++seen[100 * outer + 60 + k]; });
      });
      for (const std::atomic<int>& times : seen)
        EXPECT_EQ(times, 1);
    }
  }
}

/// The first job ends at once. The second has a loop whose two jobs end together alone.
TEST(Team, AThreadThatIsDoneHelpsInTheLoopOfAnotherJob) {
  gsl_sweep::Run run;
  run.threads = 2;
  Team team(run, 2);
  std::atomic<int> begun{0};
  team.ForEach(2, [&](std::size_t outer) {
    if (outer == 0) return;
    team.ForEach(2, [&](std::size_t) {
      ++begun;
      while (begun < 2)
        std::this_thread::yield();
    });
  });
  EXPECT_EQ(begun, 2);
}

TEST(Team, TheErrorOfTheLeastJobIsThrownAfterAllHaveRun) {
  const gsl_sweep::Run backwards = Backwards();
  for (const unsigned threads : {0u, 1u, 3u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    Team team(threads == 0 ? backwards : run, 3);
    for (int round = 0; round < 3; ++round) {
      std::atomic<int> done{0};
      try {
        team.ForEach(50, [&](std::size_t k) {
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
}

TEST(Blocks, HoldEachNumberOnce) {
  for (const unsigned threads : {1u, 2u, 3u, 8u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    Team team(run, threads);
    for (const std::size_t count : {0u, 1u, 10u, 11u, 95u, 1000u}) {
      const Blocks blocks(count, 10);
      EXPECT_EQ(blocks.Count(), (count + 9) / 10);
      std::vector<std::atomic<int>> seen(count);
      blocks.ForEach(team, [&](std::size_t block) {
        EXPECT_EQ(blocks.Begin(block), 10 * block);
        for (std::size_t k = blocks.Begin(block); k < blocks.End(block); ++k)
          ++seen[k];
      });
      for (const std::atomic<int>& times : seen)
        EXPECT_EQ(times, 1);
    }
  }
}

TEST(GoesOn, AsksUntilItIsStopped) {
  int asked = 0;
  const std::function<bool()> thrice = [&] { return ++asked < 3; };
  GoesOn goesOn(thrice);
  EXPECT_TRUE(goesOn.Ask());
  EXPECT_TRUE(goesOn.Ask());
  EXPECT_FALSE(goesOn.IsStopped());
  EXPECT_FALSE(goesOn.Ask());
  EXPECT_FALSE(goesOn.Ask());
  EXPECT_TRUE(goesOn.IsStopped());
  EXPECT_EQ(asked, 3);
  const std::function<bool()> nothing;
  EXPECT_TRUE(GoesOn(nothing).Ask());
}

TEST(GoesOn, IsStoppedByWhatIsThrown) {
  const std::function<bool()> throws = []() -> bool { throw std::runtime_error("no"); };
  GoesOn goesOn(throws);
  EXPECT_THROW(goesOn.Ask(), std::runtime_error);
  EXPECT_TRUE(goesOn.IsStopped());
}

TEST(GoesOn, IsAskedByOneThreadAtATime) {
  std::atomic<int> inside{0};
  std::atomic<bool> overlaps{false};
  const std::function<bool()> asked = [&] {
    if (++inside > 1) overlaps = true;
    std::this_thread::yield();
    --inside;
    return true;
  };
  GoesOn goesOn(asked);
  gsl_sweep::Run run;
  run.threads = 4;
  Team team(run, 4);
  team.ForEach(1000, [&](std::size_t) { goesOn.Ask(); });
  EXPECT_FALSE(overlaps);
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
