// Measures lines, planes, segments and the triangle sweep. The peer of the sweep is the
// step-by-step algorithm on the public classes. The peers of lines and planes are Eigen, glm and
// Bullet, and the documented steps on bare numbers.

#include "EigenResults.h"
#include "EntityTranscription.h"
#include "FreshData.h"
#include "SmallPeers.h"
#include "TriTriTranscription.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_TriTriMinDirectionalDist.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace fresh_data;

gsl_StLine AnyLine(Numbers& n) {
  const LineInput line = AnyLineInput(n);
  return {line.on, line.direction};
}

/// Returns a line of the plane z = 0, which crosses nearly every other line.
gsl_StLine AnyFlatLine(Numbers& n) {
  return {gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0),
          gsl_Vector(n.In(-1.0, 1.0), n.In(-1.0, 1.0), 0.0)};
}

gsl_Segment AnyFlatSegment(Numbers& n) {
  return {gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0),
          gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0)};
}

void RegisterLines() {
  AddBranchingRow("LineLineCrossing", [](benchmark::State& s) {
    gsl_Point out;
    double gap = 0.0;
    OnPairs(s, Corpus<gsl_StLine>(2, AnyFlatLine),
            [&](const gsl_StLine& a, const gsl_StLine& b) { return a.Intersect(b, out, gap); });
  });
  AddRow("LineLineSkew/ours", [](benchmark::State& s) {
    gsl_Point out;
    double gap = 0.0;
    OnPairs(s, Corpus<gsl_StLine>(3, AnyLine),
            [&](const gsl_StLine& a, const gsl_StLine& b) { return a.Intersect(b, out, gap); });
  });
}

using EigenLine = Eigen::ParametrizedLine<double, 3>;

Eigen::Vector3d Plain(const gsl_Point& p) {
  return {p.x, p.y, p.z};
}

EigenLine PlainLine(const gsl_StLine& line) {
  const gsl_Vector& d = line.Direction();
  return {Plain(line.PointOn()), Eigen::Vector3d(d.x, d.y, d.z)};
}

/// Crosses two lines that are neither parallel nor skew, with the usual formula.
bool EigenCrossing(const EigenLine& a, const EigenLine& b, Eigen::Vector3d& out, double& gap) {
  const Eigen::Vector3d n = a.direction().cross(b.direction()), w = b.origin() - a.origin();
  const double nn = n.squaredNorm(), skew = w.dot(n);
  if (skew * skew > 1e-12 * nn || nn < 1e-10) return false;
  const double s = w.cross(b.direction()).dot(n) / nn, t = w.cross(a.direction()).dot(n) / nn;
  out = a.origin() + s * a.direction();
  gap = (out - (b.origin() + t * b.direction())).norm();
  return true;
}

void RegisterLinePeers() {
  const auto add = [](const char* name, gsl_StLine (*make)(Numbers&), std::uint64_t seed) {
    AddRow(name, [make, seed](benchmark::State& s) {
      Eigen::Vector3d out;
      double gap = 0.0;
      OnPairs(s, Corpus<EigenLine>(seed, [make](Numbers& n) { return PlainLine(make(n)); }),
              [&](const EigenLine& a, const EigenLine& b) {
                const bool crosses = EigenCrossing(a, b, out, gap);
                benchmark::DoNotOptimize(out);
                benchmark::DoNotOptimize(gap);
                return crosses;
              });
    });
  };
  add("LineLineCrossing/Eigen", AnyFlatLine, 2);
  add("LineLineSkew/Eigen", AnyLine, 3);
}

namespace tr = transcription;

tr::Pt Bare(const gsl_Point& p) {
  return {p.x, p.y, p.z, 0};
}

tr::Vec Bare(const gsl_Vector& v) {
  return {v.x, v.y, v.z, v.magnitude};
}

tr::StLine BareLine(const LineInput& line) {
  return {Bare(line.on), Bare(line.direction)};
}

EigenLine PlainLine(const LineInput& line) {
  const gsl_Vector& d = line.direction;
  return {Plain(line.on), Eigen::Vector3d(d.x, d.y, d.z)};
}

/// A compiler that sees the plane would compute its part of the work once.
template <class Plane>
Plane Unseen(Plane plane) {
  benchmark::DoNotOptimize(plane);
  return plane;
}

Eigen::Hyperplane<double, 3> EigenPlane() {
  const gsl_Vector n = PlaneNormal();
  return {Eigen::Vector3d(n.x, n.y, n.z), Plain(PlanePoint())};
}

