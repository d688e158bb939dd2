#ifndef SWEEP_CASES_H
#define SWEEP_CASES_H

#include "RandomNumbers.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cmath>
#include <limits>

/// One call of the triangle sweep; a[] moves, and b[] does not.
struct SweepCase {
  gsl_Vector direction;
  gsl_Point a[3];
  gsl_Point b[3];
  bool twoSided[2] = {true, true};
  double margin = 0.0;
  double distance = std::numeric_limits<double>::infinity();
};

/// Random calls of the triangle sweep, by families that reach its branches.
class SweepCases {
public:
  explicit SweepCases(std::uint64_t seed) : m_random(seed) {}

  enum Family {
    Anywhere,
    OnGrid,
    EdgeOnA,
    EdgeOnB,
    BothEdgeOn,
    ParallelEdgeOn,
    SharedVertices,
    TouchingPlanes,
    NearTolerance,
    Degenerate,
    NotFinite,
    FarFromOne,
    kFamilies
  };

  SweepCase Next(Family family) {
    switch (family) {
    case OnGrid:
      return GridCase();
    case EdgeOnA:
    case EdgeOnB:
    case BothEdgeOn:
    case ParallelEdgeOn:
      return EdgeOnCase(family);
    case SharedVertices:
      return SharedCase();
    case TouchingPlanes:
      return TouchingCase();
    case NearTolerance:
      return SmallCase();
    case Degenerate:
      return DegenerateCase();
    case NotFinite:
      return NotFiniteCase();
    case FarFromOne:
      return FarFromOneCase();
    default:
      return AnywhereCase();
    }
  }

  /// Every later case anywhere or on the grid has this direction, and what is made from it.
  void Keep(const gsl_Vector& direction) {
    m_isKept = true;
    m_kept = direction;
  }

private:
  RandomNumbers m_random;
  bool m_isKept = false;
  gsl_Vector m_kept;

  gsl_Vector AnyVector(double size) {
    return {m_random.In(-size, size), m_random.In(-size, size), m_random.In(-size, size)};
  }

  gsl_Point AnyPoint(double size) { return gsl_Point() + AnyVector(size); }

  void Terms(SweepCase& c) {
    c.twoSided[0] = m_random.Chance(0.8);
    c.twoSided[1] = m_random.Chance(0.8);
    const double reaches[4] = {std::numeric_limits<double>::infinity(), 1e10, m_random.In(0.0, 4.0),
                               0.0};
    c.distance = reaches[m_random.Below(4)];
    c.margin = m_random.Chance(0.5) ? 0.0 : m_random.In(-0.5, 3.0);
  }

  /// Moves B ahead of A, near the line along the direction.
  void PlaceAhead(SweepCase& c, double distance) {
    const gsl_Vector shift = c.direction.NormalizedCopy() * distance;
    for (gsl_Point& p : c.b) {
      p = p + shift;
    }
  }

  SweepCase AnywhereCase() {
    SweepCase c;
    c.direction = AnyVector(2.0);
    if (m_isKept) c.direction = m_kept;
    for (int i = 0; i < 3; ++i) {
      c.a[i] = AnyPoint(1.0);
      c.b[i] = AnyPoint(1.0);
    }
    PlaceAhead(c, m_random.In(-0.5, 4.0));
    Terms(c);
    return c;
  }

  /// Makes lengths whose squares overflow or lose their digits, or nearly do so.
  SweepCase FarFromOneCase() {
    SweepCase c = m_random.Chance(0.5) ? AnywhereCase() : EdgeOnCase(EdgeOnA);
    const double exponent = m_random.In(120.0, 210.0);
    const double scale = std::pow(10.0, m_random.Chance(0.5) ? exponent : -exponent);
    for (int i = 0; i < 3; ++i) {
      for (gsl_Point* const p : {&c.a[i], &c.b[i]})
        *p = gsl_Point(p->x * scale, p->y * scale, p->z * scale);
    }
    if (m_random.Chance(0.2)) c.direction = c.direction * scale;
    c.distance *= scale;
    c.margin *= scale;
    return c;
  }

  gsl_Point GridPoint(int size) {
    const double x = m_random.Below(size);
    const double y = m_random.Below(size);
    return {x, y, static_cast<double>(m_random.Below(size))};
  }

  /// Returns small whole coordinates, so that every coincidence is frequent.
  SweepCase GridCase() {
    SweepCase c;
    const int size = 2 + m_random.Below(3);
    c.direction =
        gsl_Vector(m_random.Below(3) - 1.0, m_random.Below(3) - 1.0, m_random.Below(3) - 1.0);
    if (m_random.Chance(0.5)) c.direction = gsl_Vector(0.0, 0.0, 1.0);
    if (m_isKept) c.direction = m_kept;
    for (int i = 0; i < 3; ++i) {
      c.a[i] = GridPoint(size);
      c.b[i] = GridPoint(size);
    }
    Terms(c);
    return c;
  }

