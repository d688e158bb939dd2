#ifndef GSL_MESH_POLYGON_H
#define GSL_MESH_POLYGON_H

#include "gsl_Arithmetic.h"

#include <array>
#include <cstddef>
#include <vector>

namespace gsl_mesh {

/// Cuts the polygons of a mesh file into triangles without adding corners.
/// The polygon is projected to the coordinate plane in which its area (Newell's normal) is largest.
/// It becomes the fan from its first corner when no triangle of the fan is turned over, as in every
/// convex polygon. Otherwise ears are clipped (Meisters 1975), so that concave polygons, with or
/// without a bridge to a hole, keep their area. A polygon that crosses itself, has no area or has a
/// corner that is not finite has no inside to keep and becomes the fan.
class PolygonTriangulator {
public:
  using Triangle = std::array<std::size_t, 3>; ///< positions in the ring, in its orientation

  /// Returns the count - 2 triangles of a ring of at least three corners; they live until the next
  /// call. Returns null when clipping the ears would take more than 4e8 tests, as for about 16000
  /// corners of which half are reflex.
  const std::vector<Triangle>* Triangulate(const gsl_arithmetic::Coord3* ring, std::size_t count);

private:
  enum class Strictness { Closed, Open };
  enum class Outcome { Done, Stuck, TooLong };

  bool Project(const gsl_arithmetic::Coord3* ring, std::size_t count);
  bool FanCovers(std::size_t count) const;
  void Fan(std::size_t count);
  Outcome ClipEars(std::size_t count);
  bool ClipOne(Strictness strictness);
  bool ClipFlat();
  bool IsEar(std::size_t corner, Strictness strictness);
  void Clip(std::size_t corner);
  void UpdateTurn(std::size_t corner);
  int Turn(std::size_t a, std::size_t b, std::size_t c) const;
  bool SamePlace(std::size_t a, std::size_t b) const;

  struct Point {
    double u, v;
  };

  std::vector<Triangle> m_triangles;
  std::vector<Point> m_points;
  std::vector<std::size_t> m_previous;
  std::vector<std::size_t> m_following;
  std::vector<signed char> m_turns;     ///< of each corner: 1 convex, 0 flat, -1 reflex, 2 gone
  std::vector<std::size_t> m_obstacles; ///< corners that are or were not convex
  std::size_t m_remaining = 0;
  std::size_t m_current = 0;
  std::size_t m_testsLeft = 0;
};

} // namespace gsl_mesh

#endif
