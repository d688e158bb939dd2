// Measures distances and comparisons beside other libraries, and beside the documented steps on
// bare numbers. Eigen has no distance of a triangle or a segment; its rows are the usual tests of
// the regions of the nearest point, written with Eigen.

#include "EigenResults.h"
#include "EntityTranscription.h"
#include "FreshData.h"
#include "QueryPeers.h"
#include "SmallPeers.h"
#include "gsl_Matrix.h"
#include "gsl_Segment.h"
#include "gsl_utils.h"

#include <Eigen/Geometry>

#include <array>
#include <string>

#if defined(BENCH_FCL)
#include <fcl/narrowphase/detail/primitive_shape_algorithm/triangle_distance.h>
#endif

namespace {

using namespace fresh_data;
using Eigen::Vector3d;

const transcription::Tolerances kTolerances = {1e-6, 1e-12, 1e-10};

template <std::size_t Size>
std::vector<std::array<Vector3d, Size>> EigenCorpus(std::uint64_t seed) {
  return PeerCorpus<Vector3d, Size>(seed,
                                    [](const gsl_Point& p) { return Vector3d(p.x, p.y, p.z); });
}

template <std::size_t Size>
std::vector<std::array<transcription::Pt, Size>> PlainCorpus(std::uint64_t seed) {
  return PeerCorpus<transcription::Pt, Size>(seed, [](const gsl_Point& p) {
    return transcription::Pt{p.x, p.y, p.z, 0};
  });
}

double Clamped(double t) {
  return std::min(std::max(t, 0.0), 1.0);
}

double SegmentDistance(const Vector3d& p, const Vector3d& a, const Vector3d& b, Vector3d& closest) {
  const Vector3d ab = b - a;
  closest = a + Clamped((p - a).dot(ab) / ab.squaredNorm()) * ab;
  return (p - closest).norm();
}

/// Returns the distance to a triangle, by the region of the nearest point: C. Ericson, Real-Time
/// Collision Detection (2005), 5.1.5.
double TriangleDistance(const Vector3d& p, const Vector3d& a, const Vector3d& b,
                        const Vector3d& c) {
  const Vector3d ab = b - a, ac = c - a, ap = p - a;
  const double d1 = ab.dot(ap), d2 = ac.dot(ap);
  if (d1 <= 0.0 && d2 <= 0.0) return ap.norm();
  const Vector3d bp = p - b;
  const double d3 = ab.dot(bp), d4 = ac.dot(bp);
  if (d3 >= 0.0 && d4 <= d3) return bp.norm();
  const double vc = d1 * d4 - d3 * d2;
  if (vc <= 0.0 && d1 >= 0.0 && d3 <= 0.0) return (ap - d1 / (d1 - d3) * ab).norm();
  const Vector3d cp = p - c;
  const double d5 = ab.dot(cp), d6 = ac.dot(cp);
  if (d6 >= 0.0 && d5 <= d6) return cp.norm();
  const double vb = d5 * d2 - d1 * d6;
  if (vb <= 0.0 && d2 >= 0.0 && d6 <= 0.0) return (ap - d2 / (d2 - d6) * ac).norm();
  const double va = d3 * d6 - d5 * d4;
  if (va <= 0.0 && d4 - d3 >= 0.0 && d5 - d6 >= 0.0) {
    return (bp - (d4 - d3) / ((d4 - d3) + (d5 - d6)) * (c - b)).norm();
  }
  const double denominator = 1.0 / (va + vb + vc);
  return (ap - ab * (vb * denominator) - ac * (vc * denominator)).norm();
}

/// Returns the distance of two segments: C. Ericson, Real-Time Collision Detection (2005), 5.1.9.
double SegmentsDistance(const Vector3d& p1, const Vector3d& q1, const Vector3d& p2,
                        const Vector3d& q2, Vector3d& onFirst, Vector3d& onSecond) {
  const Vector3d d1 = q1 - p1, d2 = q2 - p2, r = p1 - p2;
  const double a = d1.squaredNorm(), e = d2.squaredNorm(), f = d2.dot(r);
  const double c = d1.dot(r), b = d1.dot(d2);
  const double denominator = a * e - b * b;
  double s = denominator != 0.0 ? Clamped((b * f - c * e) / denominator) : 0.0;
  double t = (b * s + f) / e;
  if (t < 0.0) {
    t = 0.0;
    s = Clamped(-c / a);
  } else if (t > 1.0) {
    t = 1.0;
    s = Clamped((b - c) / a);
  }
  onFirst = p1 + s * d1;
  onSecond = p2 + t * d2;
  return (onFirst - onSecond).norm();
}

void RegisterTriangles() {
  AddBranchingRow("PointTriangleDistance", [](benchmark::State& s) {
    OnEach(s, Corpus<Points<4>>(1, AnyPoints<4>),
           [](const Points<4>& p) { return p[0].GetDistance(p[1], p[2], p[3]); });
  });
  AddRow("PointTriangleDistance/Eigen", [](benchmark::State& s) {
    OnEach(s, EigenCorpus<4>(1), [](const std::array<Vector3d, 4>& p) {
      return TriangleDistance(p[0], p[1], p[2], p[3]);
    });
  });
  AddRow("PointTriangleDistance/steps", [](benchmark::State& s) {
    OnEach(s, PlainCorpus<4>(1), [](const std::array<transcription::Pt, 4>& p) {
      return transcription::Distance(p[0], p[1], p[2], p[3], kTolerances);
    });
  });
}

/// A point and a segment, or two segments.
struct PointAndSegment {
  gsl_Point p;
  gsl_Segment segment;
};

PointAndSegment AnyPointAndSegment(Numbers& n) {
  const Points<3> p = AnyPoints<3>(n);
  return {p[0], gsl_Segment(p[1], p[2])};
}

struct Segments {
  gsl_Segment a, b;
};

Segments AnySegments(Numbers& n) {
  const Points<4> p = AnyPoints<4>(n);
  return {gsl_Segment(p[0], p[1]), gsl_Segment(p[2], p[3])};
}

void RegisterPointSegment() {
  AddBranchingRow("PointSegmentDistance", [](benchmark::State& s) {
    gsl_Point closest;
    OnEach(s, Corpus<PointAndSegment>(2, AnyPointAndSegment),
           [&](const PointAndSegment& in) { return in.p.GetDistance(in.segment, closest); });
  });
  AddRow("PointSegmentDistance/Eigen", [](benchmark::State& s) {
    Vector3d closest;
    OnEach(s, EigenCorpus<3>(2), [&](const std::array<Vector3d, 3>& p) {
      const double distance = SegmentDistance(p[0], p[1], p[2], closest);
      benchmark::DoNotOptimize(closest);
      return distance;
    });
  });
  AddRow("PointSegmentDistance/steps", [](benchmark::State& s) {
    OnEach(s, PlainCorpus<3>(2), [](const std::array<transcription::Pt, 3>& p) {
      transcription::Pt closest = {};
      const double distance =
          transcription::Distance(p[0], transcription::Segment{p[1], p[2]}, closest, kTolerances);
      benchmark::DoNotOptimize(closest);
      return distance;
    });
  });
}

void RegisterSegments() {
  AddBranchingRow("SegmentSegmentDistance", [](benchmark::State& s) {
    gsl_Segment connection;
    OnEach(s, Corpus<Segments>(3, AnySegments), [&](const Segments& in) {
      in.a.GetDistance(in.b, connection);
      return connection.Length();
    });
  });
  AddRow("SegmentSegmentDistance/Eigen", [](benchmark::State& s) {
    Vector3d x, y;
    OnEach(s, EigenCorpus<4>(3), [&](const std::array<Vector3d, 4>& p) {
      const double distance = SegmentsDistance(p[0], p[1], p[2], p[3], x, y);
      benchmark::DoNotOptimize(x);
      benchmark::DoNotOptimize(y);
      return distance;
    });
  });
  AddRow("SegmentSegmentDistance/steps", [](benchmark::State& s) {
    OnEach(s, PlainCorpus<4>(3), [](const std::array<transcription::Pt, 4>& p) {
      transcription::Segment connection = {};
      transcription::ShortestConnection({p[0], p[1]}, {p[2], p[3]}, connection, kTolerances);
      benchmark::DoNotOptimize(connection);
      return transcription::Distance(connection.point1, connection.point2);
    });
  });
#if defined(BENCH_FCL)
  AddRow("SegmentSegmentDistance/FCL", [](benchmark::State& s) {
    OnEach(s, EigenCorpus<4>(3), [](const std::array<Vector3d, 4>& p) {
      Vector3d v, x, y;
      fcl::detail::TriangleDistance<double>::segPoints(p[0], p[1] - p[0], p[2], p[3] - p[2], v, x,
                                                       y);
      benchmark::DoNotOptimize(x);
      benchmark::DoNotOptimize(y);
      return (x - y).norm();
    });
  });
#endif
}

void RegisterComparisons() {
  AddBranchingRow("IsParallel", [](benchmark::State& s) {
    const auto vectors = Corpus<gsl_Vector>(4, [](Numbers& n) { return n.Vector(1.0); });
    OnPairs(s, vectors,
            [](const gsl_Vector& a, const gsl_Vector& b) { return a.IsParallel(b, 1e-5); });
  });
  AddRow("IsParallel/steps", [](benchmark::State& s) {
    using transcription::Vec;
    const auto vectors = Corpus<Vec>(4, [](Numbers& n) {
      const gsl_Vector v = n.Vector(1.0);
      return Vec{v.x, v.y, v.z, v.magnitude};
    });
    OnPairs(s, vectors,
            [](const Vec& a, const Vec& b) { return transcription::IsParallel(a, b, 1e-5); });
  });
  AddBranchingRow("RealEqual", [](benchmark::State& s) {
    const auto numbers = Corpus<double>(5, [](Numbers& n) { return n.In(-1.0, 1.0); });
    OnPairs(s, numbers, [](double a, double b) { return gsl_RealEqual(a, b, 0.7); });
  });
  AddRow("RealEqual/steps", [](benchmark::State& s) {
    const auto numbers = Corpus<double>(5, [](Numbers& n) { return n.In(-1.0, 1.0); });
    OnPairs(s, numbers, [](double a, double b) { return transcription::RealEqual(a, b, 0.7); });
  });
}

void RegisterRotations() {
  AddRow("RotationAboutAxis/ours", [](benchmark::State& s) {
    gsl_Matrix m;
    OnEach(s, Corpus<Turn>(6, AnyTurn), [&](const Turn& turn) -> const gsl_Matrix& {
      m.AxisRotation(turn.p, turn.axis, turn.angle);
      return m;
    });
  });
  AddRow("RotationAboutAxis/Eigen", [](benchmark::State& s) {
    OnEach(s, Corpus<Turn>(6, AnyTurn), [](const Turn& turn) {
      const Vector3d p(turn.p.x, turn.p.y, turn.p.z);
      const Vector3d axis(turn.axis.x, turn.axis.y, turn.axis.z);
      return Eigen::Isometry3d(Eigen::Translation3d(p) *
                               Eigen::AngleAxisd(turn.angle, axis.normalized()) *
                               Eigen::Translation3d(-p));
    });
  });
}

const bool registered = [] {
  RegisterTriangles();
  RegisterPointSegment();
  RegisterSegments();
  RegisterComparisons();
  RegisterRotations();
  RegisterQueriesOfCgal();
  RegisterQueriesOfGlm();
  RegisterQueriesOfBullet();
  return true;
}();

} // namespace
