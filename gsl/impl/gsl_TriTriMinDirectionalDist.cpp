#include "gsl_TriTriMinDirectionalDist.h"

#include "gsl_SweepOutputs.h"
#include "kernel/TriangleSweep.h"

namespace {

using gsl_kernel::SourcedTriangle;

SourcedTriangle TriangleOf(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                           int firstSource) {
  return {
      {{p0.Coords(), firstSource}, {p1.Coords(), firstSource + 1}, {p2.Coords(), firstSource + 2}}};
}

} // namespace

bool gsl_TriTriMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                  const gsl_Point& a1, const gsl_Point& a2, const gsl_Point& b0,
                                  const gsl_Point& b1, const gsl_Point& b2, const bool* twoSided,
                                  double margin, gsl_Point* contacts, double& distance) {
  const gsl_Util& settings = Settings();
  gsl_kernel::SweepContacts found = {};
  found.point[0] = {contacts[0].Coords(), gsl_kernel::kFirstContact};
  found.distance = distance;
  const bool result =
      gsl_kernel::SweepTriangle(direction.Measured(), TriangleOf(a0, a1, a2, gsl_kernel::kFirstOfA),
                                TriangleOf(b0, b1, b2, gsl_kernel::kFirstOfB), twoSided, margin,
                                {settings.linearTolerance, settings.cosineTolerance}, found);

  const gsl_Point* const inputs[6] = {&a0, &a1, &a2, &b0, &b1, &b2};
  WriteContacts(found, inputs, contacts);
  distance = found.distance;
  return result;
}
