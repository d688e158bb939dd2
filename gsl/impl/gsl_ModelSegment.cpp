#include "gsl_ModelSegment.h"

#include "kernel/Vector.h"
#include "omu_PrimTuple.h"

#include <memory>

template class cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>;

gsl_ModelSegment::gsl_ModelSegment() : m_uid(cls_Uid::AllocateUid()) {}

gsl_ModelSegment::gsl_ModelSegment(const gsl_Dot& p1, const gsl_Dot& p2)
    : m_point1(p1), m_point2(p2), m_uid(cls_Uid::AllocateUid()) {}

gsl_ModelSegment::gsl_ModelSegment(const gsl_ModelSegment&) = default;

gsl_ModelSegment& gsl_ModelSegment::operator=(const gsl_ModelSegment&) = default;

unsigned int gsl_ModelSegment::DynTypeId() const {
  return TypeId();
}

gsl_Vector gsl_ModelSegment::Direction() const {
  // The direction of a segment without an end is the default vector.
  if (m_point1.IsEmpty() || m_point2.IsEmpty()) return {};
  return {m_point1->GetPoint(), m_point2->GetPoint()};
}

double gsl_ModelSegment::Length() const {
  if (m_point1.IsEmpty() || m_point2.IsEmpty()) return 0.0;
  return m_point1->GetPoint().GetDistance(m_point2->GetPoint());
}

void gsl_ModelSegment::Regenerate(const ftr_FeatureList* features) {
  for (DotHolder* const end : {&m_point1, &m_point2}) {
    if (gsl_Dot* const dot = end->Unshared()) dot->Regenerate(features);
  }
}

omu_Primitive* omu_ReturnPrim(const gsl_ModelSegment& segment) {
  const gsl_kernel::Coord3 unit = gsl_kernel::UnitComponents(segment.Direction().Measured());
  constexpr int kComponents = 3;
  auto tuple = std::make_unique<omu_PrimTuple>(kComponents, '(');
  tuple->Put(unit.x);
  tuple->Put(unit.y);
  tuple->Put(unit.z);
  return tuple.release();
}
