#include "MeshRead.h"
#include "SweepAsk.h"
#include "SweepShapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

/// Questions about solids.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;
using sweep_shapes::Append;
using sweep_shapes::Moved;

Mesh BoxOf(const Coord3& low, const Coord3& high) {
  return sweep_shapes::Box(low, high);
}

Question Along(const Coord3& direction) {
  Question question;
  question.direction = direction;
  question.rule = Rule::Solid;
  return question;
}

Answer Ask(const Mesh& moving, const Mesh& fixed, const Coord3& direction) {
  return AskInEveryWay(moving, fixed, Along(direction), 2);
}

void ExpectTravel(const Answer& answer, double travel) {
  ASSERT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, travel);
  EXPECT_FALSE(answer.contact.overlapsAtStart);
}

void ExpectStart(const Answer& answer, bool overlapsAtStart) {
  ASSERT_EQ(answer.status, SweepStatus::Start);
  EXPECT_EQ(answer.contact.travel, 0.0);
  EXPECT_EQ(answer.contact.overlapsAtStart, overlapsAtStart);
}

const Coord3 down{0, 0, -1};
const Coord3 up{0, 0, 1};
const Coord3 right{1, 0, 0};
const Mesh table = BoxOf({0, 0, 0}, {4, 4, 2});

TEST(PairSolid, ABoxLandsSlidesAndLeaves) {
  ExpectTravel(Ask(BoxOf({1, 1, 5}, {2, 2, 6}), table, down), 3.0);
  const Mesh standing = BoxOf({1, 1, 2}, {2, 2, 6});
  ExpectStart(Ask(standing, table, down), false);
  EXPECT_EQ(Ask(standing, table, up).status, SweepStatus::None);
  EXPECT_EQ(Ask(standing, table, right).status, SweepStatus::None);
  ExpectStart(Ask(Moved(standing, {0, 0, -0x1p-40}), table, up), true);
}

TEST(PairSolid, CommonWallsAndEdgesDoNotBlock) {
  // Beside the table, in the plane of its wall; and over its edge and its corner alone.
  EXPECT_EQ(Ask(BoxOf({4, 0, 5}, {6, 4, 6}), table, down).status, SweepStatus::None);
  EXPECT_EQ(Ask(BoxOf({4, 4, 5}, {6, 6, 6}), table, down).status, SweepStatus::None);
  ExpectTravel(Ask(BoxOf({std::nextafter(4.0, 0.0), 0, 5}, {6, 4, 6}), table, down), 3.0);
}

TEST(PairSolid, APegFillsASlotOfItsSize) {
  Mesh slot = sweep_shapes::PlateWithHole(4, 2, 0, 3);
  const Mesh peg = BoxOf({-2, -2, 5}, {2, 2, 9});
  EXPECT_EQ(Ask(peg, slot, down).status, SweepStatus::None);
  Append(slot, BoxOf({-4, -4, -1}, {4, 4, 0}));
  ExpectTravel(Ask(peg, slot, down), 5.0);
  const Mesh seated = Moved(peg, {0, 0, -5});
  EXPECT_EQ(Ask(seated, slot, up).status, SweepStatus::None);
  for (const Coord3& aside : {right, Coord3{-1, 0, 0}, Coord3{0, 1, 0}, Coord3{1, 1, 0}, down})
    ExpectStart(Ask(seated, slot, aside), false);
  // One unit in the last place wider.
  Mesh wide = peg;
  for (Coord3& p : wide.corners)
    if (p.x == 2.0) p.x = std::nextafter(2.0, 3.0);
  ExpectTravel(Ask(wide, slot, down), 2.0);
}

TEST(PairSolid, AShearedDirectionNeedsRoomOnItsSide) {
  // The peg of half width 1 in a slot of half width 2 and depth 3: along (1, 0, -1) its right wall
  // meets the right wall of the slot after 1 along x.
  const Mesh slot = sweep_shapes::PlateWithHole(4, 2, 0, 3);
  const Answer answer = Ask(BoxOf({-1, -1, 1}, {1, 1, 9}), slot, {1, 0, -1});
  ExpectTravel(answer, std::sqrt(2.0));
}

