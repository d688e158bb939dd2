#include "gsl_ModelSegment.h"
#include "gsl_RecordLayout.h"

// ends-without-underscores: the names of gsl_Segment have underscores, and both are stored.
template <>
struct gsl_RecordLayout<gsl_ModelSegment> {
  using Stored = gsl_ModelSegment;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_ModelSegment", 332, true};
  static constexpr std::tuple kFields = {gsl_Field(0, "point1", &gsl_ModelSegment::m_point1),
                                         gsl_Field(1, "point2", &gsl_ModelSegment::m_point2)};
};

template class cls_TypeAdapter<gsl_ModelSegment>;

gsl_ModelSegment::gsl_ModelSegment(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_ModelSegment>(visitor, *this);
}

void gsl_ModelSegment::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_ModelSegment>(visitor, m_uid, *this);
}

void gsl_ModelSegment::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_ModelSegment>(registrar);
}
