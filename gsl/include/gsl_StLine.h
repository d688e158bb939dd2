#ifndef GSL_STLINE_H
#define GSL_STLINE_H

#include "cls_Uid.h"
#include "cls_xp1DArrayListUint.h"
#include "ftr_FeatureList.h"
#include "gsl_LineMethod.h"
#include "gsl_PersistentVector.h"
#include "gsl_Point.h"

class gsl_Plane;

template <class>
struct gsl_RecordLayout;

/// Datum axis: an infinite line through a point, its direction kept exactly as supplied, and how it
/// was made.
///
/// Units      model units.
/// Flip       stored, copied and persisted only.
/// Tolerance  gsl_Util fields, read at the call.
/// Identity   a constructor other than the copies allocates a fresh uid; a copy keeps its source's.
/// Errors     std::bad_alloc from a copy and an assignment, which then change nothing. A zero
///            direction is accepted.
class GSL_API gsl_StLine {
public:
  /// The axis is the X axis.
  gsl_StLine();
  /// The axis holds copies of p (identity kept) and d (not normalised).
  gsl_StLine(const gsl_Point& p, const gsl_Vector& d);
  /// The axis passes through p1 with direction p2 - p1; coincident points have a zero direction.
  gsl_StLine(const gsl_Point& p1, const gsl_Point& p2);
  /// Reads a record. Missing fields become false, 0, (0, 0, 0) with a zero direction, and no
  /// parents. Throws omu_ValueErrorException for a missing or unknown method name, nex_Exception
  /// for a record of another class and for a field of another kind.
  explicit gsl_StLine(const cls_ReadVisitor& visitor);
  gsl_StLine(const gsl_StLine&);
  gsl_StLine& operator=(const gsl_StLine&);

  virtual ~gsl_StLine();
  /// Returns a heap copy, which the caller owns. Throws std::bad_alloc.
  [[nodiscard]] virtual gsl_StLine* Copy() const;
  /// Returns true, whatever the ok flag says. Nothing is recomputed and the list is not read.
  virtual bool Regenerate(const ftr_FeatureList* features);
  /// Returns the id of the feature that owns the line, or 0.
  virtual int OwnerFeatID() const;
  /// Changes the id of the feature that owns the line.
  virtual void SetOwnerFeatID(int id);
  /// Derived classes of the host override these. Here they return null and false, as for gsl_Plane.
  virtual void* ExtensionObject() { return nullptr; }
  /// Returns false.
  [[nodiscard]] virtual bool ExtensionQuery(const void*) { return false; }
  /// Returns the direction as stored; the flip flag is deliberately not applied.
  virtual gsl_Vector DirectionForDatum();
  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

  /// Returns whether the object is of that class, or of a class registered as derived from it.
  [[nodiscard]] bool IsA(unsigned int typeId) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Vector& Direction() const { return m_direction.Vector(); }
  const gsl_Point& PointOn() const { return m_point; }

  gsl_LineMethod Method() const { return m_method; }
  void SetMethod(gsl_LineMethod value) { m_method = value; }
  [[nodiscard]] bool Flip() const { return m_flip; }
  void SetFlip(bool value) { m_flip = value; }
  [[nodiscard]] bool Ok() const { return m_ok; }
  void SetOk(bool value) { m_ok = value; }
  const cls_xp1DArrayListUint& ParentIds() const { return m_parentIds; }
  /// Returns the parent ids, to be changed.
  cls_xp1DArrayListUint& ParentIds() { return m_parentIds; }
  const cls_Uid& Uid() const { return m_uid; }

  static constexpr unsigned int TypeId() { return 0x030A0006u; }

  /// Crosses the line with the plane, like gsl_Point::RayIntersect from PointOn() along
  /// Direction(). On false, and for a point on the plane, `out` holds the line's point, identity
  /// included. A computed point has a fresh identity.
  [[nodiscard]] bool Intersect(const gsl_Plane& plane, gsl_Point& out) const;

  /// Crosses the line with another line.
  ///
  /// Returns true when the lines are coplanar within linearTolerance and not parallel. Then `out`
  /// is the closest point on this line, and `dist` is the gap that is left. Returns false for skew
  /// lines, with nothing written. Returns false for parallel lines (unit components within 1e-5,
  /// either sense; tested after skew). Then `dist` is the distance of this line's point to the
  /// other line, and `out` is unwritten.
  ///
  /// Degenerate a line without a direction crosses every line that has a direction. Two lines
  ///            without a direction are parallel, with `dist` NaN. A line with a NaN direction is
  ///            parallel to every other line.
  /// Outputs    `dist` must not be a coordinate of `out`.
  /// Identity   `out` has a fresh identity.
  [[nodiscard]] bool Intersect(const gsl_StLine& other, gsl_Point& out, double& dist) const;

private:
  friend struct gsl_RecordLayout<gsl_StLine>;

  double IntersectNonParallel(const gsl_StLine& other, gsl_Point& out) const;

  gsl_Point m_point;
  gsl_PersistentVector m_direction;
  gsl_LineMethod m_method;
  bool m_flip;
  bool m_ok;
  cls_xp1DArrayListUint m_parentIds;
  int m_ownerFeatId;
  cls_Uid m_uid;
};

#endif
