#include "FailEachAllocation.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "TestScale.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

// Each allocation of the sweep fails in turn, on one thread and on several. A question throws
// std::bad_alloc or has the same answer, and the same pair then answers as if nothing had happened.

namespace {

using namespace gsl_sweep;
using namespace sweep_ask;

/// What only saves time is left out without memory. An instrumented build, which is slow, leaves
/// out most allocations after the first.
constexpr Failing kAll = {WithoutMemory::MayManage, Allocations::All, 40,
                          kTestScaleDivisor == 1 ? 1 : 13};
/// How often an operation on several threads is tried: its allocations come in another order each
/// time.
constexpr long kAllOnThreads = 60;
constexpr long kStride = 7;
constexpr std::size_t kTriangles = 20 + Scaled(40);
constexpr std::size_t kLargeBody = 140000;
constexpr long kAllOfLargeBodies = 3;
constexpr long kStrideOfLargeBodies = kTestScaleDivisor == 1 ? 47 : 211;

Mesh Soup(std::uint64_t seed, std::size_t count) {
  std::mt19937_64 random(seed);
  return sweep_shapes::Soup(random, count, 1.0, 0.4, 0.0);
}

class FailingSweep : public testing::Test {
protected:
  FailingSweep() {
    m_question.direction = {0.1, 0.2, -1.0};
    for (int k = 0; k < 12; ++k) {
      Question question;
      question.direction = {0.1 * k, 0.3, -1.0};
      m_questions.push_back(question);
    }
    const Pair pair = Fresh();
    m_expected.resize(m_questions.size());
    pair.First(m_questions.data(), m_questions.size(), m_expected.data(), OnThreads(1));
    for (const Answer& answer : m_expected)
      m_contacts += answer.status == SweepStatus::Contact ? 1 : 0;
  }

  Pair Fresh() const { return Pair(BodyOf(m_moving), {BodyOf(m_fixed)}, OnThreads(1)); }

  /// Asks a fresh pair twice, the second time with all that saves time. A pair that could not
  /// answer must answer afterwards.
  template <class Ask>
  void ExpectWholeAnswers(const char* what, const Ask& ask) {
    const auto expected = ask(Fresh());
    const auto asks = [&] {
      const Pair pair = Fresh();
      bool isRight = true;
      for (int k = 0; k < 2; ++k)
        ChangeOrLeave([&] { isRight = ask(pair) == expected && isRight; },
                      [&] { return ask(pair) == expected; });
      return isRight;
    };
    EXPECT_GT(FailEachAllocation(what, asks, kAll), 10);
  }

  /// Answers all questions, and compares them.
  bool AnswersAll(const Pair& pair, const gsl_sweep::Run& run) const {
    std::vector<Answer> answers(m_questions.size());
    pair.First(m_questions.data(), m_questions.size(), answers.data(), run);
    bool isRight = true;
    for (std::size_t k = 0; k < answers.size(); ++k)
      isRight = SameBits(answers[k], m_expected[k]) && isRight;
    return isRight;
  }

  void ExpectWholeBatches(const char* what, const gsl_sweep::Run& run, const Failing& failing) {
    ASSERT_GT(m_contacts, 3);
    const auto asks = [&] {
      const Pair pair(BodyOf(m_moving), {BodyOf(m_fixed)}, run);
      bool isRight = true;
      for (int k = 0; k < 2; ++k)
        ChangeOrLeave([&] { isRight = AnswersAll(pair, run) && isRight; },
                      [&] { return AnswersAll(pair, run); });
      return isRight;
    };
    EXPECT_GT(FailEachAllocation(what, asks, failing), 10);
  }

  const Mesh m_moving = sweep_shapes::Moved(Soup(1, kTriangles), {0.0, 0.0, 4.0});
  const Mesh m_fixed = Soup(2, kTriangles);
  Question m_question;
  std::vector<Question> m_questions;
  std::vector<Answer> m_expected;
  int m_contacts = 0;
};

/// An answer that compares by its bits.
struct Bits {
  Answer answer;
  friend bool operator==(const Bits& a, const Bits& b) { return SameBits(a.answer, b.answer); }
};

} // namespace

TEST_F(FailingSweep, BodiesAreMadeMovedAndGrownOrNot) {
  const Mesh box = sweep_shapes::Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0});
  gsl_Matrix shift;
  shift.SetTranslation(gsl_Vector(0.0, 0.0, 5.0));
  const auto makes = [&] {
    const Body body = BodyOf(box);
    bool isRight = false;
    const auto use = [&] {
      Coord3 low{0.0, 0.0, 0.0};
      Coord3 high{0.0, 0.0, 0.0};
      body.Moved(shift).GetBounds(low, high);
      isRight = low.z == 4.0 && high.z == 6.0 && body.IsSolid().fault == SolidityFault::None;
      body.Grown(0.5).GetBounds(low, high);
      isRight = isRight && low.z == -1.5 && high.z == 1.5 &&
                Crossings(body, nullptr, 0, OnThreads(1)) == 0;
    };
    ChangeOrLeave(use, [&] {
      use();
      return isRight;
    });
    return isRight;
  };
  EXPECT_GT(FailEachAllocation("bodies", makes, kAll), 20);
}

