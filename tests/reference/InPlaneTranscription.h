#ifndef REFERENCE_IN_PLANE_TRANSCRIPTION_H
#define REFERENCE_IN_PLANE_TRANSCRIPTION_H

#include "gsl_Point.h"
#include "gsl_StLine.h"
#include "gsl_Util.h"
#include "gsl_Vector.h"

#include <utility>

/// The in-plane sweep, written step by step on the public classes, without the kernels. Every
/// intermediate is an entity with its own identity, which is copied as entities copy it.
///
/// A peer of gsl_InPlaneSegSegMinDirectionalDist in the benchmarks and in the tests, which compare
/// every bit and every identity. The code is slow and must not be tuned.
namespace in_plane_transcription {

// clang-format off
#define IN_PLANE_BRANCHES(X) \
  X(AFaces) X(ATurned) X(ARefused) X(AAlong) X(BFaces) X(BTurned) X(BRefused) X(BAlong) \
  X(OnlyBAlong) X(EndOfBMisses) X(EndOfBNoCloser) X(EndOfBCloser) X(EndOfBCloserBehind) \
  X(OnlyAAlong) X(EndOfAMisses) X(EndOfANoCloser) X(EndOfACloser) X(EndOfACloserBehind) \
  X(BothAlong) X(TwoLines) X(FirstEndsCoincide) X(EndsNoCloser) X(EndsCloser) X(EndsCloserBehind) \
  X(BothAcross) X(SameWay) \
  X(FirstPassMisses) X(FirstPassBehind) X(FirstPassBehindAfterContact) X(FirstPassNoCloser) \
  X(FirstPassWithinMargin) X(FirstPassCloser) \
  X(SecondPassMisses) X(SecondPassBehind) X(SecondPassBehindAfterContact) X(SecondPassNoCloser) \
  X(SecondPassWithinMargin) X(SecondPassCloser) \
  X(AcrossFound) X(AcrossNotFound)
// clang-format on

/// The branches of a call. The tests count them.
enum class Branch {
#define IN_PLANE_ENUMERATOR(name) name,
  IN_PLANE_BRANCHES(IN_PLANE_ENUMERATOR)
#undef IN_PLANE_ENUMERATOR
      Count
};

inline const char* Name(Branch branch) {
#define IN_PLANE_STRING(name) #name,
  static const char* const names[] = {IN_PLANE_BRANCHES(IN_PLANE_STRING)};
#undef IN_PLANE_STRING
  return names[static_cast<unsigned>(branch)];
}

struct NoTrace {
  void operator()(Branch) const {}
};

/// Does what gsl_Point::RayIntersect does, through the straight line.
inline bool RayIntersect(const gsl_Point& origin, const gsl_Point& p0, const gsl_Point& p1,
                         const gsl_Vector& dir, gsl_Point& hit, double* params) {
  const double tolerance = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const double length = p0.GetDistance(p1);
  if (tolerance > length) return false;
  double gap = 0.0;
  if (!gsl_StLine(p0, p1).Intersect(gsl_StLine(origin, dir), hit, gap)) return false;
  if (tolerance >= length) {
    if (!(tolerance >= hit.GetDistance(p0))) return false;
    params[0] = 0.0;
    params[1] = 1.0;
    return true;
  }
  params[0] = gsl_Vector(hit, p0).DotProduct(gsl_Vector(p1, p0)) / (length * length);
  params[1] = gsl_Vector(hit, p1).DotProduct(gsl_Vector(p0, p1)) / (length * length);
  return !(params[0] * length < -tolerance) && !(params[1] * length < -tolerance);
}

/// The data of the call for the steps.
struct Work {
  gsl_Vector d;
  gsl_Point a[2], b[2];
  double margin;
  gsl_Point* contacts;
  double& distance;

  bool Passes(double g) const { return distance - margin > g; }
};

template <class Trace>
bool StepOnlyBAlong(Work& w, const Trace& trace) {
  bool found = false;
  for (int i = 0; i < 2; ++i) {
    gsl_Point hit;
    double params[2];
    if (!RayIntersect(w.b[i], w.a[0], w.a[1], w.d, hit, params)) {
      trace(Branch::EndOfBMisses);
      continue;
    }
    const double g = -(w.d.DotProduct(gsl_Vector(w.b[i], hit)));
    if (!w.Passes(g)) {
      trace(Branch::EndOfBNoCloser);
      continue;
    }
    trace(g < 0.0 ? Branch::EndOfBCloserBehind : Branch::EndOfBCloser);
    w.distance = g;
    w.contacts[0] = hit;
    w.contacts[1] = w.b[i];
    found = true;
  }
  return found;
}

template <class Trace>
bool StepOnlyAAlong(Work& w, const Trace& trace) {
  bool found = false;
  for (int i = 0; i < 2; ++i) {
    gsl_Point hit;
    double params[2];
    if (!RayIntersect(w.a[i], w.b[0], w.b[1], w.d, hit, params)) {
      trace(Branch::EndOfAMisses);
      continue;
    }
    const double g = w.d.DotProduct(gsl_Vector(w.a[i], hit));
    if (!w.Passes(g)) {
      trace(Branch::EndOfANoCloser);
      continue;
    }
    trace(g < 0.0 ? Branch::EndOfACloserBehind : Branch::EndOfACloser);
    w.distance = g;
    w.contacts[1] = hit;
    w.contacts[0] = w.a[i];
    found = true;
  }
  return found;
}

template <class Trace>
bool StepBothAlong(Work& w, const Trace& trace) {
  const gsl_Vector between(w.a[0], w.b[0]);
  if (!between.IsOn(w.d)) {
    trace(between.magnitude == 0.0 ? Branch::FirstEndsCoincide : Branch::TwoLines);
    return false;
  }
  bool found = false;
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      const double g = w.d.DotProduct(gsl_Vector(w.a[i], w.b[j]));
      if (!w.Passes(g)) {
        trace(Branch::EndsNoCloser);
        continue;
      }
      trace(g < 0.0 ? Branch::EndsCloserBehind : Branch::EndsCloser);
      w.distance = g;
      w.contacts[0] = w.a[i];
      w.contacts[1] = w.b[j];
      found = true;
    }
  }
  return found;
}

