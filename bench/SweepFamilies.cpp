#include "SweepFamilies.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sweep_families {

namespace {

using gsl_arithmetic::Add;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;

constexpr double kPi = 3.14159265358979323846;
const Coord3 kDown{0.0, 0.0, -1.0};
const Coord3 kSlant{0.1, -0.2, -1.0};

std::uint32_t AddVertex(IndexedMesh& mesh, const Coord3& p) {
  mesh.vertices.insert(mesh.vertices.end(), {p.x, p.y, p.z});
  return static_cast<std::uint32_t>(mesh.VertexCount() - 1);
}

/// Numbers of corners in turning order.
void AddQuad(IndexedMesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c,
             std::uint32_t d) {
  mesh.corners.insert(mesh.corners.end(), {a, b, c, a, c, d});
}

void AddTriangle(IndexedMesh& mesh, const Coord3& a, const Coord3& b, const Coord3& c) {
  const std::uint32_t first = AddVertex(mesh, a);
  AddVertex(mesh, b);
  AddVertex(mesh, c);
  mesh.corners.insert(mesh.corners.end(), {first, first + 1, first + 2});
}

template <class Map>
void MapVertices(IndexedMesh& mesh, const Map& map) {
  for (std::size_t k = 0; k < mesh.vertices.size(); k += 3) {
    double* const v = mesh.vertices.data() + k;
    const Coord3 p = map(Coord3{v[0], v[1], v[2]});
    v[0] = p.x;
    v[1] = p.y;
    v[2] = p.z;
  }
}

/// gcc 12 leaves out the rounding of two neighbours at -O2 unless the result is stored.
double Single(double c) {
  volatile float single = static_cast<float>(c);
  return static_cast<double>(single);
}

void RoundToSingle(Scene& scene) {
  const auto rounded = [](const Coord3& p) {
    return Coord3{Single(p.x), Single(p.y), Single(p.z)};
  };
  MapVertices(scene.moving, rounded);
  MapVertices(scene.fixed, rounded);
}

IndexedMesh Moved(IndexedMesh mesh, const Coord3& by) {
  MapVertices(mesh, [&by](const Coord3& p) { return Add(p, by); });
  return mesh;
}

/// The rotation by the unit quaternion (0.8, 0.36, 0.48, 0), so that nothing is along an axis.
Coord3 Turned(const Coord3& p) {
  constexpr double kW = 0.8;
  constexpr double kX = 0.36;
  constexpr double kY = 0.48;
  return {(1.0 - 2.0 * kY * kY) * p.x + 2.0 * kX * kY * p.y + 2.0 * kW * kY * p.z,
          2.0 * kX * kY * p.x + (1.0 - 2.0 * kX * kX) * p.y - 2.0 * kW * kX * p.z,
          -2.0 * kW * kY * p.x + 2.0 * kW * kX * p.y + (1.0 - 2.0 * (kX * kX + kY * kY)) * p.z};
}

/// The number of squares along an edge of a cube that gives so many triangles.
int CubeGrid(std::size_t triangles) {
  return std::max(1, static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 12))));
}

/// The surface of the cube [-1, 1]^3 in squares, after `map`. It is closed when the map is
/// continuous.
template <class Map>
IndexedMesh Cube(int grid, const Map& map) {
  IndexedMesh mesh;
  for (int face = 0; face < 6; ++face) {
    const auto first = static_cast<std::uint32_t>(mesh.VertexCount());
    const double side = face < 3 ? 1.0 : -1.0;
    for (int j = 0; j <= grid; ++j) {
      for (int i = 0; i <= grid; ++i) {
        double c[3];
        c[face % 3] = side;
        c[(face + 1) % 3] = 2.0 * i / grid - 1.0;
        c[(face + 2) % 3] = 2.0 * j / grid - 1.0;
        AddVertex(mesh, map(Coord3{c[0], c[1], c[2]}));
      }
    }
    const auto at = [first, grid](int i, int j) {
      return first + static_cast<std::uint32_t>(j * (grid + 1) + i);
    };
    for (int j = 0; j < grid; ++j) {
      for (int i = 0; i < grid; ++i) {
        if (face < 3) {
          AddQuad(mesh, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
        } else {
          AddQuad(mesh, at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j));
        }
      }
    }
  }
  return mesh;
}

