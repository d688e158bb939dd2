#include "gsl_Vector.h"

#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Printing.h"
#include "gsl_Settings.h"

gsl_Vector::gsl_Vector(const gsl_Point& from, const gsl_Point& to)
    : gsl_Vector(gsl_kernel::Between(from.Coords(), to.Coords())) {}

gsl_Vector::gsl_Vector(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3)
    : gsl_Vector(gsl_kernel::UnitNormal(p1.Coords(), p2.Coords(), p3.Coords(),
                                        Settings().cosineTolerance)) {}

bool gsl_Vector::SameDirection(const gsl_Vector& o, double tol) const {
  return gsl_kernel::SameDirection(Measured(), o.Measured(), tol);
}

bool gsl_Vector::IsParallel(const gsl_Vector& o, double tol) const {
  return gsl_kernel::IsParallel(Measured(), o.Measured(), tol);
}

gsl_Vector gsl_Vector::AnyOrthogonalUnit() const {
  return gsl_Vector(gsl_kernel::AnyOrthogonalUnit(Coords(), Settings().linearTolerance));
}

gsl_Vector gsl_Vector::BestAlignedOrthogonalUnit() const {
  return gsl_Vector(gsl_kernel::BestAlignedOrthogonalUnit(Measured(), Settings().linearTolerance));
}

gsl_Vector gsl_Vector::ProjectOn(const gsl_Plane& plane) const {
  return gsl_Vector(gsl_kernel::ProjectVectorOnPlane(Coords(), plane.Direction().Measured(),
                                                     Settings().linearTolerance));
}

bool gsl_Vector::AngleBetween(gsl_Vector a, gsl_Vector b, double& angle) const {
  return gsl_kernel::AngleBetween(Measured(), a.Measured(), b.Measured(),
                                  Settings().linearTolerance, angle);
}

double gsl_Vector::AngleWith(const gsl_Vector& o, bool unitVectors) const {
  return gsl_kernel::AngleFromCosine(
      gsl_kernel::CosineBetween(Measured(), o.Measured(), unitVectors, Settings().linearTolerance));
}

double gsl_Vector::AngleWith(const gsl_Vector& o, bool unitVectors,
                             const gsl_Vector& reference) const {
  const double angle = AngleWith(o, unitVectors);
  return CrossProduct(o).DotProduct(reference) < 0.0 ? gsl_kernel::kTwoPi - angle : angle;
}

void gsl_Vector::RotateAndTransform(const gsl_Matrix& m) {
  m.Transform(*this);
}

void gsl_Vector::Print(aio_ostream& out, int indent) const {
  PrintIndent(out, indent);
  out << "magnitude:\t" << PrintedNumber(magnitude) << '\n';
  out.flush();
  PrintCoordinates(out, indent, Coords());
}
