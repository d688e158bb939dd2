#include "Bodies.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

/// Executors that run other work on a thread that waits, that have one thread, and that throw.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;

using Job = std::function<void(std::size_t)>;

/// Ends the program when `work` has not ended after two minutes: a thread that waits for itself
/// cannot be joined.
template <class Work>
void RequireEnd(const Work& work) {
  std::promise<void> ended;
  std::future<void> end = ended.get_future();
  std::thread watcher([&end] {
    if (end.wait_for(std::chrono::minutes(2)) == std::future_status::ready) return;
    std::fputs("the executor waits without an end\n", stderr);
    std::abort();
  });
  work();
  ended.set_value();
  watcher.join();
}

/// A solid that is large enough for several threads, and a small one below it.
struct Solids {
  Body Large() const { return BodyOf(large); }
  Body Small() const { return BodyOf(small); }

  Mesh large = sweep_bodies::Squares(60, {0, 0, 2}, {1, 1, 3});
  Mesh small = sweep_bodies::Squares(4, {-1, -1, 0}, {2, 2, 1});
};

Question Downwards(Rule rule) {
  Question question;
  question.direction = {0.01, 0.02, -1.0};
  question.rule = rule;
  return question;
}

std::vector<Question> OfEachKind() {
  std::vector<Question> questions{Downwards(Rule::Touch), Downwards(Rule::Solid),
                                  Downwards(Rule::NotLeaving), Downwards(Rule::Touch)};
  questions[3].offset = {0.125, 0.0, 0.5};
  return questions;
}

std::vector<Answer> Expected(const Solids& solids) {
  const Pair pair(solids.Large(), {solids.Small()}, OnThreads(1));
  std::vector<Answer> answers;
  for (const Question& question : OfEachKind())
    answers.push_back(pair.First(question, OnThreads(1)));
  return answers;
}

void ExpectAnswers(const Pair& pair, const Run& run, const std::vector<Answer>& expected) {
  const std::vector<Question> questions = OfEachKind();
  for (std::size_t k = 0; k < questions.size(); ++k)
    EXPECT_TRUE(SameBits(pair.First(questions[k], run), expected[k])) << k;
  std::vector<Answer> answers(questions.size());
  pair.First(questions.data(), questions.size(), answers.data(), run);
  for (std::size_t k = 0; k < questions.size(); ++k)
    EXPECT_TRUE(SameBits(answers[k], expected[k])) << k;
}

/// Makes a body, a pair and answers. At its call number `at` the executor first runs another job on
/// the thread that waits: it asks the same bodies in every way. Returns the number of calls.
int CallsWithTheftAt(const Solids& solids, int at, const std::vector<Answer>& expected) {
  const Body large = solids.Large();
  const Body small = solids.Small();
  int calls = 0;
  gsl_sweep::Run run;
  run.executor = [&](std::size_t count, const Job& job) {
    if (++calls == at) {
      ExpectAnswers(Pair(large, {small}, run), run, expected);
      Crossings(large, nullptr, 0, run);
    }
    for (std::size_t k = 0; k < count; ++k)
      job(k);
  };
  const Body taken(gsl_tools::ViewOf(solids.large), run);
  ExpectAnswers(Pair(large, {small}, run), run, expected);
  return calls;
}

TEST(PairExecutors, MayRunAnyQuestionOnAThreadThatWaits) {
  const Solids solids;
  const std::vector<Answer> expected = Expected(solids);
  RequireEnd([&] {
    int at = 1;
    while (CallsWithTheftAt(solids, at, expected) >= at)
      at += kTestScaleDivisor == 1 ? 1 : 3;
    EXPECT_GT(at, 5);
  });
}

/// Two threads whose callers run queued tasks, of any call, while they wait.
class StealingPool {
public:
  StealingPool() {
    for (std::thread& thread : m_threads) {
      thread = std::thread([this] {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isEnded) {
          if (!TakeOne(lock)) m_changed.wait(lock);
        }
      });
    }
  }
  ~StealingPool() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_isEnded = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
      thread.join();
  }

  void ForEach(std::size_t count, const Job& job) {
    std::size_t left = count;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (std::size_t k = 0; k < count; ++k) {
      m_tasks.emplace_back([&, k] {
        job(k);
        const std::lock_guard<std::mutex> ended(m_mutex);
        if (--left == 0) m_changed.notify_all();
      });
    }
    m_changed.notify_all();
    while (left > 0) {
      if (!TakeOne(lock)) m_changed.wait(lock);
    }
  }

