#ifndef GSL_KERNEL_TRIANGLE_DISTANCE_H
#define GSL_KERNEL_TRIANGLE_DISTANCE_H

#include "kernel/Plane.h"
#include "kernel/Segment.h"
#include "kernel/Triangle.h"
#include "kernel/TriangleDistanceBounds.h"

/// The distance of a point and a triangle.
///
/// The steps project the point onto the plane and test the foot. They take the least distance to
/// the three edges for a foot outside. Most results depend on one of these four distances alone. So
/// the regions of the nearest point are decided first, with products alone. The steps run in full
/// where the decision is not certain.
namespace gsl_kernel {

/// Returns the foot of p on the plane of the triangle. A triangle without a normal has a foot of
/// NaN.
inline Coord3 FootOnTrianglePlane(const Coord3& p, const Coord3& p1, const Coord3& p2,
                                  const Coord3& p3, double linearTolerance,
                                  double cosineTolerance) {
  return FootOnPlane(p, {p1, UnitNormal(p1, p2, p3, cosineTolerance)}, linearTolerance);
}

/// Returns the distance of p to an edge. An edge shorter than the tolerance is its first end.
inline double DistanceToEdge(const Coord3& p, const Coord3& p1, const Coord3& p2,
                             double linearTolerance) {
  const NearestPoint nearest = NearestOnSegment(p, p1, p2, linearTolerance);
  return nearest.part == SegmentPart::None ? Distance(p, p1) : nearest.distance;
}

/// Returns the distance by the steps, without a shortcut.
inline double TriangleDistanceBySteps(const Coord3& p, const Coord3& p1, const Coord3& p2,
                                      const Coord3& p3, double linearTolerance,
                                      double cosineTolerance) {
  const Coord3 foot = FootOnTrianglePlane(p, p1, p2, p3, linearTolerance, cosineTolerance);
  const TriangleTest triangle(p1, p2, p3, linearTolerance);
  if (triangle.Contains(foot)) return Distance(p, foot);
  double least = DistanceToEdge(p, p1, p2, linearTolerance);
  const double second = DistanceToEdge(p, p2, p3, linearTolerance);
  if (second < least) least = second;
  const double third = DistanceToEdge(p, p3, p1, linearTolerance);
  if (third < least) least = third;
  return least;
}

/// The part of a triangle that holds the nearest point. Unknown: the decision is not certain.
enum class TriangleRegion { Unknown, Face, Vertex, Edge };

struct NearestRegion {
  TriangleRegion region;
  /// The number of the vertex, or of the vertex where the edge begins.
  int first;
};

/// Returns whether RegionOf decides anything for these tolerances.
inline bool RegionsAreDecided(double linearTolerance, double cosineTolerance) {
  return linearTolerance * (0.5 - linearTolerance) >= 0.0 &&
         cosineTolerance < kLargestDecidedCosine;
}

/// Finds the region of the nearest point of the triangle a, b, c.
inline NearestRegion RegionOf(const Coord3& p, const Coord3& a, const Coord3& b, const Coord3& c,
                              double linearTolerance, double cosineTolerance) {
  if (!RegionsAreDecided(linearTolerance, cosineTolerance)) return {TriangleRegion::Unknown, 0};
  const Coord3 ab = Subtract(b, a), ac = Subtract(c, a), ap = Subtract(p, a);
  const double abab = Dot(ab, ab), abac = Dot(ab, ac), acac = Dot(ac, ac);
  const double abap = Dot(ab, ap), acap = Dot(ac, ap);
  const double edge2 = 2.0 * (abab + acac);
  const double reach2 = 4.0 * (Dot(p, p) + Dot(a, a) + edge2);
  const double tolerance2 = linearTolerance * linearTolerance;
  const double area2 = abab * acac - abac * abac;
  // The square of a height is at least area2 / E^2.
  const double leastHeight2 = kLeastHeightSquare * reach2 + kLeastToleranceSquares * tolerance2;
  const bool isDecided =
      (area2 > edge2 * leastHeight2 + kLeastDecidedArea) & (reach2 < kLargestDecidedReach);
  if (!isDecided) {
    return {TriangleRegion::Unknown, 0};
  }

  // The weights of b, c and a, times area2.
  const double wb = acac * abap - abac * acap;
  const double wc = abab * acap - abac * abap;
  const double wa = area2 - wb - wc;
  const double band = kWeightRounding * reach2 * edge2 + tolerance2;
  const double lesser = wb < wc ? wb : wc;
  const double least = wa < lesser ? wa : lesser;
  if (least > band) return {TriangleRegion::Face, 0};
  if (!(least < -band)) return {TriangleRegion::Unknown, 0};

  const double abbp = abap - abab, accp = acap - acac; // ab . bp and ac . cp
  const double bcbp = acap - abac - abbp, bccp = accp - (abap - abac);
  const double beyond2 =
      edge2 * (8.0 * tolerance2 + 2.0 * kProductRounding * kProductRounding * reach2);
  // Both ways along the edges of a vertex lead back, farther than any error.
  const auto isVertex = [beyond2](double x, double y) {
    const double shorter = x > y ? x : y;
    return shorter * std::fabs(shorter) < -beyond2;
  };
  const bool isA = isVertex(abap, acap);
  const bool isB = isVertex(-abbp, bcbp);
  const bool isC = isVertex(-accp, -bccp);
  if (isA | isB | isC) return {TriangleRegion::Vertex, isA ? 0 : (isB ? 1 : 2)};
  const auto isWithin = [](double fromStart, double toEnd) {
    const double shorter = fromStart < toEnd ? fromStart : toEnd;
    return shorter > kEdgeMargin * (fromStart + toEnd);
  };
  const bool isAb = (wc < -band) & isWithin(abap, -abbp);
  const bool isBc = (wa < -band) & isWithin(bcbp, -bccp);
  const bool isCa = (wb < -band) & isWithin(-accp, acap);
  const bool isEdge = isAb | isBc | isCa;
  return {isEdge ? TriangleRegion::Edge : TriangleRegion::Unknown, isAb ? 0 : (isBc ? 1 : 2)};
}

/// Returns the distance of p to the foot on p1-p2, which the steps find inside.
inline double DistanceToFoot(const Coord3& p, const Coord3& p1, const Coord3& p2,
                             double linearTolerance) {
  Coord3 foot = p1;
  double t = 0.0;
  FootOnSegment(p, p1, p2, linearTolerance, foot, t);
  return Distance(p, foot);
}

/// Returns the distance of p and a triangle, or NaN for a triangle without a normal.
inline double TriangleDistance(const Coord3& p, const Coord3& p1, const Coord3& p2,
                               const Coord3& p3, double linearTolerance, double cosineTolerance) {
  const NearestRegion nearest = RegionOf(p, p1, p2, p3, linearTolerance, cosineTolerance);
  // No branch chooses the vertex, because no processor can predict which vertex it is.
  const Coord3* const vertices[4] = {&p1, &p2, &p3, &p1};
  switch (nearest.region) {
  case TriangleRegion::Face:
    return Distance(p, FootOnTrianglePlane(p, p1, p2, p3, linearTolerance, cosineTolerance));
  case TriangleRegion::Vertex:
    return Distance(p, *vertices[nearest.first]);
  case TriangleRegion::Edge:
    return DistanceToFoot(p, *vertices[nearest.first], *vertices[nearest.first + 1],
                          linearTolerance);
  case TriangleRegion::Unknown:
    break;
  }
  return TriangleDistanceBySteps(p, p1, p2, p3, linearTolerance, cosineTolerance);
}

} // namespace gsl_kernel

#endif
