#include "SweepScenes.h"

#include "RandomNumbers.h"
#include "SweepShapes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>

namespace reference {

namespace {

using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Negated;
using gsl_arithmetic::Subtract;
using gsl_mesh::Mesh;
using sweep_shapes::AddQuad;
using sweep_shapes::AddTriangle;
using sweep_shapes::Append;
using sweep_shapes::Box;
using sweep_shapes::Moved;
using sweep_shapes::PlateWithHole;
using sweep_shapes::Stretched;

constexpr double infinity = std::numeric_limits<double>::infinity();

double& Component(Coord3& p, int k) {
  return k == 0 ? p.x : k == 1 ? p.y : p.z;
}

/// Returns the number rounded to single precision. It goes through memory, because gcc 12 leaves
/// out the rounding of neighbours that it processes together.
double Single(double c) {
  const volatile float single = static_cast<float>(c);
  return static_cast<double>(single);
}

/// A linear map, which keeps contacts.
struct LinearMap {
  Coord3 x{1.0, 0.0, 0.0}, y{0.0, 1.0, 0.0}, z{0.0, 0.0, 1.0}; ///< images of the axes

  Coord3 operator()(const Coord3& p) const {
    return Add(Add(Multiply(x, p.x), Multiply(y, p.y)), Multiply(z, p.z));
  }
};

/// Compilers evaluate the arguments of a call in different orders, so a call draws at most one of
/// its arguments. Lists in braces are evaluated from left to right.
class SceneMaker {
public:
  explicit SceneMaker(std::uint64_t seed) : m_random(seed) {}

  // The families. Each fills in the bodies and the direction.
  void LatticeSoup();
  void LatticeSolids();
  void CoplanarSlides();
  void EdgeTouches();
  void CornersOnEdges();
  void Fans();
  void NestedShells();
  void NonManifold();
  void TinyGaps();
  void TinyComponents();
  void SinglePrecision();
  void Scales();
  void Degenerate();
  void Coincident();
  void OneSided();
  void Limits();
  void StrayVertices();
  void HugeTriangles();
  void Resting();
  void Behind();
  void NearTies();
  void FlatGrids();
  void Interleaved();
  void Slivers();
  void NearlyEdgeOn();
  void Anywhere();
  void StretchedAxes();
  void HeightFields();
  void CountsOfLeaves();
  void EndsOfRange();
  void SignedZeros();
  void CrowdedStart();
  void LateStart();
  void CrowdedTies();
  void NotFinite();
  void Pegs();
  void Bowls();
  void Mated();
  void Seated();
  void Rails();
  void CornersInCorners();

  /// The changes that a scene of any family may undergo.
  void Disturb();

  Scene Finish(const std::string& name) {
    m_scene.name = name;
    m_scene.question.moving = m_moving.corners;
    m_scene.question.fixed = m_fixed.corners;
    m_scene.question.direction = m_direction;
    return m_scene;
  }

private:
  int Below(int count) { return m_random.Below(count); }
  int Between(int low, int high) { return low + Below(high - low + 1); }
  bool Chance(double probability) { return m_random.Chance(probability); }
  double In(double low, double high) { return m_random.In(low, high); }
  double Sign() { return Chance(0.5) ? 1.0 : -1.0; }

  Coord3 LatticePoint(int reach) {
    const double x = Between(-reach, reach);
    const double y = Between(-reach, reach);
    return {x, y, static_cast<double>(Between(-reach, reach))};
  }
  Coord3 AnyPoint(double reach) {
    const double x = In(-reach, reach);
    const double y = In(-reach, reach);
    return {x, y, In(-reach, reach)};
  }
  Coord3 AxisDirection() {
    Coord3 d{0.0, 0.0, 0.0};
    const int axis = Below(3);
    Component(d, axis) = Sign();
    return d;
  }
  Coord3 LatticeDirection() {
    if (Chance(0.3)) return AxisDirection();
    Coord3 d{0.0, 0.0, 0.0};
    while (d.x == 0.0 && d.y == 0.0 && d.z == 0.0)
      d = LatticePoint(3);
    return d;
  }
  Coord3 AnyDirection() {
    Coord3 d{0.0, 0.0, 0.0};
    while (gsl_arithmetic::Length(d) < 0.1)
      d = AnyPoint(1.0);
    return d;
  }

  Mesh& EitherBody() { return Chance(0.5) ? m_moving : m_fixed; }

  // Bodies on the lattice.
  Mesh LatticeBox(int reach);
  Mesh Octahedron(const Coord3& center, double size) const;
  Mesh Wedge(int reach);
  Mesh Solid(int reach);
  Mesh Comb(int teeth, double width, double pitch, double height) const;
  Mesh Tube(double radius, double low, double high) const;
  Mesh Grid(int columns, int rows, double step, double roughness, bool onLattice);
  Mesh SoupOf(int count, double reach, double size);

  // Changes of bodies.
  void StepBack(double steps) { m_moving = Moved(m_moving, Multiply(m_direction, -steps)); }
  void Shuffle(Mesh& mesh);
  void TurnCorners(Mesh& mesh);
  void Duplicate(Mesh& mesh, int copies);
  void SplitSome(Mesh& mesh);
  void Nudge(Mesh& mesh, int count);
  void AddNotFinite(Mesh& mesh);
  void FlipZeros(Mesh& mesh);
  void FlipZeros(Coord3& p);
  double NextTo(double c) { return std::nextafter(c, Sign() * infinity); }
  template <class Change>
  void ChangeCorners(const Change& change);
  void Apply(const LinearMap& map);
  LinearMap WholeMap();
  LinearMap Turn();
  void ScaleBodies(int exponent);
  void ScaleDirection(int exponent);
  void Renumber();
  void SomeBasicFamily();

