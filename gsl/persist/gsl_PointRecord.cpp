#include "gsl_PointLayout.h"

template class cls_TypeAdapter<gsl_Point>;

gsl_Point::gsl_Point(const cls_ReadVisitor& visitor) : uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_Point>(visitor, *this);
}

void gsl_Point::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_Point>(visitor, uid, *this);
}

void gsl_Point::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_Point>(registrar);
}