private:
  bool TakeOne(std::unique_lock<std::mutex>& lock) {
    if (m_tasks.empty()) return false;
    const std::function<void()> task = std::move(m_tasks.front());
    m_tasks.pop_front();
    lock.unlock();
    task();
    lock.lock();
    return true;
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_tasks;
  bool m_isEnded = false;
  std::thread m_threads[2];
};

TEST(PairExecutors, MayRunTheCallsThemselves) {
  const Solids solids;
  const std::vector<Answer> expected = Expected(solids);
  RequireEnd([&] {
    StealingPool pool;
    gsl_sweep::Run run;
    run.executor = [&pool](std::size_t count, const Job& job) { pool.ForEach(count, job); };
    const Body large = solids.Large();
    const Body small = solids.Small();
    pool.ForEach(6, [&](std::size_t) { ExpectAnswers(Pair(large, {small}, run), run, expected); });
  });
}

/// One thread, for which callers wait without working.
class PoolOfOne {
public:
  PoolOfOne()
      : m_thread([this] {
          std::unique_lock<std::mutex> lock(m_mutex);
          for (;;) {
            m_changed.wait(lock, [this] { return m_isEnded || !m_tasks.empty(); });
            if (m_tasks.empty()) return;
            const std::function<void()> task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
          }
        }) {}
  ~PoolOfOne() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_isEnded = true;
    }
    m_changed.notify_all();
    m_thread.join();
  }

  void ForEach(std::size_t count, const Job& job) {
    std::size_t left = count;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (std::size_t k = 0; k < count; ++k) {
      m_tasks.emplace_back([&, k] {
        job(k);
        const std::lock_guard<std::mutex> ended(m_mutex);
        --left;
        m_changed.notify_all();
      });
    }
    m_changed.notify_all();
    m_changed.wait(lock, [&left] { return left == 0; });
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_tasks;
  bool m_isEnded = false;
  std::thread m_thread;
};

/// While one call is about to give jobs to the pool, the only thread of the pool begins a job of
/// another call, which needs the same bodies.
TEST(PairExecutors, MayHaveOneThreadForAPairWhosePreparationWasCancelled) {
  const Solids solids;
  const std::vector<Answer> expected = Expected(solids);
  RequireEnd([&] {
    PoolOfOne pool;
    const Body large = solids.Large();
    const Body small = solids.Small();
    gsl_sweep::Run cancelled = OnThreads(1);
    cancelled.progress = [](double) { return false; };
    const Pair unprepared(large, {small}, cancelled);
    std::promise<void> begun;
    std::once_flag isBegun;
    gsl_sweep::Run asking;
    asking.executor = [&](std::size_t count, const Job& job) {
      pool.ForEach(count, [&](std::size_t k) {
        std::call_once(isBegun, [&begun] { begun.set_value(); });
        job(k);
      });
    };
    std::thread other;
    bool hasOther = false;
    gsl_sweep::Run preparing;
    preparing.executor = [&](std::size_t count, const Job& job) {
      if (!std::exchange(hasOther, true)) {
        other = std::thread([&] { ExpectAnswers(unprepared, asking, expected); });
        begun.get_future().wait();
      }
      pool.ForEach(count, job);
    };
    const Pair pair(large, {small}, preparing);
    ASSERT_TRUE(hasOther);
    other.join();
    ExpectAnswers(pair, preparing, expected);
  });
}

