#include "ContractionCanary.h"
#include "HostAdapter.h"
#include "Numbers.h"
#include "RandomNumbers.h"
#include "TextbookLu.h"
#include "gsl_BBox.h"
#include "gsl_Batch.h"
#include "gsl_DepthFirstSearch.h"
#include "gsl_EntityPredicates.h"
#include "gsl_FloatingPoint.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "gsl_Matrix.h"
#include "gsl_ModelSegment.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_ThreePoints.h"
#include "gsl_Vector.h"
#include "gsl_utils.h"
#include "gsl_utils_private.h"
#include "kernel/Matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

/// Hashes the bits of every result that is made of + - * / sqrt and floor alone, one number per
/// family.
///
/// The numbers must be the same for every compiler and every level of optimisation. A number
/// changes only when an operation is added to its family, or when the definition of an operation
/// changes. A new class needs a function that is fed from the corpus, and a row in kFamilies with
/// its own seed. Results of acos, atan2, sin, cos, pow or log10 stay out, and so do identities.

using numbers::kSentinel;

namespace {

class Hasher {
public:
  void Add(std::uint64_t bits) {
    state = (state ^ bits) * 0x9E3779B97F4A7C15ull;
    state ^= state >> 29;
  }
  /// Every NaN has the same hash: the bits of a NaN are not part of the promise.
  void Add(double x) { Add(std::isnan(x) ? std::uint64_t{0x7FF8000000000000} : numbers::Bits(x)); }
  void Add(bool answer) { Add(std::uint64_t{answer ? 1u : 2u}); }
  void Add(const gsl_arithmetic::Coord3& c) {
    Add(c.x);
    Add(c.y);
    Add(c.z);
  }
  void Add(const gsl_Vector& v) {
    Add(v.Coords());
    Add(v.magnitude);
  }
  void Add(const gsl_Point& p) { Add(p.Coords()); }
  void Add(const gsl_Matrix& m) {
    for (const auto& row : m.m) {
      for (const double entry : row)
        Add(entry);
    }
    Add(static_cast<double>(m.isIdentity));
  }
  void Add(const gsl_Segment& s) {
    Add(s.Point1());
    Add(s.Point2());
  }
  void Add(const gsl_BBox& b) {
    Add(b.min);
    Add(b.max);
  }

  std::uint64_t Value() const { return state; }

private:
  std::uint64_t state = 0x243F6A8885A308D3ull;
};

/// Numbers of every kind that decides a branch. They are general, on a coarse lattice, around the
/// tolerances, very large or very small, and sometimes NaN.
class Corpus {
public:
  explicit Corpus(std::uint64_t seed) : random(seed) {}

  /// The kind of number that the next coordinates are drawn from.
  void NextKind() { kind = random.Below(16); }

  double Number() {
    static constexpr double kScales[] = {1e-12, 1e-9, 1e-6, 1e-3, 1e3, 1e6, 1e9, 1e150};
    // Each statement draws once, because the compiler chooses the order of evaluation in an
    // expression.
    if (kind < 6) return random.In(-10.0, 10.0);
    const double whole = random.Below(5) - 2.0;
    if (kind < 11) return whole;
    if (kind < 13) return whole + (random.Below(9) - 4) * 2.5e-7;
    const double part = random.In(-1.0, 1.0);
    if (kind < 14) return part * kScales[random.Below(8)];
    if (kind < 15) return whole + part * 1e-10;
    return random.Below(4) == 0 ? random.Hostile() : part * 2.0;
  }

  gsl_Point Point() {
    const double px = Number(), py = Number(), pz = Number();
    return {px, py, pz};
  }

  gsl_Vector Vector() {
    const double vx = Number(), vy = Number(), vz = Number();
    return {vx, vy, vz};
  }

  gsl_StLine Line() {
    const gsl_Point p = Point();
    return {p, Vector()};
  }

  gsl_Plane Plane() {
    const gsl_Point p = Point();
    return {p, Vector()};
  }

  gsl_Segment Segment() {
    const gsl_Point p = Point();
    return {p, Point()};
  }

  gsl_Matrix Matrix() {
    gsl_Matrix m;
    for (unsigned int r = 0; r < 3; ++r)
      m.SetRow(r, Vector());
    m.SetTranslation(Vector());
    return m;
  }

