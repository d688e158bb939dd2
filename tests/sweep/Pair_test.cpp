#include "RandomNumbers.h"
#include "gsl_Sweep.h"

#include "Jobs.h"
#include "PairKernel.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "TestScale.h"
#include "reference/PairSweepOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_ask;
using namespace sweep_shapes;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
const Coord3 down{0.0, 0.0, -1.0};

Answer Ask(const Mesh& moving, const Mesh& fixed, const Coord3& direction,
           double maxDistance = infinity, unsigned threads = 1) {
  Question question;
  question.direction = direction;
  question.maxDistance = maxDistance;
  return AskInEveryWay(moving, fixed, question, threads);
}

struct OneSidedAnswer {
  Answer answer;
  LeftOut leftOut;
};

OneSidedAnswer AskOneSided(const Mesh& moving, const Mesh& fixed, const Coord3& direction) {
  Question question;
  question.direction = direction;
  question.oneSided = true;
  return {AskInEveryWay(moving, fixed, question, 2), PairOf(moving, fixed).CountLeftOut(question)};
}

void ExpectPoint(const Coord3& actual, const Coord3& expected) {
  EXPECT_EQ(actual.x, expected.x);
  EXPECT_EQ(actual.y, expected.y);
  EXPECT_EQ(actual.z, expected.z);
}

/// Every field, bit for bit.
void ExpectSame(const Answer& actual, const Answer& expected) {
  EXPECT_EQ(actual.status, expected.status);
  EXPECT_EQ(actual.contact.travel, expected.contact.travel);
  EXPECT_EQ(actual.contact.kind, expected.contact.kind);
  EXPECT_EQ(actual.contact.movingTriangle, expected.contact.movingTriangle);
  EXPECT_EQ(actual.contact.fixedTriangle, expected.contact.fixedTriangle);
  ExpectPoint(actual.contact.movingPoint, expected.contact.movingPoint);
  ExpectPoint(actual.contact.fixedPoint, expected.contact.fixedPoint);
  EXPECT_EQ(actual.contact.hasNormal, expected.contact.hasNormal);
  ExpectPoint(actual.contact.normal, expected.contact.normal);
}

TEST(Pair, CubeTowardsCubeInSixDirections) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Coord3 directions[6] = {{1.0, 0.0, 0.0},  {-1.0, 0.0, 0.0}, {0.0, 1.0, 0.0},
                                {0.0, -1.0, 0.0}, {0.0, 0.0, 1.0},  {0.0, 0.0, -1.0}};
  for (const Coord3& d : directions) {
    const Mesh aligned = Moved(fixed, gsl_arithmetic::Multiply(d, -3.0));
    const Answer answer = Ask(aligned, fixed, d);
    EXPECT_EQ(answer.status, SweepStatus::Contact);
    EXPECT_EQ(answer.contact.travel, 2.0);
    EXPECT_EQ(answer.contact.kind, ContactKind::VertexVertex);
    const Coord3 aside{d.x == 0.0 ? 0.25 : 0.0, d.y == 0.0 ? 0.25 : 0.0, d.z == 0.0 ? 0.25 : 0.0};
    const Answer shifted = Ask(Moved(aligned, aside), fixed, d);
    EXPECT_EQ(shifted.status, SweepStatus::Contact);
    EXPECT_EQ(shifted.contact.travel, 2.0);
    // Away from each other, and past each other.
    EXPECT_EQ(Ask(aligned, fixed, gsl_arithmetic::Negated(d)).status, SweepStatus::None);
    EXPECT_EQ(Ask(Moved(aligned, gsl_arithmetic::Multiply(aside, 5.0)), fixed, d).status,
              SweepStatus::None);
  }
}

TEST(Pair, EdgeOverEdgeOfTwoRoofs) {
  // Roofs with ridges across each other, one turned over; the ridges meet in their middles.
  Mesh fixed;
  AddQuad(fixed, {-4.0, 0.0, 2.0}, {-4.0, -4.0, 0.0}, {4.0, -4.0, 0.0}, {4.0, 0.0, 2.0});
  AddQuad(fixed, {-4.0, 0.0, 2.0}, {4.0, 0.0, 2.0}, {4.0, 4.0, 0.0}, {-4.0, 4.0, 0.0});
  Mesh moving;
  AddQuad(moving, {0.5, -4.0, 5.0}, {-4.0, -4.0, 7.0}, {-4.0, 4.0, 7.0}, {0.5, 4.0, 5.0});
  AddQuad(moving, {0.5, -4.0, 5.0}, {0.5, 4.0, 5.0}, {4.0, 4.0, 7.0}, {4.0, -4.0, 7.0});
  const Answer answer = Ask(moving, fixed, down);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.0);
  EXPECT_EQ(answer.contact.kind, ContactKind::EdgeEdge);
  ExpectPoint(answer.contact.movingPoint, {0.5, 0.0, 5.0});
  ExpectPoint(answer.contact.fixedPoint, {0.5, 0.0, 2.0});
  EXPECT_TRUE(answer.contact.hasNormal);
  ExpectPoint(answer.contact.normal, {0.0, 0.0, 1.0});
}

Mesh Pyramid(const Coord3& apex, double height) {
  const double z = apex.z + height;
  const Coord3 base[4] = {{apex.x - 1.0, apex.y - 1.0, z},
                          {apex.x + 1.0, apex.y - 1.0, z},
                          {apex.x + 1.0, apex.y + 1.0, z},
                          {apex.x - 1.0, apex.y + 1.0, z}};
  Mesh mesh;
  for (int k = 0; k < 4; ++k)
    AddTriangle(mesh, apex, base[k], base[(k + 1) % 4]);
  AddQuad(mesh, base[0], base[1], base[2], base[3]);
  return mesh;
}

TEST(Pair, VertexOverFaceAndVertexOverVertex) {
  const Mesh point = Pyramid({0.25, 0.5, 5.0}, 2.0);
  const Answer onFace = Ask(point, Box({-4.0, -4.0, -1.0}, {4.0, 4.0, 1.0}), down);
  EXPECT_EQ(onFace.status, SweepStatus::Contact);
  EXPECT_EQ(onFace.contact.travel, 4.0);
  EXPECT_EQ(onFace.contact.kind, ContactKind::VertexFace);
  ExpectPoint(onFace.contact.fixedPoint, {0.25, 0.5, 1.0});
  const Answer onTip = Ask(point, Pyramid({0.25, 0.5, 2.0}, -2.0), down);
  EXPECT_EQ(onTip.status, SweepStatus::Contact);
  EXPECT_EQ(onTip.contact.travel, 3.0);
  EXPECT_EQ(onTip.contact.kind, ContactKind::VertexVertex);
  const Answer underFace =
      Ask(Box({-4.0, -4.0, 6.0}, {4.0, 4.0, 7.0}), Pyramid({0.25, 0.5, 2.0}, -2.0), down);
  EXPECT_EQ(underFace.contact.travel, 4.0);
  EXPECT_EQ(underFace.contact.kind, ContactKind::FaceVertex);
  EXPECT_TRUE(onFace.contact.hasNormal && underFace.contact.hasNormal);
  ExpectPoint(onFace.contact.normal, {0.0, 0.0, 1.0});
  ExpectPoint(underFace.contact.normal, {0.0, 0.0, 1.0});
  EXPECT_FALSE(onTip.contact.hasNormal);
}

TEST(Pair, NormalIsAgainstTheDirectionFromEitherSide) {
  // A wall y = 2x / 3 at the foot of a spike, met from above and, at the start, from below.
  Mesh wall;
  AddTriangle(wall, {-6.0, -4.0, -9.0}, {6.0, 4.0, -9.0}, {0.0, 0.0, 9.0});
  Mesh spike;
  AddTriangle(spike, {0.0, 13.0, 0.0}, {0.0, 14.0, 1.0}, {0.0, 15.0, -1.0});
  const Coord3 across{0.0, -1.0, 0.0};
  const Answer above = Ask(spike, wall, across);
  EXPECT_EQ(above.contact.kind, ContactKind::VertexFace);
  const double length = std::sqrt(13.0);
  EXPECT_TRUE(above.contact.hasNormal);
  EXPECT_NEAR(above.contact.normal.x, -2.0 / length, 1e-16);
  EXPECT_NEAR(above.contact.normal.y, 3.0 / length, 2e-16);
  EXPECT_EQ(above.contact.normal.z, 0.0);
  const Answer atStart = Ask(Moved(spike, {0.0, -13.0, 0.0}), wall, {0.0, 1.0, 0.0});
  EXPECT_EQ(atStart.status, SweepStatus::Start);
  EXPECT_EQ(atStart.contact.kind, ContactKind::VertexFace);
  EXPECT_TRUE(atStart.contact.hasNormal);
  ExpectPoint(atStart.contact.normal, {-above.contact.normal.x, -above.contact.normal.y, 0.0});
}