/// A ring: map(u, angle) with u from 0 to 1 once around the section, and the angle once around the
/// z axis.
template <class Map>
IndexedMesh Ring(std::size_t triangles, const Map& map) {
  const int around = std::max(3, static_cast<int>(std::sqrt(static_cast<double>(triangles) / 4)));
  const int section = 2 * around;
  IndexedMesh mesh;
  for (int i = 0; i < section; ++i) {
    for (int j = 0; j < around; ++j)
      AddVertex(mesh, map(static_cast<double>(i) / section, 2.0 * kPi * j / around));
  }
  const auto at = [section, around](int i, int j) {
    return static_cast<std::uint32_t>((i % section) * around + j % around);
  };
  for (int i = 0; i < section; ++i) {
    for (int j = 0; j < around; ++j)
      AddQuad(mesh, at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j));
  }
  return mesh;
}

Coord3 AroundZ(double radius, double angle, double z) {
  return {radius * std::cos(angle), radius * std::sin(angle), z};
}

/// A tube of the given radii, for z from low to high.
IndexedMesh Tube(std::size_t triangles, double inner, double outer, double low, double high,
                 double turn) {
  return Ring(triangles, [&](double u, double angle) {
    const double at = 4.0 * u;
    const double part = at - std::floor(at);
    const double across[4] = {inner + (outer - inner) * part, outer, outer - (outer - inner) * part,
                              inner};
    const double along[4] = {low, low + (high - low) * part, high, high - (high - low) * part};
    const auto side = static_cast<std::size_t>(at);
    return AroundZ(across[side], angle + turn, along[side]);
  });
}

IndexedMesh Sphere(std::size_t triangles) {
  return Cube(CubeGrid(triangles), [](const Coord3& p) { return Multiply(p, 1.0 / Length(p)); });
}

/// A closed body like a scanned figure: large waves, small waves and a grain.
IndexedMesh Figure(std::size_t triangles, double phase) {
  return Cube(CubeGrid(triangles), [phase](const Coord3& p) {
    const Coord3 n = Multiply(p, 1.0 / Length(p));
    const double r = 1.0 + 0.1 * std::sin(3.0 * n.x + phase) * std::cos(4.0 * n.y) +
                     0.04 * std::sin(11.0 * n.y + 7.0 * n.z + phase) +
                     0.003 * std::sin(90.0 * n.x) * std::sin(80.0 * n.z + phase);
    return Multiply(n, r);
  });
}

/// The outline of a comb with its teeth downwards: x from -1 to 1, z from 0 (tips) to 0.5.
constexpr int kTeeth = 16;
constexpr double kPitch = 2.0 / kTeeth;

std::pair<double, double> CombOutline(double t) {
  constexpr double kWidth[4] = {0.45 * kPitch, 0.1 * kPitch, 0.35 * kPitch, 0.1 * kPitch};
  constexpr double kFrom[4] = {0.5, 0.5, 0.0, 0.0};
  constexpr double kTo[4] = {0.5, 0.0, 0.0, 0.5};
  double length[4];
  double total = 0.0;
  for (int k = 0; k < 4; ++k)
    total += length[k] = std::hypot(kWidth[k], kTo[k] - kFrom[k]);
  const double at = std::min(t * kTeeth, kTeeth - 1e-9);
  double rest = (at - std::floor(at)) * total;
  double x = -1.0 + kPitch * std::floor(at);
  for (int k = 0; k < 3; ++k) {
    if (rest <= length[k]) {
      const double part = rest / length[k];
      return {x + kWidth[k] * part, kFrom[k] + (kTo[k] - kFrom[k]) * part};
    }
    rest -= length[k];
    x += kWidth[k];
  }
  const double part = rest / length[3];
  return {x + kWidth[3] * part, kFrom[3] + (kTo[3] - kFrom[3]) * part};
}