TEST(PairSolid, ABodyInsideAnotherIsInside) {
  const Answer answer = Ask(BoxOf({1, 1, 0.5}, {2, 2, 1}), table, up);
  ExpectStart(answer, true);
  EXPECT_EQ(answer.contact.kind, ContactKind::Inside);
  ExpectStart(Ask(table, BoxOf({1, 1, 0.5}, {2, 2, 1}), up), true);
}

TEST(PairSolid, ABallInACageStopsAtItsWalls) {
  Mesh cage = BoxOf({-9, -9, -9}, {9, 9, 9});
  Mesh hollow = BoxOf({-5, -5, -5}, {5, 5, 5});
  for (std::size_t k = 0; k < hollow.corners.size(); k += 3)
    std::swap(hollow.corners[k + 1], hollow.corners[k + 2]);
  Append(cage, hollow);
  const Mesh ball = BoxOf({-1, -1, -1}, {2, 1, 1});
  ExpectTravel(Ask(ball, cage, right), 3.0);
  ExpectTravel(Ask(ball, cage, down), 4.0);
  ExpectTravel(Ask(cage, ball, right), 4.0);
}

TEST(PairSolid, TheFirstPairInTheOrderOfTiesIsNamed) {
  // Both boxes of the moving body land at once. The second has the lower numbers.
  Mesh moving = BoxOf({2, 2, 6}, {3, 3, 7});
  Append(moving, BoxOf({1, 1, 6}, {2, 2, 7}));
  const Answer answer = Ask(moving, table, down);
  ExpectTravel(answer, 4.0);
  // The bottom of a box is its triangles 0 and 1. The top of the table is (0, 0), (4, 0), (4, 4)
  // and (0, 0), (4, 4), (0, 4), its triangles 2 and 3. Triangle 0 is (2, 2), (2, 3), (3, 3), which
  // lies in the second of these.
  EXPECT_EQ(answer.contact.movingTriangle, 0u);
  EXPECT_EQ(answer.contact.fixedTriangle, 3u);
}

