#include "gsl_TriTriMinDirectionalDist.h"

#include "gsl_Settings.h"
#include "gsl_SweepOutputs.h"
#include "kernel/TriangleSweep.h"

namespace {

using gsl_kernel::Measured3;
using gsl_kernel::SourcedTriangle;
using gsl_kernel::SweepTolerances;

SourcedTriangle TriangleOf(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                           int firstSource) {
  return {
      {{p0.Coords(), firstSource}, {p1.Coords(), firstSource + 1}, {p2.Coords(), firstSource + 2}}};
}

/// This is a separate function, which keeps the rejection by extents short: most pairs of a sweep
/// end there. `inputs` are the vertices by their source.
[[gnu::noinline, gnu::flatten]] bool
SweepWithinReach(const Measured3& d, const gsl_Point* const* inputs, const bool* twoSided,
                 const SweepTolerances& tol, gsl_Point* contacts, double& distance) {
  gsl_kernel::SweepContacts found = {};
  found.distance = distance;
  const bool result = gsl_kernel::SweepTriangle(
      d, TriangleOf(*inputs[0], *inputs[1], *inputs[2], gsl_kernel::kFirstOfA),
      TriangleOf(*inputs[3], *inputs[4], *inputs[5], gsl_kernel::kFirstOfB), twoSided, tol,
      [contacts] { return contacts[0].Coords(); }, found);
  WriteOutputs(found, inputs, contacts, distance);
  return result;
}

} // namespace

bool gsl_TriTriMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                  const gsl_Point& a1, const gsl_Point& a2, const gsl_Point& b0,
                                  const gsl_Point& b1, const gsl_Point& b2, const bool* twoSided,
                                  double margin, gsl_Point* contacts, double& distance) {
  const gsl_Util& settings = Settings();
  const SweepTolerances tol = {settings.linearTolerance, settings.cosineTolerance};
  const Measured3 d = gsl_arithmetic::NormalizedCopy(direction.Measured(), tol.linear);
  // The margin does not change what is accepted.
  if (gsl_kernel::SlabsReject(TriangleOf(a0, a1, a2, gsl_kernel::kFirstOfA),
                              TriangleOf(b0, b1, b2, gsl_kernel::kFirstOfB), d, distance + margin,
                              tol.linear)) {
    return false;
  }
  const gsl_Point* const inputs[6] = {&a0, &a1, &a2, &b0, &b1, &b2};
  return SweepWithinReach(d, inputs, twoSided, tol, contacts, distance);
}