  RandomNumbers m_random;
  Scene m_scene;
  Mesh m_moving, m_fixed;
  Coord3 m_direction{0.0, 0.0, -1.0};
  bool m_keepsNumbers = false;
};

template <class Change>
void SceneMaker::ChangeCorners(const Change& change) {
  for (Mesh* mesh : {&m_moving, &m_fixed})
    for (Coord3& p : mesh->corners)
      change(p);
}

void SceneMaker::Apply(const LinearMap& map) {
  ChangeCorners([&map](Coord3& p) { p = map(p); });
  m_direction = map(m_direction);
}

/// Returns a product of exchanges of axes, reversals and shears by whole numbers. It is exact on a
/// lattice, and planes across an axis become oblique.
LinearMap SceneMaker::WholeMap() {
  LinearMap map;
  Coord3* image[3] = {&map.x, &map.y, &map.z};
  for (int step = Between(1, 4); step > 0; --step) {
    const int from = Below(3);
    const int to = (from + Between(1, 2)) % 3;
    const double sign = Sign();
    *image[to] = Add(*image[to], Multiply(*image[from], sign * Between(1, 2)));
  }
  if (Chance(0.5)) std::swap(map.x, *image[Below(3)]);
  if (Chance(0.5)) map.y = Negated(map.y);
  return map;
}

/// Returns a rounded rotation about some axis.
LinearMap SceneMaker::Turn() {
  LinearMap map;
  Coord3* image[3] = {&map.x, &map.y, &map.z};
  for (int axis = 0; axis < 3; ++axis) {
    // This number belongs to half the angle, so that no library function rounds the cosine and the
    // sine.
    const double tangent = In(-2.0, 2.0);
    const double c = (1.0 - tangent * tangent) / (1.0 + tangent * tangent);
    const double s = 2.0 * tangent / (1.0 + tangent * tangent);
    const Coord3 u = *image[(axis + 1) % 3];
    const Coord3 v = *image[(axis + 2) % 3];
    *image[(axis + 1) % 3] = Add(Multiply(u, c), Multiply(v, s));
    *image[(axis + 2) % 3] = Subtract(Multiply(v, c), Multiply(u, s));
  }
  return map;
}

void SceneMaker::ScaleBodies(int exponent) {
  ChangeCorners([exponent](Coord3& p) {
    p = {std::ldexp(p.x, exponent), std::ldexp(p.y, exponent), std::ldexp(p.z, exponent)};
  });
}

void SceneMaker::ScaleDirection(int exponent) {
  m_direction = {std::ldexp(m_direction.x, exponent), std::ldexp(m_direction.y, exponent),
                 std::ldexp(m_direction.z, exponent)};
}

void SceneMaker::Shuffle(Mesh& mesh) {
  for (int k = static_cast<int>(mesh.TriangleCount()); k > 1; --k) {
    const auto a = static_cast<std::ptrdiff_t>(3 * (k - 1));
    const auto b = static_cast<std::ptrdiff_t>(3 * Below(k));
    std::swap_ranges(mesh.corners.begin() + std::min(a, b),
                     mesh.corners.begin() + std::min(a, b) + 3,
                     mesh.corners.begin() + std::max(a, b));
  }
}

void SceneMaker::TurnCorners(Mesh& mesh) {
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const auto first = mesh.corners.begin() + static_cast<std::ptrdiff_t>(3 * k);
    std::rotate(first, first + Below(3), first + 3);
    if (Chance(0.5)) std::swap(first[0], first[1]);
  }
}

void SceneMaker::Renumber() {
  for (Mesh* mesh : {&m_moving, &m_fixed}) {
    if (Chance(0.5)) Shuffle(*mesh);
    if (Chance(0.5)) TurnCorners(*mesh);
  }
}

void SceneMaker::Duplicate(Mesh& mesh, int copies) {
  for (; copies > 0 && !mesh.corners.empty(); --copies) {
    const auto k = static_cast<std::size_t>(Below(static_cast<int>(mesh.TriangleCount())));
    const Coord3 a = mesh.corners[3 * k];
    const Coord3 b = mesh.corners[3 * k + 1];
    const Coord3 c = mesh.corners[3 * k + 2];
    AddTriangle(mesh, a, b, c);
  }
}

/// Divides triangles at the middle of an edge that the neighbour does not divide.
void SceneMaker::SplitSome(Mesh& mesh) {
  const std::size_t count = mesh.TriangleCount();
  for (std::size_t k = 0; k < count; ++k) {
    if (Chance(0.5)) continue;
    const Coord3 a = mesh.corners[3 * k];
    const Coord3 b = mesh.corners[3 * k + 1];
    const Coord3 c = mesh.corners[3 * k + 2];
    const Coord3 middle = Multiply(Add(a, b), 0.5);
    mesh.corners[3 * k + 1] = middle;
    AddTriangle(mesh, middle, b, c);
  }
}

/// Moves components of corners by one unit in the last place.
void SceneMaker::Nudge(Mesh& mesh, int count) {
  for (; count > 0 && !mesh.corners.empty(); --count) {
    Coord3& p =
        mesh.corners[static_cast<std::size_t>(Below(static_cast<int>(mesh.corners.size())))];
    double& c = Component(p, Below(3));
    c = c == 0.0 ? Sign() * 0x1p-53 : NextTo(c);
  }
}

void SceneMaker::AddNotFinite(Mesh& mesh) {
  const double odd[3] = {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity};
  Coord3 p[3] = {AnyPoint(1.0), AnyPoint(1.0), AnyPoint(1.0)};
  Coord3& corner = p[Below(3)];
  const int axis = Below(3);
  Component(corner, axis) = odd[Below(3)];
  AddTriangle(mesh, p[0], p[1], p[2]);
}

void SceneMaker::FlipZeros(Coord3& p) {
  for (int k = 0; k < 3; ++k) {
    double& c = Component(p, k);
    if (c == 0.0 && Chance(0.5)) c = -c;
  }
}

void SceneMaker::FlipZeros(Mesh& mesh) {
  for (Coord3& p : mesh.corners)
    FlipZeros(p);
}

void SceneMaker::Disturb() {
  if (!m_keepsNumbers) Renumber();
  Mesh& either = EitherBody();
  if (Chance(0.1)) Nudge(either, Between(1, 6));
  if (Chance(0.1)) Duplicate(either, Between(1, 4));
  if (Chance(0.06)) m_scene.question.oneSided = true;
  if (Chance(0.04)) AddNotFinite(either);
  if (Chance(0.05)) {
    FlipZeros(m_moving);
    FlipZeros(m_fixed);
    FlipZeros(m_direction);
  }
  if (m_scene.limit == Limit::None && Chance(0.15))
    m_scene.limit = static_cast<Limit>(Between(1, 5));
}

// Bodies.

Mesh SceneMaker::LatticeBox(int reach) {
  const Coord3 low = LatticePoint(reach);
  const double x = Between(1, 3);
  const double y = Between(1, 3);
  return Box(low, Add(low, {x, y, static_cast<double>(Between(1, 3))}));
}

Mesh SceneMaker::Octahedron(const Coord3& center, double size) const {
  const Coord3 x{size, 0.0, 0.0};
  const Coord3 y{0.0, size, 0.0};
  const Coord3 z{0.0, 0.0, size};
  const Coord3 ring[4] = {Add(center, x), Add(center, y), Subtract(center, x), Subtract(center, y)};
  Mesh mesh;
  for (int k = 0; k < 4; ++k) {
    AddTriangle(mesh, ring[k], ring[(k + 1) % 4], Add(center, z));
    AddTriangle(mesh, ring[(k + 1) % 4], ring[k], Subtract(center, z));
  }
  return mesh;
}

/// Returns a box that an oblique plane divides.
Mesh SceneMaker::Wedge(int reach) {
  const Coord3 low = LatticePoint(reach);
  const double x = Between(1, 3);
  const double y = Between(1, 3);
  const double z = Between(1, 3);
  const Coord3 a = low;
  const Coord3 b = Add(low, {x, 0.0, 0.0});
  const Coord3 c = Add(low, {0.0, 0.0, z});
  const Coord3 across{0.0, y, 0.0};
  Mesh mesh;
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, Add(a, across), Add(c, across), Add(b, across));
  AddQuad(mesh, a, Add(a, across), Add(b, across), b);
  AddQuad(mesh, b, Add(b, across), Add(c, across), c);
  AddQuad(mesh, c, Add(c, across), Add(a, across), a);
  return mesh;
}

Mesh SceneMaker::Solid(int reach) {
  switch (Below(4)) {
  case 0: {
    const Coord3 center = LatticePoint(reach);
    return Octahedron(center, Between(1, 3));
  }
  case 1:
    return Wedge(reach);
  default:
    return LatticeBox(reach);
  }
}

/// Returns teeth on z = 0, side by side along x, and a back below.
Mesh SceneMaker::Comb(int teeth, double width, double pitch, double height) const {
  Mesh mesh = Box({0.0, 0.0, -1.0}, {teeth * pitch, 2.0, 0.0});
  for (int k = 0; k < teeth; ++k)
    Append(mesh, Box({k * pitch, 0.0, 0.0}, {k * pitch + width, 2.0, height}));
  return mesh;
}

