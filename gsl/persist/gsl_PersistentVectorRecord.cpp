#include "gsl_PersistentVector.h"
#include "gsl_RecordLayout.h"

namespace {

/// The numbers are stored as they are. The magnitude is stored too, and is not checked.
struct StoredVector {
  double x;
  double y;
  double z;
  double magnitude;
};

StoredVector StoredFormOf(const gsl_Vector& v) {
  return {v.x, v.y, v.z, v.magnitude};
}

} // namespace

// The class is registered under the name of the plain value class, which is stored.
template <>
struct gsl_RecordLayout<gsl_PersistentVector> {
  using Stored = StoredVector;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Vector", 203, false};
  static constexpr std::tuple kFields = {
      gsl_Field(-1, "_x", &StoredVector::x), gsl_Field(-1, "_y", &StoredVector::y),
      gsl_Field(-1, "_z", &StoredVector::z), gsl_Field(-1, "_magnitude", &StoredVector::magnitude)};
};

namespace {

gsl_Vector VectorOf(const cls_ReadVisitor& visitor) {
  StoredVector stored = {};
  gsl_ReadRecord<gsl_PersistentVector>(visitor, stored);
  // The magnitude is not computed again.
  gsl_Vector vector(stored.x, stored.y, stored.z);
  vector.magnitude = stored.magnitude;
  return vector;
}

} // namespace

template class cls_TypeAdapter<gsl_PersistentVector>;

gsl_PersistentVector::gsl_PersistentVector(const cls_ReadVisitor& visitor)
    : m_vector(VectorOf(visitor)), m_uid(visitor.GetUid()) {}

unsigned int gsl_PersistentVector::DynTypeId() const {
  return TypeId();
}

void gsl_PersistentVector::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_PersistentVector>(visitor, m_uid, StoredFormOf(m_vector));
}

void gsl_PersistentVector::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_PersistentVector>(registrar);
}
