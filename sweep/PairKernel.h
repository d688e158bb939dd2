#ifndef GSL_SWEEP_PAIR_KERNEL_H
#define GSL_SWEEP_PAIR_KERNEL_H

#include "Determinant.h"
#include "ExactRatio.h"

#include "gsl_Sweep.h"

#include <algorithm>
#include <limits>

/// Decides when two triangles touch, if one of them travels along a direction.
///
/// There are no tolerances. Exact signs make every decision: whether the shadows across the
/// direction meet, which features meet, on which side of travel zero, and which contact comes
/// first. Measured values (travel, points) are rounded from about 100 bits. Triangles are closed
/// and have no orientation; degenerate triangles count as the segments or points that they are.
///
/// Range      of coordinates and direction: see Determinant.h. They must be finite.
namespace gsl_sweep {

using gsl_exact::DoubleDouble;
using gsl_exact::ExactRatio;
using gsl_exact::ScaledLength;

/// A direction of travel; its length does not matter.
class TravelDirection {
public:
  /// `direction` must not be zero.
  explicit TravelDirection(const Coord3& direction);

  const Coord3& Vector() const { return m_vector; }
  const DoubleDouble& Length() const { return m_length; }
  /// Returns the direction rounded from twice the precision; axis-aligned directions have exact
  /// zeros and ones.
  const Coord3& Unit() const { return m_unit; }
  /// Returns the index of the component of largest magnitude, of equal ones the first.
  int Dominant() const { return m_dominant; }

private:
  Coord3 m_vector;
  Coord3 m_unit;
  DoubleDouble m_length;
  int m_dominant;
};

struct Triangle {
  Coord3 corner[3];
  /// Returns the exact sign of normal . direction, which is 0 for edge-on and for degenerate
  /// triangles.
  int facing;
};

Triangle MakeTriangle(const TravelDirection& direction, const Coord3& a, const Coord3& b,
                      const Coord3& c);

/// The least and the greatest coordinates of points.
struct PointBounds {
  static constexpr double kFar = std::numeric_limits<double>::infinity();

  Coord3 low{kFar, kFar, kFar}, high{-kFar, -kFar, -kFar};

  void Include(const Coord3& p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
};

/// A place where two bodies touch after some travel.
struct PairContact {
  double travel;
  ContactKind kind;
  Coord3 onMoving; ///< before the move
  Coord3 onFixed;  ///< onMoving + travel * unit direction, up to rounding
  /// The indices of the features that meet: the corner, or the edge from that corner to the next; 0
  /// for a face and for Overlap.
  int movingFeature = 0, fixedFeature = 0;
};

/// The travels, first to last, during which a pair touches. The signs of first.travel and
/// last.travel are exact, zero included.
struct ContactInterval {
  PairContact first;
  PairContact last;
};

/// Returns false, and writes nothing, when the triangles never touch. When several features meet at
/// the same travel, the first in the order of ContactKind, then of corners and edges, is named.
bool FindContactInterval(const TravelDirection& direction, const Triangle& moving,
                         const Triangle& fixed, ContactInterval& interval);

enum class PairOutcome {
  Apart,    ///< never touch, only behind, not within the limit, or left out by the rule
  Touching, ///< some travel of the interval is zero
  Ahead     ///< the first travel is positive and at most the limit
};

/// Does the same for a search and measures only values that can still matter. `first` and `travel`,
/// its travel as an exact multiple of the direction vector, are written for Ahead alone. The limit
/// only saves work, so it is compared with the rounded travel.
///
/// Under Rule::Solid a pair counts when the moving triangle faces along the direction, the fixed
/// one against it, their shadows share area, and no part of the one has passed the other. Its first
/// travel is then positive or zero, and the outcome is Ahead.
PairOutcome JudgePair(const TravelDirection& direction, const Triangle& moving,
                      const Triangle& fixed, Rule rule, double limit, PairContact& first,
                      ExactRatio& travel);

/// Returns the contact at travel zero of a pair that touches there, so with first.travel <= 0 and
/// last.travel >= 0.
PairContact ContactAtStart(const ContactInterval& interval);

enum class LastOutcome {
  Apart, ///< never touch, only behind, only beyond the greatest travel, or left out by the rule
  Parts, ///< part at zero or later, and before the greatest travel
  Cut    ///< touch at the greatest travel
};

/// Judges the end of a pair's interval within a greatest travel, for a search. `last` and `travel`,
/// its travel as an exact multiple of the direction vector, are written for Parts alone. A pair
/// whose rounded last travel is below `least` may be judged Apart, which saves work.
LastOutcome JudgeLast(const TravelDirection& direction, const Triangle& moving,
                      const Triangle& fixed, Rule rule, const ScaledLength& greatest, double least,
                      PairContact& last, ExactRatio& travel);

/// Returns the contact at the greatest travel of a pair that JudgeLast judges Cut: of the features
/// that meet first or last if they meet there, and otherwise an Overlap.
PairContact ContactAtCut(const TravelDirection& direction, const Triangle& moving,
                         const Triangle& fixed, const ScaledLength& greatest);

/// Returns true when the features that meet first do so at exactly this travel, which must be
/// positive. Then the bounds are enlarged by every point of the fixed triangle at which features
/// meet there. These points are the corners of all that the triangles share after the travel.
bool MeetFirstAt(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                 const ExactRatio& travel, PointBounds& points);

/// Returns true when the pair touches at the start and counts. Then the bounds are enlarged by what
/// the triangles share, or, where their insides cross, by what their boxes share.
bool MeetAtStart(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                 Rule rule, PointBounds& points);

/// Computes the normal of the plane in which the features of a contact meet, of length one, on the
/// side from which the moving body comes: its product with the direction is negative.
///
/// Plane      The fixed face for VertexFace, the moving face for FaceVertex, along both edges for
///            EdgeEdge. The other kinds define no plane.
/// Accuracy   Each component agrees with the exact vector within one unit in its last place, for
///            triangles of any size. Where that makes the exact product of the normal and the
///            direction zero or positive, the component of the direction's dominant axis is moved
///            by up to 2^-52, so that the product is negative.
/// Returns false, and writes nothing, for a kind without a plane, and when the exact product is
/// zero.
bool ContactNormal(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                   const PairContact& contact, Coord3& normal);

} // namespace gsl_sweep

#endif