/// Returns an eight-sided tube about z with corners on the lattice.
Mesh SceneMaker::Tube(double radius, double low, double high) const {
  constexpr double x[8] = {2, 1, -1, -2, -2, -1, 1, 2};
  constexpr double y[8] = {1, 2, 2, 1, -1, -2, -2, -1};
  Mesh mesh;
  const auto corner = [&](int k, double z) {
    return Coord3{radius * x[k % 8], radius * y[k % 8], z};
  };
  for (int k = 0; k < 8; ++k)
    AddQuad(mesh, corner(k, low), corner(k + 1, low), corner(k + 1, high), corner(k, high));
  return mesh;
}

/// Returns a plate across z of squares in halves, with heights up to `roughness`.
Mesh SceneMaker::Grid(int columns, int rows, double step, double roughness, bool onLattice) {
  std::vector<Coord3> points;
  for (int y = 0; y <= rows; ++y) {
    for (int x = 0; x <= columns; ++x) {
      const double height = In(-roughness, roughness);
      points.push_back({step * x, step * y, onLattice ? std::round(height) : height});
    }
  }
  Mesh mesh;
  const auto at = [&](int x, int y) {
    return points[static_cast<std::size_t>(y * (columns + 1) + x)];
  };
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x)
      AddQuad(mesh, at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1));
  }
  return mesh;
}

Mesh SceneMaker::SoupOf(int count, double reach, double size) {
  Mesh mesh;
  for (int k = 0; k < count; ++k) {
    const Coord3 center = AnyPoint(reach);
    const Coord3 p[3] = {AnyPoint(size), AnyPoint(size), AnyPoint(size)};
    AddTriangle(mesh, Add(center, p[0]), Add(center, p[1]), Add(center, p[2]));
  }
  return mesh;
}

// Families.

void SceneMaker::LatticeSoup() {
  const int reach = Between(1, 4);
  m_direction = LatticeDirection();
  for (Mesh* mesh : {&m_moving, &m_fixed}) {
    for (int k = Between(1, 14); k > 0; --k) {
      const Coord3 a = LatticePoint(reach);
      const Coord3 b = LatticePoint(reach);
      AddTriangle(*mesh, a, b, Chance(0.1) ? b : LatticePoint(reach));
    }
  }
  StepBack(Between(0, 4));
  if (Chance(0.3)) Apply(WholeMap());
}

void SceneMaker::LatticeSolids() {
  m_direction = LatticeDirection();
  for (int k = Between(1, 3); k > 0; --k)
    Append(m_moving, Solid(3));
  for (int k = Between(1, 3); k > 0; --k)
    Append(m_fixed, Solid(3));
  StepBack(Between(0, 5));
  if (Chance(0.5)) Apply(WholeMap());
}

/// Walls are in common planes along the direction, or one unit in the last place beside them.
void SceneMaker::CoplanarSlides() {
  const double wall = Between(1, 9);
  m_moving = Box({0.0, 0.0, 6.0}, {wall, In(0.0, 1.0) < 0.5 ? 2.0 : 1.0, 9.0});
  const double beside = Chance(0.4) ? NextTo(wall) : wall;
  m_fixed = Box({beside, -1.0, 0.0}, {wall + 3.0, 4.0, 3.0});
  if (Chance(0.5)) Append(m_fixed, Box({-5.0, 1.0, -9.0}, {wall, 2.0, -4.0}));
  if (Chance(0.3)) Append(m_fixed, Box({wall - 1.0, 2.0, -3.0}, {wall, 3.0, 3.0}));
  m_direction =
      Chance(0.5) ? Coord3{0.0, 0.0, -1.0} : Coord3{0.0, static_cast<double>(Between(-2, 2)), -2.0};
  if (beside == wall && Chance(0.6)) Apply(WholeMap());
}

/// Edges cross at points of the lattice. The third corner of each triangle is away from the
/// crossing.
void SceneMaker::EdgeTouches() {
  m_direction = {static_cast<double>(Between(-1, 1)), static_cast<double>(Between(-1, 1)), -2.0};
  const double travel = Between(0, 4);
  const double denominator = 4.0;
  for (int k = Between(1, 8); k > 0; --k) {
    const Coord3 meeting = LatticePoint(8);
    Coord3 e = LatticePoint(3);
    Coord3 f = LatticePoint(3);
    e.z = f.z = Between(-1, 1);
    const double part = Between(1, 3) / denominator;
    const double partMoving = Between(1, 3) / denominator;
    const Coord3 a = Subtract(meeting, Multiply(e, part));
    const Coord3 b = Add(meeting, Multiply(e, 1.0 - part));
    const Coord3 start = Subtract(meeting, Multiply(m_direction, travel));
    const Coord3 c = Subtract(start, Multiply(f, partMoving));
    const Coord3 d = Add(start, Multiply(f, 1.0 - partMoving));
    const double depth = Between(4, 9);
    const Coord3 below{meeting.x + Between(-2, 2), meeting.y + Between(-2, 2), meeting.z - depth};
    const Coord3 above{start.x + Between(-2, 2), start.y + Between(-2, 2), start.z + depth};
    AddTriangle(m_fixed, a, b, below);
    AddTriangle(m_moving, c, d, above);
  }
  if (Chance(0.3)) Nudge(m_moving, 1);
  if (Chance(0.4)) Apply(WholeMap());
}

/// Corners meet edges, faces and corners of oblique triangles, or pass beside them. Each pair is in
/// its own cell.
void SceneMaker::CornersOnEdges() {
  m_direction = LatticeDirection();
  const double travel = Chance(0.1) ? 0.0 : Between(1, 6);
  for (int k = Between(1, 8); k > 0; --k) {
    const Coord3 cell{64.0 * k, 0.0, 0.0};
    const Coord3 corner[3] = {Add(cell, LatticePoint(8)), Add(cell, LatticePoint(8)),
                              Add(cell, LatticePoint(8))};
    const double weights[5] = {0.0, 0.25, 0.5, 0.75, 1.0};
    const double toB = weights[Below(5)];
    const double toC = Chance(0.5) ? 0.0 : weights[Below(5)] * (1.0 - toB);
    const Coord3 p = Add(Add(Multiply(corner[0], 1.0 - toB - toC), Multiply(corner[1], toB)),
                         Multiply(corner[2], toC));
    // One triangle is away from the plane of the other, except for the corner of the contact.
    const double sense = Chance(0.5) ? 1.0 : -1.0;
    const Coord3 away = Multiply(m_direction, -sense * Between(2, 4));
    const Coord3 e[2] = {Add(p, Add(away, LatticePoint(1))), Add(p, Add(away, LatticePoint(2)))};
    const Coord3 back = Multiply(m_direction, -(travel + (Chance(0.2) ? 1.0 : 0.0)));
    Mesh& spike = sense > 0.0 ? m_moving : m_fixed;
    Mesh& base = sense > 0.0 ? m_fixed : m_moving;
    const Coord3 ofSpike = sense > 0.0 ? back : Coord3{0.0, 0.0, 0.0};
    const Coord3 ofBase = sense > 0.0 ? Coord3{0.0, 0.0, 0.0} : back;
    AddTriangle(spike, Add(p, ofSpike), Add(e[0], ofSpike), Add(e[1], ofSpike));
    AddTriangle(base, Add(corner[0], ofBase), Add(corner[1], ofBase), Add(corner[2], ofBase));
  }
  Mesh& either = EitherBody();
  if (Chance(0.3)) Nudge(either, Between(1, 3));
  if (Chance(0.3)) Apply(WholeMap());
}

