#include "Engine.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_ask::SameBits;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Answer Ask(const Mesh& moving, const Mesh& fixed, const Question& question,
           Workspaces& workspaces) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  return AnswerQuestion({&a, {&b}}, question, {}, workspaces);
}

Question Towards(const Coord3& direction) {
  Question question;
  question.direction = direction;
  return question;
}

TEST(Engine, RequiresAQuestionThatCanBeAnswered) {
  EXPECT_NO_THROW(RequireQuestion(Towards({0.0, 5e-324, 0.0})));
  for (const Coord3& d :
       {Coord3{0.0, 0.0, 0.0}, Coord3{kNaN, 0.0, 1.0}, Coord3{0.0, kInfinity, 0.0}})
    EXPECT_THROW(RequireQuestion(Towards(d)), std::invalid_argument);
  Question question = Towards({1.0, 0.0, 0.0});
  question.offset = {0.0, kNaN, 0.0};
  EXPECT_THROW(RequireQuestion(question), std::invalid_argument);
  question.offset = {0.0, 0.0, -kInfinity};
  EXPECT_THROW(RequireQuestion(question), std::invalid_argument);
  question.offset = {0.0, 0.0, 0.0};
  for (const double distance : {-5e-324, kNaN}) {
    question.maxDistance = distance;
    EXPECT_THROW(RequireQuestion(question), std::invalid_argument);
  }
  question.maxDistance = 0.0;
  EXPECT_NO_THROW(RequireQuestion(question));
}

/// Whole numbers, so that scaling and moving keep the scene exactly.
Mesh WholeSoup(unsigned seed, double lift) {
  Mesh mesh = Soup(seed, 200);
  for (Coord3& p : mesh.corners)
    p = {std::round(64.0 * p.x), std::round(64.0 * p.y), std::round(64.0 * p.z) + lift};
  return mesh;
}

TEST(Engine, SinglePrecisionAndDoubleHaveTheSameAnswer) {
  const Coord3 d{0.25, 0.125, -1.0};
  for (unsigned seed = 0; seed < 6; ++seed) {
    const Mesh fixed = WholeSoup(seed, 0.0);
    const Mesh moving = WholeSoup(seed + 50, seed % 2 == 0 ? 150.0 : 40.0);
    Workspaces plainSpaces;
    const Answer plain = Ask(moving, fixed, Towards(d), plainSpaces);
    EXPECT_TRUE(plainSpaces.single && !plainSpaces.forDouble);
    ASSERT_NE(plain.status, SweepStatus::None);
    // Too small for single precision: in double.
    Workspaces smallSpaces;
    const Coord3 small{0x1p-200, 0x1p-200, 0x1p-200};
    const Answer scaled = Ask(sweep_shapes::Stretched(moving, small),
                              sweep_shapes::Stretched(fixed, small), Towards(d), smallSpaces);
    EXPECT_TRUE(smallSpaces.forDouble && !smallSpaces.single);
    EXPECT_EQ(scaled.contact.travel, std::ldexp(plain.contact.travel, -200));
    // Far from the origin and too fine for single precision there: in double, with filters.
    Workspaces farSpaces;
    const Coord3 far{0x1p36, 1.0, -0x1p35};
    const Answer moved = Ask(sweep_shapes::Moved(moving, far), sweep_shapes::Moved(fixed, far),
                             Towards(d), farSpaces);
    EXPECT_TRUE(farSpaces.forDouble && !farSpaces.single);
    EXPECT_EQ(moved.contact.travel, plain.contact.travel);
    for (const Answer& other : {scaled, moved}) {
      EXPECT_EQ(other.status, plain.status);
      EXPECT_EQ(other.contact.kind, plain.contact.kind);
      EXPECT_EQ(other.contact.movingTriangle, plain.contact.movingTriangle);
      EXPECT_EQ(other.contact.fixedTriangle, plain.contact.fixedTriangle);
      EXPECT_TRUE(SameBits(other.contact.normal, plain.contact.normal));
    }
  }
}