TEST(Pair, CoplanarWallsThatSlidePastEachOtherTouch) {
  // Boxes side by side: the wall x = 1 is shared, so the closed surfaces meet at its rim.
  const Mesh moving = Box({0.0, 0.0, 5.0}, {1.0, 1.0, 6.0});
  const Mesh beside = Box({1.0, 0.0, 0.0}, {2.0, 1.0, 2.0});
  const Answer answer = Ask(moving, beside, down);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.0);
  const double apart = std::nextafter(1.0, 2.0);
  EXPECT_EQ(Ask(moving, Box({apart, 0.0, 0.0}, {2.0, 1.0, 2.0}), down).status, SweepStatus::None);
  // Already side by side: they touch at the start.
  const Answer started = Ask(Box({0.0, 0.0, 1.0}, {1.0, 1.0, 6.0}), beside, down);
  EXPECT_EQ(started.status, SweepStatus::Start);
  EXPECT_EQ(started.contact.travel, 0.0);
}

TEST(Pair, PegThatFitsExactlyTouchesTheRim) {
  Mesh fixed = PlateWithHole(4.0, 1.0, 0.0, 2.0);
  Append(fixed, Box({-4.0, -4.0, -3.0}, {4.0, 4.0, -2.0}));
  const auto peg = [](double half) { return Box({-half, -half, 5.0}, {half, half, 9.0}); };
  const Answer exact = Ask(peg(1.0), fixed, down);
  EXPECT_EQ(exact.status, SweepStatus::Contact);
  EXPECT_EQ(exact.contact.travel, 3.0);
  const Answer wide = Ask(peg(std::nextafter(1.0, 2.0)), fixed, down);
  EXPECT_EQ(wide.status, SweepStatus::Contact);
  EXPECT_EQ(wide.contact.travel, 3.0);
  // A hair too narrow: through the hole onto the floor below.
  const Answer narrow = Ask(peg(std::nextafter(1.0, 0.0)), fixed, down);
  EXPECT_EQ(narrow.status, SweepStatus::Contact);
  EXPECT_EQ(narrow.contact.travel, 7.0);
}

Answer AskLeaving(const Mesh& moving, const Mesh& fixed, const Coord3& direction,
                  double maxDistance = infinity) {
  Question question;
  question.direction = direction;
  question.maxDistance = maxDistance;
  question.rule = Rule::NotLeaving;
  return AskInEveryWay(moving, fixed, question, 1);
}

TEST(Pair, BodyLeavesWhatItTouchesAtTheStart) {
  const Mesh floor = Box({-4.0, -4.0, -1.0}, {4.0, 4.0, 0.0});
  const Mesh moving = Box({-1.0, -1.0, 0.0}, {1.0, 1.0, 2.0});
  const Coord3 up{0.0, 0.0, 1.0};
  EXPECT_EQ(Ask(moving, floor, up).status, SweepStatus::Start);
  EXPECT_EQ(AskLeaving(moving, floor, up).status, SweepStatus::None);
  EXPECT_EQ(AskLeaving(moving, floor, {0.5, 0.25, 0x1p-40}).status, SweepStatus::None);
  // Pressing and sliding go on after the start.
  for (const Coord3& d :
       {down, Coord3{1.0, 0.0, 0.0}, Coord3{0.0, -1.0, 0.0}, Coord3{0.5, 0.25, -0x1p-40}}) {
    EXPECT_EQ(AskLeaving(moving, floor, d).status, SweepStatus::Start);
    EXPECT_EQ(AskLeaving(moving, floor, d, 0.0).status, SweepStatus::Start);
  }
  // A hair deeper, the bodies overlap in every direction.
  const Mesh deeper = Moved(floor, {0.0, 0.0, 0x1p-30});
  EXPECT_EQ(AskLeaving(moving, deeper, up).status, SweepStatus::Start);
}

TEST(Pair, BodyThatLeavesMeetsWhatIsAhead) {
  Mesh fixed = Box({-4.0, -4.0, -1.0}, {4.0, 4.0, 0.0});
  Append(fixed, Box({-4.0, -4.0, 5.0}, {4.0, 4.0, 6.0}));
  const Mesh moving = Box({-1.0, -1.0, 0.0}, {1.0, 1.0, 2.0});
  const Coord3 up{0.0, 0.0, 1.0};
  const Answer answer = AskLeaving(moving, fixed, up);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.0);
  EXPECT_EQ(AskLeaving(moving, fixed, up, 3.0).status, SweepStatus::Contact);
  EXPECT_EQ(AskLeaving(moving, fixed, up, std::nextafter(3.0, 0.0)).status, SweepStatus::None);
  EXPECT_EQ(AskLeaving(moving, fixed, up, 0.0).status, SweepStatus::None);
  // Scaled so that the walk runs in double precision.
  const Coord3 small{0x1p-200, 0x1p-200, 0x1p-200};
  const Answer tiny = AskLeaving(Stretched(moving, small), Stretched(fixed, small), up);
  EXPECT_EQ(tiny.status, SweepStatus::Contact);
  EXPECT_EQ(tiny.contact.travel, 3.0 * 0x1p-200);
}

TEST(Pair, StartOfABodyThatLeavesNamesAPairThatCounts) {
  // The floor has the lower numbers, but the body leaves the floor and slides along the wall.
  Mesh fixed = Box({-4.0, -4.0, -1.0}, {4.0, 4.0, 0.0});
  Append(fixed, Box({1.0, -4.0, -1.0}, {4.0, 4.0, 9.0}));
  const Mesh moving = Box({-1.0, -1.0, 0.0}, {1.0, 1.0, 2.0});
  const Coord3 up{0.0, 0.0, 1.0};
  const Answer touching = Ask(moving, fixed, up);
  EXPECT_EQ(touching.status, SweepStatus::Start);
  EXPECT_LT(touching.contact.fixedTriangle, 12u);
  const Answer sliding = AskLeaving(moving, fixed, up);
  EXPECT_EQ(sliding.status, SweepStatus::Start);
  EXPECT_GE(sliding.contact.fixedTriangle, 12u);
}

TEST(Pair, OpenSheetsFaceToFacePassThroughEachOther) {
  Mesh sheet;
  AddQuad(sheet, {-1.0, -1.0, 0.0}, {1.0, -1.0, 0.0}, {1.0, 1.0, 0.0}, {-1.0, 1.0, 0.0});
  const Coord3 up{0.0, 0.0, 1.0};
  EXPECT_EQ(Ask(sheet, sheet, up).status, SweepStatus::Start);
  EXPECT_EQ(AskLeaving(sheet, sheet, up).status, SweepStatus::None);
  EXPECT_EQ(AskLeaving(sheet, sheet, down).status, SweepStatus::None);
  EXPECT_EQ(AskLeaving(sheet, sheet, {1.0, 0.0, 0.0}).status, SweepStatus::Start);
}

Answer AskLast(const Mesh& moving, const Mesh& fixed, const Coord3& direction,
               double maxDistance = infinity, Rule rule = Rule::Touch) {
  Question question;
  question.direction = direction;
  question.maxDistance = maxDistance;
  question.rule = rule;
  const Pair pair = PairOf(moving, fixed);
  const Answer answer = pair.Last(question, OnThreads(1));
  const std::vector<Question> questions(3, question);
  std::vector<Answer> answers(questions.size());
  pair.Last(questions.data(), questions.size(), answers.data(), OnThreads(2));
  for (const Answer& again : answers)
    EXPECT_TRUE(SameBits(again, answer));
  return answer;
}

TEST(Pair, LastContactIsWhereTheBodiesPart) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  // The faces meet after 2 and the far faces part after 5.
  const Mesh moving = Box({0.25, 0.625, 3.0}, {0.5, 0.75, 5.0});
  const Answer answer = AskLast(moving, fixed, down);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 5.0);
  EXPECT_EQ(answer.contact.kind, ContactKind::VertexFace);
  // The top of the moving box, triangles 2 and 3, leaves the bottom of the fixed box, 0 and 1.
  EXPECT_EQ(answer.contact.movingTriangle, 2u);
  ExpectPoint(answer.contact.movingPoint, {0.25, 0.625, 5.0});
  ExpectPoint(answer.contact.fixedPoint, {0.25, 0.625, 0.0});
  ExpectPoint(answer.unitDirection, down);
  EXPECT_TRUE(answer.contact.hasNormal);
  ExpectPoint(answer.contact.normal, {0.0, 0.0, 1.0});
  EXPECT_EQ(AskLast(moving, fixed, {0.0, 0.0, 1.0}).status, SweepStatus::None);
  EXPECT_EQ(AskLast(moving, fixed, {1.0, 0.0, 0.0}).status, SweepStatus::None);
  // Scaled so that the walk runs in double precision.
  const Coord3 small{0x1p-200, 0x1p-200, 0x1p-200};
  EXPECT_EQ(AskLast(Stretched(moving, small), Stretched(fixed, small), down).contact.travel,
            5.0 * 0x1p-200);
}