TEST(PairSolid, OpenBodiesAreRefusedWithTheReason) {
  Mesh open = BoxOf({0, 0, 0}, {1, 1, 1});
  open.corners.resize(33);
  const auto text = [](const Pair& pair) {
    try {
      pair.First(Along(up));
    } catch (const std::invalid_argument& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  const Pair openFixed(BodyOf(table), {BodyOf(table), BodyOf(open)});
  EXPECT_EQ(text(openFixed).rfind("fixed body 1 is not a solid: open edge: triangle ", 0), 0u);
  const Pair openMoving(BodyOf(open), {BodyOf(table)});
  EXPECT_EQ(text(openMoving).rfind("the moving body is not a solid: open edge: triangle ", 0), 0u);
  EXPECT_THROW(openMoving.FirstOfEach(Along(up)), std::invalid_argument);
  const Question questions[2] = {Question{}, Along(up)};
  Answer answers[2];
  EXPECT_THROW(openMoving.First(questions, 2, answers), std::invalid_argument);
}

TEST(PairSolid, TheLastContactAndAPatchAreNotForSolids) {
  const Pair pair(BodyOf(BoxOf({1, 1, 5}, {2, 2, 6})), {BodyOf(table)});
  Answer answer;
  const Question question = Along(down);
  EXPECT_THROW(pair.Last(question), std::invalid_argument);
  EXPECT_THROW(pair.Last(&question, 1, &answer), std::invalid_argument);
  // A batch names the question, and the first that is wrong in any way.
  const auto textOf = [&pair](const Question(&questions)[3]) -> std::string {
    Answer answers[3];
    try {
      pair.Last(questions, 3, answers);
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return {};
  };
  Question touching = question;
  touching.rule = Rule::Touch;
  EXPECT_EQ(textOf({touching, touching, question}).substr(0, 25), "question 2: Rule::Solid i");
  EXPECT_EQ(textOf({touching, Question{}, question}).substr(0, 25), "question 1: the direction");
  EXPECT_THROW(pair.Patch(question, nullptr, 0), std::invalid_argument);
}

TEST(PairSolid, NothingIsLeftOutAndNoSolidIsCutAtTheRangeOfDouble) {
  const Pair pair(BodyOf(BoxOf({1, 1, 5}, {2, 2, 6})), {BodyOf(table)});
  Question question = Along(down);
  question.oneSided = true;
  EXPECT_EQ(pair.CountLeftOut(question).moving, 0u);
  EXPECT_EQ(pair.CountLeftOut(question).fixed, 0u);
  const Pair wide(BodyOf(BoxOf({0, 0, 0}, {1e308, 1e308, 1e308})), {BodyOf(table)});
  question.offset = {1e308, 0, 0};
  EXPECT_THROW(wide.First(question), std::overflow_error);
}

TEST(PairSolid, SeveralFixedBodiesAreJudgedTogetherAndAlone) {
  const Pair pair(BodyOf(BoxOf({1, 1, 5}, {2, 2, 6})),
                  {BodyOf(Moved(table, {0, 0, -1})), BodyOf(table)});
  const Answer first = pair.First(Along(down));
  ExpectTravel(first, 3.0);
  EXPECT_EQ(first.contact.fixedBody, 1u);
  const std::vector<Answer> each = pair.FirstOfEach(Along(down));
  ASSERT_EQ(each.size(), 2u);
  ExpectTravel(each[0], 4.0);
  ExpectTravel(each[1], 3.0);
}

TEST(PairSolid, TheStateAtRestIsKeptForItsOffsetAlone) {
  // Two fixed bodies, of which the second stands on the table.
  const Pair pair(BodyOf(BoxOf({1, 1, 5}, {2, 2, 6})),
                  {BodyOf(table), BodyOf(BoxOf({3, 3, 2}, {4, 4, 9}))});
  std::vector<Question> questions;
  for (const Coord3& offset : {Coord3{0, 0, 0}, Coord3{0, 0, -4}, Coord3{0, 0, -3},
                               Coord3{0, 0, -0.0}, Coord3{0.5, 0, -4.25}, Coord3{1.5, 1.5, 0}}) {
    for (const Coord3& direction : {down, up, right}) {
      questions.push_back(Along(direction));
      questions.back().offset = offset;
    }
  }
  std::vector<Answer> answers(questions.size());
  gsl_sweep::Run run;
  run.threads = 1;
  pair.First(questions.data(), questions.size(), answers.data(), run);
  std::size_t overlaps = 0;
  for (std::size_t k = 0; k < questions.size(); ++k) {
    const Pair fresh(BodyOf(BoxOf({1, 1, 5}, {2, 2, 6})),
                     {BodyOf(table), BodyOf(BoxOf({3, 3, 2}, {4, 4, 9}))});
    EXPECT_TRUE(sweep_ask::SameBits(answers[k], fresh.First(questions[k]))) << k;
    overlaps += answers[k].contact.overlapsAtStart ? 1 : 0;
    const std::vector<Answer> each = pair.FirstOfEach(questions[k]);
    const std::vector<Answer> freshEach = fresh.FirstOfEach(questions[k]);
    for (std::size_t body = 0; body < 2; ++body)
      EXPECT_TRUE(sweep_ask::SameBits(each[body], freshEach[body])) << k;
  }
  EXPECT_EQ(overlaps, 9u);
}

TEST(PairSolid, TheSeatedBoltIsFreeUpwardsAndHasItsPlayAside) {
  const std::string folder = GSL_EXAMPLE_MESHES;
  const Body bolt = BodyOf(gsl_mesh::ReadMesh(folder + "/bolt.stl"));
  const Body bracket = BodyOf(gsl_mesh::ReadMesh(folder + "/bracket.stl"));
  ASSERT_TRUE(bolt.IsSolid()) << bolt.IsSolid().Reason();
  ASSERT_TRUE(bracket.IsSolid()) << bracket.IsSolid().Reason();
  const Pair pair(bolt, {bracket});
  const auto ask = [&pair](const Coord3& direction, double height) {
    Question question = Along(direction);
    question.offset = {0, 0, height};
    return pair.First(question);
  };
  ExpectTravel(ask(down, 0.0), 30.0);
  EXPECT_EQ(ask(up, -30.0).status, SweepStatus::None);
  ExpectStart(ask(down, -30.0), false);
  for (const Coord3& aside : {right, Coord3{-1, 0, 0}, Coord3{0, 1, 0}, Coord3{0, -1, 0}})
    ExpectTravel(ask(aside, -30.0), 0.5);
  ExpectStart(ask(up, -30.0 - 0x1p-20), true);
}

} // namespace