template <class Trace>
bool StepBothAcross(Work& w, const gsl_Vector& ea, const gsl_Vector& eb, const Trace& trace) {
  if (ea.DotProduct(eb) > 0.0) {
    trace(Branch::SameWay);
    return false;
  }
  bool found = false;
  for (int i = 0; i < 2; ++i) {
    gsl_Point hit;
    double params[2];
    if (!RayIntersect(w.a[i], w.b[0], w.b[1], w.d, hit, params)) {
      trace(Branch::FirstPassMisses);
      continue;
    }
    const double g = w.d.DotProduct(gsl_Vector(w.a[i], hit));
    if (g < 0.0) {
      trace(found ? Branch::FirstPassBehindAfterContact : Branch::FirstPassBehind);
      return found;
    }
    if (w.Passes(g) && w.distance > g) {
      trace(Branch::FirstPassCloser);
      w.distance = g;
      w.contacts[1] = hit;
      w.contacts[0] = w.a[i];
      found = true;
    } else {
      trace(w.distance > g ? Branch::FirstPassWithinMargin : Branch::FirstPassNoCloser);
    }
  }
  for (int i = 0; i < 2; ++i) {
    gsl_Point hit;
    double params[2];
    if (!RayIntersect(w.b[i], w.a[0], w.a[1], w.d, hit, params)) {
      trace(Branch::SecondPassMisses);
      continue;
    }
    const double g = -(w.d.DotProduct(gsl_Vector(w.b[i], hit)));
    if (g < 0.0) {
      trace(found ? Branch::SecondPassBehindAfterContact : Branch::SecondPassBehind);
      return false;
    }
    if (w.Passes(g) && w.distance > g) {
      trace(Branch::SecondPassCloser);
      w.distance = g;
      w.contacts[0] = hit;
      w.contacts[1] = w.a[i];
      found = true;
    } else {
      trace(w.distance > g ? Branch::SecondPassWithinMargin : Branch::SecondPassNoCloser);
    }
  }
  trace(found ? Branch::AcrossFound : Branch::AcrossNotFound);
  return found;
}

template <class Trace = NoTrace>
bool SegSegMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0, const gsl_Point& a1,
                              const gsl_Point& b0, const gsl_Point& b1, const bool* twoSided,
                              double margin, gsl_Point* contacts, double& distance,
                              const Trace& trace = Trace()) {
  Work w = {direction.NormalizedCopy(), {a0, a1}, {b0, b1}, margin, contacts, distance};
  gsl_Vector ea(w.a[0], w.a[1]);
  gsl_Vector eb(w.b[0], w.b[1]);
  const gsl_Vector z(0.0, 0.0, 1.0);
  const gsl_Vector na = ea.CrossProduct(z);
  const gsl_Vector nb = eb.CrossProduct(z);
  bool aAlong = false;
  bool bAlong = false;

  if (na.DotProduct(w.d) < 0.0) {
    trace(twoSided[0] ? Branch::ATurned : Branch::ARefused);
    if (!twoSided[0]) return false;
    ea.Negate();
    std::swap(w.a[0], w.a[1]);
  } else {
    trace(Branch::AFaces);
  }
  if (w.d.IsOn(ea)) {
    trace(Branch::AAlong);
    aAlong = true;
  }
  if (nb.DotProduct(w.d) > 0.0) {
    trace(twoSided[1] ? Branch::BTurned : Branch::BRefused);
    if (!twoSided[1]) return false;
    eb.Negate();
    std::swap(w.b[0], w.b[1]);
  } else {
    trace(Branch::BFaces);
  }
  if (w.d.IsOn(eb)) {
    trace(Branch::BAlong);
    bAlong = true;
  }

  if (!aAlong && bAlong) {
    trace(Branch::OnlyBAlong);
    return StepOnlyBAlong(w, trace);
  }
  if (aAlong && !bAlong) {
    trace(Branch::OnlyAAlong);
    return StepOnlyAAlong(w, trace);
  }
  if (aAlong && bAlong) {
    trace(Branch::BothAlong);
    return StepBothAlong(w, trace);
  }
  trace(Branch::BothAcross);
  return StepBothAcross(w, ea, eb, trace);
}

} // namespace in_plane_transcription

#endif