TEST(Pair, LastContactIsCutAtTheGreatestDistance) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Mesh moving = Box({0.25, 0.625, 3.0}, {0.5, 0.75, 5.0});
  // At the end of a pair, and between the beginning and the end.
  EXPECT_EQ(AskLast(moving, fixed, down, 5.0).contact.kind, ContactKind::VertexFace);
  EXPECT_EQ(AskLast(moving, fixed, down, 5.0).contact.travel, 5.0);
  const Answer between = AskLast(moving, fixed, down, 3.5);
  EXPECT_EQ(between.status, SweepStatus::Contact);
  EXPECT_EQ(between.contact.travel, 3.5);
  EXPECT_EQ(between.contact.kind, ContactKind::Overlap);
  // The walls cross the bottom of the fixed box, where z = 0, or its top, where z = 1.
  EXPECT_EQ(between.contact.movingPoint.z, between.contact.fixedPoint.z + 3.5);
  EXPECT_TRUE(between.contact.fixedPoint.z == 0.0 || between.contact.fixedPoint.z == 1.0);
  EXPECT_FALSE(between.contact.hasNormal);
  // At the beginning of the first pair, and just before.
  const Answer first = AskLast(moving, fixed, down, 2.0);
  EXPECT_EQ(first.status, SweepStatus::Contact);
  EXPECT_TRUE(SameBits(first.contact.travel, 2.0));
  EXPECT_EQ(first.contact.kind, ContactKind::VertexFace);
  EXPECT_EQ(AskLast(moving, fixed, down, std::nextafter(2.0, 0.0)).status, SweepStatus::None);
}

TEST(Pair, LastContactOfATravelOfZeroIsTheStart) {
  const Mesh floor = Box({-4.0, -4.0, -1.0}, {4.0, 4.0, 0.0});
  const Mesh moving = Box({-1.0, -1.0, 0.0}, {1.0, 1.0, 2.0});
  const Coord3 up{0.0, 0.0, 1.0};
  const Answer leaves = AskLast(moving, floor, up);
  EXPECT_EQ(leaves.status, SweepStatus::Start);
  EXPECT_TRUE(SameBits(leaves, Ask(moving, floor, up)));
  EXPECT_EQ(AskLast(moving, floor, up, infinity, Rule::NotLeaving).status, SweepStatus::None);
  // A limit of zero leaves only the start, of either sign.
  for (const double zero : {0.0, -0.0}) {
    const Answer start = AskLast(moving, floor, down, zero);
    EXPECT_TRUE(SameBits(start, Ask(moving, floor, down, 0.0)));
    EXPECT_EQ(AskLast(Moved(moving, {0.0, 0.0, 1.0}), floor, down, zero).status, SweepStatus::None);
    EXPECT_EQ(AskLast(moving, floor, down, zero, Rule::NotLeaving).status, SweepStatus::Start);
  }
  // Downwards they part after 3.
  EXPECT_EQ(AskLast(moving, floor, down, infinity, Rule::NotLeaving).contact.travel, 3.0);
}

TEST(Pair, LastContactCanBeOneSidedAndHaveAnOffset) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Mesh moving = Box({0.25, 0.625, 3.0}, {0.5, 0.75, 5.0});
  Question question;
  question.direction = down;
  question.oneSided = true;
  // The bottom of the moving box leaves the top of the fixed box at once, and its walls after 4.
  const Pair pair = PairOf(moving, fixed);
  EXPECT_EQ(pair.Last(question).contact.travel, 4.0);
  question.offset = {0.0, 0.0, 10.0};
  EXPECT_EQ(pair.Last(question).contact.travel, 14.0);
  question.direction = {0.0, 0.0, 0.0};
  EXPECT_THROW(pair.Last(question), std::invalid_argument);
  EXPECT_THROW(pair.Patch(question, nullptr, 0), std::invalid_argument);
}

PatchSummary AskPatch(const Mesh& moving, const Mesh& fixed, const Question& question,
                      std::vector<Contact>& contacts) {
  contacts.assign(1000, Contact());
  const Pair pair = PairOf(moving, fixed);
  const PatchSummary summary = pair.FindPatch(question, contacts.data(), contacts.size());
  EXPECT_LE(summary.pairCount, contacts.size());
  contacts.resize(summary.pairCount);
  EXPECT_EQ(pair.Patch(question, nullptr, 0), summary.pairCount);
  EXPECT_TRUE(SameBits(summary.first, pair.First(question)));
  return summary;
}

TEST(Pair, PatchOfAFaceOnAFaceIsTheWholeFace) {
  Question question;
  question.direction = down;
  std::vector<Contact> contacts;
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {8.0, 8.0, 1.0});
  const PatchSummary summary =
      AskPatch(Box({1.0, 2.0, 3.0}, {4.0, 6.0, 5.0}), fixed, question, contacts);
  EXPECT_EQ(summary.first.status, SweepStatus::Contact);
  EXPECT_EQ(summary.first.contact.travel, 2.0);
  ExpectPoint(summary.low, {1.0, 2.0, 1.0});
  ExpectPoint(summary.high, {4.0, 6.0, 1.0});
  // The bottom and the walls with the two triangles of the top, in the order of their numbers.
  ASSERT_GT(contacts.size(), 4u);
  EXPECT_TRUE(SameBits(contacts[0].fixedPoint, summary.first.contact.fixedPoint));
  for (std::size_t k = 0; k < contacts.size(); ++k) {
    EXPECT_EQ(contacts[k].travel, 2.0);
    EXPECT_EQ(contacts[k].fixedPoint.z, 1.0);
    EXPECT_EQ(contacts[k].movingPoint.z, 3.0);
    if (k > 0) {
      EXPECT_LT(std::make_pair(contacts[k - 1].movingTriangle, contacts[k - 1].fixedTriangle),
                std::make_pair(contacts[k].movingTriangle, contacts[k].fixedTriangle));
    }
  }
}

TEST(Pair, PatchOfTwoFansIsTheirProduct) {
  const auto fan = [](double height) {
    Mesh mesh;
    for (int k = 0; k < 20; ++k) {
      const double x = k;
      AddTriangle(mesh, {0.0, 0.0, 0.0}, {x, 30.0, height}, {x + 1.0, 30.0, height});
    }
    return mesh;
  };
  Question question;
  question.direction = down;
  std::vector<Contact> contacts;
  const PatchSummary summary =
      AskPatch(Moved(fan(9.0), {0.0, 0.0, 4.0}), fan(-9.0), question, contacts);
  EXPECT_EQ(summary.pairCount, 400u);
  ExpectPoint(summary.low, {0.0, 0.0, 0.0});
  ExpectPoint(summary.high, {0.0, 0.0, 0.0});
  for (std::size_t k = 0; k < contacts.size(); ++k) {
    EXPECT_EQ(contacts[k].movingTriangle, k / 20);
    EXPECT_EQ(contacts[k].fixedTriangle, k % 20);
    EXPECT_EQ(contacts[k].kind, ContactKind::VertexVertex);
  }
  // Two are written, and nothing after them.
  std::vector<Contact> few(3);
  few[2].movingTriangle = 77;
  EXPECT_EQ(PairOf(Moved(fan(9.0), {0.0, 0.0, 4.0}), fan(-9.0)).Patch(question, few.data(), 2),
            400u);
  EXPECT_EQ(few[1].fixedTriangle, 1u);
  EXPECT_EQ(few[2].movingTriangle, 77u);
}

TEST(Pair, PatchAtTheStartHasEveryPairThatTouchesThere) {
  Question question;
  question.direction = down;
  std::vector<Contact> contacts;
  const Mesh fixed = Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0});
  const Mesh crossing = Box({0.5, 0.25, 0.125}, {3.0, 3.0, 3.0});
  const PatchSummary summary = AskPatch(crossing, fixed, question, contacts);
  EXPECT_EQ(summary.first.status, SweepStatus::Start);
  EXPECT_GT(contacts.size(), 5u);
  EXPECT_TRUE(std::all_of(contacts.begin(), contacts.end(),
                          [](const Contact& contact) { return contact.travel == 0.0; }));
  // Everything that the boxes share is in it.
  EXPECT_LE(summary.low.x, 0.5);
  EXPECT_GE(summary.high.z, 1.0);
  // What parts at the start counts by the rule that says so.
  const Mesh resting = Box({-1.0, -1.0, 1.0}, {1.0, 1.0, 3.0});
  question.direction = {1.0, 0.0, 1.0};
  EXPECT_GT(AskPatch(resting, fixed, question, contacts).pairCount, 0u);
  question.rule = Rule::NotLeaving;
  const PatchSummary none = AskPatch(resting, fixed, question, contacts);
  EXPECT_EQ(none.pairCount, 0u);
  ExpectPoint(none.low, {0.0, 0.0, 0.0});
  ExpectPoint(none.high, {0.0, 0.0, 0.0});
}

