#ifndef GSL_PLANE_H
#define GSL_PLANE_H

#include "cls_Uid.h"
#include "cls_xp1DArrayListUint.h"
#include "ftr_FeatureList.h"
#include "gsl_DirMethod.h"
#include "gsl_PersistentVector.h"
#include "gsl_Point.h"

template <class>
struct gsl_RecordLayout;

/// Datum plane: a point, a normal kept exactly as supplied, and how it was made.
///
/// Units     model units.
/// Flip      stored, copied and persisted only. No operation applies it to the normal.
/// Identity  a constructor other than the copies allocates a fresh uid; a copy keeps its source's.
/// Errors    std::bad_alloc from a copy and an assignment, which then change nothing. A zero or NaN
///           normal is accepted; queries that divide by it state their result.
class GSL_API gsl_Plane {
public:
  /// The plane is x = 0: it passes through the origin with normal (1, 0, 0).
  gsl_Plane();
  /// The plane holds copies of p (identity kept) and n (not normalised).
  gsl_Plane(const gsl_Point& p, const gsl_Vector& n);
  /// Reads a record. Missing fields become false, 0, (0, 0, 0) with a zero normal, and no parents.
  /// Throws omu_ValueErrorException for a missing or unknown method name, nex_Exception for a
  /// record of another class and for a field of another kind.
  explicit gsl_Plane(const cls_ReadVisitor& visitor);
  gsl_Plane(const gsl_Plane&);
  gsl_Plane& operator=(const gsl_Plane&);

  virtual ~gsl_Plane();
  /// Returns a heap copy, which the caller owns. Throws std::bad_alloc.
  [[nodiscard]] virtual gsl_Plane* Copy() const;
  /// Returns the ok flag. Nothing is recomputed and the list is not read.
  virtual bool Regenerate(const ftr_FeatureList* features);
  /// Returns the id of the feature that owns the plane, or 0.
  virtual int OwnerFeatID() const;
  /// Changes the id of the feature that owns the plane.
  virtual void SetOwnerFeatID(int id);
  /// Returns a copy of the point, identity included.
  virtual gsl_Point Centroid();
  /// Deliberately does nothing: the plane does not move its point.
  virtual void ResetCentroid(const gsl_Point& centroid, const ftr_FeatureList* features);
  /// Derived classes of the host override these. Here they return null and false, as for
  /// gsl_StLine.
  virtual void* ExtensionObject() { return nullptr; }
  /// Returns false.
  [[nodiscard]] virtual bool ExtensionQuery(const void*) { return false; }
  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

  /// Returns whether the object is of that class, or of a class registered as derived from it.
  [[nodiscard]] bool IsA(unsigned int typeId) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Point& PointOn() const { return m_point; }
  /// Returns the normal as stored.
  // flip-is-never-applied: the flag is stored for the host alone.
  const gsl_Vector& Direction() const { return m_normal.Vector(); }

  gsl_DirMethod Method() const { return m_method; }
  void SetMethod(gsl_DirMethod value) { m_method = value; }
  [[nodiscard]] bool Flip() const { return m_flip; }
  void SetFlip(bool value) { m_flip = value; }
  [[nodiscard]] bool Ok() const { return m_ok; }
  void SetOk(bool value) { m_ok = value; }
  const cls_xp1DArrayListUint& ParentIds() const { return m_parentIds; }
  /// Returns the parent ids, to be changed.
  cls_xp1DArrayListUint& ParentIds() { return m_parentIds; }
  const cls_Uid& Uid() const { return m_uid; }

  static constexpr unsigned int TypeId() { return 0x030A0004u; }

private:
  friend struct gsl_RecordLayout<gsl_Plane>;

  bool m_ok;
  gsl_Point m_point;
  gsl_PersistentVector m_normal;
  gsl_DirMethod m_method;
  bool m_flip;
  cls_xp1DArrayListUint m_parentIds;
  int m_ownerFeatId;
  cls_Uid m_uid;
};

#endif
