#ifndef GSL_PERSISTENT_VECTOR_LAYOUT_H
#define GSL_PERSISTENT_VECTOR_LAYOUT_H

#include "gsl_PersistentVector.h"
#include "gsl_RecordLayout.h"

// The class is registered under the name of the plain value class, which is stored. The numbers are
// stored as they are; the magnitude is stored too, and is neither checked nor computed.
template <>
struct gsl_RecordLayout<gsl_PersistentVector> {
  using Stored = gsl_Vector;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Vector", 203, false};
  static constexpr std::tuple kFields = {
      gsl_Field(-1, "_x", &gsl_Vector::x), gsl_Field(-1, "_y", &gsl_Vector::y),
      gsl_Field(-1, "_z", &gsl_Vector::z), gsl_Field(-1, "_magnitude", &gsl_Vector::magnitude)};

  /// Reads the record of a visitor into a vector.
  static void Read(const cls_ReadVisitor& visitor, gsl_PersistentVector& vector) {
    vector.m_uid = visitor.GetUid();
    gsl_ReadRecord<gsl_PersistentVector>(visitor, vector.m_vector);
  }
  template <class Run, class ReadOther>
  [[gnu::always_inline]] static void Take(Run& run, gsl_PersistentVector& vector,
                                          const ReadOther& read) {
    gsl_TakeObject<gsl_PersistentVector>(run, vector.m_uid, vector.m_vector, read);
  }
};

/// A vector is read where it is, as a point is.
template <>
struct gsl_FieldKind<gsl_PersistentVector> : gsl_ObjectKind<gsl_PersistentVector> {
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field,
                   gsl_PersistentVector& value) {
    gsl_RecordLayout<gsl_PersistentVector>::Read(cls_ReadVisitor(visitor, field), value);
  }
  template <class Run>
  [[gnu::always_inline]] static void Take(Run& run, const cls_FieldHandle& field,
                                          gsl_PersistentVector& value) {
    gsl_RecordLayout<gsl_PersistentVector>::Take(
        run, value, [&](const cls_ReadVisitor& visitor) { Read(visitor, field, value); });
  }
};

#endif
