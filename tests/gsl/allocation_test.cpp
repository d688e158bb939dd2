#include "AllocationCounter.h"
#include "gsl_EntityPredicates.h"
#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_Vector.h"
#include "gsl_utils.h"
#include "gsl_utils_private.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

/// Queries run many thousand times a second, so no query may allocate memory.

namespace {

/// Fails when the work allocates memory.
template <class Work>
void ExpectNoAllocation(const char* what, const Work& work) {
  // The first run may set up the settings and a block of identifiers, once per process.
  work();
  const long before = AllocationCount();
  work();
  EXPECT_EQ(AllocationCount(), before) << what;
}

volatile double sink = 0.0;

void Use(double value) {
  sink = sink + value;
}

/// Entities in general position and a degenerate companion of each.
struct Things {
  gsl_Point p{0.3, -0.4, 2.0};
  gsl_Point q{1.5, 0.25, -1.0};
  gsl_Point r{-2.0, 1.0, 0.5};
  gsl_Vector v{1.0, 2.0, -0.5};
  gsl_Vector w{-0.25, 1.0, 3.0};
  gsl_Vector none{0.0, 0.0, 0.0};
  gsl_StLine line{p, v};
  gsl_StLine other{p, w};
  gsl_StLine skew{r, w};
  gsl_Plane plane{r, w};
  gsl_Plane noPlane{r, none};
  gsl_Segment segment{p, q};
  gsl_Segment crossing{gsl_Point(p, q), r};
  gsl_Segment apart{r, gsl_Point(0.0, 0.0, 40.0)};
  gsl_Segment tiny{p, p};
  gsl_Matrix turn;
  gsl_Point out;
  gsl_Segment connection;
  double number = 0.0;
  double weights[3] = {};

  Things() { turn.AxisRotation(q, v, 0.7); }
};

} // namespace

TEST(Allocation, TheCounterSeesTheHeap) {
  const long before = AllocationCount();
  const std::vector<double> heap(100, 1.0);
  EXPECT_GT(AllocationCount(), before);
  Use(heap[7]);
  const long second = AllocationCount();
  gsl_StLine line;
  const gsl_StLine* const copy = line.Copy();
  EXPECT_GT(AllocationCount(), second) << "also what the library itself allocates";
  delete copy;
}

TEST(Allocation, ComparisonsAndRoundingAllocateNothing) {
  const double a[3] = {1.0, 2.0, 3.0};
  ExpectNoAllocation("comparison", [&] {
    Use(gsl_RealEqual(1.0, 2.0, 1e-6) + gsl_RealRelEqual(1.0, 2.0, 1e-6) +
        gsl_RealArrEqual(3, a, a, 1e-6) + RealArrRelEqual(3, a, a, 1e-6) +
        gsl_RealEqualDig(1.25, 1.3, 2) + (gsl_Interval{1.0, 2.0} == gsl_Interval{1.0, 2.0}));
    Use(gsl_RoundFloat(1234.5, 2) + gsl_Truncate(-1.25, 1) + IntegerPower(1.1, 13) +
        SinglePrecisionPower(1.1, 13) + gsl_Interval{1.0, 2.0}.Interpolate(0.5));
  });
}

TEST(Allocation, VectorsAllocateNothing) {
  Things t;
  ExpectNoAllocation("vector", [&] {
    for (const gsl_Vector& v : {t.v, t.w, t.none}) {
      gsl_Vector n(v);
      Use(n.Normalize() + v.IsOn(t.w) + v.IsOrthogonal(t.w) + v.SameDirection(t.w, 1e-6) +
          v.IsParallel(t.w, 1e-6) + (v == t.w) + (v != t.w));
      Use(v.NormalizedCopy().x + v.AnyOrthogonalUnit().x + v.BestAlignedOrthogonalUnit().x +
          v.ProjectOn(t.plane).x + v.ProjectOn(t.noPlane).x);
      Use(v.AngleBetween(t.v, t.w, t.number));
      Use(v.AngleWith(t.w, false) + v.AngleWith(t.w, true, t.v));
      n.RotateAndTransform(t.turn);
      Use(gsl_Vector(t.p, t.q).x + gsl_Vector(t.p, t.q, t.r).x);
    }
  });
}

