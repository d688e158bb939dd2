#include "ClearanceScenes.h"

#include "RandomNumbers.h"
#include "SweepShapes.h"

#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>

namespace reference {

namespace {

using gsl_mesh::Mesh;
using sweep_shapes::AddTriangle;
using sweep_shapes::Moved;

constexpr double infinity = std::numeric_limits<double>::infinity();

class SceneMaker {
public:
  explicit SceneMaker(std::uint64_t seed) : m_random(seed) {}

  void Lattice();
  void Boxes();
  void Grazing();
  void Flat();
  void Parallel();
  void Sliding();
  void Anywhere();
  void NearlyGrazing();
  void NearlyAlong();
  void Scales();
  void Overlapping();
  void Nested();
  void Tiny();

  ClearanceScene Finish(const std::string& name) {
    m_scene.name = name;
    m_scene.moving = m_moving.corners;
    m_scene.fixed = m_fixed.corners;
    if (m_random.Chance(0.15)) {
      const double x = m_random.In(-1.0, 1.0);
      m_scene.offset = {x, 0.0, std::floor(8.0 * x) / 8.0};
    }
    return m_scene;
  }

private:
  Coord3 LatticePoint(int reach) {
    const double x = m_random.Below(2 * reach + 1) - reach;
    const double y = m_random.Below(2 * reach + 1) - reach;
    return {x, y, static_cast<double>(m_random.Below(2 * reach + 1) - reach)};
  }
  Coord3 AnyPoint(double reach) {
    const double x = m_random.In(-reach, reach);
    const double y = m_random.In(-reach, reach);
    return {x, y, m_random.In(-reach, reach)};
  }
  Coord3 LatticeDirection() {
    Coord3 d{0.0, 0.0, 0.0};
    while (d.x == 0.0 && d.y == 0.0 && d.z == 0.0)
      d = LatticePoint(m_random.Chance(0.5) ? 1 : 3);
    return d;
  }
  Mesh LatticeSoup(int count, int reach) {
    Mesh mesh;
    for (int k = 0; k < count; ++k) {
      const Coord3 a = LatticePoint(reach);
      const Coord3 b = m_random.Chance(0.1) ? a : LatticePoint(reach);
      AddTriangle(mesh, a, b, m_random.Chance(0.1) ? b : LatticePoint(reach));
    }
    return mesh;
  }
  Mesh LatticeBox(int reach) {
    const Coord3 low = LatticePoint(reach);
    const double x = 1 + m_random.Below(2);
    const double y = 1 + m_random.Below(2);
    const double z = 1 + m_random.Below(2);
    return sweep_shapes::Box(low, gsl_arithmetic::Add(low, {x, y, z}));
  }
  double LatticeClearance() {
    const double all[] = {1.0, 2.0, 0.5, 3.0, 1.5, 0.25, 1.4142135623730951, 0x1p-30};
    return all[m_random.Below(static_cast<int>(std::size(all)))];
  }
  void StepBack(double steps) {
    m_moving = Moved(m_moving, gsl_arithmetic::Multiply(m_scene.direction, -steps));
  }

