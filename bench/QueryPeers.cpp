// CGAL is compiled with flags of its own, so it has a source file of its own.

#include "QueryPeers.h"

#if defined(BENCH_CGAL)

#include "FreshData.h"

#include <CGAL/Segment_3.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Triangle_3.h>
#include <CGAL/squared_distance_3.h>

#include <cmath>

namespace {

using namespace fresh_data;
using Kernel = CGAL::Simple_cartesian<double>;

Kernel::Point_3 AnyPoint(Numbers& n) {
  const gsl_Point p = n.Point(5.0);
  return {p.x, p.y, p.z};
}

Kernel::Segment_3 AnySegment(Numbers& n) {
  const Kernel::Point_3 p = AnyPoint(n);
  return {p, AnyPoint(n)};
}

struct PointAndTriangle {
  Kernel::Point_3 p;
  Kernel::Triangle_3 triangle;
};

PointAndTriangle AnyPointAndTriangle(Numbers& n) {
  const Kernel::Point_3 p = AnyPoint(n);
  const Kernel::Point_3 a = AnyPoint(n);
  const Kernel::Point_3 b = AnyPoint(n);
  return {p, {a, b, AnyPoint(n)}};
}

struct PointAndSegment {
  Kernel::Point_3 p;
  Kernel::Segment_3 segment;
};

PointAndSegment AnyPointAndSegment(Numbers& n) {
  const Kernel::Point_3 p = AnyPoint(n);
  return {p, AnySegment(n)};
}

struct Segments {
  Kernel::Segment_3 a, b;
};

Segments AnySegments(Numbers& n) {
  const Kernel::Segment_3 a = AnySegment(n);
  return {a, AnySegment(n)};
}

} // namespace

void RegisterQueriesOfCgal() {
  AddRow("PointTriangleDistance/CGAL", [](benchmark::State& s) {
    OnEach(s, Corpus<PointAndTriangle>(1, AnyPointAndTriangle), [](const PointAndTriangle& in) {
      return std::sqrt(CGAL::squared_distance(in.p, in.triangle));
    });
  });
  AddRow("PointSegmentDistance/CGAL", [](benchmark::State& s) {
    OnEach(s, Corpus<PointAndSegment>(2, AnyPointAndSegment), [](const PointAndSegment& in) {
      return std::sqrt(CGAL::squared_distance(in.p, in.segment));
    });
  });
  AddRow("SegmentSegmentDistance/CGAL", [](benchmark::State& s) {
    OnEach(s, Corpus<Segments>(3, AnySegments),
           [](const Segments& in) { return std::sqrt(CGAL::squared_distance(in.a, in.b)); });
  });
}

#else

void RegisterQueriesOfCgal() {}

#endif