TEST(Engine, GoesOnWithFineTreesInTheMiddleOfAWalk) {
  for (const bool isSingle : {false, true}) {
    const Mesh bowl = Bowl(150, 0.3);
    const Mesh fixed = isSingle ? Single(bowl) : bowl;
    const Mesh above = sweep_shapes::Moved(bowl, {0.013, -0.021, 0.5});
    const Mesh moving = isSingle ? Single(above) : above;
    const PreparedBody a(ViewOf(moving));
    const PreparedBody b(ViewOf(fixed));
    const SceneBodies bodies{&a, {&b, &b}};
    Workspaces workspaces;
    const Question question = Towards({0.02, 0.013, -1.0});
    // Earlier questions seem to have been hard.
    a.CountVisits(1000000);
    b.CountVisits(1000000);
    const Answer first = AnswerQuestion(bodies, question, {}, workspaces);
    EXPECT_EQ(first.status, SweepStatus::Contact);
    ASSERT_NE(a.FineIfMade(), nullptr);
    ASSERT_NE(b.FineIfMade(), nullptr);
    const Answer second = AnswerQuestion(bodies, question, {}, workspaces);
    EXPECT_TRUE(SameBits(first, second));
    EXPECT_EQ(workspaces.forDouble, nullptr);
    // Far below the largest coordinate: the search runs in double.
    Mesh withSpeck = fixed;
    sweep_shapes::AddTriangle(withSpeck, {0.0, 0.0, -9.0}, {1e-60, 0.0, -9.0}, {0.0, 0.0, -9.0});
    const PreparedBody c(ViewOf(withSpeck));
    const Answer inDouble = AnswerQuestion({&a, {&c, &c}}, question, {}, workspaces);
    EXPECT_NE(workspaces.forDouble, nullptr);
    EXPECT_TRUE(SameBits(first, inDouble));
  }
}

/// Needles whose corners are off by up to their width.
Mesh UnevenNeedles(std::mt19937_64& random, int count) {
  std::uniform_real_distribution<double> real(-0x1p-9, 0x1p-9);
  Mesh mesh = Needles(count, 0.0);
  for (Coord3& p : mesh.corners) {
    const double x = real(random);
    const double y = real(random);
    const double z = real(random);
    p = {p.x + x, p.y + y, p.z + z};
  }
  return mesh;
}

/// A question about two fields of needles: one comes down on the other aslant, or comes from aside
/// within its plane. A third of the questions have a clearance.
Question AcrossNeedles(std::mt19937_64& random, int number) {
  std::uniform_real_distribution<double> real(-1.0, 1.0);
  const double x = 0.3 * real(random);
  const double y = 0.3 * real(random);
  const double height = (number % 2 == 0 ? 0.15 : 0x1p-8) * real(random);
  const bool isAlong = number % 4 < 2; // along the needles, or across them
  const Coord3 way = isAlong ? Coord3{1.0, y, 0.0} : Coord3{x, 1.0, 0.0};
  Question question;
  if (number % 2 == 0) {
    question = Towards(Turned({way.x, way.y, -2.0 * height}));
    question.offset = Turned({x - 0.5 * way.x, y - 0.5 * way.y, height});
  } else {
    question = Towards(Turned(way));
    question.offset = Turned({x - 1.5 * way.x, y - 1.5 * way.y, height});
  }
  if (number % 3 == 0) question.clearance = 0.5 * std::fabs(height);
  return question;
}

Question Scaled(Question question, double scale) {
  question.offset = gsl_arithmetic::Multiply(question.offset, scale);
  question.clearance *= scale;
  return question;
}

