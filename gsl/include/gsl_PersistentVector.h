#ifndef GSL_PERSISTENT_VECTOR_H
#define GSL_PERSISTENT_VECTOR_H

#include "cls_Uid.h"
#include "gsl_Vector.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;

template <class>
struct gsl_RecordLayout;

/// A vector with a persistent identity, for entities that store one. A copy keeps the identity.
class GSL_API gsl_PersistentVector {
public:
  /// The vector is unit Z, with a fresh identity.
  gsl_PersistentVector() : m_uid(cls_Uid::AllocateUid()) {}
  /// The vector is exactly `v`, cached magnitude included, with a fresh identity.
  explicit gsl_PersistentVector(const gsl_Vector& v) : m_vector(v), m_uid(cls_Uid::AllocateUid()) {}

  /// Reads the numbers as stored: the magnitude is neither checked nor computed. A missing number
  /// is 0.0. Throws nex_Exception for a record of another class and for a field of another kind.
  explicit gsl_PersistentVector(const cls_ReadVisitor& visitor);

  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Vector& Vector() const { return m_vector; }
  const cls_Uid& Uid() const { return m_uid; }

  static constexpr unsigned int TypeId() { return 0x030A0003u; }

private:
  friend struct gsl_RecordLayout<gsl_PersistentVector>;

  gsl_Vector m_vector;
  cls_Uid m_uid;
};

#endif
