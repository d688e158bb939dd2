#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include "gsl_Settings.h"
#include "gsl_SweepOutputs.h"
#include "kernel/SegmentSweep.h"

namespace {

using gsl_kernel::Measured3;
using gsl_kernel::SweepTolerances;
using gsl_kernel::SweptSegment;

SweptSegment SegmentOf(const gsl_Point& p0, const gsl_Point& p1, int firstSource) {
  return gsl_kernel::SweptSegmentBetween({p0.Coords(), firstSource},
                                         {p1.Coords(), firstSource + 1});
}

/// This is a separate function, which keeps the rejection of pairs that pass aside short. It makes
/// the segments again, because structures that pass through memory would be waited for. `inputs`
/// are the ends by their source.
[[gnu::noinline, gnu::flatten]] bool
SweepWithinReach(const Measured3& d, const gsl_Point* const* inputs, const bool* twoSided,
                 double margin, const SweepTolerances& tol, gsl_Point* contacts, double& distance) {
  gsl_kernel::SweepContacts found = {};
  found.distance = distance;
  const bool result = gsl_kernel::SweepSegment(
      d, SegmentOf(*inputs[0], *inputs[1], gsl_kernel::kFirstOfA),
      SegmentOf(*inputs[3], *inputs[4], gsl_kernel::kFirstOfB), twoSided, margin, tol, found);
  WriteOutputs(found, inputs, contacts, distance);
  return result;
}

} // namespace

bool gsl_InPlaneSegSegMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                         const gsl_Point& a1, const gsl_Point& b0,
                                         const gsl_Point& b1, const bool* twoSided, double margin,
                                         gsl_Point* contacts, double& distance) {
  const gsl_Util& settings = Settings();
  const SweepTolerances tol = {settings.linearTolerance, settings.cosineTolerance};
  const Measured3 d = gsl_arithmetic::NormalizedCopy(direction.Measured(), tol.linear);
  if (gsl_kernel::PassAside(SegmentOf(a0, a1, gsl_kernel::kFirstOfA),
                            SegmentOf(b0, b1, gsl_kernel::kFirstOfB), d, tol)) {
    return false;
  }
  // Segments have no third vertex, and nothing has its source.
  const gsl_Point* const inputs[] = {&a0, &a1, &a1, &b0, &b1, &b1};
  return SweepWithinReach(d, inputs, twoSided, margin, tol, contacts, distance);
}
