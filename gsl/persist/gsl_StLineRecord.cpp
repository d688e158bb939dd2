#include "gsl_InheritanceCheck.h"
#include "gsl_PersistentVectorLayout.h"
#include "gsl_PointLayout.h"
#include "gsl_StLine.h"

template <>
struct gsl_RecordLayout<gsl_StLine> {
  using Stored = gsl_StLine;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_StLine", 800, true};
  static constexpr std::tuple kFields = {gsl_Field(0, "_point", &gsl_StLine::m_point),
                                         gsl_Field(1, "_dir", &gsl_StLine::m_direction),
                                         gsl_Field(2, "_method", &gsl_StLine::m_method),
                                         gsl_Field(3, "_flip", &gsl_StLine::m_flip),
                                         gsl_Field(4, "_ok", &gsl_StLine::m_ok),
                                         gsl_Field(5, "parent_ids", &gsl_StLine::m_parentIds),
                                         gsl_Field(6, "owner_feat_id", &gsl_StLine::m_ownerFeatId)};
};

template class cls_TypeAdapter<gsl_StLine>;

gsl_StLine::gsl_StLine(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_StLine>(visitor, *this);
}

void gsl_StLine::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_StLine>(visitor, m_uid, *this);
}

void gsl_StLine::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_StLine>(registrar);
}

bool gsl_StLine::IsA(unsigned int typeId) const {
  return gsl_InheritanceCheck(DynTypeId(), typeId);
}
