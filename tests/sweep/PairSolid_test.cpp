#include "Bodies.h"
#include "MeshRead.h"
#include "SweepAsk.h"
#include "SweepShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

/// Questions about solids.
namespace {

using namespace gsl_sweep;
using namespace sweep_ask;
using sweep_bodies::Sheared;
using sweep_bodies::Squares;
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

/// Returns a box of 4 by 4 by 2 on the plane z = 0. Its first triangle, in the bottom, is turned
/// over and covered by the next three: (0, 0), (2 + x, 2), (4, 4).
Mesh BoxWithSliver(double x) {
  Mesh box = BoxOf({0, 0, 0}, {4, 4, 2});
  box.corners.erase(box.corners.begin(), box.corners.begin() + 6); // the bottom
  const Coord3 a{0, 0, 0};
  const Coord3 b{4, 4, 0};
  const Coord3 middle{2 + x, 2, 0};
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, a, middle, b);
  sweep_shapes::AddTriangle(mesh, a, b, {4, 0, 0});
  sweep_shapes::AddTriangle(mesh, a, {0, 4, 0}, middle);
  sweep_shapes::AddTriangle(mesh, middle, {0, 4, 0}, b);
  Append(mesh, box);
  return mesh;
}

/// Turns a body by half a turn around the line y = 2, z = 0, so that what is above is below.
Mesh UpsideDown(Mesh mesh) {
  for (Coord3& p : mesh.corners)
    p = {p.x, 4 - p.y, -p.z};
  return mesh;
}

TEST(PairSolid, TrianglesThatAreTurnedOverDoNotHoldBodiesThatPart) {
  // One body rests on the other. The shadows of the triangles that are turned over share area near
  // (2, 2). Along the normal of the moving one they face each other.
  for (const double x : {1.0, 0x1p-20}) {
    const Mesh upper = BoxWithSliver(x);
    const Mesh lower = UpsideDown(upper);
    EXPECT_EQ(Ask(upper, lower, up).status, SweepStatus::None);
    EXPECT_EQ(Ask(lower, upper, down).status, SweepStatus::None);
    EXPECT_EQ(Ask(upper, lower, right).status, SweepStatus::None);
    ExpectStart(Ask(upper, lower, down), false);
    // What is ahead still stops the body, and so does what it touches there.
    Mesh withRoof = lower;
    Append(withRoof, BoxOf({0, 0, 5}, {4, 4, 6}));
    ExpectTravel(Ask(upper, withRoof, up), 3.0);
    Mesh withLid = lower;
    Append(withLid, BoxOf({0, 0, 2}, {4, 4, 3}));
    const Answer answer = Ask(upper, withLid, up);
    ExpectStart(answer, false);
    // The top of the moving body is its triangles 4 and 5: (0, 0), (4, 0), (4, 4) is the first. The
    // bottom of the lid is 14 and 15, and (0, 0), (4, 4), (4, 0) is the second.
    EXPECT_EQ(answer.contact.movingTriangle, 4u);
    EXPECT_EQ(answer.contact.fixedTriangle, 15u);
  }
}

TEST(PairSolid, SheetsInFacesDoNotHoldBodiesThatPart) {
  // Two triangles with the same corners in the face by which one body rests on the other.
  Mesh upper = BoxOf({0, 0, 0}, {4, 4, 2});
  sweep_shapes::AddTriangle(upper, {1, 1, 0}, {3, 1, 0}, {1, 3, 0});
  sweep_shapes::AddTriangle(upper, {1, 1, 0}, {1, 3, 0}, {3, 1, 0});
  const Mesh lower = UpsideDown(upper);
  EXPECT_EQ(Ask(upper, lower, up).status, SweepStatus::None);
  EXPECT_EQ(Ask(upper, lower, right).status, SweepStatus::None);
  ExpectStart(Ask(upper, lower, down), false);
  ExpectTravel(Ask(Moved(upper, {0, 0, 3}), lower, down), 3.0);
}

