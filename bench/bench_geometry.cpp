// Measures lines, planes, segments and the triangle sweep. The peer of the sweep is the
// step-by-step algorithm on the public classes. Eigen has the intersection of a line and a plane.

#include "FreshData.h"
#include "TriTriTranscription.h"
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
  benchmark::RegisterBenchmark("LineLineCrossing", [](benchmark::State& s) {
    gsl_Point out;
    double gap = 0.0;
    OnPairs(s, Corpus<gsl_StLine>(2, AnyFlatLine),
            [&](const gsl_StLine& a, const gsl_StLine& b) { return a.Intersect(b, out, gap); });
  });
  benchmark::RegisterBenchmark("LineLineSkew", [](benchmark::State& s) {
    gsl_Point out;
    double gap = 0.0;
    OnPairs(s, Corpus<gsl_StLine>(3, AnyLine),
            [&](const gsl_StLine& a, const gsl_StLine& b) { return a.Intersect(b, out, gap); });
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

const bool registered = [] {
  RegisterLines();
  RegisterSegments();
  RegisterSweep("SweepOutOfReach", FarPair);
  RegisterSweep("SweepOneSided", OneSidedPair);
  RegisterSweep("SweepEveryCandidate", NearPair);
  RegisterSweep("SweepEdgeOn", EdgeOnPair);
  RegisterSweep("SweepCoplanar", CoplanarPair);
  return true;
}();

} // namespace
