#ifndef REFERENCE_RATIONAL_SWEEP_H
#define REFERENCE_RATIONAL_SWEEP_H

#include "SweepQuestion.h"

#include <array>
#include <cstddef>
#include <gmpxx.h>
#include <optional>
#include <utility>
#include <vector>

/// Computes the first contact of two bodies in exact rationals, by another formulation.
///
/// A moving triangle touches a fixed one after s times the direction exactly when s * direction is
/// in the convex hull of the nine differences between a fixed corner and a moving corner. So each
/// pair is a line that is intersected with the hull of nine points. Faces, edges and corners do not
/// matter until the travel is known. Then the triangles are moved into contact and compared.
namespace reference {

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

/// Returns nothing when the triangles never touch. Requires a direction that is not zero.
std::optional<Interval> SweepPair(const WholePoint& direction, const WholeTriangle& moving,
                                  const WholeTriangle& fixed);

/// The features that meet, the feature of the moving triangle first. The order of the kinds decides
/// ties.
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

/// Returns every way in which features of two triangles at rest meet: by kind, then by the moving
/// feature, then by the fixed feature.
std::vector<Meeting> AllMeetings(const WholeTriangle& moving, const WholeTriangle& fixed);

/// Returns the first of them, or an Overlap.
Meeting FirstMeeting(const WholeTriangle& moving, const WholeTriangle& fixed);

/// Returns the square of the distance of a point from a triangle, which may be degenerate.
Rational SquaredDistance(const RationalPoint& p, const std::array<RationalPoint, 3>& triangle);

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

/// Judges all pairs. It uses the given coordinates, except that a coordinate below 2^-288 of the
/// largest coordinate is rounded. It becomes a multiple of 2^-339 of the power of two above the
/// largest coordinate. The same holds for the components of the direction.
Verdict Judge(const Question& question);

/// Does the same without leaving out any pair by its extents. It is slow, for the tests of the
/// judge.
Verdict JudgeEveryPair(const Question& question);

/// Judges the last contact up to a travel, which may be infinite. Pairs that touch at the limit tie
/// there.
Verdict JudgeLast(const Question& question, double limit);

/// All pairs that touch at the first contact.
struct Patch {
  std::vector<std::pair<std::size_t, std::size_t>> pairs; ///< in the order of their numbers
  /// The box around the points at which features meet, and around the common parts of the boxes of
  /// triangles whose contact began before the start and ends after it.
  RationalPoint low, high;
  Verdict described; ///< of one pair
};
/// `described` modulo the number of pairs is the pair of the verdict.
Patch JudgePatch(const Question& question, std::size_t described);

/// Returns the double nearest to the square root of a number, or infinity beyond the range.
double NearestRoot(const Rational& square);

} // namespace reference

#endif
