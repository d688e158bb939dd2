#include "gsl_Plane.h"

gsl_Plane::gsl_Plane() : gsl_Plane(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0)) {}

gsl_Plane::gsl_Plane(const gsl_Point& p, const gsl_Vector& n)
    : m_ok(true), m_point(p), m_normal(n), m_method(FROM_POINT_VECTOR), m_flip(false),
      m_ownerFeatId(0), m_uid(cls_Uid::AllocateUid()) {}

gsl_Plane::gsl_Plane(const gsl_Plane&) = default;

gsl_Plane& gsl_Plane::operator=(const gsl_Plane& other) {
  // The parent ids come first: nothing else needs memory, so a failure changes nothing.
  m_parentIds = other.m_parentIds;
  m_ok = other.m_ok;
  m_point = other.m_point;
  m_normal = other.m_normal;
  m_method = other.m_method;
  m_flip = other.m_flip;
  m_ownerFeatId = other.m_ownerFeatId;
  m_uid = other.m_uid;
  return *this;
}

gsl_Plane::~gsl_Plane() = default;

gsl_Plane* gsl_Plane::Copy() const {
  return new gsl_Plane(*this);
}

bool gsl_Plane::Regenerate(const ftr_FeatureList*) {
  return m_ok;
}

int gsl_Plane::OwnerFeatID() const {
  return m_ownerFeatId;
}

void gsl_Plane::SetOwnerFeatID(int id) {
  m_ownerFeatId = id;
}

gsl_Point gsl_Plane::Centroid() {
  return m_point;
}

// reset-centroid-does-nothing: the centroid is the point of the plane.
void gsl_Plane::ResetCentroid(const gsl_Point&, const ftr_FeatureList*) {}

unsigned int gsl_Plane::DynTypeId() const {
  return TypeId();
}
