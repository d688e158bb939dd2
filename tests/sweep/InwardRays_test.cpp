#include "InwardRays.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_shapes::Append;

const RangeScale kScale(0x1p12); // more than every coordinate here
const auto kAlways = [] { return true; };

SurfaceTriangle TurnedOver(SurfaceTriangle t) {
  std::swap(t.corner[1], t.corner[2]);
  return t;
}

/// Compares the turns around points on both sides of triangles of a body with the sums of the
/// crossings of each ray alone.
template <class Scalar>
void ExpectTheSumsOfEachRay(const Mesh& mesh, std::size_t step) {
  const PreparedBody body(ViewOf(mesh));
  const Placement<Scalar> placement({0, 0, 0}, kScale);
  const PlacedBody<Scalar> placed(body, placement);
  InwardRays rays;
  std::vector<int> expected;
  for (std::size_t place = 0; place < body.TriangleCount(); place += step) {
    const SurfaceTriangle triangle = placed.TriangleAt(place);
    for (const SurfaceTriangle& face : {triangle, TurnedOver(triangle)}) {
      rays.Add(face);
      const InwardRay ray(face);
      int sum = 0;
      for (std::size_t k = 0; k < body.TriangleCount(); ++k)
        sum += ray.Crossing(placed.TriangleAt(k));
      expected.push_back(sum);
    }
  }
  EXPECT_EQ(rays.TurnsAround(placed, kAlways), expected);
}

void ExpectTheSumsOfEachRay(const Mesh& mesh, std::size_t step = 1) {
  ExpectTheSumsOfEachRay<float>(mesh, step);
  ExpectTheSumsOfEachRay<double>(mesh, step);
}

/// Returns boxes of a lattice that share many of their planes, edges and corners.
Mesh LatticeBoxes(std::uint64_t seed, int count) {
  std::mt19937_64 random(seed);
  const WholesIn<int> low(0, 5);
  const WholesIn<int> length(1, 3);
  Mesh mesh;
  for (int k = 0; k < count; ++k) {
    double from[3];
    double to[3];
    for (int axis = 0; axis < 3; ++axis) {
      from[axis] = low(random);
      to[axis] = from[axis] + length(random);
    }
    const Mesh box = sweep_shapes::Box({from[0], from[1], from[2]}, {to[0], to[1], to[2]});
    const bool isCavity = RandomBits(random) % 4 == 0;
    Append(mesh, isCavity ? sweep_bodies::TurnedOver(box) : box);
  }
  return mesh;
}

Mesh Each(Mesh mesh, const std::function<Coord3(const Coord3&)>& place) {
  for (Coord3& p : mesh.corners)
    p = place(p);
  return mesh;
}

/// Keeps planes: coordinates stay whole numbers.
Coord3 Oblique(const Coord3& p) {
  return {p.x + 2 * p.y, p.y - p.z, p.x + p.z};
}

TEST(InwardRays, HaveTheSumsOfEachRay) {
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    const Mesh mesh = LatticeBoxes(seed, 12);
    ExpectTheSumsOfEachRay(mesh);
    ExpectTheSumsOfEachRay(Each(mesh, Oblique));
    ExpectTheSumsOfEachRay(Each(mesh, Turned));
  }
}

TEST(InwardRays, HaveTheSumsOfEachRayInASoup) {
  ExpectTheSumsOfEachRay(Soup(3, 300));
  ExpectTheSumsOfEachRay(Single(Soup(4, 300)));
}

TEST(InwardRays, OfTinyTrianglesAreNotRounded) {
  // Pairs of triangles in one plane, whose rays begin at one point. Products of three coordinates
  // are rounded, and near the end of the range.
  std::mt19937_64 random(6);
  const WholesIn<int> any(-0x10000, 0x10000);
  const double unit = 0x1p-326;
  Mesh mesh;
  for (int k = 0; k < 40; ++k) {
    double at[2][3][3];
    for (int axis = 0; axis < 3; ++axis) {
      const double middle = any(random);
      const double b = 2.0 * any(random);
      const double c = 2.0 * any(random);
      for (int size = 1; size <= 2; ++size) {
        at[size - 1][0][axis] = unit * (middle - size * 0.5 * (b + c));
        at[size - 1][1][axis] = unit * (middle + size * b);
        at[size - 1][2][axis] = unit * (middle + size * c);
      }
    }
    for (const auto& t : at) {
      sweep_shapes::AddTriangle(mesh, {t[0][0], t[0][1], t[0][2]}, {t[1][0], t[1][1], t[1][2]},
                                {t[2][0], t[2][1], t[2][2]});
    }
  }
  ExpectTheSumsOfEachRay<double>(mesh, 1);
}