/// Tips and grooves are slightly wavy: flat ones would meet in exact ties.
IndexedMesh Comb(std::size_t triangles, double phase) {
  return Cube(CubeGrid(triangles), [phase](const Coord3& p) {
    const auto [x, z] = CombOutline(0.5 * (p.x + 1.0));
    const double bottom = z + 0.02 * std::sin(3.0 * x + phase) * std::cos(2.0 * p.y + phase);
    return Coord3{x, p.y, 0.8 + (bottom - 0.8) * 0.5 * (1.0 - p.z)};
  });
}

/// The radius of the thread of a screw and, with a clearance, of its nut.
double Thread(double z, double angle) {
  return 1.0 + 0.1 * std::sin(3.0 * kPi * z - angle);
}

// The scenes, in the order of the list at the end.

Scene Spheres(std::size_t n) {
  return {Moved(Sphere(n), {0.1, 0.2, 2.3}), Sphere(n), kDown};
}

Scene FiguresAlong(std::size_t n, const Coord3& direction) {
  return {Moved(Figure(n, 1.0), {0.1, 0.2, 2.6}), Figure(n, 0.0), direction};
}

Scene Figures(std::size_t n) {
  return FiguresAlong(n, kSlant);
}

Scene Combs(std::size_t n) {
  Scene scene{Comb(n, 0.5), Comb(n, 1.7), kDown};
  MapVertices(scene.moving, [](const Coord3& p) { return Add(p, {0.0, 0.0, -0.25}); });
  MapVertices(scene.fixed, [](const Coord3& p) { return Coord3{p.x - 0.5 * kPitch, -p.y, -p.z}; });
  return scene;
}

Scene TurnedCombs(std::size_t n) {
  Scene scene = Combs(n);
  MapVertices(scene.moving, Turned);
  MapVertices(scene.fixed, Turned);
  scene.direction = Turned(scene.direction);
  return scene;
}

Scene ScrewInNut(std::size_t n) {
  Scene scene;
  scene.direction = kDown;
  scene.moving = Ring(n, [](double u, double angle) {
    const double z = u < 0.8 ? -1.0 + 2.5 * u : 1.0 - 10.0 * (u - 0.8);
    return AroundZ(u < 0.8 ? Thread(z, angle) : 0.3, angle, z);
  });
  scene.fixed = Ring(n, [](double u, double angle) {
    const double z = u < 0.8 ? 0.6 - 1.5 * u : -0.6 + 6.0 * (u - 0.8);
    return AroundZ(u < 0.8 ? Thread(z, angle) + 0.06 : 1.6, angle, z);
  });
  return scene;
}

Scene PegInBore(std::size_t n) {
  const auto peg = [](const Coord3& p) {
    const double corner = std::hypot(p.x, p.y);
    const double k = corner == 0.0 ? 0.0 : std::max(std::fabs(p.x), std::fabs(p.y)) / corner;
    return Coord3{p.x * k, p.y * k, 2.0 * p.z};
  };
  return {Cube(CubeGrid(n), peg), Tube(n, 1.02, 2.0, -1.0, 1.0, 0.1), {0.02, 0.01, -1.0}};
}

Scene TubeInTube(std::size_t n) {
  return {
      Tube(n, 0.8, 0.95, -1.5, 1.5, 0.1), Tube(n, 1.0, 1.2, -1.0, 1.0, 0.0), {0.02, 0.01, -1.0}};
}

Scene TubeThroughTube(std::size_t n) {
  Scene scene = TubeInTube(n);
  scene.direction = kDown;
  return scene;
}

Scene TubeOnTube(std::size_t n) {
  return {Tube(n, 1.0, 1.2, 2.0, 4.0, 0.0), Tube(n, 1.0, 1.2, -1.0, 1.0, 0.0), kDown};
}

/// A step that single precision holds, and its half and quarter too, for grids of up to 2^16
/// squares.
double StepOf(int grid) {
  return std::exp2(-std::ceil(std::log2(grid)));
}

/// A box of cubes of one step; flat boxes are one step high.
IndexedMesh Block(std::size_t n, bool isFlat) {
  const int grid = CubeGrid(n);
  const double step = StepOf(grid);
  return Cube(grid, [&](const Coord3& p) {
    const auto on = [&](double c) { return std::round(0.5 * (c + 1.0) * grid) * step; };
    return Coord3{on(p.x), on(p.y), isFlat ? on(p.z) / 16.0 : on(p.z)};
  });
}

