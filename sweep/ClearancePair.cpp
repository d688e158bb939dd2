#include "ClearancePair.h"

#include "BigNumber.h"
#include "FineVector.h"
#include "Scene.h"

#include "gsl_Arithmetic.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_exact::BigNumber;
using gsl_exact::Root;
using gsl_exact::Surd;
using gsl_exact::Times;
using gsl_exact::TwoDifference;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

// The estimates in double.

double ClampedToUnit(double t) {
  return t > 0.0 ? std::min(t, 1.0) : 0.0;
}

/// Returns a vector from segment p, p + e to segment q, q + f that is about the shortest.
Coord3 BetweenSegments(const Coord3& p, const Coord3& e, const Coord3& q, const Coord3& f) {
  const Coord3 w = Subtract(q, p);
  const double ee = Dot(e, e);
  const double ff = Dot(f, f);
  const double ef = Dot(e, f);
  const double ew = Dot(e, w);
  const double fw = Dot(f, w);
  const double under = ee * ff - ef * ef;
  double onE = under > 0.0 ? ClampedToUnit((ew * ff - fw * ef) / under) : 0.0;
  const double onF = ff > 0.0 ? ClampedToUnit((onE * ef - fw) / ff) : 0.0;
  onE = ee > 0.0 ? ClampedToUnit((onF * ef + ew) / ee) : 0.0;
  return Subtract(Add(w, Multiply(f, onF)), Multiply(e, onE));
}

/// Returns true when the foot of a point on the plane of a triangle is in the triangle. `toFoot`
/// receives the vector from the point to a point of the triangle that is about the foot.
bool HasFootIn(const Coord3& p, const Triangle& t, Coord3& toFoot) {
  const Coord3 e = Subtract(t.corner[1], t.corner[0]);
  const Coord3 f = Subtract(t.corner[2], t.corner[0]);
  const Coord3 n = Cross(e, f);
  const double nn = Dot(n, n);
  const Coord3 r = Subtract(p, t.corner[0]);
  const double a = Dot(Cross(r, f), n);
  const double b = Dot(Cross(e, r), n);
  if (!(nn > 0.0) || a < 0.0 || b < 0.0 || a + b > nn) return false;
  toFoot = Subtract(Add(Multiply(e, a / nn), Multiply(f, b / nn)), r);
  return true;
}

/// Returns a vector from a moving triangle, after a multiple of the direction, to a fixed triangle
/// that is about the shortest. Triangles that cross each other are not noticed.
Coord3 About(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
             double multiple) {
  const Coord3 shift = Multiply(direction.Vector(), multiple);
  Triangle moved = moving;
  for (Coord3& p : moved.corner)
    p = Add(p, shift);
  Coord3 best = Subtract(fixed.corner[0], moved.corner[0]);
  const auto take = [&best](const Coord3& v) {
    if (Dot(v, v) < Dot(best, best)) best = v;
  };
  Coord3 toFoot{};
  for (int i = 0; i < 3; ++i) {
    const Coord3 e = Subtract(moved.corner[Next(i)], moved.corner[i]);
    for (int j = 0; j < 3; ++j) {
      take(BetweenSegments(moved.corner[i], e, fixed.corner[j],
                           Subtract(fixed.corner[Next(j)], fixed.corner[j])));
    }
    if (HasFootIn(moved.corner[i], fixed, toFoot)) take(toFoot);
    if (HasFootIn(fixed.corner[i], moved, toFoot)) take(Multiply(toFoot, -1.0));
  }
  return best;
}

double ReachOf(const Triangle& t) {
  double reach = 0.0;
  for (const Coord3& p : t.corner)
    reach = std::max(reach, std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z));
  return reach;
}

/// Returns true only when the triangles are within the clearance after a multiple of the direction.
//
// About() returns the vector between two points of the triangles, with errors of a few units of
// rounding of the reaches and of the shift.
bool IsSurelyWithin(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                    double clearance, double multiple) {
  const double error = (ReachOf(moving) + ReachOf(fixed) + 2.0 * multiple) * 0x1p-47;
  return Length(About(direction, moving, fixed, multiple)) + error < clearance;
}

/// A bound of the distance from rounded numbers, which holds all the same.
//
// For any n of length at most 1, the distance after s times d is at least
//   min n . f - max n . a - s n . d
// over the corners a of the moving triangle and f of the fixed one. With u = 2^-53 and R the reach
// of the triangles, the sums of three magnitudes: an n that is rounded from v / |v| is longer than
// 1 by 8 u at most, which the factor below takes off; n . f and n . a are off by 4 u R each, their
// difference by 2 u R; n . d is off by 4 u |d|, at most 7 u for a direction whose components are at
// most 1.
class Separation {
public:
  static constexpr double kShorter = 1.0 - 0x1p-49;
  static constexpr double kPointError = 0x1p-48;
  static constexpr double kSpeedError = 0x1p-49;

