#include "gsl_PersistentVectorLayout.h"

template class cls_TypeAdapter<gsl_PersistentVector>;

gsl_PersistentVector::gsl_PersistentVector(const cls_ReadVisitor& visitor) {
  gsl_RecordLayout<gsl_PersistentVector>::Read(visitor, *this);
}

unsigned int gsl_PersistentVector::DynTypeId() const {
  return TypeId();
}

void gsl_PersistentVector::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_PersistentVector>(visitor, m_uid, m_vector);
}

void gsl_PersistentVector::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_PersistentVector>(registrar);
}
