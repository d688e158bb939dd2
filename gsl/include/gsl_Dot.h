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

/// Datum point: a position, how it was made, and the model entity it stands for.
///
/// Units      model units.
/// Identity   a constructor other than the copies allocates a fresh uid; a copy stands for the same
///            stored object and deliberately keeps its source's.
/// Hooks      classes of the host derive from this one; the order of the virtual operations is part
///            of the interface.
/// Errors     none thrown and none printed, except by the records; coordinates are not checked.
class GSL_API gsl_Dot {
public:
  /// A copy of p (identity kept), method gsl_FROM_POINT, instance 0, entity -1.
  gsl_Dot(const gsl_Point& p);
  gsl_Dot(double x, double y, double z);
  /// At the origin.
  gsl_Dot();
  /// Stands for a mesh node: at the origin until SetValues, method gsl_FROM_NODE.
  gsl_Dot(int instanceId, int entityId);
  /// From a record. Missing numbers are 0, deliberately the entity id too; a missing point is the
  /// origin without an identity. A missing or unknown method name throws omu_ValueErrorException, a
  /// record of another class and a field of another kind nex_Exception.
  explicit gsl_Dot(const cls_ReadVisitor& visitor);
  gsl_Dot(const gsl_Dot&);
  gsl_Dot& operator=(const gsl_Dot&);

  virtual ~gsl_Dot();
  /// A heap copy of the dynamic type that the caller owns; null when there is no memory. A derived
  /// class that does not override this is sliced.
  [[nodiscard]] virtual gsl_Dot* Copy() const;
  /// True; nothing is recomputed and the list is not read.
  virtual bool Regenerate(const ftr_FeatureList* features);
  virtual int GetEntityId() const;
  /// The extension points are for classes of the host; here they do nothing and return false.
  [[nodiscard]] virtual bool ExtensionPoint1(const void*);
  /// Number and ids of the features that own the point: none here, and id 0 for every index.
  virtual int NumOwnerFeatures() const;
  virtual int OwnerFeatureId(int index) const;
  virtual void ExtensionPoint2(double, double, double);
  virtual void ExtensionPoint3(const void*, const void*, const void*);
  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

  /// Whether the object is of that class, or of one registered as derived from it.
  [[nodiscard]] bool IsA(unsigned int typeId) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Point& GetPoint() const { return m_point; }
  gsl_DotMethod GetMethod() const { return m_method; }
  int GetInstanceId() const { return m_instanceId; }
  const cls_Uid& Uid() const { return m_uid; }

  /// Moves the point; its identity, the method and both ids stay.
  void SetValues(double x, double y, double z);

  /// Id of the first owner feature, or 0 when NumOwnerFeatures() is below 1. Asks the virtual
  /// operations.
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