/// Too small for single precision: in double, where there are no slabs.
TEST(Engine, SidesOfNeedlesDoNotChangeTheAnswer) {
  const double small = 0x1p-140;
  std::mt19937_64 random(31);
  std::size_t contacts = 0;
  for (int round = 0; round < 12; ++round) {
    const Mesh moving = UnevenNeedles(random, 100);
    const Mesh fixed = UnevenNeedles(random, 100);
    const PreparedBody a(ViewOf(moving));
    const PreparedBody b(ViewOf(fixed));
    if (round % 2 == 0) {
      a.MakeSlabs();
      b.MakeSlabs();
      ASSERT_GT(a.SlabsIfMade()->sides.size(), 0u);
    } else {
      a.MakeFine();
      b.MakeFine();
    }
    const Mesh smallMoving = sweep_shapes::Stretched(moving, {small, small, small});
    const Mesh smallFixed = sweep_shapes::Stretched(fixed, {small, small, small});
    const PreparedBody c(ViewOf(smallMoving));
    const PreparedBody d(ViewOf(smallFixed));
    Workspaces spaces, smallSpaces;
    for (int number = 0; number < 24; ++number) {
      Question question = AcrossNeedles(random, number);
      const bool isLast = number % 3 == 1;
      if (isLast) question.clearance = 0.0;
      const Question tiny = Scaled(question, small);
      const Answer found = isLast ? AnswerLast({&a, {&b}}, question, {}, spaces)
                                  : AnswerQuestion({&a, {&b}}, question, {}, spaces);
      const Answer wanted = isLast ? AnswerLast({&c, {&d}}, tiny, {}, smallSpaces)
                                   : AnswerQuestion({&c, {&d}}, tiny, {}, smallSpaces);
      ASSERT_EQ(found.status, wanted.status);
      contacts += found.status == SweepStatus::Contact ? 1 : 0;
      if (found.status == SweepStatus::None) continue;
      EXPECT_EQ(found.contact.travel, std::ldexp(wanted.contact.travel, 140));
      EXPECT_EQ(found.contact.movingTriangle, wanted.contact.movingTriangle);
      EXPECT_EQ(found.contact.fixedTriangle, wanted.contact.fixedTriangle);
    }
    EXPECT_EQ(spaces.forDouble, nullptr);
    EXPECT_EQ(smallSpaces.single, nullptr);
  }
  EXPECT_GT(contacts, 100u);
}

/// A question about two fields of needles that pass each other closely, so that many nodes are
/// looked at.
Question BesideNeedles(std::mt19937_64& random, bool isAlong) {
  std::uniform_real_distribution<double> real(-1.0, 1.0);
  const double height = 0.15 * real(random);
  const double x = 0.3 * real(random);
  const double y = 0.3 * real(random);
  Question question = Towards(Turned({isAlong ? 1.0 : x, isAlong ? y : 1.0, -0.2 * height}));
  question.offset = Turned({-0.5 + x, -0.5 + y, height});
  question.rule = Rule::NotLeaving;
  return question;
}

/// The sides of one tree have other numbers than those of the tree that replaces it.
TEST(Engine, SidesOfNeedlesAreForgottenWithTheirTree) {
  std::mt19937_64 random(32);
  std::size_t changed = 0;
  for (int round = 0; round < 8; ++round) {
    const Mesh moving = UnevenNeedles(random, 800);
    const Mesh fixed = UnevenNeedles(random, 800);
    const PreparedBody fineMoving(ViewOf(moving));
    const PreparedBody fineFixed(ViewOf(fixed));
    fineMoving.MakeFine();
    fineFixed.MakeFine();
    Workspaces spaces, fineSpaces;
    const SceneBodies fine{&fineMoving, {&fineFixed}};
    for (const bool isAlong : {true, false, true, false, true, false}) {
      const Question question = BesideNeedles(random, isAlong);
      const PreparedBody a(ViewOf(moving));
      const PreparedBody b(ViewOf(fixed));
      a.MakeSlabs();
      b.MakeSlabs();
      a.CountVisits(100000000); // the fine tree comes in the middle of the walk
      if (isAlong) b.CountVisits(100000000);
      const auto ask = isAlong ? AnswerLast : AnswerQuestion;
      const Answer found = ask({&a, {&b}}, question, {}, spaces);
      const Answer wanted = ask(fine, question, {}, fineSpaces);
      EXPECT_TRUE(SameBits(found, wanted)) << "round " << round;
      changed += a.FineIfMade() != nullptr ? 1 : 0;
    }
  }
  EXPECT_GT(changed, 10u);
}

TEST(Engine, OffsetsThatLeaveTheRangeOfDoubleDropTriangles) {
  const double most = std::numeric_limits<double>::max();
  Mesh moving;
  sweep_shapes::AddTriangle(moving, {0.0, 0.0, 0.5 * most}, {1.0, 0.0, 0.5 * most},
                            {0.0, 1.0, 0.5 * most});
  sweep_shapes::AddTriangle(moving, {0.0, 0.0, -most}, {0.0, 0.0, -most}, {0.0, 0.0, -most});
  Mesh fixed;
  sweep_shapes::AddTriangle(fixed, {0.0, 0.0, -1.0}, {1.0, 0.0, -1.0}, {0.0, 1.0, -1.0});
  Question question = Towards({0.0, 0.0, -1.0});
  question.offset = {0.0, 0.0, most};
  Workspaces workspaces;
  const Answer answer = Ask(moving, fixed, question, workspaces);
  EXPECT_EQ(answer.status, SweepStatus::Contact);
  EXPECT_EQ(answer.contact.movingTriangle, 1u); // at zero; the other is beyond all numbers
  EXPECT_EQ(answer.contact.travel, 1.0);
}

