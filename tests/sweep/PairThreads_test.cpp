#include "Bodies.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "TestScale.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
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

/// Two bowls, one above the other, of different sizes, so that threads share the larger one.
struct LargeScene {
  LargeScene()
      : moving(sweep_shapes::Moved(sweep_bodies::Single(sweep_bodies::Bowl(60, 0.3)),
                                   {0.01, 0.02, 2.0})),
        fixed(sweep_bodies::Soup(41, 140000)), questions(6) {
    for (std::size_t k = 0; k < questions.size(); ++k) {
      questions[k].direction = {0.05 * static_cast<double>(k), -0.03, -1.0};
      if (k == 4) questions[k].clearance = 0.01;
    }
  }

  Pair PairOn(const gsl_sweep::Run& run) const {
    return Pair(Body(gsl_tools::ViewOf(moving), run), {Body(gsl_tools::ViewOf(fixed), run)}, run);
  }

  Mesh moving, fixed;
  std::vector<Question> questions;
};

gsl_sweep::Run OnExecutor() {
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    std::vector<std::thread> threads;
    std::atomic<std::size_t> next{0};
    for (int k = 0; k < 3; ++k) {
      threads.emplace_back([&] {
        for (std::size_t at = next++; at < count; at = next++)
          job(at);
      });
    }
    for (std::thread& thread : threads)
      thread.join();
  };
  return run;
}

TEST(PairThreads, LargeBodiesHaveTheSameAnswersAndBytesForAnyThreads) {
  const LargeScene scene;
  const Pair alone = scene.PairOn(OnThreads(1));
  std::vector<Answer> expected;
  for (const Question& question : scene.questions)
    expected.push_back(alone.First(question, OnThreads(1)));
  const Answer last = alone.Last(scene.questions[1], OnThreads(1));
  for (const gsl_sweep::Run& run : {OnThreads(2), OnThreads(3), OnThreads(8), OnExecutor()}) {
    const Pair pair = scene.PairOn(run);
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_TRUE(SameBits(pair.First(scene.questions[k], run), expected[k])) << k;
    std::vector<Answer> answers(scene.questions.size());
    pair.First(scene.questions.data(), answers.size(), answers.data(), run);
    for (std::size_t k = 0; k < answers.size(); ++k)
      EXPECT_TRUE(SameBits(answers[k], expected[k])) << k;
    EXPECT_TRUE(SameBits(pair.Last(scene.questions[1], run), last));
  }
}

TEST(PairThreads, CancellingWhileThreadsShareABodyLeavesThePairWhole) {
  const LargeScene scene;
  const Answer expected = scene.PairOn(OnThreads(1)).First(scene.questions[1], OnThreads(1));
  for (const gsl_sweep::Run& run : {OnThreads(3), OnExecutor()}) {
    std::vector<int> allowed{0, 3};
    if (kTestScaleDivisor == 1) allowed = {0, 1, 2, 3, 5, 9, 20};
    for (const int most : allowed) {
      const Pair pair = scene.PairOn(run);
      pair.First(scene.questions[0], run);
      std::atomic<int> calls{0};
      gsl_sweep::Run cancelling = run;
      cancelling.progress = [&](double) { return ++calls <= most; };
      const Answer answer = pair.First(scene.questions[1], cancelling);
      if (answer.status != SweepStatus::Cancelled) {
        EXPECT_LE(calls, most);
        EXPECT_TRUE(SameBits(answer, expected));
      } else {
        EXPECT_EQ(calls, most + 1);
      }
      EXPECT_TRUE(SameBits(pair.First(scene.questions[1], run), expected));
      cancelling.progress = [](double) -> bool { throw std::runtime_error("no"); };
      const Pair other = scene.PairOn(run);
      other.First(scene.questions[0], run);
      EXPECT_THROW(other.First(scene.questions[1], cancelling), std::runtime_error);
      EXPECT_TRUE(SameBits(other.First(scene.questions[1], run), expected));
    }
  }
}

TEST(PairThreads, SolidsAreDecidedSideBySide) {
  const Mesh box = sweep_bodies::Squares(60, {0, 0, 2}, {1, 1, 3});
  const Mesh plate = sweep_bodies::Squares(60, {-1, -1, 0}, {2, 2, 1});
  Mesh open = plate;
  open.corners.resize(open.corners.size() - 3);
  Question question;
  question.direction = {0.0, 0.0, -1.0};
  question.rule = Rule::Solid;
  for (const gsl_sweep::Run& run : {OnThreads(1), OnThreads(2), OnExecutor()}) {
    const Pair pair(BodyOf(box), {BodyOf(plate)}, run);
    EXPECT_EQ(pair.First(question, run).contact.travel, 1.0);
    Answer answers[2];
    const std::vector<Question> both{question, question};
    Pair(BodyOf(box), {BodyOf(plate)}, run).First(both.data(), 2, answers, run);
    EXPECT_EQ(answers[1].contact.travel, 1.0);
    EXPECT_EQ(pair.FirstOfEach(question, run).at(0).contact.travel, 1.0);
    for (const bool isMoving : {true, false}) {
      const Pair wrong(BodyOf(isMoving ? open : box), {BodyOf(isMoving ? plate : open)}, run);
      try {
        wrong.First(question, run);
        FAIL();
      } catch (const std::invalid_argument& error) {
        const std::string name = isMoving ? "the moving body" : "fixed body 0";
        EXPECT_EQ(std::string(error.what()).find(name + " is not a solid: open edge"), 0u);
      }
    }
  }
}

} // namespace