  RandomNumbers m_random;
  ClearanceScene m_scene;
  Mesh m_moving, m_fixed;
};

/// Triangles, segments and points on a lattice.
void SceneMaker::Lattice() {
  m_moving = LatticeSoup(1 + m_random.Below(3), 3);
  m_fixed = LatticeSoup(1 + m_random.Below(3), 3);
  m_scene.direction = LatticeDirection();
  m_scene.clearance = LatticeClearance();
  StepBack(m_random.Below(6));
}

/// Boxes whose faces, edges and corners come parallel to each other.
void SceneMaker::Boxes() {
  m_moving = LatticeBox(1);
  m_fixed = LatticeBox(1);
  for (Mesh* mesh : {&m_moving, &m_fixed})
    mesh->corners.resize(3 * (2 + 2 * static_cast<std::size_t>(m_random.Below(3))));
  m_scene.direction = LatticeDirection();
  m_scene.clearance = LatticeClearance();
  StepBack(4 + m_random.Below(3));
}

/// A corner passes a corner, or an edge, at exactly the clearance, or one unit nearer or farther.
void SceneMaker::Grazing() {
  const double legs[][3] = {{3, 4, 5}, {5, 12, 13}, {8, 15, 17}, {7, 24, 25}, {0, 1, 1}};
  const auto& leg = legs[m_random.Below(5)];
  const double shift = m_random.Below(3);
  AddTriangle(m_moving, {leg[0], leg[1], 9}, {leg[0] + shift, leg[1] + shift, 10},
              {leg[0] + 1, leg[1] + 2, 11});
  const double end = m_random.Below(4);
  AddTriangle(m_fixed, {0, 0, 0}, {-leg[1] * end, leg[0] * end, 0},
              {-1 - shift, -2, -1.0 * m_random.Below(2)});
  m_scene.clearance = leg[2];
  switch (m_random.Below(4)) {
  case 0:
    m_scene.clearance = std::nextafter(leg[2], 0.0);
    break;
  case 1:
    m_scene.clearance = std::nextafter(leg[2], infinity);
    break;
  default:
    break;
  }
}

/// A face over a face, whose borders are aligned or not.
void SceneMaker::Flat() {
  const double height = 2 + m_random.Below(5);
  const auto flat = [this](double z, Mesh& mesh) {
    for (int k = 1 + m_random.Below(2); k > 0; --k) {
      Coord3 p[3] = {LatticePoint(2), LatticePoint(2), LatticePoint(2)};
      for (Coord3& corner : p)
        corner.z = z;
      AddTriangle(mesh, p[0], p[1], p[2]);
    }
  };
  flat(height, m_moving);
  flat(0.0, m_fixed);
  m_scene.clearance = m_random.Chance(0.3) ? height : 0.5 * m_random.Below(4) + 0.5;
  if (m_random.Chance(0.5)) m_scene.direction = LatticeDirection();
}

/// Edges parallel to each other, or to the direction.
void SceneMaker::Parallel() {
  const Coord3 e = LatticeDirection();
  const Coord3 p = LatticePoint(2);
  const Coord3 q = LatticePoint(2);
  const auto along = [&](const Coord3& from, double t) {
    return gsl_arithmetic::Add(from, gsl_arithmetic::Multiply(e, t));
  };
  const Coord3 end = along(p, 1 + m_random.Below(2));
  AddTriangle(m_moving, p, end, LatticePoint(2));
  const double begin = m_random.Below(4) - 2;
  AddTriangle(m_fixed, along(q, begin), along(q, begin + 1), LatticePoint(2));
  m_scene.direction = m_random.Chance(0.3) ? e : LatticeDirection();
  m_scene.clearance = LatticeClearance();
  StepBack(3 + m_random.Below(3));
}

/// A body slides beside another, at exactly the clearance or nearly.
void SceneMaker::Sliding() {
  const double gap = 1 + m_random.Below(3);
  m_fixed = sweep_shapes::Box({0, 0, -2}, {2, 2, 0});
  m_moving = sweep_shapes::Box({-6, 0, gap}, {-4, 2, gap + 1});
  for (Mesh* mesh : {&m_moving, &m_fixed})
    mesh->corners.resize(12);
  m_scene.direction = {1.0, static_cast<double>(m_random.Below(2)), 0.0};
  const double near[] = {gap, std::nextafter(gap, 0.0), std::nextafter(gap, infinity), gap - 0.5};
  m_scene.clearance = near[m_random.Below(4)];
}

void SceneMaker::Anywhere() {
  for (Mesh* mesh : {&m_moving, &m_fixed}) {
    for (int k = 1 + m_random.Below(3); k > 0; --k) {
      const Coord3 center = AnyPoint(1.0);
      Coord3 p[3];
      for (Coord3& corner : p)
        corner = gsl_arithmetic::Add(center, AnyPoint(0.7));
      AddTriangle(*mesh, p[0], p[1], p[2]);
    }
  }
  m_scene.direction = AnyPoint(1.0);
  m_scene.clearance = m_random.In(0.0, 0.6);
  StepBack(3.0);
}

/// Corners that pass each other at the clearance, up to rounding.
void SceneMaker::NearlyGrazing() {
  const Coord3 p = AnyPoint(1.0);
  const Coord3 q = AnyPoint(1.0);
  m_scene.direction = AnyPoint(1.0);
  const Coord3 d = m_scene.direction;
  AddTriangle(m_moving, p, p, p);
  if (m_random.Chance(0.5)) {
    AddTriangle(m_fixed, q, q, q);
    const Coord3 w = gsl_arithmetic::Subtract(q, p);
    m_scene.clearance =
        gsl_arithmetic::Length(gsl_arithmetic::Cross(w, d)) / gsl_arithmetic::Length(d);
  } else {
    const Coord3 e = AnyPoint(5.0);
    AddTriangle(m_fixed, gsl_arithmetic::Subtract(q, e), gsl_arithmetic::Add(q, e), q);
    const Coord3 n = gsl_arithmetic::Cross(d, e);
    m_scene.clearance = std::fabs(gsl_arithmetic::Dot(gsl_arithmetic::Subtract(q, p), n)) /
                        gsl_arithmetic::Length(n);
  }
  for (int k = m_random.Below(4); k > 0; --k)
    m_scene.clearance = std::nextafter(m_scene.clearance, infinity);
  StepBack(3.0);
}

/// A direction that is nearly in the plane of a face, or along an edge.
void SceneMaker::NearlyAlong() {
  // One draw a statement: compilers evaluate arguments in different orders.
  const double part = m_random.In(-1.0, 1.0);
  const double tilt = std::ldexp(part, -10 * m_random.Below(9));
  AddTriangle(m_fixed, {0, 0, 0}, {8, 0, 0}, {0, 8, 0});
  const double height = 1.0 + m_random.Below(2);
  AddTriangle(m_moving, {-4, 1, height}, {-4, 3, height + 1}, {-5, 2, height + m_random.Below(2)});
  m_scene.direction = {1.0, 0.0, tilt};
  m_scene.clearance = height - (m_random.Chance(0.5) ? tilt : -8.0 * tilt);
  if (!(m_scene.clearance > 0.0)) m_scene.clearance = height;
}

/// A lattice scene times a power of two, with a corner that is far away or nearly zero.
void SceneMaker::Scales() {
  Lattice();
  const int exponent = 100 * (m_random.Below(9) - 4);
  for (Mesh* mesh : {&m_moving, &m_fixed}) {
    for (Coord3& p : mesh->corners)
      p = {std::ldexp(p.x, exponent), std::ldexp(p.y, exponent), std::ldexp(p.z, exponent)};
  }
  m_scene.clearance = std::ldexp(m_scene.clearance, exponent);
  if (m_random.Chance(0.3)) m_fixed.corners[0].x = std::ldexp(m_random.In(0.5, 1.0), exponent + 40);
  if (m_random.Chance(0.3)) m_fixed.corners[1].y = std::ldexp(m_random.In(0.5, 1.0), exponent - 60);
}

/// Bodies that cross or touch before anything moves.
void SceneMaker::Overlapping() {
  m_moving = LatticeSoup(1 + m_random.Below(3), 2);
  m_fixed = LatticeSoup(1 + m_random.Below(3), 2);
  m_scene.direction = LatticeDirection();
  m_scene.clearance = LatticeClearance() * 0x1p-3;
}

/// A body wholly inside another, whose surfaces are apart.
void SceneMaker::Nested() {
  m_fixed = sweep_shapes::Box({-8, -8, -8}, {8, 8, 8});
  m_moving = LatticeSoup(1, 2);
  m_scene.direction = LatticeDirection();
  m_scene.clearance = LatticeClearance() * (m_random.Chance(0.3) ? 4.0 : 1.0);
}

/// A clearance that is tiny beside the coordinates, and a corner about as far from an oblique
/// plane, edge or corner through the origin.
void SceneMaker::Tiny() {
  const double part = m_random.In(1.0, 2.0);
  const double size = std::ldexp(part, -40 - m_random.Below(51));
  m_scene.clearance = size;
  m_scene.direction = m_random.Chance(0.5) ? Coord3{1.0, 1.0, 0.0} : AnyPoint(1.0);
  switch (m_random.Below(3)) {
  case 0:
    AddTriangle(m_fixed, {-1.0, 1.0, -1.0}, {1.0, -1.0, -1.0}, {0.0, 0.0, 1.0});
    break;
  case 1:
    AddTriangle(m_fixed, {-1.0, 1.0, 0.5}, {1.0, -1.0, -0.5}, {1.0, 1.0, 1.0});
    break;
  default:
    AddTriangle(m_fixed, {0.0, 0.0, 0.0}, {0.75, 1.0, 0.25}, {1.0, -0.5, 0.75});
    break;
  }
  const Coord3 p =
      m_random.Chance(0.5) ? Coord3{-1.41421356 * size, 0.0, 0.0} : AnyPoint(4.0 * size);
  const Coord3 back = gsl_arithmetic::Multiply(m_scene.direction, -m_random.In(0.0, 2.0) * size);
  AddTriangle(m_moving, p, p, p);
  m_moving = Moved(m_moving, back);
  if (m_random.Chance(0.3)) {
    const Coord3 other{-0.5, -1.0, 0.25};
    AddTriangle(m_moving, other, other, gsl_arithmetic::Add(other, {0.25, 0.0, 0.0}));
  }
}

struct Family {
  const char* name;
  void (SceneMaker::*make)();
};

constexpr Family kFamilies[] = {
    {"Lattice", &SceneMaker::Lattice},
    {"Boxes", &SceneMaker::Boxes},
    {"Grazing", &SceneMaker::Grazing},
    {"Flat", &SceneMaker::Flat},
    {"Parallel", &SceneMaker::Parallel},
    {"Sliding", &SceneMaker::Sliding},
    {"Anywhere", &SceneMaker::Anywhere},
    {"NearlyGrazing", &SceneMaker::NearlyGrazing},
    {"NearlyAlong", &SceneMaker::NearlyAlong},
    {"Scales", &SceneMaker::Scales},
    {"Overlapping", &SceneMaker::Overlapping},
    {"Nested", &SceneMaker::Nested},
    {"Tiny", &SceneMaker::Tiny},
};

} // namespace

std::size_t ClearanceFamilyCount() {
  return std::size(kFamilies);
}

const char* ClearanceFamilyName(std::size_t family) {
  return kFamilies[family].name;
}

ClearanceScene MakeClearanceScene(std::size_t family, std::uint64_t seed) {
  SceneMaker maker(seed * 1000 + family);
  (maker.*kFamilies[family].make)();
  return maker.Finish(std::string(ClearanceFamilyName(family)) + ' ' + std::to_string(seed));
}

std::string Describe(const ClearanceScene& scene) {
  char line[128];
  const auto text = [&line](const char* name, const Coord3& p) {
    std::snprintf(line, sizeof line, "%s %a %a %a\n", name, p.x, p.y, p.z);
    return std::string(line);
  };
  std::snprintf(line, sizeof line, " clearance %a\n", scene.clearance);
  std::string result =
      scene.name + line + text("direction", scene.direction) + text("offset", scene.offset);
  for (const Coord3& p : scene.moving)
    result += text("moving", p);
  for (const Coord3& p : scene.fixed)
    result += text("fixed", p);
  return result;
}

} // namespace reference