  int Below(int n) { return random.Below(n); }

private:
  CorpusNumbers random;
  int kind = 0;
};

constexpr int kRounds = 10000;

void HashScalars(Hasher& h, Corpus& c) {
  const double a[3] = {c.Number(), c.Number(), c.Number()};
  const double b[3] = {c.Number(), c.Number(), c.Number()};
  const double tol = std::fabs(c.Number());
  h.Add(gsl_RealEqual(a[0], b[0], tol));
  h.Add(gsl_RealRelEqual(a[0], b[0], tol));
  h.Add(gsl_RealArrEqual(3, a, b, tol));
  h.Add(RealArrRelEqual(3, a, b, tol));
  const int n = c.Below(12) + 1;
  // The number is in the range of the operation: its whole part has 32 bits.
  if (std::fabs(a[0]) < 2e9) h.Add(gsl_Truncate(a[0], n));
  h.Add(RoundHalfUp(a[1]));
  h.Add(IntegerPower(a[1], n - 6));
  h.Add(SinglePrecisionPower(a[2], n - 6));
  const gsl_Interval interval{a[0], b[0]};
  h.Add(interval.Interpolate(a[1]));
  h.Add(interval == gsl_Interval{a[0] + tol, b[0] - tol});
}

void HashVector(Hasher& h, Corpus& c) {
  const gsl_Vector a = c.Vector(), b = c.Vector(), axis = c.Vector();
  const gsl_Point p = c.Point(), q = c.Point(), r = c.Point();
  const gsl_Plane plane = c.Plane();
  const double s = c.Number(), tol = std::fabs(c.Number());
  h.Add(a + b);
  h.Add(a - b);
  h.Add(a * s);
  h.Add(gsl_Vector(p, q));
  h.Add(gsl_Vector(p, q, r));
  h.Add(a == b);
  h.Add(a.DotProduct(b));
  h.Add(a.CrossProduct(b));
  gsl_Vector changed(a);
  h.Add(changed.Normalize());
  h.Add(changed);
  changed.Scale(s);
  h.Add(changed);
  changed.Negate();
  h.Add(changed);
  h.Add(a.NormalizedCopy());
  h.Add(a.ScaledCopy(s));
  h.Add(a.IsOn(b));
  h.Add(a.IsOrthogonal(b));
  h.Add(a.SameDirection(b, tol));
  h.Add(a.IsParallel(b, tol));
  h.Add(a.AnyOrthogonalUnit());
  h.Add(a.BestAlignedOrthogonalUnit());
  h.Add(a.ProjectOn(plane));
  double unused = 0.0;
  h.Add(axis.AngleBetween(a, b, unused));
  h.Add(gsl_kernel::CosineBetween(a.Measured(), b.Measured(), c.Below(2) == 0, 1e-6));
}

void HashPoint(Hasher& h, Corpus& c) {
  gsl_Point p = c.Point();
  const gsl_Point q = c.Point(), r = c.Point(), s = c.Point();
  const gsl_Vector v = c.Vector();
  const gsl_StLine line = c.Line();
  const gsl_Plane plane = c.Plane();
  const gsl_Segment segment = c.Segment();
  const double wa = c.Number(), wb = c.Number(), tol = std::fabs(c.Number());
  h.Add(gsl_Point(p, wa, q, wb));
  h.Add(gsl_Point(p, q));
  h.Add(p + v);
  h.Add(p - v);
  h.Add(p == q);
  h.Add(p > q);
  h.Add(p >= q);
  h.Add(p.GetDistance(q));
  h.Add(p.GetDistance(line));
  h.Add(p.GetSignedDistance(plane));
  h.Add(p.GetDistance(plane));
  h.Add(p.GetDistance(plane, v));
  h.Add(p.GetDistance(q, r, s));
  h.Add(p.IsOn(q));
  h.Add(p.IsOn(line));
  h.Add(p.IsOn(plane));
  gsl_Point out(kSentinel, kSentinel, kSentinel);
  double t = kSentinel, weights[3] = {kSentinel, kSentinel, kSentinel};
  h.Add(p.GetDistance(segment, out));
  h.Add(out);
  h.Add(p.ProjectOn(line, t));
  h.Add(t);
  h.Add(p.ProjectOn(plane));
  h.Add(p.ProjectOn(segment, tol, out, t));
  h.Add(out);
  h.Add(t);
  h.Add(p.ProjectOn(segment, out, t));
  h.Add(out);
  h.Add(p.ProjectOn(q, r, s, out, weights));
  h.Add(out);
  h.Add(p.RayIntersect(v, plane, out));
  h.Add(out);
  h.Add(p.RayIntersect(q, r, v, out, weights));
  h.Add(out);
  // The rays are aimed at the segment, so that some meet it.
  h.Add(p.RayIntersect(q, r, gsl_Vector(p, gsl_Point(q, 1.0 - wa, r, wa)), out, weights));
  h.Add(out);
  for (const double weight : weights)
    h.Add(weight);
  h.Add(pointInTriangle(p, q, r, s, weights));
  h.Add(pointSegmentParameters(p, q, r, weights));
  for (const double weight : weights)
    h.Add(weight);
}

void HashMatrix(Hasher& h, Corpus& c) {
  gsl_Matrix a = c.Matrix(), b = c.Matrix();
  gsl_Point p = c.Point();
  gsl_Vector v = c.Vector();
  const gsl_Vector x = c.Vector(), y = c.Vector(), z = c.Vector();
  a.Transform(p);
  b.Transform(v);
  h.Add(p);
  h.Add(v);
  h.Add(a == b);
  h.Add(a.InverseRigidTransform());
  b.Concatenate(a);
  h.Add(b);
  a.SetRotationVectors(x, y, z);
  a.SetColumn(3, v);
  h.Add(a);
  h.Add(a.NewOrigin());
  h.Add(a.NewYAxis());
  h.Add(a.IsIdentity());
  gsl_Matrix near;
  const int row = c.Below(3);
  const int column = c.Below(4);
  near.m[row][column] += (c.Below(9) - 4) * 2.5e-6;
  near.isIdentity = -1;
  h.Add(near.IsIdentity());
  h.Add(near);
  // Three angles, as written cosines and sines.
  static constexpr double kTurns[3][2] = {{0.6, 0.8}, {-0.28, 0.96}, {0.0, -1.0}};
  const double* const turn = kTurns[c.Below(3)];
  gsl_Matrix rotation;
  gsl_kernel::AxisRotationBlock(x.NormalizedCopy().Coords(), turn[0], turn[1], rotation.m);
  h.Add(rotation);
  for (const gsl_Matrix* m : {&a, &rotation}) {
    const gsl_kernel::Quaternion q = gsl_kernel::QuaternionOfRotation(m->m);
    for (const float component : {q.x, q.y, q.z, q.w})
      h.Add(static_cast<double>(component));
  }
}

void HashLinesAndPlanes(Hasher& h, Corpus& c) {
  const gsl_StLine a = c.Line(), b = c.Line();
  const gsl_Point p = c.Point(), q = c.Point();
  const gsl_Plane plane = c.Plane(), other = c.Plane();
  gsl_Point out(kSentinel, kSentinel, kSentinel);
  double distance = kSentinel;
  h.Add(gsl_StLine(p, q).Direction());
  h.Add(a.Intersect(plane, out));
  h.Add(out);
  h.Add(a.Intersect(b, out, distance));
  h.Add(out);
  h.Add(distance);
  // Both lines pass through one point, so that they are not skew.
  h.Add(a.Intersect(gsl_StLine(a.PointOn() + a.Direction() * 0.5, b.Direction()), out, distance));
  h.Add(out);
  h.Add(distance);
  h.Add(lineSkewDistance(a, b));
  h.Add(linesAreSkew(a, b));
  h.Add(linesCoincident(a, b));
  h.Add(lineParallelToPlane(a, plane));
  h.Add(lineLiesInPlane(a, plane));
  h.Add(signedDistanceToParallelPlane(a, plane));
  h.Add(distanceToParallelPlane(a, plane));
  h.Add(planesParallel(plane, other));
  h.Add(planesCoincident(plane, other));
  h.Add(distanceBetweenParallelPlanes(plane, other));
  h.Add(distanceBetweenParallelPlanes(plane, gsl_Plane(p, plane.Direction() * -2.0)));
}

void HashSegment(Hasher& h, Corpus& c) {
  const gsl_Segment a = c.Segment(), b = c.Segment();
  const gsl_StLine line = c.Line();
  const double t = c.Number();
  // This segment crosses `a` at the fraction t.
  const gsl_Point on(a.Point1(), 1.0 - t, a.Point2(), t);
  const gsl_Segment crossing(on + line.Direction() * -0.5, on + line.Direction());
  gsl_Point out(kSentinel, kSentinel, kSentinel);
  gsl_Segment connection(out, out);
  h.Add(a.Length());
  h.Add(segmentVector(a));
  h.Add(a.Intersect(line, out));
  h.Add(out);
  for (const gsl_Segment* other : {&b, &crossing}) {
    h.Add(a.Intersect(*other, out));
    h.Add(out);
    a.GetDistance(*other, connection);
    h.Add(connection);
    h.Add(connection.Length());
  }
}

void HashTriangleSweep(Hasher& h, Corpus& c) {
  const gsl_Point a[3] = {c.Point(), c.Point(), c.Point()};
  gsl_Point b[3] = {c.Point(), c.Point(), c.Point()};
  const gsl_Vector d = c.Below(3) == 0 ? gsl_Vector(a[0], a[1]) : c.Vector();
  // Half of them are ahead of the first segment, so that they can meet.
  if (c.Below(2) == 0) {
    for (gsl_Point& p : b)
      p = p + d * 1.5;
  }
  const bool twoSided[2] = {c.Below(4) != 0, c.Below(4) != 0};
  gsl_Point contacts[2] = {{kSentinel, kSentinel, kSentinel}, {kSentinel, kSentinel, kSentinel}};
  double distance = c.Below(4) == 0 ? std::fabs(c.Number()) : 1e10;
  const double margin = c.Below(2) == 0 ? 0.0 : 1e10;
  h.Add(gsl_TriTriMinDirectionalDist(d, a[0], a[1], a[2], b[0], b[1], b[2], twoSided, margin,
                                     contacts, distance));
  h.Add(distance);
  h.Add(contacts[0]);
  h.Add(contacts[1]);
}

gsl_BBox BoxOf(const gsl_Point& p, const gsl_Point& q) {
  gsl_BBox box;
  box.Add(p);
  box.Add(q);
  return box;
}

void HashBox(Hasher& h, Corpus& c) {
  const gsl_Point p = c.Point(), q = c.Point(), r = c.Point(), s = c.Point();
  const gsl_Matrix m = c.Matrix();
  gsl_BBox a = BoxOf(p, q);
  // The corners are not ordered, so that some boxes are empty.
  gsl_BBox b(a);
  b.min = r;
  b.max = c.Below(2) == 0 ? s : r + gsl_Vector(p, q);
  for (const gsl_BBox* const box : {&a, &b}) {
    h.Add(*box);
    h.Add(box->IsEmpty());
    h.Add(box->XLen());
    h.Add(box->YLen());
    h.Add(box->ZLen());
    h.Add(box->Size());
    h.Add(box->Center());
    h.Add(box->Diag());
    const std::vector<float> sphere = host_adapter::NumbersOf(box->GetExtent());
    for (const std::size_t part : {0u, 1u, 2u, 4u})
      h.Add(static_cast<double>(sphere[part]));
  }
  h.Add(a.Intersect(b));
  h.Add(b.Intersect(a));
  h.Add(a == b);
  a.Transform(m);
  h.Add(a);
  a.Add(s);
  h.Add(a);
  a.Add(b);
  h.Add(a);
}

struct InPlaneCall {
  gsl_Vector direction;
  gsl_Point a[2], b[2];
};

/// Two segments at one height, in every position to the direction.
InPlaneCall InPlane(Corpus& c) {
  const double height = c.Below(8) == 0 ? c.Number() : 0.0;
  const auto point = [&] {
    const gsl_Point p = c.Point();
    return gsl_Point(p.x, p.y, height);
  };
  InPlaneCall call = {gsl_Vector(), {point(), point()}, {point(), point()}};
  const gsl_Vector any = c.Vector();
  call.direction = gsl_Vector(any.x, any.y, 0.0);
  const int lie = c.Below(6);
  if (lie == 0) call.direction = gsl_Vector(call.a[0], call.a[1]);
  if (lie == 1) call.direction = gsl_Vector(call.b[0], call.b[1]);
  if (lie == 2) {
    call.a[1] = call.a[0] + call.direction * any.z;
    call.b[0] = call.a[0] + call.direction * c.Number();
    call.b[1] = call.b[0] + call.direction * c.Number();
  } else if (c.Below(2) == 0) {
    for (gsl_Point& p : call.b)
      p = p + call.direction * 1.5;
  }
  return call;
}

void HashInPlaneSweep(Hasher& h, Corpus& c) {
  const InPlaneCall call = InPlane(c);
  const bool twoSided[2] = {c.Below(4) != 0, c.Below(4) != 0};
  gsl_Point contacts[2] = {{kSentinel, kSentinel, kSentinel}, {kSentinel, kSentinel, kSentinel}};
  double distance = c.Below(4) == 0 ? std::fabs(c.Number()) : 1e10;
  const double margin = c.Below(2) == 0 ? 0.0 : c.Number() * 0.25;
  h.Add(gsl_InPlaneSegSegMinDirectionalDist(call.direction, call.a[0], call.a[1], call.b[0],
                                            call.b[1], twoSided, margin, contacts, distance));
  h.Add(distance);
  h.Add(contacts[0]);
  h.Add(contacts[1]);
}

/// Pairs of shapes with `Corners` corners each, in one plane or anywhere, for a sweep in order.
template <std::size_t Corners>
struct SweepCall {
  gsl_Vector direction;
  std::vector<gsl_Point> a[Corners], b[Corners];
  std::vector<double> numbers[2 * Corners]; ///< the same corners, packed: A, then B
  bool twoSided[2] = {};
  double margin = 0.0;
  gsl_BatchContact contact = {1e10, {kSentinel, 1.0, 2.0}, {kSentinel, 3.0, 4.0}, 999};

