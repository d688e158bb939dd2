#include "gsl_Segment.h"

#include "gsl_EntityPredicates.h"
#include "gsl_FromCoordinates.h"
#include "gsl_Settings.h"
#include "kernel/SegmentDistance.h"

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

/// Returns an end of a connection: an end of the segment with its identity, or a computed point.
gsl_Point EndOn(const gsl_Segment& segment, gsl_kernel::SegmentPart part, const Coord3& point) {
  if (part == gsl_kernel::SegmentPart::Foot) return ComputedPoint(point);
  return part == gsl_kernel::SegmentPart::First ? segment.Point1() : segment.Point2();
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
  using gsl_kernel::ConnectionKind;
  const gsl_kernel::Connection found =
      gsl_kernel::ConnectSegments(SegmentOf(*this), SegmentOf(other), Settings().linearTolerance);
  if (found.kind == ConnectionKind::None) return;
  // The connection may be one of the two segments, so both ends are made before it is written.
  const gsl_Point onB = EndOn(other, found.partB, found.onB);
  const gsl_Point onA =
      found.kind == ConnectionKind::Crossing ? onB : EndOn(*this, found.partA, found.onA);
  connection = gsl_Segment(onA, onB);
}