/// Returns a wedge whose edge is the x axis, with the section (0, 0), (4, 2), (4, 4) in y and z.
/// Its upper side, z = y, has an inner corner (5, 2, 2) beside the diagonal. The triangle of both
/// is turned over.
Mesh Wedge(bool isTurnedFirst) {
  const Coord3 edge[2] = {{0, 0, 0}, {8, 0, 0}};
  const Coord3 low[2] = {{0, 4, 2}, {8, 4, 2}};
  const Coord3 high[2] = {{0, 4, 4}, {8, 4, 4}};
  const Coord3 middle{5, 2, 2};
  Mesh turned;
  sweep_shapes::AddTriangle(turned, edge[0], high[1], middle);
  Mesh rest;
  sweep_shapes::AddTriangle(rest, edge[0], edge[1], high[1]);
  sweep_shapes::AddTriangle(rest, edge[0], middle, high[0]);
  sweep_shapes::AddTriangle(rest, middle, high[1], high[0]);
  sweep_shapes::AddQuad(rest, edge[0], low[0], low[1], edge[1]);
  sweep_shapes::AddQuad(rest, low[0], high[0], high[1], low[1]);
  sweep_shapes::AddTriangle(rest, edge[0], high[0], low[0]);
  sweep_shapes::AddTriangle(rest, edge[1], low[1], high[1]);
  Mesh mesh = isTurnedFirst ? turned : rest;
  Append(mesh, isTurnedFirst ? rest : turned);
  return mesh;
}

/// The mirror image in the plane z = -2.5.
Mesh Mirrored(Mesh mesh) {
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
    std::swap(mesh.corners[k + 1], mesh.corners[k + 2]);
  for (Coord3& p : mesh.corners)
    p.z = -5 - p.z;
  return mesh;
}

TEST(PairSolid, AtASharpEdgeATriangleThatStopsTheSolidIsNamed) {
  // The edges meet after 5. The lower side of the moving wedge, triangles 4 and 5 of the list with
  // the turned one first, meets the upper side of the fixed wedge, which is its mirror image.
  // Triangle 0, turned over, faces down in the upper side: the wedge is not above it. Triangle 0 of
  // the fixed wedge is not above the wedge either. So one of a pair has to be of the sides that
  // bound the wedges. Triangle 4 has the edge (0, 0, 0), (0, 4, 2), (8, 4, 2), and triangle 5 has
  // (0, 0, 0), (8, 4, 2), (8, 0, 0). The shadow of triangle 0, over (0, 0), (8, 4), (5, 2), is
  // below the diagonal, in that of triangle 5 alone.
  const Answer first = Ask(Wedge(true), Mirrored(Wedge(true)), down);
  ExpectTravel(first, 5.0);
  EXPECT_EQ(first.contact.movingTriangle, 0u);
  EXPECT_EQ(first.contact.fixedTriangle, 5u);
  // With the turned triangle last, the lower side is triangles 3 and 4.
  const Answer last = Ask(Wedge(false), Mirrored(Wedge(false)), down);
  ExpectTravel(last, 5.0);
  EXPECT_EQ(last.contact.movingTriangle, 3u);
  EXPECT_EQ(last.contact.fixedTriangle, 3u);
}

TEST(PairSolid, AWallOfNoThicknessStopsWhatTouchesIt) {
  // Two faces at z = 4, with nothing between them, are material. A body that touches one of them
  // from below, or from above, overlaps it.
  Mesh wall = BoxOf({20, 0, 0}, {22, 2, 2});
  sweep_shapes::AddTriangle(wall, {0, 0, 4}, {4, 0, 4}, {0, 4, 4});
  sweep_shapes::AddTriangle(wall, {0, 0, 4}, {0, 4, 4}, {4, 0, 4});
  ExpectStart(Ask(wall, BoxOf({0, 0, 0}, {4, 4, 4}), up), true);
  ExpectStart(Ask(wall, BoxOf({0, 0, 4}, {4, 4, 6}), down), true);
  ExpectTravel(Ask(wall, BoxOf({0, 0, 5}, {4, 4, 6}), up), 1.0);
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
    const Body moving = BodyOf(BoxOf({1, 1, 5}, {2, 2, 6}));
    const Body fixed[2] = {BodyOf(table), BodyOf(BoxOf({3, 3, 2}, {4, 4, 9}))};
    EXPECT_TRUE(SameBits(answers[k], Pair(moving, {fixed[0], fixed[1]}).First(questions[k]))) << k;
    overlaps += answers[k].contact.overlapsAtStart ? 1 : 0;
    std::vector<Answer> each = pair.FirstOfEach(questions[k]);
    each[1].contact.fixedBody = 0;
    for (std::size_t body = 0; body < 2; ++body)
      EXPECT_TRUE(SameBits(each[body], Pair(moving, {fixed[body]}).First(questions[k]))) << k;
  }
  EXPECT_EQ(overlaps, 9u);
}