  Separation(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
             double clearance)
      : m_direction(direction), m_moving(moving), m_fixed(fixed),
        m_error((ReachOf(moving) + ReachOf(fixed)) * kPointError),
        m_clearance(clearance * (1.0 + 0x1p-50)) {}

  /// Puts the plane across v. Returns false when v has no length.
  bool Set(const Coord3& v) {
    const double length = Length(v);
    m_isSet = length > 0x1p-500 && std::isfinite(length);
    if (!m_isSet) return false;
    m_normal = Multiply(v, kShorter / length);
    for (int k = 0; k < 3; ++k) {
      m_ofMoving[k] = Dot(m_normal, m_moving.corner[k]);
      m_ofFixed[k] = Dot(m_normal, m_fixed.corner[k]);
    }
    m_speed = Dot(m_normal, m_direction.Vector()) + kSpeedError;
    return true;
  }

  const Coord3& Normal() const { return m_normal; }
  /// Returns what lies between the triangles' extents, without the clearance, for the corners in
  /// the two masks. The pair is not within the clearance before this gap is closed.
  double Gap(unsigned moving = 7, unsigned fixed = 7) const {
    double most = -kInfinity;
    double least = kInfinity;
    for (int k = 0; k < 3; ++k) {
      if ((moving >> k & 1u) != 0) most = std::max(most, m_ofMoving[k]);
      if ((fixed >> k & 1u) != 0) least = std::min(least, m_ofFixed[k]);
    }
    return least - most - m_clearance - m_error;
  }
  /// Returns the gap that closes for each multiple of the direction, or more.
  double Speed() const { return m_speed; }
  /// Returns the multiple by which the errors may have put a plane too early, about.
  double Slack() const { return m_speed > 0.0 ? 64.0 * m_error / m_speed : 0.0; }

  /// Returns true when the features of these corners do not come within the clearance up to the
  /// limit.
  bool IsBeyond(unsigned moving, unsigned fixed, double limit) const {
    if (!m_isSet) return false;
    const double gap = Gap(moving, fixed);
    return gap > 0.0 && (m_speed <= 0.0 || gap * (1.0 - 0x1p-50) > limit * m_speed);
  }

  /// Returns true when the triangles move apart along the normal, and are not within the clearance
  /// at the multiple or after it.
  bool IsPast(double multiple) const {
    return m_speed <= 0.0 && Gap() - multiple * m_speed > multiple * 0x1p-49;
  }

private:
  const TravelDirection& m_direction;
  const Triangle& m_moving;
  const Triangle& m_fixed;
  double m_error, m_clearance;
  bool m_isSet = false;
  Coord3 m_normal{0.0, 0.0, 0.0};
  double m_ofMoving[3], m_ofFixed[3], m_speed = 0.0;
};

/// The bound of Separation with twice the precision, for gaps that exceed the clearance by little
/// more than rounding. It holds for any vector n as it is, so only the sums below have errors:
///   min n . f - max n . a - s n . d >= |n| C
// Let the components of n be at most 1, and R the reach of both triangles and C. Each product and
// sum is off by less than 2^-100 of its terms, so each n . f and n . a, and |n| C, is off by less
// than 2^-97 R, n . d by less than 2^-96, and all gaps by less than 2^-94 R. Terms that leave the
// range of double are off by less than 2^-1000.
class FineSeparation {
public:
  FineSeparation(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                 double clearance)
      : m_direction(direction), m_moving(moving), m_fixed(fixed), m_clearance(clearance),
        m_error((ReachOf(moving) + ReachOf(fixed) + clearance) * 0x1p-92 + 0x1p-1000) {}