TEST_F(FailingSweep, AWrongCornerIsRefusedOrMemoryIs) {
  const double vertices[9] = {};
  const std::uint32_t corners[3] = {0, 1, 7};
  const auto refuses = [&] {
    try {
      const Body body(TriangleView{vertices, 3, corners, 1});
    } catch (const std::invalid_argument&) {
      return true;
    }
    return false;
  };
  EXPECT_GT(
      FailEachAllocation("a wrong corner", refuses, {WithoutMemory::Refuses, Allocations::All}), 0);
}

TEST_F(FailingSweep, FirstLastAndPatchAreWholeOrThrow) {
  ExpectWholeAnswers("First",
                     [&](const Pair& pair) { return Bits{pair.First(m_question, OnThreads(1))}; });
  ExpectWholeAnswers("Last",
                     [&](const Pair& pair) { return Bits{pair.Last(m_question, OnThreads(1))}; });
  ExpectWholeAnswers("Patch", [&](const Pair& pair) {
    Contact contacts[4];
    return pair.Patch(m_question, contacts, 4, OnThreads(1));
  });
  ExpectWholeAnswers("FirstOfEach", [&](const Pair& pair) {
    return Bits{pair.FirstOfEach(m_question, OnThreads(1)).at(0)};
  });
  Question close = m_question;
  close.clearance = 0.25;
  ExpectWholeAnswers("clearance",
                     [&](const Pair& pair) { return Bits{pair.First(close, OnThreads(1))}; });
}

TEST_F(FailingSweep, SolidsAreAnsweredOrThrow) {
  const Mesh box = sweep_shapes::Box({-0.3, -0.4, 2.0}, {0.4, 0.3, 3.0});
  const Mesh plate = sweep_shapes::PlateWithHole(2.0, 0.25, -1.0, 0.0);
  Question question;
  question.direction = {0.0, 0.0, -1.0};
  question.rule = Rule::Solid;
  const auto asks = [&] {
    const Pair pair(BodyOf(box), {BodyOf(plate)}, OnThreads(1));
    bool isRight = false;
    const auto ask = [&] {
      const Answer answer = pair.First(question, OnThreads(1));
      return answer.status == SweepStatus::Contact && answer.contact.travel == 2.0;
    };
    ChangeOrLeave([&] { isRight = ask(); }, ask);
    return isRight;
  };
  EXPECT_GT(FailEachAllocation("solid", asks, kAll), 20);
}

/// Bodies so large that threads share what is done to one of them.
TEST_F(FailingSweep, LargeBodiesArePreparedOrNotOnThreads) {
  const Mesh moving = sweep_shapes::Moved(Soup(3, kLargeBody), {0.0, 0.0, 4.0});
  const Mesh fixed = Soup(4, kLargeBody);
  const Answer expected = PairOf(moving, fixed).First(m_question, OnThreads(1));
  gsl_sweep::Run executor;
  executor.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  for (const gsl_sweep::Run& run : {OnThreads(3), executor}) {
    const auto asks = [&] {
      const Pair pair(Body(gsl_tools::ViewOf(moving), run), {Body(gsl_tools::ViewOf(fixed), run)},
                      run);
      bool isRight = true;
      for (int k = 0; k < 2; ++k) {
        const auto ask = [&] { return SameBits(pair.First(m_question, run), expected); };
        ChangeOrLeave([&] { isRight = ask() && isRight; }, ask);
      }
      return isRight;
    };
    EXPECT_GT(FailEachAllocation("a large body", asks,
                                 {WithoutMemory::MayManage, Allocations::All, kAllOfLargeBodies,
                                  kStrideOfLargeBodies}),
              100);
  }
}

TEST_F(FailingSweep, BatchesAreWholeOrThrowOnOneThread) {
  ExpectWholeBatches("batch", OnThreads(1), kAll);
}

TEST_F(FailingSweep, BatchesAreWholeOrThrowOnThreads) {
  gsl_sweep::Run run = OnThreads(3);
  run.progress = [](double) {
    // Long enough that the other threads start.
    std::this_thread::sleep_for(std::chrono::microseconds(50));
    return true;
  };
  ExpectWholeBatches("batch on threads", run,
                     {WithoutMemory::MayManage, Allocations::All, kAllOnThreads, kStride});
}

TEST_F(FailingSweep, BatchesAreWholeOrThrowOnAnExecutor) {
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  ExpectWholeBatches("batch on an executor", run, kAll);
}
