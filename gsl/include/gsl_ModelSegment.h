#ifndef GSL_MODEL_SEGMENT_H
#define GSL_MODEL_SEGMENT_H

#include "cls_Uid.h"
#include "cow_COW.h"
#include "cow_Virtual.h"
#include "ftr_FeatureList.h"
#include "gsl_Dot.h"
#include "gsl_Vector.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;
class omu_Primitive;

template <class>
struct gsl_RecordLayout;

extern template class GSL_API cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>;

/// Segment between two datum points, either of which may be missing.
///
/// Sharing    copies share the datum points; a point is cloned, through its virtual Copy, before a
///            holder that shares it changes it. A derived datum point keeps its type.
/// Identity   a constructor other than the copies allocates a fresh uid; a copy and an assignment
///            take the source's.
/// Threads    copies that share datum points may be used in different threads at once.
/// Records    an empty end is stored as empty. Segments that share a datum point and are written in
///            one save share it again when they are read in one load.
/// Errors     none thrown and none printed, except by the records.
class GSL_API gsl_ModelSegment {
public:
  /// Shares a datum point between copies.
  using DotHolder = cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>;

  /// Both ends are empty.
  gsl_ModelSegment();
  /// Each end holds its own copy of the datum point; it is empty when Copy() returns null.
  gsl_ModelSegment(const gsl_Dot& p1, const gsl_Dot& p2);
  /// Reads a record; a missing end is empty. Throws nex_Exception for a record of another class and
  /// for an end that is not a datum point.
  explicit gsl_ModelSegment(const cls_ReadVisitor& visitor);
  gsl_ModelSegment(const gsl_ModelSegment&);
  gsl_ModelSegment& operator=(const gsl_ModelSegment&);

  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  /// Returns whether the first end has a datum point.
  [[nodiscard]] bool HasPoint1() const { return !m_point1.IsEmpty(); }
  /// Returns whether the second end has a datum point.
  [[nodiscard]] bool HasPoint2() const { return !m_point2.IsEmpty(); }
  /// Returns the datum point at that end. The end must not be empty, which is not checked.
  const gsl_Dot& Point1() const { return *m_point1; }
  /// Does the same for the second end.
  const gsl_Dot& Point2() const { return *m_point2; }
  const cls_Uid& Uid() const { return m_uid; }

  /// Returns the vector from the first end to the second, not normalised, or unit Z when an end is
  /// empty.
  gsl_Vector Direction() const;
  /// Returns the distance of the ends, or 0.0 when an end is empty.
  double Length() const;

  /// Regenerates the datum point of each end that has one, point1 first. Their results are ignored.
  /// A shared datum point is cloned first, so other segments keep theirs. When the clone is null,
  /// that end stays as it is.
  void Regenerate(const ftr_FeatureList* features);

  static constexpr unsigned int TypeId() { return 0x030A000Bu; }

private:
  friend struct gsl_RecordLayout<gsl_ModelSegment>;

  DotHolder m_point1;
  DotHolder m_point2;
  cls_Uid m_uid;
};

/// Returns the unit direction of the segment as a new tuple of three numbers, which the caller
/// owns. Each component is divided by the magnitude, or is 0.0 when the magnitude is exactly 0.0.
/// An empty end makes it (0, 0, 1). Throws std::bad_alloc.
[[nodiscard]] GSL_API omu_Primitive* omu_ReturnPrim(const gsl_ModelSegment& segment);

#endif
