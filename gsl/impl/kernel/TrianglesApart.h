#ifndef GSL_KERNEL_TRIANGLES_APART_H
#define GSL_KERNEL_TRIANGLES_APART_H

#include "kernel/SweepContacts.h"
#include "kernel/TriangleSweepBounds.h"
#include "kernel/TwoDoubles.h"

/// The test that ends the sweep of two faces that are far aside of each other. No order of
/// evaluation is documented here: TriangleSweepBounds.h derives what is certain.
namespace gsl_kernel {

/// Returns the largest of three, and ignores a NaN of the first two.
inline double LargestOf(double a, double b, double c) {
  return Larger(a, Larger(b, c));
}
/// Returns the smallest of three, and ignores a NaN of the first two.
inline double SmallestOf(double a, double b, double c) {
  return Smaller(a, Smaller(b, c));
}

/// The boxes of two triangles: their gap, their size and how far they are from the origin.
struct TwoBoxes {
  double gap = 0.0, size = 0.0, reach = 0.0;

  TwoBoxes(const SourcedTriangle& a, const SourcedTriangle& s) {
    Add({a.p[0].c.x, a.p[1].c.x, a.p[2].c.x}, {s.p[0].c.x, s.p[1].c.x, s.p[2].c.x});
    Add({a.p[0].c.y, a.p[1].c.y, a.p[2].c.y}, {s.p[0].c.y, s.p[1].c.y, s.p[2].c.y});
    Add({a.p[0].c.z, a.p[1].c.z, a.p[2].c.z}, {s.p[0].c.z, s.p[1].c.z, s.p[2].c.z});
  }

private:
  /// The coordinates of the corners along one axis.
  struct Corners {
    double p0, p1, p2;
    double Low() const { return SmallestOf(p0, p1, p2); }
    double High() const { return LargestOf(p0, p1, p2); }
  };

  void Add(const Corners& a, const Corners& s) {
    const double lowA = a.Low(), highA = a.High(), lowS = s.Low(), highS = s.High();
    const double low = Smaller(lowA, lowS), high = Larger(highA, highS);
    gap = LargestOf(lowA - highS, lowS - highA, gap);
    size += high - low;
    reach += Larger(std::fabs(low), std::fabs(high));
  }
};

/// The squares of the doubled area and of the edges of a triangle.
struct TriangleSquares {
  double area, shortest, longest;

  explicit TriangleSquares(const SourcedTriangle& tri) {
    const Coord3 u = Subtract(tri.p[1].c, tri.p[0].c), v = Subtract(tri.p[2].c, tri.p[1].c);
    const Coord3 w = Subtract(tri.p[0].c, tri.p[2].c), cross = Cross(u, v);
    const double uu = Dot(u, u), vv = Dot(v, v), ww = Dot(w, w);
    area = Dot(cross, cross);
    shortest = SmallestOf(uu, vv, ww);
    longest = LargestOf(uu, vv, ww);
  }
};

/// Returns true when the gap is wide enough for a triangle.
inline bool AreWeightsBelow(const TwoBoxes& boxes, const TriangleSquares& tri, double tolerance2) {
  const double error = kApartWeight * boxes.size * boxes.size * tri.longest;
  return (boxes.gap * tri.area > 8.0 * boxes.size * (tolerance2 + error)) &
         (tri.area > kApartArea * kApartArea * tri.longest * tri.longest);
}

/// Returns true when the shadow of B is so far aside of A that no step finds a contact. It may
/// return false for such a shadow. Every corner of the shadow must have moved onto the plane of A,
/// none by more than `longest`. The tolerance must not be negative.
inline bool AreApart(const SourcedTriangle& a, const SourcedTriangle& shadow, double longest,
                     double linearTolerance) {
  TwoBoxes boxes(a, shadow);
  if (!(boxes.gap > kApartGap * boxes.size) || !(boxes.gap > 4.0 * linearTolerance)) return false;
  boxes.reach += longest;
  const TriangleSquares ofA(a), ofShadow(shadow);
  const double tolerance2 = linearTolerance * linearTolerance;
  const double shortest2 = Smaller(ofA.shortest, ofShadow.shortest);
  const double areaA = std::sqrt(ofA.area);
  const double least = kApartTurn * boxes.size * boxes.size * ofA.longest +
                       kApartFromOrigin * boxes.size * boxes.reach * areaA;
  const double product = boxes.gap * areaA;
  return product * product * shortest2 > least * least &&
         shortest2 > 4.0 * tolerance2 + kLeastApart * kLeastApart &&
         boxes.size + boxes.reach < kLargestApart && AreWeightsBelow(boxes, ofA, tolerance2) &&
         AreWeightsBelow(boxes, ofShadow, tolerance2);
}

} // namespace gsl_kernel

#endif
