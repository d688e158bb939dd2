#include "gsl_StLine.h"

#include "gsl_EntityPredicates.h"
#include "gsl_FromCoordinates.h"
#include "gsl_Settings.h"

gsl_StLine::gsl_StLine() : gsl_StLine(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0)) {}

gsl_StLine::gsl_StLine(const gsl_Point& p, const gsl_Vector& d)
    : m_point(p), m_direction(d), m_method(FROM_PNT_VECTOR), m_flip(false), m_ok(true),
      m_ownerFeatId(0), m_uid(cls_Uid::AllocateUid()) {}

gsl_StLine::gsl_StLine(const gsl_Point& p1, const gsl_Point& p2)
    : m_point(p1), m_direction(gsl_Vector(p1, p2)), m_method(FROM_PNT_PNT), m_flip(false),
      m_ok(true), m_ownerFeatId(0), m_uid(cls_Uid::AllocateUid()) {}

gsl_StLine::gsl_StLine(const gsl_StLine&) = default;

gsl_StLine& gsl_StLine::operator=(const gsl_StLine& other) {
  // The parent ids come first: nothing else needs memory, so a failure changes nothing.
  m_parentIds = other.m_parentIds;
  m_point = other.m_point;
  m_direction = other.m_direction;
  m_method = other.m_method;
  m_flip = other.m_flip;
  m_ok = other.m_ok;
  m_ownerFeatId = other.m_ownerFeatId;
  m_uid = other.m_uid;
  return *this;
}

gsl_StLine::~gsl_StLine() = default;

gsl_StLine* gsl_StLine::Copy() const {
  return new gsl_StLine(*this);
}

// regenerate-ignores-the-ok-flag: a plane returns its flag, an axis does not.
bool gsl_StLine::Regenerate(const ftr_FeatureList*) {
  return true;
}

int gsl_StLine::OwnerFeatID() const {
  return m_ownerFeatId;
}

void gsl_StLine::SetOwnerFeatID(int id) {
  m_ownerFeatId = id;
}

gsl_Vector gsl_StLine::DirectionForDatum() {
  return Direction();
}

unsigned int gsl_StLine::DynTypeId() const {
  return TypeId();
}

bool gsl_StLine::Intersect(const gsl_Plane& plane, gsl_Point& out) const {
  return m_point.RayIntersect(Direction(), plane, out);
}

bool gsl_StLine::Intersect(const gsl_StLine& other, gsl_Point& out, double& dist) const {
  switch (gsl_kernel::ClassifyLines(LineOf(*this), LineOf(other), Settings().linearTolerance)) {
  case gsl_kernel::LinePair::Skew:
    return false;
  case gsl_kernel::LinePair::Parallel:
    // Parallel lines have a distance, but no common point.
    dist = m_point.GetDistance(other);
    return false;
  case gsl_kernel::LinePair::Crossing:
    break;
  }
  dist = IntersectNonParallel(other, out);
  return true;
}

double gsl_StLine::IntersectNonParallel(const gsl_StLine& other, gsl_Point& out) const {
  const gsl_kernel::ClosestPoints closest =
      gsl_kernel::ClosestOfNonParallel(LineOf(*this), LineOf(other), Settings().linearTolerance);
  AcceptComputed(out, closest.onFirst);
  return closest.distance;
}