  SweepCall(Corpus& c, bool isFlat) {
    const gsl_Vector any = c.Vector();
    direction = isFlat ? gsl_Vector(any.x, any.y, 0.0) : any;
    const std::size_t count = static_cast<std::size_t>(1 + c.Below(40));
    const gsl_Vector ahead = direction * (0.5 * c.Below(4));
    for (std::size_t k = 0; k < count; ++k) {
      for (std::size_t i = 0; i < 2 * Corners; ++i) {
        gsl_Point p = c.Point();
        if (i >= Corners) p = p + ahead;
        if (isFlat) p.z = 0.0;
        (i < Corners ? a[i] : b[i - Corners]).push_back(p);
        numbers[i].insert(numbers[i].end(), {p.x, p.y, p.z});
      }
    }
    for (bool& flag : twoSided)
      flag = c.Below(4) != 0;
    if (c.Below(2) == 0) margin = c.Number() * 0.25;
    if (c.Below(4) == 0) contact.distance = std::fabs(c.Number());
  }

  std::size_t Count() const { return a[0].size(); }
  gsl_BatchPoints Packed(std::size_t i) const { return {numbers[i].data()}; }
};

void HashContact(Hasher& h, bool found, const gsl_BatchContact& contact) {
  h.Add(found);
  h.Add(contact.distance);
  for (int axis = 0; axis < 3; ++axis) {
    h.Add(contact.onA[axis]);
    h.Add(contact.onB[axis]);
  }
}

/// Calls call(k, contacts, distance) for one pair after the other.
template <class Call>
void HashLoop(Hasher& h, gsl_BatchContact contact, std::size_t count, const Call& call) {
  gsl_Point contacts[2] = {{contact.onA[0], contact.onA[1], contact.onA[2]},
                           {contact.onB[0], contact.onB[1], contact.onB[2]}};
  bool found = false;
  for (std::size_t k = 0; k < count; ++k)
    found |= call(k, contacts, contact.distance);
  for (unsigned int axis = 0; axis < 3; ++axis) {
    contact.onA[axis] = contacts[0][axis];
    contact.onB[axis] = contacts[1][axis];
  }
  HashContact(h, found, contact);
}

void HashTriangleBatch(Hasher& h, Corpus& c) {
  SweepCall<3> call(c, false);
  const gsl_BatchTriangles a = {{call.Packed(0), call.Packed(1), call.Packed(2)}};
  const gsl_BatchTriangles b = {{call.Packed(3), call.Packed(4), call.Packed(5)}};
  const bool found = gsl_SweepTriangles(call.Count(), call.direction, a, b, call.twoSided,
                                        call.margin, call.contact);
  HashContact(h, found, call.contact);
}

void HashPreparedBatch(Hasher& h, Corpus& c) {
  SweepCall<3> call(c, false);
  const std::size_t count = call.Count();
  std::vector<double> a(gsl_CountPreparedNumbers(count)), b(a.size());
  gsl_PrepareTriangles(count, {{call.Packed(0), call.Packed(1), call.Packed(2)}}, a.data());
  gsl_PrepareTriangles(count, {{call.Packed(3), call.Packed(4), call.Packed(5)}}, b.data());
  const bool found =
      gsl_SweepPreparedTriangles(count, call.direction, {a.data(), count}, {b.data(), count},
                                 call.twoSided, call.margin, call.contact);
  HashContact(h, found, call.contact);
}

void HashTriangleLoop(Hasher& h, Corpus& c) {
  const SweepCall<3> call(c, false);
  HashLoop(
      h, call.contact, call.Count(), [&call](std::size_t k, gsl_Point* contacts, double& distance) {
        return gsl_TriTriMinDirectionalDist(call.direction, call.a[0][k], call.a[1][k],
                                            call.a[2][k], call.b[0][k], call.b[1][k], call.b[2][k],
                                            call.twoSided, call.margin, contacts, distance);
      });
}

void HashSegmentBatch(Hasher& h, Corpus& c) {
  SweepCall<2> call(c, true);
  const bool found = gsl_SweepSegments(
      call.Count(), call.direction, {{call.Packed(0), call.Packed(1)}},
      {{call.Packed(2), call.Packed(3)}}, call.twoSided, call.margin, call.contact);
  HashContact(h, found, call.contact);
}

void HashSegmentLoop(Hasher& h, Corpus& c) {
  const SweepCall<2> call(c, true);
  HashLoop(h, call.contact, call.Count(),
           [&call](std::size_t k, gsl_Point* contacts, double& distance) {
             return gsl_InPlaneSegSegMinDirectionalDist(call.direction, call.a[0][k], call.a[1][k],
                                                        call.b[0][k], call.b[1][k], call.twoSided,
                                                        call.margin, contacts, distance);
           });
}

/// The distances of a batch, and what it moves.
void HashQueryBatch(Hasher& h, Corpus& c) {
  const SweepCall<2> call(c, false);
  const std::size_t count = call.Count();
  const gsl_Matrix m = c.Matrix();
  std::vector<double> results(13 * count, kSentinel);
  double* const to = results.data();
  gsl_PointSegmentDistances(count, call.Packed(0), call.Packed(1), call.Packed(2), to);
  gsl_PointTriangleDistances(count, call.Packed(0), call.Packed(1), call.Packed(2), call.Packed(3),
                             to + count);
  gsl_SegmentDistances(count, call.Packed(0), call.Packed(1), call.Packed(2), call.Packed(3),
                       to + 2 * count, to + 3 * count);
  gsl_TransformPoints(count, m, call.Packed(0), to + 6 * count);
  for (std::size_t k = 0; k < 9 * count; ++k)
    h.Add(results[k]);
  gsl_TransformBoxes(count, m, call.Packed(0), call.Packed(1), to);
  gsl_BoxOfPoints(count, call.Packed(2), to + 6 * count);
  for (std::size_t k = 0; k < 6 * count + 6; ++k)
    h.Add(results[k]);
}

void HashThreePoints(Hasher& h, Corpus& c) {
  const gsl_Point p = c.Point(), q = c.Point(), r = c.Point();
  gsl_Vector normal;
  h.Add(gsl_NormalToThreePoints(p, q, r, normal));
  h.Add(normal);
  gsl_Point centre(kSentinel, kSentinel, kSentinel);
  gsl_ComputeCircumCircle(p, q, r, centre, normal);
  h.Add(centre);
  h.Add(normal);
  for (const bool atCircumcentre : {false, true}) {
    gsl_Point origin(kSentinel, kSentinel, kSentinel);
    gsl_Vector x, y, z;
    gsl_Transcribe3PointsIntoOriginAndAxes(atCircumcentre, p, q, r, origin, x, y, z);
    h.Add(origin);
    h.Add(x);
    h.Add(y);
    h.Add(z);
  }
}

void HashDatum(Hasher& h, Corpus& c) {
  const gsl_Dot p(c.Point()), q(c.Point()), r(c.Point());
  const gsl_StLine a = c.Line(), b = c.Line();
  const gsl_Plane plane = c.Plane(), other = c.Plane();
  const double s = c.Number();
  h.Add(gsl_ThreePointsColinear(&p, &q, &r));
  const gsl_Dot beyond(p.GetPoint() + gsl_Vector(p.GetPoint(), q.GetPoint()) * s);
  h.Add(gsl_ThreePointsColinear(&p, &q, &beyond));
  h.Add(gsl_PointsAreCoincident(&p, &q));
  const gsl_Dot beside(p.GetPoint() + gsl_Vector(s * 1e-6, 0.0, 0.0));
  h.Add(gsl_PointsAreCoincident(&p, &beside));
  h.Add(gsl_LinesAreParallel(&a, &b));
  const gsl_StLine along(b.PointOn(), a.Direction() * s);
  h.Add(gsl_LinesAreParallel(&a, &along));
  h.Add(gsl_LinesAreSkew(&a, &b));
  const gsl_StLine through(a.PointOn() + a.Direction() * s, b.Direction());
  h.Add(gsl_LinesAreSkew(&a, &through));
  h.Add(gsl_PlanesAreParallel(&plane, &other));
  const gsl_Plane opposite(other.PointOn(), plane.Direction() * -s);
  h.Add(gsl_PlanesAreParallel(&plane, &opposite));
  const gsl_ModelSegment segment(p, q);
  h.Add(segment.Direction());
  h.Add(segment.Length());
  const std::unique_ptr<omu_Primitive> unit(omu_ReturnPrim(segment));
  for (const double number : host_adapter::NumbersOf(*unit))
    h.Add(number);
}

/// Small systems, and sometimes a system that is large enough for blocks. They have ties, dependent
/// columns, zero rows and the numbers of the corpus.
SquareMatrix System(Corpus& c) {
  const int n = c.Below(40) == 0 ? 17 + c.Below(80) : 1 + c.Below(12);
  const int kind = c.Below(8);
  SquareMatrix a(n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j)
      a.At(i, j) = kind < 3 ? c.Below(5) - 2.0 : c.Number();
  }
  const int last = n - 1;
  const int other = c.Below(n);
  for (int k = 0; k < n; ++k) {
    if (kind == 3) a.At(last, k) = a.At(other, k) * 3.0;
    if (kind == 4) a.At(k, last) = a.At(k, other) * 3.0;
    if (kind == 5 && n > 2) a.At(other, k) = c.Below(2) == 0 ? 0.0 : 1e-17;
  }
  return a;
}

