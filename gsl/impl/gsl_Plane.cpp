#include "gsl_Plane.h"

// default-plane-faces-x: the default vector is Z.
gsl_Plane::gsl_Plane() : gsl_Plane(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0)) {}

gsl_Plane::gsl_Plane(const gsl_Point& p, const gsl_Vector& n)
    : ok(true), point(p), normal(n), method(FROM_POINT_VECTOR), flip(false), ownerFeatId(0),
      uid(cls_Uid::AllocateUid()) {}

gsl_Plane::gsl_Plane(const gsl_Plane&) = default;

gsl_Plane& gsl_Plane::operator=(const gsl_Plane&) = default;

gsl_Plane::~gsl_Plane() = default;

gsl_Plane* gsl_Plane::Copy() const {
  return new gsl_Plane(*this);
}

bool gsl_Plane::Regenerate(const ftr_FeatureList*) {
  return ok;
}

int gsl_Plane::OwnerFeatID() const {
  return ownerFeatId;
}

void gsl_Plane::SetOwnerFeatID(int id) {
  ownerFeatId = id;
}

gsl_Point gsl_Plane::Centroid() {
  return point;
}

// reset-centroid-does-nothing: the centroid is the point of the plane.
void gsl_Plane::ResetCentroid(const gsl_Point&, const ftr_FeatureList*) {}

unsigned int gsl_Plane::DynTypeId() const {
  return TypeId();
}