  /// Puts the plane across v. Returns false when v has no length.
  bool Set(const FineVector& v) {
    const Coord3 rounded = RoundedOf(v);
    const double largest =
        std::max({std::fabs(rounded.x), std::fabs(rounded.y), std::fabs(rounded.z)});
    if (!(largest > 0x1p-500) || !std::isfinite(largest)) return false;
    int exponent = 0;
    std::frexp(largest, &exponent);
    const auto scaled = [exponent](const DoubleDouble& c) {
      return DoubleDouble{std::ldexp(c.hi, -exponent), std::ldexp(c.lo, -exponent)};
    };
    const FineVector n{scaled(v.x), scaled(v.y), scaled(v.z)};
    m_normal = RoundedOf(n);
    DoubleDouble most = FineDot(n, m_moving.corner[0]);
    DoubleDouble least = FineDot(n, m_fixed.corner[0]);
    for (int k = 1; k < 3; ++k) {
      const DoubleDouble ofMoving = FineDot(n, m_moving.corner[k]);
      const DoubleDouble ofFixed = FineDot(n, m_fixed.corner[k]);
      if (IsLess(most, ofMoving)) most = ofMoving;
      if (IsLess(ofFixed, least)) least = ofFixed;
    }
    const DoubleDouble closed = Times(Root(FineDot(n, n)), {m_clearance, 0.0});
    m_gap = Plus(Plus(least, Minus(most)), Minus(closed));
    m_speed = FineDot(n, m_direction.Vector());
    return true;
  }

  /// Returns the vector, rounded and with components of at most 1.
  const Coord3& Normal() const { return m_normal; }
  /// Returns true when the triangles are certainly not within the clearance after the multiple.
  bool IsApartAt(double multiple) const { return GapAt(multiple) > 0.0; }
  /// Returns true when that is so up to the limit.
  bool IsBeyond(double limit) const {
    const double gap = GapAt(0.0);
    const double speed = Speed();
    return gap > 0.0 && (speed <= 0.0 || gap * (1.0 - 0x1p-50) > limit * speed);
  }
  /// Returns true when it is so at the multiple and after it.
  bool IsPast(double multiple) const { return Speed() <= 0.0 && IsApartAt(multiple); }
  /// Returns a multiple up to which they are apart, if they are at rest.
  double Least() const { return GapAt(0.0) / Speed() * (1.0 - 0x1p-50); }

private:
  double GapAt(double multiple) const {
    const DoubleDouble gap = Plus(m_gap, Minus(Times(m_speed, {multiple, 0.0})));
    const double error = m_error + multiple * 0x1p-92;
    return Plus(gap, {-error, 0.0}).hi;
  }
  double Speed() const { return Plus(m_speed, {0x1p-92, 0.0}).hi; }

  const TravelDirection& m_direction;
  const Triangle& m_moving;
  const Triangle& m_fixed;
  double m_clearance, m_error;
  Coord3 m_normal{0.0, 0.0, 0.0};
  DoubleDouble m_gap, m_speed;
};

/// Calls visit(vector) for the vectors across each two features that are nearly parallel to v, up
/// to the rounding of v, until it returns false: the normals of the faces and of both edges, and
/// the vectors between the corners and the edges or corners.
template <class Visit>
void EachVectorAlong(const Coord3& v, const TravelDirection& direction, const Triangle& moving,
                     const Triangle& fixed, double multiple, const Visit& visit) {
  FineVector ofMoving[3], ofFixed[3];
  for (int k = 0; k < 3; ++k) {
    ofMoving[k] = FineDifference(moving.corner[Next(k)], moving.corner[k]);
    ofFixed[k] = FineDifference(fixed.corner[Next(k)], fixed.corner[k]);
  }
  const Coord3 unit = Multiply(v, 1.0 / Length(v));
  // The steps that follow the distance halve the angle each where the path nearly grazes.
  const double sine = 0x1p-6 + 0x1p-46 * (ReachOf(moving) + ReachOf(fixed) + multiple) / Length(v);
  const auto isAlong = [&](const Coord3& n) {
    const Coord3 off = Cross(n, unit);
    return Dot(off, off) <= sine * sine * Dot(n, n);
  };
  bool goesOn = true;
  const auto take = [&](FineVector n) {
    if (!goesOn || !isAlong(RoundedOf(n))) return;
    if (Dot(RoundedOf(n), unit) < 0.0) n = {Minus(n.x), Minus(n.y), Minus(n.z)};
    goesOn = visit(n);
  };
  const auto takeCross = [&](const FineVector& e, const FineVector& f) {
    if (goesOn && isAlong(Cross(RoundedOf(e), RoundedOf(f)))) take(FineCross(e, f));
  };
  takeCross(ofFixed[0], ofFixed[1]);
  takeCross(ofMoving[0], ofMoving[1]);
  for (const FineVector& e : ofMoving) {
    for (const FineVector& f : ofFixed)
      takeCross(e, f);
  }
  const DoubleDouble s{multiple, 0.0};
  const Coord3& d = direction.Vector();
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      FineVector w = FineDifference(fixed.corner[j], moving.corner[i]);
      w = {Plus(w.x, Minus(Times(s, {d.x, 0.0}))), Plus(w.y, Minus(Times(s, {d.y, 0.0}))),
           Plus(w.z, Minus(Times(s, {d.z, 0.0})))};
      for (const FineVector* e : {&ofMoving[i], &ofFixed[j]}) {
        const FineVector turned = FineCross(w, *e);
        if (goesOn && isAlong(Cross(RoundedOf(*e), RoundedOf(turned)))) take(FineCross(*e, turned));
      }
      take(w);
    }
  }
}