Scene Plates(std::size_t n) {
  const double step = StepOf(CubeGrid(n));
  return {Moved(Block(n, true), {0.5 * step, 0.25 * step, 1.0}), Block(n, true), kDown};
}

IndexedMesh Sheet(std::size_t n) {
  const int grid = std::max(1, static_cast<int>(std::sqrt(static_cast<double>(n) / 2)));
  const double step = StepOf(grid);
  IndexedMesh mesh;
  for (int j = 0; j <= grid; ++j) {
    for (int i = 0; i <= grid; ++i)
      AddVertex(mesh, {i * step, j * step, 0.0});
  }
  const auto at = [grid](int i, int j) { return static_cast<std::uint32_t>(j * (grid + 1) + i); };
  for (int j = 0; j < grid; ++j) {
    for (int i = 0; i < grid; ++i)
      AddQuad(mesh, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
  }
  return mesh;
}

Scene FlatGrids(std::size_t n) {
  return {Moved(Sheet(n), {0.0, 0.0, 1.0}), Sheet(n), kDown};
}

/// Makes planes z = constant oblique to the axes, exactly.
Scene Sheared(Scene scene) {
  const auto shear = [](const Coord3& p) { return Coord3{p.x, p.y, p.z + 0.5 * p.x + 0.25 * p.y}; };
  MapVertices(scene.moving, shear);
  MapVertices(scene.fixed, shear);
  scene.direction = kSlant;
  return scene;
}

Scene PlatesAslant(std::size_t n) {
  return Sheared(Plates(n));
}

Scene FlatGridsAslant(std::size_t n) {
  return Sheared(FlatGrids(n));
}

Scene SlidingWalls(std::size_t n) {
  const int grid = CubeGrid(n);
  return {Moved(Block(n, false), {grid * StepOf(grid), 0.0, 2.0}), Block(n, false), kDown};
}

Scene SlidingWallsAslant(std::size_t n) {
  Scene scene = SlidingWalls(n);
  const auto shear = [](const Coord3& p) { return Coord3{p.x + 0.25 * p.z, p.y, p.z}; };
  MapVertices(scene.moving, shear);
  MapVertices(scene.fixed, shear);
  scene.direction = {-0.25, 0.0, -1.0};
  return scene;
}

Scene StrayVertexAlong(std::size_t n, const Coord3& direction) {
  Scene scene = FiguresAlong(n, direction);
  std::vector<double>& v = scene.fixed.vertices;
  std::size_t lowest = 2;
  for (std::size_t k = 2; k < v.size(); k += 3) {
    if (v[k] < v[lowest]) lowest = k;
  }
  v[lowest - 2] = 1e30;
  v[lowest] = -1e30;
  return scene;
}

Scene StrayVertex(std::size_t n) {
  return StrayVertexAlong(n, kDown);
}

Scene StrayVertexAslant(std::size_t n) {
  return StrayVertexAlong(n, kSlant);
}

Scene HugeTriangleAlong(std::size_t n, const Coord3& direction) {
  Scene scene = FiguresAlong(n, direction);
  AddTriangle(scene.fixed, {-1e6, -1e6, -3.0}, {1e6, -1e6, -3.0}, {0.0, 1e6, -3.0});
  return scene;
}

Scene HugeTriangle(std::size_t n) {
  return HugeTriangleAlong(n, kDown);
}

Scene HugeTriangleAslant(std::size_t n) {
  return HugeTriangleAlong(n, kSlant);
}

/// Between the bodies, a thousand copies of a triangle face a thousand copies of another one.
Scene CoincidentFacesAlong(std::size_t n, const Coord3& direction) {
  Scene scene = FiguresAlong(n, direction);
  for (int k = 0; k < 1000; ++k) {
    AddTriangle(scene.moving, {0.0, 0.0, 1.375}, {0.25, 0.0, 1.375}, {0.0, 0.25, 1.375});
    AddTriangle(scene.fixed, {0.0, 0.0, 1.25}, {0.0, 0.25, 1.25}, {0.25, 0.0, 1.25});
  }
  return scene;
}

Scene CoincidentFaces(std::size_t n) {
  return CoincidentFacesAlong(n, kDown);
}

Scene CoincidentFacesAslant(std::size_t n) {
  return CoincidentFacesAlong(n, kSlant);
}

/// A cone of so many triangles with its tip at the origin, opened along z towards the height.
IndexedMesh Fan(std::size_t n, double height) {
  IndexedMesh mesh;
  mesh.vertices.reserve(3 * (n + 1));
  const std::uint32_t tip = AddVertex(mesh, {0.0, 0.0, 0.0});
  for (std::size_t k = 0; k < n; ++k)
    AddVertex(mesh,
              AroundZ(1.0, 2.0 * kPi * static_cast<double>(k) / static_cast<double>(n), height));
  const auto at = [n](std::size_t k) { return static_cast<std::uint32_t>(1 + k % n); };
  for (std::size_t k = 0; k < n; ++k)
    mesh.corners.insert(mesh.corners.end(), {tip, at(k), at(k + 1)});
  return mesh;
}

Scene TwoFans(std::size_t n) {
  return {Moved(Fan(n, 1.0), {0.0, 0.0, 1.0}), Fan(n, -1.0), kDown};
}

template <Scene (*kMake)(std::size_t)>
Scene InSingle(std::size_t n) {
  Scene scene = kMake(n);
  RoundToSingle(scene);
  return scene;
}

} // namespace

