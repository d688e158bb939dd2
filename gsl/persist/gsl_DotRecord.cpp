#include "gsl_Dot.h"
#include "gsl_InheritanceCheck.h"
#include "gsl_PointLayout.h"

// missing-entity-id-is-zero: the field takes the default of its kind, not the -1 of a new point.
template <>
struct gsl_RecordLayout<gsl_Dot> {
  using Stored = gsl_Dot;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Dot", 203, true};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_point", &gsl_Dot::m_point),
                                         gsl_Field(-1, "_method", &gsl_Dot::m_method),
                                         gsl_Field(-1, "_instanceId", &gsl_Dot::m_instanceId),
                                         gsl_Field(-1, "_entityId", &gsl_Dot::m_entityId)};
};

template class cls_TypeAdapter<gsl_Dot>;

gsl_Dot::gsl_Dot(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_Dot>(visitor, *this);
}

void gsl_Dot::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_Dot>(visitor, m_uid, *this);
}

void gsl_Dot::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_Dot>(registrar);
}

bool gsl_Dot::IsA(unsigned int typeId) const {
  return gsl_InheritanceCheck(DynTypeId(), typeId);
}