/// Returns a multiple after which the triangles are never within the clearance.
double LastMultiple(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                    double clearance) {
  const Coord3& d = direction.Vector();
  const double fastest = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)});
  return 2.0 * (ReachOf(moving) + ReachOf(fixed) + clearance) / fastest;
}

/// Decides what twice the precision can, where the bounds of an estimate are open.
void Refine(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
            double clearance, double limit, ClearanceEstimate& estimate) {
  const Coord3 v = About(direction, moving, fixed, estimate.least);
  if (!(Length(v) > 0x1p-500) || !std::isfinite(Length(v))) return;
  const double end =
      std::min(std::max(limit, 0.0), LastMultiple(direction, moving, fixed, clearance));
  FineSeparation separation(direction, moving, fixed, clearance);
  EachVectorAlong(v, direction, moving, fixed, estimate.least, [&](const FineVector& n) {
    if (!separation.Set(n)) return true;
    estimate.isApartByPlane = separation.IsBeyond(end);
    estimate.isApart =
        estimate.isApartByPlane || (estimate.isApartAtRest && separation.IsPast(estimate.least));
    if (estimate.isApartByPlane) estimate.normal = separation.Normal();
    if (separation.IsApartAt(0.0)) {
      estimate.isApartAtRest = true;
      if (!estimate.isApart) estimate.least = std::max(estimate.least, separation.Least());
    }
    return !estimate.isApart;
  });
}

/// Follows the distance, which is convex: a plane across the shortest vector bounds it from below,
/// so each step ends at a multiple that is not too great, and the digits double. `separation`
/// receives the last plane.
ClearanceEstimate Followed(const TravelDirection& direction, const Triangle& moving,
                           const Triangle& fixed, double clearance, double limit, double from,
                           Separation& separation) {
  constexpr int kSteps = 16;
  ClearanceEstimate estimate;
  estimate.least = from;
  estimate.isApartAtRest = from > 0.0;
  for (int step = 0; step < kSteps; ++step) {
    if (!separation.Set(About(direction, moving, fixed, estimate.least))) break;
    // A step may go past the least distance. Nothing before the step is within the clearance.
    estimate.normal = separation.Normal();
    estimate.isApart = estimate.isApartAtRest && separation.IsPast(estimate.least);
    if (estimate.isApart) return estimate;
    const double gap = separation.Gap();
    if (!(gap > 0.0)) break;
    estimate.isApartAtRest = true;
    estimate.isApart = separation.IsBeyond(7, 7, std::max(limit, 0.0));
    if (estimate.isApart) return estimate;
    const double next = gap / separation.Speed() * (1.0 - 0x1p-50);
    if (!(next > estimate.least * (1.0 + 0x1p-40))) break;
    estimate.least = next;
  }
  if (!estimate.isApartAtRest) return estimate;
  const double later = estimate.least * (1.0 + 0x1p-36) + separation.Slack();
  if (IsSurelyWithin(direction, moving, fixed, clearance, later)) estimate.most = Enlarged(later);
  return estimate;
}

/// Estimates with doubles, and with twice the precision where doubles leave open whether the pair
/// comes within the clearance.
ClearanceEstimate Estimated(const TravelDirection& direction, const Triangle& moving,
                            const Triangle& fixed, double clearance, double limit, double from,
                            Separation& separation) {
  ClearanceEstimate estimate =
      Followed(direction, moving, fixed, clearance, limit, from, separation);
  const bool isOpen = estimate.isApartAtRest
                          ? !estimate.isApart && estimate.most == kInfinity
                          : !IsSurelyWithin(direction, moving, fixed, clearance, 0.0);
  if (isOpen) Refine(direction, moving, fixed, clearance, limit, estimate);
  return estimate;
}

// The exact decisions.

struct BigPoint {
  BigNumber x, y, z;
};