TEST(Pair, PatchNumbersTheFixedBodies) {
  const Mesh moving = Box({0.0, 0.0, 3.0}, {4.0, 1.0, 4.0});
  const Pair pair(BodyOf(moving), {BodyOf(Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0})),
                                   BodyOf(Box({1.5, 0.0, 0.0}, {2.0, 1.0, 0.5})),
                                   BodyOf(Box({3.0, 0.0, 0.0}, {4.0, 1.0, 1.0}))});
  Question question;
  question.direction = down;
  std::vector<Contact> contacts(200);
  const std::size_t count = pair.Patch(question, contacts.data(), contacts.size());
  ASSERT_LE(count, contacts.size());
  contacts.resize(count);
  const auto isOf = [&](std::size_t body) {
    return std::count_if(contacts.begin(), contacts.end(),
                         [body](const Contact& contact) { return contact.fixedBody == body; });
  };
  EXPECT_GT(isOf(0), 4);
  EXPECT_EQ(isOf(1), 0);
  EXPECT_GT(isOf(2), 4);
  EXPECT_TRUE(
      std::is_sorted(contacts.begin(), contacts.end(), [](const Contact& a, const Contact& b) {
        return std::make_tuple(a.movingTriangle, a.fixedBody, a.fixedTriangle) <
               std::make_tuple(b.movingTriangle, b.fixedBody, b.fixedTriangle);
      }));
}

TEST(Pair, LastContactCanBeCancelled) {
  // Specks in a cube above specks in a cube: many pairs to look at, and hardly one that meets.
  std::mt19937_64 random(4);
  const Mesh moving = Moved(Soup(random, 20000, 1.0, 1e-5, 0.0), {0.0, 0.0, 3.0});
  const Pair pair = PairOf(moving, Soup(random, 20000, 1.0, 1e-5, 0.0));
  Question question;
  question.direction = down;
  for (std::size_t allowed = 0; allowed < 3; ++allowed) {
    std::size_t calls = 0;
    gsl_sweep::Run run = OnThreads(1);
    run.progress = [&](double) { return ++calls <= allowed; };
    EXPECT_TRUE(SameBits(pair.Last(question, run), Answer()));
    EXPECT_EQ(calls, allowed + 1);
  }
}

TEST(Pair, PatchReportsItsProgressAndCanBeCancelled) {
  // The bodies touch at the start in many places, so the patch takes nearly all the time.
  std::mt19937_64 random(4);
  const Mesh moving = Soup(random, 3000, 1.0, 0.1, 0.0);
  const Mesh fixed = Soup(random, 3000, 1.0, 0.1, 0.0);
  Question question;
  question.direction = down;
  double reported = 0.0;
  double mostAllowed = 1.0;
  bool decreases = false;
  gsl_sweep::Run run = OnThreads(1);
  run.progress = [&](double part) {
    decreases = decreases || part < reported || part > 1.0;
    reported = part;
    return part <= mostAllowed;
  };
  Contact contact;
  contact.movingTriangle = 77777;
  EXPECT_GT(PairOf(moving, fixed).Patch(question, &contact, 1, run), 100u);
  EXPECT_FALSE(decreases);
  EXPECT_GT(reported, 0.75);
  EXPECT_LT(contact.movingTriangle, 3000u);
  contact.movingTriangle = 77777;
  reported = 0.0;
  mostAllowed = 0.5;
  const PatchSummary cancelled = PairOf(moving, fixed).FindPatch(question, &contact, 1, run);
  EXPECT_GT(reported, 0.5);
  EXPECT_EQ(cancelled.pairCount, 0u);
  EXPECT_TRUE(SameBits(cancelled.first, Answer()));
  EXPECT_EQ(contact.movingTriangle, 77777u);
}

TEST(Pair, BodyBehindMakesNoContact) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Answer answer = Ask(Box({0.0, 0.0, -5.0}, {1.0, 1.0, -2.0}), fixed, down);
  EXPECT_EQ(answer.status, SweepStatus::None);
  EXPECT_EQ(answer.contact.travel, 0.0);
}

TEST(Pair, BodyInsideAnotherMeetsItsWall) {
  const Mesh fixed = Box({-8.0, -8.0, -8.0}, {8.0, 8.0, 8.0});
  const Answer answer = Ask(Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0}), fixed, {0.0, 1.0, 0.0});
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 7.0);
}

TEST(Pair, CrossingBodiesTouchAtTheStart) {
  const Mesh fixed = Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0});
  const Answer answer = Ask(Box({0.5, 0.25, 0.125}, {3.0, 3.0, 3.0}), fixed, down);
  EXPECT_EQ(answer.status, SweepStatus::Start);
  EXPECT_EQ(answer.contact.travel, 0.0);
  ExpectPoint(answer.contact.movingPoint, answer.contact.fixedPoint);
  // Corner on corner only.
  EXPECT_EQ(Ask(Box({1.0, 1.0, 1.0}, {3.0, 3.0, 3.0}), fixed, {1.0, 1.0, 1.0}).status,
            SweepStatus::Start);
}

TEST(Pair, StartNamesTheFirstPairByNumber) {
  const Mesh fixed = Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0});
  Mesh moving = Box({5.0, 5.0, 5.0}, {6.0, 6.0, 6.0});
  Append(moving, Box({-0.5, -0.5, 0.5}, {0.5, 0.5, 3.0}));
  const Answer answer = Ask(moving, fixed, {1.0, 0.5, 0.25});
  EXPECT_EQ(answer.status, SweepStatus::Start);
  // Of the second box, the side y = -0.5 is the first to cross the top: triangle 12 + 4; of the
  // top, triangle 2 has the half where y <= x.
  EXPECT_EQ(answer.contact.movingTriangle, 16u);
  EXPECT_EQ(answer.contact.fixedTriangle, 2u);
}

TEST(Pair, GreatestDistanceIsClosed) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Mesh moving = Moved(fixed, {0.0, 0.0, 3.0});
  EXPECT_EQ(Ask(moving, fixed, down, 2.0).status, SweepStatus::Contact);
  EXPECT_EQ(Ask(moving, fixed, down, std::nextafter(2.0, 0.0)).status, SweepStatus::None);
  EXPECT_EQ(Ask(moving, fixed, down, 0.0).status, SweepStatus::None);
  EXPECT_EQ(Ask(fixed, fixed, down, 0.0).status, SweepStatus::Start);
  EXPECT_EQ(Ask(fixed, fixed, down, -0.0).status, SweepStatus::Start);
  for (const double noDistance : {-1.0, -infinity, nan}) {
    EXPECT_THROW(Ask(moving, fixed, down, noDistance), std::invalid_argument);
  }
}

TEST(Pair, DirectionNeedNotBeUnit) {
  const Mesh fixed = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Mesh moving = Moved(fixed, {-6.0, 0.0, 8.0});
  const Answer answer = Ask(moving, fixed, {300.0, 0.0, -400.0});
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  ExpectPoint(answer.unitDirection, {0.6, 0.0, -0.8});
  // Seven units down and a quarter more along the way, 5/4 of it: the faces z = 8 and z = 1.
  EXPECT_EQ(answer.contact.travel, 8.75);
}

TEST(Pair, DirectionMustBeFiniteAndNotZero) {
  const Mesh body = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  for (const Coord3& d :
       {Coord3{0.0, 0.0, 0.0}, Coord3{nan, 0.0, 1.0}, Coord3{infinity, 0.0, 0.0}}) {
    EXPECT_THROW(Ask(body, body, d), std::invalid_argument);
  }
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(Ask(Moved(body, {0.0, 0.0, 3.0}), body, {0.0, 0.0, -least}).contact.travel, 2.0);
  const double most = std::numeric_limits<double>::max();
  EXPECT_EQ(Ask(Moved(body, {0.0, 0.0, 3.0}), body, {0.0, 0.0, -most}).contact.travel, 2.0);
}

TEST(Pair, OneSidedDropsTrianglesThatFaceAway) {
  // Downwards, the moving body keeps its bottom and the fixed one its top; the walls are edge-on.
  const Mesh fixed = Box({-8.0, -8.0, -8.0}, {8.0, 8.0, 8.0});
  const Mesh inside = Box({-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0});
  const OneSidedAnswer told = AskOneSided(inside, fixed, down);
  EXPECT_EQ(told.answer.status, SweepStatus::None);
  EXPECT_EQ(told.leftOut.moving, 2u);
  EXPECT_EQ(told.leftOut.fixed, 2u);
  EXPECT_EQ(Ask(inside, fixed, down).status, SweepStatus::Contact);
  const Answer above = AskOneSided(Moved(inside, {0.0, 0.0, 20.0}), fixed, down).answer;
  EXPECT_EQ(above.status, SweepStatus::Contact);
  EXPECT_EQ(above.contact.travel, 11.0);
}

