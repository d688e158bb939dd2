#include "gsl_Dot.h"

#include <new>

namespace {

constexpr int kNoInstance = 0;
constexpr int kNoEntity = -1;

} // namespace

gsl_Dot::gsl_Dot(const gsl_Point& p)
    : m_uid(cls_Uid::AllocateUid()), m_point(p), m_method(gsl_FROM_POINT),
      m_instanceId(kNoInstance), m_entityId(kNoEntity) {}

gsl_Dot::gsl_Dot(double x, double y, double z) : gsl_Dot(gsl_Point(x, y, z)) {}

gsl_Dot::gsl_Dot() : gsl_Dot(gsl_Point()) {}

gsl_Dot::gsl_Dot(int instanceId, int entityId)
    : m_uid(cls_Uid::AllocateUid()), m_method(gsl_FROM_NODE), m_instanceId(instanceId),
      m_entityId(entityId) {}

gsl_Dot::gsl_Dot(const gsl_Dot&) = default;

gsl_Dot& gsl_Dot::operator=(const gsl_Dot&) = default;

gsl_Dot::~gsl_Dot() = default;

gsl_Dot* gsl_Dot::Copy() const {
  return new (std::nothrow) gsl_Dot(*this);
}

bool gsl_Dot::Regenerate(const ftr_FeatureList*) {
  return true;
}

int gsl_Dot::GetEntityId() const {
  return m_entityId;
}

bool gsl_Dot::ExtensionPoint1(const void*) {
  return false;
}

int gsl_Dot::NumOwnerFeatures() const {
  return 0;
}

int gsl_Dot::OwnerFeatureId(int) const {
  return 0;
}

void gsl_Dot::ExtensionPoint2(double, double, double) {}

void gsl_Dot::ExtensionPoint3(const void*, const void*, const void*) {}

unsigned int gsl_Dot::DynTypeId() const {
  return TypeId();
}

void gsl_Dot::SetValues(double x, double y, double z) {
  m_point.x = x;
  m_point.y = y;
  m_point.z = z;
}

int gsl_Dot::OwnerFeatID() const {
  return NumOwnerFeatures() < 1 ? 0 : OwnerFeatureId(0);
}
