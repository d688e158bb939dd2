#include "gsl_InheritanceCheck.h"
#include "gsl_PersistentVectorLayout.h"
#include "gsl_Plane.h"
#include "gsl_PointLayout.h"

template <>
struct gsl_RecordLayout<gsl_Plane> {
  using Stored = gsl_Plane;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Plane", 800, true};
  static constexpr std::tuple kFields = {gsl_Field(0, "_ok", &gsl_Plane::m_ok),
                                         gsl_Field(1, "_point", &gsl_Plane::m_point),
                                         gsl_Field(2, "_normal", &gsl_Plane::m_normal),
                                         gsl_Field(3, "_method", &gsl_Plane::m_method),
                                         gsl_Field(4, "_flip", &gsl_Plane::m_flip),
                                         gsl_Field(5, "parent_ids", &gsl_Plane::m_parentIds),
                                         gsl_Field(6, "owner_feat_id", &gsl_Plane::m_ownerFeatId)};
};

template class cls_TypeAdapter<gsl_Plane>;

gsl_Plane::gsl_Plane(const cls_ReadVisitor& visitor) : m_uid(visitor.GetUid()) {
  gsl_ReadRecord<gsl_Plane>(visitor, *this);
}

void gsl_Plane::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_Plane>(visitor, m_uid, *this);
}

void gsl_Plane::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_Plane>(registrar);
}

bool gsl_Plane::IsA(unsigned int typeId) const {
  return gsl_InheritanceCheck(DynTypeId(), typeId);
}
