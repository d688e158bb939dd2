#include "Bodies.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

/// Many threads ask at once while the bodies are still being prepared. ThreadSanitizer runs these
/// tests too.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;

constexpr std::size_t kThreads = 6;
constexpr std::size_t kQuestions = 8;
constexpr int kRounds = 4;

/// Runs work(k) on kThreads threads that all start together.
template <class Work>
void OnAllThreads(const Work& work) {
  std::atomic<std::size_t> ready{0};
  std::vector<std::thread> threads;
  for (std::size_t k = 0; k < kThreads; ++k) {
    threads.emplace_back([&, k] {
      ++ready;
      while (ready < kThreads)
        std::this_thread::yield();
      work(k);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

struct LazyScene {
  LazyScene()
      : moving(sweep_shapes::Moved(sweep_bodies::Soup(31, 500), {0.0, 0.0, 3.0})),
        fixed(sweep_bodies::Soup(32, 500)), questions(kQuestions) {
    for (std::size_t k = 0; k < kQuestions; ++k) {
      const auto angle = static_cast<double>(k);
      questions[k].direction = {0.3 * std::cos(angle), 0.3 * std::sin(angle), -1.0};
      if (k % 2 == 1) questions[k].offset = {0.1, -0.2, 0.3};
      // A component this small needs the trees in double precision.
      if (k % 4 == 2) questions[k].direction = {1e-30, 0.0, -1.0};
    }
  }

  /// A pair of unprepared bodies: its preparation was cancelled before it began.
  Pair Unprepared() const {
    gsl_sweep::Run run = OnThreads(1);
    run.progress = [](double) { return false; };
    return Pair(BodyOf(moving), {BodyOf(fixed)}, run);
  }

  /// The answers of one thread to a pair that nobody else asks.
  std::vector<Answer> Expected() const {
    const Pair pair = PairOf(moving, fixed);
    std::vector<Answer> answers;
    for (const Question& question : questions)
      answers.push_back(pair.First(question, OnThreads(1)));
    return answers;
  }

  Mesh moving, fixed;
  std::vector<Question> questions;
};

TEST(PairThreads, EveryThreadGetsTheSameAnswersFromAnUnpreparedPair) {
  const LazyScene scene;
  const std::vector<Answer> expected = scene.Expected();
  for (int round = 0; round < kRounds; ++round) {
    const Pair pair = scene.Unprepared();
    std::vector<std::vector<Answer>> told(kThreads, std::vector<Answer>(kQuestions));
    OnAllThreads([&](std::size_t thread) {
      // Each begins with another question, so that different parts are needed first.
      for (std::size_t k = 0; k < kQuestions; ++k) {
        const std::size_t at = (k + thread) % kQuestions;
        told[thread][at] = pair.First(scene.questions[at], OnThreads(1));
      }
    });
    for (const std::vector<Answer>& answers : told) {
      for (std::size_t k = 0; k < kQuestions; ++k)
        EXPECT_TRUE(SameBits(answers[k], expected[k])) << k;
    }
  }
}

TEST(PairThreads, EveryKindOfCallMayOverlapOnAnUnpreparedPair) {
  const LazyScene scene;
  const std::vector<Answer> expected = scene.Expected();
  for (int round = 0; round < kRounds; ++round) {
    const Pair pair = scene.Unprepared();
    const Pair copy = pair;
    std::vector<std::vector<Answer>> told(kThreads, std::vector<Answer>(kQuestions));
    OnAllThreads([&](std::size_t thread) {
      std::vector<Answer>& answers = told[thread];
      const Pair& mine = thread % 2 == 0 ? pair : copy;
      if (thread % 3 == 0) {
        mine.First(scene.questions.data(), kQuestions, answers.data(), OnThreads(2));
        return;
      }
      for (std::size_t k = 0; k < kQuestions; ++k) {
        const Question& question = scene.questions[k];
        answers[k] = thread % 3 == 1 ? mine.FirstOfEach(question, OnThreads(2))[0]
                                     : mine.First(question, OnThreads(1));
        EXPECT_EQ(mine.CountLeftOut(question).moving, 0u);
      }
    });
    for (const std::vector<Answer>& answers : told) {
      for (std::size_t k = 0; k < kQuestions; ++k)
        EXPECT_TRUE(SameBits(answers[k], expected[k])) << k;
    }
  }
}

TEST(PairThreads, BodiesAreSharedMovedAndMeasuredWhileTheyAreAsked) {
  const LazyScene scene;
  const std::vector<Answer> expected = scene.Expected();
  gsl_Matrix matrix;
  matrix.m[0][3] = 0.0;
  matrix.isIdentity = 0;
  for (int round = 0; round < kRounds; ++round) {
    const Body moving = BodyOf(scene.moving);
    const Body fixed = BodyOf(scene.fixed);
    // Another body is measured, because measuring prepares a body.
    const std::size_t least = BodyOf(scene.fixed).MemoryBytes();
    std::vector<std::vector<Answer>> told(kThreads, std::vector<Answer>(kQuestions));
    OnAllThreads([&](std::size_t thread) {
      // Pairs of their own over the same bodies; every second one over a copy that was moved
      // nowhere.
      const Pair pair(thread % 2 == 0 ? moving : moving.Moved(matrix), {fixed}, OnThreads(1));
      for (std::size_t k = 0; k < kQuestions; ++k) {
        told[thread][k] = pair.First(scene.questions[k], OnThreads(1));
        EXPECT_GE(fixed.MemoryBytes(), least);
      }
    });
    for (const std::vector<Answer>& answers : told) {
      for (std::size_t k = 0; k < kQuestions; ++k)
        EXPECT_TRUE(SameBits(answers[k], expected[k])) << k;
    }
  }
}

} // namespace