TEST(Engine, SolidsAtRestAreLookedAtOnceForAllDirections) {
  // Two slabs with a bent surface in common, so that every triangle of it may touch.
  const Mesh bent = Single(Bowl(40, 0.1));
  Mesh below = bent;
  Mesh bottom = sweep_shapes::Moved(bent, {0, 0, -1});
  for (std::size_t k = 0; k < bottom.corners.size(); k += 3)
    std::swap(bottom.corners[k + 1], bottom.corners[k + 2]);
  sweep_shapes::Append(below, bottom);
  const PreparedBody lower(ViewOf(below));
  const PreparedBody upper(ViewOf(sweep_shapes::Moved(below, {0, 0, 1})));
  Workspaces workspaces;
  const auto calls = [&](const Coord3& direction, const Coord3& offset) {
    Question question = Towards(direction);
    question.rule = Rule::Solid;
    question.offset = offset;
    int count = 0;
    const Watch watch = [&count](double) { return ++count > 0; };
    const Answer answer = AnswerQuestion({&upper, {&lower}}, question, watch, workspaces);
    EXPECT_EQ(answer.status, SweepStatus::None);
    return count;
  };
  const int first = calls({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0});
  EXPECT_GT(first, 10);
  EXPECT_LT(calls({0.0, 0.1, 1.0}, {0.0, 0.0, 0.0}), first / 2);
  EXPECT_LT(calls({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}), first / 2);
  // Another offset takes its place.
  calls({0.0, 0.0, 1.0}, {0.0, 0.0, 0.5});
  EXPECT_GE(calls({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}), first / 2);
}

TEST(Engine, WatchThatReturnsFalseCancels) {
  // Specks in a cube above specks in a cube: many pairs to look at, and hardly one that meets.
  std::mt19937_64 random(4);
  const Mesh specks = sweep_shapes::Soup(random, 20000, 1.0, 1e-5, 0.0);
  const Mesh others = sweep_shapes::Soup(random, 20000, 1.0, 1e-5, 0.0);
  const Question question = Towards({0.0, 0.0, -1.0});
  std::size_t calls = 0;
  // The bodies are fresh, so that some calls come while their fine trees are being made.
  const auto answer = [&](std::size_t allowed) {
    const PreparedBody above(ViewOf(sweep_shapes::Moved(specks, {0.0, 0.0, 3.0})));
    const PreparedBody below(ViewOf(others));
    const SceneBodies bodies{&above, {&below}};
    Workspaces workspaces;
    calls = 0;
    return AnswerQuestion(
        bodies, question, [&](double) { return ++calls <= allowed; }, workspaces);
  };
  EXPECT_EQ(answer(1000000).status, SweepStatus::None);
  ASSERT_GT(calls, 12u);
  for (std::size_t allowed = 0; allowed < 12; ++allowed) {
    EXPECT_TRUE(SameBits(answer(allowed), Answer()));
    EXPECT_EQ(calls, allowed + 1);
  }
}

TEST(Engine, ACancelledQuestionAboutManyBodiesAsksNoMore) {
  const auto sheets = [] {
    Mesh mesh = TurnedOver(Sheet(0, 1));
    sweep_shapes::Append(mesh, Sheet(0, 1));
    return mesh;
  };
  Mesh above = sheets();
  sweep_shapes::Append(above, sweep_shapes::Box({-2, -2, 0}, {2, 2, 1}));
  Mesh below = sheets();
  sweep_shapes::Append(below, sweep_shapes::Box({-2, -2, -1}, {2, 2, 0}));
  const PreparedBody moving(ViewOf(above));
  const PreparedBody fixed(ViewOf(below));
  const SceneBodies bodies{&moving, std::vector<const PreparedBody*>(1500, &fixed)};
  Question question = Towards({0.0, 0.0, 1.0});
  question.rule = Rule::Solid;
  for (const std::size_t allowed : {7u, 11u}) {
    Workspaces workspaces;
    workspaces.single = std::make_unique<Workspace<float>>();
    workspaces.single->solids.isKnown = true; // and apart
    workspaces.single->solids.bodies = bodies;
    std::size_t calls = 0;
    const Watch watch = [&](double) { return ++calls <= allowed; };
    EXPECT_TRUE(SameBits(AnswerQuestion(bodies, question, watch, workspaces), Answer()));
    EXPECT_EQ(calls, allowed + 1);
  }
}

