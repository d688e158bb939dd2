#include "gsl_Segment.h"

#include "gsl_EntityPredicates.h"
#include "gsl_FromCoordinates.h"
#include "gsl_Settings.h"
#include "kernel/SegmentPair.h"

using gsl_kernel::Coord3;
using gsl_kernel::SegmentCrossing;

namespace {

gsl_kernel::Segment SegmentOf(const gsl_Segment& s) {
  return {s.Point1().Coords(), s.Point2().Coords()};
}

/// Writes the result of a crossing test to `out`. Returns true for a crossing within the segment.
bool Accept(SegmentCrossing where, const Coord3& found, gsl_Point& out) {
  if (where == SegmentCrossing::Missed) return false;
  AcceptComputed(out, found);
  return where == SegmentCrossing::Crossing;
}

/// Finds the connection of two skew segments whose images along the common normal cross. Moves the
/// first segment along this normal into the plane of the other segment.
bool ConnectAlongNormal(const gsl_kernel::Segment& a, const gsl_kernel::Segment& b,
                        double linearTolerance, gsl_Segment& connection) {
  gsl_kernel::Measured3 n = gsl_kernel::Measure(
      gsl_kernel::Cross(gsl_kernel::Subtract(a.p2, a.p1), gsl_kernel::Subtract(b.p2, b.p1)));
  gsl_arithmetic::Normalize(n, linearTolerance);
  const double h = gsl_kernel::Dot(gsl_kernel::Subtract(b.p1, a.p1), n.c);
  const Coord3 v = gsl_kernel::Multiply(n.c, h);
  const gsl_kernel::Segment moved = {gsl_kernel::Add(a.p1, v), gsl_kernel::Add(a.p2, v)};
  Coord3 crossing;
  if (gsl_kernel::CrossSegments(moved, b, linearTolerance, crossing) != SegmentCrossing::Crossing) {
    return false;
  }
  connection =
      gsl_Segment(ComputedPoint(gsl_kernel::Subtract(crossing, v)), ComputedPoint(crossing));
  return true;
}

/// Finds the best of the four end-point distances; ties go to the earlier distance.
void ConnectEndPoints(const gsl_Segment& a, const gsl_Segment& b, gsl_Segment& connection) {
  // far-segments-keep-the-connection: no distance at or above the cap counts.
  double best = gsl_kernel::kSegmentDistanceCap;
  const auto tryEnd = [&best](const gsl_Point& end, const gsl_Segment& target, gsl_Point& closest) {
    // A target shorter than the tolerance leaves the point unchanged.
    closest = target.Point1();
    const double distance = end.GetDistance(target, closest);
    if (!(distance < best)) return false;
    best = distance;
    return true;
  };
  gsl_Point closest(a.Point1());
  // The connection may be one of the two segments, so it is written last.
  gsl_Segment result(connection);
  for (const gsl_Point* end : {&a.Point1(), &a.Point2()}) {
    if (tryEnd(*end, b, closest)) result = gsl_Segment(*end, closest);
  }
  for (const gsl_Point* end : {&b.Point1(), &b.Point2()}) {
    if (tryEnd(*end, a, closest)) result = gsl_Segment(closest, *end);
  }
  connection = result;
}

} // namespace

gsl_Segment::gsl_Segment() : m_uid(cls_Uid::AllocateUid()) {}

gsl_Segment::gsl_Segment(const gsl_Point& p1, const gsl_Point& p2)
    : m_point1(p1), m_point2(p2), m_uid(cls_Uid::AllocateUid()) {}

unsigned int gsl_Segment::DynTypeId() const {
  return TypeId();
}

bool gsl_Segment::Intersect(const gsl_StLine& line, gsl_Point& out) const {
  Coord3 found;
  const SegmentCrossing where = gsl_kernel::CrossSegmentLine(SegmentOf(*this), LineOf(line),
                                                             Settings().linearTolerance, found);
  return Accept(where, found, out);
}

bool gsl_Segment::Intersect(const gsl_Segment& other, gsl_Point& out) const {
  Coord3 found;
  const SegmentCrossing where = gsl_kernel::CrossSegments(SegmentOf(*this), SegmentOf(other),
                                                          Settings().linearTolerance, found);
  return Accept(where, found, out);
}

void gsl_Segment::GetDistance(const gsl_Segment& other, gsl_Segment& connection) const {
  const double tolerance = Settings().linearTolerance;
  const gsl_kernel::Segment a = SegmentOf(*this);
  const gsl_kernel::Segment b = SegmentOf(other);
  Coord3 crossing;
  if (gsl_kernel::CrossSegments(a, b, tolerance, crossing) == SegmentCrossing::Crossing) {
    const gsl_Point meeting = ComputedPoint(crossing);
    connection = gsl_Segment(meeting, meeting);
    return;
  }
  if (gsl_kernel::LinesAreSkew(gsl_kernel::SupportingLine(a), gsl_kernel::SupportingLine(b),
                               tolerance) &&
      ConnectAlongNormal(a, b, tolerance, connection)) {
    return;
  }
  // overlapping-segments-do-not-cross: parallel lines have no crossing.
  ConnectEndPoints(*this, other, connection);
}