TEST(Pair, OneSidedKeepsEdgeOnAndDegenerateTriangles) {
  Mesh moving;
  AddTriangle(moving, {0.0, 0.0, 3.0}, {0.0, 0.0, 3.0}, {0.0, 0.0, 3.0});
  Mesh wall;
  AddTriangle(wall, {0.0, -1.0, 1.0}, {0.0, 1.0, 1.0}, {0.0, 0.0, -1.0});
  const OneSidedAnswer told = AskOneSided(moving, wall, down);
  EXPECT_EQ(told.answer.status, SweepStatus::Contact);
  EXPECT_EQ(told.answer.contact.travel, 2.0);
  EXPECT_EQ(told.leftOut.moving + told.leftOut.fixed, 0u);
}

TEST(Pair, NonFiniteTrianglesAreSkippedAndCounted) {
  const Mesh box = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  Mesh moving;
  AddTriangle(moving, {nan, 0.0, 2.0}, {1.0, 0.0, 2.0}, {0.0, 1.0, 2.0});
  AddTriangle(moving, {0.0, 0.0, 2.0}, {1.0, -infinity, 2.0}, {0.0, 1.0, 2.0});
  Append(moving, Moved(box, {0.25, 0.25, 4.0}));
  const Answer answer = Ask(moving, box, down);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.0);
  EXPECT_EQ(BodyOf(moving).TriangleCount(), 14u);
  EXPECT_EQ(BodyOf(moving).SkippedCount(), 2u);
  EXPECT_GE(answer.contact.movingTriangle, 2u);
  EXPECT_EQ(BodyOf(box).SkippedCount(), 0u);
  Mesh nothing;
  AddTriangle(nothing, {nan, nan, nan}, {nan, nan, nan}, {nan, nan, nan});
  EXPECT_EQ(Ask(nothing, box, down).status, SweepStatus::None);
  EXPECT_EQ(Ask(box, Mesh{}, down).status, SweepStatus::None);
}

TEST(Pair, EveryScaleHasTheSameAnswer) {
  const Mesh fixed = PlateWithHole(4.0, 1.0, 0.0, 2.0);
  const Mesh moving = Pyramid({2.0, 2.25, 5.0}, 2.0);
  const Coord3 d{0.25, -0.125, -1.0};
  const Answer expected = Ask(moving, fixed, d);
  ASSERT_EQ(expected.status, SweepStatus::Contact);
  for (const int exponent : {-1000, -300, 300, 1000}) {
    const double s = std::ldexp(1.0, exponent);
    const Answer answer = Ask(Stretched(moving, {s, s, s}), Stretched(fixed, {s, s, s}), d);
    EXPECT_EQ(answer.status, SweepStatus::Contact);
    EXPECT_EQ(answer.contact.travel, std::ldexp(expected.contact.travel, exponent));
    EXPECT_EQ(answer.contact.movingTriangle, expected.contact.movingTriangle);
  }
  // At the very end of the range the travel does not fit any more.
  const double most = std::numeric_limits<double>::max();
  Mesh far;
  AddTriangle(far, {0.0, 0.0, most}, {0.0, 0.0, most}, {0.0, 0.0, most});
  Mesh near;
  AddTriangle(near, {0.0, 0.0, -most}, {0.0, 0.0, -most}, {0.0, 0.0, -most});
  EXPECT_THROW(Ask(far, near, down), std::overflow_error);
}

TEST(Pair, CoordinatesFarBelowTheLargestAreRounded) {
  // To multiples of 2^-339 of the power of two above the largest coordinate, here 1.
  const auto above = [](double z) {
    Mesh point;
    AddTriangle(point, {-0.25, -0.25, z}, {-0.25, -0.25, z}, {-0.25, -0.25, z});
    Mesh floor;
    AddTriangle(floor, {-0.5, -0.5, 0.0}, {0.75, -0.5, 0.0}, {-0.5, 0.75, 0.0});
    Append(floor, Moved(floor, {0.0, 0.0, -0.5}));
    return Ask(point, floor, down);
  };
  EXPECT_EQ(above(0x1p-400).status, SweepStatus::Start);
  EXPECT_EQ(above(0x1p-300).status, SweepStatus::Contact);
  EXPECT_EQ(above(0x1p-300).contact.travel, 0x1p-300);
  EXPECT_EQ(above(0x1p-300 + 0x1p-340).contact.travel, 0x1p-300);
  EXPECT_EQ(above(0x1p-300 + 0x3p-340).contact.travel, 0x1p-300 + 0x1p-338);
  EXPECT_EQ(above(0x1p-280 + 0x1p-330).contact.travel, 0x1p-280 + 0x1p-330);
}

/// All pairs, one after the other.
Answer BruteForce(const Mesh& moving, const Mesh& fixed, const Coord3& d) {
  const TravelDirection direction(d);
  const auto triangle = [&direction](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, c[0], c[1], c[2]);
  };
  Answer answer;
  answer.status = SweepStatus::None;
  const auto take = [&](SweepStatus status, const PairContact& c, std::size_t i, std::size_t j) {
    answer.status = status;
    answer.contact.travel = c.travel;
    answer.contact.kind = c.kind;
    answer.contact.movingTriangle = i;
    answer.contact.movingPoint = c.onMoving;
    answer.contact.fixedTriangle = j;
    answer.contact.fixedPoint = c.onFixed;
    answer.contact.normal = {0.0, 0.0, 0.0};
    answer.contact.hasNormal =
        ContactNormal(direction, triangle(moving, i), triangle(fixed, j), c, answer.contact.normal);
  };
  for (std::size_t i = 0; i < moving.TriangleCount(); ++i) {
    for (std::size_t j = 0; j < fixed.TriangleCount(); ++j) {
      ContactInterval interval{};
      if (!FindContactInterval(direction, triangle(moving, i), triangle(fixed, j), interval)) {
        continue;
      }
      if (interval.last.travel < 0.0) continue;
      if (interval.first.travel <= 0.0) {
        take(SweepStatus::Start, ContactAtStart(interval), i, j);
        return answer;
      }
      const bool isFirst = answer.status == SweepStatus::None;
      if (isFirst || interval.first.travel < answer.contact.travel) {
        take(SweepStatus::Contact, interval.first, i, j);
      }
    }
  }
  return answer;
}

struct SoupCase {
  const char* name;
  double step;
  double size;
  Coord3 stretch, offset, direction;
  double gap; ///< between the cubes of the soups; negative for cubes within each other
};

void PrintTo(const SoupCase& c, std::ostream* out) {
  *out << c.name;
}

class PairSoup : public testing::TestWithParam<SoupCase> {};

