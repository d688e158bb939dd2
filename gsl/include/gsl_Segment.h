#ifndef GSL_SEGMENT_H
#define GSL_SEGMENT_H

#include "cls_Uid.h"
#include "gsl_Point.h"

class gsl_StLine;

template <class>
struct gsl_RecordLayout;

/// Straight segment between two points.
///
/// Units      model units.
/// Tolerance  gsl_Util::linearTolerance, read at the call. At a tolerance of 0 a segment of no
///            length is not too short: it crosses every line and segment that has a direction, at
///            NaN.
/// Identity   holds copies of its end points with their uids; its own uid is fresh from a
///            constructor and the source's from a copy or an assignment.
/// Errors     none; equal end points are allowed.
class GSL_API gsl_Segment {
public:
  /// Both ends are at the origin.
  gsl_Segment();
  /// The segment leads from p1 to p2.
  gsl_Segment(const gsl_Point& p1, const gsl_Point& p2);

  /// Reads a record; a missing end is (0, 0, 0) without an identity. Throws nex_Exception for a
  /// record of another class and for a field of another kind.
  explicit gsl_Segment(const cls_ReadVisitor& visitor);

  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Point& Point1() const { return m_point1; }
  const gsl_Point& Point2() const { return m_point2; }
  const cls_Uid& Uid() const { return m_uid; }
  /// Returns the distance of the end points.
  double Length() const { return m_point1.GetDistance(m_point2); }

  static constexpr unsigned int TypeId() { return 0x030A0008u; }

  /// Crosses the segment with a line; `out` is the closest point on this segment's line, with a
  /// fresh identity.
  ///
  /// Returns false with `out` unwritten when linearTolerance > Length() or the lines are skew or
  /// parallel. Returns false with `out` written when the crossing is more than linearTolerance
  /// beyond an end (closed), or more than linearTolerance from Point1() for a segment of exactly
  /// linearTolerance.
  [[nodiscard]] bool Intersect(const gsl_StLine& line, gsl_Point& out) const;

  /// Crosses the segment with a segment: each must cross the other's line, this segment first.
  /// `out` is the point on the other segment's line; on false it may hold a point of the first
  /// test.
  [[nodiscard]] bool Intersect(const gsl_Segment& other, gsl_Point& out) const;

  /// Finds the shortest connection: `connection` becomes the segment from this segment to `other`,
  /// and its Length() is the distance.
  ///
  /// End points keep their uids, computed points have fresh uids (one uid for both where the
  /// segments cross). A foot exactly at an end is a computed point too, as in
  /// gsl_Point::GetDistance. Segments without any distance below 1e10, such as those of which every
  /// end is NaN, leave `connection` unchanged. `connection` may be either segment. For the other's
  /// ends, a segment shorter than linearTolerance is its first point.
  void GetDistance(const gsl_Segment& other, gsl_Segment& connection) const;

private:
  friend struct gsl_RecordLayout<gsl_Segment>;

  gsl_Point m_point1;
  gsl_Point m_point2;
  cls_Uid m_uid;
};

#endif