TEST(Allocation, PointsAllocateNothing) {
  Things t;
  ExpectNoAllocation("point", [&] {
    gsl_Point p(t.p);
    Use((p == t.q) + (p > t.q) + (p >= t.q) + p.IsOn(t.q) + p.IsOn(t.line) + p.IsOn(t.plane));
    Use(p.GetDistance(t.q) + p.GetDistance(t.line) + p.GetSignedDistance(t.plane) +
        p.GetDistance(t.plane) + p.GetDistance(t.plane, t.v));
    for (const gsl_Segment* s : {&t.segment, &t.apart, &t.tiny}) {
      Use(p.GetDistance(*s, t.out));
      Use(p.ProjectOn(*s, t.out, t.number) + p.ProjectOn(*s, 0.1, t.out, t.number));
    }
    Use(p.GetDistance(t.p, t.q, t.r) + gsl_Point(9.0, 9.0, 9.0).GetDistance(t.p, t.q, t.r));
    Use(p.ProjectOn(t.line, t.number).x + p.ProjectOn(t.plane).x);
    Use(p.ProjectOn(t.p, t.q, t.r, t.out, t.weights));
    Use(p.RayIntersect(t.q, t.r, t.v, t.out, t.weights));
    Use(t.r.RayIntersect(t.p, t.q, gsl_Vector(t.r, gsl_Point(t.p, t.q)), t.out, t.weights));
    Use(p.RayIntersect(t.v, t.plane, t.out) + p.RayIntersect(t.v, t.noPlane, t.out) +
        t.r.RayIntersect(t.v, t.plane, t.out));
    Use((p + t.v).x + (p - t.v).x + gsl_Point(t.p, t.q).x + gsl_Point(t.p, 0.5, t.q, 2.0).x);
    p.Transform(t.turn);
  });
}

TEST(Allocation, TransformsAllocateNothing) {
  Things t;
  ExpectNoAllocation("matrix", [&] {
    gsl_Matrix m(t.turn);
    m.Concatenate(t.turn);
    Use(m.IsIdentity() + (m == t.turn) + m.InverseRigidTransform().IsIdentity());
    m.GetRotationAngles(t.weights[0], t.weights[1], t.weights[2]);
    gsl_Vector axis;
    m.GetAxisRotation(t.out, axis, t.number);
    m.AxisRotation(t.p, t.v, 0.3);
    m.SetRotationVectors(t.v, t.w, t.none);
    m.SetTranslation(t.v);
    m.GetTranslation(axis);
    Use(m.NewOrigin().x + m.NewXAxis().x);
  });
}

TEST(Allocation, LinesPlanesAndSegmentsAllocateNothing) {
  Things t;
  ExpectNoAllocation("line", [&] {
    Use(t.line.Intersect(t.other, t.out, t.number) + t.line.Intersect(t.skew, t.out, t.number) +
        t.line.Intersect(t.line, t.out, t.number) + t.line.Intersect(t.plane, t.out));
    Use(lineSkewDistance(t.line, t.skew) + linesAreSkew(t.line, t.skew) +
        linesCoincident(t.line, t.line) + lineParallelToPlane(t.line, t.plane) +
        lineLiesInPlane(t.line, t.plane) + distanceToParallelPlane(t.line, t.plane));
    Use(planesParallel(t.plane, t.plane) + planesCoincident(t.plane, t.noPlane) +
        distanceBetweenParallelPlanes(t.plane, t.plane));
    // An entity is constructed: its list of parents is empty.
    Use(gsl_StLine(t.p, t.q).Direction().x + gsl_Plane(t.p, t.v).Direction().x);
  });
  ExpectNoAllocation("segment", [&] {
    Use(t.segment.Intersect(t.line, t.out));
    for (const gsl_Segment* s : {&t.crossing, &t.apart, &t.tiny, &t.segment}) {
      Use(t.segment.Intersect(*s, t.out));
      t.segment.GetDistance(*s, t.connection);
      Use(t.connection.Length());
    }
  });
}

TEST(Allocation, TheTriangleSweepAllocatesNothing) {
  const gsl_Point a[3] = {{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {0.0, 2.0, 0.0}};
  const bool twoSided[2] = {true, true};
  ExpectNoAllocation("sweep", [&] {
    // The pairs are face over face, edge-on over face, face over edge-on, both edge-on, and out of
    // reach.
    const gsl_Vector directions[] = {{0.0, 0.0, 1.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, -1.0}};
    const gsl_Point obstacles[][3] = {{{0.5, 0.5, 1.0}, {2.5, 0.5, 1.0}, {0.5, 2.5, 1.2}},
                                      {{0.5, 0.5, 1.0}, {0.5, 1.5, 1.0}, {0.5, 1.0, 3.0}},
                                      {{0.5, 5.0, 0.0}, {1.5, 5.0, 0.0}, {1.0, 6.0, 0.0}}};
    for (const gsl_Vector& d : directions) {
      for (const auto& b : obstacles) {
        gsl_Point contacts[2];
        double distance = 1e10;
        Use(gsl_TriTriMinDirectionalDist(d, a[0], a[1], a[2], b[0], b[1], b[2], twoSided, 0.0,
                                         contacts, distance));
        Use(distance);
      }
    }
  });
}
