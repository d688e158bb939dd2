#include "gsl_Point.h"
#include "gsl_RecordLayout.h"

template <>
struct gsl_RecordLayout<gsl_Point> {
  using Stored = gsl_Point;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Point", 203, true};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_x", &gsl_Point::x),
                                         gsl_Field(-1, "_y", &gsl_Point::y),
                                         gsl_Field(-1, "_z", &gsl_Point::z)};
};

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
