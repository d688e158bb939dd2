#include "SolidStart.h"

#include "Bodies.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_shapes::Append;

Mesh BoxOf(const Coord3& low, const Coord3& high) {
  return sweep_shapes::Box(low, high);
}

/// Runs the search on bodies at rest, in float and in double, and keeps its finding.
struct Rest {
  Rest(const Mesh& moving, const std::vector<Mesh>& fixed, const Coord3& offset = {0, 0, 0}) {
    const PreparedBody movingBody(ViewOf(moving));
    std::vector<std::unique_ptr<PreparedBody>> kept;
    SceneBodies bodies{&movingBody, {}};
    for (const Mesh& mesh : fixed) {
      kept.push_back(std::make_unique<PreparedBody>(ViewOf(mesh)));
      bodies.fixed.push_back(kept.back().get());
    }
    const TravelDirection direction({0, 0, 1});
    const RangeScale scale(1024.0);
    Question question;
    question.rule = Rule::Solid;
    question.offset = offset;
    state = Run<float>(bodies, direction, scale, question);
    const FoundPair single = best;
    const Contact singleInside = inside;
    EXPECT_EQ(Run<double>(bodies, direction, scale, question), state);
    EXPECT_EQ(best.moving, single.moving);
    EXPECT_EQ(best.fixed, single.fixed);
    EXPECT_EQ(inside.movingTriangle, singleInside.movingTriangle);
    EXPECT_EQ(inside.fixedTriangle, singleInside.fixedTriangle);
    EXPECT_EQ(inside.fixedBody, singleInside.fixedBody);
  }

  template <class Scalar>
  SolidState Run(const SceneBodies& bodies, const TravelDirection& direction,
                 const RangeScale& scale, const Question& question) {
    const Scene<Scalar> scene(bodies, direction, scale, question, true);
    const Watch watch;
    SolidStart<Scalar> start(scene, watch);
    const SolidState found = start.Run();
    best = start.Best();
    inside = start.Inside();
    return found;
  }

  SolidState state;
  FoundPair best;
  Contact inside;
};

const Mesh block = BoxOf({0, 0, 0}, {4, 4, 4});