TEST_P(PairSoup, CulledSearchEqualsAllPairsForAnyThreads) {
  const SoupCase& c = GetParam();
  const unsigned seed = 31337;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  for (int round = 0; round < 12; ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const double along = (2.0 + c.gap) / gsl_arithmetic::Length(c.direction);
    const Mesh moving =
        Moved(Stretched(Soup(random, 150, 1.0, c.size, c.step), c.stretch), c.offset);
    const Mesh fixed =
        Moved(Moved(Stretched(Soup(random, 150, 1.0, c.size, c.step), c.stretch), c.offset),
              gsl_arithmetic::Multiply(c.direction, along));
    const Answer expected = BruteForce(moving, fixed, c.direction);
    for (const unsigned threads : {1u, 2u, 5u}) {
      ExpectSame(Ask(moving, fixed, c.direction, infinity, threads), expected);
    }
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Soups, PairSoup,
    testing::Values(SoupCase{"apart", 0.0, 0.2, {1, 1, 1}, {0, 0, 0}, {0, 0, -1}, 0.5},
                    SoupCase{"oblique", 0.0, 0.2, {1, 1, 1}, {0, 0, 0}, {1, 2, -3}, 0.5},
                    SoupCase{"within", 0.0, 0.02, {1, 1, 1}, {0, 0, 0}, {1, 2, -3}, -2.0},
                    SoupCase{"within_dense", 0.0, 0.2, {1, 1, 1}, {0, 0, 0}, {1, 0, 0}, -2.0},
                    SoupCase{"grid", 0.125, 0.25, {1, 1, 1}, {0, 0, 0}, {0, -1, 0}, 1.0},
                    SoupCase{"grid_oblique", 0.125, 0.25, {1, 1, 1}, {0, 0, 0}, {1, 1, 0}, 1.0},
                    SoupCase{"grid_within", 0.125, 0.125, {1, 1, 1}, {0, 0, 0}, {0, 0, 1}, -2.0},
                    SoupCase{
                        "far_from_origin", 0.0, 0.2, {1, 1, 1}, {1e7, -3e7, 2e7}, {1, 2, -3}, 0.5},
                    SoupCase{"flat", 0.0, 0.3, {1, 1, 1e-9}, {0, 0, 0}, {1, 0.5, 1e-10}, 0.5},
                    SoupCase{"needles", 0.0, 0.3, {1, 1e3, 1e-3}, {0, 0, 0}, {0, 0, -1}, -2.0},
                    SoupCase{"plane", 0.0, 0.2, {1, 1, 0}, {0, 0, 5}, {1, 0.5, 0}, 0.5},
                    SoupCase{"line", 0.0, 0.1, {1, 0, 0}, {0, 2, 5}, {1, 0, 0}, 0.5}),
    [](const testing::TestParamInfo<SoupCase>& tested) { return std::string(tested.param.name); });

TEST(Pair, TiesGoToTheFirstPairForAnyThreads) {
  // Forty boxes that all touch down at once.
  Mesh moving;
  for (int k = 0; k < 40; ++k) {
    Append(moving, Box({3.0 * k, 0.0, 5.0}, {3.0 * k + 1.0, 1.0, 6.0}));
  }
  const Mesh fixed = Box({-10.0, -10.0, 0.0}, {200.0, 10.0, 1.0});
  for (const unsigned threads : {1u, 2u, 3u, 8u}) {
    const Answer answer = Ask(moving, fixed, down, infinity, threads);
    EXPECT_EQ(answer.contact.travel, 4.0);
    EXPECT_EQ(answer.contact.movingTriangle, 0u);
  }
}

TEST(Pair, TravelsThatRoundToTheSameNumberAreToldApart) {
  // Two spikes fall beside each other, one onto a slope z = x / n, the other onto level ground.
  // The travels are 2/3 and 1/5, and the doubles nearest to them: one is less, the other more.
  const auto spike = [](Mesh& mesh, double x, double y, double z) {
    AddTriangle(mesh, {x, y, z}, {x + 0.25, y, z + 9.0}, {x, y + 0.25, z + 9.0});
  };
  Mesh slopes;
  AddTriangle(slopes, {-9.0, -9.0, -3.0}, {9.0, -9.0, 3.0}, {0.0, 9.0, 0.0});
  AddTriangle(slopes, {20.0, -9.0, 0.0}, {40.0, -9.0, 0.0}, {30.0, 9.0, 0.0});
  Mesh twoThirds;
  spike(twoThirds, 1.0, 0.0, 1.0);
  spike(twoThirds, 30.0, 0.0, 0x1.5555555555555p-1);
  Mesh fifth;
  AddTriangle(fifth, {-10.0, -9.0, -2.0}, {10.0, -9.0, 2.0}, {0.0, 9.0, 0.0});
  AddTriangle(fifth, {20.0, -9.0, 0.0}, {40.0, -9.0, 0.0}, {30.0, 9.0, 0.0});
  Mesh oneFifth;
  spike(oneFifth, 30.0, 0.0, 0x1.999999999999ap-3);
  spike(oneFifth, 4.0, 0.0, 1.0);
  for (const unsigned threads : {1u, 2u, 3u}) {
    const Answer level = Ask(twoThirds, slopes, down, infinity, threads);
    EXPECT_EQ(level.contact.travel, 0x1.5555555555555p-1);
    EXPECT_EQ(level.contact.movingTriangle, 1u);
    EXPECT_EQ(level.contact.fixedTriangle, 1u);
    const Answer slope = Ask(oneFifth, fifth, down, infinity, threads);
    EXPECT_EQ(slope.contact.travel, 0x1.999999999999ap-3);
    EXPECT_EQ(slope.contact.movingTriangle, 1u);
    EXPECT_EQ(slope.contact.fixedTriangle, 0u);
    // The greatest distance is compared with the exact travel, 1/5 or the double below 2/3.
    EXPECT_EQ(Ask(oneFifth, fifth, down, 0x1.999999999999ap-3, threads).contact.movingTriangle, 1u);
    EXPECT_EQ(Ask(oneFifth, fifth, down, 0x1.9999999999999p-3, threads).status, SweepStatus::None);
    EXPECT_EQ(Ask(twoThirds, slopes, down, 0x1.5555555555555p-1, threads).contact.movingTriangle,
              1u);
    EXPECT_EQ(Ask(twoThirds, slopes, down, 0x1.5555555555554p-1, threads).status,
              SweepStatus::None);
  }
}

/// A body that is a single point.
Mesh PointAt(const Coord3& p) {
  Mesh mesh;
  AddTriangle(mesh, p, p, p);
  return mesh;
}

/// The plane z = x / 3, for 9 units around the origin.
Mesh Slope(double unit) {
  Mesh mesh;
  AddTriangle(mesh, {-9.0, -9.0, -3.0}, {9.0, -9.0, 3.0}, {0.0, 9.0, 0.0});
  return Stretched(mesh, {unit, unit, unit});
}

TEST(Pair, GreatestDistanceIsComparedWithTheExactTravel) {
  // 2/3 and 4/3, which are reported as the doubles below them.
  for (const double z : {1.0, 2.0}) {
    const Mesh moving = PointAt({z, 0.0, z});
    const Answer answer = Ask(moving, Slope(1.0), down);
    EXPECT_EQ(answer.contact.travel, z * 0x1.5555555555555p-1);
    EXPECT_EQ(Ask(moving, Slope(1.0), down, answer.contact.travel).status, SweepStatus::None);
    const double above = std::nextafter(answer.contact.travel, 9.0);
    EXPECT_EQ(Ask(moving, Slope(1.0), down, above).status, SweepStatus::Contact);
  }
  // From (1, 0, 0) along (-1, 1, 1): a quarter of the root of 3, which is above the nearest double.
  const Coord3 diagonal{-1.0, 1.0, 1.0};
  const Mesh moving = PointAt({1.0, 0.0, 0.0});
  const Answer root = Ask(moving, Slope(1.0), diagonal);
  EXPECT_EQ(root.contact.travel, 0x1.bb67ae8584caap-2);
  EXPECT_EQ(Ask(moving, Slope(1.0), diagonal, root.contact.travel).status, SweepStatus::None);
  EXPECT_EQ(Ask(moving, Slope(1.0), diagonal, 0x1.bb67ae8584cabp-2).status, SweepStatus::Contact);
}

TEST(Pair, GreatestDistanceIsExactBelowTheNormalNumbers) {
  // In units of the least number: the point (x, 0, z) is by z - x / 3 above the slope.
  const double unit = std::numeric_limits<double>::denorm_min();
  const auto ask = [unit](double x, double z, double limit) {
    return Ask(PointAt({x * unit, 0.0, z * unit}), Slope(unit), down, limit * unit);
  };
  EXPECT_EQ(ask(3.0, 3.0, 2.0).status, SweepStatus::Contact); // 2, at the limit
  EXPECT_EQ(ask(3.0, 3.0, 1.0).status, SweepStatus::None);
  EXPECT_EQ(ask(2.0, 2.0, 1.0).status, SweepStatus::None); // 4/3, reported as 1
  EXPECT_EQ(ask(2.0, 2.0, 2.0).contact.travel, unit);
  EXPECT_EQ(ask(1.0, 2.0, 1.0).status, SweepStatus::None); // 5/3
  EXPECT_EQ(ask(1.0, 2.0, 2.0).status, SweepStatus::Contact);
  EXPECT_EQ(ask(1.0, 1.0, 1.0).status, SweepStatus::Contact); // 2/3
  EXPECT_EQ(ask(2.0, 1.0, 0.0).status, SweepStatus::None);    // 1/3
  EXPECT_EQ(ask(2.0, 1.0, 1.0).status, SweepStatus::Contact);
}

TEST(Pair, GreatestDistanceFarBelowTheSizeOfTheBodiesIsExact) {
  // The edges (1, h, 0) and (0, 1, -h) with h = 2^-280 are in the plane z = h^2 x - h y, which is
  // 3/4 h^2 below the point (1/4, h, 0).
  const double h = 0x1p-280;
  Mesh plane;
  AddTriangle(plane, {0.0, 0.0, 0.0}, {1.0, h, 0.0}, {0.0, 1.0, -h});
  const Mesh point = PointAt({0.25, h, 0.0});
  const double travel = 0.75 * h * h;
  EXPECT_EQ(Ask(point, plane, down).contact.travel, travel);
  EXPECT_EQ(Ask(point, plane, down, travel).status, SweepStatus::Contact);
  EXPECT_EQ(Ask(point, plane, down, std::nextafter(travel, 0.0)).status, SweepStatus::None);
  EXPECT_EQ(Ask(point, plane, down, 0.0).status, SweepStatus::None);
}

TEST(Pair, ReportedTravelIsNeverBeyondTheGreatestDistance) {
  const unsigned seed = 161;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  int within = 0;
  int beyond = 0;
  for (long round = 0; round < Scaled(4000); ++round) {
    const double size = std::ldexp(1.0, static_cast<int>(random() % 2000) - 1060);
    const Mesh moving = PointAt({size * unit(random), size * unit(random), 4.0 * size});
    const Coord3 d{0.1 * unit(random), 0.1 * unit(random), -1.0};
    const Answer free = Ask(moving, Slope(size), d);
    ASSERT_EQ(free.status, SweepStatus::Contact);
    const double limit = free.contact.travel;
    const Answer limited = Ask(moving, Slope(size), d, limit);
    if (limited.status == SweepStatus::Contact) {
      ++within;
      ExpectSame(limited, free);
    } else {
      ++beyond; // the exact travel is between the limit and half a unit more
    }
    EXPECT_EQ(Ask(moving, Slope(size), d, std::nextafter(limit, infinity)).status,
              SweepStatus::Contact);
    EXPECT_EQ(Ask(moving, Slope(size), d, std::nextafter(limit, 0.0)).status, SweepStatus::None);
  }
  EXPECT_GT(within, Scaled(1000));
  EXPECT_GT(beyond, Scaled(1000));
}

/// First contact by the linear programme of every pair, in fractions.
struct ExactAnswer {
  SweepStatus status = SweepStatus::None;
  oracle::Fraction travel;
  std::size_t moving = 0, fixed = 0;
};

ExactAnswer FirstByFractions(const oracle::IntPoint& d,
                             const std::vector<oracle::IntTriangle>& moving,
                             const std::vector<oracle::IntTriangle>& fixed) {
  ExactAnswer answer;
  for (std::size_t i = 0; i < moving.size(); ++i) {
    for (std::size_t j = 0; j < fixed.size(); ++j) {
      const auto interval = oracle::SweepPair(d, moving[i], fixed[j]);
      if (!interval || interval->high.Sign() < 0) continue;
      if (interval->low.Sign() <= 0) return {SweepStatus::Start, {}, i, j};
      if (answer.status == SweepStatus::None || interval->low < answer.travel) {
        answer = {SweepStatus::Contact, interval->low, i, j};
      }
    }
  }
  return answer;
}

/// Triangles with corners on a small grid: most contacts come in crowds at one travel.
std::vector<oracle::IntTriangle> IntSoup(std::mt19937_64& random, std::size_t count, int reach,
                                         const oracle::IntPoint& shift) {
  WholesIn<std::int64_t> coordinate(-reach, reach);
  std::vector<oracle::IntTriangle> soup(count);
  for (oracle::IntTriangle& t : soup) {
    for (oracle::IntPoint& p : t) {
      for (std::size_t k = 0; k < 3; ++k)
        p[k] = coordinate(random) + shift[k];
    }
  }
  return soup;
}

Mesh MeshOf(const std::vector<oracle::IntTriangle>& soup) {
  Mesh mesh;
  for (const oracle::IntTriangle& t : soup) {
    for (const oracle::IntPoint& p : t) {
      mesh.corners.push_back(
          {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])});
    }
  }
  return mesh;
}

