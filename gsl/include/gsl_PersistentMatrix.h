#ifndef GSL_PERSISTENT_MATRIX_H
#define GSL_PERSISTENT_MATRIX_H

#include "cls_Uid.h"
#include "gsl_Matrix.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;

/// A transform with a persistent identity, for entities that store one. A copy keeps the identity.
///
/// Threads  writing calls IsIdentity(), so two threads must not write a matrix with flag -1 at
///          once.
class GSL_API gsl_PersistentMatrix {
public:
  /// The matrix is the identity, with a fresh uid.
  gsl_PersistentMatrix() : m_uid(cls_Uid::AllocateUid()) {}
  /// The matrix is exactly `m`, flag included, with a fresh uid.
  explicit gsl_PersistentMatrix(const gsl_Matrix& m) : m_matrix(m), m_uid(cls_Uid::AllocateUid()) {}
  /// Reads entries and flag as stored. The flag is trusted, and is 0 when missing. Missing entries
  /// are taken from the identity. Throws nex_Exception for entries that are not 4 by 4, for a
  /// record of another class and for a field of another kind.
  explicit gsl_PersistentMatrix(const cls_ReadVisitor& visitor);

  virtual unsigned int DynTypeId() const;
  /// Writes the entries unchanged, then calls IsIdentity(). A matrix near the identity is therefore
  /// written with its own entries and with the flag of the identity.
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