TEST(SolidStart, BodiesThatTouchAreApart) {
  EXPECT_EQ(Rest(BoxOf({9, 9, 9}, {10, 10, 10}), {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(BoxOf({4, 0, 0}, {6, 4, 4}), {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(BoxOf({4, 1, 1}, {6, 2, 2}), {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(BoxOf({4, 4, 0}, {6, 6, 4}), {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(BoxOf({4, 4, 4}, {6, 6, 6}), {block}).state, SolidState::Apart);
}

TEST(SolidStart, AStepIntoEachOtherOverlaps) {
  const double in = std::nextafter(4.0, 0.0);
  EXPECT_EQ(Rest(BoxOf({in, 0, 0}, {6, 4, 4}), {block}).state, SolidState::Overlapping);
  EXPECT_EQ(Rest(BoxOf({in, 1, 1}, {6, 2, 2}), {block}).state, SolidState::Overlapping);
  EXPECT_EQ(Rest(BoxOf({in, in, in}, {6, 6, 6}), {block}).state, SolidState::Overlapping);
}

TEST(SolidStart, EqualBodiesOverlap) {
  const Rest rest(block, {block});
  EXPECT_EQ(rest.state, SolidState::Overlapping);
  EXPECT_EQ(rest.best.moving, 0u);
  EXPECT_EQ(rest.best.fixed, 0u);
  EXPECT_EQ(Rest(TurnedOver(block), {block}).state, SolidState::Apart);
}

TEST(SolidStart, BodiesThatShareWallsAndSpaceOverlap) {
  // The upper half, the same width and depth: all four walls are shared.
  EXPECT_EQ(Rest(BoxOf({0, 0, 2}, {4, 4, 6}), {block}).state, SolidState::Overlapping);
  // Inside, with one edge on an edge of the block.
  EXPECT_EQ(Rest(BoxOf({0, 0, 1}, {2, 2, 3}), {block}).state, SolidState::Overlapping);
}

TEST(SolidStart, AComponentWithoutTouchIsInside) {
  const Rest rest(BoxOf({1, 1, 1}, {2, 2, 2}), {BoxOf({20, 0, 0}, {24, 4, 4}), block});
  EXPECT_EQ(rest.state, SolidState::Inside);
  EXPECT_EQ(rest.inside.kind, ContactKind::Inside);
  EXPECT_EQ(rest.inside.fixedBody, 1u);
  EXPECT_EQ(rest.inside.movingTriangle, 0u);
  EXPECT_TRUE(rest.inside.overlapsAtStart);
  EXPECT_TRUE(rest.inside.movingIsInside);
  EXPECT_TRUE(sweep_ask::SameBits(rest.inside.movingPoint, Coord3{1, 1, 1}));
  const Rest around(block, {BoxOf({1, 1, 1}, {2, 2, 2})});
  EXPECT_EQ(around.state, SolidState::Inside);
  EXPECT_FALSE(around.inside.movingIsInside);
  // The second component of the moving body, which begins at triangle 12.
  Mesh two = BoxOf({-9, -9, -9}, {-8, -8, -8});
  Append(two, BoxOf({1, 1, 1}, {2, 2, 2}));
  EXPECT_EQ(Rest(two, {block}).inside.movingTriangle, 12u);
}

TEST(SolidStart, ACavityIsOutside) {
  Mesh shell = BoxOf({-2, -2, -2}, {6, 6, 6});
  Append(shell, TurnedOver(block));
  EXPECT_EQ(Rest(BoxOf({1, 1, 1}, {2, 2, 2}), {shell}).state, SolidState::Apart);
  EXPECT_EQ(Rest(block, {shell}).state, SolidState::Apart);
  EXPECT_EQ(Rest(shell, {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(BoxOf({-1, -1, -1}, {5, 5, 5}), {shell}).state, SolidState::Inside);
  EXPECT_EQ(Rest(BoxOf({-9, -9, -9}, {9, 9, 9}), {shell}).state, SolidState::Inside);
}

TEST(SolidStart, ACornerThatOnlyTouchesAFaceFromInsideOverlaps) {
  // The tip of a pyramid touches the top of the block from inside, and nothing else touches.
  Mesh pyramid;
  const Coord3 tip{2, 2, 4};
  const Coord3 base[4] = {{1, 1, 2}, {3, 1, 2}, {3, 3, 2}, {1, 3, 2}};
  for (std::size_t k = 0; k < 4; ++k)
    sweep_shapes::AddTriangle(pyramid, base[k], base[(k + 1) % 4], tip);
  sweep_shapes::AddQuad(pyramid, base[3], base[2], base[1], base[0]);
  EXPECT_EQ(Rest(pyramid, {block}).state, SolidState::Overlapping);
  // The same pyramid upside down stands on the top.
  Mesh standing = sweep_shapes::Stretched(pyramid, {1, -1, -1});
  standing = sweep_shapes::Moved(standing, {0, 4, 8});
  EXPECT_EQ(Rest(standing, {block}).state, SolidState::Apart);
}

TEST(SolidStart, ATipAtTheBottomOfAPitOverlapsWhenItsBodyIsBelow) {
  // The block has a pit whose lowest point is at (2, 2, 2), the common corner of both bodies.
  Mesh pitted = BoxOf({0, 0, 0}, {4, 4, 4});
  pitted.corners.erase(pitted.corners.begin() + 6, pitted.corners.begin() + 12); // the top
  const Coord3 rim[4] = {{0, 0, 4}, {4, 0, 4}, {4, 4, 4}, {0, 4, 4}};
  const Coord3 pit{2, 2, 2};
  for (std::size_t k = 0; k < 4; ++k)
    sweep_shapes::AddTriangle(pitted, rim[k], rim[(k + 1) % 4], pit);
  Mesh below;
  const Coord3 base[4] = {{1, 1, 1}, {3, 1, 1}, {3, 3, 1}, {1, 3, 1}};
  Mesh above;
  const Coord3 high[4] = {{1.5, 1.5, 9}, {2.5, 1.5, 9}, {2.5, 2.5, 9}, {1.5, 2.5, 9}};
  for (std::size_t k = 0; k < 4; ++k) {
    sweep_shapes::AddTriangle(below, base[k], base[(k + 1) % 4], pit);
    sweep_shapes::AddTriangle(above, high[(k + 1) % 4], high[k], pit);
  }
  sweep_shapes::AddQuad(below, base[3], base[2], base[1], base[0]);
  sweep_shapes::AddQuad(above, high[0], high[1], high[2], high[3]);
  ASSERT_TRUE(sweep_ask::BodyOf(pitted).IsSolid());
  ASSERT_TRUE(sweep_ask::BodyOf(below).IsSolid());
  ASSERT_TRUE(sweep_ask::BodyOf(above).IsSolid());
  EXPECT_EQ(Rest(below, {pitted}).state, SolidState::Overlapping);
  EXPECT_EQ(Rest(above, {pitted}).state, SolidState::Apart);
}

/// Returns a box of 4 by 4 by 2 that stands at a height. Its bottom has a third corner on its
/// diagonal, at (2 + x, 2 + y), and a triangle between this corner and the diagonal. With x = y
/// that triangle has no area, with x > y it is turned over.
Mesh BoxWithSliver(double low, double x, double y) {
  Mesh mesh = BoxOf({0, 0, low}, {4, 4, low + 2});
  mesh.corners.erase(mesh.corners.begin(), mesh.corners.begin() + 6); // the bottom
  const Coord3 a{0, 0, low};
  const Coord3 b{4, 4, low};
  const Coord3 middle{2 + x, 2 + y, low};
  sweep_shapes::AddTriangle(mesh, a, middle, b);
  sweep_shapes::AddTriangle(mesh, a, b, {4, 0, low});
  sweep_shapes::AddTriangle(mesh, a, {0, 4, low}, middle);
  sweep_shapes::AddTriangle(mesh, middle, {0, 4, low}, b);
  return mesh;
}

TEST(SolidStart, ATriangleThatIsTurnedOverShowsNoOverlap) {
  for (const double x : {0.0, 0x1p-20, 1.0}) {
    const Mesh standing = BoxWithSliver(4, x, 0);
    ASSERT_TRUE(sweep_ask::BodyOf(standing).IsSolid());
    EXPECT_EQ(Rest(standing, {block}).state, SolidState::Apart) << x;
    EXPECT_EQ(Rest(block, {standing}).state, SolidState::Apart) << x;
    // The triangle is the first of its body, and inside the top of the block.
    EXPECT_EQ(Rest(BoxWithSliver(3.5, x, 0), {block}).state, SolidState::Overlapping) << x;
    EXPECT_EQ(Rest(BoxWithSliver(4, x, 0), {BoxOf({1, 1, 3}, {3, 3, 5})}).state,
              SolidState::Overlapping)
        << x;
  }
}

/// Adds two triangles with the same corners that face opposite ways, a component of their own.
void AddSheet(Mesh& mesh, const Coord3& a, const Coord3& b, const Coord3& c) {
  sweep_shapes::AddTriangle(mesh, a, b, c);
  sweep_shapes::AddTriangle(mesh, a, c, b);
}

TEST(SolidStart, ASheetInAFaceShowsNoOverlap) {
  // The block goes up to z = 4, and the box begins there. One triangle of the sheet faces as the
  // top of the block does.
  Mesh standing = BoxOf({0, 0, 4}, {4, 4, 6});
  AddSheet(standing, {1, 1, 4}, {3, 1, 4}, {1, 3, 4});
  ASSERT_TRUE(sweep_ask::BodyOf(standing).IsSolid());
  EXPECT_EQ(Rest(standing, {block}).state, SolidState::Apart);
  EXPECT_EQ(Rest(block, {standing}).state, SolidState::Apart);
  EXPECT_EQ(Rest(standing, {block}, {0, 0, -0.5}).state, SolidState::Overlapping);
  // With nothing on either side a wall of zero thickness counts as material.
  Mesh beside = BoxOf({6, 0, 4}, {8, 4, 6});
  AddSheet(beside, {1, 1, 4}, {3, 1, 4}, {1, 3, 4});
  EXPECT_EQ(Rest(beside, {block}).state, SolidState::Overlapping);
}

TEST(SolidStart, AComponentWhoseFirstTriangleIsTurnedOverIsInside) {
  Mesh component = BoxWithSliver(1, 1, 0);
  std::rotate(component.corners.begin(), component.corners.begin() + 30, component.corners.end());
  component = sweep_shapes::Moved(component, {1, 1, 0});
  ASSERT_TRUE(sweep_ask::BodyOf(component).IsSolid());
  const Mesh room = BoxOf({0, 0, 0}, {9, 9, 9});
  const Rest rest(component, {room});
  EXPECT_EQ(rest.state, SolidState::Inside);
  EXPECT_EQ(rest.inside.movingTriangle, 0u);
  // On the floor of a room, whose walls face inwards, the component is outside.
  Mesh shell = BoxOf({-9, -9, -9}, {18, 18, 18});
  Append(shell, TurnedOver(BoxOf({0, 0, 1}, {9, 9, 9})));
  EXPECT_EQ(Rest(component, {shell}).state, SolidState::Apart);
}

TEST(SolidStart, AnOffsetMayTurnATriangleOver) {
  // Beyond 2^52 a coordinate is a whole number. The middle of the edge, at 1.5 of 3, goes to 2.
  Mesh mesh = BoxOf({0, 0, 0}, {3, 1, 2});
  mesh.corners.erase(mesh.corners.begin(), mesh.corners.begin() + 6); // the bottom
  const Coord3 a{0, 0, 0};
  const Coord3 b{3, 1, 0};
  const Coord3 middle{1.5, 0.5, 0};
  sweep_shapes::AddTriangle(mesh, a, middle, b);
  sweep_shapes::AddTriangle(mesh, a, b, {3, 0, 0});
  sweep_shapes::AddTriangle(mesh, a, {0, 1, 0}, middle);
  sweep_shapes::AddTriangle(mesh, middle, {0, 1, 0}, b);
  const double far = 0x1p52;
  const Mesh table = BoxOf({far - 8, -8, -2}, {far + 8, 8, 0});
  Question question;
  question.rule = Rule::Solid;
  question.offset = {far, 0, 0};
  question.direction = {0, 0, -1};
  const Answer down = Pair(sweep_ask::BodyOf(mesh), {sweep_ask::BodyOf(table)}).First(question);
  EXPECT_EQ(down.status, SweepStatus::Start);
  EXPECT_FALSE(down.contact.overlapsAtStart);
  question.direction = {0, 0, 1};
  const Answer up = Pair(sweep_ask::BodyOf(mesh), {sweep_ask::BodyOf(table)}).First(question);
  EXPECT_EQ(up.status, SweepStatus::None);
}

/// Returns a box from the origin to (4, 2, 2) whose bottom has a corner `middle` beside its
/// diagonal. The triangle between both is the first.
Mesh BoxWithFirstSliver(const Coord3& middle) {
  const Coord3 a{0, 0, 0};
  const Coord3 b{4, 2, 0};
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, a, middle, b);
  sweep_shapes::AddTriangle(mesh, a, b, {4, 0, 0});
  sweep_shapes::AddTriangle(mesh, a, {0, 2, 0}, middle);
  sweep_shapes::AddTriangle(mesh, middle, {0, 2, 0}, b);
  Mesh rest = BoxOf({0, 0, 0}, {4, 2, 2});
  rest.corners.erase(rest.corners.begin(), rest.corners.begin() + 6); // the bottom
  Append(mesh, rest);
  return mesh;
}

TEST(SolidStart, AnOffsetMayFlattenTheFirstTriangleOfAComponent) {
  // At 100 the last place of 1 + 2^-52 is lost, and the sliver becomes flat. Then triangle 1 is the
  // first with area. The room is far larger, and the box touches none of its walls.
  const Mesh sliver = BoxWithFirstSliver({2, 1 + 0x1p-52, 0});
  ASSERT_TRUE(sweep_ask::BodyOf(sliver).IsSolid());
  const Mesh room = BoxOf({-9, -9, -9}, {200, 200, 200});
  for (const bool isTwo : {false, true}) {
    Mesh moving = sliver;
    if (isTwo) Append(moving, sweep_shapes::Moved(sliver, {8, 0, 0}));
    const Rest rest(moving, {room}, {0, 100, 0});
    EXPECT_EQ(rest.state, SolidState::Inside);
    EXPECT_EQ(rest.inside.movingTriangle, 1u);
    const Rest moved(sweep_shapes::Moved(moving, {0, 100, 0}), {room});
    EXPECT_EQ(moved.state, SolidState::Inside);
    EXPECT_EQ(moved.inside.movingTriangle, 1u);
  }
  // Of two components, the one whose first triangle is flat is not left out.
  Mesh outside = BoxOf({-90, 0, 0}, {-80, 1, 1});
  Append(outside, sliver);
  const Rest second(outside, {room}, {0, 100, 0});
  EXPECT_EQ(second.state, SolidState::Inside);
  EXPECT_EQ(second.inside.movingTriangle, 13u);
}

TEST(SolidStart, AnOffsetMayFlattenATriangleOfManyUnits) {
  // Beyond 2^52 a coordinate is a whole number, so 1.75 becomes 2, on the diagonal.
  const Mesh mesh = BoxWithFirstSliver({1.75, 1, 0});
  ASSERT_TRUE(sweep_ask::BodyOf(mesh).IsSolid());
  const double far = 0x1p52;
  Question question;
  question.rule = Rule::Solid;
  question.offset = {far, 0, 0};
  question.direction = {1, 0, 0};
  const Mesh room = BoxOf({far - 8, -8, -8}, {far + 16, 8, 8});
  const Answer inside = Pair(sweep_ask::BodyOf(mesh), {sweep_ask::BodyOf(room)}).First(question);
  EXPECT_EQ(inside.status, SweepStatus::Start);
  EXPECT_EQ(inside.contact.kind, ContactKind::Inside);
  EXPECT_EQ(inside.contact.movingTriangle, 1u);
}

TEST(SolidStart, AnOffsetMayGiveAreaToAComponent) {
  // The corners of the tetrahedron are on one line. Beyond 2^52 they become (0, 0, 0), (0, 0, 1),
  // (0, 1, 3) and (1, 1, 5), which enclose a sixth.
  Mesh moving = BoxOf({100, 100, 0}, {104, 104, 4});
  const auto at = [](double k) { return Coord3{0.125 * k, 0.25 * k, k}; };
  sweep_shapes::AddTriangle(moving, at(0), at(1), at(3));
  sweep_shapes::AddTriangle(moving, at(0), at(3), at(5));
  sweep_shapes::AddTriangle(moving, at(0), at(5), at(1));
  sweep_shapes::AddTriangle(moving, at(1), at(5), at(3));
  ASSERT_TRUE(sweep_ask::BodyOf(moving).IsSolid());
  const double far = 0x1p52;
  const Mesh room = BoxOf({far - 8, far - 8, -8}, {far + 8, far + 8, 16});
  Question question;
  question.rule = Rule::Solid;
  question.direction = {1, 0, 0};
  EXPECT_EQ(Pair(sweep_ask::BodyOf(moving), {sweep_ask::BodyOf(room)}).First(question).status,
            SweepStatus::None);
  question.offset = {far, far, 0};
  const Answer inside = Pair(sweep_ask::BodyOf(moving), {sweep_ask::BodyOf(room)}).First(question);
  EXPECT_EQ(inside.status, SweepStatus::Start);
  EXPECT_EQ(inside.contact.kind, ContactKind::Inside);
  EXPECT_EQ(inside.contact.movingTriangle, 12u);
}

TEST(SolidStart, ASheetPartlyOverAnotherComponentShowsNoOverlap) {
  // The sheet is in the bottom of the first box. The second box touches it from below up to x = 5,
  // and so does the fixed body from x = 6.
  Mesh moving = BoxOf({-1, -1, 0}, {9, 9, 4});
  Append(moving, BoxOf({0, 0, -4}, {5, 8, 0}));
  AddSheet(moving, {1, 1, 0}, {1, 7, 0}, {7, 1, 0});
  const Mesh fixed = BoxOf({6, 0, -4}, {8, 8, 0});
  ASSERT_TRUE(sweep_ask::BodyOf(moving).IsSolid());
  EXPECT_EQ(Rest(moving, {fixed}).state, SolidState::Apart);
  EXPECT_EQ(Rest(fixed, {moving}).state, SolidState::Apart);
  // A step to the right, the second box is in the fixed body.
  EXPECT_EQ(Rest(moving, {fixed}, {1.5, 0, 0}).state, SolidState::Overlapping);
  // A sheet in two faces: the bottom of one box up to x = 5, and the top of the other from there.
  Mesh stairs = BoxOf({0, 0, 0}, {5, 8, 4});
  Append(stairs, BoxOf({5, 0, -4}, {10, 8, 0}));
  AddSheet(stairs, {1, 1, 0}, {1, 7, 0}, {9, 1, 0});
  ASSERT_TRUE(sweep_ask::BodyOf(stairs).IsSolid());
  EXPECT_EQ(Rest(stairs, {BoxOf({6, 0, 0}, {8, 8, 3})}).state, SolidState::Apart);
  EXPECT_EQ(Rest(stairs, {BoxOf({6, 0, -1}, {8, 8, 3})}).state, SolidState::Overlapping);
}

/// Boxes between the lines of a grid.
struct Grid {
  std::vector<double> lines[3];
  /// 'S' is the slab, 'P' the prong, 'W' the web, and a space is nothing. By z, y and x.
  std::vector<std::vector<std::string>> kinds;

  char At(int x, int y, int z) const {
    const bool isIn = x >= 0 && y >= 0 && z >= 0 && x < 3 && y < 3 && z < 2;
    return isIn ? kinds[std::size_t(z)][std::size_t(y)][std::size_t(x)] : ' ';
  }
  /// Adds the walls of a box, but those between two boxes of one kind, and the bottom of the slab.
  /// The web is of both kinds.
  void AddBox(int x, int y, int z, Mesh& mesh) const {
    constexpr int beside[6][3] = {{0, 0, -1}, {0, 0, 1}, {0, -1, 0},
                                  {1, 0, 0},  {0, 1, 0}, {-1, 0, 0}};
    const auto at = [&](int i, int j, int k) {
      return Coord3{lines[0][std::size_t(i)], lines[1][std::size_t(j)], lines[2][std::size_t(k)]};
    };
    const Mesh box = BoxOf(at(x, y, z), at(x + 1, y + 1, z + 1));
    const char own = At(x, y, z);
    for (std::size_t side = 0; side < 6; ++side) {
      const char other = At(x + beside[side][0], y + beside[side][1], z + beside[side][2]);
      const bool isSlit = (own == 'S' && other == 'P') || (own == 'P' && other == 'S');
      if ((other != ' ' && !isSlit) || (own == 'S' && side == 0)) continue;
      const auto first = box.corners.begin() + static_cast<std::ptrdiff_t>(6 * side);
      mesh.corners.insert(mesh.corners.end(), first, first + 6);
    }
  }
};

/// Returns one component: a slab and a prong under a part of it, with a slit of no width between
/// them, and a web that joins them. In the bottom of the slab, around (3, 5), the last triangle is
/// turned over. A part of it is over the prong.
Mesh SelfTouching() {
  const Grid grid{{{-1, 0, 5, 8}, {-1, 0, 8, 10}, {-4, 0, 4}},
                  {{"   ", " P ", " W "}, {"SSS", "SSS", " W "}}};
  Mesh mesh;
  for (int k = 0; k < 18; ++k) {
    const int x = k % 3;
    const int y = k / 3 % 3;
    if (grid.At(x, y, k / 9) != ' ') grid.AddBox(x, y, k / 9, mesh);
  }
  const Coord3 middle{3, 5, 0};
  const Coord3 ring[10] = {{-1, -1, 0}, {0, -1, 0}, {5, -1, 0}, {8, -1, 0}, {8, 0, 0},
                           {8, 8, 0},   {5, 8, 0},  {0, 8, 0},  {-1, 8, 0}, {-1, 0, 0}};
  for (std::size_t k = 0; k < 10; ++k)
    if (k != 4) sweep_shapes::AddTriangle(mesh, middle, ring[(k + 1) % 10], ring[k]);
  const Coord3 moved{5.5, 2.25, 0};
  sweep_shapes::AddTriangle(mesh, moved, middle, ring[5]);
  sweep_shapes::AddTriangle(mesh, ring[4], moved, ring[5]);
  sweep_shapes::AddTriangle(mesh, middle, moved, ring[4]);
  return mesh;
}

TEST(SolidStart, ATriangleOfOneComponentIsTurnedOverWhereTheOtherBodyTouchesIt) {
  Mesh moving = SelfTouching();
  ASSERT_TRUE(sweep_ask::BodyOf(moving).IsSolid());
  const Mesh fixed = BoxOf({6, 1, -4}, {7, 3, 0});
  for (int turn = 0; turn < 3; ++turn) {
    EXPECT_EQ(Rest(moving, {fixed}).state, SolidState::Apart) << turn;
    EXPECT_EQ(Rest(fixed, {moving}).state, SolidState::Apart) << turn;
    EXPECT_EQ(Rest(moving, {fixed}, {0, 0, -0.5}).state, SolidState::Overlapping) << turn;
    EXPECT_EQ(Rest(moving, {fixed}, {1.5, 0, 0}).state, SolidState::Overlapping) << turn;
    std::rotate(moving.corners.end() - 3, moving.corners.end() - 2, moving.corners.end());
  }
}

Mesh Both(Mesh one, const Mesh& other) {
  Append(one, other);
  return one;
}

TEST(SolidStart, SeveralFixedBodiesHaveTheNumbersOfOne) {
  // The first component is in the second body, the second component in the first body.
  const Mesh moving = Both(BoxOf({22, 2, 2}, {23, 3, 3}), BoxOf({2, 2, 2}, {3, 3, 3}));
  const Mesh first = BoxOf({0, 0, 0}, {10, 10, 10});
  const Mesh second = BoxOf({20, 0, 0}, {30, 10, 10});
  const Rest apart(moving, {first, second});
  EXPECT_EQ(apart.state, SolidState::Inside);
  EXPECT_EQ(apart.inside.movingTriangle, 0u);
  EXPECT_EQ(apart.inside.fixedBody, 1u);
  EXPECT_EQ(Rest(moving, {Both(first, second)}).inside.movingTriangle, 0u);
  // The components of fixed bodies come in the order of the bodies.
  const Rest around(BoxOf({-9, -9, -9}, {40, 19, 19}), {second, first});
  EXPECT_EQ(around.inside.fixedBody, 0u);
  EXPECT_EQ(around.inside.fixedTriangle, 0u);
}

TEST(SolidStart, APairThatTouchesOneFixedBodyShowsWhatIsInAnother) {
  // A pyramid has its tip at the bottom of a pit of the second body, and is inside that body. No
  // pair shows it. The first body touches the bottom of the pyramid from below.
  const Coord3 tip{2, 2, 2};
  Mesh pitted = BoxOf({0, 0, 0}, {4, 4, 4});
  pitted.corners.erase(pitted.corners.begin() + 6, pitted.corners.begin() + 12); // the top
  const Coord3 rim[4] = {{0, 0, 4}, {4, 0, 4}, {4, 4, 4}, {0, 4, 4}};
  const Coord3 base[4] = {{1, 1, 1}, {3, 1, 1}, {3, 3, 1}, {1, 3, 1}};
  Mesh pyramid;
  sweep_shapes::AddQuad(pyramid, base[3], base[2], base[1], base[0]);
  for (std::size_t k = 0; k < 4; ++k) {
    sweep_shapes::AddTriangle(pitted, rim[k], rim[(k + 1) % 4], tip);
    sweep_shapes::AddTriangle(pyramid, base[k], base[(k + 1) % 4], tip);
  }
  const Mesh below = BoxOf({1, 1, 0.5}, {3, 3, 1});
  const Rest one(pyramid, {Both(below, pitted)});
  EXPECT_EQ(one.state, SolidState::Overlapping);
  // The bottom of the pyramid is in the top of the first body: triangles 0 and 2.
  EXPECT_EQ(one.best.moving, 0u);
  EXPECT_EQ(one.best.fixed, 2u);
  const Rest two(pyramid, {below, pitted});
  EXPECT_EQ(two.state, SolidState::Overlapping);
  EXPECT_EQ(two.best.moving, 0u);
  EXPECT_EQ(two.best.fixed, 2u);
}

TEST(SolidStart, TheOffsetMovesTheBody) {
  EXPECT_EQ(Rest(block, {block}, {4, 0, 0}).state, SolidState::Apart);
  EXPECT_EQ(Rest(block, {block}, {3.5, 0, 0}).state, SolidState::Overlapping);
  EXPECT_EQ(Rest(BoxOf({9, 9, 9}, {10, 10, 10}), {block}, {-8, -8, -8}).state, SolidState::Inside);
}

/// Returns how often the watch is called, which is once for so many nodes of a body. The search is
/// cancelled where that is far too often.
template <class Scalar>
int WatchCalls(const Mesh& moving, const Mesh& fixed, SolidState expected) {
  const PreparedBody movingBody(ViewOf(moving));
  const PreparedBody fixedBody(ViewOf(fixed));
  const SceneBodies bodies{&movingBody, {&fixedBody}};
  const TravelDirection direction({0, 0, 1});
  const RangeScale scale(16.0);
  const Scene<Scalar> scene(bodies, direction, scale, Question{}, true);
  int calls = 0;
  const Watch counts = [&calls](double) { return ++calls < 400; };
  SolidStart<Scalar> start(scene, counts);
  EXPECT_EQ(start.Run(), expected);
  return calls;
}

TEST(SolidStart, ATipThatTouchesFromInsideTakesAsLongAsItsFanHasTriangles) {
  // Four times the triangles may take six times as long. At a quadratic cost it would be sixteen.
  const double in = std::nextafter(2.0, 0.0);
  const Mesh room = BoxOf({-8, -8, -8}, {8, 8, 2});
  const Mesh tight = BoxOf({-8, -8, -2}, {8, 8, 2});
  for (const auto& ordered : {+[](const Mesh& mesh) { return mesh; }, Backwards, FromBothEnds}) {
    for (const double bottom : {-2.0, 0.0}) {
      const auto body = [&](int count) { return ordered(DoubleCone(count, 2.0, bottom)); };
      const Mesh few = body(500);
      const Mesh many = body(2000);
      ASSERT_TRUE(sweep_ask::BodyOf(few).IsSolid());
      for (const Mesh& around : {room, tight}) {
        const int calls = WatchCalls<float>(few, around, SolidState::Overlapping);
        EXPECT_GT(calls, 1);
        EXPECT_LT(WatchCalls<float>(many, around, SolidState::Overlapping), 6 * calls);
        EXPECT_LT(WatchCalls<float>(around, many, SolidState::Overlapping), 6 * calls);
        EXPECT_LT(WatchCalls<double>(many, around, SolidState::Overlapping), 6 * calls);
      }
      const Mesh lower = BoxOf({-8, -8, -8}, {8, 8, in});
      const int through = WatchCalls<float>(few, lower, SolidState::Overlapping);
      EXPECT_LT(WatchCalls<float>(many, lower, SolidState::Overlapping), 6 * through + 6);
      const Mesh above = BoxOf({-8, -8, 2}, {8, 8, 8});
      const int outside = WatchCalls<float>(few, above, SolidState::Apart);
      EXPECT_LT(WatchCalls<float>(many, above, SolidState::Apart), 6 * outside + 6);
    }
  }
}

/// Turns a body so that no plane of it is along the axes, in single precision.
Mesh Oblique(Mesh mesh) {
  for (Coord3& p : mesh.corners)
    p = Turned(p);
  return Single(mesh);
}

TEST(SolidStart, TipsThatTouchEachOtherTakeAsLongAsTheirFansHaveTriangles) {
  // Four times the triangles may take six times as long. At a quadratic cost it would be sixteen.
  const auto above = [](int count) {
    return sweep_shapes::Moved(DoubleCone(count, 4, -2), {0, 0, 2});
  };
  const auto below = [](int count) {
    return sweep_shapes::Moved(DoubleCone(count, 2, -3), {0, 0, -2});
  };
  for (const auto& turned : {+[](Mesh mesh) { return mesh; }, Oblique}) {
    for (const auto& ordered : {+[](const Mesh& mesh) { return mesh; }, Backwards, FromBothEnds}) {
      const auto calls = [&](auto scalar, int count, int other) {
        using Scalar = decltype(scalar);
        return WatchCalls<Scalar>(ordered(turned(above(count))), turned(below(other)),
                                  SolidState::Apart);
      };
      constexpr int kFew = kTestScaleDivisor > 1 ? 250 : 500;
      const int few = calls(0.0f, kFew, kFew);
      EXPECT_GT(few, 3);
      EXPECT_LT(calls(0.0f, 4 * kFew, 4 * kFew), 6 * few);
      EXPECT_LT(calls(0.0, 4 * kFew, 4 * kFew), 6 * few);
      EXPECT_LT(calls(0.0f, 4 * kFew, kFew), 6 * few);
    }
  }
}

TEST(SolidStart, TipsThatTouchShowWhatTheirPairsShow) {
  // A few triangles at each tip are compared with all others, many by their directions.
  for (const int count : {6, 300}) {
    const Mesh above = sweep_shapes::Moved(DoubleCone(count, 4, -2), {0, 0, 2});
    const Mesh wide = sweep_shapes::Moved(DoubleCone(count, 4, -1), {0, 0, 1});
    const Mesh below = sweep_shapes::Moved(DoubleCone(count, 2, -3), {0, 0, -2});
    EXPECT_EQ(Rest(above, {below}).state, SolidState::Apart);
    EXPECT_EQ(Rest(above, {below}, {0, 0, -0x1p-10}).state, SolidState::Overlapping);
    // Beside each other they go through each other.
    const Rest equal(above, {above});
    EXPECT_EQ(equal.state, SolidState::Overlapping);
    EXPECT_EQ(equal.best.moving, 0u);
    EXPECT_EQ(equal.best.fixed, 0u);
    // A cone in another with the same tip shows no pair that overlaps. The triangles of the tip
    // come first in the lower fan.
    const Rest inside(above, {wide});
    EXPECT_EQ(inside.state, SolidState::Overlapping);
    const Mesh tilted = Oblique(above);
    EXPECT_EQ(Rest(tilted, {Oblique(below)}).state, SolidState::Apart);
    EXPECT_EQ(Rest(tilted, {Oblique(wide)}).state, SolidState::Overlapping);
  }
}

TEST(SolidStart, ATipInAPitIsNamedByTheFirstTriangleOfTheOther) {
  // A cone whose tip is at the bottom of a pit of many sides, from below: nothing but the tip
  // touches, and the cone is in the body around the pit. The first triangles of both are at the
  // tip. Few triangles there are compared one by one.
  for (const int count : {8, 128}) {
    SCOPED_TRACE(count);
    Mesh pitted = Fan(count, {0, 0, 0}, 1.0);
    Append(pitted, TurnedOver(Fan(count, {0, 0, -4}, 1.0)));
    ASSERT_TRUE(sweep_ask::BodyOf(pitted).IsSolid());
    Mesh cone = sweep_shapes::Stretched(DoubleCone(count, 4, 2), {0.25, 0.25, 0.25});
    cone = sweep_shapes::Moved(cone, {0, 0, -1});
    for (const bool isConeMoving : {true, false}) {
      const Rest below(isConeMoving ? cone : pitted, {isConeMoving ? pitted : cone});
      EXPECT_EQ(below.state, SolidState::Overlapping);
      EXPECT_EQ(below.best.moving, 0u);
      EXPECT_EQ(below.best.fixed, 0u);
    }
    const Mesh above = sweep_shapes::Moved(DoubleCone(count, 9, -6), {0, 0, 6});
    EXPECT_EQ(Rest(above, {pitted}).state, SolidState::Apart);
    // Triangles that come first and touch nothing: the numbers are those in the whole bodies.
    Mesh later = BoxOf({90, 0, 0}, {91, 1, 1});
    Append(later, cone);
    Mesh laterPitted = BoxOf({-91, 0, 0}, {-90, 1, 1});
    Append(laterPitted, BoxOf({-81, 0, 0}, {-80, 1, 1}));
    Append(laterPitted, pitted);
    const Rest shifted(later, {laterPitted});
    EXPECT_EQ(shifted.state, SolidState::Overlapping);
    EXPECT_EQ(shifted.best.moving, 12u);
    EXPECT_EQ(shifted.best.fixed, 24u);
    const Rest exchanged(laterPitted, {later});
    EXPECT_EQ(exchanged.state, SolidState::Overlapping);
    EXPECT_EQ(exchanged.best.moving, 24u);
    EXPECT_EQ(exchanged.best.fixed, 12u);
  }
}

TEST(SolidStart, ATipInAPitIsNamedWhereManyTrianglesOfItsBodyComeFirst) {
  // The fixed body has two cones with one tip. The first is in the pit and overlaps nothing, and
  // the second, of few triangles, is in the moving body.
  const int count = 600;
  Mesh pitted = Fan(count, {0, 0, 0}, 1.0);
  Append(pitted, TurnedOver(Fan(count, {0, 0, -4}, 1.0)));
  const Mesh first = sweep_shapes::Moved(DoubleCone(count, 9, -6), {0, 0, 6});
  const Mesh second = sweep_shapes::Stretched(DoubleCone(8, 4, 2), {0.25, 0.25, 0.25});
  const Rest rest(pitted, {Both(first, sweep_shapes::Moved(second, {0, 0, -1}))});
  EXPECT_EQ(rest.state, SolidState::Overlapping);
  EXPECT_EQ(rest.best.moving, 0u);
  EXPECT_EQ(rest.best.fixed, 2u * count);
}

TEST(SolidStart, AnOffsetMayFlattenAllTrianglesAtATip) {
  // Beyond 2^52 a coordinate is a whole number. So the small body becomes a point, the tip of a
  // cone with whole coordinates.
  const double far = 0x1p52;
  const int count = 100;
  const Mesh small = sweep_shapes::Stretched(DoubleCone(count, 4, -4), {0x1p-8, 0x1p-8, 0x1p-8});
  Mesh cone;
  const auto ring = [far](int k) {
    const double angle = 2.0 * 3.14159265358979 * (k % count) / count;
    return Coord3{far + std::round(1000 * std::cos(angle)),
                  far + std::round(1000 * std::sin(angle)), far - 500};
  };
  for (int k = 0; k < count; ++k) {
    sweep_shapes::AddTriangle(cone, {far, far, far}, ring(k), ring(k + 1));
    sweep_shapes::AddTriangle(cone, {far, far, far - 900}, ring(k + 1), ring(k));
  }
  ASSERT_TRUE(sweep_ask::BodyOf(small).IsSolid());
  ASSERT_TRUE(sweep_ask::BodyOf(cone).IsSolid());
  Question question;
  question.rule = Rule::Solid;
  question.offset = {far, far, far};
  question.direction = {0, 0, 1};
  EXPECT_EQ(Pair(sweep_ask::BodyOf(small), {sweep_ask::BodyOf(cone)}).First(question).status,
            SweepStatus::None);
}

TEST(SolidStart, ATurnedOverTriangleIsLookedUnderAtItsFirstCorner) {
  // The fixed body is under the second corner of the triangle that is turned over, and not under
  // the first. So its wall goes through the triangle. Many plates are far under the first corner,
  // so that a look from there takes long.
  const Mesh standing = BoxWithSliver(4, 1, 0);
  Mesh fixed = BoxOf({2.5, 0, 0}, {4, 4, 4});
  for (int k = 0; k < 200; ++k)
    Append(fixed, BoxOf({-1, -1, -10.0 - 2 * k}, {1, 1, -9.0 - 2 * k}));
  EXPECT_EQ(Rest(standing, {fixed}).state, SolidState::Apart);
  EXPECT_EQ(Rest(fixed, {standing}).state, SolidState::Apart);
  EXPECT_EQ(Rest(standing, {fixed}, {0, 0, -0.5}).state, SolidState::Overlapping);
}

TEST(SolidStart, PairsThatComeAfterTheBestAreNotLookedAt) {
  // All triangles of two equal bodies touch, and the first two show the overlap.
  const Mesh mesh = Squares(24, {0, 0, 0}, {4, 4, 4});
  const int calls = WatchCalls<float>(mesh, mesh, SolidState::Overlapping);
  EXPECT_LT(calls, 2);
}

/// Returns walls of zero thickness in the bottom of a box, and the same upside down: in its top.
Mesh WallsBelow(int count, double least) {
  return sweep_shapes::Moved(Walls(count, least), {0, 0, -1});
}
Mesh WallsAbove(int count, double least) {
  Mesh mesh = sweep_shapes::Stretched(WallsBelow(count, least), {1, 1, -1});
  return TurnedOver(mesh);
}

TEST(SolidStart, WallsOfOnePlaceTakeAsLongAsThereAreTriangles) {
  // The box rests on a table, and walls in its bottom face as the top of the table does.
  const Mesh table = BoxOf({-4, -4, -2}, {4, 4, 0});
  const Mesh lid = BoxOf({-4, -4, 0}, {4, 4, 2});
  ASSERT_TRUE(sweep_ask::BodyOf(WallsBelow(20, 0.5)).IsSolid());
  for (const double least : {0.5, 1.0}) { // all different, or all equal
    const Mesh few = WallsBelow(200, least);
    const Mesh many = WallsBelow(800, least);
    const int calls = WatchCalls<float>(few, table, SolidState::Apart);
    EXPECT_LT(WatchCalls<float>(many, table, SolidState::Apart), 6 * calls + 3) << least;
    EXPECT_LT(WatchCalls<double>(many, table, SolidState::Apart), 6 * calls + 3) << least;
    EXPECT_LT(WatchCalls<float>(table, many, SolidState::Apart), 6 * calls + 3) << least;
    EXPECT_LT(WatchCalls<float>(WallsAbove(800, least), lid, SolidState::Apart), 6 * calls + 3);
  }
  // The pairs of equal walls of both bodies are as many as the pairs of one wall of each.
  const int both = WatchCalls<float>(WallsBelow(1000, 1), WallsAbove(1000, 1), SolidState::Apart);
  EXPECT_LT(WatchCalls<float>(WallsBelow(4000, 1), WallsAbove(4000, 1), SolidState::Apart),
            6 * both);
}

TEST(SolidStart, CopiesOfTrianglesHaveTheNumbersOfTheFirst) {
  // The second and the third box of each body are equal, and come before the first in no order.
  Mesh moving = BoxOf({90, 0, 0}, {91, 1, 1});
  for (int k = 0; k < 3; ++k)
    Append(moving, block);
  Mesh fixed = BoxOf({-91, 0, 0}, {-90, 1, 1});
  Append(fixed, BoxOf({-81, 0, 0}, {-80, 1, 1}));
  for (int k = 0; k < 3; ++k)
    Append(fixed, block);
  const Rest equal(moving, {fixed});
  EXPECT_EQ(equal.state, SolidState::Overlapping);
  EXPECT_EQ(equal.best.moving, 12u);
  EXPECT_EQ(equal.best.fixed, 24u);
  const Rest second(moving, {BoxOf({-91, 0, 0}, {-90, 1, 1}), fixed});
  EXPECT_EQ(second.best.moving, 12u);
  EXPECT_EQ(second.best.fixed, (std::uint64_t{1} << 32) + 24);
  // Copies of a box around a box, and copies of its cavity: two walls are left around it.
  Mesh shell;
  for (int k = 0; k < 3; ++k)
    Append(shell, BoxOf({-2, -2, -2}, {6, 6, 6}));
  const Mesh room = BoxOf({-1, -1, -1}, {5, 5, 5});
  Append(shell, TurnedOver(room));
  const Mesh inner = BoxOf({1, 1, 1}, {2, 2, 2});
  EXPECT_EQ(Rest(inner, {shell}).state, SolidState::Inside);
  Append(shell, TurnedOver(room));
  EXPECT_EQ(Rest(inner, {shell}).state, SolidState::Inside);
  Append(shell, TurnedOver(room));
  EXPECT_EQ(Rest(inner, {shell}).state, SolidState::Apart);
}

/// Cuts each triangle in four.
Mesh Quartered(const Mesh& mesh) {
  const auto middle = [](const Coord3& p, const Coord3& q) {
    return Coord3{(p.x + q.x) / 2, (p.y + q.y) / 2, (p.z + q.z) / 2};
  };
  Mesh cut;
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3) {
    const Coord3* const p = &mesh.corners[k];
    const Coord3 q[3] = {middle(p[0], p[1]), middle(p[1], p[2]), middle(p[2], p[0])};
    for (int c = 0; c < 3; ++c)
      sweep_shapes::AddTriangle(cut, p[c], q[c], q[(c + 2) % 3]);
    sweep_shapes::AddTriangle(cut, q[0], q[1], q[2]);
  }
  return cut;
}

Mesh Shuffled(const Mesh& mesh, std::uint64_t seed) {
  std::vector<std::size_t> order(mesh.corners.size() / 3);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), std::mt19937_64(seed));
  Mesh shuffled;
  for (const std::size_t k : order)
    sweep_shapes::AddTriangle(shuffled, mesh.corners[3 * k], mesh.corners[3 * k + 1],
                              mesh.corners[3 * k + 2]);
  return shuffled;
}

TEST(SolidStart, CopiesCountAtTheirOwnTrianglesInAnyOrder) {
  // Three boxes around two cavities leave one layer around the inner box, and none around three.
  const Mesh outer = Quartered(Quartered(BoxOf({-2, -2, -2}, {6, 6, 6})));
  const Mesh room = TurnedOver(Quartered(Quartered(BoxOf({-1, -1, -1}, {5, 5, 5}))));
  const Mesh inner = BoxOf({1, 1, 1}, {2, 2, 2});
  Mesh shell = room;
  Append(shell, room);
  for (int k = 0; k < 3; ++k)
    Append(shell, outer);
  Mesh hollow = shell;
  Append(hollow, room);
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    EXPECT_EQ(Rest(inner, {Shuffled(shell, seed)}).state, SolidState::Inside) << seed;
    EXPECT_EQ(Rest(inner, {Shuffled(hollow, seed)}).state, SolidState::Apart) << seed;
  }
}

TEST(SolidStart, StopsWhenItIsCancelled) {
  // Two slabs with a bent surface in common, so that every triangle of it may touch.
  const Mesh bent = Single(Bowl(60, 0.1));
  Mesh below = bent;
  Append(below, TurnedOver(sweep_shapes::Moved(bent, {0, 0, -1})));
  const PreparedBody lower(ViewOf(below));
  const PreparedBody upper(ViewOf(sweep_shapes::Moved(below, {0, 0, 1})));
  const SceneBodies bodies{&upper, {&lower}};
  const TravelDirection direction({0, 0, 1});
  const RangeScale scale(2.0);
  const Scene<float> scene(bodies, direction, scale, Question{}, true);
  const Watch goesOn;
  SolidStart<float> whole(scene, goesOn);
  EXPECT_EQ(whole.Run(), SolidState::Apart);
  int calls = 0;
  const Watch stops = [&calls](double) { return ++calls < 3; };
  SolidStart<float> cut(scene, stops);
  EXPECT_EQ(cut.Run(), SolidState::Cancelled);
  EXPECT_EQ(calls, 3);
}

TEST(SolidStart, StopsWhenItIsCancelledWhileNothingTouches) {
  // Two slabs with bent surfaces so near each other that their boxes meet.
  Mesh below = Single(Bowl(60, 0.1));
  Append(below, TurnedOver(sweep_shapes::Moved(below, {0, 0, -1})));
  const PreparedBody lower(ViewOf(below));
  const PreparedBody upper(ViewOf(sweep_shapes::Moved(below, {0, 0, 1.0 + 0x1p-10})));
  const SceneBodies bodies{&upper, {&lower}};
  const TravelDirection direction({0, 0, 1});
  const RangeScale scale(4.0);
  const Scene<float> scene(bodies, direction, scale, Question{}, true);
  int calls = 0;
  const Watch counts = [&calls](double) { return ++calls > 0; };
  SolidStart<float> whole(scene, counts);
  EXPECT_EQ(whole.Run(), SolidState::Apart);
  ASSERT_GT(calls, 1);
  calls = 0;
  const Watch stops = [&calls](double) { return ++calls < 2; };
  SolidStart<float> cut(scene, stops);
  EXPECT_EQ(cut.Run(), SolidState::Cancelled);
  EXPECT_EQ(calls, 2);
}

TEST(SolidStart, StopsWhenItIsCancelledWhileComponentsAreLookedFor) {
  // Each box is a component, and none is inside the body over them.
  Mesh boxes;
  for (int k = 0; k < 2000; ++k)
    Append(boxes, BoxOf({2.0 * k, 9, 9}, {2.0 * k + 1, 10, 10}));
  const PreparedBody moving(ViewOf(boxes));
  const PreparedBody fixed(ViewOf(BoxOf({-1, -1, 90}, {9999, 20, 99})));
  const SceneBodies bodies{&moving, {&fixed}};
  const TravelDirection direction({0, 0, 1});
  const RangeScale scale(16384.0);
  const Scene<float> scene(bodies, direction, scale, Question{}, true);
  int calls = 0;
  const Watch counts = [&calls](double) { return ++calls > 0; };
  SolidStart<float> whole(scene, counts);
  EXPECT_EQ(whole.Run(), SolidState::Apart);
  ASSERT_GT(calls, 1);
  calls = 0;
  const Watch stops = [&calls](double) { return ++calls < 1; };
  SolidStart<float> cut(scene, stops);
  EXPECT_EQ(cut.Run(), SolidState::Cancelled);
  EXPECT_EQ(calls, 1);
}

} // namespace
