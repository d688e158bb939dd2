#ifndef GSL_TESTS_SWEEP_SHAPES_H
#define GSL_TESTS_SWEEP_SHAPES_H

#include "Mesh.h"
#include "RandomNumbers.h"

#include "gsl_Arithmetic.h"

#include <cmath>
#include <cstddef>
#include <random>

/// Small bodies for the tests of the sweep.
namespace sweep_shapes {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;

inline void AddTriangle(Mesh& mesh, const Coord3& a, const Coord3& b, const Coord3& c) {
  mesh.corners.insert(mesh.corners.end(), {a, b, c});
}

/// The corners are in turning order.
inline void AddQuad(Mesh& mesh, const Coord3& a, const Coord3& b, const Coord3& c,
                    const Coord3& d) {
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, a, c, d);
}

/// Returns twelve triangles with normals outwards.
inline Mesh Box(const Coord3& low, const Coord3& high) {
  const auto corner = [&](int x, int y, int z) {
    return Coord3{x ? high.x : low.x, y ? high.y : low.y, z ? high.z : low.z};
  };
  Mesh mesh;
  AddQuad(mesh, corner(0, 0, 0), corner(0, 1, 0), corner(1, 1, 0), corner(1, 0, 0));
  AddQuad(mesh, corner(0, 0, 1), corner(1, 0, 1), corner(1, 1, 1), corner(0, 1, 1));
  AddQuad(mesh, corner(0, 0, 0), corner(1, 0, 0), corner(1, 0, 1), corner(0, 0, 1));
  AddQuad(mesh, corner(1, 0, 0), corner(1, 1, 0), corner(1, 1, 1), corner(1, 0, 1));
  AddQuad(mesh, corner(1, 1, 0), corner(0, 1, 0), corner(0, 1, 1), corner(1, 1, 1));
  AddQuad(mesh, corner(0, 1, 0), corner(0, 0, 0), corner(0, 0, 1), corner(0, 1, 1));
  return mesh;
}

/// Returns a square plate [-outer, outer]^2 x [low, high] with a square hole [-hole, hole]^2.
inline Mesh PlateWithHole(double outer, double hole, double low, double high) {
  Mesh mesh;
  const auto ring = [](double r, std::size_t k, double z) {
    constexpr int x[4] = {-1, 1, 1, -1};
    constexpr int y[4] = {-1, -1, 1, 1};
    return Coord3{x[k % 4] * r, y[k % 4] * r, z};
  };
  for (std::size_t k = 0; k < 4; ++k) {
    AddQuad(mesh, ring(outer, k, high), ring(outer, k + 1, high), ring(hole, k + 1, high),
            ring(hole, k, high));
    AddQuad(mesh, ring(outer, k + 1, low), ring(outer, k, low), ring(hole, k, low),
            ring(hole, k + 1, low));
    AddQuad(mesh, ring(outer, k, low), ring(outer, k + 1, low), ring(outer, k + 1, high),
            ring(outer, k, high));
    AddQuad(mesh, ring(hole, k + 1, low), ring(hole, k, low), ring(hole, k, high),
            ring(hole, k + 1, high));
  }
  return mesh;
}

inline void Append(Mesh& mesh, const Mesh& other) {
  mesh.corners.insert(mesh.corners.end(), other.corners.begin(), other.corners.end());
}

inline Mesh Moved(Mesh mesh, const Coord3& by) {
  for (Coord3& p : mesh.corners)
    p = gsl_arithmetic::Add(p, by);
  return mesh;
}

inline Mesh Stretched(Mesh mesh, const Coord3& by) {
  for (Coord3& p : mesh.corners)
    p = {p.x * by.x, p.y * by.y, p.z * by.z};
  return mesh;
}

/// Returns triangles of about the given size in a cube of half side `reach`. Their corners are on a
/// grid of `step`, or anywhere for step 0. Every eighth triangle is a segment or a point.
inline Mesh Soup(std::mt19937_64& random, std::size_t count, double reach, double size,
                 double step) {
  RealsIn unit(-1.0, 1.0);
  const auto snapped = [step](double c) { return step == 0.0 ? c : std::round(c / step) * step; };
  Mesh mesh;
  for (std::size_t k = 0; k < count; ++k) {
    const Coord3 center{reach * unit(random), reach * unit(random), reach * unit(random)};
    Coord3 p[3];
    for (Coord3& corner : p) {
      corner = {snapped(center.x + size * unit(random)), snapped(center.y + size * unit(random)),
                snapped(center.z + size * unit(random))};
    }
    if (k % 16 == 3) p[1] = p[0];
    if (k % 16 == 11) p[2] = p[1] = p[0];
    AddTriangle(mesh, p[0], p[1], p[2]);
  }
  return mesh;
}

} // namespace sweep_shapes

#endif