TEST(Pair, AgreesWithFractionsOnGridsFullOfTies) {
  const unsigned seed = 2718;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  const oracle::IntPoint directions[] = {{0, 0, -1}, {1, 0, 0},  {0, 1, 1},
                                         {1, 2, -3}, {-1, 1, 1}, {3, 0, -4}};
  int counts[3] = {};
  const int rounds = TEST_UNDER_SANITIZER ? 30 : 90;
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const oracle::IntPoint& d = directions[static_cast<std::size_t>(round) % 6];
    const int reach = 1 + round % 4;
    const std::int64_t back = round % 5 == 0 ? 0 : -2 - round % 3;
    const auto moving = IntSoup(random, 9, reach, {back * d[0], back * d[1], back * d[2]});
    const auto fixed = IntSoup(random, 9, reach, {0, 0, 0});
    const ExactAnswer expected = FirstByFractions(d, moving, fixed);
    ++counts[static_cast<int>(expected.status)];
    const Coord3 direction{static_cast<double>(d[0]), static_cast<double>(d[1]),
                           static_cast<double>(d[2])};
    const Answer answer = Ask(MeshOf(moving), MeshOf(fixed), direction, infinity, 2);
    ASSERT_EQ(answer.status, expected.status);
    if (expected.status == SweepStatus::None) continue;
    EXPECT_EQ(answer.contact.movingTriangle, expected.moving);
    EXPECT_EQ(answer.contact.fixedTriangle, expected.fixed);
    const double travel =
        static_cast<double>(expected.travel.Value()) * gsl_arithmetic::Length(direction);
    EXPECT_NEAR(answer.contact.travel, travel, travel * 0x1p-51);
  }
  EXPECT_GT(counts[static_cast<int>(SweepStatus::Contact)], rounds / 3);
  EXPECT_GT(counts[static_cast<int>(SweepStatus::Start)], rounds / 9);
}

TEST(Pair, ManyThinTrianglesAslantEndInTime) {
  // Two combs of long strips across each other at 45 degrees to the axes.
  const auto comb = [](double z, double sense) {
    Mesh mesh;
    for (long k = 0; k < Scaled(4000); ++k) {
      const double at = 0.01 * static_cast<double>(k);
      AddTriangle(mesh, {at, sense * at, z}, {at + 40.0, sense * at - sense * 40.0, z},
                  {at + 0.005, sense * (at + 0.005), z});
    }
    return mesh;
  };
  const Answer answer = Ask(comb(5.0, 1.0), comb(2.0, 1.0), down);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 3.0);
}

/// Directions around a scene, of all kinds of answer.
std::vector<Question> ManyQuestions(std::size_t count) {
  std::vector<Question> questions(count);
  for (std::size_t k = 0; k < count; ++k) {
    const double angle = 2.4 * static_cast<double>(k);
    questions[k].direction = {std::cos(angle), std::sin(angle),
                              1.0 - 2.0 * static_cast<double>(k) / static_cast<double>(count)};
    if (k % 3 == 0) questions[k].offset = {0.125, 0.1, -0.3};
  }
  return questions;
}

struct BatchScene {
  BatchScene() {
    std::mt19937_64 random(8);
    moving = Soup(random, 600, 1.0, 0.1, 0.0);
    fixed = Soup(random, 600, 1.0, 0.1, 0.0);
    Append(fixed, Moved(fixed, {4.0, 0.0, 0.0}));
    moving = Moved(moving, {0.0, 0.0, 3.0});
  }
  Mesh moving, fixed;
};

TEST(Pair, BatchesAnswerAsSingleQuestionsOfFreshPairs) {
  const BatchScene scene;
  const std::vector<Question> questions = ManyQuestions(60);
  const Pair pair = PairOf(scene.moving, scene.fixed);
  std::vector<Answer> answers(questions.size());
  pair.First(questions.data(), questions.size(), answers.data(), OnThreads(3));
  int counts[4] = {};
  for (std::size_t k = 0; k < questions.size(); ++k) {
    const Answer fresh = PairOf(scene.moving, scene.fixed).First(questions[k], OnThreads(1));
    EXPECT_TRUE(SameBits(answers[k], fresh)) << k;
    ++counts[static_cast<int>(fresh.status)];
  }
  EXPECT_GT(counts[static_cast<int>(SweepStatus::Contact)], 3);
  EXPECT_GT(counts[static_cast<int>(SweepStatus::None)], 3);
}

TEST(Pair, ManyThreadsMayAskWhileItIsBeingPrepared) {
  const BatchScene scene;
  const std::vector<Question> questions = ManyQuestions(12);
  std::vector<Answer> expected(questions.size());
  PairOf(scene.moving, scene.fixed)
      .First(questions.data(), questions.size(), expected.data(), OnThreads(1));
  const Pair pair = PairOf(scene.moving, scene.fixed);
  std::vector<std::vector<Answer>> told(4, std::vector<Answer>(questions.size()));
  gsl_sweep::Run run;
  run.threads = 4;
  gsl_sweep::RunJobs(run, 4, [&](std::size_t thread) {
    for (std::size_t k = 0; k < questions.size(); ++k)
      told[thread][k] = pair.First(questions[k], OnThreads(1));
  });
  for (const std::vector<Answer>& answers : told) {
    for (std::size_t k = 0; k < questions.size(); ++k)
      EXPECT_TRUE(SameBits(answers[k], expected[k]));
  }
}

TEST(Pair, CancelledBatchesKeepEarlierAnswers) {
  const BatchScene scene;
  const std::vector<Question> questions = ManyQuestions(10);
  const Pair pair = PairOf(scene.moving, scene.fixed);
  std::vector<Answer> all(questions.size());
  std::vector<double> parts;
  gsl_sweep::Run run = OnThreads(1);
  run.progress = [&](double part) {
    parts.push_back(part);
    return true;
  };
  pair.First(questions.data(), questions.size(), all.data(), run);
  EXPECT_EQ(parts.size(), 10u);
  EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end()));
  EXPECT_EQ(parts.back(), 1.0);
  std::vector<Answer> some(questions.size(), all[0]);
  run.progress = [](double part) { return part < 0.4; };
  pair.First(questions.data(), questions.size(), some.data(), run);
  for (std::size_t k = 0; k < questions.size(); ++k)
    EXPECT_TRUE(SameBits(some[k], k < 4 ? all[k] : Answer())) << k;
}