/// The tips of fans of triangles meet.
void SceneMaker::Fans() {
  m_direction = {static_cast<double>(Between(-1, 1)), 0.0, -1.0};
  const auto fan = [this](const Coord3& tip, double height) {
    Mesh mesh;
    const int count = Between(2, 12);
    for (int k = 0; k < count; ++k) {
      const Coord3 a{tip.x + Between(-3, 3), tip.y + Between(-3, 3), tip.z + height};
      const Coord3 b{tip.x + Between(-3, 3), tip.y + Between(-3, 3), tip.z + height};
      AddTriangle(mesh, tip, a, b);
    }
    return mesh;
  };
  for (int k = Between(1, 3); k > 0; --k) {
    const Coord3 tip = LatticePoint(4);
    const double depth = Between(1, 4);
    const double height = Between(1, 4);
    Append(m_fixed, fan(tip, -depth));
    Append(m_moving, fan(Chance(0.8) ? tip : LatticePoint(4), height));
  }
  StepBack(Between(0, 3));
  if (Chance(0.4)) Apply(WholeMap());
}

void SceneMaker::NestedShells() {
  m_direction = Chance(0.7) ? LatticeDirection() : AnyDirection();
  const int layers = Between(1, 4);
  for (int k = 1; k <= layers; ++k) {
    const double r = 4.0 * k;
    Append(k % 2 == 1 ? m_moving : m_fixed,
           Chance(0.5) ? Box({-r, -r, -r}, {r, r, r}) : Octahedron({0.0, 0.0, 0.0}, 2.0 * r));
  }
  Append(m_fixed, Box({-20.0, -20.0, -20.0}, {20.0, 20.0, 20.0}));
  if (Chance(0.5)) m_moving = Moved(m_moving, Multiply(LatticePoint(2), 0.5));
  if (Chance(0.3)) Apply(WholeMap());
}

/// Several triangles share one edge, corners are on the insides of edges, and sheets have no
/// thickness.
void SceneMaker::NonManifold() {
  m_direction = LatticeDirection();
  const auto book = [this] {
    const Coord3 a = LatticePoint(4);
    const Coord3 b = LatticePoint(4);
    Mesh mesh;
    for (int k = Between(2, 7); k > 0; --k)
      AddTriangle(mesh, a, b, LatticePoint(4));
    return mesh;
  };
  for (int k = Between(1, 3); k > 0; --k) {
    Append(m_moving, book());
    Append(m_fixed, book());
  }
  Append(m_fixed, LatticeBox(3));
  SplitSome(m_moving);
  SplitSome(m_fixed);
  StepBack(Between(1, 6));
  if (Chance(0.3)) Apply(WholeMap());
}

/// The bodies are far from the origin, and a few units in the last place apart.
void SceneMaker::TinyGaps() {
  const int exponent = Between(10, 48);
  const double far = std::ldexp(1.0, exponent);
  const double ulp = std::nextafter(far, infinity) - far;
  const int axis = Below(3);
  Coord3 offset{0.0, 0.0, 0.0};
  Component(offset, axis) = far;
  if (Chance(0.5)) offset = {far, far, far};
  m_fixed = Moved(Solid(2), offset);
  m_moving = Moved(Chance(0.5) ? LatticeBox(2) : Octahedron({0.0, 0.0, 0.0}, 2.0), offset);
  double top = -infinity;
  double bottom = infinity;
  for (Coord3& p : m_fixed.corners)
    top = std::max(top, Component(p, axis));
  for (Coord3& p : m_moving.corners)
    bottom = std::min(bottom, Component(p, axis));
  const double gap = Between(0, 3) * ulp;
  for (Coord3& p : m_moving.corners)
    Component(p, axis) += (top - bottom) + gap;
  m_direction = Chance(0.5) ? LatticeDirection() : AnyDirection();
  double& along = Component(m_direction, axis);
  if (Chance(0.8)) along = along == 0.0 ? -1.0 : -std::fabs(along);
}

/// Directions are nearly in a plane or nearly along a line.
void SceneMaker::TinyComponents() {
  SomeBasicFamily();
  if (Chance(0.7)) m_direction = AxisDirection();
  const double tiny[] = {
      1e-300,  0x1p-289, 0x1p-288,   0x1p-287,   0x1p-340,          1e-160,   1e-30,
      0x1p-60, 0x1p-53,  0x1p-52,    5e-324,     0x1p-1022,         0x1p-339, 1e-100,
      1e-12,   0x1p-26,  0x1.8p-338, 0x1.8p-337, 0x1.000000001p-289};
  for (int k = 0; k < 3; ++k) {
    double& c = Component(m_direction, k);
    if (c != 0.0 || Chance(0.2)) continue;
    const double sign = Sign();
    c = sign * tiny[Below(static_cast<int>(std::size(tiny)))];
  }
  if (Chance(0.2)) ScaleDirection(Between(-1000, 1000));
  if (Chance(0.2)) ScaleBodies(Between(-1000, 900));
}

/// The bodies are like meshes from files: rotated, and rounded to single precision.
void SceneMaker::SinglePrecision() {
  SomeBasicFamily();
  Apply(Turn());
  ChangeCorners([](Coord3& p) { p = {Single(p.x), Single(p.y), Single(p.z)}; });
  if (Chance(0.3)) {
    // Some bodies have a coordinate that is not in single precision, is beyond its range or is too
    // small.
    const double odd[] = {0.1, 1e-46, 1e39, 0x1p-149, 0x1.fffffep127};
    Mesh& mesh = EitherBody();
    const Coord3 p[3] = {
        {odd[Below(5)], 1.0, 2.0}, {1.0, odd[Below(5)], 2.0}, {1.0, 2.0, odd[Below(5)]}};
    AddTriangle(mesh, p[0], p[1], p[2]);
  }
}

void SceneMaker::Scales() {
  SomeBasicFamily();
  const int limit = Chance(0.7) ? 500 : 960;
  ScaleBodies(Between(-limit, limit));
  if (Chance(0.7)) ScaleDirection(Between(-1000, 1000));
}

/// The bodies are points, segments, slivers, and segments along the direction.
void SceneMaker::Degenerate() {
  m_direction = LatticeDirection();
  const auto fill = [this](Mesh& mesh) {
    for (int k = Between(1, 8); k > 0; --k) {
      const Coord3 a = LatticePoint(3);
      const Coord3 e = Chance(0.4) ? Multiply(m_direction, Between(-2, 2)) : LatticePoint(2);
      const Coord3 b = Add(a, e);
      Coord3 c = Chance(0.3) ? a : Add(a, Multiply(e, Between(-4, 8) / 4.0));
      if (Chance(0.3)) c = LatticePoint(3);
      AddTriangle(mesh, a, b, c);
    }
  };
  fill(m_moving);
  fill(m_fixed);
  if (Chance(0.3)) Nudge(m_fixed, Between(1, 6));
  StepBack(Between(0, 4));
  if (Chance(0.3)) Apply(WholeMap());
}

/// The bodies repeat the same triangles many times.
void SceneMaker::Coincident() {
  SomeBasicFamily();
  const int copies = Chance(0.2) ? Between(60, 150) : Between(5, 40);
  const auto keep = [this](Mesh& mesh) {
    const auto count = static_cast<std::size_t>(Between(1, 6));
    mesh.corners.resize(std::min(mesh.corners.size(), 3 * count));
  };
  if (Chance(0.5)) keep(m_fixed);
  if (Chance(0.5)) keep(m_moving);
  Duplicate(m_fixed, copies);
  if (Chance(0.5)) Duplicate(m_moving, Between(1, 40));
}