void HashSolver(Hasher& h, Corpus& c) {
  SquareMatrix a = System(c);
  const std::size_t n = static_cast<std::size_t>(a.Size());
  gsl_LinearEqnLUDSolver solver;
  solver.SetMatrix(a.Rows(), static_cast<unsigned int>(a.Size()));
  for (int side = 0; side < 2; ++side) {
    std::vector<double> b(n);
    for (double& entry : b)
      entry = c.Number();
    std::vector<double> x(n, kSentinel);
    h.Add(solver.Solve(b.data(), x.data()));
    for (const double entry : x)
      h.Add(entry);
  }
  for (const double entry : a.Data())
    h.Add(entry);
  h.Add(static_cast<double>(solver.Parity()));
  h.Add(solver.IsSingular());
  h.Add(solver.IsDecomposed());
  for (std::size_t j = 0; solver.IsDecomposed() && j < n; ++j)
    h.Add(static_cast<double>(solver.Pivots()[j]));
}

/// The number of edges is from zero to twice the number of vertices, in one direction or in both.
void HashLabelling(Hasher& h, Corpus& c) {
  const int n = c.Below(40) == 0 ? 60 + c.Below(300) : c.Below(20);
  const std::size_t size = static_cast<std::size_t>(n);
  const std::unique_ptr<bool[]> adjacency(new bool[size * size + 1]());
  const bool symmetric = c.Below(2) == 0;
  const int edges = n == 0 ? 0 : c.Below(2 * n);
  for (int k = 0; k < edges; ++k) {
    const std::size_t v = static_cast<std::size_t>(c.Below(n));
    const std::size_t u = static_cast<std::size_t>(c.Below(n));
    adjacency[v * size + u] = true;
    if (symmetric) adjacency[u * size + v] = true;
  }
  std::vector<int> labels(size + 1, -77);
  int count = -77;
  gsl_DepthFirstSearch(adjacency.get(), n, labels.data(), count);
  h.Add(static_cast<double>(count));
  for (const int label : labels)
    h.Add(static_cast<double>(label));
}

