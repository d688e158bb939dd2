#include "gsl_BBox.h"
#include "gsl_PointLayout.h"

template <>
struct gsl_RecordLayout<gsl_BBox> {
  using Stored = gsl_BBox;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_BBox", 800, false};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_low", &gsl_BBox::min),
                                         gsl_Field(-1, "_high", &gsl_BBox::max)};
};

template class cls_TypeAdapter<gsl_BBox>;

gsl_BBox::gsl_BBox(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_BBox>(visitor, *this);
}

void gsl_BBox::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_BBox>(visitor, m_uid, *this);
}

void gsl_BBox::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_BBox>(registrar);
}
