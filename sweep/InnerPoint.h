#ifndef GSL_SWEEP_INNER_POINT_H
#define GSL_SWEEP_INNER_POINT_H

#include "Box.h"
#include "SolidPair.h"

#include <vector>

namespace gsl_sweep {

/// Three vectors between points, which are kept.
struct VectorTriple {
  VectorTriple(const gsl_exact::VectorBetween& u, const gsl_exact::VectorBetween& v,
               const gsl_exact::VectorBetween& w)
      : from{*u.from, *v.from, *w.from}, to{*u.to, *v.to, *w.to} {}

  /// Return the determinant of the vectors, an estimate of it, or its exact sign.
  gsl_exact::Estimate Estimated() const;
  gsl_exact::Expansion<192> Determinant() const;
  int Sign() const;

  Coord3 from[3], to[3];
};

/// A point inside a triangle, which is never rounded.
///
/// It is a sum of places of the triangle. The first place has the weight 1, and each other has an
/// infinitely small part of the weight of the place before it. So it is on no line and in no plane
/// that does not hold all the places.
class InnerPoint {
public:
  void Add(const Coord3& place);
  /// Adds the point where the line from p to q meets the plane through `on` along u and v. Requires
  /// that it does so in one point, between p and q.
  void AddCrossing(const Coord3& p, const Coord3& q, const gsl_exact::VectorBetween& u,
                   const gsl_exact::VectorBetween& v, const Coord3& on);
  /// Adds the point of a plane, through `on` along u and v, that a line through p along a direction
  /// meets.
  void AddAlong(const Coord3& p, const Coord3& direction, const gsl_exact::VectorBetween& u,
                const gsl_exact::VectorBetween& v, const Coord3& on);
  /// Makes the second of the first `count` places the first, and the first the last of them.
  void Rotate(std::size_t count);

  std::size_t PlaceCount() const { return m_places.size(); }
  /// Returns the exact sign of det[u, v, y - on], where y is this point.
  int Side(const gsl_exact::VectorBetween& u, const gsl_exact::VectorBetween& v,
           const Coord3& on) const;
  /// Returns a box that holds the first place. Requires a place.
  Box<double> Reach() const;

private:
  /// The point p, or p - (over / under) (to - from).
  struct Place {
    Coord3 p;
    bool isMoved;
    Coord3 from, to;
    VectorTriple over, under;
    double ratio, error; ///< of over / under, which is off by at most the error
  };
  void AddMoved(const Coord3& p, const gsl_exact::VectorBetween& along, const VectorTriple& over,
                const VectorTriple& under);
  static int SideOf(const Place& place, const gsl_exact::VectorBetween& u,
                    const gsl_exact::VectorBetween& v, const Coord3& on);

  std::vector<Place> m_places;
};

/// A point inside each of two triangles. The first places of both correspond to each other.
struct SharedPoints {
  InnerPoint onFirst, onSecond;
  std::size_t count = 0; ///< of the places that correspond
  bool areEqual = false; ///< both are the same point, in the plane of both triangles

  /// Returns another such point near the next of these places.
  void Rotate();
};

/// Returns points of two triangles on a line along a direction. Requires triangles whose shadows
/// along the direction share area. Range: see Determinant.h.
SharedPoints PointsInShadow(const SurfaceTriangle& a, const SurfaceTriangle& b,
                            const Coord3& direction);

/// Returns points of two triangles next to a point that they share: each is on the inner side of
/// the other triangle, or both are the same point where the triangles are in one plane. Requires
/// triangles that overlap, see MeetAtRest.
SharedPoints PointsAtMeeting(const SurfaceTriangle& a, const SurfaceTriangle& b);

/// A ray along an axis from an inner point of a triangle to the inner side of the triangle. It
/// meets no edge and no corner.
class InnerRay {
public:
  /// Requires a triangle with area, and a point with three places that are not on a line, which
  /// must outlive the ray.
  InnerRay(const SurfaceTriangle& face, const InnerPoint& point);

  /// Returns 1 when the ray leaves a solid through the triangle, -1 when it enters, and 0 when it
  /// misses the triangle or begins on it.
  int Crossing(const SurfaceTriangle& t) const;
  /// Returns 1 when the ray begins on a triangle that faces as its own does, -1 when on a triangle
  /// that faces the other way, and 0 elsewhere.
  int Layer(const SurfaceTriangle& t) const;
  /// Returns true when the box may hold the point, or some point of the ray.
  bool BeginsIn(const Box<double>& box) const { return Meets(box, false); }
  bool Meets(const Box<double>& box) const { return Meets(box, true); }

private:
  int Along(const SurfaceTriangle& t) const;
  int Height(const SurfaceTriangle& t) const;
  bool Meets(const Box<double>& box, bool onRay) const;

  const InnerPoint& m_point;
  Box<double> m_reach;
  int m_axis, m_sense;
};

} // namespace gsl_sweep

#endif