struct Family {
  const char* name;
  void (*hash)(Hasher&, Corpus&);
  std::uint64_t seed;
  std::uint64_t golden;
};

constexpr Family kFamilies[] = {
    {"scalars", HashScalars, 1, 0x4efedb47a53667f0},
    {"vector", HashVector, 2, 0x965baf60804adaf1},
    {"point", HashPoint, 3, 0x4710fdf39797fc5a},
    {"matrix", HashMatrix, 4, 0x712fa2814d827684},
    {"lines and planes", HashLinesAndPlanes, 5, 0x669032e79cfef9af},
    {"segment", HashSegment, 6, 0xcb6e2cbf805b0575},
    {"triangle sweep", HashTriangleSweep, 7, 0xe5e361c5e264a5d7},
    {"box", HashBox, 8, 0x616b9fb15c0d744a},
    {"in-plane sweep", HashInPlaneSweep, 9, 0x93ecf5c013f56004},
    {"three points", HashThreePoints, 10, 0x941b264d66734884},
    {"datum", HashDatum, 11, 0xee8a54dbcd92608c},
    {"linear solver", HashSolver, 16, 0x6d39e47e676fae65},
    {"labelling", HashLabelling, 54, 0x36142e977c96fd00},
    {"query batch", HashQueryBatch, 60, 0xe5f906f4a75eb6aa},
    // The loops of single calls have the numbers of their batches.
    {"triangle batch", HashTriangleBatch, 61, 0xb0cd2a99806f45d7},
    {"prepared batch", HashPreparedBatch, 61, 0xb0cd2a99806f45d7},
    {"triangle loop", HashTriangleLoop, 61, 0xb0cd2a99806f45d7},
    {"in-plane batch", HashSegmentBatch, 62, 0xba4d279e92b282d3},
    {"in-plane loop", HashSegmentLoop, 62, 0xba4d279e92b282d3},
};

} // namespace