TEST(InwardRays, WindAsOftenAsThereAreBoxesAround) {
  // Box k is inside the boxes before it. So as many are around a point just outside of its faces,
  // and one more around a point just under them.
  const int count = 40;
  Mesh mesh;
  for (int k = 0; k < count; ++k) {
    const double reach = 100.0 - k;
    Append(mesh, sweep_shapes::Box({-reach, -reach, -reach}, {reach, reach, reach}));
  }
  const PreparedBody body(ViewOf(mesh));
  const Placement<float> placement({0, 0, 0}, kScale);
  const PlacedBody<float> placed(body, placement);
  InwardRays rays;
  std::vector<int> expected;
  for (std::size_t place = 0; place < body.TriangleCount(); ++place) {
    rays.Add(placed.TriangleAt(place));
    rays.Add(TurnedOver(placed.TriangleAt(place)));
    const int around = static_cast<int>(body.Triangles().Number(place)) / 12;
    expected.push_back(around + 1);
    expected.push_back(around);
  }
  EXPECT_EQ(rays.TurnsAround(placed, kAlways), expected);
}

TEST(InwardRays, OfNoTriangleAreNone) {
  const PreparedBody body(ViewOf(sweep_shapes::Box({0, 0, 0}, {1, 1, 1})));
  const Placement<float> placement({0, 0, 0}, kScale);
  EXPECT_TRUE(InwardRays().TurnsAround(PlacedBody<float>(body, placement), kAlways).empty());
}

/// Returns the steps that the rays of one triangle of each component take. Components are boxes.
template <class Scalar>
std::size_t StepsOf(const Mesh& mesh) {
  const PreparedBody body(ViewOf(mesh));
  const Placement<Scalar> placement({0, 0, 0}, kScale);
  const PlacedBody<Scalar> placed(body, placement);
  InwardRays rays;
  for (std::size_t place = 0; place < body.TriangleCount(); ++place) {
    const std::uint32_t number = body.Triangles().Number(place);
    if (number % 12 != number / 12 % 12) continue; // another face of each box in turn
    rays.Add(placed.TriangleAt(place));
    rays.Add(TurnedOver(placed.TriangleAt(place)));
  }
  std::size_t steps = 0;
  const auto counts = [&steps] {
    ++steps;
    return true;
  };
  rays.TurnsAround(placed, counts);
  return steps;
}

/// Makes one of so many boxes.
using BoxMaker = std::function<Mesh(int k, int count)>;

Mesh Boxes(int count, const BoxMaker& make) {
  Mesh mesh;
  for (int k = 0; k < count; ++k)
    Append(mesh, make(k, count));
  return mesh;
}

struct BoxesOfOnePlace {
  std::string name;
  BoxMaker make;
};

std::vector<BoxesOfOnePlace> AllBoxes() {
  const auto part = [](int k, int count) { return 1.0 + (k + 0.0) / count; };
  return {
      {"nested",
       [part](int k, int count) {
         const double reach = part(k, count);
         return sweep_shapes::Box({-reach, -reach, -reach}, {reach, reach, reach});
       }},
      {"nested_outwards",
       [part](int k, int count) {
         const double reach = part(count - k, count);
         return Each(sweep_shapes::Box({-reach, -reach, -reach}, {reach, reach, reach}), Turned);
       }},
      {"coincident",
       [](int, int) {
         return sweep_shapes::Box({-1, -1, -1}, {1, 1, 1});
       }},
      {"plates_with_common_faces",
       [part](int k, int count) {
         const double reach = part(k, count);
         return sweep_shapes::Box({-reach, -2 * reach, 0}, {2 * reach, reach, 0x1p-6});
       }},
      {"stack_of_plates",
       [](int k, int) {
         return sweep_shapes::Box({-1, -1, 2.0 * k}, {1, 1, 2.0 * k + 2});
       }},
      {"row", [](int k, int) {
         return sweep_shapes::Box({2.0 * k, 0, 0}, {2.0 * k + 1, 1, 1});
       }}};
}

class InwardRaysOf : public testing::TestWithParam<BoxesOfOnePlace> {};

TEST_P(InwardRaysOf, TakeAsManyStepsAsThereAreTriangles) {
  // Four times the boxes may take six times the steps. At a quadratic cost it would be sixteen.
  const Mesh few = Boxes(256, GetParam().make);
  const Mesh many = Boxes(1024, GetParam().make);
  EXPECT_LT(StepsOf<float>(many), 6 * StepsOf<float>(few));
  EXPECT_LT(StepsOf<double>(many), 6 * StepsOf<double>(few));
}

INSTANTIATE_TEST_SUITE_P(Boxes, InwardRaysOf, testing::ValuesIn(AllBoxes()),
                         [](const testing::TestParamInfo<BoxesOfOnePlace>& tested) {
                           return tested.param.name;
                         });

TEST(InwardRays, StopWhenTheCallerDoes) {
  const PreparedBody body(ViewOf(LatticeBoxes(1, 50)));
  const Placement<float> placement({0, 0, 0}, kScale);
  const PlacedBody<float> placed(body, placement);
  InwardRays rays;
  for (std::size_t place = 0; place < body.TriangleCount(); ++place)
    rays.Add(placed.TriangleAt(place));
  int calls = 0;
  rays.TurnsAround(placed, [&calls] { return ++calls > 0; });
  const int all = calls;
  ASSERT_GT(all, 10000);
  calls = 0;
  rays.TurnsAround(placed, [&calls] { return ++calls < 100; });
  EXPECT_LT(calls, all / 10);
}

} // namespace