/// A thread of pitch 1: grids of 16 points around and 16 along each turn. A step around goes with a
/// step along, so that the diagonals of the grid follow the thread.
class Thread {
public:
  /// The thread of the nut is wider by `play` steps on both flanks.
  Thread(int from, int to, int play) : m_from(from), m_to(to), m_play(play) {}

  /// The rod with this thread.
  Mesh Bolt() const {
    Mesh mesh = Surface();
    for (int i = 0; i < kSteps; ++i) {
      const Coord3 low{0, 0, Height(m_from)};
      const Coord3 high{0, 0, Height(m_to)};
      sweep_shapes::AddTriangle(mesh, low, At(i + 1, m_from), At(i, m_from));
      sweep_shapes::AddTriangle(mesh, high, At(i, m_to), At(i + 1, m_to));
    }
    return mesh;
  }

  /// The ring with this thread inside.
  Mesh Nut() const {
    Mesh mesh = Surface();
    for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
      std::swap(mesh.corners[k + 1], mesh.corners[k + 2]);
    for (int i = 0; i < kSteps; ++i) {
      const auto outer = [i](int step, int j) { return On(i + step, j, 4.0); };
      sweep_shapes::AddQuad(mesh, outer(0, m_from), outer(1, m_from), outer(1, m_to),
                            outer(0, m_to));
      sweep_shapes::AddQuad(mesh, At(i, m_from), At(i + 1, m_from), outer(1, m_from),
                            outer(0, m_from));
      sweep_shapes::AddQuad(mesh, At(i + 1, m_to), At(i, m_to), outer(0, m_to), outer(1, m_to));
    }
    return mesh;
  }

private:
  static constexpr int kSteps = 16;

  static double Height(int j) { return j / 16.0; }
  static Coord3 On(int i, int j, double radius) {
    const double angle = std::acos(-1.0) * 2.0 * (i % kSteps) / kSteps;
    return {radius * std::cos(angle), radius * std::sin(angle), Height(j)};
  }
  /// The radius of the bolt: crest, flank, root, flank, four steps each.
  static double Profile(int step) {
    const int k = (step % kSteps + kSteps) % kSteps;
    return k < 4 ? 3.0 : k < 8 ? 3.0 - (k - 4) / 8.0 : k < 12 ? 2.5 : 2.5 + (k - 12) / 8.0;
  }
  Coord3 At(int i, int j) const {
    double radius = 0.0;
    for (int step = j - m_play; step <= j + m_play; ++step)
      radius = std::max(radius, Profile(step - i));
    return On(i, j, radius);
  }
  Mesh Surface() const {
    Mesh mesh;
    for (int i = 0; i < kSteps; ++i) {
      for (int j = m_from; j < m_to; ++j) {
        sweep_shapes::AddTriangle(mesh, At(i, j), At(i + 1, j), At(i + 1, j + 1));
        sweep_shapes::AddTriangle(mesh, At(i, j), At(i + 1, j + 1), At(i, j + 1));
      }
    }
    return mesh;
  }
  int m_from, m_to, m_play;
};

TEST(PairSolid, ABoltInANutOfItsThreadHasThePlayOfItsFlanks) {
  const Body bolt = BodyOf(Thread(-8, 24, 0).Bolt());
  ASSERT_TRUE(bolt.IsSolid()) << bolt.IsSolid().Reason();
  for (const int play : {0, 1, 3}) {
    const Body nut = BodyOf(Thread(0, 16, play).Nut());
    ASSERT_TRUE(nut.IsSolid()) << nut.IsSolid().Reason();
    const Pair pair(bolt, {nut});
    for (const Coord3& direction : {up, down}) {
      const Answer answer = pair.First(Along(direction));
      if (play == 0) {
        ExpectStart(answer, false);
      } else {
        ExpectTravel(answer, play / 16.0);
      }
    }
    // The crests fill the grooves, whatever the play.
    for (const Coord3& aside : {right, Coord3{0, 1, 0}, Coord3{-1, 2, 0}})
      ExpectStart(pair.First(Along(aside)), false);
    Question shifted = Along(up);
    shifted.offset = {0, 0, (play + 0.5) / 16.0};
    ExpectStart(pair.First(shifted), true);
  }
}

