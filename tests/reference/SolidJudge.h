#ifndef REFERENCE_SOLID_JUDGE_H
#define REFERENCE_SOLID_JUDGE_H

#include "RationalSweep.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Computes when the interiors of two solids begin to overlap, from solids that are unions of
/// convex pieces.
///
/// The interiors of two convex pieces overlap at the travels of an open interval: those at which
/// no direction separates the pieces. It is enough to try the normals of their facets and the
/// common normals of their edges. The interiors of the unions overlap wherever those of two pieces
/// do. No line is cut, and the triangles of the surfaces do not matter.
namespace reference {

/// Coordinates are at most 2^16 in magnitude, so that no product leaves the range.
using LatticePoint = std::array<std::int64_t, 3>;

/// The convex hull of these points, which are not in one plane.
using Piece = std::vector<LatticePoint>;

struct LatticeSolid {
  std::vector<Piece> pieces;         ///< their union is the solid
  std::vector<LatticePoint> surface; ///< three corners for each triangle, with normals outwards
};

struct SolidQuestion {
  LatticeSolid moving, fixed;
  LatticePoint direction{0, 0, -1};
};

enum class SolidOutcome {
  None,              ///< the interiors never overlap
  Contact,           ///< they begin to overlap after a positive travel
  OverlapAtStart,    ///< they overlap before any travel
  OverlapAfterStart, ///< they overlap at every small positive travel, and not before
};

struct SolidVerdict {
  SolidOutcome outcome = SolidOutcome::None;
  Rational travel;      ///< the greatest without overlap, in multiples of the direction
  bool touches = false; ///< the surfaces share a point before any travel
  bool hasPair = false; ///< for Contact and OverlapAfterStart
  std::size_t moving = 0, fixed = 0; ///< the first pair of triangles that meets then and goes on
};

/// The open interval of travels at which the interiors of two pieces overlap. Returns nothing when
/// they never do.
std::optional<Interval> OverlapOf(const Piece& moving, const Piece& fixed,
                                  const LatticePoint& direction);

/// Judges without naming a pair, and does not fill `touches`.
SolidVerdict JudgePieces(const SolidQuestion& question);

/// Judges, and looks at every pair of triangles. A pair goes on when a face of the moving body that
/// faces along the direction meets a face of the fixed body that faces against it, and the shadows
/// of both share area. There the moving solid ends, or the fixed one begins: of two faces that are
/// turned over, others cover both.
SolidVerdict JudgeSolids(const SolidQuestion& question);

/// Returns the triangles of the surface of a piece. An edge of the hull is an edge of triangles.
std::vector<LatticePoint> SurfaceOf(const Piece& piece);

/// Returns six times the volume that a surface encloses.
Whole SixfoldVolume(const std::vector<LatticePoint>& surface);

} // namespace reference

#endif