TEST(Golden, ResultsAreTheSameBitsEverywhere) {
  Hasher all;
  for (const Family& family : kFamilies) {
    Hasher h;
    Corpus corpus(family.seed);
    for (int round = 0; round < kRounds; ++round) {
      corpus.NextKind();
      family.hash(h, corpus);
    }
    EXPECT_EQ(h.Value(), family.golden) << family.name << " is 0x" << std::hex << h.Value();
    all.Add(h.Value());
  }
  std::printf("numbers 0x%016llx\n", static_cast<unsigned long long>(all.Value()));
}

TEST(Golden, CorpusReachesTheBranches) {
  // Enough queries must succeed, because the hash of rejections proves little.
  Corpus corpus(7);
  int crossings = 0, contacts = 0;
  for (int round = 0; round < kRounds; ++round) {
    corpus.NextKind();
    const gsl_Segment a = corpus.Segment(), b = corpus.Segment();
    gsl_Point out;
    crossings += a.Intersect(b, out);
    const gsl_Point t[6] = {corpus.Point(), corpus.Point(), corpus.Point(),
                            corpus.Point(), corpus.Point(), corpus.Point()};
    const bool twoSided[2] = {true, true};
    gsl_Point pair[2];
    double distance = 1e10;
    contacts += gsl_TriTriMinDirectionalDist(corpus.Vector(), t[0], t[1], t[2], t[3], t[4], t[5],
                                             twoSided, 1e10, pair, distance);
  }
  EXPECT_GT(crossings, 100);
  EXPECT_GT(contacts, 1000);
}