TEST(Pair, BatchIsCancelledWithinAQuestion) {
  // Specks in a cube above specks in a cube: many pairs to look at, and hardly one that meets.
  std::mt19937_64 random(4);
  const Mesh specks = Soup(random, 20000, 1.0, 1e-5, 0.0);
  const Mesh others = Moved(Soup(random, 20000, 1.0, 1e-5, 0.0), {0.0, 0.0, -3.0});
  const Pair pair = PairOf(specks, others);
  Question question;
  question.direction = down;
  std::size_t calls = 0;
  gsl_sweep::Run run = OnThreads(1);
  run.progress = [&calls](double) { return ++calls > 0; };
  Answer answer;
  pair.First(&question, 1, &answer, run);
  ASSERT_NE(answer.status, SweepStatus::Cancelled);
  ASSERT_GT(calls, 1u); // the last one counts the question
  run.progress = [](double) { return false; };
  pair.First(&question, 1, &answer, run);
  EXPECT_EQ(answer.status, SweepStatus::Cancelled);
  EXPECT_EQ(pair.FirstOfEach(question, run)[0].status, SweepStatus::Cancelled);
}

TEST(Pair, CancelIsNoticedWhileABodyIsStillBeingPrepared) {
  // A question that is answered at a glance, after preparing that takes longer.
  const Mesh box = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  std::mt19937_64 random(5);
  const Mesh fixed = Soup(random, 100000, 1.0, 1e-3, 0.0);
  Question question;
  question.direction = {1.0, 0.0, 0.0};
  for (const bool isBatch : {false, true}) {
    const Pair pair = PairOf(Moved(box, {9.0, 0.0, 0.0}), fixed);
    const auto ask = [&](const gsl_sweep::Run& run) {
      if (!isBatch) return pair.First(question, run).status;
      Answer answer;
      pair.First(&question, 1, &answer, run);
      return answer.status;
    };
    gsl_sweep::Run run = OnThreads(1);
    EXPECT_EQ(ask(run), SweepStatus::None);
    std::vector<double> parts;
    run.progress = [&parts](double part) {
      parts.push_back(part);
      return false;
    };
    EXPECT_EQ(ask(run), SweepStatus::Cancelled);
    EXPECT_EQ(parts, std::vector<double>{0.0});
    run.progress = {};
    EXPECT_EQ(ask(run), SweepStatus::None);
  }
}

TEST(Pair, OverflowOfOneOfEachNamesTheFixedBody) {
  const double most = std::numeric_limits<double>::max();
  const Pair pair(BodyOf(PointAt({0.0, 0.0, most})),
                  {BodyOf(PointAt({0.0, 0.0, most / 2.0})), BodyOf(PointAt({0.0, 0.0, -most}))});
  Question question;
  question.direction = down;
  try {
    const std::vector<Answer> none = pair.FirstOfEach(question, OnThreads(1));
    FAIL() << none.size();
  } catch (const std::overflow_error& error) {
    EXPECT_STREQ(error.what(), "fixed body 1: the travel is too large for a double");
  }
}

TEST(Pair, ErrorsOfABatchNameTheQuestion) {
  const Mesh box = Box({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const Pair pair = PairOf(box, box);
  std::vector<Question> questions(4);
  for (Question& question : questions)
    question.direction = down;
  questions[2].direction = {0.0, 0.0, 0.0};
  const Answer sentinel = pair.First(questions[0]);
  std::vector<Answer> answers(4, sentinel);
  try {
    pair.First(questions.data(), 4, answers.data());
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "question 2: the direction must be finite and not zero");
  }
  EXPECT_TRUE(SameBits(answers[3], sentinel));
}

TEST(Pair, AnOverflowInABatchIsReportedAfterTheOtherAnswers) {
  const double most = std::numeric_limits<double>::max();
  const Mesh far = PointAt({0.0, 0.0, most});
  Mesh fixed = PointAt({0.0, 0.0, -most});
  const Pair pair = PairOf(far, fixed);
  std::vector<Question> questions(3);
  questions[0].direction = questions[2].direction = {1.0, 0.0, 0.0};
  questions[1].direction = down;
  std::vector<Answer> answers(3);
  try {
    pair.First(questions.data(), 3, answers.data(), OnThreads(1));
    FAIL();
  } catch (const std::overflow_error& error) {
    EXPECT_STREQ(error.what(), "question 1: the travel is too large for a double");
  }
  EXPECT_EQ(answers[0].status, SweepStatus::None);
  EXPECT_EQ(answers[1].status, SweepStatus::Cancelled);
  EXPECT_EQ(answers[2].status, SweepStatus::None);
}

TEST(Pair, SeveralFixedBodiesAnswerAsTheirConcatenation) {
  const BatchScene scene;
  Mesh parts[3];
  for (std::size_t k = 0; k < scene.fixed.TriangleCount(); ++k) {
    const Coord3* c = scene.fixed.corners.data() + 3 * k;
    AddTriangle(parts[k < 100 ? 0 : k < 700 ? 1 : 2], c[0], c[1], c[2]);
  }
  const Pair whole = PairOf(scene.moving, scene.fixed);
  const Pair several(BodyOf(scene.moving),
                     {BodyOf(parts[0]), BodyOf(Mesh{}), BodyOf(parts[1]), BodyOf(parts[2])});
  const std::size_t begin[] = {0, 100, 100, 700};
  for (const Question& question : ManyQuestions(40)) {
    const Answer expected = whole.First(question);
    Answer answer = several.First(question);
    const std::vector<Answer> each = several.FirstOfEach(question);
    ASSERT_EQ(each.size(), 4u);
    EXPECT_EQ(each[1].status, SweepStatus::None);
    if (expected.status == SweepStatus::Contact) {
      const Answer& own = each[answer.contact.fixedBody];
      EXPECT_EQ(own.contact.travel, expected.contact.travel);
      EXPECT_EQ(own.contact.fixedBody, answer.contact.fixedBody);
      for (const Answer& other : each) {
        if (other.status == SweepStatus::Contact) {
          EXPECT_GE(other.contact.travel, expected.contact.travel);
        }
      }
    }
    answer.contact.fixedTriangle += begin[answer.contact.fixedBody];
    answer.contact.fixedBody = 0;
    EXPECT_TRUE(SameBits(answer, expected));
  }
  EXPECT_EQ(Pair(BodyOf(scene.moving), {}).First(ManyQuestions(1)[0]).status, SweepStatus::None);
}

TEST(Pair, OffsetsAnswerAsABodyMovedBeforehand) {
  const BatchScene scene;
  const Pair pair = PairOf(scene.moving, scene.fixed);
  for (const Coord3& offset :
       {Coord3{0.1, -0.7, 1.3}, Coord3{1e7, 0.0, 0.0}, Coord3{0.0, 1e-200, -0.0}}) {
    const Pair moved = PairOf(Moved(scene.moving, offset), scene.fixed);
    for (Question question : ManyQuestions(20)) {
      question.offset = {0.0, 0.0, 0.0};
      if (offset.x > 1e6) question.direction = {-1.0, 1e-9, -3e-7};
      const Answer expected = moved.First(question);
      question.offset = offset;
      EXPECT_TRUE(SameBits(pair.First(question), expected));
    }
  }
}

TEST(Pair, HalfTheTravelAndThenTheRestIsTheWhole) {
  const BatchScene scene;
  const Pair pair = PairOf(scene.moving, scene.fixed);
  Question question;
  question.direction = down;
  const Answer whole = pair.First(question);
  ASSERT_EQ(whole.status, SweepStatus::Contact);
  question.offset = {0.0, 0.0, -whole.contact.travel / 2.0};
  const Answer rest = pair.First(question);
  EXPECT_NEAR(rest.contact.travel, whole.contact.travel / 2.0, 1e-14);
  EXPECT_EQ(rest.contact.movingTriangle, whole.contact.movingTriangle);
}

TEST(Pair, SwappedAndReversedHasTheSameTravel) {
  const BatchScene scene;
  for (Question question : ManyQuestions(30)) {
    question.offset = {0.0, 0.0, 0.0};
    const Answer answer = PairOf(scene.moving, scene.fixed).First(question);
    question.direction = gsl_arithmetic::Negated(question.direction);
    const Answer swapped = PairOf(scene.fixed, scene.moving).First(question);
    EXPECT_EQ(swapped.status, answer.status);
    EXPECT_EQ(swapped.contact.travel, answer.contact.travel);
  }
}

} // namespace