const std::vector<Family>& AllFamilies() {
  static const std::vector<Family> kFamilies = {
      {"figures apart", Kind::Apart, false, InSingle<Figures>, true},
      {"spheres apart", Kind::Apart, false, InSingle<Spheres>, true},
      {"figures apart, in double precision", Kind::Apart, true, Figures, true},
      {"interlocked combs", Kind::Interleaved, false, InSingle<Combs>, true},
      {"interlocked combs, turned", Kind::Interleaved, false, InSingle<TurnedCombs>},
      {"screw in nut", Kind::Interleaved, false, InSingle<ScrewInNut>},
      {"peg in bore", Kind::Interleaved, false, InSingle<PegInBore>},
      {"tube in tube", Kind::Interleaved, false, InSingle<TubeInTube>},
      {"tube through tube", Kind::Interleaved, false, InSingle<TubeThroughTube>},
      {"tube on tube", Kind::HardAlongAxis, false, InSingle<TubeOnTube>},
      {"plates face to face", Kind::HardAlongAxis, false, InSingle<Plates>},
      {"plates face to face, aslant", Kind::HardAslant, false, InSingle<PlatesAslant>},
      {"two flat grids", Kind::HardAlongAxis, false, InSingle<FlatGrids>},
      {"two flat grids, aslant", Kind::HardAslant, false, InSingle<FlatGridsAslant>},
      {"sliding walls", Kind::HardAlongAxis, false, InSingle<SlidingWalls>},
      {"sliding walls, aslant", Kind::HardAslant, false, InSingle<SlidingWallsAslant>},
      {"one stray vertex", Kind::HardAlongAxis, false, InSingle<StrayVertex>},
      {"one stray vertex, aslant", Kind::HardAslant, false, InSingle<StrayVertexAslant>},
      {"one huge triangle", Kind::HardAlongAxis, false, InSingle<HugeTriangle>},
      {"one huge triangle, aslant", Kind::HardAslant, false, InSingle<HugeTriangleAslant>},
      {"a thousand coincident faces", Kind::HardAlongAxis, false, InSingle<CoincidentFaces>},
      {"a thousand coincident faces, aslant", Kind::HardAslant, false,
       InSingle<CoincidentFacesAslant>},
  };
  return kFamilies;
}

const std::vector<PatchFamily>& AllPatchFamilies() {
  static const std::vector<PatchFamily> kFamilies = {
      {"patch of two fans", InSingle<TwoFans>, {30, 100, 300, 1000}},
      {"patch of two flat grids", InSingle<FlatGrids>, {1000, 10000, 100000}},
      {"patch of two flat grids, aslant", InSingle<FlatGridsAslant>, {1000, 10000, 100000}},
  };
  return kFamilies;
}

} // namespace sweep_families