void RegisterLinePlane() {
  AddRow("LinePlaneIntersection/ours", [](benchmark::State& s) {
    const gsl_Plane plane(PlanePoint(), PlaneNormal());
    gsl_Point out;
    OnEach(s, Corpus<gsl_StLine>(1, AnyLine),
           [&](const gsl_StLine& a) { return a.Intersect(plane, out) ? out.x : 0.0; });
  });
  AddRow("LinePlaneIntersection/steps", [](benchmark::State& s) {
    const tr::Plane plane = Unseen(tr::Plane{Bare(PlanePoint()), Bare(PlaneNormal())});
    const tr::Tolerances tolerances = Unseen(tr::Tolerances{1e-6, 1e-12, 1e-10});
    const auto any = [](Numbers& n) { return BareLine(AnyLineInput(n)); };
    tr::Pt out = {};
    OnEach(s, Corpus<tr::StLine>(1, any), [&](const tr::StLine& a) {
      const bool crosses = tr::RayIntersect(a.point, a.direction, plane, out, tolerances);
      benchmark::DoNotOptimize(out);
      return crosses ? out.x : 0.0;
    });
  });
  AddRow("LinePlaneIntersection/Eigen", [](benchmark::State& s) {
    const Eigen::Hyperplane<double, 3> plane = Unseen(EigenPlane());
    const auto any = [](Numbers& n) { return PlainLine(AnyLineInput(n)); };
    OnEach(s, Corpus<EigenLine>(1, any),
           [&](const EigenLine& a) { return Eigen::Vector3d(a.intersectionPoint(plane)).x(); });
  });
}

/// A point beside a line.
template <class Point, class Line>
struct PointAndLine {
  Point p;
  Line line;
};

void RegisterPointLine() {
  AddRow("PointLineDistance/ours", [](benchmark::State& s) {
    using In = PointAndLine<gsl_Point, gsl_StLine>;
    const auto any = [](Numbers& n) {
      const PointAndLineInput in = AnyPointAndLineInput(n);
      return In{in.p, gsl_StLine(in.line.on, in.line.direction)};
    };
    OnEach(s, Corpus<In>(8, any), [](const In& in) { return in.p.GetDistance(in.line); });
  });
  AddRow("PointLineDistance/bare", [](benchmark::State& s) {
    using In = PointAndLine<tr::Pt, tr::StLine>;
    const auto any = [](Numbers& n) {
      const PointAndLineInput in = AnyPointAndLineInput(n);
      return In{Bare(in.p), BareLine(in.line)};
    };
    OnEach(s, Corpus<In>(8, any), [](const In& in) { return tr::Distance(in.p, in.line); });
  });
  AddRow("PointLineDistance/Eigen", [](benchmark::State& s) {
    using In = PointAndLine<Eigen::Vector3d, EigenLine>;
    const auto any = [](Numbers& n) {
      const PointAndLineInput in = AnyPointAndLineInput(n);
      return In{Plain(in.p), PlainLine(in.line)};
    };
    // The direction has any length, as ours has.
    OnEach(s, Corpus<In>(8, any), [](const In& in) {
      const Eigen::Vector3d& d = in.line.direction();
      const Eigen::Vector3d way = in.p - in.line.origin();
      return way.cross(d).norm() / d.norm();
    });
  });
}

void RegisterPointPlane() {
  const auto any = [](Numbers& n) { return n.Point(5.0); };
  AddRow("PointPlaneDistance/ours", [any](benchmark::State& s) {
    const gsl_Plane plane(PlanePoint(), PlaneNormal());
    OnEach(s, Corpus<gsl_Point>(9, any), [&](const gsl_Point& p) { return p.GetDistance(plane); });
  });
  AddRow("PointPlaneDistance/bare", [any](benchmark::State& s) {
    const tr::Plane plane = Unseen(tr::Plane{Bare(PlanePoint()), Bare(PlaneNormal())});
    OnEach(s, Corpus<tr::Pt>(9, [any](Numbers& n) { return Bare(any(n)); }),
           [&](const tr::Pt& p) { return tr::Distance(p, plane); });
  });
  AddRow("PointPlaneDistance/Eigen", [any](benchmark::State& s) {
    const Eigen::Hyperplane<double, 3> plane = Unseen(EigenPlane());
    OnEach(s, Corpus<Eigen::Vector3d>(9, [any](Numbers& n) { return Plain(any(n)); }),
           [&](const Eigen::Vector3d& p) { return plane.absDistance(p); });
  });
}

void RegisterSegments() {
  AddRow("SegmentSegmentIntersection", [](benchmark::State& s) {
    gsl_Point out;
    OnPairs(s, Corpus<gsl_Segment>(4, AnyFlatSegment),
            [&](const gsl_Segment& a, const gsl_Segment& b) { return a.Intersect(b, out); });
  });
  AddRow("SegmentSegmentDistanceInPlane", [](benchmark::State& s) {
    gsl_Segment connection;
    OnPairs(s, Corpus<gsl_Segment>(6, AnyFlatSegment),
            [&](const gsl_Segment& a, const gsl_Segment& b) {
              a.GetDistance(b, connection);
              return connection.Length();
            });
  });
}

struct Pair {
  gsl_Vector direction = gsl_Vector(0.0, 0.0, 1.0);
  gsl_Point a[3];
  gsl_Point b[3];
  bool twoSided[2] = {true, true};
  double reach = std::numeric_limits<double>::infinity();
};