BigPoint BigOf(const Coord3& p) {
  return {BigNumber(p.x), BigNumber(p.y), BigNumber(p.z)};
}
BigPoint operator-(const BigPoint& a, const BigPoint& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
BigPoint operator-(const BigPoint& a) {
  return {-a.x, -a.y, -a.z};
}
BigNumber operator*(const BigPoint& a, const BigPoint& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
BigPoint Turned(const BigPoint& a, const BigPoint& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// value + s * slope at the multiple s of the direction.
struct Linear {
  BigNumber value, slope;
};

/// How near two features are while one moves: a corner or an edge and a corner, an edge or a face,
/// each without its border.
//
// With a point P moving along D, w from P to the other feature, and C the clearance, the squared
// distance of the lines or planes of the features after s D is
//   corner, corner   |w - s D|^2
//   corner, edge e   |p - s q|^2 / |e|^2          with p = w x e, q = D x e
//   face or edges    (h - s n . D)^2 / |n|^2      with n the normal of the face, or of both edges,
//                                                 and h = n . w
// It is C^2 for the first time at s = (first - root(radicand)) / under:
//   corner, corner   first = w . D, under = |D|^2, radicand = first^2 - under (|w|^2 - C^2)
//   corner, edge     first = p . q, under = |q|^2, radicand = first^2 - under (|p|^2 - C^2 |e|^2)
//   face or edges    first = |h|, under = sign(h) n . D, radicand = C^2 |n|^2
// when it is more than C^2 at s = 0, which makes s positive where `first` and `under` are. The
// features themselves are that near where the feet of their distance are inside them, and each
// condition for that is linear in s.
struct Approach {
  bool exists = false;           ///< false for features that are degenerate or parallel
  BigNumber square, squareUnder; ///< the squared distance at rest is their quotient
  Linear inside[4];
  int insideCount = 0;
  BigNumber first, under, radicand;

  void AddInside(BigNumber value, BigNumber slope) {
    inside[insideCount++] = {std::move(value), std::move(slope)};
  }

  bool IsInsideAtRest() const {
    return exists && std::all_of(inside, inside + insideCount,
                                 [](const Linear& part) { return part.value.Sign() > 0; });
  }
  bool IsWithinAtRest(const BigNumber& squaredClearance) const {
    return IsInsideAtRest() && BigNumber::Compare(square, squaredClearance * squareUnder) <= 0;
  }

  Surd Multiple() const { return {first, BigNumber(-1.0), radicand, under}; }
  /// Returns (value + s * slope) / divisor at the first multiple s.
  Surd At(const Linear& part, const BigNumber& divisor) const {
    return {under * part.value + first * part.slope, -part.slope, radicand, under * divisor};
  }

  /// Returns true when the features come within the clearance at a positive multiple.
  bool IsAhead(const BigNumber& squaredClearance) const {
    if (!exists || first.Sign() <= 0 || under.Sign() <= 0 || radicand.Sign() < 0) return false;
    if (BigNumber::Compare(square, squaredClearance * squareUnder) <= 0) return false;
    const BigNumber one(1.0);
    return std::all_of(inside, inside + insideCount,
                       [&](const Linear& part) { return At(part, one).Sign() > 0; });
  }
};

Approach OfCorners(const BigPoint& p, const BigPoint& d, const BigPoint& q,
                   const BigNumber& squaredClearance) {
  const BigPoint w = q - p;
  Approach result;
  result.exists = true;
  result.square = w * w;
  result.squareUnder = BigNumber(1.0);
  result.first = w * d;
  result.under = d * d;
  result.radicand = result.first * result.first - result.under * (result.square - squaredClearance);
  return result;
}

/// The point moves along d, and the edge runs from q along e. The first condition is the place of
/// the foot on the edge, times |e|^2.
Approach OfCornerAndEdge(const BigPoint& p, const BigPoint& d, const BigPoint& q, const BigPoint& e,
                         const BigNumber& squaredClearance) {
  Approach result;
  result.squareUnder = e * e;
  if (result.squareUnder.Sign() == 0) return result;
  result.exists = true;
  const BigPoint w = q - p;
  const BigPoint across = Turned(w, e);
  const BigPoint speed = Turned(d, e);
  result.square = across * across;
  const BigNumber place = -(w * e);
  const BigNumber along = d * e;
  result.AddInside(place, along);
  result.AddInside(result.squareUnder - place, -along);
  result.first = across * speed;
  result.under = speed * speed;
  result.radicand = result.first * result.first -
                    result.under * (result.square - squaredClearance * result.squareUnder);
  return result;
}

/// Fills in what is the same for two edges and for a face: n is the common normal, w a vector
/// between the planes across it.
void SetPlanes(const BigPoint& n, const BigPoint& w, const BigPoint& d,
               const BigNumber& squaredClearance, Approach& result) {
  result.squareUnder = n * n;
  if (result.squareUnder.Sign() == 0) return;
  result.exists = true;
  const BigNumber height = n * w;
  const BigNumber speed = n * d;
  result.square = height * height;
  result.first = height.Sign() < 0 ? -height : height;
  result.under = height.Sign() < 0 ? -speed : speed;
  result.radicand = squaredClearance * result.squareUnder;
}

Approach OfCornerAndFace(const BigPoint& p, const BigPoint& d, const BigPoint (&face)[3],
                         const BigNumber& squaredClearance) {
  Approach result;
  const BigPoint n = Turned(face[1] - face[0], face[2] - face[0]);
  SetPlanes(n, face[0] - p, d, squaredClearance, result);
  if (!result.exists) return result;
  for (int k = 0; k < 3; ++k) {
    const BigPoint inward = Turned(n, face[Next(k)] - face[k]);
    result.AddInside(inward * (p - face[k]), inward * d);
  }
  return result;
}

/// The edge from p along e moves along d, and the other runs from q along f. The first and the
/// third condition are the places of the feet on the edges, times |e x f|^2.
Approach OfEdges(const BigPoint& p, const BigPoint& e, const BigPoint& d, const BigPoint& q,
                 const BigPoint& f, const BigNumber& squaredClearance) {
  Approach result;
  const BigPoint n = Turned(e, f);
  const BigPoint w = q - p;
  SetPlanes(n, w, d, squaredClearance, result);
  if (!result.exists) return result;
  for (const BigPoint* other : {&f, &e}) {
    const BigNumber place = n * Turned(w, *other);
    const BigNumber slope = -(n * Turned(d, *other));
    result.AddInside(place, slope);
    result.AddInside(result.squareUnder - place, -slope);
  }
  return result;
}

/// Two features, one of each triangle.
struct Features {
  ContactKind kind;
  int onMoving, onFixed; ///< corner, or edge from that corner; of a face 0
};

/// Faces and edges before what borders them.
constexpr ContactKind kFromTheLargest[] = {ContactKind::VertexFace, ContactKind::FaceVertex,
                                           ContactKind::EdgeEdge,   ContactKind::VertexEdge,
                                           ContactKind::EdgeVertex, ContactKind::VertexVertex};

/// Calls visit(features) for each two features, until it returns false.
template <class Visit>
void EachFeatures(const Visit& visit) {
  for (const ContactKind kind : kFromTheLargest) {
    const int movingCount = kind == ContactKind::FaceVertex ? 1 : 3;
    const int fixedCount = kind == ContactKind::VertexFace ? 1 : 3;
    for (int i = 0; i < movingCount; ++i) {
      for (int j = 0; j < fixedCount; ++j)
        if (!visit(Features{kind, i, j})) return;
    }
  }
}

bool IsCorner(ContactKind kind, bool ofMoving) {
  switch (kind) {
  case ContactKind::VertexVertex:
    return true;
  case ContactKind::VertexEdge:
  case ContactKind::VertexFace:
    return ofMoving;
  case ContactKind::EdgeVertex:
  case ContactKind::FaceVertex:
    return !ofMoving;
  default:
    return false;
  }
}

/// Returns the corners of a feature of either triangle.
unsigned CornersOf(const Features& features, bool ofMoving) {
  const ContactKind face = ofMoving ? ContactKind::FaceVertex : ContactKind::VertexFace;
  if (features.kind == face) return 7;
  const int k = ofMoving ? features.onMoving : features.onFixed;
  return IsCorner(features.kind, ofMoving) ? 1u << k : 1u << k | 1u << Next(k);
}

/// A pair of triangles in exact numbers.
class ExactPair {
public:
  ExactPair(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
            double clearance)
      : m_direction(direction), m_moving(moving), m_fixed(fixed),
        m_along(BigOf(direction.Vector())),
        m_squaredClearance(BigNumber(clearance) * BigNumber(clearance)) {
    for (int k = 0; k < 3; ++k) {
      m_movingCorner[k] = BigOf(moving.corner[k]);
      m_fixedCorner[k] = BigOf(fixed.corner[k]);
    }
    for (int k = 0; k < 3; ++k) {
      m_movingEdge[k] = m_movingCorner[Next(k)] - m_movingCorner[k];
      m_fixedEdge[k] = m_fixedCorner[Next(k)] - m_fixedCorner[k];
    }
  }

  bool IsWithinAtRest() const;
  PairContact ClosestAtRest() const;
  /// Returns false when the pair does not come within the clearance up to the limit.
  bool First(const Separation& separation, double limit, ClearanceContact& found) const;

private:
  Approach Of(const Features& features) const;
  PairContact ContactOf(const Features& features, const Approach& approach, bool atRest) const;

  const TravelDirection& m_direction;
  const Triangle& m_moving;
  const Triangle& m_fixed;
  BigPoint m_along, m_movingCorner[3], m_fixedCorner[3], m_movingEdge[3], m_fixedEdge[3];
  BigNumber m_squaredClearance;
};

/// A fixed corner approaches a moving feature as the corner would along the opposite direction.
Approach ExactPair::Of(const Features& features) const {
  const int i = features.onMoving;
  const int j = features.onFixed;
  switch (features.kind) {
  case ContactKind::VertexVertex:
    return OfCorners(m_movingCorner[i], m_along, m_fixedCorner[j], m_squaredClearance);
  case ContactKind::VertexEdge:
    return OfCornerAndEdge(m_movingCorner[i], m_along, m_fixedCorner[j], m_fixedEdge[j],
                           m_squaredClearance);
  case ContactKind::EdgeVertex:
    return OfCornerAndEdge(m_fixedCorner[j], -m_along, m_movingCorner[i], m_movingEdge[i],
                           m_squaredClearance);
  case ContactKind::VertexFace:
    return OfCornerAndFace(m_movingCorner[i], m_along, m_fixedCorner, m_squaredClearance);
  case ContactKind::FaceVertex:
    return OfCornerAndFace(m_fixedCorner[j], -m_along, m_movingCorner, m_squaredClearance);
  case ContactKind::EdgeEdge:
    return OfEdges(m_movingCorner[i], m_movingEdge[i], m_along, m_fixedCorner[j], m_fixedEdge[j],
                   m_squaredClearance);
  default:
    return {};
  }
}

bool ExactPair::IsWithinAtRest() const {
  bool isWithin = false;
  EachFeatures([&](const Features& features) {
    isWithin = Of(features).IsWithinAtRest(m_squaredClearance);
    return !isWithin;
  });
  return isWithin;
}

PairContact ExactPair::ClosestAtRest() const {
  bool any = false;
  Features best{};
  Approach ofBest;
  EachFeatures([&](const Features& features) {
    const Approach approach = Of(features);
    if (!approach.IsInsideAtRest()) return true;
    const int order = !any ? -1
                           : BigNumber::Compare(approach.square * ofBest.squareUnder,
                                                ofBest.square * approach.squareUnder);
    if (order < 0 || (order == 0 && features.kind < best.kind)) {
      any = true;
      best = features;
      ofBest = approach;
    }
    return true;
  });
  return ContactOf(best, ofBest, true);
}

// The distance between features without their borders is never less than between the lines or
// planes of the features. So where the feet are inside, nothing that borders the features is as
// near at that travel or before, and it need not be looked at.
bool ExactPair::First(const Separation& separation, double limit, ClearanceContact& found) const {
  bool any = false;
  unsigned settled[3] = {}; ///< moving corner i: bit j for fixed corner j
  bool settledOnFixedEdge[3][3] = {}, settledOnMovingEdge[3][3] = {}; ///< [moving][fixed]
  EachFeatures([&](const Features& features) {
    const int i = features.onMoving;
    const int j = features.onFixed;
    const unsigned moving = CornersOf(features, true);
    const unsigned fixed = CornersOf(features, false);
    const bool isSettled =
        (features.kind == ContactKind::VertexEdge && settledOnFixedEdge[i][j]) ||
        (features.kind == ContactKind::EdgeVertex && settledOnMovingEdge[i][j]) ||
        (features.kind == ContactKind::VertexVertex && (settled[i] >> j & 1u) != 0);
    if (isSettled || separation.IsBeyond(moving, fixed, limit)) return true;
    const Approach approach = Of(features);
    if (!approach.IsAhead(m_squaredClearance)) return true;
    for (int m = 0; m < 3; ++m) {
      if ((moving >> m & 1u) != 0) settled[m] |= fixed;
    }
    for (int k = 0; k < 3; ++k) {
      if (features.kind == ContactKind::VertexFace) settledOnFixedEdge[i][k] = true;
      if (features.kind == ContactKind::FaceVertex) settledOnMovingEdge[k][j] = true;
    }
    if (features.kind == ContactKind::EdgeEdge) {
      settledOnFixedEdge[i][j] = settledOnFixedEdge[Next(i)][j] = true;
      settledOnMovingEdge[i][j] = settledOnMovingEdge[i][Next(j)] = true;
    }
    const DoubleDouble multiple = approach.Multiple().Rounded();
    const double travel = Times(multiple, m_direction.Length()).hi;
    if (any && (travel > found.contact.travel ||
                (travel == found.contact.travel && found.contact.kind <= features.kind))) {
      return true;
    }
    any = true;
    found = {ContactOf(features, approach, false), multiple};
    found.contact.travel = travel;
    return true;
  });
  return any;
}

/// Returns p + s (a - p) + t (b - p), each component rounded from twice the precision.
Coord3 Weighed(const Coord3& p, const DoubleDouble& s, const Coord3& a, const DoubleDouble& t,
               const Coord3& b) {
  const auto weighed = [&](double from, double toA, double toB) {
    const DoubleDouble byS = Times(s, TwoDifference(toA, from));
    const DoubleDouble byT = Times(t, TwoDifference(toB, from));
    return Plus({from, 0.0}, Plus(byS, byT)).hi;
  };
  return {weighed(p.x, a.x, b.x), weighed(p.y, a.y, b.y), weighed(p.z, a.z, b.z)};
}

/// Returns a contact without its travel. `atRest` selects the feet at rest, and otherwise after the
/// first multiple.
PairContact ExactPair::ContactOf(const Features& features, const Approach& approach,
                                 bool atRest) const {
  const int i = features.onMoving;
  const int j = features.onFixed;
  const auto place = [&](int condition) {
    const Linear& part = approach.inside[condition];
    const BigNumber& divisor = approach.squareUnder;
    return atRest ? Surd(part.value, {}, {}, divisor).Rounded()
                  : approach.At(part, divisor).Rounded();
  };
  const auto onEdge = [&](const Triangle& t, int edge, int condition) {
    return Weighed(t.corner[edge], place(condition), t.corner[Next(edge)], {}, t.corner[edge]);
  };
  // A condition of a face is the weight of the corner that is not on its edge.
  const auto onFace = [&](const Triangle& t) {
    return Weighed(t.corner[0], place(2), t.corner[1], place(0), t.corner[2]);
  };
  PairContact contact{0.0, features.kind, m_moving.corner[i], m_fixed.corner[j], i, j};
  switch (features.kind) {
  case ContactKind::VertexEdge:
    contact.onFixed = onEdge(m_fixed, j, 0);
    break;
  case ContactKind::EdgeVertex:
    contact.onMoving = onEdge(m_moving, i, 0);
    break;
  case ContactKind::VertexFace:
    contact.onFixed = onFace(m_fixed);
    break;
  case ContactKind::FaceVertex:
    contact.onMoving = onFace(m_moving);
    break;
  case ContactKind::EdgeEdge:
    contact.onMoving = onEdge(m_moving, i, 0);
    contact.onFixed = onEdge(m_fixed, j, 2);
    break;
  default:
    break;
  }
  return contact;
}

} // namespace

bool AreWithin(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
               double clearance) {
  ClearanceContact unused{};
  return JudgeClearance(direction, moving, fixed, clearance, -1.0, unused) ==
         ClearanceOutcome::Within;
}

PairContact ClosestAtRest(const TravelDirection& direction, const Triangle& moving,
                          const Triangle& fixed) {
  return ExactPair(direction, moving, fixed, 0.0).ClosestAtRest();
}

ClearanceEstimate EstimateClearance(const TravelDirection& direction, const Triangle& moving,
                                    const Triangle& fixed, double clearance, double limit,
                                    double from) {
  Separation separation(direction, moving, fixed, clearance);
  return Estimated(direction, moving, fixed, clearance, limit, from, separation);
}

ClearanceOutcome JudgeClearance(const TravelDirection& direction, const Triangle& moving,
                                const Triangle& fixed, double clearance, double limit,
                                ClearanceContact& found) {
  Separation separation(direction, moving, fixed, clearance);
  const ClearanceEstimate estimate =
      Estimated(direction, moving, fixed, clearance, limit, 0.0, separation);
  if (estimate.isApart) return ClearanceOutcome::Apart;
  if (!estimate.isApartAtRest) {
    PairContact unusedContact{};
    ExactRatio unusedTravel;
    if (IsSurelyWithin(direction, moving, fixed, clearance, 0.0) ||
        JudgePair(direction, moving, fixed, Rule::Touch, 0.0, unusedContact, unusedTravel) ==
            PairOutcome::Touching) {
      return ClearanceOutcome::Within;
    }
  }
  const ExactPair pair(direction, moving, fixed, clearance);
  if (!estimate.isApartAtRest && pair.IsWithinAtRest()) return ClearanceOutcome::Within;
  if (limit < 0.0) return ClearanceOutcome::Apart;
  return pair.First(separation, std::min(limit, estimate.most), found) ? ClearanceOutcome::Ahead
                                                                       : ClearanceOutcome::Apart;
}

} // namespace gsl_sweep