  /// Returns three points of the plane of `along` and `across` through `origin`.
  void InPlane(gsl_Point* tri, const gsl_Point& origin, const gsl_Vector& along,
               const gsl_Vector& across) {
    for (int i = 0; i < 3; ++i) {
      tri[i] = origin + along * m_random.In(-1.0, 1.0) + across * m_random.In(-1.0, 1.0);
    }
  }

  SweepCase EdgeOnCase(Family family) {
    SweepCase c = AnywhereCase();
    const gsl_Vector d = c.direction.NormalizedCopy();
    const gsl_Vector across = d.CrossProduct(AnyVector(1.0)).NormalizedCopy();
    const double ahead = m_random.In(-0.5, 3.0);
    if (family != EdgeOnB) InPlane(c.a, gsl_Point(), d, across);
    if (family != EdgeOnA) InPlane(c.b, gsl_Point() + d * ahead, d, across);
    if (family == ParallelEdgeOn) {
      const double widths[4] = {1e-7, 9.9e-7, 1.1e-6, m_random.In(0.0, 1.0)};
      const gsl_Vector shift = d.CrossProduct(across) * widths[m_random.Below(4)];
      for (gsl_Point& p : c.b) {
        p = p + shift;
      }
    }
    return c;
  }

  SweepCase SharedCase() {
    SweepCase c = AnywhereCase();
    const int count = 1 + m_random.Below(3);
    for (int i = 0; i < count; ++i) {
      // The vertex is a copy with the same identity, or another point.
      const gsl_Point& from = c.a[m_random.Below(3)];
      c.b[m_random.Below(3)] = m_random.Chance(0.5) ? from : gsl_Point(from.x, from.y, from.z);
    }
    return c;
  }

  /// Puts vertices of one triangle on the plane or the edges of the other triangle, or straight
  /// ahead of its vertices.
  SweepCase TouchingCase() {
    SweepCase c = AnywhereCase();
    for (gsl_Point& p : c.b) {
      if (m_random.Chance(0.3)) continue;
      const double u = m_random.In(-0.2, 1.2);
      const double v = m_random.Chance(0.5) ? 0.0 : m_random.In(-0.2, 1.2);
      p = c.a[0] + gsl_Vector(c.a[0], c.a[1]) * u + gsl_Vector(c.a[0], c.a[2]) * v;
      if (m_random.Chance(0.4)) p = p + c.direction.NormalizedCopy() * m_random.In(-2e-6, 2e-6);
    }
    return c;
  }

  SweepCase SmallCase() {
    SweepCase c = AnywhereCase();
    const double size = std::pow(10.0, m_random.In(-7.0, -4.0));
    for (int i = 0; i < 3; ++i) {
      c.a[i] = AnyPoint(size);
      if (m_random.Chance(0.7)) c.b[i] = AnyPoint(size);
    }
    PlaceAhead(c, m_random.In(0.0, 2.0 * size));
    return c;
  }

  SweepCase DegenerateCase() {
    SweepCase c = m_random.Chance(0.5) ? AnywhereCase() : GridCase();
    const double kind = m_random.Unit();
    gsl_Point* const tri = m_random.Chance(0.5) ? c.a : c.b;
    if (kind < 0.4) {
      tri[2] = gsl_Point(tri[0], 1.0 - kind, tri[1], kind);
    } else if (kind < 0.6) {
      tri[m_random.Below(2)] = tri[2];
    } else {
      // The direction has no length, or a length near the tolerance.
      const double size = m_random.Chance(0.4) ? 0.0 : std::pow(10.0, m_random.In(-7.0, -5.0));
      c.direction = c.direction.NormalizedCopy() * size;
    }
    return c;
  }

  SweepCase NotFiniteCase() {
    SweepCase c = m_random.Chance(0.5) ? AnywhereCase() : GridCase();
    const double infinity = std::numeric_limits<double>::infinity();
    const double odd[6] = {
        std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e200, 1e-320, -0.0};
    const int count = 1 + m_random.Below(2);
    for (int i = 0; i < count; ++i) {
      const double value = odd[m_random.Below(6)];
      const auto component = static_cast<unsigned int>(m_random.Below(3));
      const int vertex = m_random.Below(3);
      switch (m_random.Below(5)) {
      case 0:
        c.a[vertex][component] = value;
        break;
      case 1:
        c.b[vertex][component] = value;
        break;
      case 2:
        c.direction = gsl_Vector(component == 0 ? value : c.direction.x,
                                 component == 1 ? value : c.direction.y,
                                 component == 2 ? value : c.direction.z);
        break;
      case 3:
        c.margin = value;
        break;
      default:
        c.distance = value;
        break;
      }
    }
    return c;
  }
};

#endif