/// Returns a prism from y = 0 to y = length over a convex polygon of points (x, 0, z), which turns
/// right as seen along y.
Mesh PrismOf(const std::vector<Coord3>& polygon, double length) {
  Mesh mesh;
  const auto far = [length](const Coord3& p) { return Coord3{p.x, length, p.z}; };
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const Coord3& p = polygon[k];
    const Coord3& q = polygon[(k + 1) % polygon.size()];
    sweep_shapes::AddQuad(mesh, q, p, far(p), far(q));
    if (k < 2) continue;
    sweep_shapes::AddTriangle(mesh, polygon[0], polygon[k - 1], p);
    sweep_shapes::AddTriangle(mesh, far(polygon[0]), far(p), far(polygon[k - 1]));
  }
  return mesh;
}

TEST(PairSolid, ADovetailSlidesAlongItsGrooveOnly) {
  Mesh groove = PrismOf({{-4, 0, 0}, {-2, 0, 0}, {-1, 0, 2}, {-4, 0, 2}}, 6);
  Append(groove, PrismOf({{2, 0, 0}, {4, 0, 0}, {4, 0, 2}, {1, 0, 2}}, 6));
  Append(groove, PrismOf({{-4, 0, -1}, {4, 0, -1}, {4, 0, 0}, {-4, 0, 0}}, 6));
  const Mesh tail = PrismOf({{-2, 0, 0}, {2, 0, 0}, {1, 0, 2}, {-1, 0, 2}}, 6);
  ASSERT_TRUE(BodyOf(groove).IsSolid()) << BodyOf(groove).IsSolid().Reason();
  ASSERT_TRUE(BodyOf(tail).IsSolid()) << BodyOf(tail).IsSolid().Reason();
  const Coord3 along{0, 1, 0};
  EXPECT_EQ(Ask(tail, groove, along).status, SweepStatus::None);
  EXPECT_EQ(Ask(tail, groove, {0, -1, 0}).status, SweepStatus::None);
  for (const Coord3& blocked : {up, down, right, Coord3{-1, 0, 0}, Coord3{1, 0, 2},
                                Coord3{-1, 0, 2}, Coord3{0x1p-40, 1, 0}, Coord3{0, 1, 0x1p-40}})
    ExpectStart(Ask(tail, groove, blocked), false);
  // A stop at the end of the groove.
  Append(groove, BoxOf({-4, 8, -1}, {4, 9, 4}));
  ExpectTravel(Ask(tail, groove, along), 2.0);
}

/// Returns a ball of triangles, symmetric along each axis.
Mesh BallOf(double radius, int count) {
  Mesh mesh;
  const auto at = [radius](double x, double y, double z) {
    const double length = std::sqrt(x * x + y * y + z * z);
    return Coord3{radius * x / length, radius * y / length, radius * z / length};
  };
  for (int octant = 0; octant < 8; ++octant) {
    const double s[3] = {octant & 1 ? -1.0 : 1.0, octant & 2 ? -1.0 : 1.0, octant & 4 ? -1.0 : 1.0};
    const bool isTurned = s[0] * s[1] * s[2] < 0.0;
    const auto corner = [&](int i, int j) {
      return at(s[0] * i, s[1] * j, s[2] * (count - i - j));
    };
    const auto add = [&](const Coord3& a, const Coord3& b, const Coord3& c) {
      sweep_shapes::AddTriangle(mesh, a, isTurned ? c : b, isTurned ? b : c);
    };
    for (int i = 0; i < count; ++i) {
      for (int j = 0; i + j < count; ++j) {
        add(corner(i, j), corner(i + 1, j), corner(i, j + 1));
        if (i + j + 1 < count) add(corner(i + 1, j), corner(i + 1, j + 1), corner(i, j + 1));
      }
    }
  }
  return mesh;
}