TEST(Golden, CorpusReachesTheBranchesOfTheDatumFamilies) {
  Corpus corpus(8);
  int meeting = 0, empty = 0, inPlane = 0, centres = 0;
  for (int round = 0; round < kRounds; ++round) {
    corpus.NextKind();
    const gsl_Point p[3] = {corpus.Point(), corpus.Point(), corpus.Point()};
    const gsl_BBox box = BoxOf(p[0], p[1]);
    gsl_BBox other(box);
    other.min = p[2];
    meeting += box.Intersect(other);
    empty += other.IsEmpty();
    gsl_Point centre(kSentinel, kSentinel, kSentinel);
    gsl_Vector normal;
    gsl_ComputeCircumCircle(p[0], p[1], p[2], centre, normal);
    centres += centre.x != kSentinel;
    const InPlaneCall call = InPlane(corpus);
    const bool twoSided[2] = {true, true};
    gsl_Point contacts[2];
    double distance = 1e10;
    inPlane += gsl_InPlaneSegSegMinDirectionalDist(call.direction, call.a[0], call.a[1], call.b[0],
                                                   call.b[1], twoSided, 0.0, contacts, distance);
  }
  for (const int count : {meeting, empty, inPlane, centres}) {
    EXPECT_GT(count, kRounds / 20);
    EXPECT_LT(count, kRounds - kRounds / 20);
  }
}

