#ifndef IN_PLANE_CASES_H
#define IN_PLANE_CASES_H

#include "RandomNumbers.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cmath>
#include <limits>

/// One call of the in-plane sweep; a[] moves, and b[] does not.
struct InPlaneCase {
  gsl_Vector direction;
  gsl_Point a[2];
  gsl_Point b[2];
  bool twoSided[2] = {true, true};
  double margin = 0.0;
  double distance = std::numeric_limits<double>::infinity();
};

/// Random calls of the in-plane sweep, by families that reach its branches.
class InPlaneCases {
public:
  explicit InPlaneCases(std::uint64_t seed) : m_random(seed) {}

  enum Family {
    Anywhere,
    OnGrid,
    Facing,
    AlongA,
    AlongB,
    BothAlong,
    SharedEnds,
    Crossing,
    NearTolerance,
    kPlaneFamilies,
    Degenerate = kPlaneFamilies,
    Steep,
    OutOfPlane,
    NotFinite,
    FarFromOne,
    kFamilies
  };

  InPlaneCase Next(Family family) {
    switch (family) {
    case OnGrid:
      return GridCase();
    case Facing:
      return FacingCase(m_random.In(-0.2, 3.0));
    case AlongA:
    case AlongB:
    case BothAlong:
      return AlongCase(family);
    case SharedEnds:
      return SharedCase();
    case Crossing:
      return FacingCase(m_random.In(-0.5, 0.5));
    case NearTolerance:
      return SmallCase();
    case Degenerate:
      return DegenerateCase();
    case Steep:
      return SteepCase();
    case OutOfPlane:
      return OutOfPlaneCase();
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
  double m_height = 0.0;
  bool m_isKept = false;
  gsl_Vector m_kept;

  gsl_Point AnyPoint(double size) {
    return {m_random.In(-size, size), m_random.In(-size, size), m_height};
  }

  void Terms(InPlaneCase& c) {
    c.twoSided[0] = m_random.Chance(0.8);
    c.twoSided[1] = m_random.Chance(0.8);
    const double reaches[4] = {std::numeric_limits<double>::infinity(), 1e10, m_random.In(0.0, 3.0),
                               0.0};
    c.distance = reaches[m_random.Below(4)];
    c.margin = m_random.Chance(0.6) ? 0.0 : m_random.In(-0.2, 1.0);
  }

  InPlaneCase AnywhereCase() {
    InPlaneCase c;
    m_height = m_random.Chance(0.5) ? 0.0 : m_random.In(-2.0, 2.0);
    const double turn = m_random.In(0.0, 6.283);
    const double length = m_random.Chance(0.5) ? 1.0 : m_random.In(0.1, 5.0);
    c.direction = gsl_Vector(length * std::cos(turn), length * std::sin(turn), 0.0);
    if (m_isKept) c.direction = m_kept;
    for (int i = 0; i < 2; ++i) {
      c.a[i] = AnyPoint(1.0);
      c.b[i] = AnyPoint(1.0);
    }
    Terms(c);
    return c;
  }

  gsl_Point GridPoint(int size) {
    const double x = m_random.Below(size);
    return {x, static_cast<double>(m_random.Below(size)), 0.0};
  }

  /// Returns small whole coordinates, so that every coincidence is frequent.
  InPlaneCase GridCase() {
    InPlaneCase c;
    const int size = 2 + m_random.Below(4);
    do {
      const double x = m_random.Below(3) - 1;
      c.direction = gsl_Vector(x, m_random.Below(3) - 1, 0.0);
    } while (c.direction.magnitude == 0.0);
    if (m_isKept) c.direction = m_kept;
    for (int i = 0; i < 2; ++i) {
      c.a[i] = GridPoint(size);
      c.b[i] = GridPoint(size);
    }
    Terms(c);
    return c;
  }

  /// Makes A, which faces along the direction, and B, which faces against it and is `ahead` of A.
  InPlaneCase FacingCase(double ahead) {
    InPlaneCase c = AnywhereCase();
    const gsl_Vector d = c.direction.NormalizedCopy();
    const gsl_Vector across = gsl_Vector(0.0, 0.0, 1.0).CrossProduct(d);
    const auto end = [&](double side, double forward) {
      return gsl_Point(0.0, 0.0, m_height) + across * (side * m_random.In(0.05, 1.0)) +
             d * (forward + m_random.In(-0.4, 0.4));
    };
    c.a[0] = end(-1.0, 0.0);
    c.a[1] = end(1.0, 0.0);
    c.b[0] = end(1.0, ahead);
    c.b[1] = end(-1.0, ahead);
    const gsl_Vector aside = across * m_random.In(-1.0, 1.0);
    for (gsl_Point& p : c.b)
      p = p + aside;
    return c;
  }

  InPlaneCase AlongCase(Family family) {
    InPlaneCase c = AnywhereCase();
    const gsl_Vector d = c.direction.NormalizedCopy();
    const gsl_Vector across = gsl_Vector(0.0, 0.0, 1.0).CrossProduct(d);
    const auto place = [&](gsl_Point* s) { s[1] = s[0] + d * m_random.In(-1.0, 1.0); };
    if (family == BothAlong) {
      const double asides[5] = {0.0, 0.0, 1e-12, 1e-7, m_random.In(-1.0, 1.0)};
      c.b[0] = c.a[0] + d * m_random.In(-2.0, 2.0) + across * asides[m_random.Below(5)];
      if (m_random.Chance(0.05)) c.b[0] = c.a[0];
    }
    if (family != AlongB) place(c.a);
    if (family != AlongA) place(c.b);
    return c;
  }

  InPlaneCase SharedCase() {
    InPlaneCase c = m_random.Chance(0.5) ? AnywhereCase() : FacingCase(m_random.In(-0.2, 2.0));
    // The end is a copy with the same identity, another point, or a point just beyond.
    const gsl_Point& from = c.a[m_random.Below(2)];
    gsl_Point& to = c.b[m_random.Below(2)];
    to = m_random.Chance(0.5) ? from : gsl_Point(from.x, from.y, from.z);
    if (m_random.Chance(0.5)) to = to + c.direction.NormalizedCopy() * m_random.In(0.0, 2.0);
    if (m_random.Chance(0.3)) to = to + c.direction * m_random.In(-3e-6, 3e-6);
    return c;
  }

  InPlaneCase SmallCase() {
    InPlaneCase c = FacingCase(m_random.In(-0.2, 2.0));
    const gsl_Vector across = gsl_Vector(0.0, 0.0, 1.0).CrossProduct(c.direction.NormalizedCopy());
    const double sizes[4] = {5e-7, 1e-6, 2e-6, std::pow(10.0, m_random.In(-7.0, -4.0))};
    const double size = sizes[m_random.Below(4)];
    if (m_random.Chance(0.5)) c.a[1] = c.a[0] + across * size;
    if (m_random.Chance(0.5)) c.b[1] = c.b[0] - across * size;
    if (m_random.Chance(0.5)) {
      // The ends are about the tolerance apart across the direction.
      const gsl_Vector between(c.a[0], c.b[1]);
      const double reach = m_random.Chance(0.5) ? 2e-6 : 1e-5;
      const double aside = between.DotProduct(across) + m_random.In(-reach, reach);
      for (gsl_Point& p : c.b)
        p = p - across * aside;
    }
    return c;
  }

  InPlaneCase DegenerateCase() {
    InPlaneCase c = m_random.Chance(0.5) ? AnywhereCase() : GridCase();
    const double kind = m_random.Unit();
    if (kind < 0.3) {
      c.a[1] = c.a[0];
    } else if (kind < 0.6) {
      c.b[1] = c.b[0];
    } else {
      // The direction has no length, or a length near the tolerance.
      const double size = m_random.Chance(0.4) ? 0.0 : std::pow(10.0, m_random.In(-7.0, -5.0));
      c.direction = c.direction.NormalizedCopy() * size;
    }
    return c;
  }

  /// Makes segments at small angles to the direction, which pass each other at about the
  /// tolerances.
  InPlaneCase SteepCase() {
    InPlaneCase c = AnywhereCase();
    const gsl_Vector d = c.direction.NormalizedCopy();
    const gsl_Vector across = gsl_Vector(0.0, 0.0, 1.0).CrossProduct(d);
    const auto extend = [&](gsl_Point* s, double side) {
      const double sine = side * std::pow(10.0, m_random.In(-11.0, -1.0));
      s[1] = s[0] + (d * m_random.In(-1.0, 1.0) + across * sine) * m_random.In(0.1, 3.0);
    };
    extend(c.a, 1.0);
    extend(c.b, -1.0);
    const gsl_Vector between(c.b[m_random.Below(2)], c.a[m_random.Below(2)]);
    const double aside = between.DotProduct(across) + (m_random.Chance(0.5) ? 1.0 : -1.0) *
                                                          std::pow(10.0, m_random.In(-9.0, -4.0));
    for (gsl_Point& p : c.b)
      p = p + across * aside;
    return c;
  }

  InPlaneCase OutOfPlaneCase() {
    InPlaneCase c = AnywhereCase();
    const double rises[3] = {1e-7, 1e-5, 1.0};
    const double rise = rises[m_random.Below(3)];
    // The points, the direction, or both are scaled.
    const double kind = m_random.Unit();
    if (kind < 0.7) {
      for (int i = 0; i < 2; ++i) {
        c.a[i].z = m_random.In(-rise, rise);
        c.b[i].z = m_random.In(-rise, rise);
      }
    }
    if (kind > 0.4) c.direction = c.direction + gsl_Vector(0.0, 0.0, rise);
    return c;
  }

  InPlaneCase NotFiniteCase() {
    InPlaneCase c = m_random.Chance(0.5) ? AnywhereCase() : GridCase();
    const double infinity = std::numeric_limits<double>::infinity();
    const double odd[6] = {
        std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e200, 1e-320, -0.0};
    const int count = 1 + m_random.Below(2);
    for (int i = 0; i < count; ++i) {
      const double value = odd[m_random.Below(6)];
      const auto component = static_cast<unsigned int>(m_random.Below(3));
      const int end = m_random.Below(2);
      switch (m_random.Below(5)) {
      case 0:
        c.a[end][component] = value;
        break;
      case 1:
        c.b[end][component] = value;
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

  /// Makes lengths whose squares overflow or lose their digits, or nearly do so.
  InPlaneCase FarFromOneCase() {
    InPlaneCase c = m_random.Chance(0.5) ? AnywhereCase() : FacingCase(m_random.In(-0.2, 3.0));
    const double exponent = m_random.In(120.0, 210.0);
    const double scale = std::pow(10.0, m_random.Chance(0.5) ? exponent : -exponent);
    for (int i = 0; i < 2; ++i) {
      for (gsl_Point* const p : {&c.a[i], &c.b[i]})
        *p = gsl_Point(p->x * scale, p->y * scale, p->z * scale);
    }
    if (m_random.Chance(0.2)) c.direction = c.direction * scale;
    c.distance *= scale;
    c.margin *= scale;
    return c;
  }
};

#endif