TEST(PairSolid, ABallInACageOfBarsStopsAtEachWindow) {
  // The bars are the edges of a cube. They cross each other in its corners.
  Mesh cage;
  for (const double p : {-3.5, 2.5}) {
    for (const double q : {-3.5, 2.5}) {
      Append(cage, BoxOf({-3.5, p, q}, {3.5, p + 1, q + 1}));
      Append(cage, BoxOf({p, -3.5, q}, {p + 1, 3.5, q + 1}));
      Append(cage, BoxOf({p, q, -3.5}, {p + 1, q + 1, 3.5}));
    }
  }
  const Mesh ball = BallOf(3.25, 6);
  ASSERT_TRUE(BodyOf(ball).IsSolid()) << BodyOf(ball).IsSolid().Reason();
  ASSERT_TRUE(BodyOf(cage).IsSolid()) << BodyOf(cage).IsSolid().Reason();
  // The ball reaches out of the windows. It stops where the part of it beyond y = 2.5, which is
  // behind a bar, meets the bar.
  double farthest = 0.0;
  for (std::size_t k = 0; k < ball.corners.size(); ++k) {
    const Coord3& a = ball.corners[k];
    const Coord3& b = ball.corners[k % 3 == 2 ? k - 2 : k + 1];
    if (a.y >= 2.5) farthest = std::max(farthest, a.x);
    if ((a.y - 2.5) * (b.y - 2.5) >= 0.0) continue;
    farthest = std::max(farthest, a.x + (2.5 - a.y) / (b.y - a.y) * (b.x - a.x));
  }
  const Pair pair(BodyOf(ball), {BodyOf(cage)});
  for (const Coord3& direction :
       {up, down, right, Coord3{-1, 0, 0}, Coord3{0, 1, 0}, Coord3{0, -1, 0}}) {
    const Answer answer = pair.First(Along(direction));
    ASSERT_EQ(answer.status, SweepStatus::Contact);
    EXPECT_NEAR(answer.contact.travel, 2.5 - farthest, 1e-14);
  }
}