TEST(Golden, SystemsAreSolvedRefusedExchangedAndFloored) {
  Corpus corpus(8);
  int refused = 0, exchanged = 0, floored = 0, blocked = 0;
  for (int round = 0; round < kRounds; ++round) {
    corpus.NextKind();
    SquareMatrix a = System(corpus);
    TextbookLu textbook(a.Rows(), a.Size());
    if (!textbook.Decompose()) {
      ++refused;
      continue;
    }
    exchanged += textbook.Parity() < 0;
    blocked += a.Size() > 16;
    for (int i = 0; i < a.Size(); ++i)
      floored += a.At(i, i) == 1e-16;
  }
  EXPECT_GT(refused, 500);
  EXPECT_GT(exchanged, 1000);
  EXPECT_GT(floored, 500);
  EXPECT_GT(blocked, 100);
}

TEST(Golden, CanaryContractionIsOffInTheConsumer) {
  EXPECT_STREQ(gsl_CheckFloatingPoint(), nullptr);
}

TEST(Golden, CanaryContractionIsOffInTheLibrary) {
  // The signed distance of a point from a plane through the origin is their dot product.
  EXPECT_FALSE(IsContracted([](const gsl_arithmetic::Coord3& a, const gsl_arithmetic::Coord3& b) {
    const gsl_Plane plane(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(b.x, b.y, b.z));
    return gsl_Point(a.x, a.y, a.z).GetSignedDistance(plane);
  }));
}
