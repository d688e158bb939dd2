#ifndef GSL_DOT_H
#define GSL_DOT_H

#include "cls_Uid.h"
#include "ftr_FeatureList.h"
#include "gsl_DotMethod.h"
#include "gsl_Point.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;

template <class>
struct gsl_RecordLayout;

/// Datum point: a position, how it was made, and the model entity that it represents.
///
/// Units      model units.
/// Identity   a constructor other than the copies allocates a fresh uid; a copy represents the same
///            stored object and deliberately keeps its source's.
/// Hooks      classes of the host derive from this one; the order of the virtual operations is part
///            of the interface.
/// Errors     none thrown and none printed, except by the records; coordinates are not checked.
class GSL_API gsl_Dot {
public:
  /// The point is a copy of p (identity kept), with method gsl_FROM_POINT, instance 0 and entity
  /// -1.
  gsl_Dot(const gsl_Point& p);
  /// The point has these coordinates and a fresh identity. Otherwise it is as above.
  gsl_Dot(double x, double y, double z);
  /// The point is at the origin.
  gsl_Dot();
  /// The point represents a mesh node and is at the origin until SetValues. Its method is
  /// gsl_FROM_NODE.
  gsl_Dot(int instanceId, int entityId);
  /// Reads a record. Missing numbers are 0, deliberately the entity id too; a missing point is the
  /// origin without an identity. Throws omu_ValueErrorException for a missing or unknown method
  /// name, nex_Exception for a record of another class and for a field of another kind.
  explicit gsl_Dot(const cls_ReadVisitor& visitor);
  gsl_Dot(const gsl_Dot&);
  gsl_Dot& operator=(const gsl_Dot&);

  virtual ~gsl_Dot();
  /// Returns a heap copy of the dynamic type, which the caller owns, or null when there is no
  /// memory. A derived class that does not override this is sliced.
  [[nodiscard]] virtual gsl_Dot* Copy() const;
  /// Returns true. Nothing is recomputed and the list is not read.
  virtual bool Regenerate(const ftr_FeatureList* features);
  /// Returns the id of the model entity, or -1 without one.
  virtual int GetEntityId() const;
  /// Classes of the host override these extension points. Here they do nothing and return false.
  [[nodiscard]] virtual bool ExtensionPoint1(const void*);
  /// Returns the number and the ids of the features that own the point: here 0, and id 0 for every
  /// index.
  virtual int NumOwnerFeatures() const;
  /// Returns the id of owner feature number `index`.
  virtual int OwnerFeatureId(int index) const;
  /// Does nothing.
  virtual void ExtensionPoint2(double, double, double);
  /// Does nothing.
  virtual void ExtensionPoint3(const void*, const void*, const void*);
  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

  /// Returns whether the object is of that class, or of a class registered as derived from it.
  [[nodiscard]] bool IsA(unsigned int typeId) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Point& GetPoint() const { return m_point; }
  gsl_DotMethod GetMethod() const { return m_method; }
  int GetInstanceId() const { return m_instanceId; }
  const cls_Uid& Uid() const { return m_uid; }

  /// Moves the point. Its identity, its method and both ids stay.
  void SetValues(double x, double y, double z);

  /// Returns the id of the first owner feature, or 0 when NumOwnerFeatures() is below 1. Calls the
  /// virtual operations.
  int OwnerFeatID() const;

  static constexpr unsigned int TypeId() { return 0x030A0005u; }

private:
  friend struct gsl_RecordLayout<gsl_Dot>;

  cls_Uid m_uid;
  gsl_Point m_point;
  gsl_DotMethod m_method;
  int m_instanceId;
  int m_entityId;
};

#endif