/// A is across Z near the origin, and B is `ahead` of A.
Pair AnyPair(Numbers& n, double ahead) {
  Pair pair;
  for (int i = 0; i < 3; ++i) {
    pair.a[i] = n.Point(1.0);
    pair.b[i] = n.Point(1.0) + gsl_Vector(0.0, 0.0, ahead);
  }
  return pair;
}

/// The extents along the direction reject this pair.
Pair FarPair(Numbers& n) {
  Pair pair = AnyPair(n, 50.0);
  pair.reach = 1.0;
  return pair;
}

/// The slabs overlap along the direction, and the shadows are far aside.
Pair ApartPair(Numbers& n) {
  Pair pair = AnyPair(n, 4.0);
  for (gsl_Point& p : pair.b)
    p.x += 10.0;
  return pair;
}

/// Half of the triangles face the wrong way, as in a sweep of closed surfaces.
Pair OneSidedPair(Numbers& n) {
  Pair pair = AnyPair(n, 4.0);
  pair.twoSided[0] = pair.twoSided[1] = false;
  return pair;
}

/// No pair is refused or rejected.
Pair NearPair(Numbers& n) {
  return AnyPair(n, 4.0);
}

Pair EdgeOnPair(Numbers& n) {
  Pair pair = AnyPair(n, 4.0);
  for (gsl_Point& p : pair.a)
    p.y = 0.0;
  return pair;
}

Pair CoplanarPair(Numbers& n) {
  Pair pair = EdgeOnPair(n);
  for (gsl_Point& p : pair.b)
    p.y = 0.0;
  return pair;
}

template <class Sweep>
void OnSweeps(benchmark::State& state, Pair (*make)(Numbers&), Sweep sweep) {
  const std::vector<Pair> pairs = Corpus<Pair>(7, make);
  gsl_Point contacts[2];
  OnPairs(state, pairs, [&](const Pair& p, const Pair&) {
    double distance = p.reach;
    benchmark::DoNotOptimize(sweep(p.direction, p.a[0], p.a[1], p.a[2], p.b[0], p.b[1], p.b[2],
                                   p.twoSided, 0.0, contacts, distance));
    return distance;
  });
}

void RegisterSweep(const std::string& name, Pair (*make)(Numbers&)) {
  AddBranchingRow(name,
                  [make](benchmark::State& s) { OnSweeps(s, make, gsl_TriTriMinDirectionalDist); });
  AddRow(name + "/transcription", [make](benchmark::State& s) {
    OnSweeps(s, make, [](auto&&... arguments) {
      return transcription::TriTriMinDirectionalDist(arguments...);
    });
  });
}

/// Two segments of the plane z = 0, which are across the direction and face each other.
struct FlatPair {
  gsl_Vector direction = gsl_Vector(1.0, 0.0, 0.0);
  gsl_Point a[2], b[2];
};

/// B is ahead of A, and `aside` of it.
FlatPair AnyFlatPair(Numbers& n, double aside) {
  FlatPair pair;
  for (int i = 0; i < 2; ++i) {
    const double y = i == 0 ? -4.0 : 4.0;
    const double ax = n.In(-1.0, 1.0);
    const double ay = n.In(-1.0, 1.0);
    const double bx = n.In(4.0, 6.0);
    const double by = n.In(-1.0, 1.0);
    pair.a[i] = gsl_Point(ax, y + ay, 0.0);
    pair.b[i] = gsl_Point(bx, aside - y + by, 0.0);
  }
  return pair;
}

template <class Sweep>
void OnFlatSweeps(benchmark::State& state, double aside, Sweep sweep) {
  const std::vector<FlatPair> pairs =
      Corpus<FlatPair>(10, [aside](Numbers& n) { return AnyFlatPair(n, aside); });
  constexpr bool kBothSides[2] = {true, true};
  gsl_Point contacts[2];
  OnEach(state, pairs, [&](const FlatPair& p) {
    double distance = std::numeric_limits<double>::infinity();
    benchmark::DoNotOptimize(
        sweep(p.direction, p.a[0], p.a[1], p.b[0], p.b[1], kBothSides, 0.0, contacts, distance));
    return distance;
  });
}

void RegisterInPlane(const std::string& name, double aside) {
  AddBranchingRow(name, [aside](benchmark::State& s) {
    OnFlatSweeps(s, aside, gsl_InPlaneSegSegMinDirectionalDist);
  });
}

const bool registered = [] {
  RegisterLines();
  RegisterLinePeers();
  RegisterLinePlane();
  RegisterPointLine();
  RegisterPointPlane();
  RegisterLinesOfGlm();
  RegisterLinesOfBullet();
  RegisterSegments();
  RegisterInPlane("InPlaneOverlapping", 0.0);
  RegisterInPlane("InPlaneAside", 20.0);
  RegisterSweep("SweepOutOfReach", FarPair);
  RegisterSweep("SweepApart", ApartPair);
  RegisterSweep("SweepOneSided", OneSidedPair);
  RegisterSweep("SweepEveryCandidate", NearPair);
  RegisterSweep("SweepEdgeOn", EdgeOnPair);
  RegisterSweep("SweepCoplanar", CoplanarPair);
  return true;
}();

} // namespace
