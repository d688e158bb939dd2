// Feeds doubles of any bits, any tolerances and stale lengths to both sweeps of single pairs. Each
// returns the bits of its second implementation, and leaves the same outputs alone.

#include "FuzzEntities.h"
#include "InPlaneTranscription.h"
#include "TriTriTranscription.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_TriTriMinDirectionalDist.h"

namespace {

/// What a sweep has written.
struct Result {
  bool found = false;
  gsl_Point contacts[2] = {gsl_Point(0.25, -0.5, 7.0), gsl_Point(-3.5, 0.125, -9.0)};
  double distance = 0.0;
};

bool AreSame(const Result& a, const Result& b) {
  return a.found == b.found && SameNumber(a.distance, b.distance) &&
         SamePoint(a.contacts[0], b.contacts[0]) && SamePoint(a.contacts[1], b.contacts[1]);
}

/// Calls both sweeps with the same rest of the arguments, and compares what they have written.
template <class Own, class Other>
void Compare(FuzzInput& in, const Own& own, const Other& other) {
  const gsl_Vector d = VectorOf(in);
  const std::uint8_t sides = in.Byte();
  const bool twoSided[2] = {(sides & 1u) != 0, (sides & 2u) != 0};
  const double margin = (sides & 4u) != 0 ? in.Number() : 0.0;
  Result first, second;
  first.distance = second.distance = (sides & 8u) != 0 ? in.Number() : 1e30;
  first.found = own(d, twoSided, margin, first);
  second.found = other(d, twoSided, margin, second);
  Require(AreSame(first, second));
}

void Triangles(FuzzInput& in) {
  gsl_Point a[3], b[3];
  for (gsl_Point& p : a)
    p = PointOf(in);
  for (gsl_Point& p : b)
    p = PointOf(in);
  Compare(
      in,
      [&](const gsl_Vector& d, const bool* twoSided, double margin, Result& to) {
        return gsl_TriTriMinDirectionalDist(d, a[0], a[1], a[2], b[0], b[1], b[2], twoSided, margin,
                                            to.contacts, to.distance);
      },
      [&](const gsl_Vector& d, const bool* twoSided, double margin, Result& to) {
        return transcription::TriTriMinDirectionalDist(d, a[0], a[1], a[2], b[0], b[1], b[2],
                                                       twoSided, margin, to.contacts, to.distance);
      });
}

void Segments(FuzzInput& in) {
  gsl_Point a[2], b[2];
  for (gsl_Point& p : a)
    p = PointOf(in);
  for (gsl_Point& p : b)
    p = PointOf(in);
  Compare(
      in,
      [&](const gsl_Vector& d, const bool* twoSided, double margin, Result& to) {
        return gsl_InPlaneSegSegMinDirectionalDist(d, a[0], a[1], b[0], b[1], twoSided, margin,
                                                   to.contacts, to.distance);
      },
      [&](const gsl_Vector& d, const bool* twoSided, double margin, Result& to) {
        return in_plane_transcription::SegSegMinDirectionalDist(d, a[0], a[1], b[0], b[1], twoSided,
                                                                margin, to.contacts, to.distance);
      });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  FuzzInput in(bytes, count);
  ScopedSettings settings;
  SetTolerances(in, settings);
  if (in.Below(2) == 0) {
    Triangles(in);
  } else {
    Segments(in);
  }
  return 0;
}