void SceneMaker::OneSided() {
  SomeBasicFamily();
  m_scene.question.oneSided = true;
}

void SceneMaker::Limits() {
  SomeBasicFamily();
  m_scene.limit = static_cast<Limit>(Between(1, 5));
}

/// A few corners are far away from all others.
void SceneMaker::StrayVertices() {
  SomeBasicFamily();
  for (int k = Between(1, 3); k > 0; --k) {
    Mesh& mesh = EitherBody();
    const double sign = Sign();
    const int exponents[4] = {100, Between(20, 280), Between(280, 300), Between(300, 345)};
    const double far = std::ldexp(sign, exponents[Below(4)]);
    auto& p = mesh.corners[static_cast<std::size_t>(Below(static_cast<int>(mesh.corners.size())))];
    if (Chance(0.4)) {
      Component(p, Below(3)) = far;
    } else {
      Coord3 a = LatticePoint(3);
      Component(a, Below(3)) = far;
      AddTriangle(mesh, a, a, a);
    }
  }
}

/// Triangles are far larger than the triangles that they touch.
void SceneMaker::HugeTriangles() {
  SomeBasicFamily();
  const double size = std::ldexp(1.0, Between(10, 40));
  for (int k = Between(1, 2); k > 0; --k) {
    Mesh& mesh = EitherBody();
    const Coord3 p = LatticePoint(6);
    const auto far = [&] { return Add(p, Multiply(LatticePoint(3), size)); };
    const Coord3 corner[3] = {Chance(0.3) ? p : far(), far(), far()};
    AddTriangle(mesh, corner[0], corner[1], corner[2]);
  }
}

/// The bodies touch before the motion, and then slide, separate or penetrate.
void SceneMaker::Resting() {
  const double top = Between(0, 3);
  m_fixed = Chance(0.5) ? Box({-4.0, -4.0, top - 1.0}, {4.0, 4.0, top})
                        : PlateWithHole(4.0, 1.0, top - 2.0, top);
  m_moving = Chance(0.5) ? Box({-1.0, -1.0, top}, {1.0, 1.0, top + 2.0})
                         : Octahedron({0.0, 0.0, top + 2.0}, 2.0);
  if (Chance(0.3)) m_moving = Moved(m_moving, {static_cast<double>(Between(-5, 5)), 0.0, 0.0});
  if (Chance(0.3)) Append(m_fixed, Box({5.0, -2.0, -2.0}, {6.0, 2.0, 9.0}));
  m_direction = Chance(0.8) ? LatticeDirection() : AnyDirection();
  if (Chance(0.2)) {
    for (Coord3& p : m_moving.corners)
      p.z = p.z == top ? NextTo(p.z) : p.z;
  }
  if (Chance(0.4)) Apply(WholeMap());
}

/// The moving body is beyond the fixed body, or just leaves it.
void SceneMaker::Behind() {
  LatticeSolids();
  StepBack(-Between(0, 9));
  if (Chance(0.3)) Append(m_fixed, Moved(LatticeBox(3), Multiply(m_direction, 12.0)));
}

/// Spikes are over slopes. Their travels are n / 3, n / 5, n / 7, or the doubles next to them.
void SceneMaker::NearTies() {
  const double slopes[3] = {3.0, 5.0, 7.0};
  const int count = Between(2, 6);
  for (int k = 0; k < count; ++k) {
    const double n = slopes[Below(3)];
    const double at = 24.0 * k;
    AddTriangle(m_fixed, {at - 2.0 * n, -9.0, -2.0}, {at + 2.0 * n, -9.0, 2.0}, {at, 9.0, 0.0});
    // The slope has the height x / n at x, so the tip travels 1 - x / n.
    const double x = Between(1, 2);
    double height = Chance(0.5) ? 1.0 : 1.0 + 1.0 / n;
    double over = Chance(0.5) ? x : 0.0;
    if (over == 0.0) height = 1.0 - x / n;
    if (Chance(0.3)) height = NextTo(height);
    AddTriangle(m_moving, {at + over, 0.0, height}, {at + over + 0.25, 0.0, height + 9.0},
                {at + over, 0.25, height + 9.0});
  }
  m_direction =
      Chance(0.8) ? Coord3{0.0, 0.0, -1.0} : Coord3{0.0, static_cast<double>(Between(-2, 2)), -3.0};
  if (Chance(0.3)) Apply(WholeMap());
}

/// Plates meet face to face.
void SceneMaker::FlatGrids() {
  const int size = Chance(0.2) ? Between(8, 12) : Between(1, 6);
  const double step = Chance(0.5) ? 1.0 : 2.0;
  m_fixed = Grid(size, Between(1, size), 2.0, 0.0, true);
  const Coord3 offset{static_cast<double>(Between(-2, 2)), static_cast<double>(Between(-2, 2)),
                      3.0};
  m_moving = Moved(Grid(Between(1, size), size, step, 0.0, true), offset);
  if (Chance(0.3)) SplitSome(m_moving);
  m_direction = Chance(0.6) ? Coord3{0.0, 0.0, -1.0}
                            : Coord3{static_cast<double>(Between(-2, 2)),
                                     static_cast<double>(Between(-2, 2)), -3.0};
  // Along the plates the bodies slide, on a common plane or on two planes.
  if (Chance(0.2))
    m_direction = {static_cast<double>(Between(1, 2)), static_cast<double>(Between(-1, 1)), 0.0};
  if (Chance(0.2)) StepBack(1.0);
  if (Chance(0.2)) {
    for (Coord3& p : m_moving.corners)
      p.z = 0.0;
    StepBack(20.0);
  }
  if (Chance(0.3)) Nudge(m_moving, Between(1, 5));
  if (Chance(0.4)) Apply(WholeMap());
  if (Chance(0.1)) Apply(Turn());
}

/// The extents of the bodies overlap along the direction: combs are in combs, and tubes in tubes.
void SceneMaker::Interleaved() {
  if (Chance(0.5)) {
    const int teeth = Between(2, Chance(0.2) ? 16 : 6);
    const double width = Chance(0.5) ? 1.0 : 1.5;
    m_fixed = Comb(teeth, width, 3.0, 6.0);
    Mesh upper = Comb(teeth, Chance(0.5) ? 1.0 : 1.5, 3.0, 6.0);
    for (Coord3& p : upper.corners)
      p = {p.x + width, p.y, 10.0 - p.z};
    if (Chance(0.5)) upper = Moved(upper, {In(0.0, 0.5), 0.0, 0.0});
    m_moving = upper;
    m_direction = Chance(0.5) ? AxisDirection() : LatticeDirection();
  } else {
    const double inner = Between(1, 3);
    m_fixed = Tube(Chance(0.3) ? inner : inner + 1.0, 0.0, 8.0);
    const double low = Between(-2, 4);
    m_moving = Tube(inner, low, Between(5, 12));
    if (Chance(0.3)) Append(m_fixed, Tube(inner * 0.5, -3.0, 3.0));
    m_direction = Chance(0.5) ? Coord3{0.0, 0.0, Sign()} : LatticeDirection();
  }
  if (Chance(0.3)) Apply(WholeMap());
  if (Chance(0.2)) Apply(Turn());
}

