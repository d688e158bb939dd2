#include "SweepAsk.h"
#include "SweepShapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

/// Questions about a clearance.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;
using sweep_shapes::Moved;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Mesh BoxOf(const Coord3& low, const Coord3& high) {
  return sweep_shapes::Box(low, high);
}

Question Within(double clearance, const Coord3& direction = {0, 0, -1}) {
  Question question;
  question.direction = direction;
  question.clearance = clearance;
  return question;
}

const Mesh table = BoxOf({0, 0, 0}, {4, 4, 2});

TEST(PairClearance, ABoxStopsAboveATable) {
  const Answer answer = AskInEveryWay(BoxOf({1, 2, 6}, {2, 3, 7}), table, Within(0.5), 2);
  ASSERT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.5);
  EXPECT_EQ(answer.contact.kind, ContactKind::VertexFace);
  EXPECT_EQ(answer.contact.movingTriangle, 0u);
  EXPECT_EQ(answer.contact.fixedTriangle, 3u);
  EXPECT_EQ(answer.contact.movingPoint.z, 6.0);
  EXPECT_EQ(answer.contact.fixedPoint.z, 2.0);
  EXPECT_TRUE(answer.contact.hasNormal);
  EXPECT_EQ(answer.contact.normal.z, 1.0);
  EXPECT_FALSE(answer.isExact);
  // The largest coordinate is 7, whose last place is 2^-50.
  EXPECT_EQ(answer.errorBound, 0x1p-48);
}

TEST(PairClearance, OtherQuestionsAreExact) {
  const Answer answer = AskInEveryWay(BoxOf({1, 1, 6}, {2, 2, 7}), table, Within(0.0), 2);
  EXPECT_EQ(answer.contact.travel, 4.0);
  EXPECT_TRUE(answer.isExact);
  EXPECT_EQ(answer.errorBound, 0.0);
}

TEST(PairClearance, ABodyThatPassesNearlyIsFound) {
  // It passes beside the table, 3 aside.
  const Mesh passing = BoxOf({7, 1, 6}, {8, 2, 7});
  EXPECT_EQ(AskInEveryWay(passing, table, Within(2.5), 2).status, SweepStatus::None);
  const Answer answer = AskInEveryWay(passing, table, Within(5.0), 2);
  ASSERT_EQ(answer.status, SweepStatus::Start);
  const Answer later = AskInEveryWay(Moved(passing, {0, 0, 4}), table, Within(5.0), 2);
  ASSERT_EQ(later.status, SweepStatus::Contact);
  EXPECT_EQ(later.contact.travel, 4.0); // 3 aside and 4 above
  EXPECT_EQ(AskInEveryWay(Moved(passing, {0, 0, 4}), table, Within(3.0), 2).contact.travel, 8.0);
}

TEST(PairClearance, ABodyInsideAnotherIsAsFarAsItsSurface) {
  const Mesh inner = BoxOf({1, 1, 0.75}, {2, 2, 1.25});
  EXPECT_EQ(AskInEveryWay(inner, table, Within(0.75), 2).status, SweepStatus::Start);
  const Answer answer = AskInEveryWay(inner, table, Within(0.5), 2);
  ASSERT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 0.25);
}

TEST(PairClearance, AtTheStartTheLowestPairIsNamed) {
  // The bottom of the moving body, triangles 0 and 1, is 0.5 above the top of the table, triangles
  // 2 and 3.
  const Answer answer =
      AskInEveryWay(BoxOf({1, 1, 2.5}, {2, 2, 7}), table, Within(0.5, {0, 0, 1}), 2);
  ASSERT_EQ(answer.status, SweepStatus::Start);
  EXPECT_EQ(answer.contact.travel, 0.0);
  EXPECT_EQ(answer.contact.movingTriangle, 0u);
  EXPECT_EQ(answer.contact.fixedTriangle, 2u);
  EXPECT_EQ(answer.contact.movingPoint.z, 2.5);
  EXPECT_EQ(answer.contact.fixedPoint.z, 2.0);
  const double less = std::nextafter(0.5, 0.0);
  EXPECT_EQ(AskInEveryWay(BoxOf({1, 1, 2.5}, {2, 2, 7}), table, Within(less, {0, 0, 1}), 2).status,
            SweepStatus::None);
}

