// What a module of the host does with the installed library: inline arithmetic, compiled queries,
// the settings shared with the library, an exception caught across the libraries.

#include "check.h"

#include <gsl_FloatingPoint.h>
#include <gsl_Matrix.h>
#include <gsl_Plane.h>
#include <gsl_Point.h>
#include <gsl_Segment.h>
#include <gsl_StLine.h>
#include <gsl_Util.h>
#include <gsl_Vector.h>
#include <gsl_Version.h>
#include <gsl_utils.h>
#include <nex_AssertException.h>

#include <memory>

namespace {

class Datum : public gsl_Plane {
public:
  Datum* Copy() const override { return new Datum(*this); }
};

void ValuesAndQueries() {
  const gsl_Point a(1.0, 2.0, 3.0);
  const gsl_Point b(4.0, 6.0, 3.0);
  Check(a.GetDistance(b) == 5.0, "distance of two points");
  Check(gsl_Vector(a, b).magnitude == 5.0, "length of a vector between two points");

  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(0.0, 0.0, 2.0));
  gsl_Point moved = a;
  moved.Transform(lift);
  Check(moved.z == 5.0 && moved.uid == a.uid, "a moved point keeps its identity");

  gsl_Point closest;
  const double distance = gsl_Point(7.0, 10.0, 3.0).GetDistance(gsl_Segment(a, b), closest);
  Check(distance == 5.0 && closest.uid == b.uid, "the closest end of a segment");
}

void TheSettingsAreTheLibrarysOwn() {
  gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
  const gsl_Plane ground(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Point above(0.0, 0.0, 0.25);
  Check(!above.IsOn(ground), "a quarter above the plane is not on it");
  const double usual = settings.linearTolerance;
  settings.linearTolerance = 0.5;
  Check(above.IsOn(ground), "the library reads the tolerance that the consumer set");
  settings.linearTolerance = usual;
}

void DerivedClassesWork() {
  const Datum datum;
  const std::unique_ptr<gsl_Plane> copy(datum.Copy());
  Check(dynamic_cast<Datum*>(copy.get()) != nullptr, "type information crosses the library");
}

void ExceptionsCrossTheLibraries() {
  bool caught = false;
  try {
    nex_Exception::Throw(nex_AssertException(cow_String("broken")), "consumer", 7);
  } catch (const nex_AssertException&) {
    caught = true;
  }
  Check(caught, "an exception of the host is caught by its type");
}

} // namespace

int main() {
  // A module calls it once in its own code, because its flags decide the bits of inline arithmetic.
  const char* const fault = gsl_CheckFloatingPoint();
  Check(fault == nullptr, fault);
  Check(gsl_LibraryVersion() == GSL_VERSION_NUMBER, "the library is of the version of its headers");
  ValuesAndQueries();
  TheSettingsAreTheLibrarysOwn();
  DerivedClassesWork();
  ExceptionsCrossTheLibraries();
  return 0;
}