/// Long thin triangles are oblique.
void SceneMaker::Slivers() {
  const auto strips = [this](double z, double sense) {
    Mesh mesh;
    const int count = Between(2, 40);
    for (int k = 0; k < count; ++k) {
      const double at = 0.25 * k;
      const double end = at + 32.0;
      AddTriangle(mesh, {at, sense * at, z},
                  {end, sense * (at - 32.0), z + (Chance(0.3) ? 1.0 : 0.0)},
                  {at + 0.125, sense * (at + 0.125), z});
    }
    return mesh;
  };
  m_moving = strips(5.0, Sign());
  m_fixed = strips(2.0, Sign());
  m_direction = Chance(0.5) ? Coord3{0.0, 0.0, -1.0} : LatticeDirection();
  if (Chance(0.5)) Nudge(m_moving, Between(1, 9));
  if (Chance(0.3)) Apply(Turn());
}

/// Triangles nearly contain the direction.
void SceneMaker::NearlyEdgeOn() {
  m_direction = AnyDirection();
  const auto wall = [this](const Coord3& p) {
    const Coord3 e = AnyPoint(2.0);
    const auto at = [&](double along, double across) {
      return Add(p, Add(Multiply(m_direction, along), Multiply(e, across)));
    };
    const double part[3] = {In(1.0, 4.0), In(0.0, 0.5), In(-1.0, 1.0)};
    Mesh mesh;
    AddTriangle(mesh, at(0.0, 0.0), at(part[0], part[1]), at(part[2], 1.0));
    return mesh;
  };
  for (int k = Between(1, 6); k > 0; --k) {
    const Coord3 p = AnyPoint(1.0);
    Append(m_fixed, wall(p));
    Append(m_moving, wall(Chance(0.5) ? p : AnyPoint(1.0)));
  }
  Nudge(m_moving, Between(0, 9));
  if (Chance(0.3)) Append(m_fixed, SoupOf(Between(1, 20), 2.0, 0.5));
  StepBack(Between(0, 6));
}

void SceneMaker::Anywhere() {
  m_direction = Chance(0.3) ? AxisDirection() : AnyDirection();
  const int most = Chance(0.15) ? 250 : 30;
  const double size = In(0.05, 1.0);
  m_moving = SoupOf(Between(1, most), 1.0, size);
  m_fixed = SoupOf(Between(1, most), 1.0, size);
  m_moving = Moved(m_moving, Multiply(m_direction, -In(-3.0, 6.0)));
  if (Chance(0.3)) {
    const Coord3 offset = AnyPoint(std::ldexp(1.0, Between(1, 40)));
    m_moving = Moved(m_moving, offset);
    m_fixed = Moved(m_fixed, offset);
  }
}

/// The axes have different units.
void SceneMaker::StretchedAxes() {
  SomeBasicFamily();
  const auto factor = [this] {
    const double mantissa = Chance(0.5) ? 1.0 : In(1.0, 2.0);
    return std::ldexp(mantissa, Between(-40, 40));
  };
  LinearMap map;
  map.x = {factor(), 0.0, 0.0};
  map.y = {0.0, factor(), 0.0};
  map.z = {0.0, 0.0, factor()};
  Apply(map);
}

/// Rough surfaces have many triangles.
void SceneMaker::HeightFields() {
  const int size = Chance(0.3) ? Between(10, 15) : Between(3, 8);
  const bool onLattice = Chance(0.5);
  const double roughness = In(0.1, 3.0);
  m_fixed = Grid(size, size, 1.0, roughness, onLattice);
  const Coord3 offset{static_cast<double>(Between(-size, size)),
                      static_cast<double>(Between(-size, size)), 7.0};
  m_moving = Moved(Grid(size, size, 1.0, roughness, onLattice), offset);
  m_direction = Chance(0.4) ? Coord3{0.0, 0.0, -1.0} : Coord3{In(-1.0, 1.0), In(-1.0, 1.0), -1.0};
  if (onLattice && Chance(0.5)) m_direction = LatticeDirection();
  StepBack(Between(0, 2));
  if (Chance(0.3)) Apply(Turn());
}

/// The numbers of triangles are at the limits of the nodes of trees, and beside these limits.
void SceneMaker::CountsOfLeaves() {
  const int counts[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128, 129};
  const auto fill = [&](Mesh& mesh) {
    const bool onLattice = Chance(0.5);
    for (int k = counts[Below(static_cast<int>(std::size(counts)))]; k > 0; --k) {
      const Coord3 p = onLattice ? LatticePoint(8) : AnyPoint(8.0);
      const Coord3 e[2] = {LatticePoint(1), LatticePoint(1)};
      AddTriangle(mesh, p, Add(p, e[0]), Add(p, e[1]));
    }
  };
  fill(m_moving);
  fill(m_fixed);
  m_direction = Chance(0.7) ? LatticeDirection() : AnyDirection();
  StepBack(Between(0, 20));
}

/// The coordinates are the largest and the least doubles.
void SceneMaker::EndsOfRange() {
  SomeBasicFamily();
  if (Chance(0.3)) {
    // The bodies are on both sides of the origin, so that the travel is longer than any coordinate.
    m_direction = LatticeDirection();
    m_moving = Octahedron(Multiply(m_direction, -8.0), Between(1, 3));
    m_fixed = Octahedron(Multiply(m_direction, 8.0), Between(1, 3));
  }
  double largest = 0.0;
  ChangeCorners([&largest](const Coord3& p) {
    for (const double c : {p.x, p.y, p.z})
      largest = std::max(largest, std::fabs(c));
  });
  int exponent = 0;
  std::frexp(largest, &exponent);
  if (Chance(0.5)) {
    ScaleBodies(1024 - exponent);
  } else {
    ScaleBodies(Between(-1074, -1040));
  }
  if (Chance(0.5)) {
    std::frexp(
        std::max({std::fabs(m_direction.x), std::fabs(m_direction.y), std::fabs(m_direction.z)}),
        &exponent);
    ScaleDirection(Chance(0.5) ? 1024 - exponent : -1060);
  }
  if (m_direction.x == 0.0 && m_direction.y == 0.0 && m_direction.z == 0.0) m_direction.x = 5e-324;
}

void SceneMaker::SignedZeros() {
  LatticeSolids();
  FlipZeros(m_moving);
  FlipZeros(m_fixed);
  FlipZeros(m_direction);
}

/// Bodies overlap, and the first pair by number may be anywhere.
void SceneMaker::CrowdedStart() {
  m_direction = Chance(0.5) ? LatticeDirection() : AnyDirection();
  const int count = Between(5, Chance(0.2) ? 200 : 40);
  m_moving = SoupOf(count, 1.0, Chance(0.5) ? 0.1 : 0.6);
  m_fixed = SoupOf(count, 1.0, 0.2);
  if (Chance(0.5)) Append(m_moving, Moved(SoupOf(count / 2, 1.0, 0.3), {20.0, 0.0, 0.0}));
  Shuffle(m_moving);
  Shuffle(m_fixed);
}

