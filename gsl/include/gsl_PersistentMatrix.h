#ifndef GSL_PERSISTENT_MATRIX_H
#define GSL_PERSISTENT_MATRIX_H

#include "cls_Uid.h"
#include "gsl_Matrix.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;

/// A transform with a persistent identity, for entities that store one. A copy keeps the identity.
///
/// Threads  writing asks IsIdentity(): a matrix with flag -1 is not safe to write from two threads.
class GSL_API gsl_PersistentMatrix {
public:
  /// The identity, with a fresh uid.
  gsl_PersistentMatrix() : m_uid(cls_Uid::AllocateUid()) {}
  /// Exactly `m`, flag included, with a fresh uid.
  explicit gsl_PersistentMatrix(const gsl_Matrix& m) : m_matrix(m), m_uid(cls_Uid::AllocateUid()) {}
  /// Entries and flag as stored; the flag is trusted, 0 when missing. Missing entries are taken
  /// from the identity. Throws nex_Exception for entries that are not 4 by 4, a record of another
  /// class and a field of another kind.
  explicit gsl_PersistentMatrix(const cls_ReadVisitor& visitor);

  virtual unsigned int DynTypeId() const;
  /// Writes the entries as they stand, then asks IsIdentity(): what that snaps is written
  /// unsnapped, as an identity.
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const gsl_Matrix& Matrix() const { return m_matrix; }
  const cls_Uid& Uid() const { return m_uid; }

  static constexpr unsigned int TypeId() { return 0x030A0002u; }

private:
  gsl_Matrix m_matrix;
  cls_Uid m_uid;
};

#endif
