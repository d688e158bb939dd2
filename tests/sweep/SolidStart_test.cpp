#include "SolidStart.h"

#include "Bodies.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_shapes::Append;

Mesh BoxOf(const Coord3& low, const Coord3& high) {
  return sweep_shapes::Box(low, high);
}

Mesh TurnedOver(Mesh mesh) {
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
    std::swap(mesh.corners[k + 1], mesh.corners[k + 2]);
  return mesh;
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

TEST(SolidStart, TheOffsetMovesTheBody) {
  EXPECT_EQ(Rest(block, {block}, {4, 0, 0}).state, SolidState::Apart);
  EXPECT_EQ(Rest(block, {block}, {3.5, 0, 0}).state, SolidState::Overlapping);
  EXPECT_EQ(Rest(BoxOf({9, 9, 9}, {10, 10, 10}), {block}, {-8, -8, -8}).state, SolidState::Inside);
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

} // namespace