TEST(PairSolid, RealPartsThatMateOverlapRightAfterTheirTravel) {
  const char* const folder = std::getenv("GSL_MESH_DIR");
  if (folder == nullptr) {
    std::printf("GSL_MESH_DIR is not set: no real parts are mated\n");
    return;
  }
  const auto body = [folder](const char* name) {
    return BodyOf(gsl_mesh::ReadMesh(std::string(folder) + "/" + name));
  };
  const Body insert = body("nist_insert.stl");
  for (const char* const name : {"nist_pump_base.stl", "nist_regulator.stl"}) {
    const Body part = body(name);
    ASSERT_TRUE(part.IsSolid()) << part.IsSolid().Reason();
    const Pair pair(part, {insert});
    for (const Coord3& direction : {down, Coord3{0.125, 0, -1}, Coord3{-0.25, 0.5, -1}}) {
      Question question = Along(direction);
      question.offset = {0, 0, 0.5};
      const Answer answer = pair.First(question);
      ASSERT_EQ(answer.status, SweepStatus::Contact) << name;
      Question touching = question;
      touching.rule = Rule::Touch;
      EXPECT_GE(answer.contact.travel, pair.First(touching).contact.travel);
      const auto overlapsAfter = [&](double travel) {
        Question there = question;
        there.offset.x += travel * answer.unitDirection.x;
        there.offset.y += travel * answer.unitDirection.y;
        there.offset.z += travel * answer.unitDirection.z;
        return pair.First(there).contact.overlapsAtStart;
      };
      for (const double share : {0.25, 0.75, 0.999999})
        EXPECT_FALSE(overlapsAfter(share * answer.contact.travel)) << name << " " << share;
      EXPECT_TRUE(overlapsAfter(answer.contact.travel + 1e-7)) << name;
    }
  }
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

/// A block slides down a wall of equal width, to a floor that is 3 below it.
struct SlidingBlock {
  Mesh moving = Squares(16, {1, 0, 2}, {2, 1, 3});
  Mesh fixed = Squares(16, {0, 0, 0}, {1, 1, 1});

  explicit SlidingBlock(bool hasFloor) {
    if (hasFloor) Append(fixed, BoxOf({0, 0, -2}, {4, 1, -1}));
  }

  /// Makes the walls aslant, exactly.
  void Shear() {
    moving = Sheared(moving);
    fixed = Sheared(fixed);
  }
};

TEST(PairSolid, BlocksOfManyTrianglesSlideAlongWalls) {
  const SlidingBlock free(false);
  EXPECT_EQ(Ask(free.moving, free.fixed, down).status, SweepStatus::None);
  const SlidingBlock block(true);
  ExpectTravel(Ask(block.moving, block.fixed, down), 3.0);
  // One unit in the last place into the wall: the block lands on it.
  const Mesh pressed = Moved(block.moving, {-0x1p-52, 0, 0});
  ExpectTravel(Ask(pressed, block.fixed, down), 1.0);
}

TEST(PairSolid, BlocksOfManyTrianglesSlideAlongWallsAslant) {
  SlidingBlock free(false);
  free.Shear();
  EXPECT_EQ(Ask(free.moving, free.fixed, {-0.25, 0, -1}).status, SweepStatus::None);
  SlidingBlock block(true);
  block.Shear();
  ExpectTravel(Ask(block.moving, block.fixed, {-0.25, 0, -1}), 3.0 * std::sqrt(1.0625));
  ExpectTravel(Ask(block.moving, block.fixed, {std::nextafter(-0.25, -1.0), 0, -1}),
               std::sqrt(1.0625));
}

/// An offset that is exact, and one that rounds every coordinate along the walls.
TEST(PairSolid, BlocksOfManyTrianglesSlideAfterAnOffset) {
  const SlidingBlock block(true);
  Question question = Along(down);
  question.offset = {0, 0, 0.25};
  ExpectTravel(AskInEveryWay(block.moving, block.fixed, question, 2), 3.25);
  question.offset = {0, 0, 0.1};
  const Answer rounded = AskInEveryWay(block.moving, block.fixed, question, 2);
  ExpectTravel(rounded, (2.0 + 0.1) - -1.0);
  question.offset = {-0x1p-52, 0, 0};
  ExpectTravel(AskInEveryWay(block.moving, block.fixed, question, 2), 1.0);
}

/// The first question of a pair of small bodies does not look how whole nodes face; later ones do.
TEST(PairSolid, LaterQuestionsAnswerAsTheFirstOneDoes) {
  std::mt19937_64 random(20);
  std::uniform_real_distribution<double> real(-1.0, 1.0);
  SlidingBlock block(true);
  block.Shear();
  Append(block.moving, Squares(8, {-1, 0.25, 6}, {1, 0.75, 7}));
  std::size_t contacts = 0;
  for (int round = 0; round < 60; ++round) {
    const double x = real(random);
    const double y = 0.5 * real(random);
    Question question = Along({x, y, -1.0});
    if (round % 3 == 0) question.direction = {-0.25, round % 2 == 0 ? 0.0 : 0x1p-50 * y, -1.0};
    question.offset = {round % 4 == 0 ? 0.1 * x : 0.0, 0.0, 0.0};
    const Answer answer = AskInEveryWay(block.moving, block.fixed, question, 2);
    contacts += answer.status == SweepStatus::Contact ? 1 : 0;
  }
  EXPECT_GT(contacts, 20u);
}

TEST(PairSolid, ProgressRisesWhileWallsAreLeftOut) {
  Mesh moving = Squares(64, {1, 0, 2}, {2, 1, 3});
  Mesh fixed = Squares(64, {0, 0, 0}, {1, 1, 1});
  for (Mesh* mesh : {&moving, &fixed}) {
    for (Coord3& p : mesh->corners)
      p.x += 0.25 * p.z;
  }
  std::vector<double> parts;
  gsl_sweep::Run run = OnThreads(1);
  run.progress = [&parts](double part) {
    parts.push_back(part);
    return true;
  };
  const Pair pair = PairOf(moving, fixed);
  EXPECT_EQ(pair.First(Along({-0.25, 0, -1}), run).status, SweepStatus::None);
  ASSERT_GT(parts.size(), 2u);
  EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end()));
  EXPECT_LE(parts.back(), 1.0);
  for (std::size_t left = 0; left < parts.size(); left += 3) {
    std::size_t calls = 0;
    run.progress = [&calls, left](double) { return calls++ < left; };
    const Pair fresh = PairOf(moving, fixed);
    EXPECT_EQ(fresh.First(Along({-0.25, 0, -1}), run).status, SweepStatus::Cancelled);
    EXPECT_EQ(fresh.First(Along({-0.25, 0, -1})).status, SweepStatus::None);
  }
}

} // namespace
