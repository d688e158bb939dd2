#include "gsl_InheritanceCheck.h"
#include "gsl_RecordLayout.h"
#include "gsl_StLine.h"

template <>
struct gsl_RecordLayout<gsl_StLine> {
  using Stored = gsl_StLine;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_StLine", 800, true};
  static constexpr std::tuple kFields = {gsl_Field(0, "_point", &gsl_StLine::point),
                                         gsl_Field(1, "_dir", &gsl_StLine::direction),
                                         gsl_Field(2, "_method", &gsl_StLine::method),
                                         gsl_Field(3, "_flip", &gsl_StLine::flip),
                                         gsl_Field(4, "_ok", &gsl_StLine::ok),
                                         gsl_Field(5, "parent_ids", &gsl_StLine::parentIds),
                                         gsl_Field(6, "owner_feat_id", &gsl_StLine::ownerFeatId)};
};

template class cls_TypeAdapter<gsl_StLine>;

gsl_StLine::gsl_StLine(const cls_ReadVisitor& visitor) : gsl_StLine() {
  gsl_ReadRecord<gsl_StLine>(visitor, *this);
  uid = visitor.GetUid();
}

void gsl_StLine::DBWrite(const cls_WriteVisitor& visitor) const {
  gsl_WriteRecord<gsl_StLine>(visitor, uid, *this);
}

void gsl_StLine::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_StLine>(registrar);
}

bool gsl_StLine::IsA(unsigned int typeId) const {
  return gsl_InheritanceCheck(DynTypeId(), typeId);
}