TEST(Engine, EveryCallCanCancelAQuestionAboutSolids) {
  // A look at a pair meets all walls, which are at one place: after the walk, or at rest during it.
  const Mesh walls = ManyWalls(5000);
  for (const double top : {0.0, 1.0}) {
    Question question = Towards({0.0, 0.0, -1.0});
    question.rule = Rule::Solid;
    std::size_t calls = 0;
    // The bodies are fresh, so that each answer takes the same calls.
    const auto answer = [&](std::size_t allowed) {
      const PreparedBody moving(ViewOf(walls));
      const PreparedBody table(ViewOf(sweep_shapes::Box({-4, -4, -1}, {4, 4, top})));
      const SceneBodies bodies{&moving, {&table}};
      Workspaces workspaces;
      workspaces.single = std::make_unique<Workspace<float>>();
      workspaces.single->solids.isKnown = true; // and apart
      workspaces.single->solids.bodies = bodies;
      double done = 0.0;
      calls = 0;
      const Watch watch = [&](double part) {
        EXPECT_GE(part, done);
        done = part;
        return ++calls <= allowed;
      };
      return AnswerQuestion(bodies, question, watch, workspaces);
    };
    const Answer whole = answer(1000000);
    EXPECT_EQ(whole.status, top == 1.0 ? SweepStatus::Start : SweepStatus::Contact);
    EXPECT_EQ(whole.contact.travel, 1.0 - top);
    const std::size_t total = calls;
    ASSERT_GT(total, 3u);
    for (std::size_t allowed = 0; allowed < total; ++allowed) {
      EXPECT_TRUE(SameBits(answer(allowed), Answer()));
      EXPECT_EQ(calls, allowed + 1);
    }
  }
}

/// The wall of a round bar along z, one row of flat quads.
Mesh Around(int count, double radius) {
  Mesh mesh;
  const auto at = [&](int k, double z) {
    const double angle = 6.283185307179586 * k / count;
    return Coord3{radius * std::cos(angle), radius * std::sin(angle), z};
  };
  for (int k = 0; k < count; ++k)
    sweep_shapes::AddQuad(mesh, at(k, 0), at(k + 1, 0), at(k + 1, 1), at(k, 1));
  return mesh;
}

TEST(Engine, AStartThatALookWithoutTheClearanceFindsIsNamedWithIt) {
  // Two walls slide along each other, nearer than their boxes tell, but never within the clearance.
  // So many pairs give no limit that a contact without the clearance is looked for, and the last
  // triangle touches at the start. The one before it is within the clearance.
  constexpr int kAround = 2048;
  constexpr std::uint32_t kLast = 2 * kAround;
  Mesh moving = Around(kAround, 1.0 - 0x1p-8);
  Mesh fixed = Around(kAround, 1.0);
  sweep_shapes::AddTriangle(fixed, {1.5, 0, 0}, {1.625, 0, 0}, {1.5, 0.125, 0});
  sweep_shapes::AddTriangle(moving, {1.5, 0, 0x1p-9}, {1.625, 0, 0x1p-9}, {1.5, 0.125, 0x1p-9});
  sweep_shapes::AddTriangle(moving, {1.5, 0, 0}, {1.5, 0, 0.125}, {1.625, 0, 0.125});
  Question question = Towards({0.0, 0.0, 1.0});
  question.clearance = 0.75 * 0x1p-8;
  Workspaces workspaces;
  const Answer answer = Ask(moving, fixed, question, workspaces);
  EXPECT_EQ(answer.status, SweepStatus::Start);
  EXPECT_EQ(answer.contact.movingTriangle, kLast);
  EXPECT_EQ(answer.contact.fixedTriangle, kLast);
}

} // namespace