/// The bodies touch at the start. Some touching triangles are found at once, and some after many
/// that nearly touch. Threads that share the work must not mix up the numbers.
void SceneMaker::LateStart() {
  m_keepsNumbers = true;
  m_direction = LatticeDirection();
  // Many needles cross the plane z = 0 inside the unit square.
  const int crowd = Between(60, 200);
  for (int k = 0; k < crowd; ++k) {
    const Coord3 p{In(0.0, 1.0), In(0.0, 1.0), -1.0};
    AddTriangle(m_fixed, p, {p.x, p.y, 1.0}, {p.x + 0x1p-20, p.y, 1.0});
  }
  AddTriangle(m_fixed, {9.0, 9.0, 0.0}, {9.5, 9.0, 0.0}, {9.0, 9.5, 0.0});
  // The triangle is level. Its extents are around the needles, and its longest edge is beside them.
  const auto addBeside = [this] {
    const double reach = Between(3, 9);
    AddTriangle(m_moving, {-reach, -reach, 0.0}, {reach - 1.0, -reach, 0.0},
                {-reach, reach - 1.0, 0.0});
  };
  const auto addAtOnce = [this] {
    AddTriangle(m_moving, {9.125, 9.125, 0.0}, {9.25, 9.125, 3.0}, {9.125, 9.25, 3.0});
  };
  // The triangle passes through all needles, so that the first needle is known last.
  const auto addThrough = [this] {
    AddTriangle(m_moving, {-4.0, -4.0, 0.0}, {9.0, -4.0, 0.0}, {-4.0, 9.0, 0.0});
  };
  const int block = 16 << Below(3);
  const int count = block * Between(1, 3) + 1;
  const bool isLate = Chance(0.5);
  const int start = block * Below(2);
  const int first = start - (isLate ? Below(2) : 0);
  for (int k = 0; k < count; ++k) {
    const bool misses = isLate ? k < first || (k > first && Chance(0.9)) : k % block != 0;
    if (misses) {
      addBeside();
    } else if (isLate && (k <= first || Chance(0.5))) {
      addAtOnce();
    } else {
      addThrough();
    }
  }
}

/// Many places are reached at the same travel, or nearly at the same travel.
void SceneMaker::CrowdedTies() {
  const int count = Between(2, Chance(0.2) ? 25 : 8);
  for (int k = 0; k < count; ++k) {
    const double x = 4.0 * Between(0, count);
    const double y = 4.0 * Between(0, 3);
    const double gap = Chance(0.8) ? 0.0 : Chance(0.5) ? 0x1p-40 : 1.0;
    Append(m_moving, Chance(0.5) ? Box({x, y, 5.0 + gap}, {x + 2.0, y + 1.0, 6.0 + gap})
                                 : Octahedron({x + 1.0, y + 1.0, 6.0 + gap}, 1.0));
    if (Chance(0.6)) Append(m_fixed, Box({x, y, -1.0}, {x + 1.0, y + 2.0, 1.0}));
  }
  Append(m_fixed, Box({-8.0, -8.0, -1.0}, {4.0 * count + 8.0, 24.0, Chance(0.5) ? 1.0 : 0.0}));
  m_direction = Chance(0.5) ? Coord3{0.0, 0.0, -1.0}
                            : Coord3{static_cast<double>(Between(-1, 1)),
                                     static_cast<double>(Between(-1, 1)), -2.0};
  if (Chance(0.5)) Apply(WholeMap());
  Shuffle(m_moving);
  Shuffle(m_fixed);
}

void SceneMaker::NotFinite() {
  SomeBasicFamily();
  for (int k = Between(1, 4); k > 0; --k)
    AddNotFinite(EitherBody());
  if (Chance(0.1)) m_fixed.corners.clear();
  if (Chance(0.1)) {
    m_moving.corners.clear();
    AddNotFinite(m_moving);
  }
}

/// Pegs fit their holes exactly, or with a difference of one unit in the last place.
void SceneMaker::Pegs() {
  const double hole = Between(1, 3);
  m_fixed = PlateWithHole(6.0, hole, 0.0, 2.0);
  Append(m_fixed, Box({-6.0, -6.0, -3.0}, {6.0, 6.0, -2.0}));
  double half = hole;
  if (Chance(0.6)) half = std::nextafter(half, Chance(0.5) ? 0.0 : infinity);
  m_moving = Box({-half, -half, Chance(0.2) ? 1.0 : 5.0}, {half, half, 9.0});
  m_direction = {0.0, 0.0, -1.0};
  if (Chance(0.2)) m_direction.x = Sign() * std::ldexp(1.0, Between(-80, -1));
  if (half == hole && Chance(0.7)) Apply(WholeMap());
  if (Chance(0.1)) Apply(Turn());
}

/// Curved surfaces are close to each other and meet at one place.
void SceneMaker::Bowls() {
  const int size = Between(4, 12);
  const double curve = In(0.01, 0.5);
  const double other = Chance(0.5) ? curve : In(0.01, 0.5);
  m_fixed = Grid(size, size, 1.0, 0.0, true);
  const Coord3 offset{In(-0.5, 0.5), In(-0.5, 0.5), 8.0};
  m_moving = Moved(Grid(size, size, 1.0, 0.0, true), offset);
  const double middle = size / 2.0;
  const auto bend = [middle](Mesh& mesh, double by) {
    for (Coord3& p : mesh.corners)
      p.z += by * ((p.x - middle) * (p.x - middle) + (p.y - middle) * (p.y - middle));
  };
  bend(m_fixed, Sign() * curve);
  bend(m_moving, other);
  m_direction = {In(-0.2, 0.2), In(-0.2, 0.2), -1.0};
  if (Chance(0.5)) Apply(Turn());
}

/// Bodies share a plane at the start, on which they rest, and may have a body ahead.
void SceneMaker::Mated() {
  const auto below = [this] {
    const double x = Between(-3, 2);
    const double y = Between(-3, 2);
    const double depth = Between(1, 3);
    if (Chance(0.3)) return Octahedron({x, y, -depth}, depth);
    return Box({x, y, -depth}, {x + Between(1, 3), y + 2.0, 0.0});
  };
  for (int k = Between(1, 3); k > 0; --k)
    Append(m_fixed, below());
  for (int k = Between(1, 2); k > 0; --k)
    Append(m_moving, Stretched(below(), {1.0, 1.0, -1.0}));
  if (Chance(0.4)) {
    const double height = Between(6, 9);
    Append(m_fixed, Moved(Solid(2), {0.0, 0.0, height}));
  }
  const double x = Between(-2, 2);
  const double y = Between(-2, 2);
  m_direction = {x, y, static_cast<double>(Between(-1, 2))};
  if (x == 0.0 && y == 0.0 && m_direction.z == 0.0) m_direction.z = 1.0;
  if (Chance(0.1)) m_direction.z = Sign() * 0x1p-60;
  if (Chance(0.1)) Nudge(m_moving, Between(1, 4));
  if (Chance(0.5)) Apply(WholeMap());
}

/// Pegs are in holes of their size, or of a size that differs by one unit in the last place, on the
/// floor or above it.
void SceneMaker::Seated() {
  const double hole = Between(1, 3);
  m_fixed = PlateWithHole(6.0, hole, 0.0, 4.0);
  if (Chance(0.6)) Append(m_fixed, Box({-6.0, -6.0, -1.0}, {6.0, 6.0, 0.0}));
  if (Chance(0.2)) Append(m_fixed, Box({-6.0, -6.0, 9.0}, {6.0, 6.0, 10.0}));
  double half = hole;
  if (Chance(0.3)) half = std::nextafter(half, Chance(0.5) ? 0.0 : infinity);
  const double bottom = Between(0, 4);
  m_moving = Box({-half, -half, bottom}, {half, half, bottom + Between(1, 4)});
  // A head rests on the plate.
  if (Chance(0.4)) Append(m_moving, Box({-5.0, -5.0, 4.0}, {5.0, 5.0, 5.0}));
  m_direction = Chance(0.5) ? Coord3{0.0, 0.0, Sign()} : LatticeDirection();
  if (Chance(0.1)) {
    const double sign = Sign();
    m_direction.x = sign * std::ldexp(1.0, Between(-80, -1));
  }
  if (half == hole && Chance(0.5)) Apply(WholeMap());
  if (Chance(0.1)) Apply(Turn());
}