TEST(PairClearance, ATinyTravelIsPositiveAndHidesNoStart) {
  Mesh fixed;
  sweep_shapes::AddTriangle(fixed, {-1, 1, -1}, {1, -1, -1}, {0, 0, 1});
  const Coord3 near{-0x1.006eaaa4fc1acp-48, 0, 0};
  const Question question = Within(0x1.6aa667fcda47bp-49, {1, 1, 0});
  Mesh moving;
  sweep_shapes::AddTriangle(moving, near, near, near);
  const Answer answer = AskInEveryWay(moving, fixed, question, 2);
  ASSERT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_GT(answer.contact.travel, 0.0);
  EXPECT_LT(answer.contact.travel, 0x1p-98);
  const Coord3 touching{0.1, -0.1, 0};
  sweep_shapes::AddTriangle(moving, touching, touching, touching);
  const Answer start = AskInEveryWay(moving, fixed, question, 2);
  EXPECT_EQ(start.status, SweepStatus::Start);
  EXPECT_EQ(start.contact.movingTriangle, 1u);
}

/// A flat square of n x n cells, with its side 1.
Mesh Grid(int n, const Coord3& low) {
  Mesh mesh;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      const auto corner = [&](int x, int y) {
        return Coord3{low.x + static_cast<double>(i + x) / n,
                      low.y + static_cast<double>(j + y) / n, low.z};
      };
      sweep_shapes::AddQuad(mesh, corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1));
    }
  }
  return mesh;
}

TEST(PairClearance, AGapThatIsWiderByARoundingCostsLittle) {
  // 1.1 - 1.0 exceeds 0.1 by 2^-53.4. Judged by whole numbers alone, this would take minutes.
  const Question question = Within(0.1, {1, 0, 0});
  const Pair pair(BodyOf(Grid(24, {-1.5, 0, 1.1})), {BodyOf(Grid(24, {0, 0, 1.0}))});
  EXPECT_EQ(pair.First(question).status, SweepStatus::None);
}

TEST(PairClearance, ExactJudgementsCallTheWatch) {
  // Each pair comes within the clearance after 2^-53.4, which only whole numbers can tell.
  const Mesh fixed = Grid(8, {0, 0, 1.0});
  const Pair pair(BodyOf(Grid(8, {0, 0, 1.1})), {BodyOf(fixed)});
  const Question question = Within(0.1);
  int calls = 0;
  gsl_sweep::Run run;
  run.progress = [&calls](double) {
    ++calls;
    return calls < 2;
  };
  EXPECT_EQ(pair.First(question, run).status, SweepStatus::Cancelled);
  EXPECT_EQ(calls, 2);
}

TEST(PairClearance, EachFixedBodyIsAsked) {
  const Pair pair(
      BodyOf(BoxOf({1, 1, 6}, {2, 2, 7})),
      {BodyOf(table), BodyOf(BoxOf({8, 8, 8}, {9, 9, 9})), BodyOf(BoxOf({1, 1, 3}, {2, 2, 4}))});
  const std::vector<Answer> answers = pair.FirstOfEach(Within(0.25));
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_EQ(answers[0].contact.travel, 3.75);
  EXPECT_EQ(answers[1].status, SweepStatus::None);
  EXPECT_EQ(answers[2].contact.travel, 1.75);
  EXPECT_EQ(answers[2].contact.fixedBody, 2u);
}

TEST(PairClearance, BodiesWithoutTrianglesHaveNoContact) {
  const Mesh empty;
  EXPECT_EQ(AskInEveryWay(empty, table, Within(1.0), 2).status, SweepStatus::None);
  EXPECT_EQ(AskInEveryWay(table, empty, Within(1.0), 2).status, SweepStatus::None);
}

