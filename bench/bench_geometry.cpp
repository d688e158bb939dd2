// Measures lines, planes, segments and the triangle sweep. The peer of the sweep is the
// step-by-step algorithm on the public classes. Eigen has the intersection of a line and a plane.

#include "FreshData.h"
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
  return {n.Point(5.0), n.Vector(1.0)};
}

/// Returns a line of the plane z = 0, which crosses nearly every other line.
gsl_StLine AnyFlatLine(Numbers& n) {
  return {gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0),
          gsl_Vector(n.In(-1.0, 1.0), n.In(-1.0, 1.0), 0.0)};
}

gsl_Segment AnySegment(Numbers& n) {
  return {n.Point(5.0), n.Point(5.0)};
}

gsl_Segment AnyFlatSegment(Numbers& n) {
  return {gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0),
          gsl_Point(n.In(-5.0, 5.0), n.In(-5.0, 5.0), 0.0)};
}

void RegisterLines() {
  benchmark::RegisterBenchmark("LinePlaneIntersection/ours", [](benchmark::State& s) {
    const gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.6, 0.0, 0.8));
    gsl_Point out;
    OnPairs(s, Corpus<gsl_StLine>(1, AnyLine), [&](const gsl_StLine& a, const gsl_StLine&) {
      return a.Intersect(plane, out) ? out.x : 0.0;
    });
  });
  benchmark::RegisterBenchmark("LinePlaneIntersection/Eigen", [](benchmark::State& s) {
    using Line = Eigen::ParametrizedLine<double, 3>;
    const Eigen::Hyperplane<double, 3> plane(Eigen::Vector3d(0.6, 0.0, 0.8),
                                             Eigen::Vector3d(1.0, 2.0, 3.0));
    const std::vector<Line> lines = Corpus<Line>(1, [](Numbers& n) {
      const gsl_Point p = n.Point(5.0);
      const gsl_Vector d = n.Vector(1.0);
      return Line(Eigen::Vector3d(p.x, p.y, p.z), Eigen::Vector3d(d.x, d.y, d.z));
    });
    OnPairs(s, lines, [&](const Line& a, const Line&) {
      return Eigen::Vector3d(a.intersectionPoint(plane)).x();
    });
  });
  benchmark::RegisterBenchmark("LineLineCrossing/ours", [](benchmark::State& s) {
    gsl_Point out;
    double gap = 0.0;
    OnPairs(s, Corpus<gsl_StLine>(2, AnyFlatLine),
            [&](const gsl_StLine& a, const gsl_StLine& b) { return a.Intersect(b, out, gap); });
  });
  benchmark::RegisterBenchmark("LineLineSkew/ours", [](benchmark::State& s) {
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
    benchmark::RegisterBenchmark(name, [make, seed](benchmark::State& s) {
      Eigen::Vector3d out;
      double gap = 0.0;
      OnPairs(
          s, Corpus<EigenLine>(seed, [make](Numbers& n) { return PlainLine(make(n)); }),
          [&](const EigenLine& a, const EigenLine& b) { return EigenCrossing(a, b, out, gap); });
    });
  };
  add("LineLineCrossing/Eigen", AnyFlatLine, 2);
  add("LineLineSkew/Eigen", AnyLine, 3);
}

/// A point beside a line and a plane of changing places.
struct PointAndLine {
  gsl_Point p;
  gsl_StLine line;
};

void RegisterDistances() {
  const auto any = [](Numbers& n) { return PointAndLine{n.Point(5.0), AnyLine(n)}; };
  benchmark::RegisterBenchmark("PointLineDistance/ours", [any](benchmark::State& s) {
    OnEach(s, Corpus<PointAndLine>(8, any),
           [](const PointAndLine& in) { return in.p.GetDistance(in.line); });
  });
  benchmark::RegisterBenchmark("PointLineDistance/Eigen", [any](benchmark::State& s) {
    struct In {
      Eigen::Vector3d p;
      EigenLine line;
    };
    const auto plain = [any](Numbers& n) {
      const PointAndLine in = any(n);
      return In{Plain(in.p), PlainLine(in.line)};
    };
    // The direction has any length, as ours has.
    OnEach(s, Corpus<In>(8, plain), [](const In& in) {
      const Eigen::Vector3d& d = in.line.direction();
      const Eigen::Vector3d way = in.p - in.line.origin();
      return way.cross(d).norm() / d.norm();
    });
  });
  benchmark::RegisterBenchmark("PointPlaneDistance/ours", [](benchmark::State& s) {
    const gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.6, 0.0, 0.8));
    OnEach(s, Corpus<gsl_Point>(9, [](Numbers& n) { return n.Point(5.0); }),
           [&](const gsl_Point& p) { return p.GetDistance(plane); });
  });
  benchmark::RegisterBenchmark("PointPlaneDistance/Eigen", [](benchmark::State& s) {
    const Eigen::Hyperplane<double, 3> plane(Eigen::Vector3d(0.6, 0.0, 0.8),
                                             Eigen::Vector3d(1.0, 2.0, 3.0));
    OnEach(s, Corpus<Eigen::Vector3d>(9, [](Numbers& n) { return Plain(n.Point(5.0)); }),
           [&](const Eigen::Vector3d& p) { return plane.absDistance(p); });
  });
}

void RegisterSegments() {
  benchmark::RegisterBenchmark("SegmentSegmentIntersection", [](benchmark::State& s) {
    gsl_Point out;
    OnPairs(s, Corpus<gsl_Segment>(4, AnyFlatSegment),
            [&](const gsl_Segment& a, const gsl_Segment& b) { return a.Intersect(b, out); });
  });
  benchmark::RegisterBenchmark("SegmentSegmentDistance", [](benchmark::State& s) {
    gsl_Segment connection;
    OnPairs(s, Corpus<gsl_Segment>(5, AnySegment), [&](const gsl_Segment& a, const gsl_Segment& b) {
      a.GetDistance(b, connection);
      return connection.Length();
    });
  });
  benchmark::RegisterBenchmark("SegmentSegmentDistanceInPlane", [](benchmark::State& s) {
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
  benchmark::RegisterBenchmark((name + "/ours").c_str(), [make](benchmark::State& s) {
    OnSweeps(s, make, gsl_TriTriMinDirectionalDist);
  });
  benchmark::RegisterBenchmark((name + "/transcription").c_str(), [make](benchmark::State& s) {
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
  benchmark::RegisterBenchmark((name + "/ours").c_str(), [aside](benchmark::State& s) {
    OnFlatSweeps(s, aside, gsl_InPlaneSegSegMinDirectionalDist);
  });
}

const bool registered = [] {
  RegisterLines();
  RegisterLinePeers();
  RegisterDistances();
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
