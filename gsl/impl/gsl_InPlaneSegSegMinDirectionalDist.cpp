#include "gsl_InPlaneSegSegMinDirectionalDist.h"

#include "gsl_SweepOutputs.h"
#include "kernel/SegmentSweep.h"

bool gsl_InPlaneSegSegMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                         const gsl_Point& a1, const gsl_Point& b0,
                                         const gsl_Point& b1, const bool* twoSided, double margin,
                                         gsl_Point* contacts, double& distance) {
  using gsl_kernel::kFirstOfA;
  using gsl_kernel::kFirstOfB;
  const gsl_Util& settings = Settings();
  gsl_kernel::SweepContacts found = {};
  found.distance = distance;
  const bool result = gsl_kernel::SweepSegment(
      direction.Measured(),
      gsl_kernel::SweptSegmentBetween({a0.Coords(), kFirstOfA}, {a1.Coords(), kFirstOfA + 1}),
      gsl_kernel::SweptSegmentBetween({b0.Coords(), kFirstOfB}, {b1.Coords(), kFirstOfB + 1}),
      twoSided, margin, {settings.linearTolerance, settings.cosineTolerance}, found);

  const gsl_Point* const inputs[] = {&a0, &a1, nullptr, &b0, &b1, nullptr};
  WriteContacts(found, inputs, contacts);
  distance = found.distance;
  return result;
}
