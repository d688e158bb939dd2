#include "gsl_PointLayout.h"
#include "gsl_Segment.h"

template <>
struct gsl_RecordLayout<gsl_Segment> {
  using Stored = gsl_Segment;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Segment", 800, false};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_point1", &gsl_Segment::m_point1),
                                         gsl_Field(-1, "_point2", &gsl_Segment::m_point2)};
};

template class cls_TypeAdapter<gsl_Segment>;

gsl_Segment::gsl_Segment(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_Segment>(visitor, *this);
}

void gsl_Segment::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_Segment>(visitor, m_uid, *this);
}

void gsl_Segment::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_Segment>(registrar);
}