/// Makes a body and a pair and asks twice. The executor throws when it is called for the
/// `at`th time. Returns whether it has thrown.
bool ThrowsOnTheWay(const Solids& solids, int at, const std::vector<Answer>& expected,
                    std::size_t bytes) {
  int calls = 0;
  gsl_sweep::Run throwing;
  throwing.executor = [&](std::size_t count, const Job& job) {
    if (++calls == at) throw std::runtime_error("the executor is shut down");
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  const Body large = solids.Large();
  const Body small = solids.Small();
  bool hasThrown = false;
  try {
    const Body taken(gsl_tools::ViewOf(solids.large), throwing);
    const Pair pair(large, {small}, throwing);
    pair.First(Downwards(Rule::Solid), throwing);
    ExpectAnswers(pair, throwing, expected);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the executor is shut down");
    hasThrown = true;
  }
  EXPECT_EQ(hasThrown, calls >= at);
  ExpectAnswers(Pair(large, {small}, OnThreads(1)), OnThreads(1), expected);
  // What saves time is made later too.
  EXPECT_EQ(large.MemoryBytes(), bytes) << at;
  return hasThrown;
}

TEST(PairExecutors, MayThrowAtAnyCall) {
  const Solids solids;
  const std::vector<Answer> expected = Expected(solids);
  const Body large = solids.Large();
  ExpectAnswers(Pair(large, {solids.Small()}, OnThreads(1)), OnThreads(1), expected);
  int at = 1;
  while (ThrowsOnTheWay(solids, at, expected, large.MemoryBytes()))
    at += kTestScaleDivisor == 1 ? 1 : 3;
  EXPECT_GT(at, 5);
}

TEST(PairExecutors, AreNotAskedToDecideASolidAgain) {
  const Solids solids;
  int calls = 0;
  gsl_sweep::Run run;
  run.executor = [&calls](std::size_t count, const Job& job) {
    ++calls;
    for (std::size_t k = 0; k < count; ++k)
      job(k);
  };
  const Pair pair(solids.Large(), {solids.Small()}, run);
  pair.First(Downwards(Rule::Solid), run);
  pair.First(Downwards(Rule::Solid), run);
  EXPECT_GT(calls, 2);
  calls = 0;
  pair.First(Downwards(Rule::Solid), run);
  EXPECT_EQ(calls, 0);
  const std::vector<Question> questions(3, Downwards(Rule::Solid));
  std::vector<Answer> answers(3);
  pair.First(questions.data(), 3, answers.data(), run);
  EXPECT_EQ(calls, 1); // for the questions themselves
}

/// Returns the number of threads of this process. A thread that has been joined may count for a
/// moment.
std::ptrdiff_t TaskCount() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

TEST(PairThreads, ManySmallBodiesArePreparedOnSeveralThreads) {
  const Mesh mesh = sweep_bodies::Single(sweep_bodies::Bowl(8, 0.3));
  const Body moving = BodyOf(mesh);
  std::vector<Body> fixed;
  for (int k = 0; k < 300; ++k)
    fixed.push_back(BodyOf(mesh));
  std::ptrdiff_t most = 0;
  gsl_sweep::Run run = OnThreads(3);
  run.progress = [&most](double) {
    most = std::max(most, TaskCount());
    return true;
  };
  // 301 bodies of 128 triangles are worth four threads, each of them is worth none.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const std::ptrdiff_t before = TaskCount();
  const Pair pair(moving, fixed, run);
  EXPECT_GE(most, before + 2);
}

TEST(PairThreads, AProgressFunctionThatThrowsIsNotCalledAgain) {
  const Solids solids;
  for (const unsigned threads : {1u, 2u, 3u}) {
    std::atomic<int> calls{0};
    gsl_sweep::Run throwing = OnThreads(threads);
    throwing.progress = [&calls](double) -> bool {
      ++calls;
      throw std::runtime_error("no");
    };
    const Body large = solids.Large();
    EXPECT_THROW(Pair(large, {solids.Large(), solids.Small()}, throwing), std::runtime_error);
    EXPECT_EQ(calls.exchange(0), 1);
    const Pair pair(large, {solids.Large(), solids.Small()}, OnThreads(threads));
    pair.First(Downwards(Rule::Touch), OnThreads(threads));
    EXPECT_THROW(pair.First(Downwards(Rule::Touch), throwing), std::runtime_error);
    EXPECT_EQ(calls.exchange(0), 1);
    const std::vector<Question> questions(5, Downwards(Rule::Solid));
    std::vector<Answer> answers(5);
    EXPECT_THROW(pair.First(questions.data(), 5, answers.data(), throwing), std::runtime_error);
    EXPECT_EQ(calls.exchange(0), 1);
    EXPECT_THROW(pair.FirstOfEach(questions[0], throwing), std::runtime_error);
    EXPECT_EQ(calls, 1);
  }
}

} // namespace