/// Combs in each other slide along their teeth.
void SceneMaker::Rails() {
  const int teeth = Between(1, 3);
  const double height = Between(1, 2);
  const double gap = Chance(0.7) ? 0.0 : Chance(0.5) ? 0x1p-50 : 0.5;
  m_fixed = Comb(teeth + 1, 2.0, 4.0, height);
  m_moving = Comb(teeth, 2.0 - 2.0 * gap, 4.0, height);
  for (Coord3& p : m_moving.corners)
    p = {p.x + 2.0 + gap, p.y, height - p.z};
  m_moving = Moved(m_moving, {0.0, static_cast<double>(Between(-3, 3)),
                              Chance(0.3) ? static_cast<double>(Between(0, 2)) : 0.0});
  m_direction = Chance(0.4) ? Coord3{0.0, Sign(), 0.0} : LatticeDirection();
  if (Chance(0.2)) Append(m_fixed, Box({0.0, 6.0, 0.0}, {9.0, 7.0, 1.0}));
  if (Chance(0.5)) Apply(WholeMap());
}

/// Corners and edges are in corners, edges and faces at the start.
void SceneMaker::CornersInCorners() {
  for (int k = Between(1, 5); k > 0; --k) {
    const Coord3 at{16.0 * k, 0.0, 0.0};
    const Coord3 corner[3] = {Add(at, LatticePoint(3)), Add(at, LatticePoint(3)),
                              Add(at, LatticePoint(3))};
    AddTriangle(m_fixed, corner[0], corner[1], corner[2]);
    const double toB = Between(0, 2) / 2.0;
    const double toC = Chance(0.5) ? 0.0 : Between(0, 2) / 2.0 * (1.0 - toB);
    const Coord3 p = Add(Add(Multiply(corner[0], 1.0 - toB - toC), Multiply(corner[1], toB)),
                         Multiply(corner[2], toC));
    const Coord3 along = LatticePoint(3);
    // The corner or the middle of an edge is in that place.
    const Coord3 from = Chance(0.5) ? p : Subtract(p, along);
    AddTriangle(m_moving, from, Add(p, along), Add(p, LatticePoint(3)));
  }
  m_direction = LatticeDirection();
  if (Chance(0.2)) Nudge(m_moving, Between(1, 3));
  if (Chance(0.3)) Apply(WholeMap());
}

/// Makes a scene of a family, which the callers change.
void SceneMaker::SomeBasicFamily() {
  using Make = void (SceneMaker::*)();
  const Make basic[] = {
      &SceneMaker::LatticeSoup,  &SceneMaker::LatticeSolids,  &SceneMaker::LatticeSolids,
      &SceneMaker::EdgeTouches,  &SceneMaker::CoplanarSlides, &SceneMaker::CornersOnEdges,
      &SceneMaker::NestedShells, &SceneMaker::Interleaved,    &SceneMaker::FlatGrids,
      &SceneMaker::Pegs,         &SceneMaker::Anywhere,       &SceneMaker::CrowdedTies};
  (this->*basic[Below(static_cast<int>(std::size(basic)))])();
}

struct Family {
  const char* name;
  void (SceneMaker::*make)();
  bool isMated = false;
};

const Family families[] = {
    {"lattice_soup", &SceneMaker::LatticeSoup},
    {"lattice_solids", &SceneMaker::LatticeSolids},
    {"coplanar_slides", &SceneMaker::CoplanarSlides},
    {"edge_touches", &SceneMaker::EdgeTouches},
    {"corners_on_edges", &SceneMaker::CornersOnEdges},
    {"fans", &SceneMaker::Fans},
    {"nested_shells", &SceneMaker::NestedShells},
    {"non_manifold", &SceneMaker::NonManifold},
    {"tiny_gaps", &SceneMaker::TinyGaps},
    {"tiny_components", &SceneMaker::TinyComponents},
    {"single_precision", &SceneMaker::SinglePrecision},
    {"scales", &SceneMaker::Scales},
    {"degenerate", &SceneMaker::Degenerate},
    {"coincident", &SceneMaker::Coincident},
    {"one_sided", &SceneMaker::OneSided},
    {"limits", &SceneMaker::Limits},
    {"stray_vertices", &SceneMaker::StrayVertices},
    {"huge_triangles", &SceneMaker::HugeTriangles},
    {"resting", &SceneMaker::Resting, true},
    {"behind", &SceneMaker::Behind},
    {"near_ties", &SceneMaker::NearTies},
    {"flat_grids", &SceneMaker::FlatGrids},
    {"interleaved", &SceneMaker::Interleaved},
    {"slivers", &SceneMaker::Slivers},
    {"nearly_edge_on", &SceneMaker::NearlyEdgeOn},
    {"anywhere", &SceneMaker::Anywhere},
    {"stretched_axes", &SceneMaker::StretchedAxes},
    {"height_fields", &SceneMaker::HeightFields},
    {"counts_of_leaves", &SceneMaker::CountsOfLeaves},
    {"ends_of_range", &SceneMaker::EndsOfRange},
    {"signed_zeros", &SceneMaker::SignedZeros},
    {"crowded_start", &SceneMaker::CrowdedStart},
    {"crowded_ties", &SceneMaker::CrowdedTies},
    {"not_finite", &SceneMaker::NotFinite},
    {"pegs", &SceneMaker::Pegs},
    {"bowls", &SceneMaker::Bowls},
    {"late_start", &SceneMaker::LateStart},
    {"mated", &SceneMaker::Mated, true},
    {"seated", &SceneMaker::Seated, true},
    {"rails", &SceneMaker::Rails, true},
    {"corners_in_corners", &SceneMaker::CornersInCorners, true},
};

void Write(std::string& text, const Coord3& p) {
  char line[128];
  std::snprintf(line, sizeof line, "{%a, %a, %a}", p.x, p.y, p.z);
  text += line;
}

void Write(std::string& text, const char* title, const std::vector<Coord3>& corners) {
  text += title;
  text += ":\n";
  for (std::size_t k = 0; k + 2 < corners.size(); k += 3) {
    text += "  " + std::to_string(k / 3) + ": ";
    for (std::size_t c = 0; c < 3; ++c)
      Write(text, corners[k + c]);
    text += '\n';
  }
}

} // namespace

std::size_t FamilyCount() {
  return std::size(families);
}

const char* FamilyName(std::size_t family) {
  return families[family].name;
}

bool IsMated(std::size_t family) {
  return families[family].isMated;
}

Scene MakeScene(std::size_t family, std::uint64_t seed) {
  // A new family does not change the scenes of the other families.
  constexpr std::uint64_t mostFamilies = 64;
  SceneMaker maker(seed * mostFamilies + family);
  (maker.*families[family].make)();
  maker.Disturb();
  return maker.Finish(std::string(FamilyName(family)) + " " + std::to_string(seed));
}

std::string Describe(const Scene& scene) {
  std::string text = scene.name + "\ndirection ";
  Write(text, scene.question.direction);
  text += scene.question.oneSided ? ", one-sided\n" : "\n";
  Write(text, "moving", scene.question.moving);
  Write(text, "fixed", scene.question.fixed);
  return text;
}

} // namespace reference