TEST(PairClearance, HugeAndTinyClearancesAreAnswered) {
  const Mesh box = BoxOf({1, 1, 6}, {2, 2, 7});
  EXPECT_EQ(AskInEveryWay(box, table, Within(std::numeric_limits<double>::max()), 2).status,
            SweepStatus::Start);
  // The points are not rounded to the size of the clearance.
  const Answer huge = AskInEveryWay(box, table, Within(1e300), 2);
  const Answer large = AskInEveryWay(box, table, Within(16.0), 2);
  ASSERT_EQ(huge.status, SweepStatus::Start);
  EXPECT_EQ(huge.contact.movingPoint.z, 6.0);
  EXPECT_EQ(huge.contact.movingPoint.x, large.contact.movingPoint.x);
  EXPECT_EQ(huge.contact.fixedPoint.x, large.contact.fixedPoint.x);
  EXPECT_EQ(huge.contact.fixedPoint.y, large.contact.fixedPoint.y);
  // Nearly as far apart as coordinates up to 8 allow: 14 root(3) = 24.249.
  const Mesh low = BoxOf({-8, -8, -8}, {-7, -7, -7});
  const Mesh high = BoxOf({7, 7, 7}, {8, 8, 8});
  EXPECT_EQ(AskInEveryWay(low, high, Within(24.25), 2).status, SweepStatus::Start);
  EXPECT_EQ(AskInEveryWay(low, high, Within(24.125), 2).status, SweepStatus::None);
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(AskInEveryWay(box, table, Within(least), 2).contact.travel, 4.0);
  EXPECT_EQ(AskInEveryWay(box, table, Within(0x1p-40), 2).contact.travel, 4.0 - 0x1p-40);
}

TEST(PairClearance, OneSidedQuestionsLeaveTheSameTrianglesOut) {
  Question question = Within(0.5);
  question.oneSided = true;
  const Mesh box = BoxOf({1, 1, 6}, {2, 2, 7});
  EXPECT_EQ(AskInEveryWay(box, table, question, 2).contact.travel, 3.5);
  question.direction = {0, 0, 1};
  // From inside, the top of the table is left out on the way up.
  const Mesh inner = BoxOf({1, 1, 0.75}, {2, 2, 1.25});
  EXPECT_EQ(AskInEveryWay(inner, table, question, 2).status, SweepStatus::None);
}

std::string RefusalOf(const Question& question) {
  const Pair pair(BodyOf(table), {BodyOf(table)});
  try {
    pair.First(question);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return {};
}

TEST(PairClearance, WhatHasNoMeaningIsRefused) {
  const std::string expected = "the clearance must be finite and at least 0";
  EXPECT_EQ(RefusalOf(Within(-0x1p-1074)), expected);
  EXPECT_EQ(RefusalOf(Within(kInfinity)), expected);
  EXPECT_EQ(RefusalOf(Within(std::nan(""))), expected);
  EXPECT_EQ(RefusalOf(Within(-0.0)), "");
  for (const Rule rule : {Rule::NotLeaving, Rule::Solid}) {
    Question question = Within(1.0);
    question.rule = rule;
    EXPECT_EQ(RefusalOf(question), "a clearance is for Rule::Touch, not for the other rules");
  }
  const Pair pair(BodyOf(table), {BodyOf(table)});
  const Question question = Within(1.0);
  Answer answer;
  EXPECT_THROW(pair.Last(question), std::invalid_argument);
  EXPECT_THROW(pair.Last(&question, 1, &answer), std::invalid_argument);
  EXPECT_THROW(pair.Patch(question, nullptr, 0), std::invalid_argument);
  EXPECT_THROW(pair.FindPatch(question, nullptr, 0), std::invalid_argument);
  Question questions[2] = {Within(1.0), Within(-1.0)};
  Answer answers[2];
  try {
    pair.First(questions, 2, answers);
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_EQ(std::string(error.what()), "question 1: " + expected);
  }
}

} // namespace
