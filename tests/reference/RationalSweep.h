#ifndef REFERENCE_RATIONAL_SWEEP_H
#define REFERENCE_RATIONAL_SWEEP_H

#include "gsl_Arithmetic.h"

#include <array>
#include <cstddef>
#include <gmpxx.h>
#include <optional>
#include <vector>

/// The first contact of two bodies in exact rationals, by a formulation of its own.
///
/// A moving triangle touches a fixed one after s times the direction exactly when s * direction is
/// in the convex hull of the nine differences between a fixed corner and a moving one. So each pair
/// is a line that is cut with the hull of nine points. Nothing here tells faces, edges and corners
/// apart until the travel is known; then the triangles are put where they meet and compared as they
/// are.
namespace reference {

using gsl_arithmetic::Coord3;
using Rational = mpq_class;
using Whole = mpz_class;

struct WholePoint {
  Whole x, y, z;
};
using WholeTriangle = std::array<WholePoint, 3>;

struct RationalPoint {
  Rational x, y, z;
};

/// The travels at which a pair touches, as multiples of the direction. Both ends belong to it.
struct Interval {
  Rational first, last;

  bool IsSinglePoint() const { return first == last; }
};

/// Nothing when the triangles never touch. The direction must not be zero.
std::optional<Interval> SweepPair(const WholePoint& direction, const WholeTriangle& moving,
                                  const WholeTriangle& fixed);

/// Features that meet, the moving triangle's first; in the order in which ties are decided.
enum class Kind {
  VertexVertex,
  VertexEdge,
  EdgeVertex,
  VertexFace,
  FaceVertex,
  EdgeEdge,
  Overlap ///< no features meet; the triangles share a point all the same
};

struct Meeting {
  Kind kind;
  std::size_t onMoving = 0,
              onFixed = 0; ///< corner, or edge from this corner to the next; of a face 0
  RationalPoint point;     ///< where they meet; of an Overlap not set
};

/// The first features that meet of two triangles that stand still: by kind, then by the moving
/// feature, then by the fixed one.
Meeting FirstMeeting(const WholeTriangle& moving, const WholeTriangle& fixed);

/// Square of the distance of a point from a triangle, which may be degenerate.
Rational SquaredDistance(const RationalPoint& p, const std::array<RationalPoint, 3>& triangle);

/// What is asked. Three corners per triangle.
struct Question {
  std::vector<Coord3> moving, fixed;
  Coord3 direction;
  bool oneSided = false;
};

enum class Outcome { None, Contact, Start };

struct Verdict {
  Outcome outcome = Outcome::None;
  std::size_t moving = 0, fixed = 0;          ///< the pair
  std::array<RationalPoint, 3> movingCorners; ///< of the pair, as decided upon
  std::array<RationalPoint, 3> fixedCorners;
  Interval interval;      ///< of the pair, in multiples of the direction
  Rational squaredTravel; ///< zero for Start
  Kind kind = Kind::Overlap;
  RationalPoint onMoving, onFixed;                 ///< before the move; of an Overlap not set
  std::size_t ties = 0;                            ///< pairs with the same first travel
  Rational largest;                                ///< magnitude of a coordinate of either body
  RationalPoint direction;                         ///< as decided upon
  std::size_t skipped[2] = {}, turnedAway[2] = {}; ///< of the moving and of the fixed body
};

/// Judges all pairs. The coordinates that are decided upon are those given, except that a
/// coordinate below 2^-288 of the largest one is rounded to a multiple of 2^-339 of the power of
/// two above the largest one; components of the direction likewise.
Verdict Judge(const Question& question);

/// The same without leaving out any pair by its extents. Slow; for the tests of the judge.
Verdict JudgeEveryPair(const Question& question);

/// The double nearest to the square root of a number; infinity beyond the range.
double NearestRoot(const Rational& square);

} // namespace reference

#endif
